#include "download/TodayBhavCopy.h"

#include "download/BhavCopyCsv.h"
#include "download/Inet.h"
#include "download/ServiceAddresses.h"
#include "download/ZipEngine.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Regional.h"

QString TodayBhavCopy::DayPath(const QDate& day) {
    if (day >= FirstNewFormDay)
        return QStringLiteral("/content/cm/BhavCopy_NSE_CM_0_0_0_%1_F_0000.csv.zip")
            .arg(Regional::yyyymmdd(day));
    const QString year = QString::number(day.year());
    const QString month = MonthAbbreviation(static_cast<qint16>(day.month()));
    return QStringLiteral("/content/historical/EQUITIES/") + year + u'/' + month + QStringLiteral("/cm")
         + QStringLiteral("%1").arg(day.day(), 2, 10, QLatin1Char('0')) + month + year + QStringLiteral("bhav.csv.zip");
}

std::optional<QList<BhavRow>> TodayBhavCopy::ReadArchive(const QByteArray& archive, QDate* tradeDay) {
    const std::optional<QByteArray> file = FirstMemberBytes(archive, MaxFileBytes, QStringLiteral(".csv"));
    if (!file)
        return std::nullopt;
    return BhavCopyCsv::read(*file, tradeDay);
}

std::optional<QList<BhavRow>> TodayBhavCopy::FetchDay(const QDate& day) {
    const Inet::Headers headers{{"User-Agent", ServiceAddresses::browserUserAgent()},
                                {"Referer", "https://www.nseindia.com/"}};
    // 404 is a day without trading. A failed transfer or another answer is a day not fetched: it
    // ends the walk, so that the next run asks for that day again instead of passing it by.
    QByteArray body;
    try {
        body = connection_.OpenURLBytes(address_ + DayPath(day), headers);
    } catch (const Failure& failure) {
        throw Failure(failure.Number,
                      QStringLiteral("The bhav copy of %1 could not be fetched: %2").arg(Regional::dateText(day),
                                                                                         failure.Description),
                      QStringLiteral("TodayBhavCopy::FetchDay"));
    }
    const int status = connection_.ResponseCode();
    if (status == 404)
        return std::nullopt;
    if (status != 200)
        throw Failure(FailureNumber::Network,
                      QStringLiteral("The exchange answered %1 for the bhav copy of %2.").arg(status).arg(
                          Regional::dateText(day)),
                      QStringLiteral("TodayBhavCopy::FetchDay"));
    QDate traded;
    auto rows = ReadArchive(body, &traded);
    // A file of another day's trades (a stale copy, a cache's mistake) is no bhav copy of this day:
    // stored under this day it would make up a day. The walk ends, and the day is asked again.
    if (rows && traded.isValid() && traded != day)
        throw Failure(FailureNumber::Network,
                      QStringLiteral("The bhav copy of %1 holds the trades of %2.")
                          .arg(Regional::dateText(day), Regional::dateText(traded)),
                      QStringLiteral("TodayBhavCopy::FetchDay"));
    return rows;
}
