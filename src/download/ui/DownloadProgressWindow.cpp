#include "download/ui/DownloadProgressWindow.h"

#include "frame/Failure.h"
#include "frame/ProgramState.h"
#include "frame/Platform.h"
#include "frame/ui/Centring.h"
#include "frame/ui/Widgets.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

DownloadProgressWindow::DownloadProgressWindow(QWidget* parent)
    : QDialog(parent), run_(connection, *this) {
    setObjectName(QStringLiteral("DownloadProgressWindow"));
    setWindowTitle(QStringLiteral("Download Progress"));
    setModal(true);

    symbolLabel = named(new QLabel, "symbolLabel");
    statusLabel = named(new QLabel(QStringLiteral("Connecting...")), "statusLabel");
    itemsBar = named(new QProgressBar, "itemsBar");
    recordsBar = named(new QProgressBar, "recordsBar");
    for (QProgressBar* bar : {itemsBar, recordsBar}) {
        bar->setRange(0, 1);
        bar->setValue(0);
        bar->setTextVisible(false);
    }
    completedCaption = named(new QLabel(QStringLiteral("Completed ")), "completedCaption");
    completedValue = named(new QLabel, "completedValue");
    upToDateCaption = named(new QLabel(QStringLiteral("Upto Date")), "upToDateCaption");
    upToDateValue = named(new QLabel, "upToDateValue");
    noDataCaption = named(new QLabel(QStringLiteral("No Data")), "noDataCaption");
    noDataValue = named(new QLabel, "noDataValue");
    resultsList = named(new QListWidget, "resultsList");
    cancelButton = named(new QPushButton(QStringLiteral("Cancel")), "cancelButton");
    cancelButton->setAutoDefault(false);

    for (QLabel* value : {completedValue, upToDateValue, noDataValue})
        value->setMinimumWidth(40);

    auto* top = new QGridLayout;
    top->addWidget(symbolLabel, 0, 0);
    top->addWidget(statusLabel, 0, 1);
    top->addWidget(itemsBar, 1, 0, 1, 2);
    top->addWidget(recordsBar, 2, 0, 1, 2);

    auto* counters = new QHBoxLayout;
    counters->addWidget(completedCaption);
    counters->addWidget(completedValue);
    counters->addStretch();
    counters->addWidget(upToDateCaption);
    counters->addWidget(upToDateValue);
    counters->addStretch();
    counters->addWidget(noDataCaption);
    counters->addWidget(noDataValue);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cancelButton);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(counters);
    layout->addWidget(resultsList, 1);
    layout->addLayout(buttons);
    resize(420, 360);

    connect(cancelButton, &QPushButton::clicked, this, [this] { cancelOrClose(); });
}

DownloadProgressWindow::~DownloadProgressWindow() = default;

void DownloadProgressWindow::centre() {
    CentreOnScreen(this);
}

void DownloadProgressWindow::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    centre();
}

void DownloadProgressWindow::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!loaded_)
        QTimer::singleShot(0, this, [this] { load(); });
}

void DownloadProgressWindow::load() {
    if (loaded_)
        return;
    loaded_ = true;
    try {
        show();
        run_.CancelRequested = false;
        completedCount = upToDateCount = noDataCount = 0;
        run_.completedCount = run_.upToDateCount = run_.noDataCount = 0;
        run_.ItemIndex = run_.RecordIndex = 0;
        centre();
        itemsBar->setRange(0, handOvers().DownloadItems.upperBound());
        statusLabel->setText(QStringLiteral("Connecting..."));
    } catch (const Failure&) {
        MsgBox(QStringLiteral("No Security Selected."), MsgIcon::Information, QStringLiteral("Marrowfin"));
        done(QDialog::Rejected);
        return;
    }
    RunDownload();
    if (closeWhenDone_)
        done(QDialog::Rejected);
}

void DownloadProgressWindow::RunDownload() { run_.RunDownload(); }

void DownloadProgressWindow::cancelOrClose() {
    if (cancelButton->text() == QStringLiteral("&Close")) {
        cancelButton->setText(QStringLiteral("Cancel"));
        done(QDialog::Accepted);
    } else {
        run_.CancelRequested = true;
    }
}

void DownloadProgressWindow::askToStop() {
    // The security in hand is finished, then the window goes.
    run_.CancelRequested = true;
    closeWhenDone_ = true;
}

void DownloadProgressWindow::closeEvent(QCloseEvent* event) {
    if (run_.Running()) {
        askToStop();
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void DownloadProgressWindow::reject() {
    if (run_.Running()) {
        askToStop();
        return;
    }
    QDialog::reject();
}

// --- reports of the run ---

void DownloadProgressWindow::itemStarted(int index, int, const QString& symbol, qint16 completed,
                                      qint16 upToDate, qint16 noData) {
    completedValue->setText(QString::number(completed));
    upToDateValue->setText(QString::number(upToDate));
    noDataValue->setText(QString::number(noData));
    symbolLabel->setText(symbol);
    itemsBar->setValue(index);
    recordsBar->setValue(0);
}

void DownloadProgressWindow::fetching(const QString& symbol) { statusLabel->setText(symbol); }

void DownloadProgressWindow::recordRange(int maximum) {
    if (maximum > 0)
        recordsBar->setRange(0, maximum);
}

void DownloadProgressWindow::recordProgress(int value) { recordsBar->setValue(value); }

void DownloadProgressWindow::lineAdded(const QString& line) {
    resultsList->addItem(line);
    resultsList->scrollToBottom();   // the newest line stays in view
}

void DownloadProgressWindow::countersChanged(qint16 completed, qint16 upToDate, qint16 noData) {
    completedCount = completed;
    upToDateCount = upToDate;
    noDataCount = noData;
}

void DownloadProgressWindow::captionChanged(const QString& caption) { setWindowTitle(caption); }

void DownloadProgressWindow::runEnded() { cancelButton->setText(QStringLiteral("&Close")); }
