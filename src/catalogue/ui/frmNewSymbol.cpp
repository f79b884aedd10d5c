#include "catalogue/ui/frmNewSymbol.h"

#include "frame/Module1.h"
#include "frame/ui/Centring.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

frmNewSymbol::frmNewSymbol(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmNewSymbol"));
    setWindowTitle(QStringLiteral("New Symbol"));
    setModal(true);

    Label1 = new QLabel(QStringLiteral("Enter Symbol Name"), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    Text1 = new QLineEdit(this);
    Text1->setObjectName(QStringLiteral("Text1"));
    Label1->setBuddy(Text1);
    Command1 = new QPushButton(QStringLiteral("OK"), this);
    Command1->setObjectName(QStringLiteral("Command1"));
    Command1->setDefault(true);
    Command2 = new QPushButton(QStringLiteral("Close"), this);
    Command2->setObjectName(QStringLiteral("Command2"));

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(Command1);
    buttons->addWidget(Command2);
    auto* layout = new QGridLayout(this);
    layout->addWidget(Label1, 0, 0);
    layout->addWidget(Text1, 0, 1);
    layout->addLayout(buttons, 1, 0, 1, 2);
    Text1->setMinimumWidth(180);

    connect(Command1, &QPushButton::clicked, this, &frmNewSymbol::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &frmNewSymbol::Command2_Click);
}

void frmNewSymbol::Command1_Click() {
    Module1::NewSymbol = Text1->text().trimmed();
    accept();
}

void frmNewSymbol::Command2_Click() { reject(); }

void frmNewSymbol::Form_Resize() {
    CentreOnScreen(this);
}

void frmNewSymbol::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    Form_Resize();
}

void frmNewSymbol::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    Form_Resize();
}
