#pragma once
// Plays a chart's drawing steps onto a picture. The steps are in twips; the picture has pixels,
// at 1,440 twips to the inch of its logical resolution. All lines are one pixel wide.

#include "sheet/ChartDrawing.h"

#include <vector>

class QFont;
class QPaintDevice;

void PaintChartSteps(QPaintDevice& picture, const std::vector<ChartStep>& steps, double twipsPerPixelX,
                     double twipsPerPixelY, const QFont& font);
