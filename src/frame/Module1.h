#pragma once
// The state that several screens share, and its three records. These live for the whole run and
// are read and written directly; a modal dialog is what keeps two screens from using them at once.

#include "frame/GrowingArray.h"

#include <QString>

// One line of symbols.csv.
struct SymbolEntry {
    QString Group;
    QString Symbol;
    QString Name;
};

// One security of a World Exchanges download run; all date fields are date text.
struct DownloadItem {
    QString Symbol;
    QString FirstDate;  // the first date to ask the service for
    QString NextDate;   // the first date the security lacks
    QString Folder;     // the data folder that holds the security
};

// One period of one security in memory.
struct QuoteRecord {
    QString Dat;        // the date, as the source gave it
    double OpenPrice = 0;
    double High = 0;
    double Low = 0;
    double ClosePrice = 0;
    qint32 Volume = 0;
};

namespace Module1 {

inline GrowingArray<SymbolEntry> SymbolEntries;   // the lines of symbols.csv, 1..SymbolCount
inline qint32 SymbolCount = 0;
inline GrowingArray<QString> SelectedSymbols;     // picked in Symbol Lookup
inline QString NewSymbol;                         // typed in New Symbol
inline QString LastFolder;                        // the folder most recently chosen by browsing
inline GrowingArray<DownloadItem> DownloadItems;  // the securities of one download run
inline GrowingArray<QuoteRecord> Quotes;          // the parsed reply of the last fetch

// Back to the state of a fresh start (for tests and a restarted frame).
void resetState();

} // namespace Module1
