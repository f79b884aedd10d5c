// A write that fails, or a store that stops dead, at any write of a run of changes: nothing that
// was stored before is lost, and the folder checks clean.
#include "StoreHelpers.h"
#include "frame/Failure.h"
#include "store/StoreCheck.h"
#include "store/StoreFiles.h"
#include "support/TestSupport.h"

#include <QDirIterator>
#include <QFile>

#include <map>

namespace {

const auto Days = tradingDays(20050801, 20);  // 1 Aug .. 26 Aug 2005

void copyFolder(const QString& from, const QString& to) {
    QDirIterator it(from, QDir::Files);
    while (it.hasNext()) {
        it.next();
        QFile::copy(it.filePath(), QDir(to).filePath(it.fileName()));
    }
}

std::vector<Bar> barsFrom(const std::vector<qint32>& dates, double base) {
    std::vector<Bar> out;
    for (qint32 d : dates)
        out.push_back(barOf(d, base));
    return out;
}

void makeBase(const QString& folder) {
    SecurityWriter w;
    w.OpenFolder(folder);
    double base = 10;
    for (const char* symbol : {"DDD", "AAA", "BBB", "CCC"}) {
        w.CreateSecurity(QString::fromLatin1(symbol), QString::fromLatin1(symbol), 1);
        addBars(w, barsFrom(Days, base));
        w.CloseSecurity();
        base += 100;
    }
    w.CloseFolder();
}

// The changes a day of use makes, each step passed over when it fails, as the download runs do.
void runChanges(const QString& folder) {
    SecurityWriter w;
    auto step = [](auto&& f) { passOver(f); };
    step([&] { w.OpenFolder(folder); });
    // Create New Symbols.
    step([&] {
        if (w.SymbolExists(QStringLiteral("NEW")))
            w.DeleteSecurity(QStringLiteral("NEW"));
        w.CreateSecurity(QStringLiteral("NEW"), QStringLiteral("NEW"), 1);
        w.AddQuote(20050801, 0, 0, 0, 0, 0, 0, 0);
        w.DeleteQuote(QStringLiteral("20050801"));
        w.CloseSecurity();
    });
    // One NSE day.
    for (const char* symbol : {"AAA", "NEW"}) {
        step([&] {
            w.OpenSecurity(QString::fromLatin1(symbol));
            w.AddQuote(20050829, 0, 1, 2, 0.5, 1.5, 10, 0);
            w.SaveQuotes();
            w.CloseSecurity();
        });
    }
    // A Yahoo merge over the last three days and one new one.
    step([&] {
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
    step([&] {
        w.OpenSecurity(QStringLiteral("AAA"));
        if (!w.DateExists(QStringLiteral("20050806")))
            w.AddQuote(20050806, -1, 3, 4, 2, 3.5, 30, -1);
        w.CloseSecurity();
    });
    step([&] {
        w.OpenSecurity(QStringLiteral("AAA"));
        w.ChangeQuote(QStringLiteral("20050801"), QStringLiteral("-1"), -1, 9, 9, 9, 9, 9, -1);
        w.CloseSecurity();
    });
    step([&] {
        w.OpenSecurity(QStringLiteral("BBB"));
        w.DeleteQuote(QStringLiteral("20050802"));
        w.SaveQuotes();
        w.CloseSecurity();
    });
    // Delete Data, Adjust Security.
    step([&] {
        w.FindSecurity(QStringLiteral("CCC"));
        w.DeleteQuotes(QStringLiteral("20050801"), QStringLiteral("20050810"));
        w.CloseSecurity();
    });
    step([&] { w.ChangeSecurity(QStringLiteral("BBB"), QStringLiteral("BBB RENAMED"), QStringLiteral("BBX")); });
    step([&] { w.DeleteSecurity(QStringLiteral("DDD")); });
    step([&] { w.CloseFolder(); });
}

std::map<qint32, Bar> byDate(const std::vector<Bar>& bars) {
    std::map<qint32, Bar> out;
    for (const Bar& b : bars)
        out[b.date] = b;
    return out;
}

// What must hold after the changes stopped anywhere.
void expectNothingLost(const QString& folder, const std::string& where) {
    SCOPED_TRACE(where);
    for (const auto& f : StoreCheck::checkFolder(folder))
        EXPECT_FALSE(f.problem) << f.text.toStdString();

    std::map<QString, std::vector<Bar>> now;
    for (const Listed& l : listFolder(folder))
        now[l.symbol] = readBars(folder, l.symbol);

    // DDD: as it was, or deleted as a whole.
    if (now.count(QStringLiteral("DDD"))) {
        EXPECT_EQ(now[QStringLiteral("DDD")], barsFrom(Days, 10));
    }

    // AAA: every old record but the changed one as it was; that one old or new.
    ASSERT_TRUE(now.count(QStringLiteral("AAA")));
    auto aaa = byDate(now[QStringLiteral("AAA")]);
    for (const Bar& old : barsFrom(Days, 110)) {
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
    for (const Bar& old : barsFrom(Days, 210)) {
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
    const auto all = barsFrom(Days, 310);
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
    TempFolder base;
    makeBase(base.path());
    StoreFiles::disarmFault();
    runChanges(base.path());
    const int writes = StoreFiles::writeCount();
    EXPECT_GT(writes, 20);
    const auto listed = listFolder(base.path());
    QStringList symbols;
    for (const Listed& l : listed)
        symbols << l.symbol;
    EXPECT_EQ(symbols, (QStringList{QStringLiteral("AAA"), QStringLiteral("BBX"), QStringLiteral("CCC"), QStringLiteral("NEW")}));
    EXPECT_EQ(readDates(base.path(), QStringLiteral("NEW")), std::vector<qint32>{20050829});
    EXPECT_EQ(readDates(base.path(), QStringLiteral("CCC")).front(), 20050811);
    EXPECT_EQ(readBars(base.path(), QStringLiteral("BBX")).back(), barOf(20050829, 500));
    for (const auto& f : StoreCheck::checkFolder(base.path()))
        EXPECT_FALSE(f.problem) << f.text.toStdString();
}

TEST_F(StoreFaults, EveryWriteCanFailOrStopTheStoreAndNothingIsLost) {
    TempFolder base;
    makeBase(base.path());
    int total = 0;
    {
        TempFolder probe;
        copyFolder(base.path(), probe.path());
        StoreFiles::disarmFault();
        runChanges(probe.path());
        total = StoreFiles::writeCount();
    }
    ASSERT_GT(total, 0);
    const std::pair<StoreFiles::Fault, const char*> faults[] = {
        {StoreFiles::Fault::Fail, "fail"}, {StoreFiles::Fault::Crash, "crash"}, {StoreFiles::Fault::Torn, "torn"}};
    for (const auto& [fault, label] : faults) {
        for (int k = 1; k <= total; ++k) {
            TempFolder run;
            copyFolder(base.path(), run.path());
            StoreFiles::armFault(k, fault);
            runChanges(run.path());
            StoreFiles::disarmFault();
            expectNothingLost(run.path(), std::string(label) + " at write " + std::to_string(k));
            if (HasFatalFailure() || HasFailure())
                return;
        }
    }
}

TEST_F(StoreFaults, TheSecurityThatOpensXmasterCanFailAtEveryWrite) {
    TempFolder base;
    {
        SecurityWriter w;
        w.OpenFolder(base.path());
        for (int i = 1; i <= 255; ++i) {
            w.CreateSecurity(QStringLiteral("S%1").arg(i), QStringLiteral("S%1").arg(i), 1);
            w.AddQuote(20050801, -1, i, i, i, i, i, -1);
        }
        w.CloseFolder();
    }
    auto create = [](const QString& folder) {
        SecurityWriter w;
        passOver([&] { w.OpenFolder(folder); });
        passOver([&] {
            w.CreateSecurity(QStringLiteral("X256"), QStringLiteral("X256"), 1);
            w.AddQuote(20050802, -1, 1, 1, 1, 1, 1, -1);
        });
        passOver([&] { w.CloseFolder(); });
    };
    int total = 0;
    {
        TempFolder probe;
        copyFolder(base.path(), probe.path());
        StoreFiles::disarmFault();
        create(probe.path());
        total = StoreFiles::writeCount();
        EXPECT_EQ(listFolder(probe.path()).back().file, QStringLiteral("F256.MWD"));
    }
    // The run touches the index files alone among the files that were there: put those back
    // and take away what the run made, instead of copying the folder for every write.
    TempFolder run;
    copyFolder(base.path(), run.path());
    const QStringList before = QDir(run.path()).entryList(QDir::Files);
    const QByteArray master = readFileBytes(run.file(QStringLiteral("MASTER")));
    const QByteArray emaster = readFileBytes(run.file(QStringLiteral("EMASTER")));
    for (const auto fault : {StoreFiles::Fault::Fail, StoreFiles::Fault::Crash, StoreFiles::Fault::Torn}) {
        for (int k = 1; k <= total; ++k) {
            SCOPED_TRACE("fault " + std::to_string(int(fault)) + " at write " + std::to_string(k));
            for (const QString& name : QDir(run.path()).entryList(QDir::Files))
                if (!before.contains(name))
                    QFile::remove(run.file(name));
            writeTextFile(run.file(QStringLiteral("MASTER")), master);
            writeTextFile(run.file(QStringLiteral("EMASTER")), emaster);
            StoreFiles::armFault(k, fault);
            create(run.path());
            StoreFiles::disarmFault();
            for (const auto& f : StoreCheck::checkFolder(run.path()))
                EXPECT_FALSE(f.problem) << f.text.toStdString();
            SecurityReader r;
            r.OpenFolder(run.path());
            ASSERT_GE(r.GetSecuritiesRemaining(), 255);
            r.OpenSecurity(QStringLiteral("S255"));
            ASSERT_EQ(r.GetRecordCount(), 1);
            r.NextRecord();
            EXPECT_EQ(r.GetClose(), 255);
            if (HasFailure())
                return;
        }
    }
}
