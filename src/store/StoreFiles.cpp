#include "store/StoreFiles.h"

#include "frame/Failure.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#endif

namespace StoreFiles {

namespace {

struct Seam {
    int armedAt = 0;
    Fault fault = Fault::Fail;
    int count = 0;
    bool dead = false;
};
Seam& seam() {
    static Seam s;
    return s;
}

[[noreturn]] void writeFailed(const QString& path, const QString& why) {
    throw Failure(FailureNumber::Store,
                  QStringLiteral("The file %1 could not be written: %2.").arg(QDir::toNativeSeparators(path), why),
                  QStringLiteral("StoreFiles::write"));
}

// Counts one write and says how much of it may happen: 1 all, 0 nothing (throws), or torn.
enum class Go { All, Half };
Go beginWrite(const QString& path) {
    Seam& s = seam();
    ++s.count;
    if (s.dead)
        writeFailed(path, QStringLiteral("the store stopped"));
    if (s.armedAt > 0 && s.count == s.armedAt) {
        switch (s.fault) {
        case Fault::Fail:
            writeFailed(path, QStringLiteral("write refused"));
        case Fault::Crash:
            s.dead = true;
            writeFailed(path, QStringLiteral("the store stopped"));
        case Fault::Torn:
            s.dead = true;
            return Go::Half;
        }
    }
    return Go::All;
}

} // namespace

void armFault(int k, Fault fault) {
    seam() = Seam{k, fault, 0, false};
}

void disarmFault() { seam() = Seam{}; }

int writeCount() { return seam().count; }

Stamp stamp(const QString& path) {
    Stamp st;
#ifdef Q_OS_UNIX
    struct stat sb;
    if (::stat(QFile::encodeName(path).constData(), &sb) != 0 || !S_ISREG(sb.st_mode))
        return st;
    st.size = sb.st_size;
    st.inode = quint64(sb.st_ino);
#ifdef Q_OS_LINUX
    st.modified = qint64(sb.st_mtim.tv_sec) * 1000000000 + sb.st_mtim.tv_nsec;
#else
    st.modified = qint64(sb.st_mtime) * 1000000000;
#endif
#else
    const QFileInfo info(path);
    if (!info.isFile())
        return st;
    st.size = info.size();
    st.modified = info.lastModified().toMSecsSinceEpoch();
#endif
    return st;
}

QString temporaryName(const QString& path) { return path + QLatin1String(TemporarySuffix); }

QByteArray readAll(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure(FailureNumber::FileNotFound,
                      QStringLiteral("The file %1 cannot be opened: %2.")
                          .arg(QDir::toNativeSeparators(path), file.errorString()),
                      QStringLiteral("StoreFiles::readAll"));
    return file.readAll();
}

void writeParts(const QString& path, const std::vector<std::pair<qint64, QByteArray>>& parts) {
#ifdef Q_OS_UNIX
    // Straight to the system: this is the path of every appended record.
    const int fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CLOEXEC);
    if (fd < 0)
        writeFailed(path, QString::fromLocal8Bit(std::strerror(errno)));
    for (const auto& [offset, bytes] : parts) {
        Go go;
        try {
            go = beginWrite(path);
        } catch (...) {
            ::close(fd);
            throw;
        }
        const qsizetype size = go == Go::All ? bytes.size() : bytes.size() / 2;
        const ssize_t done = ::pwrite(fd, bytes.constData(), size_t(size), off_t(offset));
        if (done != ssize_t(size) || go == Go::Half) {
            const int error = errno;
            ::close(fd);
            writeFailed(path, go == Go::Half ? QStringLiteral("the store stopped") : QString::fromLocal8Bit(std::strerror(error)));
        }
    }
    if (::close(fd) != 0)
        writeFailed(path, QString::fromLocal8Bit(std::strerror(errno)));
#else
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        writeFailed(path, file.errorString());
    for (const auto& [offset, bytes] : parts) {
        const Go go = beginWrite(path);
        const QByteArray put = go == Go::All ? bytes : bytes.left(bytes.size() / 2);
        if (!file.seek(offset) || file.write(put) != put.size())
            writeFailed(path, file.errorString());
        if (go == Go::Half)
            writeFailed(path, QStringLiteral("the store stopped"));
    }
#endif
}

void replaceFile(const QString& path, const QByteArray& bytes) {
    const QString temp = temporaryName(path);
    {
        const Go go = beginWrite(temp);
        QFile file(temp);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            writeFailed(temp, file.errorString());
        const QByteArray put = go == Go::All ? bytes : bytes.left(bytes.size() / 2);
        if (file.write(put) != put.size() || !file.flush()) {
            const QString why = file.errorString();
            file.close();
            QFile::remove(temp);
            writeFailed(temp, why);
        }
        file.close();
        if (go == Go::Half)
            writeFailed(temp, QStringLiteral("the store stopped"));
    }
    try {
        beginWrite(path);
    } catch (const Failure&) {
        if (!seam().dead)
            QFile::remove(temp);
        throw;
    }
    std::error_code ec;
    std::filesystem::rename(std::filesystem::path(QFile::encodeName(temp).toStdString()),
                            std::filesystem::path(QFile::encodeName(path).toStdString()), ec);
    if (ec) {
        QFile::remove(temp);
        writeFailed(path, QString::fromStdString(ec.message()));
    }
}

void removeFile(const QString& path) {
    beginWrite(path);
    QFile file(path);
    if (file.exists() && !file.remove())
        writeFailed(path, file.errorString());
}

} // namespace StoreFiles
