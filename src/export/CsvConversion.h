#pragma once
// Writing chosen securities of a data folder into CSV files: one "data.csv" for all of them
// (merged), or one "<symbol>.csv" for each. The records go from the reader to the file one line
// at a time, with the store's progress window up for each security; nothing is held beyond the
// current record and a write buffer.
//
// A failure stops the run: what was written stays, the open file is closed, the progress window
// is taken down, and a Failure is raised whose description names the cause and the file.

#include <QString>
#include <QStringList>

#include <memory>

class ReadProgress;
class SecurityReader;

class CsvConversionListener {
public:
    virtual ~CsvConversionListener() = default;
    // A security has been written in full: its symbol, the file it went into, its records.
    virtual void securityConverted(const QString& symbol, const QString& file, qint32 records) = 0;
};

class CsvConversion {
public:
    // The merged output's file name.
    static const QString MergedFileName;
    static const QString MergedHeader;     // "Symbol,Date,Open,High,Low,Close,Volume"
    static const QString SeparateHeader;   // "Date,Open,High,Low,Close,Volume"

    CsvConversion();
    ~CsvConversion();
    CsvConversion(const CsvConversion&) = delete;
    CsvConversion& operator=(const CsvConversion&) = delete;

    // Writes the securities of `symbols` (as the folder's list gives them, in this order) of the
    // data folder `dataFolder` into `destination`; both folders are trimmed here. Files that exist
    // are replaced. No symbol at all still makes an empty "data.csv" when merging.
    void convert(const QString& dataFolder, const QString& destination, const QStringList& symbols,
                 bool merge, CsvConversionListener* listener = nullptr);

    // Dates as yyyy-mm-dd and numbers with a decimal point whatever the locale, in place of the
    // regional settings' forms.
    bool isoForm = false;

    // The file a security's own output goes into.
    static QString separateFile(const QString& destination, const QString& symbol);

private:
    // Made on first use and kept for the object's life.
    SecurityReader& reader();
    ReadProgress& progress();

    std::unique_ptr<SecurityReader> reader_;
    std::unique_ptr<ReadProgress> progress_;
};
