// Dates and numbers as the user reads and types them, under several regional settings.
#include "frame/CommonRoutines.h"
#include "frame/Regional.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

namespace {

// Pins the user's own short date pattern (in place of the locale's) for one test.
class PatternGuard {
public:
    explicit PatternGuard(const QString& pattern) { Regional::setUserShortDatePattern(pattern); }
    ~PatternGuard() { Regional::setUserShortDatePattern({}); }
};

std::string show(const std::optional<QDate>& d) {
    return d ? d->toString(Qt::ISODate).toStdString() : std::string("(none)");
}

struct DateTextCase {
    const char* locale;
    const char* pattern;   // empty: the locale's own
    qint32 storeDate;
    const char* expected;
};

class DateToTextTable : public ::testing::TestWithParam<DateTextCase> {};

TEST_P(DateToTextTable, FollowsThePatternOfTheRegionalSettings) {
    const DateTextCase& c = GetParam();
    ScriptedPlatform p;
    LocaleGuard locale(QString::fromLatin1(c.locale));
    PatternGuard pattern(QString::fromLatin1(c.pattern));
    EXPECT_EQ(DateToText(c.storeDate), QString::fromUtf8(c.expected))
        << c.locale << " pattern " << Regional::shortDatePattern().toStdString();
}

INSTANTIATE_TEST_SUITE_P(Locales, DateToTextTable, ::testing::Values(
    // No date, under every setting.
    DateTextCase{"en_GB", "", 0, "N/A"},
    DateTextCase{"en_US", "", 0, "N/A"},
    DateTextCase{"de_DE", "", 0, "N/A"},
    DateTextCase{"ja_JP", "", 0, "N/A"},
    DateTextCase{"C", "", 0, "N/A"},
    DateTextCase{"en_GB", "M/d/yyyy", 0, "N/A"},
    // The locales' own short patterns: day first, month first, year first.
    DateTextCase{"en_GB", "", 20050806, "06/08/2005"},
    DateTextCase{"en_GB", "", 19991231, "31/12/1999"},
    DateTextCase{"en_US", "", 20050806, "8/6/05"},
    DateTextCase{"en_US", "", 19300101, "1/1/30"},
    DateTextCase{"de_DE", "", 20050806, "06.08.05"},
    DateTextCase{"de_DE", "", 20291231, "31.12.29"},
    DateTextCase{"ja_JP", "", 20050806, "2005/08/06"},
    DateTextCase{"C", "", 20050806, "6 Aug 2005"},
    // Patterns a user may set in place of the locale's.
    DateTextCase{"en_GB", "dd/MM/yyyy", 20050806, "06/08/2005"},
    DateTextCase{"en_US", "M/d/yyyy", 20050806, "8/6/2005"},
    DateTextCase{"en_GB", "dd-MMM-yy", 20050806, "06-Aug-05"},
    DateTextCase{"en_US", "dd-MMM-yy", 20241231, "31-Dec-24"},
    DateTextCase{"en_GB", "yyyy-MM-dd", 20050806, "2005-08-06"},
    DateTextCase{"de_DE", "d.M.yyyy", 20000229, "29.2.2000"},
    // Separators that do not stand between every pair of fields: still the right date.
    DateTextCase{"en_GB", "d. M. yyyy", 20050806, "6. 8. 2005"},
    DateTextCase{"en_GB", "yyyyMMdd", 20050806, "20050806"}));

TEST(DateToText, ReadsBackToTheSameDateInEveryLocale) {
    ScriptedPlatform p;
    const qint32 dates[] = {20050806, 20050608, 19991231, 20000101, 20000229, 19300101, 20291231, 20120110};
    for (const char* name : {"en_GB", "en_US", "de_DE", "ja_JP", "C", "fr_FR", "ko_KR", "nl_NL"}) {
        LocaleGuard locale(QString::fromLatin1(name));
        for (qint32 d : dates) {
            const QString text = DateToText(d);
            const auto back = Regional::readDate(text);
            ASSERT_TRUE(back.has_value()) << name << ": " << text.toStdString();
            EXPECT_EQ(Regional::toStoreDate(*back), d) << name << ": " << text.toStdString();
        }
    }
}

TEST(DateToText, SeparatorAndPatternComeFromTheRegionalSettings) {
    ScriptedPlatform p;
    const struct { const char* locale; const char* sep; const char* pattern; } cases[] = {
        {"en_GB", "/", "dd/MM/yyyy"}, {"en_US", "/", "M/d/yy"}, {"de_DE", ".", "dd.MM.yy"},
        {"ja_JP", "/", "yyyy/MM/dd"}, {"nl_NL", "-", "dd-MM-yyyy"}};
    for (const auto& c : cases) {
        LocaleGuard locale(QString::fromLatin1(c.locale));
        EXPECT_EQ(GetDateSeparator(), QString::fromLatin1(c.sep)) << c.locale;
        EXPECT_EQ(GetShortDatePattern(), QString::fromLatin1(c.pattern)) << c.locale;
    }
    PatternGuard none(QStringLiteral("yyyyMMdd"));
    EXPECT_EQ(GetDateSeparator(), QString());
}

struct ReadCase {
    const char* locale;
    const char* text;
    const char* expected;   // ISO, or nullptr when the text is no date
};

class ReadDateTable : public ::testing::TestWithParam<ReadCase> {};

TEST_P(ReadDateTable, ReadsDatesAsUsersTypeThem) {
    const ReadCase& c = GetParam();
    LocaleGuard locale(QString::fromLatin1(c.locale));
    const auto got = Regional::readDate(QString::fromUtf8(c.text));
    const auto want = c.expected ? std::optional<QDate>(QDate::fromString(QString::fromLatin1(c.expected), Qt::ISODate))
                                 : std::nullopt;
    EXPECT_EQ(show(got), show(want)) << c.locale << " \"" << c.text << "\"";
}

INSTANTIATE_TEST_SUITE_P(Locales, ReadDateTable, ::testing::Values(
    ReadCase{"en_GB", "06/08/2005", "2005-08-06"},
    ReadCase{"en_GB", "6/8/05", "2005-08-06"},
    ReadCase{"en_GB", " 6-8-2005 ", "2005-08-06"},
    ReadCase{"en_GB", "Saturday, 6 August 2005", "2005-08-06"},
    ReadCase{"en_GB", "2005-08-06", "2005-08-06"},
    ReadCase{"en_GB", "2 January 2004", "2004-01-02"},
    ReadCase{"en_GB", "2-Jan-2004", "2004-01-02"},
    ReadCase{"en_GB", "06-Aug-05", "2005-08-06"},
    ReadCase{"en_GB", "1/1/29", "2029-01-01"},
    ReadCase{"en_GB", "1/1/30", "1930-01-01"},
    ReadCase{"en_GB", "31/12/99", "1999-12-31"},
    ReadCase{"en_GB", "29/2/00", "2000-02-29"},
    ReadCase{"en_GB", "29/02/2005", nullptr},
    ReadCase{"en_GB", "32/01/2005", nullptr},
    ReadCase{"en_GB", "08/13/2005", nullptr},
    ReadCase{"en_GB", "2005-13-01", nullptr},
    ReadCase{"en_GB", "06/08", nullptr},
    ReadCase{"en_GB", "06/08/2005/1", nullptr},
    ReadCase{"en_GB", "rubbish", nullptr},
    ReadCase{"en_GB", "6 Augustus 2005", nullptr},
    ReadCase{"en_GB", "", nullptr},
    ReadCase{"en_GB", "N/A", nullptr},
    ReadCase{"en_GB", "06/08/205", nullptr},
    ReadCase{"en_US", "8/6/05", "2005-08-06"},
    ReadCase{"en_US", "08/06/2005", "2005-08-06"},
    ReadCase{"en_US", "12/31/99", "1999-12-31"},
    ReadCase{"en_US", "1/2/29", "2029-01-02"},
    ReadCase{"en_US", "1/2/30", "1930-01-02"},
    ReadCase{"en_US", "Saturday, August 6, 2005", "2005-08-06"},
    ReadCase{"en_US", "August 6, 2005", "2005-08-06"},
    ReadCase{"en_US", "2 January 2004", "2004-01-02"},
    ReadCase{"en_US", "2-Jan-2004", "2004-01-02"},
    ReadCase{"en_US", "2004-01-02", "2004-01-02"},
    ReadCase{"en_US", "31/12/2005", nullptr},
    ReadCase{"de_DE", "06.08.05", "2005-08-06"},
    ReadCase{"de_DE", "6.8.2005", "2005-08-06"},
    ReadCase{"de_DE", "Samstag, 6. August 2005", "2005-08-06"},
    ReadCase{"de_DE", "2. Januar 2004", "2004-01-02"},
    ReadCase{"de_DE", "2 January 2004", "2004-01-02"},
    ReadCase{"de_DE", "2-Jan-2004", "2004-01-02"},
    ReadCase{"de_DE", "2004-01-02", "2004-01-02"},
    ReadCase{"de_DE", "1.1.29", "2029-01-01"},
    ReadCase{"de_DE", "Quatsch", nullptr},
    ReadCase{"ja_JP", "2005/08/06", "2005-08-06"},
    ReadCase{"ja_JP", "2005年8月6日", "2005-08-06"}));

struct NumberCase {
    const char* locale;
    const char* text;
    std::optional<double> expected;
};

class ReadNumberTable : public ::testing::TestWithParam<NumberCase> {};

TEST_P(ReadNumberTable, ReadsNumbersWithTheLocalesSeparators) {
    const NumberCase& c = GetParam();
    LocaleGuard locale(QString::fromLatin1(c.locale));
    const auto got = Regional::readNumber(QString::fromUtf8(c.text));
    ASSERT_EQ(got.has_value(), c.expected.has_value()) << c.locale << " \"" << c.text << "\"";
    if (got) {
        EXPECT_DOUBLE_EQ(*got, *c.expected) << c.locale << " \"" << c.text << "\"";
    }
}

INSTANTIATE_TEST_SUITE_P(Locales, ReadNumberTable, ::testing::Values(
    NumberCase{"en_GB", "12.5", 12.5},
    NumberCase{"en_GB", " 7 ", 7.0},
    NumberCase{"en_GB", "-3.25", -3.25},
    NumberCase{"en_GB", "1,234.5", 1234.5},
    NumberCase{"en_GB", "1234567", 1234567.0},
    NumberCase{"en_GB", "0.01", 0.01},
    NumberCase{"en_GB", "", std::nullopt},
    NumberCase{"en_GB", "abc", std::nullopt},
    NumberCase{"en_GB", "12.5.1", std::nullopt},
    NumberCase{"en_GB", "1e999", std::nullopt},
    NumberCase{"en_GB", "+5", 5.0},
    NumberCase{"en_GB", "-", std::nullopt},
    NumberCase{"en_GB", ".", std::nullopt},
    NumberCase{"en_GB", "1e3", 1000.0},
    NumberCase{"en_GB", "98765.4321", 98765.4321},
    NumberCase{"en_GB", "12,5", std::nullopt},   // a misplaced group separator
    NumberCase{"de_DE", "12,5", 12.5},
    NumberCase{"de_DE", "1.234,5", 1234.5},
    NumberCase{"de_DE", "-0,75", -0.75},
    NumberCase{"de_DE", "1234567", 1234567.0},
    NumberCase{"de_DE", "12,5,1", std::nullopt},
    NumberCase{"de_DE", "zwölf", std::nullopt}));

struct TextCase {
    const char* locale;
    double value;
    const char* number;
    const char* price;
};

TEST(NumberText, PlainNumberAndPriceTextFollowTheLocale) {
    const TextCase cases[] = {
        {"en_GB", 12.5, "12.5", "12.50"},
        {"en_GB", 1500000, "1500000", "1500000.00"},
        {"en_GB", 1234567.891, "1234567.891", "1234567.89"},
        {"en_GB", 0.1 + 0.2, "0.3", "0.30"},
        {"en_GB", 0, "0", "0.00"},
        {"en_GB", -0.0, "0", "0.00"},
        {"en_GB", -0.001, "-0.001", "0.00"},
        {"en_GB", -1.5, "-1.5", "-1.50"},
        {"en_GB", 2.675, "2.675", "2.67"},   // 2.675 is 2.67499... in binary
        {"en_GB", 99.999, "99.999", "100.00"},
        {"de_DE", 12.5, "12,5", "12,50"},
        {"de_DE", 1500000, "1500000", "1500000,00"},
        {"de_DE", 1234567.891, "1234567,891", "1234567,89"},
        {"de_DE", -1.5, "-1,5", "-1,50"},
    };
    for (const TextCase& c : cases) {
        LocaleGuard locale(QString::fromLatin1(c.locale));
        EXPECT_EQ(Regional::numberText(c.value), QString::fromLatin1(c.number)) << c.locale << " " << c.value;
        EXPECT_EQ(Regional::priceText(c.value), QString::fromLatin1(c.price)) << c.locale << " " << c.value;
        // What is written reads back to the same number.
        const auto back = Regional::readNumber(Regional::numberText(c.value));
        ASSERT_TRUE(back.has_value()) << c.locale << " " << c.value;
        EXPECT_NEAR(*back, c.value, 1e-9 * std::max(1.0, std::abs(c.value)));
    }
}

TEST(StoreDates, TurnIntoDatesAndBack) {
    EXPECT_EQ(Regional::toStoreDate(QDate(2005, 8, 6)), 20050806);
    EXPECT_EQ(Regional::toStoreDate(QDate()), 0);
    EXPECT_EQ(Regional::fromStoreDate(20050806), QDate(2005, 8, 6));
    EXPECT_FALSE(Regional::fromStoreDate(0).isValid());
    EXPECT_FALSE(Regional::fromStoreDate(20050230).isValid());
    EXPECT_EQ(Regional::yyyymmdd(QDate(1999, 1, 2)), "19990102");
    EXPECT_EQ(Regional::fromYyyymmdd(QStringLiteral("19990102")), QDate(1999, 1, 2));
    EXPECT_FALSE(Regional::fromYyyymmdd(QStringLiteral("1999012")).isValid());
    EXPECT_FALSE(Regional::fromYyyymmdd(QStringLiteral("1999-01-02")).isValid());
}

} // namespace
