// The NSE daily run against a loopback server, into a folder of 2,000 securities made as Create
// New Symbols makes them.
//  - The split of one day's reply of 2,000 rows (about 200 KB) into rows.
//  - Today's form of such a day: the zipped file (34 columns, about 500 KB unpacked) unpacked in
//    memory and read by the names of its columns.
//  - One day: values.dat read, the reply fetched, split and written row by row, values.dat
//    rewritten. Goal: under 50 ms outside the wait for the network.
//  - A walk over 30 calendar days (weekends answered with short pages): the time per day outside
//    the wait.

#include "BenchSupport.h"
#include "catalogue/CreateSymbols.h"
#include "download/BhavCopy.h"
#include "download/Inet.h"
#include "download/NseDailyRun.h"
#include "download/TodayBhavCopy.h"
#include "frame/Regional.h"
#include "store/SecurityWriter.h"

// The test suite's loopback server, built into this program as it stands.
#include "../tests/support/LoopbackHttpServer.cpp"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <zip.h>

namespace {

constexpr int Securities = 2000;

// Today as the benchmark moves it on.
class MovingPlatform : public QuietPlatform {
public:
    using QuietPlatform::QuietPlatform;
    QDate day;
    QDate today() override { return day; }
};

class SilentListener : public NseDailyListener {
public:
    void runStarted() override {}
    void walkStarted() override {}
    void dayUpdated(const QString&) override { ++days; }
    void walkEnded() override {}
    void runEnded() override {}
    int days = 0;
};

QString symbol(int i) { return QStringLiteral("S%1").arg(i); }

// A day's file of the archive: a header and one row for each security, about 200 KB.
QByteArray dayReply() {
    QByteArray body = "SYMBOL,SERIES,OPEN,HIGH,LOW,CLOSE,LAST,PREVCLOSE,TOTTRDQTY,TOTTRDVAL,TIMESTAMP,\n";
    for (int i = 1; i <= Securities; ++i)
        body += symbol(i).toLatin1() + ",EQ,1234.50,1240.00,1220.10,1235.25,1235.00,1230.00,"
                + QByteArray::number(1000000 + i) + ",1523456789.25,06-AUG-2005,\n";
    return body;
}

// A folder of 2,000 empty securities, values.dat naming `from`.
struct NseFolder {
    QTemporaryDir dir;
    explicit NseFolder(const QDate& from) {
        QStringList symbols;
        for (int i = 1; i <= Securities; ++i)
            symbols << symbol(i);
        SecurityWriter writer;
        CreateSymbols::CreateSecurities(writer, dir.path(), symbols, from);
        CreateSymbols::WriteValuesFile(dir.path(), from);
    }
};

// The same day in today's form, zipped as the exchange serves it.
QByteArray todayDayArchive() {
    QByteArray csv = "TradDt,BizDt,Sgmt,Src,FinInstrmTp,FinInstrmId,ISIN,TckrSymb,SctySrs,XpryDt,FininstrmActlXpryDt,"
                     "StrkPric,OptnTp,FinInstrmNm,OpnPric,HghPric,LwPric,ClsPric,LastPric,PrvsClsgPric,UndrlygPric,"
                     "SttlmPric,OpnIntrst,ChngInOpnIntrst,TtlTradgVol,TtlTrfVal,TtlNbOfTxsExctd,SsnId,NewBrdLotQty,"
                     "Rmks,Rsvd1,Rsvd2,Rsvd3,Rsvd4\n";
    for (int i = 1; i <= Securities; ++i)
        csv += "2026-01-02,2026-01-02,CM,NSE,STK," + QByteArray::number(i) + ",INE000A01018," + symbol(i).toLatin1()
               + ",EQ,,,,,SECURITY NUMBER " + QByteArray::number(i) + " LTD,1234.50,1240.00,1220.10,1235.25,1235.00,"
               "1230.00,,1235.25,,," + QByteArray::number(1000000 + i) + ",1523456789.25,12345,F1,1,,,,,\n";
    QTemporaryDir dir;
    const QByteArray path = QFile::encodeName(dir.filePath(QStringLiteral("day.zip")));
    int error = 0;
    zip_t* archive = zip_open(path.constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    if (!archive)
        return {};
    zip_source_t* member = zip_source_buffer(archive, csv.constData(), zip_uint64_t(csv.size()), 0);
    zip_file_add(archive, "BhavCopy_NSE_CM_0_0_0_20260102_F_0000.csv", member, ZIP_FL_ENC_UTF_8);
    if (zip_close(archive) != 0)
        return {};
    QFile file(QString::fromLocal8Bit(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void NseTodayUnzipAndRead(benchmark::State& state) {
    const QByteArray archive = todayDayArchive();
    qsizetype rows = 0;
    for (auto _ : state) {
        const auto read = TodayBhavCopy::ReadArchive(archive);
        rows = read ? read->size() : 0;
        benchmark::DoNotOptimize(read);
    }
    if (rows != Securities)
        state.SkipWithError("not every row was read");
    state.counters["archive_kb"] = double(archive.size()) / 1024.0;
    state.SetItemsProcessed(state.iterations() * rows);
}
BENCHMARK(NseTodayUnzipAndRead)->Unit(benchmark::kMillisecond);

void NseReplySplit(benchmark::State& state) {
    const QString reply = QString::fromLatin1(dayReply());
    qsizetype rows = 0;
    for (auto _ : state) {
        const QList<BhavRow> read = BhavCopyArchive::ReadRows(reply);
        rows = read.size();
        benchmark::DoNotOptimize(read.data());
    }
    if (rows != Securities)
        state.SkipWithError("not every row was read");
    state.counters["reply_kb"] = double(reply.size()) / 1024.0;
    state.SetItemsProcessed(state.iterations() * rows);
}
BENCHMARK(NseReplySplit)->Unit(benchmark::kMillisecond);

// Runs of `days` calendar days each, one after the other over the same folder. Reports the time
// per day and the part of it spent outside the wait for the network.
void Walk(benchmark::State& state, int days, bool weekends) {
    const QDate first(2026, 1, 1);
    MovingPlatform services(first);
    services.day = first;
    setPlatform(&services);
    NseFolder folder(first);

    LoopbackHttpServer server;
    services.settings["Sources/Bhavcopy"] = server.endpoint();
    const QByteArray reply = dayReply();
    // The days are asked for in order; with `weekends`, Saturdays and Sundays get the server's
    // short page.
    QDate asked;
    server.setHandler([&](const QByteArray&) {
        asked = asked.addDays(1);
        if (weekends && asked.dayOfWeek() >= 6)
            return LoopbackReply::withStatus(404, "<html><body>Not Found</body></html>");
        return LoopbackReply::ok(reply);
    });

    Inet connection;
    SilentListener listener;
    const std::unique_ptr<BhavCopySource> source = MakeBhavCopySource(connection);
    NseDailyRun run(*source, listener);

    qint64 totalNs = 0;
    qint64 waitNs = 0;
    qint64 walked = 0;
    int withData = 0;
    QDate last = first;   // what values.dat names
    for (auto _ : state) {
        asked = last;
        services.day = last.addDays(days);
        const qint64 waitedBefore = connection.WaitedNanoseconds();
        const int before = listener.days;
        QElapsedTimer clock;
        clock.start();
        run.BeginDownload(folder.dir.path());
        totalNs += clock.nsecsElapsed();
        waitNs += connection.WaitedNanoseconds() - waitedBefore;
        walked += last.daysTo(services.day);
        withData += listener.days - before;
        // values.dat now names the last day with data.
        last = services.day;
        while (weekends && last.dayOfWeek() >= 6)
            last = last.addDays(-1);
        if (server.targets.size() != walked)
            state.SkipWithError("a day was not asked for");
    }
    state.counters["days"] = double(walked);
    state.counters["days_with_data"] = double(withData);
    state.counters["ms_per_day"] = totalNs / double(walked) / 1e6;
    state.counters["ms_waiting_per_day"] = waitNs / double(walked) / 1e6;
    state.counters["ms_outside_wait_per_day"] = (totalNs - waitNs) / double(walked) / 1e6;
    state.counters["ms_outside_wait_per_day_with_data"] = withData ? (totalNs - waitNs) / double(withData) / 1e6 : 0;

    setPlatform(nullptr);
}

// One day at a time: the day of 2,000 rows into 2,000 securities.
void NseOneDay(benchmark::State& state) { Walk(state, 1, false); }
BENCHMARK(NseOneDay)->Unit(benchmark::kMillisecond)->Iterations(20);

void NseWalkOf30Days(benchmark::State& state) { Walk(state, 30, true); }
BENCHMARK(NseWalkOf30Days)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    return RunBenchmarks(argc, argv);
}
