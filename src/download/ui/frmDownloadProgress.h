#pragma once
// "Download Progress": carries out one World Exchanges run over Module1::DownloadItems as soon as
// it is shown, with a line per security, three counters, two progress bars and the caption.

#include "download/DownloadRun.h"
#include "download/Inet.h"

#include <QDialog>

class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;

class frmDownloadProgress : public QDialog, public DownloadListener {
    Q_OBJECT
public:
    explicit frmDownloadProgress(QWidget* parent = nullptr);
    ~frmDownloadProgress() override;

    // The window's load: shows the window and runs the download. Runs once; showing the window
    // runs it by itself.
    void Form_Load();
    void RunDownload();
    void Command1_Click();

    // Securities downloaded, up to date, without data.
    qint16 c = 0;
    qint16 u = 0;
    qint16 No = 0;

    QLabel* Label3;
    QLabel* Label1;
    QProgressBar* PB;
    QProgressBar* PB1;
    QLabel* Label4;
    QLabel* Label7;
    QLabel* Label5;
    QLabel* Label8;
    QLabel* Label6;
    QLabel* Label9;
    QListWidget* lstDownloadComplete;
    QPushButton* Command1;
    Inet Inet1;

    // --- DownloadListener ---
    void itemStarted(int index, int count, const QString& symbol, qint16 completed, qint16 upToDate,
                     qint16 noData) override;
    void fetching(const QString& symbol) override;
    void recordRange(int maximum) override;
    void recordProgress(int value) override;
    void lineAdded(const QString& line) override;
    void countersChanged(qint16 completed, qint16 upToDate, qint16 noData) override;
    void captionChanged(const QString& caption) override;
    void runEnded() override;

public slots:
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void centre();
    void askToStop();

    DownloadRun run_;
    bool loaded_ = false;
    bool closeWhenDone_ = false;
};
