#pragma once
// The platform services that need no screen, as the running system gives them: the clock, the
// executable's folder, the per-user data and cache folders and the per-user settings store
// (application "Brindlemark v6" of the maker "Brindlemark", group = section). The program's
// screens (QtPlatform) and brindlemark-cli both build on it, so that they share one settings
// store and one set of folders.

#include "frame/Platform.h"

class SystemPlatform : public Platform {
public:
    QDate today() override;
    QString programFolder() override;
    QString userDataFolder() override;
    QString cacheFolder() override;
    QString getSetting(const QString& section, const QString& key, const QString& defaultValue) override;
    void saveSetting(const QString& section, const QString& key, const QString& value) override;
};
