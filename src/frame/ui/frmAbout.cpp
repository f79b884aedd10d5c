#include "frame/ui/frmAbout.h"

#include "frame/Platform.h"
#include "frame/WebLinks.h"
#include "frame/ui/Centring.h"
#include "frame/ui/ProgramIcon.h"

#include <QFrame>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>

frmAbout::frmAbout(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("About"));
    setWindowIcon(ProgramIcon());

    Picture1 = new QFrame(this);
    Picture1->setObjectName(QStringLiteral("Picture1"));
    Picture1->setAutoFillBackground(true);
    Picture1->setFrameShape(QFrame::StyledPanel);
    QPalette panel = Picture1->palette();
    panel.setColor(QPalette::Window, Qt::white);
    Picture1->setPalette(panel);
    Picture1->setMouseTracking(true);
    Picture1->installEventFilter(this);

    Image1 = new QLabel(Picture1);
    Image1->setObjectName(QStringLiteral("Image1"));
    Image1->setPixmap(ProgramPixmap(64));
    Image1->setFixedSize(64, 64);

    auto makeLabel = [this](const char* name, const QString& caption) {
        auto* label = new QLabel(caption, Picture1);
        label->setObjectName(QString::fromLatin1(name));
        label->setMouseTracking(true);
        label->installEventFilter(this);   // the panel's mouse moves come through its labels too
        return label;
    };
    Label1 = makeLabel("Label1", QStringLiteral("Brindlemark for Metastock"));
    QFont big = Label1->font();
    big.setPointSizeF(big.pointSizeF() * 1.5);
    big.setBold(true);
    Label1->setFont(big);
    Label2 = makeLabel("Label2", QStringLiteral("Version 6  Revision 01"));
    Label3 = makeLabel("Label3", WebLinks::MakerLine);
    Label4 = makeLabel("Label4", WebLinks::MakerHomePage);
    Label4->setCursor(Qt::PointingHandCursor);
    QFont underlined = Label4->font();
    underlined.setUnderline(true);
    Label4->setFont(underlined);
    setLinkColour(QColor(0, 0, 255));
    Label6 = makeLabel("Label6", WebLinks::MakerEmail);

    Command1 = new QPushButton(QStringLiteral("OK"), Picture1);
    Command1->setObjectName(QStringLiteral("Command1"));
    Command1->setDefault(true);
    connect(Command1, &QPushButton::clicked, this, &frmAbout::Command1_Click);

    auto* grid = new QGridLayout(Picture1);
    grid->setContentsMargins(18, 18, 18, 14);
    grid->setHorizontalSpacing(18);
    grid->setVerticalSpacing(6);
    grid->addWidget(Image1, 0, 0, 5, 1, Qt::AlignTop);
    grid->addWidget(Label1, 0, 1);
    grid->addWidget(Label2, 1, 1);
    grid->addWidget(Label3, 2, 1);
    grid->addWidget(Label4, 3, 1);
    grid->addWidget(Label6, 4, 1);
    grid->setRowMinimumHeight(5, 10);
    grid->addWidget(Command1, 6, 1, Qt::AlignRight);

    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(Picture1);
    setFixedSize(sizeHint().expandedTo(QSize(380, 0)));
}

void frmAbout::Form_Load() {
    // Centred on the screen once, when the box loads.
    CentreOnScreen(this);
}

void frmAbout::Command1_Click() { accept(); }

void frmAbout::Form_KeyPress(int keyAscii) {
    if (keyAscii == 27)
        accept();   // Escape unloads the box as OK does
}

void frmAbout::Label4_Click() {
    // The system opens the maker's page; its answer is not looked at.
    platform().openAddress(WebLinks::MakerHomePage);
}

void frmAbout::Label4_MouseMove() { setLinkColour(QColor(255, 0, 0)); }

void frmAbout::Picture1_MouseMove() { setLinkColour(QColor(0, 0, 255)); }

void frmAbout::setLinkColour(const QColor& colour) {
    QPalette p = Label4->palette();
    p.setColor(QPalette::WindowText, colour);
    Label4->setPalette(p);
}

void frmAbout::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!loaded_) {
        loaded_ = true;
        Form_Load();
    }
}

void frmAbout::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        Form_KeyPress(27);
        return;
    }
    QDialog::keyPressEvent(event);
}

bool frmAbout::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseMove) {
        if (watched == Label4)
            Label4_MouseMove();
        else
            Picture1_MouseMove();   // the panel, or a label standing on it
        return true;                // the move belongs to the control under the pointer alone
    } else if (watched == Label4 && event->type() == QEvent::MouseButtonRelease &&
               static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton &&
               Label4->rect().contains(static_cast<QMouseEvent*>(event)->position().toPoint())) {
        Label4_Click();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}
