#pragma once
// A folder list: the current folder with its ancestors above it and its subfolders below it, as a
// tree that shows all of them at once. A double click or Enter on an entry makes it the current
// folder and raises pathChanged; so does setPath(). A folder that can't be read shows no
// subfolders, and nothing is reported.

#include <QTreeWidget>

class FolderList : public QTreeWidget {
    Q_OBJECT
public:
    explicit FolderList(QWidget* parent = nullptr);

    // The current folder: an absolute path with '/' separators.
    QString path() const { return path_; }
    // Makes `folder` the current folder and raises pathChanged, also when it is the current one.
    void setPath(const QString& folder);
    // Puts the list on `folder` without raising pathChanged: where a screen's walk begins. A folder
    // that is gone gives way to the nearest ancestor that is there.
    void startAt(const QString& folder);

    // Where the walks of the screens begin: LastFolder when it is set, else the user's home.
    static QString startingFolder();

signals:
    void pathChanged(const QString& path);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    // Every entry stands open: no expand marks beside them.
    void drawBranches(QPainter*, const QRect&, const QModelIndex&) const override {}

private:
    void display(const QString& folder);
    void enter(QTreeWidgetItem* item);

    QString path_;
};
