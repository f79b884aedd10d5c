#include "store/StoreFolder.h"

#include "frame/Failure.h"
#include "store/StoreFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <cstring>
#include <vector>

namespace metastock {

namespace {

struct CachedSummary {
    StoreFiles::Stamp stamp;
    int recordLength = 0;
    bool intraday = false;
    DataSummary summary;
};
QHash<QString, CachedSummary>& cache() {
    static QHash<QString, CachedSummary> c;
    return c;
}

QString native(const QString& path) { return QDir::toNativeSeparators(path); }

} // namespace

Folder Folder::open(const QString& path, bool requireStore) {
    const QFileInfo info(path);
    if (path.trimmed().isEmpty())
        throw Failure(FailureNumber::PathNotFound, QStringLiteral("No folder was given."),
                      QStringLiteral("Folder::open"));
    if (!info.isDir())
        throw Failure(FailureNumber::PathNotFound,
                      (info.exists() ? QStringLiteral("%1 is a file, not a folder.")
                                     : QStringLiteral("The folder %1 does not exist."))
                          .arg(native(path)),
                      QStringLiteral("Folder::open"));
    Folder f;
    f.path = info.absoluteFilePath();
    const QStringList entries = StoreFiles::fileNames(f.path);
    f.names_.reserve(entries.size());
    for (const QString& name : entries)
        f.names_.insert(name.toUpper(), name);

    const bool hasMaster = f.hasFile(QStringLiteral("MASTER"));
    if (!hasMaster) {
        if (requireStore)
            throw Failure(FailureNumber::Store,
                          QStringLiteral("The folder %1 holds no MetaStock Files: it has no MASTER file.")
                              .arg(native(f.path)),
                          QStringLiteral("Folder::open"));
        for (const char* other : {"EMASTER", "XMASTER"}) {
            const QString name = QString::fromLatin1(other);
            if (!f.hasFile(name))
                continue;
            // The first write into a folder puts EMASTER down just before MASTER: an EMASTER of
            // our own without a MASTER is what a first write that did not finish leaves, and
            // the folder is as empty as it was before it.
            if (name == QLatin1String("EMASTER")) {
                try {
                    if (isOwnEmaster(StoreFiles::readAll(f.filePath(name), MaxEmasterSize)))
                        continue;
                } catch (const Failure&) {
                }
            }
            throw Failure(FailureNumber::Store,
                          QStringLiteral("The folder %1 has an %2 file but no MASTER file; it is left as it is.")
                              .arg(native(f.path), name),
                          QStringLiteral("Folder::open"));
        }
        return f;
    }
    try {
        const QByteArray master = StoreFiles::readAll(f.filePath(QStringLiteral("MASTER")), MaxMasterSize);
        QByteArray emaster, xmaster;
        const bool hasE = f.hasFile(QStringLiteral("EMASTER"));
        const bool hasX = f.hasFile(QStringLiteral("XMASTER"));
        if (hasE)
            emaster = StoreFiles::readAll(f.filePath(QStringLiteral("EMASTER")), MaxEmasterSize);
        if (hasX)
            xmaster = StoreFiles::readAll(f.filePath(QStringLiteral("XMASTER")), MaxXmasterSize);
        bool extendedFiles = false;
        static const QRegularExpression extendedName(QStringLiteral("^F[0-9]+\\.MWD$"));
        for (auto it = f.names_.cbegin(); hasX && !extendedFiles && it != f.names_.cend(); ++it)
            extendedFiles = extendedName.match(it.key()).hasMatch();
        f.index = parseIndex(master, hasE ? &emaster : nullptr, hasX ? &xmaster : nullptr, extendedFiles);
    } catch (const Failure& failure) {
        throw Failure(failure.Number,
                      QStringLiteral("%1 (folder %2)").arg(failure.Description, native(f.path)), failure.Source);
    }
    return f;
}

QString Folder::filePath(const QString& name) const {
    // Asked for several times for every record a day adds: put together without a QDir.
    const QString& onDisk = names_.value(name.toUpper(), name);
    if (path.endsWith(u'/'))
        return path + onDisk;
    return path + u'/' + onDisk;
}

void Folder::noteFile(const QString& name) {
    if (!names_.contains(name.toUpper()))
        names_.insert(name.toUpper(), name);
}

void Folder::forgetFile(const QString& name) { names_.remove(name.toUpper()); }

namespace {

// Writes over `path` only the records of `bytes` that differ from the file, when the file has the
// length of `bytes`; false when it has not (or can't be read), and nothing was written.
bool overwriteChangedRecords(const QString& path, const QByteArray& bytes, qsizetype recordLength) {
    QByteArray disk;
    try {
        disk = StoreFiles::readAll(path, bytes.size());
    } catch (const Failure&) {
        return false;
    }
    if (disk.size() != bytes.size())
        return false;
    std::vector<std::pair<qint64, QByteArray>> parts;
    for (qsizetype at = 0; at < bytes.size(); at += recordLength) {
        const qsizetype length = std::min(recordLength, bytes.size() - at);
        if (std::memcmp(disk.constData() + at, bytes.constData() + at, size_t(length)) == 0)
            continue;
        if (!parts.empty() && parts.back().first + parts.back().second.size() == at)
            parts.back().second.append(bytes.constData() + at, length);
        else
            parts.push_back({at, bytes.mid(at, length)});
    }
    if (!parts.empty())
        StoreFiles::writeParts(path, parts);
    return true;
}

} // namespace

void Folder::saveIndex(bool datesOnly) {
    const bool anyExtended = index.extendedCount() > 0;
    if (anyExtended && index.foreignXmaster)
        throw Failure(FailureNumber::Store,
                      QStringLiteral("The folder %1 has a file XMASTER that is not an index file; "
                                     "no security past the 255th can be written there.")
                          .arg(native(path)),
                      QStringLiteral("Folder::saveIndex"));
    const bool writeEmaster = index.hasEmaster || !index.hasMaster;
    const bool writeXmaster = anyExtended || index.hasXmaster;

    // Every index file is built before any is written, so that a failure to build leaves all.
    const QByteArray master = buildMaster(index);
    const QByteArray emaster = writeEmaster ? buildEmaster(index) : QByteArray();
    const QByteArray xmaster = writeXmaster ? buildXmaster(index) : QByteArray();

    auto put = [this, datesOnly](const QString& name, const QByteArray& bytes, qsizetype recordLength) {
        const QString file = filePath(name);
        if (!(datesOnly && hasFile(name) && overwriteChangedRecords(file, bytes, recordLength)))
            StoreFiles::replaceFile(file, bytes);
        noteFile(name);
    };
    if (writeEmaster) {
        put(QStringLiteral("EMASTER"), emaster, EmasterRecordLength);
        index.hasEmaster = true;
        index.emasterHeader = emaster.left(EmasterRecordLength);
    }
    put(QStringLiteral("MASTER"), master, MasterRecordLength);
    index.hasMaster = true;
    index.masterHeader = master.left(MasterRecordLength);
    if (writeXmaster) {
        put(QStringLiteral("XMASTER"), xmaster, XmasterRecordLength);
        index.hasXmaster = true;
        index.xmasterHeader = xmaster.left(XmasterRecordLength);
    }

    // What is on disk now is what later rewrites start from.
    int m = 0, x = 0;
    for (Security& s : index.securities) {
        if (s.extended) {
            s.xmasterRaw = xmaster.mid(qsizetype(++x) * XmasterRecordLength, XmasterRecordLength);
            index.nextExtendedNumber = std::max(index.nextExtendedNumber, s.fileNumber + 1);
        } else {
            ++m;
            s.masterRaw = master.mid(qsizetype(m) * MasterRecordLength, MasterRecordLength);
            if (writeEmaster)
                s.emasterRaw = emaster.mid(qsizetype(m) * EmasterRecordLength, EmasterRecordLength);
            index.highestMasterNumber = std::max(index.highestMasterNumber, s.fileNumber);
        }
    }
}

int Folder::findBySymbol(const QString& symbol) const {
    if (!symbolsKnown_) {
        symbols_.clear();
        upperSymbols_.clear();
        sharedSymbols_ = false;
        for (size_t i = 0; i < index.securities.size(); ++i) {
            const QString key = index.securities[i].key();
            sharedSymbols_ = sharedSymbols_ || upperSymbols_.contains(key.toUpper());
            symbols_.insert(key, symbols_.value(key, int(i)));
            upperSymbols_.insert(key.toUpper(), upperSymbols_.value(key.toUpper(), int(i)));
        }
        symbolsKnown_ = true;
    }
    const QString wanted = symbol.trimmed();
    if (wanted.isEmpty())
        return -1;
    const int exact = symbols_.value(wanted, -1);
    return exact >= 0 ? exact : upperSymbols_.value(wanted.toUpper(), -1);
}

void Folder::securityInserted(int position) {
    if (numbersKnown_) {
        const Security& s = index.securities[size_t(position)];
        numbers_.insert(s.fileNumber);
        highestNumber_ = std::max(highestNumber_, s.fileNumber);
        if (!s.extended)
            highestMaster_ = std::max(highestMaster_, s.fileNumber);
    }
    // The common case, a security added at the end, keeps the symbol tables.
    if (!symbolsKnown_ || position != int(index.securities.size()) - 1) {
        symbolsKnown_ = false;
        return;
    }
    const QString key = index.securities[size_t(position)].key();
    sharedSymbols_ = sharedSymbols_ || upperSymbols_.contains(key.toUpper());
    if (!symbols_.contains(key))
        symbols_.insert(key, position);
    if (!upperSymbols_.contains(key.toUpper()))
        upperSymbols_.insert(key.toUpper(), position);
}

void Folder::securityErased(int position, const Security& security) {
    numbers_.remove(security.fileNumber);
    if (!symbolsKnown_)
        return;
    // Later securities move up by one. Where two securities share a symbol (third-party folders),
    // the tables are made anew from the list.
    if (sharedSymbols_) {
        symbolsKnown_ = false;
        return;
    }
    for (QHash<QString, int>* table : {&symbols_, &upperSymbols_}) {
        for (auto it = table->begin(); it != table->end();) {
            if (it.value() == position) {
                it = table->erase(it);
                continue;
            }
            if (it.value() > position)
                --it.value();
            ++it;
        }
    }
}

int Folder::findByName(const QString& name) const {
    const QString wanted = name.trimmed();
    const auto& list = index.securities;
    for (size_t i = 0; i < list.size(); ++i)
        if (list[i].name == wanted)
            return int(i);
    for (size_t i = 0; i < list.size(); ++i)
        if (list[i].name.compare(wanted, Qt::CaseInsensitive) == 0)
            return int(i);
    return -1;
}

int Folder::securityWithSymbol(const QString& symbol, const char* source) const {
    const int i = findBySymbol(symbol);
    if (i < 0)
        throw Failure(FailureNumber::Store,
                      QStringLiteral("There is no security with the symbol \"%1\" in the folder.").arg(symbol.trimmed()),
                      QString::fromLatin1(source));
    return i;
}

int Folder::securityNamed(const QString& name, const char* source) const {
    const int i = findByName(name);
    if (i < 0)
        throw Failure(FailureNumber::Store,
                      QStringLiteral("There is no security named \"%1\" in the folder.").arg(name.trimmed()),
                      QString::fromLatin1(source));
    return i;
}

std::pair<int, bool> Folder::newFileNumber() const {
    if (!numbersKnown_) {
        numbers_.clear();
        highestNumber_ = highestMaster_ = 0;
        for (const Security& s : index.securities) {
            numbers_.insert(s.fileNumber);
            highestNumber_ = std::max(highestNumber_, s.fileNumber);
            if (!s.extended)
                highestMaster_ = std::max(highestMaster_, s.fileNumber);
        }
        numbersKnown_ = true;
    }
    const QSet<int>& used = numbers_;
    // A data file that no security lists and that holds no record (what a create that did not
    // finish leaves) is no loss to take over.
    auto freeNumber = [&](int n, bool extended) {
        if (used.contains(n))
            return false;
        const QString name = dataFileName(n, extended);
        if (doomed.contains(name.toUpper()))
            return false;
        if (!hasFile(name))
            return true;
        const qint64 size = StoreFiles::stamp(filePath(name)).size;
        return size >= 0 && size <= 32;
    };
    if (index.masterCount() < MaxMasterSecurities) {
        const int next = std::max(index.highestMasterNumber, highestMaster_) + 1;
        if (next <= MaxMasterSecurities && freeNumber(next, false))
            return {next, false};
        for (int n = 1; n <= MaxMasterSecurities; ++n)
            if (freeNumber(n, false))
                return {n, false};
    }
    int n = std::max({index.nextExtendedNumber, MaxMasterSecurities + 1, highestNumber_ + 1});
    while (n <= 65535 && !freeNumber(n, true))
        ++n;
    if (n > 65535)
        throw Failure(FailureNumber::Store,
                      QStringLiteral("The folder %1 cannot take another security.").arg(native(path)),
                      QStringLiteral("Folder::newFileNumber"));
    return {n, true};
}

// ---- Data files --------------------------------------------------------------------------------

namespace {

// Whether a record of date and time `now` comes after one of `previous` (times count for intraday
// records only).
bool follows(std::pair<qint32, qint32> now, std::pair<qint32, qint32> previous, bool intraday) {
    return now.first > previous.first || (intraday && now.first == previous.first && now.second > previous.second);
}

// The summary of `count` records whose date and time `at(i)` gives.
template <typename At>
DataSummary summaryFrom(int count, bool intraday, At at) {
    DataSummary s;
    s.count = count;
    std::pair<qint32, qint32> previous;
    for (int i = 0; i < count; ++i) {
        const std::pair<qint32, qint32> now = at(i);
        const qint32 date = now.first;
        if (i == 0) {
            s.firstDate = s.lastDate = date;
        } else {
            s.firstDate = std::min(s.firstDate, date);
            s.lastDate = std::max(s.lastDate, date);
            if (!follows(now, previous, intraday))
                s.ordered = false;
        }
        previous = now;
    }
    return s;
}

} // namespace

DataSummary summaryOf(const std::vector<Record>& records, bool intraday) {
    return summaryFrom(int(records.size()), intraday, [&](int i) {
        const Record& r = records[size_t(i)];
        return std::pair(r.date, r.time);
    });
}

DataSummary summaryOf(const QByteArray& bytes, const Layout& layout, int count, std::vector<qint32>* dates) {
    if (dates)
        dates->resize(size_t(count));
    return summaryFrom(count, layout.time, [&](int i) {
        const qint32 date = recordDate(bytes, layout, i);
        if (dates)
            (*dates)[size_t(i)] = date;
        return std::pair(date, recordTime(bytes, layout, i));
    });
}

namespace {

// Pieces of a long data file are read this long.
constexpr qint64 PieceBytes = 64 * 1024;

} // namespace

RecordStream::RecordStream(const QString& path, const Layout& layout, const QString& fileName)
    : layout_(layout), fileName_(fileName) {
    try {
        file_ = std::make_unique<StoreFiles::PieceReader>(path, maxDataSize(layout));
    } catch (const Failure& failure) {
        if (failure.Number != FailureNumber::FileNotFound)
            throw;
        throw Failure(FailureNumber::FileNotFound, QStringLiteral("The data file %1 is missing.").arg(native(path)),
                      QStringLiteral("RecordStream"));
    }
    const int length = layout.recordLength();
    const qint64 size = file_->size();
    const bool intraday = layout.time;
    if (size > PieceBytes) {
        // A first pass over the dates alone tells whether the records can come as they lie.
        const int count = dataRecordCount(file_->read(0, length), size, layout, fileName);
        const int perPiece = int(PieceBytes / length);
        QByteArray bytes;
        int first = 0;
        summary_ = summaryFrom(count, intraday, [&](int i) {
            if (i == 0 || i == first + perPiece) {
                first = i;
                readPiece(first, std::min(perPiece, count - first), bytes);
            }
            return std::pair(recordDate(bytes, layout, i - first), recordTime(bytes, layout, i - first));
        });
        if (summary_.ordered) {
            pieceFirst_ = count;   // nothing in memory yet
            return;
        }
    }
    piece_ = parseData(file_->read(0, size), layout, fileName);
    file_.reset();
    const auto before = [intraday](const Record& a, const Record& b) {
        return follows({b.date, b.time}, {a.date, a.time}, intraday);
    };
    if (!std::is_sorted(piece_.begin(), piece_.end(), before))
        std::stable_sort(piece_.begin(), piece_.end(), before);
    summary_ = summaryOf(piece_, intraday);
}

RecordStream::~RecordStream() = default;
RecordStream::RecordStream(RecordStream&&) noexcept = default;
RecordStream& RecordStream::operator=(RecordStream&&) noexcept = default;

// The `n` records from record `first`, read with the record before them (the header for the
// first record) so that record `first` + i lies where the format puts record i of a file.
void RecordStream::readPiece(int first, int n, QByteArray& bytes) const {
    const int length = layout_.recordLength();
    bytes = file_->read(qint64(first) * length, qint64(n + 1) * length);
    if (bytes.size() < qint64(n + 1) * length)
        throw Failure(FailureNumber::Store, QStringLiteral("The data file %1 grew shorter while it was read.").arg(fileName_),
                      QStringLiteral("RecordStream"));
}

void RecordStream::loadPiece(int i) {
    const int n = std::min(int(PieceBytes / layout_.recordLength()), count() - i);
    QByteArray bytes;
    readPiece(i, n, bytes);
    piece_ = decodeRecords(bytes, layout_, 0, n);
    pieceFirst_ = i;
}

DataSummary summarize(const QString& path, const Layout& layout, const QString& fileName,
                      StoreFiles::Stamp* seen) {
    const StoreFiles::Stamp now = StoreFiles::stamp(path);
    if (seen)
        *seen = now;
    if (!now.exists())
        throw Failure(FailureNumber::FileNotFound,
                      QStringLiteral("The data file %1 is missing.").arg(native(path)),
                      QStringLiteral("summarize"));
    auto it = cache().constFind(path);
    if (it != cache().constEnd() && it->stamp == now && it->recordLength == layout.recordLength() &&
        it->intraday == layout.time)
        return it->summary;
    // Dates (and times) alone: a list of a big folder asks this of every security.
    const QByteArray bytes = StoreFiles::readAll(path, maxDataSize(layout));
    const DataSummary s = summaryOf(bytes, layout, dataRecordCount(bytes, bytes.size(), layout, fileName));
    cache().insert(path, CachedSummary{now, layout.recordLength(), layout.time, s});
    return s;
}

void rememberSummary(const QString& path, const Layout& layout, const DataSummary& summary) {
    rememberSummary(path, layout, summary, StoreFiles::stamp(path));
}

void rememberSummary(const QString& path, const Layout& layout, const DataSummary& summary,
                     const StoreFiles::Stamp& stamp) {
    cache().insert(path, CachedSummary{stamp, layout.recordLength(), layout.time, summary});
}

void forgetSummary(const QString& path) { cache().remove(path); }

} // namespace metastock
