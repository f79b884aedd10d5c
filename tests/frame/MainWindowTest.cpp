// The main window: menus, toolbar, status bar, window list, start and end, and the About box.
#include "frame/ProgramState.h"
#include "frame/WebLinks.h"
#include "frame/main/MainWindow.h"
#include "frame/main/ProgramStart.h"
#include "frame/ui/ProgramIcon.h"
#include "store/ui/ReadProgressWindow.h"
#include "frame/ui/ChildWindows.h"
#include "frame/ui/AboutDialog.h"
#include "catalogue/ui/OpenSecurityDialog.h"
#include "support/Modal.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QToolBar>
#include <QWindow>

#include <gtest/gtest.h>

namespace {

// A menu entry as "name|caption|short cut", indented by its depth; separators show "-".
void walk(QMenu* menu, int depth, QStringList& out) {
    for (QAction* a : menu->actions()) {
        out << QString(depth * 2, u' ') + a->objectName() + u'|' + (a->isSeparator() ? QStringLiteral("-") : a->text()) + u'|' +
                   a->shortcut().toString(QKeySequence::PortableText) + (a->isEnabled() ? "" : "|disabled");
        if (a->menu())
            walk(a->menu(), depth + 1, out);
    }
}

TEST(MainWindow, MenuTreeAsTheUserSeesIt) {
    ScriptedPlatform p;
    MainWindow f;
    QStringList got;
    for (QAction* top : f.menuBar()->actions()) {
        got << top->objectName() + u'|' + top->text() + u'|';
        walk(top->menu(), 1, got);
    }
    EXPECT_EQ(got, (QStringList{
        "fileMenu|   &File   |", "  newSymbolAction|Create New Symbol|Ctrl+N", "  openDataAction|Open Data|Ctrl+O", "  openChartAction|Open Chart|",
        "  fileSeparator1|-|", "  closeAction|&Close|", "  fileSeparator2|-|", "  exitAction|&Exit|Ctrl+Q",
        "toolsMenu|   &Tools   |", "  downloadMenu|Download|", "    worldExchangesAction|World Exchanges|", "    downloadSeparator1|-|",
        "    nseIndiaAction|NSE India|", "    nseIndexAction|NSE India Index|", "    downloadSeparator2|-|",
        "    bseIndiaAction|BSE India (Not Available)||disabled", "  toolsSeparator1|-|", "  adjustSymbolAction|Adjust Symbol|",
        "  adjustDataAction|Adjust Data|", "  toolsSeparator2|-|", "  stockSplitAction|Adjust for Stock Split (Available Later)||disabled",
        "  toolsSeparator3|-|", "  convertAction|&Convert|", "  toolsSeparator4|-|", "  symbolLookupAction|Symbol Lookup|",
        "windowMenu|   &Window   |", "helpMenu|   &Help   |", "  helpContentsAction|Help Contents|F1", "  checkUpdatesAction|Check for Updates|Ctrl+U",
        "  yahooLookupAction|Yahoo Symbol Lookup|Ctrl+Y", "  helpSeparator|-|", "  aboutAction|About|F2"}));
    EXPECT_EQ(f.windowTitle(), QStringLiteral("Brindlemark v6"));
}

// What main() does before it waits: the program named, its icon, long reads with their window,
// the main window shown with the symbol list and the remembered folder read and no child window;
// and all of it taken back at the end.
TEST(MainWindow, TheProgramStartsShownWithItsNameAndIcon) {
    ScriptedPlatform p;
    p.settings.insert(QStringLiteral("Settings/LastFolder"), QStringLiteral("/data/nse"));
    writeTextFile(QDir(p.programFolder()).filePath("symbols.csv"), "NSE,INFY.NS,Infosys Ltd\nDow,KO,Coca-Cola\n");
    {
        const auto frame = startProgram(p);
        EXPECT_TRUE(frame->isVisible());
        EXPECT_EQ(sharedState().LastFolder, QStringLiteral("/data/nse"));
        EXPECT_EQ(sharedState().SymbolCount, 2);
        EXPECT_TRUE(frame->childArea->subWindowList().isEmpty() && p.boxes.isEmpty());
        EXPECT_EQ(ChildWindowArea(), frame->childArea);
        EXPECT_EQ(QApplication::applicationName(), "Brindlemark v6");
        EXPECT_EQ(QApplication::organizationName(), "Brindlemark");   // where the settings live
        EXPECT_EQ(QApplication::windowIcon().pixmap(48).toImage(), ProgramIcon().pixmap(48).toImage());
        EXPECT_NE(dynamic_cast<ReadProgressWindow*>(ReadProgress::create().get()), nullptr);
    }
    endProgram();
    EXPECT_EQ(dynamic_cast<ReadProgressWindow*>(ReadProgress::create().get()), nullptr);
    QApplication::setApplicationName(QStringLiteral("Brindlemark v6 tests"));
    QApplication::setOrganizationName(QString());
    QApplication::setWindowIcon(QIcon());
}

// The frame's close button saves LastFolder (also when empty) and ends; Exit ends without saving;
// Close, the toolbar's gaps and the disabled entries change nothing.
TEST(MainWindow, CloseSavesLastFolderAndExitDoesNot) {
    const struct { const char* how; const char* folder; const char* saved; int quits; } cases[] = {
        {"close", "/data/new", "/data/new", 1}, {"close", "", "", 1}, {"exit", "/data/new", "/old", 1}, {"others", "/kept", "/old", 0}};
    for (const auto& c : cases) {
        ScriptedPlatform p;
        p.settings.insert(QStringLiteral("Settings/LastFolder"), QStringLiteral("/old"));
        MainWindow f;
        f.show();
        sharedState().LastFolder = QString::fromLatin1(c.folder);
        if (c.how == std::string("close")) {
            EXPECT_TRUE(f.close());
        } else if (c.how == std::string("exit")) {
            f.exitAction->trigger();
        } else {
            for (QAction* a : {f.closeAction, f.bseIndiaAction, f.stockSplitAction})
                a->trigger();
            f.toolbarButtonClicked(4), f.toolbarButtonClicked(6);
            QApplication::processEvents();
            EXPECT_TRUE(f.isVisible() && p.openedAddresses.isEmpty() && f.childArea->subWindowList().isEmpty());
            EXPECT_TRUE(!QApplication::activeModalWidget() && !QApplication::activePopupWidget());
        }
        EXPECT_EQ(p.settings.value(QStringLiteral("Settings/LastFolder")), QString::fromLatin1(c.saved)) << c.how;
        EXPECT_EQ(p.quits, c.quits) << c.how;
        EXPECT_TRUE(p.boxes.isEmpty());  // no question is asked
    }
}

// Help entries and toolbar 7 open their pages and return at once; toolbar 5 pops up Download.
TEST(MainWindow, HelpEntriesAndToolbarDispatch) {
    ScriptedPlatform p;
    MainWindow f;
    f.show();
    ASSERT_EQ(f.toolbarButtons.size(), 7);
    for (int i = 0; i < 7; ++i) {
        QAction* a = f.toolbarButtons[i];
        EXPECT_TRUE(f.toolbar->actions().value(i) == a && a->isSeparator() == (i == 3 || i == 5) && a->icon().isNull() == a->isSeparator()) << i + 1;
    }
    for (QAction* a : {f.helpContentsAction, f.checkUpdatesAction, f.yahooLookupAction, f.toolbarButtons[6]})
        a->trigger();
    EXPECT_EQ(p.openedAddresses, (QStringList{WebLinks::HelpPage, WebLinks::ProductPage, WebLinks::YahooLookupPage, WebLinks::HelpPage}));
    QCursor::setPos(f.mapToGlobal(QPoint(80, 60)));
    f.toolbarButtons[4]->trigger();
    EXPECT_EQ(QApplication::activePopupWidget(), f.downloadMenu);
    f.downloadMenu->close();
    EXPECT_EQ(p.openedAddresses.size(), 4);
}

TEST(MainWindow, WindowMenuListsTheChildWindowsAndActivatesThePickedOne) {
    ScriptedPlatform p;
    MainWindow f;
    f.show();
    QApplication::setActiveWindow(&f);
    // The same security twice gives two windows with the same caption; an "&" is part of a caption.
    for (const char* caption : {"DataSheet of INFOSYS", "DataSheet of INFOSYS", "Chart of M&M.NS"}) {
        auto* w = new QWidget;
        w->setWindowTitle(QString::fromLatin1(caption));
        w->resize(200, 120);
        ShowChildWindow(w);
    }
    const auto listed = [&] {  // the entries as the user reads them: "&&" shows "&"
        f.refreshWindowList();
        QStringList texts;
        for (QAction* a : f.windowMenu->actions())
            texts << QString(a->text()).remove(QRegularExpression(QStringLiteral("&(?!&)"))).replace(QStringLiteral("&&"), QStringLiteral("&")) + (a->isChecked() ? " *" : "");
        return texts.join(u'|');
    };
    EXPECT_EQ(listed(), QStringLiteral("DataSheet of INFOSYS|DataSheet of INFOSYS|Chart of M&M.NS *"));
    f.windowMenu->actions()[0]->trigger();
    EXPECT_EQ(listed(), QStringLiteral("DataSheet of INFOSYS *|DataSheet of INFOSYS|Chart of M&M.NS"));
    for (QMdiSubWindow* sub : f.childArea->subWindowList())  // a child keeps the size its screen gave it
        EXPECT_GE(sub->widget()->size().width(), 200);
    f.childArea->subWindowList(QMdiArea::CreationOrder)[1]->close();
    QApplication::processEvents();
    EXPECT_EQ(listed().count(u'|'), 1);  // a closed window leaves the list
}

// Child windows of a sheet's size open wholly inside the area, each one cascaded from the one
// before it, starting again at the corner once the next step would reach past the area.
TEST(MainWindow, ChildWindowsOpenInsideTheAreaCascaded) {
    ScriptedPlatform p;
    MainWindow f;
    f.resize(1024, 720);
    f.show();
    QApplication::processEvents();
    const QRect area = f.childArea->viewport()->rect();
    QList<QPoint> places;
    for (int i = 0; i < 8; ++i) {
        auto* w = new QWidget;
        w->resize(i < 7 ? QSize(720, 520) : QSize(2000, 1500));
        ShowChildWindow(w);
        QApplication::processEvents();
        const QMdiSubWindow* sub = f.childArea->subWindowList(QMdiArea::CreationOrder).last();
        EXPECT_TRUE(area.contains(sub->geometry())) << i;
        places << sub->pos();
    }
    const int step = places[1].x();
    EXPECT_TRUE(places[0] == QPoint(0, 0) && step > 0 && places[1] == QPoint(step, step));
    for (qsizetype i = 1; i < places.size(); ++i)
        EXPECT_TRUE(places[i] == places[i - 1] + QPoint(step, step) || places[i] == QPoint(0, 0)) << i;
    EXPECT_GE(places.count(QPoint(0, 0)), 3) << "the cascade starts again";
    EXPECT_EQ(places.last(), QPoint(0, 0)) << "a window as large as the area stands at its corner";
    // A window dragged partly out of the area can be scrolled back into view.
    f.childArea->subWindowList().first()->move(area.width() - 100, area.height() - 100);
    QApplication::processEvents();
    EXPECT_TRUE(f.childArea->horizontalScrollBar()->isVisible() && f.childArea->verticalScrollBar()->isVisible());
}

TEST(MainWindow, StatusBarShowsTodaysDateAndTheKeysAndFollowsThem) {
    ScriptedPlatform p;
    p.todayDate = QDate(2026, 11, 3);
    LocaleGuard l(QStringLiteral("en_GB"));
    MainWindow f;
    EXPECT_EQ(f.datePanel->text(), QStringLiteral("03/11/2026"));
    // The date panel follows the calendar and the regional settings.
    p.todayDate = QDate(2026, 11, 4);
    QLocale::setDefault(QLocale(QStringLiteral("en_US")));
    QEvent localeChange(QEvent::LocaleChange);
    QApplication::sendEvent(&f, &localeChange);
    EXPECT_EQ(f.datePanel->text(), QStringLiteral("11/4/2026"));
    // The key panels follow Insert and Caps Lock, keys coming in through the window as the user's do.
    f.show();
    QApplication::setActiveWindow(&f);
    QWindow* target = f.windowHandle();
    ASSERT_NE(target, nullptr);
    EXPECT_FALSE(f.insertPanel->isEnabled() || f.capsPanel->isEnabled());
    const struct { int key; Qt::KeyboardModifiers modifiers; bool ins, caps; } presses[] = {  // key < 128: a letter
        {Qt::Key_Insert, {}, true, false}, {Qt::Key_Insert, {}, false, false}, {Qt::Key_CapsLock, {}, false, true}, {Qt::Key_CapsLock, {}, false, false},
        {Qt::Key_CapsLock, {}, false, true}, {'a', {}, false, false},  {'A', {}, false, true}, {'A', Qt::ShiftModifier, false, false}};  // a capital without Shift: caps is on
    for (const auto& k : presses) {
        if (k.key < 128)
            QTest::keyClick(target, char(k.key), k.modifiers);
        else
            QTest::keyClick(target, Qt::Key(k.key), k.modifiers);
        EXPECT_TRUE(f.insertPanel->isEnabled() == k.ins && f.capsPanel->isEnabled() == k.caps) << k.key;
    }
}

TEST(AboutDialog, ItsLinkLightsUpAndOpensTheMakersPage) {
    ScriptedPlatform p;
    AboutDialog about;
    EXPECT_FALSE(child<QLabel>(&about, "iconLabel")->pixmap().isNull());
    about.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&about));
    const QRect ok = child<QPushButton>(&about, "okButton")->geometry();   // under the texts, at the right
    EXPECT_TRUE(ok.top() > about.webLink->geometry().bottom() && ok.center().x() > about.width() / 2);
    const auto moveOver = [&about](QWidget* widget) {  // the colour of the link once the pointer moved over a widget
        QMouseEvent move(QEvent::MouseMove, QPointF(3, 3), widget->mapToGlobal(QPointF(3, 3)), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(widget, &move);
        return about.webLink->palette().color(QPalette::WindowText);
    };
    EXPECT_EQ(about.webLink->palette().color(QPalette::WindowText), QColor(0, 0, 255));
    EXPECT_EQ(moveOver(about.webLink), QColor(255, 0, 0));
    EXPECT_EQ(moveOver(about.backPanel), QColor(0, 0, 255));
    QTest::mouseClick(about.webLink, Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(p.openedAddresses, QStringList{WebLinks::MakerHomePage});
    EXPECT_TRUE(about.isVisible());  // the box stays up
    p.openAddressFails = true;       // a failing call shows nothing
    about.openWebLink();
    EXPECT_TRUE(p.boxes.isEmpty());
}

} // namespace

// Each entry that opens a screen opens the right one, modally, in the middle of the screen; Close
// leaves nothing open. About is modal, and Escape closes it as OK does, other keys do not.
TEST(MainWindow, MenuEntriesAndToolbarOpenTheirScreens) {
    const struct { const char* entry; int toolbar; const char* caption; bool chart; } cases[] = {
        {"newSymbolAction", 1, "Create New Symbols", false}, {"openDataAction", 2, "Open Security", false}, {"openChartAction", 3, "Open Security", true},
        {"worldExchangesAction", 0, "Downloader", false}, {"symbolLookupAction", 0, "Symbol Lookup", false}, {"nseIndiaAction", 0, "NSE Downloader", false},
        {"nseIndexAction", 0, "NSE Indices Download", false}, {"adjustSymbolAction", 0, "Adjust Security", false},
        {"adjustDataAction", 0, "Delete Data", false}, {"aboutAction", 0, "About", false}, {"aboutAction", -1, "About", false}};
    for (const auto& c : cases) {
        for (const bool viaToolbar : {false, true}) {
            if (viaToolbar && c.toolbar <= 0)
                continue;
            ScriptedPlatform p;
            MainWindow f;
            f.show();
            QString seen;
            bool chart = false, stayedUp = false;
            onNextModal([&](QWidget* dialog) {
                seen = dialog->windowTitle();
                EXPECT_LE((dialog->frameGeometry().center() - dialog->screen()->geometry().center()).manhattanLength(), 2) << c.entry;
                expectControlsLaidOut(dialog);
                if (auto* open = qobject_cast<OpenSecurityDialog*>(dialog))
                    chart = open->opensChart;
                QTest::keyClick(dialog, Qt::Key_X);
                stayedUp = dialog->isVisible();
                if (c.toolbar == -1)
                    QTest::mouseClick(child<QPushButton>(dialog, "okButton"), Qt::LeftButton);
                else
                    QTest::keyClick(dialog, Qt::Key_Escape);
            });
            if (viaToolbar)
                f.toolbarButtonClicked(c.toolbar);
            else
                f.findChild<QAction*>(QString::fromLatin1(c.entry))->trigger();
            const std::string what = viaToolbar ? "toolbar " + std::to_string(c.toolbar) : c.entry;
            EXPECT_TRUE(seen == QString::fromLatin1(c.caption) && chart == c.chart && stayedUp) << what << ": " << seen.toStdString();
            EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << what;
            EXPECT_TRUE(f.childArea->subWindowList().isEmpty()) << what;
        }
    }
    // Convert opens one child window, and nothing modal; a second pick brings it back as it was.
    ScriptedPlatform p;
    MainWindow f;
    f.show();
    QApplication::setActiveWindow(&f);
    f.findChild<QAction*>("convertAction")->trigger();
    auto* typed = f.childArea->subWindowList().value(0)->widget()->findChild<QLineEdit*>();
    typed->setText("abc");
    f.childArea->subWindowList()[0]->showMinimized();
    f.findChild<QAction*>("convertAction")->trigger();
    QStringList titles;
    for (QMdiSubWindow* sub : f.childArea->subWindowList())
        titles << sub->widget()->windowTitle();
    EXPECT_EQ(titles, QStringList({"Convert To CSV File"}));
    EXPECT_FALSE(f.childArea->subWindowList()[0]->isMinimized());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    // The menu's short cuts come before a text box's own: Ctrl+Y is the box's Redo under these key
    // bindings (Ctrl+U, which empties the line, under others).
    typed->setFocus();
    QTest::keyClick(typed, Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(p.openedAddresses, QStringList{WebLinks::YahooLookupPage});
    EXPECT_EQ(typed->text(), "abc");
    EXPECT_EQ(static_cast<QMainWindow&>(f).createPopupMenu(), nullptr) << "no menu that hides the toolbar";
}
