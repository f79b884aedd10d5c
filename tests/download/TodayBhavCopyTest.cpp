// NSE India against today's daily files: zipped CSV in either form on the loopback server,
// chosen by the setting "Bhavcopy", read into folders made as Create New Symbols makes them.
#include "DownloadTestKit.h"
#include "ZipTestKit.h"

#include "download/TodayBhavCopy.h"
#include "download/ZipEngine.h"
#include "download/ui/NseDownloaderDialog.h"

#include <QLineEdit>

namespace {

QByteArray zipped(const QByteArray& csv, const QByteArray& name = "day.csv") { return makeArchive({ZipEntry::file(name, csv)}); }

// The new form with its columns in another order than the exchange's, among others, CRLF line ends.
const QByteArray Shuffled = "SctySrs,TckrSymb,Rmks,TtlTradgVol,ClsPric,LwPric,HghPric,OpnPric,FinInstrmNm\r\n";

TEST(TodayBhavCopyRead, TheExchangesFilesInBothFormsOneRowPerSymbol) {
    const struct { const char* file; QStringList symbols; BhavRow sbin; } cases[] = {
        {"BhavCopy_NSE_CM_0_0_0_20241104_F_0000.csv", {"RELIANCE", "SBIN", "ABCINFRA", "XYZFIN", "M&M"},
         {"SBIN", true, 820.00, 828.40, 812.15, 818.95, 11234567}},
        {"cm01JUL2024bhav.csv", {"RELIANCE", "SBIN", "ABCINFRA", "M&M"}, {"SBIN", true, 842.00, 848.90, 838.00, 845.35, 9876543}},
    };
    for (const auto& c : cases) {
        const QByteArray csv = serviceFixture(c.file);
        if (csv.isEmpty())
            GTEST_SKIP() << c.file << " not found beside the repository";
        const auto rows = TodayBhavCopy::ReadArchive(zipped(csv, c.file));
        ASSERT_TRUE(rows) << c.file;
        QStringList symbols;
        for (const BhavRow& row : *rows)
            symbols << row.Symbol;
        EXPECT_EQ(symbols, c.symbols) << c.file;
        const BhavRow& sbin = (*rows)[1];   // the EQ row, not the block deal behind it
        EXPECT_EQ(std::tie(sbin.Open, sbin.High, sbin.Low, sbin.Close, sbin.Volume),
                  std::tie(c.sbin.Open, c.sbin.High, c.sbin.Low, c.sbin.Close, c.sbin.Volume)) << c.file;
    }
}

TEST(TodayBhavCopyRead, RepliesThatHoldNoDayAndLinesThatGiveNoRow) {
    const QByteArray good = Shuffled + "EQ,ABC,,100,2,1,3,1.5,A\r\n";
    QByteArray crcBroken = makeArchive({[&] { ZipEntry e = ZipEntry::file("d.csv", good); e.store = true; return e; }()});
    crcBroken[crcBroken.indexOf("ABC")] = 'X';
    const struct { const char* what; QByteArray archive; QStringList symbols; } cases[] = {
        {"HTML in the archive", zipped("<html><body>Access Denied</body></html>"), {}},
        {"an empty member", zipped(""), {}}, {"a header only", zipped(Shuffled), {}},
        {"a header lacking the volume", zipped("TckrSymb,SctySrs,OpnPric,HghPric,LwPric,ClsPric\nA,EQ,1,2,1,2\n"), {}},
        {"a CRC that does not match", crcBroken, {}}, {"no archive", good, {}},
        {"malformed lines only, one bad field each",
         zipped(Shuffled + "EQ,A,,1e999,2,1,3,1\nEQ,B,,1,2,1\nEQ,,,1,2,1,3,1\nEQ,C,,1,x,1,3,1\nEQ,D,,1,2,-,3,1\nEQ,E,,1,2,1,,1\nEQ,F,,1,2,1,3,1.2.3\n"), {}},
        {"a folder first, a BOM, CR line ends, a quoted name with a comma, blanks around, W1",
         makeArchive({ZipEntry::dir("2024/"), ZipEntry::file("2024/d.csv", "\xEF\xBB\xBF" "TCKRSYMB,FinInstrmNm,SctySrs,OpnPric,HghPric,LwPric,ClsPric,TtlTradgVol\r\r"
                                                                 " ABC ,\"ABC, LTD\",EQ, 1 ,2,0.5,1.5,10\r" "DEF,D,EQ,1,2,1,n/a,10\r" " W1 ,W,EQ,1,2,1,1.5,10\r")}),
         {"ABC"}},
        {"a note first, then the day's file",
         makeArchive({ZipEntry::file("README.txt", "Trades of the day"), ZipEntry::file("d.CSV", good)}), {"ABC"}},
    };
    for (const auto& c : cases) {
        const auto rows = TodayBhavCopy::ReadArchive(c.archive);
        QStringList symbols;
        for (const BhavRow& row : rows.value_or(QList<BhavRow>{}))
            symbols << row.Symbol;
        EXPECT_EQ(rows.has_value(), !c.symbols.isEmpty()) << c.what;
        EXPECT_EQ(symbols, c.symbols) << c.what;
    }
}

// The member comes out whole, or not at all: past the cap, or past what it declares (a zip bomb).
TEST(TodayBhavCopyRead, TheMemberIsCappedInMemory) {
    const QByteArray data(100000, 'z');
    EXPECT_EQ(FirstMemberBytes(zipped(data), 100000), data);
    EXPECT_FALSE(FirstMemberBytes(zipped(data), 99999));
    QByteArray lying = zipped(data);
    declareSize(lying, 1000);
    EXPECT_FALSE(FirstMemberBytes(lying, 100000));
}

class TodayNseRun : public NseDaysTest {
protected:
    TodayNseRun() : NseDaysTest("today@") {}
};

// A Friday in the older form, a weekend, the Monday the new form began, and a captive portal's
// page on Tuesday; prices with a decimal point stored under a decimal comma.
TEST_F(TodayNseRun, WalksBothFormsAndStoresTheExchangesPrices) {
    LocaleGuard guard("de_DE");
    createSymbols({"ABC", "XYZ", "BAD", "M&M"}, {2024, 7, 4});
    days["/content/historical/EQUITIES/2024/JUL/cm05JUL2024bhav.csv.zip"] = LoopbackReply::ok(zipped(
        "SYMBOL,SERIES,OPEN,HIGH,LOW,CLOSE,LAST,PREVCLOSE,TOTTRDQTY,TOTTRDVAL,TIMESTAMP,TOTALTRADES,ISIN,\n"
        "M&M,EQ,2850.00,2875.00,2831.25,2866.25,2867.00,2846.90,1234567,3534567890.1,05-JUL-2024,76543,INE045A01017,\n"));
    days["/content/cm/BhavCopy_NSE_CM_0_0_0_20240708_F_0000.csv.zip"] = LoopbackReply::ok(zipped(
        Shuffled + "BE,ABC,,500,11.00,9.50,11.50,10.00,ABC LTD\r\n" "EQ,ABC,,1500,1234.50,1200.25,1240.00,1210.75,ABC LTD\r\n"
                   "BE,XYZ,,700,20.50,19.00,21.00,19.50,XYZ LTD\r\n" "BL,ABC,,9,1,1,1,1,ABC LTD\r\n" "EQ,BAD,,100,n/a,1,2,1,BAD\r\n"));
    days["/content/cm/BhavCopy_NSE_CM_0_0_0_20240709_F_0000.csv.zip"] = LoopbackReply::ok("<html><body>Sign in to the network</body></html>");
    platform_.todayDate = {2024, 7, 9};

    NseDownloaderDialog dlg;
    dlg.folderEdit->setText(folder);
    dlg.beginDownloadButton->click();

    EXPECT_EQ(server.decodedTargets(),
              QStringList({"/content/historical/EQUITIES/2024/JUL/cm05JUL2024bhav.csv.zip",
                           "/content/historical/EQUITIES/2024/JUL/cm06JUL2024bhav.csv.zip",
                           "/content/historical/EQUITIES/2024/JUL/cm07JUL2024bhav.csv.zip",
                           "/content/cm/BhavCopy_NSE_CM_0_0_0_20240708_F_0000.csv.zip",
                           "/content/cm/BhavCopy_NSE_CM_0_0_0_20240709_F_0000.csv.zip"}));
    EXPECT_EQ(server.requestHeader(4, "User-Agent"), ServiceAddresses::browserUserAgent());
    EXPECT_EQ(server.requestHeader(0, "Referer"), "https://www.nseindia.com/");
    EXPECT_EQ(lines(dlg.daysList), QStringList({Regional::dateText({2024, 7, 5}) + " Updated.",
                                                Regional::dateText({2024, 7, 8}) + " Updated."}));
    EXPECT_EQ(readBars(folder, "M&M"), std::vector<Bar>({{20240705, 2850, 2875, 2831.25, 2866.25, 1234567}}));
    EXPECT_EQ(readBars(folder, "ABC"), std::vector<Bar>({{20240708, 1210.75, 1240, 1200.25, 1234.5, 1500}}));
    EXPECT_EQ(readBars(folder, "XYZ"), std::vector<Bar>({{20240708, 19.5, 21, 19, 20.5, 700}}));
    EXPECT_TRUE(readBars(folder, "BAD").empty());
    EXPECT_EQ(readFileBytes(CreateSymbols::ValuesFilePath(folder)), (Regional::dateText({2024, 7, 8}) + "\r\n").toUtf8());
}

// A day the exchange fails to serve, or serves with another day's trades, ends the walk there;
// the next run asks for it again.
TEST_F(TodayNseRun, ADayNotFetchedIsAskedForAgain) {
    createSymbols({"ABC"}, {2024, 11, 1});
    const QByteArray day = zipped(Shuffled + "EQ,ABC,,100,2,1,3,1.5,A\r\n");
    const QByteArray friday = zipped("TradDt,TckrSymb,SctySrs,OpnPric,HghPric,LwPric,ClsPric,TtlTradgVol\n2024-11-01,ABC,EQ,1,2,1,2,5\n");
    const QString monday = Regional::dateText({2024, 11, 4});
    days["/content/cm/BhavCopy_NSE_CM_0_0_0_20241105_F_0000.csv.zip"] = LoopbackReply::ok(day);
    platform_.todayDate = {2024, 11, 5};
    NseDownloaderDialog dlg;
    dlg.folderEdit->setText(folder);
    const std::pair<LoopbackReply, QString> failures[] = {
        {LoopbackReply::withStatus(503, "busy"), "The exchange answered 503 for the bhav copy of " + monday + "."},
        {LoopbackReply::ok(friday), "The bhav copy of " + monday + " holds the trades of " + Regional::dateText({2024, 11, 1}) + "."}};
    for (const auto& [reply, says] : failures) {
        days["/content/cm/BhavCopy_NSE_CM_0_0_0_20241104_F_0000.csv.zip"] = reply;
        server.targets.clear();
        platform_.boxes.clear();
        dlg.beginDownloadButton->click();
        EXPECT_EQ(server.targets.size(), 3);   // the weekend, then the Monday that failed
        EXPECT_EQ(platform_.boxTexts().value(0), says + "\nThe next download asks for that day again.");
        EXPECT_TRUE(readBars(folder, "ABC").empty());
    }

    days["/content/cm/BhavCopy_NSE_CM_0_0_0_20241104_F_0000.csv.zip"] = LoopbackReply::ok(day);
    server.targets.clear();
    dlg.beginDownloadButton->click();
    EXPECT_EQ(server.targets.first(), "/content/cm/BhavCopy_NSE_CM_0_0_0_20241102_F_0000.csv.zip");
    EXPECT_EQ(readBars(folder, "ABC").size(), 2);
}

} // namespace
