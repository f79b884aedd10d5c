#pragma once
// "Chart of <name>": a child window that shows one security of one data folder as a line, bar or
// candle chart. A new instance is made for each security opened; the caller sets path and symbol
// and the caption, runs load() and shows it as a child window. The records are read once; every
// resize and every change of the option redraws the whole picture from them.

#include "frame/Records.h"
#include "sheet/ChartDrawing.h"

#include <QPixmap>
#include <QWidget>

#include <vector>

class QRadioButton;

// The drawing surface: white, it keeps the picture last drawn on it across repaints.
class ChartPicture : public QWidget {
    Q_OBJECT
public:
    explicit ChartPicture(QWidget* parent = nullptr);
    const QPixmap& picture() const { return picture_; }
    void setPicture(QPixmap picture);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QPixmap picture_;
};

class ChartWindow : public QWidget {
    Q_OBJECT
public:
    explicit ChartWindow(QWidget* parent = nullptr);

    // Set by the caller before the window is loaded; used trimmed.
    QString path;     // the data folder
    QString symbol;   // the security's symbol: the chart reads the security by this

    ChartPicture* chartPicture;
    QRadioButton* lineOption;     // "Line", selected at the start: a line of the closes
    QRadioButton* barOption;      // "Bar"
    QRadioButton* candleOption;   // "Candle"

    // Reads the records and draws them. Nothing is reported: a security that can't be read gives
    // an empty chart, and a read that stops half-way keeps the records read so far.
    void load();
    // Draws the whole chart anew on the picture, at the picture's size.
    void drawChart();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    double twipsPerPixelX() const;
    double twipsPerPixelY() const;

    std::vector<QuoteRecord> quotes_;
    std::vector<ChartStep> steps_;
};
