// The bytes the store writes, and what it makes of bytes it cannot trust.
#include "StoreHelpers.h"
#include "frame/Failure.h"
#include "store/MetaStockFormat.h"
#include "store/StoreCheck.h"
#include "store/StoreFiles.h"
#include "support/TestSupport.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

#include <cstring>
#include <limits>

using metastock::floatToMbf;
using metastock::mbfToFloat;

namespace {

QByteArray mbf(float v) {
    unsigned char out[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_TRUE(floatToMbf(v, out)) << v;
    return QByteArray(reinterpret_cast<const char*>(out), 4);
}
QByteArray ieee(float v) { return QByteArray(reinterpret_cast<const char*>(&v), 4); }
QByteArray i32le(qint32 v) { return QByteArray(reinterpret_cast<const char*>(&v), 4); }
QByteArray text(const char* s, int width, char pad) { return QByteArray(s) + QByteArray(width - int(std::strlen(s)), pad); }
QByteArray zeros(int n) { return QByteArray(n, '\0'); }
QString sym(int i) { return QStringLiteral("S%1").arg(i, 3, 10, QLatin1Char('0')); }

void makeTwo(const QString& folder) {
    makeSecurity(folder, QStringLiteral("AAA"), {20050801, 20050802});
    makeSecurity(folder, QStringLiteral("BBB"), {20050801, 20050802});
}

} // namespace

TEST(MbfFloats, KnownWordsAndValuesTheFormatCannotHold) {
    const std::pair<const char*, float> cases[] = {{"\xB0\x0A\x6D\x94", 970923.0f}, {"\0\0\0\0", 0.0f}, {"\0\0\0\x81", 1.0f},
        {"\0\0\x80\x81", -1.0f}, {"\0\0\0\x80", 0.5f}, {"\0\0\x20\x84", 10.0f}, {"\0\0\xA0\x84", -10.0f}};
    for (const auto& [bytes, value] : cases) {
        EXPECT_EQ(mbfToFloat(reinterpret_cast<const unsigned char*>(bytes)), value);
        EXPECT_EQ(mbf(value), QByteArray(bytes, 4)) << value;
    }
    unsigned char out[4];
    for (float bad : {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::max()})
        EXPECT_FALSE(floatToMbf(bad, out)) << bad;
    EXPECT_EQ(mbf(std::numeric_limits<float>::denorm_min()), zeros(4));
    EXPECT_EQ(mbf(-0.0f), zeros(4));
}

TEST(MbfFloats, EveryWordOfTheFixturesSurvivesARoundTrip) {
    REQUIRE_FIXTURE("vendor-xmaster");
    int words = 0;
    QDirIterator it(metastockFixture(QString()), {QStringLiteral("*.DAT"), QStringLiteral("*.MWD")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QByteArray bytes = readFileBytes(it.next());
        for (qsizetype off = 0; off + 4 <= bytes.size(); off += 4) {
            const auto* w = reinterpret_cast<const unsigned char*>(bytes.constData() + off);
            if ((w[3] == 0 && (w[0] | w[1] | w[2]) != 0) || w[3] == 1 || w[3] == 2)
                continue;  // header words: not floats
            unsigned char back[4];
            ASSERT_TRUE(floatToMbf(mbfToFloat(w), back));
            ASSERT_EQ(std::memcmp(back, w, 4), 0) << it.filePath().toStdString() << " at " << off;
            ++words;
        }
    }
    EXPECT_GT(words, 100000);
}

TEST(IndexBytes, NewSecurityIsWrittenAsTheVendorWritesIt) {
    TempFolder folder;
    writeFolder(folder.path(), [](SecurityWriter& w) {
        w.CreateSecurity(QStringLiteral("ABC"), QStringLiteral("ABC CORP"), 1);
        w.AddQuote(19970923, -1, 1, 2, 0.5, 1.5, 100, -1);
    });
    const QByteArray date("\xB0\x0A\x6D\x94", 4), master = readFileBytes(folder.file(QStringLiteral("MASTER")));
    ASSERT_EQ(master.size(), 2 * 53);
    EXPECT_EQ(master.left(4), QByteArray("\x01\x00\x01\x00", 4));  // one security, highest number 1
    EXPECT_EQ(master.mid(53).toHex(' '), (QByteArray("\x01\x65\x00\x1C\x07\x00\x00", 7) + text("ABC CORP", 16, ' ') + zeros(2) +
                                          date + date + QByteArray("D\0\0", 3) + text("ABC", 14, ' ') + QByteArray("  \0", 3)).toHex(' '));
    const QByteArray emaster = readFileBytes(folder.file(QStringLiteral("EMASTER")));
    ASSERT_EQ(emaster.size(), 2 * 192);
    QByteArray e = QByteArray("66\x01\0\0\0\x07\x7F\0 \0", 11) + text("ABC", 14, '\0') + zeros(7) + text("ABC CORP", 16, '\0') +
                   zeros(12) + QByteArray("D\0\0\0", 4) + ieee(970923.0f) + zeros(4) + ieee(970923.0f) + zeros(50) + i32le(19970923);
    EXPECT_EQ(emaster.mid(192).toHex(' '), (e + zeros(192 - e.size())).toHex(' '));
    const QByteArray data = readFileBytes(folder.file(QStringLiteral("F1.DAT")));
    EXPECT_EQ(data.toHex(' '), (QByteArray("\0\0\x02\0", 4) + zeros(24) + date + mbf(1) + mbf(2) + mbf(0.5f) + mbf(1.5f) + mbf(100) + zeros(4)).toHex(' '));
    // A record added later, the first one deleted, the symbol changed: those fields move in both
    // index files, and nothing else.
    writeFolder(folder.path(), [](SecurityWriter& w) {
        w.OpenSecurity(QStringLiteral("ABC")), w.AddQuote(19970924, -1, 1, 2, 0.5, 1.5, 100, -1), w.DeleteQuote(QStringLiteral("19970923"));
        w.ChangeSecurity(QStringLiteral("ABC"), QStringLiteral("ABC CORP"), QStringLiteral("ABD"));
    });
    const QByteArray day = ieee(970924.0f);
    e.replace(11, 3, "ABD").replace(64, 4, day).replace(72, 4, day).replace(126, 4, i32le(19970924));
    EXPECT_EQ(readFileBytes(folder.file(QStringLiteral("EMASTER"))).mid(192).toHex(' '), (e + zeros(192 - e.size())).toHex(' '));
    EXPECT_EQ(readFileBytes(folder.file(QStringLiteral("MASTER"))).mid(53).toHex(' '),
              QByteArray(master.mid(53)).replace(36, 3, "ABD").replace(25, 4, mbf(970924.0f)).replace(29, 4, mbf(970924.0f)).toHex(' '));
}

TEST(IndexBytes, TextIsWindows1252AndACutNameEndsInNul) {
    TempFolder folder;
    // The cut to 16 and to 45 characters falls after a blank.
    const QString cutAt16 = QStringLiteral("HINDUSTAN LEVER LTD"), cutAt45 = QStringLiteral("A NAME OF FORTY-FOUR CHARACTERS AND A BLANK, THEN MORE");
    writeFolder(folder.path(), [&](SecurityWriter& w) {
        w.CreateSecurity(QStringLiteral("€UR"), QStringLiteral("Société\u00A0Générale"), 1);   // a no-break space
        w.CreateSecurity(QStringLiteral("HUL"), cutAt16, 1);
        w.CreateSecurity(QStringLiteral("LONG"), cutAt45, 1);
    });
    QByteArray master = readFileBytes(folder.file(QStringLiteral("MASTER")));
    EXPECT_EQ(master.mid(53 + 36, 4), QByteArray("\x80UR ", 4));
    EXPECT_EQ(master.mid(53 + 7, 16), QByteArray("Soci\xE9t\xE9\xA0G\xE9n\xE9rale"));
    const QByteArray emaster = readFileBytes(folder.file(QStringLiteral("EMASTER")));
    EXPECT_EQ(emaster.mid(192 + 11, 4), QByteArray("\x80UR\0", 4));
    EXPECT_EQ(emaster.mid(2 * 192 + 32, 16), QByteArray("HINDUSTAN LEVER\0", 16));
    EXPECT_EQ(emaster.mid(2 * 192 + 139, 20), text("HINDUSTAN LEVER LTD", 20, '\0'));
    EXPECT_EQ(emaster.mid(3 * 192 + 139, 45), cutAt45.left(44).toLatin1() + zeros(1));
    const auto listed = listFolder(folder.path());
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_EQ(listed[0].symbol + listed[0].name, QStringLiteral("€URSociété\u00A0Générale"));
    EXPECT_EQ(listed[2].name, cutAt45.left(44));
    // Another program renamed HUL in MASTER only: EMASTER's long name lags behind and no longer counts.
    writeTextFile(folder.file(QStringLiteral("MASTER")), master.replace(2 * 53 + 7, 16, "UNILEVER INDIA  "));
    EXPECT_EQ(listFolder(folder.path())[1].name, QStringLiteral("UNILEVER INDIA"));
}

TEST(IndexBytes, ThreeHundredSecuritiesCrossIntoXmaster) {
    TempFolder folder;
    const QString longName = QStringLiteral("A NAME OF FORTY-FIVE CHARACTERS, NOT MORE!..");
    const auto create = [&](int from, int to) {
        writeFolder(folder.path(), [&](SecurityWriter& w) {
            for (int i = from; i <= to; ++i) {
                w.CreateSecurity(sym(i), i % 50 == 0 ? longName + QString::number(i % 10) + QStringLiteral("XYZ") : sym(i), 1);
                if (i != 257)   // S257 stays without records: its dates are XMASTER's "no date"
                    addBars(w, {{20050801, double(i), double(i), double(i), double(i), double(i)}, {20050802, i + 1.0, i + 1.0, i + 1.0, i + 1.0, i + 1.0}});
                w.CloseSecurity();
            }
        });
    };
    StoreFiles::disarmFault();
    create(1, 255);
    // The new XMASTER's header takes the per-folder value of MASTER's header.
    writeTextFile(folder.file(QStringLiteral("MASTER")), readFileBytes(folder.file(QStringLiteral("MASTER"))).replace(49, 4, "\x11\x22\x33\x44"));
    create(256, 300);
    // Creating N securities costs O(N) writes: one for each data file and each record batch, and the index files once a run.
    EXPECT_LE(StoreFiles::writeCount(), 300 * 3 + 2 * 6);
    EXPECT_FALSE(QFileInfo::exists(folder.file(QStringLiteral("F256.DAT"))));
    QByteArray xmaster = readFileBytes(folder.file(QStringLiteral("XMASTER")));
    ASSERT_EQ(xmaster.size(), 46 * 150);
    EXPECT_EQ(xmaster.left(20).toHex(' '), QByteArray("\x5D\xFE\x58\x4D\0\0\x11\x22\x33\x44\x2D\0\0\0\x2D\0\0\0\x2D\x01", 20).toHex(' '));  // 45 records, next 301
    QByteArray x = QByteArray("\x01", 1) + text("S256", 15, '\0') + text("S256", 46, '\0') + QByteArray("D\0\0\x00\x01", 5) + zeros(3) +
                   QByteArray("\x7F", 1) + zeros(33) + i32le(20050801) + i32le(20050801) + zeros(4) + i32le(20050802);
    EXPECT_EQ(xmaster.mid(150, 150).toHex(' '), (x + zeros(150 - x.size())).toHex(' '));  // S256, F256.MWD
    const auto listed = listFolder(folder.path());
    ASSERT_EQ(listed.size(), 300u);
    for (int i = 1; i <= 300; ++i) {
        const Listed& l = listed[size_t(i - 1)];
        const QString file = QStringLiteral("F%1.%2").arg(i).arg(i <= 255 ? QStringLiteral("DAT") : QStringLiteral("MWD"));
        EXPECT_TRUE(l.symbol == sym(i) && l.file == file && (i == 257 ? l.first + l.last == 0 : l.first == 20050801 && l.last == 20050802)) << i;
        if (i % 50 == 0) {  // names are kept to 45 characters, in EMASTER as in XMASTER
            EXPECT_EQ(l.name, (longName + QString::number(i % 10) + QStringLiteral("XYZ")).left(45));
        }
    }
    EXPECT_EQ(readBars(folder.path(), sym(300)).back(), (Bar{20050802, 301, 301, 301, 301, 301}));
    // A record added later and the first one deleted move XMASTER's dates, and nothing else of the record.
    writeFolder(folder.path(), [](SecurityWriter& w) { w.OpenSecurity(sym(256)), addBars(w, {barOf(20050803)}), w.DeleteQuote(QStringLiteral("20050801")); });
    x.replace(104, 4, i32le(20050802)).replace(108, 4, i32le(20050802)).replace(x.size() - 4, 4, i32le(20050803));
    EXPECT_EQ(readFileBytes(folder.file(QStringLiteral("XMASTER"))).mid(150, 150).toHex(' '), (x + zeros(150 - x.size())).toHex(' '));
    // The MASTER record of a long name holds its first 16 characters.
    EXPECT_EQ(readFileBytes(folder.file(QStringLiteral("MASTER"))).mid(50 * 53 + 7, 16), longName.left(16).toLatin1());
    // A security made in a freed MASTER place stands before XMASTER's in the list; in the same
    // session every symbol still finds its own security.
    writeFolder(folder.path(), [](SecurityWriter& w) { w.DeleteSecurity(sym(10)); });
    writeFolder(folder.path(), [](SecurityWriter& w) {
        w.CreateSecurity(QStringLiteral("NEW"), QStringLiteral("NEW"), 1);
        w.CloseSecurity();
        EXPECT_TRUE(w.SymbolExists(QStringLiteral("NEW")));
        w.OpenSecurity(sym(300)), addBars(w, {barOf(20050805)}), w.CloseSecurity();
    });
    EXPECT_EQ(readDates(folder.path(), sym(300)).back(), 20050805);
    EXPECT_EQ(readDates(folder.path(), sym(299)).back(), 20050802);
    EXPECT_EQ(listFolder(folder.path())[254].file, QStringLiteral("F10.DAT"));
    // Numbers run to 65535; past it, or with F65535.MWD taken by another file, the folder is full.
    writeTextFile(folder.file(QStringLiteral("XMASTER")), xmaster.replace(18, 2, "\xFF\xFF"));
    writeTextFile(folder.file(QStringLiteral("F65535.MWD")), zeros(100));
    SecurityWriter w;
    w.OpenFolder(folder.path());
    EXPECT_TRUE(contains(failureText([&] { w.CreateSecurity(QStringLiteral("FULL"), QString(), 1); }), "cannot take another security"));
    EXPECT_EQ(readFileBytes(folder.file(QStringLiteral("F65535.MWD"))), zeros(100));
    // With the last security past the 255th deleted, XMASTER lists none.
    for (int i = 256; i <= 300; ++i)
        w.DeleteSecurity(sym(i));
    w.CloseFolder();
    EXPECT_EQ(listFolder(folder.path()).size(), 255u);
    EXPECT_EQ(readFileBytes(folder.file(QStringLiteral("XMASTER"))).size(), 150);
}

// Securities of 5 fields (no open, no open interest) and of 8 (a time, then an open interest) in a
// folder of MASTER alone, as older programs write them: read as they lie, and a record added leaves
// every record whole.
TEST(IndexBytes, FiveAndEightFieldSecuritiesAreReadAndWrittenWhole) {
    for (const int fields : {5, 8}) {
        SCOPED_TRACE(fields);
        TempFolder folder;
        makeSecurity(folder.path(), QStringLiteral("AAA"), {});
        ASSERT_TRUE(QFile::remove(folder.file(QStringLiteral("EMASTER"))));
        QByteArray master = readFileBytes(folder.file(QStringLiteral("MASTER")));
        master[53 + 3] = char(4 * fields);
        master[53 + 4] = char(fields);
        writeTextFile(folder.file(QStringLiteral("MASTER")), master);
        QByteArray data = zeros(4 * fields);
        data[2] = 3;
        for (const Bar& b : {barOf(20050801), barOf(20050802)}) {
            data += mbf(float(b.date - 19000000)) + (fields == 8 ? mbf(93000) + mbf(float(b.open)) : QByteArray());
            data += mbf(float(b.high)) + mbf(float(b.low)) + mbf(float(b.close)) + mbf(float(b.volume)) + (fields == 8 ? mbf(77) : QByteArray());
        }
        writeTextFile(folder.file(QStringLiteral("F1.DAT")), data);
        const auto read = [&](std::vector<Bar> bars) {
            for (Bar& b : bars)
                b.open = fields == 5 ? 0 : b.open;
            return bars;
        };
        EXPECT_EQ(readBars(folder.path(), QStringLiteral("AAA")), read(barsOf({20050801, 20050802})));
        writeFolder(folder.path(), [](SecurityWriter& w) {
            w.OpenSecurity(QStringLiteral("AAA"));
            addBars(w, {barOf(20050803)});
        });
        const QByteArray now = readFileBytes(folder.file(QStringLiteral("F1.DAT")));
        EXPECT_EQ(now.size(), 4 * 4 * fields);
        EXPECT_EQ(now.mid(4 * fields, 8 * fields).toHex(' '), data.mid(4 * fields).toHex(' '));
        EXPECT_EQ(readBars(folder.path(), QStringLiteral("AAA")), read(barsOf({20050801, 20050802, 20050803})));
    }
}

// What a file of a folder can be instead of a file the format allows.
enum class Stand { Bytes, Pipe, DeviceLink, Huge, Folder };

TEST(CorruptFolders, AreRefusedClearlyAndNeverWritten) {
    const QByteArray emptyXmaster = QByteArray("\x5D\xFE\x58\x4D", 4) + zeros(146);
    const struct {
        const char* file;  // spoilt, and named in the failure
        int cutTo;         // >= 0: the file is cut to this size; -2: the file is removed
        int at;            // else these bytes are written at this offset
        QByteArray bytes;
        bool folderOpens;  // the index is fine, a data file is not
        Stand stand = Stand::Bytes;
    } cases[] = {
        {"MASTER", 0, 0, {}, false}, {"MASTER", 100, 0, {}, false},  // empty, cut inside a record
        {"MASTER", -1, 0, "\x03", false}, {"MASTER", -1, 0, QByteArray("\0\x01", 2), false},  // counts beyond its size, past 255
        {"MASTER", -1, 53 + 3, "\x1B", false}, {"MASTER", -1, 53 + 3, "\x24\x09", false},     // record length, field count 9
        {"MASTER", -1, 106, "\x01", false}, {"MASTER", -1, 53, QByteArray(1, '\0'), false},  // file number twice, file number 0
        {"EMASTER", 300, 0, {}, false}, {"XMASTER", -1, 0, QByteArray(emptyXmaster).replace(10, 1, "\x05"), false},
        {"F1.DAT", -1, 2, "\x09", true}, {"F1.DAT", 10, 0, {}, true}, {"F1.DAT", -2, 0, {}, true},  // counts beyond, short, missing
        // Only regular files are read, and none past the size its format allows.
        {"MASTER", -2, 0, {}, false, Stand::DeviceLink}, {"F1.DAT", -2, 0, {}, true, Stand::Pipe}, {"F1.DAT", -2, 0, {}, true, Stand::Huge},
        {"MASTER", -2, 0, {}, false, Stand::Huge}, {"MASTER", -2, 0, {}, false, Stand::Folder}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.file) + " case " + std::to_string(&c - cases));
        TempFolder folder;
        makeTwo(folder.path());
        const QString path = folder.file(QString::fromLatin1(c.file));
        QByteArray bytes = readFileBytes(path);
        if (c.cutTo == -2)
            QFile::remove(path);
        if (c.stand == Stand::Pipe)
            ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0644), 0);
        else if (c.stand == Stand::DeviceLink)
            ASSERT_TRUE(QFile::link(QStringLiteral("/dev/zero"), path));
        else if (c.stand == Stand::Folder)
            ASSERT_TRUE(QDir().mkdir(path));
        else if (c.stand == Stand::Huge)
            writeTextFile(path, zeros(c.folderOpens ? 65536 * 28 + 1 : 257 * 53 + 1));
        else if (c.cutTo != -2)
            writeTextFile(path, c.cutTo >= 0 ? bytes.left(c.cutTo) : bytes.replace(c.at, c.bytes.size(), c.bytes));
        const auto before = snapshot(folder.path());
        SecurityReader r;
        const std::string failure = failureText([&] {
            r.OpenFolder(folder.path());
            EXPECT_TRUE(c.folderOpens);
            r.OpenSecurity(QStringLiteral("AAA"));
        });
        EXPECT_TRUE(contains(failure, c.file)) << failure;
        if (c.cutTo == -2 && c.stand == Stand::Bytes) {
            EXPECT_TRUE(contains(failure, "is missing")) << failure;
        }
        if (c.stand != Stand::Bytes) {
            const char* cause = c.stand == Stand::Huge     ? "more than such a file can be"
                                : c.stand == Stand::Folder ? "has no MASTER file"
                                                           : "not a regular file";
            EXPECT_TRUE(contains(failure, cause)) << failure;
        }
        if (c.folderOpens) {  // the reader stays usable: BBB reads where the index is sound
            r.OpenSecurity(QStringLiteral("BBB"));
            EXPECT_EQ(r.GetRecordCount(), 2);
        }
        {
            SecurityWriter w;
            passOver([&] { w.OpenFolder(folder.path()); });
            passOver([&] { w.OpenSecurity(QStringLiteral("AAA")); });
            passOver([&] { w.AddQuote(20050803, -1, 1, 1, 1, 1, 1, -1); });
            passOver([&] { w.DeleteQuotes(QStringLiteral("20050801"), QStringLiteral("20050801")); });
            passOver([&] { w.CloseFolder(); });
        }
        EXPECT_EQ(snapshot(folder.path()), before);
    }
}

TEST(CorruptFolders, ADamagedXmasterIsRefusedAndCheckReportsIt) {
    TempFolder base;
    writeFolder(base.path(), [](SecurityWriter& w) {
        for (int i = 1; i <= 260; ++i)
            w.CreateSecurity(sym(i), QString(), 1);
    });
    const QByteArray xmaster = readFileBytes(base.file(QStringLiteral("XMASTER")));
    ASSERT_EQ(xmaster.size(), 6 * 150);
    const QByteArray cases[] = {xmaster.left(100), QByteArray(), QByteArray(xmaster).replace(0, 1, "\x00"),  // cut, emptied, first byte
                                QByteArray(xmaster).replace(10, 1, "\x03").replace(14, 1, "\x03"),           // count lowered
                                QByteArray(xmaster).replace(14, 1, "\x03"), xmaster + xmaster.mid(150, 150)};  // one count, a record past it
    for (const QByteArray& bytes : cases) {
        SCOPED_TRACE(&bytes - cases);
        TempFolder folder;
        copyFolder(base.path(), folder.path());
        writeTextFile(folder.file(QStringLiteral("XMASTER")), bytes);
        const auto before = snapshot(folder.path());
        // Not read short: the reader refuses the folder and names the file; nothing is written.
        SecurityReader r;
        EXPECT_TRUE(contains(failureText([&] { r.OpenFolder(folder.path()); }), "XMASTER"));
        {
            SecurityWriter w;
            EXPECT_TRUE(contains(failureText([&] { w.OpenFolder(folder.path()); }), "XMASTER"));
            passOver([&] { w.CreateSecurity(QStringLiteral("NEW"), QString(), 1); });
            passOver([&] { w.CloseFolder(); });
        }
        EXPECT_EQ(snapshot(folder.path()), before);
        const auto findings = StoreCheck::checkFolder(folder.path());  // `check` counts it as a problem
        ASSERT_FALSE(findings.empty());
        EXPECT_TRUE(findings.front().problem && findings.front().text.contains(QStringLiteral("XMASTER"))) << findings.front().text.toStdString();
    }
    // A text file of that name in a folder of 255 securities or fewer is left alone: the fixture tests.
}
