// The bytes the store writes, and what it makes of bytes it cannot trust.
#include "StoreHelpers.h"
#include "frame/Failure.h"
#include "store/MetaStockFormat.h"
#include "support/TestSupport.h"

#include <QDirIterator>
#include <QFileInfo>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
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

std::map<QString, QByteArray> snapshot(const QString& folder) {
    std::map<QString, QByteArray> out;
    QDirIterator it(folder, QDir::Files);
    while (it.hasNext()) {
        it.next();
        out[it.fileName()] = readFileBytes(it.filePath());
    }
    return out;
}

void makeTwo(const QString& folder) {
    SecurityWriter w;
    w.OpenFolder(folder);
    for (const char* s : {"AAA", "BBB"}) {
        w.CreateSecurity(QString::fromLatin1(s), QString::fromLatin1(s), 1);
        addBars(w, {barOf(20050801), barOf(20050802)});
        w.CloseSecurity();
    }
    w.CloseFolder();
}

} // namespace

TEST(MbfFloats, KnownWords) {
    const struct {
        unsigned char bytes[4];
        float value;
    } cases[] = {
        {{0xB0, 0x0A, 0x6D, 0x94}, 970923.0f},
        {{0x00, 0x00, 0x00, 0x00}, 0.0f},
        {{0x00, 0x00, 0x00, 0x81}, 1.0f},
        {{0x00, 0x00, 0x80, 0x81}, -1.0f},
        {{0x00, 0x00, 0x00, 0x80}, 0.5f},
        {{0x00, 0x00, 0x20, 0x84}, 10.0f},
        {{0x00, 0x00, 0xA0, 0x84}, -10.0f},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(mbfToFloat(c.bytes), c.value);
        EXPECT_EQ(mbf(c.value), QByteArray(reinterpret_cast<const char*>(c.bytes), 4)) << c.value;
    }
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

TEST(MbfFloats, ValuesTheFormatCannotHoldAreRefused) {
    unsigned char out[4] = {1, 2, 3, 4};
    EXPECT_FALSE(floatToMbf(std::numeric_limits<float>::infinity(), out));
    EXPECT_FALSE(floatToMbf(std::numeric_limits<float>::quiet_NaN(), out));
    EXPECT_FALSE(floatToMbf(std::numeric_limits<float>::max(), out));
    EXPECT_EQ(mbf(std::numeric_limits<float>::denorm_min()), QByteArray(4, '\0'));
    EXPECT_EQ(mbf(-0.0f), QByteArray(4, '\0'));

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

TEST(IndexBytes, NewSecurityIsWrittenAsTheVendorWritesIt) {
    TempFolder folder;
    {
        SecurityWriter w;
        w.OpenFolder(folder.path());
        w.CreateSecurity(QStringLiteral("ABC"), QStringLiteral("ABC CORP"), 1);
        w.AddQuote(19970923, -1, 1, 2, 0.5, 1.5, 100, -1);
        w.CloseFolder();
    }
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

TEST(IndexBytes, ThreeHundredSecuritiesCrossIntoXmaster) {
    TempFolder folder;
    const QString longName = QStringLiteral("A NAME OF FORTY-FIVE CHARACTERS, NOT MORE!..");
    ASSERT_EQ(longName.size(), 44);
    {
        SecurityWriter w;
        w.OpenFolder(folder.path());
        for (int i = 1; i <= 300; ++i) {
            const QString sym = QStringLiteral("S%1").arg(i, 3, 10, QLatin1Char('0'));
            w.CreateSecurity(sym, i % 50 == 0 ? longName + QString::number(i % 10) + QStringLiteral("XYZ") : sym, 1);
            w.AddQuote(20050801, 0, i, i, i, i, i, 0);
            w.AddQuote(20050802, 0, i + 1, i + 1, i + 1, i + 1, i + 1, 0);
            w.SaveQuotes();
            w.CloseSecurity();
        }
        w.CloseFolder();
    }
    EXPECT_TRUE(QFileInfo::exists(folder.file(QStringLiteral("XMASTER"))));
    EXPECT_TRUE(QFileInfo::exists(folder.file(QStringLiteral("F255.DAT"))));
    EXPECT_TRUE(QFileInfo::exists(folder.file(QStringLiteral("F256.MWD"))));
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

TEST(SecurityNames, SymbolsAreCheckedOnCreateAndRename) {
    TempFolder folder;
    SecurityWriter w;
    w.OpenFolder(folder.path());
    EXPECT_THROW(w.CreateSecurity(QStringLiteral("ABCDEFGHIJKLMNO"), QStringLiteral("X"), 1), Failure);
    w.CreateSecurity(QStringLiteral("ABCDEFGHIJKLMN"), QStringLiteral("FOURTEEN"), 1);
    w.CreateSecurity(QStringLiteral("OTHER"), QStringLiteral("OTHER"), 1);
    EXPECT_THROW(w.CreateSecurity(QStringLiteral("other"), QStringLiteral("X"), 1), Failure);
    EXPECT_THROW(w.ChangeSecurity(QStringLiteral("OTHER"), QStringLiteral("X"), QStringLiteral("ABCDEFGHIJKLMN")), Failure);
    EXPECT_THROW(w.ChangeSecurity(QStringLiteral("OTHER"), QStringLiteral("X"), QStringLiteral("abcdefghijklmn")), Failure);
    EXPECT_THROW(w.ChangeSecurity(QStringLiteral("OTHER"), QStringLiteral("X"), QStringLiteral("ABCDEFGHIJKLMNOP")), Failure);
    EXPECT_THROW(w.ChangeSecurity(QStringLiteral("NONE"), QStringLiteral("X"), QStringLiteral("NEW")), Failure);
    w.ChangeSecurity(QStringLiteral("OTHER"), QStringLiteral("A Long Name Of Over Sixteen"), QStringLiteral("OTHER"));
    w.ChangeSecurity(QStringLiteral("ABCDEFGHIJKLMN"), QStringLiteral("Renamed"), QStringLiteral("NEWSYM"));
    w.CloseFolder();
    const auto listed = listFolder(folder.path());
    ASSERT_EQ(listed.size(), 2u);
    EXPECT_EQ(listed[0].symbol, QStringLiteral("NEWSYM"));
    EXPECT_EQ(listed[0].name, QStringLiteral("Renamed"));
    EXPECT_EQ(listed[1].name, QStringLiteral("A Long Name Of Over Sixteen"));
    // The long name lies in EMASTER's full-name field; a short one leaves it empty.
    const QByteArray emaster = readFileBytes(folder.file(QStringLiteral("EMASTER")));
    EXPECT_EQ(emaster.mid(2 * 192 + 139, 28), QByteArray("A Long Name Of Over Sixteen\0", 28));
    EXPECT_EQ(emaster.mid(192 + 139, 53), QByteArray(53, '\0'));
}

TEST(CorruptFolders, AreRefusedClearlyAndNeverWritten) {
    struct Case {
        const char* what;
        const char* file;         // named in the failure
        std::function<void(const TempFolder&)> spoil;
        bool folderOpens;         // the index is fine, a data file is not
    };
    auto patch = [](const TempFolder& f, const char* name, int offset, QByteArray bytes) {
        QByteArray b = readFileBytes(f.file(QString::fromLatin1(name)));
        b.replace(offset, bytes.size(), bytes);
        writeTextFile(f.file(QString::fromLatin1(name)), b);
    };
    auto cut = [](const TempFolder& f, const char* name, int size) {
        writeTextFile(f.file(QString::fromLatin1(name)), readFileBytes(f.file(QString::fromLatin1(name))).left(size));
    };
    const Case cases[] = {
        {"empty MASTER", "MASTER", [&](const TempFolder& f) { cut(f, "MASTER", 0); }, false},
        {"MASTER cut inside a record", "MASTER", [&](const TempFolder& f) { cut(f, "MASTER", 100); }, false},
        {"MASTER counts beyond its size", "MASTER", [&](const TempFolder& f) { patch(f, "MASTER", 0, QByteArray("\x03\x00", 2)); }, false},
        {"MASTER counts past 255", "MASTER", [&](const TempFolder& f) { patch(f, "MASTER", 0, QByteArray("\x00\x01", 2)); }, false},
        {"MASTER record length wrong", "MASTER", [&](const TempFolder& f) { patch(f, "MASTER", 53 + 3, QByteArray("\x1B", 1)); }, false},
        {"MASTER field count 9", "MASTER", [&](const TempFolder& f) { patch(f, "MASTER", 53 + 3, QByteArray("\x24\x09", 2)); }, false},
        {"MASTER file number twice", "MASTER", [&](const TempFolder& f) { patch(f, "MASTER", 106, QByteArray("\x01", 1)); }, false},
        {"MASTER file number 0", "MASTER", [&](const TempFolder& f) { patch(f, "MASTER", 53, QByteArray("\x00", 1)); }, false},
        {"EMASTER cut", "EMASTER", [&](const TempFolder& f) { cut(f, "EMASTER", 300); }, false},
        {"XMASTER counts beyond its size", "XMASTER",
         [&](const TempFolder& f) {
             writeTextFile(f.file(QStringLiteral("XMASTER")), QByteArray("\x5D\xFE\x58\x4D", 4) + QByteArray(6, '\0') +
                                                               QByteArray("\x05\x00", 2) + QByteArray(138, '\0'));
         },
         false},
        {"data file counts beyond its size", "F1.DAT", [&](const TempFolder& f) { patch(f, "F1.DAT", 2, QByteArray("\x09\x00", 2)); }, true},
        {"data file shorter than its header", "F1.DAT", [&](const TempFolder& f) { cut(f, "F1.DAT", 10); }, true},
        {"data file missing", "F1.DAT", [&](const TempFolder& f) { QFile::remove(f.file(QStringLiteral("F1.DAT"))); }, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempFolder folder;
        makeTwo(folder.path());
        c.spoil(folder);
        const auto before = snapshot(folder.path());

        SecurityReader r;
        std::string failure;
        try {
            r.OpenFolder(folder.path());
            EXPECT_TRUE(c.folderOpens);
            r.OpenSecurity(QStringLiteral("AAA"));
        } catch (const Failure& f) {
            failure = f.Description.toStdString();
        }
        EXPECT_NE(failure.find(c.file), std::string::npos) << failure;
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
