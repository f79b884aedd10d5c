#include "sheet/ui/DataSheetWindow.h"

#include "frame/Failure.h"
#include "frame/Platform.h"
#include "sheet/RecordEdits.h"
#include "sheet/SheetLoad.h"
#include "sheet/SheetRows.h"
#include "sheet/ui/DateBox.h"
#include "sheet/ui/RecordDialog.h"

#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QShowEvent>
#include <QTableView>
#include <QVBoxLayout>

namespace {

const QString Marrowfin = QStringLiteral("Marrowfin");

// Maps what a load reports onto the header boxes.
class HeaderBoxes : public SheetLoadListener {
public:
    explicit HeaderBoxes(DataSheetWindow& view) : view_(view) {}
    void firstDateRead(const QString& dateText) override { view_.firstDateEdit->setText(dateText); }
    void periodicityRead(const QString& text) override { view_.periodicityEdit->setText(text); }
    void lastDateRead(const QString& dateText) override { view_.lastDateEdit->setText(dateText); }

private:
    DataSheetWindow& view_;
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

DataSheetWindow::DataSheetWindow(QWidget* parent) : QWidget(parent), rows_(new SheetRows(this)) {
    setObjectName(QStringLiteral("DataSheetWindow"));
    resize(720, 520);

    headerFrame = new QFrame(this);
    headerFrame->setObjectName(QStringLiteral("headerFrame"));
    folderEdit = headerBox(headerFrame, QStringLiteral("folderEdit"));
    nameEdit = headerBox(headerFrame, QStringLiteral("nameEdit"));
    symbolEdit = headerBox(headerFrame, QStringLiteral("symbolEdit"));
    firstDateEdit = headerBox(headerFrame, QStringLiteral("firstDateEdit"));
    lastDateEdit = headerBox(headerFrame, QStringLiteral("lastDateEdit"));
    periodicityEdit = headerBox(headerFrame, QStringLiteral("periodicityEdit"));
    folderEdit->setMinimumWidth(260);
    insertButton = button(headerFrame, QStringLiteral("insertButton"), QStringLiteral("Insert"));
    changeButton = button(headerFrame, QStringLiteral("changeButton"), QStringLiteral("Change"));
    deleteButton = button(headerFrame, QStringLiteral("deleteButton"), QStringLiteral("Delete"));
    closeButton = button(headerFrame, QStringLiteral("closeButton"), QStringLiteral("Close"));

    auto header = new QGridLayout;
    auto addBox = [&](int row, int column, const QString& label, QLineEdit* box) {
        auto caption = new QLabel(label, headerFrame);
        caption->setBuddy(box);
        header->addWidget(caption, row, column * 2, Qt::AlignRight);
        header->addWidget(box, row, column * 2 + 1);
    };
    addBox(0, 0, QStringLiteral("Folder"), folderEdit);
    addBox(1, 0, QStringLiteral("Name"), nameEdit);
    addBox(2, 0, QStringLiteral("Symbol"), symbolEdit);
    addBox(0, 1, QStringLiteral("First Date"), firstDateEdit);
    addBox(1, 1, QStringLiteral("Last Date"), lastDateEdit);
    addBox(2, 1, QStringLiteral("Periodicity"), periodicityEdit);
    header->setColumnStretch(1, 3);
    header->setColumnStretch(3, 1);

    auto buttons = new QVBoxLayout;
    for (QPushButton* b : {insertButton, changeButton, deleteButton, closeButton})
        buttons->addWidget(b);
    buttons->addStretch();

    auto frameLayout = new QHBoxLayout(headerFrame);
    frameLayout->addLayout(header, 1);
    frameLayout->addSpacing(12);
    frameLayout->addLayout(buttons);

    recordsView = new QTableView(this);
    recordsView->setObjectName(QStringLiteral("recordsView"));
    recordsView->setModel(rows_);
    recordsView->setSelectionBehavior(QAbstractItemView::SelectRows);
    recordsView->setSelectionMode(QAbstractItemView::SingleSelection);
    recordsView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    recordsView->setShowGrid(false);
    recordsView->setAlternatingRowColors(true);
    recordsView->setWordWrap(false);
    recordsView->setTabKeyNavigation(false);   // Tab leaves the list for the buttons; the row stays
    recordsView->verticalHeader()->setVisible(false);
    // Every row has the same height, so the view never has to measure 65,000 of them.
    recordsView->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    recordsView->verticalHeader()->setDefaultSectionSize(recordsView->fontMetrics().height() + 6);
    recordsView->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    recordsView->horizontalHeader()->setHighlightSections(false);

    auto layout = new QVBoxLayout(this);
    layout->addWidget(headerFrame, 0, Qt::AlignHCenter);
    layout->addWidget(recordsView, 1);

    connect(closeButton, &QPushButton::clicked, this, &DataSheetWindow::closeSheet);
    connect(insertButton, &QPushButton::clicked, this, &DataSheetWindow::insertRecord);
    connect(changeButton, &QPushButton::clicked, this, &DataSheetWindow::changeRecord);
    connect(deleteButton, &QPushButton::clicked, this, &DataSheetWindow::deleteRecord);
    connect(recordsView, &QTableView::doubleClicked, this, &DataSheetWindow::recordDoubleClicked);
}

int DataSheetWindow::selectedRow() const {
    const QModelIndexList selected = recordsView->selectionModel()->selectedRows();
    return selected.isEmpty() ? -1 : selected.first().row();
}

void DataSheetWindow::selectRow(int row) {
    const QModelIndex index = rows_->index(row, 0);
    recordsView->selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    recordsView->scrollTo(index, QAbstractItemView::PositionAtBottom);
}

void DataSheetWindow::load() {
    folderEdit->setText(path);
    nameEdit->setText(securityName);
    symbolEdit->setText(Symbol);

    HeaderBoxes boxes(*this);
    try {
        if (LoadSheet(path, Symbol, *rows_, boxes) == SheetLoadEnd::Cancelled)
            return;
        // The newest record is the last row: select it and bring it into view.
        if (rows_->rowCount() < 1)
            throw Failure(FailureNumber::Generic, QStringLiteral("No rows"), QStringLiteral("DataSheetWindow"));
        selectRow(rows_->rowCount() - 1);
    } catch (const Failure&) {
        MsgBox(QStringLiteral("No Data Found."), MsgIcon::Warning, Marrowfin);
    }
}

void DataSheetWindow::layoutControls() {
    // The layout gives the list the window's height below headerFrame and its whole width, and keeps
    // headerFrame centred; nothing is left to do by hand.
}

void DataSheetWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layoutControls();
}

void DataSheetWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    const int row = selectedRow();
    if (row >= 0)
        recordsView->scrollTo(rows_->index(row, 0), QAbstractItemView::PositionAtBottom);
}

void DataSheetWindow::closeSheet() {
    // Inside the main window the sheet stands in a sub-window, which is what closes.
    if (auto sub = qobject_cast<QMdiSubWindow*>(parentWidget()))
        sub->close();
    else
        close();
}

void DataSheetWindow::insertRecord() {
    RecordDialog dialog(this);
    dialog.exec();
    if (!dialog.applied)
        return;

    try {
        const auto tell = [] { MsgBox(QStringLiteral("Date Already Exist."), MsgIcon::Information, Marrowfin); };
        if (InsertRecord(folderEdit->text(), symbolEdit->text(), dialog, tell) == InsertEnd::DateExists)
            return;
    } catch (const Failure& failure) {
        MsgBox(failure.Description, MsgIcon::Warning);
        return;
    }
    load();
}

void DataSheetWindow::changeRecord() {
    // With no row to change there is nothing to do.
    const int row = selectedRow();
    if (row < 0)
        return;

    // The record is known by its store date, whatever its date text looks like.
    const auto date = rows_->rowDate(row);
    if (!date)
        return;

    RecordDialog dialog(this);
    dialog.dateEdit->setDate(*date);
    QLineEdit* const boxes[] = {dialog.openEdit, dialog.highEdit, dialog.lowEdit, dialog.closeEdit, dialog.volumeEdit};
    for (int i = 0; i < 5; ++i)
        boxes[i]->setText(rows_->cell(row, SheetRows::OpenColumn + i).trimmed());
    dialog.dateEdit->setEnabled(false);
    dialog.exec();
    if (!dialog.applied)
        return;

    try {
        const auto [nth, ofDate] = rows_->placeInDate(row);
        ChangeRecord(folderEdit->text(), symbolEdit->text(), dialog, {nth, ofDate});
    } catch (const Failure& failure) {
        // The row keeps its old values: the store did not take the new ones.
        MsgBox(failure.Description, MsgIcon::Warning);
        return;
    }
    // The new values stand as plain number text until the next load.
    rows_->setValues(row, {dialog.OpenPrice, dialog.High, dialog.Low, dialog.ClosePrice, dialog.Volume});
}

void DataSheetWindow::deleteRecord() {
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
            return;   // a store date that is no date: nothing to delete
        const auto [nth, ofDate] = rows_->placeInDate(row);
        DeleteRecord(folderEdit->text(), symbolEdit->text(), *date, {nth, ofDate});
    } catch (const Failure&) {
        return;
    }
    rows_->removeAt(row);
    MsgBox(QStringLiteral("Record Deleted."), MsgIcon::Information, Marrowfin);
}

void DataSheetWindow::recordDoubleClicked() { changeRecord(); }
