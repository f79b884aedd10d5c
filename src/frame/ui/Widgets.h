#pragma once
// Small helpers for building screens.

#include <QString>

// Gives a freshly made control its objectName (the same as the member that holds it, so that
// tests and scripts find it by what it is) and hands it back.
template <typename T>
T* named(T* widget, const char* name) {
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}
