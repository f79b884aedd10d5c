// Symbol Lookup on its own, through its real controls.

#include "CreateSymbolsTestKit.h"

#include "catalogue/ui/frmSymbolLookup.h"
#include "frame/Module1.h"
#include "frame/WebLinks.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>

using namespace createkit;

namespace {

const QByteArray Symbols =
    "NSE,INFY.NS,Infosys\n"
    "NSE,TCS.NS,Tata Consultancy Services\n"
    "NSE,WIPRO.NS,Wipro\n"
    "NYSE,IBM,International Business Machines\n"
    "NYSE,GE,General Electric\n"
    "\"Indices, India\",^NSEI,\"Nifty 50\"\n";

QStringList selectedSymbols() {
    QStringList symbols;
    for (const QString& s : Module1::SelectedSymbols)
        symbols << s;
    return symbols;
}

QStringList comboLines(const QComboBox* combo) {
    QStringList texts;
    for (int i = 0; i < combo->count(); ++i)
        texts << combo->itemText(i);
    return texts;
}

class SymbolLookup : public ::testing::Test {
protected:
    ScriptedPlatform services;

    // Clicks a line of the list the way the user does, with the keyboard modifiers held.
    static void clickLine(frmSymbolLookup& dialog, int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QListWidget* list = dialog.lstSymbolNames;
        const QRect rect = list->visualItemRect(list->item(row));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers, rect.center());
    }
};

TEST_F(SymbolLookup, OpensOnTheFirstGroupWithItsFirstLineSelected) {
    loadSymbolList(services, Symbols);
    frmSymbolLookup dialog;
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Symbol Lookup"));
    EXPECT_EQ(comboLines(dialog.cmbGroups),
              (QStringList{QStringLiteral("NSE"), QStringLiteral("NYSE"), QStringLiteral("Indices, India")}));
    EXPECT_EQ(dialog.cmbGroups->currentIndex(), 0);
    EXPECT_EQ(lines(dialog.lstSymbolNames),
              (QStringList{QStringLiteral("Infosys"), QStringLiteral("Tata Consultancy Services"),
                           QStringLiteral("Wipro")}));
    ASSERT_EQ(dialog.lstSymbolNames->selectedItems().size(), 1);
    EXPECT_EQ(dialog.lstSymbolNames->selectedItems()[0]->text(), QStringLiteral("Infosys"));
    EXPECT_EQ(dialog.txtSymbol->text(), QStringLiteral("INFY.NS"));
    EXPECT_FALSE(dialog.lblNoSymbols->isVisibleTo(&dialog));

    dialog.Command1->click();   // Select at once
    EXPECT_EQ(selectedSymbols(), QStringList{QStringLiteral("INFY.NS")});
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST_F(SymbolLookup, ShowsItsCaptionsAndTheNotice) {
    loadSymbolList(services, Symbols);
    frmSymbolLookup dialog;
    EXPECT_EQ(dialog.Command1->text(), QStringLiteral("Select"));
    EXPECT_EQ(dialog.Command2->text(), QStringLiteral("Close"));
    EXPECT_EQ(dialog.Label1->text(), QStringLiteral("Group"));
    EXPECT_EQ(dialog.Label2->text(), QStringLiteral("Symbol"));
    EXPECT_EQ(child<QLabel>(&dialog, QStringLiteral("Label3"))->text(),
              QStringLiteral("This Symbol Lookup is not have complete list of symbols or all of them are not "
                             "accurate. If you found that a symbols is not available or not valid, please mail "
                             "me to ") + WebLinks::MakerEmail);
    EXPECT_EQ(dialog.lstSymbolNames->selectionMode(), QAbstractItemView::ExtendedSelection);
}

TEST_F(SymbolLookup, SeveralLinesComeBackInListOrderAndTheSymbolFollowsTheLastClick) {
    loadSymbolList(services, Symbols);
    frmSymbolLookup dialog;
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));

    clickLine(dialog, 2);
    EXPECT_EQ(dialog.txtSymbol->text(), QStringLiteral("WIPRO.NS"));
    clickLine(dialog, 0, Qt::ControlModifier);
    EXPECT_EQ(dialog.txtSymbol->text(), QStringLiteral("INFY.NS"));
    EXPECT_EQ(dialog.lstSymbolNames->selectedItems().size(), 2);

    dialog.Command1->click();
    EXPECT_EQ(selectedSymbols(), (QStringList{QStringLiteral("INFY.NS"), QStringLiteral("WIPRO.NS")}));
}

TEST_F(SymbolLookup, AnotherGroupReplacesTheListAndItsSelection) {
    loadSymbolList(services, Symbols);
    frmSymbolLookup dialog;
    dialog.lstSymbolNames->selectAll();
    dialog.cmbGroups->setCurrentIndex(1);
    EXPECT_EQ(lines(dialog.lstSymbolNames),
              (QStringList{QStringLiteral("International Business Machines"), QStringLiteral("General Electric")}));
    EXPECT_EQ(dialog.txtSymbol->text(), QStringLiteral("IBM"));
    dialog.cmbGroups->setCurrentIndex(2);
    EXPECT_EQ(lines(dialog.lstSymbolNames), QStringList{QStringLiteral("Nifty 50")});
    dialog.Command1->click();
    EXPECT_EQ(selectedSymbols(), QStringList{QStringLiteral("^NSEI")});
}

TEST_F(SymbolLookup, CloseLeavesSelectedSymbolsAsTheyWere) {
    loadSymbolList(services, Symbols);
    Module1::SelectedSymbols.append(QStringLiteral("EARLIER"));
    frmSymbolLookup dialog;
    dialog.lstSymbolNames->selectAll();
    dialog.Command2->click();
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_EQ(selectedSymbols(), QStringList{QStringLiteral("EARLIER")});
}

TEST_F(SymbolLookup, SelectWithNoLineSelectedHandsBackNothing) {
    loadSymbolList(services, Symbols);
    Module1::SelectedSymbols.append(QStringLiteral("EARLIER"));
    frmSymbolLookup dialog;
    dialog.lstSymbolNames->clearSelection();
    dialog.Command1->click();
    EXPECT_EQ(Module1::SelectedSymbols.upperBound(), 0);
}

TEST_F(SymbolLookup, AGroupInTwoRunsGetsTwoLinesEachShowingTheWholeGroup) {
    loadSymbolList(services,
                   "NSE,A.NS,Alpha\n"
                   "NSE,B.NS,Beta\n"
                   "BSE,C.BO,Gamma\n"
                   "NSE,D.NS,Delta\n"
                   "nse,E.NS,Epsilon\n");
    frmSymbolLookup dialog;
    EXPECT_EQ(comboLines(dialog.cmbGroups), (QStringList{QStringLiteral("NSE"), QStringLiteral("BSE"),
                                                         QStringLiteral("NSE"), QStringLiteral("nse")}));
    const QStringList wholeGroup{QStringLiteral("Alpha"), QStringLiteral("Beta"), QStringLiteral("Delta")};
    EXPECT_EQ(lines(dialog.lstSymbolNames), wholeGroup);
    dialog.cmbGroups->setCurrentIndex(1);
    EXPECT_EQ(lines(dialog.lstSymbolNames), QStringList{QStringLiteral("Gamma")});
    dialog.cmbGroups->setCurrentIndex(2);
    EXPECT_EQ(lines(dialog.lstSymbolNames), wholeGroup);
    dialog.lstSymbolNames->selectAll();
    dialog.cmbGroups->setCurrentIndex(3);   // capitals count
    EXPECT_EQ(lines(dialog.lstSymbolNames), QStringList{QStringLiteral("Epsilon")});
    dialog.cmbGroups->setCurrentIndex(2);
    dialog.lstSymbolNames->selectAll();
    dialog.Command1->click();
    EXPECT_EQ(selectedSymbols(), (QStringList{QStringLiteral("A.NS"), QStringLiteral("B.NS"), QStringLiteral("D.NS")}));
}

TEST_F(SymbolLookup, TwoEntriesWithOneNameStayTwoLinesWithTheirOwnSymbols) {
    loadSymbolList(services, "NSE,RELIANCE.NS,Reliance\nNSE,RELIANCE.BO,Reliance\n");
    frmSymbolLookup dialog;
    ASSERT_EQ(lines(dialog.lstSymbolNames), (QStringList{QStringLiteral("Reliance"), QStringLiteral("Reliance")}));
    dialog.lstSymbolNames->setCurrentRow(1, QItemSelectionModel::ClearAndSelect);
    EXPECT_EQ(dialog.txtSymbol->text(), QStringLiteral("RELIANCE.BO"));
    dialog.Command1->click();
    EXPECT_EQ(selectedSymbols(), QStringList{QStringLiteral("RELIANCE.BO")});
}

TEST_F(SymbolLookup, AnEmptyOrMissingListOpensEmptyAndSaysSo) {
    for (const bool fileThere : {false, true}) {
        if (fileThere)
            loadSymbolList(services, "");
        else
            ReadSymbolsFile();   // no symbols.csv in the program's folder
        ASSERT_EQ(Module1::SymbolCount, 0);
        Module1::SelectedSymbols.append(QStringLiteral("EARLIER"));
        frmSymbolLookup dialog;
        EXPECT_EQ(dialog.cmbGroups->count(), 0);
        EXPECT_EQ(dialog.lstSymbolNames->count(), 0);
        EXPECT_EQ(dialog.txtSymbol->text(), QString());
        EXPECT_TRUE(dialog.lblNoSymbols->isVisibleTo(&dialog));
        EXPECT_FALSE(dialog.lblNoSymbols->text().isEmpty());
        dialog.Command1->click();
        EXPECT_EQ(Module1::SelectedSymbols.upperBound(), 0) << "file there: " << fileThere;
    }
}

} // namespace
