#pragma once
// Securities made through the store's own writer and read back through its reader, for the tests
// of every screen and run that stores records.

#include <QString>

#include <ostream>
#include <vector>

struct Bar {
    qint32 date = 0;
    double open = 0, high = 0, low = 0, close = 0, volume = 0;
    bool operator==(const Bar&) const = default;
};
inline void PrintTo(const Bar& b, std::ostream* out) {
    *out << '{' << b.date << ' ' << b.open << ' ' << b.high << ' ' << b.low << ' ' << b.close << ' ' << b.volume << '}';
}

// Adds a security holding these records to `folder` (made a store when it is none yet).
void makeSecurity(const QString& folder, const QString& symbol, const QString& name, const std::vector<Bar>& bars,
                  qint32 periodicity = 1);
// Every record of a security, oldest first, as a sheet reads them.
std::vector<Bar> readBars(const QString& folder, const QString& symbol);
std::vector<qint32> readDates(const QString& folder, const QString& symbol);
