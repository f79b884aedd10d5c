#pragma once
// A failing operation raises a Failure: a number, a description a user can read, and the source
// that raised it. Each handler catches it in the one way fixed for that handler: a message box with
// the description, a box with a fixed text, a silent end, or passOver() step by step.

#include <QString>
#include <exception>
#include <utility>

class Failure : public std::exception {
public:
    Failure(int number, QString description, QString source = {})
        : Number(number), Description(std::move(description)), Source(std::move(source)),
          what_(Description.toUtf8()) {}

    const char* what() const noexcept override { return what_.constData(); }

    int Number;
    QString Description;
    QString Source;

private:
    QByteArray what_;
};

// Failure numbers used by the program's own code.
namespace FailureNumber {
inline constexpr int Generic = 5;       // "invalid procedure call": the default for our own checks
inline constexpr int EmptyAddress = 100; // GoURL with no address
inline constexpr int Overflow = 6;
inline constexpr int TypeMismatch = 13;       // a text that does not read as the date or number wanted
inline constexpr int FileNotFound = 53;
inline constexpr int PastEndOfFile = 62;
inline constexpr int PathFileAccess = 75;
inline constexpr int PathNotFound = 76;
inline constexpr int Store = 1000;       // the store refused or could not do what was asked
inline constexpr int Network = 35761;    // a transfer failed (no connection, time-out, refused)
}

// Runs one step of a handler that is meant to go on past a failing step: the step's Failure is
// swallowed and the handler carries on with its next step. Returns whether the step succeeded.
// Use it step by step, never around a whole block.
template <typename Step>
bool passOver(Step&& step) {
    try {
        std::forward<Step>(step)();
        return true;
    } catch (const Failure&) {
        return false;
    }
}
