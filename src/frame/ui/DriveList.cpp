#include "frame/ui/DriveList.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

namespace {

// The volumes a user keeps files on: block devices, not the kernel's own file systems, nor the
// read-only images that packages mount, nor single files bound into a container.
bool isUserVolume(const QStorageInfo& volume) {
    if (!volume.isValid() || !volume.isReady())
        return false;
    const QString root = volume.rootPath();
    if (root == QLatin1String("/"))
        return true;
    if (!QString::fromLocal8Bit(volume.device()).startsWith(QLatin1String("/dev/")))
        return false;
    if (volume.fileSystemType() == "squashfs")
        return false;
    for (const char* system : {"/dev", "/proc", "/sys", "/run", "/snap"}) {
        const QString prefix = QString::fromLatin1(system);
        if (root == prefix || root.startsWith(prefix + QLatin1Char('/')))
            return false;
    }
    return QFileInfo(root).isDir();
}

bool liesUnder(const QString& folder, const QString& root) {
    if (root == QLatin1String("/"))
        return folder.startsWith(root);
    return folder == root || folder.startsWith(root + QLatin1Char('/'));
}

} // namespace

QStringList DriveList::driveRoots() {
    QStringList roots{QStringLiteral("/")};
    QStringList others;
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes())
        if (isUserVolume(volume) && !roots.contains(volume.rootPath()) && !others.contains(volume.rootPath()))
            others << volume.rootPath();
    others.sort();
    roots << others;
    const QString home = QDir::cleanPath(QDir::homePath());
    if (!roots.contains(home))
        roots << home;
    return roots;
}

DriveList::DriveList(QWidget* parent) : QComboBox(parent) {
    const QString home = QDir::cleanPath(QDir::homePath());
    for (const QString& root : driveRoots()) {
        QString text = root;
        if (root == home)
            text += QStringLiteral("  [Home]");
        else if (const QString label = QStorageInfo(root).name(); !label.isEmpty())
            text += QStringLiteral("  [%1]").arg(label);
        addItem(text, root);
    }
    connect(this, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!following_ && index >= 0)
            emit driveChanged(drive());
    });
}

QString DriveList::drive() const { return currentData().toString(); }

void DriveList::showDriveOf(const QString& folder) {
    const QString path = QDir::cleanPath(QDir(folder).absolutePath());
    int best = -1;
    qsizetype bestLength = -1;
    for (int i = 0; i < count(); ++i) {
        const QString root = itemData(i).toString();
        if (liesUnder(path, root) && root.size() > bestLength) {
            best = i;
            bestLength = root.size();
        }
    }
    following_ = true;
    setCurrentIndex(best);
    following_ = false;
}
