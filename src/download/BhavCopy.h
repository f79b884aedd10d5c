#pragma once
// A day of the exchange's daily bhav copy, turned into rows: the seam between the NSE run and the
// service that answers it. The run asks for one day at a time and writes the rows it gets; how a
// day is fetched and read is the source's matter, so a source of another shape can stand in.

#include <QDate>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

class Inet;

// One row of a day: what the run hands to the security of that symbol.
struct BhavRow {
    QString Symbol;            // trimmed
    bool HasPrices = false;    // false when a number did not read or the row ended before its volume
    double Open = 0;
    double High = 0;
    double Low = 0;
    double Close = 0;
    double Volume = 0;
};

class BhavCopySource {
public:
    virtual ~BhavCopySource() = default;
    // Fetches the bhav copy of `day` and turns it into rows, in the order of the file. Empty when
    // the day has no data (a weekend, a holiday, an error page, a failed fetch); a day with data
    // may still have no rows. A source that can tell a day without trading from a day it failed
    // to fetch raises a Failure for the latter, and the walk ends there.
    virtual std::optional<QList<BhavRow>> FetchDay(const QDate& day) = 0;
};

// The exchange's archive: one comma-separated text file a day, asked for with one GET and no
// retry, read by position only.
class BhavCopyArchive : public BhavCopySource {
public:
    explicit BhavCopyArchive(Inet& connection) : connection_(connection) {}

    std::optional<QList<BhavRow>> FetchDay(const QDate& day) override;

    // A reply of this many characters or fewer holds no data.
    static constexpr qsizetype NoDataLength = 2000;
    // The path of a day's file, no number padded: "/content/historical/EQUITIES/2005/AUG/cm6AUG2005bhav.csv".
    static QString DayPath(const QDate& day);
    // The rows of a reply. Line ends become commas; after the header's 12 tokens every 12
    // tokens are a row: symbol, -, open, high, low, close, -, -, volume, -, -, -. Numbers are read
    // under the user's locale; rows of the symbol "W1" are left out.
    static QList<BhavRow> ReadRows(const QString& reply);

private:
    Inet& connection_;
};

// The source the NSE run reads from, as the setting "Bhavcopy" chooses it: today's daily files
// (TodayBhavCopy), or the archive at ServiceAddresses::nseBhavCopies().
std::unique_ptr<BhavCopySource> MakeBhavCopySource(Inet& connection);
