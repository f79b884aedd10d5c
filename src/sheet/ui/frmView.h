#pragma once
// "DataSheet of <name>": a child window that shows one security of one data folder, its header
// and every record as a row, with the buttons that insert, change and delete records. A new
// instance is made for each security opened; the caller sets path, Sec and Symbol and the
// caption, runs Form_Load and shows it as a child window.

#include <QWidget>

class QFrame;
class QLineEdit;
class QPushButton;
class QTableView;
class SheetRows;

class frmView : public QWidget {
    Q_OBJECT
public:
    explicit frmView(QWidget* parent = nullptr);

    // Set by the caller before the window is loaded; shown untrimmed, used trimmed.
    QString path;     // the data folder
    QString Sec;      // the security's name
    QString Symbol;   // the security's symbol: the sheet reads the security by this

    QFrame* Frame1;       // the header boxes and the buttons
    QLineEdit* Text1;     // "Folder"
    QLineEdit* Text2;     // "Name"
    QLineEdit* Text3;     // "Symbol"
    QLineEdit* Text6;     // "First Date"
    QLineEdit* Text4;     // "Last Date"
    QLineEdit* Text5;     // "Periodicity"
    QTableView* ListView1;
    QPushButton* Command4;   // "Insert"
    QPushButton* Command6;   // "Change"
    QPushButton* Command5;   // "Delete"
    QPushButton* Command1;   // "Close"

    SheetRows* rows() const { return rows_; }
    // The selected row, or -1 when no row is selected.
    int selectedRow() const;

    void Form_Load();
    void Form_Resize();
    void Command1_Click();
    void Command4_Click();
    void Command5_Click();
    void Command6_Click();
    void ListView1_DblClick();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void selectRow(int row);

    SheetRows* rows_;
};
