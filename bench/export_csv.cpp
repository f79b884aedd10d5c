// How fast the CSV conversion writes, against writing the very same bytes with one buffered write of
// a string prepared beforehand, in the same run:
//   BM_ExportSeparate/65000     one security of 65,000 records into its own file
//   BM_ExportMerged/2000        2,000 securities of 250 records into one data.csv
//   BM_PreparedWrite/...        the bytes of that output, written in one go
//   BM_ReadOnly/...             the store's read of those records, with nothing written
// And how much memory the conversion takes: BM_ExportHeap/N samples the heap in use at every
// record through the progress window's step (mallinfo2), and reports what is in use at the first
// record above the start (the store's read of the security) and how far it grows over the records
// after that (what the conversion itself keeps). It also reports the highest resident memory of
// the whole run above the start (Linux's VmHWM, reset before the run), which catches what is held
// for a moment between two steps. All three have to stay flat in N. A security holds at most
// 65,534 records.
// Run: cmake --preset bench && cmake --build --preset bench --target bench_export_csv &&
//      build/bench/bin/bench_export_csv

#include "BenchSupport.h"
#include "export/CsvConversion.h"
#include "store/ReadProgress.h"
#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <malloc.h>

#include <algorithm>
#include <map>

namespace {

QTemporaryDir* folders = nullptr;

void addRecords(SecurityWriter& writer, int count, int seed) {
    QDate day(1900, 1, 1);
    for (int i = 0; i < count; ++i) {
        const double base = 10 + ((i + seed) % 1000) * 0.37;
        writer.AddQuote(day.year() * 10000 + day.month() * 100 + day.day(), 0, base, base * 1.02, base * 0.97,
                        base * 1.01, 1000 + (i * 7919) % 2000000, 0.0);
        day = day.addDays(1);
    }
}

// A folder of `securities` securities of `records` records each, made once per shape.
QString folderWith(int securities, int records) {
    static std::map<std::pair<int, int>, QString> made;
    if (auto it = made.find({securities, records}); it != made.end())
        return it->second;
    const QString folder = folders->filePath(QStringLiteral("store-%1x%2").arg(securities).arg(records));
    QDir().mkpath(folder);
    SecurityWriter writer;
    writer.OpenFolder(folder);
    for (int s = 0; s < securities; ++s) {
        const QString symbol = QStringLiteral("S%1").arg(s, 4, 10, QLatin1Char('0'));
        writer.CreateSecurity(symbol, symbol, 1);
        addRecords(writer, records, s);
        writer.SaveQuotes();
        writer.CloseSecurity();
    }
    writer.CloseFolder();
    made[{securities, records}] = folder;
    return folder;
}

QStringList symbolsOf(int securities) {
    QStringList symbols;
    for (int s = 0; s < securities; ++s)
        symbols << QStringLiteral("S%1").arg(s, 4, 10, QLatin1Char('0'));
    return symbols;
}

QString outputFolder() {
    const QString out = folders->filePath(QStringLiteral("out"));
    QDir().mkpath(out);
    return out;
}

void exportRun(benchmark::State& state, int securities, int records, bool merge) {
    const QString folder = folderWith(securities, records);
    const QStringList symbols = symbolsOf(securities);
    CsvConversion conversion;
    for (auto _ : state)
        conversion.convert(folder, outputFolder(), symbols, merge);
    const QString file = outputFolder() + (merge ? QStringLiteral("/data.csv") : QStringLiteral("/S0000.csv"));
    state.counters["bytes"] = static_cast<double>(QFile(file).size());
    state.SetBytesProcessed(state.iterations() * QFile(file).size());
    state.SetItemsProcessed(state.iterations() * securities * records);
}

// The bytes that the export of this shape wrote, written again in one buffered write.
void preparedWrite(benchmark::State& state, int securities, int records, bool merge) {
    const QString folder = folderWith(securities, records);
    CsvConversion conversion;
    conversion.convert(folder, outputFolder(), symbolsOf(securities), merge);
    const QString source = outputFolder() + (merge ? QStringLiteral("/data.csv") : QStringLiteral("/S0000.csv"));
    QFile in(source);
    in.open(QIODevice::ReadOnly);
    const QByteArray bytes = in.readAll();
    const QString target = outputFolder() + QStringLiteral("/prepared.csv");
    for (auto _ : state) {
        QFile out(target);
        out.open(QIODevice::WriteOnly | QIODevice::Truncate);
        out.write(bytes);
        out.close();
    }
    state.counters["bytes"] = static_cast<double>(bytes.size());
    state.SetBytesProcessed(state.iterations() * bytes.size());
    state.SetItemsProcessed(state.iterations() * securities * records);
}

// The store's read of the same securities, record by record, with nothing written: the part of an
// export that no way of writing can save.
void readOnly(benchmark::State& state, int securities, int records) {
    const QString folder = folderWith(securities, records);
    const QStringList symbols = symbolsOf(securities);
    double sum = 0;
    for (auto _ : state) {
        SecurityReader reader;
        reader.OpenFolder(folder);
        for (const QString& symbol : symbols) {
            reader.OpenSecurity(symbol);
            while (reader.GetRecordsRemaining() >= 1) {
                reader.NextRecord();
                sum += reader.GetDate() + reader.GetOpen() + reader.GetHigh() + reader.GetLow() + reader.GetClose() +
                       reader.GetVolume();
            }
            reader.CloseSecurity();
        }
        reader.CloseFolder();
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations() * securities * records);
}

void BM_ExportSeparate(benchmark::State& state) { exportRun(state, 1, static_cast<int>(state.range(0)), false); }
void BM_PreparedWriteSeparate(benchmark::State& state) { preparedWrite(state, 1, static_cast<int>(state.range(0)), false); }
void BM_ExportMerged(benchmark::State& state) { exportRun(state, static_cast<int>(state.range(0)), 250, true); }
void BM_PreparedWriteMerged(benchmark::State& state) { preparedWrite(state, static_cast<int>(state.range(0)), 250, true); }

void BM_ReadOnlySeparate(benchmark::State& state) { readOnly(state, 1, static_cast<int>(state.range(0))); }
void BM_ReadOnlyMerged(benchmark::State& state) { readOnly(state, static_cast<int>(state.range(0)), 250); }

BENCHMARK(BM_ExportSeparate)->Arg(65000)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_PreparedWriteSeparate)->Arg(65000)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_ExportMerged)->Arg(2000)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_PreparedWriteMerged)->Arg(2000)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_ReadOnlySeparate)->Arg(65000)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_ReadOnlyMerged)->Arg(2000)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// --- memory ---

size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// A progress window that samples the heap at every step.
struct HeapSampler : ReadProgress {
    static inline size_t first = 0, peak = 0;
    static inline bool started = false;
    void Show() override {}
    void Hide() override {}
    void SetRange(qint32, qint32) override {}
    void SetCaption(const QString&) override {}
    void SetMessage(const QString&) override {}
    void SetStep(qint32) override {}
    void StepIt() override {
        const size_t now = heapInUse();
        if (!started) {
            first = peak = now;
            started = true;
        }
        peak = std::max(peak, now);
    }
    bool GetCancelled() const override { return false; }
};

// A field of /proc/self/status in KB ("VmRSS", "VmHWM").
double statusKB(const QByteArray& field) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(field + ':'))
            return line.mid(field.size() + 1).trimmed().split(' ').value(0).toDouble();
    return 0;
}

void BM_ExportHeap(benchmark::State& state) {
    const int records = static_cast<int>(state.range(0));
    const QString folder = folderWith(1, records);
    ReadProgress::setFactory([] { return std::make_unique<HeapSampler>(); });
    CsvConversion().convert(folder, outputFolder(), {QStringLiteral("S0000")}, false);   // what is made once a run
    size_t before = 0;
    double residentBefore = 0;
    for (auto _ : state) {
        malloc_trim(0);
        before = heapInUse();
        QFile reset(QStringLiteral("/proc/self/clear_refs"));   // the peak starts again from here
        if (reset.open(QIODevice::WriteOnly))
            reset.write("5");
        reset.close();
        residentBefore = statusKB("VmRSS");
        HeapSampler::started = false;
        CsvConversion conversion;
        conversion.convert(folder, outputFolder(), {QStringLiteral("S0000")}, false);
    }
    ReadProgress::setFactory({});
    state.counters["atFirstRecordKB"] = (static_cast<double>(HeapSampler::first) - static_cast<double>(before)) / 1024;
    state.counters["growthOverRecordsKB"] = static_cast<double>(HeapSampler::peak - HeapSampler::first) / 1024;
    state.counters["residentPeakKB"] = statusKB("VmHWM") - residentBefore;
}
BENCHMARK(BM_ExportHeap)->Arg(1000)->Arg(10000)->Arg(65000)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QuietPlatform platform(QDate(2026, 11, 23));
    setPlatform(&platform);
    QTemporaryDir dir;
    folders = &dir;
    const int code = RunBenchmarks(argc, argv);
    setPlatform(nullptr);
    return code;
}
