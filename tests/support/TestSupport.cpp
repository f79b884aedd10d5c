#include "support/TestSupport.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

QString metastockFixture(const QString& name) {
    const QString path = QDir(QStringLiteral(BM_FIXTURES_DIR "/metastock")).filePath(name);
    return QFileInfo(path).isDir() ? QDir(path).absolutePath() : QString();
}

bool copyFixture(const QString& name, const QString& target) {
    const QString source = metastockFixture(name);
    if (source.isEmpty())
        return false;
    QDir().mkpath(target);
    QDirIterator it(source, QDir::Files);
    while (it.hasNext()) {
        it.next();
        const QString to = QDir(target).filePath(it.fileName());
        QFile::remove(to);
        if (!QFile::copy(it.filePath(), to))
            return false;
        QFile(to).setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    }
    return true;
}

void writeTextFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    file.write(bytes);
}

QByteArray readFileBytes(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}
