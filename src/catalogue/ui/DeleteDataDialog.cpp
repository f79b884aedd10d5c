#include "catalogue/ui/DeleteDataDialog.h"

#include "catalogue/ui/SecurityNames.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Platform.h"
#include "frame/Regional.h"
#include "frame/ui/CapitalsAsTyped.h"
#include "frame/ui/Centring.h"
#include "frame/ui/DriveList.h"
#include "frame/ui/FolderList.h"
#include "frame/ui/Widgets.h"
#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

DeleteDataDialog::DeleteDataDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("DeleteDataDialog"));
    setWindowTitle(QStringLiteral("Delete Data"));
    setModal(true);

    driveList = named(new DriveList(this), "driveList");
    folderList = named(new FolderList(this), "folderList");
    securitiesList = named(new QListWidget(this), "securitiesList");
    nameEdit = named(new QLineEdit(this), "nameEdit");
    symbolEdit = named(new QLineEdit(this), "symbolEdit");
    dateEdit = named(new QLineEdit(this), "dateEdit");
    deleteBeforeOption = named(new QRadioButton(QStringLiteral("Delete Before"), this), "deleteBeforeOption");
    deleteAfterOption = named(new QRadioButton(QStringLiteral("Delete After"), this), "deleteAfterOption");
    deleteBeforeOption->setChecked(true);
    deleteButton = named(new QPushButton(QStringLiteral("&Delete"), this), "deleteButton");
    closeButton = named(new QPushButton(QStringLiteral("Close"), this), "closeButton");
    for (QPushButton* b : {deleteButton, closeButton}) {
        b->setAutoDefault(false);   // Enter belongs to the folder list
        b->setDefault(false);
    }
    TypeInCapitals(symbolEdit);

    auto walk = new QVBoxLayout;
    walk->addWidget(driveList);
    walk->addWidget(folderList, 1);

    auto boxes = new QFormLayout;
    boxes->addRow(QStringLiteral("Name"), nameEdit);
    boxes->addRow(QStringLiteral("Symbol"), symbolEdit);
    boxes->addRow(QString(), dateEdit);
    auto options = new QHBoxLayout;
    options->addWidget(deleteBeforeOption);
    options->addWidget(deleteAfterOption);
    options->addStretch();
    boxes->addRow(QString(), options);

    auto right = new QVBoxLayout;
    right->addWidget(securitiesList, 1);
    right->addLayout(boxes);

    auto top = new QHBoxLayout;
    top->addLayout(walk, 1);
    top->addLayout(right, 1);

    auto buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(deleteButton);
    buttons->addWidget(closeButton);

    auto layout = new QVBoxLayout(this);
    layout->addLayout(top, 1);
    layout->addLayout(buttons);
    resize(640, 420);

    // Where the walk begins; the list stays empty until the folder first changes.
    folderList->startAt(FolderList::startingFolder());
    driveList->showDriveOf(folderList->path());
    dateEdit->setText(Regional::dateText(platform().today()));

    connect(driveList, &DriveList::driveChanged, this, &DeleteDataDialog::driveChosen);
    connect(folderList, &FolderList::pathChanged, this, [this] {
        driveList->showDriveOf(folderList->path());
        listSecurities();
    });
    OnSecurityPicked(securitiesList, [this] { showSecurity(); });
    connect(deleteButton, &QPushButton::clicked, this, &DeleteDataDialog::deleteRecords);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::reject);
}

DeleteDataDialog::~DeleteDataDialog() = default;

SecurityReader& DeleteDataDialog::reader() {
    if (!reader_)
        reader_ = std::make_unique<SecurityReader>();
    return *reader_;
}

SecurityWriter& DeleteDataDialog::writer() {
    if (!writer_)
        writer_ = std::make_unique<SecurityWriter>();
    return *writer_;
}

void DeleteDataDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!loaded_) {
        loaded_ = true;
        CentreOnScreen(this);   // once, when the screen loads
    }
}

void DeleteDataDialog::driveChosen() { folderList->setPath(driveList->drive()); }

void DeleteDataDialog::listSecurities() {
    ListSecurityNames(securitiesList, folderList->path());
    deleteButton->setEnabled(securitiesList->count() >= 1);
}

// The date box proposes the security's last date.
void DeleteDataDialog::showSecurity() {
    QListWidgetItem* item = securitiesList->currentItem();
    if (!item)
        return;
    SecurityReader& r = reader();
    try {
        r.OpenFolder(folderList->path());
        r.FindSecurity(item->text().trimmed());
        nameEdit->setText(r.GetName());
        symbolEdit->setText(r.GetSymbol());
        dateEdit->setText(DateToText(r.GetLastDate()));
        r.CloseSecurity();
        r.CloseFolder();
    } catch (const Failure&) {
        // Silent: the boxes keep what they got so far.
        passOver([&] { r.CloseSecurity(); });
        passOver([&] { r.CloseFolder(); });
    }
}

// Removes the records of the security named in the Name box from its first date to the date in
// the date box, as the store counts a range; an end before the start goes to the store as it is.
// Nothing is asked and nothing is told, and "Delete After" makes this do nothing at all.
void DeleteDataDialog::deleteRecords() {
    if (!deleteBeforeOption->isChecked())
        return;
    const QString name = nameEdit->text().trimmed();
    const QString folder = folderList->path();

    QString first;
    SecurityReader& r = reader();
    try {
        r.OpenFolder(folder);
        r.FindSecurity(name);
        first = QString::number(r.GetFirstDate());
        r.CloseFolder();
        r.CloseSecurity();
    } catch (const Failure&) {
        passOver([&] { r.CloseFolder(); });
        return;
    }

    SecurityWriter& w = writer();
    try {
        w.OpenFolder(folder);
        w.FindSecurity(name);
        // A date box that holds no date ends here: nothing is deleted from an unset date.
        const std::optional<QDate> chosen = Regional::readDate(dateEdit->text());
        if (!chosen)
            throw Failure(FailureNumber::TypeMismatch, QStringLiteral("Type mismatch"));
        w.DeleteQuotes(first, Regional::yyyymmdd(*chosen));
        w.CloseFolder();
        w.CloseSecurity();
    } catch (const Failure&) {
        passOver([&] { w.CloseFolder(); });
    }
}
