#include "sheet/ui/frmChange.h"

#include "frame/Platform.h"
#include "frame/Regional.h"
#include "frame/ui/Centring.h"

#include <QDateEdit>
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

// The short date pattern with the year in four digits, so that the picker never has to guess
// the century of what it shows.
QString pickerPattern() {
    QString pattern = Regional::shortDatePattern();
    if (!pattern.contains(QStringLiteral("yyyy")))
        pattern.replace(QStringLiteral("yy"), QStringLiteral("yyyy"));
    return pattern;
}

} // namespace

frmChange::frmChange(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmChange"));
    setWindowTitle(QStringLiteral("Change Record"));
    setModal(true);

    DTPicker1 = new QDateEdit(this);
    DTPicker1->setObjectName(QStringLiteral("DTPicker1"));
    DTPicker1->setCalendarPopup(true);
    DTPicker1->setDisplayFormat(pickerPattern());
    Text2 = valueBox(this, QStringLiteral("Text2"), QStringLiteral("Open"));
    Text3 = valueBox(this, QStringLiteral("Text3"), QStringLiteral("High"));
    Text4 = valueBox(this, QStringLiteral("Text4"), QStringLiteral("Low"));
    Text5 = valueBox(this, QStringLiteral("Text5"), QStringLiteral("Close"));
    Text6 = valueBox(this, QStringLiteral("Text6"), QStringLiteral("Volume"));

    Command1 = new QPushButton(QStringLiteral("&Apply"), this);
    Command1->setObjectName(QStringLiteral("Command1"));
    Command3 = new QPushButton(QStringLiteral("&Close"), this);
    Command3->setObjectName(QStringLiteral("Command3"));
    Command1->setDefault(true);
    Command3->setAutoDefault(false);

    auto fields = new QHBoxLayout;
    fields->addWidget(DTPicker1);
    for (QLineEdit* box : {Text2, Text3, Text4, Text5, Text6})
        fields->addWidget(box);
    auto buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(Command1);
    buttons->addWidget(Command3);
    auto layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addLayout(buttons);

    connect(Command1, &QPushButton::clicked, this, &frmChange::Command1_Click);
    connect(Command3, &QPushButton::clicked, this, &frmChange::Command3_Click);

    Form_Load();
}

void frmChange::Form_Load() {
    adjustSize();
    CentreOnScreen(this);
    OK = false;
    DTPicker1->setEnabled(true);
    DTPicker1->setDate(platform().today());
    for (QLineEdit* box : {Text2, Text3, Text4, Text5, Text6})
        box->clear();
}

void frmChange::Command1_Click() {
    const std::array<QLineEdit*, 5> boxes = {Text2, Text3, Text4, Text5, Text6};
    for (QLineEdit* box : boxes) {
        if (box->text().trimmed().isEmpty()) {
            MsgBox(QStringLiteral("Please Complete All Fields."), MsgIcon::Information, Marrowfin);
            return;
        }
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
    Dat = DTPicker1->date();
    OpenPrice = values[0];
    High = values[1];
    Low = values[2];
    ClosePrice = values[3];
    Volume = values[4];
    OK = true;
    accept();
}

void frmChange::Command3_Click() { reject(); }
