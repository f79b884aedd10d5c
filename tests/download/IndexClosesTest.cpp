// NSE India Index from the exchange's daily closes: the reader of a day's file, the symbols of new
// securities, the walk that brings an index folder up to date against the loopback server, and
// brindlemark-cli's `download index`.
#include "DownloadTestKit.h"

#include "download/IndexCloses.h"
#include "download/NseIndexRun.h"
#include "frame/Failure.h"


namespace {

const QByteArray Head = "Index Name,Index Date,Open Index Value,High Index Value,Low Index Value,"
                        "Closing Index Value,Points Change,Change(%),Volume,Turnover (Rs. Cr.),P/E,P/B,Div Yield\n";

// A value as the store keeps it (single precision).
double kept(double value) { return double(float(value)); }

QString path(const QDate& day) { return "/content/indices/ind_close_all_" + day.toString("ddMMyyyy") + ".csv"; }

QList<QPair<QString, QString>> securities(const QString& folder) {
    QList<QPair<QString, QString>> list;
    SecurityReader reader;
    reader.OpenFolder(folder);
    while (reader.GetSecuritiesRemaining() > 0) {
        reader.NextSecurity();
        list.append({reader.GetSymbol(), reader.GetName()});
    }
    return list;
}

TEST(IndexCloses, ColumnsByNameNumbersWithADecimalPointUnderEveryLocaleAndNoEmptyDays) {
    // Another order than the service's, a column it never had, quotes, CR LF.
    const QByteArray reply =
        "Volume,Closing Index Value,Extra,Index Date,Low Index Value,High Index Value,Open Index Value,Index Name\r\n"
        "353012345,23995.35,x,04-11-2024,23816.15,24316.75,24315.75,\"Nifty 50\"\r\n"
        "-,16.87,x,4-11-2024,-,-,-,India VIX\r\n"       // values that do not exist
        "1,-,x,04-11-2024,1,1,1,No Close\r\n"           // no close: no row
        "1,12a,x,04-11-2024,1,1,1,Bad Number\r\n"
        "1,12,x,04-11-2024,1,1,1.2.3,Bad Open\r\n"
        "1,12,x,31-02-2024,1,1,1,Bad Date\r\n"
        "1,12,x,04-11-2024,1,1,1,\r\n"                   // no name
        "1,12,x,04-11-2024\r\n"                          // cut short
        "1,12,x,04-11-2024,1,1,1,\"Open quote\r\n";
    for (const char* locale : {"de_DE", "en_US"}) {
        LocaleGuard guard(locale);
        const auto rows = IndexCloses::read(reply);
        ASSERT_TRUE(rows.has_value()) << locale;
        ASSERT_EQ(rows->size(), 2) << locale;
        const IndexClose& nifty = rows->at(0);
        EXPECT_EQ(nifty.Name, "Nifty 50");
        EXPECT_EQ(nifty.Date, QDate(2024, 11, 4));
        EXPECT_EQ(QList<double>({nifty.Open, nifty.High, nifty.Low, nifty.Close, nifty.Volume}),
                  QList<double>({24315.75, 24316.75, 23816.15, 23995.35, 353012345}));
        const IndexClose& vix = rows->at(1);
        EXPECT_EQ(vix.Date, QDate(2024, 11, 4));
        EXPECT_EQ(QList<double>({vix.Open, vix.High, vix.Low, vix.Close, vix.Volume}),
                  QList<double>({16.87, 16.87, 16.87, 16.87, 0}));
    }
    // Replies without a row are no data.
    for (const QByteArray& empty : QList<QByteArray>{QByteArray(), Head, "<html><body>Sign in to the Wi-Fi</body></html>",
                                                     "Index Name,Index Date,Volume\nNifty 50,04-11-2024,12\n",
                                                     Head + "Nifty 50,04-11-2024,1,1,1,-,0,0,0,0,0,0,0\n"})
        EXPECT_FALSE(IndexCloses::read(empty).has_value()) << empty.toStdString();
}

TEST(IndexCloses, SymbolsFromNamesAtMost14AndUniqueInTheFolder) {
    const struct { const char* name; QSet<QString> taken; const char* symbol; } cases[] = {
        {"Nifty 50", {}, "NIFTY50"}, {"Nifty 10 yr Benchmark G-Sec", {}, "NIFTY10YRBENCH"},
        {"Nifty 10 yr Benchmark G-Sec (Clean Price)", {"NIFTY10YRBENCH"}, "NIFTY10YRBENC2"},
        {"Nifty 10 yr Benchmark G-Sec (Clean Price)", {"NIFTY10YRBENCH", "NIFTY10YRBENC2"}, "NIFTY10YRBENC3"},
        {"Nifty Financial Services", {"NIFTYFINANCIAL", "NIFTYFINANCIA2", "NIFTYFINANCIA3", "NIFTYFINANCIA4",
          "NIFTYFINANCIA5", "NIFTYFINANCIA6", "NIFTYFINANCIA7", "NIFTYFINANCIA8", "NIFTYFINANCIA9"}, "NIFTYFINANCI10"},
        {"Nifty Indé १2", {}, "NIFTYIND2"}, {" - ", {}, "INDEX"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(NseIndexRun::SymbolFor(c.name, c.taken), c.symbol) << c.name;
}

// The exchange's closes on the loopback server: each day gets its entry of `days`, or 404.
class IndexWalk : public ::testing::Test, public NseIndexListener {
protected:
    IndexWalk() {
        platform.settings["Sources/IndexArchive"] = "today@" + server.endpoint();
        server.setHandler([this](const QByteArray& target) {
            return days.value(target, LoopbackReply::withStatus(404, "<html>Not Found</html>"));
        });
    }
    void serveDay(const QDate& day, const QByteArray& rows) { days.insert(path(day).toLatin1(), LoopbackReply::ok(rows)); }
    int run() {
        updated.clear();
        server.targets.clear();
        return walk.Run(folder);
    }
    void dayStarted(const QString&) override {}
    void dayUpdated(const QString& line) override { updated << line; }

    ScriptedPlatform platform;
    LoopbackHttpServer server;
    TempFolder temp;
    QString folder = temp.file("index");   // not there yet
    QMap<QByteArray, LoopbackReply> days;
    Inet connection;
    NseIndexRun walk{connection, "http://127.0.0.1:" + QString::number(server.port()), *this};
    QStringList updated;
};

TEST_F(IndexWalk, BuildsAFolderFromNothingThenBringsItUpToDateADayLater) {
    const QByteArray monday = serviceFixture("ind_close_all_04112024.csv");
    if (monday.isEmpty())
        GTEST_SKIP() << "ind_close_all_04112024.csv not found beside the repository";
    LocaleGuard german("de_DE");
    platform.todayDate = QDate(2024, 11, 4);
    serveDay(QDate(2024, 11, 1), Head + "Nifty 50,01-11-2024,24205.35,24368.25,24181.80,24304.35,99.00,0.41,1000,1,1,1,1\n"
                                        "India VIX,01-11-2024,-,-,-,16.20,0,0,-,-,-,-,-\n"
                                        "Nifty 10 yr Benchmark G-Sec (Clean Price),01-11-2024,5,6,4,5.5,0,0,-,-,-,-,-\n");
    serveDay(QDate(2024, 11, 2), "<html>Sign in to the Wi-Fi</html>");
    serveDay(QDate(2024, 11, 4), monday);

    EXPECT_EQ(run(), 2);
    // A new folder starts 365 days back; one request a day up to today.
    ASSERT_EQ(server.targets.size(), 366);
    EXPECT_EQ(server.targets.first(), "/content/indices/ind_close_all_05112023.csv");
    EXPECT_TRUE(server.requestHeader(0, "User-Agent").startsWith("Mozilla/5.0"));
    EXPECT_EQ(server.requestHeader(0, "Referer"), "https://www.nseindia.com/");
    EXPECT_EQ(updated, (QStringList{"01.11.2024 Updated: 3 indices.", "04.11.2024 Updated: 5 indices."}));
    // Two names that share their first 14 letters get two symbols.
    EXPECT_EQ(securities(folder), (QList<QPair<QString, QString>>{{"NIFTY50", "Nifty 50"},
                                                                  {"INDIAVIX", "India VIX"},
                                                                  {"NIFTY10YRBENCH", "Nifty 10 yr Benchmark G-Sec (Clean Price)"},
                                                                  {"NIFTYNEXT50", "Nifty Next 50"},
                                                                  {"NIFTYBANK", "Nifty Bank"},
                                                                  {"NIFTY10YRBENC2", "Nifty 10 yr Benchmark G-Sec"}}));
    EXPECT_EQ(readBars(folder, "NIFTY50"),
              (std::vector<Bar>{{20241101, kept(24205.35), kept(24368.25), kept(24181.80), kept(24304.35), 1000},
                                {20241104, kept(24315.75), kept(24316.75), kept(23816.15), kept(23995.35), kept(353012345)}}));
    EXPECT_EQ(readBars(folder, "INDIAVIX"),
              (std::vector<Bar>{{20241101, kept(16.20), kept(16.20), kept(16.20), kept(16.20), 0},
                                {20241104, kept(16.20), kept(17.39), kept(15.89), kept(16.87), 0}}));

    // A day later: one request, for the day after the folder's last date. The exchange writes a
    // name in capitals, an index appears, one repeats.
    platform.todayDate = QDate(2024, 11, 5);
    serveDay(QDate(2024, 11, 5), Head + "NIFTY 50,05-11-2024,1,2,0.5,1.5,0,0,10,0,0,0,0\n"
                                        "Nifty Midcap 150,05-11-2024,3,4,2,3.5,0,0,20,0,0,0,0\n"
                                        "Nifty 50,05-11-2024,9,9,9,9,0,0,9,0,0,0,0\n"
                                        "Nifty \xE2\x82\xB9 Bond,05-11-2024,7,7,7,7,0,0,-,-,-,-,-\n");
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(server.targets, QList<QByteArray>{"/content/indices/ind_close_all_05112024.csv"});
    EXPECT_EQ(updated, QStringList{"05.11.2024 Updated: 3 indices."});
    EXPECT_EQ(readBars(folder, "NIFTY50").size(), 3);
    EXPECT_EQ(readBars(folder, "NIFTY50").back(), (Bar{20241105, 1, 2, 0.5, 1.5, 10}));
    const auto after = securities(folder);
    ASSERT_EQ(after.size(), 8);
    EXPECT_EQ(after[6], (QPair<QString, QString>{"NIFTYMIDCAP150", "Nifty Midcap 150"}));
    EXPECT_EQ(after[7], (QPair<QString, QString>{"NIFTYBOND", "Nifty ? Bond"}));   // the rupee sign is no store character

    // Up to date: nothing is asked for.
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(server.targets.isEmpty());

    // A day the exchange fails to serve, or serves with another day's values, ends the walk there,
    // writing nothing, and the next run asks for it again.
    platform.todayDate = QDate(2024, 11, 7);
    serveDay(QDate(2024, 11, 7), Head + "Nifty 50,07-11-2024,1,2,0.5,1.5,0,0,10,0,0,0,0\n");
    for (const LoopbackReply& reply : {LoopbackReply::withStatus(503, "busy"), LoopbackReply::ok(Head + "Nifty 50,05-11-2024,8,8,8,8,0,0,8,0,0,0,0\n")}) {
        days.insert(path(QDate(2024, 11, 6)).toLatin1(), reply);
        EXPECT_THROW(run(), Failure);
        EXPECT_EQ(server.targets.size(), 1);
        EXPECT_EQ(readBars(folder, "NIFTY50").back(), (Bar{20241105, 1, 2, 0.5, 1.5, 10}));
    }
    serveDay(QDate(2024, 11, 6), Head + "Nifty 50,06-11-2024,1,2,0.5,1.5,0,0,10,0,0,0,0\n");
    EXPECT_EQ(run(), 2);
    EXPECT_EQ(readBars(folder, "NIFTY50").size(), 5);
}

TEST_F(IndexWalk, TheCommandLineBringsTheFolderUpToDate) {
    // The user's own security of an index keeps its symbol; a symbol of another security is passed by.
    platform.todayDate = QDate(2024, 11, 5);
    QDir().mkpath(folder);
    makeSecurity(folder, "N50", "Nifty 50", {bar(20241101, 100)});
    makeSecurity(folder, "INDIAVIX", "My VIX", {bar(20241030, 5)});
    serveDay(QDate(2024, 11, 4), Head + "Nifty 50,04-11-2024,1,2,0.5,1.5,0,0,10,0,0,0,0\n"
                                        "India VIX,04-11-2024,3,4,2,3.5,0,0,-,-,-,-,-\n");
    const CliRun r = cli({"download", "index", folder});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, (QStringList{"04/11/2024 Updated: 2 indices.", "1 day with data"}));
    EXPECT_EQ(server.targets.first(), "/content/indices/ind_close_all_02112024.csv");
    EXPECT_EQ(server.targets.size(), 4);
    EXPECT_EQ(readBars(folder, "N50"), (std::vector<Bar>{bar(20241101, 100), {20241104, 1, 2, 0.5, 1.5, 10}}));
    EXPECT_EQ(readBars(folder, "INDIAVIX2"), (std::vector<Bar>{{20241104, 3, 4, 2, 3.5, 0}}));
    EXPECT_EQ(readBars(folder, "INDIAVIX").size(), 1);
}

} // namespace
