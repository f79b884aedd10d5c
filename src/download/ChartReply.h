#pragma once
// Today's chart service of the quotes provider: the request for one symbol's daily bars, and the
// reading of its JSON reply. Nothing here reads the regional settings: a price is the number the
// exchange gave, whatever the user's decimal separator.

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>

struct ChartBar {
    QDate date;   // the exchange's calendar date of the session
    double open = 0, high = 0, low = 0, close = 0;
    double volume = 0;
    bool operator==(const ChartBar&) const = default;
};

namespace ChartReply {

// The path and query of the daily bars of `symbol` from the start of `first` to the end of
// `last` (UTC): "/v8/finance/chart/%5ENSEI?period1=...&period2=...&interval=1d&events=div%2Csplits".
// The symbol, trimmed, goes as one percent-encoded path segment.
QString query(const QString& symbol, const QDate& first, const QDate& last);

// The bars of a reply, newest first, one per date: where a date comes twice (the live bar of
// today behind the session's own), the later element wins. A session with any null or missing
// field is left out. Empty when the reply holds no bar at all: not JSON, no result, no
// timestamps, or nothing but nulls.
QList<ChartBar> read(const QByteArray& body);

} // namespace ChartReply
