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
#include <QTest>
#include <QTreeWidget>

#include <functional>

using namespace sheettest;

namespace {

using Steps = std::vector<ChartStep>;

QuoteRecord quote(const QString& date, double open, double high, double low, double close) {
    return {date, open, high, low, close, 0};
}

// `count` records a day apart from 2 January 2004, dated as the load dates them.
std::vector<QuoteRecord> days(int count, double low = 99.6, double high = 100.4) {
    std::vector<QuoteRecord> out;
    for (int i = 0; i < count; ++i)
        out.push_back(quote(Regional::dateText(QDate(2004, 1, 2).addDays(i)), 100, high, low, 100));
    return out;
}

Steps draw(const std::vector<QuoteRecord>& quotes, ChartSeries series = ChartSeries::Line, float width = 7200,
           float height = 4500) {
    Steps steps;
    DrawChartSecurity(quotes, width, height, series, steps);
    return steps;
}

// Texts as "text@x,y" with whole twips.
QStringList texts(const Steps& steps) {
    QStringList out;
    for (const ChartStep& s : steps)
        if (s.kind == ChartStep::Text)
            out << QStringLiteral("%1@%2,%3").arg(s.text).arg(qRound(s.x1)).arg(qRound(s.y1));
    return out;
}

Steps only(const Steps& steps, ChartStep::Kind kind, quint32 colour = ChartColour::Foreground) {
    Steps out;
    for (const ChartStep& s : steps)
        if (s.kind == kind && s.colour == colour)
            out.push_back(s);
    return out;
}

// The black lines after the two axes: the series.
Steps seriesLines(const Steps& steps) {
    Steps lines = only(steps, ChartStep::Line);
    lines.erase(lines.begin(), lines.begin() + std::min<size_t>(2, lines.size()));
    return lines;
}

QStringList priceLabels(const Steps& steps, float axisX = 6550) {
    QStringList out;
    for (const ChartStep& s : steps)
        if (s.kind == ChartStep::Text && s.x1 == axisX)
            out << s.text;
    return out;
}

void expectLine(const ChartStep& s, float x1, float y1, float x2, float y2) {
    EXPECT_NEAR(s.x1, x1, 0.01);
    EXPECT_NEAR(s.y1, y1, 0.01);
    EXPECT_NEAR(s.x2, x2, 0.01);
    EXPECT_NEAR(s.y2, y2, 0.01);
}

struct DrawingCase {
    const char* what;
    std::function<void()> check;
};
void PrintTo(const DrawingCase& c, std::ostream* out) { *out << c.what; }

// A picture of 7200 x 4500 twips unless told: the vertical axis at 6550, the horizontal at 4000.
const DrawingCase drawingCases[] = {
    {"an empty security is a blank picture", [] {
         const Steps steps = draw({});
         ASSERT_EQ(steps.size(), 1u);
         EXPECT_EQ(steps[0].kind, ChartStep::Clear);
         EXPECT_EQ(steps[0].colour, ChartColour::White);
     }},
    {"a single record: a step of a third of the axis, one level stretch, both date labels", [] {
         // Range 98..102: 1000 twips a price.
         const Steps steps = draw({quote("02/01/2004", 100, 101.3, 99.2, 100.5)});
         const float step = 6550.0f / 3;
         const Steps lines = only(steps, ChartStep::Line);
         ASSERT_EQ(lines.size(), 3u);
         expectLine(lines[0], 0, 4000, 7200, 4000);
         expectLine(lines[1], 6550, 0, 6550, 4500);
         expectLine(lines[2], 10, 1500, 10 + step, 1500);
         EXPECT_EQ(texts(steps), (QStringList{" 98 @6550,4000", " 102 @6550,0", "2/1/04@10,4000",
                                              QStringLiteral("02/01/2004@%1,4000").arg(qRound(10 + step - 700))}));
     }},
    {"highs of 100.4 and lows of 99.6: labels at 99 and 101, grid lines at 100 and 101", [] {
         const Steps steps = draw(days(2));
         EXPECT_EQ(priceLabels(steps), (QStringList{" 99 ", " 101 "}));
         const Steps grid = only(steps, ChartStep::Line, ChartColour::Grid);
         ASSERT_EQ(grid.size(), 2u);
         expectLine(grid[0], 0, 2000, 6550, 2000);
         expectLine(grid[1], 0, 0, 6550, 0);
     }},
    {"halves round to even before the padding", [] {
         EXPECT_EQ(priceLabels(draw({quote("02/01/2004", 99, 100.5, 98.5, 99)})), (QStringList{" 97 ", " 101 "}));
         EXPECT_EQ(priceLabels(draw({quote("02/01/2004", 100, 101.5, 99.5, 100)})), (QStringList{" 99 ", " 103 "}));
     }},
    {"a label every 25th line and at the top; a bottom below zero keeps its sign", [] {
         const Steps steps = draw(days(3, 1, 59));
         EXPECT_EQ(priceLabels(steps), (QStringList{" 0 ", " 25 ", " 50 ", " 60 "}));
         EXPECT_EQ(only(steps, ChartStep::Line, ChartColour::Grid).size(), 60u);
         EXPECT_EQ(priceLabels(draw(days(3, 0.4, 10))), (QStringList{"-1 ", " 11 "}));
     }},
    {"a range of exactly 25 labels bottom and top, the top once", [] {
         EXPECT_EQ(priceLabels(draw(days(3, 100, 123))), (QStringList{" 99 ", " 124 "}));
     }},
    {"29 records print no month label, 30 one at the x of record 29, 60 two", [] {
         auto months = [](const Steps& steps) {
             QStringList out;
             for (const QString& t : texts(steps))
                 if (t.count(u'/') == 1)
                     out << t;
             return out;
         };
         EXPECT_EQ(months(draw(days(29))), QStringList());
         const float step = 6550.0f / 32;
         EXPECT_EQ(months(draw(days(30))), QStringList{QStringLiteral("1/04@%1,4000").arg(qRound(10 + 29 * step))});
         EXPECT_EQ(months(draw(days(60))).size(), 2);
     }},
    {"a line begins level from x = 10 and then joins the closes", [] {
         // Range 99..102: 4000 / 3 twips a price.
         const Steps lines = seriesLines(draw({quote("02/01/2004", 100, 100.5, 99.6, 100.5),
                                               quote("03/01/2004", 100, 101.3, 99.6, 101)}));
         const float step = 6550.0f / 4, scale = 4000.0f / 3;
         ASSERT_EQ(lines.size(), 2u);
         expectLine(lines[0], 10, 4000 - 1.5f * scale, 10 + step, 4000 - 1.5f * scale);
         expectLine(lines[1], 10 + step, 4000 - 1.5f * scale, 10 + 2 * step, 4000 - 2 * scale);
     }},
    {"a bar: the range, the open tick 50 to the left, the close tick 50 to the right", [] {
         // Range 98..102.
         const Steps lines = seriesLines(draw({quote("02/01/2004", 99.5, 101, 99, 100.5)}, ChartSeries::Bar));
         const float x = 10 + 6550.0f / 3;
         ASSERT_EQ(lines.size(), 3u);
         expectLine(lines[0], x, 1000, x, 3000);
         expectLine(lines[1], x, 2500, x - 50, 2500);
         expectLine(lines[2], x, 1500, x + 50, 1500);
     }},
    {"candles: a white stroke through the body, filled only when Open > Close, Open = Close a level box", [] {
         const Steps steps = draw({quote("02/01/2004", 100.5, 101, 99, 99.5), quote("03/01/2004", 99.5, 101, 99, 100.5),
                                   quote("04/01/2004", 100, 101, 99, 100)},
                                  ChartSeries::Candle);
         const float step = 6550.0f / 5;
         const Steps white = only(steps, ChartStep::Line, ChartColour::White);
         ASSERT_EQ(white.size(), 3u);
         expectLine(white[0], 10 + step, 1500, 10 + step, 2500);
         const Steps filled = only(steps, ChartStep::FilledBox), outlined = only(steps, ChartStep::Box);
         ASSERT_EQ(filled.size(), 1u);
         expectLine(filled[0], 10 + step - 15, 1500, 10 + step + 15, 2500);
         ASSERT_EQ(outlined.size(), 2u);
         expectLine(outlined[0], 10 + 2 * step - 15, 2500, 10 + 2 * step + 15, 1500);
         expectLine(outlined[1], 10 + 3 * step - 15, 2000, 10 + 3 * step + 15, 2000);
         // Each record: the range, the stroke, the body, in that order.
         ASSERT_EQ(steps.back().kind, ChartStep::Text);
         EXPECT_EQ(steps[steps.size() - 2].kind, ChartStep::Box);
         EXPECT_EQ(steps[steps.size() - 3].colour, ChartColour::White);
         expectLine(steps[steps.size() - 4], 10 + 3 * step, 1000, 10 + 3 * step, 3000);
     }},
    {"a picture narrower than 650 twips runs the series off to the left and still ends", [] {
         const Steps steps = draw(days(2), ChartSeries::Line, 600, 4500);
         const float step = -50.0f / 4;
         const Steps lines = seriesLines(steps);
         ASSERT_EQ(lines.size(), 2u);
         EXPECT_NEAR(lines[1].x2, 10 + 2 * step, 0.01);
         EXPECT_EQ(priceLabels(steps, -50), (QStringList{" 99 ", " 101 "}));
         EXPECT_TRUE(texts(steps).last().startsWith("03/01/2004@"));
     }},
    {"a date that doesn't read as a date ends the drawing after the grid", [] {
         const Steps steps = draw({quote("N/A", 100, 100.4, 99.6, 100)});
         EXPECT_EQ(texts(steps), (QStringList{" 99 @6550,4000", " 101 @6550,0"}));
         EXPECT_TRUE(seriesLines(steps).empty());
     }},
};

class ChartDrawing : public ::testing::TestWithParam<DrawingCase> {};

TEST_P(ChartDrawing, EdgeCases) {
    const LocaleGuard locale(QStringLiteral("en_GB"));
    SCOPED_TRACE(GetParam().what);
    GetParam().check();
}
INSTANTIATE_TEST_SUITE_P(Cases, ChartDrawing, ::testing::ValuesIn(drawingCases));

// The date labels are written day, month, two-digit year with the system's separator, whatever
// order the short date has; the last label is the record's own date text.
TEST(ChartDateLabels, FollowTheSeparatorOfEachLocale) {
    const struct {
        const char* locale;
        QStringList first;
    } cases[] = {{"en_GB", {"2/1/04", "1/04", "01/03/2004"}},
                 {"en_US", {"2/1/04", "1/04", "3/1/2004"}},
                 {"de_DE", {"2.1.04", "1.04", "01.03.2004"}}};
    for (const auto& c : cases) {
        const LocaleGuard locale(QString::fromLatin1(c.locale));
        QStringList got;
        for (const QString& t : texts(draw(days(60))))
            if (!t.startsWith(u' '))
                got << t.section(u'@', 0, 0);
        EXPECT_EQ(got.mid(0, 2) << got.last(), c.first) << c.locale;
    }
}

class ChartLoad : public SheetFixture {
protected:
    // Records with the stored values given; date 2 January 2004 on.
    void makeValues(const QString& symbol, const std::vector<std::pair<double, double>>& closeAndVolume) {
        std::vector<Rec> records;
        QDate day(2004, 1, 2);
        for (auto [close, volume] : closeAndVolume) {
            records.push_back({Regional::toStoreDate(day), close, close + 1, close - 1, close, volume});
            day = day.addDays(1);
        }
        makeSecurity(temp.path(), symbol, symbol + " Ltd", records);
    }

    std::unique_ptr<ChartWindow> shownChart(const QString& folder, const QString& symbol) {
        auto chart = std::make_unique<ChartWindow>();
        chart->path = folder;
        chart->symbol = symbol;
        chart->setWindowTitle(QStringLiteral("Chart of ") + symbol);
        chart->load();
        chart->show();
        QApplication::processEvents();
        return chart;
    }

    static bool allWhite(const QPixmap& picture) {
        const QImage image = picture.toImage();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if ((image.pixel(x, y) & 0xFFFFFF) != 0xFFFFFF)
                    return false;
        return true;
    }
};

// The progress window is told what the load does; prices are kept as their "####0.00" text read
// back, volumes rounded half to even.
TEST_F(ChartLoad, ReadsThroughTheProgressWindowAndKeepsTwoDecimals) {
    makeValues("ROUND", {{12.345, 1000.5}, {7.126, 1001.5}, {3.004, 2.4}});
    for (const char* name : {"en_GB", "de_DE"}) {
        const LocaleGuard locale(QString::fromLatin1(name));
        progress.log->calls.clear();
        std::vector<QuoteRecord> quotes;
        ASSERT_EQ(LoadChart(" " + temp.path() + " ", " ROUND ", quotes), ChartLoadEnd::Complete);
        ASSERT_EQ(quotes.size(), 3u);
        EXPECT_EQ(quotes[0].Dat, DateToText(20040102)) << name;
        EXPECT_EQ((std::vector<double>{quotes[0].ClosePrice, quotes[1].ClosePrice, quotes[2].ClosePrice}),
                  (std::vector<double>{12.35, 7.13, 3.0})) << name;
        EXPECT_EQ(quotes[0].High, 13.35);
        EXPECT_EQ((std::vector<qint32>{quotes[0].Volume, quotes[1].Volume, quotes[2].Volume}),
                  (std::vector<qint32>{1000, 1002, 2}));
        EXPECT_EQ(progress.log->calls,
                  (QStringList{"Show", "SetRange 0 3", "SetStep 1", "SetCaption Read Security data...",
                               "SetMessage Progress....", "StepIt", "StepIt", "StepIt", "released"}));
    }
}

// A folder or symbol that can't be opened gives an empty white chart and no message; a volume
// beyond 32 bits ends the load with the records so far, the last with a volume of 0; record
// 32,768 ends it with 32,767.
TEST_F(ChartLoad, EndsSilently) {
    makeValues("HUGE", {{10, 5}, {11, 3e9}, {12, 7}});
    std::vector<QuoteRecord> quotes;
    EXPECT_THROW(LoadChart(temp.path(), "HUGE", quotes), Failure);
    ASSERT_EQ(quotes.size(), 2u);
    EXPECT_EQ(quotes[1].ClosePrice, 11);
    EXPECT_EQ(quotes[1].Volume, 0);

    for (const auto& [folder, symbol] : {std::pair{temp.file("none"), QStringLiteral("HUGE")},
                                         std::pair{temp.path(), QStringLiteral("NONE")}}) {
        auto chart = shownChart(folder, symbol);
        EXPECT_FALSE(chart->chartPicture->picture().isNull());
        EXPECT_TRUE(allWhite(chart->chartPicture->picture())) << symbol.toStdString();
    }
    auto partial = shownChart(temp.path(), "HUGE");
    EXPECT_FALSE(allWhite(partial->chartPicture->picture()));
    EXPECT_TRUE(platform.boxes.isEmpty()) << platform.boxTexts().join('|').toStdString();

    makeSecurity(temp.path(), "LONG", "Long", series(ChartRecordLimit + 1, QDate(1920, 1, 1)));
    quotes.clear();
    EXPECT_THROW(LoadChart(temp.path(), "LONG", quotes), Failure);
    EXPECT_EQ(quotes.size(), size_t(ChartRecordLimit));
}

// A cancel keeps the records read so far; the window shows them once it is shown.
TEST_F(ChartLoad, CancelKeepsTheSeriesReadSoFar) {
    makeSecurity(temp.path(), "AAA", "Alpha", series(10));
    progress.log->cancelAfterSteps = 3;
    std::vector<QuoteRecord> quotes;
    EXPECT_EQ(LoadChart(temp.path(), "AAA", quotes), ChartLoadEnd::Cancelled);
    EXPECT_EQ(quotes.size(), 3u);
    EXPECT_EQ(progress.log->calls.mid(progress.log->calls.size() - 2), (QStringList{"Hide", "released"}));
    EXPECT_FALSE(allWhite(shownChart(temp.path(), "AAA")->chartPicture->picture()));
}

// Two charts of one security opened through Open Security each keep their own series option and
// their own picture; a resize redraws at the new size.
TEST_F(ChartLoad, TwoChartsOfOneSecurityAreIndependent) {
    makeSecurity(temp.path(), "BBB", "Beta Foods", series(40));
    sharedState().LastFolder = temp.path();
    for (int i = 0; i < 2; ++i) {
        OpenSecurityDialog dialog;
        dialog.opensChart = true;
        dialog.show();
        QApplication::processEvents();
        dialog.openButton->click();
    }
    QList<ChartWindow*> charts;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto chart = qobject_cast<ChartWindow*>(w); chart && chart->isVisible())
            charts << chart;
    ASSERT_EQ(charts.size(), 2);
    for (ChartWindow* chart : charts) {
        EXPECT_EQ(chart->windowTitle(), "Chart of Beta Foods");
        EXPECT_TRUE(chart->lineOption->isChecked());
        EXPECT_EQ(chart->lineOption->text() + chart->barOption->text() + chart->candleOption->text(), "LineBarCandle");
    }
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
    const LocaleGuard locale(QStringLiteral("en_GB"));
    std::vector<Rec> records;
    for (int i = 0; i < 12; ++i) {
        const double open = i % 2 ? 103 : 107;
        records.push_back({Regional::toStoreDate(QDate(2004, 1, 5).addDays(i)), open, 110, 100, 210 - open, 1});
    }
    makeSecurity(temp.path(), "CND", "Candles", records);
    auto chart = shownChart(temp.path(), "CND");
    chart->candleOption->click();
    const QImage image = chart->chartPicture->picture().toImage();

    std::vector<QuoteRecord> quotes;
    LoadChart(temp.path(), "CND", quotes);
    const double tx = 1440.0 / chart->logicalDpiX(), ty = 1440.0 / chart->logicalDpiY();
    Steps steps;
    DrawChartSecurity(quotes, float(image.width() * tx), float(image.height() * ty), ChartSeries::Candle, steps);
    auto at = [&](float x, float y) { return image.pixel(qRound(x / tx), qRound(y / ty)) & 0xFFFFFF; };

    int grid = 0, filled = 0, hollow = 0, labels = 0;
    for (const ChartStep& s : steps) {
        if (s.kind == ChartStep::Line && s.colour == ChartColour::Grid) {
            EXPECT_EQ(at(0, s.y1), 0xE6E6E6u) << s.y1;
            ++grid;
        } else if (s.kind == ChartStep::FilledBox) {
            EXPECT_EQ(at(s.x1, (s.y1 + s.y2) / 2), 0u);
            EXPECT_EQ(at(s.x2, (s.y1 + s.y2) / 2), 0u);
            ++filled;
        } else if (s.kind == ChartStep::Box) {
            EXPECT_EQ(at((s.x1 + s.x2) / 2, (s.y1 + s.y2) / 2), 0xFFFFFFu);
            EXPECT_EQ(at(s.x1, (s.y1 + s.y2) / 2), 0u);
            ++hollow;
        } else if (s.kind == ChartStep::Text && !s.text.trimmed().isEmpty()) {
            // Clear of the axis the label stands on.
            const QRect box(qRound(s.x1 / tx) + 2, qRound(s.y1 / ty) + 2, 40, chart->fontMetrics().height() - 2);
            bool ink = false;
            for (int y = box.top(); y <= box.bottom() && !ink; ++y)
                for (int x = box.left(); x <= box.right() && x < image.width() && !ink; ++x)
                    ink = (image.pixel(x, y) & 0xFFFFFF) == 0;
            EXPECT_TRUE(ink) << s.text.toStdString();
            ++labels;
        }
    }
    const ChartStep& axis = only(steps, ChartStep::Line)[1];
    EXPECT_EQ(at(axis.x1, 20 * ty), 0u);
    EXPECT_EQ(at(axis.x1 / 2, 20 * ty), 0xFFFFFFu) << "between two grid lines, clear of the series, nothing is drawn";
    EXPECT_EQ((std::vector<int>{grid, filled, hollow}), (std::vector<int>{12, 6, 6}));
    EXPECT_EQ(labels, 4);
}

} // namespace
