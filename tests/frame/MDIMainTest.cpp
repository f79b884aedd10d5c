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

// One menu entry as "name|caption|short cut", indented by its depth; separators show "-".
void walk(QMenu* menu, int depth, QStringList& out) {
    for (QAction* a : menu->actions()) {
        out << QString(depth * 2, u' ') + a->objectName() + u'|' + (a->isSeparator() ? QStringLiteral("-") : a->text())
                   + u'|' + a->shortcut().toString(QKeySequence::PortableText) + (a->isEnabled() ? "" : "|disabled");
        if (a->menu())
            walk(a->menu(), depth + 1, out);
    }
}

TEST(MDIMain, MenuTreeAsTheUserSeesIt) {
    ScriptedPlatform p;
    Frame f(p);
    QStringList got;
    for (QAction* top : f->menuBar()->actions()) {
        got << top->objectName() + u'|' + top->text() + u'|';
        walk(top->menu(), 1, got);
    }
    const QStringList expected = {
        "mnuFile|   &File   |",                   "  mnuNewSymbol|Create New Symbol|Ctrl+N",
        "  mnuOpen|Open Data|Ctrl+O",              "  mnuOpenChart|Open Chart|",
        "  mnub1|-|",                              "  mnuClose|&Close|",
        "  mnub2|-|",                              "  mnuExit|&Exit|Ctrl+Q",
        "mnuTools|   &Tools   |",                  "  mnuDownload|Download|",
        "    mnuYahooDownloads|World Exchanges|",  "    mnud2|-|",
        "    mnuNSEIndia|NSE India|",              "    mnuNSEIndex|NSE India Index|",
        "    mnud1|-|",                            "    mnuBSEIndia|BSE India (Not Available)||disabled",
        "  mnub7|-|",                              "  mnuAdjustSymbol|Adjust Symbol|",
        "  mnuAdjustData|Adjust Data|",            "  mnub3|-|",
        "  mnuStockSplit|Adjust for Stock Split (Available Later)||disabled",
        "  mnut1|-|",                              "  mnuConvert|&Convert|",
        "  mnub4|-|",                              "  mnuSymbolLookup|Symbol Lookup|",
        "mnuWindow|   &Window   |",                "mnuHelp|   &Help   |",
        "  mnuContents|Help Contents|F1",          "  mnuUpdates|Check for Updates|Ctrl+U",
        "  mnuYahooLookup|Yahoo Symbol Lookup|Ctrl+Y", "  mnub5|-|",
        "  mnuAbout|About|F2",
    };
    EXPECT_EQ(got, expected);
    EXPECT_EQ(f->windowTitle(), QStringLiteral("Brindlemark v6"));
}

TEST(MDIMain, StartsWithTheSymbolListAndTheRememberedFolderAndNoChildWindow) {
    for (const bool firstRun : {true, false}) {
        ScriptedPlatform p;
        if (!firstRun) {
            p.settings.insert(QStringLiteral("Settings/LastFolder"), QStringLiteral("/data/nse"));
            writeTextFile(QDir(p.programFolder()).filePath("symbols.csv"), "NSE,INFY.NS,Infosys Ltd\nDow,KO,Coca-Cola\n");
        }
        Frame f(p);
        EXPECT_EQ(Module1::LastFolder, firstRun ? QString() : QStringLiteral("/data/nse"));
        EXPECT_EQ(Module1::SymbolCount, firstRun ? 0 : 2);
        EXPECT_TRUE(f->MDIArea->subWindowList().isEmpty());
        EXPECT_EQ(ChildWindowArea(), f->MDIArea);
        EXPECT_TRUE(p.boxes.isEmpty());
    }
}

// The frame's close button saves LastFolder (also when empty) and ends; Exit ends without saving.
TEST(MDIMain, CloseSavesLastFolderAndExitDoesNot) {
    const struct { bool exit; const char* folder; const char* saved; } cases[] = {
        {false, "/data/new", "/data/new"}, {false, "", ""}, {true, "/data/new", "/old"}};
    for (const auto& c : cases) {
        ScriptedPlatform p;
        p.settings.insert(QStringLiteral("Settings/LastFolder"), QStringLiteral("/old"));
        Frame f(p);
        f->show();
        Module1::LastFolder = QString::fromLatin1(c.folder);
        if (c.exit)
            f->mnuExit->trigger();
        else
            EXPECT_TRUE(f->close());
        EXPECT_EQ(p.settings.value(QStringLiteral("Settings/LastFolder")), QString::fromLatin1(c.saved)) << c.folder;
        EXPECT_EQ(f.quits, 1);
        EXPECT_TRUE(p.boxes.isEmpty());   // no question is asked
    }
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
    EXPECT_TRUE(p.settings.isEmpty() && p.boxes.isEmpty() && p.openedAddresses.isEmpty());
    EXPECT_TRUE(f->MDIArea->subWindowList().isEmpty());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

// Help entries and toolbar 7 open their pages and return at once; toolbar 5 pops up Download.
TEST(MDIMain, HelpEntriesAndToolbarDispatch) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    ASSERT_EQ(f->Toolbar1Buttons.size(), 7);
    for (int i = 0; i < 7; ++i) {
        QAction* a = f->Toolbar1Buttons[i];
        EXPECT_EQ(f->Toolbar1->actions().value(i), a) << i + 1;
        EXPECT_EQ(a->isSeparator(), i == 3 || i == 5) << i + 1;
        EXPECT_EQ(a->icon().isNull(), a->isSeparator()) << i + 1;
    }
    f->mnuContents->trigger();
    f->mnuUpdates->trigger();
    f->mnuYahooLookup->trigger();
    f->Toolbar1Buttons[6]->trigger();
    EXPECT_EQ(p.openedAddresses, (QStringList{WebLinks::HelpPage, WebLinks::ProductPage,
                                              WebLinks::YahooLookupPage, WebLinks::HelpPage}));
    QCursor::setPos(f->mapToGlobal(QPoint(80, 60)));
    f->Toolbar1Buttons[4]->trigger();
    EXPECT_EQ(QApplication::activePopupWidget(), f->mnuDownload);
    f->mnuDownload->close();
    EXPECT_EQ(p.openedAddresses.size(), 4);
    EXPECT_TRUE(p.boxes.isEmpty());
}

TEST(MDIMain, WindowMenuListsTheChildWindowsAndActivatesThePickedOne) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    QApplication::setActiveWindow(f.window.get());
    // The same security twice gives two windows with the same caption.
    for (const char* caption : {"DataSheet of INFOSYS", "DataSheet of INFOSYS", "Chart of TCS"}) {
        auto* w = new QWidget;
        w->setWindowTitle(QString::fromLatin1(caption));
        w->resize(200, 120);
        ShowChildWindow(w);
    }
    const auto listed = [&] {
        f->refreshWindowList();
        QStringList texts;
        for (QAction* a : f->mnuWindow->actions())
            texts << a->text() + (a->isChecked() ? QStringLiteral(" *") : QString());
        return texts;
    };
    EXPECT_EQ(listed(), (QStringList{"DataSheet of INFOSYS", "DataSheet of INFOSYS", "Chart of TCS *"}));
    f->mnuWindow->actions()[0]->trigger();
    EXPECT_EQ(listed(), (QStringList{"DataSheet of INFOSYS *", "DataSheet of INFOSYS", "Chart of TCS"}));
    for (QMdiSubWindow* sub : f->MDIArea->subWindowList())   // a child keeps the size its screen gave it
        EXPECT_GE(sub->widget()->size().width(), 200);
    f->MDIArea->subWindowList(QMdiArea::CreationOrder)[1]->close();
    QApplication::processEvents();
    EXPECT_EQ(listed().size(), 2);   // a closed window leaves the list
}

TEST(MDIMain, StatusBarShowsTitleKeysAndTodaysDate) {
    ScriptedPlatform p;
    p.todayDate = QDate(2026, 11, 3);
    for (const auto& [locale, date] : {std::pair{"en_GB", "03/11/2026"}, std::pair{"en_US", "11/3/26"}}) {
        LocaleGuard l(QString::fromLatin1(locale));
        Frame f(p);
        EXPECT_EQ(f->Panel1->text(), QStringLiteral("Brindlemark v6 - ") + WebLinks::MakerLine);
        EXPECT_EQ(f->Panel2->text(), QStringLiteral("INS"));
        EXPECT_EQ(f->Panel3->text(), QStringLiteral("CAPS"));
        EXPECT_EQ(f->Panel4->text(), QString::fromLatin1(date));
    }
}

TEST(MDIMain, KeyPanelsFollowInsertAndCapsLock) {
    ScriptedPlatform p;
    Frame f(p);
    f->show();
    auto* target = new QWidget(f->MDIArea);   // a widget that leaves keys to its parents
    EXPECT_FALSE(f->Panel2->isEnabled() || f->Panel3->isEnabled());
    const struct { int key; Qt::KeyboardModifiers modifiers; bool ins, caps; } presses[] = {  // key < 128: a letter
        {Qt::Key_Insert, {}, true, false}, {Qt::Key_Insert, {}, false, false}, {Qt::Key_CapsLock, {}, false, true},
        {'a', {}, false, false},                  // a small letter without Shift: caps is off
        {'A', {}, false, true},                   // a capital without Shift: caps is on
        {'A', Qt::ShiftModifier, false, false}};  // a capital with Shift: off
    for (const auto& k : presses) {
        if (k.key < 128)
            QTest::keyClick(target, char(k.key), k.modifiers);
        else
            QTest::keyClick(target, Qt::Key(k.key), k.modifiers);
        EXPECT_EQ(f->Panel2->isEnabled(), k.ins) << k.key;
        EXPECT_EQ(f->Panel3->isEnabled(), k.caps) << k.key;
    }
}

// --- About ---

TEST(frmAbout, ShowsNameVersionMakerAndIsCentredOnce) {
    ScriptedPlatform p;
    frmAbout about;
    EXPECT_EQ(about.windowTitle(), QStringLiteral("About"));
    const std::pair<const char*, QString> labels[] = {
        {"Label1", "Brindlemark for Metastock"}, {"Label2", "Version 6  Revision 01"},
        {"Label3", WebLinks::MakerLine}, {"Label4", WebLinks::MakerHomePage}, {"Label6", WebLinks::MakerEmail}};
    for (const auto& [name, text] : labels)
        EXPECT_EQ(child<QLabel>(&about, name)->text(), text) << name;
    EXPECT_EQ(child<QPushButton>(&about, "Command1")->text(), QStringLiteral("OK"));
    EXPECT_FALSE(child<QLabel>(&about, "Image1")->pixmap().isNull());
    about.show();
    const QRect screen = about.screen()->geometry();
    const QRect frame = about.frameGeometry();   // the window measured with its frame
    EXPECT_NEAR(frame.x(), screen.x() + (screen.width() - frame.width()) / 2, 1);
    EXPECT_NEAR(frame.y(), screen.y() + (screen.height() - frame.height()) / 2, 1);
}

TEST(frmAbout, LinkLightsUpUnderThePointerAndOpensTheMakersPage) {
    ScriptedPlatform p;
    frmAbout about;
    about.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&about));
    const auto moveOver = [&about](QWidget* widget) {   // the pointer moving over a widget
        QMouseEvent move(QEvent::MouseMove, QPointF(3, 3), widget->mapToGlobal(QPointF(3, 3)), Qt::NoButton,
                         Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(widget, &move);
        return about.Label4->palette().color(QPalette::WindowText);
    };
    EXPECT_EQ(about.Label4->palette().color(QPalette::WindowText), QColor(0, 0, 255));
    EXPECT_EQ(moveOver(about.Label4), QColor(255, 0, 0));
    EXPECT_EQ(moveOver(about.Picture1), QColor(0, 0, 255));

    QTest::mouseClick(about.Label4, Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(p.openedAddresses, QStringList{WebLinks::MakerHomePage});
    EXPECT_TRUE(about.isVisible());   // the box stays up
    p.openAddressFails = true;        // no failure handling: a failing call shows nothing
    about.Label4_Click();
    EXPECT_TRUE(p.boxes.isEmpty());
}

// mnuAbout shows the box modally; Escape closes it as OK does, other keys do not.
TEST(MDIMain, AboutEntryShowsTheBoxModallyAndEscapeOrOkClosesIt) {
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
                QTest::mouseClick(child<QPushButton>(box, "Command1"), Qt::LeftButton);
        });
        f->mnuAbout->trigger();
        EXPECT_EQ(caption, QStringLiteral("About"));
        EXPECT_TRUE(stayedUp);
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    }
}

} // namespace

// Each entry that opens a screen opens the right one, modally; Close leaves nothing open.
TEST(MDIMain, MenuEntriesAndToolbarOpenTheirScreens) {
    const struct { const char* entry; int toolbar; const char* caption; bool chart; } cases[] = {
        {"mnuNewSymbol", 1, "Create New Symbols", false}, {"mnuOpen", 2, "Open Security", false},
        {"mnuOpenChart", 3, "Open Security", true},       {"mnuYahooDownloads", 0, "Downloader", false},
        {"mnuSymbolLookup", 0, "Symbol Lookup", false}};
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
                if (auto* open = qobject_cast<frmOpen*>(dialog))
                    chart = open->tChart;
                dialog->close();
            });
            if (viaToolbar)
                f->Toolbar1_ButtonClick(c.toolbar);
            else
                f->findChild<QAction*>(QString::fromLatin1(c.entry))->trigger();
            const std::string what = viaToolbar ? "toolbar " + std::to_string(c.toolbar) : c.entry;
            EXPECT_EQ(seen, QString::fromLatin1(c.caption)) << what;
            EXPECT_EQ(chart, c.chart) << what;
            EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << what;
            EXPECT_TRUE(f->MDIArea->subWindowList().isEmpty()) << what;
        }
    }
}
