#include "export/CsvText.h"

#include "frame/CommonRoutines.h"
#include "frame/Regional.h"

#include <QDate>
#include <QLocale>
#include <QStringEncoder>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

#ifndef Q_OS_WIN
#include <langinfo.h>
#endif

// --- CodePage ---

namespace {

// Windows-1252 at 0x80..0x9F; 0 where the code page has no character.
constexpr char16_t Windows1252High[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

char windows1252(char16_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return static_cast<char>(c);
    for (int i = 0; i < 32; ++i)
        if (Windows1252High[i] == c)
            return static_cast<char>(0x80 + i);
    return '?';
}

bool isAscii(QStringView text) {
    for (QChar c : text)
        if (c.unicode() >= 0x80)
            return false;
    return true;
}

} // namespace

CodePage::CodePage() {
#ifdef Q_OS_WIN
    kind_ = Kind::System;   // the ANSI code page of the system
#else
    const QByteArray set = QByteArray(nl_langinfo(CODESET)).toUpper().replace('_', '-');
    if (set == "UTF-8" || set == "UTF8")
        kind_ = Kind::Utf8;
    else if (set == "ISO-8859-1" || set == "ISO8859-1" || set == "LATIN1")
        kind_ = Kind::Latin1;
    else
        kind_ = Kind::Windows1252;   // plain ASCII ("C" locale) or a code page we cannot write
#endif
}

CodePage::~CodePage() = default;

QString CodePage::name() const {
    switch (kind_) {
    case Kind::Utf8: return QStringLiteral("UTF-8");
    case Kind::Latin1: return QStringLiteral("ISO-8859-1");
    case Kind::Windows1252: return QStringLiteral("windows-1252");
    case Kind::System: break;
    }
    return QStringLiteral("system");
}

void CodePage::append(QStringView text, QByteArray& out) const {
    if (isAscii(text)) {
        for (QChar c : text)
            out.append(static_cast<char>(c.unicode()));
        return;
    }
    switch (kind_) {
    case Kind::Utf8:
        out.append(text.toUtf8());
        return;
    case Kind::Latin1:
        for (QChar c : text)
            out.append(c.unicode() <= 0xFF ? static_cast<char>(c.unicode()) : '?');
        return;
    case Kind::Windows1252:
        for (QChar c : text)
            out.append(windows1252(c.unicode()));
        return;
    case Kind::System: {
        QStringEncoder encoder(QStringConverter::System);
        out.append(QByteArray(encoder(text)));
        return;
    }
    }
}

QByteArray CodePage::encode(QStringView text) const {
    QByteArray bytes;
    append(text, bytes);
    return bytes;
}

// --- CsvText ---

CsvText::CsvText(Style style) : style_(style) {
    if (style == Style::Iso) {
        plainDigits_ = true;
        decimal_ = ".";
        dateForm_ = {{DatePart::Year, 4, {}}, {DatePart::Text, 0, "-"}, {DatePart::Month, 2, {}},
                     {DatePart::Text, 0, "-"}, {DatePart::Day, 2, {}}};
        return;
    }
    const QLocale locale;
    plainDigits_ = locale.zeroDigit() == QStringLiteral("0") && locale.negativeSign() == QStringLiteral("-");
    decimal_ = codePage_.encode(locale.decimalPoint());
    if (!learnDateForm())
        dateForm_.clear();
    // A line is put together in a buffer of its own: a form with long texts takes the general way.
    qsizetype textBytes = 0;
    for (const DatePart& part : dateForm_)
        textBytes += part.text.size();
    if (textBytes > 64)
        dateForm_.clear();
}

CsvText::~CsvText() = default;

namespace {

// Splits a date text into runs of ASCII digits and runs of anything else; false when it holds a
// digit of another script.
bool splitRuns(const QString& text, QStringList& runs, QList<bool>& digits) {
    QString run;
    bool inDigits = false;
    for (QChar c : text) {
        const bool digit = c >= u'0' && c <= u'9';
        if (!digit && c.isDigit())
            return false;
        if (!run.isEmpty() && digit != inDigits) {
            runs << run;
            digits << inDigits;
            run.clear();
        }
        inDigits = digit;
        run += c;
    }
    if (!run.isEmpty()) {
        runs << run;
        digits << inDigits;
    }
    return true;
}

} // namespace

bool CsvText::learnDateForm() {
    // A date whose fields tell one another apart (day 23, month 11, year 1987) gives the order
    // and the separators; a date of single digits gives the leading zeros.
    QStringList runs, runsPadded;
    QList<bool> digits, digitsPadded;
    if (!splitRuns(DateToText(19871123), runs, digits) || !splitRuns(DateToText(20040201), runsPadded, digitsPadded))
        return false;
    if (runs.size() != runsPadded.size() || digits != digitsPadded)
        return false;
    int fields = 0;
    for (qsizetype i = 0; i < runs.size(); ++i) {
        if (!digits[i]) {
            if (runs[i] != runsPadded[i])
                return false;
            dateForm_.push_back({DatePart::Text, 0, codePage_.encode(runs[i])});
            continue;
        }
        ++fields;
        const QString& r = runs[i];
        const QString& p = runsPadded[i];
        if (r == u"23" && (p == u"1" || p == u"01"))
            dateForm_.push_back({DatePart::Day, int(p.size()), {}});
        else if (r == u"11" && (p == u"2" || p == u"02"))
            dateForm_.push_back({DatePart::Month, int(p.size()), {}});
        else if ((r == u"1987" && p == u"2004") || (r == u"87" && p == u"04"))
            dateForm_.push_back({DatePart::Year, int(p.size()), {}});
        else
            return false;
    }
    if (fields != 3)
        return false;

    // The form stands only if it writes what DateToText writes across the calendar.
    const qint32 checks[] = {20050806, 19991231, 20000101, 20240229, 20101010, 19300115, 20291231,
                             19250704, 21000301, 10000101, 99991231, 19700512};
    for (qint32 check : checks) {
        const QByteArray theirs = codePage_.encode(DateToText(check));
        char mine[256];
        const char* end = theirs.size() < 128 ? putDate(check, mine) : nullptr;
        if (!end || QByteArrayView(mine, end - mine) != theirs)
            return false;
    }
    return true;
}

void CsvText::appendDate(qint32 storeDate, QByteArray& out) const {
    char text[256];
    if (const char* end = putDate(storeDate, text)) {
        out.append(text, end - text);
        return;
    }
    codePage_.append(DateToText(storeDate), out);
}

void CsvText::appendSlowNumber(double value, QByteArray& out) const {
    if (style_ == Style::Iso)
        out.append(QByteArray::number(value, 'g', 15));
    else
        codePage_.append(Regional::numberText(value), out);
}

void CsvText::appendNumber(double value, QByteArray& out) const {
    const auto single = static_cast<float>(value);
    if (!std::isfinite(value) || static_cast<double>(single) != value) {
        appendSlowNumber(value, out);   // not a stored single-precision value
        return;
    }
    if (single == 0) {
        out.append('0');   // also for -0
        return;
    }
    char buf[32];
    if (std::trunc(value) == value && std::fabs(value) < 1e15) {
        // A whole number is written in full: the shortest digits of a volume past 2^24 would
        // read back as the same float but name another number than the one stored.
        const auto result = std::to_chars(buf, buf + sizeof buf, static_cast<long long>(value));
        out.append(buf, result.ptr - buf);
        return;
    }
    // The shortest digits that read back as the same single-precision value.
    const auto result = std::to_chars(buf, buf + sizeof buf, single, std::chars_format::scientific);
    *result.ptr = '\0';
    const char* p = buf;
    const bool negative = *p == '-';
    if (negative)
        ++p;
    char mantissa[16];
    int n = 0;
    for (; *p && *p != 'e'; ++p)
        if (*p != '.')
            mantissa[n++] = *p;
    const int exponent = *p == 'e' ? std::atoi(p + 1) : 0;

    if (!plainDigits_ || exponent < -4 || exponent >= 15) {
        // Far from 1, or digits of another script: the locale's own general form of those digits.
        appendSlowNumber(std::strtod(buf, nullptr), out);
        return;
    }
    if (negative)
        out.append('-');
    if (exponent < 0) {
        out.append('0');
        out.append(decimal_);
        for (int i = exponent + 1; i < 0; ++i)
            out.append('0');
        out.append(mantissa, n);
        return;
    }
    const int whole = exponent + 1;
    if (n <= whole) {
        out.append(mantissa, n);
        for (int i = n; i < whole; ++i)
            out.append('0');
        return;
    }
    out.append(mantissa, whole);
    out.append(decimal_);
    out.append(mantissa + whole, n - whole);
}

namespace {

constexpr char TwoDigits[] = "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
                             "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
                             "8081828384858687888990919293949596979899";

// Writes `n` backwards so that its last digit ends just before `end`, with `decimals` of its digits
// after `decimal`, and a 0 before the separator when the whole part is 0.
void putBackwards(quint32 n, int decimals, char decimal, char* end) {
    char* q = end;
    int left = decimals;
    if (left & 1) {
        *--q = static_cast<char>('0' + n % 10);
        n /= 10;
        --left;
    }
    for (; left > 0; left -= 2, n /= 100) {
        q -= 2;
        std::memcpy(q, TwoDigits + 2 * (n % 100), 2);
    }
    if (decimals > 0)
        *--q = decimal;
    for (; n >= 100; n /= 100) {
        q -= 2;
        std::memcpy(q, TwoDigits + 2 * (n % 100), 2);
    }
    if (n >= 10) {
        q -= 2;
        std::memcpy(q, TwoDigits + 2 * n, 2);
    } else {
        *--q = static_cast<char>('0' + n);
    }
}

constexpr quint32 Pow10[10] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};

// The shortest plain text of a float that is no whole number, from 0.0001 on: the fewest decimals
// d for which the float's nearest multiple of 10^-d lies within half a unit of the float's last
// place, so that reading the text back gives the float again. The float times 10^d (d <= 12) and
// the scaled half unit are exact in a double, so each try is one multiplication and one rounding.
// Checked against the shortest scientific digits of every float in range: the same text, except
// that one float below 0.0001 is left to the general way.
// The digits found are at most nine, so they fit 32 bits.
char* putShortestDecimals(float single, char decimal, char* p) {
    const double value = std::fabs(double(single));
    if (!(value >= 1e-4 && value < 8388608.0))
        return nullptr;
    const int biased = int(std::bit_cast<quint32>(single) >> 23) & 0xFF;
    double halfUlp = std::bit_cast<double>(quint64(biased - 151 + 1023) << 52);
    double scaled = value;
    double whole = 0;
    int d = 0;
    for (;; ++d, scaled *= 10, halfUlp *= 10) {
        if (d > 12 || scaled >= 4294967295.0)
            return nullptr;
        whole = (scaled + 0x1p52) - 0x1p52;   // the nearest whole number (to even on a tie)
        if (std::fabs(whole - scaled) < halfUlp && whole != 0)
            break;
    }
    // Written in place backwards from the last digit, two digits at a time: the decimals, the
    // separator, the whole part (or a 0 before the separator and leading zeros after it).
    const auto n = static_cast<quint32>(whole);
    int digits = 1;
    while (digits < 10 && n >= Pow10[digits])
        ++digits;
    if (single < 0)
        *p++ = '-';
    const int length = digits > d ? digits + (d > 0 ? 1 : 0) : d + 2;
    putBackwards(n, d, decimal, p + length);
    return p + length;
}

char* putDigits(int value, int width, char* p) {
    if (value < 100 && width <= 2) {
        if (value >= 10 || width == 2) {
            std::memcpy(p, TwoDigits + 2 * value, 2);
            return p + 2;
        }
        *p = static_cast<char>('0' + value);
        return p + 1;
    }
    char digits[12];
    int n = 0;
    do {
        digits[n++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value > 0);
    for (int i = n; i < width; ++i)
        *p++ = '0';
    while (n > 0)
        *p++ = digits[--n];
    return p;
}

bool isCalendarDate(int year, int month, int day) {
    static constexpr int Days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12 || day < 1)
        return false;
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return day <= Days[month - 1] + (month == 2 && leap ? 1 : 0);
}

} // namespace

char* CsvText::putDate(qint32 storeDate, char* p) const {
    if (dateForm_.empty() || storeDate <= 0)
        return nullptr;
    const int year = storeDate / 10000, month = storeDate / 100 % 100, day = storeDate % 100;
    if (year < 1000 || year > 9999 || !isCalendarDate(year, month, day))
        return nullptr;
    for (const DatePart& part : dateForm_) {
        switch (part.kind) {
        case DatePart::Text:
            for (char c : part.text)
                *p++ = c;
            break;
        case DatePart::Day: p = putDigits(day, part.width, p); break;
        case DatePart::Month: p = putDigits(month, part.width, p); break;
        case DatePart::Year:
            if (part.width == 2) {
                p = putDigits(year % 100, 2, p);
            } else {
                p = putDigits(year / 100, 2, p);   // a year of four digits
                p = putDigits(year % 100, 2, p);
            }
            break;
        }
    }
    return p;
}

char* CsvText::putNumber(double value, char* p) const {
    const auto single = static_cast<float>(value);
    if (!std::isfinite(value) || static_cast<double>(single) != value)
        return nullptr;
    if (single == 0) {
        *p = '0';
        return p + 1;
    }
    if (std::fabs(value) < 1e15 && static_cast<double>(static_cast<long long>(value)) == value)
        return std::to_chars(p, p + 24, static_cast<long long>(value)).ptr;
    if (!plainDigits_ || decimal_.size() != 1)
        return nullptr;
    return putShortestDecimals(single, decimal_[0], p);
}

void CsvText::appendRecord(const QByteArray& prefix, qint32 storeDate, const std::array<double, 5>& values,
                           QByteArray& out) const {
    // A line is put together in place and appended whole.
    char line[512];
    if (prefix.size() <= 256) {
        char* p = line;
        std::memcpy(p, prefix.constData(), size_t(prefix.size()));
        p = putDate(storeDate, p + prefix.size());
        for (double value : values) {
            if (!p)
                break;
            *p++ = ',';
            p = putNumber(value, p);
        }
        if (p) {
            *p++ = '\r';
            *p++ = '\n';
            out.append(line, p - line);
            return;
        }
    }
    appendRecordSlowly(prefix, storeDate, values, out);
}

void CsvText::appendRecordSlowly(const QByteArray& prefix, qint32 storeDate, const std::array<double, 5>& values,
                                 QByteArray& out) const {
    out.append(prefix);
    appendDate(storeDate, out);
    for (double value : values) {
        out.append(',');
        appendNumber(value, out);
    }
    out.append("\r\n", 2);
}
