#pragma once
// Regional settings: the one place where text becomes a date or a number and back, under the
// user's locale (QLocale(); tests pin it with QLocale::setDefault). Nothing else in the program
// formats or reads a date or a number by hand.

#include <QDate>
#include <QString>

class QLocale;

#include <memory>
#include <optional>

namespace Regional {

// The short date pattern of the user's regional settings, in the letters d, M and y (as
// "dd/MM/yyyy" or "M/d/yyyy"), with the year always in four digits ("M/d/yy" gives "M/d/yyyy").
// Every date conversion follows it.
QString shortDatePattern();
// The date separator: the first character of the short pattern that is not a field letter,
// empty when the pattern has none.
QString dateSeparator();

// A date written with the short pattern: the "date text" every screen shows.
QString dateText(const QDate& date);

// Reads a date the way a user types it: in the order of the short pattern with any separator
// ("06/08/2005", "6.8.05"), the long form, ISO "2005-08-06", "6 August 2005", "6-Aug-2005",
// "August 6, 2005". Month names in the locale's language or in English. Two-digit years fall in
// 1930..2029. Empty when the text is no date.
std::optional<QDate> readDate(const QString& text);

// Reads a number as a user types it under the locale (decimal separator, optional group
// separators, sign). Empty when the text is no finite number.
std::optional<double> readNumber(const QString& text);
std::optional<double> readNumber(QStringView text);

// Reads many numbers under the locale of the moment it was made (the walk over a long reply).
class NumberReader {
public:
    NumberReader();
    ~NumberReader();
    NumberReader(const NumberReader&) = delete;
    NumberReader& operator=(const NumberReader&) = delete;
    std::optional<double> read(QStringView text) const;

private:
    std::unique_ptr<QLocale> locale_;
    QChar decimal_;
};

// Plain number text: the locale's decimal separator, no group separator, at most 15 significant
// digits, no trailing zeros ("12.5", "12,5", "1500000").
QString numberText(double value);
// The price pattern "####0.00": two decimals, no group separator.
QString priceText(double value);

// "yyyymmdd" text of a date ("20050806"); empty for an invalid date.
QString yyyymmdd(const QDate& date);
// Reads "yyyymmdd" text; invalid date for anything else.
QDate fromYyyymmdd(const QString& text);

// Store dates: a whole number with the digits yyyymmdd, 0 for no date.
qint32 toStoreDate(const QDate& date);
// The date of a store date; invalid for 0 or a number that is no date.
QDate fromStoreDate(qint32 storeDate);

} // namespace Regional
