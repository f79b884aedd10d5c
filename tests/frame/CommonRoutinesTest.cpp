// The symbol list, the folder chooser, the month abbreviations, the web links and the boxes.
#include "frame/CommonRoutines.h"
#include "frame/ProgramState.h"
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
    for (int i = 1; i <= sharedState().SymbolCount; ++i) {
        const SymbolEntry& e = sharedState().SymbolEntries[i];
        entries.push_back({e.Group, e.Symbol, e.Name});
    }
    return entries;
}

TEST(ReadSymbolsFile, ReadsEntriesWithTheRulesOfCommaSeparatedText) {
    const struct {
        const char* what;
        const char* file;   // nullptr: no symbols.csv at all
        std::vector<Entry> expected;
    } cases[] = {
        {"plain lines", "NSE,INFY.NS,Infosys Ltd\nDow,AAPL,Apple Inc.\n",
         {{"NSE", "INFY.NS", "Infosys Ltd"}, {"Dow", "AAPL", "Apple Inc."}}},
        {"quoted items hold commas", "Dow,AMZN,\"Amazon.com, Inc.\"\n\"A, B\",\"X\",\"Y\"\n",
         {{"Dow", "AMZN", "Amazon.com, Inc."}, {"A, B", "X", "Y"}}},
        {"doubled quotes", "G,S,\"The \"\"Big\"\" One\"\n", {{"G", "S", "The \"Big\" One"}}},
        {"blanks trimmed", "  Dow ,  AAPL , Apple Inc.   \n\t Idx\t,^DJI,\" Dow \" \n",
         {{"Dow", "AAPL", "Apple Inc."}, {"Idx", "^DJI", "Dow"}}},
        {"CR LF, blank lines, no line end at the end", "A,B,C\r\n\r\n   \r\nD,E,F",
         {{"A", "B", "C"}, {"D", "E", "F"}}},
        {"ragged last line", "A,B,C\nD,E", {{"A", "B", "C"}, {"D", "E", ""}}},
        {"ragged last line of one item", "A,B,C\nD\n", {{"A", "B", "C"}, {"D", "", ""}}},
        {"unterminated quote", "A,B,\"never closed\nC,D,E\n", {{"A", "B", "never closed\nC,D,E"}}},
        {"every line is an entry", "Group,Symbol,Name\nA,B,C\n", {{"Group", "Symbol", "Name"}, {"A", "B", "C"}}},
        {"byte-order mark, UTF-8", "\xEF\xBB\xBF" "DE,NESN.SW,Nestlé S.A.\n", {{"DE", "NESN.SW", "Nestlé S.A."}}},
        {"Windows-1252, as a spreadsheet saves it", "DE,NESN.SW,Nestl\xE9 S.A.\nFR,OR.PA,L\x92Or\xE9" "al \x80\n",
         {{"DE", "NESN.SW", "Nestlé S.A."}, {"FR", "OR.PA", "L’Oréal €"}}},
        {"UTF-8 without a mark", "FR,OR.PA,L’Oréal €\n", {{"FR", "OR.PA", "L’Oréal €"}}},
        {"empty file", "", {}},
        {"only blank lines", "\n\n  \n", {}},
        {"missing file", nullptr, {}},
    };
    for (const auto& c : cases) {
        ScriptedPlatform p;
        sharedState().SymbolCount = 3;   // what an earlier load left
        sharedState().SymbolEntries.resizeTo(3);
        if (c.file)
            writeTextFile(QDir(p.programFolder()).filePath("symbols.csv"), c.file);
        ReadSymbolsFile();
        EXPECT_EQ(loadedEntries(), c.expected) << c.what;
        EXPECT_EQ(sharedState().SymbolEntries.upperBound(), sharedState().SymbolCount) << c.what;
        EXPECT_TRUE(sharedState().SymbolEntries[0].Symbol.isEmpty()) << c.what;
    }
}

TEST(ReadSymbolsFile, ShippedListHoldsItsGroupsTogether) {
    ScriptedPlatform p;
    ASSERT_TRUE(QFile::copy(QStringLiteral(BM_SOURCE_DIR "/data/symbols.csv"),
                            QDir(p.programFolder()).filePath("symbols.csv")));
    ReadSymbolsFile();
    const std::vector<Entry> entries = loadedEntries();
    ASSERT_GE(entries.size(), 100u);
    QStringList groups;   // in order of first appearance; a group must not come back later
    for (const Entry& e : entries) {
        EXPECT_FALSE(e.group.isEmpty() || e.symbol.isEmpty() || e.name.isEmpty()) << e.symbol.toStdString();
        if (groups.isEmpty() || groups.last() != e.group) {
            EXPECT_FALSE(groups.contains(e.group)) << "group split: " << e.group.toStdString();
            groups << e.group;
        }
    }
    EXPECT_EQ(groups, (QStringList{"NSE India - NIFTY 50", "Dow Jones Industrial Average", "Indices"}));
    EXPECT_NE(std::find(entries.begin(), entries.end(), Entry{"Dow Jones Industrial Average", "AMZN", "Amazon.com, Inc."}),
              entries.end());
    // The NIFTY 50 as it stands, and the index under its present name.
    QStringList nifty;
    for (const Entry& e : entries)
        if (e.group == "NSE India - NIFTY 50")
            nifty << e.symbol;
    EXPECT_EQ(nifty.size(), 50);
    for (const char* in : {"INDIGO.NS", "MAXHEALTH.NS", "TMPV.NS", "ETERNAL.NS", "JIOFIN.NS"})
        EXPECT_TRUE(nifty.contains(in)) << in;
    for (const char* out : {"HEROMOTOCO.NS", "INDUSINDBK.NS", "TATAMOTORS.NS"})
        EXPECT_FALSE(nifty.contains(out)) << out;
    EXPECT_NE(std::find(entries.begin(), entries.end(), Entry{"Indices", "^BSESN", "BSE SENSEX (BSE India)"}),
              entries.end());
}

TEST(MonthAbbreviation, ThreeCapitalsForTwelveMonthsOnly) {
    const char* expected[] = {"", "JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                              "JUL", "AUG", "SEP", "OCT", "NOV", "DEC", ""};
    for (qint16 m = 0; m <= 13; ++m)
        EXPECT_EQ(MonthAbbreviation(m), QString::fromLatin1(expected[m])) << m;
    EXPECT_EQ(MonthAbbreviation(-1), QString());
}

TEST(BrowseForFolder, GivesThePathOfTheChosenFolder) {
    const struct { QString chosen; QString expected; } cases[] = {
        {QString(), QString()},   // cancelled
        {QStringLiteral("C:\\"), QStringLiteral("C:")},
        {QStringLiteral("D:\\Data\\Stocks\\"), QStringLiteral("D:\\Data\\Stocks")},
        {QStringLiteral("/"), QStringLiteral("/")},
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

TEST(GoURL, OpensTheAddressOrShowsTheHyperlinkBox) {
    ScriptedPlatform p;
    GoURL(WebLinks::ProductPage);
    EXPECT_EQ(p.openedAddresses, QStringList{WebLinks::ProductPage});
    EXPECT_TRUE(p.boxes.isEmpty());

    GoURL(QString());   // nothing behind the line feed
    p.openAddressFails = true;
    GoURL(WebLinks::HelpPage);
    EXPECT_EQ(p.boxTexts(), (QStringList{"Could not open URL \n", "Could not open URL \n" + WebLinks::HelpPage}));
    for (const ShownBox& box : p.boxes) {
        EXPECT_EQ(box.icon, MsgIcon::Critical);
        EXPECT_EQ(box.title, QStringLiteral("Hyperlink"));
        EXPECT_EQ(box.buttons, MsgButtons::Ok);
    }
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
