#pragma once
// The NSE daily run: brings a data folder up to date from the exchange's daily bhav copies. It
// walks every calendar day from the day after the date in the folder's values.dat to today, asks
// its source for each day, and adds every row of a day with data to the security of the row's
// symbol. Only securities that Create New Symbols made take rows: the run creates none. At the
// end values.dat names the last day with data, in the user's short date form.
//
// The run knows no screen: it reports through a listener, and shows its message boxes through
// the platform.

#include <QDate>
#include <QString>

#include <memory>

class BhavCopySource;
class SecurityWriter;
struct BhavRow;

class NseDailyListener {
public:
    virtual ~NseDailyListener() = default;
    // A run has begun: Close is disabled and STOP stands in the place of Begin Download.
    virtual void runStarted() = 0;
    // The walk over the days begins: the list is emptied and the progress bar starts moving.
    virtual void walkStarted() = 0;
    // A day with data has been written; its line for the list ("<date> Updated.").
    virtual void dayUpdated(const QString& line) = 0;
    // The walk is over: the progress bar stops.
    virtual void walkEnded() = 0;
    // The run is over, by whatever way: Close is enabled, Begin Download is back, STOP is gone.
    virtual void runEnded() = 0;
};

class NseDailyRun {
public:
    NseDailyRun(BhavCopySource& source, NseDailyListener& listener);
    ~NseDailyRun();
    NseDailyRun(const NseDailyRun&) = delete;
    NseDailyRun& operator=(const NseDailyRun&) = delete;

    // The run of Begin Download over the data folder named by `folderText`.
    void BeginDownload(const QString& folderText);

    // Set by STOP: the walk ends after the next day with data. Clear again once the run is over.
    bool StopRequested = false;
    // Set when the screen is closed during a run: the walk ends after the day in hand, with or
    // without data. Clear again once the run is over.
    bool LeaveRequested = false;
    bool Running() const { return running_; }

    // Set by the command line: when valid, the walk starts on FirstDay in place of the day after
    // values.dat's date, and ends on LastDay in place of today.
    QDate FirstDay;
    QDate LastDay;
    // Why the last run ended at a day its source failed to fetch; empty when it did not.
    QString FetchFailure;

private:
    void walk(const QString& folder);
    bool writeDay(const QString& folder, const QList<BhavRow>& rows);
    SecurityWriter& writer();

    BhavCopySource& source_;
    NseDailyListener& listener_;
    // Made on first use, kept for the life of the run object.
    std::unique_ptr<SecurityWriter> writer_;
    bool running_ = false;

    QDate startDate_;
    QDate currentDate_;
    QDate lastUpdated_;
    qint16 rowsWritten_ = 0;   // only whether it is above zero matters
};
