// A write that fails, or a store that stops dead, at any write of a run of changes: nothing that
// was stored before is lost, and the folder checks clean.
#include "StoreHelpers.h"
#include "frame/Failure.h"
#include "store/StoreCheck.h"
#include "store/StoreFiles.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QFileInfo>

#include <map>

namespace {

const auto Days = tradingDays(20050801, 20);  // 1 Aug .. 26 Aug 2005

void makeBase(const QString& folder) {
    double base = 10;
    for (const char* symbol : {"DDD", "AAA", "BBB", "CCC"}) {
        makeSecurity(folder, QString::fromLatin1(symbol), Days, base);
        base += 100;
    }
}

void expectCheckedClean(const QString& folder) {
    for (const auto& f : StoreCheck::checkFolder(folder))
        EXPECT_FALSE(f.problem) << f.text.toStdString();
}

// Puts a folder back to the files it had, writing only what differs.
void restore(const QString& folder, const std::map<QString, QByteArray>& files) {
    const auto now = snapshot(folder);
    for (const auto& [name, bytes] : now)
        if (!files.count(name))
            QFile::remove(QDir(folder).filePath(name));
    for (const auto& [name, bytes] : files)
        if (!now.count(name) || now.at(name) != bytes)
            writeTextFile(QDir(folder).filePath(name), bytes);
}

// Runs `run` on a copy of `base` once with no fault, to count its writes, and then once for
// each of its writes failing, stopping the store dead, or torn in half; `verify` checks each
// folder left behind.
// `mayHoldNoStore`: `base` holds no store, and a folder left without one is as it was.
void atEveryWrite(const QString& base, const std::function<void(const QString&)>& run,
                  const std::function<void(const QString&)>& verify, bool mayHoldNoStore = false) {
    const auto files = snapshot(base);
    TempFolder folder;
    copyFolder(base, folder.path());
    StoreFiles::disarmFault();
    run(folder.path());
    const int total = StoreFiles::writeCount();
    ASSERT_GT(total, 0);
    const std::pair<StoreFiles::Fault, const char*> faults[] = {
        {StoreFiles::Fault::Fail, "fail"}, {StoreFiles::Fault::Crash, "crash"}, {StoreFiles::Fault::Torn, "torn"}};
    for (const auto& [fault, label] : faults) {
        for (int k = 1; k <= total; ++k) {
            SCOPED_TRACE(std::string(label) + " at write " + std::to_string(k) + " of " + std::to_string(total));
            restore(folder.path(), files);
            StoreFiles::armFault(k, fault);
            run(folder.path());
            StoreFiles::disarmFault();
            if (!mayHoldNoStore || QFileInfo::exists(folder.file(QStringLiteral("MASTER"))))
                expectCheckedClean(folder.path());
            verify(folder.path());
            if (::testing::Test::HasFailure())
                return;
        }
    }
}

// The changes a day of use makes, each step passed over when it fails, as the download runs do.
void runChanges(const QString& folder) {
    SecurityWriter w;
    passOver([&] { w.OpenFolder(folder); });
    // Create New Symbols.
    passOver([&] {
        if (w.SymbolExists(QStringLiteral("NEW")))
            w.DeleteSecurity(QStringLiteral("NEW"));
        w.CreateSecurity(QStringLiteral("NEW"), QStringLiteral("NEW"), 1);
        w.AddQuote(20050801, 0, 0, 0, 0, 0, 0, 0);
        w.DeleteQuote(QStringLiteral("20050801"));
        w.CloseSecurity();
    });
    // One NSE day.
    for (const char* symbol : {"AAA", "NEW"}) {
        passOver([&] {
            w.OpenSecurity(QString::fromLatin1(symbol));
            w.AddQuote(20050829, 0, 1, 2, 0.5, 1.5, 10, 0);
            w.SaveQuotes();
            w.CloseSecurity();
        });
    }
    // A Yahoo merge over the last three days and one new one.
    passOver([&] {
        w.OpenSecurity(QStringLiteral("BBB"));
        for (qint32 d : {20050829, 20050826, 20050825, 20050824}) {
            if (w.DateExists(QString::number(d)))
                w.DeleteQuote(QString::number(d));
            const Bar b = barOf(d, 500);
            w.AddQuote(d, 0, b.open, b.high, b.low, b.close, b.volume, 0);
        }
        w.SaveQuotes();
        w.CloseSecurity();
    });
    // The record dialog: insert, change, delete.
    passOver([&] {
        w.OpenSecurity(QStringLiteral("AAA"));
        if (!w.DateExists(QStringLiteral("20050806")))
            w.AddQuote(20050806, -1, 3, 4, 2, 3.5, 30, -1);
        w.CloseSecurity();
    });
    passOver([&] {
        w.OpenSecurity(QStringLiteral("AAA"));
        w.ChangeQuote(QStringLiteral("20050801"), QStringLiteral("-1"), -1, 9, 9, 9, 9, 9, -1);
        w.CloseSecurity();
    });
    passOver([&] {
        w.OpenSecurity(QStringLiteral("BBB"));
        w.DeleteQuote(QStringLiteral("20050802"));
        w.SaveQuotes();
        w.CloseSecurity();
    });
    // Delete Data, Adjust Security.
    passOver([&] {
        w.FindSecurity(QStringLiteral("CCC"));
        w.DeleteQuotes(QStringLiteral("20050801"), QStringLiteral("20050810"));
        w.CloseSecurity();
    });
    passOver([&] { w.ChangeSecurity(QStringLiteral("BBB"), QStringLiteral("BBB RENAMED"), QStringLiteral("BBX")); });
    passOver([&] { w.DeleteSecurity(QStringLiteral("DDD")); });
    passOver([&] { w.CloseFolder(); });
}

std::map<qint32, Bar> byDate(const std::vector<Bar>& bars) {
    std::map<qint32, Bar> out;
    for (const Bar& b : bars)
        out[b.date] = b;
    return out;
}

// What must hold after the changes stopped anywhere.
void expectNothingLost(const QString& folder) {
    std::map<QString, std::vector<Bar>> now;
    for (const Listed& l : listFolder(folder))
        now[l.symbol] = readBars(folder, l.symbol);

    // DDD: as it was, or deleted as a whole.
    if (now.count(QStringLiteral("DDD"))) {
        EXPECT_EQ(now[QStringLiteral("DDD")], barsOf(Days, 10));
    }

    // AAA: every old record but the changed one as it was; that one old or new.
    ASSERT_TRUE(now.count(QStringLiteral("AAA")));
    auto aaa = byDate(now[QStringLiteral("AAA")]);
    for (const Bar& old : barsOf(Days, 110)) {
        ASSERT_TRUE(aaa.count(old.date)) << old.date;
        if (old.date == 20050801) {
            EXPECT_TRUE(aaa[old.date] == old || aaa[old.date] == (Bar{20050801, 9, 9, 9, 9, 9}));
        } else {
            EXPECT_EQ(aaa[old.date], old);
        }
    }

    // BBB (or BBX after the rename): the records the merge and the delete leave alone.
    const bool renamed = now.count(QStringLiteral("BBX")) > 0;
    EXPECT_NE(renamed, now.count(QStringLiteral("BBB")) > 0);
    auto bbb = byDate(now[renamed ? QStringLiteral("BBX") : QStringLiteral("BBB")]);
    for (const Bar& old : barsOf(Days, 210)) {
        if (old.date == 20050802 || old.date >= 20050824)
            continue;
        ASSERT_TRUE(bbb.count(old.date)) << old.date;
        EXPECT_EQ(bbb[old.date], old);
    }
    for (qint32 d : {20050824, 20050825, 20050826})
        ASSERT_TRUE(bbb.count(d)) << d;

    // CCC: the range went as a whole or not at all.
    ASSERT_TRUE(now.count(QStringLiteral("CCC")));
    const auto ccc = now[QStringLiteral("CCC")];
    const auto all = barsOf(Days, 310);
    std::vector<Bar> cut;
    std::copy_if(all.begin(), all.end(), std::back_inserter(cut), [](const Bar& b) { return b.date > 20050810; });
    EXPECT_TRUE(ccc == all || ccc == cut);
}

class StoreFaults : public ::testing::Test {
protected:
    void TearDown() override { StoreFiles::disarmFault(); }
};

} // namespace

TEST_F(StoreFaults, ChangesWithoutFaultsDoWhatTheySay) {
    TempFolder folder;
    makeBase(folder.path());
    runChanges(folder.path());
    QStringList symbols;
    for (const Listed& l : listFolder(folder.path()))
        symbols << l.symbol;
    EXPECT_EQ(symbols, (QStringList{QStringLiteral("AAA"), QStringLiteral("BBX"), QStringLiteral("CCC"), QStringLiteral("NEW")}));
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("NEW")), std::vector<qint32>{20050829});
    EXPECT_EQ(readDates(folder.path(), QStringLiteral("CCC")).front(), 20050811);
    EXPECT_EQ(readBars(folder.path(), QStringLiteral("BBX")).back(), barOf(20050829, 500));
    expectCheckedClean(folder.path());
}

TEST_F(StoreFaults, EveryWriteCanFailOrStopTheStoreAndNothingIsLost) {
    TempFolder base;
    makeBase(base.path());
    atEveryWrite(base.path(), runChanges, expectNothingLost);
}

TEST_F(StoreFaults, TheSecurityThatOpensXmasterCanFailAtEveryWrite) {
    TempFolder base;
    writeFolder(base.path(), [](SecurityWriter& w) {
        for (int i = 1; i <= 255; ++i) {
            w.CreateSecurity(QStringLiteral("S%1").arg(i), QStringLiteral("S%1").arg(i), 1);
            w.AddQuote(20050801, -1, i, i, i, i, i, -1);
        }
    });
    auto create = [](const QString& folder) {
        SecurityWriter w;
        passOver([&] { w.OpenFolder(folder); });
        passOver([&] {
            w.CreateSecurity(QStringLiteral("X256"), QStringLiteral("X256"), 1);
            w.AddQuote(20050802, -1, 1, 1, 1, 1, 1, -1);
        });
        passOver([&] { w.CloseFolder(); });
    };
    atEveryWrite(base.path(), create, [](const QString& folder) {
        const auto listed = listFolder(folder);
        ASSERT_GE(listed.size(), 255u);
        EXPECT_EQ(listed[254].file, QStringLiteral("F255.DAT"));
        EXPECT_EQ(readBars(folder, QStringLiteral("S255")), (std::vector<Bar>{{20050801, 255, 255, 255, 255, 255}}));
        if (listed.size() == 256) {
            EXPECT_EQ(listed.back().file, QStringLiteral("F256.MWD"));
        }
    });
}

TEST_F(StoreFaults, TheFirstCreateInAnEmptyFolderCanStopAtEveryWrite) {
    TempFolder base;
    auto create = [](const QString& folder) {
        SecurityWriter w;
        passOver([&] { w.OpenFolder(folder); });
        passOver([&] {
            w.CreateSecurity(QStringLiteral("NEW"), QStringLiteral("NEW"), 1);
            w.AddQuote(20050801, 0, 0, 0, 0, 0, 0, 0);
            w.DeleteQuote(QStringLiteral("20050801"));
            w.CloseSecurity();
        });
        passOver([&] { w.CloseFolder(); });
    };
    atEveryWrite(base.path(), create, [](const QString& folder) {
        // Never a folder the program refuses: the security is there, or the same create makes it.
        SecurityWriter w;
        w.OpenFolder(folder);
        if (!w.SymbolExists(QStringLiteral("NEW"))) {
            w.CreateSecurity(QStringLiteral("NEW"), QStringLiteral("NEW"), 1);
            w.AddQuote(20050801, -1, 1, 1, 1, 1, 1, -1);
        }
        w.CloseFolder();
        const auto listed = listFolder(folder);
        ASSERT_EQ(listed.size(), 1u);
        EXPECT_EQ(listed[0].symbol, QStringLiteral("NEW"));
        EXPECT_EQ(listed[0].file, QStringLiteral("F1.DAT"));  // a file left empty is taken over
        expectCheckedClean(folder);
    }, true);
}
