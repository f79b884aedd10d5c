#pragma once
// Progress windows as a test sees them.

#include "store/ReadProgress.h"

#include <QStringList>

#include <memory>

// Progress windows that log what they are told ("Show", "SetRange 0 3", "StepIt", ..., "released")
// and answer Cancelled once `cancelAfterSteps` steps have been made; installed while the object lives.
struct ProgressRecorder {
    QStringList calls;
    int cancelAfterSteps = -1;
    mutable int cancelQuestions = 0;   // times a window was asked whether it was cancelled
    struct Window : ReadProgress {
        ProgressRecorder* log;
        explicit Window(ProgressRecorder* l) : log(l) {}
        ~Window() override { log->calls << "released"; }
        void Show() override { log->calls << "Show"; }
        void Hide() override { log->calls << "Hide"; }
        void SetRange(qint32 low, qint32 high) override { log->calls << QStringLiteral("SetRange %1 %2").arg(low).arg(high); }
        void SetCaption(const QString& text) override { log->calls << "SetCaption " + text; }
        void SetMessage(const QString& text) override { log->calls << "SetMessage " + text; }
        void SetStep(qint32 step) override { log->calls << QStringLiteral("SetStep %1").arg(step); }
        void StepIt() override { log->calls << "StepIt"; }
        void OfferCancel(bool offered) override { log->calls << QStringLiteral("OfferCancel %1").arg(offered); }
        bool GetCancelled() const override {
            ++log->cancelQuestions;
            return log->cancelAfterSteps >= 0 && log->calls.count("StepIt") >= log->cancelAfterSteps;
        }
    };
    ProgressRecorder() { ReadProgress::setFactory([this] { return std::make_unique<Window>(this); }); }
    ~ProgressRecorder() { ReadProgress::setFactory({}); }
};

