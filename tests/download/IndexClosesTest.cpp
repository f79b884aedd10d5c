// NSE India Index from the exchange's daily closes: the reader of a day's file.
#include "support/TestSupport.h"

#include "download/IndexCloses.h"

namespace {

const QByteArray Head = "Index Name,Index Date,Open Index Value,High Index Value,Low Index Value,"
                        "Closing Index Value,Points Change,Change(%),Volume,Turnover (Rs. Cr.),P/E,P/B,Div Yield\n";

TEST(IndexCloses, ColumnsByNameAndNumbersWithADecimalPointUnderEveryLocale) {
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
}

TEST(IndexCloses, RepliesWithoutARowAreNoData) {
    for (const QByteArray& reply : QList<QByteArray>{QByteArray(), Head, "<html><body>Please sign in to the Wi-Fi</body></html>",
          "Index Name,Index Date,Volume\nNifty 50,04-11-2024,12\n",   // no close column
          Head + "Nifty 50,04-11-2024,1,1,1,-,0,0,0,0,0,0,0\n"})
        EXPECT_FALSE(IndexCloses::read(reply).has_value()) << reply.toStdString();
}

} // namespace
