// World Exchanges against today's chart service: the choice of source, the request, the JSON
// reply read into Quotes, the retries after "Too Many Requests", HTTPS, and what reaches a folder.

#include "DownloadTestKit.h"

#include "download/ChartReply.h"
#include "download/DownloadRun.h"

namespace {

// A chart reply with the given sessions.
struct Session { qint64 time; QByteArray open = "1", high = "2", low = "0.5", close = "1.5", volume = "100"; };
QByteArray chart(const QList<Session>& sessions, const QByteArray& meta = R"("gmtoffset":19800,"exchangeTimezoneName":"Asia/Kolkata")") {
    QByteArrayList t, o, h, l, c, v;
    for (const Session& s : sessions)
        t << QByteArray::number(s.time), o << s.open, h << s.high, l << s.low, c << s.close, v << s.volume;
    // Fields in another order than the fixtures, and some the reader never looks at.
    return R"({"chart":{"error":null,"result":[{"indicators":{"adjclose":[{"adjclose":[]}],"quote":[{"volume":[)" + v.join(',')
         + "],\"close\":[" + c.join(',') + "],\"low\":[" + l.join(',') + "],\"high\":[" + h.join(',') + "],\"open\":["
         + o.join(',') + R"(]}]},"timestamp":[)" + t.join(',') + R"(],"meta":{"symbol":"X",)" + meta + "}}]}}";
}

// 09:15 in Kolkata on a day of November 2024.
qint64 kolkataMorning(int day) { return QDateTime(QDate(2024, 11, day), QTime(3, 45), Qt::UTC).toSecsSinceEpoch(); }

class TodaySource : public DownloadTest {
protected:
    TodaySource() { platform_.settings["Sources/Quotes"] = "today@" + server.endpoint(); }

    int fetch(const QString& symbol = "RELIANCE.NS") {
        dq.DownloadDailyQuotes(symbol, QDate(2024, 11, 1), QDate(2024, 11, 8));
        return dq.Error;
    }
    static QStringList dates() {
        QStringList texts;
        for (const QuoteRecord& q : handOvers().Quotes)
            texts << q.Dat;
        return texts;
    }
};

TEST(Sources, SettingValuesChooseProtocolAndHost) {
    const QString home = "https://query2.finance.yahoo.com";
    const struct { QString value; bool today; QString address; } cases[] = {
        {"", true, home}, {"  Today ", true, home},
        {"today@http://127.0.0.1:8080", true, "http://127.0.0.1:8080"},
        {"today@https://cache.example:8443/", true, "https://cache.example:8443"},
        {"today@", true, home},
        {" http://10.0.0.5 ", false, "http://10.0.0.5"},
        {"todayish.example", false, "todayish.example"},
    };
    for (const auto& c : cases) {
        const auto source = ServiceAddresses::readSource(c.value, home);
        EXPECT_EQ(source.today, c.today) << c.value.toStdString();
        EXPECT_EQ(source.address, c.address) << c.value.toStdString();
    }
}

TEST_F(TodaySource, AsksForTheChartWithABrowserAgent) {
    server.serve(LoopbackReply::ok(chart({{kolkataMorning(4)}})));
    EXPECT_EQ(fetch("^NSEI"), 0);
    EXPECT_EQ(fetch(" RELIANCE.NS "), 0);
    ASSERT_EQ(server.targets.size(), 2);
    // 1 November 00:00 UTC to the end of 8 November.
    EXPECT_EQ(server.targets[0], "/v8/finance/chart/%5ENSEI?period1=1730419200&period2=1731110400&interval=1d&events=div%2Csplits");
    EXPECT_TRUE(server.targets[1].startsWith("/v8/finance/chart/RELIANCE.NS?period1="));
    EXPECT_TRUE(server.requestHeader(0, "User-Agent").startsWith("Mozilla/5.0 ("));
}

TEST_F(TodaySource, TheServicesReplyNullsSkippedAndTheLiveBarKept) {
    const QByteArray reply = serviceFixture("yahoo-chart-RELIANCE.NS.json");
    if (reply.isEmpty())
        GTEST_SKIP() << "yahoo-chart-RELIANCE.NS.json not found beside the repository";
    server.serve(LoopbackReply::ok(reply));
    ASSERT_EQ(fetch(), 0);
    // Newest first; the null 7 November left out; 8 November from the live bar behind it.
    EXPECT_EQ(dates(), QStringList({"2024-11-08", "2024-11-06", "2024-11-05", "2024-11-04"}));
    EXPECT_EQ(QList<double>({quote(1).OpenPrice, quote(1).High, quote(1).ClosePrice, double(quote(1).Volume), quote(2).Low,
                             quote(4).OpenPrice, quote(4).Low, double(quote(4).Volume)}),
              QList<double>({1291.0, 1301.5, 1296.8, 7512345, 1310.0, 1321.5, 1300.05, 9876543}));
}

TEST_F(TodaySource, RepliesWithoutBarsAreNoData) {
    const struct { const char* what; LoopbackReply reply; } cases[] = {
        {"no timestamps", LoopbackReply::ok(serviceFixture("yahoo-chart-no-rows.json"))},
        {"unknown symbol", LoopbackReply::withStatus(404, serviceFixture("yahoo-chart-404.json"))},
        {"a request the service calls bad", LoopbackReply::withStatus(400, serviceFixture("yahoo-chart-404.json"))},
        {"a good body with a server error", LoopbackReply::withStatus(500, chart({{kolkataMorning(4)}}))},
    };
    for (const auto& c : cases) {
        // A bar of an earlier security must not stay behind.
        server.serve(LoopbackReply::ok(chart({{kolkataMorning(4)}})));
        ASSERT_EQ(fetch(), 0);
        server.serve(c.reply);
        EXPECT_EQ(fetch(), 2) << c.what;
        EXPECT_EQ(handOvers().Quotes.upperBound(), 0) << c.what;
    }
}

TEST_F(TodaySource, TooManyRequestsIsTriedAgainAtMostThreeTimes) {
    int refusals = 0;
    server.setHandler([&](const QByteArray&) {
        if (refusals-- > 0) {
            LoopbackReply busy = LoopbackReply::withStatus(429, "Too Many Requests");
            busy.headers = {{"Retry-After", "0"}};
            return busy;
        }
        return LoopbackReply::ok(chart({{kolkataMorning(4)}}));
    });
    refusals = 2;
    EXPECT_EQ(fetch(), 0);
    EXPECT_EQ(server.targets.size(), 3);
    EXPECT_EQ(dates(), QStringList({"2024-11-04"}));

    server.targets.clear();
    refusals = 3;
    EXPECT_EQ(fetch(), DailyQuotes::TooManyRequests);
    EXPECT_EQ(server.targets.size(), 3);
    EXPECT_EQ(handOvers().Quotes.upperBound(), 0);
}

TEST(RetryPause, FromRetryAfterElseGrowing) {
    const struct { QByteArray retryAfter; int attempt, ms; } cases[] = {
        {"0", 1, 0}, {"7", 1, 7000}, {" 3 ", 2, 3000}, {"86400", 1, 120000}, {"", 1, 2000}, {"", 2, 4000},
        {"soon", 2, 4000}, {"-5", 1, 2000},
        {"Wed, 21 Oct 2015 07:28:00 GMT", 2, 0},   // a moment gone: at once
        {QDateTime::currentDateTimeUtc().addSecs(3600).toString("ddd, dd MMM yyyy HH:mm:ss 'GMT'").toLatin1(), 1, 120000},
    };
    for (const auto& c : cases)
        EXPECT_EQ(DailyQuotes::RetryPauseMs(c.retryAfter, c.attempt), c.ms) << c.retryAfter.constData();
}

TEST_F(TodaySource, HttpsWithATrustedCertificateOnly) {
    if (!LoopbackHttpServer::httpsAvailable())
        GTEST_SKIP() << "no TLS in Qt or no openssl command to make a test certificate";
    LoopbackHttpServer secure(LoopbackHttpServer::Scheme::Https);
    secure.serve(LoopbackReply::ok(chart({{kolkataMorning(4)}, {kolkataMorning(5)}})));
    platform_.settings["Sources/Quotes"] = "today@" + secure.endpoint();
    // Certificate checks are on: a certificate nobody vouches for is a failed transfer.
    EXPECT_EQ(fetch(), 3);
    {
        TrustedLoopbackCertificate trust;
        Inet fresh;
        ::DailyQuotes trusting(fresh);
        trusting.DownloadDailyQuotes("RELIANCE.NS", QDate(2024, 11, 1), QDate(2024, 11, 8));
        EXPECT_EQ(trusting.Error, 0);
        EXPECT_EQ(dates(), QStringList({"2024-11-05", "2024-11-04"}));
        // A refusal is the service's answer, as over plain HTTP: no data, not a failed transfer.
        secure.serve(LoopbackReply::withStatus(403, serviceFixture("yahoo-chart-404.json")));
        trusting.DownloadDailyQuotes("RELIANCE.NS", QDate(2024, 11, 1), QDate(2024, 11, 8));
        EXPECT_EQ(trusting.Error, 2);
    }
    EXPECT_TRUE(secure.targets.last().startsWith("/v8/finance/chart/RELIANCE.NS?"));
}

TEST(ChartReplyReading, SessionsTheReaderKeepsOrLeaves) {
    const qint64 nov4 = kolkataMorning(4), nov5 = kolkataMorning(5);
    const struct { const char* what; QByteArray body; QStringList dates; } cases[] = {
        {"a null anywhere drops only that session", chart({{nov4, "1", "2", "0.5", "1.5", "null"}, {nov5}}), {"2024-11-05"}},
        {"the later of one date wins", chart({{nov4, "1"}, {nov4 + 3600, "9"}}), {"2024-11-04"}},
        {"out of order comes out newest first", chart({{nov5}, {nov4}}), {"2024-11-05", "2024-11-04"}},
        {"the exchange's date, not UTC's: 00:30 in Kolkata is 19:00 UTC the day before",
         chart({{QDateTime(QDate(2024, 11, 3), QTime(19, 0), Qt::UTC).toSecsSinceEpoch()}}), {"2024-11-04"}},
        {"an unknown zone name falls back on the offset",
         chart({{QDateTime(QDate(2024, 11, 4), QTime(3, 0), Qt::UTC).toSecsSinceEpoch()}},
               R"("gmtoffset":-18000,"exchangeTimezoneName":"Nowhere/Land")"), {"2024-11-03"}},
        {"neither zone nor offset: UTC", chart({{nov4}}, R"("currency":"INR")"), {"2024-11-04"}},
        {"a timestamp beyond the calendar", chart({{qint64(1) << 50}, {nov4}}), {"2024-11-04"}},
        {"the first second of 1900 and the last of 9999 are on it", chart({{-2208988800}, {253402300799}}, "\"currency\":\"INR\""),
         {"9999-12-31", "1900-01-01"}},
        {"a timestamp without prices behind it", chart({{nov4}}).replace("\"timestamp\":[", "\"timestamp\":[1730778300,"), {"2024-11-05"}},
        {"result null", R"({"chart":{"result":null,"error":null}})", {}},
        {"no quote object", R"({"chart":{"result":[{"timestamp":[1730691900],"indicators":{}}]}})", {}},
        {"truncated JSON", chart({{nov4}}).chopped(3), {}}, {"a JSON array", "[1,2,3]", {}},
    };
    for (const auto& c : cases) {
        QStringList got;
        for (const ChartBar& b : ChartReply::read(c.body))
            got << b.date.toString(Qt::ISODate);
        EXPECT_EQ(got, c.dates) << c.what;
    }
    const auto kept = ChartReply::read(chart({{nov4, "1"}, {nov4 + 3600, "9", "10", "8", "9.5", "1234"}}));
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(kept[0], (ChartBar{QDate(2024, 11, 4), 9, 10, 8, 9.5, 1234}));
}

// Keeps the run's lines; with `run` set, presses Cancel as each fetch begins.
struct QuietListener : DownloadListener {
    void itemStarted(int, int, const QString&, qint16, qint16, qint16) override {}
    void fetching(const QString&) override { if (run) run->CancelRequested = true; }
    void recordRange(int) override {}
    void recordProgress(int) override {}
    void lineAdded(const QString& line) override { lines << line; }
    void captionChanged(const QString&) override {}
    void runEnded() override {}
    QStringList lines;
    DownloadRun* run = nullptr;
};

// Cancel pressed while the run's fetch waits to try again: no further try, and the run stops
// after that security with the line of the refusal.
TEST_F(TodaySource, TheRunsCancelReachesAFetchWaitingToTryAgain) {
    const QString folder = temp.sub("data");
    for (const char* symbol : {"A.NS", "B.NS"}) {
        makeSecurity(folder, symbol, symbol, {bar(20241101, 10)});
        handOvers().DownloadItems.append({symbol, Regional::dateText({2024, 10, 1}), Regional::dateText({2024, 11, 2}), folder});
    }
    server.serve(LoopbackReply::withStatus(429, "Too Many Requests"));   // a pause of seconds, unless cancelled
    QuietListener listener;
    DownloadRun run(inet, listener);
    listener.run = &run;
    run.RunDownload();
    EXPECT_EQ(server.targets.size(), 1);
    EXPECT_EQ(listener.lines, QStringList({"Too Many Requests : A.NS"}));
}

// The whole road into a folder under a decimal comma: the exchange's prices, the exchange's dates.
TEST_F(TodaySource, ARunStoresTheExchangesPricesUnderADecimalComma) {
    LocaleGuard guard("de_DE");
    const QString folder = temp.sub("data");
    makeSecurity(folder, "RELIANCE.NS", "Reliance", {bar(20241101, 1000)});
    server.serve(LoopbackReply::ok(chart({{kolkataMorning(4), "1321.5", "1330.25", "1300.125", "1304.75", "9876543"},
                                          {kolkataMorning(5), "1305", "1320.5", "1298", "1318.25", "3000000000"}})));
    handOvers().DownloadItems.append({"RELIANCE.NS", Regional::dateText({2024, 10, 1}), Regional::dateText({2024, 11, 2}), folder});
    QuietListener listener;
    DownloadRun run(inet, listener);
    run.RunDownload();
    EXPECT_EQ(listener.lines, QStringList({"Download Complete : RELIANCE.NS"}));
    EXPECT_EQ(readBars(folder, "RELIANCE.NS"),
              (std::vector<Bar>{bar(20241101, 1000), {20241104, 1321.5, 1330.25, 1300.125, 1304.75, 9876543},
                                // a volume beyond 32 bits as it came (as the store's float holds it)
                                {20241105, 1305, 1320.5, 1298, 1318.25, double(float(3000000000.0))}}));
}

} // namespace
