#pragma once
// The three plain records that screens hand to each other.

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
    // A whole number. Today's quotes service gives index volumes past 32 bits (4 to 5 billion
    // shares a day), which the store holds; the older table reply and the chart keep to 32 bits
    // by their own checks.
    double Volume = 0;
};
