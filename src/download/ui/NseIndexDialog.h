#pragma once
// "NSE Indices Download": the folder for the index data, remembered in the setting IndexFolder
// when chosen through "Select Folder", and the download of the ready-made archive into it.

#include "download/Inet.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

class NseIndexDialog : public QDialog {
    Q_OBJECT
public:
    explicit NseIndexDialog(QWidget* parent = nullptr);

    void selectFolder();    // "Select Folder"
    void startDownload();   // "Start Download"

    QLabel* folderLabel;
    QLineEdit* folderEdit;
    QPushButton* selectFolderButton;
    QPushButton* startDownloadButton;
    QLabel* noteLabel;
    Inet connection;

protected:
    void resizeEvent(QResizeEvent* event) override;
};
