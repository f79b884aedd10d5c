#include "download/ui/NseIndexDialog.h"

#include "download/IndexDownload.h"
#include "download/ServiceAddresses.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Platform.h"
#include "frame/ui/Centring.h"
#include "frame/ui/Widgets.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {
const QString Section = QStringLiteral("Settings");
const QString IndexFolderKey = QStringLiteral("IndexFolder");
const QString StartCaption = QStringLiteral("Start Download");
}

NseIndexDialog::NseIndexDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("NseIndexDialog"));
    setWindowTitle(QStringLiteral("NSE Indices Download"));
    setModal(true);

    folderLabel = named(new QLabel(QStringLiteral("NSE Index Data Folder")), "folderLabel");
    folderEdit = named(new QLineEdit, "folderEdit");
    folderEdit->setMinimumWidth(320);
    selectFolderButton = named(new QPushButton(QStringLiteral("Select Folder")), "selectFolderButton");
    startDownloadButton = named(new QPushButton(StartCaption), "startDownloadButton");
    stopButton = named(new QPushButton(QStringLiteral("Stop")), "stopButton");
    stopButton->hide();
    // No button answers Enter: in the folder field it would open the chooser, whose Cancel
    // empties the field.
    for (QPushButton* button : {selectFolderButton, startDownloadButton, stopButton})
        button->setAutoDefault(false);
    progressLabel = named(new QLabel, "progressLabel");
    progressLabel->hide();
    noteLabel = named(new QLabel(QStringLiteral(
                          "Use Separate folder for Index Data. No need to create symbols for Indices.")),
                      "noteLabel");
    noteLabel->setWordWrap(true);
    folderLabel->setBuddy(folderEdit);

    auto* layout = new QGridLayout(this);
    layout->addWidget(folderLabel, 0, 0, 1, 2);
    layout->addWidget(folderEdit, 1, 0);
    layout->addWidget(selectFolderButton, 1, 1);
    // The day in hand and Stop share the row of Start Download, shown only during a run.
    auto* progressRow = new QHBoxLayout;
    progressRow->addWidget(progressLabel, 1);
    progressRow->addWidget(stopButton);
    layout->addLayout(progressRow, 2, 0);
    layout->addWidget(startDownloadButton, 2, 1);
    layout->addWidget(noteLabel, 3, 0, 1, 2);

    connect(selectFolderButton, &QPushButton::clicked, this, &NseIndexDialog::selectFolder);
    connect(startDownloadButton, &QPushButton::clicked, this, &NseIndexDialog::startDownload);
    connect(stopButton, &QPushButton::clicked, this, &NseIndexDialog::stop);

    folderEdit->setText(platform().getSetting(Section, IndexFolderKey, QString()));
}

void NseIndexDialog::selectFolder() {
    folderEdit->setText(BrowseForFolder(this, QStringLiteral("Select folder for Index Data")));
    if (!folderEdit->text().trimmed().isEmpty())
        platform().saveSetting(Section, IndexFolderKey, folderEdit->text());
}

void NseIndexDialog::startDownload() {
    if (folderEdit->text().trimmed().isEmpty()) {
        MsgBox(QStringLiteral("Folder Field Empty."), MsgIcon::Information);
        selectFolder();
        return;
    }
    startDownloadButton->setEnabled(false);
    startDownloadButton->setText(QStringLiteral("Downloading...."));
    const ServiceAddresses::Source source = ServiceAddresses::indexArchiveSource();
    if (source.today)
        updateFolder(source.address);
    else
        unpackArchive();
}

void NseIndexDialog::unpackArchive() {
    try {
        IndexDownload(connection).Run(folderEdit->text());
    } catch (const Failure& failure) {
        // Nothing was unpacked: the user reads why and may try again.
        MsgBox(failure.Description, MsgIcon::Critical);
        startAgain();
        return;
    }
    // The extraction's own result is not judged here: the archive is the server's to get right.
    MsgBox(QStringLiteral("Download Complete."), MsgIcon::Information);
    accept();
}

void NseIndexDialog::updateFolder(const QString& address) {
    NseIndexRun run(connection, address, *this);
    run_ = &run;
    stopButton->setEnabled(true);
    stopButton->show();
    progressLabel->clear();
    progressLabel->show();
    try {
        run.Run(folderEdit->text());
    } catch (const Failure& failure) {
        // The days written before the failure stay; the next run goes on from them.
        run_ = nullptr;
        progressLabel->clear();
        MsgBox(failure.Description, MsgIcon::Critical);
        startAgain();
        return;
    }
    run_ = nullptr;
    stopButton->hide();
    if (closeWhenDone_) {
        closeWhenDone_ = false;
        done(QDialog::Rejected);
        return;
    }
    if (run.Stopped()) {
        progressLabel->setText(QStringLiteral("Stopped. The next download goes on from here."));
        startAgain();
        return;
    }
    MsgBox(QStringLiteral("Download Complete."), MsgIcon::Information);
    accept();
}

void NseIndexDialog::startAgain() {
    stopButton->hide();
    startDownloadButton->setText(StartCaption);
    startDownloadButton->setEnabled(true);
}

void NseIndexDialog::stop() {
    if (run_)
        run_->StopRequested = true;
    stopButton->setEnabled(false);
}

void NseIndexDialog::dayStarted(const QString& line) { progressLabel->setText(line); }

void NseIndexDialog::dayUpdated(const QString& line) { progressLabel->setText(line); }

void NseIndexDialog::closeEvent(QCloseEvent* event) {
    // Closed during a day-by-day run: the screen goes once the day in hand is written.
    if (run_) {
        stop();
        closeWhenDone_ = true;
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void NseIndexDialog::reject() {
    if (run_) {
        stop();
        closeWhenDone_ = true;
        return;
    }
    QDialog::reject();
}

void NseIndexDialog::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    CentreOnScreen(this);
}
