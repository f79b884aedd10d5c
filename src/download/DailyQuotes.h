#pragma once
// Fetches the daily quotes of one security from the historical quotes service and leaves them,
// parsed, in handOvers().Quotes. One request, one outcome in Error; no message is shown here.
//
// The source setting "Quotes" (see ServiceAddresses) decides the protocol. An endpoint gets the
// older table request and its comma-separated reply, read under the regional settings. Today's
// service gets a chart request: its JSON is read without them, its rows go into Quotes newest
// first with ISO date text, and a reply of "Too Many Requests" is tried again, at most three
// tries in all, after the pause the service asks for or a growing one.

#include <QByteArray>
#include <QDate>
#include <QString>

class Inet;

class DailyQuotes {
public:
    // Fetches through the connection object of the screen that runs the download.
    explicit DailyQuotes(Inet& connection) : connection_(connection) {}

    // Outcome of the last DownloadDailyQuotes:
    //   0  the reply had the shape of a quote table and every row read converted; rows in Quotes
    //   2  no usable data: an answer without a usable table, a row that did not convert,
    //      an unwritable trace file
    //   3  the transfer failed: no connection, refused, unknown host, time-out, a certificate
    //      that did not check out
    //   4  today's service still answered "Too Many Requests" after the last try, or Cancel
    //      came while waiting to try again
    qint16 Error = 0;
    static constexpr qint16 TooManyRequests = 4;

    // The run's Cancel: while waiting to try again, the fetch gives up once this is set.
    const bool* CancelFlag = nullptr;

    void DownloadDailyQuotes(const QString& Symbol, const QDate& FirstDate, const QDate& LastDate);

    // The path and query asked for: "/table.csv?s=ABC&d=7&e=5&f=2005&g=d&a=6&b=1&c=2005&ignore=.csv".
    static QString QuotesQuery(const QString& Symbol, const QDate& FirstDate, const QDate& LastDate);
    // Every CR and then every LF of the reply becomes a comma.
    static QString NormaliseReply(QString reply);
    // The shape test and the row walk over normalised text: fills Quotes, returns the outcome
    // (0 or 2). Quotes is emptied before the walk, so no row of an earlier reply stays behind.
    static qint16 ReadTable(const QString& normalised);

    // Where the last normalised reply is written: c:\t.txt where there is a drive C:, else t.txt
    // in the user's own cache folder, so that two users of one machine never share it.
    static QString tracePath();

    // Tries of one request that today's service answers with "Too Many Requests".
    static constexpr int MaxTries = 3;
    // The pause before try `attempt` + 1 after such an answer, in milliseconds: the reply's
    // Retry-After (seconds or an HTTP date) when it has a usable one, at most two minutes;
    // else 2 seconds after the first try, 4 after the second.
    static int RetryPauseMs(const QByteArray& retryAfter, int attempt);

private:
    void fetchChart(const QString& address, const QString& Symbol, const QDate& FirstDate,
                    const QDate& LastDate);
    // Waits while serving events; false when Cancel came meanwhile.
    bool pause(int milliseconds);
    bool cancelled() const { return CancelFlag && *CancelFlag; }

    Inet& connection_;
};
