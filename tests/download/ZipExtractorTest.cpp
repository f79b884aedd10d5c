// The extraction: options, the engine's questions, the result numbers, and the rules that keep a
// hostile archive inside its folder.
#include "download/ZipExtractor.h"
#include "frame/Failure.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"
#include "ZipTestKit.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStorageInfo>

#include <filesystem>

namespace {

class Unzipping : public ::testing::Test {
protected:
    ScriptedPlatform platform;
    TempFolder root;
    QString target = root.sub(QStringLiteral("sub/target"));

    QString archive(const QList<ZipEntry>& entries, const QByteArray& comment = {}) {
        return archiveOf(makeArchive(entries, comment));
    }
    QString archiveOf(const QByteArray& bytes) {
        const QString path = root.file(QStringLiteral("in%1.zip").arg(++made_));
        writeTextFile(path, bytes);
        return path;
    }
    QByteArray read(const QString& name) const { return readFileBytes(QDir(target).filePath(name)); }
    QString at(const QString& name) const { return QDir(target).filePath(name); }

private:
    int made_ = 0;
};

TEST_F(Unzipping, DefaultsExtractEverythingSilentlyAndOverwriteWithoutAsking) {
    ZipExtractor zip;
    writeTextFile(at("top.txt"), "old");
    const QString path = archive({ZipEntry::file("top.txt", "new top"), ZipEntry::dir("data/"),
                                  ZipEntry::file("data/deep/x.dat", QByteArray(100000, 'x')),
                                  {"empty/", {}, 1600000000, S_IFREG | 0644}});   // a folder by its name alone
    EXPECT_EQ(zip.Unzip(path, target), 0);
    EXPECT_EQ(read("top.txt"), "new top");
    EXPECT_EQ(read("data/deep/x.dat"), QByteArray(100000, 'x'));
    EXPECT_EQ(QFileInfo(at("top.txt")).lastModified().toSecsSinceEpoch(), 1600000000);
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_EQ(tree(target), (QStringList{"data", "data/deep", "data/deep/x.dat", "empty", "top.txt"}));
    EXPECT_TRUE(QFileInfo(at("empty")).isDir());
    // The names given before stand in for empty arguments.
    ZipExtractor stored;
    stored.setZipFileName(path);
    stored.setExtractDir(root.sub("other"));
    EXPECT_EQ(stored.Unzip(), 0);
    EXPECT_EQ(tree(root.sub("other")), tree(target));
}

// On disk before: old.txt older than its member, new.txt newer, same.txt as old; missing.txt is not there.
TEST_F(Unzipping, NewerOptionsChooseByModificationTime) {
    const struct { bool onlyNewer, freshen; QStringList replaced; } cases[] = {
        {false, false, {"new.txt", "missing.txt", "old.txt", "same.txt"}}, {true, false, {"missing.txt", "old.txt"}}, {false, true, {"old.txt"}}};
    const time_t memberTime = 1600000000;
    const QString path = archive({ZipEntry::file("old.txt", "zip", memberTime), ZipEntry::file("new.txt", "zip", memberTime),
                                  ZipEntry::file("missing.txt", "zip", memberTime), ZipEntry::file("same.txt", "zip", memberTime)});
    for (const auto& c : cases) {
        QFile::remove(at("missing.txt"));
        for (const char* name : {"old.txt", "new.txt", "same.txt"}) {
            writeTextFile(at(name), "disk");
            QFile file(at(name));
            ASSERT_TRUE(file.open(QIODevice::ReadWrite));
            file.setFileTime(QDateTime::fromSecsSinceEpoch(memberTime + (QByteArray(name) == "old.txt" ? -100 : QByteArray(name) == "new.txt" ? 100 : 0)),
                             QFileDevice::FileModificationTime);
        }
        ZipExtractor zip;
        zip.setExtractOnlyNewer(c.onlyNewer);
        zip.setExtractNewer(c.freshen);
        EXPECT_EQ(zip.Unzip(path, target), 0);
        QStringList replaced;
        for (const char* name : {"new.txt", "missing.txt", "old.txt", "same.txt"})
            if (read(name) == "zip")
                replaced.append(name);
        EXPECT_EQ(replaced, c.replaced);
    }
}

TEST_F(Unzipping, WholeNumberOptionsThatPass16BitsFailWithTheSourceAndExtractNothing) {
    const QString path = archive({ZipEntry::file("a.txt", "A")});
    struct Case { void (ZipExtractor::*set)(qint32); qint32 value; };
    for (const Case& c : {Case{&ZipExtractor::setMessageLevel, 32768}, Case{&ZipExtractor::setMessageLevel, -32769},
                          Case{&ZipExtractor::setExtractList, 70000}, Case{&ZipExtractor::setPrivilege, 1 << 20}}) {
        ZipExtractor zip;
        (zip.*c.set)(c.value);
        try {
            zip.Unzip(path, target);
            ADD_FAILURE() << "no overflow for " << c.value;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Number, FailureNumber::Overflow);
            EXPECT_EQ(failure.Source, QStringLiteral("ZipExtractor::Unzip"));
        }
        EXPECT_TRUE(tree(target).isEmpty());
    }
    ZipExtractor edge;
    edge.setMessageLevel(32767);
    EXPECT_EQ(edge.Unzip(path, target), 0);
    EXPECT_EQ(read("a.txt"), "A");
}

TEST_F(Unzipping, TheLastMessageIsSharedAndClearedAtEachRunAndGrowsByChunks) {
    const QString path = archive({ZipEntry::file("a.txt", "A")});
    ZipExtractor talkative;
    talkative.setMessageLevel(0);
    EXPECT_EQ(talkative.Unzip(path, target), 0);
    const QString said = ZipExtractor::GetLastMessage();
    EXPECT_TRUE(said.contains(QStringLiteral("inflating: a.txt\r\n"))) << said.toStdString();
    EXPECT_TRUE(said.startsWith(QStringLiteral("Archive:  ") + path + QStringLiteral("\r\n")));
    ZipExtractor quiet;
    EXPECT_EQ(quiet.GetLastMessage(), said);
    EXPECT_EQ(quiet.Unzip(path, target), 0);
    EXPECT_EQ(talkative.GetLastMessage(), QString());
    // A chunk that begins with a line feed adds only a line end; a chunk ends at its first NUL.
    ZipCallbacks::UnzipPrint("abc", 3);
    ZipCallbacks::UnzipPrint("\nlost text", 10);
    ZipCallbacks::UnzipPrint("d\0e", 3);
    ZipCallbacks::UnzipPrint("fgh", 2);
    EXPECT_EQ(ZipExtractor::GetLastMessage(), QStringLiteral("abc\r\ndfg"));
}

TEST_F(Unzipping, ListingRowsAreEightyCharactersInTheirColumns) {
    const QString header = ListingHeader(), row = ListingRow(QString(60, 'n'), 1234, 3, 7, 2005, 9, 5);
    EXPECT_EQ(QStringList({header.left(9), header.mid(52, 4), header.mid(61, 4), header.mid(70, 4), header.mid(80)}),
              QStringList({"Filename:", "Size", "Date", "Time", "\r\n"}));
    EXPECT_EQ(row, QString(50, 'n') + "   1234  03/07/05   9:05      \r\n");
    EXPECT_EQ(ListingRow("a", 123456789, 12, 31, 1999, 23, 59).mid(50, 7), "3456789");
}

TEST_F(Unzipping, APasswordDeclinedIsNotAskedAgainInTheRun) {
    if (!zip_encryption_method_supported(ZIP_EM_AES_256, 1))
        GTEST_SKIP() << "this libzip cannot encrypt";
    ZipEntry one = ZipEntry::file("one.txt", "secret one"), two = ZipEntry::file("two.txt", "secret two");
    one.password = two.password = "pw";
    const QString path = archive({one, two});
    ZipExtractor zip;
    EXPECT_EQ(zip.Unzip(path, target), ZipResult::BadPassword);
    EXPECT_EQ(platform.prompts, QStringList{"Please Enter The Password!"});
    EXPECT_TRUE(tree(target).isEmpty());

    platform.prompts.clear();
    platform.typeNext("pw");
    EXPECT_EQ(zip.Unzip(path, target), 0);
    EXPECT_EQ(platform.prompts.size(), 1);
    EXPECT_EQ(QByteArrayList({read("one.txt"), read("two.txt")}), QByteArrayList({"secret one", "secret two"}));

    platform.typeNext("wrong");
    platform.typeNext("wrong");
    const QString fresh = root.sub("fresh");
    EXPECT_EQ(zip.Unzip(path, fresh), ZipResult::BadPassword);
    EXPECT_TRUE(tree(fresh).isEmpty());
}

TEST_F(Unzipping, TheOverwriteBoxDecidesFileByFile) {
    struct Case { QList<MsgAnswer> answers; int boxes; QByteArray a, b; };
    for (const Case& c : {Case{{MsgAnswer::No, MsgAnswer::Yes}, 2, "disk", "zip"},
                          Case{{MsgAnswer::Cancel}, 1, "disk", "disk"},
                          Case{{MsgAnswer::Yes, MsgAnswer::Yes}, 2, "zip", "zip"},
                          Case{{}, 0, "disk", "disk"}}) {   // neither overwriting nor asking: what is there stays
        writeTextFile(at("a.txt"), "disk");
        writeTextFile(at("b.txt"), "disk");
        platform.boxes.clear();
        for (MsgAnswer answer : c.answers)
            platform.answerNextBox(answer);
        ZipExtractor zip;
        zip.setOverWriteFiles(false);
        zip.setPromptOverwrite(c.boxes > 0);
        EXPECT_EQ(zip.Unzip(archive({ZipEntry::file("a.txt", "zip"), ZipEntry::file("b.txt", "zip")}), target), 0);
        EXPECT_EQ(QByteArrayList({read("a.txt"), read("b.txt")}), QByteArrayList({c.a, c.b}));
        ASSERT_EQ(platform.boxes.size(), c.boxes);
        if (c.boxes) {
            const ShownBox& box = platform.boxes[0];
            EXPECT_EQ(std::tuple(box.title, box.text, box.buttons, box.icon),
                      std::tuple(QString("VBUnZip32 - File Already Exists!"), "Overwrite " + QDir::toNativeSeparators(at("a.txt")) + "?",
                                 MsgButtons::YesNoCancel, MsgIcon::Warning));
        }
    }
}

TEST_F(Unzipping, OptionsDoWhatTheirNamesSay) {
    const QByteArray binary("\x00\x01\n\x02", 4);
    const QString path = archive({ZipEntry::file("my data/a b.txt", "one\ntwo\r\nthree\rfour\n"),
                                  ZipEntry::file("bin.dat", binary)}, "The comment");
    {
        ZipExtractor zip;
        zip.setSpaceToUnderScore(true);
        zip.setHonorDirectories(false);
        EXPECT_EQ(zip.Unzip(path, target), 0);
        EXPECT_EQ(tree(target), (QStringList{"a_b.txt", "bin.dat"}));
    }
    {
        const QString out = root.sub("crlf");
        ZipExtractor zip;
        zip.setConvertCRtoCRLF(true);
        EXPECT_EQ(zip.Unzip(path, out), 0);
        EXPECT_EQ(readFileBytes(out + "/my data/a b.txt"), "one\r\ntwo\r\nthree\r\nfour\r\n");
        EXPECT_EQ(readFileBytes(out + "/bin.dat"), binary);
    }
    for (auto setOnly : {&ZipExtractor::setTestZip, &ZipExtractor::setWriteToStdOut}) {
        const QString out = root.sub("nothing");
        ZipExtractor zip;
        (zip.*setOnly)(true);
        zip.setDisplayComment(true);
        EXPECT_EQ(zip.Unzip(path, out), 0);
        EXPECT_TRUE(tree(out).isEmpty());
        EXPECT_TRUE(ZipExtractor::GetLastMessage().startsWith("The comment\r\n"));
        EXPECT_EQ(ZipExtractor::GetLastMessage().contains("one\ntwo"), setOnly == &ZipExtractor::setWriteToStdOut);
    }
    {
        const QString out = root.sub("listed");
        ZipExtractor zip;
        zip.setExtractList(1);
        EXPECT_EQ(zip.Unzip(path, out), 0);
        EXPECT_TRUE(tree(out).isEmpty());
    }
}

TEST_F(Unzipping, PermissionsOnlyWhenAskedAndNeverSetUid) {
    ZipEntry tool = ZipEntry::file("tool.sh", "#!/bin/sh\n");
    tool.unixMode = S_IFREG | S_ISUID | S_ISGID | 0755;
    const QString path = archive({tool});
    ZipExtractor plain;
    EXPECT_EQ(plain.Unzip(path, target), 0);
    EXPECT_FALSE(QFileInfo(at("tool.sh")).permissions() & QFileDevice::ExeOwner);
    ZipExtractor restoring;
    restoring.setPrivilege(1);
    EXPECT_EQ(restoring.Unzip(path, target), 0);
    struct stat st {};
    ASSERT_EQ(::stat(QFile::encodeName(at("tool.sh")).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0755u);
}

TEST_F(Unzipping, NothingLandsOutsideTheTarget) {
    for (QByteArray name : {"../evil.txt", "a/../../evil.txt", "..\\evil.txt", "a\\..\\..\\evil.txt", "<outside>",
                            "/evil.txt", "\\evil.txt", "C:/evil.txt", "C:evil.txt", "./."}) {
        SCOPED_TRACE(name.toStdString());
        name.replace("<outside>", QFile::encodeName(root.file("outside.txt")));
        QDir(root.sub("sub")).removeRecursively();
        root.sub("sub/target");
        ZipExtractor zip;
        EXPECT_EQ(zip.Unzip(archive({ZipEntry::file(name, "evil"), ZipEntry::file("good.txt", "good")}), target), ZipResult::Warning);
        EXPECT_EQ(tree(root.path()).filter(QRegularExpression("^(?!in\\d+\\.zip$)")),
                  (QStringList{"sub", "sub/target", "sub/target/good.txt"}));
        EXPECT_FALSE(QFileInfo::exists("/evil.txt"));
    }
}

TEST_F(Unzipping, LinksAreNeverCreatedNorWrittenThrough) {
    namespace fs = std::filesystem;
    writeTextFile(root.file("outside.txt"), "keep");
    fs::create_symlink(root.file("outside.txt").toStdString(), at("victim.txt").toStdString());
    const QString outdir = root.sub("outdir");
    fs::create_directory_symlink(outdir.toStdString(), at("linked").toStdString());
    const QString path = archive({ZipEntry::link("escape", "../../outside.txt"), ZipEntry::file("victim.txt", "new"),
                                  ZipEntry::file("linked/x.txt", "through")});
    ZipExtractor zip;
    EXPECT_EQ(zip.Unzip(path, target), ZipResult::Warning);
    EXPECT_FALSE(fs::exists(fs::symlink_status(at("escape").toStdString())));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(at("victim.txt").toStdString())));
    EXPECT_EQ(read("victim.txt"), "new");
    EXPECT_EQ(readFileBytes(root.file("outside.txt")), "keep");
    EXPECT_TRUE(tree(outdir).isEmpty());
}

TEST_F(Unzipping, ADamagedMemberLeavesTheGoodFileAsItWas) {
    writeTextFile(at("data.txt"), "good old contents");
    ZipEntry member = ZipEntry::file("data.txt", "the new contents of the file");
    member.store = true;
    QByteArray bytes = makeArchive({member, ZipEntry::file("other.txt", "fine")});
    const qsizetype at_ = bytes.indexOf("new contents");
    ASSERT_GT(at_, 0);
    bytes[at_] = 'N';
    const QString path = archiveOf(bytes);
    ZipExtractor zip;
    EXPECT_EQ(zip.Unzip(path, target), ZipResult::ArchiveError);
    EXPECT_EQ(read("data.txt"), "good old contents");
    EXPECT_EQ(read("other.txt"), "fine");
    EXPECT_EQ(tree(target), (QStringList{"data.txt", "other.txt"}));   // no temporary file left
    ZipExtractor tester;
    tester.setTestZip(true);
    tester.setMessageLevel(0);
    EXPECT_EQ(tester.Unzip(path), ZipResult::ArchiveError);
    EXPECT_TRUE(ZipExtractor::GetLastMessage().contains("    testing: other.txt   OK")) << ZipExtractor::GetLastMessage().toStdString();
}

TEST_F(Unzipping, MembersLargerThanTheFreeSpaceStopBeforeAnythingIsWritten) {
    QList<ZipEntry> entries;
    for (int i = 0; i < 1000; ++i)
        entries.append(ZipEntry::file(QByteArray("m") + QByteArray::number(i), {}));
    QByteArray bytes = makeArchive(entries);
    declareSize(bytes, 0xFFFFFFF0u);
    if (quint64(QStorageInfo(target).bytesAvailable()) > 1000 * quint64(0xFFFFFFF0u))
        GTEST_SKIP() << "the disk is larger than the archive claims to be";
    ZipExtractor zip;
    EXPECT_EQ(zip.Unzip(archiveOf(bytes), target), ZipResult::DiskFull);
    EXPECT_TRUE(tree(target).isEmpty());
}

// Result numbers; level 1 says only what went wrong.
TEST_F(Unzipping, ResultNumbersTellTheOutcomesApart) {
    ZipExtractor zip;
    zip.setMessageLevel(1);
    EXPECT_EQ(zip.Unzip(root.file("missing.zip"), target), ZipResult::NotFound);
    EXPECT_TRUE(ZipExtractor::GetLastMessage().contains(QStringLiteral("error:  cannot find or open ") + root.file("missing.zip")));
    EXPECT_FALSE(ZipExtractor::GetLastMessage().contains(QStringLiteral("Archive:")));
    const QString text = archiveOf("this is no archive at all");
    EXPECT_EQ(zip.Unzip(text, target), ZipResult::NotFound);
    EXPECT_TRUE(ZipExtractor::GetLastMessage().contains(QFileInfo(text).fileName() + " is not a zip archive"));
    EXPECT_EQ(zip.Unzip(archiveOf(QByteArray("PK\x05\x06", 4) + QByteArray(18, 0)), target), ZipResult::Warning);
    QByteArray cut = makeArchive({ZipEntry::file("a.txt", QByteArray(5000, 'a'))});
    EXPECT_EQ(zip.Unzip(archiveOf(cut.left(cut.size() / 2)), target), ZipResult::NotFound);
    QByteArray bomb = makeArchive({ZipEntry::file("bomb.dat", QByteArray(1 << 20, '\0'))});
    declareSize(bomb, 1000);   // inflates past what it declares
    EXPECT_EQ(zip.Unzip(archiveOf(bomb), target), ZipResult::ArchiveError);
    EXPECT_TRUE(ZipExtractor::GetLastMessage().contains(QStringLiteral("bomb.dat  stopped: more bytes than its declared 1000")));
    EXPECT_TRUE(tree(target).isEmpty());
}

} // namespace
