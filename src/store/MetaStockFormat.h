#pragma once
// The files of a MetaStock folder in memory: parsing and building the index files (MASTER,
// EMASTER, XMASTER) and the data files (Fn.DAT, Fn.MWD). Nothing here touches the disk, so the
// parsers can be fed any bytes; every parser raises Failure naming the file on input it cannot read.

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace metastock {

// Microsoft Binary Format single floats. The conversion is exact both ways.
float mbfToFloat(const unsigned char* bytes);
// False (and `out` untouched) for a value the format cannot hold: infinite, NaN or too large.
bool floatToMbf(float value, unsigned char* out);

// Dates: files hold YYYMMDD (year - 1900) as a float, the program uses YYYYMMDD.
qint32 storeDateFromYyymmdd(double yyymmdd);
double yyymmddFromStoreDate(qint32 storeDate);
// A store date that names a real day (19000101..29991231).
bool isValidStoreDate(qint32 storeDate);
// What the vendor writes in an index for "no date": as a first or last date it reads as none.
inline constexpr qint32 NoDateMarker = 19000101;

// Which values a data record holds, in file order: date, [time], [open], high, low, close,
// [volume], [open interest].
struct Layout {
    int fieldCount = 7;
    bool time = false;
    bool open = true;
    bool volume = true;
    bool openInterest = true;

    int recordLength() const { return fieldCount * 4; }
    // From the index: the field bit set when known (EMASTER, XMASTER; -1 when not), else the
    // field count and the periodicity ('I' for intraday).
    static std::optional<Layout> of(int fieldCount, int fieldBits, char periodicity);
};

// One data record as stored: the date as a store date, the time as HHMMSS, values as floats.
struct Record {
    qint32 date = 0;
    qint32 time = 0;
    float open = 0, high = 0, low = 0, close = 0, volume = 0, openInterest = 0;
};

// The data file of a security: "F12.DAT", "F300.MWD" (listed in XMASTER).
QString dataFileName(int fileNumber, bool extended);

// One security of the index, with the records it was read from so that fields of unknown meaning
// survive a rewrite.
struct Security {
    int fileNumber = 0;
    bool extended = false;  // listed in XMASTER, records in Fn.MWD
    QString symbol;
    QString name;
    char periodicity = 'D';
    quint16 interval = 0;
    int fieldCount = 7;
    int fieldBits = -1;      // -1: the index holds no bit set (MASTER without EMASTER)
    qint32 firstDate = 0;    // store dates from the index; 0 for none
    qint32 lastDate = 0;

    QByteArray masterRaw;    // 53 bytes as read, empty for a new security
    QByteArray emasterRaw;   // 192 bytes as read, empty when EMASTER has none
    QByteArray xmasterRaw;   // 150 bytes as read, empty for a new security

    Layout layout() const;
    QString dataFileName() const { return metastock::dataFileName(fileNumber, extended); }
    // The symbol the program knows the security by: some writers leave the symbol blank and put
    // the ticker in the name, and such a security goes by its name.
    QString key() const { return symbol.isEmpty() ? name : symbol; }
};

// The index of a folder: its securities in the store's order (MASTER's, then XMASTER's).
struct Index {
    QByteArray masterHeader;   // 53 bytes, empty for a folder without MASTER yet
    QByteArray emasterHeader;  // 192 bytes, empty without EMASTER
    QByteArray xmasterHeader;  // 150 bytes, empty without XMASTER
    bool hasMaster = false;
    bool hasEmaster = false;
    bool hasXmaster = false;
    bool foreignXmaster = false;  // a file named XMASTER that is not an index
    int highestMasterNumber = 0;  // MASTER@2; never lowered
    int nextExtendedNumber = 0;   // XMASTER@18
    std::vector<Security> securities;

    int masterCount() const;
    int extendedCount() const;
};

// Parses the index files. `emaster` and `xmaster` are null when the folder has no such file.
// `extendedDataFiles`: the folder holds data files of securities past the 255th (Fn.MWD), so that
// a file named XMASTER that does not read as one is a damaged index, not a foreign file.
// Raises Failure naming the file and what is wrong with it.
Index parseIndex(const QByteArray& master, const QByteArray* emaster, const QByteArray* xmaster,
                 bool extendedDataFiles = false);
// True for an EMASTER that this store wrote (its header carries the store's own text).
bool isOwnEmaster(const QByteArray& emaster);

// Text of the index files is Windows-1252.
QString decodeText(const char* bytes, int length);
QByteArray encodeText(const QString& text);
// The first character of `text` that Windows-1252 cannot hold; a null QChar when there is none.
QChar unstorableCharacter(const QString& text);

// The index files as they are written. EMASTER is built for every security of MASTER.
QByteArray buildMaster(const Index& index);
QByteArray buildEmaster(const Index& index);
QByteArray buildXmaster(const Index& index);

// The records of a data file in file order. Bytes past the header's count are ignored (a write
// cut short leaves them); a count beyond the file's size is a failure.
std::vector<Record> parseData(const QByteArray& bytes, const Layout& layout, const QString& fileName);
// Records first..last-1 of a data file whose count has been checked.
std::vector<Record> decodeRecords(const QByteArray& bytes, const Layout& layout, int first, int last);
// Date and time of record i alone.
qint32 recordDate(const QByteArray& bytes, const Layout& layout, int i);
qint32 recordTime(const QByteArray& bytes, const Layout& layout, int i);
// Sets the header's record count of a data file in memory.
void setDataCount(QByteArray& bytes, int count);
// The header's record count of a data file, checked against its size.
int dataRecordCount(const QByteArray& head, qint64 fileSize, const Layout& layout, const QString& fileName);
// A whole data file: header and records.
QByteArray buildData(const std::vector<Record>& records, const Layout& layout);
// Records alone, to append.
QByteArray encodeRecords(const std::vector<Record>& records, const Layout& layout);
// The header record for a file of `count` records.
QByteArray dataHeader(int count, const Layout& layout);

// Sizes of the index files' header and security records.
inline constexpr int MasterRecordLength = 53;
inline constexpr int EmasterRecordLength = 192;
inline constexpr int XmasterRecordLength = 150;

// Store limits.
inline constexpr int MaxSymbolLength = 14;
inline constexpr int MaxNameLength = 45;
inline constexpr int MaxMasterSecurities = 255;
inline constexpr int MaxRecords = 65534;

// The most bytes each file can hold; a longer one is refused unread. MASTER and EMASTER may carry
// one record past their count (a third-party writer leaves one).
inline constexpr qint64 MaxMasterSize = qint64(MaxMasterSecurities + 2) * MasterRecordLength;
inline constexpr qint64 MaxEmasterSize = qint64(MaxMasterSecurities + 2) * EmasterRecordLength;
inline constexpr qint64 MaxXmasterSize = qint64(65536) * XmasterRecordLength;
qint64 maxDataSize(const Layout& layout);

char periodicityLetter(qint32 code);  // 0 for an unknown code
qint32 periodicityCode(char letter);  // 1 daily, 2 weekly, 3 monthly, 4 quarterly, 5 yearly, 6 intraday; 0 unknown

} // namespace metastock
