#include "catalogue/ui/frmOpen.h"

#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Module1.h"
#include "frame/Platform.h"
#include "frame/ui/Centring.h"
#include "frame/ui/ChildWindows.h"
#include "sheet/ui/frmView.h"
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

frmOpen::frmOpen(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmOpen"));
    setWindowTitle(QStringLiteral("Open Security"));
    setModal(true);
    resize(620, 440);

    Text2 = new QLineEdit(this);
    Text2->setObjectName(QStringLiteral("Text2"));
    Command4 = new QToolButton(this);
    Command4->setObjectName(QStringLiteral("Command4"));
    Command4->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    Command4->setToolTip(QStringLiteral("Browse For Folder"));
    Text1 = new QLineEdit(this);
    Text1->setObjectName(QStringLiteral("Text1"));
    Text1->setReadOnly(true);

    Frame1 = new QGroupBox(QStringLiteral("Available Securities"), this);
    Frame1->setObjectName(QStringLiteral("Frame1"));
    ListView1 = new QTreeWidget(Frame1);
    ListView1->setObjectName(QStringLiteral("ListView1"));
    ListView1->setRootIsDecorated(false);
    ListView1->setUniformRowHeights(true);
    ListView1->setAllColumnsShowFocus(true);
    ListView1->setSelectionMode(QAbstractItemView::SingleSelection);
    ListView1->setHeaderLabels({QStringLiteral("Security Name"), QStringLiteral("Symbol"),
                                QStringLiteral("File Name"), QStringLiteral("Last Date")});
    ListView1->header()->setStretchLastSection(true);
    ListView1->setColumnWidth(0, 230);
    ListView1->setColumnWidth(1, 110);
    ListView1->setColumnWidth(2, 90);

    Command1 = new QPushButton(QStringLiteral("&Open"), this);
    Command1->setObjectName(QStringLiteral("Command1"));
    Command2 = new QPushButton(QStringLiteral("&Cancel"), this);
    Command2->setObjectName(QStringLiteral("Command2"));
    // Enter belongs to the folder box and the list, not to a default button.
    for (QPushButton* b : {Command1, Command2}) {
        b->setAutoDefault(false);
        b->setDefault(false);
    }

    auto directory = new QHBoxLayout;
    auto directoryLabel = new QLabel(QStringLiteral("Directory"), this);
    directoryLabel->setBuddy(Text2);
    directory->addWidget(directoryLabel);
    directory->addWidget(Text2, 1);
    directory->addWidget(Command4);

    auto security = new QHBoxLayout;
    auto securityLabel = new QLabel(QStringLiteral("Security"), this);
    securityLabel->setBuddy(Text1);
    security->addWidget(securityLabel);
    security->addWidget(Text1, 1);

    auto frameLayout = new QVBoxLayout(Frame1);
    frameLayout->addWidget(ListView1);

    auto buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(Command1);
    buttons->addWidget(Command2);

    auto layout = new QVBoxLayout(this);
    layout->addLayout(directory);
    layout->addLayout(security);
    layout->addWidget(Frame1, 1);
    layout->addLayout(buttons);

    connect(Command4, &QToolButton::clicked, this, &frmOpen::Command4_Click);
    connect(Command1, &QPushButton::clicked, this, &frmOpen::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &frmOpen::Command2_Click);
    Text2->installEventFilter(this);
    ListView1->installEventFilter(this);
    ListView1->viewport()->installEventFilter(this);
}

frmOpen::~frmOpen() = default;

SecurityReader& frmOpen::reader() {
    if (!reader_)
        reader_ = std::make_unique<SecurityReader>();
    return *reader_;
}

void frmOpen::showEvent(QShowEvent* event) {
    if (!loaded_) {
        loaded_ = true;
        Form_Load();
    }
    QDialog::showEvent(event);
    Form_Resize();
}

void frmOpen::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    Form_Resize();
}

void frmOpen::Form_Resize() {
    CentreOnScreen(this);
}

bool frmOpen::eventFilter(QObject* watched, QEvent* event) {
    if (watched == Text2 && event->type() == QEvent::KeyPress) {
        const int key = keyAscii(static_cast<QKeyEvent*>(event));
        if (key != 0)
            Text2_KeyPress(key);
        if (key == EnterKey)
            return true;   // Enter is taken: it must not reach a button of the dialog
    } else if (watched == ListView1 && event->type() == QEvent::KeyPress) {
        // A key that types a character (Enter included; arrows and the like are no key presses)
        // reaches the handler before the list moves its selection for it.
        const int key = keyAscii(static_cast<QKeyEvent*>(event));
        if (key != 0)
            ListView1_KeyPress(key);
        if (key == EnterKey)
            return true;
    } else if (watched == ListView1->viewport()) {
        if (event->type() == QEvent::MouseButtonRelease)
            ListView1_Click();
        else if (event->type() == QEvent::MouseButtonDblClick) {
            ListView1_DblClick();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

// Lists the securities of the folder in Text2. Raises the store's Failure; when opening the
// folder is what failed, the rows stay as they were.
void frmOpen::List() {
    SecurityReader& r = reader();
    r.OpenFolder(Text2->text().trimmed());
    ListView1->clear();
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
        ListView1->addTopLevelItems(items);
    } catch (const Failure&) {
        // The rows read before the failure stay in the list, the last one as far as it got.
        ListView1->addTopLevelItems(items);
        passOver([&] { r.CloseFolder(); });
        throw;
    }
    r.CloseFolder();
    // As in any list, the first row stands selected once the list is filled.
    if (QTreeWidgetItem* first = ListView1->topLevelItem(0))
        ListView1->setCurrentItem(first);
}

void frmOpen::Pick() {
    const QList<QTreeWidgetItem*> selected = ListView1->selectedItems();
    if (selected.isEmpty())
        return;
    Text1->setText(selected.first()->text(0).trimmed());
}

void frmOpen::Form_Load() {
    const QString last = Module1::LastFolder.trimmed();
    Text2->setText(last.isEmpty() ? platform().programFolder() : Module1::LastFolder);
    try {
        List();
    } catch (const Failure&) {
        return;
    }
    Pick();
}

void frmOpen::Command4_Click() {
    const QString previous = Text2->text().trimmed();
    const QString answer = BrowseForFolder(this, QStringLiteral("Browse For Folder"));
    if (!answer.isEmpty())
        Text2->setText(answer);
    try {
        List();
    } catch (const Failure& failure) {
        MsgBox(failure.Description, MsgIcon::Information, Marrowfin);
        Text2->setText(previous);
        Text2->setFocus();
        return;
    }
    Module1::LastFolder = Text2->text();
}

void frmOpen::Text2_KeyPress(int key) {
    if (key != EnterKey)
        return;
    try {
        List();
    } catch (const Failure& failure) {
        MsgBox(failure.Description, MsgIcon::Information, Marrowfin);
        Text2->clear();
        Text2->setFocus();
    }
}

void frmOpen::ListView1_Click() { Pick(); }

void frmOpen::ListView1_KeyPress(int key) {
    Pick();
    if (key == EnterKey)
        Open();
}

void frmOpen::ListView1_DblClick() {
    Pick();
    Open();
}

void frmOpen::Command1_Click() { Open(); }

void frmOpen::Command2_Click() { reject(); }

void frmOpen::Open() {
    const QString name = Text1->text().trimmed();
    const QString folder = Text2->text().trimmed();
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

    frmView* view = nullptr;
    if (!tChart) {
        view = new frmView;
        view->path = folder;
        view->Sec = name;
        view->Symbol = symbol;
        view->setWindowTitle(QStringLiteral("DataSheet of ") + name);
        // The sheet reads the whole security now, while this dialog's reader holds the folder.
        view->Form_Load();
    }
    // A chart (cPath := folder, cSymbol := symbol, "Chart of " + name) is opened here once the chart screen exists.

    passOver([&] { r.CloseSecurity(); });
    passOver([&] { r.CloseFolder(); });
    accept();
    if (view)
        ShowChildWindow(view);
}
