#pragma once
// "NSE Indices Download": the folder for the index data, remembered in the setting IndexFolder
// when chosen through "Select Folder", and its download. With the source of today (the setting
// Sources/IndexArchive) the folder is brought up to date day by day from the exchange's daily
// closes: a line tells the day in hand, and Stop (or closing the screen) ends the run once that
// day is written. With an endpoint of the older kind the ready-made archive is unpacked over it.

#include "download/Inet.h"
#include "download/NseIndexRun.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

class NseIndexDialog : public QDialog, public NseIndexListener {
    Q_OBJECT
public:
    explicit NseIndexDialog(QWidget* parent = nullptr);

    void selectFolder();    // "Select Folder"
    void startDownload();   // "Start Download"
    void stop();            // "Stop", shown during a day-by-day run

    QLabel* folderLabel;
    QLineEdit* folderEdit;
    QPushButton* selectFolderButton;
    QPushButton* startDownloadButton;
    QPushButton* stopButton;
    QLabel* progressLabel;
    QLabel* noteLabel;
    Inet connection;

    // --- NseIndexListener ---
    void dayStarted(const QString& line) override;
    void dayUpdated(const QString& line) override;

public slots:
    void reject() override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void unpackArchive();
    void updateFolder(const QString& address);
    void startAgain();

    NseIndexRun* run_ = nullptr;   // the day-by-day run in progress
    bool closeWhenDone_ = false;
};
