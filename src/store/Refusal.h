#pragma once
// How the store's API refuses an operation: a Failure that names the class and the operation
// ("SecurityReader::OpenSecurity"), shared by the reader and the writer.

#include "frame/Failure.h"

#include <QString>

struct Refusal {
    const char* className;

    [[noreturn]] void operator()(const QString& text, const char* operation) const {
        throw Failure(FailureNumber::Store, text,
                      QLatin1String(className) + QStringLiteral("::") + QLatin1String(operation));
    }
    // Every operation on a folder's securities needs the folder open.
    void requireFolder(bool open, const char* operation) const {
        if (!open)
            (*this)(QStringLiteral("No folder is open."), operation);
    }
};
