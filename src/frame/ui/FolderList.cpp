#include "frame/ui/FolderList.h"

#include "frame/ProgramState.h"

#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QStyle>

namespace {

constexpr int PathRole = Qt::UserRole;

QString absoluteClean(const QString& folder) {
    return QDir::cleanPath(QDir(QDir::fromNativeSeparators(folder)).absolutePath());
}

// The folder itself when it is there, else its nearest ancestor that is, else the user's home.
QString existingFolder(const QString& folder) {
    QString path = absoluteClean(folder);
    while (!QFileInfo(path).isDir()) {
        const QString up = QFileInfo(path).path();
        if (up == path)
            return QDir::cleanPath(QDir::homePath());
        path = up;
    }
    return path;
}

// The folder and its ancestors, the root first.
QStringList chainOf(const QString& folder) {
    QStringList chain;
    QDir dir(folder);
    chain.prepend(dir.absolutePath());
    while (dir.cdUp())
        chain.prepend(dir.absolutePath());
    return chain;
}

QString entryText(const QString& path) {
    const QString name = QFileInfo(path).fileName();
    return name.isEmpty() ? QDir::toNativeSeparators(path) : name;
}

} // namespace

FolderList::FolderList(QWidget* parent) : QTreeWidget(parent) {
    setHeaderHidden(true);
    setColumnCount(1);
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setExpandsOnDoubleClick(false);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setIndentation(14);
    connect(this, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) { enter(item); });
}

QString FolderList::startingFolder() {
    const QString last = sharedState().LastFolder.trimmed();
    return last.isEmpty() ? QDir::homePath() : last;
}

void FolderList::startAt(const QString& folder) { display(existingFolder(folder)); }

void FolderList::setPath(const QString& folder) {
    display(existingFolder(folder));
    emit pathChanged(path_);
}

void FolderList::enter(QTreeWidgetItem* item) {
    if (item)
        setPath(item->data(0, PathRole).toString());
}

void FolderList::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        enter(currentItem());
        event->accept();
        return;
    }
    QTreeWidget::keyPressEvent(event);
}

void FolderList::display(const QString& folder) {
    path_ = folder;
    clear();
    const QIcon open = style()->standardIcon(QStyle::SP_DirOpenIcon);
    const QIcon closed = style()->standardIcon(QStyle::SP_DirClosedIcon);

    QTreeWidgetItem* parent = nullptr;
    for (const QString& step : chainOf(folder)) {
        auto item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(this);
        item->setText(0, entryText(step));
        item->setData(0, PathRole, step);
        item->setIcon(0, open);
        parent = item;
    }
    QTreeWidgetItem* current = parent;

    const QStringList subfolders =
        QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::IgnoreCase | QDir::LocaleAware);
    for (const QString& name : subfolders) {
        auto item = new QTreeWidgetItem(current);
        item->setText(0, name);
        item->setData(0, PathRole, QDir(folder).filePath(name));
        item->setIcon(0, closed);
    }
    expandAll();
    setCurrentItem(current);
    scrollToItem(current);
}
