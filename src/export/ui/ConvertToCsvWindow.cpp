#include "export/ui/ConvertToCsvWindow.h"

#include "export/CsvConversion.h"
#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Platform.h"
#include "frame/ui/Centring.h"
#include "frame/ui/Widgets.h"
#include "store/SecurityReader.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

namespace {
const QString DataFolderTitle = QStringLiteral("Select the Data Folder");
const QString DestinationTitle = QStringLiteral("Select the Destination Folder");
} // namespace

ConvertToCsvWindow::ConvertToCsvWindow(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("ConvertToCsvWindow"));
    setWindowTitle(QStringLiteral("Convert To CSV File"));

    dataFolderLabel = named(new QLabel(QStringLiteral("Data Folder"), this), "dataFolderLabel");
    dataFolderEdit = named(new QLineEdit(this), "dataFolderEdit");
    dataFolderEdit->setMinimumWidth(300);
    dataFolderLabel->setBuddy(dataFolderEdit);
    dataFolderButton = named(new QToolButton(this), "dataFolderButton");
    dataFolderButton->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    dataFolderButton->setToolTip(DataFolderTitle);

    symbolsList = named(new QListWidget(this), "symbolsList");
    symbolsList->setSelectionMode(QAbstractItemView::MultiSelection);
    symbolsList->setMinimumHeight(200);

    destinationLabel = named(new QLabel(QStringLiteral("Destination"), this), "destinationLabel");
    destinationEdit = named(new QLineEdit(this), "destinationEdit");
    destinationLabel->setBuddy(destinationEdit);
    destinationButton = named(new QToolButton(this), "destinationButton");
    destinationButton->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    destinationButton->setToolTip(DestinationTitle);

    mergeCheck = named(new QCheckBox(QStringLiteral("Merge Output to One Single CSV file"), this), "mergeCheck");
    convertButton = named(new QPushButton(QStringLiteral("&Convert"), this), "convertButton");
    closeButton = named(new QPushButton(QStringLiteral("&Close"), this), "closeButton");

    auto* layout = new QGridLayout(this);
    layout->addWidget(dataFolderLabel, 0, 0);
    layout->addWidget(dataFolderEdit, 0, 1);
    layout->addWidget(dataFolderButton, 0, 2);
    layout->addWidget(symbolsList, 1, 0, 1, 3);
    layout->addWidget(destinationLabel, 2, 0);
    layout->addWidget(destinationEdit, 2, 1);
    layout->addWidget(destinationButton, 2, 2);
    layout->addWidget(mergeCheck, 3, 0, 1, 3);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(convertButton);
    buttons->addWidget(closeButton);
    layout->addLayout(buttons, 4, 0, 1, 3);
    layout->setColumnStretch(1, 1);

    connect(dataFolderButton, &QToolButton::clicked, this, &ConvertToCsvWindow::chooseDataFolder);
    connect(destinationButton, &QToolButton::clicked, this, &ConvertToCsvWindow::chooseDestination);
    connect(convertButton, &QPushButton::clicked, this, &ConvertToCsvWindow::convert);
    connect(closeButton, &QPushButton::clicked, this, &QWidget::close);
}

ConvertToCsvWindow::~ConvertToCsvWindow() = default;

void ConvertToCsvWindow::FillSecurityList(const QString& path) {
    if (!reader_)
        reader_ = std::make_unique<SecurityReader>();
    try {
        reader_->OpenFolder(path);
        symbolsList->clear();
        while (reader_->GetSecuritiesRemaining() >= 1) {
            reader_->NextSecurity();
            symbolsList->addItem(reader_->GetSymbol());
        }
        reader_->CloseFolder();
    } catch (const Failure& failure) {
        // A folder without a store: the list stays as it was.
        reader_->CloseFolder();
        MsgBox(failure.Description, MsgIcon::Warning);
    }
}

void ConvertToCsvWindow::chooseDataFolder() {
    dataFolderEdit->setText(BrowseForFolder(this, DataFolderTitle));
    if (!dataFolderEdit->text().trimmed().isEmpty())
        FillSecurityList(dataFolderEdit->text().trimmed());
}

void ConvertToCsvWindow::chooseDestination() {
    destinationEdit->setText(BrowseForFolder(this, DestinationTitle));
}

void ConvertToCsvWindow::convert() {
    if (converting_)
        return;
    if (dataFolderEdit->text().trimmed().isEmpty()) {
        MsgBox(QStringLiteral("Data Folder is empty"), MsgIcon::Information);
        chooseDataFolder();
        return;   // the user presses Convert again
    }
    if (destinationEdit->text().trimmed().isEmpty()) {
        MsgBox(QStringLiteral("Destination folder is empty"), MsgIcon::Information);
        chooseDestination();
        return;
    }

    QStringList chosen;
    for (int i = 0; i < symbolsList->count(); ++i)
        if (symbolsList->item(i)->isSelected())
            chosen << symbolsList->item(i)->text();

    if (!conversion_)
        conversion_ = std::make_unique<CsvConversion>();
    converting_ = true;
    try {
        conversion_->convert(dataFolderEdit->text(), destinationEdit->text(), chosen, mergeCheck->isChecked());
    } catch (const Failure& failure) {
        converting_ = false;
        MsgBox(failure.Description, MsgIcon::Critical);
        return;
    }
    converting_ = false;
    MsgBox(QStringLiteral("Conversion Completed."), MsgIcon::Information);
}

void ConvertToCsvWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    centre();
}

void ConvertToCsvWindow::centre() {
    // In the middle of the main window's child area, or of the screen when standing alone.
    auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget());
    if (!sub) {
        if (isWindow())
            CentreOnScreen(this);
        return;
    }
    if (QWidget* area = sub->parentWidget()) {
        const QSize room = area->size();
        sub->move(std::max(0, (room.width() - sub->width()) / 2), std::max(0, (room.height() - sub->height()) / 2));
    }
}
