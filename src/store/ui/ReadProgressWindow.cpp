#include "store/ui/ReadProgressWindow.h"

#include "frame/ui/Centring.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace {
const QString DefaultCaption = QStringLiteral("Reading");
}

ReadProgressWindow::ReadProgressWindow(QWidget* parent)
    : QWidget(parent, Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint),
      ProgressBar1(new QProgressBar(this)), lblMessage(new QLabel(this)),
      cancelButton(new QPushButton(QStringLiteral("Cancel"), this)) {
    setObjectName(QStringLiteral("ReadProgressWindow"));
    ProgressBar1->setObjectName(QStringLiteral("ProgressBar1"));
    lblMessage->setObjectName(QStringLiteral("lblMessage"));
    cancelButton->setObjectName(QStringLiteral("cancelButton"));
    setWindowTitle(DefaultCaption);
    setWindowModality(Qt::ApplicationModal);

    ProgressBar1->setRange(0, 100);
    ProgressBar1->setValue(0);
    ProgressBar1->setTextVisible(true);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cancelButton);
    auto* layout = new QVBoxLayout(this);
    layout->addStretch();   // the room of a Cancel that is not offered, above and below
    layout->addWidget(lblMessage);
    layout->addWidget(ProgressBar1);
    layout->addLayout(buttons);
    layout->addStretch();
    setFixedSize(360, 120);

    connect(cancelButton, &QPushButton::clicked, this, [this] { cancel(); });
}

ReadProgressWindow::~ReadProgressWindow() { hide(); }

void ReadProgressWindow::Show() {
    CentreOnScreen(this);
    show();
    if (QScreen* shownOn = screen(); shownOn && shownOn->refreshRate() >= 1)
        frameNs_ = static_cast<qint64>(1e9 / shownOn->refreshRate());
    // Drawn a frame later, like every change after it: a read that ends sooner has no time
    // to be seen, nor a Cancel to be clicked.
    sinceServed_.start();
}

void ReadProgressWindow::Hide() { hide(); }

void ReadProgressWindow::SetRange(qint32 low, qint32 high) {
    ProgressBar1->setRange(low, std::max(low, high));
    ProgressBar1->setValue(low);
    value_ = low;
    shownPercent_ = -1;
}

void ReadProgressWindow::SetCaption(const QString& caption) { setWindowTitle(caption); }

void ReadProgressWindow::SetMessage(const QString& message) { lblMessage->setText(message); }

void ReadProgressWindow::SetStep(qint32 step) { step_ = step; }

void ReadProgressWindow::StepIt() {
    value_ = std::min(ProgressBar1->maximum(), value_ + step_);
    // The bar takes each new percent at once, but is painted only with the next frame: a bar
    // would otherwise paint itself on the spot a hundred times a read.
    const qint64 span = std::max<qint64>(1, qint64(ProgressBar1->maximum()) - ProgressBar1->minimum());
    const qint64 percent = (qint64(value_) - ProgressBar1->minimum()) * 100 / span;
    if (percent != shownPercent_) {
        shownPercent_ = percent;
        ProgressBar1->setUpdatesEnabled(false);
        ProgressBar1->setValue(value_);
        ProgressBar1->setUpdatesEnabled(true);
    }
    if (!sinceServed_.isValid() || sinceServed_.nsecsElapsed() >= frameNs_)
        serve();
}

void ReadProgressWindow::serve() {
    ProgressBar1->setUpdatesEnabled(false);
    ProgressBar1->setValue(value_);
    ProgressBar1->setUpdatesEnabled(true);
    ProgressBar1->update();
    QCoreApplication::processEvents();
    sinceServed_.start();
}

bool ReadProgressWindow::GetCancelled() const { return cancelled_; }

void ReadProgressWindow::OfferCancel(bool offered) { cancelButton->setVisible(offered); }

void ReadProgressWindow::cancel() {
    cancelled_ = true;
    cancelButton->setEnabled(false);
}

void UseReadProgressWindow() {
    ReadProgress::setFactory([] { return std::make_unique<ReadProgressWindow>(); });
}
