// A whole run through the Download Progress window against the loopback server and a real folder.

#include "DownloadFolders.h"

#include "download/Inet.h"
#include "download/ServiceAddresses.h"
#include "download/clsDailyQuotes.h"
#include "download/ui/frmDownloadProgress.h"
#include "frame/Module1.h"
#include "frame/Regional.h"
#include "support/LoopbackHttpServer.h"
#include "support/Modal.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QUrlQuery>
#include <QtTest/QTest>

#include <gtest/gtest.h>

namespace {

const QByteArray Header = "Date,Open,High,Low,Close,Volume,Adj Close\n";

// A reply line for a bar (prices derive from one number, as bar() makes them).
QByteArray line(const char* isoDate, double price, int volume = 5000) {
    return QByteArray(isoDate) + ',' + QByteArray::number(price) + ',' + QByteArray::number(price + 1) + ','
         + QByteArray::number(price - 1) + ',' + QByteArray::number(price + 0.5) + ','
         + QByteArray::number(volume) + ',' + QByteArray::number(price + 0.5) + '\n';
}

QStringList lines(const QListWidget* list) {
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

class DownloadRunScreen : public ::testing::Test {
protected:
    DownloadRunScreen() {
        platform_.todayDate = QDate(2026, 11, 23);
        ServiceAddresses::setYahooQuotes(server.endpoint());
        clsDailyQuotes::setTracePath(temp.file("t.txt"));
        Inet::setDefaultTimeoutMs(3000);
        server.setHandler([this](const QByteArray& target) {
            const QString symbol = QUrlQuery(QString::fromLatin1(target.mid(target.indexOf('?') + 1)))
                                       .queryItemValue(QStringLiteral("s"), QUrl::FullyDecoded);
            return replies.value(symbol, LoopbackReply::ok(Header));
        });
    }
    ~DownloadRunScreen() override {
        ServiceAddresses::setYahooQuotes({});
        clsDailyQuotes::setTracePath({});
        Inet::setDefaultTimeoutMs(0);
    }

    // An item as the selection makes it from a last date.
    void addItem(const QString& symbol, const QDate& last, const QString& folder) {
        Module1::DownloadItems.append({symbol, Regional::dateText(last.addDays(-35)),
                                       Regional::dateText(last.addDays(1)), folder});
    }

    ScriptedPlatform platform_;
    TempFolder temp;
    LoopbackHttpServer server;
    QMap<QString, LoopbackReply> replies;
};

TEST_F(DownloadRunScreen, UpToDateDownloadedAndNoData) {
    const QString folder = temp.sub("data");
    const QList<StoredBar> upd = {bar(20261120, 5), bar(20261122, 6)};
    makeSecurity(folder, "UPD", "Up to date", upd);
    makeSecurity(folder, "DL", "Downloaded", {bar(20261001, 10), bar(20261002, 11), bar(20261005, 12)});
    makeSecurity(folder, "NOD", "No data", {bar(20261001, 20)});
    // Newest day first, overlapping the stored 2 October.
    replies["DL"] = LoopbackReply::ok(Header + line("2026-10-07", 31) + line("2026-10-06", 30.5)
                                      + line("2026-10-02", 29.25, 7000));
    replies["NOD"] = LoopbackReply::ok(Header);
    addItem("UPD", {2026, 11, 22}, folder);
    addItem("DL", {2026, 10, 5}, folder);
    addItem(" NOD ", {2026, 10, 1}, folder + "  ");

    frmDownloadProgress dlg;
    dlg.Form_Load();

    EXPECT_EQ(lines(dlg.lstDownloadComplete),
              QStringList({"Upto Date : UPD", "Download Complete : DL", "No Data Available : " " NOD "}));
    // Only two requests: the up-to-date security asks for nothing.
    ASSERT_EQ(server.targets.size(), 2);
    EXPECT_TRUE(server.decodedTargets()[0].startsWith("/table.csv?s=DL&d=10&e=23&f=2026&g=d&a=7&b=31&c=2026"));
    EXPECT_TRUE(server.decodedTargets()[1].startsWith("/table.csv?s=NOD&"));

    // The labels show the counts from before the last item.
    EXPECT_EQ(dlg.Label7->text(), "1");
    EXPECT_EQ(dlg.Label8->text(), "1");
    EXPECT_EQ(dlg.Label9->text(), "0");
    EXPECT_EQ(dlg.c + dlg.u + dlg.No, 3);
    EXPECT_EQ(dlg.No, 1);
    EXPECT_EQ(dlg.Label3->text(), " NOD ");
    EXPECT_EQ(dlg.Label1->text(), " NOD ");
    EXPECT_EQ(dlg.PB->maximum(), 3);
    EXPECT_EQ(dlg.PB->value(), 3);
    EXPECT_EQ(dlg.PB1->value(), 0);
    EXPECT_EQ(dlg.windowTitle(), "Download Completed. / ");
    EXPECT_EQ(dlg.Command1->text(), "&Close");
    ASSERT_EQ(platform_.boxes.size(), 1);
    EXPECT_EQ(platform_.boxes[0].text, "Download Completed.");
    EXPECT_EQ(platform_.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(platform_.boxes[0].title, "Brindlemark v6");

    // The reply wins on 2 October, the older dates stay, the new ones come in.
    EXPECT_EQ(storedBars(folder, "DL"),
              QList<StoredBar>({bar(20261001, 10), bar(20261002, 29.25, 7000), bar(20261005, 12),
                                bar(20261006, 30.5, 5000), bar(20261007, 31, 5000)}));
    EXPECT_EQ(storedBars(folder, "UPD"), upd);
    EXPECT_EQ(storedBars(folder, "NOD"), QList<StoredBar>({bar(20261001, 20)}));

    // Close unloads the window.
    dlg.Command1->click();
    EXPECT_FALSE(dlg.isVisible());
    EXPECT_EQ(dlg.Command1->text(), "Cancel");
}

TEST_F(DownloadRunScreen, TheSameReplyMergedTwiceGivesTheSameRecords) {
    const QString folder = temp.sub("data");
    makeSecurity(folder, "DL", "Downloaded", {bar(20261001, 10), bar(20261002, 11)});
    replies["DL"] = LoopbackReply::ok(Header + line("2026-10-03", 12.5) + line("2026-10-02", 12)
                                      + line("2026-10-01", 11.5));
    addItem("DL", {2026, 10, 2}, folder);

    QList<StoredBar> first;
    for (int run = 0; run < 2; ++run) {
        frmDownloadProgress dlg;
        dlg.Form_Load();
        EXPECT_EQ(lines(dlg.lstDownloadComplete), QStringList({"Download Complete : DL"}));
        if (run == 0)
            first = storedBars(folder, "DL");
    }
    EXPECT_EQ(first.size(), 3);
    EXPECT_EQ(storedBars(folder, "DL"), first);
    EXPECT_EQ(first.first(), bar(20261001, 11.5, 5000));
}

TEST_F(DownloadRunScreen, NoConnectionTouchesNoCounter) {
    const QString folder = temp.sub("data");
    makeSecurity(folder, "A", "A", {bar(20261001, 10)});
    makeSecurity(folder, "B", "B", {bar(20261001, 10)});
    ServiceAddresses::setYahooQuotes(QStringLiteral("http://127.0.0.1:%1").arg(LoopbackHttpServer::deadPort()));
    addItem("A", {2026, 10, 1}, folder);
    addItem("B", {2026, 10, 1}, folder);

    frmDownloadProgress dlg;
    dlg.Form_Load();
    EXPECT_EQ(lines(dlg.lstDownloadComplete),
              QStringList({"No Internet Connection : A", "No Internet Connection : B"}));
    EXPECT_EQ(dlg.c + dlg.u + dlg.No, 0);
    EXPECT_EQ(dlg.Label7->text(), "0");
    EXPECT_EQ(storedBars(folder, "A"), QList<StoredBar>({bar(20261001, 10)}));
}

TEST_F(DownloadRunScreen, EverythingUpToDateMakesNoRequest) {
    const QString folder = temp.sub("data");
    addItem("A", {2026, 11, 22}, folder);
    addItem("B", {2026, 11, 30}, folder);
    frmDownloadProgress dlg;
    dlg.Form_Load();
    EXPECT_TRUE(server.targets.isEmpty());
    EXPECT_EQ(dlg.Label1->text(), "Connecting...");
    EXPECT_EQ(lines(dlg.lstDownloadComplete), QStringList({"Upto Date : A", "Upto Date : B"}));
    EXPECT_EQ(dlg.u, 2);
    EXPECT_EQ(platform_.boxTexts(), QStringList({"Download Completed."}));
}

TEST_F(DownloadRunScreen, CancelTakesEffectAfterTheSecurityInHand) {
    const QString folder = temp.sub("data");
    for (const char* symbol : {"A", "B", "C"})
        makeSecurity(folder, symbol, symbol, {bar(20261001, 10)});
    LoopbackReply slow = LoopbackReply::ok(Header + line("2026-10-03", 12) + line("2026-10-02", 11));
    slow.delayMs = 300;
    replies["A"] = slow;
    replies["B"] = LoopbackReply::ok(Header + line("2026-10-02", 11));
    for (const char* symbol : {"A", "B", "C"})
        addItem(symbol, {2026, 10, 1}, folder);

    frmDownloadProgress dlg;
    QTimer::singleShot(100, &dlg, [&] {
        EXPECT_EQ(dlg.Command1->text(), "Cancel");
        dlg.Command1->click();
    });
    dlg.Form_Load();

    EXPECT_EQ(lines(dlg.lstDownloadComplete), QStringList({"Download Complete : A"}));
    EXPECT_EQ(server.targets.size(), 1);
    EXPECT_EQ(dlg.windowTitle(), "1 of 3 Completed. / ");
    EXPECT_EQ(dlg.Command1->text(), "&Close");
    EXPECT_EQ(platform_.boxTexts(), QStringList({"Download Completed."}));
    EXPECT_EQ(storedBars(folder, "A").size(), 3);
    EXPECT_EQ(storedBars(folder, "B").size(), 1);
}

TEST_F(DownloadRunScreen, CancelDuringTheLastItemKeepsItsCaption) {
    const QString folder = temp.sub("data");
    makeSecurity(folder, "A", "A", {bar(20261001, 10)});
    LoopbackReply slow = LoopbackReply::ok(Header + line("2026-10-02", 11));
    slow.delayMs = 300;
    replies["A"] = slow;
    addItem("A", {2026, 10, 1}, folder);

    frmDownloadProgress dlg;
    QTimer::singleShot(100, &dlg, [&] { dlg.Command1->click(); });
    dlg.Form_Load();
    EXPECT_EQ(dlg.windowTitle(), "1 of 1 Completed. / ");
    EXPECT_EQ(storedBars(folder, "A").size(), 2);
}

TEST_F(DownloadRunScreen, ClosingTheWindowMidRunFinishesTheSecurityThenCloses) {
    const QString folder = temp.sub("data");
    makeSecurity(folder, "A", "A", {bar(20261001, 10)});
    makeSecurity(folder, "B", "B", {bar(20261001, 10)});
    LoopbackReply slow = LoopbackReply::ok(Header + line("2026-10-02", 11));
    slow.delayMs = 300;
    replies["A"] = slow;
    addItem("A", {2026, 10, 1}, folder);
    addItem("B", {2026, 10, 1}, folder);

    frmDownloadProgress dlg;
    QTimer::singleShot(100, &dlg, [&] {
        EXPECT_FALSE(dlg.close());
    });
    dlg.Form_Load();
    EXPECT_FALSE(dlg.isVisible());
    EXPECT_EQ(server.targets.size(), 1);
    EXPECT_EQ(storedBars(folder, "A").size(), 2);
}

TEST_F(DownloadRunScreen, AnItemWithoutALastDate) {
    const QString folder = temp.sub("data");
    makeSecurity(folder, "A", "A", {bar(20261001, 10)});
    // First in the run: nothing has been fetched yet, so the run ends at once, without a line.
    replies["A"] = LoopbackReply::ok(Header + line("2026-10-02", 11));
    Module1::DownloadItems.append({"NA", "", "", folder});
    addItem("A", {2026, 10, 1}, folder);
    {
        frmDownloadProgress dlg;
        dlg.Form_Load();
        EXPECT_EQ(dlg.lstDownloadComplete->count(), 0);
        EXPECT_EQ(dlg.windowTitle(), "Download Progress");
        EXPECT_EQ(dlg.Command1->text(), "&Close");
        EXPECT_TRUE(server.targets.isEmpty());
        EXPECT_EQ(platform_.boxTexts(), QStringList({"Download Completed."}));
    }
    // After a fetch it takes the up-to-date path.
    Module1::DownloadItems.clear();
    addItem("A", {2026, 10, 1}, folder);
    Module1::DownloadItems.append({"NA", "", "", folder});
    frmDownloadProgress dlg;
    dlg.Form_Load();
    EXPECT_EQ(lines(dlg.lstDownloadComplete), QStringList({"Download Complete : A", "Upto Date : NA"}));
    EXPECT_EQ(dlg.windowTitle(), "Download Completed. / ");
}

TEST_F(DownloadRunScreen, AFolderThatFailsBeforeTheFirstFetchEndsTheRun) {
    const QString folder = temp.sub("data");
    makeSecurity(folder, "A", "A", {bar(20261001, 10)});
    addItem("UPD", {2026, 11, 22}, folder);
    addItem("MISSING", {2026, 10, 1}, folder);
    addItem("A", {2026, 10, 1}, folder);
    frmDownloadProgress dlg;
    dlg.Form_Load();
    EXPECT_EQ(lines(dlg.lstDownloadComplete), QStringList({"Upto Date : UPD"}));
    EXPECT_EQ(dlg.windowTitle(), "1 of 3 Completed. / ");
    EXPECT_TRUE(server.targets.isEmpty());
    EXPECT_EQ(platform_.boxTexts(), QStringList({"Download Completed."}));
}

TEST_F(DownloadRunScreen, AfterTheFirstFetchAFailingSecurityIsPassedOver) {
    const QString folder = temp.sub("data");
    makeSecurity(folder, "A", "A", {bar(20261001, 10)});
    replies["A"] = LoopbackReply::ok(Header + line("2026-10-02", 11));
    replies["MISSING"] = LoopbackReply::ok(Header + line("2026-10-02", 11));
    addItem("A", {2026, 10, 1}, folder);
    addItem("MISSING", {2026, 10, 1}, folder);
    frmDownloadProgress dlg;
    dlg.Form_Load();
    EXPECT_EQ(lines(dlg.lstDownloadComplete),
              QStringList({"Download Complete : A", "Download Complete : MISSING"}));
    EXPECT_EQ(server.targets.size(), 2);
}

TEST_F(DownloadRunScreen, ShownModallyTheRunStartsByItself) {
    const QString folder = temp.sub("data");
    addItem("A", {2026, 11, 22}, folder);
    frmDownloadProgress dlg;
    QStringList seen;
    closeProgressWhenDone([&](QWidget* modal) { seen = lines(child<QListWidget>(modal, "lstDownloadComplete")); });
    EXPECT_EQ(dlg.exec(), QDialog::Accepted);
    EXPECT_EQ(seen, QStringList({"Upto Date : A"}));
}

} // namespace
