#include "catalogue/ui/OpenSecurityDialog.h"

#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/ProgramState.h"
#include "frame/Platform.h"
#include "frame/ui/Centring.h"
#include "frame/ui/ChildWindows.h"
#include "sheet/ui/ChartWindow.h"
#include "sheet/ui/DataSheetWindow.h"
#include "store/SecurityReader.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

const QString Marrowfin = QStringLiteral("Marrowfin");
constexpr int EnterKey = 13;

// The key code a key press gives to the handlers: 13 for Enter, else the typed character.
int keyAscii(const QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        return EnterKey;
    const QString text = event->text();
    return text.isEmpty() ? 0 : text.at(0).unicode();
}

} // namespace

OpenSecurityDialog::OpenSecurityDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("OpenSecurityDialog"));
    setWindowTitle(QStringLiteral("Open Security"));
    setModal(true);
    resize(700, 440);

    folderEdit = new QLineEdit(this);
    folderEdit->setObjectName(QStringLiteral("folderEdit"));
    browseButton = new QToolButton(this);
    browseButton->setObjectName(QStringLiteral("browseButton"));
    browseButton->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    browseButton->setToolTip(QStringLiteral("Browse For Folder"));
    securityEdit = new QLineEdit(this);
    securityEdit->setObjectName(QStringLiteral("securityEdit"));
    securityEdit->setReadOnly(true);

    securitiesGroup = new QGroupBox(QStringLiteral("Available Securities"), this);
    securitiesGroup->setObjectName(QStringLiteral("securitiesGroup"));
    securitiesList = new QTreeWidget(securitiesGroup);
    securitiesList->setObjectName(QStringLiteral("securitiesList"));
    securitiesList->setRootIsDecorated(false);
    securitiesList->setUniformRowHeights(true);
    securitiesList->setAllColumnsShowFocus(true);
    securitiesList->setSelectionMode(QAbstractItemView::SingleSelection);
    securitiesList->setHeaderLabels({QStringLiteral("Security Name"), QStringLiteral("Symbol"),
                                QStringLiteral("File Name"), QStringLiteral("Last Date")});
    securitiesList->header()->setStretchLastSection(true);
    securitiesList->setColumnWidth(0, 230);
    // The Symbol column takes the longest symbol the store holds (14 characters) whole.
    securitiesList->setColumnWidth(1, securitiesList->fontMetrics().horizontalAdvance(QString(14, u'W')) + 16);
    securitiesList->setColumnWidth(2, 90);

    openButton = new QPushButton(QStringLiteral("&Open"), this);
    openButton->setObjectName(QStringLiteral("openButton"));
    cancelButton = new QPushButton(QStringLiteral("&Cancel"), this);
    cancelButton->setObjectName(QStringLiteral("cancelButton"));
    // Enter belongs to the folder box and the list, not to a default button.
    for (QPushButton* b : {openButton, cancelButton}) {
        b->setAutoDefault(false);
        b->setDefault(false);
    }

    auto directory = new QHBoxLayout;
    auto directoryLabel = new QLabel(QStringLiteral("Directory"), this);
    directoryLabel->setBuddy(folderEdit);
    directory->addWidget(directoryLabel);
    directory->addWidget(folderEdit, 1);
    directory->addWidget(browseButton);

    auto security = new QHBoxLayout;
    auto securityLabel = new QLabel(QStringLiteral("Security"), this);
    securityLabel->setBuddy(securityEdit);
    security->addWidget(securityLabel);
    security->addWidget(securityEdit, 1);

    auto frameLayout = new QVBoxLayout(securitiesGroup);
    frameLayout->addWidget(securitiesList);

    auto buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(openButton);
    buttons->addWidget(cancelButton);

    auto layout = new QVBoxLayout(this);
    layout->addLayout(directory);
    layout->addLayout(security);
    layout->addWidget(securitiesGroup, 1);
    layout->addLayout(buttons);

    connect(browseButton, &QToolButton::clicked, this, &OpenSecurityDialog::browse);
    connect(openButton, &QPushButton::clicked, this, &OpenSecurityDialog::openSecurity);
    connect(cancelButton, &QPushButton::clicked, this, &OpenSecurityDialog::cancel);
    folderEdit->installEventFilter(this);
    securitiesList->installEventFilter(this);
    securitiesList->viewport()->installEventFilter(this);
}

OpenSecurityDialog::~OpenSecurityDialog() = default;

SecurityReader& OpenSecurityDialog::reader() {
    if (!reader_)
        reader_ = std::make_unique<SecurityReader>();
    return *reader_;
}

void OpenSecurityDialog::showEvent(QShowEvent* event) {
    if (!loaded_) {
        loaded_ = true;
        load();
    }
    QDialog::showEvent(event);
    layoutControls();
}

void OpenSecurityDialog::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    layoutControls();
}

void OpenSecurityDialog::layoutControls() {
    CentreOnScreen(this);
}

bool OpenSecurityDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == folderEdit && event->type() == QEvent::KeyPress) {
        const int key = keyAscii(static_cast<QKeyEvent*>(event));
        if (key != 0)
            folderKeyTyped(key);
        if (key == EnterKey)
            return true;   // Enter is taken: it must not reach a button of the dialog
    } else if (watched == securitiesList && event->type() == QEvent::KeyPress) {
        // A key that types a character (Enter included; arrows and the like are no key presses)
        // reaches the handler before the list moves its selection for it.
        const int key = keyAscii(static_cast<QKeyEvent*>(event));
        if (key != 0)
            securitiesKeyTyped(key);
        if (key == EnterKey)
            return true;
    } else if (watched == securitiesList && event->type() == QEvent::KeyRelease) {
        // A key that types nothing (arrows, Page Up, Home, End) has moved the selection by now:
        // the row it leaves highlighted is the one picked, so what shows is what opens.
        if (keyAscii(static_cast<QKeyEvent*>(event)) == 0)
            pickSecurity();
    } else if (watched == securitiesList->viewport()) {
        if (event->type() == QEvent::MouseButtonRelease)
            securityClicked();
        else if (event->type() == QEvent::MouseButtonDblClick) {
            securityDoubleClicked();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

// Lists the securities of the folder in folderEdit. Raises the store's Failure; when opening the
// folder is what failed, the rows stay as they were.
void OpenSecurityDialog::listSecurities() {
    SecurityReader& r = reader();
    r.OpenFolder(folderEdit->text().trimmed());
    securitiesList->clear();
    QList<QTreeWidgetItem*> items;
    try {
        const QIcon one = style()->standardIcon(QStyle::SP_FileIcon);
        while (r.GetSecuritiesRemaining() >= 1) {
            r.NextSecurity();
            const QString name = r.GetName();
            auto item = new QTreeWidgetItem;
            items.append(item);
            item->setText(0, name);
            item->setIcon(0, one);
            item->setText(1, r.GetSymbol());
            item->setText(2, r.GetFileName());
            item->setText(3, DateToText(r.GetLastDate()));
        }
        securitiesList->addTopLevelItems(items);
    } catch (const Failure&) {
        // The rows read before the failure stay in the list, the last one as far as it got.
        securitiesList->addTopLevelItems(items);
        passOver([&] { r.CloseFolder(); });
        throw;
    }
    r.CloseFolder();
    // The row of the security that stands picked is highlighted, when this folder holds it;
    // otherwise no row is, so that the highlight never shows a security other than the one
    // that would open.
    const QString picked = securityEdit->text().trimmed();
    for (QTreeWidgetItem* item : std::as_const(items)) {
        if (!picked.isEmpty() && item->text(0).trimmed() == picked) {
            securitiesList->setCurrentItem(item);
            return;
        }
    }
    securitiesList->setCurrentItem(nullptr);
    securitiesList->clearSelection();
}

void OpenSecurityDialog::pickSecurity() {
    const QList<QTreeWidgetItem*> selected = securitiesList->selectedItems();
    if (selected.isEmpty())
        return;
    securityEdit->setText(selected.first()->text(0).trimmed());
}

void OpenSecurityDialog::load() {
    const QString last = sharedState().LastFolder.trimmed();
    folderEdit->setText(last.isEmpty() ? platform().programFolder() : sharedState().LastFolder);
    try {
        listSecurities();
    } catch (const Failure&) {
        return;
    }
    // As in any list, the first row stands selected once the list is filled, and is picked.
    if (QTreeWidgetItem* first = securitiesList->topLevelItem(0))
        securitiesList->setCurrentItem(first);
    pickSecurity();
}

void OpenSecurityDialog::browse() {
    const QString previous = folderEdit->text().trimmed();
    const QString answer = BrowseForFolder(this, QStringLiteral("Browse For Folder"));
    if (!answer.isEmpty())
        folderEdit->setText(answer);
    try {
        listSecurities();
    } catch (const Failure& failure) {
        MsgBox(failure.Description, MsgIcon::Information, Marrowfin);
        folderEdit->setText(previous);
        folderEdit->setFocus();
        return;
    }
    sharedState().LastFolder = folderEdit->text();
}

void OpenSecurityDialog::folderKeyTyped(int key) {
    if (key != EnterKey)
        return;
    try {
        listSecurities();
    } catch (const Failure& failure) {
        MsgBox(failure.Description, MsgIcon::Information, Marrowfin);
        folderEdit->clear();
        folderEdit->setFocus();
    }
}

void OpenSecurityDialog::securityClicked() { pickSecurity(); }

void OpenSecurityDialog::securitiesKeyTyped(int key) {
    pickSecurity();
    if (key == EnterKey)
        openPicked();
}

void OpenSecurityDialog::securityDoubleClicked() {
    pickSecurity();
    openPicked();
}

void OpenSecurityDialog::openSecurity() { openPicked(); }

void OpenSecurityDialog::cancel() { reject(); }

void OpenSecurityDialog::openPicked() {
    const QString name = securityEdit->text().trimmed();
    const QString folder = folderEdit->text().trimmed();
    if (name.isEmpty()) {
        MsgBox(QStringLiteral("No Security Selected."), MsgIcon::Information);
        return;
    }

    // The security is looked up before the dialog goes: a name that this folder does not hold
    // (one picked in another folder before Browse or Enter) is told here and the dialog stays.
    SecurityReader& r = reader();
    QString symbol;
    try {
        r.OpenFolder(folder);
        r.FindSecurity(name);
        symbol = r.GetSymbol();
    } catch (const Failure& failure) {
        passOver([&] { r.CloseSecurity(); });
        passOver([&] { r.CloseFolder(); });
        MsgBox(failure.Description, MsgIcon::Information, Marrowfin);
        return;
    }
    hide();

    // The new window reads the whole security now, while this dialog's reader holds the folder.
    QWidget* window = nullptr;
    if (!opensChart) {
        auto view = new DataSheetWindow;
        view->path = folder;
        view->securityName = name;
        view->Symbol = symbol;
        view->setWindowTitle(QStringLiteral("DataSheet of ") + name);
        view->load();
        window = view;
    } else {
        auto chart = new ChartWindow;
        chart->path = folder;
        chart->symbol = symbol;
        chart->setWindowTitle(QStringLiteral("Chart of ") + name);
        chart->load();
        window = chart;
    }

    passOver([&] { r.CloseSecurity(); });
    passOver([&] { r.CloseFolder(); });
    accept();
    ShowChildWindow(window);
}
