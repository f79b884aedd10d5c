#pragma once
// The About box: the program's name, version, maker and a link to the maker's home page.

#include <QDialog>

class QFrame;
class QLabel;
class QPushButton;

class frmAbout : public QDialog {
    Q_OBJECT
public:
    explicit frmAbout(QWidget* parent = nullptr);

    // --- controls ---
    QFrame* Picture1;     // the panel behind everything
    QLabel* Image1;       // the program's icon
    QLabel* Label1;       // "Brindlemark for Metastock"
    QLabel* Label2;       // "Version 6  Revision 01"
    QLabel* Label3;       // the maker's line
    QLabel* Label4;       // the maker's web address, working as a link
    QLabel* Label6;       // the maker's e-mail address
    QPushButton* Command1;   // "OK"

    // --- handlers ---
    void Form_Load();
    void Command1_Click();
    void Form_KeyPress(int keyAscii);
    void Label4_Click();
    void Label4_MouseMove();
    void Picture1_MouseMove();

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setLinkColour(const QColor& colour);
    bool loaded_ = false;
};
