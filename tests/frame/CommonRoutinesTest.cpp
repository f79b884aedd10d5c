// The symbol list, the folder chooser, the month abbreviations and the web links.
#include "frame/CommonRoutines.h"
#include "frame/Module1.h"
#include "frame/WebLinks.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <vector>

namespace {

struct Entry {
    QString group, symbol, name;
    bool operator==(const Entry&) const = default;
};

void PrintTo(const Entry& e, std::ostream* os) {
    *os << "{" << e.group.toStdString() << "|" << e.symbol.toStdString() << "|" << e.name.toStdString() << "}";
}

std::vector<Entry> loadedEntries() {
    std::vector<Entry> entries;
    for (int i = 1; i <= Module1::SymbolCount; ++i) {
        const SymbolEntry& e = Module1::SymbolEntries[i];
        entries.push_back({e.Group, e.Symbol, e.Name});
    }
    return entries;
}

struct SymbolsCase {
    const char* what;
    QByteArray file;
    std::vector<Entry> expected;
};

TEST(ReadSymbolsFile, ReadsEntriesWithTheRulesOfCommaSeparatedText) {
    const SymbolsCase cases[] = {
        {"plain lines", "NSE,INFY.NS,Infosys Ltd\nDow,AAPL,Apple Inc.\n",
         {{"NSE", "INFY.NS", "Infosys Ltd"}, {"Dow", "AAPL", "Apple Inc."}}},
        {"quoted items hold commas", "Dow,AMZN,\"Amazon.com, Inc.\"\n\"A, B\",\"X\",\"Y\"\n",
         {{"Dow", "AMZN", "Amazon.com, Inc."}, {"A, B", "X", "Y"}}},
        {"doubled quotes", "G,S,\"The \"\"Big\"\" One\"\n", {{"G", "S", "The \"Big\" One"}}},
        {"blanks trimmed", "  Dow ,  AAPL , Apple Inc.   \n\t Idx\t,^DJI,\" Dow \" \n",
         {{"Dow", "AAPL", "Apple Inc."}, {"Idx", "^DJI", "Dow"}}},
        {"no line end at the end", "A,B,C", {{"A", "B", "C"}}},
        {"CR LF line ends and blank lines", "A,B,C\r\n\r\n   \r\nD,E,F\r\n\r\n",
         {{"A", "B", "C"}, {"D", "E", "F"}}},
        {"ragged last line", "A,B,C\nD,E", {{"A", "B", "C"}, {"D", "E", ""}}},
        {"ragged last line of one item", "A,B,C\nD\n", {{"A", "B", "C"}, {"D", "", ""}}},
        {"a heading line is no entry", "Group,Symbol,Name\nA,B,C\n", {{"A", "B", "C"}}},
        {"byte-order mark", "\xEF\xBB\xBFNSE,TCS.NS,Tata Consultancy Services Ltd\n",
         {{"NSE", "TCS.NS", "Tata Consultancy Services Ltd"}}},
        {"UTF-8 names", "DE,NESN.SW,Nestlé S.A.\n", {{"DE", "NESN.SW", "Nestlé S.A."}}},
        {"empty file", "", {}},
        {"only blank lines", "\n\n  \n", {}},
        {"unterminated quote", "A,B,\"never closed\nC,D,E\n", {{"A", "B", "never closed\nC,D,E"}}},
    };
    for (const SymbolsCase& c : cases) {
        ScriptedPlatform p;
        writeTextFile(QDir(p.programFolder()).filePath("symbols.csv"), c.file);
        ReadSymbolsFile();
        EXPECT_EQ(loadedEntries(), c.expected) << c.what;
        EXPECT_EQ(Module1::SymbolEntries.upperBound(), Module1::SymbolCount) << c.what;
        EXPECT_TRUE(Module1::SymbolEntries[0].Symbol.isEmpty()) << c.what;
    }
}

TEST(ReadSymbolsFile, MissingFileLeavesTheListEmpty) {
    ScriptedPlatform p;
    Module1::SymbolCount = 3;
    Module1::SymbolEntries.resizeTo(3);
    ReadSymbolsFile();
    EXPECT_EQ(Module1::SymbolCount, 0);
    EXPECT_EQ(Module1::SymbolEntries.upperBound(), 0);
}

TEST(ReadSymbolsFile, UnreadableFileLeavesTheListEmpty) {
    ScriptedPlatform p;
    // A folder where the file should be: it opens as nothing that can be read.
    QDir(p.programFolder()).mkpath(QStringLiteral("symbols.csv"));
    ReadSymbolsFile();
    EXPECT_EQ(Module1::SymbolCount, 0);
}

TEST(ReadSymbolsFile, ShippedListHoldsItsGroupsTogether) {
    ScriptedPlatform p;
    ASSERT_TRUE(QFile::copy(QStringLiteral(BM_SOURCE_DIR "/data/symbols.csv"),
                            QDir(p.programFolder()).filePath("symbols.csv")));
    ReadSymbolsFile();
    const std::vector<Entry> entries = loadedEntries();
    ASSERT_GE(entries.size(), 100u);

    QStringList groups;   // in order of first appearance; a group must not come back later
    QMap<QString, int> perGroup;
    QSet<QString> symbols;
    for (const Entry& e : entries) {
        EXPECT_FALSE(e.group.isEmpty() || e.symbol.isEmpty() || e.name.isEmpty()) << e.symbol.toStdString();
        EXPECT_FALSE(symbols.contains(e.group + e.symbol)) << "twice: " << e.symbol.toStdString();
        symbols.insert(e.group + e.symbol);
        if (groups.isEmpty() || groups.last() != e.group) {
            EXPECT_FALSE(groups.contains(e.group)) << "group split: " << e.group.toStdString();
            groups << e.group;
        }
        ++perGroup[e.group];
    }
    EXPECT_EQ(groups.size(), 3);
    EXPECT_EQ(perGroup.value("NSE India - NIFTY 50"), 50);
    EXPECT_EQ(perGroup.value("Dow Jones Industrial Average"), 30);
    for (const Entry& e : entries) {
        if (e.group == "NSE India - NIFTY 50") {
            EXPECT_TRUE(e.symbol.endsWith(".NS")) << e.symbol.toStdString();
        }
        if (e.group == "Indices" && e.symbol != "000001.SS") {
            EXPECT_TRUE(e.symbol.startsWith('^')) << e.symbol.toStdString();
        }
    }
    const auto has = [&](const Entry& want) {
        return std::find(entries.begin(), entries.end(), want) != entries.end();
    };
    EXPECT_TRUE(has({"Dow Jones Industrial Average", "AMZN", "Amazon.com, Inc."}));
    EXPECT_TRUE(has({"NSE India - NIFTY 50", "M&M.NS", "Mahindra & Mahindra Ltd"}));
    for (const char* index : {"^GSPC", "^DJI", "^IXIC", "^NSEI", "^BSESN", "^FTSE", "^N225"})
        EXPECT_TRUE(symbols.contains(QStringLiteral("Indices") + QString::fromLatin1(index))) << index;
}

TEST(MonthAbbreviation, ThreeCapitalsForTwelveMonthsOnly) {
    const char* expected[] = {"", "JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                              "JUL", "AUG", "SEP", "OCT", "NOV", "DEC", ""};
    for (qint16 m = 0; m <= 13; ++m)
        EXPECT_EQ(MonthAbbreviation(m), QString::fromLatin1(expected[m])) << m;
    EXPECT_EQ(MonthAbbreviation(-1), QString());
    EXPECT_EQ(MonthAbbreviation(32767), QString());
}

TEST(BrowseForFolder, GivesThePathOfTheChosenFolder) {
    const struct { QString chosen; QString expected; } cases[] = {
        {QString(), QString()},                     // cancelled
        {QStringLiteral("C:\\"), QStringLiteral("C:")},
        {QStringLiteral("D:\\Data\\Stocks\\"), QStringLiteral("D:\\Data\\Stocks")},
        {QStringLiteral("D:\\Data\\Stocks"), QStringLiteral("D:\\Data\\Stocks")},
        {QStringLiteral("/"), QStringLiteral("/")},
        {QStringLiteral("/home/user/data"), QStringLiteral("/home/user/data")},
        {QStringLiteral("/home/user/data/"), QStringLiteral("/home/user/data")},
        {QStringLiteral("C:\\Meta") + QChar(u'\0') + QStringLiteral("junk\\"), QStringLiteral("C:\\Meta")},
    };
    for (const auto& c : cases) {
        ScriptedPlatform p;
        if (!c.chosen.isNull())
            p.chooseNext(c.chosen);
        EXPECT_EQ(BrowseForFolder(nullptr, QStringLiteral("Select Data Folder")), c.expected)
            << c.chosen.toStdString();
        EXPECT_EQ(p.chooserTitles, QStringList{QStringLiteral("Select Data Folder")});
    }
}

TEST(GoURL, EmptyAddressShowsTheHyperlinkBoxWithNothingBehindTheLineFeed) {
    ScriptedPlatform p;
    GoURL(QString());
    ASSERT_EQ(p.boxes.size(), 1);
    EXPECT_EQ(p.boxes[0].text, QStringLiteral("Could not open URL \n"));
    EXPECT_EQ(p.boxes[0].icon, MsgIcon::Critical);
    EXPECT_EQ(p.boxes[0].title, QStringLiteral("Hyperlink"));
    EXPECT_EQ(p.boxes[0].buttons, MsgButtons::Ok);
    EXPECT_TRUE(p.openedAddresses.isEmpty());
}

TEST(GoURL, FailingCallNamesTheAddress) {
    ScriptedPlatform p;
    p.openAddressFails = true;
    GoURL(WebLinks::HelpPage);
    EXPECT_EQ(p.boxTexts(), QStringList{QStringLiteral("Could not open URL \n") + WebLinks::HelpPage});
    EXPECT_EQ(p.boxes.value(0).title, QStringLiteral("Hyperlink"));
}

TEST(GoURL, OpensTheAddressWithoutABox) {
    ScriptedPlatform p;
    GoURL(WebLinks::ProductPage);
    EXPECT_EQ(p.openedAddresses, QStringList{WebLinks::ProductPage});
    EXPECT_TRUE(p.boxes.isEmpty());
}

TEST(MsgBox, BoxWithoutTitleShowsTheProgramsTitle) {
    ScriptedPlatform p;
    MsgBox(QStringLiteral("Done"), MsgIcon::Information);
    MsgBox(QStringLiteral("Oops"), MsgIcon::Warning, QStringLiteral("Marrowfin"));
    ASSERT_EQ(p.boxes.size(), 2);
    EXPECT_EQ(p.boxes[0].title, QStringLiteral("Brindlemark v6"));
    EXPECT_EQ(p.boxes[1].title, QStringLiteral("Marrowfin"));
}

} // namespace
