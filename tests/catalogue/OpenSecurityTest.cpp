// Open Security: listing a folder, browsing and typing another, picking a security and opening it
// as a data sheet.

#include "sheet/SheetTestKit.h"

#include "catalogue/ui/OpenSecurityDialog.h"
#include "frame/CommonRoutines.h"
#include "frame/ProgramState.h"
#include "frame/Regional.h"
#include "frame/ui/ChildWindows.h"
#include "support/Modal.h"

#include <QGroupBox>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

using namespace sheettest;

namespace {

class OpenSecurity : public SheetFixture {
protected:
    TempFolder second;   // one security; `temp` holds three
    TempFolder bare;     // no store

    void SetUp() override {
        makeSecurity(temp.path(), "AAA", "Alpha Mining", series(3));
        makeSecurity(temp.path(), "BBB", "Beta Foods", series(5));
        makeSecurity(temp.path(), "CCC", "Gamma Rail", {});
        makeSecurity(second.path(), "ZZZ", "Zeta Bank", series(2, QDate(2010, 3, 1)));
        sharedState().LastFolder = temp.path();
    }

    // The dialog as the frame shows it, but without blocking: load runs as it comes up.
    static std::unique_ptr<OpenSecurityDialog> shown() {
        auto dialog = std::make_unique<OpenSecurityDialog>();
        dialog->show();
        QApplication::processEvents();
        return dialog;
    }

    static QStringList row(const QTreeWidgetItem* item) {
        return {item->text(0), item->text(1), item->text(2), item->text(3)};
    }

    static QStringList names(const OpenSecurityDialog& dialog) {
        QStringList out;
        for (int i = 0; i < dialog.securitiesList->topLevelItemCount(); ++i)
            out << dialog.securitiesList->topLevelItem(i)->text(0);
        return out;
    }

    static void clickRow(OpenSecurityDialog& dialog, int row, bool twice = false) {
        const QPoint at = dialog.securitiesList->visualItemRect(dialog.securitiesList->topLevelItem(row)).center();
        QTest::mouseClick(dialog.securitiesList->viewport(), Qt::LeftButton, {}, at);
        if (twice)
            QTest::mouseDClick(dialog.securitiesList->viewport(), Qt::LeftButton, {}, at);
    }

    static void openRow(int row) {
        auto dialog = shown();
        clickRow(*dialog, row);
        dialog->openButton->click();
    }

    // The store's description of a failed listing, as Browse and Relist show it.
    void expectStoreBox() {
        ASSERT_EQ(platform.boxes.size(), 1) << platform.boxTexts().join('|').toStdString();
        expectBox(0, QString(), MsgIcon::Information);
        platform.boxes.clear();
    }
};

TEST_F(OpenSecurity, LoadListsTheLastFolderAndClickAndOpenGivesAFilledSheet) {
    auto dialog = shown();
    EXPECT_EQ(dialog->windowTitle(), "Open Security");
    EXPECT_EQ(dialog->securitiesGroup->title(), "Available Securities");
    EXPECT_EQ(dialog->openButton->text(), "&Open");
    EXPECT_EQ(dialog->cancelButton->text(), "&Cancel");
    EXPECT_EQ(row(dialog->securitiesList->headerItem()), (QStringList{"Security Name", "Symbol", "File Name", "Last Date"}));
    EXPECT_EQ(dialog->folderEdit->text(), temp.path());
    EXPECT_EQ(names(*dialog), (QStringList{"Alpha Mining", "Beta Foods", "Gamma Rail"}));
    const QStringList beta = row(dialog->securitiesList->topLevelItem(1));
    EXPECT_EQ(beta.at(1), "BBB");
    EXPECT_FALSE(beta.at(2).isEmpty()) << "file name";
    EXPECT_EQ(beta.at(3), DateToText(series(5).back().date));
    EXPECT_EQ(dialog->securityEdit->text(), "Alpha Mining") << "Load picks the first row";
    // The Symbol column shows a symbol of the store's full 14 characters whole, with its margins.
    const int widest = dialog->securitiesList->fontMetrics().horizontalAdvance(QStringLiteral("MMMMMMMMMMMMMM"));
    EXPECT_GE(dialog->securitiesList->columnWidth(1), widest + 12);

    clickRow(*dialog, 1);
    EXPECT_EQ(dialog->securityEdit->text(), "Beta Foods");
    dialog->openButton->click();

    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    const auto sheets = openSheets();
    ASSERT_EQ(sheets.size(), 1);
    EXPECT_EQ(sheets[0]->windowTitle(), "DataSheet of Beta Foods");
    EXPECT_EQ((QStringList{sheets[0]->folderEdit->text(), sheets[0]->nameEdit->text(), sheets[0]->symbolEdit->text()}),
              (QStringList{temp.path(), "Beta Foods", "BBB"}));
    EXPECT_EQ(sheets[0]->rows()->rowCount(), 5);
    EXPECT_EQ(sheets[0]->selectedRow(), 4);
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(progress.log->calls.count("Show"), 1);
}

// A key press picks the row selected before the key moves the selection; Enter then opens it.
// A double click opens the row clicked.
TEST_F(OpenSecurity, EnterAndDoubleClickInTheListOpen) {
    auto dialog = shown();
    clickRow(*dialog, 2);
    dialog->securitiesList->setFocus();
    dialog->securitiesList->setCurrentItem(dialog->securitiesList->topLevelItem(0));
    ASSERT_EQ(dialog->securityEdit->text(), "Gamma Rail");
    QTest::keyClick(dialog->securitiesList, Qt::Key_B);
    EXPECT_EQ(dialog->securityEdit->text(), "Alpha Mining");
    EXPECT_EQ(dialog->securitiesList->currentItem()->text(0), "Beta Foods");
    // An arrow key picks the row it moves to: what is highlighted is what opens.
    QTest::keyClick(dialog->securitiesList, Qt::Key_Down);
    EXPECT_EQ(dialog->securityEdit->text(), "Gamma Rail");
    QTest::keyClick(dialog->securitiesList, Qt::Key_Up);
    EXPECT_EQ(dialog->securityEdit->text(), "Beta Foods");
    EXPECT_EQ(dialog->securitiesList->selectedItems().value(0)->text(0), "Beta Foods");
    QTest::keyClick(dialog->securitiesList, Qt::Key_Return);

    clickRow(*shown(), 0, true);

    QStringList opened;   // title and rows of each sheet
    for (DataSheetWindow* sheet : openSheets())
        opened << sheet->windowTitle() + QString::number(sheet->rows()->rowCount());
    opened.sort();
    EXPECT_EQ(opened, (QStringList{"DataSheet of Alpha Mining3", "DataSheet of Beta Foods5"}));
}

// Browse lists and remembers the chosen folder without picking; a cancelled chooser relists the
// folder as typed and remembers it; Enter in the folder box relists and remembers nothing.
TEST_F(OpenSecurity, BrowseAndEnterInTheFolderBoxRelist) {
    auto dialog = shown();
    platform.chooseNext(second.path());
    dialog->browseButton->click();
    EXPECT_EQ(platform.chooserTitles, QStringList{"Browse For Folder"});
    EXPECT_EQ(dialog->folderEdit->text(), second.path());
    EXPECT_EQ(names(*dialog), QStringList{"Zeta Bank"});
    EXPECT_EQ(sharedState().LastFolder, second.path());
    EXPECT_EQ(dialog->securityEdit->text(), "Alpha Mining") << "Browse doesn't pick";
    EXPECT_TRUE(dialog->securitiesList->selectedItems().isEmpty()) << "no row highlights a security that won't open";

    dialog->folderEdit->setText(temp.path());
    dialog->browseButton->click();   // the chooser is cancelled
    EXPECT_EQ(dialog->folderEdit->text(), temp.path());
    EXPECT_EQ(names(*dialog).size(), 3);
    EXPECT_EQ(sharedState().LastFolder, temp.path());
    ASSERT_EQ(dialog->securitiesList->selectedItems().size(), 1);
    EXPECT_EQ(dialog->securitiesList->selectedItems()[0]->text(0), "Alpha Mining") << "the picked row highlighted";

    dialog->folderEdit->setText("  " + second.path() + " ");
    QTest::keyClick(dialog->folderEdit, Qt::Key_Return);
    EXPECT_EQ(names(*dialog), QStringList{"Zeta Bank"});
    EXPECT_TRUE(dialog->securitiesList->selectedItems().isEmpty());
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
    ASSERT_EQ(openSheets().size(), 1);
    EXPECT_EQ(openSheets()[0]->windowTitle(), "DataSheet of Zeta Bank");
}

// Load passes over a folder without a store; Browse and Enter to one complain and keep the rows.
TEST_F(OpenSecurity, FolderWithoutAStore) {
    sharedState().LastFolder = "   ";   // a first run lists the program's own folder, which has no store
    auto dialog = shown();
    EXPECT_EQ(dialog->folderEdit->text(), platform.programFolder());
    EXPECT_EQ(dialog->securitiesList->topLevelItemCount(), 0);
    EXPECT_TRUE(platform.boxes.isEmpty());
    dialog->openButton->click();
    ASSERT_EQ(platform.boxes.size(), 1);
    expectBox(0, "No Security Selected.", MsgIcon::Information, "Brindlemark v6");
    EXPECT_TRUE(dialog->isVisible());
    platform.boxes.clear();

    sharedState().LastFolder = temp.path();
    dialog = shown();
    platform.chooseNext(bare.path());
    dialog->browseButton->click();
    expectStoreBox();
    EXPECT_EQ(dialog->folderEdit->text(), temp.path()) << "back to the previous folder";
    EXPECT_EQ(sharedState().LastFolder, temp.path());
    EXPECT_EQ(dialog->securitiesList->topLevelItemCount(), 3) << "the rows stay as they were";
    EXPECT_EQ(dialog->focusWidget(), dialog->folderEdit);

    dialog->openButton->setFocus();
    dialog->folderEdit->setText(bare.path());
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
    openRow(1);
    progress.log->cancelAfterSteps = 7;   // 5 steps for the first sheet, 2 for the second
    openRow(1);
    const auto subs = area.subWindowList();
    ASSERT_EQ(subs.size(), 2);
    auto one = qobject_cast<DataSheetWindow*>(subs[0]->widget()), two = qobject_cast<DataSheetWindow*>(subs[1]->widget());
    ASSERT_TRUE(one && two && one != two);
    EXPECT_EQ(subs[1]->windowTitle(), "DataSheet of Beta Foods");
    EXPECT_EQ(one->rows()->rowCount(), 5);
    EXPECT_EQ(two->rows()->rowCount(), 2);
    EXPECT_EQ(two->selectedRow(), -1);
    EXPECT_TRUE(platform.boxes.isEmpty());

    platform.answerNextBox(MsgAnswer::Yes);
    one->deleteButton->click();   // deletes the newest record, in the first sheet only
    EXPECT_EQ(one->rows()->rowCount(), 4);
    EXPECT_EQ(two->rows()->rowCount(), 2);

    one->closeButton->click();   // "Close" takes its sub-window away, no question asked
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(area.subWindowList().size(), 1);
    EXPECT_EQ(platform.boxTexts().size(), 2);
}

// The whole way as the frame runs it, modally, Enter on the first row, on a copy of a vendor's
// folder, under the locales that write dates month first and numbers with a decimal comma.
TEST_F(OpenSecurity, ModalRunOnAFixtureFolder) {
    REQUIRE_FIXTURE("vendor-small");
    for (const char* name : {"en_US", "de_DE"}) {
        LocaleGuard locale(name);
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

        const auto sheets = openSheets();
        ASSERT_EQ(sheets.size(), 1) << name;
        EXPECT_EQ(sheets[0]->windowTitle(), "DataSheet of " + first.at(0).trimmed());
        const auto records = readBack(copy.path(), first.at(1));
        ASSERT_FALSE(records.empty());
        EXPECT_EQ(sheets[0]->rows()->rowCount(), static_cast<int>(records.size())) << name;
        EXPECT_EQ(first.at(3), DateToText(records.back().date));
        EXPECT_EQ(sheets[0]->lastDateEdit->text(), first.at(3));
        EXPECT_EQ(sheets[0]->rows()->cell(0, 4), Regional::priceText(records.front().close));
        sheets[0]->close();
    }
}

} // namespace
