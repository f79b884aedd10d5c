#include "catalogue/ui/frmCreateNewSymbols.h"

#include "catalogue/CreateSymbols.h"
#include "catalogue/ui/frmNewSymbol.h"
#include "catalogue/ui/frmSymbolLookup.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Module1.h"
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

frmCreateNewSymbols::frmCreateNewSymbols(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmCreateNewSymbols"));
    setWindowTitle(QStringLiteral("Create New Symbols"));
    setModal(true);

    Label1 = new QLabel(QStringLiteral("Data Folder"), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    txtDataFolder = new QLineEdit(this);
    txtDataFolder->setObjectName(QStringLiteral("txtDataFolder"));
    txtDataFolder->setMinimumWidth(280);
    Label1->setBuddy(txtDataFolder);
    cmdSelectFolder = new QToolButton(this);
    cmdSelectFolder->setObjectName(QStringLiteral("cmdSelectFolder"));
    cmdSelectFolder->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    cmdSelectFolder->setToolTip(ChooserTitle);

    Label2 = new QLabel(QStringLiteral("From Date"), this);
    Label2->setObjectName(QStringLiteral("Label2"));
    dtFrom = new QLineEdit(this);
    dtFrom->setObjectName(QStringLiteral("dtFrom"));
    dtFrom->setMaximumWidth(140);
    Label2->setBuddy(dtFrom);

    lstSymbols = new QListWidget(this);
    lstSymbols->setObjectName(QStringLiteral("lstSymbols"));
    lstSymbols->setMinimumHeight(220);

    auto button = [this](const char* name, const char* caption) {
        auto* b = new QPushButton(QString::fromLatin1(caption), this);
        b->setObjectName(QString::fromLatin1(name));
        b->setAutoDefault(false);
        return b;
    };
    cmdNewSymbol = button("cmdNewSymbol", "New Symbol");
    cmdSymbolLookup = button("cmdSymbolLookup", "Symbol LookUp");
    cmdYahoo = button("cmdYahoo", "Yahoo Lookup");
    cmdCreateSymbols = button("cmdCreateSymbols", "Create Symbols");
    cmdClose = button("cmdClose", "Close");

    auto* layout = new QGridLayout(this);
    layout->addWidget(Label1, 0, 0);
    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(txtDataFolder, 1);
    folderRow->addWidget(cmdSelectFolder);
    layout->addLayout(folderRow, 0, 1, 1, 2);
    layout->addWidget(Label2, 1, 0);
    layout->addWidget(dtFrom, 1, 1, Qt::AlignLeft);
    layout->addWidget(lstSymbols, 2, 0, 1, 2);
    auto* side = new QVBoxLayout;
    side->addWidget(cmdNewSymbol);
    side->addWidget(cmdSymbolLookup);
    side->addWidget(cmdYahoo);
    side->addStretch();
    side->addWidget(cmdCreateSymbols);
    side->addWidget(cmdClose);
    layout->addLayout(side, 2, 2);
    layout->setColumnStretch(1, 1);

    connect(cmdSelectFolder, &QToolButton::clicked, this, &frmCreateNewSymbols::cmdSelectFolder_Click);
    connect(cmdNewSymbol, &QPushButton::clicked, this, &frmCreateNewSymbols::cmdNewSymbol_Click);
    connect(cmdSymbolLookup, &QPushButton::clicked, this, &frmCreateNewSymbols::cmdSymbolLookup_Click);
    connect(cmdYahoo, &QPushButton::clicked, this, &frmCreateNewSymbols::cmdYahoo_Click);
    connect(cmdCreateSymbols, &QPushButton::clicked, this, &frmCreateNewSymbols::cmdCreateSymbols_Click);
    connect(cmdClose, &QPushButton::clicked, this, &frmCreateNewSymbols::cmdClose_Click);

    Form_Load();
}

frmCreateNewSymbols::~frmCreateNewSymbols() = default;

void frmCreateNewSymbols::Form_Load() {
    lstSymbols->clear();
    dtFrom->setText(InitialFromDate);
    txtDataFolder->setText(Module1::LastFolder);
}

SecurityWriter& frmCreateNewSymbols::writer() {
    if (!writer_)
        writer_ = std::make_unique<SecurityWriter>();
    return *writer_;
}

void frmCreateNewSymbols::chooseFolder() {
    txtDataFolder->setText(BrowseForFolder(this, ChooserTitle));
    Module1::LastFolder = txtDataFolder->text();
}

void frmCreateNewSymbols::cmdSelectFolder_Click() { chooseFolder(); }

void frmCreateNewSymbols::cmdNewSymbol_Click() {
    Module1::NewSymbol.clear();
    {
        frmNewSymbol prompt(this);
        prompt.exec();
    }
    if (!Module1::NewSymbol.trimmed().isEmpty())
        lstSymbols->addItem(Module1::NewSymbol);
}

void frmCreateNewSymbols::cmdSymbolLookup_Click() {
    {
        frmSymbolLookup lookup(this);
        lookup.exec();
    }
    // Whatever SelectedSymbols holds is appended, also after Close: the picks of an earlier
    // Select come in once more.
    const auto& picked = Module1::SelectedSymbols;
    for (int i = 1; i <= picked.upperBound(); ++i)
        lstSymbols->addItem(picked[i]);
}

void frmCreateNewSymbols::cmdYahoo_Click() { GoURL(WebLinks::YahooLookupPage); }

void frmCreateNewSymbols::cmdCreateSymbols_Click() {
    const auto fromDate = Regional::readDate(dtFrom->text().trimmed());
    if (!fromDate) {
        MsgBox(QStringLiteral("Invalid From Date"), MsgIcon::Warning);
        dtFrom->setFocus();
        return;
    }
    const QString folder = txtDataFolder->text().trimmed();
    if (folder.isEmpty()) {
        MsgBox(QStringLiteral("Data Folder is Empty."), MsgIcon::Information);
        chooseFolder();
        return;   // the user presses Create Symbols again
    }

    QStringList symbols;
    for (int i = 0; i < lstSymbols->count(); ++i)
        symbols << lstSymbols->item(i)->text();

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

void frmCreateNewSymbols::cmdClose_Click() { reject(); }

void frmCreateNewSymbols::Form_Resize() {
    CentreOnScreen(this);
}

void frmCreateNewSymbols::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    Form_Resize();
}

void frmCreateNewSymbols::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    Form_Resize();
}
