#include "catalogue/ui/CreateSymbolsDialog.h"

#include "catalogue/CreateSymbols.h"
#include "catalogue/ui/NewSymbolDialog.h"
#include "catalogue/ui/SymbolLookupDialog.h"
#include "store/SecurityWriter.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/ProgramState.h"
#include "frame/Platform.h"
#include "frame/Regional.h"
#include "frame/WebLinks.h"
#include "frame/ui/Centring.h"
#include "store/SecurityWriter.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
const QString ChooserTitle = QStringLiteral("Select Folder to Stoder the Symbols and Data");
// The from date a new dialog proposes, as typed text; day and month are alike, so it reads as
// 1 January 2004 in every order of the fields.
const QString InitialFromDate = QStringLiteral("01/01/2004");
} // namespace

CreateSymbolsDialog::CreateSymbolsDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("CreateSymbolsDialog"));
    setWindowTitle(QStringLiteral("Create New Symbols"));
    setModal(true);

    folderLabel = new QLabel(QStringLiteral("Data Folder"), this);
    folderLabel->setObjectName(QStringLiteral("folderLabel"));
    folderEdit = new QLineEdit(this);
    folderEdit->setObjectName(QStringLiteral("folderEdit"));
    folderEdit->setMinimumWidth(280);
    folderLabel->setBuddy(folderEdit);
    selectFolderButton = new QToolButton(this);
    selectFolderButton->setObjectName(QStringLiteral("selectFolderButton"));
    selectFolderButton->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    selectFolderButton->setToolTip(ChooserTitle);

    fromLabel = new QLabel(QStringLiteral("From Date"), this);
    fromLabel->setObjectName(QStringLiteral("fromLabel"));
    fromDateEdit = new QLineEdit(this);
    fromDateEdit->setObjectName(QStringLiteral("fromDateEdit"));
    fromDateEdit->setMaximumWidth(140);
    fromLabel->setBuddy(fromDateEdit);

    symbolsList = new QListWidget(this);
    symbolsList->setObjectName(QStringLiteral("symbolsList"));
    symbolsList->setMinimumHeight(220);

    auto button = [this](const char* name, const char* caption) {
        auto* b = new QPushButton(QString::fromLatin1(caption), this);
        b->setObjectName(QString::fromLatin1(name));
        b->setAutoDefault(false);
        return b;
    };
    newSymbolButton = button("newSymbolButton", "New Symbol");
    symbolLookupButton = button("symbolLookupButton", "Symbol LookUp");
    yahooLookupButton = button("yahooLookupButton", "Yahoo Lookup");
    createSymbolsButton = button("createSymbolsButton", "Create Symbols");
    closeButton = button("closeButton", "Close");

    auto* layout = new QGridLayout(this);
    layout->addWidget(folderLabel, 0, 0);
    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(folderEdit, 1);
    folderRow->addWidget(selectFolderButton);
    layout->addLayout(folderRow, 0, 1, 1, 2);
    layout->addWidget(fromLabel, 1, 0);
    layout->addWidget(fromDateEdit, 1, 1, Qt::AlignLeft);
    layout->addWidget(symbolsList, 2, 0, 1, 2);
    auto* side = new QVBoxLayout;
    side->addWidget(newSymbolButton);
    side->addWidget(symbolLookupButton);
    side->addWidget(yahooLookupButton);
    side->addStretch();
    side->addWidget(createSymbolsButton);
    side->addWidget(closeButton);
    layout->addLayout(side, 2, 2);
    layout->setColumnStretch(1, 1);

    connect(selectFolderButton, &QToolButton::clicked, this, &CreateSymbolsDialog::selectFolder);
    connect(newSymbolButton, &QPushButton::clicked, this, &CreateSymbolsDialog::newSymbol);
    connect(symbolLookupButton, &QPushButton::clicked, this, &CreateSymbolsDialog::symbolLookup);
    connect(yahooLookupButton, &QPushButton::clicked, this, &CreateSymbolsDialog::yahooLookup);
    connect(createSymbolsButton, &QPushButton::clicked, this, &CreateSymbolsDialog::createSymbols);
    connect(closeButton, &QPushButton::clicked, this, &CreateSymbolsDialog::closeDialog);

    load();
}

CreateSymbolsDialog::~CreateSymbolsDialog() = default;

void CreateSymbolsDialog::load() {
    symbolsList->clear();
    fromDateEdit->setText(InitialFromDate);
    folderEdit->setText(sharedState().LastFolder);
}

SecurityWriter& CreateSymbolsDialog::writer() {
    if (!writer_)
        writer_ = std::make_unique<SecurityWriter>();
    return *writer_;
}

void CreateSymbolsDialog::chooseFolder() {
    folderEdit->setText(BrowseForFolder(this, ChooserTitle));
    sharedState().LastFolder = folderEdit->text();
}

void CreateSymbolsDialog::selectFolder() { chooseFolder(); }

void CreateSymbolsDialog::newSymbol() {
    handOvers().NewSymbol.clear();
    {
        NewSymbolDialog prompt(this);
        prompt.exec();
    }
    if (!handOvers().NewSymbol.trimmed().isEmpty())
        symbolsList->addItem(handOvers().NewSymbol);
}

void CreateSymbolsDialog::symbolLookup() {
    {
        SymbolLookupDialog lookup(this);
        lookup.exec();
    }
    // Whatever SelectedSymbols holds is appended, also after Close: the picks of an earlier
    // Select come in once more.
    const auto& picked = handOvers().SelectedSymbols;
    for (int i = 1; i <= picked.upperBound(); ++i)
        symbolsList->addItem(picked[i]);
}

void CreateSymbolsDialog::yahooLookup() { GoURL(WebLinks::YahooLookupPage); }

void CreateSymbolsDialog::createSymbols() {
    // A date the store can't hold is refused here, before any security is touched.
    const auto fromDate = Regional::readDate(fromDateEdit->text().trimmed());
    if (!fromDate || !SecurityWriter::CanHoldDate(Regional::toStoreDate(*fromDate))) {
        MsgBox(QStringLiteral("Invalid From Date"), MsgIcon::Warning);
        fromDateEdit->setFocus();
        return;
    }
    const QString folder = folderEdit->text().trimmed();
    if (folder.isEmpty()) {
        MsgBox(QStringLiteral("Data Folder is Empty."), MsgIcon::Information);
        chooseFolder();
        return;   // the user presses Create Symbols again
    }

    QStringList symbols;
    for (int i = 0; i < symbolsList->count(); ++i)
        symbols << symbolsList->item(i)->text();

    try {
        CreateSymbols::CreateSecurities(writer(), folder, symbols, *fromDate);
        CreateSymbols::WriteValuesFile(folder, *fromDate);
    } catch (const Failure& failure) {
        // The dialog stays with its list; what was made so far stays made.
        MsgBox(failure.Description);
        return;
    }
    MsgBox(QStringLiteral("Securities are created successfully."), MsgIcon::Information);
    accept();
}

void CreateSymbolsDialog::closeDialog() { reject(); }

void CreateSymbolsDialog::layoutControls() {
    CentreOnScreen(this);
}

void CreateSymbolsDialog::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    layoutControls();
}

void CreateSymbolsDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    layoutControls();
}
