#include "ConsolePlatform.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QStandardPaths>

namespace {
const QString MakerName = QStringLiteral("Brindlemark");

QSettings settingsStore() {
    return QSettings(QSettings::NativeFormat, QSettings::UserScope, MakerName, ProgramTitle);
}
} // namespace

MsgAnswer ConsolePlatform::messageBox(const QString& text, MsgIcon, const QString&, MsgButtons buttons) {
    if (!text.endsWith(QLatin1String("Completed.")))
        err_ << text << '\n';
    switch (buttons) {
    case MsgButtons::YesNo:
    case MsgButtons::YesNoCancel: return MsgAnswer::Yes;
    case MsgButtons::RetryCancel: return MsgAnswer::Cancel;
    default: return MsgAnswer::Ok;
    }
}

QString ConsolePlatform::programFolder() { return QCoreApplication::applicationDirPath(); }

QString ConsolePlatform::userDataFolder() {
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        .filePath(MakerName + u'/' + ProgramTitle);
}

QString ConsolePlatform::cacheFolder() {
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation))
        .filePath(MakerName + u'/' + ProgramTitle);
}

QString ConsolePlatform::getSetting(const QString& section, const QString& key, const QString& defaultValue) {
    QSettings store = settingsStore();
    store.beginGroup(section);
    return store.value(key, defaultValue).toString();
}

void ConsolePlatform::saveSetting(const QString& section, const QString& key, const QString& value) {
    QSettings store = settingsStore();
    store.beginGroup(section);
    store.setValue(key, value);
}
