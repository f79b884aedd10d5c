#pragma once
// Reading a folder back through the store's own API, and making folders, for the tests' assertions.

#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"
#include "support/StoreKit.h"

#include <QString>

#include <functional>
#include <map>
#include <string>
#include <vector>

struct Listed {
    QString symbol, name, file;
    qint32 first = 0, last = 0;
};

// Every security of the folder in the store's order, as a list screen reads them.
std::vector<Listed> listFolder(const QString& folder);
// Adds records with mark 0 and saves them.
void addBars(SecurityWriter& writer, const std::vector<Bar>& bars);
// A bar whose values derive from its date, so that any record can be told from any other.
Bar barOf(qint32 date, double base = 10.0);
std::vector<Bar> barsOf(const std::vector<qint32>& dates, double base = 10.0);
// Weekdays from `from` on, as store dates.
std::vector<qint32> tradingDays(qint32 from, int count);
// Opens a folder in a writer, runs `change` on it and closes it.
void writeFolder(const QString& folder, const std::function<void(SecurityWriter&)>& change);
// A security as Create New Symbols leaves it: made anew, its seed record added and deleted again.
void createEmpty(SecurityWriter& writer, const QString& symbol, qint32 seedDate);
// Adds a security to a folder (made when it has no store) holding barOf() of each date.
void makeSecurity(const QString& folder, const QString& symbol, const std::vector<qint32>& dates, double base = 10.0);
// The files of a folder and their bytes (for a link, where it leads).
std::map<QString, QByteArray> snapshot(const QString& folder);
void copyFolder(const QString& from, const QString& to);
// The description of the Failure that `step` raises; "(no failure)" when it raises none.
std::string failureText(const std::function<void()>& step);
inline bool contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }
