#include "frame/ui/ChildWindows.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPointer>
#include <QStyle>
#include <QStyleOptionTitleBar>
#include <QWidget>

#include <algorithm>

namespace {
QPointer<QMdiArea> childArea;
}

void SetChildWindowArea(QMdiArea* area) { childArea = area; }

QMdiArea* ChildWindowArea() { return childArea; }

namespace {

// Where the next child window stands: cascaded one caption's height below and right of the one
// opened before it, and wholly inside the area; when the next step would reach past the area's
// edge, the cascade starts again at the top left corner.
QPoint cascadePlace(QMdiArea* area, QMdiSubWindow* sub, int step) {
    const QSize room = area->viewport()->size();
    const QSize size = sub->size();
    const int across = step > 0 ? std::max(0, room.width() - size.width()) / step : 0;
    const int down = step > 0 ? std::max(0, room.height() - size.height()) / step : 0;
    const int places = std::min(across, down) + 1;
    int others = 0;
    for (QMdiSubWindow* window : area->subWindowList())
        if (window != sub && !window->isHidden())
            ++others;
    const int at = others % places;
    return {at * step, at * step};
}

} // namespace

void ShowChildWindow(QWidget* window) {
    window->setAttribute(Qt::WA_DeleteOnClose);
    if (!childArea) {
        window->show();
        return;
    }
    // The child keeps the size its screen gave it, else its own size hint; at most the area.
    const QSize wanted = window->testAttribute(Qt::WA_Resized) ? window->size() : window->sizeHint();
    QMdiSubWindow* sub = childArea->addSubWindow(window);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    QStyleOptionTitleBar title;
    title.initFrom(sub);
    const int border = sub->style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth, nullptr, sub);
    const int caption = sub->style()->pixelMetric(QStyle::PM_TitleBarHeight, &title, sub);
    const QSize room = childArea->viewport()->size();
    if (wanted.isValid()) {
        QSize size = wanted + QSize(2 * border, caption + border);
        if (!room.isEmpty())
            size = size.boundedTo(room);
        sub->resize(size.expandedTo(sub->minimumSizeHint()).boundedTo(room.isEmpty() ? QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX) : room));
    }
    sub->move(room.isEmpty() ? QPoint(0, 0) : cascadePlace(childArea, sub, caption + border));
    sub->show();
    childArea->setActiveSubWindow(sub);
}
