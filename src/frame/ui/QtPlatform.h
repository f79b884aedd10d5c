#pragma once
// The platform services of the running program, through Qt: message boxes, the folder chooser,
// the text prompt, the desktop's browser, the clock, the application's exit, the executable's
// folder, the per-user folders and the per-user settings store.

#include "frame/Platform.h"

class QtPlatform : public Platform {
public:
    MsgAnswer messageBox(const QString& text, MsgIcon icon, const QString& title,
                         MsgButtons buttons) override;
    QString chooseFolder(QObject* owner, const QString& title) override;
    QString prompt(const QString& text, const QString& title, const QString& defaultText) override;
    bool openAddress(const QString& address) override;
    QDate today() override;
    void quit() override;
    QString programFolder() override;
    QString userDataFolder() override;
    QString cacheFolder() override;
    // Application "Brindlemark v6" of the maker "Brindlemark", group = section.
    QString getSetting(const QString& section, const QString& key, const QString& defaultValue) override;
    void saveSetting(const QString& section, const QString& key, const QString& value) override;
};
