#pragma once
// Data folders for the download tests, written and read back through the store.

#include <QList>
#include <QString>

#include <functional>
#include <ostream>

class QWidget;

struct StoredBar {
    qint32 date;
    double open, high, low, close, volume;
    bool operator==(const StoredBar&) const = default;
};

// Creates a security with these records (oldest first or not) in `folder`.
void makeSecurity(const QString& folder, const QString& symbol, const QString& name,
                  const QList<StoredBar>& bars);
// The records of the security, as the store gives them back.
QList<StoredBar> storedBars(const QString& folder, const QString& symbol);
// A bar whose prices all derive from one number.
StoredBar bar(qint32 date, double price, double volume = 1000);

inline void PrintTo(const QString& text, std::ostream* os) { *os << '"' << text.toStdString() << '"'; }
inline void PrintTo(const StoredBar& b, std::ostream* os) {
    *os << '{' << b.date << ' ' << b.open << ' ' << b.high << ' ' << b.low << ' ' << b.close << ' ' << b.volume << '}';
}

// Waits for the next Download Progress window to come up and finish its run (its button reads
// "&Close"), lets `inspect` look at it, then presses Close. Waits by polling from the event loop,
// so that the run's own waits can end meanwhile.
void closeProgressWhenDone(std::function<void(QWidget* progress)> inspect);
