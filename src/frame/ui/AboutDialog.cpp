#include "frame/ui/AboutDialog.h"

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

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("AboutDialog"));
    setWindowTitle(QStringLiteral("About"));
    setWindowIcon(ProgramIcon());

    backPanel = new QFrame(this);
    backPanel->setObjectName(QStringLiteral("backPanel"));
    backPanel->setAutoFillBackground(true);
    backPanel->setFrameShape(QFrame::StyledPanel);
    QPalette panel = backPanel->palette();
    panel.setColor(QPalette::Window, Qt::white);
    backPanel->setPalette(panel);
    backPanel->setMouseTracking(true);
    backPanel->installEventFilter(this);

    iconLabel = new QLabel(backPanel);
    iconLabel->setObjectName(QStringLiteral("iconLabel"));
    iconLabel->setPixmap(ProgramPixmap(64));
    iconLabel->setFixedSize(64, 64);

    auto makeLabel = [this](const char* name, const QString& caption) {
        auto* label = new QLabel(caption, backPanel);
        label->setObjectName(QString::fromLatin1(name));
        label->setMouseTracking(true);
        label->installEventFilter(this);   // the panel's mouse moves come through its labels too
        return label;
    };
    productLabel = makeLabel("productLabel", QStringLiteral("Brindlemark for Metastock"));
    QFont big = productLabel->font();
    big.setPointSizeF(big.pointSizeF() * 1.5);
    big.setBold(true);
    productLabel->setFont(big);
    versionLabel = makeLabel("versionLabel", QStringLiteral("Version 6  Revision 01"));
    makerLabel = makeLabel("makerLabel", WebLinks::MakerLine);
    webLink = makeLabel("webLink", WebLinks::MakerHomePage);
    webLink->setCursor(Qt::PointingHandCursor);
    QFont underlined = webLink->font();
    underlined.setUnderline(true);
    webLink->setFont(underlined);
    setLinkColour(QColor(0, 0, 255));
    mailLabel = makeLabel("mailLabel", WebLinks::MakerEmail);

    okButton = new QPushButton(QStringLiteral("OK"), backPanel);
    okButton->setObjectName(QStringLiteral("okButton"));
    okButton->setDefault(true);
    connect(okButton, &QPushButton::clicked, this, &AboutDialog::ok);

    auto* grid = new QGridLayout(backPanel);
    grid->setContentsMargins(18, 18, 18, 14);
    grid->setHorizontalSpacing(18);
    grid->setVerticalSpacing(6);
    grid->addWidget(iconLabel, 0, 0, 5, 1, Qt::AlignTop);
    grid->addWidget(productLabel, 0, 1);
    grid->addWidget(versionLabel, 1, 1);
    grid->addWidget(makerLabel, 2, 1);
    grid->addWidget(webLink, 3, 1);
    grid->addWidget(mailLabel, 4, 1);
    grid->setRowMinimumHeight(5, 10);
    grid->addWidget(okButton, 6, 1, Qt::AlignRight);

    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(backPanel);
    setFixedSize(sizeHint().expandedTo(QSize(380, 0)));
}

void AboutDialog::load() {
    // Centred on the screen once, when the box loads.
    CentreOnScreen(this);
}

void AboutDialog::ok() { accept(); }

void AboutDialog::keyTyped(int keyAscii) {
    if (keyAscii == 27)
        accept();   // Escape unloads the box as OK does
}

void AboutDialog::openWebLink() {
    // The system opens the maker's page; its answer is not looked at.
    platform().openAddress(WebLinks::MakerHomePage);
}

void AboutDialog::hoverWebLink() { setLinkColour(QColor(255, 0, 0)); }

void AboutDialog::leaveWebLink() { setLinkColour(QColor(0, 0, 255)); }

void AboutDialog::setLinkColour(const QColor& colour) {
    QPalette p = webLink->palette();
    p.setColor(QPalette::WindowText, colour);
    webLink->setPalette(p);
}

void AboutDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!loaded_) {
        loaded_ = true;
        load();
    }
}

void AboutDialog::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        keyTyped(27);
        return;
    }
    QDialog::keyPressEvent(event);
}

bool AboutDialog::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseMove) {
        if (watched == webLink)
            hoverWebLink();
        else
            leaveWebLink();   // the panel, or a label standing on it
        return true;                // the move belongs to the control under the pointer alone
    } else if (watched == webLink && event->type() == QEvent::MouseButtonRelease &&
               static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton &&
               webLink->rect().contains(static_cast<QMouseEvent*>(event)->position().toPoint())) {
        openWebLink();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}
