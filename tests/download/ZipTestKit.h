#pragma once
// Archives made in the test with libzip: members with names, bytes, times, unix modes, links,
// folders and passwords as each case needs them, and the byte patches that make an archive lie.

#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QList>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <zip.h>

#include <ctime>
#include <sys/stat.h>

struct ZipEntry {
    QByteArray name;
    QByteArray data;
    time_t mtime = 1600000000;   // 2020-09-13
    unsigned unixMode = 0;       // 0: leave the attributes as libzip makes them
    bool folder = false;
    bool store = false;          // stored, not deflated: the bytes stand in the archive as they are
    const char* password = nullptr;

    static ZipEntry file(const QByteArray& name, const QByteArray& data, time_t mtime = 1600000000) { return {name, data, mtime}; }
    static ZipEntry link(const QByteArray& name, const QByteArray& target) { return {name, target, 1600000000, S_IFLNK | 0777}; }
    static ZipEntry dir(const QByteArray& name) { return {name, {}, 1600000000, 0, true}; }
};

// The bytes of an archive holding these members.
inline QByteArray makeArchive(const QList<ZipEntry>& entries, const QByteArray& comment = {}) {
    QTemporaryDir dir;
    const QByteArray path = QDir(dir.path()).filePath(QStringLiteral("a.zip")).toLocal8Bit();
    int error = 0;
    zip_t* archive = zip_open(path.constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    EXPECT_NE(archive, nullptr);
    if (!archive)
        return {};
    for (const ZipEntry& e : entries) {
        zip_int64_t index;
        if (e.folder) {
            index = zip_dir_add(archive, e.name.constData(), ZIP_FL_ENC_RAW);
        } else {
            zip_source_t* source = zip_source_buffer(archive, e.data.constData(), zip_uint64_t(e.data.size()), 0);
            index = zip_file_add(archive, e.name.constData(), source, ZIP_FL_ENC_RAW | ZIP_FL_OVERWRITE);
            EXPECT_GE(index, 0) << e.name.constData();
            if (index < 0) {
                zip_source_free(source);
                continue;
            }
            zip_set_file_compression(archive, zip_uint64_t(index), e.store ? ZIP_CM_STORE : ZIP_CM_DEFLATE, 0);
            if (e.password) {
                EXPECT_EQ(zip_file_set_encryption(archive, zip_uint64_t(index), ZIP_EM_AES_256, e.password), 0);
            }
        }
        if (index < 0)
            continue;
        zip_file_set_mtime(archive, zip_uint64_t(index), e.mtime, 0);
        if (e.unixMode)
            zip_file_set_external_attributes(archive, zip_uint64_t(index), 0, ZIP_OPSYS_UNIX, zip_uint32_t(e.unixMode) << 16);
    }
    if (!comment.isEmpty())
        zip_set_archive_comment(archive, comment.constData(), zip_uint16_t(comment.size()));
    EXPECT_EQ(zip_close(archive), 0);
    QFile file(QString::fromLocal8Bit(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

// Sets the declared (uncompressed) size of every member in both its headers.
inline void declareSize(QByteArray& archive, quint32 size) {
    auto put = [&](qsizetype at) {
        for (int i = 0; i < 4; ++i)
            archive[at + i] = char((size >> (8 * i)) & 0xFF);
    };
    for (qsizetype at = archive.indexOf("PK\x03\x04"); at >= 0; at = archive.indexOf("PK\x03\x04", at + 4))
        put(at + 22);
    for (qsizetype at = archive.indexOf("PK\x01\x02"); at >= 0; at = archive.indexOf("PK\x01\x02", at + 4))
        put(at + 24);
}

// Every file and folder below `root`, relative, sorted.
inline QStringList tree(const QString& root) {
    QStringList found;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        found.append(QDir(root).relativeFilePath(it.next()));
    found.sort();
    return found;
}
