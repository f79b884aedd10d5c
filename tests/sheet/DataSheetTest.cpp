// The data sheet: what a load puts into the header boxes and the rows under several locales, what
// the user sees when a load stops early or finds nothing, and Insert, Change and Delete through
// the record dialog, read back from disk.

#include "sheet/SheetTestKit.h"

#include "frame/CommonRoutines.h"
#include "sheet/ui/DateBox.h"
#include "sheet/ui/RecordDialog.h"
#include "store/SecurityWriter.h"
#include "support/Modal.h"

#include <QAction>
#include <QCalendarWidget>
#include <QDir>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <algorithm>

using namespace sheettest;

namespace {

using DataSheet = SheetFixture;

// Blanks round folder and symbol open the right security and stay in the boxes. The records are
// listed as they are, whatever the periodicity code; number columns are headed right-aligned.
TEST_F(DataSheet, ShowsHeaderAndEveryRecordInTheLocalesForms) {
    const struct { const char* locale; QStringList first, second; const char* lastDate; qint32 code; const char* periodicity; } cases[] = {
        {"en_GB", {"04/08/2005", "1234.50", "1240.00", "1230.25", "1240.00", "1500"}, {"05/08/2005", "0.00", "0.13", "0.00", "10.00", "0"}, "08/08/2005", 1, "Daily"},
        {"en_US", {"8/4/2005", "1234.50", "1240.00", "1230.25", "1240.00", "1500"}, {"8/5/2005", "0.00", "0.13", "0.00", "10.00", "0"}, "8/8/2005", 2, "Weekly"},
        {"de_DE", {"04.08.2005", "1234,50", "1240,00", "1230,25", "1240,00", "1500"}, {"05.08.2005", "0,00", "0,13", "0,00", "10,00", "0"}, "08.08.2005", 3, "Monthly"},
        {"en_GB", {"04/08/2005", "1234.50", "1240.00", "1230.25", "1240.00", "1500"}, {"05/08/2005", "0.00", "0.13", "0.00", "10.00", "0"}, "08/08/2005", 4, "4"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.locale) + " " + c.periodicity);
        LocaleGuard locale(c.locale);
        TempFolder folder;
        progress.calls.clear();
        makeSecurity(folder.path(), "BHP", "BHP Billiton",   // values a 4-byte float of the store holds exactly
                     {{20050804, 1234.5, 1240, 1230.25, 1239.999, 1500}, {20050805, 0, 0.125, -0.00390625, 10, 0},
                      {20050808, 99.125, 100, 98, 99.5, 9876543}}, c.code);
        auto view = loadedSheet("  " + folder.path() + " ", " BHP  ", " BHP Billiton");
        QTest::keyClicks(view->nameEdit, "x");   // the header boxes take no typing

        EXPECT_EQ((QStringList{view->folderEdit->text(), view->nameEdit->text(), view->symbolEdit->text(), view->firstDateEdit->text(),
                               view->lastDateEdit->text(), view->periodicityEdit->text()}),
                  (QStringList{"  " + folder.path() + " ", " BHP Billiton", " BHP  ", c.first.at(0), c.lastDate, c.periodicity}));
        ASSERT_EQ(view->rows()->rowCount(), 3);
        EXPECT_EQ(cells(*view, 0), c.first);
        EXPECT_EQ(cells(*view, 1), c.second);
        EXPECT_EQ(cells(*view, 2).at(5), "9876543");
        EXPECT_EQ(view->selectedRow(), 2);
        EXPECT_TRUE(platform.boxes.isEmpty()) << platform.boxTexts().join('|').toStdString();
        QStringList headings;
        for (int col = 0; col < SheetRows::ColumnCount; ++col) {
            const QVariant align = view->rows()->headerData(col, Qt::Horizontal, Qt::TextAlignmentRole);
            const QModelIndex cell = view->rows()->index(0, col);   // the cells stand as their headings, and say nothing else
            const bool right = view->rows()->data(cell, Qt::TextAlignmentRole).isValid() && !view->rows()->data(cell, Qt::ToolTipRole).isValid();
            headings << view->rows()->headerData(col, Qt::Horizontal).toString() + (align.isValid() ? ">" : "") + (right ? ">" : "");
        }
        EXPECT_EQ(headings, (QStringList{"Date", "Open>>", "High>>", "Low>>", "Close>>", "Volume>>"}));
        EXPECT_EQ(progress.calls, LoadOfThree);   // no Hide: the window goes with its object
    }
}

TEST_F(DataSheet, LongSeriesEndsWithTheNewestRowSelectedAndInView) {
    makeSecurity(temp.path(), "LONG", "Long Series", series(400));
    auto view = loadedSheet(temp.path(), "LONG", "Long Series");
    EXPECT_EQ(view->selectedRow(), 399);
    const QRect last = view->recordsView->visualRect(view->rows()->index(399, 0));
    EXPECT_TRUE(view->recordsView->viewport()->rect().contains(last)) << "the newest row is out of view";
    EXPECT_TRUE(view->recordsView->verticalHeader()->isHidden()) << "no row numbers: the date leads each row";
    // Tab and Shift+Tab leave the list for the buttons; the row the buttons work on stays.
    const QModelIndex current = view->recordsView->currentIndex();
    for (auto modifier : {Qt::NoModifier, Qt::ShiftModifier}) {
        QTest::keyClick(view->recordsView, Qt::Key_Tab, modifier);
        EXPECT_EQ(view->recordsView->currentIndex(), current);
    }
    EXPECT_EQ(view->lastDateEdit->text(), DateToText(series(400).back().date));
    expectControlsLaidOut(view.get());
}

// A security without records shows its header; one that can't be read shows nothing. The window stays.
TEST_F(DataSheet, NothingToListGivesNoDataFound) {
    SecurityWriter writer;   // as Create New Symbols leaves it: the seed record added and deleted again
    writer.OpenFolder(temp.path());
    writer.CreateSecurity("NEW", "NEW", 1);
    writer.AddQuote(20240102, 0, 1, 1, 1, 1, 0, 0.0);
    writer.DeleteQuote("20240102");
    writer.CloseSecurity();
    writer.CloseFolder();
    const struct { QString folder, symbol, firstDate, periodicity; } cases[] = {
        {temp.path(), "NEW", "02/01/2024", "Daily"}, {temp.path(), "NOPE", "", ""}, {temp.sub("bare"), "NEW", "", ""}};
    for (const auto& c : cases) {
        platform.boxes.clear();
        auto view = loadedSheet(c.folder, c.symbol, "NEW");
        EXPECT_EQ(view->rows()->rowCount(), 0);
        EXPECT_EQ((QStringList{view->folderEdit->text(), view->firstDateEdit->text(), view->lastDateEdit->text(), view->periodicityEdit->text()}),
                  (QStringList{c.folder, c.firstDate, c.firstDate, c.periodicity})) << "Last Date shows the first date";
        ASSERT_EQ(platform.boxes.size(), 1);
        expectBox(0, "No Data Found.", MsgIcon::Warning);
        EXPECT_TRUE(view->isVisible());
    }
}

TEST_F(DataSheet, CancelAfterTheFirstRecordLeavesOneRowAndNoSelectionAndStaysUsable) {
    makeSecurity(temp.path(), "ABC", "ABC", series(50));
    progress.cancelAfterSteps = 1;
    auto view = loadedSheet(temp.path(), "ABC", "ABC");
    EXPECT_EQ((std::vector<int>{view->rows()->rowCount(), view->selectedRow()}), (std::vector<int>{1, -1}));
    EXPECT_EQ(view->lastDateEdit->text(), view->firstDateEdit->text()) << "Last Date still shows the first date";
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(progress.calls.mid(progress.calls.size() - 3), (QStringList{"StepIt", "Hide", "released"}));

    view->recordsView->selectRow(0);   // the one row can still be deleted
    platform.answerNextBox(MsgAnswer::Yes);
    view->deleteButton->click();
    EXPECT_EQ(view->rows()->rowCount(), 0);
    EXPECT_EQ(readBars(temp.path(), "ABC").size(), 49u);
}

// A day picked from the calendar with Enter or a click goes into the date box, and the keyboard
// comes back to it.
TEST_F(DataSheet, ACalendarPickFillsTheDateBoxAndGivesItTheKeyboard) {
    QWidget window;
    auto* box = new DateBox(&window);
    auto* other = new QLineEdit(&window);
    other->move(0, 40);
    window.show();
    QApplication::setActiveWindow(&window);
    for (const bool clicked : {false, true}) {
        other->setFocus();
        box->setText("15/03/2025");
        box->calendarAction->trigger();
        auto* calendar = box->findChild<QCalendarWidget*>("calendar");
        ASSERT_TRUE(calendar && calendar->isVisible());
        EXPECT_EQ(calendar->selectedDate(), QDate(2025, 3, 15)) << "it opens on the date in the box";
        calendar->setSelectedDate(QDate(2026, 11, 20));
        if (clicked)
            emit calendar->clicked(QDate(2026, 11, 21));
        else
            QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : calendar, Qt::Key_Return);
        EXPECT_FALSE(calendar->isVisible());
        EXPECT_EQ(box->text(), clicked ? "21/11/2026" : "20/11/2026");
        EXPECT_EQ(QApplication::focusWidget(), box);
    }
}

// ---- Record editing ------------------------------------------------------------------------

const std::vector<Bar> Records = {{20050804, 10, 12, 9, 11, 1000}, {20050805, 11, 13, 10, 12, 2000}, {20050808, 12, 14, 11, 13, 3000}};

class RecordEdit : public SheetFixture {
protected:
    std::unique_ptr<DataSheetWindow> view;
    void SetUp() override { view = sheetOf(temp.path()); }
    static std::unique_ptr<DataSheetWindow> sheetOf(const QString& folder, const std::vector<Bar>& records = Records) {
        makeSecurity(folder, "ABC", "Abc Ltd", records);
        return loadedSheet(folder, "ABC", "Abc Ltd");
    }

    // When the record dialog comes up: note what it `shown` (date, five boxes); type the date key by key
    // and leave it with Tab (noting where Tab went and the date then), type the values (a null string
    // leaves a box), press the button; note whether it stayed up and its boxes then, and close it.
    QStringList shown, after;
    bool pickerEnabled = true, stillUp = false;
    QString tabbedTo, dateLeftAs, title;
    void whenDialogUp(const QString& typedDate, const QStringList& values, const char* button = "applyButton") {
        onNextModal([=, this](QWidget* w) {
            auto dialog = qobject_cast<RecordDialog*>(w);
            ASSERT_NE(dialog, nullptr);
            QLineEdit* boxes[] = {dialog->dateEdit, dialog->openEdit, dialog->highEdit, dialog->lowEdit, dialog->closeEdit, dialog->volumeEdit};
            const auto texts = [&] { QStringList t; for (QLineEdit* b : boxes) t << b->text(); return t; };
            shown = texts();
            title = dialog->windowTitle();
            expectControlsLaidOut(dialog);
            pickerEnabled = dialog->dateEdit->isEnabled();
            QApplication::setActiveWindow(dialog);   // the dialog has the keyboard, as on screen
            const QStringList typed = QStringList{typedDate} + values;
            for (int i = 0; i < typed.size(); ++i) {
                if (typed[i].isNull())
                    continue;
                boxes[i]->setFocus();
                QTest::keyClick(boxes[i], Qt::Key_A, Qt::ControlModifier);
                QTest::keyClick(boxes[i], Qt::Key_Delete);
                QTest::keyClicks(boxes[i], typed[i]);
                if (i == 0) {
                    QTest::keyClick(boxes[0], Qt::Key_Tab);
                    tabbedTo = dialog->focusWidget() ? dialog->focusWidget()->objectName() : QString();
                    dateLeftAs = boxes[0]->text();
                }
            }
            child<QPushButton>(dialog, button)->click();
            stillUp = dialog->isVisible();
            after = texts().mid(1);
            if (stillUp)
                dialog->closeButton->click();
        });
    }
};

TEST_F(RecordEdit, InsertPutsANewDateIntoTheStoreAndReloadsTheSheet) {
    platform.todayDate = QDate(2026, 3, 9);
    whenDialogUp("06/08/2005", {"20.5", "21", "19.75", "20", "4500"});
    progress.calls.clear();
    view->insertButton->click();

    EXPECT_EQ(shown, (QStringList{"09/03/2026", "", "", "", "", ""})) << "today's date, empty boxes";
    EXPECT_EQ(title, "Change Record") << "Insert too is titled so";
    EXPECT_TRUE(pickerEnabled);
    EXPECT_TRUE(platform.boxes.isEmpty()) << platform.boxTexts().join('|').toStdString();
    EXPECT_EQ(readBars(temp.path(), "ABC"), (std::vector<Bar>{Records[0], Records[1], {20050806, 20.5, 21, 19.75, 20, 4500}, Records[2]}));
    EXPECT_EQ(cells(*view, 2), (QStringList{"06/08/2005", "20.50", "21.00", "19.75", "20.00", "4500"}));
    EXPECT_EQ(view->selectedRow(), 3);
    EXPECT_EQ(progress.calls.first(), "Show") << "the load ran again with its progress window";

    const auto before = readBars(temp.path(), "ABC");   // a date the security holds changes nothing
    whenDialogUp("05/08/2005", {"99", "99", "99", "99", "99"});
    view->insertButton->click();
    ASSERT_EQ(platform.boxes.size(), 1);
    expectBox(0, "Date Already Exist.", MsgIcon::Information);
    EXPECT_EQ(readBars(temp.path(), "ABC"), before);
    EXPECT_EQ(cells(*view, 1), (QStringList{"05/08/2005", "11.00", "13.00", "10.00", "12.00", "2000"}));
}

// A date typed key by key into a fresh Insert, in the forms users type dates in, is the date
// stored; Tab leaves the date box for the open box, and the box then shows the date it read.
TEST_F(RecordEdit, ATypedDateIsTheDateStored) {
    const struct { const char* locale; const char* typed; qint32 stored; const char* shownAs; } cases[] = {
        {"en_GB", "5-1-04", 20040105, "05/01/2004"}, {"en_GB", "5 Jan 2031", 20310105, "05/01/2031"},
        {"en_US", "05/01/2004", 20040501, "5/1/2004"}, {"en_US", "January 5, 2004", 20040105, "1/5/2004"},
        {"en_US", "12/31/2035", 20351231, "12/31/2035"}, {"de_DE", "5.1.04", 20040105, "05.01.2004"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.locale) + " " + c.typed);
        LocaleGuard locale(c.locale);
        TempFolder folder;
        auto sheet = sheetOf(folder.path());
        whenDialogUp(QString::fromUtf8(c.typed), {"1", "2", "1", "2", "10"});
        sheet->insertButton->click();
        EXPECT_EQ(dateLeftAs, c.shownAs);
        EXPECT_EQ(tabbedTo, "openEdit");
        EXPECT_TRUE(platform.boxes.isEmpty()) << platform.boxTexts().join('|').toStdString();
        const auto dates = readDates(folder.path(), "ABC");
        EXPECT_NE(std::find(dates.begin(), dates.end(), c.stored), dates.end());
        EXPECT_EQ(dates.size(), 4u);
        platform.boxes.clear();
    }
}

// "&Apply" refuses a date box that reads as no date, a blank or a word, and keeps the dialog up
// with what was typed; "&Close" then leaves store and sheet as they were.
TEST_F(RecordEdit, ApplyRefusesNoDateAndIncompleteOrNonNumericFields) {
    const QStringList fine = {"1", "2", "1", "2", "10"};
    const struct { const char* date; QStringList typed; const char* message; } cases[] = {
        {"31/02/2004", fine, "Please Enter a Valid Date."}, {"tomorrow", fine, "Please Enter a Valid Date."},
        {"09/08/2005", {"1", "2", "   ", "4", "5"}, "Please Complete All Fields."}, {"09/08/2005", {"1", "2", "3", "", "5"}, "Please Complete All Fields."},
        {"09/08/2005", {"1", "two", "3", "4", "5"}, "Please Enter Numbers Only."}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.date);
        platform.boxes.clear();
        whenDialogUp(c.date, c.typed);
        view->insertButton->click();
        EXPECT_TRUE(stillUp);
        EXPECT_EQ(after, c.typed);
        ASSERT_EQ(platform.boxes.size(), 1);
        expectBox(0, c.message, MsgIcon::Information);
    }
    EXPECT_EQ(readBars(temp.path(), "ABC"), Records);
    EXPECT_EQ(view->rows()->rowCount(), 3);
}

// A double click on a row changes it; the new values show as plain number text until the next
// load. One row at a time is selected.
TEST_F(RecordEdit, ChangeOfARowWritesPlainNumbersUntilTheNextLoad) {
    const auto at = [&](int row) { return view->recordsView->visualRect(view->rows()->index(row, 2)).center(); };
    QTest::mouseClick(view->recordsView->viewport(), Qt::LeftButton, {}, at(0));
    QTest::mouseClick(view->recordsView->viewport(), Qt::LeftButton, Qt::ControlModifier, at(1));
    EXPECT_EQ(view->recordsView->selectionModel()->selectedIndexes().size(), SheetRows::ColumnCount) << "one whole row";
    whenDialogUp(QString(), {"11", "13", "10", "99.5", "1500"});
    QTest::mouseDClick(view->recordsView->viewport(), Qt::LeftButton, {}, at(1));

    EXPECT_EQ(shown, (QStringList{"05/08/2005", "11.00", "13.00", "10.00", "12.00", "2000"}));
    EXPECT_FALSE(pickerEnabled) << "a change can't move the record to another date";
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(cells(*view, 1), (QStringList{"05/08/2005", "11", "13", "10", "99.5", "1500"}));
    EXPECT_EQ(readBars(temp.path(), "ABC"), (std::vector<Bar>{Records[0], {20050805, 11, 13, 10, 99.5, 1500}, Records[2]}));
    view->load();
    EXPECT_EQ(cells(*view, 1), (QStringList{"05/08/2005", "11.00", "13.00", "10.00", "99.50", "1500"}));
}

TEST_F(RecordEdit, DeleteAskedNoKeepsTheRecordAndYesKeepsLastDateUntilTheNextLoad) {
    platform.answerNextBox(MsgAnswer::No);
    view->deleteButton->click();
    expectBox(0, "Are you sure to delete date : 08/08/2005", MsgIcon::Question);
    EXPECT_EQ(platform.boxes[0].buttons, MsgButtons::YesNo);
    EXPECT_EQ(view->rows()->rowCount(), 3);
    EXPECT_EQ(readBars(temp.path(), "ABC"), Records);

    platform.answerNextBox(MsgAnswer::Yes);
    view->deleteButton->click();
    ASSERT_EQ(platform.boxes.size(), 3);
    expectBox(2, "Record Deleted.", MsgIcon::Information);
    EXPECT_EQ(view->recordsView->verticalHeader()->count(), 2) << "the row is gone from the screen";
    EXPECT_EQ(view->lastDateEdit->text(), "08/08/2005");
    EXPECT_EQ(readBars(temp.path(), "ABC"), (std::vector<Bar>{Records[0], Records[1]}));
    view->load();
    EXPECT_EQ(view->lastDateEdit->text(), "05/08/2005");

    view->recordsView->clearSelection();   // with no row selected Change and Delete do nothing
    view->changeButton->click();
    view->deleteButton->click();
    EXPECT_EQ(platform.boxes.size(), 3);
    EXPECT_EQ(view->rows()->rowCount(), 2);
}

TEST_F(RecordEdit, WritesThatFailShowTheStoresDescriptionOrEndSilently) {
    const QString moved = temp.path() + "-gone";   // the store can't be opened for writing
    ASSERT_TRUE(QDir().rename(temp.path(), moved));
    whenDialogUp("09/08/2005", {"1", "1", "1", "1", "1"});
    view->insertButton->click();
    expectBox(0, QString(), MsgIcon::Warning, "Brindlemark v6");
    EXPECT_EQ(view->rows()->rowCount(), 3) << "the list isn't reloaded";

    view->recordsView->selectRow(0);
    whenDialogUp(QString(), {"5", "5", "5", "5", "5"});
    view->changeButton->click();
    expectBox(1, QString(), MsgIcon::Warning, "Brindlemark v6");
    EXPECT_EQ(cells(*view, 0), (QStringList{"04/08/2005", "10.00", "12.00", "9.00", "11.00", "1000"}));

    platform.answerNextBox(MsgAnswer::Yes);
    view->deleteButton->click();
    EXPECT_EQ(platform.boxes.size(), 3) << "only the question";
    EXPECT_EQ(view->rows()->rowCount(), 3);
    ASSERT_TRUE(QDir().rename(moved, temp.path()));
    EXPECT_EQ(readBars(temp.path(), "ABC"), Records);
}

// Change and Delete reach the row's own record whatever digits, decimal sign and minus sign the
// locale writes; a Change that leaves the boxes as they came takes back the values shown.
TEST_F(RecordEdit, ChangeAndDeleteReachTheRowsOwnRecordInAnyLocale) {
    const std::vector<Bar> records = {{19250102, -1.5, 2, -2.25, -1, 100}, {20250102, 10, 20, 5, 15, 1000}, {20300315, 1, 2, 0.5, 1.5, 5}};
    const struct { const char* locale; const char* open; double stored; } cases[] = {
        {"en_US", "11.25", 11.25}, {"de_DE", "11,25", 11.25}, {"ccp", "3", 3}, {"ff_Adlm", "3", 3}, {"ar_EG", "3", 3}, {"ar_SA", "3", 3}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.locale);
        LocaleGuard locale(c.locale);
        TempFolder folder;
        auto sheet = sheetOf(folder.path(), records);
        platform.boxes.clear();

        sheet->recordsView->selectRow(0);
        whenDialogUp(QString(), {c.open, "4", "2", "3", "300"});
        sheet->changeButton->click();
        EXPECT_EQ(shown.at(0), sheet->rows()->cell(0, 0)) << "the row's date as the sheet shows it";
        const Bar changed{19250102, c.stored, 4, 2, 3, 300};
        EXPECT_EQ(readBars(folder.path(), "ABC"), (std::vector<Bar>{changed, records[1], records[2]}));

        sheet->recordsView->selectRow(1);
        whenDialogUp(QString(), {});
        sheet->changeButton->click();
        EXPECT_FALSE(stillUp) << platform.boxTexts().join('|').toStdString();
        EXPECT_EQ(readBars(folder.path(), "ABC"), (std::vector<Bar>{changed, records[1], records[2]}));

        sheet->recordsView->selectRow(2);   // deleted by the date text the sheet shows
        platform.answerNextBox(MsgAnswer::Yes);
        sheet->deleteButton->click();
        EXPECT_EQ(platform.boxes.last().text, "Record Deleted.");
        EXPECT_EQ(readBars(folder.path(), "ABC"), (std::vector<Bar>{changed, records[1]}));
    }
    // Two bars of one day: the row's own bar is changed, then deleted, and the other stays.
    REQUIRE_FIXTURE("intraday");
    TempFolder intraday;
    ASSERT_TRUE(copyFixture("intraday", intraday.path()));
    const auto bars = readBars(intraday.path(), "2HR.DE");
    auto sheet = loadedSheet(intraday.path(), "2HR.DE", "H&R");
    sheet->recordsView->selectRow(1);
    whenDialogUp(QString(), {"1", "2", "0.5", "1.5", "10"});
    sheet->changeButton->click();
    EXPECT_EQ(readBars(intraday.path(), "2HR.DE"), (std::vector<Bar>{bars[0], {20131115, 1, 2, 0.5, 1.5, 10}}));
    platform.answerNextBox(MsgAnswer::Yes);
    sheet->deleteButton->click();
    EXPECT_EQ(readBars(intraday.path(), "2HR.DE"), std::vector<Bar>{bars[0]});
}

} // namespace
