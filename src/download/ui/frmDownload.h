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

class frmDownload : public QDialog {
    Q_OBJECT
public:
    explicit frmDownload(QWidget* parent = nullptr);
    ~frmDownload() override;

    void Form_Load();
    void Form_Unload();
    void Command1_Click();   // browse
    void Command2_Click();   // add folder
    void Command3_Click();   // remove folder
    void Command6_Click();   // remove all
    void Command4_Click();   // download
    void Command5_Click();   // close
    void ListView2_ItemCheck(QTreeWidgetItem* item);
    void ListView1_ItemCheck(QTreeWidgetItem* item);

    QLabel* Label2;
    QLineEdit* Text1;
    QToolButton* Command1;
    QToolButton* Command2;
    QToolButton* Command3;
    QPushButton* Command6;
    QTreeWidget* ListView2;   // the folders
    QTreeWidget* ListView1;   // folder rows and security rows: "Security", "Symbol", "Last Date"
    QLabel* Label1;
    QPushButton* Command4;
    QPushButton* Command5;

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
    // A folder row taken out of ListView2 from inside its own tick change: the list is still
    // working on the item when the handler returns, so it is freed later.
    std::unique_ptr<QTreeWidgetItem> removedFolder_;
};
