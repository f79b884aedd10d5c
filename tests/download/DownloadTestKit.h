#pragma once
// Shared pieces of the download tests: securities written and read back through the store, the
// quotes service on the loopback server, and the Download Progress window waited for.

#include "Cli.h"
#include "catalogue/CreateSymbols.h"
#include "download/Inet.h"
#include "download/ServiceAddresses.h"
#include "download/DailyQuotes.h"
#include "frame/ProgramState.h"
#include "frame/Regional.h"
#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"
#include "support/LoopbackHttpServer.h"
#include "support/Modal.h"
#include "support/ScriptedPlatform.h"
#include "support/StoreKit.h"
#include "support/TestSupport.h"

#include <QApplication>
#include <QFile>
#include <QListWidget>
#include <QMap>
#include <QPushButton>
#include <QUrlQuery>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>

inline const QByteArray Header = "Date,Open,High,Low,Close,Volume,Adj Close\n";

// A bar whose prices all derive from one number.
inline Bar bar(qint32 date, double price, double volume = 1000) {
    return {date, price, price + 1, price - 1, price + 0.5, volume};
}
// The bar as a line of the service's reply, its date in ISO form.
inline QByteArray line(const Bar& b) {
    const QString iso = QDate::fromString(QString::number(b.date), "yyyyMMdd").toString(Qt::ISODate);
    QByteArray text = iso.toLatin1();
    for (double value : {b.open, b.high, b.low, b.close, b.volume, b.close})
        text += ',' + QByteArray::number(value);
    return text + '\n';
}

// A reply kept beside the repository; empty when it is not there.
inline QByteArray serviceFixture(const QString& name) {
    return readFileBytes(sharedFixture(QStringLiteral("services/") + name));
}

// Securities and values.dat as Create New Symbols leaves them.
inline void createSymbols(const QString& folder, const QStringList& symbols, const QDate& from) {
    SecurityWriter writer;
    CreateSymbols::CreateSecurities(writer, folder, symbols, from);
    CreateSymbols::WriteValuesFile(folder, from);
}

// brindlemark-cli run in-process: its exit status, the lines of standard output, standard error.
struct CliRun {
    int status;
    QStringList out;
    QString err;
};
inline CliRun cli(const QStringList& arguments) {
    QString outText, errText;
    QTextStream out(&outText), err(&errText);
    const int status = runCli(arguments, out, err);
    out.flush();
    err.flush();
    return {status, outText.split(u'\n', Qt::SkipEmptyParts), errText};
}

// A message box as the test expects it: information style unless told.
inline void expectBox(const ShownBox& box, const QString& text, const QString& title, MsgIcon icon = MsgIcon::Information) {
    EXPECT_EQ(box.text, text);
    EXPECT_EQ(box.title, title);
    EXPECT_EQ(box.icon, icon);
}

inline QStringList lines(const QListWidget* list) {
    QStringList texts;
    for (int i = 0; list && i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

// The quotes service on the loopback server: each symbol gets its entry of `replies`, or a
// header alone. Every test has its own platform (today 23 November 2026) and temp folder.
class DownloadTest : public ::testing::Test {
protected:
    DownloadTest() {
        platform_.settings["Sources/Quotes"] = server.endpoint();
        server.setHandler([this](const QByteArray& target) {
            const QString symbol = QUrlQuery(QString::fromLatin1(target.mid(target.indexOf('?') + 1)))
                                       .queryItemValue("s", QUrl::FullyDecoded);
            if (onRequest)
                onRequest(symbol);
            return replies.value(symbol, LoopbackReply::ok(Header));
        });
    }
    ScriptedPlatform platform_;
    TempFolder temp;
    LoopbackHttpServer server;
    QMap<QString, LoopbackReply> replies;
    std::function<void(const QString& symbol)> onRequest;   // sees each symbol asked for, before its reply
    Inet inet;
    ::DailyQuotes dq{inet};
    static const QuoteRecord& quote(int index) { return handOvers().Quotes[index]; }
};

// The exchange's daily files on the loopback server: each target gets its entry of `days`, or the
// server's short error page; `onRequest` sees each target first. `source` goes before the address.
class NseDaysTest : public DownloadTest {
protected:
    explicit NseDaysTest(const QString& source = {}) {
        platform_.settings["Sources/Bhavcopy"] = source + server.endpoint();
        server.setHandler([this](const QByteArray& target) {
            if (onRequest)
                onRequest(QString::fromLatin1(target));
            return days.value(QString::fromLatin1(target), LoopbackReply::withStatus(404, "<html><body>Not Found</body></html>"));
        });
    }
    void createSymbols(const QStringList& symbols, const QDate& from) { ::createSymbols(folder, symbols, from); }

    QString folder = temp.sub("nse");
    QMap<QString, LoopbackReply> days;
    std::function<void(const QString&)> onRequest;
};
