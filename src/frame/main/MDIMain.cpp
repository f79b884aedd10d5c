#include "frame/main/MDIMain.h"

#include "frame/CommonRoutines.h"
#include "frame/Module1.h"
#include "frame/Platform.h"
#include "frame/Regional.h"
#include "frame/WebLinks.h"
#include "frame/ui/ChildWindows.h"
#include "frame/ui/ProgramIcon.h"
#include "frame/ui/frmAbout.h"
#include "catalogue/ui/frmCreateNewSymbols.h"
#include "catalogue/ui/frmOpen.h"
#include "catalogue/ui/frmSymbolLookup.h"
#include "download/ui/frmDownload.h"

#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QKeyEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPointer>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>

namespace {

const QString SettingsSection = QStringLiteral("Settings");
const QString LastFolderKey = QStringLiteral("LastFolder");

QAction* entry(QMenu* menu, const char* name, const QString& caption, const QKeySequence& shortcut = {}) {
    QAction* action = menu->addAction(caption);
    action->setObjectName(QString::fromLatin1(name));
    action->setShortcut(shortcut);
    return action;
}

QAction* separator(QMenu* menu, const char* name) {
    QAction* action = menu->addSeparator();
    action->setObjectName(QString::fromLatin1(name));
    return action;
}

QMenu* subMenu(QWidget* parent, const char* name, const QString& caption) {
    auto* menu = new QMenu(caption, parent);
    menu->setObjectName(QString::fromLatin1(name));
    menu->menuAction()->setObjectName(QString::fromLatin1(name));
    return menu;
}

} // namespace

MDIMain::MDIMain(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("MDIMain"));
    setWindowTitle(ProgramTitle);
    setWindowIcon(ProgramIcon());
    quitAction = [] { QCoreApplication::exit(0); };

    MDIArea = new QMdiArea(this);
    MDIArea->setObjectName(QStringLiteral("MDIArea"));
    MDIArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    MDIArea->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(MDIArea);
    SetChildWindowArea(MDIArea);

    buildMenus();
    buildToolbar();
    buildStatusBar();
    qApp->installEventFilter(this);
    resize(1024, 720);

    MDIForm_Load();
}

MDIMain::~MDIMain() {
    qApp->removeEventFilter(this);
    if (ChildWindowArea() == MDIArea)
        SetChildWindowArea(nullptr);
}

void MDIMain::buildMenus() {
    QMenuBar* bar = menuBar();
    bar->setObjectName(QStringLiteral("MenuBar"));

    mnuFile = subMenu(this, "mnuFile", QStringLiteral("   &File   "));
    mnuNewSymbol = entry(mnuFile, "mnuNewSymbol", QStringLiteral("Create New Symbol"), QKeySequence(Qt::CTRL | Qt::Key_N));
    mnuOpen = entry(mnuFile, "mnuOpen", QStringLiteral("Open Data"), QKeySequence(Qt::CTRL | Qt::Key_O));
    mnuOpenChart = entry(mnuFile, "mnuOpenChart", QStringLiteral("Open Chart"));
    mnub1 = separator(mnuFile, "mnub1");
    mnuClose = entry(mnuFile, "mnuClose", QStringLiteral("&Close"));
    mnub2 = separator(mnuFile, "mnub2");
    mnuExit = entry(mnuFile, "mnuExit", QStringLiteral("&Exit"), QKeySequence(Qt::CTRL | Qt::Key_Q));
    bar->addMenu(mnuFile);

    mnuTools = subMenu(this, "mnuTools", QStringLiteral("   &Tools   "));
    mnuDownload = subMenu(mnuTools, "mnuDownload", QStringLiteral("Download"));
    mnuYahooDownloads = entry(mnuDownload, "mnuYahooDownloads", QStringLiteral("World Exchanges"));
    mnud2 = separator(mnuDownload, "mnud2");
    mnuNSEIndia = entry(mnuDownload, "mnuNSEIndia", QStringLiteral("NSE India"));
    mnuNSEIndex = entry(mnuDownload, "mnuNSEIndex", QStringLiteral("NSE India Index"));
    mnud1 = separator(mnuDownload, "mnud1");
    mnuBSEIndia = entry(mnuDownload, "mnuBSEIndia", QStringLiteral("BSE India (Not Available)"));
    mnuBSEIndia->setEnabled(false);
    mnuTools->addMenu(mnuDownload);
    mnub7 = separator(mnuTools, "mnub7");
    mnuAdjustSymbol = entry(mnuTools, "mnuAdjustSymbol", QStringLiteral("Adjust Symbol"));
    mnuAdjustData = entry(mnuTools, "mnuAdjustData", QStringLiteral("Adjust Data"));
    mnub3 = separator(mnuTools, "mnub3");
    mnuStockSplit = entry(mnuTools, "mnuStockSplit", QStringLiteral("Adjust for Stock Split (Available Later)"));
    mnuStockSplit->setEnabled(false);
    mnut1 = separator(mnuTools, "mnut1");
    mnuConvert = entry(mnuTools, "mnuConvert", QStringLiteral("&Convert"));
    mnub4 = separator(mnuTools, "mnub4");
    mnuSymbolLookup = entry(mnuTools, "mnuSymbolLookup", QStringLiteral("Symbol Lookup"));
    bar->addMenu(mnuTools);

    mnuWindow = subMenu(this, "mnuWindow", QStringLiteral("   &Window   "));
    connect(mnuWindow, &QMenu::aboutToShow, this, &MDIMain::refreshWindowList);
    bar->addMenu(mnuWindow);

    mnuHelp = subMenu(this, "mnuHelp", QStringLiteral("   &Help   "));
    mnuContents = entry(mnuHelp, "mnuContents", QStringLiteral("Help Contents"), QKeySequence(Qt::Key_F1));
    mnuUpdates = entry(mnuHelp, "mnuUpdates", QStringLiteral("Check for Updates"), QKeySequence(Qt::CTRL | Qt::Key_U));
    mnuYahooLookup = entry(mnuHelp, "mnuYahooLookup", QStringLiteral("Yahoo Symbol Lookup"), QKeySequence(Qt::CTRL | Qt::Key_Y));
    mnub5 = separator(mnuHelp, "mnub5");
    mnuAbout = entry(mnuHelp, "mnuAbout", QStringLiteral("About"), QKeySequence(Qt::Key_F2));
    bar->addMenu(mnuHelp);

    connect(mnuNewSymbol, &QAction::triggered, this, &MDIMain::mnuNewSymbol_Click);
    connect(mnuOpen, &QAction::triggered, this, &MDIMain::mnuOpen_Click);
    connect(mnuOpenChart, &QAction::triggered, this, &MDIMain::mnuOpenChart_Click);
    connect(mnuClose, &QAction::triggered, this, &MDIMain::mnuClose_Click);
    connect(mnuExit, &QAction::triggered, this, &MDIMain::mnuExit_Click);
    connect(mnuYahooDownloads, &QAction::triggered, this, &MDIMain::mnuYahooDownloads_Click);
    connect(mnuNSEIndia, &QAction::triggered, this, &MDIMain::mnuNSEIndia_Click);
    connect(mnuNSEIndex, &QAction::triggered, this, &MDIMain::mnuNSEIndex_Click);
    connect(mnuAdjustSymbol, &QAction::triggered, this, &MDIMain::mnuAdjustSymbol_Click);
    connect(mnuAdjustData, &QAction::triggered, this, &MDIMain::mnuAdjustData_Click);
    connect(mnuConvert, &QAction::triggered, this, &MDIMain::mnuConvert_Click);
    connect(mnuSymbolLookup, &QAction::triggered, this, &MDIMain::mnuSymbolLookup_Click);
    connect(mnuContents, &QAction::triggered, this, &MDIMain::mnuContents_Click);
    connect(mnuUpdates, &QAction::triggered, this, &MDIMain::mnuUpdates_Click);
    connect(mnuYahooLookup, &QAction::triggered, this, &MDIMain::mnuYahooLookup_Click);
    connect(mnuAbout, &QAction::triggered, this, &MDIMain::mnuAbout_Click);
}

void MDIMain::buildToolbar() {
    Toolbar1 = addToolBar(QStringLiteral("Toolbar1"));
    Toolbar1->setObjectName(QStringLiteral("Toolbar1"));
    Toolbar1->setMovable(false);
    Toolbar1->setFloatable(false);
    Toolbar1->setIconSize(QSize(24, 24));
    QStyle* s = style();
    auto button = [&](QStyle::StandardPixmap icon, const QString& tip) {
        return Toolbar1->addAction(s->standardIcon(icon), tip);
    };
    // Positions 4 and 6 are the gaps between the groups of buttons.
    Toolbar1Buttons = {
        button(QStyle::SP_FileIcon, QStringLiteral("Create New Symbol")),
        button(QStyle::SP_DialogOpenButton, QStringLiteral("Open Data")),
        button(QStyle::SP_FileDialogContentsView, QStringLiteral("Open Chart")),
        Toolbar1->addSeparator(),
        button(QStyle::SP_ArrowDown, QStringLiteral("Download")),
        Toolbar1->addSeparator(),
        button(QStyle::SP_DialogHelpButton, QStringLiteral("Help Contents")),
    };
    for (int i = 0; i < Toolbar1Buttons.size(); ++i) {
        QAction* action = Toolbar1Buttons[i];
        action->setObjectName(QStringLiteral("Toolbar1Button%1").arg(i + 1));
        connect(action, &QAction::triggered, this, [this, i] { Toolbar1_ButtonClick(i + 1); });
    }
}

void MDIMain::buildStatusBar() {
    StatusBar1 = statusBar();
    StatusBar1->setObjectName(QStringLiteral("StatusBar1"));
    auto panel = [this](const char* name, const QString& text) {
        auto* label = new QLabel(text, StatusBar1);
        label->setObjectName(QString::fromLatin1(name));
        label->setFrameShape(QFrame::StyledPanel);
        label->setFrameShadow(QFrame::Sunken);
        label->setContentsMargins(6, 0, 6, 0);
        return label;
    };
    Panel1 = panel("Panel1", ProgramTitle + QStringLiteral(" - ") + WebLinks::MakerLine);
    Panel2 = panel("Panel2", QStringLiteral("INS"));
    Panel3 = panel("Panel3", QStringLiteral("CAPS"));
    Panel4 = panel("Panel4", QString());
    StatusBar1->addWidget(Panel1, 1);
    StatusBar1->addPermanentWidget(Panel2);
    StatusBar1->addPermanentWidget(Panel3);
    StatusBar1->addPermanentWidget(Panel4);
    StatusBar1->setSizeGripEnabled(true);
    showKeyStates();
    showToday();
}

void MDIMain::MDIForm_Load() {
    ReadSymbolsFile();
    Module1::LastFolder = platform().getSetting(SettingsSection, LastFolderKey, QString());
}

void MDIMain::closeEvent(QCloseEvent* event) {
    // Nothing stops the closing and no child window is asked.
    platform().saveSetting(SettingsSection, LastFolderKey, Module1::LastFolder);
    event->accept();
    if (quitAction)
        quitAction();
}

// --- File ---

void MDIMain::mnuNewSymbol_Click() {
    frmCreateNewSymbols dialog(this);
    dialog.exec();
}

void MDIMain::mnuOpen_Click() {
    frmOpen dialog(this);
    dialog.tChart = false;
    dialog.exec();
}

void MDIMain::mnuOpenChart_Click() {
    frmOpen dialog(this);
    dialog.tChart = true;
    dialog.exec();
}

void MDIMain::mnuClose_Click() {
    // The entry is there and enabled, and does nothing.
}

void MDIMain::mnuExit_Click() {
    // Ends at once; LastFolder is not saved.
    if (quitAction)
        quitAction();
}

// --- Tools ---

void MDIMain::mnuYahooDownloads_Click() {
    frmDownload dialog(this);
    dialog.exec();
}

void MDIMain::mnuNSEIndia_Click() {
    // The NSE downloader (frmDownloadNSE) is opened here, modally.
}

void MDIMain::mnuNSEIndex_Click() {
    // The NSE index download (frmNSEIndex) is opened here, modally.
}

void MDIMain::mnuAdjustSymbol_Click() {
    // Adjust Security (frmAdjust) is opened here, modally.
}

void MDIMain::mnuAdjustData_Click() {
    // Delete Data (frmData) is opened here, modally.
}

void MDIMain::mnuConvert_Click() {
    // Convert To CSV File (frmConvert) is opened here as a child window.
}

void MDIMain::mnuSymbolLookup_Click() {
    // What is selected here only replaces SelectedSymbols; nothing else uses it.
    frmSymbolLookup dialog(this);
    dialog.exec();
}

// --- Help ---

void MDIMain::mnuContents_Click() { GoURL(WebLinks::HelpPage); }

void MDIMain::mnuUpdates_Click() { GoURL(WebLinks::ProductPage); }

void MDIMain::mnuYahooLookup_Click() { GoURL(WebLinks::YahooLookupPage); }

void MDIMain::mnuAbout_Click() {
    frmAbout about(this);
    about.exec();
}

void MDIMain::GoURL(const QString& address) { ::GoURL(address); }

void MDIMain::Toolbar1_ButtonClick(int position) {
    switch (position) {
    case 1: mnuNewSymbol_Click(); break;
    case 2: mnuOpen_Click(); break;
    case 3: mnuOpenChart_Click(); break;
    case 5: mnuDownload->popup(QCursor::pos()); break;
    case 7: mnuContents_Click(); break;
    default: break;   // 4 and 6: nothing
    }
}

// --- Window list ---

void MDIMain::refreshWindowList() {
    mnuWindow->clear();
    const QMdiSubWindow* active = MDIArea->activeSubWindow();
    const QList<QMdiSubWindow*> windows = MDIArea->subWindowList(QMdiArea::CreationOrder);
    for (int i = 0; i < windows.size(); ++i) {
        QMdiSubWindow* window = windows[i];
        QAction* action = mnuWindow->addAction(window->windowTitle());
        action->setObjectName(QStringLiteral("mnuWindowList%1").arg(i + 1));
        action->setCheckable(true);
        action->setChecked(window == active);
        connect(action, &QAction::triggered, this, [this, sub = QPointer<QMdiSubWindow>(window)] {
            if (sub)
                MDIArea->setActiveSubWindow(sub);
        });
    }
}

// --- Status bar ---

void MDIMain::showKeyStates() {
    Panel2->setEnabled(insertOn_);
    Panel3->setEnabled(capsOn_);
}

void MDIMain::showToday() { Panel4->setText(Regional::dateText(platform().today())); }

void MDIMain::changeEvent(QEvent* event) {
    // The date panel follows the calendar and the regional settings.
    if (event->type() == QEvent::ActivationChange || event->type() == QEvent::LocaleChange)
        showToday();
    QMainWindow::changeEvent(event);
}

bool MDIMain::eventFilter(QObject* watched, QEvent* event) {
    // Qt does not report the lock keys' states, so the panels follow what the keyboard sends:
    // Insert toggles the insert mode, Caps Lock toggles caps, and a typed letter shows whether
    // caps is on (a capital without Shift, or a small letter with it).
    if (event->type() == QEvent::KeyPress && watched->isWidgetType()) {
        const auto* key = static_cast<QKeyEvent*>(event);
        // A key the focus widget leaves goes on to its parents: count it once.
        const bool passedOn = event == lastKey_ && lastKeyTarget_ &&
                              static_cast<QWidget*>(watched)->isAncestorOf(lastKeyTarget_);
        lastKey_ = event;
        lastKeyTarget_ = static_cast<QWidget*>(watched);
        if (!passedOn && !key->isAutoRepeat()) {
            const bool shift = key->modifiers().testFlag(Qt::ShiftModifier);
            if (key->key() == Qt::Key_Insert) {
                insertOn_ = !insertOn_;
            } else if (key->key() == Qt::Key_CapsLock) {
                capsOn_ = !capsOn_;
            } else if (key->text().size() == 1 && key->text().at(0).isLetter() &&
                       key->text().at(0).isUpper() != key->text().at(0).isLower()) {
                capsOn_ = key->text().at(0).isUpper() != shift;
            }
            showKeyStates();
        }
    }
    return QMainWindow::eventFilter(watched, event);
}
