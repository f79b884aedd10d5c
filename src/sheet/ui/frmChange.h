#pragma once
// "Change Record": the small dialog of a data sheet in which the user types one record, for Insert
// and for Change alike. The caller makes it (which loads it: today's date, empty boxes), may fill
// and disable the date for a change, runs exec() and reads the public members back.

#include <QDate>
#include <QDialog>

class QDateEdit;
class QLineEdit;
class QPushButton;

class frmChange : public QDialog {
    Q_OBJECT
public:
    explicit frmChange(QWidget* parent = nullptr);

    // The dialog's result; kept after it has closed.
    QDate Dat;
    double OpenPrice = 0;
    double High = 0;
    double Low = 0;
    double ClosePrice = 0;
    double Volume = 0;
    bool OK = false;   // true only when the dialog was left with "&Apply"

    QDateEdit* DTPicker1;
    QLineEdit* Text2;   // open
    QLineEdit* Text3;   // high
    QLineEdit* Text4;   // low
    QLineEdit* Text5;   // close
    QLineEdit* Text6;   // volume
    QPushButton* Command1;   // "&Apply"
    QPushButton* Command3;   // "&Close"

    void Form_Load();
    void Command1_Click();
    void Command3_Click();

private:
    void centreOnScreen();
};
