#pragma once
// "New Symbol": the small prompt for one symbol. OK puts the trimmed text into Module1::NewSymbol;
// Close leaves it as the caller set it (empty).

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

class frmNewSymbol : public QDialog {
    Q_OBJECT
public:
    explicit frmNewSymbol(QWidget* parent = nullptr);

    void Command1_Click();   // OK
    void Command2_Click();   // Close
    void Form_Resize();

    QLabel* Label1;
    QLineEdit* Text1;
    QPushButton* Command1;
    QPushButton* Command2;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
};
