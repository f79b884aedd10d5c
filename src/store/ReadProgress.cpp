#include "store/ReadProgress.h"

namespace {

// The progress of a read where no window can be shown: it keeps its numbers and is never cancelled.
class SilentProgress final : public ReadProgress {
public:
    void Show() override {}
    void Hide() override {}
    void SetRange(qint32, qint32) override {}
    void SetCaption(const QString&) override {}
    void SetMessage(const QString&) override {}
    void SetStep(qint32) override {}
    void StepIt() override {}
    bool GetCancelled() const override { return false; }
};

std::function<std::unique_ptr<ReadProgress>()>& factory() {
    static std::function<std::unique_ptr<ReadProgress>()> f;
    return f;
}

} // namespace

std::unique_ptr<ReadProgress> ReadProgress::create() {
    if (factory())
        if (auto made = factory()())
            return made;
    return std::make_unique<SilentProgress>();
}

void ReadProgress::setFactory(std::function<std::unique_ptr<ReadProgress>()> f) { factory() = std::move(f); }
