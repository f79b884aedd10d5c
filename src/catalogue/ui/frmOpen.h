#pragma once
// "Open Security": the modal dialog that lists the securities of a data folder and opens the
// picked one as a new data sheet. The caller sets tChart, then runs exec().

#include <QDialog>

#include <memory>

class QGroupBox;
class QLineEdit;
class QToolButton;
class QPushButton;
class QTreeWidget;
class SecurityReader;

class frmOpen : public QDialog {
    Q_OBJECT
public:
    explicit frmOpen(QWidget* parent = nullptr);
    ~frmOpen() override;

    // False: the pick opens a data sheet. True: it is meant for a chart.
    bool tChart = false;

    QLineEdit* Text2;          // "Directory": the folder that is listed
    QToolButton* Command4;     // browse for a folder
    QLineEdit* Text1;          // "Security": the name of the picked security
    QGroupBox* Frame1;         // "Available Securities"
    QTreeWidget* ListView1;    // the securities of the folder
    QPushButton* Command1;     // "&Open"
    QPushButton* Command2;     // "&Cancel"

    void Form_Load();
    void Form_Resize();
    void Command4_Click();
    void Text2_KeyPress(int keyAscii);
    void ListView1_Click();
    void ListView1_KeyPress(int keyAscii);
    void ListView1_DblClick();
    void Command1_Click();
    void Command2_Click();

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void List();
    void Pick();
    void Open();
    SecurityReader& reader();

    std::unique_ptr<SecurityReader> reader_;
    bool loaded_ = false;
};
