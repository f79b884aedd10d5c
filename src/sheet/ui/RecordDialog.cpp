#include "sheet/ui/RecordDialog.h"

#include "frame/Platform.h"
#include "frame/Regional.h"
#include "frame/ui/Centring.h"
#include "sheet/ui/DateBox.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>
#include <optional>

namespace {

const QString Marrowfin = QStringLiteral("Marrowfin");

QLineEdit* valueBox(QWidget* parent, const QString& name, const QString& hint) {
    auto box = new QLineEdit(parent);
    box->setObjectName(name);
    box->setPlaceholderText(hint);
    box->setAlignment(Qt::AlignRight);
    box->setMinimumWidth(80);
    return box;
}

} // namespace

RecordDialog::RecordDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("RecordDialog"));
    setWindowTitle(QStringLiteral("Change Record"));
    setModal(true);

    dateEdit = new DateBox(this);
    dateEdit->setObjectName(QStringLiteral("dateEdit"));
    openEdit = valueBox(this, QStringLiteral("openEdit"), QStringLiteral("Open"));
    highEdit = valueBox(this, QStringLiteral("highEdit"), QStringLiteral("High"));
    lowEdit = valueBox(this, QStringLiteral("lowEdit"), QStringLiteral("Low"));
    closeEdit = valueBox(this, QStringLiteral("closeEdit"), QStringLiteral("Close"));
    volumeEdit = valueBox(this, QStringLiteral("volumeEdit"), QStringLiteral("Volume"));

    applyButton = new QPushButton(QStringLiteral("&Apply"), this);
    applyButton->setObjectName(QStringLiteral("applyButton"));
    closeButton = new QPushButton(QStringLiteral("&Close"), this);
    closeButton->setObjectName(QStringLiteral("closeButton"));
    applyButton->setDefault(true);
    closeButton->setAutoDefault(false);

    auto fields = new QHBoxLayout;
    fields->addWidget(dateEdit);
    for (QLineEdit* box : {openEdit, highEdit, lowEdit, closeEdit, volumeEdit})
        fields->addWidget(box);
    auto buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(applyButton);
    buttons->addWidget(closeButton);
    auto layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addLayout(buttons);

    connect(applyButton, &QPushButton::clicked, this, &RecordDialog::apply);
    connect(closeButton, &QPushButton::clicked, this, &RecordDialog::closeDialog);

    load();
}

void RecordDialog::load() {
    adjustSize();
    CentreOnScreen(this);
    applied = false;
    dateEdit->setEnabled(true);
    dateEdit->setDate(platform().today());
    for (QLineEdit* box : {openEdit, highEdit, lowEdit, closeEdit, volumeEdit})
        box->clear();
}

void RecordDialog::apply() {
    const std::array<QLineEdit*, 5> boxes = {openEdit, highEdit, lowEdit, closeEdit, volumeEdit};
    for (QLineEdit* box : boxes) {
        if (box->text().trimmed().isEmpty()) {
            MsgBox(QStringLiteral("Please Complete All Fields."), MsgIcon::Information, Marrowfin);
            return;
        }
    }
    // The date as typed must be a date: what the box reads as is what is stored.
    const std::optional<QDate> date = dateEdit->date();
    if (!date) {
        MsgBox(QStringLiteral("Please Enter a Valid Date."), MsgIcon::Information, Marrowfin);
        dateEdit->setFocus();
        dateEdit->selectAll();
        return;
    }
    std::array<double, 5> values{};
    for (size_t i = 0; i < boxes.size(); ++i) {
        const std::optional<double> value = Regional::readNumber(boxes[i]->text().trimmed());
        if (!value) {
            // Nothing is accepted until every box holds a number; what was typed stays.
            MsgBox(QStringLiteral("Please Enter Numbers Only."), MsgIcon::Information, Marrowfin);
            boxes[i]->setFocus();
            boxes[i]->selectAll();
            return;
        }
        values[i] = *value;
    }
    Dat = *date;
    OpenPrice = values[0];
    High = values[1];
    Low = values[2];
    ClosePrice = values[3];
    Volume = values[4];
    applied = true;
    accept();
}

void RecordDialog::closeDialog() { reject(); }
