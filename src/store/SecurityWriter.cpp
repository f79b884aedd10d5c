#include "store/SecurityWriter.h"

#include "frame/Failure.h"
#include "frame/Regional.h"
#include "store/StoreFiles.h"
#include "store/FolderLock.h"
#include "store/Refusal.h"
#include "store/StoreFolder.h"

#include <QDir>

#include <algorithm>
#include <exception>
#include <map>
#include <optional>

using namespace metastock;

namespace {

constexpr Refusal refuse{"SecurityWriter"};

qint32 dateOf(const QString& text, const char* operation) {
    const qint32 date = Regional::toStoreDate(Regional::fromYyyymmdd(text.trimmed()));
    if (!isValidStoreDate(date))
        refuse(QStringLiteral("\"%1\" is not a date the store can hold: a day of the years 1900 to 2999, as yyyymmdd.")
                   .arg(text.trimmed()),
               operation);
    return date;
}

float valueOf(double value, const char* what, const char* operation) {
    const float f = float(value);  // NaN and values past a float's range come out infinite or NaN
    unsigned char mbf[4];
    if (!floatToMbf(f, mbf))
        refuse(QStringLiteral("The %1 %2 cannot be stored.").arg(QLatin1String(what)).arg(value), operation);
    return f;
}

// Index text is Windows-1252: a character outside it is refused rather than stored as another.
void requireStorable(const QString& text, const char* what, const char* operation) {
    const QChar c = unstorableCharacter(text);
    if (!c.isNull())
        refuse(QStringLiteral("The %1 \"%2\" holds the character \"%3\", which the store cannot hold.")
                   .arg(QLatin1String(what), text, QString(c)),
               operation);
}

// The symbol for security `self` (-1 for a new one): trimmed, not too long, and held by no other
// security of the folder.
QString checkedSymbol(const Folder& folder, const QString& symbol, int self, const char* operation) {
    const QString s = symbol.trimmed();
    if (s.isEmpty())
        refuse(QStringLiteral("A security needs a symbol."), operation);
    requireStorable(s, "symbol", operation);
    if (s.size() > MaxSymbolLength)
        refuse(QStringLiteral("The symbol \"%1\" is longer than %2 characters.").arg(s).arg(MaxSymbolLength), operation);
    const int holder = folder.findBySymbol(s);
    if (holder >= 0 && holder != self)
        refuse(QStringLiteral("The folder already holds a security with the symbol \"%1\".").arg(s), operation);
    return s;
}

// The name a security is given: the symbol when none, cut to what the index holds.
QString nameFor(const QString& name, const QString& symbol, const char* operation) {
    const QString n = name.trimmed();
    requireStorable(n, "name", operation);
    return n.isEmpty() ? symbol : n.left(MaxNameLength).trimmed();
}

// A failure with a sentence added that says what it left behind.
[[noreturn]] void rethrowSaying(const Failure& failure, const QString& outcome) {
    throw Failure(failure.Number, failure.Description + QLatin1Char(' ') + outcome, failure.Source);
}

} // namespace

struct SecurityWriter::Impl {
    std::optional<FolderLock> lock;   // held from OpenFolder to CloseFolder
    std::optional<Folder> folder;
    bool indexDirty = false;  // the index in memory differs from the one on disk
    // Securities created, deleted and renamed since the index was last written: the index files
    // are written once, when the folder closes, so that making many securities costs little.
    int created = 0, deleted = 0, renamed = 0;
    std::vector<QString> newFiles;   // data files made since, to flush before the index lists them
    std::vector<QString> doomed;     // data files of deleted securities, removed once the index is written
    int uncaughtAtBirth = std::uncaught_exceptions();

    // The selected security.
    int selected = -1;
    QString selectedPath;             // its data file
    Layout layout;
    DataSummary disk;                 // the data file as it is on disk
    StoreFiles::Stamp diskStamp;      // the data file's stamp when last seen
    bool loaded = false;              // `raw` and `dates` hold the file
    QByteArray raw;                   // header and counted records, as on disk
    std::vector<qint32> dates;        // the date of each record of `raw`
    std::map<qint32, std::optional<Record>> pending;  // date -> record to put, or none to remove
    qint32 seedDate = 0;              // first date added since the security was selected

    void requireFolder(const char* operation) const { refuse.requireFolder(folder.has_value(), operation); }
    Security& security(const char* operation) {
        requireFolder(operation);
        if (selected < 0)
            refuse(QStringLiteral("No security is selected."), operation);
        return folder->index.securities[size_t(selected)];
    }
    const QString& dataPath() const { return selectedPath; }

    void select(int i) {
        const Security& s = folder->index.securities[size_t(i)];
        const Layout l = s.layout();
        StoreFiles::Stamp seen;
        const QString fileName = s.dataFileName();
        QString path = folder->filePath(fileName);
        const DataSummary sum = summarize(path, l, fileName, &seen);
        deselect();
        selected = i;
        selectedPath = std::move(path);
        layout = l;
        disk = sum;
        diskStamp = seen;
    }
    void unload() {
        loaded = false;
        raw.clear();
        dates.clear();
        dates.shrink_to_fit();
    }
    void deselect() {
        selected = -1;
        unload();
        pending.clear();
        seedDate = 0;
    }

    // Reads the file once; later changes keep `raw` and `dates` as the disk has them.
    void load() {
        if (loaded)
            return;
        const Security& s = folder->index.securities[size_t(selected)];
        const QString path = dataPath();
        if (!StoreFiles::stamp(path).exists())
            refuse(QStringLiteral("The data file %1 is missing.").arg(s.dataFileName()), "OpenSecurity");
        QByteArray bytes = StoreFiles::readAll(path, maxDataSize(layout));
        const int count = dataRecordCount(bytes, bytes.size(), layout, s.dataFileName());
        bytes.truncate(qsizetype(count + 1) * layout.recordLength());
        disk = summaryOf(bytes, layout, count, &dates);
        raw = std::move(bytes);
        loaded = true;
    }

    // The file as just rewritten in order: `bytes`, holding the first `kept` records as they were
    // and then `after`.
    void keep(QByteArray bytes, int kept, const std::vector<Record>& after) {
        raw = std::move(bytes);
        dates.resize(size_t(kept));
        for (const Record& r : after)
            dates.push_back(r.date);
        if (kept == 0) {
            disk = summaryOf(after, layout.time);   // a file of several records a date stays one
        } else {
            disk = DataSummary{};
            disk.count = int(dates.size());
            if (!dates.empty()) {
                disk.firstDate = dates.front();
                disk.lastDate = dates.back();
            }
        }
        loaded = true;
        rememberSummary(dataPath(), layout, disk);
    }

    bool dateOnDisk(qint32 date) {
        if (disk.count == 0)
            return false;
        if (disk.ordered && (date > disk.lastDate || date < disk.firstDate))
            return false;
        load();
        if (disk.ordered && !layout.time)
            return std::binary_search(dates.begin(), dates.end(), date);
        return std::find(dates.begin(), dates.end(), date) != dates.end();
    }

    bool dateExists(qint32 date) {
        auto it = pending.find(date);
        if (it != pending.end())
            return it->second.has_value();
        return dateOnDisk(date);
    }

    // Puts the pending records and removals on disk. Records that all come after the last one of
    // an ordered file are appended; otherwise the file is rewritten through a temporary file:
    // from the first date touched on when it is in order, whole (sorted, one record a date) when not.
    void flush() {
        if (pending.empty() || selected < 0)
            return;
        try {
            putPending();
        } catch (const Failure& failure) {
            const QString symbol = folder->index.securities[size_t(selected)].key();
            // Gone, as the message says: the next step is not failed again by this batch.
            const size_t count = std::exchange(pending, {}).size();
            rethrowSaying(failure, count == 1 ? QStringLiteral("The change to %1 was not stored.").arg(symbol)
                                              : QStringLiteral("None of the %1 changes to %2 were stored.")
                                                    .arg(count).arg(symbol));
        }
        pending.clear();
        noteDates();
    }

    void putPending() {
        const bool onlyAdds = std::all_of(pending.begin(), pending.end(), [](const auto& p) { return p.second.has_value(); });
        if (onlyAdds && disk.ordered && (disk.count == 0 || pending.begin()->first > disk.lastDate))
            append();
        else if (onlyAdds && disk.ordered && !layout.time && replacesTailInPlace())
            overwriteTail();
        else if (disk.ordered && !layout.time)
            rewriteTail();
        else
            rewrite([&](std::vector<Record>& recs) {
                bool changed = false;
                for (const auto& [key, record] : pending) {
                    const qint32 date = key;   // a plain name the lambda below can capture
                    const auto gone = std::remove_if(recs.begin(), recs.end(), [date](const Record& r) { return r.date == date; });
                    changed = changed || gone != recs.end();
                    recs.erase(gone, recs.end());
                    if (record) {
                        recs.push_back(*record);
                        changed = true;
                    }
                }
                return changed;
            });
    }

    void checkCount(qint64 count) const {
        if (count > MaxRecords)
            refuse(QStringLiteral("A security holds at most %1 records.").arg(MaxRecords), "SaveQuotes");
    }

    void append() {
        std::vector<Record> added;
        added.reserve(pending.size());
        for (const auto& p : pending)
            added.push_back(*p.second);
        const int count = disk.count + int(added.size());
        checkCount(count);
        const QString path = dataPath();
        const qint64 length = layout.recordLength();
        const QByteArray bytes = encodeRecords(added, layout);
        StoreFiles::Stamp written;
        StoreFiles::writeParts(path, {{(disk.count + 1) * length, bytes}, {2, dataHeader(count, layout).mid(2, 2)}},
                               &written, diskStamp.ownerWritable);
        diskStamp = written;
        if (disk.count == 0)
            disk.firstDate = added.front().date;
        disk.lastDate = added.back().date;
        disk.count = count;
        rememberSummary(path, layout, disk, written);
        if (loaded) {
            raw += bytes;
            setDataCount(raw, count);
            for (const Record& r : added)
                dates.push_back(r.date);
        }
    }

    // Whether the pending records give every record from the first pending date on a new value of
    // the same date, and add only dates after the last: then each record keeps its place.
    bool replacesTailInPlace() {
        load();
        const auto from = std::lower_bound(dates.begin(), dates.end(), pending.begin()->first);
        if (qsizetype(dates.end() - from) > qsizetype(pending.size()))
            return false;
        auto p = pending.begin();
        for (auto d = from; d != dates.end(); ++d, ++p)
            if (p->first != *d)
                return false;
        return true;
    }

    // The tail written over where it lies and the new records after it, the count last: a file
    // cut short at any point holds every date it held, each with its old or its new values (a
    // power cut that tears the write inside a record can mix the two there; the dates are the
    // same bytes either way, and the next merge asks for those days again).
    void overwriteTail() {
        const int kept = int(std::lower_bound(dates.begin(), dates.end(), pending.begin()->first) - dates.begin());
        std::vector<Record> after;
        after.reserve(pending.size());
        for (const auto& p : pending)
            after.push_back(*p.second);
        const int count = kept + int(after.size());
        checkCount(count);
        const qint64 length = layout.recordLength();
        const QByteArray tail = encodeRecords(after, layout);
        std::vector<std::pair<qint64, QByteArray>> parts{{(kept + 1) * length, tail}};
        if (count != disk.count)
            parts.push_back({2, dataHeader(count, layout).mid(2, 2)});
        StoreFiles::writeParts(dataPath(), parts);
        QByteArray bytes = raw.left(qsizetype(kept + 1) * length) + tail;
        setDataCount(bytes, count);
        keep(std::move(bytes), kept, after);
    }

    // An ordered daily file: the records before the first pending date stay as they lie, the rest
    // is merged with the pending changes.
    void rewriteTail() {
        load();
        const qint32 from = pending.begin()->first;
        const int kept = int(std::lower_bound(dates.begin(), dates.end(), from) - dates.begin());
        const std::vector<Record> old = decodeRecords(raw, layout, kept, disk.count);
        std::vector<Record> merged;
        merged.reserve(old.size() + pending.size());
        bool changed = false;
        auto o = old.begin();
        for (const auto& [date, record] : pending) {
            while (o != old.end() && o->date < date)
                merged.push_back(*o++);
            if (o != old.end() && o->date == date) {
                ++o;
                changed = true;
            }
            if (record) {
                merged.push_back(*record);
                changed = true;
            }
        }
        merged.insert(merged.end(), o, old.end());
        if (!changed)
            return;
        const int count = kept + int(merged.size());
        checkCount(count);
        QByteArray bytes = raw.left(qsizetype(kept + 1) * layout.recordLength()) + encodeRecords(merged, layout);
        setDataCount(bytes, count);
        StoreFiles::replaceFile(dataPath(), bytes);
        keep(std::move(bytes), kept, merged);
    }

    // Applies `edit` to all records, puts them in order, and rewrites the file when anything
    // changed. `edit` says whether it changed anything.
    template <typename Edit>
    void rewrite(Edit edit) {
        load();
        std::vector<Record> recs = decodeRecords(raw, layout, 0, disk.count);
        bool changed = !disk.ordered;
        if (!disk.ordered)
            normalise(recs);
        changed = edit(recs) || changed;
        if (!changed)
            return;
        normalise(recs);
        checkCount(qint64(recs.size()));
        QByteArray bytes = buildData(recs, layout);
        StoreFiles::replaceFile(dataPath(), bytes);
        keep(std::move(bytes), 0, recs);
    }

    // Oldest first (by date and time). Records of one date that another program wrote stay, in
    // the order they had: they are the user's data, whatever the format prefers.
    void normalise(std::vector<Record>& recs) const {
        const bool intraday = layout.time;
        auto key = [intraday](const Record& r) { return std::pair(r.date, intraday ? r.time : 0); };
        std::stable_sort(recs.begin(), recs.end(), [&](const Record& a, const Record& b) { return key(a) < key(b); });
    }

    // Gives the `nth` record (from 0, in file order) of `date` the values of `values`; its time and
    // open interest stay. Or removes it when `values` is none. Pending changes go first.
    void editNth(qint32 date, int nth, const std::optional<Record>& values, const char* operation) {
        flush();
        bool found = false;
        rewrite([&](std::vector<Record>& recs) {
            int seen = 0;
            for (auto r = recs.begin(); r != recs.end(); ++r) {
                if (r->date != date || seen++ != nth)
                    continue;
                if (values) {
                    const Record old = *r;
                    *r = *values;
                    r->date = old.date;
                    r->time = old.time;
                    r->openInterest = old.openInterest;
                } else {
                    recs.erase(r);
                }
                found = true;
                break;
            }
            return found;
        });
        if (!found)
            refuse(nth == 0 ? QStringLiteral("The security has no record of %1.").arg(date)
                            : QStringLiteral("The security has no record %1 of %2.").arg(nth + 1).arg(date),
                   operation);
        noteDates();
    }

    // The index dates follow the records; a security without records keeps the dates it has, or
    // takes the first date added to it (the seed of a new security).
    void noteDates() {
        Security& s = folder->index.securities[size_t(selected)];
        qint32 first = s.firstDate, last = s.lastDate;
        if (disk.count > 0) {
            first = disk.firstDate;
            last = disk.lastDate;
        } else if (first == 0 && last == 0 && seedDate != 0) {
            first = last = seedDate;
        }
        if (first != s.firstDate || last != s.lastDate) {
            s.firstDate = first;
            s.lastDate = last;
            indexDirty = true;
        }
    }

    // Ends the selection; the pending changes go to disk first.
    void closeSecurity() {
        if (selected < 0)
            return;
        try {
            flush();
            if (seedDate != 0 && disk.count == 0)
                noteDates();
        } catch (...) {
            deselect();
            throw;
        }
        deselect();
    }

    // Writes the index when it differs from the one on disk: the data files made since are
    // flushed first, so that no index lists a file the disk may not hold, and the data files of
    // deleted securities go only once no index lists them.
    void saveIndex() {
        if (!indexDirty)
            return;
        try {
            StoreFiles::flushFiles(folder->path, newFiles);
            folder->saveIndex(created + deleted + renamed == 0);
        } catch (const Failure& failure) {
            const int changed = created + deleted + renamed;
            rethrowSaying(failure, changed == 0
                                       ? QStringLiteral("The records are stored; only the dates in the index lag behind.")
                                       : QStringLiteral("The index was not written: the %1 securities created, deleted "
                                                        "or renamed since the folder was opened are as they were; "
                                                        "records added to the others are stored.")
                                             .arg(changed));
        }
        indexDirty = false;
        created = deleted = renamed = 0;
        newFiles.clear();
        for (const QString& name : std::exchange(doomed, {})) {
            StoreFiles::removeFile(folder->filePath(name));
            folder->forgetFile(name);
            folder->doomed.remove(name.toUpper());
        }
    }

    void closeFolder(bool unwinding = false) {
        if (!folder)
            return;
        try {
            if (unwinding)
                deselect();  // a batch that a failure cut short is not stored
            else
                closeSecurity();
            saveIndex();
        } catch (...) {
            dropFolder();
            throw;
        }
        dropFolder();
    }

    void dropFolder() {
        folder.reset();
        lock.reset();
        indexDirty = false;
        created = deleted = renamed = 0;
        newFiles.clear();
        doomed.clear();
    }

    void changed() {
        folder->securitiesChanged();
        indexDirty = true;
    }

    Record recordOf(qint32 date, double open, double high, double low, double close, double volume,
                    const char* operation) const {
        Record r;
        r.date = date;
        r.open = valueOf(open, "open", operation);
        r.high = valueOf(high, "high", operation);
        r.low = valueOf(low, "low", operation);
        r.close = valueOf(close, "close", operation);
        r.volume = valueOf(volume, "volume", operation);
        return r;
    }
};

SecurityWriter::SecurityWriter() : d(std::make_unique<Impl>()) {}

SecurityWriter::~SecurityWriter() {
    try {
        d->closeFolder(std::uncaught_exceptions() > d->uncaughtAtBirth);
    } catch (...) {
    }
}

void SecurityWriter::CreateSecurity(const QString& symbol, const QString& name, qint32 periodicity) {
    d->requireFolder("CreateSecurity");
    const QString sym = checkedSymbol(*d->folder, symbol, -1, "CreateSecurity");
    const char letter = periodicityLetter(periodicity);
    if (letter == 0)
        refuse(QStringLiteral("%1 is not a periodicity.").arg(periodicity), "CreateSecurity");
    const QString securityName = nameFor(name, sym, "CreateSecurity");
    d->closeSecurity();

    Security s;
    s.symbol = sym;
    s.name = securityName;
    s.periodicity = letter;
    s.fieldCount = 7;
    s.fieldBits = letter == 'I' ? 0xBF : 0x7F;
    const auto [number, extended] = d->folder->newFileNumber();
    s.fileNumber = number;
    s.extended = extended;
    if (extended && d->folder->index.foreignXmaster)
        refuse(QStringLiteral("The folder has a file XMASTER that is not an index file; "
                              "no security past the 255th can be made there."),
               "CreateSecurity");

    const QString fileName = s.dataFileName();
    const QString path = d->folder->filePath(fileName);
    const Layout layout = s.layout();
    StoreFiles::createFile(path, dataHeader(0, layout));
    d->folder->noteFile(fileName);
    d->newFiles.push_back(path);
    rememberSummary(path, layout, DataSummary{});

    auto& list = d->folder->index.securities;
    // MASTER's securities come before XMASTER's in the store's order.
    auto at = extended ? list.end() : std::find_if(list.begin(), list.end(), [](const Security& x) { return x.extended; });
    const int position = int(at - list.begin());
    list.insert(at, std::move(s));
    d->folder->securityInserted(position);
    d->indexDirty = true;
    ++d->created;
    d->select(position);
}

void SecurityWriter::AddQuote(qint32 storeDate, qint32 mark, double open, double high, double low, double close,
                              double volume, double /*extra*/) {
    d->security("AddQuote");
    if (!isValidStoreDate(storeDate))
        refuse(QStringLiteral("%1 is not a date the store can hold: a day of the years 1900 to 2999, as yyyymmdd.")
                   .arg(storeDate),
               "AddQuote");
    d->pending[storeDate] = d->recordOf(storeDate, open, high, low, close, volume, "AddQuote");
    if (d->seedDate == 0)
        d->seedDate = storeDate;
    if (mark != 0)
        d->flush();
}

void SecurityWriter::CloseFolder() { d->closeFolder(); }

bool SecurityWriter::CanHoldDate(qint32 storeDate) { return isValidStoreDate(storeDate) && storeDate != NoDateMarker; }

void SecurityWriter::CheckSymbol(const QString& symbol) { checkedSymbol(Folder{}, symbol, -1, "CreateSecurity"); }

namespace {
Folder openForWriting(const QString& folderPath) {
    Folder folder = Folder::open(folderPath, false);
    // A store whose index files are read-only is not written to at all, whatever the system
    // would allow.
    for (const char* name : {"MASTER", "EMASTER", "XMASTER"}) {
        const QString file = QString::fromLatin1(name);
        if (folder.hasFile(file) && !(file == QLatin1String("XMASTER") && folder.index.foreignXmaster) &&
            StoreFiles::isReadOnly(folder.filePath(file)))
            refuse(QStringLiteral("The folder %1 cannot be written: its file %2 is read-only.")
                       .arg(QDir::toNativeSeparators(folder.path), file),
                   "OpenFolder");
    }
    return folder;
}
} // namespace

void SecurityWriter::OpenFolder(const QString& folderPath) {
    d->closeFolder();
    d->lock.emplace(folderPath.trimmed(), "SecurityWriter", "OpenFolder");
    try {
        d->folder = openForWriting(folderPath.trimmed());
    } catch (...) {
        d->lock.reset();
        throw;
    }
}


void SecurityWriter::FindSecurity(const QString& name) {
    d->requireFolder("FindSecurity");
    const int i = d->folder->securityNamed(name, "SecurityWriter::FindSecurity");
    d->closeSecurity();
    d->select(i);
}

void SecurityWriter::OpenSecurity(const QString& symbol) {
    d->requireFolder("OpenSecurity");
    if (symbol.trimmed().isEmpty())
        refuse(QStringLiteral("No symbol was given."), "OpenSecurity");
    const int i = d->folder->securityWithSymbol(symbol, "SecurityWriter::OpenSecurity");
    d->closeSecurity();
    d->select(i);
}

void SecurityWriter::DeleteSecurity(const QString& symbol) {
    d->requireFolder("DeleteSecurity");
    const int i = d->folder->securityWithSymbol(symbol, "SecurityWriter::DeleteSecurity");
    d->closeSecurity();
    auto& list = d->folder->index.securities;
    const QString path = d->folder->dataPath(list[size_t(i)]);
    const QString fileName = list[size_t(i)].dataFileName();
    StoreFiles::requireWritable(path);
    const Security gone = std::move(list[size_t(i)]);
    list.erase(list.begin() + i);
    d->folder->securityErased(i, gone);
    d->indexDirty = true;
    ++d->deleted;
    forgetSummary(path);
    if (d->folder->hasFile(fileName)) {
        d->doomed.push_back(fileName);
        d->folder->doomed.insert(fileName.toUpper());
    }
}

void SecurityWriter::DeleteQuote(const QString& storeDateText) {
    d->security("DeleteQuote");
    d->pending[dateOf(storeDateText, "DeleteQuote")] = std::nullopt;
}

void SecurityWriter::DeleteQuotes(const QString& firstDateText, const QString& lastDateText) {
    d->security("DeleteQuotes");
    const qint32 first = dateOf(firstDateText, "DeleteQuotes");
    const qint32 last = dateOf(lastDateText, "DeleteQuotes");
    d->flush();
    d->rewrite([&](std::vector<Record>& recs) {
        const auto gone = std::remove_if(recs.begin(), recs.end(), [&](const Record& r) { return r.date >= first && r.date <= last; });
        const bool changed = gone != recs.end();
        recs.erase(gone, recs.end());
        return changed;
    });
    d->noteDates();
}

void SecurityWriter::ChangeQuote(const QString& storeDateText, const QString& /*markText*/, qint32 /*mark*/,
                                 double open, double high, double low, double close, double volume, double /*extra*/) {
    ChangeNthQuote(storeDateText, 0, open, high, low, close, volume);
}

void SecurityWriter::ChangeNthQuote(const QString& storeDateText, int nth, double open, double high, double low,
                                    double close, double volume) {
    d->security("ChangeQuote");
    const qint32 date = dateOf(storeDateText, "ChangeQuote");
    const Record r = d->recordOf(date, open, high, low, close, volume, "ChangeQuote");
    if (!d->dateExists(date))
        refuse(QStringLiteral("The security has no record of %1.").arg(date), "ChangeQuote");
    d->editNth(date, nth, r, "ChangeQuote");
}

void SecurityWriter::DeleteNthQuote(const QString& storeDateText, int nth) {
    d->security("DeleteQuote");
    d->editNth(dateOf(storeDateText, "DeleteQuote"), nth, std::nullopt, "DeleteQuote");
}

void SecurityWriter::ChangeSecurity(const QString& oldSymbol, const QString& name, const QString& symbol) {
    d->requireFolder("ChangeSecurity");
    const int i = d->folder->securityWithSymbol(oldSymbol, "SecurityWriter::ChangeSecurity");
    const QString sym = checkedSymbol(*d->folder, symbol, i, "ChangeSecurity");
    const QString newName = nameFor(name, sym, "ChangeSecurity");
    Security& s = d->folder->index.securities[size_t(i)];
    s.symbol = sym;
    s.name = newName;
    d->changed();
    ++d->renamed;
}

bool SecurityWriter::SymbolExists(const QString& symbol) {
    d->requireFolder("SymbolExists");
    return d->folder->findBySymbol(symbol) >= 0;
}

void SecurityWriter::CloseSecurity() { d->closeSecurity(); }

bool SecurityWriter::DateExists(const QString& storeDateText) {
    d->security("DateExists");
    return d->dateExists(dateOf(storeDateText, "DateExists"));
}

void SecurityWriter::SaveQuotes() {
    d->security("SaveQuotes");
    d->flush();
}
