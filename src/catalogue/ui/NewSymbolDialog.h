#pragma once
// "New Symbol": the small prompt for one symbol. OK puts the trimmed text into handOvers().NewSymbol;
// Close leaves it as the caller set it (empty).

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

class NewSymbolDialog : public QDialog {
    Q_OBJECT
public:
    explicit NewSymbolDialog(QWidget* parent = nullptr);

    void takeSymbol();   // OK
    void closeDialog();   // Close
    void layoutControls();

    QLabel* symbolLabel;
    QLineEdit* symbolEdit;
    QPushButton* okButton;
    QPushButton* closeButton;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
};
