#pragma once
// "Convert To CSV File": a child window of the main window that writes chosen securities of a data
// folder into CSV files, one "data.csv" for all of them or one file each. Its list is filled only
// through the data folder button; the marked lines are the securities converted, in list order.

#include <QWidget>

#include <memory>

class CsvConversion;
class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QToolButton;
class SecurityReader;

class ConvertToCsvWindow : public QWidget {
    Q_OBJECT
public:
    explicit ConvertToCsvWindow(QWidget* parent = nullptr);
    ~ConvertToCsvWindow() override;

    QLabel* dataFolderLabel;          // "Data Folder"
    QLineEdit* dataFolderEdit;
    QToolButton* dataFolderButton;    // the data folder choice
    QListWidget* symbolsList;         // the folder's symbols; marked lines are converted
    QLabel* destinationLabel;         // "Destination"
    QLineEdit* destinationEdit;
    QToolButton* destinationButton;   // the destination choice
    QCheckBox* mergeCheck;            // "Merge Output to One Single CSV file"
    QPushButton* convertButton;       // "&Convert"
    QPushButton* closeButton;         // "&Close"

    // Lists the symbols of a data folder, in the store's order.
    void FillSecurityList(const QString& path);
    void chooseDataFolder();
    void chooseDestination();
    void convert();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void centre();

    // Made on first use and kept for the window's life.
    std::unique_ptr<SecurityReader> reader_;
    std::unique_ptr<CsvConversion> conversion_;
    bool converting_ = false;
};
