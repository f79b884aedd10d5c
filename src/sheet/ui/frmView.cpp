#include "sheet/ui/frmView.h"

#include "frame/Failure.h"
#include "frame/Platform.h"
#include "sheet/RecordEdits.h"
#include "sheet/SheetLoad.h"
#include "sheet/SheetRows.h"
#include "sheet/ui/frmChange.h"

#include <QDateEdit>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

namespace {

const QString Marrowfin = QStringLiteral("Marrowfin");

// Maps what a load reports onto the header boxes.
class HeaderBoxes : public SheetLoadListener {
public:
    explicit HeaderBoxes(frmView& view) : view_(view) {}
    void firstDateRead(const QString& dateText) override { view_.Text6->setText(dateText); }
    void periodicityRead(const QString& text) override { view_.Text5->setText(text); }
    void lastDateRead(const QString& dateText) override { view_.Text4->setText(dateText); }

private:
    frmView& view_;
};

QLineEdit* headerBox(QWidget* parent, const QString& name) {
    auto box = new QLineEdit(parent);
    box->setObjectName(name);
    box->setReadOnly(true);
    return box;
}

QPushButton* button(QWidget* parent, const QString& name, const QString& caption) {
    auto b = new QPushButton(caption, parent);
    b->setObjectName(name);
    b->setAutoDefault(false);
    return b;
}

} // namespace

frmView::frmView(QWidget* parent) : QWidget(parent), rows_(new SheetRows(this)) {
    setObjectName(QStringLiteral("frmView"));
    resize(720, 520);

    Frame1 = new QFrame(this);
    Frame1->setObjectName(QStringLiteral("Frame1"));
    Text1 = headerBox(Frame1, QStringLiteral("Text1"));
    Text2 = headerBox(Frame1, QStringLiteral("Text2"));
    Text3 = headerBox(Frame1, QStringLiteral("Text3"));
    Text6 = headerBox(Frame1, QStringLiteral("Text6"));
    Text4 = headerBox(Frame1, QStringLiteral("Text4"));
    Text5 = headerBox(Frame1, QStringLiteral("Text5"));
    Text1->setMinimumWidth(260);
    Command4 = button(Frame1, QStringLiteral("Command4"), QStringLiteral("Insert"));
    Command6 = button(Frame1, QStringLiteral("Command6"), QStringLiteral("Change"));
    Command5 = button(Frame1, QStringLiteral("Command5"), QStringLiteral("Delete"));
    Command1 = button(Frame1, QStringLiteral("Command1"), QStringLiteral("Close"));

    auto header = new QGridLayout;
    auto addBox = [&](int row, int column, const QString& label, QLineEdit* box) {
        auto caption = new QLabel(label, Frame1);
        caption->setBuddy(box);
        header->addWidget(caption, row, column * 2, Qt::AlignRight);
        header->addWidget(box, row, column * 2 + 1);
    };
    addBox(0, 0, QStringLiteral("Folder"), Text1);
    addBox(1, 0, QStringLiteral("Name"), Text2);
    addBox(2, 0, QStringLiteral("Symbol"), Text3);
    addBox(0, 1, QStringLiteral("First Date"), Text6);
    addBox(1, 1, QStringLiteral("Last Date"), Text4);
    addBox(2, 1, QStringLiteral("Periodicity"), Text5);
    header->setColumnStretch(1, 3);
    header->setColumnStretch(3, 1);

    auto buttons = new QVBoxLayout;
    for (QPushButton* b : {Command4, Command6, Command5, Command1})
        buttons->addWidget(b);
    buttons->addStretch();

    auto frameLayout = new QHBoxLayout(Frame1);
    frameLayout->addLayout(header, 1);
    frameLayout->addSpacing(12);
    frameLayout->addLayout(buttons);

    ListView1 = new QTableView(this);
    ListView1->setObjectName(QStringLiteral("ListView1"));
    ListView1->setModel(rows_);
    ListView1->setSelectionBehavior(QAbstractItemView::SelectRows);
    ListView1->setSelectionMode(QAbstractItemView::SingleSelection);
    ListView1->setEditTriggers(QAbstractItemView::NoEditTriggers);
    ListView1->setShowGrid(false);
    ListView1->setAlternatingRowColors(true);
    ListView1->setWordWrap(false);
    ListView1->verticalHeader()->setVisible(false);
    // Every row has the same height, so the view never has to measure 65,000 of them.
    ListView1->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    ListView1->verticalHeader()->setDefaultSectionSize(ListView1->fontMetrics().height() + 6);
    ListView1->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    ListView1->horizontalHeader()->setHighlightSections(false);

    auto layout = new QVBoxLayout(this);
    layout->addWidget(Frame1, 0, Qt::AlignHCenter);
    layout->addWidget(ListView1, 1);

    connect(Command1, &QPushButton::clicked, this, &frmView::Command1_Click);
    connect(Command4, &QPushButton::clicked, this, &frmView::Command4_Click);
    connect(Command6, &QPushButton::clicked, this, &frmView::Command6_Click);
    connect(Command5, &QPushButton::clicked, this, &frmView::Command5_Click);
    connect(ListView1, &QTableView::doubleClicked, this, &frmView::ListView1_DblClick);
}

int frmView::selectedRow() const {
    const QModelIndexList selected = ListView1->selectionModel()->selectedRows();
    return selected.isEmpty() ? -1 : selected.first().row();
}

void frmView::selectRow(int row) {
    const QModelIndex index = rows_->index(row, 0);
    ListView1->selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    ListView1->scrollTo(index, QAbstractItemView::PositionAtBottom);
}

void frmView::Form_Load() {
    Text1->setText(path);
    Text2->setText(Sec);
    Text3->setText(Symbol);

    HeaderBoxes boxes(*this);
    try {
        if (LoadSheet(path, Symbol, *rows_, boxes) == SheetLoadEnd::Cancelled)
            return;
        // The newest record is the last row: select it and bring it into view.
        if (rows_->rowCount() < 1)
            throw Failure(FailureNumber::Generic, QStringLiteral("No rows"), QStringLiteral("frmView"));
        selectRow(rows_->rowCount() - 1);
    } catch (const Failure&) {
        MsgBox(QStringLiteral("No Data Found."), MsgIcon::Warning, Marrowfin);
    }
}

void frmView::Form_Resize() {
    // The layout gives the list the window's height below Frame1 and its whole width, and keeps
    // Frame1 centred; nothing is left to do by hand.
}

void frmView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    Form_Resize();
}

void frmView::Command1_Click() {
    // Inside the main window the sheet stands in a sub-window, which is what closes.
    if (auto sub = qobject_cast<QMdiSubWindow*>(parentWidget()))
        sub->close();
    else
        close();
}

void frmView::Command4_Click() {
    frmChange dialog(this);
    dialog.exec();
    if (!dialog.OK)
        return;

    try {
        const auto tell = [] { MsgBox(QStringLiteral("Date Already Exist."), MsgIcon::Information, Marrowfin); };
        if (InsertRecord(Text1->text(), Text3->text(), dialog, tell) == InsertEnd::DateExists)
            return;
    } catch (const Failure& failure) {
        MsgBox(failure.Description, MsgIcon::Warning);
        return;
    }
    Form_Load();
}

void frmView::Command6_Click() {
    // With no row to change there is nothing to do.
    const int row = selectedRow();
    if (row < 0)
        return;

    // The record is known by the date its row shows; a date text that can't be read back
    // can't name a record, and nothing is done.
    const auto date = rows_->rowDate(row);
    if (!date)
        return;

    frmChange dialog(this);
    dialog.DTPicker1->setDate(*date);
    QLineEdit* const boxes[] = {dialog.Text2, dialog.Text3, dialog.Text4, dialog.Text5, dialog.Text6};
    for (int i = 0; i < 5; ++i)
        boxes[i]->setText(rows_->cell(row, SheetRows::OpenColumn + i).trimmed());
    dialog.DTPicker1->setEnabled(false);
    dialog.exec();
    if (!dialog.OK)
        return;

    try {
        ChangeRecord(Text1->text(), Text3->text(), dialog);
    } catch (const Failure& failure) {
        // The row keeps its old values: the store did not take the new ones.
        MsgBox(failure.Description, MsgIcon::Warning);
        return;
    }
    // The new values stand as plain number text until the next load.
    rows_->setValues(row, {dialog.OpenPrice, dialog.High, dialog.Low, dialog.ClosePrice, dialog.Volume});
}

void frmView::Command5_Click() {
    const int row = selectedRow();
    if (row < 0)
        return;
    const QString dateText = rows_->cell(row, SheetRows::DateColumn);
    if (MsgBox(QStringLiteral("Are you sure to delete date : ") + dateText, MsgIcon::Question, Marrowfin,
               MsgButtons::YesNo) != MsgAnswer::Yes)
        return;
    try {
        const auto date = rows_->rowDate(row);
        if (!date)
            return;   // a date text that names no date: nothing to delete
        DeleteRecord(Text1->text(), Text3->text(), *date);
    } catch (const Failure&) {
        return;
    }
    rows_->removeAt(row);
    MsgBox(QStringLiteral("Record Deleted."), MsgIcon::Information, Marrowfin);
}

void frmView::ListView1_DblClick() { Command6_Click(); }
