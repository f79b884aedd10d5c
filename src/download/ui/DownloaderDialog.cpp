#include "download/ui/DownloaderDialog.h"

#include "download/FoldersFile.h"
#include "download/ui/DownloadProgressWindow.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/ProgramState.h"
#include "frame/Platform.h"
#include "frame/Regional.h"
#include "frame/ui/Centring.h"
#include "frame/ui/Widgets.h"
#include "store/SecurityReader.h"

#include <QApplication>
#include <QDir>
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

DownloaderDialog::DownloaderDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("DownloaderDialog"));
    setWindowTitle(QStringLiteral("Downloader"));
    setModal(true);

    folderLabel = named(new QLabel(QStringLiteral("Folder")), "folderLabel");
    folderEdit = named(new QLineEdit, "folderEdit");
    browseButton = named(new QToolButton, "browseButton");
    addFolderButton = named(new QToolButton, "addFolderButton");
    removeFolderButton = named(new QToolButton, "removeFolderButton");
    browseButton->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    browseButton->setToolTip(QStringLiteral("Browse"));
    addFolderButton->setIcon(style()->standardIcon(QStyle::SP_FileDialogNewFolder));
    addFolderButton->setToolTip(QStringLiteral("Add folder"));
    removeFolderButton->setIcon(style()->standardIcon(QStyle::SP_DialogDiscardButton));
    removeFolderButton->setToolTip(QStringLiteral("Remove folder"));
    removeAllButton = named(new QPushButton(QStringLiteral("- All")), "removeAllButton");

    foldersList = named(new QTreeWidget, "foldersList");
    foldersList->setColumnCount(1);
    foldersList->setHeaderHidden(true);
    foldersList->setRootIsDecorated(false);

    securitiesList = named(new QTreeWidget, "securitiesList");
    securitiesList->setColumnCount(3);
    securitiesList->setHeaderLabels({QStringLiteral("Security"), QStringLiteral("Symbol"), QStringLiteral("Last Date")});
    securitiesList->setRootIsDecorated(false);
    securitiesList->header()->resizeSection(0, 230);
    // Room for the longer exchange symbols, "ADANIPORTS.NS" and its like, with the cell's margins.
    securitiesList->header()->resizeSection(
        1, std::max(120, securitiesList->fontMetrics().horizontalAdvance(QStringLiteral("BAJAJFINSV.NS")) + 28));

    selectionLabel = named(new QLabel(QStringLiteral("No Securities Selected.")), "selectionLabel");
    downloadButton = named(new QPushButton(QStringLiteral("Download")), "downloadButton");
    closeButton = named(new QPushButton(QStringLiteral("Close")), "closeButton");
    for (QPushButton* button : {removeAllButton, downloadButton, closeButton})
        button->setAutoDefault(false);

    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(folderLabel);
    folderRow->addWidget(folderEdit, 1);
    folderRow->addWidget(browseButton);
    folderRow->addWidget(addFolderButton);
    folderRow->addWidget(removeFolderButton);
    folderRow->addWidget(removeAllButton);

    auto* bottom = new QHBoxLayout;
    bottom->addWidget(selectionLabel, 1);
    bottom->addWidget(downloadButton);
    bottom->addWidget(closeButton);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(folderRow);
    layout->addWidget(foldersList, 1);
    layout->addWidget(securitiesList, 3);
    layout->addLayout(bottom);
    resize(560, 480);

    connect(browseButton, &QToolButton::clicked, this, [this] { browse(); });
    connect(addFolderButton, &QToolButton::clicked, this, [this] { addFolder(); });
    connect(removeFolderButton, &QToolButton::clicked, this, [this] { removeFolder(); });
    connect(removeAllButton, &QPushButton::clicked, this, [this] { removeAllFolders(); });
    connect(downloadButton, &QPushButton::clicked, this, [this] { download(); });
    connect(closeButton, &QPushButton::clicked, this, [this] { closeDialog(); });
    connect(foldersList, &QTreeWidget::itemChanged, this,
            [this](QTreeWidgetItem* item, int) { onItemChanged(foldersList, item); });
    connect(securitiesList, &QTreeWidget::itemChanged, this,
            [this](QTreeWidgetItem* item, int) { onItemChanged(securitiesList, item); });

    load();
}

DownloaderDialog::~DownloaderDialog() = default;

void DownloaderDialog::centre() {
    CentreOnScreen(this);
}

void DownloaderDialog::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    centre();
}

QTreeWidgetItem* DownloaderDialog::addRow(QTreeWidget* list, const QStringList& texts, bool tick) {
    filling_ = true;
    auto* item = new QTreeWidgetItem(texts);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(0, tick ? Qt::Checked : Qt::Unchecked);
    item->setData(0, TickRole, tick);
    list->addTopLevelItem(item);
    filling_ = false;
    return item;
}

void DownloaderDialog::setTick(QTreeWidgetItem* item, bool tick) {
    const bool was = filling_;
    filling_ = true;
    item->setCheckState(0, tick ? Qt::Checked : Qt::Unchecked);
    item->setData(0, TickRole, tick);
    filling_ = was;
}

void DownloaderDialog::onItemChanged(QTreeWidget* list, QTreeWidgetItem* item) {
    if (filling_)
        return;
    const bool now = ticked(item);
    if (item->data(0, TickRole).toBool() == now)
        return;   // a change of text, not of the tick
    setTick(item, now);
    if (list == foldersList)
        folderTicked(item);
    else
        securityTicked(item);
}

void DownloaderDialog::load() {
    centre();
    for (const QString& folder : FoldersFile::read())
        addRow(foldersList, {folder}, false);
}

void DownloaderDialog::unload() {
    if (unloaded_)
        return;
    unloaded_ = true;
    QStringList folders;
    for (int i = 0; i < foldersList->topLevelItemCount(); ++i)
        folders << foldersList->topLevelItem(i)->text(0);
    if (!FoldersFile::write(folders))
        MsgBox(QStringLiteral("The list of folders could not be saved in %1.")
                   .arg(QDir::toNativeSeparators(FoldersFile::writtenPath())),
               MsgIcon::Critical, QStringLiteral("Marrowfin"));
}

void DownloaderDialog::done(int result) {
    unload();
    QDialog::done(result);
}

void DownloaderDialog::browse() {
    folderEdit->setText(BrowseForFolder(this, QStringLiteral("Browse For Folder")));
    QString text = folderEdit->text();
    if (text.endsWith(u'\\')) {
        text.chop(1);
        folderEdit->setText(text);
    }
}

void DownloaderDialog::addFolder() {
    const QString path = folderEdit->text().trimmed();
    if (path.isEmpty())
        return;
    for (int i = 0; i < foldersList->topLevelItemCount(); ++i) {
        if (foldersList->topLevelItem(i)->text(0).trimmed() == path) {
            MsgBox(QStringLiteral("Already Exists."), MsgIcon::Information, QStringLiteral("Marrowfin"));
            return;
        }
    }
    addRow(foldersList, {path}, false);
    addFolderButton->setEnabled(true);
    removeFolderButton->setEnabled(true);
}

void DownloaderDialog::removeFolder() {
    // Only a selected row is removed: the row that merely has the focus is not.
    const QList<QTreeWidgetItem*> selected = foldersList->selectedItems();
    if (selected.isEmpty())
        return;
    delete selected.first();
    if (foldersList->topLevelItemCount() == 0)
        securitiesList->clear();
}

void DownloaderDialog::removeAllFolders() {
    foldersList->clear();
    securitiesList->clear();
    folderEdit->setFocus();
}

void DownloaderDialog::closeDialog() { done(QDialog::Rejected); }

void DownloaderDialog::listFolder(const QString& path) {
    const QString folder = path.trimmed();
    SecurityReader reader;
    reader.OpenFolder(folder);
    addRow(securitiesList, {folder, QString(), QString()}, true);
    const QString today = Regional::dateText(platform().today());
    while (reader.GetSecuritiesRemaining() >= 1) {
        reader.NextSecurity();
        QTreeWidgetItem* row = addRow(securitiesList, {reader.GetName(), QString(), QString()}, false);
        filling_ = true;
        row->setText(1, reader.GetSymbol());
        row->setText(2, DateToText(reader.GetLastDate()));
        filling_ = false;
        if (row->text(2).trimmed() != today)
            setTick(row, true);
    }
    reader.CloseFolder();
}

void DownloaderDialog::folderTicked(QTreeWidgetItem* item) {
    Hourglass hourglass;
    try {
        if (ticked(item)) {
            listFolder(item->text(0));
        } else {
            securitiesList->clear();
            for (int i = 0; i < foldersList->topLevelItemCount(); ++i) {
                QTreeWidgetItem* folder = foldersList->topLevelItem(i);
                if (ticked(folder))
                    listFolder(folder->text(0));
            }
        }
        hourglass.restore();
        selectionLabel->setText(QStringLiteral("No Securities Selected."));
        countSelection(false);
    } catch (const Failure&) {
        filling_ = false;
        hourglass.restore();
        MsgBox(QStringLiteral("No MetaStock Files Found."), MsgIcon::Information, QStringLiteral("Fernwoodglade"));
        removedFolder_.reset(foldersList->takeTopLevelItem(foldersList->indexOfTopLevelItem(item)));
        countSelection(false);
    }
}

void DownloaderDialog::securityTicked(QTreeWidgetItem* item) {
    if (item->text(1).isEmpty()) {
        // A folder row: its securities, down to the next folder row, take its tick.
        const bool tick = ticked(item);
        for (int i = securitiesList->indexOfTopLevelItem(item) + 1; i < securitiesList->topLevelItemCount(); ++i) {
            QTreeWidgetItem* row = securitiesList->topLevelItem(i);
            if (row->text(1).isEmpty())
                break;
            setTick(row, tick);
        }
    }
    countSelection(true);
}

void DownloaderDialog::countSelection(bool showZeroFirst) {
    const QString text = QStringLiteral(" Securities Selected.");
    int count = 0;
    if (showZeroFirst)
        selectionLabel->setText(QString::number(count) + text);
    for (int i = 0; i < securitiesList->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* row = securitiesList->topLevelItem(i);
        if (ticked(row) && !row->text(1).isEmpty()) {
            ++count;
            selectionLabel->setText(QString::number(count) + text);
        }
    }
}

void DownloaderDialog::download() {
    auto& items = handOvers().DownloadItems;
    items.clear();
    QString folder;
    for (int i = 0; i < securitiesList->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* row = securitiesList->topLevelItem(i);
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
        DownloadProgressWindow progress(parentWidget());
        progress.exec();
    } else {
        MsgBox(QStringLiteral("No Securities Selected."), MsgIcon::Information, QStringLiteral("Marrowfin"));
    }
}
