// The symbol list, the folder chooser, the month abbreviations, the web links and the boxes.
#include "frame/CommonRoutines.h"
#include "frame/ProgramState.h"
#include "frame/WebLinks.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace {

// The entries loaded, as "group|symbol|name" lines.
QStringList loadedEntries() {
    QStringList entries;
    for (int i = 1; i <= sharedState().SymbolCount; ++i) {
        const SymbolEntry& e = sharedState().SymbolEntries[i];
        entries << e.Group + u'|' + e.Symbol + u'|' + e.Name;
    }
    return entries;
}

TEST(ReadSymbolsFile, ReadsEntriesWithTheRulesOfCommaSeparatedText) {
    const struct { const char* file; QStringList expected; } cases[] = {  // file nullptr: no symbols.csv at all
        {"G,S,\"The \"\"Big\"\" One\"\n\"A, B\",\"X\",\"Amazon.com, Inc.\"\n", {"G|S|The \"Big\" One", "A, B|X|Amazon.com, Inc."}},  // quoted
        {"  Dow ,  AAPL , Apple Inc.   \n\t Idx\t,^DJI,\" Dow \" \n", {"Dow|AAPL|Apple Inc.", "Idx|^DJI|Dow"}},  // blanks trimmed
        {"\r\n \nA,B,C\r\n\r\n   \r\nD,E,F", {"A|B|C", "D|E|F"}},   // CR LF, blank lines, no line end at the end
        {"A,B,C\nD,E", {"A|B|C", "D|E|"}}, {"A,B,C\nD\n", {"A|B|C", "D||"}},  // ragged last lines
        {"A,B,\"never closed\nC,D,E\n", {"A|B|never closed\nC,D,E"}},
        {"Group,Symbol,Name\nA,B,C\n", {"Group|Symbol|Name", "A|B|C"}},  // every line is an entry
        {"\xEF\xBB\xBF" "DE,NESN.SW,Nestlé S.A.\n", {"DE|NESN.SW|Nestlé S.A."}},  // byte-order mark
        {"DE,NESN.SW,Nestl\xE9 S.A.\nFR,OR.PA,L\x92Or\xE9" "al \x80\n", {"DE|NESN.SW|Nestlé S.A.", "FR|OR.PA|L’Oréal €"}},  // Windows-1252
        {"FR,OR.PA,L’Oréal €\n", {"FR|OR.PA|L’Oréal €"}}, {"", {}}, {nullptr, {}}};
    for (const auto& c : cases) {
        ScriptedPlatform p;
        sharedState().SymbolCount = 3;  // what an earlier load left
        sharedState().SymbolEntries.resizeTo(3);
        if (c.file)
            writeTextFile(QDir(p.programFolder()).filePath("symbols.csv"), c.file);
        ReadSymbolsFile();
        EXPECT_EQ(loadedEntries(), c.expected) << (c.file ? c.file : "(no file)");
        EXPECT_EQ(sharedState().SymbolEntries.upperBound(), sharedState().SymbolCount);
        EXPECT_TRUE(sharedState().SymbolEntries[0].Symbol.isEmpty());
    }
}

TEST(ReadSymbolsFile, ShippedListHoldsItsGroupsTogether) {
    ScriptedPlatform p;
    ASSERT_TRUE(QFile::copy(QStringLiteral(BM_SOURCE_DIR "/data/symbols.csv"), QDir(p.programFolder()).filePath("symbols.csv")));
    ReadSymbolsFile();
    const QStringList entries = loadedEntries();
    ASSERT_GE(entries.size(), 100);
    QStringList groups, nifty;  // groups in order of first appearance; a group must not come back later
    for (const QString& e : entries) {
        const QStringList f = e.split(u'|');
        EXPECT_FALSE(f[0].isEmpty() || f[1].isEmpty() || f[2].isEmpty()) << e.toStdString();
        if (groups.isEmpty() || groups.last() != f[0]) {
            EXPECT_FALSE(groups.contains(f[0])) << "group split: " << f[0].toStdString();
            groups << f[0];
        }
        if (f[0] == "NSE India - NIFTY 50")
            nifty << f[1];
    }
    EXPECT_EQ(groups, (QStringList{"NSE India - NIFTY 50", "Dow Jones Industrial Average", "Indices"}));
    EXPECT_TRUE(entries.contains("Dow Jones Industrial Average|AMZN|Amazon.com, Inc.") && entries.contains("Indices|^BSESN|BSE SENSEX (BSE India)"));
    // The NIFTY 50 as it stands.
    EXPECT_EQ(nifty.size(), 50);
    for (const char* in : {"INDIGO.NS", "MAXHEALTH.NS", "TMPV.NS", "ETERNAL.NS", "JIOFIN.NS"})
        EXPECT_TRUE(nifty.contains(in)) << in;
    for (const char* out : {"HEROMOTOCO.NS", "INDUSINDBK.NS", "TATAMOTORS.NS"})
        EXPECT_FALSE(nifty.contains(out)) << out;
}

// An installed program keeps its shipped files in share/brindlemark beside its bin folder.
TEST(ReadSymbolsFile, SymbolListIsFoundBesideTheProgramThenInShare) {
    const struct { const char* besideProgram; const char* inShare; QStringList expected; } cases[] = {  // nullptr: no file there
        {nullptr, "G,FROM.SHARE,Shared\n", {"G|FROM.SHARE|Shared"}}, {"G,BESIDE,Beside\n", "G,FROM.SHARE,Shared\n", {"G|BESIDE|Beside"}}, {nullptr, nullptr, {}}};
    for (const auto& c : cases) {
        ScriptedPlatform p;
        const QDir prefix(p.programDir.path());
        ASSERT_TRUE(prefix.mkpath("bin") && prefix.mkpath("share/brindlemark"));
        p.programPath = prefix.filePath("bin");
        for (const auto& [text, path] : {std::pair{c.besideProgram, "bin/symbols.csv"}, std::pair{c.inShare, "share/brindlemark/symbols.csv"}})
            if (text)
                writeTextFile(prefix.filePath(path), text);
        ReadSymbolsFile();
        EXPECT_EQ(loadedEntries(), c.expected);
    }
}

TEST(MonthAbbreviation, ThreeCapitalsForTwelveMonthsOnly) {
    QStringList got;
    for (qint16 m = -1; m <= 13; ++m)
        got << MonthAbbreviation(m);
    EXPECT_EQ(got.join(u' '), QStringLiteral("  JAN FEB MAR APR MAY JUN JUL AUG SEP OCT NOV DEC "));
}

TEST(BrowseForFolder, GivesThePathOfTheChosenFolder) {
    const std::pair<QString, QString> cases[] = {
        {QString(), QString()}, {"C:\\", "C:"}, {"D:\\Data\\Stocks\\", "D:\\Data\\Stocks"}, {"/", "/"},  // cancelled, ...
        {"/home/user/data/", "/home/user/data"}, {QStringLiteral("C:\\Meta") + QChar(u'\0') + QStringLiteral("junk\\"), "C:\\Meta"}};
    for (const auto& [chosen, expected] : cases) {
        ScriptedPlatform p;
        if (!chosen.isNull())
            p.chooseNext(chosen);
        EXPECT_EQ(BrowseForFolder(nullptr, QStringLiteral("Select Data Folder")), expected) << chosen.toStdString();
        EXPECT_EQ(p.chooserTitles, QStringList{QStringLiteral("Select Data Folder")});
    }
}

TEST(GoURL, OpensTheAddressOrShowsTheHyperlinkBox) {
    ScriptedPlatform p;
    GoURL(WebLinks::ProductPage);
    EXPECT_EQ(p.openedAddresses, QStringList{WebLinks::ProductPage});
    EXPECT_TRUE(p.boxes.isEmpty());
    GoURL(QString());  // nothing behind the line feed
    p.openAddressFails = true;
    GoURL(WebLinks::HelpPage);
    EXPECT_EQ(p.boxTexts(), (QStringList{"Could not open URL \n", "Could not open URL \n" + WebLinks::HelpPage}));
    for (const ShownBox& box : p.boxes)
        EXPECT_TRUE(box.icon == MsgIcon::Critical && box.title == QStringLiteral("Hyperlink") && box.buttons == MsgButtons::Ok);
    // A box without a title shows the program's title.
    MsgBox(QStringLiteral("Done"), MsgIcon::Information);
    MsgBox(QStringLiteral("Oops"), MsgIcon::Warning, QStringLiteral("Marrowfin"));
    EXPECT_EQ(p.boxes[2].title + u'|' + p.boxes[3].title, QStringLiteral("Brindlemark v6|Marrowfin"));
}

} // namespace
