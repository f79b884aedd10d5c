#include "frame/ui/ChildWindows.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPointer>
#include <QWidget>

namespace {
QPointer<QMdiArea> childArea;
}

void SetChildWindowArea(QMdiArea* area) { childArea = area; }

QMdiArea* ChildWindowArea() { return childArea; }

void ShowChildWindow(QWidget* window) {
    window->setAttribute(Qt::WA_DeleteOnClose);
    if (childArea) {
        QMdiSubWindow* sub = childArea->addSubWindow(window);
        sub->setAttribute(Qt::WA_DeleteOnClose);
        sub->show();
        childArea->setActiveSubWindow(sub);
        return;
    }
    window->show();
}
