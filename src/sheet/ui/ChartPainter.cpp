#include "sheet/ui/ChartPainter.h"

#include <QColor>
#include <QFont>
#include <QFontMetrics>
#include <QPaintDevice>
#include <QPainter>
#include <QPen>

#include <algorithm>
#include <cmath>
#include <vector>

void PaintChartSteps(QPaintDevice& picture, const std::vector<ChartStep>& steps, double twipsPerPixelX,
                     double twipsPerPixelY, const QFont& font) {
    QPainter painter(&picture);
    if (!painter.isActive())
        return;
    painter.setFont(font);
    const int ascent = QFontMetrics(font, &picture).ascent();

    auto px = [&](float x) { return static_cast<int>(std::lround(x / twipsPerPixelX)); };
    auto py = [&](float y) { return static_cast<int>(std::lround(y / twipsPerPixelY)); };

    // The pen changes only with the colour: a long series is thousands of lines of one colour.
    quint32 penColour = ChartColour::Foreground;
    painter.setPen(QPen(QColor::fromRgb(penColour), 0));
    auto use = [&](quint32 colour) {
        if (colour != penColour) {
            penColour = colour;
            painter.setPen(QPen(QColor::fromRgb(colour), 0));
        }
    };

    // The grid lies beneath all else: drawn in its turn, after the axes, a grid line would put its
    // grey over the black of the price axis at every whole price.
    auto isGrid = [](const ChartStep& step) { return step.kind == ChartStep::Line && step.colour == ChartColour::Grid; };
    std::vector<const ChartStep*> order;
    order.reserve(steps.size());
    for (const ChartStep& step : steps)
        if (step.kind == ChartStep::Clear || isGrid(step))
            order.push_back(&step);
    for (const ChartStep& step : steps)
        if (step.kind != ChartStep::Clear && !isGrid(step))
            order.push_back(&step);

    for (const ChartStep* next : order) {
        const ChartStep& step = *next;
        switch (step.kind) {
        case ChartStep::Clear:
            painter.fillRect(QRect(QPoint(0, 0), QSize(picture.width(), picture.height())),
                             QColor::fromRgb(step.colour));
            break;
        case ChartStep::Line: {
            const QPoint from(px(step.x1), py(step.y1));
            const QPoint to(px(step.x2), py(step.y2));
            if (from.x() == to.x() || from.y() == to.y()) {
                // Level and upright lines, the grid and most of a bar or candle, are one-pixel
                // rectangles, both ends included: the same pixels, filled far faster.
                painter.fillRect(QRect(QPoint(std::min(from.x(), to.x()), std::min(from.y(), to.y())),
                                       QPoint(std::max(from.x(), to.x()), std::max(from.y(), to.y()))),
                                 QColor::fromRgb(step.colour));
            } else {
                use(step.colour);
                painter.drawLine(from, to);
            }
            break;
        }
        case ChartStep::Box:
        case ChartStep::FilledBox: {
            // Both corners belong to the box.
            const int x1 = px(step.x1), y1 = py(step.y1), x2 = px(step.x2), y2 = py(step.y2);
            const QRect box(QPoint(std::min(x1, x2), std::min(y1, y2)), QPoint(std::max(x1, x2), std::max(y1, y2)));
            if (step.kind == ChartStep::FilledBox) {
                painter.fillRect(box, QColor::fromRgb(step.colour));
            } else {
                use(step.colour);
                painter.drawRect(box.adjusted(0, 0, -1, -1));
            }
            break;
        }
        case ChartStep::Text:
            use(step.colour);
            painter.drawText(QPoint(px(step.x1), py(step.y1) + ascent), step.text);
            break;
        }
    }
}
