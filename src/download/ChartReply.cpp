#include "download/ChartReply.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QTimeZone>
#include <QUrl>

#include <cmath>
#include <map>
#include <optional>

namespace {

// Session starts outside these bounds are no dates of the store (1 January 1900 to 31 December 9999).
constexpr double EarliestSeconds = -2208988800.0;
constexpr double LatestSeconds = 253402300799.0;
// No exchange lies further than 18 hours from UTC.
constexpr double MaxOffsetSeconds = 18 * 3600.0;

std::optional<double> number(const QJsonArray& values, qsizetype i) {
    if (i >= values.size())
        return std::nullopt;
    const QJsonValue value = values.at(i);
    if (!value.isDouble() || !std::isfinite(value.toDouble()))
        return std::nullopt;
    return value.toDouble();
}

// The exchange's calendar: its time zone by name when this system knows it, else the fixed
// offset the reply gives.
class ExchangeCalendar {
public:
    explicit ExchangeCalendar(const QJsonObject& meta) {
        const QByteArray name = meta.value(QLatin1String("exchangeTimezoneName")).toString().toUtf8();
        if (!name.isEmpty() && name.size() <= 64 && QTimeZone::isTimeZoneIdAvailable(name))
            zone_ = QTimeZone(name);
        const QJsonValue offset = meta.value(QLatin1String("gmtoffset"));
        if (offset.isDouble() && std::abs(offset.toDouble()) <= MaxOffsetSeconds)
            offsetSeconds_ = qint64(offset.toDouble());
    }

    QDate dateOf(double seconds) const {
        const auto whole = qint64(seconds);
        if (zone_.isValid())
            return QDateTime::fromSecsSinceEpoch(whole, zone_).date();
        return QDateTime::fromSecsSinceEpoch(whole + offsetSeconds_, Qt::UTC).date();
    }

private:
    QTimeZone zone_;
    qint64 offsetSeconds_ = 0;
};

} // namespace

namespace ChartReply {

QString query(const QString& symbol, const QDate& first, const QDate& last) {
    const auto seconds = [](const QDate& date) {
        return QString::number(QDateTime(date, QTime(0, 0), Qt::UTC).toSecsSinceEpoch());
    };
    return QStringLiteral("/v8/finance/chart/")
         + QString::fromLatin1(QUrl::toPercentEncoding(symbol.trimmed()))
         + QStringLiteral("?period1=") + seconds(first)
         + QStringLiteral("&period2=") + seconds(last.addDays(1))
         + QStringLiteral("&interval=1d&events=div%2Csplits");
}

QList<ChartBar> read(const QByteArray& body) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return {};
    const QJsonArray results = document.object().value(QLatin1String("chart")).toObject()
                                   .value(QLatin1String("result")).toArray();
    if (results.isEmpty())
        return {};
    const QJsonObject result = results.at(0).toObject();
    const QJsonArray timestamps = result.value(QLatin1String("timestamp")).toArray();
    const QJsonObject quote = result.value(QLatin1String("indicators")).toObject()
                                  .value(QLatin1String("quote")).toArray().at(0).toObject();
    const auto column = [&](const char* name) { return quote.value(QLatin1String(name)).toArray(); };
    const QJsonArray opens = column("open"), highs = column("high"), lows = column("low"),
                     closes = column("close"), volumes = column("volume");
    const ExchangeCalendar calendar(result.value(QLatin1String("meta")).toObject());

    std::map<QDate, ChartBar> byDate;
    for (qsizetype i = 0; i < timestamps.size(); ++i) {
        const auto seconds = number(timestamps, i);
        const auto open = number(opens, i), high = number(highs, i), low = number(lows, i),
                   close = number(closes, i), volume = number(volumes, i);
        if (!seconds || !open || !high || !low || !close || !volume)
            continue;
        if (*seconds < EarliestSeconds || *seconds > LatestSeconds)
            continue;
        const QDate date = calendar.dateOf(*seconds);
        if (!date.isValid() || date.year() < 1900 || date.year() > 9999)
            continue;
        byDate[date] = ChartBar{date, *open, *high, *low, *close, *volume};
    }

    QList<ChartBar> bars;
    bars.reserve(qsizetype(byDate.size()));
    for (auto it = byDate.rbegin(); it != byDate.rend(); ++it)
        bars.append(it->second);
    return bars;
}

} // namespace ChartReply
