#pragma once
// Helpers for the tests of the catalogue screens, over those of the data sheet: the symbol list
// the program loads at start, the lines of a list, and the securities a folder holds.

#include "sheet/SheetTestKit.h"

#include "frame/CommonRoutines.h"
#include "store/SecurityReader.h"
#include "support/Modal.h"

#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

namespace sheettest {

// Puts symbols.csv into the program's folder and loads it as the program does at start.
inline void loadSymbolList(ScriptedPlatform& services, const QByteArray& csv) {
    writeTextFile(QDir(services.programDir.path()).filePath("symbols.csv"), csv);
    ReadSymbolsFile();
}

// A screen shown and settled, as the frame shows it but without blocking.
template <typename Dialog>
std::unique_ptr<Dialog> shown() {
    auto dialog = std::make_unique<Dialog>();
    dialog->show();
    QApplication::processEvents();
    return dialog;
}

inline QStringList lines(const QListWidget* list) {
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

inline void clickEntry(QListWidget* list, const QString& name) {
    const QList<QListWidgetItem*> found = list->findItems(name, Qt::MatchExactly);
    ASSERT_EQ(found.size(), 1) << name.toStdString();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(found.first()).center());
}

// "symbol name" of every security in the folder, sorted; with `details` also "first..last records
// periodicity".
inline QStringList stored(const QString& folder, bool details = false) {
    QStringList out;
    SecurityReader reader;
    reader.OpenFolder(folder);
    while (reader.GetSecuritiesRemaining() >= 1) {
        reader.NextSecurity();
        out << reader.GetSymbol() + ' ' + reader.GetName()
                   + (details ? QStringLiteral(" %1..%2 %3 %4").arg(reader.GetFirstDate()).arg(reader.GetLastDate())
                                    .arg(reader.GetRecordCount()).arg(reader.GetPeriodicity()) : QString());
    }
    reader.CloseFolder();
    out.sort();
    return out;
}

} // namespace sheettest
