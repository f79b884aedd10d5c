// Open Security: listing a folder, browsing and typing another, picking a security and opening it
// as a data sheet.

#include "sheet/SheetTestKit.h"

#include "catalogue/ui/frmOpen.h"
#include "frame/CommonRoutines.h"
#include "frame/Module1.h"
#include "frame/ui/ChildWindows.h"
#include "sheet/SheetRows.h"
#include "sheet/ui/frmView.h"
#include "support/Modal.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QGroupBox>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include <gtest/gtest.h>

using namespace sheettest;

namespace {

class OpenSecurity : public ::testing::Test {
protected:
    ScriptedPlatform platform;
    TempFolder first;    // three securities
    TempFolder second;   // one security
    TempFolder bare;     // no store
    ProgressRecorder progress;
    SheetCleanup cleanup;

    void SetUp() override {
        makeSecurity(first.path(), "AAA", "Alpha Mining", series(3));
        makeSecurity(first.path(), "BBB", "Beta Foods", series(5));
        makeSecurity(first.path(), "CCC", "Gamma Rail", {});
        makeSecurity(second.path(), "ZZZ", "Zeta Bank", series(2, QDate(2010, 3, 1)));
        Module1::LastFolder = first.path();
    }

    // The dialog as the frame shows it, but without blocking: Form_Load runs as it comes up.
    std::unique_ptr<frmOpen> shown() {
        auto dialog = std::make_unique<frmOpen>();
        dialog->tChart = false;
        dialog->show();
        QApplication::processEvents();
        return dialog;
    }

    static QList<QStringList> rows(const frmOpen& dialog) {
        QList<QStringList> out;
        for (int i = 0; i < dialog.ListView1->topLevelItemCount(); ++i) {
            const QTreeWidgetItem* item = dialog.ListView1->topLevelItem(i);
            out.append({item->text(0), item->text(1), item->text(2), item->text(3)});
        }
        return out;
    }

    static QStringList names(const frmOpen& dialog) {
        QStringList out;
        for (const QStringList& row : rows(dialog))
            out << row.at(0);
        return out;
    }

    static void clickRow(frmOpen& dialog, int row) {
        QTreeWidgetItem* item = dialog.ListView1->topLevelItem(row);
        ASSERT_NE(item, nullptr);
        const QPoint at = dialog.ListView1->visualItemRect(item).center();
        QTest::mouseClick(dialog.ListView1->viewport(), Qt::LeftButton, {}, at);
    }
};

TEST_F(OpenSecurity, LoadListsTheLastFolderAndPicksTheFirstRow) {
    auto dialog = shown();
    EXPECT_EQ(dialog->windowTitle(), "Open Security");
    EXPECT_EQ(dialog->Frame1->title(), "Available Securities");
    EXPECT_EQ(dialog->Command1->text(), "&Open");
    EXPECT_EQ(dialog->Command2->text(), "&Cancel");
    const QTreeWidgetItem* header = dialog->ListView1->headerItem();
    EXPECT_EQ((QStringList{header->text(0), header->text(1), header->text(2), header->text(3)}),
              (QStringList{"Security Name", "Symbol", "File Name", "Last Date"}));

    EXPECT_EQ(dialog->Text2->text(), first.path());
    const auto listed = rows(*dialog);
    ASSERT_EQ(listed.size(), 3);
    EXPECT_EQ(names(*dialog), (QStringList{"Alpha Mining", "Beta Foods", "Gamma Rail"}));
    EXPECT_EQ(listed[1].at(1), "BBB");
    EXPECT_FALSE(listed[1].at(2).isEmpty()) << "file name";
    EXPECT_EQ(listed[1].at(3), DateToText(series(5).back().date));
    EXPECT_EQ(dialog->Text1->text(), "Alpha Mining");
    EXPECT_TRUE(platform.boxes.isEmpty());
}

TEST_F(OpenSecurity, FirstRunListsTheProgramsOwnFolderAndOpenWantsAPick) {
    Module1::LastFolder = "   ";
    auto dialog = shown();
    EXPECT_EQ(dialog->Text2->text(), platform.programFolder());
    EXPECT_EQ(dialog->ListView1->topLevelItemCount(), 0);
    EXPECT_TRUE(platform.boxes.isEmpty()) << "a folder without a store is passed over silently at load";

    dialog->Command1->click();
    ASSERT_EQ(platform.boxes.size(), 1);
    EXPECT_EQ(platform.boxes[0].text, "No Security Selected.");
    EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(platform.boxes[0].title, "Brindlemark v6");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_TRUE(openSheets().isEmpty());
}

TEST_F(OpenSecurity, ClickAndOpenGivesAFilledSheet) {
    auto dialog = shown();
    clickRow(*dialog, 1);
    EXPECT_EQ(dialog->Text1->text(), "Beta Foods");
    dialog->Command1->click();

    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    const auto sheets = openSheets();
    ASSERT_EQ(sheets.size(), 1);
    frmView* sheet = sheets[0];
    EXPECT_EQ(sheet->windowTitle(), "DataSheet of Beta Foods");
    EXPECT_EQ(sheet->path, first.path());
    EXPECT_EQ(sheet->Sec, "Beta Foods");
    EXPECT_EQ(sheet->Symbol, "BBB");
    EXPECT_EQ(sheet->rows()->rowCount(), 5);
    EXPECT_EQ(sheet->selectedRow(), 4);
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(progress.log->made, 1);
    EXPECT_EQ(progress.log->alive, 0);
}

TEST_F(OpenSecurity, EnterInTheListOpensTheSelectedRow) {
    auto dialog = shown();
    clickRow(*dialog, 2);
    ASSERT_EQ(dialog->Text1->text(), "Gamma Rail");
    dialog->ListView1->setFocus();
    dialog->ListView1->setCurrentItem(dialog->ListView1->topLevelItem(0));
    ASSERT_EQ(dialog->Text1->text(), "Gamma Rail");
    // A typed letter picks the row selected before the letter moves the selection to "Beta Foods".
    QTest::keyClick(dialog->ListView1, Qt::Key_B);
    EXPECT_EQ(dialog->Text1->text(), "Alpha Mining");
    EXPECT_EQ(dialog->ListView1->currentItem()->text(0), "Beta Foods");
    QTest::keyClick(dialog->ListView1, Qt::Key_Return);

    const auto sheets = openSheets();
    ASSERT_EQ(sheets.size(), 1);
    EXPECT_EQ(sheets[0]->windowTitle(), "DataSheet of Beta Foods");
    EXPECT_EQ(sheets[0]->rows()->rowCount(), 5);
}

TEST_F(OpenSecurity, DoubleClickOpensThatRow) {
    auto dialog = shown();
    QTreeWidgetItem* item = dialog->ListView1->topLevelItem(0);
    const QPoint at = dialog->ListView1->visualItemRect(item).center();
    QTest::mouseClick(dialog->ListView1->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(dialog->ListView1->viewport(), Qt::LeftButton, {}, at);

    const auto sheets = openSheets();
    ASSERT_EQ(sheets.size(), 1);
    EXPECT_EQ(sheets[0]->windowTitle(), "DataSheet of Alpha Mining");
    EXPECT_EQ(sheets[0]->rows()->rowCount(), 3);
}

TEST_F(OpenSecurity, BrowseListsTheChosenFolderAndRemembersIt) {
    Module1::LastFolder.clear();
    auto dialog = shown();
    platform.chooseNext(second.path());
    dialog->Command4->click();

    EXPECT_EQ(platform.chooserTitles, QStringList{"Browse For Folder"});
    EXPECT_EQ(dialog->Text2->text(), second.path());
    EXPECT_EQ(names(*dialog), QStringList{"Zeta Bank"});
    EXPECT_EQ(Module1::LastFolder, second.path());
    EXPECT_EQ(dialog->Text1->text(), "") << "Browse doesn't pick";
}

TEST_F(OpenSecurity, BrowseCancelledRelistsTheFolderAndWritesItToLastFolder) {
    Module1::LastFolder.clear();
    auto dialog = shown();
    dialog->Text2->setText(second.path());   // typed, not yet listed
    dialog->Command4->click();               // the chooser is cancelled

    EXPECT_EQ(dialog->Text2->text(), second.path());
    EXPECT_EQ(names(*dialog), QStringList{"Zeta Bank"});
    EXPECT_EQ(Module1::LastFolder, second.path());
    EXPECT_TRUE(platform.boxes.isEmpty());
}

TEST_F(OpenSecurity, BrowseToAFolderWithoutAStoreComplainsAndGoesBack) {
    auto dialog = shown();
    platform.chooseNext(bare.path());
    dialog->Command4->click();

    ASSERT_EQ(platform.boxes.size(), 1);
    EXPECT_FALSE(platform.boxes[0].text.isEmpty()) << "the store's description";
    EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(platform.boxes[0].title, "Marrowfin");
    EXPECT_EQ(dialog->Text2->text(), first.path());
    EXPECT_EQ(Module1::LastFolder, first.path());
    EXPECT_EQ(dialog->ListView1->topLevelItemCount(), 3) << "the rows stay as they were";
    EXPECT_TRUE(dialog->Text2->hasFocus() || QApplication::focusWidget() == dialog->Text2 ||
                dialog->focusWidget() == dialog->Text2);
}

TEST_F(OpenSecurity, EnterInTheFolderBoxRelistsWithoutPickingOrRemembering) {
    auto dialog = shown();
    dialog->Text2->setText("  " + second.path() + " ");
    QTest::keyClick(dialog->Text2, Qt::Key_Return);

    EXPECT_EQ(names(*dialog), QStringList{"Zeta Bank"});
    EXPECT_EQ(dialog->Text1->text(), "Alpha Mining") << "the old pick stays";
    EXPECT_EQ(Module1::LastFolder, first.path());
    EXPECT_TRUE(dialog->isVisible()) << "Enter belongs to the folder box, not to a button";
    EXPECT_TRUE(openSheets().isEmpty());

    // Other keys just type.
    QTest::keyClick(dialog->Text2, Qt::Key_X);
    EXPECT_EQ(names(*dialog), QStringList{"Zeta Bank"});
}

TEST_F(OpenSecurity, EnterOnAFolderWithoutAStoreEmptiesTheBox) {
    auto dialog = shown();
    dialog->Text2->setText(bare.path());
    QTest::keyClick(dialog->Text2, Qt::Key_Return);

    ASSERT_EQ(platform.boxes.size(), 1);
    EXPECT_EQ(platform.boxes[0].title, "Marrowfin");
    EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(dialog->Text2->text(), "");
    EXPECT_EQ(dialog->ListView1->topLevelItemCount(), 3);
    EXPECT_EQ(Module1::LastFolder, first.path());
}

TEST_F(OpenSecurity, OpenWithANameTheFolderDoesNotHoldStaysInTheDialog) {
    auto dialog = shown();
    dialog->Text2->setText(second.path());
    QTest::keyClick(dialog->Text2, Qt::Key_Return);
    ASSERT_EQ(dialog->Text1->text(), "Alpha Mining");
    dialog->Command1->click();

    ASSERT_EQ(platform.boxes.size(), 1);
    EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(platform.boxes[0].title, "Marrowfin");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_TRUE(openSheets().isEmpty());

    // The dialog goes on working: a pick in this folder opens.
    clickRow(*dialog, 0);
    dialog->Command1->click();
    ASSERT_EQ(openSheets().size(), 1);
    EXPECT_EQ(openSheets()[0]->windowTitle(), "DataSheet of Zeta Bank");
}

TEST_F(OpenSecurity, TwoOpeningsOfOneSecurityGiveTwoSheets) {
    for (int i = 0; i < 2; ++i) {
        auto dialog = shown();
        clickRow(*dialog, 1);
        dialog->Command1->click();
    }
    const auto sheets = openSheets();
    ASSERT_EQ(sheets.size(), 2);
    EXPECT_NE(sheets[0], sheets[1]);
    for (frmView* sheet : sheets) {
        EXPECT_EQ(sheet->windowTitle(), "DataSheet of Beta Foods");
        EXPECT_EQ(sheet->rows()->rowCount(), 5);
    }
}

TEST_F(OpenSecurity, SheetsStandSideBySideInTheMainWindowAndCloseAlone) {
    QMdiArea area;
    SetChildWindowArea(&area);
    area.show();
    for (int row : {0, 1, 0}) {
        auto dialog = shown();
        clickRow(*dialog, row);
        dialog->Command1->click();
    }
    QStringList titles;
    for (QMdiSubWindow* sub : area.subWindowList())
        titles << sub->windowTitle();
    EXPECT_EQ(titles, (QStringList{"DataSheet of Alpha Mining", "DataSheet of Beta Foods",
                                   "DataSheet of Alpha Mining"}));

    auto sheet = qobject_cast<frmView*>(area.subWindowList().at(1)->widget());
    ASSERT_NE(sheet, nullptr);
    sheet->Command1->click();   // "Close" takes its sub-window away, no question asked
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(area.subWindowList().size(), 2);
    EXPECT_TRUE(platform.boxes.isEmpty());
    SetChildWindowArea(nullptr);
}

TEST_F(OpenSecurity, CancelOpensNothing) {
    auto dialog = shown();
    dialog->Command2->click();
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_TRUE(openSheets().isEmpty());
}

TEST_F(OpenSecurity, ChartOpeningOpensNoSheet) {
    auto dialog = std::make_unique<frmOpen>();
    dialog->tChart = true;
    dialog->show();
    clickRow(*dialog, 0);
    dialog->Command1->click();
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_TRUE(openSheets().isEmpty());
}

TEST_F(OpenSecurity, CancelDuringTheLoadStillShowsTheSheetWithTheRowsRead) {
    progress.log->cancelAfterSteps = 2;
    auto dialog = shown();
    clickRow(*dialog, 1);
    dialog->Command1->click();
    const auto sheets = openSheets();
    ASSERT_EQ(sheets.size(), 1);
    EXPECT_EQ(sheets[0]->rows()->rowCount(), 2);
    EXPECT_EQ(sheets[0]->selectedRow(), -1);
    EXPECT_TRUE(platform.boxes.isEmpty());
}

// The whole way as the frame runs it: a modal dialog, a pick, Open, under a month-first locale.
TEST_F(OpenSecurity, ModalRunUnderMonthFirstDates) {
    LocaleGuard locale("en_US");
    frmOpen dialog;
    dialog.tChart = false;
    QStringList lastDates;
    onNextModal([&](QWidget* w) {
        auto open = qobject_cast<frmOpen*>(w);
        ASSERT_NE(open, nullptr);
        for (const QStringList& row : rows(*open))
            lastDates << row.at(3);
        clickRow(*open, 1);
        open->Command1->click();
    });
    EXPECT_EQ(dialog.exec(), QDialog::Accepted);

    EXPECT_EQ(lastDates.at(1), DateToText(series(5).back().date));
    EXPECT_TRUE(lastDates.at(1).count('/') == 2 && lastDates.at(1).size() <= 8) << lastDates.at(1).toStdString();
    const auto sheets = openSheets();
    ASSERT_EQ(sheets.size(), 1);
    EXPECT_EQ(sheets[0]->rows()->cell(0, 0), "1/2/04");
    EXPECT_EQ(sheets[0]->Text6->text(), "1/2/04");
}

} // namespace
