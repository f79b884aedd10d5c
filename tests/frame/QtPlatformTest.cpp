// The platform services of the running program: real message boxes, prompt and settings file.
#include "frame/ui/QtPlatform.h"
#include "support/Modal.h"
#include "support/TestSupport.h"

#include <QAbstractButton>
#include <QInputDialog>
#include <QMessageBox>
#include <QSettings>

#include <gtest/gtest.h>

namespace {

TEST(QtPlatform, MessageBoxShowsTextIconTitleAndButtonsAndGivesTheAnswer) {
    const struct { MsgIcon icon; MsgButtons buttons; QMessageBox::Icon shownIcon; QMessageBox::StandardButtons shownButtons;
                   QMessageBox::StandardButton pressed; MsgAnswer answer; } cases[] = {
        {MsgIcon::Information, MsgButtons::Ok, QMessageBox::Information, QMessageBox::Ok, QMessageBox::Ok, MsgAnswer::Ok},
        {MsgIcon::Question, MsgButtons::YesNo, QMessageBox::Question, QMessageBox::Yes | QMessageBox::No, QMessageBox::No, MsgAnswer::No},
        {MsgIcon::None, MsgButtons::RetryCancel, QMessageBox::NoIcon, QMessageBox::Retry | QMessageBox::Cancel, QMessageBox::Retry, MsgAnswer::Retry}};
    QtPlatform platform;
    for (const auto& c : cases) {
        onNextModal([&](QWidget* w) {
            auto* box = qobject_cast<QMessageBox*>(w);
            ASSERT_NE(box, nullptr);
            EXPECT_EQ(box->windowTitle() + u'|' + box->text(), QStringLiteral("Hyperlink|Could not open URL \nx"));
            EXPECT_TRUE(box->icon() == c.shownIcon && box->standardButtons() == c.shownButtons);
            box->button(c.pressed)->click();
        });
        EXPECT_EQ(platform.messageBox(QStringLiteral("Could not open URL \nx"), c.icon, QStringLiteral("Hyperlink"), c.buttons), c.answer);
    }
}

TEST(QtPlatform, PromptGivesTheTypedTextOrEmptyWhenCancelled) {
    QtPlatform platform;
    onNextModal([](QWidget* w) {
        auto* dialog = qobject_cast<QInputDialog*>(w);
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->textValue(), QStringLiteral("INFY"));
        dialog->setTextValue(QStringLiteral("TCS.NS"));
        dialog->accept();
    });
    EXPECT_EQ(platform.prompt("Symbol", "New Symbol", "INFY"), QStringLiteral("TCS.NS"));
    onNextModal([](QWidget* w) { static_cast<QDialog*>(w)->reject(); });
    EXPECT_EQ(platform.prompt("Symbol", QString(), "INFY"), QString());
}

TEST(QtPlatform, SettingsLieInSectionSettingsOfTheProgramsOwnStore) {
    TempFolder home;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.path());
    QtPlatform platform;
    EXPECT_EQ(platform.getSetting("Settings", "IndexFolder", "C:\\"), QStringLiteral("C:\\"));
    platform.saveSetting("Settings", "LastFolder", "/data/nse");
    EXPECT_EQ(platform.getSetting("Settings", "LastFolder", QString()), QStringLiteral("/data/nse"));
    QSettings file(home.file(QStringLiteral("Brindlemark/Brindlemark v6.conf")), QSettings::IniFormat);
    EXPECT_EQ(file.value(QStringLiteral("Settings/LastFolder")).toString(), QStringLiteral("/data/nse"));
}

} // namespace
