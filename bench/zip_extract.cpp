// The extraction of an archive of 500 members, 50 MB inflated, into an empty folder and over
// itself; the unzip tool on the same archive, in the same run, where it is installed.
#include "BenchSupport.h"
#include "download/ZipExtractor.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <zip.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

constexpr int Members = 500;
constexpr qsizetype MemberBytes = 50 * 1000 * 1000 / Members;

// Lines of quotes: text that deflates about as well as the index data does.
QByteArray quoteText(quint32 seed) {
    QRandomGenerator random(seed);
    QByteArray text;
    text.reserve(MemberBytes + 100);
    while (text.size() < MemberBytes) {
        text += "2005" + QByteArray::number(random.bounded(1, 13)).rightJustified(2, '0') +
                QByteArray::number(random.bounded(1, 29)).rightJustified(2, '0') + ',';
        for (int i = 0; i < 4; ++i)
            text += QByteArray::number(random.bounded(100000) / 100.0, 'f', 2) + ',';
        text += QByteArray::number(random.bounded(10000000)) + '\n';
    }
    text.truncate(MemberBytes);
    return text;
}

struct Fixture {
    QTemporaryDir dir;
    QString archive = dir.filePath(QStringLiteral("index.zip"));
    QString unzipTool = QStandardPaths::findExecutable(QStringLiteral("unzip"));

    Fixture() {
        std::vector<QByteArray> contents;
        contents.reserve(Members);
        int error = 0;
        zip_t* za = zip_open(QFile::encodeName(archive).constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
        for (int i = 0; i < Members; ++i) {
            contents.push_back(quoteText(quint32(i + 1)));
            const QByteArray name = "INDEX/F" + QByteArray::number(i / 100) + "/F" + QByteArray::number(i) + ".DAT";
            zip_source_t* source = zip_source_buffer(za, contents.back().constData(), zip_uint64_t(MemberBytes), 0);
            zip_file_add(za, name.constData(), source, ZIP_FL_ENC_UTF_8);
        }
        if (zip_close(za) != 0)
            std::abort();
    }
};

Fixture& fixture() {
    static Fixture f;
    return f;
}

using Extract = void (*)(const QString& archive, const QString& folder);

void withExtractor(const QString& archive, const QString& folder) {
    ZipExtractor zip;
    if (zip.Unzip(archive, folder) != 0)
        std::abort();
}

void withUnzipTool(const QString& archive, const QString& folder) {
    if (QProcess::execute(fixture().unzipTool, {QStringLiteral("-o"), QStringLiteral("-q"), archive,
                                                  QStringLiteral("-d"), folder}) != 0)
        std::abort();
}

void intoEmptyFolder(benchmark::State& state, Extract extract) {
    Fixture& f = fixture();
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const QString folder = f.dir.filePath(QStringLiteral("empty%1").arg(++round));
        state.ResumeTiming();
        extract(f.archive, folder);
        state.PauseTiming();
        QDir(folder).removeRecursively();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * Members * MemberBytes);
}

void overItself(benchmark::State& state, Extract extract) {
    Fixture& f = fixture();
    const QString folder = f.dir.filePath(QStringLiteral("over"));
    extract(f.archive, folder);
    for (auto _ : state)
        extract(f.archive, folder);
    state.SetBytesProcessed(state.iterations() * Members * MemberBytes);
    QDir(folder).removeRecursively();
}

void BM_ZipExtractorIntoEmptyFolder(benchmark::State& state) { intoEmptyFolder(state, withExtractor); }
void BM_ZipExtractorOverItself(benchmark::State& state) { overItself(state, withExtractor); }

void BM_UnzipToolIntoEmptyFolder(benchmark::State& state) {
    if (fixture().unzipTool.isEmpty())
        return state.SkipWithError("unzip is not installed");
    intoEmptyFolder(state, withUnzipTool);
}
void BM_UnzipToolOverItself(benchmark::State& state) {
    if (fixture().unzipTool.isEmpty())
        return state.SkipWithError("unzip is not installed");
    overItself(state, withUnzipTool);
}

BENCHMARK(BM_ZipExtractorIntoEmptyFolder)->Unit(benchmark::kMillisecond)->Iterations(8);
BENCHMARK(BM_UnzipToolIntoEmptyFolder)->Unit(benchmark::kMillisecond)->Iterations(8);
BENCHMARK(BM_ZipExtractorOverItself)->Unit(benchmark::kMillisecond)->Iterations(8);
BENCHMARK(BM_UnzipToolOverItself)->Unit(benchmark::kMillisecond)->Iterations(8);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QuietPlatform quiet(QDate(2026, 11, 23));
    setPlatform(&quiet);
    return RunBenchmarks(argc, argv);
}
