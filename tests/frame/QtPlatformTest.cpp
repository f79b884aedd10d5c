// The platform services of the running program: real message boxes, prompt and settings file.
#include "frame/ui/QtPlatform.h"
#include "support/Modal.h"
#include "support/TestSupport.h"

#include <QAbstractButton>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QSettings>

#include <gtest/gtest.h>

namespace {

struct BoxCase {
    MsgIcon icon;
    MsgButtons buttons;
    QMessageBox::Icon shownIcon;
    QMessageBox::StandardButtons shownButtons;
    QMessageBox::StandardButton pressed;
    MsgAnswer answer;
};

TEST(QtPlatform, MessageBoxShowsTextIconTitleAndButtonsAndGivesTheAnswer) {
    const BoxCase cases[] = {
        {MsgIcon::Information, MsgButtons::Ok, QMessageBox::Information, QMessageBox::Ok, QMessageBox::Ok, MsgAnswer::Ok},
        {MsgIcon::Critical, MsgButtons::OkCancel, QMessageBox::Critical, QMessageBox::Ok | QMessageBox::Cancel,
         QMessageBox::Cancel, MsgAnswer::Cancel},
        {MsgIcon::Question, MsgButtons::YesNo, QMessageBox::Question, QMessageBox::Yes | QMessageBox::No,
         QMessageBox::No, MsgAnswer::No},
        {MsgIcon::Warning, MsgButtons::YesNoCancel, QMessageBox::Warning,
         QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::Yes, MsgAnswer::Yes},
        {MsgIcon::None, MsgButtons::RetryCancel, QMessageBox::NoIcon, QMessageBox::Retry | QMessageBox::Cancel,
         QMessageBox::Retry, MsgAnswer::Retry},
    };
    QtPlatform platform;
    for (const BoxCase& c : cases) {
        QString title, text;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QMessageBox::StandardButtons buttons;
        onNextModal([&](QWidget* w) {
            auto* box = qobject_cast<QMessageBox*>(w);
            ASSERT_NE(box, nullptr);
            title = box->windowTitle();
            text = box->text();
            icon = box->icon();
            buttons = box->standardButtons();
            box->button(c.pressed)->click();
        });
        const MsgAnswer answer = platform.messageBox(QStringLiteral("Could not open URL \nx"), c.icon,
                                                     QStringLiteral("Hyperlink"), c.buttons);
        EXPECT_EQ(title, QStringLiteral("Hyperlink"));
        EXPECT_EQ(text, QStringLiteral("Could not open URL \nx"));
        EXPECT_EQ(icon, c.shownIcon);
        EXPECT_EQ(buttons, c.shownButtons);
        EXPECT_EQ(answer, c.answer);
    }
}

TEST(QtPlatform, PromptGivesTheTypedTextOrEmptyWhenCancelled) {
    QtPlatform platform;
    onNextModal([](QWidget* w) {
        auto* dialog = qobject_cast<QInputDialog*>(w);
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->labelText(), QStringLiteral("Symbol"));
        EXPECT_EQ(dialog->textValue(), QStringLiteral("INFY"));
        dialog->setTextValue(QStringLiteral("TCS.NS"));
        dialog->accept();
    });
    EXPECT_EQ(platform.prompt(QStringLiteral("Symbol"), QStringLiteral("New Symbol"), QStringLiteral("INFY")),
              QStringLiteral("TCS.NS"));
    onNextModal([](QWidget* w) { static_cast<QDialog*>(w)->reject(); });
    EXPECT_EQ(platform.prompt(QStringLiteral("Symbol"), QString(), QStringLiteral("INFY")), QString());
}

TEST(QtPlatform, SettingsLieInSectionSettingsOfTheProgramsOwnStore) {
    TempFolder home;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.path());
    QtPlatform platform;
    EXPECT_EQ(platform.getSetting(QStringLiteral("Settings"), QStringLiteral("LastFolder"), QString()), QString());
    EXPECT_EQ(platform.getSetting(QStringLiteral("Settings"), QStringLiteral("IndexFolder"), QStringLiteral("C:\\")),
              QStringLiteral("C:\\"));
    platform.saveSetting(QStringLiteral("Settings"), QStringLiteral("LastFolder"), QStringLiteral("/data/nse"));
    EXPECT_EQ(platform.getSetting(QStringLiteral("Settings"), QStringLiteral("LastFolder"), QString()),
              QStringLiteral("/data/nse"));

    QSettings file(home.file(QStringLiteral("Brindlemark/Brindlemark v6.conf")), QSettings::IniFormat);
    EXPECT_EQ(file.value(QStringLiteral("Settings/LastFolder")).toString(), QStringLiteral("/data/nse"));
}

} // namespace
