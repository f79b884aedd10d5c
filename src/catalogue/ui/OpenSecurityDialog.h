#pragma once
// "Open Security": the modal dialog that lists the securities of a data folder and opens the
// picked one as a new data sheet or chart. The caller sets tChart, then runs exec().

#include <QDialog>

#include <memory>

class QGroupBox;
class QLineEdit;
class QToolButton;
class QPushButton;
class QTreeWidget;
class SecurityReader;

class OpenSecurityDialog : public QDialog {
    Q_OBJECT
public:
    explicit OpenSecurityDialog(QWidget* parent = nullptr);
    ~OpenSecurityDialog() override;

    // False: the pick opens a data sheet. True: it opens a chart.
    bool opensChart = false;

    QLineEdit* folderEdit;          // "Directory": the folder that is listed
    QToolButton* browseButton;     // browse for a folder
    QLineEdit* securityEdit;          // "Security": the name of the picked security
    QGroupBox* securitiesGroup;         // "Available Securities"
    QTreeWidget* securitiesList;    // the securities of the folder
    QPushButton* openButton;     // "&Open"
    QPushButton* cancelButton;     // "&Cancel"

    void load();
    void layoutControls();
    void browse();
    void folderKeyTyped(int keyAscii);
    void securityClicked();
    void securitiesKeyTyped(int keyAscii);
    void securityDoubleClicked();
    void openSecurity();
    void cancel();

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void listSecurities();
    void pickSecurity();
    void openPicked();
    SecurityReader& reader();

    std::unique_ptr<SecurityReader> reader_;
    bool loaded_ = false;
};
