#include "sheet/ui/ChartWindow.h"

#include "frame/Failure.h"
#include "sheet/ChartData.h"
#include "sheet/ui/ChartPainter.h"

#include <QPainter>
#include <QRadioButton>

#include <cmath>

namespace {

// The picture is the window less these, in twips.
constexpr double WidthAllowance = 350;
constexpr double HeightAllowance = 600;
constexpr double TwipsPerInch = 1440;

QRadioButton* option(QWidget* parent, const QString& name, const QString& caption) {
    auto b = new QRadioButton(caption, parent);
    b->setObjectName(name);
    return b;
}

} // namespace

ChartPicture::ChartPicture(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void ChartPicture::setPicture(QPixmap picture) {
    picture_ = std::move(picture);
    update();
}

void ChartPicture::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    painter.drawPixmap(0, 0, picture_);
}

ChartWindow::ChartWindow(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("ChartWindow"));

    chartPicture = new ChartPicture(this);
    chartPicture->setObjectName(QStringLiteral("chartPicture"));
    lineOption = option(this, QStringLiteral("lineOption"), QStringLiteral("Line"));
    barOption = option(this, QStringLiteral("barOption"), QStringLiteral("Bar"));
    candleOption = option(this, QStringLiteral("candleOption"), QStringLiteral("Candle"));
    lineOption->setChecked(true);

    for (QRadioButton* b : {lineOption, barOption, candleOption})
        connect(b, &QRadioButton::toggled, this, [this](bool on) {
            if (on)
                drawChart();
        });
    resize(720, 480);
}

double ChartWindow::twipsPerPixelX() const { return TwipsPerInch / logicalDpiX(); }
double ChartWindow::twipsPerPixelY() const { return TwipsPerInch / logicalDpiY(); }

void ChartWindow::load() {
    try {
        if (LoadChart(path, symbol, quotes_) == ChartLoadEnd::Cancelled)
            return;   // the first showing draws what was read
    } catch (const Failure&) {
        return;
    }
    drawChart();
}

void ChartWindow::drawChart() {
    const ChartSeries series = lineOption->isChecked()  ? ChartSeries::Line
                               : barOption->isChecked() ? ChartSeries::Bar
                                                        : ChartSeries::Candle;
    const double tx = twipsPerPixelX();
    const double ty = twipsPerPixelY();
    const QSize size = chartPicture->size();
    DrawChartSecurity(quotes_, static_cast<float>(size.width() * tx), static_cast<float>(size.height() * ty),
                      series, steps_);
    if (size.isEmpty()) {
        chartPicture->setPicture({});
        return;
    }
    QPixmap picture(size);
    PaintChartSteps(picture, steps_, tx, ty, chartPicture->font());
    chartPicture->setPicture(std::move(picture));
}

void ChartWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const double tx = twipsPerPixelX();
    const double ty = twipsPerPixelY();

    // A window too small for the picture leaves that side of it as it was.
    QSize picture = chartPicture->size();
    const double pictureWidth = width() * tx - WidthAllowance;
    const double pictureHeight = height() * ty - HeightAllowance;
    if (pictureWidth >= 0)
        picture.setWidth(static_cast<int>(std::lround(pictureWidth / tx)));
    if (pictureHeight >= 0)
        picture.setHeight(static_cast<int>(std::lround(pictureHeight / ty)));

    // The picture stands centred across the window, the options in a row below it.
    const int left = std::max(0, (width() - picture.width()) / 2);
    const int top = static_cast<int>(std::lround(60 / ty));
    chartPicture->setGeometry(QRect(QPoint(left, top), picture));
    int x = left;
    const int optionsTop = top + picture.height() + 2;
    for (QRadioButton* b : {lineOption, barOption, candleOption}) {
        const QSize hint = b->sizeHint();
        b->setGeometry(QRect(QPoint(x, optionsTop), hint));
        x += hint.width() + 16;
    }
    drawChart();
}
