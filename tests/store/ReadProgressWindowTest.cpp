// The progress window of long reads, offscreen.
#include "store/ui/ReadProgressWindow.h"
#include "support/Modal.h"

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

namespace {

QWidget* shownProgressWindow() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == QLatin1String("ReadProgressWindow") && w->isVisible())
            return w;
    return nullptr;
}

class ReadProgressWindowTest : public ::testing::Test {
protected:
    void SetUp() override { UseReadProgressWindow(); }
    void TearDown() override { ReadProgress::setFactory({}); }
};

} // namespace

TEST_F(ReadProgressWindowTest, ShowsBarCaptionAndMessageAndGoesAwayWhenReleased) {
    {
        auto progress = ReadProgress::create();
        progress->Show();
        progress->SetRange(0, 4);
        progress->SetStep(1);
        progress->SetCaption(QStringLiteral("Read Security data..."));
        progress->SetMessage(QStringLiteral("Progress...."));
        QWidget* window = shownProgressWindow();
        ASSERT_NE(window, nullptr);
        EXPECT_EQ(window->windowTitle(), QStringLiteral("Read Security data..."));
        EXPECT_EQ(child<QLabel>(window, QStringLiteral("lblMessage"))->text(), QStringLiteral("Progress...."));
        EXPECT_EQ(child<QPushButton>(window, QStringLiteral("cancelButton"))->text(), QStringLiteral("Cancel"));
        auto* bar = child<QProgressBar>(window, QStringLiteral("ProgressBar1"));
        for (int i = 0; i < 3; ++i)
            progress->StepIt();
        EXPECT_EQ(bar->value(), 3);
        EXPECT_EQ(bar->maximum(), 4);
        // No Hide: releasing the object takes the window down.
    }
    EXPECT_EQ(shownProgressWindow(), nullptr);

    // Without SetStep a step is 1, and without SetCaption the window has a title of its own.
    auto progress = ReadProgress::create();
    progress->Show();
    progress->SetMessage(QStringLiteral("Converting Security"));
    progress->SetRange(0, 10);
    progress->StepIt();
    progress->StepIt();
    QWidget* window = shownProgressWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(window->windowTitle().isEmpty());
    EXPECT_EQ(child<QProgressBar>(window, QStringLiteral("ProgressBar1"))->value(), 2);
    progress->Hide();
    EXPECT_EQ(shownProgressWindow(), nullptr);
}

TEST_F(ReadProgressWindowTest, CancelGetsThroughBetweenSteps) {
    auto progress = ReadProgress::create();
    progress->Show();
    constexpr int Records = 1'000'000'000;
    progress->SetRange(0, Records);
    QWidget* window = shownProgressWindow();
    ASSERT_NE(window, nullptr);
    // The user clicks Cancel while the caller is in its loop; only the steps serve events, once a
    // frame has passed.
    QTimer::singleShot(0, window, [window] { child<QPushButton>(window, QStringLiteral("cancelButton"))->click(); });
    int steps = 0;
    while (!progress->GetCancelled() && steps < Records) {
        progress->StepIt();
        ++steps;
    }
    EXPECT_TRUE(progress->GetCancelled());
    EXPECT_LT(steps, Records);
}
