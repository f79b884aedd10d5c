// The quotes fetcher against the loopback server: what goes out, what comes back into Quotes,
// and the outcome in Error.

#include "download/Inet.h"
#include "download/ServiceAddresses.h"
#include "download/clsDailyQuotes.h"
#include "frame/Failure.h"
#include "frame/Module1.h"
#include "support/LoopbackHttpServer.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QTimer>

#include <gtest/gtest.h>

namespace {

const QByteArray Header = "Date,Open,High,Low,Close,Volume,Adj Close\n";

class DailyQuotes : public ::testing::Test {
protected:
    DailyQuotes() {
        ServiceAddresses::setYahooQuotes(server.endpoint());
        clsDailyQuotes::setTracePath(temp.file("t.txt"));
        inet.RequestTimeoutMs = 2000;
    }
    ~DailyQuotes() override {
        ServiceAddresses::setYahooQuotes({});
        clsDailyQuotes::setTracePath({});
    }

    // Serves `body` and fetches ABC; returns Error.
    int fetch(const QByteArray& body, int status = 200) {
        server.serve(LoopbackReply::withStatus(status, body));
        dq.DownloadDailyQuotes(QStringLiteral("ABC"), QDate(2005, 7, 1), QDate(2005, 8, 5));
        return dq.Error;
    }

    ScriptedPlatform platform_;
    TempFolder temp;
    LoopbackHttpServer server;
    Inet inet;
    clsDailyQuotes dq{inet};
};

TEST_F(DailyQuotes, AsksForTheSymbolWithTheLastDateFirstAndMonthsFromZero) {
    struct Case {
        QString symbol;
        QDate first, last;
        QString target;
    };
    const Case cases[] = {
        {"ABC", {2005, 7, 1}, {2005, 8, 5}, "/table.csv?s=ABC&d=7&e=5&f=2005&g=d&a=6&b=1&c=2005&ignore=.csv"},
        {"  IBM ", {2004, 1, 31}, {2004, 12, 1}, "/table.csv?s=IBM&d=11&e=1&f=2004&g=d&a=0&b=31&c=2004&ignore=.csv"},
        {"^GSPC", {1999, 12, 27}, {2000, 1, 2}, "/table.csv?s=^GSPC&d=0&e=2&f=2000&g=d&a=11&b=27&c=1999&ignore=.csv"},
        {"RELIANCE.NS", {2026, 10, 9}, {2026, 11, 23}, "/table.csv?s=RELIANCE.NS&d=10&e=23&f=2026&g=d&a=9&b=9&c=2026&ignore=.csv"},
    };
    for (const Case& c : cases) {
        server.targets.clear();
        server.serve(LoopbackReply::ok(Header));
        dq.DownloadDailyQuotes(c.symbol, c.first, c.last);
        ASSERT_EQ(server.targets.size(), 1) << c.symbol.toStdString();
        EXPECT_EQ(server.decodedTargets().first(), c.target);
        EXPECT_EQ(clsDailyQuotes::QuotesQuery(c.symbol, c.first, c.last), c.target);
    }
}

TEST_F(DailyQuotes, OneRowWithAFinalLineEndIsRecordOne) {
    ASSERT_EQ(fetch(Header + "2005-08-05,25.50,26.75,25.125,26.00,1234567,26.00\n"), 0);
    ASSERT_EQ(Module1::Quotes.upperBound(), 1);
    const QuoteRecord& q = Module1::Quotes[1];
    EXPECT_EQ(q.Dat, "2005-08-05");
    EXPECT_DOUBLE_EQ(q.OpenPrice, 25.5);
    EXPECT_DOUBLE_EQ(q.High, 26.75);
    EXPECT_DOUBLE_EQ(q.Low, 25.125);
    EXPECT_DOUBLE_EQ(q.ClosePrice, 26.0);
    EXPECT_EQ(q.Volume, 1234567);
    EXPECT_TRUE(Module1::Quotes[0].Dat.isEmpty());
}

TEST_F(DailyQuotes, ShapeAndRowWalk) {
    struct Case {
        const char* what;
        QByteArray body;
        int error;
        int rows;   // upper bound of Quotes when Error is 0
    };
    const QByteArray r1 = "2005-08-05,10,11,9,10.5,100,10.5\n";
    const QByteArray r2 = "2005-08-04,20,21,19,20.5,200,20.5\n";
    const QByteArray r3 = "2005-08-03,30,31,29,30.5,300,30.5\n";
    const Case cases[] = {
        {"empty reply", "", 2, 0},
        {"header alone", Header, 2, 0},
        {"header and one row", Header + r1, 0, 1},
        {"twelve fields, no position to visit", "a,b,c,d,e,f,g,h,i,j,k,l", 0, 0},
        {"fourteen fields, no position to visit", "a,b,c,d,e,f,g,h,i,j,k,l,m,n", 0, 0},
        {"three rows", Header + r1 + r2 + r3, 0, 3},
        {"no line end after the last row loses it", Header + r1 + r2 + r3.chopped(1), 0, 2},
        {"two lines without a final line end give no row", Header + r1.chopped(1), 0, 0},
        {"CR LF line ends shift the columns", Header.chopped(1) + "\r\n" + r1.chopped(1) + "\r\n", 2, 0},
        {"old Mac CR line ends count as well", Header.chopped(1) + "\r" + r1.chopped(1) + "\r", 0, 1},
        {"volume at the 32-bit limit", Header + "2005-08-05,1,2,1,2,2147483647,2\n", 0, 1},
        {"volume beyond 32 bits fails the reply", Header + r1 + "2005-08-04,1,2,1,2,2147483648,2\n", 2, 0},
        {"volume that is no number", Header + "2005-08-05,1,2,1,2,lots,2\n", 2, 0},
        {"open that is no number", Header + "2005-08-05,n/a,2,1,2,5,2\n", 2, 0},
        {"close that is empty", Header + "2005-08-05,1,2,1,,5,2\n", 2, 0},
        {"an error page of many pieces", "<html>,a,b,c,d,e,f,g,h,i,j,k,l,m,n,o,p</html>\n", 0, 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(fetch(c.body), c.error) << c.what;
        if (c.error == 0) {
            EXPECT_EQ(Module1::Quotes.upperBound(), c.rows) << c.what;
        }
    }
}

TEST_F(DailyQuotes, RowsKeepTheOrderOfTheReplyAndANonNumericHighLeavesAGap) {
    const QByteArray body = Header + "2005-08-05,10,11,9,10.5,100,10.5\n"
                                     "2005-08-04,20,-,19,20.5,200,20.5\n"
                                     "2005-08-03,30,,29,30.5,300,30.5\n"
                                     "2005-08-02,40,41,39,40.5,400,40.5\n";
    ASSERT_EQ(fetch(body), 0);
    ASSERT_EQ(Module1::Quotes.upperBound(), 4);
    EXPECT_EQ(Module1::Quotes[1].Dat, "2005-08-05");
    EXPECT_TRUE(Module1::Quotes[2].Dat.isEmpty());
    EXPECT_TRUE(Module1::Quotes[3].Dat.isEmpty());
    EXPECT_EQ(Module1::Quotes[4].Dat, "2005-08-02");
    EXPECT_EQ(Module1::Quotes[4].Volume, 400);
}

TEST_F(DailyQuotes, VolumeRoundsHalfToEven) {
    ASSERT_EQ(fetch(Header + "d1,1,2,1,2,2.5,2\nd2,1,2,1,2,3.5,2\nd3,1,2,1,2,-1.5,2\n"), 0);
    ASSERT_EQ(Module1::Quotes.upperBound(), 3);
    EXPECT_EQ(Module1::Quotes[1].Volume, 2);
    EXPECT_EQ(Module1::Quotes[2].Volume, 4);
    EXPECT_EQ(Module1::Quotes[3].Volume, -2);
}

TEST_F(DailyQuotes, NoRowOfAnEarlierReplyStaysBehind) {
    ASSERT_EQ(fetch(Header + "2005-08-05,10,11,9,10.5,100,10.5\n2005-08-04,20,21,19,20.5,200,20.5\n"), 0);
    ASSERT_EQ(Module1::Quotes.upperBound(), 2);

    // A reply with the shape of a table but not one row that counts.
    ASSERT_EQ(fetch("<html>,a,b,c,d,e,f,g,h,i,j,k,l,m,n,o,p</html>\n"), 0);
    EXPECT_EQ(Module1::Quotes.upperBound(), 0);

    // A gap in a shorter reply is a gap, not the earlier reply's row.
    ASSERT_EQ(fetch(Header + "2005-08-05,10,11,9,10.5,100,10.5\n2005-08-04,20,21,19,20.5,200,20.5\n"), 0);
    ASSERT_EQ(fetch(Header + "2005-09-05,10,x,9,10.5,100,10.5\n2005-09-04,20,21,19,20.5,200,20.5\n"), 0);
    ASSERT_EQ(Module1::Quotes.upperBound(), 2);
    EXPECT_TRUE(Module1::Quotes[1].Dat.isEmpty());
    EXPECT_EQ(Module1::Quotes[2].Dat, "2005-09-04");
}

TEST_F(DailyQuotes, TheTraceFileHoldsTheLastReplyNormalised) {
    fetch(Header + "2005-08-05,10,11,9,10.5,100,10.5\r\n");
    EXPECT_EQ(readFileBytes(temp.file("t.txt")),
              "Date,Open,High,Low,Close,Volume,Adj Close,2005-08-05,10,11,9,10.5,100,10.5,,\r\n");
    fetch("");
    EXPECT_EQ(readFileBytes(temp.file("t.txt")), "\r\n");
}

TEST_F(DailyQuotes, AnUnwritableTraceFileFailsTheFetch) {
    clsDailyQuotes::setTracePath(temp.sub("a-folder"));
    EXPECT_EQ(fetch(Header + "2005-08-05,10,11,9,10.5,100,10.5\n"), 2);
}

TEST_F(DailyQuotes, NumbersReadUnderTheRegionalSettings) {
    {
        LocaleGuard locale(QStringLiteral("en_US"));
        ASSERT_EQ(fetch(Header + "8/5/05,10.25,11.5,9.75,10.5,100,10.5\n"), 0);
        EXPECT_DOUBLE_EQ(Module1::Quotes[1].OpenPrice, 10.25);
        EXPECT_EQ(Module1::Quotes[1].Dat, "8/5/05");
    }
    {
        // Under a decimal comma the comma is still the field separator: whole numbers read, a
        // High written with a decimal point is no number there.
        LocaleGuard locale(QStringLiteral("de_DE"));
        ASSERT_EQ(fetch(Header + "05.08.2005,10,11,9,10,100,10\n"), 0);
        ASSERT_EQ(Module1::Quotes.upperBound(), 1);
        EXPECT_DOUBLE_EQ(Module1::Quotes[1].High, 11.0);
        ASSERT_EQ(fetch(Header + "05.08.2005,10,11.5,9,10,100,10\n"), 0);
        EXPECT_EQ(Module1::Quotes.upperBound(), 0);
    }
}

TEST_F(DailyQuotes, AServerAnswerWithoutATableIsNoData) {
    EXPECT_EQ(fetch("Not Found\n", 404), 2);
    EXPECT_EQ(fetch("", 500), 2);
}

TEST_F(DailyQuotes, AFailedTransferIsNoConnection) {
    ServiceAddresses::setYahooQuotes(QStringLiteral("http://127.0.0.1:%1").arg(LoopbackHttpServer::deadPort()));
    EXPECT_EQ(fetch(Header + "2005-08-05,10,11,9,10.5,100,10.5\n"), 3);

    ServiceAddresses::setYahooQuotes(server.endpoint());
    LoopbackReply cut = LoopbackReply::ok(Header + QByteArray(4000, 'x'));
    cut.closeMidBody = true;
    server.serve(cut);
    dq.DownloadDailyQuotes(QStringLiteral("ABC"), QDate(2005, 7, 1), QDate(2005, 8, 5));
    EXPECT_EQ(dq.Error, 3);

    inet.RequestTimeoutMs = 100;
    LoopbackReply slow = LoopbackReply::ok(Header + "2005-08-05,10,11,9,10.5,100,10.5\n");
    slow.delayMs = 1500;
    server.serve(slow);
    dq.DownloadDailyQuotes(QStringLiteral("ABC"), QDate(2005, 7, 1), QDate(2005, 8, 5));
    EXPECT_EQ(dq.Error, 3);
}

TEST_F(DailyQuotes, AReplyPastTheSizeCapIsRefused) {
    inet.MaxReplyBytes = 1000;
    EXPECT_EQ(fetch(Header + QByteArray(5000, '1')), 2);
    try {
        inet.OpenURLBytes(server.endpoint() + "/big");
        ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Number, InetFailure::TooLarge);
    }
}

TEST(InetWait, ServesEventsWhileWaitingAndGivesAnyStatusBody) {
    ScriptedPlatform platform_;
    LoopbackHttpServer server;
    LoopbackReply slow = LoopbackReply::withStatus(404, "gone");
    slow.delayMs = 300;
    server.serve(slow);
    bool served = false;
    QTimer::singleShot(30, [&] { served = true; });
    Inet inet;
    EXPECT_EQ(inet.OpenURL(server.endpoint() + "/x"), "gone");
    EXPECT_TRUE(served);
    EXPECT_EQ(inet.ResponseCode(), 404);
    EXPECT_FALSE(inet.StillExecuting());
    EXPECT_EQ(server.targets, QList<QByteArray>{"/x"});
}

} // namespace
