// Symbol Lookup on its own, through its real controls.

#include "CreateSymbolsTestKit.h"

#include "catalogue/ui/frmSymbolLookup.h"
#include "frame/Module1.h"
#include "frame/WebLinks.h"

#include <QComboBox>
#include <QTest>

using namespace createkit;

namespace {

QStringList selectedSymbols() {
    QStringList symbols;
    for (const QString& s : Module1::SelectedSymbols)
        symbols << s;
    return symbols;
}

QStringList groups(const QComboBox* combo) {
    QStringList texts;
    for (int i = 0; i < combo->count(); ++i)
        texts << combo->itemText(i);
    return texts;
}

class SymbolLookup : public ::testing::Test {
protected:
    ScriptedPlatform services;
    void SetUp() override {
        loadSymbolList(services, "NSE,INFY.NS,Infosys\nNSE,TCS.NS,Tata Consultancy Services\nNSE,WIPRO.NS,Wipro\n"
                                 "NYSE,IBM,International Business Machines\n\"Indices, India\",^NSEI,\"Nifty 50\"\n");
    }
};

TEST_F(SymbolLookup, OpensOnTheFirstGroupWithItsFirstLineSelected) {
    frmSymbolLookup dialog;
    EXPECT_EQ(QStringList({dialog.windowTitle(), dialog.Label1->text(), dialog.Label2->text(), dialog.Command1->text(),
                           dialog.Command2->text(), dialog.Label3->text()}),
              (QStringList{"Symbol Lookup", "Group", "Symbol", "Select", "Close",
                           "This Symbol Lookup is not have complete list of symbols or all of them are not accurate. "
                           "If you found that a symbols is not available or not valid, please mail me to "
                               + WebLinks::MakerEmail}));
    EXPECT_EQ(groups(dialog.cmbGroups), (QStringList{"NSE", "NYSE", "Indices, India"}));
    EXPECT_EQ(dialog.cmbGroups->currentIndex(), 0);
    EXPECT_EQ(lines(dialog.lstSymbolNames), (QStringList{"Infosys", "Tata Consultancy Services", "Wipro"}));
    ASSERT_EQ(dialog.lstSymbolNames->selectedItems().size(), 1);
    EXPECT_EQ(dialog.lstSymbolNames->selectedItems()[0]->text(), QStringLiteral("Infosys"));
    EXPECT_EQ(dialog.txtSymbol->text(), QStringLiteral("INFY.NS"));
    EXPECT_FALSE(dialog.lblNoSymbols->isVisibleTo(&dialog));

    dialog.Command1->click();   // Select at once
    EXPECT_EQ(selectedSymbols(), QStringList{QStringLiteral("INFY.NS")});
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST_F(SymbolLookup, SeveralLinesComeBackInListOrderAndTheSymbolFollowsTheLastClick) {
    frmSymbolLookup dialog;
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    const auto click = [&](int row, Qt::KeyboardModifiers modifiers) {   // as the user clicks
        QListWidget* list = dialog.lstSymbolNames;
        QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers, list->visualItemRect(list->item(row)).center());
        return dialog.txtSymbol->text();
    };
    EXPECT_EQ(click(2, Qt::NoModifier), QStringLiteral("WIPRO.NS"));
    EXPECT_EQ(click(0, Qt::ControlModifier), QStringLiteral("INFY.NS"));
    EXPECT_EQ(dialog.lstSymbolNames->selectedItems().size(), 2);
    dialog.Command1->click();
    EXPECT_EQ(selectedSymbols(), (QStringList{"INFY.NS", "WIPRO.NS"}));
}

// Close leaves SelectedSymbols as they were; Select with no line selected hands back nothing.
TEST_F(SymbolLookup, CloseKeepsSelectedSymbolsAndSelectReplacesThem) {
    for (const bool select : {false, true}) {
        Module1::SelectedSymbols.clear();
        Module1::SelectedSymbols.append(QStringLiteral("EARLIER"));
        frmSymbolLookup dialog;
        dialog.lstSymbolNames->clearSelection();
        (select ? dialog.Command1 : dialog.Command2)->click();
        EXPECT_EQ(dialog.result(), select ? QDialog::Accepted : QDialog::Rejected);
        EXPECT_EQ(selectedSymbols(), select ? QStringList() : QStringList{QStringLiteral("EARLIER")});
        EXPECT_EQ(Module1::SelectedSymbols.upperBound(), select ? 0 : 1);
    }
}

// A group in two runs of the file gets two lines, each showing all its entries; capitals count.
// Picking another group replaces the list and its selection. Two entries with one name stay two
// lines, each with its own symbol.
TEST_F(SymbolLookup, AGroupInTwoRunsGetsTwoLinesEachShowingTheWholeGroup) {
    loadSymbolList(services, "NSE,A.NS,Alpha\nNSE,B.NS,Alpha\nBSE,C.BO,Gamma\nNSE,D.NS,Delta\nnse,E.NS,Epsilon\n");
    frmSymbolLookup dialog;
    EXPECT_EQ(groups(dialog.cmbGroups), (QStringList{"NSE", "BSE", "NSE", "nse"}));
    const QStringList wholeGroup{"Alpha", "Alpha", "Delta"};
    const QStringList expected[] = {wholeGroup, {"Gamma"}, wholeGroup, {"Epsilon"}};
    EXPECT_EQ(lines(dialog.lstSymbolNames), wholeGroup);
    for (int i : {1, 2, 3, 2}) {
        dialog.lstSymbolNames->selectAll();
        dialog.cmbGroups->setCurrentIndex(i);
        EXPECT_EQ(lines(dialog.lstSymbolNames), expected[i]) << i;
        EXPECT_EQ(dialog.lstSymbolNames->selectedItems().size(), 1) << i;
    }
    dialog.lstSymbolNames->setCurrentRow(1, QItemSelectionModel::ClearAndSelect);
    EXPECT_EQ(dialog.txtSymbol->text(), QStringLiteral("B.NS"));
    dialog.lstSymbolNames->selectAll();
    dialog.Command1->click();
    EXPECT_EQ(selectedSymbols(), (QStringList{"A.NS", "B.NS", "D.NS"}));
}

TEST_F(SymbolLookup, AnEmptyListOpensEmptyAndSaysSo) {
    loadSymbolList(services, "");
    Module1::SelectedSymbols.append(QStringLiteral("EARLIER"));
    frmSymbolLookup dialog;
    EXPECT_EQ(dialog.cmbGroups->count() + dialog.lstSymbolNames->count(), 0);
    EXPECT_EQ(dialog.txtSymbol->text(), QString());
    EXPECT_TRUE(dialog.lblNoSymbols->isVisibleTo(&dialog));
    dialog.Command1->click();
    EXPECT_EQ(Module1::SelectedSymbols.upperBound(), 0);
}

} // namespace
