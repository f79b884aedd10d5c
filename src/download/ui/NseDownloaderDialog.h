#pragma once
// "NSE Downloader": brings a data folder up to date from the exchange's daily bhav copies. The
// folder comes from LastFolder or the chooser; Begin Download walks the days since the date in the
// folder's values.dat, lists each day with data, and STOP ends the walk after the next such day.

#include "download/Inet.h"
#include "download/NseDailyRun.h"

#include <QDialog>

#include <memory>

class BhavCopySource;
class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;
class QTimer;
class QToolButton;

class NseDownloaderDialog : public QDialog, public NseDailyListener {
    Q_OBJECT
public:
    explicit NseDownloaderDialog(QWidget* parent = nullptr);
    ~NseDownloaderDialog() override;

    void load();
    void chooseFolder();
    void beginDownload();
    void stop();
    void closeDialog();
    // A tick of progressTimer: the bar moves one step, from 100 back to 1.
    void tick();

    QLabel* folderLabel;
    QLineEdit* folderEdit;
    QToolButton* folderButton;
    QPushButton* beginDownloadButton;
    QPushButton* stopButton;
    QPushButton* closeButton;
    QListWidget* daysList;
    QProgressBar* progressBar;
    QTimer* progressTimer;
    Inet connection;

    // --- NseDailyListener ---
    void runStarted() override;
    void walkStarted() override;
    void dayUpdated(const QString& line) override;
    void walkEnded() override;
    void runEnded() override;

public slots:
    void reject() override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    // The screen is closed during a run: the run ends after the day in hand, then the screen goes.
    void leaveAfterTheDayInHand();

    std::unique_ptr<BhavCopySource> source_;
    std::unique_ptr<NseDailyRun> run_;
    int progressCounter_ = 0;   // kept from one run to the next
    bool closeWhenDone_ = false;
};
