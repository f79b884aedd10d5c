#pragma once
// "Downloader": the user's data folders, remembered in folders.txt, the securities of the ticked
// folders with their last dates, and the hand-over of the ticked securities to a download run.

#include <QDialog>

#include <memory>

class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;

class DownloaderDialog : public QDialog {
    Q_OBJECT
public:
    explicit DownloaderDialog(QWidget* parent = nullptr);
    ~DownloaderDialog() override;

    void load();
    void unload();
    void browse();   // browse
    void addFolder();   // add folder
    void removeFolder();   // remove folder
    void removeAllFolders();   // remove all
    void download();   // download
    void closeDialog();   // close
    void folderTicked(QTreeWidgetItem* item);
    void securityTicked(QTreeWidgetItem* item);

    QLabel* folderLabel;
    QLineEdit* folderEdit;
    QToolButton* browseButton;
    QToolButton* addFolderButton;
    QToolButton* removeFolderButton;
    QPushButton* removeAllButton;
    QTreeWidget* foldersList;   // the folders
    QTreeWidget* securitiesList;   // folder rows and security rows: "Security", "Symbol", "Last Date"
    QLabel* selectionLabel;
    QPushButton* downloadButton;
    QPushButton* closeButton;

public slots:
    void done(int result) override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void listFolder(const QString& path);
    void countSelection(bool showZeroFirst);
    QTreeWidgetItem* addRow(QTreeWidget* list, const QStringList& texts, bool ticked);
    void setTick(QTreeWidgetItem* item, bool ticked);
    void onItemChanged(QTreeWidget* list, QTreeWidgetItem* item);
    void centre();

    bool filling_ = false;
    bool unloaded_ = false;
    // A folder row taken out of foldersList from inside its own tick change: the list is still
    // working on the item when the handler returns, so it is freed later.
    std::unique_ptr<QTreeWidgetItem> removedFolder_;
};
