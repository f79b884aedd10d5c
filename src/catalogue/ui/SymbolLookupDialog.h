#pragma once
// "Symbol Lookup": browse the symbol list by group and pick any number of names. Select hands the
// symbols of the selected lines back in handOvers().SelectedSymbols, in list order; Close leaves
// SelectedSymbols as it was.

#include "frame/GrowingArray.h"

#include <QDialog>
#include <QString>

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

class SymbolLookupDialog : public QDialog {
    Q_OBJECT
public:
    explicit SymbolLookupDialog(QWidget* parent = nullptr);

    // Fills namesList and the visible symbols with the entries of the group.
    void LoadSymbols(QString& strGroup);

    void load();
    void layoutControls();
    void groupChosen();
    void nameClicked();
    void select();   // Select
    void closeDialog();   // Close

    QLabel* groupLabel;
    QComboBox* groupsCombo;
    QListWidget* namesList;
    QLabel* symbolLabel;
    QLineEdit* symbolEdit;
    QLabel* noticeLabel;
    // Shown only when the symbol list holds no entries.
    QLabel* noSymbolsLabel;
    QPushButton* selectButton;
    QPushButton* closeButton;

    // The Symbol of each line of namesList: line i (from 0) at index i + 1.
    GrowingArray<QString> VisibleSymbols;
    int VisibleCount = 0;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
};
