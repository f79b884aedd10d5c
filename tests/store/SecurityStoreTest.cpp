// What the screens count on from the reader and the writer, on folders the tests make.
#include "StoreHelpers.h"
#include "frame/Failure.h"
#include "store/StoreFiles.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QDir>
#include <QFileInfo>

#include <tuple>

namespace {
using Dates = std::vector<qint32>;
const QString AAA = QStringLiteral("AAA");
bool exists(const TempFolder& folder, const char* name) { return QFileInfo::exists(folder.file(QString::fromLatin1(name))); }
} // namespace

TEST(StoreFolders, FoldersWithoutAStore) {
    TempFolder folder;
    writeTextFile(folder.file(QStringLiteral("plain.txt")), "x");
    SecurityReader reader;
    const std::string text = failureText([&] { reader.OpenFolder(folder.path()); });
    EXPECT_TRUE(contains(text, "no MetaStock Files") && contains(text, "MASTER")) << text;
    // A path that is no folder fails for both, and says what it is.
    for (const auto& [path, says] : {std::pair{folder.file(QStringLiteral("missing")), "does not exist"},
                                     std::pair{folder.file(QStringLiteral("plain.txt")), "not a folder"}, std::pair{QString(), "No folder"}}) {
        SecurityWriter writer;
        EXPECT_TRUE(contains(failureText([&] { reader.OpenFolder(path); }), says)) << says;
        EXPECT_TRUE(contains(failureText([&] { writer.OpenFolder(path); }), says)) << says;
    }
    // The writer opens it as an empty store; the index files come when the folder closes after the first security.
    SecurityWriter w;
    w.OpenFolder(folder.path());
    EXPECT_FALSE(w.SymbolExists(AAA));
    w.CloseFolder();
    w.OpenFolder(folder.path());
    w.CreateSecurity(AAA, AAA, 1);
    EXPECT_TRUE(exists(folder, "F1.DAT") && !exists(folder, "MASTER") && !exists(folder, "EMASTER"));
    w.CloseFolder();
    EXPECT_TRUE(exists(folder, "MASTER") && exists(folder, "EMASTER") && !exists(folder, "XMASTER"));
    reader.OpenFolder(folder.path());  // the reader that failed on the folder now lists it
    ASSERT_EQ(reader.GetSecuritiesRemaining(), 1);
    reader.NextSecurity();
    EXPECT_EQ(reader.GetSymbol() + reader.GetFileName(), QStringLiteral("AAAF1.DAT"));
    EXPECT_EQ(reader.GetFirstDate(), 0);
    // Its last security deleted, the store is empty: nothing listed, no failure.
    writeFolder(folder.path(), [](SecurityWriter& sw) { sw.DeleteSecurity(AAA); });
    reader.OpenFolder(folder.path());
    EXPECT_EQ(reader.GetSecuritiesRemaining(), 0);
    EXPECT_THROW(reader.NextSecurity(), Failure);
    EXPECT_FALSE(exists(folder, "F1.DAT"));
}

TEST(StoreReading, CursorsCountDownAndTheLastRecordStaysCurrent) {
    TempFolder folder;
    makeSecurity(folder.path(), AAA, {20050801, 20050802, 20050803});
    makeSecurity(folder.path(), QStringLiteral("BBB"), {});
    SecurityReader r, sheet;
    r.OpenFolder(folder.path());
    EXPECT_EQ(r.GetSecuritiesRemaining(), 2);
    r.NextSecurity();
    EXPECT_EQ(r.GetSecuritiesRemaining(), 1);
    EXPECT_EQ(r.GetLastDate(), 20050803);
    sheet.OpenFolder(folder.path());  // a second reader while the first one is open on the folder
    sheet.OpenSecurity(AAA);
    EXPECT_EQ(sheet.GetRecordCount(), 3);
    r.NextSecurity();
    EXPECT_EQ(r.GetSymbol(), QStringLiteral("BBB"));
    EXPECT_EQ(r.GetLastDate(), 0);
    r.FindSecurity(AAA);
    EXPECT_EQ(r.GetFirstDate(), 20050801);
    EXPECT_THROW(r.FindSecurity(QStringLiteral("ZZZ")), Failure);
    EXPECT_THROW(r.OpenSecurity(QStringLiteral("ZZZ")), Failure);
    r.OpenSecurity(AAA);
    for (int left = 3; left > 0; --left) {
        EXPECT_EQ(r.GetRecordsRemaining(), left);
        r.NextRecord();
    }
    EXPECT_EQ(r.GetRecordsRemaining(), 0);
    EXPECT_THROW(r.NextRecord(), Failure);
    EXPECT_EQ(r.GetDate(), 20050803);
    EXPECT_EQ(r.GetClose(), barOf(20050803).close);
    r.CloseFolder();
    r.CloseSecurity();  // after CloseFolder: no harm
    EXPECT_THROW(r.GetName(), Failure);
}

// A security too long to hold whole is read a piece of 64 KB at a time: every record comes, oldest
// first, also where two records lie out of order just where two pieces meet; a file cut short
// while it is read says so, after the records read up to then.
TEST(StoreReading, ALongSecurityComesWholeAndInOrder) {
    TempFolder folder;
    const auto days = tradingDays(19900101, 6000);  // 28-byte records: 2,340 a piece
    makeSecurity(folder.path(), AAA, days);
    const QString data = folder.file(QStringLiteral("F1.DAT"));
    const QByteArray inOrder = readFileBytes(data);
    EXPECT_EQ(readBars(folder.path(), AAA), barsOf(days));
    QByteArray swapped = inOrder;
    swapped.replace(2340 * 28, 28, inOrder.mid(2341 * 28, 28)).replace(2341 * 28, 28, inOrder.mid(2340 * 28, 28));
    writeTextFile(data, swapped);
    EXPECT_EQ(readBars(folder.path(), AAA), barsOf(days));

    writeTextFile(data, inOrder);
    SecurityReader r;
    r.OpenFolder(folder.path());
    r.OpenSecurity(AAA);
    EXPECT_EQ(std::tuple(r.GetRecordCount(), r.GetFirstDate(), r.GetLastDate()), std::tuple(6000, days.front(), days.back()));
    QFile cut(data);
    ASSERT_TRUE(cut.resize(3001 * 28));
    int read = 0;
    const std::string text = failureText([&] {
        for (; r.GetRecordsRemaining() > 0; ++read)
            r.NextRecord();
    });
    EXPECT_TRUE(contains(text, "F1.DAT grew shorter while it was read")) << text;
    ASSERT_TRUE(read > 0 && read <= 3000) << read;
    EXPECT_EQ(r.GetDate(), days[size_t(read - 1)]);
}
TEST(StoreWriting, RecordsComeBackOldestFirstAndADateHeldIsReplaced) {
    TempFolder folder;
    const auto days = tradingDays(20050801, 10);
    const auto bars = barsOf(days);
    // A download run writes from the last record to the first.
    writeFolder(folder.path(), [&](SecurityWriter& w) {
        w.CreateSecurity(AAA, AAA, 1);
        EXPECT_FALSE(w.DateExists(QString::number(days.front())));   // a new security holds no date
        addBars(w, std::vector<Bar>(bars.rbegin(), bars.rend()));
    });
    EXPECT_EQ(readDates(folder.path(), AAA), days);
    SecurityWriter w;
    w.OpenFolder(folder.path());
    w.OpenSecurity(AAA);
    // The user inserts a date in the middle, one before all and one after all: each is written at once.
    for (qint32 d : {20050806, 20050720, 20050901}) {
        EXPECT_FALSE(w.DateExists(QString::number(d)));
        const Bar b = barOf(d);
        w.AddQuote(d, -1, b.open, b.high, b.low, b.close, b.volume, -1.0);
    }
    EXPECT_EQ(readBars(folder.path(), AAA).size(), 13u);
    // A batch waits for SaveQuotes, and the writer sees its own batch.
    w.AddQuote(20050802, 0, 1, 2, 0.5, 1.5, 77, 0);  // a date held, without DateExists first
    w.DeleteQuote(QStringLiteral("20050801"));
    for (qint32 d : {20050902, 20050901}) {  // a new date, then one deleted and added
        if (w.DateExists(QString::number(d)))
            w.DeleteQuote(QString::number(d));
        w.AddQuote(d, 0, 5, 6, 4, 5.5, 9, 0);
    }
    EXPECT_FALSE(w.DateExists(QStringLiteral("20050801")));
    EXPECT_TRUE(w.DateExists(QStringLiteral("20050902")));
    EXPECT_EQ(readDates(folder.path(), AAA).back(), 20050901);
    w.SaveQuotes();
    w.ChangeQuote(QStringLiteral("20050803"), QStringLiteral("-1"), -1, 7, 8, 6, 7.5, 100, -1.0);
    // The date is the key: a change can't make a record of a date the security lacks.
    EXPECT_THROW(w.ChangeQuote(QStringLiteral("20050905"), QStringLiteral("-1"), -1, 1, 1, 1, 1, 1, -1), Failure);
    addBars(w, {barOf(20050831), barOf(20050905)});  // a batch of a date missing before the last ones, and a new last date
    Dates expected(days.begin() + 1, days.end());
    expected.insert(expected.begin() + 4, 20050806);
    expected.insert(expected.begin(), 20050720);
    expected.insert(expected.end(), {20050831, 20050901, 20050902, 20050905});
    auto want = barsOf(expected);
    want[1] = {20050802, 1, 2, 0.5, 1.5, 77};
    want[2] = {20050803, 7, 8, 6, 7.5, 100};
    want[12] = want[13] = {20050901, 5, 6, 4, 5.5, 9};
    want[13].date = 20050902;
    EXPECT_EQ(readBars(folder.path(), AAA), want);
}

TEST(StoreWriting, SecuritiesAreFoundByTheirSymbolAfterOthersAreDeletedInTheSameFolder) {
    TempFolder folder;
    writeTextFile(folder.file("F5.DAT"), QByteArray(64, 'x'));   // another program's file: F5 is taken
    SecurityWriter w;
    w.OpenFolder(folder.path());
    for (const char* symbol : {"AAA", "BBB", "CCC", "DDD"})
        w.CreateSecurity(QString::fromLatin1(symbol), QString(), 1);
    EXPECT_TRUE(w.SymbolExists(QStringLiteral("ddd")));
    w.DeleteSecurity(QStringLiteral("BBB"));
    EXPECT_FALSE(w.SymbolExists(QStringLiteral("BBB")));
    w.OpenSecurity(QStringLiteral("ccc"));
    w.AddQuote(20050801, -1, 1, 1, 1, 1, 1, -1);
    w.DeleteSecurity(AAA);
    w.CreateSecurity(QStringLiteral("BBB"), QString(), 1);   // never in a file that goes at the close
    w.AddQuote(20050803, -1, 3, 3, 3, 3, 3, -1);
    w.OpenSecurity(QStringLiteral("DDD"));
    w.AddQuote(20050802, -1, 2, 2, 2, 2, 2, -1);
    w.CloseFolder();
    const auto listed = listFolder(folder.path());
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_EQ(listed[0].symbol + listed[1].symbol + listed[2].symbol + listed[2].file, QStringLiteral("CCCDDDBBBF6.DAT"));
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("DDD")), Dates{20050802});
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("BBB")), Dates{20050803});
    EXPECT_EQ(readFileBytes(folder.file("F5.DAT")), QByteArray(64, 'x'));
    // The data files of the deleted securities went once the index no longer listed them.
    EXPECT_FALSE(exists(folder, "F1.DAT") || exists(folder, "F2.DAT"));
    // Another program's folder may hold symbols that differ only in case: the exact one is found.
    for (const auto& [file, at] : {std::pair{"MASTER", 2 * 53 + 36}, std::pair{"EMASTER", 2 * 192 + 11}}) {
        QByteArray bytes = readFileBytes(folder.file(QString::fromLatin1(file)));
        ASSERT_EQ(bytes.mid(at, 3), "DDD") << file;
        writeTextFile(folder.file(QString::fromLatin1(file)), bytes.replace(at, 3, "ccc"));
    }
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("ccc")), Dates{20050802});
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("CCC")), Dates{20050801});
}

TEST(StoreWriting, SymbolsAreCheckedOnCreateAndRename) {
    TempFolder folder;
    const QString other = QStringLiteral("OTHER"), x = QStringLiteral("X");
    SecurityWriter w;
    w.OpenFolder(folder.path());
    EXPECT_TRUE(contains(failureText([&] { w.CreateSecurity(QStringLiteral("ABCDEFGHIJKLMNO"), x, 1); }), "longer than 14 characters"));
    w.CreateSecurity(QStringLiteral("ABCDEFGHIJKLMN"), QStringLiteral("FOURTEEN"), 1);
    w.CreateSecurity(other, other, 1);
    EXPECT_THROW(w.CreateSecurity(QStringLiteral("other"), x, 1), Failure);
    for (const char* taken : {"ABCDEFGHIJKLMN", "abcdefghijklmn"}) {
        const std::string text = failureText([&] { w.ChangeSecurity(other, x, QString::fromLatin1(taken)); });
        EXPECT_TRUE(contains(text, "already holds a security with the symbol") && contains(text, taken)) << text;
    }
    EXPECT_THROW(w.ChangeSecurity(other, x, QStringLiteral("ABCDEFGHIJKLMNOP")), Failure);
    EXPECT_THROW(w.ChangeSecurity(QStringLiteral("NONE"), x, QStringLiteral("NEW")), Failure);
    // Index text is Windows-1252: a character outside it is refused, never stored as "?".
    for (const auto& [symbol, name, character] : {std::tuple("\u03A9MEGA", "X", "\u03A9"), std::tuple("OK", "\u4E2D\u6587", "\u4E2D")}) {
        const std::string text = failureText([&] { w.CreateSecurity(QString::fromUtf8(symbol), QString::fromUtf8(name), 1); });
        EXPECT_TRUE(contains(text, "which the store cannot hold") && contains(text, character)) << text;
        EXPECT_THROW(w.ChangeSecurity(other, QString::fromUtf8(name), QString::fromUtf8(symbol)), Failure);
    }
    EXPECT_FALSE(w.SymbolExists(QStringLiteral("?MEGA")));
    w.ChangeSecurity(other, QStringLiteral("A Long Name Of Over Sixteen"), other);
    w.CreateSecurity(QStringLiteral("CAF\u00C9"), QStringLiteral("CAF\u00C9"), 1);
    w.ChangeSecurity(QStringLiteral("CAF\u00C9"), QStringLiteral("Caf\u00E9 \u20AC"), QStringLiteral("\u20ACUR"));
    w.ChangeSecurity(QStringLiteral("ABCDEFGHIJKLMN"), QStringLiteral("Renamed"), QStringLiteral("NEWSYM"));
    w.CloseFolder();
    // A renamed security is found again by the name and the symbol as typed.
    SecurityReader r;
    r.OpenFolder(folder.path());
    r.FindSecurity(QStringLiteral("Caf\u00E9 \u20AC"));
    EXPECT_EQ(r.GetSymbol(), QStringLiteral("\u20ACUR"));
    r.OpenSecurity(QStringLiteral("\u20ACur"));
    EXPECT_EQ(r.GetName(), QStringLiteral("Caf\u00E9 \u20AC"));
    const auto listed = listFolder(folder.path());
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_EQ(listed[0].symbol + u'|' + listed[0].name + u'|' + listed[1].name, QStringLiteral("NEWSYM|Renamed|A Long Name Of Over Sixteen"));
    // A short name leaves EMASTER's full-name field empty.
    EXPECT_EQ(readFileBytes(folder.file(QStringLiteral("EMASTER"))).mid(192 + 139, 53), QByteArray(53, '\0'));
}

TEST(StoreWriting, ObjectGoesThroughManyCyclesAndSurvivesItsFailures) {
    TempFolder a, b;
    makeSecurity(a.path(), AAA, {20050801});
    makeSecurity(b.path(), QStringLiteral("BBB"), {20050801});
    SecurityWriter w;
    EXPECT_THROW(w.SymbolExists(QStringLiteral("A")), Failure);   // no folder open
    EXPECT_THROW(w.CreateSecurity(QStringLiteral("NEW"), QString(), 1), Failure);
    for (int i = 0; i < 3; ++i) {
        for (const auto& [folder, symbol] : {std::pair(a.path(), AAA), std::pair(b.path(), QStringLiteral("BBB"))}) {
            w.OpenFolder(folder);
            EXPECT_THROW(w.AddQuote(20050801, 0, 1, 1, 1, 1, 1, 0), Failure);  // nothing selected
            EXPECT_THROW(w.OpenSecurity(QStringLiteral("NONE")), Failure);
            w.OpenSecurity(symbol);
            EXPECT_THROW(w.AddQuote(20050231, 0, 1, 1, 1, 1, 1, 0), Failure);  // no such day
            EXPECT_THROW(w.DateExists(QStringLiteral("yesterday")), Failure);
            w.AddQuote(20050802 + i, -1, 1, 1, 1, 1, 1, -1);
            w.CloseFolder();
        }
    }
    EXPECT_EQ(readDates(b.path(), QStringLiteral("BBB")), (Dates{20050801, 20050802, 20050803, 20050804}));
}

// A batch that a failure cuts short while the writer unwinds is not stored: the command-line import.
TEST(StoreWriting, ARefusedValueLeavesTheBatchThatTheWriterStoresWhenReleased) {
    TempFolder folder;
    makeSecurity(folder.path(), AAA, {20050801, 20050802});
    {  // released in the ordinary way, a writer stores its batch (the download runs count on it)
        SecurityWriter w;
        w.OpenFolder(folder.path());
        w.OpenSecurity(AAA);
        w.AddQuote(20050803, 0, 1, 1, 1, 1, 1, 0);
        const std::string text = failureText([&] { w.AddQuote(20050804, 0, 1e39, 1, 1, 1, 1, 0); });
        EXPECT_TRUE(contains(text, "1e+39 cannot be stored")) << text;
    }
    EXPECT_EQ(readDates(folder.path(), AAA), (Dates{20050801, 20050802, 20050803}));
}

TEST(StoreWriting, ReadOnlyFilesAreRefusedBeforeAnythingIsWritten) {
    const std::pair<const char*, const char*> cases[] = {
        {"MASTER", "create"}, {"EMASTER", "create"}, {"MASTER", "append"}, {"F1.DAT", "append"},
        {"F1.DAT", "insert"}, {"F1.DAT", "delete the security"}, {"F1.DAT", "delete a range"}};
    for (const auto& [file, step] : cases) {
        SCOPED_TRACE(std::string(file) + ", " + step);
        TempFolder folder;
        makeSecurity(folder.path(), AAA, {20050802, 20050803});
        const QString path = folder.file(QString::fromLatin1(file));
        ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner));
        const auto before = snapshot(folder.path());
        const std::string s = step, text = failureText([&] {
            SecurityWriter w;
            w.OpenFolder(folder.path());
            if (s == "create")
                w.CreateSecurity(QStringLiteral("BBB"), QStringLiteral("BBB"), 1);
            else if (s == "delete the security")
                w.DeleteSecurity(AAA);
            else if (w.OpenSecurity(AAA), s == "delete a range")
                w.DeleteQuotes(QStringLiteral("20050803"), QStringLiteral("20050803"));
            else
                w.AddQuote(s == "append" ? 20050804 : 20050801, -1, 1, 1, 1, 1, 1, -1);
            w.CloseFolder();
        });
        EXPECT_TRUE(contains(text, file) && contains(text, "read-only")) << text;
        EXPECT_EQ(snapshot(folder.path()), before);
        EXPECT_FALSE(QFile::permissions(path) & QFile::WriteOwner);  // not replaced by a writable file
    }
}

// The data file counts its records in 16 bits: the 65,534th record fits, one more is refused
// and the security stays as it was.
TEST(StoreWriting, ASecurityHoldsAtMost65534Records) {
    TempFolder folder;
    const auto days = tradingDays(19000101, 65535);
    makeSecurity(folder.path(), AAA, Dates(days.begin(), days.end() - 1));
    ASSERT_EQ(readDates(folder.path(), AAA).size(), 65534u);
    SecurityWriter w;
    w.OpenFolder(folder.path());
    w.OpenSecurity(AAA);
    const std::string text = failureText([&] { addBars(w, {barOf(days.back())}); });
    EXPECT_TRUE(contains(text, "at most 65534 records")) << text;
    EXPECT_EQ(failureText([&] { w.CloseFolder(); }), "(no failure)");   // said once, by the step that failed
    EXPECT_EQ(readDates(folder.path(), AAA).back(), days[days.size() - 2]);
}

TEST(StoreWriting, AFolderAnotherProgramWritesIsRefusedUntilItLetsGo) {
    TempFolder folder;
    makeSecurity(folder.path(), AAA, {20050801});
    {
        const ForeignLockHolder other(folder.path());
        SecurityWriter w;
        const std::string text = failureText([&] { w.OpenFolder(folder.path()); });
        EXPECT_TRUE(contains(text, "is being written by brindlemark-cli (process 4242)")) << text;
        EXPECT_EQ(readDates(folder.path(), AAA), Dates{20050801});  // reading goes on as ever
    }
    {  // a holder on another machine of the network is named with it
        const ForeignLockHolder other(folder.path(), QStringLiteral("fileserver"));
        EXPECT_TRUE(contains(failureText([&] { SecurityWriter().OpenFolder(folder.path()); }), "brindlemark-cli (process 4242 on fileserver)"));
    }
    {  // two writers of this program share the folder, and the lock goes with the last of them
        SecurityWriter first, second;
        first.OpenFolder(folder.path());
        second.OpenFolder(folder.path());
        second.OpenSecurity(AAA);
        second.AddQuote(20050802, -1, 1, 1, 1, 1, 1, -1);
        second.CloseFolder();
    }
    { const ForeignLockHolder next(folder.path()); }
    EXPECT_EQ(readDates(folder.path(), AAA), (Dates{20050801, 20050802}));
    EXPECT_TRUE(QFileInfo::exists(folder.path() + "/brindlemark.lck")) << "kept for the next holder";
    // A folder that holds no store, opened for writing and left as it was, is left without the file.
    TempFolder none;
    writeTextFile(none.path() + "/notes.txt", "mine");
    SecurityWriter w;
    w.OpenFolder(none.path());
    EXPECT_TRUE(QFileInfo::exists(none.path() + "/brindlemark.lck"));
    w.CloseFolder();
    EXPECT_EQ(QDir(none.path()).entryList(QDir::Files), QStringList{"notes.txt"});
}

TEST(StoreWriting, AFailedCloseSaysWhatWasStoredAndLetsGoOfTheFolder) {
    const std::tuple<int, const char*, Dates> cases[] = {  // the write that fails: records (1, 2), index (3..)
        {1, "None of the 2 changes to AAA were stored.", {20050801}},
        {3, "The records are stored; only the dates in the index lag behind.", {20050801, 20050802, 20050803}}};
    for (const auto& [write, says, dates] : cases) {
        TempFolder folder;
        makeSecurity(folder.path(), AAA, {20050801});
        SecurityWriter w;
        w.OpenFolder(folder.path());
        w.OpenSecurity(AAA);
        for (qint32 d : {20050802, 20050803})
            w.AddQuote(d, 0, 1, 1, 1, 1, 1, 0);
        StoreFiles::armFault(write, StoreFiles::Fault::Fail);
        const std::string text = failureText([&] { w.CloseFolder(); });
        StoreFiles::disarmFault();
        EXPECT_TRUE(contains(text, says)) << text;
        EXPECT_EQ(readDates(folder.path(), AAA), dates);
        EXPECT_THROW(w.OpenSecurity(AAA), Failure);
    }
}

// A call that needs a folder refuses without one; none looks into a folder that is not there.
TEST(StoreWriting, CallsWithoutAFolderAreRefused) {
    SecurityWriter w;
    SecurityReader r;
    const QString day = QStringLiteral("20050801");
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"CreateSecurity", [&] { w.CreateSecurity(AAA, AAA, 1); }}, {"DeleteSecurity", [&] { w.DeleteSecurity(AAA); }},
        {"ChangeSecurity", [&] { w.ChangeSecurity(AAA, AAA, AAA); }}, {"OpenSecurity", [&] { w.OpenSecurity(AAA); }},
        {"FindSecurity", [&] { w.FindSecurity(AAA); }}, {"SymbolExists", [&] { w.SymbolExists(AAA); }},
        {"AddQuote", [&] { w.AddQuote(20050801, 0, 1, 1, 1, 1, 1, 0); }}, {"DateExists", [&] { w.DateExists(day); }},
        {"ChangeQuote", [&] { w.ChangeQuote(day, QStringLiteral("-1"), -1, 1, 1, 1, 1, 1, -1); }},
        {"DeleteQuote", [&] { w.DeleteQuote(day); }}, {"DeleteQuotes", [&] { w.DeleteQuotes(day, day); }},
        {"reader OpenSecurity", [&] { r.OpenSecurity(AAA); }}, {"reader FindSecurity", [&] { r.FindSecurity(AAA); }},
        {"NextSecurity", [&] { r.NextSecurity(); }}, {"GetSecuritiesRemaining", [&] { r.GetSecuritiesRemaining(); }},
        {"GetSymbol", [&] { r.GetSymbol(); }}, {"GetLastDate", [&] { r.GetLastDate(); }}};
    for (const auto& [name, call] : calls)
        EXPECT_EQ(failureText(call), "No folder is open.") << name;
}
