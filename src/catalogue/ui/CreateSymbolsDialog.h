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

class CreateSymbolsDialog : public QDialog {
    Q_OBJECT
public:
    explicit CreateSymbolsDialog(QWidget* parent = nullptr);
    ~CreateSymbolsDialog() override;

    void load();
    void layoutControls();
    void selectFolder();
    void newSymbol();
    void symbolLookup();
    void yahooLookup();
    void createSymbols();
    void closeDialog();

    QLabel* folderLabel;
    QLineEdit* folderEdit;
    QToolButton* selectFolderButton;
    QLabel* fromLabel;
    QLineEdit* fromDateEdit;
    QListWidget* symbolsList;
    QPushButton* newSymbolButton;
    QPushButton* symbolLookupButton;
    QPushButton* yahooLookupButton;
    QPushButton* createSymbolsButton;
    QPushButton* closeButton;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    // Choose folder: the chooser's answer goes into folderEdit and LastFolder, also when empty.
    void chooseFolder();
    SecurityWriter& writer();

    // Made on first use; serves the dialog as long as it is open.
    std::unique_ptr<SecurityWriter> writer_;
};
