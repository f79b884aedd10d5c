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

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

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
QByteArray text(const char* s, int width, char pad) {
    QByteArray b(s);
    return b + QByteArray(width - b.size(), pad);
}

void makeTwo(const QString& folder) {
    makeSecurity(folder, QStringLiteral("AAA"), {20050801, 20050802});
    makeSecurity(folder, QStringLiteral("BBB"), {20050801, 20050802});
}

} // namespace

TEST(MbfFloats, KnownWordsAndValuesTheFormatCannotHold) {
    const struct {
        unsigned char bytes[4];
        float value;
    } cases[] = {
        {{0xB0, 0x0A, 0x6D, 0x94}, 970923.0f}, {{0x00, 0x00, 0x00, 0x00}, 0.0f}, {{0x00, 0x00, 0x00, 0x81}, 1.0f},
        {{0x00, 0x00, 0x80, 0x81}, -1.0f},     {{0x00, 0x00, 0x00, 0x80}, 0.5f}, {{0x00, 0x00, 0x20, 0x84}, 10.0f},
        {{0x00, 0x00, 0xA0, 0x84}, -10.0f},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(mbfToFloat(c.bytes), c.value);
        EXPECT_EQ(mbf(c.value), QByteArray(reinterpret_cast<const char*>(c.bytes), 4)) << c.value;
    }
    unsigned char out[4] = {1, 2, 3, 4};
    for (float bad : {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(),
                      std::numeric_limits<float>::max()})
        EXPECT_FALSE(floatToMbf(bad, out)) << bad;
    EXPECT_EQ(mbf(std::numeric_limits<float>::denorm_min()), QByteArray(4, '\0'));
    EXPECT_EQ(mbf(-0.0f), QByteArray(4, '\0'));

    // The writer refuses such a value and writes nothing.
    TempFolder folder;
    makeTwo(folder.path());
    const auto before = snapshot(folder.path());
    SecurityWriter w;
    w.OpenFolder(folder.path());
    w.OpenSecurity(QStringLiteral("AAA"));
    for (double bad : {1e39, 3e38, std::nan(""), -std::numeric_limits<double>::infinity()})
        EXPECT_THROW(w.AddQuote(20050803, -1, 1, bad, 1, 1, 1, -1), Failure) << bad;
    w.CloseFolder();
    EXPECT_EQ(snapshot(folder.path()), before);
}

TEST(MbfFloats, EveryFloatTheFormatHoldsGoesBothWaysExactly) {
    std::mt19937 random(7);
    std::uniform_int_distribution<quint32> bits;
    for (int i = 0; i < 200000; ++i) {
        quint32 b = bits(random);
        const quint32 exponent = (b >> 23) & 0xFF;
        if (exponent == 0 || exponent >= 254)
            continue;
        float f;
        std::memcpy(&f, &b, 4);
        unsigned char out[4];
        ASSERT_TRUE(floatToMbf(f, out));
        const float back = mbfToFloat(out);
        ASSERT_EQ(std::memcmp(&back, &f, 4), 0) << std::hex << b;
    }
}

TEST(MbfFloats, EveryWordOfTheFixturesSurvivesARoundTrip) {
    REQUIRE_FIXTURE("vendor-xmaster");
    int words = 0;
    QDirIterator it(metastockFixture(QString()), {QStringLiteral("*.DAT"), QStringLiteral("*.MWD")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QByteArray bytes = readFileBytes(it.next());
        for (qsizetype off = 0; off + 4 <= bytes.size(); off += 4) {
            const auto* w = reinterpret_cast<const unsigned char*>(bytes.constData() + off);
            if (w[3] == 0 && (w[0] | w[1] | w[2]) != 0)
                continue;  // header words: not floats
            if (w[3] == 1 || w[3] == 2)
                continue;
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
    const QByteArray master = readFileBytes(folder.file(QStringLiteral("MASTER")));
    ASSERT_EQ(master.size(), 2 * 53);
    EXPECT_EQ(master.left(4), QByteArray("\x01\x00\x01\x00", 4));  // one security, highest number 1
    const QByteArray date = QByteArray("\xB0\x0A\x6D\x94", 4);
    const QByteArray expectedMaster = QByteArray("\x01\x65\x00\x1C\x07\x00\x00", 7) + text("ABC CORP", 16, ' ') +
                                      QByteArray(2, '\0') + date + date + QByteArray("D\0\0", 3) +
                                      text("ABC", 14, ' ') + QByteArray("  \0", 3);
    EXPECT_EQ(master.mid(53).toHex(' '), expectedMaster.toHex(' '));

    const QByteArray emaster = readFileBytes(folder.file(QStringLiteral("EMASTER")));
    ASSERT_EQ(emaster.size(), 2 * 192);
    QByteArray e = QByteArray("66\x01\0\0\0\x07\x7F\0 \0", 11) + text("ABC", 14, '\0') + QByteArray(7, '\0') +
                   text("ABC CORP", 16, '\0') + QByteArray(12, '\0') + QByteArray("D\0\0\0", 4) +
                   ieee(970923.0f) + QByteArray(4, '\0') + ieee(970923.0f) + QByteArray(4, '\0') +
                   QByteArray(8, '\0') + QByteArray(38, '\0') + i32le(19970923) + QByteArray(9, '\0');
    e += QByteArray(192 - e.size(), '\0');
    EXPECT_EQ(emaster.mid(192).toHex(' '), e.toHex(' '));

    const QByteArray data = readFileBytes(folder.file(QStringLiteral("F1.DAT")));
    ASSERT_EQ(data.size(), 2 * 28);
    EXPECT_EQ(data.left(28), QByteArray("\0\0\x02\0", 4) + QByteArray(24, '\0'));
    EXPECT_EQ(data.mid(28).toHex(' '),
              (date + mbf(1) + mbf(2) + mbf(0.5f) + mbf(1.5f) + mbf(100) + QByteArray(4, '\0')).toHex(' '));
}

TEST(IndexBytes, TextIsWindows1252AndACutNameEndsInNul) {
    TempFolder folder;
    // The cut to 16 and to 45 characters falls after a blank.
    const QString cutAt16 = QStringLiteral("HINDUSTAN LEVER LTD");
    const QString cutAt45 = QStringLiteral("A NAME OF FORTY-FOUR CHARACTERS AND A BLANK, THEN MORE");
    ASSERT_EQ(cutAt45.at(44), QLatin1Char(' '));
    writeFolder(folder.path(), [&](SecurityWriter& w) {
        w.CreateSecurity(QStringLiteral("€UR"), QStringLiteral("Société Générale"), 1);
        w.CreateSecurity(QStringLiteral("HUL"), cutAt16, 1);
        w.CreateSecurity(QStringLiteral("LONG"), cutAt45, 1);
    });
    const QByteArray master = readFileBytes(folder.file(QStringLiteral("MASTER")));
    EXPECT_EQ(master.mid(53 + 36, 4), QByteArray("\x80UR ", 4));
    EXPECT_EQ(master.mid(53 + 7, 16), QByteArray("Soci\xE9t\xE9 G\xE9n\xE9rale"));
    const QByteArray emaster = readFileBytes(folder.file(QStringLiteral("EMASTER")));
    EXPECT_EQ(emaster.mid(192 + 11, 4), QByteArray("\x80UR\0", 4));
    EXPECT_EQ(emaster.mid(2 * 192 + 32, 16), QByteArray("HINDUSTAN LEVER\0", 16));
    EXPECT_EQ(emaster.mid(2 * 192 + 139, 20), text("HINDUSTAN LEVER LTD", 20, '\0'));
    EXPECT_EQ(emaster.mid(3 * 192 + 139, 45), cutAt45.left(44).toLatin1() + QByteArray(1, '\0'));

    const auto listed = listFolder(folder.path());
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_EQ(listed[0].symbol, QStringLiteral("€UR"));
    EXPECT_EQ(listed[0].name, QStringLiteral("Société Générale"));
    EXPECT_EQ(listed[2].name, cutAt45.left(44));
    EXPECT_EQ(readBars(folder.path(), QStringLiteral("€UR")), std::vector<Bar>{});

    // Another program renamed HUL in MASTER only: EMASTER's long name lags behind and no longer counts.
    QByteArray renamed = master;
    renamed.replace(2 * 53 + 7, 16, "UNILEVER INDIA  ");
    writeTextFile(folder.file(QStringLiteral("MASTER")), renamed);
    EXPECT_EQ(listFolder(folder.path())[1].name, QStringLiteral("UNILEVER INDIA"));
}

TEST(IndexBytes, ThreeHundredSecuritiesCrossIntoXmaster) {
    TempFolder folder;
    const QString longName = QStringLiteral("A NAME OF FORTY-FIVE CHARACTERS, NOT MORE!..");
    ASSERT_EQ(longName.size(), 44);
    StoreFiles::disarmFault();
    writeFolder(folder.path(), [&](SecurityWriter& w) {
        for (int i = 1; i <= 300; ++i) {
            const QString sym = QStringLiteral("S%1").arg(i, 3, 10, QLatin1Char('0'));
            w.CreateSecurity(sym, i % 50 == 0 ? longName + QString::number(i % 10) + QStringLiteral("XYZ") : sym, 1);
            addBars(w, {{20050801, double(i), double(i), double(i), double(i), double(i)},
                        {20050802, i + 1.0, i + 1.0, i + 1.0, i + 1.0, i + 1.0}});
            w.CloseSecurity();
        }
    });
    // Creating N securities in one open folder costs O(N) writes: one for each data file and each
    // record batch, and the index files once.
    EXPECT_LE(StoreFiles::writeCount(), 300 * 3 + 6);
    EXPECT_FALSE(QFileInfo::exists(folder.file(QStringLiteral("F256.DAT"))));
    const QByteArray xmaster = readFileBytes(folder.file(QStringLiteral("XMASTER")));
    ASSERT_EQ(xmaster.size(), 46 * 150);
    EXPECT_EQ(xmaster.left(4), QByteArray("\x5D\xFE\x58\x4D", 4));
    EXPECT_EQ(xmaster.mid(10, 2), QByteArray("\x2D\x00", 2));  // 45
    EXPECT_EQ(xmaster.mid(18, 2), QByteArray("\x2D\x01", 2));  // next number 301
    const QByteArray first = xmaster.mid(150, 150);           // S256, F256.MWD
    QByteArray x = QByteArray("\x01", 1) + text("S256", 15, '\0') + text("S256", 46, '\0') + QByteArray("D\0\0\x00\x01", 5) +
                   QByteArray(3, '\0') + QByteArray("\x7F", 1) + QByteArray(33, '\0') + i32le(20050801) +
                   i32le(20050801) + QByteArray(4, '\0') + i32le(20050802);
    x += QByteArray(150 - x.size(), '\0');
    EXPECT_EQ(first.toHex(' '), x.toHex(' '));

    const auto listed = listFolder(folder.path());
    ASSERT_EQ(listed.size(), 300u);
    for (int i = 1; i <= 300; ++i) {
        const Listed& l = listed[size_t(i - 1)];
        EXPECT_EQ(l.symbol, QStringLiteral("S%1").arg(i, 3, 10, QLatin1Char('0')));
        EXPECT_EQ(l.file, QStringLiteral("F%1.%2").arg(i).arg(i <= 255 ? QStringLiteral("DAT") : QStringLiteral("MWD")));
        EXPECT_EQ(l.first, 20050801);
        EXPECT_EQ(l.last, 20050802);
        if (i % 50 == 0) {  // names are kept to 45 characters, in EMASTER as in XMASTER
            EXPECT_EQ(l.name, (longName + QString::number(i % 10) + QStringLiteral("XYZ")).left(45));
        }
    }
    const auto bars = readBars(folder.path(), QStringLiteral("S300"));
    ASSERT_EQ(bars.size(), 2u);
    EXPECT_EQ(bars[1], (Bar{20050802, 301, 301, 301, 301, 301}));
    // The MASTER record of a long name holds its first 16 characters.
    EXPECT_EQ(readFileBytes(folder.file(QStringLiteral("MASTER"))).mid(50 * 53 + 7, 16), longName.left(16).toLatin1());
}

// What a file of a folder can be instead of a file the format allows.
enum class Stand { Bytes, Pipe, DeviceLink, Huge };

TEST(CorruptFolders, AreRefusedClearlyAndNeverWritten) {
    const QByteArray emptyXmaster = QByteArray("\x5D\xFE\x58\x4D", 4) + QByteArray(146, '\0');
    const struct {
        const char* what;
        const char* file;  // spoilt, and named in the failure
        int cutTo;         // >= 0: the file is cut to this size; -2: the file is removed
        int at;            // else these bytes are written at this offset
        QByteArray bytes;
        bool folderOpens;  // the index is fine, a data file is not
        Stand stand = Stand::Bytes;
    } cases[] = {
        {"empty MASTER", "MASTER", 0, 0, {}, false},
        {"MASTER cut inside a record", "MASTER", 100, 0, {}, false},
        {"MASTER counts beyond its size", "MASTER", -1, 0, QByteArray("\x03\x00", 2), false},
        {"MASTER counts past 255", "MASTER", -1, 0, QByteArray("\x00\x01", 2), false},
        {"MASTER record length wrong", "MASTER", -1, 53 + 3, QByteArray("\x1B", 1), false},
        {"MASTER field count 9", "MASTER", -1, 53 + 3, QByteArray("\x24\x09", 2), false},
        {"MASTER file number twice", "MASTER", -1, 106, QByteArray("\x01", 1), false},
        {"MASTER file number 0", "MASTER", -1, 53, QByteArray("\x00", 1), false},
        {"EMASTER cut", "EMASTER", 300, 0, {}, false},
        {"XMASTER counts beyond its size", "XMASTER", -1, 0, QByteArray(emptyXmaster).replace(10, 1, "\x05"), false},
        {"data file counts beyond its size", "F1.DAT", -1, 2, QByteArray("\x09\x00", 2), true},
        {"data file shorter than its header", "F1.DAT", 10, 0, {}, true},
        {"data file missing", "F1.DAT", -2, 0, {}, true},
        // Only regular files are read, and none past the size its format allows.
        {"EMASTER a pipe", "EMASTER", -2, 0, {}, false, Stand::Pipe},
        {"MASTER a link to an endless device", "MASTER", -2, 0, {}, false, Stand::DeviceLink},
        {"data file a pipe", "F1.DAT", -2, 0, {}, true, Stand::Pipe},
        {"data file longer than 65,534 records", "F1.DAT", -2, 0, {}, true, Stand::Huge},
        {"MASTER longer than 255 securities and a spare", "MASTER", -2, 0, {}, false, Stand::Huge},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
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
        else if (c.stand == Stand::Huge)
            writeTextFile(path, QByteArray(c.folderOpens ? 65536 * 28 + 1 : 257 * 53 + 1, '\0'));
        else if (c.cutTo != -2)
            writeTextFile(path, c.cutTo >= 0 ? bytes.left(c.cutTo) : bytes.replace(c.at, c.bytes.size(), c.bytes));
        const auto before = snapshot(folder.path());

        SecurityReader r;
        const std::string failure = failureText([&] {
            r.OpenFolder(folder.path());
            EXPECT_TRUE(c.folderOpens);
            r.OpenSecurity(QStringLiteral("AAA"));
        });
        EXPECT_NE(failure.find(c.file), std::string::npos) << failure;
        if (c.stand == Stand::Pipe || c.stand == Stand::DeviceLink) {
            EXPECT_NE(failure.find("not a regular file"), std::string::npos) << failure;
        } else if (c.stand == Stand::Huge) {
            EXPECT_NE(failure.find("more than such a file can be"), std::string::npos) << failure;
        }
        // The reader stays usable: BBB reads where the index is sound.
        if (c.folderOpens) {
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
            w.CreateSecurity(QStringLiteral("S%1").arg(i), QString(), 1);
    });
    const QByteArray xmaster = readFileBytes(base.file(QStringLiteral("XMASTER")));
    ASSERT_EQ(xmaster.size(), 6 * 150);
    const struct {
        const char* what;
        QByteArray bytes;
    } cases[] = {
        {"cut below its header", xmaster.left(100)},
        {"emptied", QByteArray()},
        {"first byte changed", QByteArray(xmaster).replace(0, 1, "\x00")},
        {"count lowered", QByteArray(xmaster).replace(10, 1, "\x03").replace(14, 1, "\x03")},
        {"one count lowered", QByteArray(xmaster).replace(14, 1, "\x03")},
        {"a record past its count", xmaster + xmaster.mid(150, 150)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        TempFolder folder;
        copyFolder(base.path(), folder.path());
        writeTextFile(folder.file(QStringLiteral("XMASTER")), c.bytes);
        const auto before = snapshot(folder.path());

        // Not read short: the reader refuses the folder and names the file.
        SecurityReader r;
        const std::string failure = failureText([&] { r.OpenFolder(folder.path()); });
        EXPECT_NE(failure.find("XMASTER"), std::string::npos) << failure;
        // Nothing is written, least of all a new XMASTER without the records it lost.
        {
            SecurityWriter w;
            const std::string refused = failureText([&] { w.OpenFolder(folder.path()); });
            EXPECT_NE(refused.find("XMASTER"), std::string::npos) << refused;
            passOver([&] { w.CreateSecurity(QStringLiteral("NEW"), QString(), 1); });
            passOver([&] { w.CloseFolder(); });
        }
        EXPECT_EQ(snapshot(folder.path()), before);
        // `check` counts it as a problem.
        const auto findings = StoreCheck::checkFolder(folder.path());
        ASSERT_FALSE(findings.empty());
        EXPECT_TRUE(findings.front().problem);
        EXPECT_TRUE(findings.front().text.contains(QStringLiteral("XMASTER"))) << findings.front().text.toStdString();
    }

    // A text file under the name in a folder without securities past the 255th stays a foreign
    // file that the store leaves alone (the stale-emaster fixture holds one).
    TempFolder folder;
    makeTwo(folder.path());
    writeTextFile(folder.file(QStringLiteral("XMASTER")), "broken file\n");
    EXPECT_EQ(listFolder(folder.path()).size(), 2u);
}
