#include "catalogue/ui/SymbolLookupDialog.h"

#include "frame/ProgramState.h"
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

SymbolLookupDialog::SymbolLookupDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("SymbolLookupDialog"));
    setWindowTitle(QStringLiteral("Symbol Lookup"));
    setModal(true);

    groupLabel = new QLabel(QStringLiteral("Group"), this);
    groupLabel->setObjectName(QStringLiteral("groupLabel"));
    groupsCombo = new QComboBox(this);
    groupsCombo->setObjectName(QStringLiteral("groupsCombo"));
    groupsCombo->setEditable(false);
    groupLabel->setBuddy(groupsCombo);

    namesList = new QListWidget(this);
    namesList->setObjectName(QStringLiteral("namesList"));
    namesList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    namesList->setMinimumSize(340, 260);

    symbolLabel = new QLabel(QStringLiteral("Symbol"), this);
    symbolLabel->setObjectName(QStringLiteral("symbolLabel"));
    symbolEdit = new QLineEdit(this);
    symbolEdit->setObjectName(QStringLiteral("symbolEdit"));
    symbolLabel->setBuddy(symbolEdit);

    noticeLabel = new QLabel(NoticeText + u' ' + WebLinks::MakerEmail, this);
    noticeLabel->setObjectName(QStringLiteral("noticeLabel"));
    noticeLabel->setWordWrap(true);

    noSymbolsLabel = new QLabel(QStringLiteral("No symbols to show: the symbol list (symbols.csv) is missing or empty."), this);
    noSymbolsLabel->setObjectName(QStringLiteral("noSymbolsLabel"));
    noSymbolsLabel->setWordWrap(true);
    noSymbolsLabel->setVisible(false);

    selectButton = new QPushButton(QStringLiteral("Select"), this);
    selectButton->setObjectName(QStringLiteral("selectButton"));
    selectButton->setDefault(true);
    closeButton = new QPushButton(QStringLiteral("Close"), this);
    closeButton->setObjectName(QStringLiteral("closeButton"));

    auto* layout = new QGridLayout(this);
    layout->addWidget(groupLabel, 0, 0);
    layout->addWidget(groupsCombo, 0, 1);
    layout->addWidget(noSymbolsLabel, 1, 0, 1, 2);
    layout->addWidget(namesList, 2, 0, 1, 2);
    layout->addWidget(symbolLabel, 3, 0);
    layout->addWidget(symbolEdit, 3, 1);
    layout->addWidget(noticeLabel, 4, 0, 1, 2);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(selectButton);
    buttons->addWidget(closeButton);
    layout->addLayout(buttons, 5, 0, 1, 2);
    layout->setColumnStretch(1, 1);

    connect(groupsCombo, &QComboBox::currentIndexChanged, this, [this] { groupChosen(); });
    connect(namesList, &QListWidget::itemSelectionChanged, this, &SymbolLookupDialog::nameClicked);
    connect(selectButton, &QPushButton::clicked, this, &SymbolLookupDialog::select);
    connect(closeButton, &QPushButton::clicked, this, &SymbolLookupDialog::closeDialog);

    load();
}

// Fill groups: one line of cmbGroups for each run of equal Group values, in file order.
void SymbolLookupDialog::load() {
    const auto& SymbolEntries = sharedState().SymbolEntries;
    const qint32 SymbolCount = sharedState().SymbolCount;
    groupsCombo->clear();
    if (SymbolCount < 1 || SymbolEntries.upperBound() < 1) {
        // Nothing to browse: the lists stay empty and Select hands back nothing.
        noSymbolsLabel->setVisible(true);
        return;
    }
    const int count = qMin<int>(SymbolCount, SymbolEntries.upperBound());
    QString previous = SymbolEntries[1].Group.trimmed();
    groupsCombo->addItem(previous);
    for (int i = 2; i <= count; ++i) {
        const QString group = SymbolEntries[i].Group.trimmed();
        if (group != previous) {
            groupsCombo->addItem(group);
            previous = group;
        }
    }
    // Selecting the first line shows the first group at once.
    groupsCombo->setCurrentIndex(0);
}

void SymbolLookupDialog::groupChosen() {
    if (groupsCombo->currentIndex() < 0)
        return;
    QString group = groupsCombo->currentText();
    LoadSymbols(group);
}

void SymbolLookupDialog::LoadSymbols(QString& strGroup) {
    const auto& SymbolEntries = sharedState().SymbolEntries;
    const qint32 SymbolCount = sharedState().SymbolCount;
    namesList->clear();
    VisibleCount = 0;
    VisibleSymbols.clear();

    const QString wanted = strGroup.trimmed();
    const int count = qMin<int>(SymbolCount, SymbolEntries.upperBound());
    for (int i = 1; i <= count; ++i) {
        const SymbolEntry& entry = SymbolEntries[i];
        if (entry.Group.trimmed() != wanted)
            continue;
        namesList->addItem(entry.Name);
        ++VisibleCount;
        VisibleSymbols.resizeTo(VisibleCount);
        VisibleSymbols[VisibleCount] = entry.Symbol.trimmed();
    }

    if (VisibleCount > 0) {
        namesList->setFocus();
        namesList->setCurrentRow(0, QItemSelectionModel::ClearAndSelect);
    }
    nameClicked();
}

void SymbolLookupDialog::nameClicked() {
    const int index = namesList->currentRow() + 1;
    symbolEdit->setText(index >= 1 && index <= VisibleSymbols.upperBound() ? VisibleSymbols[index] : QString());
}

void SymbolLookupDialog::select() {
    auto& SelectedSymbols = handOvers().SelectedSymbols;
    SelectedSymbols.clear();
    int k = 0;
    for (int i = 0; i < namesList->count(); ++i) {
        if (!namesList->item(i)->isSelected())
            continue;
        ++k;
        SelectedSymbols.resizeTo(k);
        SelectedSymbols[k] = i + 1 <= VisibleSymbols.upperBound() ? VisibleSymbols[i + 1] : QString();
    }
    accept();
}

void SymbolLookupDialog::closeDialog() { reject(); }

void SymbolLookupDialog::layoutControls() {
    CentreOnScreen(this);
}

void SymbolLookupDialog::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    layoutControls();
}

void SymbolLookupDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    layoutControls();
}
