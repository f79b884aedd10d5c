// Real MetaStock folders, read as they stand and written into as copies.
#include "StoreHelpers.h"
#include "store/MetaStockFormat.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <set>
#include <tuple>

namespace {

struct Expected {
    const char* symbol;
    const char* name;
    const char* file;
    qint32 first, last;
    int records;
    int periodicity = 1;
};

struct Fixture {
    const char* folder;
    size_t count;
    std::vector<std::tuple<size_t, const char*, const char*>> listed;  // position, symbol, file
    std::vector<Expected> securities;
    std::vector<std::tuple<const char*, size_t, Bar>> bars;            // symbol, record number, record
};

const Fixture Fixtures[] = {
    // Listed by the command-line tests; here, records of an index file and of an extended one.
    {"vendor-small", 4,
     {},
     {},
     {{".DJX", 0, {19970923, 79.97f, 80.04f, 79.29f, 79.7f, 0}},
      {".N225", 1, {19820105, 7719.34f, 7719.34f, 7719.34f, 7719.34f, 0}}}},
    // Mixed-case file names, 255 securities in MASTER and 207 in XMASTER.
    {"vendor-xmaster", 462,
     {{0, "ASR", "F1.DAT"}, {254, "RAT", "F255.DAT"}, {255, "RCF", "F256.MWD"}, {461, "TMEAZA", "F462.MWD"}},
     {{"ASR", "A.S. ROMA", "F1.DAT", 20100104, 20100709, 127},
      {"RCSR", "RCS MEDIAGROUP R", "F258.MWD", 20100104, 20100709, 132},
      {"IS-PU", "IS-pubblica utilit\u00E0", "F388.MWD", 20100104, 20100205, 24}},  // E0 in Windows-1252
     {{"ASR", 0, {20100104, 0.8565f, 0.865f, 0.8495f, 0.8605f, 203038}},
      {"ASR", 126, {20100709, 1.01f, 1.026f, 0.9265f, 0.939f, 2956970}}}},
    // EMASTER's dates lag behind MASTER's; the XMASTER is a text file.
    {"stale-emaster", 40,
     {{0, "AEMI", "F20.DAT"}, {1, "AUTOI", "F36.DAT"}},  // the index's order, not the files'
     {{"EXO", "EXOR", "F1.DAT", 20090302, 20090302, 1},
      {"US", "UNIPOLSAI", "F2.DAT", 19850102, 19850103, 2}},
     {{"EXO", 0, {20090302, 5.36f, 6.21f, 5.2f, 6.15f, 229221}}}},
    // MASTER only, seven fields with a time: two records of one day.
    {"intraday", 1,
     {{0, "2HR.DE", "F1.DAT"}},
     {{"2HR.DE", "H&R", "F1.DAT", 20131115, 20131115, 2, 6}},
     {{"2HR.DE", 0, {20131115, 8.585f, 8.65f, 8.585f, 8.65f, 1713}},
      {"2HR.DE", 1, {20131115, 8.591f, 8.591f, 8.59f, 8.59f, 296}}}},
    // Six fields; a blank symbol goes by the name; the junk record past MASTER's count is no
    // security; records the file holds out of order come in date order, a doubled date twice.
    {"third-party", 25,
     {{0, "APX", "F1.DAT"}, {1, "AR", "F2.DAT"}},
     {{"AR", "AR", "F2.DAT", 19941010, 20130110, 3555},
      {"OV", "OV", "F15.DAT", 19830103, 20130110, 5123}},
     {{"OV", 0, {19830103, 0.007325776f, 0.007325776f, 0.007254751f, 0.007325776f, 900000}},
      {"OV", 366, {19870315, 0.0022061046f, 0.0022061046f, 0.0021975816f, 0.0022061046f, 28800000}},
      {"OV", 370, {19870320, 0.0020666393f, 0.0020666393f, 0.0020666393f, 0.0020666393f, 1.5e9f}},
      {"OV", 3134, {20020814, 0.00304f, 0.00304f, 0.00304f, 0.00304f, 2e6f}},
      {"OV", 3135, {20020814, 0.00304f, 0.00304f, 0.00304f, 0.00304f, 2e6f}}}},
};

} // namespace

TEST(FixtureFolders, ListingHeadersAndRecordsAreWhatTheFoldersHold) {
    for (const Fixture& f : Fixtures) {
        SCOPED_TRACE(f.folder);
        const QString folder = metastockFixture(QString::fromLatin1(f.folder));
        if (folder.isEmpty())
            GTEST_SKIP() << "fixture folder " << f.folder << " not found beside the repository";
        const auto listed = listFolder(folder);
        ASSERT_EQ(listed.size(), f.count);
        for (const auto& [at, symbol, file] : f.listed)
            EXPECT_EQ(listed[at].symbol + u' ' + listed[at].file, QString::fromLatin1(symbol) + u' ' + QString::fromLatin1(file));
        for (const Expected& e : f.securities) {
            SecurityReader r;
            r.OpenFolder(folder);
            r.OpenSecurity(QString::fromLatin1(e.symbol));
            EXPECT_EQ(r.GetName() + u' ' + r.GetFileName(), QString::fromUtf8(e.name) + u' ' + QString::fromLatin1(e.file));
            EXPECT_EQ(std::tuple(r.GetFirstDate(), r.GetLastDate(), r.GetRecordCount(), r.GetPeriodicity()),
                      std::tuple(e.first, e.last, e.records, e.periodicity)) << e.symbol;
        }
        for (const Listed& l : listed) {  // records come oldest first, whatever order the file holds them in
            const auto dates = readDates(folder, l.symbol);
            EXPECT_TRUE(std::is_sorted(dates.begin(), dates.end())) << l.symbol.toStdString();
        }
        for (const auto& [symbol, at, bar] : f.bars) {
            const auto bars = readBars(folder, QString::fromLatin1(symbol));
            ASSERT_LT(at, bars.size()) << symbol;
            EXPECT_EQ(bars[at], bar) << symbol << " record " << at;
        }
    }
}

// A copy of a fixture folder, written into by `change`; the snapshot before and the folder.
std::map<QString, QByteArray> changedCopy(const char* fixture, const TempFolder& temp, const std::function<void(SecurityWriter&)>& change) {
    EXPECT_TRUE(copyFixture(QString::fromLatin1(fixture), temp.path()));
    auto before = snapshot(temp.path());
    writeFolder(temp.path(), change);
    return before;
}

// The records of a data file as they lie, times and open interest included.
std::vector<metastock::Record> recordsOf(const QString& file, int fields, char periodicity) {
    return metastock::parseData(readFileBytes(file), *metastock::Layout::of(fields, -1, periodicity), QFileInfo(file).fileName());
}

// A write keeps every record it was not asked to change: the several records of one date that
// another program wrote, the other bars of an intraday day, a bar's time, a record's open interest.
TEST(FixtureFolders, WritesKeepEveryRecordNotAskedForWithItsTimeAndOpenInterest) {
    REQUIRE_FIXTURE("third-party");
    const QString thirdParty = metastockFixture(QStringLiteral("third-party"));
    TempFolder temp;
    const QString ov = QStringLiteral("OV");
    auto expected = readBars(thirdParty, ov);
    const Bar added{20130111, 1, 2, 0.5, 1.5, 1000};
    changedCopy("third-party", temp, [&](SecurityWriter& w) { w.OpenSecurity(ov), addBars(w, {added}); });
    expected.push_back(added);
    std::stable_sort(expected.begin(), expected.end(), [](const Bar& a, const Bar& b) { return a.date < b.date; });
    EXPECT_EQ(readBars(temp.path(), ov), expected);   // in order now, a repeated day kept twice
    EXPECT_EQ(readBars(temp.path(), QStringLiteral("AR")), readBars(thirdParty, QStringLiteral("AR")));
    EXPECT_FALSE(QFileInfo::exists(temp.file(QStringLiteral("EMASTER"))));   // still MASTER only
    // A change keeps the open interest nobody sees.
    const auto geo = recordsOf(thirdParty + "/F12.DAT", 7, 'D');
    writeFolder(temp.path(), [](SecurityWriter& w) {
        w.OpenSecurity(QStringLiteral("GEO"));
        w.ChangeQuote(QStringLiteral("19950302"), QStringLiteral("-1"), -1, 1, 2, 0.5, 1.5, 10, -1);
    });
    const auto changed = recordsOf(temp.file(QStringLiteral("F12.DAT")), 7, 'D');
    ASSERT_EQ(changed.size(), geo.size());
    EXPECT_TRUE(changed[1].close == 1.5f && changed[1].openInterest == geo[1].openInterest && geo[1].openInterest != 0);

    // The two bars of one day: the second changed and the first deleted, each by its place, leave
    // the second with its own time. DeleteQuote of the day takes the whole day.
    REQUIRE_FIXTURE("intraday");
    const QString hr = QStringLiteral("2HR.DE");
    const auto bars = recordsOf(metastockFixture(QStringLiteral("intraday")) + "/F1.DAT", 7, 'I');
    ASSERT_EQ(bars.size(), 2u);
    TempFolder intraday;
    changedCopy("intraday", intraday, [&](SecurityWriter& w) {
        w.OpenSecurity(hr);
        w.ChangeNthQuote(QStringLiteral("20131115"), 1, 1, 2, 0.5, 1.5, 10);
        w.DeleteNthQuote(QStringLiteral("20131115"), 0);
    });
    const auto left = recordsOf(intraday.file(QStringLiteral("F1.DAT")), 7, 'I');
    ASSERT_EQ(left.size(), 1u);
    EXPECT_TRUE(left[0].time == bars[1].time && left[0].close == 1.5f) << left[0].time;
    writeFolder(intraday.path(), [&](SecurityWriter& w) {
        w.OpenSecurity(hr);
        w.DeleteQuote(QStringLiteral("20131115"));
        w.SaveQuotes();
    });
    EXPECT_TRUE(readBars(intraday.path(), hr).empty());
}

TEST(FixtureFolders, WritingKeepsMixedCaseNamesPerFolderValuesAndUnknownFields) {
    REQUIRE_FIXTURE("vendor-xmaster");
    TempFolder temp;
    const auto before = changedCopy("vendor-xmaster", temp, [](SecurityWriter& w) {
        w.ChangeSecurity(QStringLiteral("RCF"), QStringLiteral("RCF GROUP SPA"), QStringLiteral("RCF"));
        w.OpenSecurity(QStringLiteral("ASR"));
        w.AddQuote(20100712, -1, 1, 1, 1, 1, 1, -1);
        w.CreateSecurity(QStringLiteral("NEWX"), QString(), 1);
    });
    const auto after = snapshot(temp.path());
    EXPECT_EQ(QDir(temp.path()).entryList({QStringLiteral("*aster")}, QDir::Files, QDir::Name).join(u' '), QStringLiteral("Emaster Master Xmaster"));
    const QByteArray &m0 = before.at(QStringLiteral("Master")), &m1 = after.at(QStringLiteral("Master"));
    const QByteArray &x0 = before.at(QStringLiteral("Xmaster")), &x1 = after.at(QStringLiteral("Xmaster"));
    ASSERT_EQ(m1.size(), m0.size());
    ASSERT_EQ(x1.size(), x0.size() + 150);
    // MASTER: the header with its per-folder value stays; only the first security's last date moved.
    EXPECT_NE(m1, m0);
    EXPECT_EQ(QByteArray(m1).replace(53 + 29, 4, m0.mid(53 + 29, 4)), m0);
    // EMASTER's header, XMASTER's header (unknown word, per-folder value, copyright), the unknown
    // bytes of the renamed record and every other record stay.
    EXPECT_EQ(after.at(QStringLiteral("Emaster")).left(192), before.at(QStringLiteral("Emaster")).left(192));
    EXPECT_EQ(x1.left(150).toHex(' '), QByteArray(x0.left(150)).replace(10, 10, x1.mid(10, 10)).toHex(' '));  // but for the counts
    EXPECT_EQ(x1.mid(300, x0.size() - 300), x0.mid(300));
    EXPECT_EQ(x1.mid(150 + 62, 88), x0.mid(150 + 62, 88));
    EXPECT_EQ(x1.mid(150 + 16, 14), QByteArray("RCF GROUP SPA\0", 14));
    // A new XMASTER record takes the value every vendor record holds at 80.
    EXPECT_EQ(x1.mid(x0.size() + 1, 5), QByteArray("NEWX\0", 5));
    EXPECT_EQ(x1.mid(x0.size() + 80, 8).toHex(), x0.mid(150 + 80, 8).toHex());
    EXPECT_EQ(listFolder(temp.path())[255].name, QStringLiteral("RCF GROUP SPA"));
    EXPECT_EQ(readDates(temp.path(), QStringLiteral("ASR")).back(), 20100712);
}

TEST(FixtureFolders, AForeignXmasterIsLeftAloneWhileMasterTakesNewSecurities) {
    REQUIRE_FIXTURE("stale-emaster");
    TempFolder temp;
    const auto before = changedCopy("stale-emaster", temp, [](SecurityWriter& w) {
        w.CreateSecurity(QStringLiteral("NEW"), QStringLiteral("NEW"), 1);
        w.AddQuote(20140630, -1, 1, 1, 1, 1, 1, -1);
    });
    EXPECT_EQ(readFileBytes(temp.file(QStringLiteral("XMASTER"))), before.at(QStringLiteral("XMASTER")));
    EXPECT_EQ(readDates(temp.path(), QStringLiteral("NEW")), std::vector<qint32>{20140630});
    EXPECT_EQ(listFolder(temp.path()).size(), 41u);
}
