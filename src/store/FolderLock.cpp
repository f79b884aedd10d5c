#include "store/FolderLock.h"

#include "store/Refusal.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>

#include <map>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#else
#include <QLockFile>
#include <memory>
#endif

namespace {

struct Held {
    int count = 0;
#ifdef Q_OS_UNIX
    int fd = -1;   // -1: a folder where no lock could be made
    bool made = false;   // the lock file was made by this holder
#else
    std::unique_ptr<QLockFile> file;
#endif
    QString path;
};

// The locks this program holds, by folder.
std::map<QString, Held>& held() {
    static std::map<QString, Held> locks;
    return locks;
}

QString keyOf(const QString& folder) {
    const QFileInfo info(folder.trimmed());
    const QString canonical = info.canonicalFilePath();
    return QDir::cleanPath(canonical.isEmpty() ? info.absoluteFilePath() : canonical);
}

QString programName() {
    if (QCoreApplication::instance())
        return QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    return QStringLiteral("brindlemark");
}

// What the lock file says of its holder: "<program> <process> <host>".
QByteArray holderText() {
    return programName().toUtf8() + ' ' + QByteArray::number(QCoreApplication::applicationPid()) + ' '
         + QSysInfo::machineHostName().toUtf8() + '\n';
}

[[noreturn]] void refuseHeld(const QString& folder, const QByteArray& holder, const char* className,
                             const char* operation) {
    const QList<QByteArray> parts = holder.trimmed().split(' ');
    QString who = QStringLiteral("another program");
    if (parts.size() >= 2) {
        who = QStringLiteral("%1 (process %2").arg(QString::fromUtf8(parts[0]), QString::fromUtf8(parts[1]));
        if (parts.size() >= 3 && QString::fromUtf8(parts[2]) != QSysInfo::machineHostName())
            who += QStringLiteral(" on %1").arg(QString::fromUtf8(parts[2]));
        who += u')';
    }
    Refusal{className}(QStringLiteral("The folder %1 is being written by %2. Try again when it has finished.")
                           .arg(QDir::toNativeSeparators(folder), who),
                       operation);
}

#ifdef Q_OS_UNIX
// Takes the lock into `lock`; raises when another program holds it.
void take(Held& lock, const QString& folder, const char* className, const char* operation) {
    const QByteArray path = QFile::encodeName(lock.path);
    // A lock taken on a file that is no longer the one at the path (someone removed it meanwhile)
    // is taken again on the new one.
    for (int attempt = 0; attempt < 5; ++attempt) {
        struct stat before {};
        const bool made = ::stat(path.constData(), &before) != 0 && errno == ENOENT;
        const int fd = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0)
            return;   // no file can be made here: nothing can be written either
        if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
            const int error = errno;
            QByteArray holder(200, '\0');
            const ssize_t n = ::pread(fd, holder.data(), holder.size(), 0);
            holder.truncate(n > 0 ? n : 0);
            ::close(fd);
            if (error == EWOULDBLOCK)
                refuseHeld(folder, holder, className, operation);
            return;   // a file system without locks
        }
        struct stat mine {}, there {};
        if (::fstat(fd, &mine) == 0 && ::stat(path.constData(), &there) == 0 && mine.st_ino == there.st_ino &&
            mine.st_dev == there.st_dev) {
            // The holder's name, for the message of a refused program; nothing else reads it.
            const QByteArray text = holderText();
            if (::pwrite(fd, text.constData(), size_t(text.size()), 0) == ssize_t(text.size())) {
                const int cut = ::ftruncate(fd, off_t(text.size()));
                (void)cut;
            }
            lock.fd = fd;
            lock.made = made;
            return;
        }
        ::close(fd);
    }
}

void release(Held& lock) {
    if (lock.fd < 0)
        return;
    // The file stays for the next holder: removing it would make every opening of a folder pay
    // for making and freeing a file, which costs more than the rest of a small merge. Only a file
    // made here in a folder that has come to hold no store goes (a folder opened for writing in
    // which nothing was written): the user never asked for a file there.
    if (lock.made) {
        const QFileInfo file(lock.path);
        if (QDir(file.absolutePath())
                .entryList({QStringLiteral("MASTER"), QStringLiteral("EMASTER"), QStringLiteral("XMASTER")}, QDir::Files)
                .isEmpty())
            ::unlink(QFile::encodeName(lock.path).constData());   // still held: a waiting program takes the next file
    }
    ::close(lock.fd);   // lets the lock go
    lock.fd = -1;
}
#else
void take(Held& lock, const QString& folder, const char* className, const char* operation) {
    auto file = std::make_unique<QLockFile>(lock.path);
    file->setStaleLockTime(0);
    if (file->tryLock(0)) {
        lock.file = std::move(file);
        return;
    }
    if (file->error() == QLockFile::LockFailedError) {
        qint64 pid = 0;
        QString host, application;
        file->getLockInfo(&pid, &host, &application);
        refuseHeld(folder, application.toUtf8() + ' ' + QByteArray::number(pid) + ' ' + host.toUtf8(), className,
                   operation);
    }
}

void release(Held& lock) { lock.file.reset(); }
#endif

} // namespace

FolderLock::FolderLock(const QString& folder, const char* className, const char* operation)
    : key_(folder.trimmed().isEmpty() ? QString() : keyOf(folder)) {
    if (key_.isEmpty())
        return;   // no folder given: the store refuses it with its own message
    auto [it, fresh] = held().try_emplace(key_);
    Held& lock = it->second;
    if (fresh) {
        lock.path = QDir(key_).filePath(FileName);
        try {
            take(lock, key_, className, operation);
        } catch (...) {
            held().erase(it);
            throw;
        }
    }
    ++lock.count;
}

FolderLock::~FolderLock() {
    if (key_.isEmpty())
        return;
    const auto it = held().find(key_);
    if (it == held().end() || --it->second.count > 0)
        return;
    release(it->second);
    held().erase(it);
}
