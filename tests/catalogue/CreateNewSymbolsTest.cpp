// Create New Symbols and New Symbol, driven through their real controls with the platform scripted.

#include "CatalogueKit.h"

#include "catalogue/ui/CreateSymbolsDialog.h"
#include "frame/ProgramState.h"
#include "frame/WebLinks.h"

#include <QFileInfo>
#include <QScreen>

using namespace sheettest;

namespace {

const QString ChooserTitle = "Select Folder to Stoder the Symbols and Data";
const QString Success = "Securities are created successfully.";

class CreateNewSymbols : public SheetFixture {
protected:
    // Types a symbol into New Symbol, which stands in the middle of the screen, key by key and
    // presses OK (or Close; with none, Enter).
    static void typeSymbol(CreateSymbolsDialog& dialog, const QString& text, const char* button = "okButton") {
        onNextModal([text, button](QWidget* prompt) {
            EXPECT_LE((prompt->frameGeometry().center() - prompt->screen()->geometry().center()).manhattanLength(), 2);
            expectControlsLaidOut(prompt);
            auto* box = child<QLineEdit>(prompt, "symbolEdit");
            box->setFocus();
            QTest::keyClicks(box, text);
            if (button)
                child<QPushButton>(prompt, button)->click();
            else
                QTest::keyClick(box, Qt::Key_Return);
        });
        dialog.newSymbolButton->click();
    }
    // Picks line `row` of Symbol Lookup and presses Select (or Close); the lines of the list then.
    static QStringList lookUp(CreateSymbolsDialog& dialog, int row, const char* button = "selectButton") {
        onNextModal([row, button](QWidget* shown) {
            child<QListWidget>(shown, "namesList")->item(row)->setSelected(true);
            child<QPushButton>(shown, button)->click();
        });
        dialog.symbolLookupButton->click();
        return lines(dialog.symbolsList);
    }
    // Types the symbols into the dialog, sets folder and from date and presses Create Symbols.
    static void create(CreateSymbolsDialog& dialog, const QString& folder, const QStringList& symbols, const QString& from = "01/01/2004") {
        dialog.folderEdit->setText(folder);
        dialog.fromDateEdit->setText(from);
        for (const QString& symbol : symbols)
            typeSymbol(dialog, symbol);
        dialog.createSymbolsButton->click();
    }
    static QByteArray valuesDat(const QString& folder) { return readFileBytes(QDir(folder.trimmed()).filePath("values.dat")); }
};

// Name = symbol, no records, first and last date = the from date, daily; blanks round a symbol go.
TEST_F(CreateNewSymbols, CreatesEmptySecuritiesInAFreshFolder) {
    sharedState().LastFolder = "/data/eod";
    CreateSymbolsDialog dialog;
    EXPECT_EQ(QStringList({dialog.folderEdit->text(), dialog.fromDateEdit->text()}), (QStringList{"/data/eod", "01/01/2004"}));
    EXPECT_EQ(dialog.symbolsList->count(), 0);
    dialog.yahooLookupButton->click();
    EXPECT_EQ(platform.openedAddresses, QStringList{WebLinks::YahooLookupPage});

    const QString folder = temp.sub("fresh");
    create(dialog, folder, {"  INFY.NS  ", "TCS"}, "15/03/2005");
    EXPECT_EQ(lines(dialog.symbolsList), (QStringList{"INFY.NS", "TCS"}));
    ASSERT_EQ(platform.boxes.size(), 1);
    expectBox(0, Success, MsgIcon::Information, "Brindlemark v6");
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(stored(folder, true), (QStringList{"INFY.NS INFY.NS 20050315..20050315 0 1", "TCS TCS 20050315..20050315 0 1"}));
    EXPECT_EQ(valuesDat(folder), "15/03/2005\r\n");
}

// A held symbol loses its records without a question; the same symbol twice leaves one security.
TEST_F(CreateNewSymbols, RecreatingASymbolDropsItsRecordsWithoutAsking) {
    makeSecurity(temp.path(), "HOLD", "HOLD", series(5));
    makeSecurity(temp.path(), "KEEP", "KEEP", series(3));
    CreateSymbolsDialog dialog;
    dialog.show();
    dialog.folderEdit->setText(temp.path());
    QTest::keyClick(dialog.fromDateEdit, Qt::Key_Return);   // Enter in a field creates nothing
    EXPECT_TRUE(platform.boxes.isEmpty());
    create(dialog, temp.path(), {"HOLD", "SBIN", "SBIN"});
    EXPECT_EQ(platform.boxTexts(), QStringList{Success});
    EXPECT_EQ(stored(temp.path(), true), (QStringList{"HOLD HOLD 20040101..20040101 0 1", "KEEP KEEP 20040102..20040106 3 1",
                                                      "SBIN SBIN 20040101..20040101 0 1"}));
}

// values.dat is day first with the user's date separator, whatever form the date was typed in. It
// is overwritten each time, also when the list is empty (the rows with the proposed date).
TEST_F(CreateNewSymbols, ValuesDatHoldsTheFromDateDayFirstInEveryLocale) {
    const struct { const char* locale; const char* typed; const char* file; } cases[] = {
        {"en_GB", nullptr, "01/01/2004\r\n"}, {"en_US", nullptr, "01/01/2004\r\n"}, {"de_DE", nullptr, "01.01.2004\r\n"},
        {"en_GB", " 2/1/2004 ", "02/01/2004\r\n"}, {"en_US", "1/2/04", "02/01/2004\r\n"}, {"de_DE", "2004-01-02", "02.01.2004\r\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.locale) + " " + (c.typed ? c.typed : "as proposed"));
        platform.boxes.clear();
        LocaleGuard locale(c.locale);
        TempFolder folder;
        writeTextFile(folder.file("values.dat"), "31/12/2010\r\nold second line\r\n");
        CreateSymbolsDialog dialog;
        create(dialog, " " + folder.path(), c.typed ? QStringList{"ABC"} : QStringList(), c.typed ? QString(c.typed) : dialog.fromDateEdit->text());
        ASSERT_EQ(platform.boxTexts(), QStringList{Success});
        EXPECT_EQ(valuesDat(folder.path()), c.file);
    }
}

// The checks come first, the date before the folder, and write nothing. A day the store cannot hold
// is no from date either.
TEST_F(CreateNewSymbols, ABadFromDateIsReportedFirstAndStopsBeforeAnythingIsWritten) {
    for (const char* typed : {"", "abc", "31/02/2004", "1/1/2004x", "31/12/1899", "1/1/3000"}) {   // the last two: no store date
        for (const QString& dataFolder : {temp.path(), QString()}) {
            platform.boxes.clear();
            auto dialog = shown<CreateSymbolsDialog>();
            dialog->activateWindow();
            dialog->closeButton->setFocus();
            dialog->symbolsList->addItem("ABC");
            dialog->folderEdit->setText(dataFolder);
            dialog->fromDateEdit->setText(typed);
            dialog->createSymbolsButton->click();
            ASSERT_EQ(platform.boxes.size(), 1) << typed;
            expectBox(0, "Invalid From Date", MsgIcon::Warning, "Brindlemark v6");
            EXPECT_EQ(QApplication::focusWidget(), dialog->fromDateEdit) << typed;
            EXPECT_NE(dialog->result(), QDialog::Accepted);
        }
    }
    EXPECT_TRUE(platform.chooserTitles.isEmpty());
    EXPECT_TRUE(QDir(temp.path()).isEmpty());
}

// An empty folder field opens the chooser, and Create Symbols has to be pressed again; the folder
// button sets the field and LastFolder, and a cancelled chooser empties both.
TEST_F(CreateNewSymbols, AnEmptyFolderOpensTheChooserAndACancelledChooserEmptiesTheField) {
    CreateSymbolsDialog dialog;
    platform.chooseNext(temp.path());
    create(dialog, "   ", {"ABC"});
    ASSERT_EQ(platform.boxes.size(), 1);
    expectBox(0, "Data Folder is Empty.", MsgIcon::Information, "Brindlemark v6");
    EXPECT_EQ(platform.chooserTitles, QStringList{ChooserTitle});
    EXPECT_EQ(dialog.folderEdit->text(), temp.path());
    EXPECT_EQ(sharedState().LastFolder, temp.path());
    EXPECT_TRUE(QDir(temp.path()).isEmpty());   // nothing is made until the user presses again
    dialog.createSymbolsButton->click();
    EXPECT_EQ(platform.boxTexts().last(), Success);
    EXPECT_EQ(stored(temp.path()), QStringList{"ABC ABC"});

    CreateSymbolsDialog again;
    EXPECT_EQ(again.folderEdit->text(), temp.path());
    again.selectFolderButton->click();   // the chooser is cancelled
    EXPECT_EQ(platform.chooserTitles, (QStringList{ChooserTitle, ChooserTitle}));
    EXPECT_EQ(again.folderEdit->text(), QString());
    EXPECT_EQ(sharedState().LastFolder, QString());
}

// New Symbol adds only what was typed and confirmed (OK or Enter), trimmed; Symbol Lookup adds SelectedSymbols,
// also after Close, so that the picks of an earlier Select come in once more.
TEST_F(CreateNewSymbols, TheListTakesTypedAndPickedSymbols) {
    loadSymbolList(platform, "NSE,INFY.NS,Infosys\nNSE,TCS.NS,Tata Consultancy\nNSE,WIPRO.NS,Wipro\n");
    CreateSymbolsDialog dialog;
    typeSymbol(dialog, "AAA", nullptr);
    typeSymbol(dialog, "BBB", "closeButton");
    EXPECT_EQ(handOvers().NewSymbol, QString());
    for (const char* typed : {"    ", "", "  ccc d ", " FIFTEEN.CHARS.X "})   // the store takes 14 characters
        typeSymbol(dialog, typed);
    EXPECT_EQ(lines(dialog.symbolsList), (QStringList{"AAA", "ccc d", "FIFTEEN.CHARS."}));
    delete dialog.symbolsList->takeItem(2);
    EXPECT_EQ(lookUp(dialog, 2, "closeButton"), (QStringList{"AAA", "ccc d"}));   // never selected: nothing is added
    EXPECT_EQ(lookUp(dialog, 2), (QStringList{"AAA", "ccc d", "INFY.NS", "WIPRO.NS"}));   // line 0 was selected
    EXPECT_EQ(lookUp(dialog, 2, "closeButton"), (QStringList{"AAA", "ccc d", "INFY.NS", "WIPRO.NS", "INFY.NS", "WIPRO.NS"}));
}

TEST_F(CreateNewSymbols, AFailureHalfwayKeepsWhatWasMadeAndTheList) {
    loadSymbolList(platform, "G,FIFTEEN.CHARS.X,Too long for the store\n");   // the store takes 14 characters
    {
        CreateSymbolsDialog dialog;
        typeSymbol(dialog, "FIRST");
        lookUp(dialog, 0);   // a symbol of the list is taken as it stands
        create(dialog, temp.path(), {"THIRD"});
        ASSERT_EQ(platform.boxes.size(), 1);   // the store's description, no icon
        EXPECT_TRUE(platform.boxes[0].text.contains("FIFTEEN.CHARS.X") && platform.boxes[0].icon == MsgIcon::None);
        EXPECT_NE(dialog.result(), QDialog::Accepted);
        EXPECT_EQ(dialog.symbolsList->count(), 3);
        EXPECT_FALSE(QFileInfo::exists(temp.file("values.dat")));
    }   // the dialog is gone, and its writer with it
    EXPECT_EQ(stored(temp.path(), true), QStringList{"FIRST FIRST 20040101..20040101 0 1"});
}

} // namespace
