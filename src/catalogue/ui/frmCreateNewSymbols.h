#pragma once
// "Create New Symbols": the user names a data folder and a from date, collects symbols (typed one
// by one or picked from Symbol Lookup), and Create Symbols makes one empty security per line and
// writes the from date into the folder's values.dat.

#include <QDialog>

#include <memory>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QToolButton;
class SecurityWriter;

class frmCreateNewSymbols : public QDialog {
    Q_OBJECT
public:
    explicit frmCreateNewSymbols(QWidget* parent = nullptr);
    ~frmCreateNewSymbols() override;

    void Form_Load();
    void Form_Resize();
    void cmdSelectFolder_Click();
    void cmdNewSymbol_Click();
    void cmdSymbolLookup_Click();
    void cmdYahoo_Click();
    void cmdCreateSymbols_Click();
    void cmdClose_Click();

    QLabel* Label1;
    QLineEdit* txtDataFolder;
    QToolButton* cmdSelectFolder;
    QLabel* Label2;
    QLineEdit* dtFrom;
    QListWidget* lstSymbols;
    QPushButton* cmdNewSymbol;
    QPushButton* cmdSymbolLookup;
    QPushButton* cmdYahoo;
    QPushButton* cmdCreateSymbols;
    QPushButton* cmdClose;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    // Choose folder: the chooser's answer goes into txtDataFolder and LastFolder, also when empty.
    void chooseFolder();
    SecurityWriter& writer();

    // Made on first use; serves the dialog as long as it is open.
    std::unique_ptr<SecurityWriter> writer_;
};
