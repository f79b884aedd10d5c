#include "catalogue/ui/NewSymbolDialog.h"

#include "frame/ProgramState.h"
#include "frame/ui/Centring.h"
#include "store/MetaStockFormat.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QValidator>

namespace {

// Keeps out, as it is typed or pasted, a symbol longer than the store takes; blanks round it
// don't count, since the symbol is taken trimmed.
class SymbolLengthValidator : public QValidator {
public:
    using QValidator::QValidator;
    State validate(QString& input, int&) const override {
        return input.trimmed().size() > metastock::MaxSymbolLength ? Invalid : Acceptable;
    }
};

} // namespace

NewSymbolDialog::NewSymbolDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("NewSymbolDialog"));
    setWindowTitle(QStringLiteral("New Symbol"));
    setModal(true);

    symbolLabel = new QLabel(QStringLiteral("Enter Symbol Name"), this);
    symbolLabel->setObjectName(QStringLiteral("symbolLabel"));
    symbolEdit = new QLineEdit(this);
    symbolEdit->setObjectName(QStringLiteral("symbolEdit"));
    symbolEdit->setValidator(new SymbolLengthValidator(symbolEdit));
    symbolLabel->setBuddy(symbolEdit);
    okButton = new QPushButton(QStringLiteral("OK"), this);
    okButton->setObjectName(QStringLiteral("okButton"));
    okButton->setDefault(true);
    closeButton = new QPushButton(QStringLiteral("Close"), this);
    closeButton->setObjectName(QStringLiteral("closeButton"));

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(okButton);
    buttons->addWidget(closeButton);
    auto* layout = new QGridLayout(this);
    layout->addWidget(symbolLabel, 0, 0);
    layout->addWidget(symbolEdit, 0, 1);
    layout->addLayout(buttons, 1, 0, 1, 2);
    symbolEdit->setMinimumWidth(180);

    connect(okButton, &QPushButton::clicked, this, &NewSymbolDialog::takeSymbol);
    connect(closeButton, &QPushButton::clicked, this, &NewSymbolDialog::closeDialog);
}

void NewSymbolDialog::takeSymbol() {
    handOvers().NewSymbol = symbolEdit->text().trimmed();
    accept();
}

void NewSymbolDialog::closeDialog() { reject(); }

void NewSymbolDialog::layoutControls() {
    CentreOnScreen(this);
}

void NewSymbolDialog::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    layoutControls();
}

void NewSymbolDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    layoutControls();
}
