// Open Security: listing a folder, browsing and typing another, picking a security and opening it
// as a data sheet.

#include "CatalogueKit.h"

#include "catalogue/ui/OpenSecurityDialog.h"
#include "frame/ProgramState.h"
#include "frame/Regional.h"
#include "frame/ui/ChildWindows.h"

#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QTreeWidget>

using namespace sheettest;

namespace {

class OpenSecurity : public SheetFixture {
protected:
    TempFolder second;   // one security; `temp` holds three
    void SetUp() override {
        makeSecurity(temp.path(), "AAA", "Alpha Mining", series(3));
        makeSecurity(temp.path(), "BBB", "Beta Foods", series(5));
        makeSecurity(temp.path(), "CCC", "Gamma Rail", {});
        makeSecurity(second.path(), "ZZZ", "Zeta Bank", series(2, QDate(2010, 3, 1)));
        sharedState().LastFolder = temp.path();
    }
    static QStringList row(const QTreeWidgetItem* item) { return {item->text(0), item->text(1), item->text(2), item->text(3)}; }
    // The names listed, the selected one marked with a star.
    static QStringList names(const OpenSecurityDialog& dialog) {
        QStringList out;
        for (int i = 0; i < dialog.securitiesList->topLevelItemCount(); ++i)
            out << dialog.securitiesList->topLevelItem(i)->text(0) + (dialog.securitiesList->topLevelItem(i)->isSelected() ? "*" : "");
        return out;
    }
    static void clickRow(OpenSecurityDialog& dialog, int row, bool twice = false) {
        const QPoint at = dialog.securitiesList->visualItemRect(dialog.securitiesList->topLevelItem(row)).center();
        QTest::mouseClick(dialog.securitiesList->viewport(), Qt::LeftButton, {}, at);
        if (twice)
            QTest::mouseDClick(dialog.securitiesList->viewport(), Qt::LeftButton, {}, at);
    }
    // The title and row count of each sheet standing, sorted.
    static QStringList sheets() {
        QStringList opened;
        for (DataSheetWindow* sheet : openSheets())
            opened << sheet->windowTitle() + ' ' + QString::number(sheet->rows()->rowCount());
        opened.sort();
        return opened;
    }
    // The store's description of a failed listing or opening, as Browse, Enter and Open show it.
    void expectStoreBox() {
        ASSERT_EQ(platform.boxes.size(), 1) << platform.boxTexts().join('|').toStdString();
        expectBox(0, QString(), MsgIcon::Information);
        platform.boxes.clear();
    }
};

TEST_F(OpenSecurity, LoadListsTheLastFolderAndClickAndOpenGivesAFilledSheet) {
    auto dialog = shown<OpenSecurityDialog>();
    EXPECT_EQ(dialog->folderEdit->text(), temp.path());
    EXPECT_EQ(names(*dialog), (QStringList{"Alpha Mining*", "Beta Foods", "Gamma Rail"}));
    const QStringList beta = row(dialog->securitiesList->topLevelItem(1));
    EXPECT_EQ(beta.at(1) + ' ' + beta.at(3), "BBB " + DateToText(series(5).back().date));
    EXPECT_FALSE(beta.at(2).isEmpty()) << "file name";
    EXPECT_EQ(dialog->securityEdit->text(), "Alpha Mining") << "Load picks the first row";
    // The Symbol column shows a symbol of the store's full 14 characters whole, with its margins.
    EXPECT_GE(dialog->securitiesList->columnWidth(1), dialog->securitiesList->fontMetrics().horizontalAdvance("MMMMMMMMMMMMMM") + 12);

    clickRow(*dialog, 1);
    EXPECT_EQ(dialog->securityEdit->text(), "Beta Foods");
    dialog->openButton->click();
    EXPECT_FALSE(dialog->isVisible());
    ASSERT_EQ(sheets(), QStringList{"DataSheet of Beta Foods 5"});
    DataSheetWindow* sheet = openSheets()[0];
    EXPECT_EQ((QStringList{sheet->folderEdit->text(), sheet->nameEdit->text(), sheet->symbolEdit->text()}), (QStringList{temp.path(), "Beta Foods", "BBB"}));
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(progress.calls.count("Show"), 1);
}

// A key press picks the row selected before the key moves the selection, an arrow key the row it
// moves to; Enter then opens it. A double click opens the row clicked.
TEST_F(OpenSecurity, EnterAndDoubleClickInTheListOpen) {
    auto dialog = shown<OpenSecurityDialog>();
    QTest::keyClick(dialog->securityEdit, Qt::Key_Return);   // no default button takes it
    EXPECT_TRUE(dialog->isVisible() && sheets().isEmpty());
    clickRow(*dialog, 2);
    dialog->securitiesList->setFocus();
    dialog->securitiesList->setCurrentItem(dialog->securitiesList->topLevelItem(0));
    QTest::keyClicks(dialog->securityEdit, "x");   // the box shows the pick and takes no typing
    ASSERT_EQ(dialog->securityEdit->text(), "Gamma Rail");
    const auto key = [&](Qt::Key k) { QTest::keyClick(dialog->securitiesList, k); return dialog->securityEdit->text(); };
    EXPECT_EQ(key(Qt::Key_B), "Alpha Mining");
    EXPECT_EQ(dialog->securitiesList->currentItem()->text(0), "Beta Foods");
    EXPECT_EQ(key(Qt::Key_Down), "Gamma Rail");
    EXPECT_EQ(key(Qt::Key_Up), "Beta Foods");
    EXPECT_EQ(names(*dialog), (QStringList{"Alpha Mining", "Beta Foods*", "Gamma Rail"}));
    key(Qt::Key_Return);
    clickRow(*shown<OpenSecurityDialog>(), 0, true);
    EXPECT_EQ(sheets(), (QStringList{"DataSheet of Alpha Mining 3", "DataSheet of Beta Foods 5"}));
}

// Browse lists and remembers the chosen folder without picking; a cancelled chooser relists the
// folder as typed and remembers it; Enter in the folder box relists and remembers nothing.
TEST_F(OpenSecurity, BrowseAndEnterInTheFolderBoxRelist) {
    auto dialog = shown<OpenSecurityDialog>();
    platform.chooseNext(second.path());
    dialog->browseButton->click();
    EXPECT_EQ(platform.chooserTitles, QStringList{"Browse For Folder"});
    EXPECT_EQ(dialog->folderEdit->text(), second.path());
    EXPECT_EQ(names(*dialog), QStringList{"Zeta Bank"}) << "no row highlights a security that won't open";
    EXPECT_EQ(sharedState().LastFolder, second.path());
    EXPECT_EQ(dialog->securityEdit->text(), "Alpha Mining") << "Browse doesn't pick";

    dialog->folderEdit->setText(temp.path());
    dialog->browseButton->click();   // the chooser is cancelled
    EXPECT_EQ(dialog->folderEdit->text(), temp.path());
    EXPECT_EQ(names(*dialog), (QStringList{"Alpha Mining*", "Beta Foods", "Gamma Rail"})) << "the picked row highlighted";
    EXPECT_EQ(sharedState().LastFolder, temp.path());

    dialog->folderEdit->setText("  " + second.path() + " ");
    QTest::keyClick(dialog->folderEdit, Qt::Key_Return);
    EXPECT_EQ(names(*dialog), QStringList{"Zeta Bank"});
    EXPECT_EQ(sharedState().LastFolder, temp.path());
    EXPECT_TRUE(dialog->isVisible()) << "Enter belongs to the folder box, not to a button";
    QTest::keyClick(dialog->folderEdit, Qt::Key_X);   // other keys just type
    EXPECT_EQ(names(*dialog), QStringList{"Zeta Bank"});
    dialog->folderEdit->setText(second.path());
    EXPECT_TRUE(platform.boxes.isEmpty());

    // The old pick names no security here: Open tells so and the dialog stays, still working.
    dialog->openButton->click();
    expectStoreBox();
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_TRUE(openSheets().isEmpty());
    clickRow(*dialog, 0);
    dialog->openButton->click();
    EXPECT_EQ(sheets(), QStringList{"DataSheet of Zeta Bank 2"});
}

// Load passes over a folder without a store; Browse and Enter to one complain and keep the rows.
TEST_F(OpenSecurity, FolderWithoutAStore) {
    sharedState().LastFolder = "   ";   // a first run lists the program's own folder, which has no store
    auto dialog = shown<OpenSecurityDialog>();
    EXPECT_EQ(dialog->folderEdit->text(), platform.programFolder());
    EXPECT_EQ(dialog->securitiesList->topLevelItemCount(), 0);
    EXPECT_TRUE(platform.boxes.isEmpty());
    dialog->openButton->click();
    ASSERT_EQ(platform.boxes.size(), 1);
    expectBox(0, "No Security Selected.", MsgIcon::Information, "Brindlemark v6");
    EXPECT_TRUE(dialog->isVisible());
    platform.boxes.clear();

    sharedState().LastFolder = temp.path();
    dialog = shown<OpenSecurityDialog>();
    platform.chooseNext(temp.sub("bare"));
    dialog->browseButton->click();
    expectStoreBox();
    EXPECT_EQ(dialog->folderEdit->text(), temp.path()) << "back to the previous folder";
    EXPECT_EQ(sharedState().LastFolder, temp.path());
    EXPECT_EQ(dialog->securitiesList->topLevelItemCount(), 3) << "the rows stay as they were";
    EXPECT_EQ(dialog->focusWidget(), dialog->folderEdit);

    dialog->openButton->setFocus();
    dialog->folderEdit->setText(temp.sub("bare"));
    QTest::keyClick(dialog->folderEdit, Qt::Key_Return);
    expectStoreBox();
    EXPECT_EQ(dialog->folderEdit->text(), "");
    EXPECT_EQ(dialog->focusWidget(), dialog->folderEdit);
    EXPECT_EQ(dialog->securitiesList->topLevelItemCount(), 3);
    dialog->cancelButton->click();
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_TRUE(openSheets().isEmpty());
}

// Two openings of one security give two sheets that stand apart in the main window; a cancel
// during the load of the second still shows it, with the rows read so far and no message.
TEST_F(OpenSecurity, TwoSheetsOfOneSecurityStandApart) {
    QMdiArea area;
    SetChildWindowArea(&area);
    struct Unset { ~Unset() { SetChildWindowArea(nullptr); } } unset;
    area.show();
    for (int cancelAfter : {-1, 7}) {   // 5 steps for the first sheet, 2 for the second
        progress.cancelAfterSteps = cancelAfter;
        auto dialog = shown<OpenSecurityDialog>();
        clickRow(*dialog, 1);
        dialog->openButton->click();
    }
    const auto subs = area.subWindowList();
    ASSERT_EQ(subs.size(), 2);
    auto one = qobject_cast<DataSheetWindow*>(subs[0]->widget()), two = qobject_cast<DataSheetWindow*>(subs[1]->widget());
    ASSERT_TRUE(one && two && one != two);
    EXPECT_EQ(subs[1]->windowTitle(), "DataSheet of Beta Foods");
    EXPECT_EQ((std::vector<int>{one->rows()->rowCount(), two->rows()->rowCount(), two->selectedRow()}), (std::vector<int>{5, 2, -1}));
    EXPECT_TRUE(platform.boxes.isEmpty());

    platform.answerNextBox(MsgAnswer::Yes);
    one->deleteButton->click();   // deletes the newest record, in the first sheet only
    EXPECT_EQ((std::vector<int>{one->rows()->rowCount(), two->rows()->rowCount()}), (std::vector<int>{4, 2}));
    one->closeButton->click();   // "Close" takes its sub-window away, no question asked
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(area.subWindowList().size(), 1);
    EXPECT_EQ(platform.boxTexts().size(), 2);
}

// The whole way as the frame runs it, modally, Enter on the first row, on a copy of a vendor's
// folder, under a locale that writes dates with dots and numbers with a decimal comma.
TEST_F(OpenSecurity, ModalRunOnAFixtureFolder) {
    REQUIRE_FIXTURE("vendor-small");
    LocaleGuard locale("de_DE");
    TempFolder copy;
    ASSERT_TRUE(copyFixture("vendor-small", copy.path()));
    sharedState().LastFolder = copy.path();
    OpenSecurityDialog dialog;
    QStringList first;
    onNextModal([&](QWidget* w) {
        auto open = qobject_cast<OpenSecurityDialog*>(w);
        ASSERT_TRUE(open && open->securitiesList->topLevelItemCount() > 0);
        first = row(open->securitiesList->topLevelItem(0));
        QTest::keyClick(open->securitiesList, Qt::Key_Return);
    });
    EXPECT_EQ(dialog.exec(), QDialog::Accepted);
    const auto records = readBars(copy.path(), first.at(1));
    ASSERT_FALSE(records.empty());
    ASSERT_EQ(sheets(), QStringList{"DataSheet of " + first.at(0).trimmed() + ' ' + QString::number(records.size())});
    EXPECT_EQ(first.at(3), DateToText(records.back().date));
    EXPECT_EQ(openSheets()[0]->lastDateEdit->text(), first.at(3));
    EXPECT_EQ(openSheets()[0]->rows()->cell(0, 4), Regional::priceText(records.front().close));
}

} // namespace
