// Symbol Lookup on its own, through its real controls.

#include "CatalogueKit.h"

#include "catalogue/ui/SymbolLookupDialog.h"
#include "frame/ProgramState.h"

#include <QComboBox>
#include <QLabel>

using namespace sheettest;

namespace {

QStringList selectedSymbols() { return QStringList(handOvers().SelectedSymbols.begin(), handOvers().SelectedSymbols.end()); }

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

// It opens on the first group with its first line picked (Select at once hands that back: see
// Create New Symbols). Lines come back in list order and the symbol box follows the last click.
TEST_F(SymbolLookup, OpensOnTheFirstGroupAndSelectHandsBackThePickedLines) {
    SymbolLookupDialog dialog;
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    EXPECT_EQ(groups(dialog.groupsCombo), (QStringList{"NSE", "NYSE", "Indices, India"}));
    EXPECT_EQ(lines(dialog.namesList), (QStringList{"Infosys", "Tata Consultancy Services", "Wipro"}));
    EXPECT_EQ(dialog.namesList->selectedItems().value(0)->text(), "Infosys");
    EXPECT_EQ(dialog.focusWidget(), dialog.namesList) << "the arrow keys go to the list";
    EXPECT_EQ(dialog.symbolEdit->text(), "INFY.NS");
    EXPECT_FALSE(dialog.noSymbolsLabel->isVisible());
    const auto click = [&](int row, Qt::KeyboardModifiers modifiers) {   // as the user clicks
        QTest::mouseClick(dialog.namesList->viewport(), Qt::LeftButton, modifiers, dialog.namesList->visualItemRect(dialog.namesList->item(row)).center());
        return dialog.symbolEdit->text();
    };
    EXPECT_EQ(click(2, Qt::NoModifier), "WIPRO.NS");
    EXPECT_EQ(click(0, Qt::ControlModifier), "INFY.NS");
    dialog.selectButton->click();
    EXPECT_EQ(selectedSymbols().join(' '), "INFY.NS WIPRO.NS");
}

// A group in two runs of the file gets two lines, each showing all its entries; capitals count.
// Picking another group replaces the list and its selection. Two entries with one name stay two
// lines, each with its own symbol. An empty list opens empty and says so, and Select hands back
// nothing. (Close keeping earlier picks shows in Create New Symbols.)
TEST_F(SymbolLookup, AGroupInTwoRunsGetsTwoLinesEachShowingTheWholeGroup) {
    loadSymbolList(services, "NSE,A.NS,Alpha\nNSE,B.NS,Alpha\nBSE,C.BO,Gamma\nNSE,D.NS,Delta\nnse,E.NS,Epsilon\n");
    SymbolLookupDialog dialog;
    EXPECT_EQ(groups(dialog.groupsCombo), (QStringList{"NSE", "BSE", "NSE", "nse"}));
    const QStringList wholeGroup{"Alpha", "Alpha", "Delta"};
    const QStringList expected[] = {wholeGroup, {"Gamma"}, wholeGroup, {"Epsilon"}};
    EXPECT_EQ(lines(dialog.namesList), wholeGroup);
    for (int i : {1, 2, 3, 2}) {
        dialog.namesList->selectAll();
        dialog.groupsCombo->setCurrentIndex(i);
        EXPECT_EQ(lines(dialog.namesList), expected[i]) << i;
        EXPECT_EQ(dialog.namesList->selectedItems().size(), 1) << i;
    }
    dialog.namesList->setCurrentRow(1, QItemSelectionModel::ClearAndSelect);
    EXPECT_EQ(dialog.symbolEdit->text(), "B.NS");
    dialog.namesList->selectAll();
    dialog.selectButton->click();
    EXPECT_EQ(selectedSymbols(), (QStringList{"A.NS", "B.NS", "D.NS"}));

    loadSymbolList(services, "");
    SymbolLookupDialog empty;
    EXPECT_EQ(empty.groupsCombo->count() + empty.namesList->count(), 0);
    EXPECT_EQ(empty.symbolEdit->text(), QString());
    EXPECT_TRUE(empty.noSymbolsLabel->isVisibleTo(&empty));
    empty.selectButton->click();
    EXPECT_EQ(handOvers().SelectedSymbols.upperBound(), 0);
}

} // namespace
