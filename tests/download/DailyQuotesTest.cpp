// The quotes fetcher against the loopback server: what goes out, what comes back into Quotes,
// and the outcome in Error.

#include "DownloadTestKit.h"

#include <QTimer>

namespace {

class QuotesFetcher : public DownloadTest {
protected:
    // Serves the reply and fetches ABC; returns Error.
    int fetch(const LoopbackReply& reply) {
        server.serve(reply);
        dq.DownloadDailyQuotes(symbol, QDate(2005, 7, 1), QDate(2005, 8, 5));
        return dq.Error;
    }
    int fetch(const QByteArray& body, int status = 200) { return fetch(LoopbackReply::withStatus(status, body)); }

    QString symbol = "ABC";
};

TEST_F(QuotesFetcher, AsksForTheTrimmedSymbolWithTheLastDateFirstAndMonthsFromZero) {
    dq.DownloadDailyQuotes("  ^GSPC ", {1999, 12, 27}, {2000, 1, 2});
    EXPECT_EQ(server.targets, QList<QByteArray>{"/table.csv?s=^GSPC&d=0&e=2&f=2000&g=d&a=11&b=27&c=1999&ignore=.csv"});   // the caret as it stands
}

TEST_F(QuotesFetcher, ShapeTestAndRowWalk) {
    const QByteArray r1 = "2005-08-05,10,11,9,10.5,100,10.5\n";
    const QByteArray r2 = "2005-08-04,20,21,19,20.5,200,20.5\n";
    const struct { const char* what; QByteArray body; int error; int rows; int status = 200; } cases[] = {
        {"empty reply", "", 2, 0}, {"header alone", Header, 2, 0}, {"header and one row", Header + r1, 0, 1},
        {"twelve fields, no position to visit, no row left over", "a,b,c,d,e,f,g,h,i,j,k,l", 0, 0},
        {"no line end after the last row loses it", Header + r1 + r2 + r1.chopped(1), 0, 2},
        {"CR LF line ends shift the columns", Header.chopped(1) + "\r\n" + r1.chopped(1) + "\r\n", 2, 0},
        {"CR alone ends a line as well", Header.chopped(1) + "\r" + r1.chopped(1) + "\r", 0, 1},
        {"volume at the 32-bit limit", Header + "2005-08-05,1,2,1,2,2147483647,2\n", 0, 1},
        {"volume beyond 32 bits fails the reply", Header + r1 + "2005-08-04,1,2,1,2,2147483648,2\n", 2, 0},
        {"open that is no number", Header + "2005-08-05,n/a,2,1,2,5,2\n", 2, 0},
        {"a server error without a body", "", 2, 0, 500},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(fetch(c.body, c.status), c.error) << c.what;
        if (c.error == 0) {
            EXPECT_EQ(handOvers().Quotes.upperBound(), c.rows) << c.what;
        }
    }
}

TEST_F(QuotesFetcher, RowsKeepTheirLineNumbersAndEveryField) {
    ASSERT_EQ(fetch(Header + "2005-08-05,25.50,26.75,25.125,26.00,2.5,26.00\n"
                             "2005-08-04,20,-,19,20.5,200,20.5\n"
                             "2005-08-03,30,,29,30.5,300,30.5\n"
                             "2005-08-02,40,41,39,40.5,3.5,40.5\n"
                             "2005-08-01,40,41,39,40.5,-1.5,40.5\n"),
              0);
    ASSERT_EQ(handOvers().Quotes.upperBound(), 5);
    EXPECT_EQ(quote(1).Dat, "2005-08-05");
    EXPECT_EQ(QList<double>({quote(1).OpenPrice, quote(1).High, quote(1).Low, quote(1).ClosePrice}), QList<double>({25.5, 26.75, 25.125, 26}));
    // A High that is no number leaves its index empty; index 0 is never filled.
    for (int empty : {0, 2, 3})
        EXPECT_TRUE(quote(empty).Dat.isEmpty()) << empty;
    EXPECT_EQ(quote(4).Dat, "2005-08-02");
    // Volumes round half to even.
    EXPECT_EQ(QList<double>({quote(1).Volume, quote(4).Volume, quote(5).Volume}), QList<double>({2, 4, -2}));

    // Nothing of this reply stays behind in the gaps of the next.
    ASSERT_EQ(fetch(Header + "2005-09-05,10,x,9,10.5,100,10.5\n2005-09-04,20,21,19,20.5,200,20.5\n"), 0);
    ASSERT_EQ(handOvers().Quotes.upperBound(), 2);
    EXPECT_TRUE(quote(1).Dat.isEmpty());
    EXPECT_EQ(quote(2).Dat, "2005-09-04");
}

TEST_F(QuotesFetcher, TheTraceFileHoldsTheLastReplyAndMustBeWritable) {
    fetch(Header + "2005-08-05,10,11,9,10.5,100,10.5\r\n");
    const QString trace = platform_.cacheFolder() + QStringLiteral("/t.txt");
    EXPECT_EQ(readFileBytes(trace),
              "Date,Open,High,Low,Close,Volume,Adj Close,2005-08-05,10,11,9,10.5,100,10.5,,\r\n");
    fetch("");
    EXPECT_EQ(readFileBytes(trace), "\r\n");

    QFile::remove(trace);
    ASSERT_TRUE(QDir().mkpath(trace));   // a folder where the file should go
    EXPECT_EQ(fetch(Header + "2005-08-05,10,11,9,10.5,100,10.5\n"), 2);
}

// Under a decimal comma the comma still parts the fields: whole numbers read, a High with a
// decimal point is no number there.
TEST_F(QuotesFetcher, NumbersReadUnderTheRegionalSettings) {
    LocaleGuard locale("de_DE");
    ASSERT_EQ(fetch(Header + "05.08.2005,10,11,9,10,100,10\n"), 0);
    EXPECT_DOUBLE_EQ(quote(1).High, 11.0);
    ASSERT_EQ(fetch(Header + "05.08.2005,10,11.5,9,10,100,10\n"), 0);
    EXPECT_EQ(handOvers().Quotes.upperBound(), 0);
}

// Both ways a request goes out: through the network access manager, and written by hand for a
// symbol with a caret.
TEST_F(QuotesFetcher, AFailedTransferIsErrorThreeAndAnOversizedReplyNoData) {
  for (const char* asked : {"ABC", "^ABC"}) {
    SCOPED_TRACE(asked);
    symbol = asked;
    inet.MaxReplyBytes = 64 * 1024;
    platform_.settings["Sources/Quotes"] = server.endpoint();
    EXPECT_EQ(fetch(Header + "2005-08-05,10,11,9,10.5,100,10.5\n"), 0);
    EXPECT_EQ(quote(1).ClosePrice, 10.5);
    EXPECT_EQ(fetch("<html>gone</html>", 404), 2);
    EXPECT_EQ(inet.ResponseCode(), 404);
    LoopbackReply cut = LoopbackReply::ok(Header + QByteArray(4000, 'x'));
    cut.closeMidBody = true;
    LoopbackReply slow = LoopbackReply::ok(Header + "2005-08-05,10,11,9,10.5,100,10.5\n");
    slow.delayMs = 10 * 60 * 1000;   // a server that never answers
    inet.RequestTimeoutMs = 10 * 60 * 1000;
    QTimer::singleShot(100, [&] { inet.Cancel(); });   // the user stops the run meanwhile
    EXPECT_EQ(fetch(slow), 3);
    inet.RequestTimeoutMs = 300;
    EXPECT_EQ(fetch(cut), 3);
    EXPECT_EQ(fetch(slow), 3);
    LoopbackReply steady = LoopbackReply::ok(Header + "2005-08-05,10,11,9,10.5,100,10.5\n");
    steady.pieceGapMs = 120;   // longer than the timeout in all, but never silent that long
    EXPECT_EQ(fetch(steady), 0);
    inet.MaxReplyBytes = 1000;
    EXPECT_EQ(fetch(Header + QByteArray(5000, '1')), 2);
    EXPECT_EQ(fetch((Header + "2005-08-05,10,11,9,10.5,100,10.5\n").leftJustified(1000, '\n')), 0);   // the cap itself is allowed

    platform_.settings["Sources/Quotes"] = QStringLiteral("http://127.0.0.1:%1").arg(LoopbackHttpServer::deadPort());
    EXPECT_EQ(fetch(Header + "2005-08-05,10,11,9,10.5,100,10.5\n"), 3);
  }
}

} // namespace
