// The data sheet: what a load puts into the header boxes and the rows, with the progress window,
// under several locales, and what the user sees when a load stops early or finds nothing.

#include "sheet/SheetTestKit.h"

#include "frame/CommonRoutines.h"
#include "sheet/SheetRows.h"
#include "sheet/ui/frmChange.h"
#include "sheet/ui/frmView.h"
#include "store/ui/ReadProgressWindow.h"
#include "support/Modal.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QDateEdit>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

using namespace sheettest;

namespace {

class DataSheet : public ::testing::Test {
protected:
    ScriptedPlatform platform;
    TempFolder temp;
    ProgressRecorder progress;
    SheetCleanup cleanup;

    // A sheet of `symbol` in `folder`, loaded and shown as the Open dialog leaves it.
    std::unique_ptr<frmView> sheet(const QString& folder, const QString& symbol, const QString& name) {
        auto view = std::make_unique<frmView>();
        view->path = folder;
        view->Sec = name;
        view->Symbol = symbol;
        view->setWindowTitle(QStringLiteral("DataSheet of ") + name);
        view->Form_Load();
        view->show();
        QApplication::processEvents();
        return view;
    }

    static void whenUp(std::function<void(frmChange*)> action) {
        onNextModal([action](QWidget* w) {
            auto dialog = qobject_cast<frmChange*>(w);
            ASSERT_NE(dialog, nullptr);
            action(dialog);
        });
    }

    static QStringList row(const frmView& view, int r) {
        QStringList cells;
        for (int c = 0; c < SheetRows::ColumnCount; ++c)
            cells << view.rows()->cell(r, c);
        return cells;
    }
};

// Records with the values the cell texts are about. The store keeps 4-byte floats, so the
// values are ones such a float holds exactly.
std::vector<Rec> threeRecords() {
    return {{20050804, 1234.5, 1240, 1230.25, 1239.999, 1500},
            {20050805, 0, 0.125, -0.00390625, 10, 0},
            {20050808, 99.125, 100, 98, 99.5, 9876543}};
}

struct LocaleCase {
    const char* locale;
    QStringList first;   // the cells of the first row
    QStringList second;
    const char* firstDate;
    const char* lastDate;
};

void PrintTo(const LocaleCase& c, std::ostream* out) { *out << c.locale; }

class DataSheetLocales : public DataSheet, public ::testing::WithParamInterface<LocaleCase> {};

TEST_P(DataSheetLocales, ShowsHeaderAndEveryRecordInTheLocalesForms) {
    const LocaleCase& lc = GetParam();
    LocaleGuard locale(lc.locale);
    makeSecurity(temp.path(), "BHP", "BHP Billiton", threeRecords());

    auto view = sheet(temp.path(), "BHP", "BHP Billiton");

    EXPECT_EQ(view->Text1->text(), temp.path());
    EXPECT_EQ(view->Text2->text(), "BHP Billiton");
    EXPECT_EQ(view->Text3->text(), "BHP");
    EXPECT_EQ(view->Text6->text(), lc.firstDate);
    EXPECT_EQ(view->Text4->text(), lc.lastDate);
    EXPECT_EQ(view->Text5->text(), "Daily");
    ASSERT_EQ(view->rows()->rowCount(), 3);
    EXPECT_EQ(row(*view, 0), lc.first);
    EXPECT_EQ(row(*view, 1), lc.second);
    EXPECT_EQ(row(*view, 2).at(0), DateToText(20050808));
    EXPECT_EQ(row(*view, 2).at(5), "9876543");
    EXPECT_TRUE(platform.boxes.isEmpty()) << platform.boxTexts().join('|').toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Locales, DataSheetLocales,
    ::testing::Values(
        LocaleCase{"en_GB",
                   {"04/08/2005", "1234.50", "1240.00", "1230.25", "1240.00", "1500"},
                   {"05/08/2005", "0.00", "0.13", "0.00", "10.00", "0"},
                   "04/08/2005", "08/08/2005"},
        LocaleCase{"en_US",
                   {"8/4/05", "1234.50", "1240.00", "1230.25", "1240.00", "1500"},
                   {"8/5/05", "0.00", "0.13", "0.00", "10.00", "0"},
                   "8/4/05", "8/8/05"},
        LocaleCase{"de_DE",
                   {"04.08.05", "1234,50", "1240,00", "1230,25", "1240,00", "1500"},
                   {"05.08.05", "0,00", "0,13", "0,00", "10,00", "0"},
                   "04.08.05", "08.08.05"}),
    [](const ::testing::TestParamInfo<LocaleCase>& param) { return std::string(param.param.locale); });

TEST_F(DataSheet, HeadingsAndTheNewestRowSelectedAndInView) {
    makeSecurity(temp.path(), "LONG", "Long Series", series(400));
    auto view = sheet(temp.path(), "LONG", "Long Series");

    const QStringList headings = {"Date", "Open", "High", "Low", "Close", "Volume"};
    for (int c = 0; c < 6; ++c)
        EXPECT_EQ(view->rows()->headerData(c, Qt::Horizontal).toString(), headings.at(c));
    EXPECT_EQ(view->ListView1->objectName(), "ListView1");
    EXPECT_EQ(view->windowTitle(), "DataSheet of Long Series");

    ASSERT_EQ(view->rows()->rowCount(), 400);
    EXPECT_EQ(view->selectedRow(), 399);
    const QRect last = view->ListView1->visualRect(view->rows()->index(399, 0));
    EXPECT_TRUE(view->ListView1->viewport()->rect().contains(last)) << "the newest row is out of view";
    EXPECT_EQ(view->Text4->text(), DateToText(series(400).back().date));
}

TEST_F(DataSheet, ReadsThroughTheProgressWindowInTheStoresOrder) {
    makeSecurity(temp.path(), "ABC", "ABC", series(3));
    auto view = sheet(temp.path(), "ABC", "ABC");

    const QStringList expected = {"Show", "SetRange 0 3", "SetStep 1", "SetCaption Read Security data...",
                                  "SetMessage Progress....", "StepIt", "StepIt", "StepIt", "released"};
    EXPECT_EQ(progress.log->calls, expected);   // no Hide: the window goes with its object
    EXPECT_EQ(progress.log->alive, 0);
}

TEST_F(DataSheet, BlanksRoundFolderAndSymbolOpenTheSecurityAndStayInTheBoxes) {
    makeSecurity(temp.path(), "XYZ", "Xyz Corp", series(2));
    auto view = sheet("  " + temp.path() + " ", " XYZ  ", " Xyz Corp");
    EXPECT_EQ(view->rows()->rowCount(), 2);
    EXPECT_EQ(view->Text1->text(), "  " + temp.path() + " ");
    EXPECT_EQ(view->Text3->text(), " XYZ  ");
    EXPECT_EQ(view->Text2->text(), " Xyz Corp");
    EXPECT_TRUE(platform.boxes.isEmpty());
}

TEST_F(DataSheet, SecurityWithoutRecordsShowsItsHeaderAndNoDataFound) {
    {   // a security as Create New Symbols leaves it: the seed record added and deleted again
        SecurityWriter writer;
        writer.OpenFolder(temp.path());
        writer.CreateSecurity("NEW", "NEW", 1);
        writer.AddQuote(20240102, 0, 1, 1, 1, 1, 0, 0.0);
        writer.DeleteQuote("20240102");
        writer.CloseSecurity();
        writer.CloseFolder();
    }
    ASSERT_TRUE(readBack(temp.path(), "NEW").empty());

    auto view = sheet(temp.path(), "NEW", "NEW");
    EXPECT_EQ(view->rows()->rowCount(), 0);
    EXPECT_EQ(view->Text5->text(), "Daily");
    EXPECT_EQ(view->Text4->text(), view->Text6->text());
    ASSERT_EQ(platform.boxes.size(), 1);
    EXPECT_EQ(platform.boxes[0].text, "No Data Found.");
    EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Warning);
    EXPECT_EQ(platform.boxes[0].title, "Marrowfin");
}

TEST_F(DataSheet, FolderWithoutStoreOrUnknownSymbolGivesNoDataFound) {
    makeSecurity(temp.path(), "ABC", "ABC", series(2));
    const QString empty = temp.sub("nothing-here");
    struct Case { QString folder, symbol; } cases[] = {{empty, "ABC"}, {temp.path(), "NOPE"}};
    for (const Case& c : cases) {
        platform.boxes.clear();
        auto view = sheet(c.folder, c.symbol, "ABC");
        EXPECT_EQ(view->rows()->rowCount(), 0);
        EXPECT_EQ(view->Text1->text(), c.folder);
        EXPECT_EQ(platform.boxTexts(), QStringList{"No Data Found."});
        EXPECT_TRUE(view->isVisible()) << "the window stays open";
    }
}

TEST_F(DataSheet, CancelAfterTheFirstRecordLeavesOneRowAndNoSelectionAndStaysUsable) {
    makeSecurity(temp.path(), "ABC", "ABC", series(50));
    progress.log->cancelAfterSteps = 1;
    auto view = sheet(temp.path(), "ABC", "ABC");

    ASSERT_EQ(view->rows()->rowCount(), 1);
    EXPECT_EQ(view->selectedRow(), -1);
    EXPECT_EQ(view->Text4->text(), view->Text6->text()) << "Last Date still shows the first date";
    EXPECT_TRUE(platform.boxes.isEmpty());
    ASSERT_GE(progress.log->calls.size(), 3);
    EXPECT_EQ(progress.log->calls.mid(progress.log->calls.size() - 3),
              (QStringList{"StepIt", "Hide", "released"}));

    // The one row can still be deleted.
    view->ListView1->selectRow(0);
    platform.answerNextBox(MsgAnswer::Yes);
    view->Command5->click();
    EXPECT_EQ(view->rows()->rowCount(), 0);
    EXPECT_EQ(readBack(temp.path(), "ABC").size(), 49u);
}

ReadProgressWindow* visibleProgressWindow() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto window = qobject_cast<ReadProgressWindow*>(w); window && window->isVisible())
            return window;
    return nullptr;
}

// The store's own progress window: it shows the load, its Cancel stops it, and it goes away.
TEST_F(DataSheet, ProgressWindowShowsTheLoadAndItsCancelStopsIt) {
    UseReadProgressWindow();
    makeSecurity(temp.path(), "ABC", "ABC", series(3000));

    QString caption, message;
    int maximum = -1, valueAtCancel = -1;
    QTimer watcher;   // what the user does while the window is up: waits for the bar, then cancels
    watcher.setInterval(0);
    QObject::connect(&watcher, &QTimer::timeout, [&] {
        ReadProgressWindow* window = visibleProgressWindow();
        if (!window || window->ProgressBar1->value() < 100)
            return;
        caption = window->windowTitle();
        message = window->lblMessage->text();
        maximum = window->ProgressBar1->maximum();
        valueAtCancel = window->ProgressBar1->value();
        window->cmdCancel->click();
        watcher.stop();
    });
    watcher.start();
    auto view = sheet(temp.path(), "ABC", "ABC");

    EXPECT_EQ(caption, "Read Security data...");
    EXPECT_EQ(message, "Progress....");
    EXPECT_EQ(maximum, 3000);
    const int rowsRead = view->rows()->rowCount();
    EXPECT_GE(rowsRead, valueAtCancel);
    EXPECT_LT(rowsRead, 3000);
    EXPECT_EQ(view->selectedRow(), -1);
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(visibleProgressWindow(), nullptr);

    // Insert loads again with a fresh window, which runs to the end and goes away by itself.
    whenUp([](frmChange* dialog) {
        dialog->DTPicker1->setDate(QDate(1999, 1, 4));
        for (QLineEdit* box : {dialog->Text2, dialog->Text3, dialog->Text4, dialog->Text5, dialog->Text6})
            box->setText("1");
        dialog->Command1->click();
    });
    view->Command4->click();
    EXPECT_EQ(view->rows()->rowCount(), 3001);
    EXPECT_EQ(view->rows()->cell(0, 0), "04/01/1999");
    EXPECT_EQ(view->selectedRow(), 3000);
    EXPECT_EQ(visibleProgressWindow(), nullptr);
}

TEST_F(DataSheet, TwoSheetsOfOneSecurityStandApart) {
    makeSecurity(temp.path(), "ABC", "ABC", series(5));
    auto first = sheet(temp.path(), "ABC", "ABC");
    auto second = sheet(temp.path(), "ABC", "ABC");
    EXPECT_EQ(first->windowTitle(), second->windowTitle());

    platform.answerNextBox(MsgAnswer::Yes);
    second->Command5->click();   // deletes the newest record, in the second sheet only
    EXPECT_EQ(second->rows()->rowCount(), 4);
    EXPECT_EQ(first->rows()->rowCount(), 5);

    first->Command1->click();
    EXPECT_FALSE(first->isVisible());
    EXPECT_TRUE(second->isVisible());
}

TEST_F(DataSheet, PeriodicityBoxForEachCode) {
    struct Case { qint32 code; const char* shown; } cases[] = {
        {1, "Daily"}, {2, "Weekly"}, {3, "Monthly"}, {4, "4"}, {5, "5"}};
    for (const Case& c : cases) {
        TempFolder folder;
        makeSecurity(folder.path(), "PER", "PER", series(3), c.code);
        auto view = sheet(folder.path(), "PER", "PER");
        EXPECT_EQ(view->Text5->text(), c.shown) << c.code;
        EXPECT_EQ(view->rows()->rowCount(), 3) << "the records are listed as they are, whatever the code";
    }
}

// An intraday security written by another tool shows its code's digits and its records.
TEST_F(DataSheet, IntradayFolderOfAnotherToolShowsItsCodeAndRecords) {
    REQUIRE_FIXTURE("intraday");
    ASSERT_TRUE(copyFixture("intraday", temp.path()));
    SecurityReader reader;
    reader.OpenFolder(temp.path());
    ASSERT_GE(reader.GetSecuritiesRemaining(), 1);
    reader.NextSecurity();
    const QString symbol = reader.GetSymbol(), name = reader.GetName();
    reader.CloseFolder();

    auto view = sheet(temp.path(), symbol, name);
    const QString shown = view->Text5->text();
    EXPECT_FALSE(shown == "Daily" || shown == "Weekly" || shown == "Monthly") << shown.toStdString();
    bool digits = false;
    shown.toInt(&digits);
    EXPECT_TRUE(digits) << shown.toStdString();
    EXPECT_GT(view->rows()->rowCount(), 0);
}

TEST_F(DataSheet, VendorFolderOpensWithAllRecordsOldestFirst) {
    REQUIRE_FIXTURE("vendor-xmaster");
    ASSERT_TRUE(copyFixture("vendor-xmaster", temp.path()));
    SecurityReader reader;
    reader.OpenFolder(temp.path());
    reader.NextSecurity();
    const QString symbol = reader.GetSymbol(), name = reader.GetName();
    reader.CloseFolder();
    const auto records = readBack(temp.path(), symbol);
    ASSERT_FALSE(records.empty());

    auto view = sheet(temp.path(), symbol, name);
    ASSERT_EQ(view->rows()->rowCount(), static_cast<int>(records.size()));
    EXPECT_EQ(view->rows()->cell(0, 0), DateToText(records.front().date));
    EXPECT_EQ(view->Text4->text(), DateToText(records.back().date));
    EXPECT_EQ(view->selectedRow(), view->rows()->rowCount() - 1);
}

} // namespace
