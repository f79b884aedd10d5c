#pragma once
// "Download Progress": carries out one World Exchanges run over handOvers().DownloadItems as soon as
// it is shown, with a line per security, three counters, two progress bars and the caption.

#include "download/DownloadRun.h"
#include "download/Inet.h"

#include <QDialog>

class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;

class DownloadProgressWindow : public QDialog, public DownloadListener {
    Q_OBJECT
public:
    explicit DownloadProgressWindow(QWidget* parent = nullptr);
    ~DownloadProgressWindow() override;

    // The window's load: shows the window and runs the download. Runs once; showing the window
    // runs it by itself.
    void load();
    void RunDownload();
    void cancelOrClose();

    // Securities downloaded, up to date, without data.
    qint16 completedCount = 0;
    qint16 upToDateCount = 0;
    qint16 noDataCount = 0;

    QLabel* symbolLabel;
    QLabel* statusLabel;
    QProgressBar* itemsBar;
    QProgressBar* recordsBar;
    QLabel* completedCaption;
    QLabel* completedValue;
    QLabel* upToDateCaption;
    QLabel* upToDateValue;
    QLabel* noDataCaption;
    QLabel* noDataValue;
    QListWidget* resultsList;
    QPushButton* cancelButton;
    Inet connection;

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
