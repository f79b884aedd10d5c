#include "download/ZipEngine.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QStorageInfo>
#include <QStringList>
#include <QTemporaryFile>

#include <zip.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr qint64 ChunkBytes = 256 * 1024;
constexpr int PasswordBytes = 256;

// Unix file types and permission bits as they stand in the upper half of the external attributes.
constexpr uint32_t TypeMask = 0170000, TypeLink = 0120000, TypeFolder = 0040000;
constexpr uint32_t PermissionBits = 0777;   // set-uid, set-gid and sticky are never restored
constexpr uint32_t DosFolderBit = 0x10;

struct ArchiveCloser {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
struct FileCloser {
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using ArchiveHandle = std::unique_ptr<zip_t, ArchiveCloser>;
using FileHandle = std::unique_ptr<zip_file_t, FileCloser>;

struct Member {
    zip_uint64_t index = 0;
    QString name;             // as stored
    zip_stat_t stat{};
    bool folder = false;
    bool link = false;
    bool encrypted = false;
    uint32_t mode = 0;        // unix permission bits when stored, else 0
};

// A member's name as parts of a path below the extraction folder; empty when the name is unsafe
// (absolute, a drive letter, a ".." part) or names nothing.
QStringList safeParts(const QString& name) {
    if (name.startsWith(QLatin1Char('/')) || name.startsWith(QLatin1Char('\\')))
        return {};
    if (name.size() >= 2 && name.at(1) == QLatin1Char(':') && name.at(0).isLetter())
        return {};
    QStringList parts;
    for (const QString& part : name.split(QRegularExpression(QStringLiteral("[/\\\\]")), Qt::SkipEmptyParts)) {
        if (part == QLatin1String("."))
            continue;
        if (part == QLatin1String(".."))
            return {};
        parts.append(part);
    }
    return parts;
}

// What the archive's directory says of member `index`; false when its entry cannot be read.
bool describeMember(zip_t* archive, zip_uint64_t index, Member& m) {
    m.index = index;
    if (zip_stat_index(archive, index, ZIP_FL_ENC_GUESS, &m.stat) != 0 || !m.stat.name)
        return false;
    m.name = QString::fromUtf8(m.stat.name);
    zip_uint8_t opsys = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(archive, index, 0, &opsys, &attributes) == 0) {
        if (opsys == ZIP_OPSYS_UNIX) {
            const uint32_t mode = attributes >> 16;
            m.link = (mode & TypeMask) == TypeLink;
            m.folder = (mode & TypeMask) == TypeFolder;
            m.mode = mode & PermissionBits;
        } else if (opsys == ZIP_OPSYS_DOS || opsys == ZIP_OPSYS_WINDOWS_NTFS) {
            m.folder = (attributes & DosFolderBit) != 0;
        }
    }
    if (m.name.endsWith(QLatin1Char('/')) || m.name.endsWith(QLatin1Char('\\')))
        m.folder = true;
    m.encrypted = (m.stat.valid & ZIP_STAT_ENCRYPTION_METHOD) && m.stat.encryption_method != ZIP_EM_NONE;
    return true;
}

enum class MemberRead {
    Whole,          // every declared byte came out, and the CRC matched
    Unreadable,     // libzip stopped: a CRC mismatch, a wrong password, damaged data
    PastDeclared,   // more bytes than the member declares: stopped there
    Truncated,      // fewer bytes than it declares
    SinkRefused,    // the sink could not take the bytes
};

// Reads a member to its end through `sink` (answering false when it could not take the bytes),
// chunk by chunk through `buffer`. libzip checks the CRC when the last byte has been read.
template <typename Sink>
MemberRead readWhole(zip_file_t* file, zip_uint64_t declared, std::vector<char>& buffer, Sink&& sink) {
    zip_uint64_t total = 0;
    for (;;) {
        const zip_int64_t got = zip_fread(file, buffer.data(), zip_uint64_t(buffer.size()));
        if (got < 0)
            return MemberRead::Unreadable;
        if (got == 0)
            break;
        total += zip_uint64_t(got);
        if (total > declared)
            return MemberRead::PastDeclared;
        if (!sink(buffer.data(), qint64(got)))
            return MemberRead::SinkRefused;
    }
    return total == declared ? MemberRead::Whole : MemberRead::Truncated;
}

class Run {
public:
    Run(const ZipOptionRecord& options, ZipUserFunctions& functions) : o(options), fn(functions) {}

    int go();

private:
    // Text through the print function: level 0 is shown only with all messages, level 1 (warnings
    // and errors) unless the engine is silent. Each message is one chunk and its line end another.
    void say(int level, const QString& text) {
        if (o.Quiet > level)
            return;
        printRaw(text.toLocal8Bit());
        printRaw("\n");
    }
    void printRaw(const QByteArray& bytes) {
        if (fn.print)
            fn.print(bytes.constData(), static_cast<unsigned long>(bytes.size()));
    }

    bool collectMembers();
    void list();
    int fitsOnDisk(const QString& base);
    FileHandle openMember(const Member& m);
    // Reads the whole member through `sink`; false (with `damaged` set) when the bytes did not
    // come out whole with a matching CRC. `sink` answers false when it could not take the bytes.
    template <typename Sink>
    bool readMember(const Member& m, zip_file_t* file, Sink&& sink, bool& sinkFailed);
    void extractOne(const Member& m, const QString& base);
    void testOne(const Member& m);
    void printOne(const Member& m);
    bool makeFolders(const QString& base, const QStringList& parts, qsizetype count, QString& path);
    QString onDisk(const QString& folder, const QString& name);
    int outcome() const;

    const ZipOptionRecord& o;
    ZipUserFunctions& fn;
    ArchiveHandle archive;
    std::vector<Member> members;
    QByteArray password;
    std::vector<char> buffer = std::vector<char>(ChunkBytes);
    int warnings = 0, damaged = 0, badPasswords = 0, done = 0;
    bool diskFull = false, overwriteAll = false, overwriteNone = false;
    // The names in each folder written to, by their case-folded form, read at the first member.
    std::map<QString, QHash<QString, QStringList>> namesIn;
};

bool Run::collectMembers() {
    const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
    members.reserve(size_t(std::max<zip_int64_t>(count, 0)));
    for (zip_int64_t i = 0; i < count; ++i) {
        Member m;
        if (!describeMember(archive.get(), zip_uint64_t(i), m)) {
            ++damaged;
            say(1, QStringLiteral("error:  member %1 cannot be read").arg(i + 1));
            continue;
        }
        members.push_back(std::move(m));
    }
    return count > 0;
}

void Run::list() {
    for (const Member& m : members) {
        const QDateTime when = QDateTime::fromSecsSinceEpoch(m.stat.mtime);
        const QDate date = when.date();
        const QTime time = when.time();
        const unsigned factor =
            m.stat.size > 0 && m.stat.comp_size < m.stat.size
                ? unsigned((m.stat.size - m.stat.comp_size) * 100 / m.stat.size)
                : 0;
        const char* method = m.stat.comp_method == ZIP_CM_STORE ? "Stored" : "Defl:N";
        const QByteArray name = m.name.toLocal8Bit();
        if (fn.message)
            fn.message(static_cast<unsigned long>(m.stat.size), static_cast<unsigned long>(m.stat.comp_size), factor,
                       unsigned(date.month()), unsigned(date.day()), unsigned(date.year()), unsigned(time.hour()),
                       unsigned(time.minute()), ' ', name.constData(), method, static_cast<unsigned long>(m.stat.crc),
                       m.encrypted ? 'E' : ' ');
        if (o.Verbose == 1)
            say(0, QStringLiteral("%1  %2  %3  %4  %5")
                       .arg(qulonglong(m.stat.size), 10)
                       .arg(QLatin1String(method), -6)
                       .arg(when.toString(QStringLiteral("yyyy-MM-dd hh:mm")))
                       .arg(qulonglong(m.stat.crc), 8, 16, QLatin1Char('0'))
                       .arg(m.name));
        ++done;
    }
}

int Run::fitsOnDisk(const QString& base) {
    quint64 declared = 0;
    for (const Member& m : members)
        if (!m.folder && !m.link)
            declared += m.stat.size;
    const QStorageInfo storage(base);
    if (storage.isValid() && storage.bytesAvailable() >= 0 && declared > quint64(storage.bytesAvailable())) {
        say(1, QStringLiteral("error:  the members need %1 bytes, %2 has %3 free")
                   .arg(declared)
                   .arg(QDir::toNativeSeparators(base))
                   .arg(storage.bytesAvailable()));
        return ZipResult::DiskFull;
    }
    return ZipResult::Ok;
}

FileHandle Run::openMember(const Member& m) {
    if (!m.encrypted)
        return FileHandle(zip_fopen_index(archive.get(), m.index, 0));
    FileHandle file;
    if (!password.isEmpty())
        file.reset(zip_fopen_index_encrypted(archive.get(), m.index, 0, password.constData()));
    if (!file && fn.password) {
        char given[PasswordBytes] = {};
        const QByteArray name = m.name.toLocal8Bit();
        if (fn.password(given, PasswordBytes, "Enter password: ", name.constData()) == 0) {
            given[PasswordBytes - 1] = '\0';
            password = QByteArray(given);
            file.reset(zip_fopen_index_encrypted(archive.get(), m.index, 0, password.constData()));
        }
    }
    if (!file) {
        ++badPasswords;
        say(1, QStringLiteral("   skipping: %1  incorrect or missing password").arg(m.name));
    }
    return file;
}

template <typename Sink>
bool Run::readMember(const Member& m, zip_file_t* file, Sink&& sink, bool& sinkFailed) {
    sinkFailed = false;
    switch (readWhole(file, m.stat.size, buffer, sink)) {
    case MemberRead::Whole:
        return true;
    case MemberRead::SinkRefused:
        sinkFailed = true;
        return false;
    case MemberRead::Unreadable: {
        const int code = zip_error_code_zip(zip_file_get_error(file));
        if (m.encrypted && (code == ZIP_ER_CRC || code == ZIP_ER_WRONGPASSWD)) {
            ++badPasswords;
            say(1, QStringLiteral("   skipping: %1  incorrect password").arg(m.name));
        } else {
            ++damaged;
            say(1, QStringLiteral("  error:  %1  %2").arg(m.name,
                    code == ZIP_ER_CRC ? QStringLiteral("bad CRC") : QString::fromUtf8(zip_file_strerror(file))));
        }
        return false;
    }
    case MemberRead::PastDeclared:
        ++damaged;
        say(1, QStringLiteral("  error:  %1  stopped: more bytes than its declared %2").arg(m.name).arg(m.stat.size));
        return false;
    case MemberRead::Truncated:
        ++damaged;
        say(1, QStringLiteral("  error:  %1  truncated").arg(m.name));
        return false;
    }
    return false;
}

// The name under which `name` already stands in `folder`, in the case it was written in: the files
// of a data folder are the same files whatever the case of their names (the store takes them so,
// as the systems the folders come from do), so a member over one of them replaces it instead of
// standing beside it. The name itself when it stands there as it is, or nothing of that name does.
QString Run::onDisk(const QString& folder, const QString& name) {
    auto [names, firstLook] = namesIn.try_emplace(folder);
    if (firstLook)
        for (const QString& entry :
             QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name))
            names->second[entry.toCaseFolded()].append(entry);
    QStringList& same = names->second[name.toCaseFolded()];
    if (same.isEmpty() || same.contains(name)) {
        if (same.isEmpty())
            same.append(name);
        return name;
    }
    return same.first();
}

bool Run::makeFolders(const QString& base, const QStringList& parts, qsizetype count, QString& path) {
    path = base;
    for (qsizetype i = 0; i < count; ++i) {
        path += QLatin1Char('/') + onDisk(path, parts.at(i));
        std::error_code error;
        const fs::file_status status = fs::symlink_status(path.toStdString(), error);
        if (status.type() == fs::file_type::not_found) {
            if (!QDir().mkdir(path) && !QFileInfo(path).isDir())
                return false;
        } else if (status.type() != fs::file_type::directory) {
            return false;   // a link or a file where a folder is needed
        }
    }
    return true;
}

void Run::extractOne(const Member& m, const QString& base) {
    if (fn.service)
        fn.service(m.stat.name, static_cast<unsigned long>(m.stat.size));
    QStringList parts = safeParts(m.name);
    if (parts.isEmpty()) {
        ++warnings;
        say(1, QStringLiteral("warning:  skipped \"%1\": it would land outside the folder").arg(m.name));
        return;
    }
    if (m.link) {
        ++warnings;
        say(1, QStringLiteral("warning:  skipped \"%1\": symbolic links are not created").arg(m.name));
        return;
    }
    if (o.SpaceToUnderScore == 1)
        for (QString& part : parts)
            part.replace(QLatin1Char(' '), QLatin1Char('_'));
    if (m.folder) {
        if (o.HonorDirectories != 1)
            return;
        QString path;
        if (!makeFolders(base, parts, parts.size(), path)) {
            ++warnings;
            say(1, QStringLiteral("warning:  cannot make the folder %1").arg(QDir::toNativeSeparators(path)));
            return;
        }
        say(0, QStringLiteral("   creating: %1/").arg(parts.join(QLatin1Char('/'))));
        ++done;
        return;
    }
    if (o.HonorDirectories != 1)
        parts = QStringList{parts.last()};

    QString folder;
    if (!makeFolders(base, parts, parts.size() - 1, folder)) {
        ++warnings;
        say(1, QStringLiteral("warning:  skipped \"%1\": %2 is not a folder").arg(m.name, QDir::toNativeSeparators(folder)));
        return;
    }
    const QString target = folder + QLatin1Char('/') + onDisk(folder, parts.last());
    std::error_code error;
    const fs::file_status status = fs::symlink_status(target.toStdString(), error);
    const bool exists = status.type() != fs::file_type::not_found && status.type() != fs::file_type::none;
    if (status.type() == fs::file_type::directory) {
        ++warnings;
        say(1, QStringLiteral("warning:  skipped \"%1\": a folder of that name is in the way").arg(m.name));
        return;
    }
    const bool isLink = status.type() == fs::file_type::symlink;
    const qint64 fileTime = exists && !isLink ? QFileInfo(target).lastModified().toSecsSinceEpoch() : 0;
    const bool newer = !exists || isLink || qint64(m.stat.mtime) > fileTime;
    if (o.ExtractNewer == 1 && (!exists || !newer))
        return;
    if (o.ExtractOnlyNewer == 1 && !newer)
        return;
    if (exists && o.OverWriteFiles != 1 && !overwriteAll) {
        if (overwriteNone || o.PromptOverwrite != 1 || !fn.replace)
            return;
        const QByteArray shown = QDir::toNativeSeparators(target).toLocal8Bit();
        switch (fn.replace(shown.constData())) {
        case ZipReplace::Leave: return;
        case ZipReplace::None: overwriteNone = true; return;
        case ZipReplace::All: overwriteAll = true; break;
        default: break;
        }
    }

    FileHandle file = openMember(m);
    if (!file)
        return;
    QTemporaryFile temporary(folder + QStringLiteral("/.bm-XXXXXX.part"));
    if (!temporary.open()) {
        diskFull = true;
        say(1, QStringLiteral("error:  cannot write in %1: %2").arg(QDir::toNativeSeparators(folder), temporary.errorString()));
        return;
    }
    const bool convert = o.ConvertCRtoCRLF == 1;
    bool text = true, firstChunk = true, lastWasCR = false;
    QByteArray converted;
    auto write = [&](const char* data, qint64 size) {
        if (convert && firstChunk) {
            text = std::memchr(data, 0, size_t(size)) == nullptr;
            firstChunk = false;
        }
        if (!convert || !text)
            return temporary.write(data, size) == size;
        converted.clear();
        converted.reserve(size + size / 8);
        for (qint64 i = 0; i < size; ++i) {
            const char c = data[i];
            if (c == '\n' && !lastWasCR)
                converted.append('\r');
            if (lastWasCR && c != '\n')
                converted.append('\n');
            converted.append(c);
            lastWasCR = c == '\r';
        }
        return temporary.write(converted) == converted.size();
    };
    bool writeFailed = false;
    bool whole = readMember(m, file.get(), write, writeFailed);
    if (whole && convert && text && lastWasCR)
        whole = temporary.write("\n", 1) == 1;
    if (writeFailed || (whole && !temporary.flush())) {
        diskFull = true;
        say(1, QStringLiteral("error:  writing %1 failed: %2").arg(QDir::toNativeSeparators(target), temporary.errorString()));
        return;
    }
    if (!whole)
        return;   // the temporary file goes; whatever stood at the target stays as it was
    QFileDevice::Permissions permissions = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadUser |
                                           QFileDevice::WriteUser | QFileDevice::ReadGroup | QFileDevice::ReadOther;
    if (o.Privilege != 0 && m.mode != 0) {
        permissions = {};
        const std::pair<uint32_t, QFileDevice::Permissions> bits[] = {
            {0400, QFileDevice::ReadOwner | QFileDevice::ReadUser},
            {0200, QFileDevice::WriteOwner | QFileDevice::WriteUser},
            {0100, QFileDevice::ExeOwner | QFileDevice::ExeUser},
            {0040, QFileDevice::ReadGroup}, {0020, QFileDevice::WriteGroup}, {0010, QFileDevice::ExeGroup},
            {0004, QFileDevice::ReadOther}, {0002, QFileDevice::WriteOther}, {0001, QFileDevice::ExeOther}};
        for (const auto& [bit, permission] : bits)
            if (m.mode & bit)
                permissions |= permission;
    }
    temporary.setPermissions(permissions);
    if (m.stat.valid & ZIP_STAT_MTIME)
        temporary.setFileTime(QDateTime::fromSecsSinceEpoch(m.stat.mtime), QFileDevice::FileModificationTime);
    temporary.close();
    // rename() replaces a link at the target by the file; it never writes through it.
    fs::rename(temporary.fileName().toStdString(), target.toStdString(), error);
    if (error) {
        diskFull = true;
        say(1, QStringLiteral("error:  cannot put %1 in place: %2")
                   .arg(QDir::toNativeSeparators(target), QString::fromStdString(error.message())));
        return;
    }
    temporary.setAutoRemove(false);
    ++done;
    say(0, QStringLiteral("%1 %2")
               .arg(m.stat.comp_method == ZIP_CM_STORE ? QStringLiteral(" extracting:") : QStringLiteral("  inflating:"),
                    parts.join(QLatin1Char('/'))));
}

void Run::testOne(const Member& m) {
    if (m.folder || m.link)
        return;
    FileHandle file = openMember(m);
    if (!file)
        return;
    bool unused = false;
    if (readMember(m, file.get(), [](const char*, qint64) { return true; }, unused)) {
        ++done;
        say(0, QStringLiteral("    testing: %1   OK").arg(m.name));
    }
}

void Run::printOne(const Member& m) {
    if (m.folder || m.link)
        return;
    FileHandle file = openMember(m);
    if (!file)
        return;
    bool unused = false;
    auto print = [this](const char* data, qint64 size) {
        // The print function takes text up to a NUL: binary bytes are cut there, as on a console.
        if (fn.print)
            fn.print(data, static_cast<unsigned long>(size));
        return true;
    };
    if (readMember(m, file.get(), print, unused))
        ++done;
}

int Run::outcome() const {
    if (diskFull)
        return ZipResult::DiskFull;
    if (damaged > 0)
        return ZipResult::ArchiveError;
    if (badPasswords > 0)
        return done == 0 ? ZipResult::BadPassword : ZipResult::Warning;
    if (warnings > 0)
        return ZipResult::Warning;
    return ZipResult::Ok;
}

int Run::go() {
    say(0, QStringLiteral("Archive:  %1").arg(o.ZipFileName));
    int error = 0;
    const QByteArray path = QFile::encodeName(o.ZipFileName);
    if (o.ZipFileName.isEmpty() || !QFileInfo(o.ZipFileName).isFile()) {
        say(1, QStringLiteral("error:  cannot find or open %1").arg(o.ZipFileName));
        return ZipResult::NotFound;
    }
    archive.reset(zip_open(path.constData(), ZIP_RDONLY, &error));
    if (!archive) {
        say(1, QStringLiteral("error:  %1 is not a zip archive, or it is damaged").arg(o.ZipFileName));
        return ZipResult::NotFound;
    }
    if (o.DisplayComment == 1) {
        int length = 0;
        const char* comment = zip_get_archive_comment(archive.get(), &length, ZIP_FL_ENC_GUESS);
        if (comment && length > 0) {
            printRaw(QByteArray(comment, length));
            printRaw("\n");
        }
    }
    if (!collectMembers()) {
        say(1, QStringLiteral("warning:  %1 is empty").arg(o.ZipFileName));
        return ZipResult::Warning;
    }
    fn.numMembers = static_cast<unsigned long>(members.size());
    for (const Member& m : members) {
        fn.totalSize += static_cast<unsigned long>(m.stat.size);
        fn.totalSizeComp += static_cast<unsigned long>(m.stat.comp_size);
    }

    if (o.ExtractList == 1) {
        list();
        return outcome();
    }
    if (o.TestZip == 1) {
        for (const Member& m : members)
            testOne(m);
        const int result = outcome();
        if (result == ZipResult::Ok)
            say(0, QStringLiteral("No errors detected in compressed data of %1.").arg(o.ZipFileName));
        else
            say(1, QStringLiteral("At least one error was detected in %1.").arg(o.ZipFileName));
        return result;
    }
    if (o.WriteToStdOut == 1) {
        for (const Member& m : members)
            printOne(m);
        return outcome();
    }

    // Blanks typed around a folder's name are not part of it, unless a folder of that very name is there.
    QString folder = o.ExtractDir;
    if (!folder.trimmed().isEmpty() && folder.trimmed() != folder && !QFileInfo(folder).isDir())
        folder = folder.trimmed();
    const QString base = QDir(folder.isEmpty() ? QStringLiteral(".") : folder).absolutePath();
    if (!QDir().mkpath(base)) {
        say(1, QStringLiteral("error:  cannot make the folder %1").arg(QDir::toNativeSeparators(base)));
        return ZipResult::SevereError;
    }
    if (const int room = fitsOnDisk(base); room != ZipResult::Ok)
        return room;
    for (const Member& m : members) {
        extractOne(m, base);
        if (diskFull)
            break;
    }
    return outcome();
}

} // namespace

int SingleEntryUnzip(const ZipOptionRecord& options, ZipUserFunctions& functions) {
    Run run(options, functions);
    return run.go();
}

std::optional<QByteArray> FirstMemberBytes(const QByteArray& archiveBytes, qint64 maxBytes, const QString& suffix) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_buffer_create(archiveBytes.constData(), zip_uint64_t(archiveBytes.size()), 0, &error);
    ArchiveHandle archive(source ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr);
    zip_error_fini(&error);
    if (!archive) {
        if (source)
            zip_source_free(source);
        return std::nullopt;
    }
    // The first member named with `suffix`; without one, the first member that is a file.
    const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
    std::optional<Member> chosen;
    for (zip_int64_t i = 0; i < count; ++i) {
        Member m;
        if (!describeMember(archive.get(), zip_uint64_t(i), m))
            return std::nullopt;
        if (m.folder)
            continue;
        const bool named = !suffix.isEmpty() && m.name.endsWith(suffix, Qt::CaseInsensitive);
        if (!chosen || named)
            chosen = m;
        if (named || suffix.isEmpty())
            break;
    }
    if (!chosen)
        return std::nullopt;
    const Member& m = *chosen;
    if (m.link || m.encrypted || !(m.stat.valid & ZIP_STAT_SIZE) || m.stat.size > zip_uint64_t(std::max<qint64>(maxBytes, 0)))
        return std::nullopt;
    const FileHandle file(zip_fopen_index(archive.get(), m.index, 0));
    if (!file)
        return std::nullopt;
    QByteArray bytes;
    bytes.reserve(qsizetype(m.stat.size));
    std::vector<char> buffer(size_t(std::min<zip_uint64_t>(std::max<zip_uint64_t>(m.stat.size, 1), ChunkBytes)));
    const auto append = [&](const char* data, qint64 size) {
        bytes.append(data, qsizetype(size));
        return true;
    };
    if (readWhole(file.get(), m.stat.size, buffer, append) != MemberRead::Whole)
        return std::nullopt;
    return bytes;
}
