#include "sheet/ui/DateBox.h"

#include "frame/Platform.h"
#include "frame/Regional.h"

#include <QAction>
#include <QCalendarWidget>
#include <QStyle>

DateBox::DateBox(QWidget* parent) : QLineEdit(parent) {
    calendarAction = addAction(style()->standardIcon(QStyle::SP_ArrowDown), QLineEdit::TrailingPosition);
    calendarAction->setObjectName(QStringLiteral("calendarAction"));
    calendarAction->setToolTip(QStringLiteral("Calendar"));
    // Room for the longest date text of the locale and the button.
    setMinimumWidth(fontMetrics().horizontalAdvance(Regional::dateText(QDate(2028, 12, 28))) + 48);
    connect(calendarAction, &QAction::triggered, this, &DateBox::showCalendar);
    connect(this, &QLineEdit::editingFinished, this, &DateBox::tidy);
}

std::optional<QDate> DateBox::date() const {
    if (given_ && text() == givenText_)
        return given_;
    return Regional::readDate(text());
}

void DateBox::setDate(const QDate& date) {
    givenText_ = Regional::dateText(date);
    given_ = date;
    setText(givenText_);
}

void DateBox::tidy() {
    if (const auto read = date())
        setDate(*read);
}

void DateBox::showCalendar() {
    if (!isEnabled() || isReadOnly())
        return;
    if (!calendar_) {
        calendar_ = new QCalendarWidget(this);
        calendar_->setObjectName(QStringLiteral("calendar"));
        calendar_->setWindowFlags(Qt::Popup);
        calendar_->setGridVisible(true);
        connect(calendar_, &QCalendarWidget::clicked, this, [this](QDate picked) {
            setDate(picked);
            calendar_->hide();
            setFocus();
        });
        connect(calendar_, &QCalendarWidget::activated, this, [this](QDate picked) {
            setDate(picked);
            calendar_->hide();
            setFocus();
        });
    }
    const QDate shown = date().value_or(platform().today());
    calendar_->setSelectedDate(shown);
    calendar_->setCurrentPage(shown.year(), shown.month());
    calendar_->adjustSize();
    calendar_->move(mapToGlobal(QPoint(width() - calendar_->width(), height())));
    calendar_->show();
    calendar_->setFocus();
}
