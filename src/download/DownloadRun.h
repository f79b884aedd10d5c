#pragma once
// One World Exchanges download run: for each item of handOvers().DownloadItems it decides whether the
// security needs data, fetches its quotes through DailyQuotes and merges them into its data
// folder through SecurityWriter. The run knows no screen: it reports through a listener, and the
// Download Progress window maps the reports onto its controls.

#include <QString>

#include <memory>

class Inet;
class SecurityWriter;
class DailyQuotes;

class DownloadListener {
public:
    virtual ~DownloadListener() = default;
    // An item is taken in hand: its index and the number of items, its symbol, and the counters
    // as they stood before it (downloaded, up to date, without data). The record bar goes to 0.
    virtual void itemStarted(int index, int count, const QString& symbol, qint16 completed,
                             qint16 upToDate, qint16 noData) = 0;
    // The item's quotes are about to be asked for.
    virtual void fetching(const QString& symbol) = 0;
    // The record bar: its maximum, then its value.
    virtual void recordRange(int maximum) = 0;
    virtual void recordProgress(int value) = 0;
    // A line for the list of finished items.
    virtual void lineAdded(const QString& line) = 0;
    // The counters changed (they are shown only when the next item starts).
    virtual void countersChanged(qint16 completed, qint16 upToDate, qint16 noData) { (void)completed; (void)upToDate; (void)noData; }
    // The window's caption.
    virtual void captionChanged(const QString& caption) = 0;
    // The run has ended, by whatever way: the button turns into "&Close".
    virtual void runEnded() = 0;
};

class DownloadRun {
public:
    DownloadRun(Inet& connection, DownloadListener& listener);
    ~DownloadRun();
    DownloadRun(const DownloadRun&) = delete;
    DownloadRun& operator=(const DownloadRun&) = delete;

    // Runs through handOvers().DownloadItems, then takes the closing steps: the listener's
    // runEnded, any open transfer cancelled, and the box "Download Completed.".
    void RunDownload();

    // Read after each security: the run stops once the security in hand is done.
    bool CancelRequested = false;
    bool Running() const { return running_; }

    qint16 completedCount = 0;    // securities downloaded
    qint16 upToDateCount = 0;    // securities already up to date
    qint16 noDataCount = 0;   // securities without data
    qint16 ItemIndex = 0;
    qint16 RecordIndex = 0;
    // The days of the security in hand that the store took from the reply, each counted once.
    int DaysStored = 0;
    // What went wrong, for a caller that reports more than the window's lines: the first step of
    // the security in hand that failed and was passed over, and the failure that ended the run
    // before its first fetch. Empty when none.
    QString ItemFailure;
    QString EndedBy;

private:
    void handleItem(int index, int count);
    void merge();
    SecurityWriter& writer();
    DailyQuotes& fetcher();
    void release();
    // Runs one step: before the first fetch a failure ends the run, from then on it is passed over
    // (the first such failure of a security is kept in ItemFailure).
    template <typename Step>
    void step(Step&& action);

    Inet& connection_;
    DownloadListener& listener_;
    std::unique_ptr<SecurityWriter> writer_;
    std::unique_ptr<DailyQuotes> fetcher_;
    bool fetchReached_ = false;
    bool running_ = false;
};
