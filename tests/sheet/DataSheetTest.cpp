// The data sheet: what a load puts into the header boxes and the rows under several locales, what
// the user sees when a load stops early or finds nothing, and Insert, Change and Delete through
// the record dialog, read back from disk.

#include "sheet/SheetTestKit.h"

#include "frame/CommonRoutines.h"
#include "frame/Regional.h"
#include "sheet/ui/DateBox.h"
#include "sheet/ui/RecordDialog.h"
#include "support/Modal.h"

#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <algorithm>

using namespace sheettest;

namespace {

using DataSheet = SheetFixture;

struct LocaleCase {
    const char* locale;
    QStringList first, second;   // the cells of the first two rows
    const char* lastDate;
    qint32 code;                 // periodicity code, and the box's text for it
    const char* periodicity;
};
void PrintTo(const LocaleCase& c, std::ostream* out) { *out << c.locale << ' ' << c.code; }

class DataSheetLocales : public SheetFixture, public ::testing::WithParamInterface<LocaleCase> {};

// Blanks round folder and symbol open the right security and stay in the boxes. The records are
// listed as they are, whatever the periodicity code.
TEST_P(DataSheetLocales, ShowsHeaderAndEveryRecordInTheLocalesForms) {
    LocaleGuard locale(GetParam().locale);
    makeSecurity(temp.path(), "BHP", "BHP Billiton",   // values a 4-byte float of the store holds exactly
                 {{20050804, 1234.5, 1240, 1230.25, 1239.999, 1500}, {20050805, 0, 0.125, -0.00390625, 10, 0},
                  {20050808, 99.125, 100, 98, 99.5, 9876543}}, GetParam().code);
    auto view = loadedSheet("  " + temp.path() + " ", " BHP  ", " BHP Billiton");

    EXPECT_EQ((QStringList{view->folderEdit->text(), view->nameEdit->text(), view->symbolEdit->text()}),
              (QStringList{"  " + temp.path() + " ", " BHP Billiton", " BHP  "}));
    EXPECT_EQ(view->firstDateEdit->text(), GetParam().first.at(0));
    EXPECT_EQ(view->lastDateEdit->text(), GetParam().lastDate);
    EXPECT_EQ(view->periodicityEdit->text(), GetParam().periodicity);
    ASSERT_EQ(view->rows()->rowCount(), 3);
    EXPECT_EQ(cells(*view, 0), GetParam().first);
    EXPECT_EQ(cells(*view, 1), GetParam().second);
    EXPECT_EQ(cells(*view, 2).at(5), "9876543");
    EXPECT_EQ(view->selectedRow(), 2);
    EXPECT_TRUE(platform.boxes.isEmpty()) << platform.boxTexts().join('|').toStdString();
    QStringList headings;
    for (int c = 0; c < SheetRows::ColumnCount; ++c)
        headings << view->rows()->headerData(c, Qt::Horizontal).toString();
    EXPECT_EQ(headings, (QStringList{"Date", "Open", "High", "Low", "Close", "Volume"}));
    EXPECT_EQ(progress.log->calls,   // no Hide: the window goes with its object
              (QStringList{"Show", "SetRange 0 3", "SetStep 1", "SetCaption Read Security data...",
                           "SetMessage Progress....", "StepIt", "StepIt", "StepIt", "released"}));
}

const QStringList GbFirst = {"04/08/2005", "1234.50", "1240.00", "1230.25", "1240.00", "1500"};
const QStringList GbSecond = {"05/08/2005", "0.00", "0.13", "0.00", "10.00", "0"};
INSTANTIATE_TEST_SUITE_P(
    Locales, DataSheetLocales,
    ::testing::Values(LocaleCase{"en_GB", GbFirst, GbSecond, "08/08/2005", 1, "Daily"},
                      LocaleCase{"en_US", {"8/4/2005", "1234.50", "1240.00", "1230.25", "1240.00", "1500"},
                                 {"8/5/2005", "0.00", "0.13", "0.00", "10.00", "0"}, "8/8/2005", 2, "Weekly"},
                      LocaleCase{"de_DE", {"04.08.2005", "1234,50", "1240,00", "1230,25", "1240,00", "1500"},
                                 {"05.08.2005", "0,00", "0,13", "0,00", "10,00", "0"}, "08.08.2005", 3, "Monthly"},
                      LocaleCase{"en_GB", GbFirst, GbSecond, "08/08/2005", 4, "4"}),
    [](const ::testing::TestParamInfo<LocaleCase>& param) {
        return std::string(param.param.locale) + "_" + std::to_string(param.param.code);
    });

TEST_F(DataSheet, LongSeriesEndsWithTheNewestRowSelectedAndInView) {
    makeSecurity(temp.path(), "LONG", "Long Series", series(400));
    auto view = loadedSheet(temp.path(), "LONG", "Long Series");
    EXPECT_EQ(view->selectedRow(), 399);
    const QRect last = view->recordsView->visualRect(view->rows()->index(399, 0));
    EXPECT_TRUE(view->recordsView->viewport()->rect().contains(last)) << "the newest row is out of view";
    EXPECT_EQ(view->lastDateEdit->text(), DateToText(series(400).back().date));
}

// A security without records shows its header; one that can't be read shows nothing. The window stays.
TEST_F(DataSheet, NothingToListGivesNoDataFound) {
    {   // as Create New Symbols leaves it: the seed record added and deleted again
        SecurityWriter writer;
        writer.OpenFolder(temp.path());
        writer.CreateSecurity("NEW", "NEW", 1);
        writer.AddQuote(20240102, 0, 1, 1, 1, 1, 0, 0.0);
        writer.DeleteQuote("20240102");
        writer.CloseSecurity();
        writer.CloseFolder();
    }
    const struct { QString folder, symbol, firstDate, periodicity; } cases[] = {
        {temp.path(), "NEW", "02/01/2024", "Daily"}, {temp.path(), "NOPE", "", ""}, {temp.sub("bare"), "NEW", "", ""}};
    for (const auto& c : cases) {
        platform.boxes.clear();
        auto view = loadedSheet(c.folder, c.symbol, "NEW");
        EXPECT_EQ(view->rows()->rowCount(), 0);
        EXPECT_EQ(view->folderEdit->text(), c.folder);
        EXPECT_EQ(view->firstDateEdit->text(), c.firstDate) << c.symbol.toStdString();
        EXPECT_EQ(view->lastDateEdit->text(), c.firstDate) << "Last Date shows the first date";
        EXPECT_EQ(view->periodicityEdit->text(), c.periodicity);
        ASSERT_EQ(platform.boxes.size(), 1);
        expectBox(0, "No Data Found.", MsgIcon::Warning);
        EXPECT_TRUE(view->isVisible());
    }
}

TEST_F(DataSheet, CancelAfterTheFirstRecordLeavesOneRowAndNoSelectionAndStaysUsable) {
    makeSecurity(temp.path(), "ABC", "ABC", series(50));
    progress.log->cancelAfterSteps = 1;
    auto view = loadedSheet(temp.path(), "ABC", "ABC");

    ASSERT_EQ(view->rows()->rowCount(), 1);
    EXPECT_EQ(view->selectedRow(), -1);
    EXPECT_EQ(view->lastDateEdit->text(), view->firstDateEdit->text()) << "Last Date still shows the first date";
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(progress.log->calls.mid(progress.log->calls.size() - 3), (QStringList{"StepIt", "Hide", "released"}));

    view->recordsView->selectRow(0);   // the one row can still be deleted
    platform.answerNextBox(MsgAnswer::Yes);
    view->deleteButton->click();
    EXPECT_EQ(view->rows()->rowCount(), 0);
    EXPECT_EQ(readBack(temp.path(), "ABC").size(), 49u);
}

// ---- Record editing ------------------------------------------------------------------------

const std::vector<Rec> Records = {{20050804, 10, 12, 9, 11, 1000}, {20050805, 11, 13, 10, 12, 2000},
                                  {20050808, 12, 14, 11, 13, 3000}};

class RecordEdit : public SheetFixture {
protected:
    std::unique_ptr<DataSheetWindow> view;
    void SetUp() override {
        makeSecurity(temp.path(), "ABC", "Abc Ltd", Records);
        view = loadedSheet(temp.path(), "ABC", "Abc Ltd");
    }

    // What the dialog showed as it came up (date text, then the five boxes), whether its date could
    // be changed, whether it stayed up after the button and what its boxes held then; the box that
    // Tab went to from the date, and the date box's text when it was left.
    QStringList shown, after;
    bool pickerEnabled = true, stillUp = false;
    QString tabbedTo;   // objectName of the box Tab went to
    QString dateLeftAs;

    // When the record dialog comes up: type the date as a user does, key by key over what the box
    // holds, and leave the box with Tab (a null string leaves the date); type the values (a null
    // string leaves a box); press the button. A dialog that stays up is then closed.
    void whenDialogUp(QString typedDate, QStringList values, const char* button = "applyButton") {
        onNextModal([=, this](QWidget* w) {
            auto dialog = qobject_cast<RecordDialog*>(w);
            ASSERT_NE(dialog, nullptr);
            EXPECT_EQ(dialog->windowTitle(), "Change Record");
            QLineEdit* boxes[] = {dialog->openEdit, dialog->highEdit, dialog->lowEdit, dialog->closeEdit, dialog->volumeEdit};
            shown = {dialog->dateEdit->text()};
            for (QLineEdit* box : boxes)
                shown << box->text();
            pickerEnabled = dialog->dateEdit->isEnabled();
            tabbedTo.clear();
            if (!typedDate.isNull()) {
                QApplication::setActiveWindow(dialog);   // the dialog has the keyboard, as on screen
                dialog->dateEdit->setFocus();
                QTest::keyClick(dialog->dateEdit, Qt::Key_A, Qt::ControlModifier);
                QTest::keyClick(dialog->dateEdit, Qt::Key_Delete);
                QTest::keyClicks(dialog->dateEdit, typedDate);
                QTest::keyClick(dialog->dateEdit, Qt::Key_Tab);
                tabbedTo = dialog->focusWidget() ? dialog->focusWidget()->objectName() : QString();
                dateLeftAs = dialog->dateEdit->text();
            }
            for (int i = 0; i < values.size(); ++i) {
                if (values[i].isNull())
                    continue;
                boxes[i]->setFocus();
                QTest::keyClick(boxes[i], Qt::Key_A, Qt::ControlModifier);
                QTest::keyClick(boxes[i], Qt::Key_Delete);
                QTest::keyClicks(boxes[i], values[i]);
            }
            child<QPushButton>(dialog, button)->click();
            stillUp = dialog->isVisible();
            after.clear();
            for (QLineEdit* box : boxes)
                after << box->text();
            if (stillUp)
                dialog->closeButton->click();
        });
    }
};

TEST_F(RecordEdit, InsertPutsANewDateIntoTheStoreAndReloadsTheSheet) {
    platform.todayDate = QDate(2026, 3, 9);
    whenDialogUp("06/08/2005", {"20.5", "21", "19.75", "20", "4500"});
    progress.log->calls.clear();
    view->insertButton->click();

    EXPECT_EQ(shown, (QStringList{"09/03/2026", "", "", "", "", ""})) << "today's date, empty boxes";
    EXPECT_TRUE(pickerEnabled);
    EXPECT_TRUE(platform.boxes.isEmpty()) << platform.boxTexts().join('|').toStdString();
    auto stored = readBack(temp.path(), "ABC");
    ASSERT_EQ(stored.size(), 4u);
    EXPECT_EQ(stored[2], (Rec{20050806, 20.5, 21, 19.75, 20, 4500}));
    ASSERT_EQ(view->rows()->rowCount(), 4);
    EXPECT_EQ(cells(*view, 2), (QStringList{"06/08/2005", "20.50", "21.00", "19.75", "20.00", "4500"}));
    EXPECT_EQ(view->selectedRow(), 3);
    EXPECT_EQ(progress.log->calls.first(), "Show") << "the load ran again with its progress window";

    whenDialogUp("1/8/05", {"1", "2", "0.5", "1.5", "10"});   // before the first date
    view->insertButton->click();
    EXPECT_EQ(view->firstDateEdit->text(), "01/08/2005");
    EXPECT_EQ(view->rows()->cell(0, 0), "01/08/2005");
    EXPECT_EQ(readBack(temp.path(), "ABC").front().date, 20050801);

    const auto before = readBack(temp.path(), "ABC");   // a date the security holds changes nothing
    whenDialogUp("05/08/2005", {"99", "99", "99", "99", "99"});
    view->insertButton->click();
    ASSERT_EQ(platform.boxes.size(), 1);
    expectBox(0, "Date Already Exist.", MsgIcon::Information);
    EXPECT_EQ(readBack(temp.path(), "ABC"), before);
    EXPECT_EQ(cells(*view, 2), (QStringList{"05/08/2005", "11.00", "13.00", "10.00", "12.00", "2000"}));
}

// A date typed key by key into a fresh Insert, in the forms users type dates in, is the date
// stored; Tab leaves the date box for the open box, and the box then shows the date it read.
TEST_F(RecordEdit, ATypedDateIsTheDateStored) {
    const struct { const char* locale; const char* typed; qint32 stored; const char* shownAs; } cases[] = {
        {"en_GB", "05/01/2004", 20040105, "05/01/2004"}, {"en_GB", "5-1-04", 20040105, "05/01/2004"},
        {"en_GB", "2004-01-05", 20040105, "05/01/2004"}, {"en_GB", "5 Jan 2031", 20310105, "05/01/2031"},
        {"en_US", "05/01/2004", 20040501, "5/1/2004"},   {"en_US", "January 5, 2004", 20040105, "1/5/2004"},
        {"en_US", "12/31/2035", 20351231, "12/31/2035"},
        {"de_DE", "25.02.2005", 20050225, "25.02.2005"}, {"de_DE", "5.1.04", 20040105, "05.01.2004"},
        {"de_DE", "5. Januar 2004", 20040105, "05.01.2004"},
    };
    platform.todayDate = QDate(2026, 11, 23);
    for (const auto& c : cases) {
        LocaleGuard locale(c.locale);
        TempFolder folder;
        makeSecurity(folder.path(), "ABC", "Abc Ltd", Records);
        auto sheet = loadedSheet(folder.path(), "ABC", "Abc Ltd");
        whenDialogUp(QString::fromUtf8(c.typed), {"1", "2", "1", "2", "10"});
        sheet->insertButton->click();
        EXPECT_EQ(dateLeftAs, c.shownAs) << c.locale << ' ' << c.typed;
        EXPECT_EQ(tabbedTo, "openEdit") << c.locale << ' ' << c.typed;
        EXPECT_TRUE(platform.boxes.isEmpty()) << platform.boxTexts().join('|').toStdString();
        std::vector<qint32> dates;
        for (const Rec& r : readBack(folder.path(), "ABC"))
            dates.push_back(r.date);
        EXPECT_NE(std::find(dates.begin(), dates.end(), c.stored), dates.end()) << c.locale << ' ' << c.typed;
        EXPECT_EQ(dates.size(), 4u) << c.locale << ' ' << c.typed;
        platform.boxes.clear();
    }
}

// A date box that reads as no date keeps the dialog up with a message; nothing is stored.
TEST_F(RecordEdit, ApplyRefusesATypedTextThatIsNoDate) {
    for (const char* typed : {"31/02/2004", "05/13/2004", "tomorrow", ""}) {
        platform.boxes.clear();
        whenDialogUp(QString::fromUtf8(typed), {"1", "2", "1", "2", "10"});
        view->insertButton->click();
        EXPECT_TRUE(stillUp) << typed;
        ASSERT_EQ(platform.boxes.size(), 1) << typed;
        expectBox(0, "Please Enter a Valid Date.", MsgIcon::Information);
    }
    EXPECT_EQ(readBack(temp.path(), "ABC"), Records);
}

// "&Apply" refuses a blank or a word and keeps the dialog up with what was typed; "&Close" then
// leaves store and sheet as they were.
TEST_F(RecordEdit, ApplyRefusesIncompleteOrNonNumericFields) {
    const struct { QStringList typed; const char* message; } cases[] = {
        {{"1", "2", "   ", "4", "5"}, "Please Complete All Fields."},
        {{"1", "2", "3", "", "5"}, "Please Complete All Fields."},
        {{"1", "two", "3", "4", "5"}, "Please Enter Numbers Only."},
    };
    for (const auto& c : cases) {
        platform.boxes.clear();
        whenDialogUp("09/08/2005", c.typed);
        view->insertButton->click();
        EXPECT_TRUE(stillUp) << c.message;
        EXPECT_EQ(after, c.typed);
        ASSERT_EQ(platform.boxes.size(), 1);
        expectBox(0, c.message, MsgIcon::Information);
    }
    EXPECT_EQ(readBack(temp.path(), "ABC"), Records);
    EXPECT_EQ(view->rows()->rowCount(), 3);
}

// A double click on a row changes it; the new values show as plain number text until the next load.
TEST_F(RecordEdit, ChangeOfARowWritesPlainNumbersUntilTheNextLoad) {
    const QPoint at = view->recordsView->visualRect(view->rows()->index(1, 2)).center();
    whenDialogUp(QString(), {"11", "13", "10", "99.5", "1500"});
    QTest::mouseClick(view->recordsView->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(view->recordsView->viewport(), Qt::LeftButton, {}, at);

    EXPECT_EQ(shown, (QStringList{"05/08/2005", "11.00", "13.00", "10.00", "12.00", "2000"}));
    EXPECT_FALSE(pickerEnabled) << "a change can't move the record to another date";
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(cells(*view, 1), (QStringList{"05/08/2005", "11", "13", "10", "99.5", "1500"}));
    EXPECT_EQ(readBack(temp.path(), "ABC"), (std::vector<Rec>{Records[0], {20050805, 11, 13, 10, 99.5, 1500}, Records[2]}));
    view->load();
    EXPECT_EQ(cells(*view, 1), (QStringList{"05/08/2005", "11.00", "13.00", "10.00", "99.50", "1500"}));

    whenDialogUp(QString(), {"1", "1", "1", "1", "1"}, "closeButton");   // "&Close" changes nothing
    view->changeButton->click();
    EXPECT_EQ(cells(*view, 2).at(4), "13.00");
    EXPECT_EQ(readBack(temp.path(), "ABC")[2], Records[2]);
}

TEST_F(RecordEdit, DeleteAskedNoKeepsTheRecordAndYesKeepsLastDateUntilTheNextLoad) {
    platform.answerNextBox(MsgAnswer::No);
    view->deleteButton->click();
    expectBox(0, "Are you sure to delete date : 08/08/2005", MsgIcon::Question);
    EXPECT_EQ(platform.boxes[0].buttons, MsgButtons::YesNo);
    EXPECT_EQ(view->rows()->rowCount(), 3);
    EXPECT_EQ(readBack(temp.path(), "ABC"), Records);

    platform.answerNextBox(MsgAnswer::Yes);
    view->deleteButton->click();
    ASSERT_EQ(platform.boxes.size(), 3);
    expectBox(2, "Record Deleted.", MsgIcon::Information);
    EXPECT_EQ(view->rows()->rowCount(), 2);
    EXPECT_EQ(view->lastDateEdit->text(), "08/08/2005");
    EXPECT_EQ(readBack(temp.path(), "ABC"), (std::vector<Rec>{Records[0], Records[1]}));
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
    EXPECT_EQ(readBack(temp.path(), "ABC"), Records);
}

// Dates shown month first with two-digit years, and numbers typed with a decimal comma.
TEST_F(RecordEdit, ChangeAndDeleteUnderOtherLocales) {
    const struct { const char* locale; const char* dateText; QStringList typed; } cases[] = {
        {"en_US", "8/5/2005", {"11.25", "13", "10", "12.5", "2500"}},
        {"de_DE", "05.08.2005", {"11,25", "13", "10", "12,5", "2500"}},
    };
    for (const auto& c : cases) {
        LocaleGuard locale(c.locale);
        TempFolder folder;
        makeSecurity(folder.path(), "ABC", "Abc Ltd", Records);
        auto sheet = loadedSheet(folder.path(), "ABC", "Abc Ltd");

        sheet->recordsView->selectRow(1);
        whenDialogUp(QString(), c.typed);
        sheet->changeButton->click();
        EXPECT_EQ(shown.at(0), c.dateText);
        EXPECT_EQ(cells(*sheet, 1).mid(1), c.typed) << c.locale;
        const Rec changed{20050805, 11.25, 13, 10, 12.5, 2500};
        EXPECT_EQ(readBack(folder.path(), "ABC"), (std::vector<Rec>{Records[0], changed, Records[2]})) << c.locale;

        sheet->recordsView->selectRow(0);   // deleted by the date text the sheet shows
        platform.answerNextBox(MsgAnswer::Yes);
        sheet->deleteButton->click();
        EXPECT_EQ(platform.boxes.last().text, "Record Deleted.") << c.locale;
        EXPECT_EQ(readBack(folder.path(), "ABC"), (std::vector<Rec>{changed, Records[2]}));
    }
}

// Date text in digits of other scripts, and negative prices as Arabic locales write them: Change
// and Delete reach the row's own record all the same, and a Change that leaves the boxes as they
// came takes back the values shown.
TEST_F(RecordEdit, ChangeAndDeleteReachTheRowsOwnRecordInAnyLocale) {
    const std::vector<Rec> records = {{19250102, -1.5, 2, -2.25, -1, 100}, {20250102, 10, 20, 5, 15, 1000},
                                      {20300315, 1, 2, 0.5, 1.5, 5}};
    for (const char* name : {"ccp", "ff_Adlm", "ar_EG", "ar_SA", "en_US"}) {
        LocaleGuard locale(name);
        TempFolder folder;
        makeSecurity(folder.path(), "DJ", "Dow", records);
        auto sheet = loadedSheet(folder.path(), "DJ", "Dow");
        platform.boxes.clear();

        sheet->recordsView->selectRow(0);
        whenDialogUp(QString(), {"3", "4", "2", "3", "300"});
        sheet->changeButton->click();
        const Rec changed{19250102, 3, 4, 2, 3, 300};
        EXPECT_EQ(readBack(folder.path(), "DJ"), (std::vector<Rec>{changed, records[1], records[2]})) << name;

        sheet->recordsView->selectRow(1);
        whenDialogUp(QString(), {});
        sheet->changeButton->click();
        EXPECT_FALSE(stillUp) << name << ' ' << platform.boxTexts().join('|').toStdString();
        EXPECT_EQ(readBack(folder.path(), "DJ"), (std::vector<Rec>{changed, records[1], records[2]})) << name;

        sheet->recordsView->selectRow(2);
        platform.answerNextBox(MsgAnswer::Yes);
        sheet->deleteButton->click();
        EXPECT_EQ(platform.boxes.last().text, "Record Deleted.") << name;
        EXPECT_EQ(readBack(folder.path(), "DJ"), (std::vector<Rec>{changed, records[1]})) << name;
    }
}

} // namespace
