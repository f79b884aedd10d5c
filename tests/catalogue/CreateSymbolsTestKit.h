#pragma once
// Helpers for the tests of Create New Symbols, New Symbol and Symbol Lookup.

#include "frame/CommonRoutines.h"
#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"
#include "support/Modal.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QAbstractButton>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QStringList>

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

struct StoredSecurity {
    QString name;
    QString symbol;
    qint32 firstDate = 0;
    qint32 lastDate = 0;
    qint32 records = -1;
    qint32 periodicity = 0;
};

// Every security of the folder, in the store's order, with its record count.
inline QList<StoredSecurity> readStore(const QString& folder) {
    QList<StoredSecurity> found;
    SecurityReader reader;
    reader.OpenFolder(folder);
    while (reader.GetSecuritiesRemaining() > 0) {
        reader.NextSecurity();
        found.append({reader.GetName(), reader.GetSymbol(), 0, reader.GetLastDate(), -1, 0});
    }
    reader.CloseFolder();
    for (StoredSecurity& security : found) {
        reader.OpenFolder(folder);
        reader.FindSecurity(security.name);
        security.firstDate = reader.GetFirstDate();
        security.lastDate = reader.GetLastDate();
        reader.CloseSecurity();
        reader.OpenSecurity(security.symbol);
        security.records = reader.GetRecordCount();
        security.periodicity = reader.GetPeriodicity();
        reader.CloseSecurity();
        reader.CloseFolder();
    }
    return found;
}

inline QStringList storedSymbols(const QString& folder) {
    QStringList symbols;
    for (const StoredSecurity& security : readStore(folder))
        symbols << security.symbol;
    return symbols;
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
