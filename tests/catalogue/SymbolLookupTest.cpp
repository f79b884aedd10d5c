// Symbol Lookup on its own, through its real controls.

#include "CreateSymbolsTestKit.h"

#include "catalogue/ui/SymbolLookupDialog.h"
#include "frame/ProgramState.h"
#include "frame/WebLinks.h"

#include <QComboBox>
#include <QTest>

using namespace createkit;

namespace {

QStringList selectedSymbols() {
    QStringList symbols;
    for (const QString& s : handOvers().SelectedSymbols)
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
    SymbolLookupDialog dialog;
    EXPECT_EQ(QStringList({dialog.windowTitle(), dialog.groupLabel->text(), dialog.symbolLabel->text(), dialog.selectButton->text(),
                           dialog.closeButton->text(), dialog.noticeLabel->text()}),
              (QStringList{"Symbol Lookup", "Group", "Symbol", "Select", "Close",
                           "This Symbol Lookup is not have complete list of symbols or all of them are not accurate. "
                           "If you found that a symbols is not available or not valid, please mail me to "
                               + WebLinks::MakerEmail}));
    EXPECT_EQ(groups(dialog.groupsCombo), (QStringList{"NSE", "NYSE", "Indices, India"}));
    EXPECT_EQ(dialog.groupsCombo->currentIndex(), 0);
    EXPECT_EQ(lines(dialog.namesList), (QStringList{"Infosys", "Tata Consultancy Services", "Wipro"}));
    ASSERT_EQ(dialog.namesList->selectedItems().size(), 1);
    EXPECT_EQ(dialog.namesList->selectedItems()[0]->text(), QStringLiteral("Infosys"));
    EXPECT_EQ(dialog.symbolEdit->text(), QStringLiteral("INFY.NS"));
    EXPECT_FALSE(dialog.noSymbolsLabel->isVisibleTo(&dialog));

    dialog.selectButton->click();   // Select at once
    EXPECT_EQ(selectedSymbols(), QStringList{QStringLiteral("INFY.NS")});
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST_F(SymbolLookup, SeveralLinesComeBackInListOrderAndTheSymbolFollowsTheLastClick) {
    SymbolLookupDialog dialog;
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    const auto click = [&](int row, Qt::KeyboardModifiers modifiers) {   // as the user clicks
        QListWidget* list = dialog.namesList;
        QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers, list->visualItemRect(list->item(row)).center());
        return dialog.symbolEdit->text();
    };
    EXPECT_EQ(click(2, Qt::NoModifier), QStringLiteral("WIPRO.NS"));
    EXPECT_EQ(click(0, Qt::ControlModifier), QStringLiteral("INFY.NS"));
    EXPECT_EQ(dialog.namesList->selectedItems().size(), 2);
    dialog.selectButton->click();
    EXPECT_EQ(selectedSymbols(), (QStringList{"INFY.NS", "WIPRO.NS"}));
}

// Close leaves SelectedSymbols as they were; Select with no line selected hands back nothing.
TEST_F(SymbolLookup, CloseKeepsSelectedSymbolsAndSelectReplacesThem) {
    for (const bool select : {false, true}) {
        handOvers().SelectedSymbols.clear();
        handOvers().SelectedSymbols.append(QStringLiteral("EARLIER"));
        SymbolLookupDialog dialog;
        dialog.namesList->clearSelection();
        (select ? dialog.selectButton : dialog.closeButton)->click();
        EXPECT_EQ(dialog.result(), select ? QDialog::Accepted : QDialog::Rejected);
        EXPECT_EQ(selectedSymbols(), select ? QStringList() : QStringList{QStringLiteral("EARLIER")});
        EXPECT_EQ(handOvers().SelectedSymbols.upperBound(), select ? 0 : 1);
    }
}

// A group in two runs of the file gets two lines, each showing all its entries; capitals count.
// Picking another group replaces the list and its selection. Two entries with one name stay two
// lines, each with its own symbol.
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
    EXPECT_EQ(dialog.symbolEdit->text(), QStringLiteral("B.NS"));
    dialog.namesList->selectAll();
    dialog.selectButton->click();
    EXPECT_EQ(selectedSymbols(), (QStringList{"A.NS", "B.NS", "D.NS"}));
}

TEST_F(SymbolLookup, AnEmptyListOpensEmptyAndSaysSo) {
    loadSymbolList(services, "");
    handOvers().SelectedSymbols.append(QStringLiteral("EARLIER"));
    SymbolLookupDialog dialog;
    EXPECT_EQ(dialog.groupsCombo->count() + dialog.namesList->count(), 0);
    EXPECT_EQ(dialog.symbolEdit->text(), QString());
    EXPECT_TRUE(dialog.noSymbolsLabel->isVisibleTo(&dialog));
    dialog.selectButton->click();
    EXPECT_EQ(handOvers().SelectedSymbols.upperBound(), 0);
}

} // namespace
