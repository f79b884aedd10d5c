#pragma once
// "DataSheet of <name>": a child window that shows one security of one data folder, its header
// and every record as a row, with the buttons that insert, change and delete records. A new
// instance is made for each security opened; the caller sets path, Sec and Symbol and the
// caption, runs load() and shows it as a child window.

#include <QWidget>

class QFrame;
class QLineEdit;
class QPushButton;
class QTableView;
class SheetRows;

class DataSheetWindow : public QWidget {
    Q_OBJECT
public:
    explicit DataSheetWindow(QWidget* parent = nullptr);

    // Set by the caller before the window is loaded; shown untrimmed, used trimmed.
    QString path;     // the data folder
    QString securityName;      // the security's name
    QString Symbol;   // the security's symbol: the sheet reads the security by this

    QFrame* headerFrame;       // the header boxes and the buttons
    QLineEdit* folderEdit;     // "Folder"
    QLineEdit* nameEdit;     // "Name"
    QLineEdit* symbolEdit;     // "Symbol"
    QLineEdit* firstDateEdit;     // "First Date"
    QLineEdit* lastDateEdit;     // "Last Date"
    QLineEdit* periodicityEdit;     // "Periodicity"
    QTableView* recordsView;
    QPushButton* insertButton;   // "Insert"
    QPushButton* changeButton;   // "Change"
    QPushButton* deleteButton;   // "Delete"
    QPushButton* closeButton;   // "Close"

    SheetRows* rows() const { return rows_; }
    // The selected row, or -1 when no row is selected.
    int selectedRow() const;

    void load();
    void layoutControls();
    void closeSheet();
    void insertRecord();
    void deleteRecord();
    void changeRecord();
    void recordDoubleClicked();

protected:
    void resizeEvent(QResizeEvent* event) override;
    // Brings the selected row into view once the sheet has its size on screen.
    void showEvent(QShowEvent* event) override;

private:
    void selectRow(int row);

    SheetRows* rows_;
};
