#pragma once
// Helpers for the tests of the data sheet, the chart and the catalogue screens: data folders made
// through the store's own writer, records read back from disk, progress windows that record what
// they are told (and can be cancelled), and the sheets standing open.

#include "sheet/SheetRows.h"
#include "sheet/ui/DataSheetWindow.h"
#include "store/ReadProgress.h"
#include "support/ProgressRecorder.h"
#include "support/ScriptedPlatform.h"
#include "support/StoreKit.h"
#include "support/TestSupport.h"

#include <QApplication>
#include <QDate>
#include <QStringList>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace sheettest {

// `count` daily records on working days from 2 January 2004 on.
inline std::vector<Bar> series(int count, QDate day = QDate(2004, 1, 2)) {
    std::vector<Bar> records;
    for (int i = 0; i < count; ++i, day = day.addDays(day.dayOfWeek() == 5 ? 3 : 1)) {
        const double base = 100 + (i % 500) * 0.25;
        records.push_back({day.year() * 10000 + day.month() * 100 + day.day(), base, base + 2, base - 1, base + 0.5, 1000.0 + i});
    }
    return records;
}

// What a full load of three records tells its progress window.
inline const QStringList LoadOfThree = {"Show", "SetRange 0 3", "SetStep 1", "SetCaption Read Security data...",
                                        "SetMessage Progress....", "StepIt", "StepIt", "StepIt", "released"};

// The windows of a type standing shown, in no particular order.
template <typename W>
QList<W*> shownWindows() {
    QList<W*> found;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto window = qobject_cast<W*>(w); window && window->isVisible())
            found.append(window);
    return found;
}
inline QList<DataSheetWindow*> openSheets() { return shownWindows<DataSheetWindow>(); }

// A sheet loaded and shown as Open Security leaves it.
inline std::unique_ptr<DataSheetWindow> loadedSheet(const QString& folder, const QString& symbol, const QString& name) {
    auto view = std::make_unique<DataSheetWindow>();
    view->path = folder;
    view->securityName = name;
    view->Symbol = symbol;
    view->load();
    view->show();
    QApplication::processEvents();
    return view;
}

// The six cells of a row as the sheet shows them.
inline QStringList cells(const DataSheetWindow& view, int row) {
    QStringList out;
    for (int c = 0; c < SheetRows::ColumnCount; ++c)
        out << view.rows()->cell(row, c);
    return out;
}

// What every test of a sheet or a catalogue screen stands on: the scripted platform, a folder of
// its own, recording progress windows, and no sheet left standing afterwards.
class SheetFixture : public ::testing::Test {
protected:
    ScriptedPlatform platform;
    TempFolder temp;
    ProgressRecorder progress;
    struct Cleanup {   // closes the sheets a test left open (they delete themselves on close)
        ~Cleanup() {
            for (DataSheetWindow* sheet : openSheets())
                sheet->close();
            QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    } cleanup;

    // Box i as shown; a null text stands for the store's own description, which isn't empty.
    void expectBox(int i, const QString& text, MsgIcon icon, const QString& title = "Marrowfin") {
        ASSERT_GT(platform.boxes.size(), i) << platform.boxTexts().join('|').toStdString();
        EXPECT_EQ(text.isNull() ? QString() : platform.boxes[i].text, text);
        EXPECT_FALSE(platform.boxes[i].text.isEmpty());
        EXPECT_EQ(platform.boxes[i].icon, icon);
        EXPECT_EQ(platform.boxes[i].title, title);
    }
};

} // namespace sheettest
