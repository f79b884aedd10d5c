#pragma once
// Helpers for the tests of Create New Symbols, New Symbol and Symbol Lookup.

#include "frame/CommonRoutines.h"
#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"
#include "support/Modal.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStringList>

#include <algorithm>
#include <ostream>

namespace createkit {

// Puts symbols.csv into the program's folder and loads it as the program does at start.
inline void loadSymbolList(ScriptedPlatform& services, const QByteArray& csv) {
    writeTextFile(QDir(services.programDir.path()).filePath(QStringLiteral("symbols.csv")), csv);
    ReadSymbolsFile();
}

inline QStringList lines(const QListWidget* list) {
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

// One security as SecurityReader gives it back.
struct Stored {
    QString symbol, name;
    qint32 firstDate = 0, lastDate = 0, records = 0, periodicity = 1;
    bool operator==(const Stored&) const = default;
};

inline void PrintTo(const Stored& s, std::ostream* os) {
    *os << s.symbol.toStdString() << "/" << s.name.toStdString() << " " << s.firstDate << ".." << s.lastDate
        << " records " << s.records << " periodicity " << s.periodicity;
}

// Every security of the folder, sorted by symbol.
inline QList<Stored> readStore(const QString& folder) {
    QList<Stored> found;
    SecurityReader reader;
    reader.OpenFolder(folder);
    while (reader.GetSecuritiesRemaining() > 0) {
        reader.NextSecurity();
        found.append({reader.GetSymbol(), reader.GetName(), reader.GetFirstDate(), reader.GetLastDate(),
                      reader.GetRecordCount(), reader.GetPeriodicity()});
    }
    reader.CloseFolder();
    std::sort(found.begin(), found.end(), [](const Stored& a, const Stored& b) { return a.symbol < b.symbol; });
    return found;
}

// Makes a security with daily records from 20050801 on, as a download would have left it.
inline void makeSecurityWithRecords(const QString& folder, const QString& symbol, int records) {
    SecurityWriter writer;
    writer.OpenFolder(folder);
    writer.CreateSecurity(symbol, symbol, 1);
    for (int i = 0; i < records; ++i)
        writer.AddQuote(20050801 + i, 0, 10 + i, 12 + i, 9 + i, 11 + i, 1000 * (i + 1), 0);
    writer.SaveQuotes();
    writer.CloseSecurity();
    writer.CloseFolder();
}

} // namespace createkit
