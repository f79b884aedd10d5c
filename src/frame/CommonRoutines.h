#pragma once
// Routines that several screens share: the folder chooser, the date text of a store date, the
// month abbreviations of the NSE addresses and the loading of the symbol list.

#include <QString>

class QObject;

// The system's folder chooser under `owner`, with `title` as its heading. The chosen folder's path,
// or empty text when the user cancelled. One trailing backslash is removed so that the root of a
// drive comes back as "C:"; the root "/" stays "/".
QString BrowseForFolder(QObject* owner, const QString& title);

// The date text of a store date (yyyymmdd), in the order and form of the short date pattern;
// "N/A" for 0. A pattern whose separators do not stand between its fields gives the date written
// with the pattern.
QString DateToText(qint32 storeDate);

// The user's date separator; empty when the system gives none.
QString GetDateSeparator();
// The user's short date pattern in the letters d, M and y; empty when the system gives none.
QString GetShortDatePattern();

// "JAN".."DEC" for 1..12; empty text for any other number.
QString MonthAbbreviation(qint16 month);

// Fills sharedState().SymbolEntries and SymbolCount from symbols.csv in the program's own folder:
// three comma-separated items (Group, Symbol, Name) per entry, trimmed; an item in double quotes
// may hold commas. A missing or unreadable file leaves the list empty; nothing is reported.
void ReadSymbolsFile();
