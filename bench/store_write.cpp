// Writing as the download runs do.
//  - One NSE day: for each of 2,000 rows OpenSecurity, AddQuote, SaveQuotes, CloseSecurity with
//    the folder open. Goal: under 50 ms a day, and the cost of a row the same (within 1.5x) for
//    securities of 10 and of 10,000 records.
//    The index files that close the day are flushed to the disk before and after their rename;
//    run under `strace -c -e trace=fsync,syncfs` to see what that costs.
//  - A Yahoo merge of 35 days into a 10,000-record security: DateExists, DeleteQuote if the date is
//    held, AddQuote, per record; one SaveQuotes. Goal: under 2 ms.
//  - Create New Symbols of 2,600 symbols in an empty folder, and again over the same folder (each
//    security deleted and made anew). Goal: under 2 s; the cost grows with N, not N squared.
#include "frame/Regional.h"
#include "store/SecurityWriter.h"

#include <QDate>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <vector>

namespace {

std::vector<qint32> weekdays(QDate from, int count) {
    std::vector<qint32> out;
    for (; int(out.size()) < count; from = from.addDays(1))
        if (from.dayOfWeek() <= 5)
            out.push_back(Regional::toStoreDate(from));
    return out;
}

// A folder of `securities` securities of `records` records each; it grows by one day per run.
struct NseFolder {
    QTemporaryDir dir;
    QDate next;
    int securities;
    NseFolder(int securityCount, int records) : securities(securityCount) {
        const auto days = weekdays(QDate(1980, 1, 1), records);
        SecurityWriter w;
        w.OpenFolder(dir.path());
        for (int s = 0; s < securities; ++s) {
            w.CreateSecurity(QStringLiteral("S%1").arg(s), QStringLiteral("S%1").arg(s), 1);
            for (size_t i = 0; i < days.size(); ++i)
                w.AddQuote(days[i], 0, 10, 11, 9, 10.5, 1000 + i, 0);
            w.SaveQuotes();
            w.CloseSecurity();
        }
        w.CloseFolder();
        next = Regional::fromStoreDate(days.back()).addDays(1);
        runDay();  // the first look at each data file reads it whole; a run of days sees that once
    }
    void runDay() {
        while (next.dayOfWeek() > 5)
            next = next.addDays(1);
        const qint32 date = Regional::toStoreDate(next);
        SecurityWriter w;
        w.OpenFolder(dir.path());
        for (int s = 0; s < securities; ++s) {
            w.OpenSecurity(QStringLiteral("S%1").arg(s));
            w.AddQuote(date, 0, 10, 11, 9, 10.5, 12345, 0);
            w.SaveQuotes();
            w.CloseSecurity();
        }
        w.CloseFolder();
        next = next.addDays(1);
    }
};

NseFolder& nseFolder(int securities, int records) {
    static std::map<std::pair<int, int>, std::unique_ptr<NseFolder>> folders;
    auto& f = folders[{securities, records}];
    if (!f)
        f = std::make_unique<NseFolder>(securities, records);
    return *f;
}

void BM_NseDay(benchmark::State& state) {
    NseFolder& f = nseFolder(int(state.range(0)), int(state.range(1)));
    for (auto _ : state)
        f.runDay();
    state.SetItemsProcessed(state.iterations() * f.securities);
    state.counters["us_per_row"] =
        benchmark::Counter(double(f.securities), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_NseDay)->ArgNames({"securities", "records"})
    ->Args({2000, 10})->Args({200, 10})->Args({200, 10000})
    ->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_YahooMerge35Days(benchmark::State& state) {
    QTemporaryDir dir;
    const auto days = weekdays(QDate(1980, 1, 1), 10000);
    {
        SecurityWriter w;
        w.OpenFolder(dir.path());
        w.CreateSecurity(QStringLiteral("BIG"), QStringLiteral("BIG"), 1);
        for (size_t i = 0; i < days.size(); ++i)
            w.AddQuote(days[i], 0, 10, 11, 9, 10.5, 1000 + i, 0);
        w.SaveQuotes();
        w.CloseFolder();
    }
    QDate last = Regional::fromStoreDate(days.back());
    for (auto _ : state) {
        // The reply runs from 35 days before the last date to a day after it, newest first.
        const QDate newest = last.addDays(1);
        std::vector<qint32> reply;
        for (QDate d = newest; d >= last.addDays(-35); d = d.addDays(-1))
            if (d.dayOfWeek() <= 5)
                reply.push_back(Regional::toStoreDate(d));
        SecurityWriter w;
        w.OpenFolder(dir.path());
        w.OpenSecurity(QStringLiteral("BIG"));
        for (qint32 date : reply) {
            const QString text = QString::number(date);
            if (w.DateExists(text))
                w.DeleteQuote(text);
            w.AddQuote(date, 0, 10.25, 11.5, 9.75, 10.5, 2000, 0);
        }
        w.SaveQuotes();
        w.CloseSecurity();
        w.CloseFolder();
        last = newest;
    }
}
BENCHMARK(BM_YahooMerge35Days)->Unit(benchmark::kMillisecond);

// The sequence of Create New Symbols for `count` symbols in one open folder.
void createSymbols(const QString& folder, int count) {
    SecurityWriter w;
    w.OpenFolder(folder);
    for (int i = 0; i < count; ++i) {
        const QString symbol = QStringLiteral("SYM%1").arg(i);
        if (w.SymbolExists(symbol))
            w.DeleteSecurity(symbol);
        w.CreateSecurity(symbol, symbol, 1);
        w.AddQuote(20050801, 0, 0, 0, 0, 0, 0, 0);
        w.DeleteQuote(QStringLiteral("20050801"));
        w.CloseSecurity();
    }
    w.CloseFolder();
}

void BM_CreateSymbols(benchmark::State& state) {
    const int count = int(state.range(0));
    const bool again = state.range(1) != 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto dir = std::make_unique<QTemporaryDir>();
        if (again)
            createSymbols(dir->path(), count);
        state.ResumeTiming();
        createSymbols(dir->path(), count);
        state.PauseTiming();
        dir.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_CreateSymbols)->ArgNames({"symbols", "again"})
    ->Args({260, 0})->Args({2600, 0})->Args({2600, 1})
    ->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
