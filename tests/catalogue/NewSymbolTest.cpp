// The New Symbol prompt on its own.

#include "catalogue/ui/frmNewSymbol.h"
#include "frame/Module1.h"
#include "support/Modal.h"
#include "support/ScriptedPlatform.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

TEST(NewSymbol, ShowsItsCaptions) {
    ScriptedPlatform services;
    frmNewSymbol dialog;
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("New Symbol"));
    EXPECT_EQ(child<QLabel>(&dialog, QStringLiteral("Label1"))->text(), QStringLiteral("Enter Symbol Name"));
    EXPECT_EQ(child<QPushButton>(&dialog, QStringLiteral("Command1"))->text(), QStringLiteral("OK"));
    EXPECT_EQ(child<QPushButton>(&dialog, QStringLiteral("Command2"))->text(), QStringLiteral("Close"));
}

TEST(NewSymbol, OkHandsBackTheTrimmedTextAndCloseHandsBackNothing) {
    struct Case {
        const char* typed;
        bool ok;
        const char* handedBack;
    };
    const Case cases[] = {
        {"INFY.NS", true, "INFY.NS"}, {"  ^NSEI \t", true, "^NSEI"}, {"a b", true, "a b"},
        {"   ", true, ""},           {"", true, ""},                {"TCS", false, ""},
    };
    for (const Case& c : cases) {
        ScriptedPlatform services;   // NewSymbol starts empty, as the caller leaves it
        frmNewSymbol dialog;
        onNextModal([&](QWidget* shown) {
            EXPECT_EQ(shown, &dialog);
            dialog.Text1->setText(QString::fromLatin1(c.typed));
            (c.ok ? dialog.Command1 : dialog.Command2)->click();
        });
        const int result = dialog.exec();
        EXPECT_EQ(Module1::NewSymbol, QString::fromLatin1(c.handedBack)) << c.typed;
        EXPECT_EQ(result, c.ok ? QDialog::Accepted : QDialog::Rejected) << c.typed;
    }
}

} // namespace
