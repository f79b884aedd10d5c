#include "download/NseIndexRun.h"

#include "download/IndexCloses.h"
#include "download/Inet.h"
#include "download/ServiceAddresses.h"
#include "frame/Failure.h"
#include "frame/Platform.h"
#include "frame/Regional.h"
#include "store/FolderLock.h"
#include "store/MetaStockFormat.h"
#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"

#include <QDir>

namespace {

const QString Source = QStringLiteral("NseIndexRun::Run");

// The name a security of the index gets: what the store keeps of it, a character it can't hold
// (or one that would end the name early) as "?".
QString storedName(const QString& name) {
    QString text = name;
    for (QChar& c : text)
        if (c.unicode() < 0x20 || !metastock::unstorableCharacter(QString(c)).isNull())
            c = u'?';
    return text.simplified().left(metastock::MaxNameLength).trimmed();
}

// What identifies an index by its name: its letters and digits in upper case, so that the
// exchange's changes of case and spacing ("NIFTY 50", "Nifty 50") keep to one security.
QString nameKey(const QString& name) {
    const QString stored = storedName(name);
    QString key;
    for (const QChar c : stored)
        if (c.isLetterOrNumber())
            key += c.toUpper();
    return key.isEmpty() ? stored.toUpper() : key;
}

// Asks `address` for the closes of `day`, as a browser on the exchange's site would. Empty when the
// day has no data: 404 (a day without trading) or a reply with no row. A failed transfer or
// another answer raises: the walk ends there, so that the next run asks for that day again
// instead of passing it by for good.
std::optional<QList<IndexClose>> fetchDay(Inet& connection, const QString& address, const QDate& day) {
    const QString url =
        address + QStringLiteral("/content/indices/ind_close_all_%1.csv").arg(day.toString(QStringLiteral("ddMMyyyy")));
    const Inet::Headers headers{{"User-Agent", ServiceAddresses::browserUserAgent()},
                                {"Referer", "https://www.nseindia.com/"}};
    QByteArray body;
    try {
        body = connection.OpenURLBytes(url, headers);
    } catch (const Failure& failure) {
        throw Failure(failure.Number,
                      QStringLiteral("The index closes of %1 could not be fetched: %2\nThe next download asks "
                                     "for that day again.")
                          .arg(Regional::dateText(day), failure.Description),
                      Source);
    }
    const int status = connection.ResponseCode();
    if (status == 404)
        return std::nullopt;
    if (status != 200)
        throw Failure(FailureNumber::Network,
                      QStringLiteral("The exchange answered %1 for the index closes of %2.\nThe next download "
                                     "asks for that day again.")
                          .arg(status)
                          .arg(Regional::dateText(day)),
                      Source);
    return IndexCloses::read(body);
}

} // namespace

NseIndexRun::NseIndexRun(Inet& connection, const QString& address, NseIndexListener& listener)
    : connection_(connection), address_(address), listener_(listener) {}

QString NseIndexRun::SymbolFor(const QString& name, const QSet<QString>& taken) {
    QString base;
    for (const QChar c : name)
        if ((c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'))
            base += c.toUpper();
    if (base.isEmpty())
        base = QStringLiteral("INDEX");
    QString symbol = base.left(metastock::MaxSymbolLength);
    for (int n = 2; taken.contains(symbol); ++n) {
        const QString suffix = QString::number(n);
        symbol = base.left(metastock::MaxSymbolLength - suffix.size()) + suffix;
    }
    return symbol;
}

void NseIndexRun::survey(const QString& folder) {
    symbolOf_.clear();
    taken_.clear();
    lastDate_ = QDate();
    SecurityReader reader;
    try {
        reader.OpenFolder(folder);
    } catch (const Failure&) {
        // A folder without a store is an empty one; one whose store the writer refuses as well
        // fails here with the writer's reason.
        SecurityWriter probe;
        probe.OpenFolder(folder);
        probe.CloseFolder();
        return;
    }
    qint32 last = 0;
    while (reader.GetSecuritiesRemaining() > 0) {
        reader.NextSecurity();
        const QString symbol = reader.GetSymbol().trimmed();
        taken_.insert(symbol.toUpper());
        const QString key = nameKey(reader.GetName());
        if (!symbolOf_.contains(key))
            symbolOf_.insert(key, symbol);
        passOver([&] { last = std::max(last, reader.GetLastDate()); });
    }
    reader.CloseFolder();
    lastDate_ = Regional::fromStoreDate(last);
}

int NseIndexRun::Run(const QString& folderText) {
    const QString folder = folderText.trimmed();
    StopRequested = false;
    stopped_ = false;
    if (folder.isEmpty())
        throw Failure(FailureNumber::PathNotFound, QStringLiteral("No folder was given."), Source);
    if (!QDir(folder).exists() && !QDir().mkpath(folder))
        throw Failure(FailureNumber::PathNotFound,
                      QStringLiteral("The folder %1 can't be made.").arg(QDir::toNativeSeparators(folder)), Source);
    // The folder is held for the whole run: no other program writes it meanwhile.
    const FolderLock lock(folder, "NseIndexRun", "Run");
    survey(folder);

    const QDate today = platform().today();
    const QDate first = lastDate_.isValid() ? lastDate_.addDays(1) : today.addDays(-NewFolderDays);
    const qint64 count = first.daysTo(today) + 1;
    int daysWithData = 0;
    for (qint64 i = 0; i < count; ++i) {
        if (StopRequested) {
            stopped_ = true;
            break;
        }
        const QDate day = first.addDays(i);
        listener_.dayStarted(QStringLiteral("Fetching %1 (%2 of %3)").arg(Regional::dateText(day)).arg(i + 1).arg(count));
        const auto rows = fetchDay(connection_, address_, day);
        if (!rows)
            continue;
        // A file of another day's values (a stale copy) would overwrite that day, or move the
        // folder past today: the run ends, and the day is asked for again.
        for (const IndexClose& row : *rows)
            if (row.Date.isValid() && row.Date != day)
                throw Failure(FailureNumber::Network,
                              QStringLiteral("The index closes of %1 hold the values of %2.\nThe next download asks "
                                             "for that day again.")
                                  .arg(Regional::dateText(day), Regional::dateText(row.Date)),
                              Source);
        int written = 0;
        try {
            written = writeDay(folder, *rows);
        } catch (const Failure& failure) {
            throw Failure(failure.Number,
                          QStringLiteral("The indices of %1 could not be written: %2")
                              .arg(Regional::dateText(day), failure.Description),
                          Source);
        }
        ++daysWithData;
        listener_.dayUpdated(QStringLiteral("%1 Updated: %2 %3.")
                                 .arg(Regional::dateText(day))
                                 .arg(written)
                                 .arg(written == 1 ? QStringLiteral("index") : QStringLiteral("indices")));
    }
    return daysWithData;
}

int NseIndexRun::writeDay(const QString& folder, const QList<IndexClose>& rows) {
    // One writer a day: should a write fail, the writer is released while the failure unwinds
    // and drops the security's batch.
    SecurityWriter writer;
    writer.OpenFolder(folder);
    QSet<QString> done;
    for (const IndexClose& row : rows) {
        const QString key = nameKey(row.Name);
        if (done.contains(key))
            continue;   // one record per index and day: the first line of a name
        done.insert(key);
        QString symbol = symbolOf_.value(key);
        if (symbol.isEmpty()) {
            symbol = SymbolFor(row.Name, taken_);
            writer.CreateSecurity(symbol, storedName(row.Name), 1);
            taken_.insert(symbol);
            symbolOf_.insert(key, symbol);
        } else {
            writer.OpenSecurity(symbol);
        }
        writer.AddQuote(Regional::toStoreDate(row.Date), 0, row.Open, row.High, row.Low, row.Close, row.Volume, 0.0);
        writer.SaveQuotes();
        writer.CloseSecurity();
    }
    writer.CloseFolder();
    return int(done.size());
}
