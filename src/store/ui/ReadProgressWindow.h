#pragma once
// The store's progress window for long reads: a bar, a line of text and a Cancel button. It
// serves the window system's events at each step, so that a click on Cancel gets through while
// the caller is in its loop. Releasing the object takes the window down.

#include "store/ReadProgress.h"

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

    void cancel();

    QProgressBar* ProgressBar1;
    QLabel* lblMessage;
    QPushButton* cancelButton;

private:
    qint32 step_ = 1;
    bool cancelled_ = false;
};

// Makes ReadProgress::create() give a ReadProgressWindow.
void UseReadProgressWindow();
