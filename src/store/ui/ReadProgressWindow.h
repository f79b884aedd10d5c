#pragma once
// The store's progress window for long reads: a bar, a line of text and a Cancel button (unless
// the caller offers none). A step serves the window system's events, so that a click on Cancel
// gets through while the caller is in its loop; since a read steps once a record, far more often
// than the screen is redrawn, the events are served once a frame of the screen has passed since
// the window was shown, and then at most once a frame; the bar takes each new percent at once and
// is painted with the next frame. Releasing the object takes the window down.

#include "store/ReadProgress.h"

#include <QElapsedTimer>
#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

class ReadProgressWindow final : public QWidget, public ReadProgress {
    Q_OBJECT
public:
    explicit ReadProgressWindow(QWidget* parent = nullptr);
    ~ReadProgressWindow() override;

    void Show() override;
    void Hide() override;
    void SetRange(qint32 low, qint32 high) override;
    void SetCaption(const QString& caption) override;
    void SetMessage(const QString& message) override;
    void SetStep(qint32 step) override;
    void StepIt() override;
    bool GetCancelled() const override;
    void OfferCancel(bool offered) override;

    void cancel();

    QProgressBar* ProgressBar1;
    QLabel* lblMessage;
    QPushButton* cancelButton;

private:
    // Shows `value_` on the bar and serves the window system's events.
    void serve();

    qint32 step_ = 1;
    qint32 value_ = 0;        // where the steps have got to
    qint64 shownPercent_ = -1;   // the whole percent last put on the bar
    qint64 frameNs_ = 16'666'667;   // a frame of the screen
    QElapsedTimer sinceServed_;   // invalid until events were first served
    bool cancelled_ = false;
};

// Makes ReadProgress::create() give a ReadProgressWindow.
void UseReadProgressWindow();
