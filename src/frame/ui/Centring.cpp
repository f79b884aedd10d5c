#include "frame/ui/Centring.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

void CentreOnScreen(QWidget* window) {
    const QScreen* screen = window->screen() ? window->screen() : QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QRect area = screen->geometry();
    const QSize size = window->frameGeometry().size();
    window->move(area.x() + (area.width() - size.width()) / 2, area.y() + (area.height() - size.height()) / 2);
}
