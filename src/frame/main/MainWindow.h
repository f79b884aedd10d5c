#pragma once
// The program's frame: the menus, the toolbar, the status bar and the area of the child windows.
// Every screen is opened from here. The frame keeps no data of its own: at start it loads the
// symbol list and restores LastFolder, and closing it saves LastFolder.

#include <QMainWindow>
#include <QPointer>

class QAction;
class QLabel;
class QMdiArea;
class QMenu;
class QStatusBar;
class QToolBar;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    // --- menus ---
    QMenu* fileMenu;
    QAction* newSymbolAction;
    QAction* openDataAction;
    QAction* openChartAction;
    QAction* fileSeparator1;
    QAction* closeAction;
    QAction* fileSeparator2;
    QAction* exitAction;
    QMenu* toolsMenu;
    QMenu* downloadMenu;
    QAction* worldExchangesAction;
    QAction* downloadSeparator1;
    QAction* nseIndiaAction;
    QAction* nseIndexAction;
    QAction* downloadSeparator2;
    QAction* bseIndiaAction;
    QAction* toolsSeparator1;
    QAction* adjustSymbolAction;
    QAction* adjustDataAction;
    QAction* toolsSeparator2;
    QAction* stockSplitAction;
    QAction* toolsSeparator3;
    QAction* convertAction;
    QAction* toolsSeparator4;
    QAction* symbolLookupAction;
    QMenu* windowMenu;
    QMenu* helpMenu;
    QAction* helpContentsAction;
    QAction* checkUpdatesAction;
    QAction* yahooLookupAction;
    QAction* helpSeparator;
    QAction* aboutAction;

    // --- toolbar, status bar, child windows ---
    QToolBar* toolbar;
    QList<QAction*> toolbarButtons;   // positions 1..7 at indices 0..6
    QStatusBar* statusLine;
    QLabel* titlePanel;   // "Brindlemark v6" and the maker's line
    QLabel* insertPanel;   // "INS", lit while the Insert key is on
    QLabel* capsPanel;   // "CAPS", lit while Caps Lock is on
    QLabel* datePanel;   // today's date
    QMdiArea* childArea;

    // --- handlers ---
    void load();
    void createNewSymbol();
    void openData();
    void openChart();
    void closeEntry();
    void exitProgram();
    void downloadWorldExchanges();
    void downloadNseIndia();
    void downloadNseIndex();
    void adjustSymbol();
    void adjustData();
    void convertToCsv();
    void symbolLookup();
    void helpContents();
    void checkForUpdates();
    void yahooSymbolLookup();
    void about();
    // A click on toolbar position 1..7.
    void toolbarButtonClicked(int position);
    // Opens the address in the system's browser; a failure shows "Could not open URL ".
    void GoURL(const QString& address);

    // Rebuilds the window list of windowMenu: one entry per child window under its caption, the
    // active one ticked. Runs each time the menu opens.
    void refreshWindowList();
    // The states shown by the key panels.
    bool insertOn() const { return insertOn_; }
    bool capsOn() const { return capsOn_; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    QMenu* createPopupMenu() override;

private:
    void buildMenus();
    void buildToolbar();
    void buildStatusBar();
    void showKeyStates();
    void showToday();

    bool insertOn_ = false;
    bool capsOn_ = false;
};
