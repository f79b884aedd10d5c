// Reading a 10,000-record security the way a sheet does (eight calls per record) against a plain
// read of the file and a decode of its floats. Goal: the calls within 3x of the plain read.
#include "frame/Regional.h"
#include "store/MetaStockFormat.h"
#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"

#include <QDate>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

constexpr int Records = 10000;

struct Folder {
    QTemporaryDir dir;
    Folder() {
        SecurityWriter w;
        w.OpenFolder(dir.path());
        w.CreateSecurity(QStringLiteral("BIG"), QStringLiteral("BIG"), 1);
        QDate day(1980, 1, 1);
        for (int i = 0; i < Records; day = day.addDays(1)) {
            if (day.dayOfWeek() > 5)
                continue;
            const qint32 date = Regional::toStoreDate(day);
            const double p = 10.0 + (i % 97) * 0.25;
            w.AddQuote(date, 0, p, p + 1, p - 1, p + 0.5, 1000 + i, 0);
            ++i;
        }
        w.SaveQuotes();
        w.CloseFolder();
    }
};

Folder& folder() {
    static Folder f;
    return f;
}

void BM_ReadThroughTheCalls(benchmark::State& state) {
    const QString path = folder().dir.path();
    for (auto _ : state) {
        SecurityReader r;
        r.OpenFolder(path);
        r.OpenSecurity(QStringLiteral("BIG"));
        r.SetRecordMode(2);
        double sum = 0;
        while (r.GetRecordsRemaining() > 0) {
            r.NextRecord();
            sum += r.GetDate() + r.GetOpen() + r.GetHigh() + r.GetLow() + r.GetClose() + r.GetVolume();
        }
        r.CloseSecurity();
        r.CloseFolder();
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * Records);
}
BENCHMARK(BM_ReadThroughTheCalls)->Unit(benchmark::kMillisecond);

void BM_PlainReadAndDecode(benchmark::State& state) {
    const QString file = folder().dir.path() + QStringLiteral("/F1.DAT");
    for (auto _ : state) {
        QFile f(file);
        f.open(QIODevice::ReadOnly);
        const QByteArray bytes = f.readAll();
        const auto* p = reinterpret_cast<const unsigned char*>(bytes.constData()) + 28;
        const int count = int(bytes.size() / 28) - 1;
        std::vector<float> values(size_t(count) * 7);
        for (int i = 0; i < count * 7; ++i)
            values[size_t(i)] = metastock::mbfToFloat(p + 4 * i);
        benchmark::DoNotOptimize(values.data());
    }
    state.SetItemsProcessed(state.iterations() * Records);
}
BENCHMARK(BM_PlainReadAndDecode)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
