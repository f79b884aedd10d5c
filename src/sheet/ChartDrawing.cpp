#include "sheet/ChartDrawing.h"

#include "frame/Regional.h"

#include <QDate>
#include <QLocale>

#include <cmath>
#include <limits>
#include <optional>

namespace {

// Layout constants, in twips.
constexpr float PriceMargin = 650;     // right of the vertical axis, for the price labels
constexpr float DateMargin = 500;      // below the horizontal axis, for the date labels
constexpr float SeriesStart = 10;      // x of the first date label and of the start of the series
constexpr float TickLength = 50;       // the open and close ticks of a bar
constexpr float HalfBody = 15;         // half the width of a candle body
constexpr float LastDateOffset = 700;  // the last date label stands this far left of the last record
constexpr int PriceLabelEvery = 25;    // grid lines
constexpr int DateLabelEvery = 30;     // records

// A price range end: a single-precision price rounded half to even, moved by one. Empty when it
// leaves the 32-bit range.
std::optional<qint64> rangeEnd(float price, int by) {
    const double whole = std::nearbyint(static_cast<double>(price)) + by;
    if (!(whole >= std::numeric_limits<qint32>::min() && whole <= std::numeric_limits<qint32>::max()))
        return std::nullopt;
    return static_cast<qint64>(whole);
}

// A price label: a blank in place of the sign of a positive number, and a blank behind.
QString priceLabel(qint64 price) {
    const QString number = Regional::numberText(static_cast<double>(price));
    return price < 0 ? number + u' ' : u' ' + number + u' ';
}

// Writes the dates of the labels, "d/m/yy" and "m/yy" with the system's date separator, once the
// record's date text has been read as a date under the system's rules.
class DateLabels {
public:
    DateLabels() {
        const QString separator = Regional::dateSeparator();
        QString quoted = separator;
        quoted.replace(u'\'', QStringLiteral("''"));
        const QString sep = separator.isEmpty() ? QString() : u'\'' + quoted + u'\'';
        dayMonthYear_ = QStringLiteral("d") + sep + QStringLiteral("M") + sep + QStringLiteral("yy");
        monthYear_ = QStringLiteral("M") + sep + QStringLiteral("yy");
    }
    std::optional<QString> dayMonthYear(const QString& dateText) const { return write(dateText, dayMonthYear_); }
    std::optional<QString> monthYear(const QString& dateText) const { return write(dateText, monthYear_); }

private:
    std::optional<QString> write(const QString& dateText, const QString& pattern) const {
        const std::optional<QDate> date = Regional::readDate(dateText);
        if (!date)
            return std::nullopt;
        return locale_.toString(*date, pattern);
    }
    QLocale locale_;
    QString dayMonthYear_;
    QString monthYear_;
};

} // namespace

void DrawChartSecurity(const std::vector<QuoteRecord>& quotes, float width, float height, ChartSeries series,
                       std::vector<ChartStep>& steps) {
    steps.clear();
    steps.push_back({ChartStep::Clear, 0, 0, width, height, ChartColour::White, {}});
    if (quotes.empty())
        return;   // record 1 isn't there: the picture stays blank

    // The price range, in single precision, with a whole price of room at either end.
    float highest = static_cast<float>(quotes.front().High);
    float lowest = static_cast<float>(quotes.front().Low);
    for (const QuoteRecord& q : quotes) {
        const auto high = static_cast<float>(q.High);
        const auto low = static_cast<float>(q.Low);
        if (high > highest)
            highest = high;
        if (low < lowest)
            lowest = low;
    }
    const std::optional<qint64> top = rangeEnd(highest, 1);
    const std::optional<qint64> bottom = rangeEnd(lowest, -1);
    if (!top || !bottom)
        return;
    const qint64 topPrice = *top;
    const qint64 bottomPrice = *bottom;

    const float axisX = width - PriceMargin;
    const float baseY = height - DateMargin;
    const auto n = static_cast<qint64>(quotes.size());
    steps.reserve(static_cast<size_t>(8 + (topPrice - bottomPrice) + n * 3 + n / DateLabelEvery));

    auto line = [&](float x1, float y1, float x2, float y2, quint32 colour = ChartColour::Foreground) {
        steps.push_back({ChartStep::Line, x1, y1, x2, y2, colour, {}});
    };
    auto text = [&](float x, float y, QString label) {
        steps.push_back({ChartStep::Text, x, y, x, y, ChartColour::Foreground, std::move(label)});
    };

    // The axes run through the margins to the edges of the picture.
    line(0, baseY, width, baseY);
    line(axisX, 0, axisX, height);

    const float barStep = axisX / static_cast<float>(n + 2);
    const float priceScale = baseY / static_cast<float>(topPrice - bottomPrice);
    // A price's y, mapped in double precision and kept in single.
    auto position = [&](double price) {
        return static_cast<float>(static_cast<double>(baseY) -
                                  (price - static_cast<double>(bottomPrice)) * static_cast<double>(priceScale));
    };

    // A grid line for every whole price but the bottom one, where the axis lies; a label at the
    // bottom, every 25th line up from it, and the top.
    float y = baseY;
    int labelCounter = 0;
    for (qint64 p = bottomPrice; p <= topPrice; ++p) {
        ++labelCounter;
        if (p == bottomPrice || labelCounter == PriceLabelEvery || p == topPrice) {
            text(axisX, y, priceLabel(p));
            labelCounter = 0;
        }
        if (p != bottomPrice)
            line(0, y, axisX, y, ChartColour::Grid);
        y -= priceScale;
    }

    const DateLabels dates;
    const std::optional<QString> firstDate = dates.dayMonthYear(quotes.front().Dat);
    if (!firstDate)
        return;
    text(SeriesStart, baseY, *firstDate);

    float x = SeriesStart;
    float previousX = SeriesStart;
    float previousY = 0;
    int dateCounter = 0;
    for (const QuoteRecord& q : quotes) {
        x += barStep;
        switch (series) {
        case ChartSeries::Line: {
            const float closeY = position(q.ClosePrice);
            if (previousY == 0)
                previousY = closeY;   // the series begins with a level stretch from x = 10
            line(previousX, previousY, x, closeY);
            previousY = closeY;
            break;
        }
        case ChartSeries::Bar: {
            line(x, position(q.High), x, position(q.Low));
            const float openY = position(q.OpenPrice);
            line(x, openY, x - TickLength, openY);
            const float closeY = position(q.ClosePrice);
            line(x, closeY, x + TickLength, closeY);
            break;
        }
        case ChartSeries::Candle: {
            line(x, position(q.High), x, position(q.Low));
            const float openY = position(q.OpenPrice);
            const float closeY = position(q.ClosePrice);
            line(x, openY, x, closeY, ChartColour::White);   // takes the range line out of the body
            steps.push_back({q.OpenPrice > q.ClosePrice ? ChartStep::FilledBox : ChartStep::Box, x - HalfBody,
                             openY, x + HalfBody, closeY, ChartColour::Foreground, {}});
            break;
        }
        }
        if (++dateCounter == DateLabelEvery) {
            dateCounter = 0;
            const std::optional<QString> label = dates.monthYear(q.Dat);
            if (!label)
                return;
            text(previousX, baseY, *label);   // at the x of the record before
        }
        previousX = x;
    }

    text(x - LastDateOffset, baseY, quotes.back().Dat);
}
