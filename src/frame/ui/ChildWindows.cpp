#include "frame/ui/ChildWindows.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPointer>
#include <QStyle>
#include <QStyleOptionTitleBar>
#include <QWidget>

namespace {
QPointer<QMdiArea> childArea;
}

void SetChildWindowArea(QMdiArea* area) { childArea = area; }

QMdiArea* ChildWindowArea() { return childArea; }

void ShowChildWindow(QWidget* window) {
    window->setAttribute(Qt::WA_DeleteOnClose);
    if (childArea) {
        // The child keeps the size its screen gave it, else its own size hint; at most the area.
        const QSize wanted = window->testAttribute(Qt::WA_Resized) ? window->size() : window->sizeHint();
        QMdiSubWindow* sub = childArea->addSubWindow(window);
        sub->setAttribute(Qt::WA_DeleteOnClose);
        if (wanted.isValid()) {
            QStyleOptionTitleBar title;
            title.initFrom(sub);
            const int border = sub->style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth, nullptr, sub);
            const int caption = sub->style()->pixelMetric(QStyle::PM_TitleBarHeight, &title, sub);
            QSize size = wanted + QSize(2 * border, caption + border);
            if (!childArea->viewport()->size().isEmpty())
                size = size.boundedTo(childArea->viewport()->size());
            sub->resize(size.expandedTo(sub->minimumSizeHint()));
        }
        sub->show();
        childArea->setActiveSubWindow(sub);
        return;
    }
    window->show();
}
