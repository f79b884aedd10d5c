// How long a data sheet takes to load a long security, the store's progress window included:
// the whole of DataSheetWindow::load, from emptying the list to the newest row selected, and the
// drawing of the rows then in view.
// Run offscreen: build/sheet-bench/bin/bench_sheet_load

#include "BenchSupport.h"
#include "sheet/SheetRows.h"
#include "sheet/ui/DataSheetWindow.h"
#include "store/SecurityWriter.h"
#include "store/ui/ReadProgressWindow.h"

#include <QApplication>
#include <QDir>
#include <QTableView>
#include <QTemporaryDir>

#include <map>

namespace {

QuietPlatform* quiet = nullptr;
QTemporaryDir* folders = nullptr;

// A folder with one security of `count` daily records, made once per size.
QString folderWith(int count) {
    static std::map<int, QString> made;
    if (auto it = made.find(count); it != made.end())
        return it->second;
    const QString folder = folders->filePath(QString::number(count));
    QDir().mkpath(folder);
    SecurityWriter writer;
    writer.OpenFolder(folder);
    writer.CreateSecurity(QStringLiteral("LONG"), QStringLiteral("Long Series"), 1);
    QDate day(1900, 1, 1);
    for (int i = 0; i < count; ++i) {
        const double base = 100 + (i % 1000) * 0.25;
        writer.AddQuote(day.year() * 10000 + day.month() * 100 + day.day(), 0, base, base + 2, base - 1,
                        base + 0.5, 1000 + i, 0.0);
        day = day.addDays(1);
    }
    writer.SaveQuotes();
    writer.CloseSecurity();
    writer.CloseFolder();
    made[count] = folder;
    return folder;
}

void loadSheet(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const QString folder = folderWith(count);
    DataSheetWindow view;
    view.path = folder;
    view.securityName = QStringLiteral("Long Series");
    view.Symbol = QStringLiteral("LONG");
    view.show();
    for (auto _ : state) {
        view.load();
        view.recordsView->viewport()->repaint();   // the rows in view are drawn, texts and all
        benchmark::DoNotOptimize(view.rows()->rowCount());
    }
    if (view.rows()->rowCount() != count || view.selectedRow() != count - 1 || quiet->boxes != 0)
        state.SkipWithError("the sheet did not load every record");
    state.counters["records"] = count;
    state.SetItemsProcessed(state.iterations() * count);
}
// As the user has it: the store's progress window up, stepped and served once per record.
void BM_SheetLoad(benchmark::State& state) {
    UseReadProgressWindow();
    loadSheet(state);
    ReadProgress::setFactory({});
}
BENCHMARK(BM_SheetLoad)->Arg(10000)->Arg(65000)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// The same with the silent stand-in: what the sheet and the store cost without the window.
void BM_SheetLoadWithoutWindow(benchmark::State& state) {
    ReadProgress::setFactory({});
    loadSheet(state);
}
BENCHMARK(BM_SheetLoadWithoutWindow)->Arg(10000)->Arg(65000)->Unit(benchmark::kMillisecond)->MinTime(1.0);

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QuietPlatform services({2026, 1, 5});
    quiet = &services;
    setPlatform(&services);
    QTemporaryDir temp;
    folders = &temp;

    const int result = RunBenchmarks(argc, argv);
    setPlatform(nullptr);
    return result;
}
