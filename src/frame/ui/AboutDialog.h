#pragma once
// The About box: the program's name, version, maker and a link to the maker's home page.

#include <QDialog>

class QFrame;
class QLabel;
class QPushButton;

class AboutDialog : public QDialog {
    Q_OBJECT
public:
    explicit AboutDialog(QWidget* parent = nullptr);

    // --- controls ---
    QFrame* backPanel;     // the panel behind everything
    QLabel* iconLabel;       // the program's icon
    QLabel* productLabel;       // "Brindlemark for Metastock"
    QLabel* versionLabel;       // "Version 6  Revision 01"
    QLabel* makerLabel;       // the maker's line
    QLabel* webLink;       // the maker's web address, working as a link
    QLabel* mailLabel;       // the maker's e-mail address
    QPushButton* okButton;   // "OK"

    // --- handlers ---
    void load();
    void ok();
    void keyTyped(int keyAscii);
    void openWebLink();
    void hoverWebLink();
    void leaveWebLink();

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setLinkColour(const QColor& colour);
    bool loaded_ = false;
};
