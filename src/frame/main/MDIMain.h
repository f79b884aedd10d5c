#pragma once
// The program's frame: the menus, the toolbar, the status bar and the area of the child windows.
// Every screen is opened from here. The frame keeps no data of its own: at start it loads the
// symbol list and restores LastFolder, and closing it saves LastFolder.

#include <QMainWindow>
#include <QPointer>

#include <functional>

class QAction;
class QLabel;
class QMdiArea;
class QMenu;
class QStatusBar;
class QToolBar;

class MDIMain : public QMainWindow {
    Q_OBJECT
public:
    explicit MDIMain(QWidget* parent = nullptr);
    ~MDIMain() override;

    // Ends the program at once with all its windows. Tests put in their own action.
    std::function<void()> quitAction;

    // --- menus ---
    QMenu* mnuFile;
    QAction* mnuNewSymbol;
    QAction* mnuOpen;
    QAction* mnuOpenChart;
    QAction* mnub1;
    QAction* mnuClose;
    QAction* mnub2;
    QAction* mnuExit;
    QMenu* mnuTools;
    QMenu* mnuDownload;
    QAction* mnuYahooDownloads;
    QAction* mnud2;
    QAction* mnuNSEIndia;
    QAction* mnuNSEIndex;
    QAction* mnud1;
    QAction* mnuBSEIndia;
    QAction* mnub7;
    QAction* mnuAdjustSymbol;
    QAction* mnuAdjustData;
    QAction* mnub3;
    QAction* mnuStockSplit;
    QAction* mnut1;
    QAction* mnuConvert;
    QAction* mnub4;
    QAction* mnuSymbolLookup;
    QMenu* mnuWindow;
    QMenu* mnuHelp;
    QAction* mnuContents;
    QAction* mnuUpdates;
    QAction* mnuYahooLookup;
    QAction* mnub5;
    QAction* mnuAbout;

    // --- toolbar, status bar, child windows ---
    QToolBar* Toolbar1;
    QList<QAction*> Toolbar1Buttons;   // positions 1..7 at indices 0..6
    QStatusBar* StatusBar1;
    QLabel* Panel1;   // "Brindlemark v6" and the maker's line
    QLabel* Panel2;   // "INS", lit while the Insert key is on
    QLabel* Panel3;   // "CAPS", lit while Caps Lock is on
    QLabel* Panel4;   // today's date
    QMdiArea* MDIArea;

    // --- handlers ---
    void MDIForm_Load();
    void mnuNewSymbol_Click();
    void mnuOpen_Click();
    void mnuOpenChart_Click();
    void mnuClose_Click();
    void mnuExit_Click();
    void mnuYahooDownloads_Click();
    void mnuNSEIndia_Click();
    void mnuNSEIndex_Click();
    void mnuAdjustSymbol_Click();
    void mnuAdjustData_Click();
    void mnuConvert_Click();
    void mnuSymbolLookup_Click();
    void mnuContents_Click();
    void mnuUpdates_Click();
    void mnuYahooLookup_Click();
    void mnuAbout_Click();
    // A click on toolbar position 1..7.
    void Toolbar1_ButtonClick(int position);
    // Opens the address in the system's browser; a failure shows "Could not open URL ".
    void GoURL(const QString& address);

    // Rebuilds the window list of mnuWindow: one entry per child window under its caption, the
    // active one ticked. Runs each time the menu opens.
    void refreshWindowList();
    // The states shown by the key panels.
    bool insertOn() const { return insertOn_; }
    bool capsOn() const { return capsOn_; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildMenus();
    void buildToolbar();
    void buildStatusBar();
    void showKeyStates();
    void showToday();

    const QEvent* lastKey_ = nullptr;
    QPointer<QWidget> lastKeyTarget_;
    bool insertOn_ = false;
    bool capsOn_ = false;
};
