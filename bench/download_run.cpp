// A World Exchanges run of 200 securities against a loopback server with small replies. Reports
// the time per security and the part of it spent outside the wait for the network.

#include "BenchSupport.h"
#include "download/DownloadRun.h"
#include "download/Inet.h"
#include "download/DailyQuotes.h"
#include "frame/ProgramState.h"
#include "frame/Regional.h"
#include "store/SecurityWriter.h"

// The test suite's loopback server, built into this program as it stands.
#include "../tests/support/LoopbackHttpServer.cpp"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

namespace {

class SilentListener : public DownloadListener {
public:
    void itemStarted(int, int, const QString&, qint16, qint16, qint16) override {}
    void fetching(const QString&) override {}
    void recordRange(int) override {}
    void recordProgress(int) override {}
    void lineAdded(const QString& line) override { lines += line.startsWith(QStringLiteral("Download Complete")); }
    void captionChanged(const QString&) override {}
    void runEnded() override {}
    int lines = 0;
};

void RunOf200Securities(benchmark::State& state) {
    constexpr int Count = 200;
    QuietPlatform services({2026, 11, 23});
    setPlatform(&services);
    QTemporaryDir folder;

    LoopbackHttpServer server;
    server.serve(LoopbackReply::ok("Date,Open,High,Low,Close,Volume,Adj Close\n"
                                   "2026-10-06,12,13,11,12.5,900,12.5\n"
                                   "2026-10-05,11,12,10,11.5,800,11.5\n"
                                   "2026-10-02,10,11,9,10.5,700,10.5\n"));
    services.settings["Sources/Quotes"] = server.endpoint();

    {
        SecurityWriter writer;
        writer.OpenFolder(folder.path());
        for (int i = 1; i <= Count; ++i) {
            writer.CreateSecurity(QStringLiteral("S%1").arg(i), QStringLiteral("S%1").arg(i), 1);
            writer.AddQuote(20261001, 0, 10, 11, 9, 10.5, 500, 0);
            writer.SaveQuotes();
            writer.CloseSecurity();
        }
        writer.CloseFolder();
    }
    handOvers().DownloadItems.clear();
    for (int i = 1; i <= Count; ++i)
        handOvers().DownloadItems.append({QStringLiteral("S%1").arg(i), Regional::dateText({2026, 8, 27}),
                                       Regional::dateText({2026, 10, 2}), folder.path()});

    qint64 totalNs = 0;
    qint64 waitNs = 0;
    qint64 runs = 0;
    for (auto _ : state) {
        Inet connection;
        SilentListener listener;
        DownloadRun run(connection, listener);
        QElapsedTimer clock;
        clock.start();
        run.RunDownload();
        totalNs += clock.nsecsElapsed();
        waitNs += connection.WaitedNanoseconds();
        ++runs;
        if (listener.lines != Count)
            state.SkipWithError("not every security was downloaded");
    }
    const double perSecurity = double(runs) * Count;
    state.counters["us_per_security"] = totalNs / perSecurity / 1000.0;
    state.counters["us_waiting_per_security"] = waitNs / perSecurity / 1000.0;
    state.counters["us_outside_wait_per_security"] = (totalNs - waitNs) / perSecurity / 1000.0;

    setPlatform(nullptr);
}
BENCHMARK(RunOf200Securities)->Unit(benchmark::kMillisecond)->Iterations(5);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    return RunBenchmarks(argc, argv);
}
