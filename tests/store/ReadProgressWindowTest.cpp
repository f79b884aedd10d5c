// The progress window of long reads, offscreen.
#include "store/ui/ReadProgressWindow.h"
#include "support/Modal.h"
#include "support/TestSupport.h"

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

TEST_F(ReadProgressWindowTest, ShowsBarCaptionAndMessageAndGoesAwayWhenHiddenOrReleased) {
    auto progress = ReadProgress::create();
    progress->Show();
    progress->SetRange(0, 4);
    progress->SetCaption(QStringLiteral("Read Security data..."));
    progress->SetMessage(QStringLiteral("Progress...."));
    for (int i = 0; i < 3; ++i)
        progress->StepIt();  // a step of 1 unless told otherwise
    QWidget* window = shownProgressWindow();
    ASSERT_NE(window, nullptr);
    expectControlsLaidOut(window);
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Read Security data..."));
    EXPECT_EQ(child<QLabel>(window, QStringLiteral("lblMessage"))->text(), QStringLiteral("Progress...."));
    EXPECT_EQ(child<QPushButton>(window, QStringLiteral("cancelButton"))->text(), QStringLiteral("Cancel"));
    const auto* bar = child<QProgressBar>(window, QStringLiteral("ProgressBar1"));
    EXPECT_EQ(bar->value() * 10 + bar->maximum(), 34);
    // The message, the bar under it, and Cancel at the bottom right.
    const QRect cancel = child<QPushButton>(window, QStringLiteral("cancelButton"))->geometry();
    EXPECT_GT(bar->geometry().top(), child<QLabel>(window, QStringLiteral("lblMessage"))->geometry().top());
    EXPECT_GT(cancel.top(), bar->geometry().bottom());
    EXPECT_GT(cancel.left(), window->width() / 2);
    EXPECT_TRUE(window->rect().contains(cancel));
    progress->OfferCancel(false);
    EXPECT_FALSE(child<QPushButton>(window, QStringLiteral("cancelButton"))->isVisible());
    progress->Hide();
    EXPECT_EQ(shownProgressWindow(), nullptr);
    progress->Show();
    progress.reset();  // releasing the object takes the window down too
    EXPECT_EQ(shownProgressWindow(), nullptr);
}

TEST_F(ReadProgressWindowTest, CancelGetsThroughBetweenSteps) {
    auto progress = ReadProgress::create();
    progress->Show();
    constexpr int Records = 1'000'000'000;
    progress->SetRange(0, Records);
    QWidget* window = shownProgressWindow();
    ASSERT_NE(window, nullptr);
    // The user clicks Cancel while the caller is in its loop; only the steps serve events.
    QTimer::singleShot(0, window, [window] { child<QPushButton>(window, QStringLiteral("cancelButton"))->click(); });
    int steps = 0;
    for (; !progress->GetCancelled() && steps < Records; ++steps)
        progress->StepIt();
    EXPECT_LT(steps, Records);
}
