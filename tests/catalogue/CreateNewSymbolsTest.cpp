// Create New Symbols, driven through its real controls with the platform scripted.

#include "CreateSymbolsTestKit.h"

#include "catalogue/ui/frmCreateNewSymbols.h"
#include "catalogue/ui/frmNewSymbol.h"
#include "catalogue/ui/frmSymbolLookup.h"
#include "frame/Module1.h"
#include "frame/WebLinks.h"

#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QToolButton>

#include <algorithm>
#include <cstdlib>

using namespace createkit;

namespace {

const QString Title = QStringLiteral("Brindlemark v6");
const QString ChooserTitle = QStringLiteral("Select Folder to Stoder the Symbols and Data");
const QString Success = QStringLiteral("Securities are created successfully.");

// Types a symbol into New Symbol and presses OK (or Close).
void typeSymbol(frmCreateNewSymbols& dialog, const QString& text, bool ok = true) {
    onNextModal([text, ok](QWidget* prompt) {
        child<QLineEdit>(prompt, QStringLiteral("Text1"))->setText(text);
        child<QPushButton>(prompt, ok ? QStringLiteral("Command1") : QStringLiteral("Command2"))->click();
    });
    dialog.cmdNewSymbol->click();
}

class CreateNewSymbols : public ::testing::Test {
protected:
    ScriptedPlatform services;
    TempFolder temp;
};

TEST_F(CreateNewSymbols, OpensWithLastFolderTheFromDateAndAnEmptyList) {
    Module1::LastFolder = QStringLiteral("/data/eod");
    frmCreateNewSymbols dialog;
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Create New Symbols"));
    EXPECT_EQ(dialog.txtDataFolder->text(), QStringLiteral("/data/eod"));
    EXPECT_EQ(dialog.dtFrom->text(), QStringLiteral("01/01/2004"));
    EXPECT_EQ(dialog.lstSymbols->count(), 0);

    const std::pair<const char*, const char*> captions[] = {
        {"cmdNewSymbol", "New Symbol"},       {"cmdSymbolLookup", "Symbol LookUp"},
        {"cmdYahoo", "Yahoo Lookup"},         {"cmdCreateSymbols", "Create Symbols"},
        {"cmdClose", "Close"},
    };
    for (const auto& [name, caption] : captions)
        EXPECT_EQ(child<QPushButton>(&dialog, QString::fromLatin1(name))->text(), QString::fromLatin1(caption));
    EXPECT_FALSE(child<QToolButton>(&dialog, QStringLiteral("cmdSelectFolder"))->icon().isNull());
    QStringList labels;
    for (const QLabel* label : dialog.findChildren<QLabel*>())
        labels << label->text();
    EXPECT_TRUE(labels.contains(QStringLiteral("Data Folder")));
    EXPECT_TRUE(labels.contains(QStringLiteral("From Date")));
}

TEST_F(CreateNewSymbols, CreatesEmptySecuritiesInAFreshFolder) {
    const QString folder = temp.sub(QStringLiteral("fresh"));
    frmCreateNewSymbols dialog;
    dialog.txtDataFolder->setText(folder);
    dialog.dtFrom->setText(QStringLiteral("15/03/2005"));
    typeSymbol(dialog, QStringLiteral("  INFY.NS  "));
    typeSymbol(dialog, QStringLiteral("TCS"));
    ASSERT_EQ(lines(dialog.lstSymbols), (QStringList{QStringLiteral("INFY.NS"), QStringLiteral("TCS")}));

    dialog.cmdCreateSymbols->click();

    ASSERT_EQ(services.boxes.size(), 1) << services.boxTexts().join(u'|').toStdString();
    EXPECT_EQ(services.boxes[0].text, Success);
    EXPECT_EQ(services.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(services.boxes[0].title, Title);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);

    const QList<StoredSecurity> stored = readStore(folder);
    ASSERT_EQ(stored.size(), 2);
    QStringList names;
    for (const StoredSecurity& security : stored) {
        names << security.name;
        EXPECT_EQ(security.symbol, security.name);
        EXPECT_EQ(security.firstDate, 20050315) << security.symbol.toStdString();
        EXPECT_EQ(security.lastDate, 20050315) << security.symbol.toStdString();
        EXPECT_EQ(security.records, 0) << security.symbol.toStdString();
        EXPECT_EQ(security.periodicity, 1) << security.symbol.toStdString();   // daily
    }
    names.sort();
    EXPECT_EQ(names, (QStringList{QStringLiteral("INFY.NS"), QStringLiteral("TCS")}));
    EXPECT_EQ(readFileBytes(QDir(folder).filePath(QStringLiteral("values.dat"))), QByteArray("15/03/2005\r\n"));
}

TEST_F(CreateNewSymbols, RecreatingASymbolDropsItsRecordsWithoutAsking) {
    const QString folder = temp.sub(QStringLiteral("held"));
    makeSecurityWithRecords(folder, QStringLiteral("HOLD"), 5);
    makeSecurityWithRecords(folder, QStringLiteral("KEEP"), 3);
    ASSERT_EQ(readStore(folder).size(), 2);

    frmCreateNewSymbols dialog;
    dialog.txtDataFolder->setText(folder);
    typeSymbol(dialog, QStringLiteral("HOLD"));
    dialog.cmdCreateSymbols->click();

    EXPECT_EQ(services.boxTexts(), QStringList{Success});   // no question was asked
    const QList<StoredSecurity> stored = readStore(folder);
    ASSERT_EQ(stored.size(), 2);
    for (const StoredSecurity& security : stored) {
        if (security.symbol == QStringLiteral("HOLD")) {
            EXPECT_EQ(security.records, 0);
            EXPECT_EQ(security.firstDate, 20040101);
            EXPECT_EQ(security.lastDate, 20040101);
        } else {
            EXPECT_EQ(security.symbol, QStringLiteral("KEEP"));
            EXPECT_EQ(security.records, 3);   // a symbol not in the list is left alone
        }
    }
}

TEST_F(CreateNewSymbols, TheSameSymbolTwiceLeavesOneSecurity) {
    const QString folder = temp.sub(QStringLiteral("twice"));
    frmCreateNewSymbols dialog;
    dialog.txtDataFolder->setText(folder);
    typeSymbol(dialog, QStringLiteral("SBIN"));
    typeSymbol(dialog, QStringLiteral("SBIN"));
    EXPECT_EQ(dialog.lstSymbols->count(), 2);
    dialog.cmdCreateSymbols->click();
    EXPECT_EQ(services.boxTexts(), QStringList{Success}) << services.boxTexts().join(u'|').toStdString();
    EXPECT_EQ(storedSymbols(folder), QStringList{QStringLiteral("SBIN")});
}

TEST_F(CreateNewSymbols, AnEmptyListStillWritesValuesDat) {
    const QString folder = temp.sub(QStringLiteral("none"));
    frmCreateNewSymbols dialog;
    dialog.txtDataFolder->setText(QStringLiteral("  ") + folder + QStringLiteral("  "));
    dialog.cmdCreateSymbols->click();
    EXPECT_EQ(services.boxTexts(), QStringList{Success});
    EXPECT_EQ(readFileBytes(QDir(folder).filePath(QStringLiteral("values.dat"))), QByteArray("01/01/2004\r\n"));
}

TEST_F(CreateNewSymbols, ValuesDatIsOverwrittenEachTime) {
    const QString folder = temp.sub(QStringLiteral("again"));
    writeTextFile(QDir(folder).filePath(QStringLiteral("values.dat")), "31/12/2010\r\nold second line\r\n");
    frmCreateNewSymbols dialog;
    dialog.txtDataFolder->setText(folder);
    dialog.dtFrom->setText(QStringLiteral("02/01/2004"));
    dialog.cmdCreateSymbols->click();
    EXPECT_EQ(readFileBytes(QDir(folder).filePath(QStringLiteral("values.dat"))), QByteArray("02/01/2004\r\n"));
}

// values.dat is always day first, with the user's date separator, whatever form the date was typed in.
struct ValuesCase {
    const char* locale;
    const char* typed;
    const char* file;
};

class ValuesDatByLocale : public CreateNewSymbols, public ::testing::WithParamInterface<ValuesCase> {};

TEST_P(ValuesDatByLocale, HoldsTheFromDateDayFirst) {
    const ValuesCase c = GetParam();
    LocaleGuard locale(QString::fromLatin1(c.locale));
    const QString folder = temp.sub(QStringLiteral("v"));
    frmCreateNewSymbols dialog;
    dialog.txtDataFolder->setText(folder);
    typeSymbol(dialog, QStringLiteral("ABC"));
    dialog.dtFrom->setText(QString::fromLatin1(c.typed));
    dialog.cmdCreateSymbols->click();
    ASSERT_EQ(services.boxTexts(), QStringList{Success});
    EXPECT_EQ(readFileBytes(QDir(folder).filePath(QStringLiteral("values.dat"))), QByteArray(c.file));
    const QList<StoredSecurity> stored = readStore(folder);
    ASSERT_EQ(stored.size(), 1);
    EXPECT_EQ(stored[0].firstDate, 20040102);
}

INSTANTIATE_TEST_SUITE_P(
    Locales, ValuesDatByLocale,
    ::testing::Values(ValuesCase{"en_GB", "02/01/2004", "02/01/2004\r\n"},
                      ValuesCase{"en_GB", " 2/1/2004 ", "02/01/2004\r\n"},
                      ValuesCase{"en_GB", "2 January 2004", "02/01/2004\r\n"},
                      ValuesCase{"en_GB", "2004-01-02", "02/01/2004\r\n"},
                      ValuesCase{"en_US", "1/2/04", "02/01/2004\r\n"},
                      ValuesCase{"en_US", "January 2, 2004", "02/01/2004\r\n"},
                      ValuesCase{"de_DE", "02.01.2004", "02.01.2004\r\n"},
                      ValuesCase{"de_DE", "2004-01-02", "02.01.2004\r\n"}));

TEST_F(CreateNewSymbols, TheProposedFromDateIsTheFirstOfJanuary2004InEveryLocale) {
    const std::pair<const char*, const char*> cases[] = {
        {"en_GB", "01/01/2004\r\n"}, {"en_US", "01/01/2004\r\n"}, {"de_DE", "01.01.2004\r\n"}};
    for (const auto& [name, written] : cases) {
        LocaleGuard locale(QString::fromLatin1(name));
        const QString folder = temp.sub(QString::fromLatin1(name));
        frmCreateNewSymbols dialog;
        EXPECT_EQ(dialog.dtFrom->text(), QStringLiteral("01/01/2004")) << name;
        dialog.txtDataFolder->setText(folder);
        dialog.cmdCreateSymbols->click();
        EXPECT_EQ(readFileBytes(QDir(folder).filePath(QStringLiteral("values.dat"))), QByteArray(written)) << name;
    }
}

TEST_F(CreateNewSymbols, AFromDateThatIsNoDateStopsBeforeAnythingIsWritten) {
    const QString folder = temp.sub(QStringLiteral("bad"));
    for (const char* typed : {"", "   ", "abc", "31/02/2004", "13/13/2004", "1/1/2004x"}) {
        services.boxes.clear();
        frmCreateNewSymbols dialog;
        dialog.txtDataFolder->setText(folder);
        dialog.lstSymbols->addItem(QStringLiteral("ABC"));
        dialog.dtFrom->setText(QString::fromLatin1(typed));
        dialog.cmdCreateSymbols->click();
        ASSERT_EQ(services.boxes.size(), 1) << typed;
        EXPECT_EQ(services.boxes[0].text, QStringLiteral("Invalid From Date"));
        EXPECT_EQ(services.boxes[0].icon, MsgIcon::Warning);
        EXPECT_EQ(services.boxes[0].title, Title);
        EXPECT_NE(dialog.result(), QDialog::Accepted);
    }
    EXPECT_TRUE(QDir(folder).isEmpty());
}

TEST_F(CreateNewSymbols, ABadDateIsReportedBeforeAnEmptyFolder) {
    frmCreateNewSymbols dialog;
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    dialog.activateWindow();
    dialog.cmdClose->setFocus();
    dialog.dtFrom->setText(QStringLiteral("not a date"));
    dialog.cmdCreateSymbols->click();
    EXPECT_EQ(services.boxTexts(), QStringList{QStringLiteral("Invalid From Date")});
    EXPECT_TRUE(services.chooserTitles.isEmpty());
    EXPECT_EQ(QApplication::focusWidget(), dialog.dtFrom);
    dialog.hide();
}

TEST_F(CreateNewSymbols, AnEmptyFolderOpensTheChooserAndWaitsForTheNextPress) {
    const QString folder = temp.sub(QStringLiteral("chosen"));
    frmCreateNewSymbols dialog;
    dialog.txtDataFolder->setText(QStringLiteral("   "));
    dialog.lstSymbols->addItem(QStringLiteral("ABC"));
    services.chooseNext(folder);
    dialog.cmdCreateSymbols->click();

    ASSERT_EQ(services.boxes.size(), 1);
    EXPECT_EQ(services.boxes[0].text, QStringLiteral("Data Folder is Empty."));
    EXPECT_EQ(services.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(services.boxes[0].title, Title);
    EXPECT_EQ(services.chooserTitles, QStringList{ChooserTitle});
    EXPECT_EQ(dialog.txtDataFolder->text(), folder);
    EXPECT_EQ(Module1::LastFolder, folder);
    EXPECT_NE(dialog.result(), QDialog::Accepted);
    EXPECT_TRUE(QDir(folder).isEmpty());   // nothing is made until the user presses again

    dialog.cmdCreateSymbols->click();
    EXPECT_EQ(services.boxTexts().last(), Success);
    EXPECT_EQ(storedSymbols(folder), QStringList{QStringLiteral("ABC")});
}

TEST_F(CreateNewSymbols, SelectFolderMovesLastFolderAndACancelEmptiesBoth) {
    Module1::LastFolder = QStringLiteral("/earlier");
    frmCreateNewSymbols dialog;
    services.chooseNext(QStringLiteral("/picked/folder/"));
    dialog.cmdSelectFolder->click();
    EXPECT_EQ(dialog.txtDataFolder->text(), QStringLiteral("/picked/folder"));
    EXPECT_EQ(Module1::LastFolder, QStringLiteral("/picked/folder"));

    dialog.cmdSelectFolder->click();   // the chooser is cancelled
    EXPECT_EQ(services.chooserTitles, (QStringList{ChooserTitle, ChooserTitle}));
    EXPECT_EQ(dialog.txtDataFolder->text(), QString());
    EXPECT_EQ(Module1::LastFolder, QString());
}

TEST_F(CreateNewSymbols, NewSymbolAddsOnlyWhatWasTypedAndConfirmed) {
    frmCreateNewSymbols dialog;
    typeSymbol(dialog, QStringLiteral("AAA"));
    typeSymbol(dialog, QStringLiteral("BBB"), /*ok=*/false);   // Close
    typeSymbol(dialog, QStringLiteral("    "));                // blank, OK
    typeSymbol(dialog, QString());                             // empty, OK
    typeSymbol(dialog, QStringLiteral("\t ccc d "));
    EXPECT_EQ(lines(dialog.lstSymbols), (QStringList{QStringLiteral("AAA"), QStringLiteral("ccc d")}));
}

TEST_F(CreateNewSymbols, SymbolLookupPicksAreAppendedAndComeAgainAfterClose) {
    loadSymbolList(services, "NSE,INFY.NS,Infosys\nNSE,TCS.NS,Tata Consultancy\nNSE,WIPRO.NS,Wipro\n");
    frmCreateNewSymbols dialog;
    typeSymbol(dialog, QStringLiteral("FIRST"));

    // The very first use, closed: nothing was ever selected, nothing is added.
    onNextModal([](QWidget* lookup) { child<QPushButton>(lookup, QStringLiteral("Command2"))->click(); });
    dialog.cmdSymbolLookup->click();
    EXPECT_EQ(lines(dialog.lstSymbols), QStringList{QStringLiteral("FIRST")});

    onNextModal([](QWidget* lookup) {
        auto* list = child<QListWidget>(lookup, QStringLiteral("lstSymbolNames"));
        list->item(2)->setSelected(true);   // line 0 is selected on opening
        child<QPushButton>(lookup, QStringLiteral("Command1"))->click();
    });
    dialog.cmdSymbolLookup->click();
    EXPECT_EQ(lines(dialog.lstSymbols),
              (QStringList{QStringLiteral("FIRST"), QStringLiteral("INFY.NS"), QStringLiteral("WIPRO.NS")}));

    // Close after an earlier Select: the earlier picks come in once more.
    onNextModal([](QWidget* lookup) { child<QPushButton>(lookup, QStringLiteral("Command2"))->click(); });
    dialog.cmdSymbolLookup->click();
    EXPECT_EQ(lines(dialog.lstSymbols),
              (QStringList{QStringLiteral("FIRST"), QStringLiteral("INFY.NS"), QStringLiteral("WIPRO.NS"),
                           QStringLiteral("INFY.NS"), QStringLiteral("WIPRO.NS")}));
}

TEST_F(CreateNewSymbols, YahooLookupOpensYahoosPage) {
    frmCreateNewSymbols dialog;
    dialog.cmdYahoo->click();
    EXPECT_EQ(services.openedAddresses, QStringList{WebLinks::YahooLookupPage});
    EXPECT_TRUE(services.boxes.isEmpty());
}

TEST_F(CreateNewSymbols, AFailureHalfwayKeepsWhatWasMadeAndTheList) {
    const QString folder = temp.sub(QStringLiteral("halfway"));
    const QString tooLong = QStringLiteral("FIFTEEN.CHARS.X");   // the store takes 14 characters
    {
        frmCreateNewSymbols dialog;
        dialog.txtDataFolder->setText(folder);
        for (const QString& symbol : {QStringLiteral("FIRST"), tooLong, QStringLiteral("THIRD")})
            typeSymbol(dialog, symbol);
        dialog.cmdCreateSymbols->click();

        ASSERT_EQ(services.boxes.size(), 1);
        EXPECT_TRUE(services.boxes[0].text.contains(tooLong)) << services.boxes[0].text.toStdString();
        EXPECT_EQ(services.boxes[0].icon, MsgIcon::None);
        EXPECT_NE(dialog.result(), QDialog::Accepted);
        EXPECT_EQ(dialog.lstSymbols->count(), 3);
        EXPECT_FALSE(QFileInfo::exists(QDir(folder).filePath(QStringLiteral("values.dat"))));
    }   // the dialog is gone, and its writer with it
    EXPECT_EQ(storedSymbols(folder), QStringList{QStringLiteral("FIRST")});
}

TEST_F(CreateNewSymbols, AVendorFolderKeepsItsOtherSecurities) {
    REQUIRE_FIXTURE("vendor-small");
    const QString folder = temp.sub(QStringLiteral("vendor"));
    ASSERT_TRUE(copyFixture(QStringLiteral("vendor-small"), folder));
    const QList<StoredSecurity> before = readStore(folder);
    ASSERT_FALSE(before.isEmpty());

    frmCreateNewSymbols dialog;
    dialog.txtDataFolder->setText(folder);
    typeSymbol(dialog, QStringLiteral("NEWONE"));
    dialog.cmdCreateSymbols->click();
    ASSERT_EQ(services.boxTexts(), QStringList{Success});

    const QList<StoredSecurity> after = readStore(folder);
    ASSERT_EQ(after.size(), before.size() + 1);
    for (const StoredSecurity& old : before) {
        const auto same = std::find_if(after.begin(), after.end(),
                                       [&](const StoredSecurity& s) { return s.symbol == old.symbol; });
        ASSERT_NE(same, after.end()) << old.symbol.toStdString();
        EXPECT_EQ(same->records, old.records) << old.symbol.toStdString();
        EXPECT_EQ(same->lastDate, old.lastDate) << old.symbol.toStdString();
    }
}

TEST_F(CreateNewSymbols, TheDialogsStandInTheMiddleOfTheScreen) {
    loadSymbolList(services, "NSE,A.NS,Alpha\n");
    frmCreateNewSymbols create;
    frmNewSymbol prompt;
    frmSymbolLookup lookup;
    for (QDialog* dialog : std::initializer_list<QDialog*>{&create, &prompt, &lookup}) {
        dialog->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog));
        dialog->resize(dialog->width() + 40, dialog->height() + 20);
        QApplication::processEvents();
        const QRect screen = dialog->screen()->geometry();
        const QRect frame = dialog->frameGeometry();
        EXPECT_LE(std::abs(frame.center().x() - screen.center().x()), 1) << dialog->objectName().toStdString();
        EXPECT_LE(std::abs(frame.center().y() - screen.center().y()), 1) << dialog->objectName().toStdString();
        dialog->hide();
    }
}

} // namespace
