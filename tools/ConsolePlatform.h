#pragma once
// The platform services of brindlemark-cli: no window is ever shown. A message box is written to
// standard error (unless it only says that a run has ended) and answered with its first button;
// choosers and prompts are cancelled; ending the program sets a flag the command reads; settings
// are the program's own per-user settings, so a scheduled run uses what the user set.

#include "frame/Platform.h"

#include <QTextStream>

class ConsolePlatform : public Platform {
public:
    explicit ConsolePlatform(QTextStream& err) : err_(err) {}

    MsgAnswer messageBox(const QString& text, MsgIcon icon, const QString& title, MsgButtons buttons) override;
    QString chooseFolder(QObject*, const QString&) override { return {}; }
    QString prompt(const QString&, const QString&, const QString&) override { return {}; }
    bool openAddress(const QString&) override { return false; }
    QDate today() override { return QDate::currentDate(); }
    void quit() override {}
    QString programFolder() override;
    QString userDataFolder() override;
    QString cacheFolder() override;
    QString getSetting(const QString& section, const QString& key, const QString& defaultValue) override;
    void saveSetting(const QString& section, const QString& key, const QString& value) override;

private:
    QTextStream& err_;
};
