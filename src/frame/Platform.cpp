#include "frame/Platform.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include <stdexcept>

namespace {
Platform* installed = nullptr;

bool folderIsWritable(const QString& folder) {
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        return false;
    // Permission bits do not tell the whole story (read-only mounts, ACLs): try it.
    QTemporaryFile probe(QDir(folder).filePath(QStringLiteral(".write-probe-XXXXXX")));
    return probe.open();
}
}

Platform& platform() {
    if (!installed)
        throw std::logic_error("no platform services installed");
    return *installed;
}

void setPlatform(Platform* services) { installed = services; }

Platform* installedPlatform() { return installed; }

MsgAnswer MsgBox(const QString& text, MsgIcon icon, const QString& title, MsgButtons buttons) {
    return platform().messageBox(text, icon, title.isEmpty() ? ProgramTitle : title, buttons);
}

QString ownFileForReading(const QString& name) {
    // Reads follow writes: the place where the program would write the file, when it holds it,
    // else the copy shipped beside the executable, else the one an installed program keeps in
    // share/brindlemark beside its bin folder.
    const QString writable = ownFileForWriting(name);
    if (QFileInfo::exists(writable))
        return writable;
    const QDir program(platform().programFolder());
    const QString installed = program.filePath(QStringLiteral("../share/brindlemark/") + name);
    if (!QFileInfo::exists(program.filePath(name)) && QFileInfo::exists(installed))
        return QDir::cleanPath(installed);
    return program.filePath(name);
}

QString ownFileForWriting(const QString& name) {
    const QString program = platform().programFolder();
    if (folderIsWritable(program))
        return QDir(program).filePath(name);
    const QString user = platform().userDataFolder();
    QDir().mkpath(user);
    return QDir(user).filePath(name);
}
