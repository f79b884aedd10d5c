// The main window: menus, toolbar, status bar, window list, start and end, and the About box.
#include "frame/Module1.h"
#include "frame/WebLinks.h"
#include "frame/main/MDIMain.h"
#include "frame/ui/ChildWindows.h"
#include "frame/ui/frmAbout.h"
#include "catalogue/ui/frmOpen.h"
#include "support/Modal.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QApplication>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QTest>
#include <QToolBar>

#include <gtest/gtest.h>

#include <memory>

namespace {

// A main window whose end is recorded instead of ending the test program.
struct Frame {
    explicit Frame(ScriptedPlatform&) : window(std::make_unique<MDIMain>()) {
        window->quitAction = [this] { ++quits; };
    }
    MDIMain* operator->() { return window.get(); }
    std::unique_ptr<MDIMain> window;
    int quits = 0;
};

struct MenuLine {
    QString name, caption, shortcut;
    bool enabled;
    int depth;
    bool operator==(const MenuLine&) const = default;
};

void PrintTo(const MenuLine& m, std::ostream* os) {
    *os << std::string(m.depth * 2, ' ') << m.name.toStdString() << " \"" << m.caption.toStdString() << "\" "
        << m.shortcut.toStdString() << (m.enabled ? "" : " (disabled)");
}

void walk(QMenu* menu, int depth, std::vector<MenuLine>& out) {
    for (QAction* a : menu->actions()) {
        out.push_back({a->objectName(), a->isSeparator() ? QStringLiteral("-") : a->text(),
                       a->shortcut().toString(QKeySequence::PortableText), a->isEnabled(), depth});
        if (a->menu())
            walk(a->menu(), depth + 1, out);
    }
}

TEST(MDIMain, MenuTreeAsTheUserSeesIt) {
    ScriptedPlatform p;
    Frame f(p);
    std::vector<MenuLine> got;
    for (QAction* top : f->menuBar()->actions()) {
        got.push_back({top->objectName(), top->text(), {}, top->isEnabled(), 0});
        walk(top->menu(), 1, got);
    }
    const std::vector<MenuLine> expected = {
        {"mnuFile", "   &File   ", "", true, 0},
        {"mnuNewSymbol", "Create New Symbol", "Ctrl+N", true, 1},
        {"mnuOpen", "Open Data", "Ctrl+O", true, 1},
        {"mnuOpenChart", "Open Chart", "", true, 1},
        {"mnub1", "-", "", true, 1},
        {"mnuClose", "&Close", "", true, 1},
        {"mnub2", "-", "", true, 1},
        {"mnuExit", "&Exit", "Ctrl+Q", true, 1},
        {"mnuTools", "   &Tools   ", "", true, 0},
        {"mnuDownload", "Download", "", true, 1},
        {"mnuYahooDownloads", "World Exchanges", "", true, 2},
        {"mnud2", "-", "", true, 2},
        {"mnuNSEIndia", "NSE India", "", true, 2},
        {"mnuNSEIndex", "NSE India Index", "", true, 2},
        {"mnud1", "-", "", true, 2},
        {"mnuBSEIndia", "BSE India (Not Available)", "", false, 2},
        {"mnub7", "-", "", true, 1},
        {"mnuAdjustSymbol", "Adjust Symbol", "", true, 1},
        {"mnuAdjustData", "Adjust Data", "", true, 1},
        {"mnub3", "-", "", true, 1},
        {"mnuStockSplit", "Adjust for Stock Split (Available Later)", "", false, 1},
        {"mnut1", "-", "", true, 1},
        {"mnuConvert", "&Convert", "", true, 1},
        {"mnub4", "-", "", true, 1},
        {"mnuSymbolLookup", "Symbol Lookup", "", true, 1},
        {"mnuWindow", "   &Window   ", "", true, 0},
        {"mnuHelp", "   &Help   ", "", true, 0},
        {"mnuContents", "Help Contents", "F1", true, 1},
        {"mnuUpdates", "Check for Updates", "Ctrl+U", true, 1},
        {"mnuYahooLookup", "Yahoo Symbol Lookup", "Ctrl+Y", true, 1},
        {"mnub5", "-", "", true, 1},
        {"mnuAbout", "About", "F2", true, 1},
    };
    EXPECT_EQ(got, expected);
    EXPECT_EQ(f->windowTitle(), QStringLiteral("Brindlemark v6"));
}

TEST(MDIMain, StartsWithTheSymbolListAndTheRememberedFolderAndNoChildWindow) {
    ScriptedPlatform p;
    p.settings.insert(QStringLiteral("Settings/LastFolder"), QStringLiteral("/data/nse"));
    writeTextFile(QDir(p.programFolder()).filePath("symbols.csv"), "NSE,INFY.NS,Infosys Ltd\nDow,KO,Coca-Cola\n");
    Frame f(p);
    EXPECT_EQ(Module1::LastFolder, QStringLiteral("/data/nse"));
    EXPECT_EQ(Module1::SymbolCount, 2);
    EXPECT_EQ(Module1::SymbolEntries[2].Symbol, QStringLiteral("KO"));
    EXPECT_TRUE(f->MDIArea->subWindowList().isEmpty());
    EXPECT_EQ(ChildWindowArea(), f->MDIArea);
    EXPECT_TRUE(p.boxes.isEmpty());
}

TEST(MDIMain, FirstRunHasNoFolder) {
    ScriptedPlatform p;
    Frame f(p);
    EXPECT_EQ(Module1::LastFolder, QString());
    EXPECT_EQ(Module1::SymbolCount, 0);
}

TEST(MDIMain, ClosingTheFrameSavesLastFolderAndEndsTheProgram) {
    ScriptedPlatform p;
    p.settings.insert(QStringLiteral("Settings/LastFolder"), QStringLiteral("/old"));
    Frame f(p);
    f->show();
    Module1::LastFolder = QStringLiteral("/data/new");
    EXPECT_TRUE(f->close());
    EXPECT_EQ(p.settings.value(QStringLiteral("Settings/LastFolder")), QStringLiteral("/data/new"));
    EXPECT_EQ(f.quits, 1);
    EXPECT_TRUE(p.boxes.isEmpty());   // no question is asked
}

TEST(MDIMain, ClosingWithAnEmptyFolderSavesEmptyText) {
    ScriptedPlatform p;
    p.settings.insert(QStringLiteral("Settings/LastFolder"), QStringLiteral("/old"));
    Frame f(p);
    Module1::LastFolder.clear();
    f->close();
    EXPECT_TRUE(p.settings.contains(QStringLiteral("Settings/LastFolder")));
    EXPECT_EQ(p.settings.value(QStringLiteral("Settings/LastFolder")), QString());
}

TEST(MDIMain, ExitEndsAtOnceWithoutSavingTheFolder) {
    ScriptedPlatform p;
    p.settings.insert(QStringLiteral("Settings/LastFolder"), QStringLiteral("/old"));
    Frame f(p);
    Module1::LastFolder = QStringLiteral("/data/new");
    f->mnuExit->trigger();
    EXPECT_EQ(f.quits, 1);
    EXPECT_EQ(p.settings.value(QStringLiteral("Settings/LastFolder")), QStringLiteral("/old"));
}

TEST(MDIMain, CloseEntryToolbarGapsAndDisabledEntriesChangeNothing) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    Module1::LastFolder = QStringLiteral("/kept");
    f->mnuClose->trigger();
    f->mnuBSEIndia->trigger();
    f->mnuStockSplit->trigger();
    f->Toolbar1_ButtonClick(4);
    f->Toolbar1_ButtonClick(6);
    QApplication::processEvents();
    EXPECT_EQ(f.quits, 0);
    EXPECT_TRUE(f->isVisible());
    EXPECT_EQ(Module1::LastFolder, QStringLiteral("/kept"));
    EXPECT_TRUE(p.settings.isEmpty());
    EXPECT_TRUE(p.boxes.isEmpty());
    EXPECT_TRUE(p.openedAddresses.isEmpty());
    EXPECT_TRUE(f->MDIArea->subWindowList().isEmpty());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST(MDIMain, HelpEntriesOpenTheirPagesAndReturnAtOnce) {
    ScriptedPlatform p;
    Frame f(p);
    f->mnuContents->trigger();
    f->mnuUpdates->trigger();
    f->mnuYahooLookup->trigger();
    EXPECT_EQ(p.openedAddresses,
              (QStringList{WebLinks::HelpPage, WebLinks::ProductPage, WebLinks::YahooLookupPage}));
    EXPECT_TRUE(p.boxes.isEmpty());
    f->GoURL(QString());
    EXPECT_EQ(p.boxTexts(), QStringList{QStringLiteral("Could not open URL \n")});
}

TEST(MDIMain, ToolbarHasSevenPositions) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    ASSERT_EQ(f->Toolbar1Buttons.size(), 7);
    for (int i = 0; i < 7; ++i) {
        QAction* a = f->Toolbar1Buttons[i];
        EXPECT_EQ(f->Toolbar1->actions().value(i), a) << i + 1;
        EXPECT_EQ(a->isSeparator(), i == 3 || i == 5) << i + 1;
        if (!a->isSeparator()) {
            EXPECT_FALSE(a->icon().isNull()) << i + 1;
        }
    }
    // Position 7 is Help Contents.
    f->Toolbar1Buttons[6]->trigger();
    EXPECT_EQ(p.openedAddresses, QStringList{WebLinks::HelpPage});
}

TEST(MDIMain, ToolbarPositionFivePopsUpTheDownloadMenuAtTheMouse) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    QCursor::setPos(f->mapToGlobal(QPoint(80, 60)));
    f->Toolbar1Buttons[4]->trigger();
    EXPECT_TRUE(f->mnuDownload->isVisible());
    EXPECT_EQ(QApplication::activePopupWidget(), f->mnuDownload);
    f->mnuDownload->close();
    EXPECT_TRUE(p.openedAddresses.isEmpty());
}

TEST(MDIMain, WindowMenuListsTheChildWindowsAndActivatesThePickedOne) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    QApplication::setActiveWindow(f.window.get());
    auto child = [](const QString& caption) {
        auto* w = new QWidget;
        w->setWindowTitle(caption);
        w->resize(200, 120);
        ShowChildWindow(w);
        return w;
    };
    child(QStringLiteral("DataSheet of INFOSYS"));
    child(QStringLiteral("DataSheet of INFOSYS"));   // the same security twice: two windows
    child(QStringLiteral("Chart of TCS"));
    ASSERT_EQ(f->MDIArea->subWindowList().size(), 3);

    f->refreshWindowList();
    QList<QAction*> entries = f->mnuWindow->actions();
    ASSERT_EQ(entries.size(), 3);
    EXPECT_EQ(entries[0]->text(), QStringLiteral("DataSheet of INFOSYS"));
    EXPECT_EQ(entries[1]->text(), QStringLiteral("DataSheet of INFOSYS"));
    EXPECT_EQ(entries[2]->text(), QStringLiteral("Chart of TCS"));
    EXPECT_FALSE(entries[0]->isChecked());
    EXPECT_TRUE(entries[2]->isChecked());   // the last one opened is active

    entries[0]->trigger();
    EXPECT_EQ(f->MDIArea->activeSubWindow(), f->MDIArea->subWindowList(QMdiArea::CreationOrder)[0]);
    f->refreshWindowList();
    entries = f->mnuWindow->actions();
    EXPECT_TRUE(entries[0]->isChecked());
    EXPECT_FALSE(entries[2]->isChecked());

    // A child keeps the size its screen gave it.
    for (QMdiSubWindow* sub : f->MDIArea->subWindowList()) {
        EXPECT_GE(sub->widget()->width(), 200);
        EXPECT_GE(sub->widget()->height(), 120);
    }

    // A closed window leaves the list.
    f->MDIArea->subWindowList(QMdiArea::CreationOrder)[1]->close();
    QApplication::processEvents();
    f->refreshWindowList();
    EXPECT_EQ(f->mnuWindow->actions().size(), 2);
}

TEST(MDIMain, StatusBarShowsTitleKeysAndTodaysDate) {
    ScriptedPlatform p;
    p.todayDate = QDate(2026, 11, 3);
    {
        LocaleGuard l("en_GB");
        Frame f(p);
        EXPECT_TRUE(f->Panel1->text().startsWith(QStringLiteral("Brindlemark v6")));
        EXPECT_TRUE(f->Panel1->text().contains(WebLinks::MakerLine));
        EXPECT_EQ(f->Panel2->text(), QStringLiteral("INS"));
        EXPECT_EQ(f->Panel3->text(), QStringLiteral("CAPS"));
        EXPECT_EQ(f->Panel4->text(), QStringLiteral("03/11/2026"));
    }
    {
        LocaleGuard l("en_US");
        Frame f(p);
        EXPECT_EQ(f->Panel4->text(), QStringLiteral("11/3/26"));
    }
}

TEST(MDIMain, KeyPanelsFollowInsertAndCapsLock) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    auto* target = new QWidget(f->MDIArea);   // a widget that leaves keys to its parents
    EXPECT_FALSE(f->Panel2->isEnabled());
    EXPECT_FALSE(f->Panel3->isEnabled());

    QTest::keyClick(target, Qt::Key_Insert);
    EXPECT_TRUE(f->insertOn());
    EXPECT_TRUE(f->Panel2->isEnabled());
    QTest::keyClick(target, Qt::Key_Insert);
    EXPECT_FALSE(f->Panel2->isEnabled());

    QTest::keyClick(target, Qt::Key_CapsLock);
    EXPECT_TRUE(f->Panel3->isEnabled());
    QTest::keyClick(target, Qt::Key_A, Qt::NoModifier);   // a small letter without Shift: caps is off
    EXPECT_FALSE(f->Panel3->isEnabled());
    QTest::keyClick(target, 'A', Qt::NoModifier);         // a capital without Shift: caps is on
    EXPECT_TRUE(f->capsOn());
    QTest::keyClick(target, 'a', Qt::ShiftModifier);      // a small letter with Shift: still on
    EXPECT_TRUE(f->capsOn());
    QTest::keyClick(target, 'A', Qt::ShiftModifier);      // a capital with Shift: off
    EXPECT_FALSE(f->Panel3->isEnabled());
}

// --- About ---

// The pointer moving over a widget, as the window system reports it.
void moveOver(QWidget* widget, QPoint pos) {
    QMouseEvent move(QEvent::MouseMove, pos, widget->mapToGlobal(pos), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
}

TEST(frmAbout, ShowsNameVersionMakerAndLinks) {
    ScriptedPlatform p;
    frmAbout about;
    EXPECT_EQ(about.windowTitle(), QStringLiteral("About"));
    EXPECT_EQ(child<QLabel>(&about, "Label1")->text(), QStringLiteral("Brindlemark for Metastock"));
    EXPECT_EQ(child<QLabel>(&about, "Label2")->text(), QStringLiteral("Version 6  Revision 01"));
    EXPECT_EQ(child<QLabel>(&about, "Label3")->text(), WebLinks::MakerLine);
    EXPECT_EQ(child<QLabel>(&about, "Label4")->text(), WebLinks::MakerHomePage);
    EXPECT_EQ(child<QLabel>(&about, "Label6")->text(), WebLinks::MakerEmail);
    EXPECT_EQ(child<QPushButton>(&about, "Command1")->text(), QStringLiteral("OK"));
    EXPECT_FALSE(child<QLabel>(&about, "Image1")->pixmap().isNull());
    EXPECT_NE(child<QWidget>(&about, "Picture1"), nullptr);
}

TEST(frmAbout, LinkLightsUpUnderThePointerAndOpensTheMakersPage) {
    ScriptedPlatform p;
    frmAbout about;
    about.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&about));
    auto colour = [&] { return about.Label4->palette().color(QPalette::WindowText); };
    EXPECT_EQ(colour(), QColor(0, 0, 255));
    moveOver(about.Label4, QPoint(5, 5));
    EXPECT_EQ(colour(), QColor(255, 0, 0));
    moveOver(about.Picture1, QPoint(2, 2));
    EXPECT_EQ(colour(), QColor(0, 0, 255));

    QTest::mouseClick(about.Label4, Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(p.openedAddresses, QStringList{WebLinks::MakerHomePage});
    EXPECT_TRUE(about.isVisible());   // the box stays up

    // No failure handling: a failing call shows nothing.
    p.openAddressFails = true;
    about.Label4_Click();
    EXPECT_TRUE(p.boxes.isEmpty());
}

TEST(frmAbout, EscapeAndOkCloseTheBoxOtherKeysDoNot) {
    ScriptedPlatform p;
    {
        frmAbout about;
        about.show();
        QTest::keyClick(&about, Qt::Key_X);
        QTest::keyClick(&about, Qt::Key_Space);
        EXPECT_TRUE(about.isVisible());
        QTest::keyClick(&about, Qt::Key_Escape);
        EXPECT_FALSE(about.isVisible());
        EXPECT_EQ(about.result(), QDialog::Accepted);
    }
    {
        frmAbout about;
        about.show();
        QTest::mouseClick(about.Command1, Qt::LeftButton);
        EXPECT_FALSE(about.isVisible());
    }
}

TEST(frmAbout, IsCentredOnTheScreenWhenItLoads) {
    ScriptedPlatform p;
    frmAbout about;
    about.show();
    const QRect screen = about.screen()->geometry();
    const QRect frame = about.frameGeometry();   // the window measured with its frame
    EXPECT_NEAR(frame.x(), screen.x() + (screen.width() - frame.width()) / 2, 1);
    EXPECT_NEAR(frame.y(), screen.y() + (screen.height() - frame.height()) / 2, 1);
}

TEST(MDIMain, AboutEntryShowsTheBoxModally) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    QString caption, version;
    onNextModal([&](QWidget* box) {
        caption = box->windowTitle();
        version = child<QLabel>(box, "Label2")->text();
        QTest::keyClick(box, Qt::Key_Escape);
    });
    f->mnuAbout->trigger();
    EXPECT_EQ(caption, QStringLiteral("About"));
    EXPECT_EQ(version, QStringLiteral("Version 6  Revision 01"));
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

} // namespace

// Each entry that opens a screen opens the right one, modally; Cancel or Close leaves nothing open.
TEST(MDIMain, MenuEntriesAndToolbarOpenTheirScreens) {
    struct Case {
        const char* what;
        std::function<void(MDIMain*)> click;
        QString caption;
        bool chart;   // for Open Security: the value of tChart
    };
    const std::vector<Case> cases = {
        {"mnuNewSymbol", [](MDIMain* m) { m->mnuNewSymbol->trigger(); }, "Create New Symbols", false},
        {"toolbar 1", [](MDIMain* m) { m->Toolbar1_ButtonClick(1); }, "Create New Symbols", false},
        {"mnuOpen", [](MDIMain* m) { m->mnuOpen->trigger(); }, "Open Security", false},
        {"toolbar 2", [](MDIMain* m) { m->Toolbar1_ButtonClick(2); }, "Open Security", false},
        {"mnuOpenChart", [](MDIMain* m) { m->mnuOpenChart->trigger(); }, "Open Security", true},
        {"toolbar 3", [](MDIMain* m) { m->Toolbar1_ButtonClick(3); }, "Open Security", true},
        {"mnuYahooDownloads", [](MDIMain* m) { m->mnuYahooDownloads->trigger(); }, "Downloader", false},
        {"mnuSymbolLookup", [](MDIMain* m) { m->mnuSymbolLookup->trigger(); }, "Symbol Lookup", false},
    };
    for (const Case& c : cases) {
        ScriptedPlatform p;
        Frame f(p);
        f->show();
        QString seen;
        bool chart = false;
        onNextModal([&](QWidget* dialog) {
            seen = dialog->windowTitle();
            chart = dialog->property("tChart").toBool();
            if (auto* open = qobject_cast<frmOpen*>(dialog))
                chart = open->tChart;
            dialog->close();
        });
        c.click(f.window.get());
        EXPECT_EQ(seen, c.caption) << c.what;
        EXPECT_EQ(chart, c.chart) << c.what;
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << c.what;
        EXPECT_TRUE(f->MDIArea->subWindowList().isEmpty()) << c.what;
    }
}
