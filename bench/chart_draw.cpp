// How long a chart takes to redraw from scratch, as it does on every resize: the drawing worked
// out as a list of steps and played onto a picture of the screen's size, against the same
// primitives painted by a bare QPainter loop onto a QPixmap of that size in the same run.
//   candle: 10,000 records at 1920 x 1080
//   line:   a security ranging from 100 to 5,000, about 4,900 grid lines, at 1920 x 1080
// Run offscreen: build/bench/bin/bench_chart_draw

#include "BenchSupport.h"
#include "frame/Regional.h"
#include "sheet/ChartDrawing.h"
#include "sheet/ui/ChartPainter.h"

#include <QApplication>
#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QPixmap>

#include <cmath>

namespace {

constexpr int PictureWidth = 1920;
constexpr int PictureHeight = 1080;
constexpr double TwipsPerPixel = 15;   // 96 dots to the inch

// 10,000 records that wander between about 50 and 150.
std::vector<QuoteRecord> candleRecords() {
    std::vector<QuoteRecord> out;
    QDate day(1980, 1, 1);
    for (int i = 0; i < 10000; ++i, day = day.addDays(1)) {
        const double mid = 100 + 45 * std::sin(i / 300.0) + 3 * std::sin(i / 7.0);
        const double open = mid + ((i % 3) - 1) * 0.8;
        const double close = mid - ((i % 5) - 2) * 0.5;
        out.push_back({Regional::dateText(day), open, std::max(open, close) + 1.2, std::min(open, close) - 1.1, close, 1000});
    }
    return out;
}

// 2,000 records climbing from 100 to 5,000: the grid has a line for every whole price.
std::vector<QuoteRecord> wideRangeRecords() {
    std::vector<QuoteRecord> out;
    QDate day(1990, 1, 1);
    for (int i = 0; i < 2000; ++i, day = day.addDays(1)) {
        const double close = 100 + 4900.0 * i / 1999;
        out.push_back({Regional::dateText(day), close, close, close, close, 1000});
    }
    return out;
}

void drawChart(benchmark::State& state, const std::vector<QuoteRecord>& quotes, ChartSeries series) {
    QPixmap picture(PictureWidth, PictureHeight);
    const QFont font = QApplication::font();
    std::vector<ChartStep> steps;
    for (auto _ : state) {
        DrawChartSecurity(quotes, float(PictureWidth * TwipsPerPixel), float(PictureHeight * TwipsPerPixel), series,
                          steps);
        PaintChartSteps(picture, steps, TwipsPerPixel, TwipsPerPixel, font);
    }
    state.counters["steps"] = double(steps.size());
}

// The same primitives in pixels, worked out once, then painted by a plain loop.
struct Primitive {
    ChartStep::Kind kind;
    QLine line;
    QRect box;
    QColor colour;
    QString text;
};

void drawBare(benchmark::State& state, const std::vector<QuoteRecord>& quotes, ChartSeries series) {
    std::vector<ChartStep> steps;
    DrawChartSecurity(quotes, float(PictureWidth * TwipsPerPixel), float(PictureHeight * TwipsPerPixel), series,
                      steps);
    auto p = [](float v) { return int(std::lround(v / TwipsPerPixel)); };
    std::vector<Primitive> primitives;
    for (const ChartStep& s : steps)
        primitives.push_back({s.kind, QLine(p(s.x1), p(s.y1), p(s.x2), p(s.y2)),
                              QRect(QPoint(p(s.x1), p(s.y1)), QPoint(p(s.x2), p(s.y2))).normalized(),
                              QColor::fromRgb(s.colour), s.text});

    QPixmap picture(PictureWidth, PictureHeight);
    const QFont font = QApplication::font();
    const int ascent = QFontMetrics(font).ascent();
    for (auto _ : state) {
        QPainter painter(&picture);
        painter.setFont(font);
        painter.fillRect(picture.rect(), Qt::white);
        QColor current = Qt::black;
        painter.setPen(QPen(current, 0));
        for (const Primitive& prim : primitives) {
            if (prim.kind != ChartStep::FilledBox && prim.colour != current) {
                current = prim.colour;
                painter.setPen(QPen(current, 0));
            }
            switch (prim.kind) {
            case ChartStep::Clear: break;
            case ChartStep::Line: painter.drawLine(prim.line); break;
            case ChartStep::Box: painter.drawRect(prim.box.adjusted(0, 0, -1, -1)); break;
            case ChartStep::FilledBox: painter.fillRect(prim.box, prim.colour); break;
            case ChartStep::Text: painter.drawText(prim.line.p1() + QPoint(0, ascent), prim.text); break;
            }
        }
    }
    state.counters["steps"] = double(primitives.size());
}

void BM_CandleChart(benchmark::State& state) { drawChart(state, candleRecords(), ChartSeries::Candle); }
void BM_CandleBareQPainter(benchmark::State& state) { drawBare(state, candleRecords(), ChartSeries::Candle); }
void BM_WideRangeLineChart(benchmark::State& state) { drawChart(state, wideRangeRecords(), ChartSeries::Line); }
void BM_WideRangeBareQPainter(benchmark::State& state) { drawBare(state, wideRangeRecords(), ChartSeries::Line); }

BENCHMARK(BM_CandleChart)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_CandleBareQPainter)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_WideRangeLineChart)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_WideRangeBareQPainter)->Unit(benchmark::kMillisecond)->MinTime(1.0);

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QuietPlatform services({2026, 1, 5});
    setPlatform(&services);
    const int result = RunBenchmarks(argc, argv);
    setPlatform(nullptr);
    return result;
}
