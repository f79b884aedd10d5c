#pragma once
// A drive list: the mounted volumes of the machine to walk a folder list from. On Linux these are
// the real file systems, "/" first, and the user's home folder last. Choosing an entry raises
// driveChanged with that drive's root; showing the drive of a folder does not.

#include <QComboBox>
#include <QStringList>

class DriveList : public QComboBox {
    Q_OBJECT
public:
    explicit DriveList(QWidget* parent = nullptr);

    // The root folder of the drive that stands chosen.
    QString drive() const;
    // Chooses the entry that holds `folder` (the longest root it lies under) without raising
    // driveChanged: the list follows the folder list, it doesn't move it.
    void showDriveOf(const QString& folder);

    // The roots the list offers, in its order.
    static QStringList driveRoots();

signals:
    void driveChanged(const QString& root);

private:
    bool following_ = false;
};
