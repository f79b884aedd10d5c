#include "download/ui/NseDownloaderDialog.h"

#include "download/BhavCopy.h"
#include "frame/CommonRoutines.h"
#include "frame/ProgramState.h"
#include "frame/ui/Centring.h"
#include "frame/ui/Widgets.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
const QString ChooserTitle = QStringLiteral("Select Folder for Download");
constexpr int TickMs = 100;
} // namespace

NseDownloaderDialog::NseDownloaderDialog(QWidget* parent)
    : QDialog(parent), source_(MakeBhavCopySource(connection)),
      run_(std::make_unique<NseDailyRun>(*source_, *this)) {
    setObjectName(QStringLiteral("NseDownloaderDialog"));
    setWindowTitle(QStringLiteral("NSE Downloader"));
    setModal(true);

    folderLabel = named(new QLabel(QStringLiteral("Data Directory")), "folderLabel");
    folderEdit = named(new QLineEdit, "folderEdit");
    folderEdit->setMinimumWidth(300);
    folderLabel->setBuddy(folderEdit);
    folderButton = named(new QToolButton, "folderButton");
    folderButton->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    folderButton->setToolTip(ChooserTitle);

    beginDownloadButton = named(new QPushButton(QStringLiteral("Begin Download")), "beginDownloadButton");
    stopButton = named(new QPushButton(QStringLiteral("STOP")), "stopButton");
    stopButton->hide();
    closeButton = named(new QPushButton(QStringLiteral("Close")), "closeButton");
    for (QPushButton* b : {beginDownloadButton, stopButton, closeButton})
        b->setAutoDefault(false);

    daysList = named(new QListWidget, "daysList");
    daysList->setMinimumHeight(200);
    progressBar = named(new QProgressBar, "progressBar");
    progressBar->setRange(1, 100);
    progressBar->setValue(1);
    progressBar->setTextVisible(false);
    progressTimer = new QTimer(this);
    progressTimer->setObjectName(QStringLiteral("progressTimer"));

    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(folderLabel);
    folderRow->addWidget(folderEdit, 1);
    folderRow->addWidget(folderButton);

    // Begin Download and STOP share one place.
    auto* buttons = new QGridLayout;
    buttons->addWidget(beginDownloadButton, 0, 0);
    buttons->addWidget(stopButton, 0, 0);
    buttons->setColumnStretch(1, 1);
    buttons->addWidget(closeButton, 0, 2);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(folderRow);
    layout->addWidget(daysList, 1);
    layout->addWidget(progressBar);
    layout->addLayout(buttons);
    resize(460, 360);

    connect(folderButton, &QToolButton::clicked, this, &NseDownloaderDialog::chooseFolder);
    connect(beginDownloadButton, &QPushButton::clicked, this, &NseDownloaderDialog::beginDownload);
    connect(stopButton, &QPushButton::clicked, this, &NseDownloaderDialog::stop);
    connect(closeButton, &QPushButton::clicked, this, &NseDownloaderDialog::closeDialog);
    connect(progressTimer, &QTimer::timeout, this, &NseDownloaderDialog::tick);

    load();
}

NseDownloaderDialog::~NseDownloaderDialog() = default;

void NseDownloaderDialog::load() { folderEdit->setText(sharedState().LastFolder); }

void NseDownloaderDialog::chooseFolder() {
    folderEdit->setText(BrowseForFolder(this, ChooserTitle));
    sharedState().LastFolder = folderEdit->text().trimmed();
}

void NseDownloaderDialog::beginDownload() {
    run_->BeginDownload(folderEdit->text());
    if (closeWhenDone_) {
        closeWhenDone_ = false;
        done(QDialog::Rejected);
    }
}

void NseDownloaderDialog::stop() {
    run_->StopRequested = true;
    stopButton->hide();
}

void NseDownloaderDialog::closeDialog() { done(QDialog::Rejected); }

void NseDownloaderDialog::tick() {
    if (++progressCounter_ > 100)
        progressCounter_ = 1;
    progressBar->setValue(progressCounter_);
}

void NseDownloaderDialog::leaveAfterTheDayInHand() {
    run_->LeaveRequested = true;
    closeWhenDone_ = true;
}

void NseDownloaderDialog::closeEvent(QCloseEvent* event) {
    if (run_->Running()) {
        leaveAfterTheDayInHand();
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void NseDownloaderDialog::reject() {
    if (run_->Running()) {
        leaveAfterTheDayInHand();
        return;
    }
    QDialog::reject();
}

void NseDownloaderDialog::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    CentreOnScreen(this);
}

// --- reports of the run ---

void NseDownloaderDialog::runStarted() {
    closeButton->setEnabled(false);
    beginDownloadButton->hide();
    stopButton->show();
}

void NseDownloaderDialog::walkStarted() {
    progressTimer->start(TickMs);
    daysList->clear();
}

void NseDownloaderDialog::dayUpdated(const QString& line) {
    daysList->addItem(line);
    daysList->setCurrentRow(daysList->count() - 1);
}

void NseDownloaderDialog::walkEnded() {
    progressTimer->stop();
    progressBar->setValue(1);
}

void NseDownloaderDialog::runEnded() {
    closeButton->setEnabled(true);
    beginDownloadButton->show();
    stopButton->hide();
}
