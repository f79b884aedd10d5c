#pragma once
// The drawing of a chart as a list of steps: the whole picture worked out by arithmetic on its
// size, in twips (x to the right, y downward, origin top left), before anything is painted. The
// screen plays the list onto its picture; the same records at the same size give the same list.

#include "frame/Records.h"

#include <QString>

#include <vector>

enum class ChartSeries { Line, Bar, Candle };

// Colours as 0xRRGGBB.
namespace ChartColour {
inline constexpr quint32 Foreground = 0x000000;   // axes, series, labels, candle bodies
inline constexpr quint32 Grid = 0xE6E6E6;         // 230, 230, 230
inline constexpr quint32 White = 0xFFFFFF;        // the background, the stroke through a candle body
}

struct ChartStep {
    enum Kind {
        Clear,       // the whole picture to white
        Line,        // from (x1, y1) to (x2, y2)
        Box,         // the outline of the box with the corners (x1, y1) and (x2, y2)
        FilledBox,   // the same box, filled with its colour
        Text,        // `text` with its top left corner at (x1, y1)
    };
    Kind kind = Clear;
    float x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    quint32 colour = ChartColour::Foreground;
    QString text;
};

// Draws the chart of `quotes` (oldest first) as `series` on a picture of width x height twips into
// `steps`, which are emptied first. It always starts with a Clear. A failure (no records, a date
// text that does not read as a date, a price range beyond 32 bits) ends the drawing where it
// stands: the steps so far are the picture.
void DrawChartSecurity(const std::vector<QuoteRecord>& quotes, float width, float height,
                              ChartSeries series, std::vector<ChartStep>& steps);
