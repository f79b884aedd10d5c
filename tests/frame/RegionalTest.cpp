// Dates and numbers as the user reads and types them, under several regional settings.
#include "frame/CommonRoutines.h"
#include "frame/Regional.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

namespace {

// Each locale writes 6 August 2005 after its short pattern, with its separator, and what it writes
// of any date reads back.
TEST(DateToText, FollowsThePatternOfTheRegionalSettingsAndReadsBack) {
    const struct { const char* locale; const char* expected; const char* sep; const char* pattern; } cases[] = {  // nullptr: not checked
        // Day first, month first, year first.
        {"en_GB", "06/08/2005", "/", "dd/MM/yyyy"}, {"en_US", "8/6/2005", "/", "M/d/yyyy"}, {"de_DE", "06.08.2005", ".", "dd.MM.yyyy"},
        {"ja_JP", "2005/08/06", "/", "yyyy/MM/dd"}, {"nl_NL", "06-08-2005", "-", "dd-MM-yyyy"}, {"C", "6 Aug 2005", nullptr, nullptr},
        // ISO order, single-digit fields, separators not between every pair of fields, a trailing separator.
        {"sv_SE", "2005-08-06", nullptr, nullptr}, {"fi_FI", "6.8.2005", nullptr, nullptr}, {"sk_SK", "6. 8. 2005", nullptr, nullptr},
        {"hu_HU", "2005. 08. 06.", nullptr, nullptr}};
    ScriptedPlatform p;
    EXPECT_EQ(DateToText(0), "N/A");
    for (const auto& c : cases) {
        LocaleGuard locale(QString::fromLatin1(c.locale));
        EXPECT_EQ(DateToText(20050806), QString::fromUtf8(c.expected)) << c.locale << " pattern " << Regional::shortDatePattern().toStdString();
        if (c.sep) {
            EXPECT_EQ(GetDateSeparator() + u' ' + GetShortDatePattern(), QString::fromLatin1(c.sep) + u' ' + QString::fromLatin1(c.pattern)) << c.locale;
        }
        for (qint32 d : {20050806, 20050608, 20000229, 20300101, 19291231, 18991231, 20991231}) {
            const QString text = DateToText(d);
            const auto back = Regional::readDate(text);
            EXPECT_EQ(back ? Regional::toStoreDate(*back) : -1, d) << c.locale << ": " << text.toStdString();
        }
    }
}

TEST(ReadDate, ReadsDatesAsUsersTypeThem) {
    const struct { const char* locale; const char* text; const char* expected; } cases[] = {  // ISO, or nullptr: no date
        // The short pattern, with any separator; a year written last under a year-first pattern.
        {"en_GB", " 6-8-2005 ", "2005-08-06"}, {"en_US", "8/6/05", "2005-08-06"}, {"de_DE", "06.08.05", "2005-08-06"}, {"ja_JP", "2005/08/06", "2005-08-06"},
        {"ja_JP", "01/12/2004", "2004-01-12"}, {"hu_HU", "01/01/2004", "2004-01-01"},
        // The long form.
        {"en_US", "Saturday, August 6, 2005", "2005-08-06"}, {"de_DE", "Samstag, 6. August 2005", "2005-08-06"}, {"ja_JP", "2005年8月6日", "2005-08-06"},
        // ISO, and a month named in the locale's language or in English, in full or short.
        {"en_GB", "2005-08-06", "2005-08-06"}, {"en_US", "2 January 2004", "2004-01-02"}, {"de_DE", "2 January 2004", "2004-01-02"},
        {"de_DE", "2. Januar 2004", "2004-01-02"}, {"de_DE", "2-Jan-2004", "2004-01-02"}, {"en_US", "August 6, 2005", "2005-08-06"},
        // Two-digit years fall in 1930..2029.
        {"en_GB", "1/1/29", "2029-01-01"}, {"en_GB", "1/1/30", "1930-01-01"}, {"en_US", "1/2/29", "2029-01-02"}, {"de_DE", "1.1.29", "2029-01-01"},
        // Rubbish.
        {"en_GB", "29/02/2005", nullptr}, {"en_GB", "08/13/2005", nullptr}, {"en_GB", "2005-13-01", nullptr}, {"en_GB", "06/08", nullptr},
        {"en_GB", "06/08/2005/1", nullptr}, {"en_GB", "6 Augustus 2005", nullptr}, {"en_GB", "", nullptr}, {"en_GB", "N/A", nullptr},
        {"en_GB", "06/08/205", nullptr}, {"en_US", "31/12/2005", nullptr}, {"de_DE", "Quatsch", nullptr}};
    for (const auto& c : cases) {
        LocaleGuard locale(QString::fromLatin1(c.locale));
        const auto got = Regional::readDate(QString::fromUtf8(c.text));
        EXPECT_EQ(got ? got->toString(Qt::ISODate).toStdString() : "(none)", c.expected ? c.expected : "(none)") << c.locale << " \"" << c.text << "\"";
    }
}

TEST(ReadNumber, ReadsNumbersWithTheLocalesSeparators) {
    const struct { const char* locale; const char* text; std::optional<double> expected; } cases[] = {
        {"en_GB", "12.5", 12.5}, {"en_GB", " 7 ", 7.0}, {"en_GB", "-3.25", -3.25}, {"en_GB", "+5", 5.0}, {"en_GB", "1,234.5", 1234.5},
        {"en_GB", "1e3", 1000.0}, {"en_GB", "98765.4321", 98765.4321}, {"en_GB", "", {}}, {"en_GB", "abc", {}}, {"en_GB", "12.5.1", {}},
        {"en_GB", "1e999", {}}, {"en_GB", "-", {}}, {"en_GB", ".", {}}, {"en_GB", "12,5", {}},  // a misplaced group separator
        {"de_DE", "12,5", 12.5}, {"de_DE", "1.234,5", 1234.5}, {"de_DE", "-0,75", -0.75}, {"de_DE", "12,5,1", {}}, {"de_DE", "zwölf", {}},
        // A blank for a group separator: whichever blank is typed.
        {"fr_FR", "1\u00A0234,5", 1234.5}, {"fr_FR", "1\u202F234,5", 1234.5}, {"hu_HU", "1\u202F234,5", 1234.5}, {"fr_FR", "1\u00A02,5", {}}};
    for (const auto& c : cases) {
        LocaleGuard locale(QString::fromLatin1(c.locale));
        EXPECT_EQ(Regional::readNumber(QString::fromUtf8(c.text)), c.expected) << c.locale << " \"" << c.text << "\"";
    }
}

TEST(NumberText, PlainNumberAndPriceTextFollowTheLocale) {
    const struct { const char* locale; double value; const char* number; const char* price; } cases[] = {
        {"en_GB", 12.5, "12.5", "12.50"}, {"en_GB", 1234567.891, "1234567.891", "1234567.89"}, {"en_GB", 0.1 + 0.2, "0.3", "0.30"},
        {"en_GB", -0.0, "0", "0.00"}, {"en_GB", -0.001, "-0.001", "0.00"}, {"en_GB", 2.675, "2.675", "2.67"},  // 2.675 is 2.67499... in binary
        {"en_GB", 99.999, "99.999", "100.00"}, {"de_DE", 1500000, "1500000", "1500000,00"}, {"de_DE", -1.5, "-1,5", "-1,50"}};
    for (const auto& c : cases) {
        LocaleGuard locale(QString::fromLatin1(c.locale));
        EXPECT_EQ(Regional::numberText(c.value) + u' ' + Regional::priceText(c.value), QString::fromLatin1(c.number) + u' ' + QString::fromLatin1(c.price)) << c.locale << " " << c.value;
        const auto back = Regional::readNumber(Regional::numberText(c.value));  // what is written reads back
        EXPECT_NEAR(back.value_or(1e300), c.value, 1e-9 * std::max(1.0, std::abs(c.value)));
    }
}

} // namespace
