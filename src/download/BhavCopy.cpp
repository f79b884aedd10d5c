#include "download/BhavCopy.h"

#include "download/Inet.h"
#include "download/ServiceAddresses.h"
#include "download/TodayBhavCopy.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Regional.h"

#include <vector>

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
    // The reply's tokens as if its carriage returns and line feeds were commas and it were split
    // at the commas, found in one pass without a copy of the reply.
    const QStringView text(reply);
    std::vector<std::pair<qsizetype, qsizetype>> tokens;   // start, length
    tokens.reserve(size_t(text.size() / 8 + 1));
    qsizetype start = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c == u',' || c == 13 || c == 10) {
            tokens.emplace_back(start, i - start);
            start = i + 1;
        }
    }
    tokens.emplace_back(start, text.size() - start);
    const auto token = [&](qsizetype j) { return text.mid(tokens[size_t(j)].first, tokens[size_t(j)].second); };
    const qsizetype last = qsizetype(tokens.size()) - 1;
    const Regional::NumberReader numbers;

    QList<BhavRow> rows;
    rows.reserve(qsizetype(tokens.size()) / Stride);
    for (qsizetype j = Stride; j <= last - 3; j += Stride) {
        const QStringView symbol = token(j).trimmed();
        if (symbol == u"W1")
            continue;
        BhavRow row;
        row.Symbol = symbol.toString();
        if (j + 8 <= last) {
            const auto open = numbers.read(token(j + 2));
            const auto high = numbers.read(token(j + 3));
            const auto low = numbers.read(token(j + 4));
            const auto close = numbers.read(token(j + 5));
            const auto volume = numbers.read(token(j + 8));
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
