#pragma once
// "Adjust Security": the modal screen that walks to a data folder, lists its securities by name,
// and gives the picked one another name and symbol or deletes it with all its records.

#include <QDialog>

class DriveList;
class FolderList;
class QLineEdit;
class QListWidget;
class QPushButton;

class AdjustSecurityDialog : public QDialog {
    Q_OBJECT
public:
    explicit AdjustSecurityDialog(QWidget* parent = nullptr);
    ~AdjustSecurityDialog() override;

    DriveList* driveList;           // picks the drive
    FolderList* folderList;         // the data folder is its current path
    QListWidget* securitiesList;    // the names of the folder's securities
    QLineEdit* nameEdit;            // "Name"
    QLineEdit* symbolEdit;          // "Symbol": typed letters become capitals
    QLineEdit* firstDateEdit;       // "First Date": shown only
    QPushButton* changeButton;      // "&Change"
    QPushButton* deleteButton;      // "&Delete Security"
    QPushButton* closeButton;       // "&Close"

    void driveChosen();
    void listSecurities();
    void showSecurity();
    void changeSecurity();
    void deleteSecurity();

protected:
    void showEvent(QShowEvent* event) override;

private:
    // The symbol of the entry clicked last, trimmed: the security that Change renames.
    QString oldSymbol_;
    bool loaded_ = false;
};
