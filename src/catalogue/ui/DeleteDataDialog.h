#pragma once
// "Delete Data": the modal screen that walks to a data folder, lists its securities by name, and
// removes the picked security's records from its first date up to a chosen date. The security
// itself stays.

#include <QDialog>

#include <memory>

class DriveList;
class FolderList;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class SecurityReader;
class SecurityWriter;

class DeleteDataDialog : public QDialog {
    Q_OBJECT
public:
    explicit DeleteDataDialog(QWidget* parent = nullptr);
    ~DeleteDataDialog() override;

    DriveList* driveList;               // picks the drive
    FolderList* folderList;             // the data folder is its current path
    QListWidget* securitiesList;        // the names of the folder's securities
    QLineEdit* nameEdit;                // "Name": the security the deletion works on
    QLineEdit* symbolEdit;              // "Symbol": shown only; typed letters become capitals
    QLineEdit* dateEdit;                // the date, as date text
    QRadioButton* deleteBeforeOption;   // "Delete Before", chosen at the start
    QRadioButton* deleteAfterOption;    // "Delete After": offered, does nothing
    QPushButton* deleteButton;          // "&Delete"
    QPushButton* closeButton;           // "Close"

    void driveChosen();
    void listSecurities();
    void showSecurity();
    void deleteRecords();

protected:
    void showEvent(QShowEvent* event) override;

private:
    SecurityReader& reader();
    SecurityWriter& writer();

    std::unique_ptr<SecurityReader> reader_;
    std::unique_ptr<SecurityWriter> writer_;
    bool loaded_ = false;
};
