#pragma once
// "Change Record": the small dialog of a data sheet in which the user types one record, for Insert
// and for Change alike. The caller makes it (which loads it: today's date, empty boxes), may fill
// and disable the date for a change, runs exec() and reads the public members back.

#include "sheet/RecordEdits.h"

#include <QDialog>

class QDateEdit;
class QLineEdit;
class QPushButton;

// The dialog's result (Dat, OpenPrice, High, Low, ClosePrice, Volume) is the record it holds; it
// is kept after the dialog has closed.
class frmChange : public QDialog, public RecordValues {
    Q_OBJECT
public:
    explicit frmChange(QWidget* parent = nullptr);

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
};
