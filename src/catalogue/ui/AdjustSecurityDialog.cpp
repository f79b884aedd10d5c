#include "catalogue/ui/AdjustSecurityDialog.h"

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
#include <QVBoxLayout>

AdjustSecurityDialog::AdjustSecurityDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("AdjustSecurityDialog"));
    setWindowTitle(QStringLiteral("Adjust Security"));
    setModal(true);

    driveList = named(new DriveList(this), "driveList");
    folderList = named(new FolderList(this), "folderList");
    securitiesList = named(new QListWidget(this), "securitiesList");
    nameEdit = named(new QLineEdit(this), "nameEdit");
    symbolEdit = named(new QLineEdit(this), "symbolEdit");
    firstDateEdit = named(new QLineEdit(this), "firstDateEdit");
    firstDateEdit->setReadOnly(true);
    changeButton = named(new QPushButton(QStringLiteral("&Change"), this), "changeButton");
    deleteButton = named(new QPushButton(QStringLiteral("&Delete Security"), this), "deleteButton");
    closeButton = named(new QPushButton(QStringLiteral("&Close"), this), "closeButton");
    for (QPushButton* b : {changeButton, deleteButton, closeButton}) {
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
    boxes->addRow(QStringLiteral("First Date"), firstDateEdit);

    auto buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(changeButton);
    buttons->addWidget(deleteButton);
    buttons->addWidget(closeButton);

    auto right = new QVBoxLayout;
    right->addWidget(securitiesList, 1);
    right->addLayout(boxes);

    auto top = new QHBoxLayout;
    top->addLayout(walk, 1);
    top->addLayout(right, 1);

    auto layout = new QVBoxLayout(this);
    layout->addLayout(top, 1);
    layout->addLayout(buttons);
    resize(640, 420);

    // Where the walk begins; the list stays empty until the folder first changes.
    const QString start = FolderList::startingFolder();
    folderList->startAt(start);
    driveList->showDriveOf(folderList->path());
    firstDateEdit->setText(Regional::dateText(platform().today()));

    connect(driveList, &DriveList::driveChanged, this, &AdjustSecurityDialog::driveChosen);
    connect(folderList, &FolderList::pathChanged, this, [this] {
        driveList->showDriveOf(folderList->path());
        listSecurities();
    });
    OnSecurityPicked(securitiesList, [this] { showSecurity(); });
    connect(changeButton, &QPushButton::clicked, this, &AdjustSecurityDialog::changeSecurity);
    connect(deleteButton, &QPushButton::clicked, this, &AdjustSecurityDialog::deleteSecurity);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::reject);
}

AdjustSecurityDialog::~AdjustSecurityDialog() = default;

void AdjustSecurityDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!loaded_) {
        loaded_ = true;
        CentreOnScreen(this);   // once, when the screen loads
    }
}

void AdjustSecurityDialog::driveChosen() { folderList->setPath(driveList->drive()); }

// A folder that holds no store lists nothing and tells nothing; the buttons follow the list.
void AdjustSecurityDialog::listSecurities() {
    ListSecurityNames(securitiesList, folderList->path());
    const bool any = securitiesList->count() >= 1;
    changeButton->setEnabled(any);
    deleteButton->setEnabled(any);
}

void AdjustSecurityDialog::showSecurity() {
    QListWidgetItem* item = securitiesList->currentItem();
    if (!item)
        return;
    SecurityReader reader;
    try {
        reader.OpenFolder(folderList->path());
        reader.FindSecurity(item->text().trimmed());
        nameEdit->setText(reader.GetName());
        symbolEdit->setText(reader.GetSymbol());
        firstDateEdit->setText(DateToText(reader.GetFirstDate()));
        reader.CloseSecurity();
        reader.CloseFolder();
    } catch (const Failure&) {
        // Silent: the boxes keep what they got so far.
        passOver([&] { reader.CloseSecurity(); });
        passOver([&] { reader.CloseFolder(); });
        return;
    }
    oldSymbol_ = symbolEdit->text().trimmed();
}

void AdjustSecurityDialog::changeSecurity() {
    SecurityWriter writer;
    try {
        writer.OpenFolder(folderList->path());
        writer.ChangeSecurity(oldSymbol_, nameEdit->text().trimmed(), symbolEdit->text().trimmed());
        writer.CloseFolder();
    } catch (const Failure& failure) {
        passOver([&] { writer.CloseFolder(); });
        MsgBox(failure.Description);
        return;
    }
    listSecurities();
}

// The symbol in the box says which security goes, whatever was clicked; nothing is asked first.
void AdjustSecurityDialog::deleteSecurity() {
    {
        SecurityWriter writer;
        try {
            writer.OpenFolder(folderList->path());
            writer.DeleteSecurity(symbolEdit->text().trimmed());
            writer.CloseFolder();
        } catch (const Failure&) {
            passOver([&] { writer.CloseFolder(); });
            return;
        }
    }
    listSecurities();
}
