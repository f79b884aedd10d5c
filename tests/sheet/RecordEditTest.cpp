// Insert, Change and Delete on a data sheet, through the record dialog, read back from disk.

#include "sheet/SheetTestKit.h"

#include "frame/CommonRoutines.h"
#include "frame/Regional.h"
#include "sheet/SheetRows.h"
#include "sheet/ui/frmChange.h"
#include "sheet/ui/frmView.h"
#include "support/Modal.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QDateEdit>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

using namespace sheettest;

namespace {

const std::vector<Rec> Records = {{20050804, 10, 12, 9, 11, 1000},
                                  {20050805, 11, 13, 10, 12, 2000},
                                  {20050808, 12, 14, 11, 13, 3000}};

class RecordEdit : public ::testing::Test {
protected:
    ScriptedPlatform platform;
    TempFolder temp;
    ProgressRecorder progress;
    SheetCleanup cleanup;
    std::unique_ptr<frmView> view;

    void SetUp() override {
        makeSecurity(temp.path(), "ABC", "Abc Ltd", Records);
        view = std::make_unique<frmView>();
        view->path = temp.path();
        view->Sec = "Abc Ltd";
        view->Symbol = "ABC";
        view->setWindowTitle("DataSheet of Abc Ltd");
        view->Form_Load();
        view->show();
    }

    // What the user does in the record dialog once it is up: the values typed, then a button.
    struct Typing {
        QDate date;                    // left alone when invalid
        QStringList values;            // open, high, low, close, volume; a null string leaves a box
        QString button = "Command1";   // "&Apply"
    };
    QStringList shownInDialog;   // the boxes as the dialog came up: date text, then the five values
    bool pickerEnabled = true;

    void whenDialogUp(const Typing& typing, std::function<void(frmChange*)> then = {}) {
        onNextModal([this, typing, then](QWidget* w) {
            auto dialog = qobject_cast<frmChange*>(w);
            ASSERT_NE(dialog, nullptr);
            EXPECT_EQ(dialog->windowTitle(), "Change Record");
            shownInDialog = {Regional::dateText(dialog->DTPicker1->date())};
            QLineEdit* boxes[] = {dialog->Text2, dialog->Text3, dialog->Text4, dialog->Text5, dialog->Text6};
            for (QLineEdit* box : boxes)
                shownInDialog << box->text();
            pickerEnabled = dialog->DTPicker1->isEnabled();
            if (typing.date.isValid())
                dialog->DTPicker1->setDate(typing.date);
            for (int i = 0; i < typing.values.size() && i < 5; ++i)
                if (!typing.values[i].isNull())
                    boxes[i]->setText(typing.values[i]);
            child<QPushButton>(dialog, typing.button)->click();
            if (then)
                then(dialog);
        });
    }

    QStringList cells(int r) const {
        QStringList out;
        for (int c = 0; c < SheetRows::ColumnCount; ++c)
            out << view->rows()->cell(r, c);
        return out;
    }
};

TEST_F(RecordEdit, InsertPutsTheRecordIntoTheStoreAndReloadsTheSheet) {
    whenDialogUp({QDate(2005, 8, 6), {"20.5", "21", "19.75", "20", "4500"}});
    progress.log->calls.clear();
    view->Command4->click();

    EXPECT_TRUE(platform.boxes.isEmpty()) << platform.boxTexts().join('|').toStdString();
    const auto stored = readBack(temp.path(), "ABC");
    ASSERT_EQ(stored.size(), 4u);
    EXPECT_EQ(stored[2], (Rec{20050806, 20.5, 21, 19.75, 20, 4500}));

    ASSERT_EQ(view->rows()->rowCount(), 4);
    EXPECT_EQ(cells(2), (QStringList{"06/08/2005", "20.50", "21.00", "19.75", "20.00", "4500"}));
    EXPECT_EQ(view->selectedRow(), 3);
    EXPECT_TRUE(progress.log->calls.contains("Show")) << "the load ran again with its progress window";
}

TEST_F(RecordEdit, InsertBeforeTheFirstDateMovesFirstDate) {
    whenDialogUp({QDate(2005, 8, 1), {"1", "2", "0.5", "1.5", "10"}});
    view->Command4->click();
    EXPECT_EQ(view->Text6->text(), "01/08/2005");
    EXPECT_EQ(view->rows()->cell(0, 0), "01/08/2005");
    EXPECT_EQ(readBack(temp.path(), "ABC").front().date, 20050801);
}

TEST_F(RecordEdit, InsertOfADateThatExistsChangesNothing) {
    whenDialogUp({QDate(2005, 8, 5), {"99", "99", "99", "99", "99"}});
    view->Command4->click();

    ASSERT_EQ(platform.boxes.size(), 1);
    EXPECT_EQ(platform.boxes[0].text, "Date Already Exist.");
    EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(platform.boxes[0].title, "Marrowfin");
    EXPECT_EQ(readBack(temp.path(), "ABC"), Records);
    EXPECT_EQ(cells(1), (QStringList{"05/08/2005", "11.00", "13.00", "10.00", "12.00", "2000"}));
}

TEST_F(RecordEdit, InsertStartsWithTodayAndCloseLeavesStoreAndSheet) {
    platform.todayDate = QDate(2026, 3, 9);
    for (const char* button : {"Command4", "Command6"}) {
        whenDialogUp({QDate(2005, 8, 9), {"1", "1", "1", "1", "1"}, "Command3"});
        child<QPushButton>(view.get(), button)->click();
        if (QLatin1StringView(button) == "Command4") {
            EXPECT_EQ(shownInDialog, (QStringList{"09/03/2026", "", "", "", "", ""}));
            EXPECT_TRUE(pickerEnabled);
        }
    }
    EXPECT_EQ(readBack(temp.path(), "ABC"), Records);
    EXPECT_EQ(view->rows()->rowCount(), 3);
    EXPECT_EQ(cells(2).at(4), "13.00");
    EXPECT_TRUE(platform.boxes.isEmpty());
}

// "&Apply" refuses a blank or a word and keeps the dialog up with what was typed.
TEST_F(RecordEdit, ApplyRefusesIncompleteOrNonNumericFields) {
    struct Case { QStringList typed; const char* message; int box; } cases[] = {
        {{"1", "2", "   ", "4", "5"}, "Please Complete All Fields.", -1},
        {{"1", "2", "3", "", "5"}, "Please Complete All Fields.", -1},
        {{"1", "two", "3", "4", "5"}, "Please Enter Numbers Only.", 1},
        {{"1", "2", "3", "4", "5 shares"}, "Please Enter Numbers Only.", 4},
    };
    for (const Case& c : cases) {
        platform.boxes.clear();
        QStringList after;
        bool stillUp = false;
        whenDialogUp({QDate(2005, 8, 9), c.typed}, [&](frmChange* dialog) {
            stillUp = dialog->isVisible();
            for (QLineEdit* box : {dialog->Text2, dialog->Text3, dialog->Text4, dialog->Text5, dialog->Text6})
                after << box->text();
            dialog->Command3->click();
        });
        view->Command4->click();
        EXPECT_TRUE(stillUp) << c.message;
        EXPECT_EQ(after, c.typed);
        ASSERT_EQ(platform.boxes.size(), 1);
        EXPECT_EQ(platform.boxes[0].text, c.message);
        EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Information);
        EXPECT_EQ(platform.boxes[0].title, "Marrowfin");
    }
    EXPECT_EQ(readBack(temp.path(), "ABC"), Records);
}

TEST_F(RecordEdit, ChangeShowsTheRowAndWritesPlainNumbersUntilTheNextLoad) {
    view->ListView1->selectRow(1);
    whenDialogUp({{}, {"11", "13", "10", "99.5", "1500"}});
    view->Command6->click();

    EXPECT_EQ(shownInDialog, (QStringList{"05/08/2005", "11.00", "13.00", "10.00", "12.00", "2000"}));
    EXPECT_FALSE(pickerEnabled) << "a change can't move the record to another date";
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(cells(1), (QStringList{"05/08/2005", "11", "13", "10", "99.5", "1500"}));
    const auto stored = readBack(temp.path(), "ABC");
    ASSERT_EQ(stored.size(), 3u);
    EXPECT_EQ(stored[1], (Rec{20050805, 11, 13, 10, 99.5, 1500}));

    view->Form_Load();
    EXPECT_EQ(cells(1), (QStringList{"05/08/2005", "11.00", "13.00", "10.00", "99.50", "1500"}));
}

TEST_F(RecordEdit, DoubleClickOnARowChangesThatRow) {
    const QRect cell = view->ListView1->visualRect(view->rows()->index(0, 2));
    ASSERT_FALSE(cell.isEmpty());
    whenDialogUp({{}, {"10", "12", "9", "11", "777"}});
    QTest::mouseClick(view->ListView1->viewport(), Qt::LeftButton, {}, cell.center());
    QTest::mouseDClick(view->ListView1->viewport(), Qt::LeftButton, {}, cell.center());

    EXPECT_EQ(shownInDialog.at(0), "04/08/2005");
    EXPECT_EQ(cells(0).at(5), "777");
    EXPECT_EQ(readBack(temp.path(), "ABC").front().volume, 777);
}

TEST_F(RecordEdit, ChangeWithNoSelectedRowDoesNothing) {
    view->ListView1->clearSelection();
    view->Command6->click();   // no dialog comes up: nothing waits for one
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(readBack(temp.path(), "ABC"), Records);
}

TEST_F(RecordEdit, DeleteAskedNoLeavesStoreAndList) {
    platform.answerNextBox(MsgAnswer::No);
    view->Command5->click();
    ASSERT_EQ(platform.boxes.size(), 1);
    EXPECT_EQ(platform.boxes[0].text, "Are you sure to delete date : 08/08/2005");
    EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Question);
    EXPECT_EQ(platform.boxes[0].buttons, MsgButtons::YesNo);
    EXPECT_EQ(platform.boxes[0].title, "Marrowfin");
    EXPECT_EQ(view->rows()->rowCount(), 3);
    EXPECT_EQ(readBack(temp.path(), "ABC"), Records);
}

TEST_F(RecordEdit, DeleteOfTheNewestRecordKeepsLastDateUntilTheNextLoad) {
    platform.answerNextBox(MsgAnswer::Yes);
    view->Command5->click();
    EXPECT_EQ(platform.boxTexts(),
              (QStringList{"Are you sure to delete date : 08/08/2005", "Record Deleted."}));
    EXPECT_EQ(platform.boxes[1].icon, MsgIcon::Information);
    EXPECT_EQ(view->rows()->rowCount(), 2);
    EXPECT_EQ(view->Text4->text(), "08/08/2005");
    EXPECT_EQ(readBack(temp.path(), "ABC"), (std::vector<Rec>{Records[0], Records[1]}));

    view->Form_Load();
    EXPECT_EQ(view->Text4->text(), "05/08/2005");
}

TEST_F(RecordEdit, DeleteWithNoSelectedRowAsksNothing) {
    view->ListView1->clearSelection();
    view->Command5->click();
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(view->rows()->rowCount(), 3);
}

TEST_F(RecordEdit, WritesThatFailShowTheStoresDescriptionOrEndSilently) {
    // The folder goes away after the load: the store can't be opened for writing.
    const QString moved = temp.path() + "-gone";
    ASSERT_TRUE(QDir().rename(temp.path(), moved));

    whenDialogUp({QDate(2005, 8, 9), {"1", "1", "1", "1", "1"}});
    view->Command4->click();
    ASSERT_EQ(platform.boxes.size(), 1);
    EXPECT_FALSE(platform.boxes[0].text.isEmpty());
    EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Warning);
    EXPECT_EQ(platform.boxes[0].title, "Brindlemark v6");
    EXPECT_EQ(view->rows()->rowCount(), 3) << "the list isn't reloaded";

    platform.boxes.clear();
    view->ListView1->selectRow(0);
    whenDialogUp({{}, {"5", "5", "5", "5", "5"}});
    view->Command6->click();
    ASSERT_EQ(platform.boxes.size(), 1);
    EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Warning);
    EXPECT_EQ(cells(0), (QStringList{"04/08/2005", "10.00", "12.00", "9.00", "11.00", "1000"}));

    platform.boxes.clear();
    platform.answerNextBox(MsgAnswer::Yes);
    view->Command5->click();
    EXPECT_EQ(platform.boxTexts(), QStringList{"Are you sure to delete date : 04/08/2005"});
    EXPECT_EQ(view->rows()->rowCount(), 3);

    ASSERT_TRUE(QDir().rename(moved, temp.path()));
    EXPECT_EQ(readBack(temp.path(), "ABC"), Records);
}

// Dates typed and shown month first with two-digit years, and numbers with a decimal comma.
TEST(RecordEditLocales, MonthFirstAndDecimalComma) {
    ScriptedPlatform platform;
    ProgressRecorder progress;
    SheetCleanup cleanup;
    struct Case { const char* locale; const char* dateText; QStringList typed; QStringList shown; } cases[] = {
        {"en_US", "8/5/05", {"11.25", "13", "10", "12.5", "2500"}, {"11.25", "13", "10", "12.5", "2500"}},
        {"de_DE", "05.08.05", {"11,25", "13", "10", "12,5", "2500"}, {"11,25", "13", "10", "12,5", "2500"}},
    };
    for (const Case& c : cases) {
        LocaleGuard locale(c.locale);
        TempFolder temp;
        makeSecurity(temp.path(), "ABC", "Abc Ltd", Records);
        frmView view;
        view.path = temp.path();
        view.Symbol = "ABC";
        view.Form_Load();
        view.show();

        // Change the middle record, typed in the locale's form.
        view.ListView1->selectRow(1);
        QString dateShown;
        onNextModal([&](QWidget* w) {
            auto dialog = qobject_cast<frmChange*>(w);
            ASSERT_NE(dialog, nullptr);
            dateShown = Regional::dateText(dialog->DTPicker1->date());
            QLineEdit* boxes[] = {dialog->Text2, dialog->Text3, dialog->Text4, dialog->Text5, dialog->Text6};
            for (int i = 0; i < 5; ++i)
                boxes[i]->setText(c.typed[i]);
            dialog->Command1->click();
        });
        view.Command6->click();
        EXPECT_EQ(dateShown, c.dateText);
        QStringList shown;
        for (int col = 1; col < 6; ++col)
            shown << view.rows()->cell(1, col);
        EXPECT_EQ(shown, c.shown) << c.locale;
        auto stored = readBack(temp.path(), "ABC");
        ASSERT_EQ(stored.size(), 3u);
        EXPECT_EQ(stored[1], (Rec{20050805, 11.25, 13, 10, 12.5, 2500})) << c.locale;

        // Delete the first record by the date text the sheet shows.
        view.ListView1->selectRow(0);
        platform.answerNextBox(MsgAnswer::Yes);
        view.Command5->click();
        EXPECT_EQ(platform.boxes.last().text, "Record Deleted.") << c.locale;
        stored = readBack(temp.path(), "ABC");
        ASSERT_EQ(stored.size(), 2u) << c.locale;
        EXPECT_EQ(stored[0].date, 20050805);
        platform.boxes.clear();
    }
}

} // namespace
