// What the screens count on from the reader and the writer, on folders the tests make.
#include "StoreHelpers.h"
#include "frame/Failure.h"
#include "store/ReadProgress.h"
#include "support/TestSupport.h"

#include <QFileInfo>

namespace {

bool exists(const TempFolder& folder, const char* name) { return QFileInfo::exists(folder.file(QString::fromLatin1(name))); }
bool contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

} // namespace

TEST(StoreFolders, FoldersWithoutAStore) {
    TempFolder folder;
    writeTextFile(folder.file(QStringLiteral("plain.txt")), "x");
    // The reader refuses a folder without MASTER, and says so in words a user understands.
    SecurityReader reader;
    const std::string text = failureText([&] { reader.OpenFolder(folder.path()); });
    EXPECT_TRUE(contains(text, "no MetaStock Files") && contains(text, "MASTER")) << text;

    // A path that is no folder fails for both, and says what it is.
    const std::pair<QString, const char*> noFolders[] = {{folder.file(QStringLiteral("missing")), "does not exist"},
                                                         {folder.file(QStringLiteral("plain.txt")), "not a folder"},
                                                         {QString(), "No folder"}};
    for (const auto& [path, says] : noFolders) {
        SecurityWriter writer;
        EXPECT_TRUE(contains(failureText([&] { reader.OpenFolder(path); }), says)) << path.toStdString();
        EXPECT_TRUE(contains(failureText([&] { writer.OpenFolder(path); }), says)) << path.toStdString();
    }

    // The writer opens it as an empty store; the index files come with the first security.
    SecurityWriter w;
    w.OpenFolder(folder.path());
    EXPECT_FALSE(w.SymbolExists(QStringLiteral("AAA")));
    w.CloseFolder();
    EXPECT_FALSE(exists(folder, "MASTER") || exists(folder, "EMASTER"));
    w.OpenFolder(folder.path());
    w.CreateSecurity(QStringLiteral("AAA"), QStringLiteral("AAA"), 1);
    EXPECT_TRUE(exists(folder, "MASTER") && exists(folder, "EMASTER") && exists(folder, "F1.DAT"));
    EXPECT_FALSE(exists(folder, "XMASTER"));
    w.CloseSecurity();
    w.CloseFolder();

    // The same reader, which failed on the folder, now lists it.
    reader.OpenFolder(folder.path());
    ASSERT_EQ(reader.GetSecuritiesRemaining(), 1);
    reader.NextSecurity();
    EXPECT_EQ(reader.GetSymbol(), QStringLiteral("AAA"));
    EXPECT_EQ(reader.GetFileName(), QStringLiteral("F1.DAT"));
    EXPECT_EQ(reader.GetFirstDate(), 0);

    // Its last security deleted, the store is empty: nothing listed, no failure.
    w.OpenFolder(folder.path());
    w.DeleteSecurity(QStringLiteral("AAA"));
    w.CloseFolder();
    reader.OpenFolder(folder.path());
    EXPECT_EQ(reader.GetSecuritiesRemaining(), 0);
    EXPECT_THROW(reader.NextSecurity(), Failure);
    EXPECT_FALSE(exists(folder, "F1.DAT"));
}

TEST(StoreReading, CursorsCountDownAndTheLastRecordStaysCurrent) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801, 20050802, 20050803});
    makeSecurity(folder.path(), QStringLiteral("BBB"), {});

    SecurityReader r, sheet;
    r.OpenFolder(folder.path());
    EXPECT_EQ(r.GetSecuritiesRemaining(), 2);
    r.NextSecurity();
    EXPECT_EQ(r.GetSecuritiesRemaining(), 1);
    EXPECT_EQ(r.GetName(), QStringLiteral("AAA"));
    EXPECT_EQ(r.GetLastDate(), 20050803);
    // A second reader on the same folder while the first one is open on it.
    sheet.OpenFolder(folder.path());
    sheet.OpenSecurity(QStringLiteral("AAA"));
    EXPECT_EQ(sheet.GetRecordCount(), 3);
    EXPECT_EQ(r.GetSymbol(), QStringLiteral("AAA"));
    r.NextSecurity();
    EXPECT_EQ(r.GetSecuritiesRemaining(), 0);
    EXPECT_EQ(r.GetSymbol(), QStringLiteral("BBB"));
    EXPECT_EQ(r.GetLastDate(), 0);

    r.FindSecurity(QStringLiteral("AAA"));
    EXPECT_EQ(r.GetSymbol(), QStringLiteral("AAA"));
    EXPECT_EQ(r.GetFirstDate(), 20050801);
    EXPECT_THROW(r.FindSecurity(QStringLiteral("ZZZ")), Failure);
    EXPECT_THROW(r.OpenSecurity(QStringLiteral("ZZZ")), Failure);

    r.OpenSecurity(QStringLiteral("AAA"));
    r.SetRecordMode(2);
    EXPECT_EQ(r.GetFirstDate(), 20050801);
    EXPECT_EQ(r.GetPeriodicity(), 1);
    EXPECT_EQ(r.GetRecordCount(), 3);
    for (int seen = 0; r.GetRecordsRemaining() > 0; ++seen) {
        EXPECT_EQ(r.GetRecordsRemaining(), 3 - seen);
        r.NextRecord();
    }
    EXPECT_THROW(r.NextRecord(), Failure);
    EXPECT_EQ(r.GetDate(), 20050803);
    EXPECT_EQ(r.GetClose(), barOf(20050803).close);

    r.OpenSecurity(QStringLiteral("BBB"));
    EXPECT_EQ(r.GetRecordCount(), 0);
    EXPECT_EQ(r.GetRecordsRemaining(), 0);

    r.CloseSecurity();
    r.CloseFolder();
    r.CloseFolder();
    r.CloseSecurity();  // after CloseFolder: no harm
    EXPECT_THROW(r.GetName(), Failure);
}

TEST(StoreWriting, RecordsComeBackOldestFirstWhateverTheOrderOfWriting) {
    TempFolder folder;
    const auto days = tradingDays(20050801, 10);
    SecurityWriter w;
    w.OpenFolder(folder.path());
    w.CreateSecurity(QStringLiteral("AAA"), QStringLiteral("AAA"), 1);
    // A download run writes from the last record to the first.
    const auto bars = barsOf(days);
    addBars(w, std::vector<Bar>(bars.rbegin(), bars.rend()));
    w.CloseSecurity();
    w.CloseFolder();
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), days);

    // The user inserts a date in the middle, one before all and one after all.
    w.OpenFolder(folder.path());
    w.OpenSecurity(QStringLiteral("AAA"));
    for (qint32 d : {20050806, 20050720, 20050901}) {
        EXPECT_FALSE(w.DateExists(QString::number(d)));
        const Bar b = barOf(d);
        w.AddQuote(d, -1, b.open, b.high, b.low, b.close, b.volume, -1.0);
    }
    w.CloseSecurity();
    w.CloseFolder();
    auto expected = days;
    expected.insert(expected.begin(), 20050720);
    expected.insert(std::upper_bound(expected.begin(), expected.end(), 20050806), 20050806);
    expected.push_back(20050901);
    EXPECT_EQ(readBars(folder.path(), QStringLiteral("AAA")), barsOf(expected));
}

TEST(StoreWriting, AddingADateTheSecurityHoldsReplacesIt) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801, 20050802, 20050803});
    SecurityWriter w;
    w.OpenFolder(folder.path());
    w.OpenSecurity(QStringLiteral("AAA"));
    EXPECT_TRUE(w.DateExists(QStringLiteral("20050802")));
    w.AddQuote(20050802, 0, 1, 2, 0.5, 1.5, 77, 0);  // the NSE path: no DateExists first
    // The Yahoo merge, from the last record to the first: a new date, then one deleted and added.
    for (qint32 d : {20050804, 20050803}) {
        if (w.DateExists(QString::number(d)))
            w.DeleteQuote(QString::number(d));
        w.AddQuote(d, 0, 5, 6, 4, 5.5, 9, 0);
    }
    w.SaveQuotes();
    w.CloseSecurity();
    w.CloseFolder();
    EXPECT_EQ(readBars(folder.path(), QStringLiteral("AAA")),
              (std::vector<Bar>{barOf(20050801), {20050802, 1, 2, 0.5, 1.5, 77}, {20050803, 5, 6, 4, 5.5, 9},
                                {20050804, 5, 6, 4, 5.5, 9}}));
}

TEST(StoreWriting, BatchesWaitForSaveQuotesWhileMarkMinusOneAndChangesWriteThrough) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801, 20050802, 20050803});
    SecurityWriter w;
    w.OpenFolder(folder.path());
    w.OpenSecurity(QStringLiteral("AAA"));

    w.AddQuote(20050804, 0, 1, 1, 1, 1, 1, 0);
    w.DeleteQuote(QStringLiteral("20050801"));
    EXPECT_TRUE(w.DateExists(QStringLiteral("20050804")));  // the writer sees its own batch
    EXPECT_FALSE(w.DateExists(QStringLiteral("20050801")));
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), (std::vector<qint32>{20050801, 20050802, 20050803}));
    w.SaveQuotes();
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), (std::vector<qint32>{20050802, 20050803, 20050804}));

    w.AddQuote(20050805, -1, 2, 2, 2, 2, 2, -1.0);
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")).back(), 20050805);
    w.ChangeQuote(QStringLiteral("20050802"), QStringLiteral("-1"), -1, 7, 8, 6, 7.5, 100, -1.0);
    EXPECT_EQ(readBars(folder.path(), QStringLiteral("AAA"))[0], (Bar{20050802, 7, 8, 6, 7.5, 100}));
    // The date is the key: a change can't make a record of a date the security lacks.
    EXPECT_THROW(w.ChangeQuote(QStringLiteral("20050901"), QStringLiteral("-1"), -1, 1, 1, 1, 1, 1, -1), Failure);
    w.CloseSecurity();
    w.CloseFolder();
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), (std::vector<qint32>{20050802, 20050803, 20050804, 20050805}));
}

TEST(StoreWriting, DeleteQuotesTakesBothEndsOfTheRange) {
    const auto days = tradingDays(20050801, 10);  // 1..5, 8..12 August
    const std::vector<qint32> fromNinth(days.begin() + 6, days.end());
    const struct {
        const char* first;
        const char* last;
        std::vector<qint32> left;
    } cases[] = {
        {"20050802", "20050804", {20050801, 20050805, 20050808, 20050809, 20050810, 20050811, 20050812}},
        {"20050806", "20050807", days},  // a weekend: nothing
        {"20050101", "20050808", fromNinth},
        {"20050812", "20051231", std::vector<qint32>(days.begin(), days.end() - 1)},
        {"20050101", "20051231", {}},
    };
    for (const auto& c : cases) {
        TempFolder folder;
        makeSecurity(folder.path(), QStringLiteral("AAA"), days);
        SecurityWriter w;
        w.OpenFolder(folder.path());
        w.FindSecurity(QStringLiteral("AAA"));
        w.DeleteQuotes(QString::fromLatin1(c.first), QString::fromLatin1(c.last));
        w.CloseFolder();  // Delete Data closes the folder before the security
        w.CloseSecurity();
        EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), c.left) << c.first << ".." << c.last;
    }
}

TEST(StoreWriting, SeedOfANewSecurityIsItsFirstAndLastDateUntilRecordsCome) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("TCS"), {20050801, 20050802});
    SecurityWriter w;
    w.OpenFolder(folder.path());
    for (const QString& symbol : {QStringLiteral("INFY"), QStringLiteral("TCS")}) {
        if (w.SymbolExists(symbol))
            w.DeleteSecurity(symbol);
        w.CreateSecurity(symbol, symbol, 1);
        w.AddQuote(20050806, 0, 0, 0, 0, 0, 0, 0.0);
        w.DeleteQuote(QStringLiteral("20050806"));
        w.CloseSecurity();
    }
    w.CloseFolder();
    const auto listed = listFolder(folder.path());
    ASSERT_EQ(listed.size(), 2u);
    for (const Listed& l : listed) {
        EXPECT_EQ(l.first, 20050806) << l.symbol.toStdString();
        EXPECT_EQ(l.last, 20050806) << l.symbol.toStdString();
    }
    // The security made again starts empty, with a file number not used before.
    EXPECT_TRUE(readBars(folder.path(), QStringLiteral("TCS")).empty());
    EXPECT_EQ(listed[1].file, QStringLiteral("F3.DAT"));

    w.OpenFolder(folder.path());
    w.OpenSecurity(QStringLiteral("TCS"));
    addBars(w, {barOf(20050808), barOf(20050809)});
    w.CloseSecurity();
    w.CloseFolder();
    SecurityReader r;
    r.OpenFolder(folder.path());
    r.FindSecurity(QStringLiteral("TCS"));
    EXPECT_EQ(r.GetFirstDate(), 20050808);
    EXPECT_EQ(r.GetLastDate(), 20050809);
}

TEST(StoreWriting, SymbolsAreCheckedOnCreateAndRename) {
    TempFolder folder;
    SecurityWriter w;
    w.OpenFolder(folder.path());
    EXPECT_TRUE(contains(failureText([&] { w.CreateSecurity(QStringLiteral("ABCDEFGHIJKLMNO"), QStringLiteral("X"), 1); }),
                         "longer than 14 characters"));
    w.CreateSecurity(QStringLiteral("ABCDEFGHIJKLMN"), QStringLiteral("FOURTEEN"), 1);
    w.CreateSecurity(QStringLiteral("OTHER"), QStringLiteral("OTHER"), 1);
    EXPECT_THROW(w.CreateSecurity(QStringLiteral("other"), QStringLiteral("X"), 1), Failure);
    for (const char* taken : {"ABCDEFGHIJKLMN", "abcdefghijklmn"}) {
        const std::string text = failureText([&] { w.ChangeSecurity(QStringLiteral("OTHER"), QStringLiteral("X"), QString::fromLatin1(taken)); });
        EXPECT_TRUE(contains(text, "already holds a security with the symbol") && contains(text, taken)) << text;
    }
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

TEST(StoreWriting, ObjectGoesThroughManyCyclesAndSurvivesItsFailures) {
    TempFolder a, b;
    makeSecurity(a.path(), QStringLiteral("AAA"), {20050801});
    makeSecurity(b.path(), QStringLiteral("BBB"), {20050801});
    SecurityWriter w;
    EXPECT_THROW(w.SymbolExists(QStringLiteral("A")), Failure);
    EXPECT_THROW(w.CreateSecurity(QStringLiteral("A"), QStringLiteral("A"), 1), Failure);
    for (int i = 0; i < 3; ++i) {
        for (const auto& [folder, symbol] : {std::pair(a.path(), QStringLiteral("AAA")), std::pair(b.path(), QStringLiteral("BBB"))}) {
            w.OpenFolder(folder);
            EXPECT_THROW(w.AddQuote(20050801, 0, 1, 1, 1, 1, 1, 0), Failure);  // nothing selected
            EXPECT_THROW(w.OpenSecurity(QStringLiteral("NONE")), Failure);
            EXPECT_THROW(w.DeleteSecurity(QStringLiteral("NONE")), Failure);
            w.OpenSecurity(symbol);
            EXPECT_THROW(w.AddQuote(20050231, 0, 1, 1, 1, 1, 1, 0), Failure);  // no such day
            EXPECT_THROW(w.DateExists(QStringLiteral("yesterday")), Failure);
            w.AddQuote(20050802 + i, -1, 1, 1, 1, 1, 1, -1);
            w.CloseSecurity();
            w.OpenSecurity(symbol);
            EXPECT_TRUE(w.DateExists(QString::number(20050802 + i)));
            w.CloseSecurity();
            w.CloseFolder();
            w.CloseSecurity();
        }
    }
    EXPECT_EQ(readDates(b.path(), QStringLiteral("BBB")), (std::vector<qint32>{20050801, 20050802, 20050803, 20050804}));
}

TEST(StoreProgress, WithoutAWindowProgressIsSilentAndNeverCancelled) {
    ReadProgress::setFactory({});
    auto p = ReadProgress::create();
    ASSERT_NE(p, nullptr);
    p->Show();
    p->SetRange(0, 3);
    p->StepIt();
    EXPECT_FALSE(p->GetCancelled());
}
