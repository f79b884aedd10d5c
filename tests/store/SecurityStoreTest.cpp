// What the screens count on from the reader and the writer, on folders the tests make.
#include "StoreHelpers.h"
#include "frame/Failure.h"
#include "store/ReadProgress.h"
#include "support/TestSupport.h"

#include "store/StoreFiles.h"

#include <QFile>
#include <QFileInfo>

#include <tuple>

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

    // The writer opens it as an empty store; the index files come when the folder closes after
    // the first security.
    SecurityWriter w;
    w.OpenFolder(folder.path());
    EXPECT_FALSE(w.SymbolExists(QStringLiteral("AAA")));
    w.CloseFolder();
    EXPECT_FALSE(exists(folder, "MASTER") || exists(folder, "EMASTER"));
    w.OpenFolder(folder.path());
    w.CreateSecurity(QStringLiteral("AAA"), QStringLiteral("AAA"), 1);
    EXPECT_TRUE(exists(folder, "F1.DAT"));
    EXPECT_FALSE(exists(folder, "MASTER") || exists(folder, "EMASTER"));
    w.CloseSecurity();
    w.CloseFolder();
    EXPECT_TRUE(exists(folder, "MASTER") && exists(folder, "EMASTER"));
    EXPECT_FALSE(exists(folder, "XMASTER"));

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

TEST(StoreWriting, SecuritiesAreFoundByTheirSymbolAfterOthersAreDeletedInTheSameFolder) {
    TempFolder folder;
    SecurityWriter w;
    w.OpenFolder(folder.path());
    for (const char* symbol : {"AAA", "BBB", "CCC", "DDD"})
        w.CreateSecurity(QString::fromLatin1(symbol), QString(), 1);
    EXPECT_TRUE(w.SymbolExists(QStringLiteral("ddd")));
    w.DeleteSecurity(QStringLiteral("BBB"));
    EXPECT_FALSE(w.SymbolExists(QStringLiteral("BBB")));
    w.OpenSecurity(QStringLiteral("ccc"));
    w.AddQuote(20050801, -1, 1, 1, 1, 1, 1, -1);
    w.DeleteSecurity(QStringLiteral("AAA"));
    w.CreateSecurity(QStringLiteral("BBB"), QString(), 1);
    w.OpenSecurity(QStringLiteral("DDD"));
    w.AddQuote(20050802, -1, 2, 2, 2, 2, 2, -1);
    w.CloseFolder();
    const auto listed = listFolder(folder.path());
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_EQ(listed[0].symbol + listed[1].symbol + listed[2].symbol, QStringLiteral("CCCDDDBBB"));
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("CCC")), std::vector<qint32>{20050801});
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("DDD")), std::vector<qint32>{20050802});
    // The data files of the deleted securities went once the index no longer listed them.
    EXPECT_FALSE(exists(folder, "F1.DAT") || exists(folder, "F2.DAT"));
    EXPECT_EQ(listed[2].file, QStringLiteral("F5.DAT"));

    // Another program's folder may hold symbols that differ only in case: the exact one is found.
    for (const auto& [file, at] : {std::pair{"MASTER", 2 * 53 + 36}, std::pair{"EMASTER", 2 * 192 + 11}}) {
        QByteArray bytes = readFileBytes(folder.file(QString::fromLatin1(file)));
        ASSERT_EQ(bytes.mid(at, 3), "DDD") << file;
        bytes.replace(at, 3, "ccc");
        writeTextFile(folder.file(QString::fromLatin1(file)), bytes);
    }
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("ccc")), std::vector<qint32>{20050802});
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("CCC")), std::vector<qint32>{20050801});
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
    // Index text is Windows-1252: a character outside it is refused, never stored as "?".
    for (const auto& [symbol, name, character] : {std::tuple("\u03A9MEGA", "X", "\u03A9"), std::tuple("OK", "\u4E2D\u6587", "\u4E2D")}) {
        const std::string text = failureText([&] { w.CreateSecurity(QString::fromUtf8(symbol), QString::fromUtf8(name), 1); });
        EXPECT_TRUE(contains(text, "which the store cannot hold") && contains(text, character)) << text;
        EXPECT_THROW(w.ChangeSecurity(QStringLiteral("OTHER"), QString::fromUtf8(name), QString::fromUtf8(symbol)), Failure);
    }
    EXPECT_FALSE(w.SymbolExists(QStringLiteral("?MEGA")));
    w.ChangeSecurity(QStringLiteral("OTHER"), QStringLiteral("A Long Name Of Over Sixteen"), QStringLiteral("OTHER"));
    w.CreateSecurity(QStringLiteral("CAF\u00C9"), QStringLiteral("CAF\u00C9"), 1);
    w.ChangeSecurity(QStringLiteral("CAF\u00C9"), QStringLiteral("Caf\u00E9 \u20AC"), QStringLiteral("\u20ACUR"));
    w.ChangeSecurity(QStringLiteral("ABCDEFGHIJKLMN"), QStringLiteral("Renamed"), QStringLiteral("NEWSYM"));
    w.CloseFolder();
    const auto listed = listFolder(folder.path());
    ASSERT_EQ(listed.size(), 3u);
    // A renamed security is found again by the name and the symbol as typed.
    SecurityReader r;
    r.OpenFolder(folder.path());
    r.FindSecurity(QStringLiteral("Caf\u00E9 \u20AC"));
    EXPECT_EQ(r.GetSymbol(), QStringLiteral("\u20ACUR"));
    r.OpenSecurity(QStringLiteral("\u20ACur"));
    EXPECT_EQ(r.GetName(), QStringLiteral("Caf\u00E9 \u20AC"));
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

TEST(StoreWriting, ABatchThatAFailureCutsShortIsNotStored) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801, 20050802});
    const auto before = snapshot(folder.path());
    // The writer is released while the failure of the third record unwinds: the two records
    // before it are not stored.
    const std::string text = failureText([&] {
        SecurityWriter w;
        w.OpenFolder(folder.path());
        w.OpenSecurity(QStringLiteral("AAA"));
        w.AddQuote(20050803, 0, 1, 1, 1, 1, 1, 0);
        w.AddQuote(20050804, 0, 1, 1, 1, 1, 1, 0);
        w.AddQuote(20050805, 0, 1e39, 1, 1, 1, 1, 0);
        w.SaveQuotes();
    });
    EXPECT_TRUE(contains(text, "1e+39 cannot be stored")) << text;
    EXPECT_EQ(snapshot(folder.path()), before);
    // Released in the ordinary way, a writer stores its batch (the download runs count on it).
    {
        SecurityWriter w;
        w.OpenFolder(folder.path());
        w.OpenSecurity(QStringLiteral("AAA"));
        w.AddQuote(20050803, 0, 1, 1, 1, 1, 1, 0);
        passOver([&] { w.AddQuote(20050804, 0, 1e39, 1, 1, 1, 1, 0); });
        w.SaveQuotes();
    }
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), (std::vector<qint32>{20050801, 20050802, 20050803}));
}

TEST(StoreWriting, ReadOnlyFilesAreRefusedBeforeAnythingIsWritten) {
    const struct {
        const char* file;
        const char* step;
    } cases[] = {
        {"MASTER", "create"}, {"EMASTER", "create"}, {"MASTER", "append"}, {"F1.DAT", "append"},
        {"F1.DAT", "insert an older date"}, {"F1.DAT", "delete the security"}, {"F1.DAT", "delete a range"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.file) + ", " + c.step);
        TempFolder folder;
        makeSecurity(folder.path(), QStringLiteral("AAA"), {20050802, 20050803});
        const QString path = folder.file(QString::fromLatin1(c.file));
        const auto permissions = QFile::permissions(path) & ~(QFile::WriteOwner | QFile::WriteUser | QFile::WriteGroup | QFile::WriteOther);
        ASSERT_TRUE(QFile::setPermissions(path, permissions));
        const auto before = snapshot(folder.path());
        const std::string step = c.step;
        const std::string text = failureText([&] {
            SecurityWriter w;
            w.OpenFolder(folder.path());
            if (step == "create") {
                w.CreateSecurity(QStringLiteral("BBB"), QStringLiteral("BBB"), 1);
            } else if (step == "delete the security") {
                w.DeleteSecurity(QStringLiteral("AAA"));
            } else {
                w.OpenSecurity(QStringLiteral("AAA"));
                if (step == "delete a range")
                    w.DeleteQuotes(QStringLiteral("20050803"), QStringLiteral("20050803"));
                else
                    w.AddQuote(step == "append" ? 20050804 : 20050801, -1, 1, 1, 1, 1, 1, -1);
            }
            w.CloseFolder();
        });
        EXPECT_TRUE(contains(text, c.file) && contains(text, "read-only")) << text;
        EXPECT_EQ(snapshot(folder.path()), before);
        EXPECT_FALSE(QFile::permissions(path) & QFile::WriteOwner);  // not replaced by a writable file
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), int(before.size()));
    }
}

TEST(StoreWriting, AFolderAnotherProgramWritesIsRefusedUntilItLetsGo) {
    TempFolder folder;
    makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801});
    {
        const ForeignLockHolder other(folder.path());
        SecurityWriter w;
        const std::string text = failureText([&] { w.OpenFolder(folder.path()); });
        EXPECT_TRUE(contains(text, "is being written by brindlemark-cli (process 4242)")) << text;
        // Reading goes on as ever.
        EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), std::vector<qint32>{20050801});
    }
    // Once the other program has ended, two writers of this program share the folder, and the
    // lock goes with the last of them.
    {
        SecurityWriter first, second;
        first.OpenFolder(folder.path());
        second.OpenFolder(folder.path());
        second.OpenSecurity(QStringLiteral("AAA"));
        second.AddQuote(20050802, -1, 1, 1, 1, 1, 1, -1);
        second.CloseFolder();
    }
    { const ForeignLockHolder next(folder.path()); }
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), (std::vector<qint32>{20050801, 20050802}));
}

TEST(StoreWriting, AFailedWriteSaysWhatWasStoredAndWhatWasNot) {
    const struct {
        int write;  // the write that fails, of: append records (1, 2), index (3.. )
        const char* says;
        std::vector<qint32> dates;
    } cases[] = {
        {1, "None of the 2 changes to AAA were stored.", {20050801}},
        {3, "The records are stored; only the dates in the index lag behind.", {20050801, 20050802, 20050803}},
    };
    for (const auto& c : cases) {
        TempFolder folder;
        makeSecurity(folder.path(), QStringLiteral("AAA"), {20050801});
        const std::string text = failureText([&] {
            SecurityWriter w;
            w.OpenFolder(folder.path());
            w.OpenSecurity(QStringLiteral("AAA"));
            for (qint32 d : {20050802, 20050803})
                w.AddQuote(d, 0, 1, 1, 1, 1, 1, 0);
            StoreFiles::armFault(c.write, StoreFiles::Fault::Fail);
            w.SaveQuotes();
            w.CloseSecurity();
            w.CloseFolder();
        });
        StoreFiles::disarmFault();
        EXPECT_TRUE(contains(text, c.says)) << text;
        EXPECT_EQ(readDates(folder.path(), QStringLiteral("AAA")), c.dates);
    }
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
