#pragma once
// Modal dialogs block the caller in exec(); a test acts on them from the event loop.

#include <QString>

#include <functional>

class QWidget;

// Runs `action` with the next modal dialog once it is up (polled every 10 ms, for up to 5 s).
// A dialog that is `except` (the one already up, say) is passed over. If none comes up in time
// the test fails.
void onNextModal(std::function<void(QWidget*)> action, QWidget* except = nullptr);

// Finds a child of `root` by objectName and type; fails the test when it is missing.
template <typename T>
T* child(QWidget* root, const QString& name);

#include <QWidget>
#include <gtest/gtest.h>

template <typename T>
T* child(QWidget* root, const QString& name) {
    T* found = root ? root->findChild<T*>(name) : nullptr;
    EXPECT_NE(found, nullptr) << "no control named " << name.toStdString();
    return found;
}
