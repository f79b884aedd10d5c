#include "store/ui/ReadProgressWindow.h"

#include "frame/ui/Centring.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
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
    layout->addWidget(lblMessage);
    layout->addWidget(ProgressBar1);
    layout->addLayout(buttons);
    setFixedSize(360, 120);

    connect(cancelButton, &QPushButton::clicked, this, [this] { cancel(); });
}

ReadProgressWindow::~ReadProgressWindow() { hide(); }

void ReadProgressWindow::Show() {
    CentreOnScreen(this);
    show();
    QCoreApplication::processEvents();
}

void ReadProgressWindow::Hide() {
    hide();
    QCoreApplication::processEvents();
}

void ReadProgressWindow::SetRange(qint32 low, qint32 high) {
    ProgressBar1->setRange(low, std::max(low, high));
    ProgressBar1->setValue(low);
}

void ReadProgressWindow::SetCaption(const QString& caption) { setWindowTitle(caption); }

void ReadProgressWindow::SetMessage(const QString& message) { lblMessage->setText(message); }

void ReadProgressWindow::SetStep(qint32 step) { step_ = step; }

void ReadProgressWindow::StepIt() {
    ProgressBar1->setValue(std::min(ProgressBar1->maximum(), ProgressBar1->value() + step_));
    QCoreApplication::processEvents();
}

bool ReadProgressWindow::GetCancelled() const { return cancelled_; }

void ReadProgressWindow::cancel() {
    cancelled_ = true;
    cancelButton->setEnabled(false);
}

void UseReadProgressWindow() {
    ReadProgress::setFactory([] { return std::make_unique<ReadProgressWindow>(); });
}
