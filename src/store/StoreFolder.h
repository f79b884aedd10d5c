#pragma once
// An open data folder as the reader and the writer share it: the index in memory, the folder's
// file names (matched without regard to case), and what is known of each data file.

#include "store/MetaStockFormat.h"
#include "store/StoreFiles.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <memory>
#include <vector>

namespace metastock {

// What the records of a data file come to, without keeping them.
struct DataSummary {
    int count = 0;
    qint32 firstDate = 0;   // lowest date, 0 without records
    qint32 lastDate = 0;    // highest date
    bool ordered = true;    // oldest first, one record a date (a date and time for intraday)
};

class Folder {
public:
    // Opens the folder at `path` and reads its index. Without a MASTER the folder fails when
    // `requireStore`, else it opens as an empty store. Raises Failure.
    static Folder open(const QString& path, bool requireStore);

    QString path;
    Index index;

    // The path of a file of the folder by its name in any case; new files get `name` as given.
    QString filePath(const QString& name) const;
    QString dataPath(const Security& security) const { return filePath(security.dataFileName()); }
    bool hasFile(const QString& name) const { return names_.contains(name.toUpper()); }
    void noteFile(const QString& name);
    void forgetFile(const QString& name);

    // Writes the index files: EMASTER before MASTER (MASTER decides), XMASTER when the folder
    // has securities past 255 or an XMASTER already. With `datesOnly` (no security was created,
    // deleted or renamed since the last write) an index file of the same length has only its
    // changed records written, where they lie.
    void saveIndex(bool datesOnly = false);

    // -1 when none (always for a blank symbol). Exact match first, then one without regard to case.
    int findBySymbol(const QString& symbol) const;
    // To be called whenever the list of securities or a symbol changed.
    void securitiesChanged() {
        symbolsKnown_ = false;
        numbersKnown_ = false;
    }
    // To be called when a security was put into the list at `position`, or taken out of it
    // (`security` is the one taken out).
    void securityInserted(int position);
    void securityErased(int position, const Security& security);
    int findByName(const QString& name) const;
    // As the two above, but a security the folder lacks raises Failure with `source` ("Class::Operation").
    int securityWithSymbol(const QString& symbol, const char* source) const;
    int securityNamed(const QString& name, const char* source) const;

    // A file number for a new security, and whether it goes to XMASTER. Raises Failure when the
    // folder cannot take one more.
    std::pair<int, bool> newFileNumber() const;

    // Upper-case names of data files that go once the index no longer lists them; their numbers
    // are not free until then.
    QSet<QString> doomed;

private:
    QHash<QString, QString> names_;  // upper-case name -> name on disk
    mutable bool symbolsKnown_ = false;
    mutable QHash<QString, int> symbols_;       // symbol -> first security of it
    mutable QHash<QString, int> upperSymbols_;  // upper-case symbol -> first security of it
    mutable bool sharedSymbols_ = false;        // two securities go by one symbol
    mutable bool numbersKnown_ = false;
    mutable QSet<int> numbers_;                 // file numbers of the securities
    mutable int highestNumber_ = 0;
    mutable int highestMaster_ = 0;             // of the securities in MASTER
};

// The summary of a data file, from a cache that is checked against the file's size and time.
// Raises Failure when the file is missing or cannot be parsed.
DataSummary summarize(const QString& path, const Layout& layout, const QString& fileName,
                      StoreFiles::Stamp* seen = nullptr);
// Records the summary of a file the store has just written.
void rememberSummary(const QString& path, const Layout& layout, const DataSummary& summary);
// The same, with the stamp the file got from that write.
void rememberSummary(const QString& path, const Layout& layout, const DataSummary& summary,
                     const StoreFiles::Stamp& stamp);
void forgetSummary(const QString& path);
DataSummary summaryOf(const std::vector<Record>& records, bool intraday);
// The summary of the first `count` records of a data file's bytes; `dates`, when given, receives
// the date of each.
DataSummary summaryOf(const QByteArray& bytes, const Layout& layout, int count, std::vector<qint32>* dates = nullptr);

// The records of a data file, oldest first. Records of one date (and time) stay side by side in
// the order of the file. A file too long to hold whole whose records are in order is read a piece
// at a time as the records are asked for, so that going through a long security takes no more
// memory than a short one; any other file is read whole and put in order. Raises Failure.
class RecordStream {
public:
    RecordStream(const QString& path, const Layout& layout, const QString& fileName);
    ~RecordStream();
    RecordStream(RecordStream&&) noexcept;
    RecordStream& operator=(RecordStream&&) noexcept;

    int count() const { return summary_.count; }
    const DataSummary& summary() const { return summary_; }
    // Makes record `i` (0 to count() - 1) ready for at(); it reads the piece of the file that
    // holds it when it is not in memory.
    void load(int i) {
        if (i < pieceFirst_ || i >= pieceFirst_ + int(piece_.size()))
            loadPiece(i);
    }
    const Record& at(int i) const { return piece_[size_t(i - pieceFirst_)]; }

private:
    void loadPiece(int i);
    void readPiece(int first, int n, QByteArray& bytes) const;

    Layout layout_;
    QString fileName_;
    std::unique_ptr<StoreFiles::PieceReader> file_;  // only while pieces are still to be read
    DataSummary summary_;
    std::vector<Record> piece_;
    int pieceFirst_ = 0;
};

} // namespace metastock
