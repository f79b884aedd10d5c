#include "frame/SystemPlatform.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QStandardPaths>

namespace {

const QString MakerName = QStringLiteral("Brindlemark");

QSettings settingsStore() {
    return QSettings(QSettings::NativeFormat, QSettings::UserScope, MakerName, ProgramTitle);
}

QString ownFolderIn(QStandardPaths::StandardLocation location) {
    return QDir(QStandardPaths::writableLocation(location)).filePath(MakerName + u'/' + ProgramTitle);
}

} // namespace

QDate SystemPlatform::today() { return QDate::currentDate(); }

QString SystemPlatform::programFolder() { return QCoreApplication::applicationDirPath(); }

QString SystemPlatform::userDataFolder() { return ownFolderIn(QStandardPaths::GenericDataLocation); }

QString SystemPlatform::cacheFolder() { return ownFolderIn(QStandardPaths::GenericCacheLocation); }

QString SystemPlatform::getSetting(const QString& section, const QString& key, const QString& defaultValue) {
    QSettings store = settingsStore();
    store.beginGroup(section);
    return store.value(key, defaultValue).toString();
}

void SystemPlatform::saveSetting(const QString& section, const QString& key, const QString& value) {
    QSettings store = settingsStore();
    store.beginGroup(section);
    store.setValue(key, value);
    store.sync();
}
