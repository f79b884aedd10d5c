#pragma once
// The program's icon: a small candlestick chart on a dark tile.

#include <QIcon>
#include <QPixmap>

QPixmap ProgramPixmap(int size);
QIcon ProgramIcon();
