#include "frame/ui/QtPlatform.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QUrl>
#include <QWidget>

namespace {

// The window a dialog belongs to: the given owner's window, else the active one.
QWidget* ownerWindow(QObject* owner) {
    for (QObject* o = owner; o; o = o->parent())
        if (auto* widget = qobject_cast<QWidget*>(o))
            return widget->window();
    return QApplication::activeWindow();
}

QMessageBox::Icon boxIcon(MsgIcon icon) {
    switch (icon) {
    case MsgIcon::Information: return QMessageBox::Information;
    case MsgIcon::Warning: return QMessageBox::Warning;
    case MsgIcon::Critical: return QMessageBox::Critical;
    case MsgIcon::Question: return QMessageBox::Question;
    case MsgIcon::None: break;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons boxButtons(MsgButtons buttons) {
    switch (buttons) {
    case MsgButtons::Ok: return QMessageBox::Ok;
    case MsgButtons::OkCancel: return QMessageBox::Ok | QMessageBox::Cancel;
    case MsgButtons::YesNo: return QMessageBox::Yes | QMessageBox::No;
    case MsgButtons::YesNoCancel: return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case MsgButtons::RetryCancel: return QMessageBox::Retry | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}


} // namespace

MsgAnswer QtPlatform::messageBox(const QString& text, MsgIcon icon, const QString& title,
                                 MsgButtons buttons) {
    QMessageBox box(boxIcon(icon), title, text, boxButtons(buttons), ownerWindow(nullptr));
    switch (box.exec()) {
    case QMessageBox::Cancel: return MsgAnswer::Cancel;
    case QMessageBox::Yes: return MsgAnswer::Yes;
    case QMessageBox::No: return MsgAnswer::No;
    case QMessageBox::Retry: return MsgAnswer::Retry;
    case QMessageBox::Ok: return MsgAnswer::Ok;
    default:
        // Closed with Escape or the close button: the box's own escape answer.
        if (buttons == MsgButtons::YesNo)
            return MsgAnswer::No;
        return buttons == MsgButtons::Ok ? MsgAnswer::Ok : MsgAnswer::Cancel;
    }
}

QString QtPlatform::chooseFolder(QObject* owner, const QString& title) {
    const QString path = QFileDialog::getExistingDirectory(
        ownerWindow(owner), title, QString(), QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    return path.isEmpty() ? QString() : QDir::toNativeSeparators(path);
}

QString QtPlatform::prompt(const QString& text, const QString& title, const QString& defaultText) {
    bool ok = false;
    const QString answer = QInputDialog::getText(ownerWindow(nullptr), title.isEmpty() ? ProgramTitle : title,
                                                 text, QLineEdit::Normal, defaultText, &ok);
    return ok ? answer : QString();
}

bool QtPlatform::openAddress(const QString& address) {
    return QDesktopServices::openUrl(QUrl::fromUserInput(address));
}

void QtPlatform::quit() { QCoreApplication::exit(0); }
