#include "store/StoreFiles.h"

#include "frame/Failure.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

#ifdef Q_OS_UNIX
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#endif
#ifdef Q_OS_WIN
#include <io.h>
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
    st.ownerWritable = (sb.st_mode & S_IWUSR) != 0;
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
    st.ownerWritable = (info.permissions() & QFileDevice::WriteOwner) != 0;
#endif
    return st;
}

QStringList fileNames(const QString& folder) {
    QStringList names;
#ifdef Q_OS_UNIX
    // Straight from the directory: a folder of thousands of securities is listed at every open,
    // and the entries' types mostly come with their names.
    const QByteArray encoded = QFile::encodeName(folder);
    DIR* dir = ::opendir(encoded.constData());
    if (!dir)
        return names;
    while (const dirent* entry = ::readdir(dir)) {
        bool isFolder = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
            struct stat sb;
            isFolder = ::fstatat(::dirfd(dir), entry->d_name, &sb, 0) == 0 && S_ISDIR(sb.st_mode);
        }
        if (!isFolder)
            names << QFile::decodeName(entry->d_name);
    }
    ::closedir(dir);
#else
    names = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Unsorted);
#endif
    return names;
}

QString temporaryName(const QString& path) { return path + QLatin1String(TemporarySuffix); }

namespace {

[[noreturn]] void readFailed(const QString& path, const QString& why, int number = FailureNumber::Store) {
    throw Failure(number, QStringLiteral("The file %1 cannot be opened: %2.").arg(QDir::toNativeSeparators(path), why),
                  QStringLiteral("StoreFiles::readAll"));
}

[[noreturn]] void tooLong(const QString& path, qint64 size, qint64 maxSize) {
    throw Failure(FailureNumber::Store,
                  QStringLiteral("The file %1 is %2 bytes long, more than such a file can be (%3 bytes).")
                      .arg(QDir::toNativeSeparators(path))
                      .arg(size)
                      .arg(maxSize),
                  QStringLiteral("StoreFiles::readAll"));
}

QString notRegular() { return QStringLiteral("it is not a regular file"); }

#ifdef Q_OS_UNIX
QString systemError(int error) { return QString::fromLocal8Bit(std::strerror(error)); }

// Writes `size` bytes at `offset`; 0 when all went, else the system's error number.
int writeAllAt(int fd, const char* data, qsizetype size, qint64 offset) {
    qsizetype done = 0;
    while (done < size) {
        const ssize_t put = ::pwrite(fd, data + done, size_t(size - done), off_t(offset + done));
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return put < 0 ? errno : ENOSPC;   // a short write says nothing of its cause; the next try names it
        done += put;
    }
    return 0;
}

// Flushes a file or a folder to the disk.
bool flushPath(const QByteArray& path, int flags) {
    const int fd = ::open(path.constData(), flags | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
}

void flushFolderOf(const QString& path) {
    flushPath(QFile::encodeName(QFileInfo(path).absolutePath()), O_RDONLY | O_DIRECTORY);
}
#endif

} // namespace

PieceReader::PieceReader(const QString& path, qint64 maxSize) : path_(path) {
#ifdef Q_OS_UNIX
    // Opened without waiting, so that a pipe under the name of a store file cannot hang the read.
    fd_ = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0) {
        const int error = errno;
        readFailed(path, systemError(error), error == ENOENT ? FailureNumber::FileNotFound : FailureNumber::Store);
    }
    struct stat sb;
    if (::fstat(fd_, &sb) != 0 || !S_ISREG(sb.st_mode)) {
        ::close(fd_);
        readFailed(path, notRegular());
    }
    size_ = sb.st_size;
    if (size_ > maxSize) {
        ::close(fd_);
        tooLong(path, size_, maxSize);
    }
#else
    const QFileInfo info(path);
    if (info.exists() && !info.isFile())
        readFailed(path, notRegular());
    if (info.size() > maxSize)
        tooLong(path, info.size(), maxSize);
    file_ = std::make_unique<QFile>(path);
    if (!file_->open(QIODevice::ReadOnly))
        readFailed(path, file_->errorString(), info.exists() ? FailureNumber::Store : FailureNumber::FileNotFound);
    size_ = std::min(file_->size(), maxSize);
#endif
}

PieceReader::~PieceReader() {
#ifdef Q_OS_UNIX
    ::close(fd_);
#endif
}

QByteArray PieceReader::read(qint64 offset, qint64 length) const {
    QByteArray bytes(qsizetype(std::max<qint64>(0, length)), Qt::Uninitialized);
    qsizetype done = 0;
#ifdef Q_OS_UNIX
    while (done < bytes.size()) {
        const ssize_t got = ::pread(fd_, bytes.data() + done, size_t(bytes.size() - done), off_t(offset + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            readFailed(path_, systemError(errno));
        if (got == 0)
            break;  // the file ends sooner: it shrank while it was read
        done += got;
    }
#else
    if (file_->seek(offset))
        done = std::max<qint64>(0, file_->read(bytes.data(), bytes.size()));
#endif
    bytes.truncate(done);
    return bytes;
}

QByteArray readAll(const QString& path, qint64 maxSize) {
    const PieceReader file(path, maxSize);
    return file.read(0, file.size());
}

bool isReadOnly(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists())
        return false;
    if (!(info.permissions() & QFileDevice::WriteOwner))
        return true;   // marked read-only, whoever asks
#ifdef Q_OS_UNIX
    // Another user's file this user may not write in place: what would be written beside it
    // could not be kept consistent with it.
    return ::access(QFile::encodeName(path).constData(), W_OK) != 0;
#else
    return !info.isWritable();
#endif
}

void requireWritable(const QString& path) {
    if (isReadOnly(path))
        throw Failure(FailureNumber::Store,
                      QStringLiteral("The file %1 is read-only.").arg(QDir::toNativeSeparators(path)),
                      QStringLiteral("StoreFiles::write"));
}

void writeParts(const QString& path, const std::vector<std::pair<qint64, QByteArray>>& parts, Stamp* written,
                bool knownWritable) {
#ifdef Q_OS_UNIX
    // Straight to the system: this is the path of every appended record.
    const int fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CLOEXEC);
    if (fd < 0)
        writeFailed(path, systemError(errno));
    struct stat sb;
    if (!knownWritable && ::fstat(fd, &sb) == 0 && !(sb.st_mode & S_IWUSR)) {
        ::close(fd);
        requireWritable(path);
    }
    for (const auto& [offset, bytes] : parts) {
        Go go;
        try {
            go = beginWrite(path);
        } catch (...) {
            ::close(fd);
            throw;
        }
        const int error = writeAllAt(fd, bytes.constData(), go == Go::All ? bytes.size() : bytes.size() / 2, offset);
        if (error != 0 || go == Go::Half) {
            ::close(fd);
            writeFailed(path, go == Go::Half ? QStringLiteral("the store stopped") : systemError(error));
        }
    }
    if (written) {
        // Taken from the open file: one look at the path fewer on the path of every append.
        *written = Stamp{};
        if (::fstat(fd, &sb) == 0 && S_ISREG(sb.st_mode)) {
            written->size = sb.st_size;
            written->inode = quint64(sb.st_ino);
            written->ownerWritable = (sb.st_mode & S_IWUSR) != 0;
#ifdef Q_OS_LINUX
            written->modified = qint64(sb.st_mtim.tv_sec) * 1000000000 + sb.st_mtim.tv_nsec;
#else
            written->modified = qint64(sb.st_mtime) * 1000000000;
#endif
        }
    }
    if (::close(fd) != 0)
        writeFailed(path, systemError(errno));
#else
    requireWritable(path);
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        writeFailed(path, file.errorString());
    (void)knownWritable;
    for (const auto& [offset, bytes] : parts) {
        const Go go = beginWrite(path);
        const QByteArray put = go == Go::All ? bytes : bytes.left(bytes.size() / 2);
        if (!file.seek(offset) || file.write(put) != put.size())
            writeFailed(path, file.errorString());
        if (go == Go::Half)
            writeFailed(path, QStringLiteral("the store stopped"));
    }
    file.close();
    if (written)
        *written = stamp(path);
#endif
}

namespace {

// Writes a whole file at `path` (made or truncated); with `flush`, to the disk before it returns.
// A failure names the file `shown`.
void putFile(const QString& path, const QString& shown, const QByteArray& bytes, Go go, bool flush) {
    const QByteArray put = go == Go::All ? bytes : bytes.left(bytes.size() / 2);
#if defined(Q_OS_UNIX)
    const int fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        writeFailed(shown, systemError(errno));
    int error = writeAllAt(fd, put.constData(), put.size(), 0);
    if (error == 0 && flush && ::fsync(fd) != 0)
        error = errno;
    if (::close(fd) != 0 && error == 0)
        error = errno;
    if (error != 0) {
        QFile::remove(path);
        writeFailed(shown, systemError(error));
    }
#else
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        writeFailed(shown, file.errorString());
    bool ok = file.write(put) == put.size() && file.flush();
#if defined(Q_OS_WIN)
    if (ok && flush && ::_commit(file.handle()) != 0)
        ok = false;
#else
    Q_UNUSED(flush);
#endif
    if (!ok) {
        const QString why = file.error() == QFileDevice::NoError ? QStringLiteral("the disk did not take it")
                                                                : file.errorString();
        file.close();
        QFile::remove(path);
        writeFailed(shown, why);
    }
    file.close();
#endif
    if (go == Go::Half)
        writeFailed(shown, QStringLiteral("the store stopped"));
}

} // namespace

void replaceFile(const QString& path, const QByteArray& bytes) {
    requireWritable(path);
    const QString temp = temporaryName(path);
    putFile(temp, path, bytes, beginWrite(temp), true);
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
#ifdef Q_OS_UNIX
    flushFolderOf(path);
#endif
}

void createFile(const QString& path, const QByteArray& bytes) {
    requireWritable(path);
    putFile(path, path, bytes, beginWrite(path), false);
}

void flushFiles(const QString& folder, const std::vector<QString>& paths) {
    if (paths.empty())
        return;
#ifdef Q_OS_UNIX
#ifdef Q_OS_LINUX
    // One flush of the file system costs less than one for each of many small files.
    if (paths.size() > 8) {
        const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd >= 0) {
            const int done = ::syncfs(fd);
            ::close(fd);
            if (done == 0)
                return;
        }
    }
#endif
    for (const QString& path : paths)
        flushPath(QFile::encodeName(path), O_RDONLY);
    flushPath(QFile::encodeName(folder), O_RDONLY | O_DIRECTORY);
#else
    for (const QString& path : paths) {
        QFile file(path);
        if (file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly)) {
#ifdef Q_OS_WIN
            ::_commit(file.handle());
#endif
        }
    }
    Q_UNUSED(folder);
#endif
}

void removeFile(const QString& path) {
    beginWrite(path);
    QFile file(path);
    if (file.exists() && !file.remove())
        writeFailed(path, file.errorString());
}

} // namespace StoreFiles
