#pragma once
// The store's progress window for long reads, as the program sees it. Releasing the object takes
// the window down. The window itself lives in ui_store (ReadProgressWindow); core code makes one
// through ReadProgress::create(), which gives a window when the screens are linked in and a
// silent stand-in otherwise (the command-line companion, benchmarks of core).

#include <QString>

#include <functional>
#include <memory>

class ReadProgress {
public:
    virtual ~ReadProgress() = default;

    virtual void Show() = 0;
    virtual void Hide() = 0;
    virtual void SetRange(qint32 low, qint32 high) = 0;
    virtual void SetCaption(const QString& caption) = 0;
    virtual void SetMessage(const QString& message) = 0;
    virtual void SetStep(qint32 step) = 0;
    // Moves the bar on by one step and serves the window's events, so that Cancel gets through.
    virtual void StepIt() = 0;
    virtual bool GetCancelled() const = 0;
    // The window offers Cancel unless told otherwise; a caller that never asks GetCancelled takes
    // it away, so that no button promises a stop that does not come.
    virtual void OfferCancel(bool offered) { (void)offered; }

    // A new progress object, from the installed factory.
    static std::unique_ptr<ReadProgress> create();
    // Installs the factory that create() uses; an empty function restores the silent stand-in.
    static void setFactory(std::function<std::unique_ptr<ReadProgress>()> factory);
};
