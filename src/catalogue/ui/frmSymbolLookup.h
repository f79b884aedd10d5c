#pragma once
// "Symbol Lookup": browse the symbol list by group and pick any number of names. Select hands the
// symbols of the selected lines back in Module1::SelectedSymbols, in list order; Close leaves
// SelectedSymbols as it was.

#include "frame/GrowingArray.h"

#include <QDialog>
#include <QString>

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

class frmSymbolLookup : public QDialog {
    Q_OBJECT
public:
    explicit frmSymbolLookup(QWidget* parent = nullptr);

    // Fills lstSymbolNames and the visible symbols with the entries of the group.
    void LoadSymbols(QString& strGroup);

    void Form_Load();
    void Form_Resize();
    void cmbGroups_Click();
    void lstSymbolNames_Click();
    void Command1_Click();   // Select
    void Command2_Click();   // Close

    QLabel* Label1;
    QComboBox* cmbGroups;
    QListWidget* lstSymbolNames;
    QLabel* Label2;
    QLineEdit* txtSymbol;
    QLabel* Label3;
    // Shown only when the symbol list holds no entries.
    QLabel* lblNoSymbols;
    QPushButton* Command1;
    QPushButton* Command2;

    // The Symbol of each line of lstSymbolNames: line i (from 0) at index i + 1.
    GrowingArray<QString> VisibleSymbols;
    int VisibleCount = 0;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
};
