// Whole runs through the Download Progress window against the loopback server and real folders.

#include "DownloadTestKit.h"

#include "download/ui/frmDownloadProgress.h"
#include "frame/Module1.h"
#include "frame/Regional.h"

#include <QLabel>
#include <QProgressBar>

namespace {

class DownloadRunScreen : public DownloadTest {
protected:
    // An item as the selection makes it from a last date.
    void addItem(const QString& symbol, const QDate& last, const QString& in = {}) {
        Module1::DownloadItems.append({symbol, Regional::dateText(last.addDays(-35)),
                                       Regional::dateText(last.addDays(1)), in.isEmpty() ? folder : in});
    }
    // Securities with one bar on 1 October, and items asking for what follows it.
    void securitiesFromOctober(const QStringList& symbols) {
        for (const QString& symbol : symbols) {
            makeSecurity(folder, symbol, symbol, {bar(20261001, 10)});
            addItem(symbol, {2026, 10, 1});
        }
    }

    const QString folder = temp.sub("data");
};

TEST_F(DownloadRunScreen, UpToDateDownloadedAndNoData) {
    const QList<StoredBar> upd = {bar(20261120, 5), bar(20261122, 6)};
    makeSecurity(folder, "UPD", "Up to date", upd);
    makeSecurity(folder, "DL", "Downloaded", {bar(20261001, 10), bar(20261002, 11), bar(20261005, 12)});
    makeSecurity(folder, "EMPTY", "A table without rows", {bar(20261001, 20)});
    makeSecurity(folder, "NOD", "No data", {bar(20261001, 20)});
    // Newest day first, overlapping the stored 2 October.
    replies["DL"] = LoopbackReply::ok(Header + line(bar(20261007, 31)) + line(bar(20261006, 30.5))
                                      + line(bar(20261002, 29.25, 7000)));
    replies["EMPTY"] = LoopbackReply::ok("a,b,c,d,e,f,g,h,i,j,k,l,m,n");
    addItem("UPD", {2026, 11, 22});
    addItem("DL", {2026, 10, 5});
    addItem("EMPTY", {2026, 10, 1});
    addItem(" NOD ", {2026, 10, 1}, folder + "  ");

    frmDownloadProgress dlg;
    dlg.Form_Load();

    EXPECT_EQ(lines(dlg.lstDownloadComplete), QStringList({"Upto Date : UPD", "Download Complete : DL",
                                                           "Download Complete : EMPTY", "No Data Available :  NOD "}));
    ASSERT_EQ(server.decodedTargets().size(), 3);   // none for the security up to date
    EXPECT_EQ(server.decodedTargets()[0], "/table.csv?s=DL&d=10&e=23&f=2026&g=d&a=7&b=31&c=2026&ignore=.csv");
    EXPECT_TRUE(server.decodedTargets()[2].startsWith("/table.csv?s=NOD&"));

    // The labels show the counts from before the last item; the counters add up to the items.
    EXPECT_EQ(QStringList({dlg.Label7->text(), dlg.Label8->text(), dlg.Label9->text()}),
              QStringList({"2", "1", "0"}));
    EXPECT_EQ(dlg.c + dlg.u + dlg.No, 4);
    EXPECT_EQ(dlg.No, 1);
    EXPECT_EQ(dlg.Label3->text(), " NOD ");
    EXPECT_EQ(dlg.Label1->text(), " NOD ");
    EXPECT_EQ(dlg.PB->maximum(), 4);
    EXPECT_EQ(dlg.PB->value(), 4);
    EXPECT_EQ(dlg.PB1->value(), 0);
    EXPECT_EQ(dlg.windowTitle(), "Download Completed. / ");
    EXPECT_EQ(dlg.Command1->text(), "&Close");
    ASSERT_EQ(platform_.boxes.size(), 1);
    EXPECT_EQ(platform_.boxes[0].text, "Download Completed.");
    EXPECT_EQ(platform_.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(platform_.boxes[0].title, "Brindlemark v6");

    // The reply wins on 2 October, the older dates stay, the new ones come in.
    EXPECT_EQ(storedBars(folder, "DL"), QList<StoredBar>({bar(20261001, 10), bar(20261002, 29.25, 7000),
                                                          bar(20261005, 12), bar(20261006, 30.5), bar(20261007, 31)}));
    EXPECT_EQ(storedBars(folder, "UPD"), upd);
    EXPECT_EQ(storedBars(folder, "EMPTY"), QList<StoredBar>({bar(20261001, 20)}));
    EXPECT_EQ(storedBars(folder, "NOD"), QList<StoredBar>({bar(20261001, 20)}));

    dlg.Command1->click();
    EXPECT_FALSE(dlg.isVisible());
    EXPECT_EQ(dlg.Command1->text(), "Cancel");
}

TEST_F(DownloadRunScreen, TheSameReplyMergedTwiceGivesTheSameRecords) {
    makeSecurity(folder, "DL", "Downloaded", {bar(20261001, 10), bar(20261002, 11)});
    replies["DL"] = LoopbackReply::ok(Header + line(bar(20261003, 12.5)) + line(bar(20261002, 12))
                                      + line(bar(20261001, 11.5)));
    addItem("DL", {2026, 10, 2});
    const QList<StoredBar> expected = {bar(20261001, 11.5), bar(20261002, 12), bar(20261003, 12.5)};
    for (int run = 0; run < 2; ++run) {
        frmDownloadProgress dlg;
        dlg.Form_Load();
        EXPECT_EQ(lines(dlg.lstDownloadComplete), QStringList({"Download Complete : DL"}));
        EXPECT_EQ(storedBars(folder, "DL"), expected) << "run " << run;
    }
}

TEST_F(DownloadRunScreen, NoConnectionTouchesNoCounterAndNoSecurity) {
    securitiesFromOctober({"A", "B"});
    ServiceAddresses::setYahooQuotes(QStringLiteral("http://127.0.0.1:%1").arg(LoopbackHttpServer::deadPort()));
    frmDownloadProgress dlg;
    dlg.Form_Load();
    EXPECT_EQ(lines(dlg.lstDownloadComplete),
              QStringList({"No Internet Connection : A", "No Internet Connection : B"}));
    EXPECT_EQ(dlg.c + dlg.u + dlg.No, 0);
    EXPECT_EQ(dlg.Label7->text(), "0");
    EXPECT_EQ(storedBars(folder, "A"), QList<StoredBar>({bar(20261001, 10)}));
}

TEST_F(DownloadRunScreen, StoppingTakesEffectAfterTheSecurityInHand) {
    const struct {
        const char* what;
        QStringList symbols;
        bool closeBox;
        QString caption;
    } cases[] = {
        {"Cancel during the first of three", {"A", "B", "C"}, false, "1 of 3 Completed. / "},
        {"Cancel during the last item", {"D"}, false, "1 of 1 Completed. / "},
        {"the close box during the first of two", {"E", "F"}, true, "1 of 2 Completed. / "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Module1::DownloadItems.clear();
        server.targets.clear();
        platform_.boxes.clear();
        securitiesFromOctober(c.symbols);
        LoopbackReply slow = LoopbackReply::ok(Header + line(bar(20261003, 12)) + line(bar(20261002, 11)));
        slow.delayMs = 300;
        replies[c.symbols[0]] = slow;

        frmDownloadProgress dlg;
        QTimer::singleShot(100, &dlg, [&] {
            if (c.closeBox)
                EXPECT_FALSE(dlg.close());
            else
                dlg.Command1->click();
        });
        dlg.Form_Load();

        EXPECT_EQ(lines(dlg.lstDownloadComplete), QStringList({"Download Complete : " + c.symbols[0]}));
        EXPECT_EQ(server.targets.size(), 1);
        EXPECT_EQ(dlg.windowTitle(), c.caption);
        EXPECT_EQ(dlg.isVisible(), !c.closeBox);
        EXPECT_EQ(platform_.boxTexts(), QStringList({"Download Completed."}));
        EXPECT_EQ(storedBars(folder, c.symbols[0]).size(), 3);   // merged whole
        if (c.symbols.size() > 1) {
            EXPECT_EQ(storedBars(folder, c.symbols[1]).size(), 1);
        }
    }
}

TEST_F(DownloadRunScreen, AnItemWithoutALastDate) {
    makeSecurity(folder, "A", "A", {bar(20261001, 10)});
    replies["A"] = LoopbackReply::ok(Header + line(bar(20261002, 11)));
    // First in the run: nothing has been fetched yet, so the run ends at once, without a line.
    Module1::DownloadItems.append({"NA", "", "", folder});
    addItem("A", {2026, 10, 1});
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
    addItem("A", {2026, 10, 1});
    Module1::DownloadItems.append({"NA", "", "", folder});
    frmDownloadProgress dlg;
    dlg.Form_Load();
    EXPECT_EQ(lines(dlg.lstDownloadComplete), QStringList({"Download Complete : A", "Upto Date : NA"}));
    EXPECT_EQ(dlg.u + dlg.c, 2);
    EXPECT_EQ(dlg.windowTitle(), "Download Completed. / ");
}

TEST_F(DownloadRunScreen, AMissingSecurityEndsTheRunOnlyBeforeTheFirstFetch) {
    makeSecurity(folder, "A", "A", {bar(20261001, 10)});
    addItem("UPD", {2026, 11, 22});
    addItem("MISSING", {2026, 10, 1});
    addItem("A", {2026, 10, 1});
    {
        frmDownloadProgress dlg;
        dlg.Form_Load();
        EXPECT_EQ(lines(dlg.lstDownloadComplete), QStringList({"Upto Date : UPD"}));
        EXPECT_EQ(dlg.windowTitle(), "1 of 3 Completed. / ");
        EXPECT_TRUE(server.targets.isEmpty());
        EXPECT_EQ(platform_.boxTexts(), QStringList({"Download Completed."}));
    }
    // Behind a fetch the failing steps are passed over; the line follows from the reply alone.
    std::swap(Module1::DownloadItems[2], Module1::DownloadItems[3]);
    replies["A"] = replies["MISSING"] = LoopbackReply::ok(Header + line(bar(20261002, 11)));
    frmDownloadProgress dlg;
    dlg.Form_Load();
    EXPECT_EQ(lines(dlg.lstDownloadComplete),
              QStringList({"Upto Date : UPD", "Download Complete : A", "Download Complete : MISSING"}));
    EXPECT_EQ(server.targets.size(), 2);
}

TEST_F(DownloadRunScreen, ShownModallyTheRunStartsByItselfAndAskForNothingUpToDate) {
    addItem("A", {2026, 11, 22});
    addItem("B", {2026, 11, 30});
    frmDownloadProgress dlg;
    QStringList seen;
    closeProgressWhenDone([&](QWidget*) {
        seen = lines(dlg.lstDownloadComplete);
        EXPECT_EQ(dlg.Label1->text(), "Connecting...");
    });
    EXPECT_EQ(dlg.exec(), QDialog::Accepted);
    EXPECT_EQ(seen, QStringList({"Upto Date : A", "Upto Date : B"}));
    EXPECT_TRUE(server.targets.isEmpty());
    EXPECT_EQ(dlg.u, 2);
    EXPECT_EQ(platform_.boxTexts(), QStringList({"Download Completed."}));
}

} // namespace
