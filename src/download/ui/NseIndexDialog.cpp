#include "download/ui/NseIndexDialog.h"

#include "download/IndexDownload.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Platform.h"
#include "frame/ui/Centring.h"
#include "frame/ui/Widgets.h"

#include <QGridLayout>
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
    noteLabel = named(new QLabel(QStringLiteral(
                          "Use Separate folder for Index Data. No need to create symbols for Indices.")),
                      "noteLabel");
    noteLabel->setWordWrap(true);
    folderLabel->setBuddy(folderEdit);

    auto* layout = new QGridLayout(this);
    layout->addWidget(folderLabel, 0, 0, 1, 2);
    layout->addWidget(folderEdit, 1, 0);
    layout->addWidget(selectFolderButton, 1, 1);
    layout->addWidget(startDownloadButton, 2, 1);
    layout->addWidget(noteLabel, 3, 0, 1, 2);

    connect(selectFolderButton, &QPushButton::clicked, this, &NseIndexDialog::selectFolder);
    connect(startDownloadButton, &QPushButton::clicked, this, &NseIndexDialog::startDownload);

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
    try {
        IndexDownload(connection).Run(folderEdit->text());
    } catch (const Failure& failure) {
        // Nothing was unpacked: the user reads why and may try again.
        MsgBox(failure.Description, MsgIcon::Critical);
        startDownloadButton->setText(StartCaption);
        startDownloadButton->setEnabled(true);
        return;
    }
    // The extraction's own result is not judged here: the archive is the server's to get right.
    MsgBox(QStringLiteral("Download Complete."), MsgIcon::Information);
    accept();
}

void NseIndexDialog::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    CentreOnScreen(this);
}
