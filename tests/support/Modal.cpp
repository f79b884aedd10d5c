#include "support/Modal.h"

#include <QApplication>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>

void onNextModal(std::function<void(QWidget*)> action, QWidget* except) {
    auto tries = std::make_shared<int>(0);
    auto timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, tries, action, except] {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal && modal != except && modal->isVisible()) {
            timer->stop();
            timer->deleteLater();
            action(modal);
            return;
        }
        if (++*tries > 500) {
            timer->stop();
            timer->deleteLater();
            ADD_FAILURE() << "no modal dialog came up";
        }
    });
    timer->start();
}
