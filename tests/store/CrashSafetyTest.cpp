// A write that fails, or a store that stops dead, at any write of a run of changes: nothing that
// was stored before is lost, and the folder checks clean.
#include "StoreHelpers.h"
#include "frame/Failure.h"
#include "store/StoreCheck.h"
#include "store/StoreFiles.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <sys/resource.h>

namespace {

const auto Days = tradingDays(20050801, 20);  // 1 Aug .. 26 Aug 2005
using Step = std::function<void(SecurityWriter&)>;

void expectCheckedClean(const QString& folder) {
    for (const auto& f : StoreCheck::checkFolder(folder))
        EXPECT_FALSE(f.problem) << f.text.toStdString();
}

// Runs `steps` on a copy of `base`, each passed over when it fails as the download runs do: once
// with no fault, to count its writes, and then once for each of its writes failing, stopping the
// store dead, or torn in half; `verify` checks each folder left behind.
// `mayHoldNoStore`: `base` holds no store, and a folder left without one is as it was.
void atEveryWrite(const QString& base, const std::vector<Step>& steps, const std::function<void(const QString&)>& verify,
                  bool mayHoldNoStore = false) {
    const auto files = snapshot(base);
    TempFolder folder;
    const auto run = [&] {
        // Back to the base's files, writing only what differs (a folder of hundreds of securities).
        const auto now = snapshot(folder.path());
        for (const auto& [name, bytes] : now)
            if (!files.count(name))
                QFile::remove(folder.file(name));
        for (const auto& [name, bytes] : files)
            if (!now.count(name) || now.at(name) != bytes)
                writeTextFile(folder.file(name), bytes);
        SecurityWriter w;
        passOver([&] { w.OpenFolder(folder.path()); });
        for (const Step& step : steps)
            passOver([&] { step(w); });
        passOver([&] { w.CloseFolder(); });
    };
    StoreFiles::disarmFault();
    run();
    const int total = StoreFiles::writeCount();
    ASSERT_GT(total, 0);
    for (const auto fault : {StoreFiles::Fault::Fail, StoreFiles::Fault::Crash, StoreFiles::Fault::Torn}) {
        for (int k = 1; k <= total && !::testing::Test::HasFailure(); ++k) {
            SCOPED_TRACE("fault " + std::to_string(int(fault)) + " at write " + std::to_string(k) + " of " + std::to_string(total));
            StoreFiles::armFault(k, fault);
            run();
            StoreFiles::disarmFault();
            if (!mayHoldNoStore || QFileInfo::exists(folder.file(QStringLiteral("MASTER"))))
                expectCheckedClean(folder.path());
            verify(folder.path());
        }
    }
}

Step nseRow(const QString& symbol) {
    return [symbol](SecurityWriter& w) {
        w.OpenSecurity(symbol);
        w.AddQuote(20050829, 0, 1, 2, 0.5, 1.5, 10, 0);
        w.SaveQuotes();
        w.CloseSecurity();
    };
}

// The changes a day of use makes, each step closing what it opened.
const std::vector<Step> DayOfUse = {
    [](SecurityWriter& w) { createEmpty(w, QStringLiteral("NEW"), 20050801); },
    nseRow(QStringLiteral("AAA")),   // one NSE day, each row on its own
    nseRow(QStringLiteral("NEW")),
    [](SecurityWriter& w) {  // a Yahoo merge over the last three days and one new one
        w.OpenSecurity(QStringLiteral("BBB"));
        for (qint32 d : {20050829, 20050826, 20050825, 20050824}) {
            if (w.DateExists(QString::number(d)))
                w.DeleteQuote(QString::number(d));
            const Bar b = barOf(d, 500);
            w.AddQuote(d, 0, b.open, b.high, b.low, b.close, b.volume, 0);
        }
        w.SaveQuotes();
        w.CloseSecurity();
    },
    [](SecurityWriter& w) {  // the record dialog: insert, change, delete
        w.OpenSecurity(QStringLiteral("AAA"));
        if (!w.DateExists(QStringLiteral("20050806")))
            w.AddQuote(20050806, -1, 3, 4, 2, 3.5, 30, -1);
        w.CloseSecurity();
    },
    [](SecurityWriter& w) { w.OpenSecurity(QStringLiteral("AAA")), w.ChangeQuote(QStringLiteral("20050801"), QStringLiteral("-1"), -1, 9, 9, 9, 9, 9, -1), w.CloseSecurity(); },
    [](SecurityWriter& w) { w.OpenSecurity(QStringLiteral("BBB")), w.DeleteQuote(QStringLiteral("20050802")), w.SaveQuotes(), w.CloseSecurity(); },
    [](SecurityWriter& w) { w.FindSecurity(QStringLiteral("CCC")), w.DeleteQuotes(QStringLiteral("20050801"), QStringLiteral("20050810")); },
    [](SecurityWriter& w) { w.ChangeSecurity(QStringLiteral("BBB"), QStringLiteral("BBB RENAMED"), QStringLiteral("BBX")); },
    [](SecurityWriter& w) { w.DeleteSecurity(QStringLiteral("DDD")); },
};

void makeBase(const QString& folder) {
    double base = 10;
    for (const char* symbol : {"DDD", "AAA", "BBB", "CCC"}) {
        makeSecurity(folder, QString::fromLatin1(symbol), Days, base);
        base += 100;
    }
}

// What must hold after the changes stopped anywhere.
void expectNothingLost(const QString& folder) {
    std::map<QString, std::vector<Bar>> now;
    for (const Listed& l : listFolder(folder))
        now[l.symbol] = readBars(folder, l.symbol);
    EXPECT_TRUE(!now.count(QStringLiteral("DDD")) || now[QStringLiteral("DDD")] == barsOf(Days, 10));  // as it was, or gone
    // AAA: every old record but the changed one as it was; that one old or new. BBB (or BBX after
    // the rename): the records the merge and the delete leave alone, and the merged days.
    const bool renamed = now.count(QStringLiteral("BBX")) > 0;
    EXPECT_NE(renamed, now.count(QStringLiteral("BBB")) > 0);
    for (const auto& [symbol, base] : {std::pair{QStringLiteral("AAA"), 110}, std::pair{renamed ? QStringLiteral("BBX") : QStringLiteral("BBB"), 210}}) {
        std::map<qint32, Bar> held;
        for (const Bar& b : now[symbol])
            held[b.date] = b;
        for (const Bar& old : barsOf(Days, base)) {
            if (base == 210 && (old.date == 20050802 || old.date >= 20050824))
                continue;
            ASSERT_TRUE(held.count(old.date)) << old.date;
            EXPECT_TRUE(held[old.date] == old || (base == 110 && held[old.date] == Bar{20050801, 9, 9, 9, 9, 9})) << old.date;
        }
        for (qint32 d : {20050824, 20050825, 20050826})
            EXPECT_TRUE(base == 110 || held.count(d)) << d;
    }
    // CCC: the range went as a whole or not at all.
    const auto all = barsOf(Days, 310);
    EXPECT_TRUE(now[QStringLiteral("CCC")] == all || now[QStringLiteral("CCC")] == std::vector<Bar>(all.begin() + 8, all.end()));
}

class StoreFaults : public ::testing::Test {
protected:
    void TearDown() override { StoreFiles::disarmFault(); }
};

} // namespace

TEST_F(StoreFaults, EveryWriteCanFailOrStopTheStoreAndNothingIsLost) {
    TempFolder base, folder;
    makeBase(base.path());
    // Without a fault the changes do what they say.
    copyFolder(base.path(), folder.path());
    writeFolder(folder.path(), [](SecurityWriter& w) { for (const Step& step : DayOfUse) step(w); });
    QStringList symbols;
    for (const Listed& l : listFolder(folder.path()))
        symbols << l.symbol;
    EXPECT_EQ(symbols.join(u' '), QStringLiteral("AAA BBX CCC NEW"));
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("NEW")), std::vector<qint32>{20050829});
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("CCC")).front(), 20050811);
    EXPECT_EQ(readBars(folder.path(), QStringLiteral("BBX")).back(), barOf(20050829, 500));
    expectCheckedClean(folder.path());
    atEveryWrite(base.path(), DayOfUse, expectNothingLost);
}

TEST_F(StoreFaults, TheSecurityThatOpensXmasterCanFailAtEveryWrite) {
    TempFolder base;
    writeFolder(base.path(), [](SecurityWriter& w) {
        for (int i = 1; i <= 255; ++i) {
            w.CreateSecurity(QStringLiteral("S%1").arg(i), QStringLiteral("S%1").arg(i), 1);
            w.AddQuote(20050801, -1, i, i, i, i, i, -1);
        }
    });
    const Step create = [](SecurityWriter& w) {
        w.CreateSecurity(QStringLiteral("X256"), QStringLiteral("X256"), 1);
        w.AddQuote(20050802, -1, 1, 1, 1, 1, 1, -1);
    };
    atEveryWrite(base.path(), {create}, [](const QString& folder) {
        const auto listed = listFolder(folder);
        ASSERT_GE(listed.size(), 255u);
        EXPECT_EQ(listed[254].file, QStringLiteral("F255.DAT"));
        EXPECT_EQ(readBars(folder, QStringLiteral("S255")), (std::vector<Bar>{{20050801, 255, 255, 255, 255, 255}}));
        EXPECT_EQ(listed.back().file, listed.size() == 256 ? QStringLiteral("F256.MWD") : QStringLiteral("F255.DAT"));
    });
}

TEST_F(StoreFaults, TheFirstCreateInAnEmptyFolderCanStopAtEveryWrite) {
    TempFolder base;
    atEveryWrite(base.path(), {[](SecurityWriter& w) { createEmpty(w, QStringLiteral("NEW"), 20050801); }}, [](const QString& folder) {
        // Never a folder the program refuses: the security is there, or the same create makes it.
        writeFolder(folder, [](SecurityWriter& w) {
            if (!w.SymbolExists(QStringLiteral("NEW")))
                createEmpty(w, QStringLiteral("NEW"), 20050801);
        });
        const auto listed = listFolder(folder);
        ASSERT_EQ(listed.size(), 1u);
        EXPECT_EQ(listed[0].symbol + listed[0].file, QStringLiteral("NEWF1.DAT"));  // a file left empty is taken over
        expectCheckedClean(folder);
    }, true);
}

// A disk that takes no more (the file size limit stands in for it): the writes fail with the
// system's reason, and what was stored before stays.
TEST_F(StoreFaults, ADiskThatTakesNoMoreLosesNothing) {
    TempFolder folder;
    makeBase(folder.path());
    rlimit was{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &was), 0);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit full = was;
    full.rlim_cur = 600;   // the data files as they stand fit, a record more does not; EMASTER does not
    QStringList failures;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    {
        SecurityWriter w;
        w.OpenFolder(folder.path());
        for (const Step& step : DayOfUse)
            failures << QString::fromStdString(failureText([&] { step(w); }));
        failures << QString::fromStdString(failureText([&] { w.CloseFolder(); }));
    }
    setrlimit(RLIMIT_FSIZE, &was);
    // Each step that failed says so for itself, with the file and the system's reason.
    const std::pair<int, const char*> said[] = {{0, "(no failure)"}, {1, "F2.DAT could not be written: File too large. The change to AAA was not stored."},
        {2, "(no failure)"}, {3, "F3.DAT could not be written: File too large. None of the 4 changes to BBB"}, {5, "(no failure)"},
        {10, "EMASTER could not be written: File too large. The index was not written"}};
    for (const auto& [step, text] : said)
        EXPECT_TRUE(failures.value(step).contains(QString::fromLatin1(text))) << failures.join(u'\n').toStdString();
    expectCheckedClean(folder.path());
    expectNothingLost(folder.path());
}
