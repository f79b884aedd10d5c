#include "download/BhavCopy.h"

#include "download/DailyQuotes.h"
#include "download/Inet.h"
#include "download/ServiceAddresses.h"
#include "download/TodayBhavCopy.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Regional.h"

namespace {

constexpr qsizetype Stride = 12;   // tokens of a row, the header's included

} // namespace

QString BhavCopyArchive::DayPath(const QDate& day) {
    const QString year = QString::number(day.year());
    const QString month = MonthAbbreviation(static_cast<qint16>(day.month()));
    return QStringLiteral("/content/historical/EQUITIES/") + year + u'/' + month + QStringLiteral("/cm")
         + QString::number(day.day()) + month + year + QStringLiteral("bhav.csv");
}

QList<BhavRow> BhavCopyArchive::ReadRows(const QString& reply) {
    const QString normalised = DailyQuotes::NormaliseReply(reply);
    const QList<QStringView> tokens = QStringView(normalised).split(u',');
    const qsizetype last = tokens.size() - 1;
    const Regional::NumberReader numbers;

    QList<BhavRow> rows;
    rows.reserve(tokens.size() / Stride);
    for (qsizetype j = Stride; j <= last - 3; j += Stride) {
        const QStringView symbol = tokens[j].trimmed();
        if (symbol == u"W1")
            continue;
        BhavRow row;
        row.Symbol = symbol.toString();
        if (j + 8 <= last) {
            const auto open = numbers.read(tokens[j + 2]);
            const auto high = numbers.read(tokens[j + 3]);
            const auto low = numbers.read(tokens[j + 4]);
            const auto close = numbers.read(tokens[j + 5]);
            const auto volume = numbers.read(tokens[j + 8]);
            if (open && high && low && close && volume) {
                row.HasPrices = true;
                row.Open = *open;
                row.High = *high;
                row.Low = *low;
                row.Close = *close;
                row.Volume = *volume;
            }
        }
        rows.append(std::move(row));
    }
    return rows;
}

std::optional<QList<BhavRow>> BhavCopyArchive::FetchDay(const QDate& day) {
    QString reply;
    // A fetch that fails is an empty reply.
    passOver([&] { reply = connection_.OpenURL(ServiceAddresses::nseBhavCopies() + DayPath(day)); });
    if (reply.size() <= NoDataLength)
        return std::nullopt;
    return ReadRows(reply);
}

std::unique_ptr<BhavCopySource> MakeBhavCopySource(Inet& connection) {
    const ServiceAddresses::Source source = ServiceAddresses::bhavcopySource();
    if (source.today)
        return std::make_unique<TodayBhavCopy>(connection, source.address);
    return std::make_unique<BhavCopyArchive>(connection);
}
