#pragma once
// A date box as users type dates: one line of text, read under the regional settings the way
// every other date the user types is read ("05/01/2004", "5.1.04", "5 Jan 2004", ISO), with a
// button that drops down a calendar to pick from. Typing never jumps between parts of the date,
// and Tab leaves the box. When the box is left, a text that reads as a date is shown again as the
// date text of that date, so the user sees which date it is before it is used.

#include <QDate>
#include <QLineEdit>

#include <optional>

class QAction;
class QCalendarWidget;

class DateBox : public QLineEdit {
    Q_OBJECT
public:
    explicit DateBox(QWidget* parent = nullptr);

    // The date the text reads as; empty while it reads as no date.
    std::optional<QDate> date() const;
    // Shows the date text of `date`.
    void setDate(const QDate& date);

    QAction* calendarAction;   // the button at the box's end that drops the calendar down

private:
    void showCalendar();
    void tidy();

    // The date last given by setDate(), as long as its text stands untouched: it is that date,
    // whatever the text would read back as.
    std::optional<QDate> given_;
    QString givenText_;

    QCalendarWidget* calendar_ = nullptr;
};
