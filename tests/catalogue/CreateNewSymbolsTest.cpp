// Create New Symbols and New Symbol, driven through their real controls with the platform scripted.

#include "CreateSymbolsTestKit.h"

#include "catalogue/ui/CreateSymbolsDialog.h"
#include "catalogue/ui/NewSymbolDialog.h"
#include "catalogue/ui/SymbolLookupDialog.h"
#include "frame/ProgramState.h"
#include "frame/WebLinks.h"

#include <QFileInfo>
#include <QScreen>
#include <QTest>
#include <QToolButton>

using namespace createkit;

namespace {

const QString Title = QStringLiteral("Brindlemark v6");
const QString ChooserTitle = QStringLiteral("Select Folder to Stoder the Symbols and Data");
const QString Success = QStringLiteral("Securities are created successfully.");

// Types a symbol into New Symbol key by key and presses OK (or Close).
void typeSymbol(CreateSymbolsDialog& dialog, const QString& text, bool ok = true) {
    onNextModal([text, ok](QWidget* prompt) {
        auto* box = child<QLineEdit>(prompt, QStringLiteral("symbolEdit"));
        box->setFocus();
        QTest::keyClicks(box, text);
        child<QPushButton>(prompt, ok ? QStringLiteral("okButton") : QStringLiteral("closeButton"))->click();
    });
    dialog.newSymbolButton->click();
}

class CreateNewSymbols : public ::testing::Test {
protected:
    ScriptedPlatform services;
    TempFolder temp;
    // Types the symbols into the dialog, sets folder and from date and presses Create Symbols.
    void create(CreateSymbolsDialog& dialog, const QString& folder, const QStringList& symbols,
                const QString& from = QStringLiteral("01/01/2004")) {
        dialog.folderEdit->setText(folder);
        dialog.fromDateEdit->setText(from);
        for (const QString& symbol : symbols)
            typeSymbol(dialog, symbol);
        dialog.createSymbolsButton->click();
    }
    static QByteArray valuesDat(const QString& folder) {
        return readFileBytes(QDir(folder.trimmed()).filePath(QStringLiteral("values.dat")));
    }
};

TEST_F(CreateNewSymbols, OpensWithLastFolderTheFromDateAndAnEmptyListAndShowsItsCaptions) {
    sharedState().LastFolder = QStringLiteral("/data/eod");
    CreateSymbolsDialog dialog;
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Create New Symbols"));
    EXPECT_EQ(dialog.folderEdit->text(), QStringLiteral("/data/eod"));
    EXPECT_EQ(dialog.fromDateEdit->text(), QStringLiteral("01/01/2004"));
    EXPECT_EQ(dialog.symbolsList->count(), 0);
    const std::pair<const char*, const char*> captions[] = {
        {"newSymbolButton", "New Symbol"}, {"symbolLookupButton", "Symbol LookUp"}, {"yahooLookupButton", "Yahoo Lookup"},
        {"createSymbolsButton", "Create Symbols"}, {"closeButton", "Close"}, {"folderLabel", "Data Folder"}, {"fromLabel", "From Date"}};
    for (const auto& [name, caption] : captions)
        EXPECT_EQ(dialog.findChild<QWidget*>(name)->property("text").toString(), QString::fromLatin1(caption)) << name;
    EXPECT_FALSE(dialog.selectFolderButton->icon().isNull());

    NewSymbolDialog prompt;
    EXPECT_EQ(QStringList({prompt.windowTitle(), prompt.symbolLabel->text(), prompt.okButton->text(), prompt.closeButton->text()}),
              (QStringList{"New Symbol", "Enter Symbol Name", "OK", "Close"}));

    dialog.yahooLookupButton->click();
    EXPECT_EQ(services.openedAddresses, QStringList{WebLinks::YahooLookupPage});
}

TEST_F(CreateNewSymbols, CreatesEmptySecuritiesInAFreshFolder) {
    const QString folder = temp.sub(QStringLiteral("fresh"));
    CreateSymbolsDialog dialog;
    create(dialog, folder, {QStringLiteral("  INFY.NS  "), QStringLiteral("TCS")}, QStringLiteral("15/03/2005"));

    EXPECT_EQ(lines(dialog.symbolsList), (QStringList{QStringLiteral("INFY.NS"), QStringLiteral("TCS")}));
    ASSERT_EQ(services.boxes.size(), 1) << services.boxTexts().join(u'|').toStdString();
    EXPECT_EQ(services.boxes[0].text, Success);
    EXPECT_EQ(services.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(services.boxes[0].title, Title);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    // Name = symbol, no records, first and last date = the from date, daily.
    EXPECT_EQ(readStore(folder), (QList<Stored>{{"INFY.NS", "INFY.NS", 20050315, 20050315, 0, 1},
                                                {"TCS", "TCS", 20050315, 20050315, 0, 1}}));
    EXPECT_EQ(valuesDat(folder), QByteArray("15/03/2005\r\n"));
}

// A held symbol loses its records without a question; the same symbol twice leaves one security.
TEST_F(CreateNewSymbols, RecreatingASymbolDropsItsRecordsWithoutAsking) {
    const QString folder = temp.sub(QStringLiteral("held"));
    makeSecurityWithRecords(folder, QStringLiteral("HOLD"), 5);
    makeSecurityWithRecords(folder, QStringLiteral("KEEP"), 3);
    ASSERT_EQ(readStore(folder).value(0).records, 5);

    CreateSymbolsDialog dialog;
    create(dialog, folder, {QStringLiteral("HOLD"), QStringLiteral("SBIN"), QStringLiteral("SBIN")});

    EXPECT_EQ(services.boxTexts(), QStringList{Success});
    EXPECT_EQ(readStore(folder), (QList<Stored>{{"HOLD", "HOLD", 20040101, 20040101, 0, 1},
                                                {"KEEP", "KEEP", 20050801, 20050803, 3, 1},
                                                {"SBIN", "SBIN", 20040101, 20040101, 0, 1}}));
}

// values.dat is day first with the user's date separator, whatever form the date was typed in. It
// is overwritten each time, also when the list is empty (the rows with the proposed date).
TEST_F(CreateNewSymbols, ValuesDatHoldsTheFromDateDayFirstInEveryLocale) {
    const struct { const char* locale; const char* typed; const char* file; } cases[] = {
        {"en_GB", nullptr, "01/01/2004\r\n"}, {"en_US", nullptr, "01/01/2004\r\n"}, {"de_DE", nullptr, "01.01.2004\r\n"},
        {"en_GB", " 2/1/2004 ", "02/01/2004\r\n"},      {"en_GB", "2 January 2004", "02/01/2004\r\n"},
        {"en_US", "1/2/04", "02/01/2004\r\n"},          {"en_US", "January 2, 2004", "02/01/2004\r\n"},
        {"de_DE", "02.01.2004", "02.01.2004\r\n"},      {"de_DE", "2004-01-02", "02.01.2004\r\n"},
    };
    int n = 0;
    for (const auto& c : cases) {
        services.boxes.clear();
        LocaleGuard locale(QString::fromLatin1(c.locale));
        const QString folder = temp.sub(QString::number(++n));
        writeTextFile(QDir(folder).filePath(QStringLiteral("values.dat")), "31/12/2010\r\nold second line\r\n");
        CreateSymbolsDialog dialog;
        const QStringList symbols = c.typed ? QStringList{QStringLiteral("ABC")} : QStringList();
        create(dialog, QStringLiteral(" ") + folder, symbols, c.typed ? QString::fromLatin1(c.typed) : dialog.fromDateEdit->text());
        ASSERT_EQ(services.boxTexts(), QStringList{Success}) << c.locale << " " << c.typed;
        EXPECT_EQ(valuesDat(folder), QByteArray(c.file)) << c.locale << " " << c.typed;
        if (c.typed) {
            EXPECT_EQ(readStore(folder).value(0).firstDate, 20040102) << c.locale << " " << c.typed;
        }
    }
}

// The checks come first, the date before the folder, and write nothing.
TEST_F(CreateNewSymbols, ABadFromDateIsReportedFirstAndStopsBeforeAnythingIsWritten) {
    const QString folder = temp.sub(QStringLiteral("bad"));
    for (const char* typed : {"", "abc", "31/02/2004", "1/1/2004x"}) {
        for (const QString& dataFolder : {folder, QString()}) {
            services.boxes.clear();
            CreateSymbolsDialog dialog;
            dialog.show();
            ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
            dialog.activateWindow();
            dialog.closeButton->setFocus();
            dialog.symbolsList->addItem(QStringLiteral("ABC"));
            dialog.folderEdit->setText(dataFolder);
            dialog.fromDateEdit->setText(QString::fromLatin1(typed));
            dialog.createSymbolsButton->click();
            ASSERT_EQ(services.boxes.size(), 1) << typed;
            EXPECT_EQ(services.boxes[0].text + services.boxes[0].title, QStringLiteral("Invalid From Date") + Title);
            EXPECT_EQ(services.boxes[0].icon, MsgIcon::Warning);
            EXPECT_EQ(QApplication::focusWidget(), dialog.fromDateEdit) << typed;
            EXPECT_NE(dialog.result(), QDialog::Accepted);
        }
    }
    EXPECT_TRUE(services.chooserTitles.isEmpty());
    EXPECT_TRUE(QDir(folder).isEmpty());
}

// An empty folder field opens the chooser, and Create Symbols has to be pressed again; the folder
// button sets the field and LastFolder, and a cancelled chooser empties both.
TEST_F(CreateNewSymbols, AnEmptyFolderOpensTheChooserAndACancelledChooserEmptiesTheField) {
    const QString folder = temp.sub(QStringLiteral("chosen"));
    CreateSymbolsDialog dialog;
    services.chooseNext(folder);
    create(dialog, QStringLiteral("   "), {QStringLiteral("ABC")});
    ASSERT_EQ(services.boxes.size(), 1);
    EXPECT_EQ(services.boxes[0].text + services.boxes[0].title, QStringLiteral("Data Folder is Empty.") + Title);
    EXPECT_EQ(services.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(services.chooserTitles, QStringList{ChooserTitle});
    EXPECT_EQ(dialog.folderEdit->text(), folder);
    EXPECT_EQ(sharedState().LastFolder, folder);
    EXPECT_TRUE(QDir(folder).isEmpty());   // nothing is made until the user presses again
    dialog.createSymbolsButton->click();
    EXPECT_EQ(services.boxTexts().last(), Success);
    EXPECT_EQ(readStore(folder).value(0).symbol, QStringLiteral("ABC"));

    CreateSymbolsDialog again;
    EXPECT_EQ(again.folderEdit->text(), folder);
    again.selectFolderButton->click();   // the chooser is cancelled
    EXPECT_EQ(services.chooserTitles, (QStringList{ChooserTitle, ChooserTitle}));
    EXPECT_EQ(again.folderEdit->text(), QString());
    EXPECT_EQ(sharedState().LastFolder, QString());
}

// New Symbol adds only what was typed and confirmed, trimmed; Symbol Lookup adds SelectedSymbols,
// also after Close, so that the picks of an earlier Select come in once more.
TEST_F(CreateNewSymbols, TheListTakesTypedAndPickedSymbols) {
    loadSymbolList(services, "NSE,INFY.NS,Infosys\nNSE,TCS.NS,Tata Consultancy\nNSE,WIPRO.NS,Wipro\n");
    CreateSymbolsDialog dialog;
    typeSymbol(dialog, QStringLiteral("AAA"));
    typeSymbol(dialog, QStringLiteral("BBB"), /*ok=*/false);   // Close
    EXPECT_EQ(handOvers().NewSymbol, QString());
    typeSymbol(dialog, QStringLiteral("    "));                // blank, OK
    typeSymbol(dialog, QString());                             // empty, OK
    typeSymbol(dialog, QStringLiteral("  ccc d "));
    // The store takes 14 characters: a fifteenth can't be typed, blanks round the symbol aside.
    typeSymbol(dialog, QStringLiteral(" FIFTEEN.CHARS.X "));
    EXPECT_EQ(lines(dialog.symbolsList), (QStringList{"AAA", "ccc d", "FIFTEEN.CHARS."}));
    dialog.symbolsList->takeItem(2);
    const auto lookup = [&](bool select) {
        onNextModal([select](QWidget* shown) {
            child<QListWidget>(shown, QStringLiteral("namesList"))->item(2)->setSelected(true);
            child<QPushButton>(shown, select ? QStringLiteral("selectButton") : QStringLiteral("closeButton"))->click();
        });
        dialog.symbolLookupButton->click();
        return lines(dialog.symbolsList);
    };
    EXPECT_EQ(lookup(false), (QStringList{"AAA", "ccc d"}));   // never selected: nothing is added
    EXPECT_EQ(lookup(true), (QStringList{"AAA", "ccc d", "INFY.NS", "WIPRO.NS"}));   // line 0 was selected
    EXPECT_EQ(lookup(false), (QStringList{"AAA", "ccc d", "INFY.NS", "WIPRO.NS", "INFY.NS", "WIPRO.NS"}));
}

TEST_F(CreateNewSymbols, AFailureHalfwayKeepsWhatWasMadeAndTheList) {
    const QString folder = temp.sub(QStringLiteral("halfway"));
    const QString tooLong = QStringLiteral("FIFTEEN.CHARS.X");   // the store takes 14 characters
    loadSymbolList(services, "G," + tooLong.toUtf8() + ",Too long for the store\n");
    {
        CreateSymbolsDialog dialog;
        typeSymbol(dialog, QStringLiteral("FIRST"));
        onNextModal([](QWidget* shown) {   // a symbol of the list is taken as it stands
            child<QListWidget>(shown, QStringLiteral("namesList"))->item(0)->setSelected(true);
            child<QPushButton>(shown, QStringLiteral("selectButton"))->click();
        });
        dialog.symbolLookupButton->click();
        create(dialog, folder, {QStringLiteral("THIRD")});
        ASSERT_EQ(services.boxes.size(), 1);   // the store's description, no icon
        EXPECT_TRUE(services.boxes[0].text.contains(tooLong) && services.boxes[0].icon == MsgIcon::None);
        EXPECT_NE(dialog.result(), QDialog::Accepted);
        EXPECT_EQ(dialog.symbolsList->count(), 3);
        EXPECT_FALSE(QFileInfo::exists(QDir(folder).filePath(QStringLiteral("values.dat"))));
    }   // the dialog is gone, and its writer with it
    EXPECT_EQ(readStore(folder), (QList<Stored>{{"FIRST", "FIRST", 20040101, 20040101, 0, 1}}));
}

TEST_F(CreateNewSymbols, TheDialogsStandInTheMiddleOfTheScreen) {
    loadSymbolList(services, "NSE,A.NS,Alpha\n");
    CreateSymbolsDialog create;
    NewSymbolDialog prompt;
    SymbolLookupDialog lookup;
    for (QDialog* dialog : std::initializer_list<QDialog*>{&create, &prompt, &lookup}) {
        dialog->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog));
        dialog->resize(dialog->width() + 40, dialog->height() + 20);   // the size event centres it again
        QApplication::processEvents();
        const QRect screen = dialog->screen()->geometry();
        const QRect frame = dialog->frameGeometry();
        EXPECT_LE(std::abs(frame.center().x() - screen.center().x()), 1) << dialog->objectName().toStdString();
        EXPECT_LE(std::abs(frame.center().y() - screen.center().y()), 1) << dialog->objectName().toStdString();
    }
}

} // namespace
