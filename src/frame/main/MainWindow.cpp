#include "frame/main/MainWindow.h"

#include "frame/CommonRoutines.h"
#include "frame/ProgramState.h"
#include "frame/Platform.h"
#include "frame/Regional.h"
#include "frame/WebLinks.h"
#include "frame/ui/ChildWindows.h"
#include "frame/ui/ProgramIcon.h"
#include "frame/ui/AboutDialog.h"
#include "catalogue/ui/AdjustSecurityDialog.h"
#include "catalogue/ui/CreateSymbolsDialog.h"
#include "catalogue/ui/DeleteDataDialog.h"
#include "catalogue/ui/OpenSecurityDialog.h"
#include "catalogue/ui/SymbolLookupDialog.h"
#include "download/ui/DownloaderDialog.h"
#include "download/ui/NseDownloaderDialog.h"
#include "download/ui/NseIndexDialog.h"
#include "export/ui/ConvertToCsvWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPointer>
#include <QStatusBar>
#include <QStyle>
#include <QTimer>
#include <QToolBar>

#include <optional>

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

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("MainWindow"));
    setWindowTitle(ProgramTitle);
    setWindowIcon(ProgramIcon());

    childArea = new QMdiArea(this);
    childArea->setObjectName(QStringLiteral("childArea"));
    childArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    childArea->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(childArea);
    SetChildWindowArea(childArea);

    buildMenus();
    buildToolbar();
    buildStatusBar();
    qApp->installEventFilter(this);
    resize(1024, 720);

    load();
}

MainWindow::~MainWindow() {
    qApp->removeEventFilter(this);
    if (ChildWindowArea() == childArea)
        SetChildWindowArea(nullptr);
}

void MainWindow::buildMenus() {
    QMenuBar* bar = menuBar();
    bar->setObjectName(QStringLiteral("MenuBar"));

    fileMenu = subMenu(this, "fileMenu", QStringLiteral("   &File   "));
    newSymbolAction = entry(fileMenu, "newSymbolAction", QStringLiteral("Create New Symbol"), QKeySequence(Qt::CTRL | Qt::Key_N));
    openDataAction = entry(fileMenu, "openDataAction", QStringLiteral("Open Data"), QKeySequence(Qt::CTRL | Qt::Key_O));
    openChartAction = entry(fileMenu, "openChartAction", QStringLiteral("Open Chart"));
    fileSeparator1 = separator(fileMenu, "fileSeparator1");
    closeAction = entry(fileMenu, "closeAction", QStringLiteral("&Close"));
    fileSeparator2 = separator(fileMenu, "fileSeparator2");
    exitAction = entry(fileMenu, "exitAction", QStringLiteral("&Exit"), QKeySequence(Qt::CTRL | Qt::Key_Q));
    bar->addMenu(fileMenu);

    toolsMenu = subMenu(this, "toolsMenu", QStringLiteral("   &Tools   "));
    downloadMenu = subMenu(toolsMenu, "downloadMenu", QStringLiteral("Download"));
    worldExchangesAction = entry(downloadMenu, "worldExchangesAction", QStringLiteral("World Exchanges"));
    downloadSeparator1 = separator(downloadMenu, "downloadSeparator1");
    nseIndiaAction = entry(downloadMenu, "nseIndiaAction", QStringLiteral("NSE India"));
    nseIndexAction = entry(downloadMenu, "nseIndexAction", QStringLiteral("NSE India Index"));
    downloadSeparator2 = separator(downloadMenu, "downloadSeparator2");
    bseIndiaAction = entry(downloadMenu, "bseIndiaAction", QStringLiteral("BSE India (Not Available)"));
    bseIndiaAction->setEnabled(false);
    toolsMenu->addMenu(downloadMenu);
    toolsSeparator1 = separator(toolsMenu, "toolsSeparator1");
    adjustSymbolAction = entry(toolsMenu, "adjustSymbolAction", QStringLiteral("Adjust Symbol"));
    adjustDataAction = entry(toolsMenu, "adjustDataAction", QStringLiteral("Adjust Data"));
    toolsSeparator2 = separator(toolsMenu, "toolsSeparator2");
    stockSplitAction = entry(toolsMenu, "stockSplitAction", QStringLiteral("Adjust for Stock Split (Available Later)"));
    stockSplitAction->setEnabled(false);
    toolsSeparator3 = separator(toolsMenu, "toolsSeparator3");
    convertAction = entry(toolsMenu, "convertAction", QStringLiteral("&Convert"));
    toolsSeparator4 = separator(toolsMenu, "toolsSeparator4");
    symbolLookupAction = entry(toolsMenu, "symbolLookupAction", QStringLiteral("Symbol Lookup"));
    bar->addMenu(toolsMenu);

    windowMenu = subMenu(this, "windowMenu", QStringLiteral("   &Window   "));
    connect(windowMenu, &QMenu::aboutToShow, this, &MainWindow::refreshWindowList);
    bar->addMenu(windowMenu);

    helpMenu = subMenu(this, "helpMenu", QStringLiteral("   &Help   "));
    helpContentsAction = entry(helpMenu, "helpContentsAction", QStringLiteral("Help Contents"), QKeySequence(Qt::Key_F1));
    checkUpdatesAction = entry(helpMenu, "checkUpdatesAction", QStringLiteral("Check for Updates"), QKeySequence(Qt::CTRL | Qt::Key_U));
    yahooLookupAction = entry(helpMenu, "yahooLookupAction", QStringLiteral("Yahoo Symbol Lookup"), QKeySequence(Qt::CTRL | Qt::Key_Y));
    helpSeparator = separator(helpMenu, "helpSeparator");
    aboutAction = entry(helpMenu, "aboutAction", QStringLiteral("About"), QKeySequence(Qt::Key_F2));
    bar->addMenu(helpMenu);

    connect(newSymbolAction, &QAction::triggered, this, &MainWindow::createNewSymbol);
    connect(openDataAction, &QAction::triggered, this, &MainWindow::openData);
    connect(openChartAction, &QAction::triggered, this, &MainWindow::openChart);
    connect(closeAction, &QAction::triggered, this, &MainWindow::closeEntry);
    connect(exitAction, &QAction::triggered, this, &MainWindow::exitProgram);
    connect(worldExchangesAction, &QAction::triggered, this, &MainWindow::downloadWorldExchanges);
    connect(nseIndiaAction, &QAction::triggered, this, &MainWindow::downloadNseIndia);
    connect(nseIndexAction, &QAction::triggered, this, &MainWindow::downloadNseIndex);
    connect(adjustSymbolAction, &QAction::triggered, this, &MainWindow::adjustSymbol);
    connect(adjustDataAction, &QAction::triggered, this, &MainWindow::adjustData);
    connect(convertAction, &QAction::triggered, this, &MainWindow::convertToCsv);
    connect(symbolLookupAction, &QAction::triggered, this, &MainWindow::symbolLookup);
    connect(helpContentsAction, &QAction::triggered, this, &MainWindow::helpContents);
    connect(checkUpdatesAction, &QAction::triggered, this, &MainWindow::checkForUpdates);
    connect(yahooLookupAction, &QAction::triggered, this, &MainWindow::yahooSymbolLookup);
    connect(aboutAction, &QAction::triggered, this, &MainWindow::about);
}

void MainWindow::buildToolbar() {
    toolbar = addToolBar(QStringLiteral("toolbar"));
    toolbar->setObjectName(QStringLiteral("toolbar"));
    toolbar->setMovable(false);
    toolbar->setFloatable(false);
    toolbar->setIconSize(QSize(24, 24));
    QStyle* s = style();
    auto button = [&](QStyle::StandardPixmap icon, const QString& tip) {
        return toolbar->addAction(s->standardIcon(icon), tip);
    };
    // Positions 4 and 6 are the gaps between the groups of buttons.
    toolbarButtons = {
        button(QStyle::SP_FileIcon, QStringLiteral("Create New Symbol")),
        button(QStyle::SP_DialogOpenButton, QStringLiteral("Open Data")),
        button(QStyle::SP_FileDialogContentsView, QStringLiteral("Open Chart")),
        toolbar->addSeparator(),
        button(QStyle::SP_ArrowDown, QStringLiteral("Download")),
        toolbar->addSeparator(),
        button(QStyle::SP_DialogHelpButton, QStringLiteral("Help Contents")),
    };
    for (int i = 0; i < toolbarButtons.size(); ++i) {
        QAction* action = toolbarButtons[i];
        action->setObjectName(QStringLiteral("toolbarButton%1").arg(i + 1));
        connect(action, &QAction::triggered, this, [this, i] { toolbarButtonClicked(i + 1); });
    }
}

void MainWindow::buildStatusBar() {
    statusLine = statusBar();
    statusLine->setObjectName(QStringLiteral("statusLine"));
    auto panel = [this](const char* name, const QString& text) {
        auto* label = new QLabel(text, statusLine);
        label->setObjectName(QString::fromLatin1(name));
        label->setFrameShape(QFrame::StyledPanel);
        label->setFrameShadow(QFrame::Sunken);
        label->setContentsMargins(6, 0, 6, 0);
        return label;
    };
    titlePanel = panel("titlePanel", ProgramTitle + QStringLiteral(" - ") + WebLinks::MakerLine);
    insertPanel = panel("insertPanel", QStringLiteral("INS"));
    capsPanel = panel("capsPanel", QStringLiteral("CAPS"));
    datePanel = panel("datePanel", QString());
    statusLine->addWidget(titlePanel, 1);
    statusLine->addPermanentWidget(insertPanel);
    statusLine->addPermanentWidget(capsPanel);
    statusLine->addPermanentWidget(datePanel);
    statusLine->setSizeGripEnabled(true);
    showKeyStates();
    showToday();
    // The date panel turns over at midnight: the calendar is looked at once a minute.
    auto* dayWatch = new QTimer(this);
    dayWatch->setObjectName(QStringLiteral("dayWatch"));
    dayWatch->setInterval(60 * 1000);
    connect(dayWatch, &QTimer::timeout, this, &MainWindow::showToday);
    dayWatch->start();
}

void MainWindow::load() {
    ReadSymbolsFile();
    sharedState().LastFolder = platform().getSetting(SettingsSection, LastFolderKey, QString());
}

void MainWindow::closeEvent(QCloseEvent* event) {
    // Nothing stops the closing and no child window is asked.
    platform().saveSetting(SettingsSection, LastFolderKey, sharedState().LastFolder);
    event->accept();
    platform().quit();
}

// --- File ---

void MainWindow::createNewSymbol() {
    CreateSymbolsDialog dialog(this);
    dialog.exec();
}

void MainWindow::openData() {
    OpenSecurityDialog dialog(this);
    dialog.opensChart = false;
    dialog.exec();
}

void MainWindow::openChart() {
    OpenSecurityDialog dialog(this);
    dialog.opensChart = true;
    dialog.exec();
}

void MainWindow::closeEntry() {
    // The entry is there and enabled, and does nothing.
}

void MainWindow::exitProgram() {
    // Ends at once; LastFolder is not saved.
    platform().quit();
}

// --- Tools ---

void MainWindow::downloadWorldExchanges() {
    DownloaderDialog dialog(this);
    dialog.exec();
}

void MainWindow::downloadNseIndia() {
    NseDownloaderDialog dialog(this);
    dialog.exec();
}

void MainWindow::downloadNseIndex() {
    NseIndexDialog dialog(this);
    dialog.exec();
}

void MainWindow::adjustSymbol() {
    AdjustSecurityDialog dialog(this);
    dialog.exec();
}

void MainWindow::adjustData() {
    DeleteDataDialog dialog(this);
    dialog.exec();
}

void MainWindow::convertToCsv() {
    // One Convert window: a second pick brings it forward as it stands.
    for (QMdiSubWindow* sub : childArea->subWindowList()) {
        if (qobject_cast<ConvertToCsvWindow*>(sub->widget())) {
            if (sub->isMinimized())
                sub->showNormal();
            childArea->setActiveSubWindow(sub);
            return;
        }
    }
    ShowChildWindow(new ConvertToCsvWindow);
}

QMenu* MainWindow::createPopupMenu() {
    return nullptr;   // no menu on the toolbar or the menu bar that could hide the toolbar
}

void MainWindow::symbolLookup() {
    // What is selected here only replaces SelectedSymbols; nothing else uses it.
    SymbolLookupDialog dialog(this);
    dialog.exec();
}

// --- Help ---

void MainWindow::helpContents() { GoURL(WebLinks::HelpPage); }

void MainWindow::checkForUpdates() { GoURL(WebLinks::ProductPage); }

void MainWindow::yahooSymbolLookup() { GoURL(WebLinks::YahooLookupPage); }

void MainWindow::about() {
    AboutDialog about(this);
    about.exec();
}

void MainWindow::GoURL(const QString& address) { ::GoURL(address); }

void MainWindow::toolbarButtonClicked(int position) {
    switch (position) {
    case 1: createNewSymbol(); break;
    case 2: openData(); break;
    case 3: openChart(); break;
    case 5: downloadMenu->popup(QCursor::pos()); break;
    case 7: helpContents(); break;
    default: break;   // 4 and 6: nothing
    }
}

// --- Window list ---

void MainWindow::refreshWindowList() {
    windowMenu->clear();
    const QMdiSubWindow* active = childArea->activeSubWindow();
    const QList<QMdiSubWindow*> windows = childArea->subWindowList(QMdiArea::CreationOrder);
    for (int i = 0; i < windows.size(); ++i) {
        QMdiSubWindow* window = windows[i];
        // The caption as it stands: an "&" in it is text, not the mark of a short cut.
        QAction* action = windowMenu->addAction(QString(window->windowTitle()).replace(u'&', QStringLiteral("&&")));
        action->setObjectName(QStringLiteral("windowListAction%1").arg(i + 1));
        action->setCheckable(true);
        action->setChecked(window == active);
        connect(action, &QAction::triggered, this, [this, sub = QPointer<QMdiSubWindow>(window)] {
            if (sub)
                childArea->setActiveSubWindow(sub);
        });
    }
}

// --- Status bar ---

void MainWindow::showKeyStates() {
    insertPanel->setEnabled(insertOn_);
    capsPanel->setEnabled(capsOn_);
}

void MainWindow::showToday() {
    const QString today = Regional::dateText(platform().today());
    if (datePanel->text() != today)
        datePanel->setText(today);
}

void MainWindow::changeEvent(QEvent* event) {
    // The date panel follows the calendar and the regional settings.
    if (event->type() == QEvent::ActivationChange || event->type() == QEvent::LocaleChange)
        showToday();
    QMainWindow::changeEvent(event);
}

namespace {

// The Caps Lock state that the platform sends with a key, where it sends one. X11 gives the
// modifier state before the key, Lock among it (so the Caps Lock key itself turns it over);
// Windows gives its own Caps Lock flag, already turned over by the key. Empty elsewhere.
std::optional<bool> capsLockOf(const QKeyEvent* key) {
    const QString name = QGuiApplication::platformName();
    if (name == QLatin1String("xcb")) {
        constexpr quint32 LockMask = 0x2;
        const bool on = (key->nativeModifiers() & LockMask) != 0;
        return key->key() == Qt::Key_CapsLock ? !on : on;
    }
    if (name == QLatin1String("windows")) {
        constexpr quint32 CapsLockFlag = 0x100;
        return (key->nativeModifiers() & CapsLockFlag) != 0;
    }
    return std::nullopt;
}

} // namespace

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    // The menu's short cuts come before a text box's own keys (Ctrl+U empties the line on some
    // desktops, Ctrl+Y is Redo on others) anywhere in this window and its child windows. Where no
    // short cut takes the key, the box still gets it.
    if (event->type() == QEvent::ShortcutOverride && watched->isWidgetType()
        && static_cast<QWidget*>(watched)->window() == this) {
        const QKeySequence pressed(static_cast<QKeyEvent*>(event)->keyCombination());
        for (const QAction* action : findChildren<QAction*>())
            if (action->isEnabled() && !action->shortcut().isEmpty() && action->shortcut() == pressed)
                return true;
    }
    // Every key the user presses reaches the program once through the window that has the focus,
    // before it goes to a widget and on to its parents: it is counted there. Caps shows the
    // platform's own lock state where the platform sends it; elsewhere it follows the keys: Caps
    // Lock turns it over, and a typed letter shows whether it is on (a capital without Shift, or a
    // small letter with it). Insert turns the insert mode over; no platform keeps that state.
    if (event->type() == QEvent::KeyPress && watched->isWindowType()) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (!key->isAutoRepeat()) {
            const bool shift = key->modifiers().testFlag(Qt::ShiftModifier);
            const QString text = key->text();
            if (key->key() == Qt::Key_Insert)
                insertOn_ = !insertOn_;
            if (const auto locked = capsLockOf(key)) {
                capsOn_ = *locked;
            } else if (key->key() == Qt::Key_CapsLock) {
                capsOn_ = !capsOn_;
            } else if (text.size() == 1 && text.at(0).isLetter() && text.at(0).isUpper() != text.at(0).isLower()) {
                capsOn_ = text.at(0).isUpper() != shift;
            }
            showKeyStates();
        }
    }
    return QMainWindow::eventFilter(watched, event);
}
