#include "catalogue/ui/frmSymbolLookup.h"

#include "frame/Module1.h"
#include "frame/WebLinks.h"
#include "frame/ui/Centring.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

namespace {
const QString NoticeText = QStringLiteral(
    "This Symbol Lookup is not have complete list of symbols or all of them are not accurate. "
    "If you found that a symbols is not available or not valid, please mail me to");
}

frmSymbolLookup::frmSymbolLookup(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSymbolLookup"));
    setWindowTitle(QStringLiteral("Symbol Lookup"));
    setModal(true);

    Label1 = new QLabel(QStringLiteral("Group"), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    cmbGroups = new QComboBox(this);
    cmbGroups->setObjectName(QStringLiteral("cmbGroups"));
    cmbGroups->setEditable(false);
    Label1->setBuddy(cmbGroups);

    lstSymbolNames = new QListWidget(this);
    lstSymbolNames->setObjectName(QStringLiteral("lstSymbolNames"));
    lstSymbolNames->setSelectionMode(QAbstractItemView::ExtendedSelection);
    lstSymbolNames->setMinimumSize(340, 260);

    Label2 = new QLabel(QStringLiteral("Symbol"), this);
    Label2->setObjectName(QStringLiteral("Label2"));
    txtSymbol = new QLineEdit(this);
    txtSymbol->setObjectName(QStringLiteral("txtSymbol"));
    Label2->setBuddy(txtSymbol);

    Label3 = new QLabel(NoticeText + u' ' + WebLinks::MakerEmail, this);
    Label3->setObjectName(QStringLiteral("Label3"));
    Label3->setWordWrap(true);

    lblNoSymbols = new QLabel(QStringLiteral("No symbols to show: the symbol list (symbols.csv) is missing or empty."), this);
    lblNoSymbols->setObjectName(QStringLiteral("lblNoSymbols"));
    lblNoSymbols->setWordWrap(true);
    lblNoSymbols->setVisible(false);

    Command1 = new QPushButton(QStringLiteral("Select"), this);
    Command1->setObjectName(QStringLiteral("Command1"));
    Command1->setDefault(true);
    Command2 = new QPushButton(QStringLiteral("Close"), this);
    Command2->setObjectName(QStringLiteral("Command2"));

    auto* layout = new QGridLayout(this);
    layout->addWidget(Label1, 0, 0);
    layout->addWidget(cmbGroups, 0, 1);
    layout->addWidget(lblNoSymbols, 1, 0, 1, 2);
    layout->addWidget(lstSymbolNames, 2, 0, 1, 2);
    layout->addWidget(Label2, 3, 0);
    layout->addWidget(txtSymbol, 3, 1);
    layout->addWidget(Label3, 4, 0, 1, 2);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(Command1);
    buttons->addWidget(Command2);
    layout->addLayout(buttons, 5, 0, 1, 2);
    layout->setColumnStretch(1, 1);

    connect(cmbGroups, &QComboBox::currentIndexChanged, this, [this] { cmbGroups_Click(); });
    connect(lstSymbolNames, &QListWidget::itemSelectionChanged, this, &frmSymbolLookup::lstSymbolNames_Click);
    connect(Command1, &QPushButton::clicked, this, &frmSymbolLookup::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &frmSymbolLookup::Command2_Click);

    Form_Load();
}

// Fill groups: one line of cmbGroups for each run of equal Group values, in file order.
void frmSymbolLookup::Form_Load() {
    using namespace Module1;
    cmbGroups->clear();
    if (SymbolCount < 1 || SymbolEntries.upperBound() < 1) {
        // Nothing to browse: the lists stay empty and Select hands back nothing.
        lblNoSymbols->setVisible(true);
        return;
    }
    const int count = qMin<int>(SymbolCount, SymbolEntries.upperBound());
    QString previous = SymbolEntries[1].Group.trimmed();
    cmbGroups->addItem(previous);
    for (int i = 2; i <= count; ++i) {
        const QString group = SymbolEntries[i].Group.trimmed();
        if (group != previous) {
            cmbGroups->addItem(group);
            previous = group;
        }
    }
    // Selecting the first line shows the first group at once.
    cmbGroups->setCurrentIndex(0);
}

void frmSymbolLookup::cmbGroups_Click() {
    if (cmbGroups->currentIndex() < 0)
        return;
    QString group = cmbGroups->currentText();
    LoadSymbols(group);
}

void frmSymbolLookup::LoadSymbols(QString& strGroup) {
    using namespace Module1;
    lstSymbolNames->clear();
    VisibleCount = 0;
    VisibleSymbols.clear();

    const QString wanted = strGroup.trimmed();
    const int count = qMin<int>(SymbolCount, SymbolEntries.upperBound());
    for (int i = 1; i <= count; ++i) {
        const SymbolEntry& entry = SymbolEntries[i];
        if (entry.Group.trimmed() != wanted)
            continue;
        lstSymbolNames->addItem(entry.Name);
        ++VisibleCount;
        VisibleSymbols.resizeTo(VisibleCount);
        VisibleSymbols[VisibleCount] = entry.Symbol.trimmed();
    }

    if (VisibleCount > 0) {
        lstSymbolNames->setFocus();
        lstSymbolNames->setCurrentRow(0, QItemSelectionModel::ClearAndSelect);
    }
    lstSymbolNames_Click();
}

void frmSymbolLookup::lstSymbolNames_Click() {
    const int index = lstSymbolNames->currentRow() + 1;
    txtSymbol->setText(index >= 1 && index <= VisibleSymbols.upperBound() ? VisibleSymbols[index] : QString());
}

void frmSymbolLookup::Command1_Click() {
    using namespace Module1;
    SelectedSymbols.clear();
    int k = 0;
    for (int i = 0; i < lstSymbolNames->count(); ++i) {
        if (!lstSymbolNames->item(i)->isSelected())
            continue;
        ++k;
        SelectedSymbols.resizeTo(k);
        SelectedSymbols[k] = i + 1 <= VisibleSymbols.upperBound() ? VisibleSymbols[i + 1] : QString();
    }
    accept();
}

void frmSymbolLookup::Command2_Click() { reject(); }

void frmSymbolLookup::Form_Resize() {
    CentreOnScreen(this);
}

void frmSymbolLookup::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    Form_Resize();
}

void frmSymbolLookup::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    Form_Resize();
}
