#include "frame/ui/ProgramIcon.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

QPixmap ProgramPixmap(int size) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal s = size / 32.0;

    QPainterPath tile;
    tile.addRoundedRect(QRectF(0.5 * s, 0.5 * s, 31 * s, 31 * s), 5 * s, 5 * s);
    painter.fillPath(tile, QColor(24, 52, 88));

    // Four candles: wick from low to high, body from open to close; green rises, red falls.
    struct Candle { qreal x, high, low, open, close; };
    const Candle candles[] = {{6, 20, 28, 26, 22}, {13, 14, 25, 22, 17}, {20, 16, 24, 17, 21},
                              {26, 5, 18, 15, 8}};
    for (const Candle& c : candles) {
        const bool up = c.close < c.open;   // screen y grows downwards
        const QColor colour = up ? QColor(92, 214, 120) : QColor(236, 94, 84);
        painter.setPen(QPen(colour, 1.2 * s));
        painter.drawLine(QPointF(c.x * s, c.high * s), QPointF(c.x * s, c.low * s));
        const qreal top = std::min(c.open, c.close), bottom = std::max(c.open, c.close);
        painter.fillRect(QRectF((c.x - 2) * s, top * s, 4 * s, (bottom - top) * s), colour);
    }
    return pixmap;
}

QIcon ProgramIcon() {
    QIcon icon;
    for (int size : {16, 24, 32, 48, 64, 128})
        icon.addPixmap(ProgramPixmap(size));
    return icon;
}
