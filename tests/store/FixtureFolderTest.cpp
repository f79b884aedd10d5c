// Real MetaStock folders, read as they stand and written into as copies.
#include "StoreHelpers.h"
#include "frame/Failure.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <set>

namespace {

struct Expected {
    const char* symbol;
    const char* name;
    const char* file;
    qint32 first, last;
    int records;
};

void expectSecurity(const QString& folder, const Expected& e) {
    SecurityReader r;
    r.OpenFolder(folder);
    r.OpenSecurity(QString::fromLatin1(e.symbol));
    EXPECT_EQ(r.GetName(), QString::fromLatin1(e.name)) << e.symbol;
    EXPECT_EQ(r.GetFileName(), QString::fromLatin1(e.file)) << e.symbol;
    EXPECT_EQ(r.GetFirstDate(), e.first) << e.symbol;
    EXPECT_EQ(r.GetLastDate(), e.last) << e.symbol;
    EXPECT_EQ(r.GetRecordCount(), e.records) << e.symbol;
}

} // namespace

TEST(FixtureFolders, VendorSmallWithLongNameAndExtendedSecurities) {
    REQUIRE_FIXTURE("vendor-small");
    const QString folder = metastockFixture(QStringLiteral("vendor-small"));
    const auto listed = listFolder(folder);
    ASSERT_EQ(listed.size(), 4u);
    const char* symbols[] = {".DJX", ".FCHI", "AZM.L", ".N225"};
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(listed[i].symbol, QString::fromLatin1(symbols[i]));
    // The index says 20111227; the records end earlier and they decide.
    const Expected cases[] = {
        {".DJX", "1/100 Dow Jones INDU", "F1.DAT", 19970923, 19970923, 1},
        {".FCHI", "CAC 40 INDICE", "F2.DAT", 19880819, 19880822, 2},
        {"AZM.L", "AZM.L", "F256.MWD", 19961231, 19961231, 1},
        {".N225", "NIKKEI 225 INDEX", "F2853.MWD", 19820104, 19820105, 2},
    };
    for (const Expected& e : cases)
        expectSecurity(folder, e);
    const auto djx = readBars(folder, QStringLiteral(".DJX"));
    ASSERT_EQ(djx.size(), 1u);
    EXPECT_EQ(float(djx[0].open), 79.97f);
    EXPECT_EQ(float(djx[0].high), 80.04f);
    EXPECT_EQ(float(djx[0].low), 79.29f);
    EXPECT_EQ(float(djx[0].close), 79.7f);
    EXPECT_EQ(float(readBars(folder, QStringLiteral(".N225"))[1].close), 7719.34f);
}

TEST(FixtureFolders, VendorXmasterWithMixedCaseFileNames) {
    REQUIRE_FIXTURE("vendor-xmaster");
    const QString folder = metastockFixture(QStringLiteral("vendor-xmaster"));
    const auto listed = listFolder(folder);
    ASSERT_EQ(listed.size(), 462u);
    EXPECT_EQ(listed[0].symbol, QStringLiteral("ASR"));
    EXPECT_EQ(listed[0].name, QStringLiteral("A.S. ROMA"));
    EXPECT_EQ(listed[254].file, QStringLiteral("F255.DAT"));
    EXPECT_EQ(listed[255].file, QStringLiteral("F256.MWD"));
    EXPECT_EQ(listed[255].symbol, QStringLiteral("RCF"));
    EXPECT_EQ(listed[461].symbol, QStringLiteral("TMEAZA"));
    const Expected cases[] = {
        {"ASR", "A.S. ROMA", "F1.DAT", 20100104, 20100709, 127},
        {"RCSR", "RCS MEDIAGROUP R", "F258.MWD", 20100104, 20100709, 132},
        {"TMEAZA", "TMEAZA", "F462.MWD", 20100524, 20100623, 14},
    };
    for (const Expected& e : cases)
        expectSecurity(folder, e);
    const auto asr = readBars(folder, QStringLiteral("ASR"));
    EXPECT_EQ(asr.front(), (Bar{20100104, 0.8565f, 0.865f, 0.8495f, 0.8605f, 203038}));
    EXPECT_EQ(asr.back(), (Bar{20100709, 1.01f, 1.026f, 0.9265f, 0.939f, 2956970}));
}

TEST(FixtureFolders, StaleEmasterAndAnXmasterThatIsNone) {
    REQUIRE_FIXTURE("stale-emaster");
    const QString folder = metastockFixture(QStringLiteral("stale-emaster"));
    EXPECT_EQ(listFolder(folder).size(), 40u);
    const Expected cases[] = {
        {"EXO", "EXOR", "F1.DAT", 20090302, 20090302, 1},
        {"TODI", "TOD'S", "F44.DAT", 20001106, 20001106, 1},
        {"US", "UNIPOLSAI", "F2.DAT", 19850102, 19850103, 2},
    };
    for (const Expected& e : cases)
        expectSecurity(folder, e);
    EXPECT_EQ(readBars(folder, QStringLiteral("EXO"))[0], (Bar{20090302, 5.36f, 6.21f, 5.2f, 6.15f, 229221}));
}

TEST(FixtureFolders, IntradayMasterOnly) {
    REQUIRE_FIXTURE("intraday");
    const QString folder = metastockFixture(QStringLiteral("intraday"));
    SecurityReader r;
    r.OpenFolder(folder);
    ASSERT_EQ(r.GetSecuritiesRemaining(), 1);
    r.NextSecurity();
    EXPECT_EQ(r.GetSymbol(), QStringLiteral("2HR.DE"));
    EXPECT_EQ(r.GetName(), QStringLiteral("H&R"));
    EXPECT_EQ(r.GetPeriodicity(), 6);
    const auto bars = readBars(folder, QStringLiteral("2HR.DE"));
    ASSERT_EQ(bars.size(), 2u);
    EXPECT_EQ(bars[0], (Bar{20131115, 8.585f, 8.65f, 8.585f, 8.65f, 1713}));
    EXPECT_EQ(bars[1], (Bar{20131115, 8.591f, 8.591f, 8.59f, 8.59f, 296}));
}

TEST(FixtureFolders, ThirdPartyReadAsItStands) {
    REQUIRE_FIXTURE("third-party");
    const QString folder = metastockFixture(QStringLiteral("third-party"));
    const auto listed = listFolder(folder);
    ASSERT_EQ(listed.size(), 25u);  // the junk record past MASTER's count is no security
    EXPECT_EQ(listed[0].symbol, QStringLiteral("APX"));  // blank symbol: it goes by its name
    EXPECT_EQ(listed[1].symbol, QStringLiteral("AR"));
    const Expected cases[] = {
        {"APX", "APX", "F1.DAT", 19840312, 20130110, 4208},
        {"AR", "AR", "F2.DAT", 19941010, 20130110, 3555},
        {"OV", "OV", "F15.DAT", 19830103, 20130110, 5123},
    };
    for (const Expected& e : cases)
        expectSecurity(folder, e);
    // Six fields: no open interest, the open is there.
    const auto ov = readBars(folder, QStringLiteral("OV"));
    EXPECT_EQ(float(ov[0].open), 0.007325776f);
    EXPECT_EQ(ov[0].volume, 900000);
    // Out of order and doubled, as in the file.
    EXPECT_EQ(ov[369].date, 19870320);
    EXPECT_EQ(ov[370].date, 19870315);
    EXPECT_EQ(ov[3135].date, ov[3134].date);
}

TEST(FixtureFolders, WriteIntoAThirdPartySecurityLeavesItSortedWithOneRecordADate) {
    REQUIRE_FIXTURE("third-party");
    TempFolder temp;
    ASSERT_TRUE(copyFixture(QStringLiteral("third-party"), temp.path()));
    const auto before = readBars(temp.path(), QStringLiteral("OV"));
    {
        SecurityWriter w;
        w.OpenFolder(temp.path());
        w.OpenSecurity(QStringLiteral("OV"));
        w.AddQuote(20130111, 0, 1, 2, 0.5, 1.5, 1000, 0);
        w.SaveQuotes();
        w.CloseSecurity();
        w.CloseFolder();
    }
    const auto after = readBars(temp.path(), QStringLiteral("OV"));
    std::set<qint32> unique;
    for (const Bar& b : before)
        unique.insert(b.date);
    unique.insert(20130111);
    std::vector<qint32> dates;
    for (const Bar& b : after)
        dates.push_back(b.date);
    EXPECT_EQ(dates, std::vector<qint32>(unique.begin(), unique.end()));
    // The record that came out of order kept its values.
    const auto moved = std::find_if(after.begin(), after.end(), [](const Bar& b) { return b.date == 19870315; });
    ASSERT_NE(moved, after.end());
    EXPECT_EQ(*moved, before[370]);
    // The other securities are untouched, and the folder is still MASTER only.
    EXPECT_EQ(readBars(temp.path(), QStringLiteral("AR")), readBars(metastockFixture(QStringLiteral("third-party")), QStringLiteral("AR")));
    EXPECT_FALSE(QFileInfo::exists(temp.file(QStringLiteral("EMASTER"))));
}

TEST(FixtureFolders, WritingKeepsMixedCaseNamesAndUnknownFields) {
    REQUIRE_FIXTURE("vendor-xmaster");
    TempFolder temp;
    ASSERT_TRUE(copyFixture(QStringLiteral("vendor-xmaster"), temp.path()));
    const QByteArray masterBefore = readFileBytes(temp.file(QStringLiteral("Master")));
    const QByteArray xmasterBefore = readFileBytes(temp.file(QStringLiteral("Xmaster")));
    {
        SecurityWriter w;
        w.OpenFolder(temp.path());
        w.ChangeSecurity(QStringLiteral("RCF"), QStringLiteral("RCF GROUP SPA"), QStringLiteral("RCF"));
        w.OpenSecurity(QStringLiteral("ASR"));
        w.AddQuote(20100712, -1, 1, 1, 1, 1, 1, -1);
        w.CloseSecurity();
        w.CloseFolder();
    }
    const QStringList names = QDir(temp.path()).entryList({QStringLiteral("*aster")}, QDir::Files, QDir::Name);
    EXPECT_EQ(names, (QStringList{QStringLiteral("Emaster"), QStringLiteral("Master"), QStringLiteral("Xmaster")}));
    const QByteArray masterAfter = readFileBytes(temp.file(QStringLiteral("Master")));
    const QByteArray xmasterAfter = readFileBytes(temp.file(QStringLiteral("Xmaster")));
    ASSERT_EQ(masterAfter.size(), masterBefore.size());
    ASSERT_EQ(xmasterAfter.size(), xmasterBefore.size());
    // MASTER: only the first security's last date moved.
    EXPECT_EQ(masterAfter.left(53), masterBefore.left(53));
    EXPECT_EQ(masterAfter.mid(53 * 2), masterBefore.mid(53 * 2));
    EXPECT_EQ(masterAfter.mid(53, 29), masterBefore.mid(53, 29));
    // XMASTER: the header (unknown word, per-folder value, copyright) and the other records stay.
    EXPECT_EQ(xmasterAfter.left(150), xmasterBefore.left(150));
    EXPECT_EQ(xmasterAfter.mid(300), xmasterBefore.mid(300));
    EXPECT_EQ(xmasterAfter.mid(150 + 80, 8), xmasterBefore.mid(150 + 80, 8));
    EXPECT_EQ(xmasterAfter.mid(150 + 16, 14), QByteArray("RCF GROUP SPA\0", 14));

    EXPECT_EQ(listFolder(temp.path())[255].name, QStringLiteral("RCF GROUP SPA"));
    EXPECT_EQ(readDates(temp.path(), QStringLiteral("ASR")).back(), 20100712);
}

TEST(FixtureFolders, StaleEmasterFolderTakesNoSecurityPastTheMasterButWritesWithin) {
    REQUIRE_FIXTURE("stale-emaster");
    TempFolder temp;
    ASSERT_TRUE(copyFixture(QStringLiteral("stale-emaster"), temp.path()));
    const QByteArray xmaster = readFileBytes(temp.file(QStringLiteral("XMASTER")));
    SecurityWriter w;
    w.OpenFolder(temp.path());
    w.CreateSecurity(QStringLiteral("NEW"), QStringLiteral("NEW"), 1);
    w.AddQuote(20140630, -1, 1, 1, 1, 1, 1, -1);
    w.CloseFolder();
    EXPECT_EQ(readFileBytes(temp.file(QStringLiteral("XMASTER"))), xmaster);
    EXPECT_EQ(readDates(temp.path(), QStringLiteral("NEW")), std::vector<qint32>{20140630});
    EXPECT_EQ(listFolder(temp.path()).size(), 41u);
}
