// The chart: reading a security once, the drawing worked out as a list of steps in twips, the
// window that paints it, redraws it on resize and on a change of series, and opens from Open Security.

#include "SheetTestKit.h"

#include "catalogue/ui/OpenSecurityDialog.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/ProgramState.h"
#include "frame/Regional.h"
#include "sheet/ChartData.h"
#include "sheet/ChartDrawing.h"
#include "sheet/ui/ChartWindow.h"

#include <QImage>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTest>

using namespace sheettest;

namespace {

using Steps = std::vector<ChartStep>;

QuoteRecord quote(const QString& date, double open, double high, double low, double close) { return {date, open, high, low, close, 0}; }

// `count` records a day apart from 2 January 2004, dated as the load dates them.
std::vector<QuoteRecord> days(int count, double low = 99.6, double high = 100.4) {
    std::vector<QuoteRecord> out;
    for (int i = 0; i < count; ++i)
        out.push_back(quote(Regional::dateText(QDate(2004, 1, 2).addDays(i)), 100, high, low, 100));
    return out;
}

Steps draw(const std::vector<QuoteRecord>& quotes, ChartSeries series = ChartSeries::Line, float width = 7200) {
    Steps steps;
    DrawChartSecurity(quotes, width, 4500, series, steps);
    return steps;
}

// A line or box as "x1,y1 x2,y2" in whole twips.
QString seg(double x1, double y1, double x2, double y2) {
    return QStringLiteral("%1,%2 %3,%4").arg(qRound(x1)).arg(qRound(y1)).arg(qRound(x2)).arg(qRound(y2));
}
QStringList shapes(const Steps& steps, ChartStep::Kind kind, quint32 colour = ChartColour::Foreground) {
    QStringList out;
    for (const ChartStep& s : steps)
        if (s.kind == kind && s.colour == colour)
            out << seg(s.x1, s.y1, s.x2, s.y2);
    return out;
}
// The black lines after the two axes: the series.
QStringList seriesLines(const Steps& steps) { return shapes(steps, ChartStep::Line).mid(2); }

// Texts as "text@x,y" with whole twips; the price labels, those standing on the vertical axis.
QStringList texts(const Steps& steps) {
    QStringList out;
    for (const ChartStep& s : steps)
        if (s.kind == ChartStep::Text)
            out << QStringLiteral("%1@%2,%3").arg(s.text).arg(qRound(s.x1)).arg(qRound(s.y1));
    return out;
}
QStringList priceLabels(const Steps& steps, int axisX = 6550) {
    return texts(steps).filter(QRegularExpression(QStringLiteral("@%1,").arg(axisX))).replaceInStrings(QRegularExpression("@.*"), "");
}

// A picture of 7200 x 4500 twips unless told: the vertical axis at 6550, the horizontal at 4000.
TEST(ChartDrawing, AxesGridAndLabels) {
    const Steps empty = draw({});
    ASSERT_EQ(empty.size(), 1u) << "an empty security is a blank picture";
    EXPECT_TRUE(empty[0].kind == ChartStep::Clear && empty[0].colour == ChartColour::White);

    // A single record: a step of a third of the axis, one level stretch, both date labels; range 98..102.
    Steps steps = draw({quote("02/01/2004", 100, 101.3, 99.2, 100.5)});
    const float third = 6550.0f / 3;
    EXPECT_EQ(shapes(steps, ChartStep::Line), (QStringList{seg(0, 4000, 7200, 4000), seg(6550, 0, 6550, 4500), seg(10, 1500, 10 + third, 1500)}));
    EXPECT_EQ(texts(steps), (QStringList{" 98 @6550,4000", " 102 @6550,0", "2/1/04@10,4000", QStringLiteral("02/01/2004@%1,4000").arg(qRound(10 + third - 700))}));

    steps = draw(days(2));   // highs of 100.4, lows of 99.6: labels at 99 and 101, grid lines at 100 and 101
    EXPECT_EQ(priceLabels(steps), (QStringList{" 99 ", " 101 "}));
    EXPECT_EQ(shapes(steps, ChartStep::Line, ChartColour::Grid), (QStringList{seg(0, 2000, 6550, 2000), seg(0, 0, 6550, 0)}));
    // Halves round to even before the padding.
    EXPECT_EQ(priceLabels(draw({quote("02/01/2004", 99, 100.5, 98.5, 99)})), (QStringList{" 97 ", " 101 "}));
    EXPECT_EQ(priceLabels(draw({quote("02/01/2004", 100, 101.5, 99.5, 100)})), (QStringList{" 99 ", " 103 "}));
    // A label every 25th line and at the top; a bottom below zero keeps its sign; a range of 25 labels the top once.
    steps = draw(days(3, 1, 59));
    EXPECT_EQ(priceLabels(steps), (QStringList{" 0 ", " 25 ", " 50 ", " 60 "}));
    EXPECT_EQ(shapes(steps, ChartStep::Line, ChartColour::Grid).size(), 60);
    EXPECT_EQ(priceLabels(draw(days(3, 0.4, 10))), (QStringList{"-1 ", " 11 "}));
    EXPECT_EQ(priceLabels(draw(days(3, 100, 123))), (QStringList{" 99 ", " 124 "}));
    // 29 records print no month label, 30 one at the x of record 29, 60 two.
    const auto months = [](int count) { return texts(draw(days(count))).filter(QRegularExpression("^\\d+/\\d+@")); };
    EXPECT_EQ(months(29), QStringList());
    EXPECT_EQ(months(30), QStringList{QStringLiteral("1/04@%1,4000").arg(qRound(10 + 29 * 6550.0f / 32))});
    EXPECT_EQ(months(60).size(), 2);
    // Dates are labelled day, month, two-digit year with the system's separator, whatever order the
    // short date has; the last label is the record's own date text.
    for (const auto& [locale, labels] : {std::pair{"en_US", "2/1/04 1/04 1/31/2004"}, std::pair{"de_DE", "2.1.04 1.04 31.01.2004"}}) {
        const LocaleGuard guard(locale);
        const QStringList dates = texts(draw(days(30))).filter(QRegularExpression("^\\d")).replaceInStrings(QRegularExpression("@.*"), "");
        EXPECT_EQ(dates.join(u' '), labels) << locale;
    }
}

TEST(ChartDrawing, LineBarAndCandleSeries) {
    // A line begins level from x = 10 and then joins the closes; range 99..102, 4000 / 3 twips a price.
    const float quarter = 6550.0f / 4, scale = 4000.0f / 3;
    EXPECT_EQ(seriesLines(draw({quote("02/01/2004", 100, 100.5, 99.6, 100.5), quote("03/01/2004", 100, 101.3, 99.6, 101)})),
              (QStringList{seg(10, 4000 - 1.5 * scale, 10 + quarter, 4000 - 1.5 * scale),
                           seg(10 + quarter, 4000 - 1.5 * scale, 10 + 2 * quarter, 4000 - 2 * scale)}));
    // A bar: the range, the open tick 50 to the left, the close tick 50 to the right; range 98..102.
    const float x = 10 + 6550.0f / 3;
    EXPECT_EQ(seriesLines(draw({quote("02/01/2004", 99.5, 101, 99, 100.5)}, ChartSeries::Bar)),
              (QStringList{seg(x, 1000, x, 3000), seg(x, 2500, x - 50, 2500), seg(x, 1500, x + 50, 1500)}));
    // Candles: a white stroke through the body, filled only when Open > Close, Open = Close a level box.
    const Steps steps = draw({quote("02/01/2004", 100.5, 101, 99, 99.5), quote("03/01/2004", 99.5, 101, 99, 100.5),
                              quote("04/01/2004", 100, 101, 99, 100)}, ChartSeries::Candle);
    const float step = 6550.0f / 5;
    EXPECT_EQ(shapes(steps, ChartStep::Line, ChartColour::White).value(0), seg(10 + step, 1500, 10 + step, 2500));
    EXPECT_EQ(shapes(steps, ChartStep::Line, ChartColour::White).size(), 3);
    EXPECT_EQ(shapes(steps, ChartStep::FilledBox), QStringList{seg(10 + step - 15, 1500, 10 + step + 15, 2500)});
    EXPECT_EQ(shapes(steps, ChartStep::Box), (QStringList{seg(10 + 2 * step - 15, 2500, 10 + 2 * step + 15, 1500),
                                                          seg(10 + 3 * step - 15, 2000, 10 + 3 * step + 15, 2000)}));
    // Each record: the range, the stroke, the body, in that order.
    ASSERT_EQ(steps.back().kind, ChartStep::Text);
    EXPECT_EQ(steps[steps.size() - 2].kind, ChartStep::Box);
    EXPECT_EQ(steps[steps.size() - 3].colour, ChartColour::White);
    EXPECT_EQ(shapes({steps[steps.size() - 4]}, ChartStep::Line), QStringList{seg(10 + 3 * step, 1000, 10 + 3 * step, 3000)});
}

TEST(ChartDrawing, NarrowPicturesAndUnreadableDatesStillEnd) {
    // Narrower than 650 twips: the series runs off to the left.
    const Steps steps = draw(days(2), ChartSeries::Line, 600);
    EXPECT_EQ(seriesLines(steps).value(1).section(' ', 1), QStringLiteral("%1,2000").arg(qRound(10 - 2 * 50.0f / 4)));
    EXPECT_EQ(priceLabels(steps, -50), (QStringList{" 99 ", " 101 "}));
    EXPECT_TRUE(texts(steps).last().startsWith("03/01/2004@"));
    // A date that doesn't read as a date ends the drawing after the grid.
    const Steps bad = draw({quote("N/A", 100, 100.4, 99.6, 100)});
    EXPECT_EQ(texts(bad), (QStringList{" 99 @6550,4000", " 101 @6550,0"}));
    EXPECT_TRUE(seriesLines(bad).empty());
}

class ChartLoad : public SheetFixture {
protected:
    std::unique_ptr<ChartWindow> shownChart(const QString& folder, const QString& symbol) {
        auto chart = std::make_unique<ChartWindow>();
        chart->path = folder;
        chart->symbol = symbol;
        chart->load();
        chart->show();
        QApplication::processEvents();
        expectControlsLaidOut(chart.get());
        return chart;
    }
    static bool allWhite(const ChartWindow& chart) {
        const QImage image = chart.chartPicture->picture().toImage().convertToFormat(QImage::Format_RGB32);
        QImage white(image.size(), QImage::Format_RGB32);
        white.fill(Qt::white);
        return !image.isNull() && image == white;
    }
};

// Prices are kept as their "####0.00" text read back, volumes rounded half to even; record 32,768
// ends the load with 32,767.
TEST_F(ChartLoad, ReadsThroughTheProgressWindowAndKeepsTwoDecimals) {
    makeSecurity(temp.path(), "ROUND", "Round", {{20040102, 12.345, 13.345, 0, 12.345, 1000.5}, {20040105, 0, 0, 0, 7.126, 1001.5},
                                                 {20040106, 0, 0, 0, 3.004, 2.4}});
    for (const char* name : {"en_GB", "de_DE"}) {
        SCOPED_TRACE(name);
        const LocaleGuard locale(name);
        progress.calls.clear();
        std::vector<QuoteRecord> q;
        ASSERT_EQ(LoadChart(" " + temp.path() + " ", " ROUND ", q), ChartLoadEnd::Complete);
        ASSERT_EQ(q.size(), 3u);
        EXPECT_EQ(q[0].Dat, DateToText(20040102));
        EXPECT_EQ((std::vector<double>{q[0].High, q[0].ClosePrice, q[1].ClosePrice, q[2].ClosePrice}), (std::vector<double>{13.35, 12.35, 7.13, 3.0}));
        EXPECT_EQ((std::vector<double>{q[0].Volume, q[1].Volume, q[2].Volume}), (std::vector<double>{1000, 1002, 2}));
        EXPECT_EQ(progress.calls, LoadOfThree);
    }
    makeSecurity(temp.path(), "LONG", "Long", series(ChartRecordLimit + 1, QDate(1920, 1, 1)));
    std::vector<QuoteRecord> q;
    EXPECT_THROW(LoadChart(temp.path(), "LONG", q), Failure);
    EXPECT_EQ(q.size(), size_t(ChartRecordLimit));
}

// A volume beyond 32 bits ends the load with the records so far, the last with a volume of 0. A
// folder or symbol that can't be opened gives an empty white chart and no message; a load that
// ends early or is cancelled shows the records read so far.
TEST_F(ChartLoad, EndsSilentlyAndShowsWhatWasRead) {
    makeSecurity(temp.path(), "HUGE", "Huge", {{20040102, 10, 10, 10, 10, 5}, {20040105, 11, 11, 11, 11, 3e9}, {20040106, 12, 12, 12, 12, 7}});
    makeSecurity(temp.path(), "AAA", "Alpha", series(10));
    std::vector<QuoteRecord> quotes;
    EXPECT_THROW(LoadChart(temp.path(), "HUGE", quotes), Failure);
    ASSERT_EQ(quotes.size(), 2u);
    EXPECT_TRUE(quotes[1].ClosePrice == 11 && quotes[1].Volume == 0);
    EXPECT_TRUE(allWhite(*shownChart(temp.file("none"), "HUGE")));
    EXPECT_TRUE(allWhite(*shownChart(temp.path(), "NONE")));
    EXPECT_FALSE(allWhite(*shownChart(temp.path(), "HUGE")));
    EXPECT_TRUE(platform.boxes.isEmpty()) << platform.boxTexts().join('|').toStdString();

    progress.calls.clear();
    progress.cancelAfterSteps = 3;
    quotes.clear();
    EXPECT_EQ(LoadChart(temp.path(), "AAA", quotes), ChartLoadEnd::Cancelled);
    EXPECT_EQ(quotes.size(), 3u);
    EXPECT_EQ(progress.calls.mid(progress.calls.size() - 2), (QStringList{"Hide", "released"}));
    EXPECT_FALSE(allWhite(*shownChart(temp.path(), "AAA")));
}

// Two charts of one security opened through Open Security each keep their own series option and
// their own picture; a resize redraws at the new size.
TEST_F(ChartLoad, TwoChartsOfOneSecurityAreIndependent) {
    makeSecurity(temp.path(), "BBB", "Beta Foods", series(40));
    sharedState().LastFolder = temp.path();
    for (int i = 0; i < 2; ++i) {
        auto dialog = std::make_unique<OpenSecurityDialog>();
        dialog->opensChart = true;
        dialog->show();
        QApplication::processEvents();
        dialog->openButton->click();
    }
    const QList<ChartWindow*> charts = shownWindows<ChartWindow>();
    ASSERT_EQ(charts.size(), 2);
    for (ChartWindow* chart : charts)
        EXPECT_TRUE(chart->windowTitle() == "Chart of Beta Foods" && chart->lineOption->isChecked());
    const QImage line = charts[1]->chartPicture->picture().toImage();
    EXPECT_EQ(charts[0]->chartPicture->picture().toImage(), line);
    QTest::mouseClick(charts[0]->candleOption, Qt::LeftButton);
    EXPECT_TRUE(charts[1]->lineOption->isChecked());
    EXPECT_NE(charts[0]->chartPicture->picture().toImage(), line);
    EXPECT_EQ(charts[1]->chartPicture->picture().toImage(), line);

    // The picture is the window less 350 by 600 twips; a window too small keeps the old size.
    const double tx = 1440.0 / charts[1]->logicalDpiX(), ty = 1440.0 / charts[1]->logicalDpiY();
    charts[1]->resize(900, 500);
    QApplication::processEvents();
    const QSize size(qRound(900 - 350 / tx), qRound(500 - 600 / ty));
    EXPECT_EQ(charts[1]->chartPicture->size(), size);
    EXPECT_EQ(charts[1]->chartPicture->picture().size(), size);
    charts[1]->resize(10, 10);
    QApplication::processEvents();
    EXPECT_EQ(charts[1]->chartPicture->size(), size);
    for (ChartWindow* chart : charts)
        chart->close();
}

// What the painter puts on the picture is what the list says: the grid lines in grey at the left
// edge, the axes black, filled bodies black inside, the white stroke through a hollow body, the
// labels in black, and white where nothing is drawn.
TEST_F(ChartLoad, ThePaintedPictureIsTheList) {
    std::vector<Bar> records;
    for (int i = 0; i < 12; ++i) {
        const double open = i % 2 ? 103 : 107;
        records.push_back({Regional::toStoreDate(QDate(2004, 1, 5).addDays(i)), open, 110, 100, 210 - open, 1});
    }
    makeSecurity(temp.path(), "CND", "Candles", records);
    auto chart = shownChart(temp.path(), "CND");
    chart->candleOption->click();
    const QImage image = chart->chartPicture->grab().toImage();   // what the window shows
    ASSERT_EQ(image.size(), chart->chartPicture->picture().size());

    std::vector<QuoteRecord> quotes;
    LoadChart(temp.path(), "CND", quotes);
    const double tx = 1440.0 / chart->logicalDpiX(), ty = 1440.0 / chart->logicalDpiY();
    Steps steps;
    DrawChartSecurity(quotes, float(image.width() * tx), float(image.height() * ty), ChartSeries::Candle, steps);
    auto at = [&](float x, float y) { return image.pixel(qRound(x / tx), qRound(y / ty)) & 0xFFFFFF; };

    const float axisX = float(image.width() * tx) - 650;   // the vertical axis
    int grid = 0, filled = 0, hollow = 0, labels = 0;
    for (const ChartStep& s : steps) {
        const float midY = (s.y1 + s.y2) / 2;
        if (s.kind == ChartStep::Line && s.colour == ChartColour::Grid) {
            EXPECT_EQ(at(0, s.y1), 0xE6E6E6u) << s.y1;
            EXPECT_EQ(at(axisX, s.y1), 0u) << s.y1;   // the axis stays black across the grid
            ++grid;
        } else if (s.kind == ChartStep::FilledBox) {
            EXPECT_TRUE(at(s.x1, midY) == 0u && at(s.x2, midY) == 0u);
            ++filled;
        } else if (s.kind == ChartStep::Box) {
            EXPECT_TRUE(at((s.x1 + s.x2) / 2, midY) == 0xFFFFFFu && at(s.x1, midY) == 0u);
            ++hollow;
        } else if (s.kind == ChartStep::Text && !s.text.trimmed().isEmpty()) {
            // Ink in the box below and right of the label's corner, clear of the axis it stands on.
            const QImage part = image.copy(QRect(qRound(s.x1 / tx) + 2, qRound(s.y1 / ty) + 2, 40, chart->fontMetrics().height() - 2)
                                               .intersected(image.rect())).convertToFormat(QImage::Format_RGB32);
            const auto* px = reinterpret_cast<const quint32*>(part.constBits());
            EXPECT_TRUE(std::any_of(px, px + part.width() * part.height(), [](quint32 p) { return (p & 0xFFFFFF) == 0; })) << s.text.toStdString();
            ++labels;
        }
    }
    EXPECT_EQ(at(axisX, 20 * ty), 0u);
    EXPECT_EQ(at(axisX / 2, 20 * ty), 0xFFFFFFu) << "between two grid lines, clear of the series, nothing is drawn";
    EXPECT_EQ((std::vector<int>{grid, filled, hollow, labels}), (std::vector<int>{12, 6, 6, 4}));
    // The line chart: ink at the middle of every sloped piece of the line.
    chart->lineOption->click();
    const QImage line = chart->chartPicture->grab().toImage();
    steps.clear();
    DrawChartSecurity(quotes, float(line.width() * tx), float(line.height() * ty), ChartSeries::Line, steps);
    const auto inkNear = [&](float x, float y) {   // a dark pixel within one of the point, off the grid
        for (int dx = -1; dx <= 1; ++dx)
            for (int dy = -1; dy <= 1; ++dy)
                if (qGray(line.pixel(qRound(x / tx) + dx, qRound(y / ty) + dy)) < 128)
                    return true;
        return false;
    };
    int sloped = 0;
    for (const ChartStep& s : steps)
        if (s.kind == ChartStep::Line && s.x1 != s.x2 && s.y1 != s.y2 && ++sloped)
            EXPECT_TRUE(inkNear((2 * s.x1 + s.x2) / 3, (2 * s.y1 + s.y2) / 3)) << s.x1;
    EXPECT_EQ(sloped, 11);
}

} // namespace
