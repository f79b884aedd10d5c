// The main window: menus, toolbar, status bar, window list, start and end, and the About box.
#include "frame/ProgramState.h"
#include "frame/WebLinks.h"
#include "frame/main/MainWindow.h"
#include "frame/ui/ChildWindows.h"
#include "frame/ui/AboutDialog.h"
#include "catalogue/ui/OpenSecurityDialog.h"
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
#include <QTest>
#include <QToolBar>
#include <QWindow>

#include <gtest/gtest.h>

#include <memory>

namespace {

// A main window; the scripted platform records its end instead of ending the test program.
struct Frame {
    explicit Frame(ScriptedPlatform& platform) : window(std::make_unique<MainWindow>()), platform_(platform) {}
    MainWindow* operator->() { return window.get(); }
    int quits() const { return platform_.quits; }
    std::unique_ptr<MainWindow> window;
    ScriptedPlatform& platform_;
};

// A menu caption as the user reads it: "&&" shows "&", a single "&" marks the next letter.
QString seen(const QString& caption) {
    QString out;
    for (qsizetype i = 0; i < caption.size(); ++i) {
        if (caption[i] == u'&' && i + 1 < caption.size())
            ++i;
        out += caption[i];
    }
    return out;
}

// One menu entry as "name|caption|short cut", indented by its depth; separators show "-".
void walk(QMenu* menu, int depth, QStringList& out) {
    for (QAction* a : menu->actions()) {
        out << QString(depth * 2, u' ') + a->objectName() + u'|' + (a->isSeparator() ? QStringLiteral("-") : a->text())
                   + u'|' + a->shortcut().toString(QKeySequence::PortableText) + (a->isEnabled() ? "" : "|disabled");
        if (a->menu())
            walk(a->menu(), depth + 1, out);
    }
}

TEST(MainWindow, MenuTreeAsTheUserSeesIt) {
    ScriptedPlatform p;
    Frame f(p);
    QStringList got;
    for (QAction* top : f->menuBar()->actions()) {
        got << top->objectName() + u'|' + top->text() + u'|';
        walk(top->menu(), 1, got);
    }
    const QStringList expected = {
        "fileMenu|   &File   |",                   "  newSymbolAction|Create New Symbol|Ctrl+N",
        "  openDataAction|Open Data|Ctrl+O",              "  openChartAction|Open Chart|",
        "  fileSeparator1|-|",                              "  closeAction|&Close|",
        "  fileSeparator2|-|",                              "  exitAction|&Exit|Ctrl+Q",
        "toolsMenu|   &Tools   |",                  "  downloadMenu|Download|",
        "    worldExchangesAction|World Exchanges|",  "    downloadSeparator1|-|",
        "    nseIndiaAction|NSE India|",              "    nseIndexAction|NSE India Index|",
        "    downloadSeparator2|-|",                            "    bseIndiaAction|BSE India (Not Available)||disabled",
        "  toolsSeparator1|-|",                              "  adjustSymbolAction|Adjust Symbol|",
        "  adjustDataAction|Adjust Data|",            "  toolsSeparator2|-|",
        "  stockSplitAction|Adjust for Stock Split (Available Later)||disabled",
        "  toolsSeparator3|-|",                              "  convertAction|&Convert|",
        "  toolsSeparator4|-|",                              "  symbolLookupAction|Symbol Lookup|",
        "windowMenu|   &Window   |",                "helpMenu|   &Help   |",
        "  helpContentsAction|Help Contents|F1",          "  checkUpdatesAction|Check for Updates|Ctrl+U",
        "  yahooLookupAction|Yahoo Symbol Lookup|Ctrl+Y", "  helpSeparator|-|",
        "  aboutAction|About|F2",
    };
    EXPECT_EQ(got, expected);
    EXPECT_EQ(f->windowTitle(), QStringLiteral("Brindlemark v6"));
}

TEST(MainWindow, StartsWithTheSymbolListAndTheRememberedFolderAndNoChildWindow) {
    for (const bool firstRun : {true, false}) {
        ScriptedPlatform p;
        if (!firstRun) {
            p.settings.insert(QStringLiteral("Settings/LastFolder"), QStringLiteral("/data/nse"));
            writeTextFile(QDir(p.programFolder()).filePath("symbols.csv"), "NSE,INFY.NS,Infosys Ltd\nDow,KO,Coca-Cola\n");
        }
        Frame f(p);
        EXPECT_EQ(sharedState().LastFolder, firstRun ? QString() : QStringLiteral("/data/nse"));
        EXPECT_EQ(sharedState().SymbolCount, firstRun ? 0 : 2);
        EXPECT_TRUE(f->childArea->subWindowList().isEmpty());
        EXPECT_EQ(ChildWindowArea(), f->childArea);
        EXPECT_TRUE(p.boxes.isEmpty());
    }
}

// The frame's close button saves LastFolder (also when empty) and ends; Exit ends without saving.
TEST(MainWindow, CloseSavesLastFolderAndExitDoesNot) {
    const struct { bool exit; const char* folder; const char* saved; } cases[] = {
        {false, "/data/new", "/data/new"}, {false, "", ""}, {true, "/data/new", "/old"}};
    for (const auto& c : cases) {
        ScriptedPlatform p;
        p.settings.insert(QStringLiteral("Settings/LastFolder"), QStringLiteral("/old"));
        Frame f(p);
        f->show();
        sharedState().LastFolder = QString::fromLatin1(c.folder);
        if (c.exit)
            f->exitAction->trigger();
        else
            EXPECT_TRUE(f->close());
        EXPECT_EQ(p.settings.value(QStringLiteral("Settings/LastFolder")), QString::fromLatin1(c.saved)) << c.folder;
        EXPECT_EQ(f.quits(), 1);
        EXPECT_TRUE(p.boxes.isEmpty());   // no question is asked
    }
}

TEST(MainWindow, CloseEntryToolbarGapsAndDisabledEntriesChangeNothing) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    sharedState().LastFolder = QStringLiteral("/kept");
    f->closeAction->trigger();
    f->bseIndiaAction->trigger();
    f->stockSplitAction->trigger();
    f->toolbarButtonClicked(4);
    f->toolbarButtonClicked(6);
    QApplication::processEvents();
    EXPECT_EQ(f.quits(), 0);
    EXPECT_TRUE(f->isVisible());
    EXPECT_EQ(sharedState().LastFolder, QStringLiteral("/kept"));
    EXPECT_TRUE(p.settings.isEmpty() && p.boxes.isEmpty() && p.openedAddresses.isEmpty());
    EXPECT_TRUE(f->childArea->subWindowList().isEmpty());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

// Help entries and toolbar 7 open their pages and return at once; toolbar 5 pops up Download.
TEST(MainWindow, HelpEntriesAndToolbarDispatch) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    ASSERT_EQ(f->toolbarButtons.size(), 7);
    for (int i = 0; i < 7; ++i) {
        QAction* a = f->toolbarButtons[i];
        EXPECT_EQ(f->toolbar->actions().value(i), a) << i + 1;
        EXPECT_EQ(a->isSeparator(), i == 3 || i == 5) << i + 1;
        EXPECT_EQ(a->icon().isNull(), a->isSeparator()) << i + 1;
    }
    f->helpContentsAction->trigger();
    f->checkUpdatesAction->trigger();
    f->yahooLookupAction->trigger();
    f->toolbarButtons[6]->trigger();
    EXPECT_EQ(p.openedAddresses, (QStringList{WebLinks::HelpPage, WebLinks::ProductPage,
                                              WebLinks::YahooLookupPage, WebLinks::HelpPage}));
    QCursor::setPos(f->mapToGlobal(QPoint(80, 60)));
    f->toolbarButtons[4]->trigger();
    EXPECT_EQ(QApplication::activePopupWidget(), f->downloadMenu);
    f->downloadMenu->close();
    EXPECT_EQ(p.openedAddresses.size(), 4);
    EXPECT_TRUE(p.boxes.isEmpty());
}

TEST(MainWindow, WindowMenuListsTheChildWindowsAndActivatesThePickedOne) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    QApplication::setActiveWindow(f.window.get());
    // The same security twice gives two windows with the same caption; an "&" is part of a caption.
    for (const char* caption : {"DataSheet of INFOSYS", "DataSheet of INFOSYS", "Chart of M&M.NS"}) {
        auto* w = new QWidget;
        w->setWindowTitle(QString::fromLatin1(caption));
        w->resize(200, 120);
        ShowChildWindow(w);
    }
    const auto listed = [&] {
        f->refreshWindowList();
        QStringList texts;
        for (QAction* a : f->windowMenu->actions())
            texts << seen(a->text()) + (a->isChecked() ? QStringLiteral(" *") : QString());
        return texts;
    };
    EXPECT_EQ(listed(), (QStringList{"DataSheet of INFOSYS", "DataSheet of INFOSYS", "Chart of M&M.NS *"}));
    f->windowMenu->actions()[0]->trigger();
    EXPECT_EQ(listed(), (QStringList{"DataSheet of INFOSYS *", "DataSheet of INFOSYS", "Chart of M&M.NS"}));
    for (QMdiSubWindow* sub : f->childArea->subWindowList())   // a child keeps the size its screen gave it
        EXPECT_GE(sub->widget()->size().width(), 200);
    f->childArea->subWindowList(QMdiArea::CreationOrder)[1]->close();
    QApplication::processEvents();
    EXPECT_EQ(listed().size(), 2);   // a closed window leaves the list
}

// Child windows of a sheet's size open wholly inside the area, each one cascaded from the one
// before it, starting again at the corner once the next step would reach past the area.
TEST(MainWindow, ChildWindowsOpenInsideTheAreaCascaded) {
    ScriptedPlatform p;
    Frame f(p);
    f->resize(1024, 720);
    f->show();
    QApplication::processEvents();
    const QRect area = f->childArea->viewport()->rect();
    QList<QPoint> places;
    for (const QSize size : {QSize(720, 520), QSize(720, 520), QSize(720, 520), QSize(720, 520), QSize(720, 520),
                             QSize(720, 520), QSize(720, 520), QSize(2000, 1500)}) {
        auto* w = new QWidget;
        w->resize(size);
        ShowChildWindow(w);
        QApplication::processEvents();
        QMdiSubWindow* sub = f->childArea->subWindowList(QMdiArea::CreationOrder).last();
        EXPECT_TRUE(area.contains(sub->geometry())) << places.size() << ": " << sub->geometry().x() << ','
                                                    << sub->geometry().y() << ' ' << sub->width() << 'x' << sub->height();
        places << sub->pos();
    }
    EXPECT_EQ(places[0], QPoint(0, 0));
    const int step = places[1].x();
    EXPECT_GT(step, 0);
    EXPECT_EQ(places[1], QPoint(step, step));
    for (qsizetype i = 1; i < places.size(); ++i)
        EXPECT_TRUE(places[i] == places[i - 1] + QPoint(step, step) || places[i] == QPoint(0, 0)) << i;
    EXPECT_GE(places.count(QPoint(0, 0)), 3) << "the cascade starts again";
    EXPECT_EQ(places.last(), QPoint(0, 0)) << "a window as large as the area stands at its corner";
}

TEST(MainWindow, StatusBarShowsTitleKeysAndTodaysDate) {
    ScriptedPlatform p;
    p.todayDate = QDate(2026, 11, 3);
    for (const auto& [locale, date] : {std::pair{"en_GB", "03/11/2026"}, std::pair{"en_US", "11/3/2026"}}) {
        LocaleGuard l(QString::fromLatin1(locale));
        Frame f(p);
        EXPECT_EQ(f->titlePanel->text(), QStringLiteral("Brindlemark v6 - ") + WebLinks::MakerLine);
        EXPECT_EQ(f->insertPanel->text(), QStringLiteral("INS"));
        EXPECT_EQ(f->capsPanel->text(), QStringLiteral("CAPS"));
        EXPECT_EQ(f->datePanel->text(), QString::fromLatin1(date));
    }
}

TEST(MainWindow, KeyPanelsFollowInsertAndCapsLock) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    QApplication::setActiveWindow(f.window.get());
    QWindow* target = f->windowHandle();   // keys come in through the window, as the user's do
    ASSERT_NE(target, nullptr);
    EXPECT_FALSE(f->insertPanel->isEnabled() || f->capsPanel->isEnabled());
    const struct { int key; Qt::KeyboardModifiers modifiers; bool ins, caps; } presses[] = {  // key < 128: a letter
        {Qt::Key_Insert, {}, true, false}, {Qt::Key_Insert, {}, false, false}, {Qt::Key_Insert, {}, true, false},
        {Qt::Key_Insert, {}, false, false}, {Qt::Key_CapsLock, {}, false, true}, {Qt::Key_CapsLock, {}, false, false},
        {Qt::Key_CapsLock, {}, false, true},
        {'a', {}, false, false},                  // a small letter without Shift: caps is off
        {'A', {}, false, true},                   // a capital without Shift: caps is on
        {'A', Qt::ShiftModifier, false, false}};  // a capital with Shift: off
    for (const auto& k : presses) {
        if (k.key < 128)
            QTest::keyClick(target, char(k.key), k.modifiers);
        else
            QTest::keyClick(target, Qt::Key(k.key), k.modifiers);
        EXPECT_EQ(f->insertPanel->isEnabled(), k.ins) << k.key;
        EXPECT_EQ(f->capsPanel->isEnabled(), k.caps) << k.key;
    }
}

// --- About ---

TEST(AboutDialog, ShowsNameVersionMakerAndIsCentredOnce) {
    ScriptedPlatform p;
    AboutDialog about;
    EXPECT_EQ(about.windowTitle(), QStringLiteral("About"));
    const std::pair<const char*, QString> labels[] = {
        {"productLabel", "Brindlemark for Metastock"}, {"versionLabel", "Version 6  Revision 01"},
        {"makerLabel", WebLinks::MakerLine}, {"webLink", WebLinks::MakerHomePage}, {"mailLabel", WebLinks::MakerEmail}};
    for (const auto& [name, text] : labels)
        EXPECT_EQ(child<QLabel>(&about, name)->text(), text) << name;
    EXPECT_EQ(child<QPushButton>(&about, "okButton")->text(), QStringLiteral("OK"));
    EXPECT_FALSE(child<QLabel>(&about, "iconLabel")->pixmap().isNull());
    about.show();
    const QRect screen = about.screen()->geometry();
    const QRect frame = about.frameGeometry();   // the window measured with its frame
    EXPECT_NEAR(frame.x(), screen.x() + (screen.width() - frame.width()) / 2, 1);
    EXPECT_NEAR(frame.y(), screen.y() + (screen.height() - frame.height()) / 2, 1);
}

TEST(AboutDialog, LinkLightsUpUnderThePointerAndOpensTheMakersPage) {
    ScriptedPlatform p;
    AboutDialog about;
    about.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&about));
    const auto moveOver = [&about](QWidget* widget) {   // the pointer moving over a widget
        QMouseEvent move(QEvent::MouseMove, QPointF(3, 3), widget->mapToGlobal(QPointF(3, 3)), Qt::NoButton,
                         Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(widget, &move);
        return about.webLink->palette().color(QPalette::WindowText);
    };
    EXPECT_EQ(about.webLink->palette().color(QPalette::WindowText), QColor(0, 0, 255));
    EXPECT_EQ(moveOver(about.webLink), QColor(255, 0, 0));
    EXPECT_EQ(moveOver(about.backPanel), QColor(0, 0, 255));

    QTest::mouseClick(about.webLink, Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(p.openedAddresses, QStringList{WebLinks::MakerHomePage});
    EXPECT_TRUE(about.isVisible());   // the box stays up
    p.openAddressFails = true;        // no failure handling: a failing call shows nothing
    about.openWebLink();
    EXPECT_TRUE(p.boxes.isEmpty());
}

// aboutAction shows the box modally; Escape closes it as OK does, other keys do not.
TEST(MainWindow, AboutEntryShowsTheBoxModallyAndEscapeOrOkClosesIt) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    for (const bool escape : {true, false}) {
        QString caption;
        bool stayedUp = false;
        onNextModal([&](QWidget* box) {
            caption = box->windowTitle();
            QTest::keyClick(box, Qt::Key_X);
            stayedUp = box->isVisible();
            if (escape)
                QTest::keyClick(box, Qt::Key_Escape);
            else
                QTest::mouseClick(child<QPushButton>(box, "okButton"), Qt::LeftButton);
        });
        f->aboutAction->trigger();
        EXPECT_EQ(caption, QStringLiteral("About"));
        EXPECT_TRUE(stayedUp);
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    }
}

} // namespace

// Each entry that opens a screen opens the right one, modally; Close leaves nothing open.
TEST(MainWindow, MenuEntriesAndToolbarOpenTheirScreens) {
    const struct { const char* entry; int toolbar; const char* caption; bool chart; } cases[] = {
        {"newSymbolAction", 1, "Create New Symbols", false}, {"openDataAction", 2, "Open Security", false},
        {"openChartAction", 3, "Open Security", true},       {"worldExchangesAction", 0, "Downloader", false},
        {"symbolLookupAction", 0, "Symbol Lookup", false},
        {"nseIndiaAction", 0, "NSE Downloader", false}};
    for (const auto& c : cases) {
        for (const bool viaToolbar : {false, true}) {
            if (viaToolbar && c.toolbar == 0)
                continue;
            ScriptedPlatform p;
            Frame f(p);
            f->show();
            QString seen;
            bool chart = false;
            onNextModal([&](QWidget* dialog) {
                seen = dialog->windowTitle();
                if (auto* open = qobject_cast<OpenSecurityDialog*>(dialog))
                    chart = open->opensChart;
                dialog->close();
            });
            if (viaToolbar)
                f->toolbarButtonClicked(c.toolbar);
            else
                f->findChild<QAction*>(QString::fromLatin1(c.entry))->trigger();
            const std::string what = viaToolbar ? "toolbar " + std::to_string(c.toolbar) : c.entry;
            EXPECT_EQ(seen, QString::fromLatin1(c.caption)) << what;
            EXPECT_EQ(chart, c.chart) << what;
            EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << what;
            EXPECT_TRUE(f->childArea->subWindowList().isEmpty()) << what;
        }
    }
}
