#include "frame/Regional.h"

#include <QLocale>
#include <QRegularExpression>
#include <QStringList>

#include <charconv>
#include <cmath>

namespace Regional {
namespace {

bool isFieldLetter(QChar c) { return c == u'd' || c == u'M' || c == u'y'; }

// Two-digit years fall in the window 1930..2029.
int expandYear(int year, qsizetype digits) {
    if (digits <= 2)
        return year < 30 ? 2000 + year : 1900 + year;
    return year;
}

// The order of the day, month and year fields in the short pattern, as a string such as "dMy".
QString fieldOrder() {
    QString order;
    for (QChar c : shortDatePattern()) {
        const QChar lower = c.toLower();
        if ((lower == u'd' || lower == u'm' || lower == u'y') && !order.contains(lower))
            order += lower;
    }
    for (QChar c : QStringLiteral("dmy"))   // a pattern that lacks a field: day, month, year
        if (!order.contains(c))
            order += c;
    return order;
}

std::optional<QDate> makeDate(int year, int month, int day) {
    const QDate date(year, month, day);
    if (!date.isValid() || year < 1000)
        return std::nullopt;
    return date;
}

// Month number of a month name or abbreviation, in the locale's language or in English.
int monthOfName(const QString& word) {
    const QString w = word.toLower().remove(u'.');
    if (w.isEmpty())
        return 0;
    const QLocale locales[] = {QLocale(), QLocale(QLocale::English, QLocale::UnitedStates)};
    for (const QLocale& locale : locales) {
        for (int m = 1; m <= 12; ++m) {
            const QString names[] = {locale.monthName(m, QLocale::LongFormat),
                                     locale.monthName(m, QLocale::ShortFormat),
                                     locale.standaloneMonthName(m, QLocale::LongFormat),
                                     locale.standaloneMonthName(m, QLocale::ShortFormat)};
            for (const QString& name : names) {
                const QString n = name.toLower().remove(u'.');
                if (!n.isEmpty() && n == w)
                    return m;
            }
            // "Sept", "June" style abbreviations: a prefix of at least three letters.
            const QString full = locale.monthName(m, QLocale::LongFormat).toLower();
            if (w.size() >= 3 && full.startsWith(w))
                return m;
        }
    }
    return 0;
}

bool isDayName(const QString& word) {
    const QString w = word.toLower().remove(u'.');
    const QLocale locales[] = {QLocale(), QLocale(QLocale::English, QLocale::UnitedStates)};
    for (const QLocale& locale : locales)
        for (int d = 1; d <= 7; ++d)
            if (w == locale.dayName(d, QLocale::LongFormat).toLower() ||
                w == locale.dayName(d, QLocale::ShortFormat).toLower().remove(u'.'))
                return true;
    return false;
}

// Words that the locale's own patterns put in as literals: quoted ones ('г' in Bulgarian) and
// unquoted letters that are no field letters (年, 月, 日 in Japanese).
bool isPatternLiteral(const QString& word) {
    const QLocale locale;
    const QString patterns = shortDatePattern() + u' ' + locale.dateFormat(QLocale::LongFormat);
    QStringList literals;
    QString run;
    bool quoted = false;
    auto flush = [&] {
        if (!run.trimmed().isEmpty())
            literals.append(run.trimmed().remove(u'.'));
        run.clear();
    };
    for (QChar c : patterns) {
        if (c == u'\'') {
            quoted = !quoted;
            if (!quoted)
                flush();
            continue;
        }
        if (quoted || (c.isLetter() && !isFieldLetter(c)))
            run += c;
        else
            flush();
    }
    flush();
    for (const QString& literal : literals)
        if (literal.compare(word, Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

struct Token {
    QString text;
    bool number;
};

// Splits into runs of digits and runs of letters; everything else separates.
std::optional<QList<Token>> tokenize(const QString& text) {
    QList<Token> tokens;
    QString current;
    int kind = 0;   // 0 none, 1 digits, 2 letters
    auto flush = [&] {
        if (kind != 0)
            tokens.append({current, kind == 1});
        current.clear();
        kind = 0;
    };
    for (QChar c : text) {
        // Digits of other scripts are read as digits.
        const int k = c.isDigit() ? 1 : c.isLetter() ? 2 : 0;
        if (k != kind)
            flush();
        if (k != 0) {
            current += k == 1 ? QChar(u'0' + c.digitValue()) : c;
            kind = k;
        }
    }
    flush();
    return tokens;
}

// Reads numbers and one optional month name, putting the numbers in the order of the short pattern.
std::optional<QDate> readByFields(const QString& text) {
    const auto tokens = tokenize(text);
    if (!tokens)
        return std::nullopt;
    QList<QString> numbers;
    int namedMonth = 0;
    for (const Token& token : *tokens) {
        if (token.number) {
            numbers.append(token.text);
            continue;
        }
        const int month = monthOfName(token.text);
        if (month != 0 && namedMonth == 0) {
            namedMonth = month;
            continue;
        }
        if (isDayName(token.text) || isPatternLiteral(token.text))
            continue;
        return std::nullopt;   // a word that is no month: not a date
    }
    auto value = [](const QString& digits) { return digits.size() > 4 ? -1 : digits.toInt(); };

    if (namedMonth != 0) {
        if (numbers.size() != 2)
            return std::nullopt;
        // The four-digit number is the year; otherwise the pattern's order of day and year.
        qsizetype yearAt;
        if (numbers[0].size() >= 3 && numbers[1].size() <= 2)
            yearAt = 0;
        else if (numbers[1].size() >= 3 && numbers[0].size() <= 2)
            yearAt = 1;
        else
            yearAt = fieldOrder().indexOf(u'y') < fieldOrder().indexOf(u'd') ? 0 : 1;
        const QString& y = numbers[yearAt];
        const QString& d = numbers[1 - yearAt];
        if (y.size() == 3 || value(y) < 0 || d.size() > 2)
            return std::nullopt;
        return makeDate(expandYear(value(y), y.size()), namedMonth, value(d));
    }

    if (numbers.size() != 3)
        return std::nullopt;
    QString order = fieldOrder();
    if (numbers[0].size() == 4)   // a leading four-digit year: year, month, day
        order = QStringLiteral("ymd");
    else if (numbers[2].size() == 4 && order.startsWith(u'y'))   // a trailing one under a year-first pattern
        order = order.mid(1) + u'y';
    int day = 0, month = 0, year = 0;
    qsizetype yearDigits = 0;
    for (int i = 0; i < 3; ++i) {
        const QString& n = numbers[i];
        switch (order.at(i).unicode()) {
        case u'd':
            if (n.size() > 2) return std::nullopt;
            day = n.toInt();
            break;
        case u'm':
            if (n.size() > 2) return std::nullopt;
            month = n.toInt();
            break;
        default:
            if (n.size() == 3 || n.size() > 4) return std::nullopt;
            year = n.toInt();
            yearDigits = n.size();
        }
    }
    return makeDate(expandYear(year, yearDigits), month, day);
}

} // namespace

QString shortDatePattern() {
    // A two-digit year ("yy") becomes four digits: date text that the program writes and reads
    // back never changes its century.
    const QString pattern = QLocale().dateFormat(QLocale::ShortFormat);
    QString expanded;
    bool quoted = false;
    for (qsizetype i = 0; i < pattern.size();) {
        const QChar c = pattern.at(i);
        if (c == u'\'') {
            quoted = !quoted;
            expanded += c;
            ++i;
            continue;
        }
        if (quoted || c != u'y') {
            expanded += c;
            ++i;
            continue;
        }
        qsizetype run = 0;
        while (i + run < pattern.size() && pattern.at(i + run) == u'y')
            ++run;
        expanded += QString(run < 4 ? 4 : run, u'y');
        i += run;
    }
    return expanded;
}

QString dateSeparator() {
    const QString pattern = shortDatePattern();
    bool quoted = false;
    for (QChar c : pattern) {
        if (c == u'\'') {
            quoted = !quoted;
            continue;
        }
        if (!quoted && !isFieldLetter(c))
            return QString(c);
    }
    return {};
}

QString dateText(const QDate& date) {
    return QLocale().toString(date, shortDatePattern());
}

std::optional<QDate> readDate(const QString& input) {
    const QString text = input.trimmed();
    if (text.isEmpty() || text.size() > 64)
        return std::nullopt;

    static const QRegularExpression iso(QStringLiteral("^(\\d{4})-(\\d{1,2})-(\\d{1,2})$"));
    if (const auto m = iso.match(text); m.hasMatch())
        return makeDate(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt());

    // The locale's own long form ("Saturday, 6 August 2005", "2005年8月6日土曜日").
    const QLocale locale;
    const QDate longForm = locale.toDate(text, QLocale::LongFormat);
    if (longForm.isValid())
        return longForm;

    return readByFields(text);
}

namespace {

enum class Plain { Number, NotANumber, NotPlain };

// The common case, read fast: an optional sign, digits and at most one decimal separator of the
// locale. Anything else (group separators, exponents, other signs) is left to QLocale.
Plain readPlainNumber(QStringView text, QChar decimal, double& value) {
    char buffer[80];
    size_t length = 0;
    bool digits = false, point = false;
    if (text.size() > 64)
        return Plain::NotPlain;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c >= u'0' && c <= u'9') {
            buffer[length++] = static_cast<char>(c.unicode());
            digits = true;
        } else if (c == decimal && !point) {
            buffer[length++] = '.';
            point = true;
        } else if (i == 0 && (c == u'-' || c == u'+')) {
            if (c == u'-')
                buffer[length++] = '-';
        } else {
            return Plain::NotPlain;
        }
    }
    if (!digits)
        return Plain::NotANumber;
    const auto [end, error] = std::from_chars(buffer, buffer + length, value);
    if (error != std::errc() || end != buffer + length)
        return Plain::NotPlain;
    return Plain::Number;
}

} // namespace

std::optional<double> readNumber(const QString& input) { return readNumber(QStringView(input)); }

std::optional<double> readNumber(QStringView input) { return NumberReader().read(input); }

NumberReader::NumberReader() : locale_(new QLocale) {
    const QString decimal = locale_->decimalPoint();
    decimal_ = decimal.size() == 1 ? decimal.at(0) : QChar();
}

NumberReader::~NumberReader() = default;

std::optional<double> NumberReader::read(QStringView input) const {
    const QStringView text = input.trimmed();
    if (text.isEmpty())
        return std::nullopt;
    double value = 0;
    if (!decimal_.isNull()) {
        switch (readPlainNumber(text, decimal_, value)) {
        case Plain::Number: return value;
        case Plain::NotANumber: return std::nullopt;
        case Plain::NotPlain: break;
        }
    }
    bool ok = false;
    value = locale_->toDouble(text, &ok);   // group separators, exponents
    if (!ok) {
        // Where the group separator is a kind of blank, any of the blanks people type serves.
        const QString group = locale_->groupSeparator();
        const auto isBlank = [](QChar c) { return c == u' ' || c == QChar(0x00A0) || c == QChar(0x202F); };
        if (group.size() == 1 && isBlank(group.at(0))) {
            QString regrouped = text.toString();
            for (QChar& c : regrouped)
                if (isBlank(c))
                    c = group.at(0);
            value = locale_->toDouble(regrouped, &ok);
        }
    }
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

QString numberText(double value) {
    if (value == 0)
        value = 0;   // no "-0"
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale.toString(value, 'g', 15);
}

QString priceText(double value) {
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    QString text = locale.toString(value, 'f', 2);
    if (value < 0 && std::round(value * 100) == 0)
        text = locale.toString(0.0, 'f', 2);   // "-0.00" is shown as 0.00
    return text;
}

QString yyyymmdd(const QDate& date) {
    return date.isValid() ? date.toString(QStringLiteral("yyyyMMdd")) : QString();
}

QDate fromYyyymmdd(const QString& text) {
    static const QRegularExpression eight(QStringLiteral("^\\d{8}$"));
    if (!eight.match(text).hasMatch())
        return {};
    return fromStoreDate(text.toInt());
}

qint32 toStoreDate(const QDate& date) {
    if (!date.isValid())
        return 0;
    return date.year() * 10000 + date.month() * 100 + date.day();
}

QDate fromStoreDate(qint32 storeDate) {
    if (storeDate <= 0)
        return {};
    return QDate(storeDate / 10000, storeDate / 100 % 100, storeDate % 100);
}

} // namespace Regional
