// What the screens count on from the reader and the writer, on folders the tests make.
#include "StoreHelpers.h"
#include "frame/Failure.h"
#include "store/ReadProgress.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QFileInfo>

namespace {

bool exists(const TempFolder& folder, const char* name) { return QFileInfo::exists(folder.file(QString::fromLatin1(name))); }

// A folder with one security "AAA" holding the given dates.
void makeSecurity(const QString& folder, const QString& symbol, const std::vector<qint32>& dates) {
    SecurityWriter w;
    w.OpenFolder(folder);
    w.CreateSecurity(symbol, symbol, 1);
    std::vector<Bar> bars;
    for (qint32 d : dates)
        bars.push_back(barOf(d));
    addBars(w, bars);
    w.CloseSecurity();
    w.CloseFolder();
}

std::string failureText(const std::function<void()>& step) {
    try {
        step();
    } catch (const Failure& f) {
        return f.Description.toStdString();
    }
    return "(no failure)";
}

} // namespace

TEST(StoreFolders, ReaderRefusesAFolderWithoutMaster) {
    TempFolder folder;
    SecurityReader reader;
    const std::string text = failureText([&] { reader.OpenFolder(folder.path()); });
    EXPECT_NE(text.find("MASTER"), std::string::npos) << text;
    EXPECT_NE(text.find("no MetaStock Files"), std::string::npos) << text;
    // The object stays usable.
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801});
    reader.OpenFolder(folder.path());
    EXPECT_EQ(reader.GetSecuritiesRemaining(), 1);
}

TEST(StoreFolders, PathThatIsNoFolderFailsForBoth) {
    TempFolder folder;
    writeTextFile(folder.file(QStringLiteral("plain.txt")), "x");
    for (const QString& path : {folder.file(QStringLiteral("missing")), folder.file(QStringLiteral("plain.txt")), QString()}) {
        SecurityReader reader;
        SecurityWriter writer;
        EXPECT_THROW(reader.OpenFolder(path), Failure) << path.toStdString();
        EXPECT_THROW(writer.OpenFolder(path), Failure) << path.toStdString();
    }
}

TEST(StoreFolders, WriterOpensAnEmptyFolderAndMakesIndexFilesWithTheFirstSecurity) {
    TempFolder folder;
    SecurityWriter w;
    w.OpenFolder(folder.path());
    EXPECT_FALSE(w.SymbolExists(QStringLiteral("AAA")));
    w.CloseFolder();
    EXPECT_FALSE(exists(folder, "MASTER"));
    EXPECT_FALSE(exists(folder, "EMASTER"));

    w.OpenFolder(folder.path());
    w.CreateSecurity(QStringLiteral("AAA"), QStringLiteral("AAA"), 1);
    EXPECT_TRUE(exists(folder, "MASTER"));
    EXPECT_TRUE(exists(folder, "EMASTER"));
    EXPECT_TRUE(exists(folder, "F1.DAT"));
    EXPECT_FALSE(exists(folder, "XMASTER"));
    w.CloseSecurity();
    w.CloseFolder();

    const auto listed = listFolder(folder.path());
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_EQ(listed[0].symbol, QStringLiteral("AAA"));
    EXPECT_EQ(listed[0].file, QStringLiteral("F1.DAT"));
    EXPECT_EQ(listed[0].first, 0);
}

TEST(StoreFolders, EmptyStoreListsNothing) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {});
    {
        SecurityWriter w;
        w.OpenFolder(folder.path());
        w.DeleteSecurity(QStringLiteral("AAA"));
        w.CloseFolder();
    }
    SecurityReader reader;
    reader.OpenFolder(folder.path());
    EXPECT_EQ(reader.GetSecuritiesRemaining(), 0);
    EXPECT_THROW(reader.NextSecurity(), Failure);
    EXPECT_FALSE(exists(folder, "F1.DAT"));
}

TEST(StoreReading, CursorsCountDownAndTheLastRecordStaysCurrent) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801, 20050802, 20050803});
    makeSecurity(folder.path(), QStringLiteral("BBB"), {});

    SecurityReader r;
    r.OpenFolder(folder.path());
    EXPECT_EQ(r.GetSecuritiesRemaining(), 2);
    r.NextSecurity();
    EXPECT_EQ(r.GetSecuritiesRemaining(), 1);
    EXPECT_EQ(r.GetName(), QStringLiteral("AAA"));
    EXPECT_EQ(r.GetLastDate(), 20050803);
    r.NextSecurity();
    EXPECT_EQ(r.GetSecuritiesRemaining(), 0);
    EXPECT_EQ(r.GetSymbol(), QStringLiteral("BBB"));
    EXPECT_EQ(r.GetLastDate(), 0);

    r.OpenSecurity(QStringLiteral("AAA"));
    r.SetRecordMode(2);
    EXPECT_EQ(r.GetFirstDate(), 20050801);
    EXPECT_EQ(r.GetPeriodicity(), 1);
    EXPECT_EQ(r.GetRecordCount(), 3);
    int seen = 0;
    while (r.GetRecordsRemaining() > 0) {
        EXPECT_EQ(r.GetRecordsRemaining(), 3 - seen);
        r.NextRecord();
        ++seen;
    }
    EXPECT_EQ(seen, 3);
    EXPECT_EQ(r.GetDate(), 20050803);
    EXPECT_EQ(r.GetClose(), barOf(20050803).close);
    EXPECT_THROW(r.NextRecord(), Failure);
    EXPECT_EQ(r.GetDate(), 20050803);

    r.OpenSecurity(QStringLiteral("BBB"));
    EXPECT_EQ(r.GetRecordCount(), 0);
    EXPECT_EQ(r.GetRecordsRemaining(), 0);

    r.CloseSecurity();
    r.CloseFolder();
    r.CloseFolder();
    r.CloseSecurity();  // after CloseFolder: no harm
}

TEST(StoreReading, FindSecurityByNameAndUnknownNamesFail) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801, 20050805});
    SecurityReader r;
    r.OpenFolder(folder.path());
    r.FindSecurity(QStringLiteral("AAA"));
    EXPECT_EQ(r.GetSymbol(), QStringLiteral("AAA"));
    EXPECT_EQ(r.GetFirstDate(), 20050801);
    EXPECT_EQ(r.GetLastDate(), 20050805);
    EXPECT_THROW(r.FindSecurity(QStringLiteral("ZZZ")), Failure);
    EXPECT_THROW(r.OpenSecurity(QStringLiteral("ZZZ")), Failure);
    r.CloseSecurity();
    r.CloseFolder();
    EXPECT_THROW(r.GetName(), Failure);
}

TEST(StoreReading, TwoReadersOnOneFolder) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801, 20050802});
    SecurityReader list, sheet;
    list.OpenFolder(folder.path());
    list.NextSecurity();
    sheet.OpenFolder(folder.path());
    sheet.OpenSecurity(QStringLiteral("AAA"));
    EXPECT_EQ(sheet.GetRecordCount(), 2);
    EXPECT_EQ(list.GetSymbol(), QStringLiteral("AAA"));
}

TEST(StoreWriting, RecordsComeBackOldestFirstWhateverTheOrderOfWriting) {
    TempFolder folder;
    const auto days = tradingDays(20050801, 10);
    {
        SecurityWriter w;
        w.OpenFolder(folder.path());
        w.CreateSecurity(QStringLiteral("AAA"), QStringLiteral("AAA"), 1);
        // A download run writes from the last record to the first.
        for (auto it = days.rbegin(); it != days.rend(); ++it) {
            const Bar b = barOf(*it);
            w.AddQuote(b.date, 0, b.open, b.high, b.low, b.close, b.volume, 0);
        }
        w.SaveQuotes();
        w.CloseSecurity();
        w.CloseFolder();
    }
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), days);
    {
        // The user inserts a date in the middle, a date before all and one after all.
        SecurityWriter w;
        w.OpenFolder(folder.path());
        w.OpenSecurity(QStringLiteral("AAA"));
        for (qint32 d : {20050806, 20050720, 20050901}) {
            EXPECT_FALSE(w.DateExists(QString::number(d)));
            const Bar b = barOf(d);
            w.AddQuote(d, -1, b.open, b.high, b.low, b.close, b.volume, -1.0);
        }
        w.CloseSecurity();
        w.CloseFolder();
    }
    auto expected = days;
    expected.insert(expected.begin(), 20050720);
    expected.insert(std::upper_bound(expected.begin(), expected.end(), 20050806), 20050806);
    expected.push_back(20050901);
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), expected);
    const auto bars = readBars(folder.path(), QStringLiteral("AAA"));
    for (const Bar& b : bars)
        EXPECT_EQ(b, barOf(b.date)) << b.date;
}

TEST(StoreWriting, AddingAnExistingDateReplacesIt) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801, 20050802, 20050803});
    SecurityWriter w;
    w.OpenFolder(folder.path());
    w.OpenSecurity(QStringLiteral("AAA"));
    EXPECT_TRUE(w.DateExists(QStringLiteral("20050802")));
    w.AddQuote(20050802, 0, 1, 2, 0.5, 1.5, 77, 0);      // the NSE path: no DateExists first
    w.AddQuote(20050803, 0, 3, 4, 2.5, 3.5, 88, 0);
    w.SaveQuotes();
    w.CloseSecurity();
    w.CloseFolder();
    const auto bars = readBars(folder.path(), QStringLiteral("AAA"));
    ASSERT_EQ(bars.size(), 3u);
    EXPECT_EQ(bars[1], (Bar{20050802, 1, 2, 0.5, 1.5, 77}));
    EXPECT_EQ(bars[2], (Bar{20050803, 3, 4, 2.5, 3.5, 88}));
}

TEST(StoreWriting, DeleteThenAddInOneBatchReplaces) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801, 20050802});
    SecurityWriter w;
    w.OpenFolder(folder.path());
    w.OpenSecurity(QStringLiteral("AAA"));
    for (qint32 d : {20050803, 20050802}) {  // Yahoo merge: from the last record to the first
        if (w.DateExists(QString::number(d)))
            w.DeleteQuote(QString::number(d));
        w.AddQuote(d, 0, 5, 6, 4, 5.5, 9, 0);
    }
    w.SaveQuotes();
    w.CloseSecurity();
    w.CloseFolder();
    const auto bars = readBars(folder.path(), QStringLiteral("AAA"));
    ASSERT_EQ(bars.size(), 3u);
    EXPECT_EQ(bars[0], barOf(20050801));
    EXPECT_EQ(bars[1], (Bar{20050802, 5, 6, 4, 5.5, 9}));
    EXPECT_EQ(bars[2], (Bar{20050803, 5, 6, 4, 5.5, 9}));
}

TEST(StoreWriting, WhenChangesReachTheDisk) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801, 20050802, 20050803});
    SecurityWriter w;
    w.OpenFolder(folder.path());
    w.OpenSecurity(QStringLiteral("AAA"));

    // Mark 0 and DeleteQuote wait for SaveQuotes...
    w.AddQuote(20050804, 0, 1, 1, 1, 1, 1, 0);
    w.DeleteQuote(QStringLiteral("20050801"));
    EXPECT_TRUE(w.DateExists(QStringLiteral("20050804")));  // the writer sees its own batch
    EXPECT_EQ(w.DateExists(QStringLiteral("20050801")), false);
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), (std::vector<qint32>{20050801, 20050802, 20050803}));
    w.SaveQuotes();
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), (std::vector<qint32>{20050802, 20050803, 20050804}));

    // ...mark -1 and ChangeQuote go through at once.
    w.AddQuote(20050805, -1, 2, 2, 2, 2, 2, -1.0);
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")).back(), 20050805);
    w.ChangeQuote(QStringLiteral("20050802"), QStringLiteral("-1"), -1, 7, 8, 6, 7.5, 100, -1.0);
    EXPECT_EQ(readBars(folder.path(), QStringLiteral("AAA"))[0], (Bar{20050802, 7, 8, 6, 7.5, 100}));
    EXPECT_THROW(w.ChangeQuote(QStringLiteral("20050901"), QStringLiteral("-1"), -1, 1, 1, 1, 1, 1, -1), Failure);
    w.CloseSecurity();
    w.CloseFolder();
}

TEST(StoreWriting, DeleteQuotesTakesBothEndsOfTheRange) {
    const auto days = tradingDays(20050801, 10);  // 1..5, 8..12 August
    struct Case {
        const char* first;
        const char* last;
        std::vector<qint32> left;
    };
    const Case cases[] = {
        {"20050802", "20050804", {20050801, 20050805, 20050808, 20050809, 20050810, 20050811, 20050812}},
        {"20050806", "20050807", days},                                        // a weekend: nothing
        {"20050101", "20050808", {20050809, 20050810, 20050811, 20050812}},   // from before the first
        {"20050812", "20051231", {20050801, 20050802, 20050803, 20050804, 20050805, 20050808, 20050809, 20050810, 20050811}},
        {"20050101", "20051231", {}},
    };
    for (const Case& c : cases) {
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

TEST(StoreWriting, SeedOfANewSecurityIsItsFirstAndLastDate) {
    TempFolder folder;
    SecurityWriter w;
    w.OpenFolder(folder.path());
    for (const char* sym : {"INFY", "TCS"}) {
        const QString symbol = QString::fromLatin1(sym);
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
    EXPECT_TRUE(readBars(folder.path(), QStringLiteral("INFY")).empty());

    // Records added later take over the dates.
    {
        SecurityWriter again;
        again.OpenFolder(folder.path());
        again.OpenSecurity(QStringLiteral("TCS"));
        addBars(again, {barOf(20050808), barOf(20050809)});
        again.CloseSecurity();
        again.CloseFolder();
    }
    SecurityReader r;
    r.OpenFolder(folder.path());
    r.FindSecurity(QStringLiteral("TCS"));
    EXPECT_EQ(r.GetFirstDate(), 20050808);
    EXPECT_EQ(r.GetLastDate(), 20050809);
}

TEST(StoreWriting, CreateAgainAfterDeleteStartsEmpty) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801, 20050802});
    SecurityWriter w;
    w.OpenFolder(folder.path());
    ASSERT_TRUE(w.SymbolExists(QStringLiteral("AAA")));
    w.DeleteSecurity(QStringLiteral("AAA"));
    EXPECT_FALSE(w.SymbolExists(QStringLiteral("AAA")));
    w.CreateSecurity(QStringLiteral("AAA"), QStringLiteral("AAA"), 1);
    w.CloseSecurity();
    w.CloseFolder();
    EXPECT_TRUE(readBars(folder.path(), QStringLiteral("AAA")).empty());
    // The deleted security's file number is not used again.
    EXPECT_EQ(listFolder(folder.path())[0].file, QStringLiteral("F2.DAT"));
}

TEST(StoreWriting, ObjectGoesThroughManyCycles) {
    TempFolder a, b;
    makeSecurity(a.path(), QStringLiteral("AAA"), {20050801});
    makeSecurity(b.path(), QStringLiteral("BBB"), {20050801});
    SecurityWriter w;
    for (int i = 0; i < 3; ++i) {
        for (const auto& [folder, symbol] : {std::pair(a.path(), QStringLiteral("AAA")), std::pair(b.path(), QStringLiteral("BBB"))}) {
            w.OpenFolder(folder);
            w.OpenSecurity(symbol);
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

TEST(StoreWriting, OperationsWithoutFolderOrSecurityFailAndLeaveTheObjectUsable) {
    TempFolder folder;
    SecurityWriter w;
    EXPECT_THROW(w.SymbolExists(QStringLiteral("A")), Failure);
    EXPECT_THROW(w.CreateSecurity(QStringLiteral("A"), QStringLiteral("A"), 1), Failure);
    w.OpenFolder(folder.path());
    EXPECT_THROW(w.AddQuote(20050801, 0, 1, 1, 1, 1, 1, 0), Failure);
    EXPECT_THROW(w.OpenSecurity(QStringLiteral("NONE")), Failure);
    EXPECT_THROW(w.DeleteSecurity(QStringLiteral("NONE")), Failure);
    w.CreateSecurity(QStringLiteral("A"), QStringLiteral("A"), 1);
    EXPECT_THROW(w.AddQuote(20050231, 0, 1, 1, 1, 1, 1, 0), Failure);  // no such day
    EXPECT_THROW(w.DateExists(QStringLiteral("yesterday")), Failure);
    w.AddQuote(20050801, -1, 1, 1, 1, 1, 1, -1);
    w.CloseFolder();
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("A")), std::vector<qint32>{20050801});
}

TEST(StoreProgress, DefaultProgressIsSilentAndNeverCancelled) {
    ReadProgress::setFactory({});
    auto p = ReadProgress::create();
    ASSERT_NE(p, nullptr);
    p->Show();
    p->SetRange(0, 3);
    p->SetMessage(QStringLiteral("Progress...."));
    p->StepIt();
    EXPECT_FALSE(p->GetCancelled());
    p->Hide();
}
