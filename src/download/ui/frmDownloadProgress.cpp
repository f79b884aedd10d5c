#include "download/ui/frmDownloadProgress.h"

#include "frame/Failure.h"
#include "frame/Module1.h"
#include "frame/Platform.h"
#include "frame/ui/Centring.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {
template <typename T>
T* named(T* widget, const char* name) {
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}
} // namespace

frmDownloadProgress::frmDownloadProgress(QWidget* parent)
    : QDialog(parent), run_(Inet1, *this) {
    setObjectName(QStringLiteral("frmDownloadProgress"));
    setWindowTitle(QStringLiteral("Download Progress"));
    setModal(true);

    Label3 = named(new QLabel, "Label3");
    Label1 = named(new QLabel(QStringLiteral("Connecting...")), "Label1");
    PB = named(new QProgressBar, "PB");
    PB1 = named(new QProgressBar, "PB1");
    for (QProgressBar* bar : {PB, PB1}) {
        bar->setRange(0, 1);
        bar->setValue(0);
        bar->setTextVisible(false);
    }
    Label4 = named(new QLabel(QStringLiteral("Completed ")), "Label4");
    Label7 = named(new QLabel, "Label7");
    Label5 = named(new QLabel(QStringLiteral("Upto Date")), "Label5");
    Label8 = named(new QLabel, "Label8");
    Label6 = named(new QLabel(QStringLiteral("No Data")), "Label6");
    Label9 = named(new QLabel, "Label9");
    lstDownloadComplete = named(new QListWidget, "lstDownloadComplete");
    Command1 = named(new QPushButton(QStringLiteral("Cancel")), "Command1");
    Command1->setAutoDefault(false);

    for (QLabel* value : {Label7, Label8, Label9})
        value->setMinimumWidth(40);

    auto* top = new QGridLayout;
    top->addWidget(Label3, 0, 0);
    top->addWidget(Label1, 0, 1);
    top->addWidget(PB, 1, 0, 1, 2);
    top->addWidget(PB1, 2, 0, 1, 2);

    auto* counters = new QHBoxLayout;
    counters->addWidget(Label4);
    counters->addWidget(Label7);
    counters->addStretch();
    counters->addWidget(Label5);
    counters->addWidget(Label8);
    counters->addStretch();
    counters->addWidget(Label6);
    counters->addWidget(Label9);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(Command1);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(counters);
    layout->addWidget(lstDownloadComplete, 1);
    layout->addLayout(buttons);
    resize(420, 360);

    connect(Command1, &QPushButton::clicked, this, [this] { Command1_Click(); });
}

frmDownloadProgress::~frmDownloadProgress() = default;

void frmDownloadProgress::centre() {
    CentreOnScreen(this);
}

void frmDownloadProgress::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    centre();
}

void frmDownloadProgress::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!loaded_)
        QTimer::singleShot(0, this, [this] { Form_Load(); });
}

void frmDownloadProgress::Form_Load() {
    if (loaded_)
        return;
    loaded_ = true;
    try {
        show();
        run_.CancelRequested = false;
        c = u = No = 0;
        run_.c = run_.u = run_.No = 0;
        run_.ItemIndex = run_.RecordIndex = 0;
        centre();
        PB->setRange(0, Module1::DownloadItems.upperBound());
        Label1->setText(QStringLiteral("Connecting..."));
    } catch (const Failure&) {
        MsgBox(QStringLiteral("No Security Selected."), MsgIcon::Information, QStringLiteral("Marrowfin"));
        done(QDialog::Rejected);
        return;
    }
    RunDownload();
    if (closeWhenDone_)
        done(QDialog::Rejected);
}

void frmDownloadProgress::RunDownload() { run_.RunDownload(); }

void frmDownloadProgress::Command1_Click() {
    if (Command1->text() == QStringLiteral("&Close")) {
        Command1->setText(QStringLiteral("Cancel"));
        done(QDialog::Accepted);
    } else {
        run_.CancelRequested = true;
    }
}

void frmDownloadProgress::askToStop() {
    // The security in hand is finished, then the window goes.
    run_.CancelRequested = true;
    closeWhenDone_ = true;
}

void frmDownloadProgress::closeEvent(QCloseEvent* event) {
    if (run_.Running()) {
        askToStop();
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void frmDownloadProgress::reject() {
    if (run_.Running()) {
        askToStop();
        return;
    }
    QDialog::reject();
}

// --- reports of the run ---

void frmDownloadProgress::itemStarted(int index, int, const QString& symbol, qint16 completed,
                                      qint16 upToDate, qint16 noData) {
    Label7->setText(QString::number(completed));
    Label8->setText(QString::number(upToDate));
    Label9->setText(QString::number(noData));
    Label3->setText(symbol);
    PB->setValue(index);
    PB1->setValue(0);
}

void frmDownloadProgress::fetching(const QString& symbol) { Label1->setText(symbol); }

void frmDownloadProgress::recordRange(int maximum) {
    if (maximum > 0)
        PB1->setRange(0, maximum);
}

void frmDownloadProgress::recordProgress(int value) { PB1->setValue(value); }

void frmDownloadProgress::lineAdded(const QString& line) { lstDownloadComplete->addItem(line); }

void frmDownloadProgress::countersChanged(qint16 completed, qint16 upToDate, qint16 noData) {
    c = completed;
    u = upToDate;
    No = noData;
}

void frmDownloadProgress::captionChanged(const QString& caption) { setWindowTitle(caption); }

void frmDownloadProgress::runEnded() { Command1->setText(QStringLiteral("&Close")); }
