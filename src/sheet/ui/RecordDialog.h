#pragma once
// "Change Record": the small dialog of a data sheet in which the user types one record, for Insert
// and for Change alike. The caller makes it (which loads it: today's date, empty boxes), may fill
// and disable the date for a change, runs exec() and reads the public members back.

#include "sheet/RecordEdits.h"

#include <QDialog>

class DateBox;
class QLineEdit;
class QPushButton;

// The dialog's result (Dat, OpenPrice, High, Low, ClosePrice, Volume) is the record it holds; it
// is kept after the dialog has closed.
class RecordDialog : public QDialog, public RecordValues {
    Q_OBJECT
public:
    explicit RecordDialog(QWidget* parent = nullptr);

    bool applied = false;   // true only when the dialog was left with "&Apply"

    DateBox* dateEdit;   // the date, typed or picked from its calendar
    QLineEdit* openEdit;   // open
    QLineEdit* highEdit;   // high
    QLineEdit* lowEdit;   // low
    QLineEdit* closeEdit;   // close
    QLineEdit* volumeEdit;   // volume
    QPushButton* applyButton;   // "&Apply"
    QPushButton* closeButton;   // "&Close"

    void load();
    void apply();
    void closeDialog();
};
