#include "download/ui/frmDownload.h"

#include "download/FoldersFile.h"
#include "download/ui/frmDownloadProgress.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Module1.h"
#include "frame/Platform.h"
#include "frame/Regional.h"
#include "frame/ui/Centring.h"
#include "store/SecurityReader.h"

#include <QApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// The previous tick of a row, to tell a changed tick from any other change of the row.
constexpr int TickRole = Qt::UserRole + 1;

template <typename T>
T* named(T* widget, const char* name) {
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

bool ticked(const QTreeWidgetItem* item) { return item->checkState(0) == Qt::Checked; }

// The mouse pointer shows the hourglass while the object lives, unless restored earlier.
class Hourglass {
public:
    Hourglass() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~Hourglass() { restore(); }
    void restore() {
        if (active_) {
            QApplication::restoreOverrideCursor();
            active_ = false;
        }
    }

private:
    bool active_ = true;
};

} // namespace

frmDownload::frmDownload(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmDownload"));
    setWindowTitle(QStringLiteral("Downloader"));
    setModal(true);

    Label2 = named(new QLabel(QStringLiteral("Folder")), "Label2");
    Text1 = named(new QLineEdit, "Text1");
    Command1 = named(new QToolButton, "Command1");
    Command2 = named(new QToolButton, "Command2");
    Command3 = named(new QToolButton, "Command3");
    Command1->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    Command1->setToolTip(QStringLiteral("Browse"));
    Command2->setIcon(style()->standardIcon(QStyle::SP_FileDialogNewFolder));
    Command2->setToolTip(QStringLiteral("Add folder"));
    Command3->setIcon(style()->standardIcon(QStyle::SP_DialogDiscardButton));
    Command3->setToolTip(QStringLiteral("Remove folder"));
    Command6 = named(new QPushButton(QStringLiteral("- All")), "Command6");

    ListView2 = named(new QTreeWidget, "ListView2");
    ListView2->setColumnCount(1);
    ListView2->setHeaderHidden(true);
    ListView2->setRootIsDecorated(false);

    ListView1 = named(new QTreeWidget, "ListView1");
    ListView1->setColumnCount(3);
    ListView1->setHeaderLabels({QStringLiteral("Security"), QStringLiteral("Symbol"), QStringLiteral("Last Date")});
    ListView1->setRootIsDecorated(false);
    ListView1->header()->resizeSection(0, 230);
    // Room for the longer exchange symbols, "ADANIPORTS.NS" and its like, with the cell's margins.
    ListView1->header()->resizeSection(
        1, std::max(120, ListView1->fontMetrics().horizontalAdvance(QStringLiteral("BAJAJFINSV.NS")) + 28));

    Label1 = named(new QLabel(QStringLiteral("No Securities Selected.")), "Label1");
    Command4 = named(new QPushButton(QStringLiteral("Download")), "Command4");
    Command5 = named(new QPushButton(QStringLiteral("Close")), "Command5");
    for (QPushButton* button : {Command6, Command4, Command5})
        button->setAutoDefault(false);

    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(Label2);
    folderRow->addWidget(Text1, 1);
    folderRow->addWidget(Command1);
    folderRow->addWidget(Command2);
    folderRow->addWidget(Command3);
    folderRow->addWidget(Command6);

    auto* bottom = new QHBoxLayout;
    bottom->addWidget(Label1, 1);
    bottom->addWidget(Command4);
    bottom->addWidget(Command5);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(folderRow);
    layout->addWidget(ListView2, 1);
    layout->addWidget(ListView1, 3);
    layout->addLayout(bottom);
    resize(560, 480);

    connect(Command1, &QToolButton::clicked, this, [this] { Command1_Click(); });
    connect(Command2, &QToolButton::clicked, this, [this] { Command2_Click(); });
    connect(Command3, &QToolButton::clicked, this, [this] { Command3_Click(); });
    connect(Command6, &QPushButton::clicked, this, [this] { Command6_Click(); });
    connect(Command4, &QPushButton::clicked, this, [this] { Command4_Click(); });
    connect(Command5, &QPushButton::clicked, this, [this] { Command5_Click(); });
    connect(ListView2, &QTreeWidget::itemChanged, this,
            [this](QTreeWidgetItem* item, int) { onItemChanged(ListView2, item); });
    connect(ListView1, &QTreeWidget::itemChanged, this,
            [this](QTreeWidgetItem* item, int) { onItemChanged(ListView1, item); });

    Form_Load();
}

frmDownload::~frmDownload() = default;

void frmDownload::centre() {
    CentreOnScreen(this);
}

void frmDownload::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    centre();
}

QTreeWidgetItem* frmDownload::addRow(QTreeWidget* list, const QStringList& texts, bool tick) {
    filling_ = true;
    auto* item = new QTreeWidgetItem(texts);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(0, tick ? Qt::Checked : Qt::Unchecked);
    item->setData(0, TickRole, tick);
    list->addTopLevelItem(item);
    filling_ = false;
    return item;
}

void frmDownload::setTick(QTreeWidgetItem* item, bool tick) {
    const bool was = filling_;
    filling_ = true;
    item->setCheckState(0, tick ? Qt::Checked : Qt::Unchecked);
    item->setData(0, TickRole, tick);
    filling_ = was;
}

void frmDownload::onItemChanged(QTreeWidget* list, QTreeWidgetItem* item) {
    if (filling_)
        return;
    const bool now = ticked(item);
    if (item->data(0, TickRole).toBool() == now)
        return;   // a change of text, not of the tick
    setTick(item, now);
    if (list == ListView2)
        ListView2_ItemCheck(item);
    else
        ListView1_ItemCheck(item);
}

void frmDownload::Form_Load() {
    centre();
    for (const QString& folder : FoldersFile::read())
        addRow(ListView2, {folder}, false);
}

void frmDownload::Form_Unload() {
    if (unloaded_)
        return;
    unloaded_ = true;
    QStringList folders;
    for (int i = 0; i < ListView2->topLevelItemCount(); ++i)
        folders << ListView2->topLevelItem(i)->text(0);
    FoldersFile::write(folders);
}

void frmDownload::done(int result) {
    Form_Unload();
    QDialog::done(result);
}

void frmDownload::Command1_Click() {
    Text1->setText(BrowseForFolder(this, QStringLiteral("Browse For Folder")));
    QString text = Text1->text();
    if (text.endsWith(u'\\')) {
        text.chop(1);
        Text1->setText(text);
    }
}

void frmDownload::Command2_Click() {
    const QString path = Text1->text().trimmed();
    if (path.isEmpty())
        return;
    for (int i = 0; i < ListView2->topLevelItemCount(); ++i) {
        if (ListView2->topLevelItem(i)->text(0).trimmed() == path) {
            MsgBox(QStringLiteral("Already Exists."), MsgIcon::Information, QStringLiteral("Marrowfin"));
            return;
        }
    }
    addRow(ListView2, {path}, false);
    Command2->setEnabled(true);
    Command3->setEnabled(true);
}

void frmDownload::Command3_Click() {
    QTreeWidgetItem* selected = ListView2->currentItem();
    if (!selected)
        return;
    delete selected;
    if (ListView2->topLevelItemCount() == 0)
        ListView1->clear();
}

void frmDownload::Command6_Click() {
    ListView2->clear();
    ListView1->clear();
    Text1->setFocus();
}

void frmDownload::Command5_Click() { done(QDialog::Rejected); }

void frmDownload::listFolder(const QString& path) {
    const QString folder = path.trimmed();
    SecurityReader reader;
    reader.OpenFolder(folder);
    addRow(ListView1, {folder, QString(), QString()}, true);
    const QString today = Regional::dateText(platform().today());
    while (reader.GetSecuritiesRemaining() >= 1) {
        reader.NextSecurity();
        QTreeWidgetItem* row = addRow(ListView1, {reader.GetName(), QString(), QString()}, false);
        filling_ = true;
        row->setText(1, reader.GetSymbol());
        row->setText(2, DateToText(reader.GetLastDate()));
        filling_ = false;
        if (row->text(2).trimmed() != today)
            setTick(row, true);
    }
    reader.CloseFolder();
}

void frmDownload::ListView2_ItemCheck(QTreeWidgetItem* item) {
    Hourglass hourglass;
    try {
        if (ticked(item)) {
            listFolder(item->text(0));
        } else {
            ListView1->clear();
            for (int i = 0; i < ListView2->topLevelItemCount(); ++i) {
                QTreeWidgetItem* folder = ListView2->topLevelItem(i);
                if (ticked(folder))
                    listFolder(folder->text(0));
            }
        }
        hourglass.restore();
        Label1->setText(QStringLiteral("No Securities Selected."));
        countSelection(false);
    } catch (const Failure&) {
        filling_ = false;
        hourglass.restore();
        MsgBox(QStringLiteral("No MetaStock Files Found."), MsgIcon::Information, QStringLiteral("Fernwoodglade"));
        removedFolder_.reset(ListView2->takeTopLevelItem(ListView2->indexOfTopLevelItem(item)));
        countSelection(false);
    }
}

void frmDownload::ListView1_ItemCheck(QTreeWidgetItem* item) {
    if (item->text(1).isEmpty()) {
        // A folder row: its securities, down to the next folder row, take its tick.
        const bool tick = ticked(item);
        for (int i = ListView1->indexOfTopLevelItem(item) + 1; i < ListView1->topLevelItemCount(); ++i) {
            QTreeWidgetItem* row = ListView1->topLevelItem(i);
            if (row->text(1).isEmpty())
                break;
            setTick(row, tick);
        }
    }
    countSelection(true);
}

void frmDownload::countSelection(bool showZeroFirst) {
    const QString text = QStringLiteral(" Securities Selected.");
    int count = 0;
    if (showZeroFirst)
        Label1->setText(QString::number(count) + text);
    for (int i = 0; i < ListView1->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* row = ListView1->topLevelItem(i);
        if (ticked(row) && !row->text(1).isEmpty()) {
            ++count;
            Label1->setText(QString::number(count) + text);
        }
    }
}

void frmDownload::Command4_Click() {
    auto& items = Module1::DownloadItems;
    items.clear();
    QString folder;
    for (int i = 0; i < ListView1->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* row = ListView1->topLevelItem(i);
        if (row->text(1).isEmpty()) {
            folder = row->text(0).trimmed();
            continue;
        }
        if (!ticked(row))
            continue;
        DownloadItem item;
        item.Symbol = row->text(1).trimmed();
        item.Folder = folder;
        if (const auto last = Regional::readDate(row->text(2).trimmed())) {
            item.FirstDate = Regional::dateText(last->addDays(-35));
            item.NextDate = Regional::dateText(last->addDays(1));
        }
        items.append(item);
    }

    if (items.upperBound() > 0) {
        done(QDialog::Accepted);
        frmDownloadProgress progress(parentWidget());
        progress.exec();
    } else {
        MsgBox(QStringLiteral("No Securities Selected."), MsgIcon::Information, QStringLiteral("Marrowfin"));
    }
}
