#pragma once
// The platform services of brindlemark-cli: no window is ever shown. A message box is written to
// standard error (unless it only says that a run has ended) and answered with its first button;
// choosers and prompts are cancelled. The clock, the folders and the settings are the system's,
// so a scheduled run uses what the user set in the program.

#include "frame/SystemPlatform.h"

#include <QTextStream>

class ConsolePlatform : public SystemPlatform {
public:
    explicit ConsolePlatform(QTextStream& err) : err_(err) {}

    MsgAnswer messageBox(const QString& text, MsgIcon icon, const QString& title, MsgButtons buttons) override;
    QString chooseFolder(QObject*, const QString&) override { return {}; }
    QString prompt(const QString&, const QString&, const QString&) override { return {}; }
    bool openAddress(const QString&) override { return false; }
    void quit() override {}

private:
    QTextStream& err_;
};
