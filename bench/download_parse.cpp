// Parsing a reply of the quotes service into Quotes: 10,000 rows, newest first.

#include "BenchSupport.h"
#include "download/DailyQuotes.h"
#include "frame/ProgramState.h"

#include <QCoreApplication>
#include <QDate>

namespace {

QString reply(int rows) {
    QString text = QStringLiteral("Date,Open,High,Low,Close,Volume,Adj Close\n");
    QDate day(2026, 11, 20);
    for (int i = 0; i < rows; ++i) {
        const double price = 100 + (i % 97) * 0.25;
        text += day.toString(Qt::ISODate) + u',' + QString::number(price) + u',' + QString::number(price + 1.5)
              + u',' + QString::number(price - 1.25) + u',' + QString::number(price + 0.5) + u','
              + QString::number(1000000 + i * 37) + u',' + QString::number(price + 0.5) + u'\n';
        day = day.addDays(-1);
    }
    return text;
}

void ParseReply(benchmark::State& state) {
    const QString text = reply(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        const QString normalised = DailyQuotes::NormaliseReply(text);
        benchmark::DoNotOptimize(DailyQuotes::ReadTable(normalised));
    }
    if (handOvers().Quotes.upperBound() != state.range(0))
        state.SkipWithError("not every row was read");
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ParseReply)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    return RunBenchmarks(argc, argv);
}
