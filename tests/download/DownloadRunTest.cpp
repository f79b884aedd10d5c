// Whole runs through the Download Progress window against the loopback server and real folders.

#include "DownloadTestKit.h"

#include "download/ui/DownloadProgressWindow.h"

#include <QLabel>
#include <QProgressBar>
#include <QScrollBar>
#include <QTest>

namespace {

class DownloadRunScreen : public DownloadTest {
protected:
    // An item as the selection makes it from a last date.
    void addItem(const QString& symbol, const QDate& last, const QString& in = {}) {
        handOvers().DownloadItems.append({symbol, Regional::dateText(last.addDays(-35)),
                                       Regional::dateText(last.addDays(1)), in.isEmpty() ? folder : in});
    }

    const QString folder = temp.sub("data");
};

// The list of results keeps its newest line in view as the run goes on.
TEST_F(DownloadRunScreen, TheListFollowsItsNewestLine) {
    for (int i = 1; i <= 40; ++i)
        addItem(QStringLiteral("U%1").arg(i), {2026, 11, 22});   // up to date: no request
    DownloadProgressWindow dlg;
    dlg.load();   // shows the window and runs
    QApplication::processEvents();
    ASSERT_EQ(dlg.resultsList->count(), 40);
    expectControlsLaidOut(&dlg);
    const QRect last = dlg.resultsList->visualItemRect(dlg.resultsList->item(39));
    EXPECT_TRUE(dlg.resultsList->viewport()->rect().contains(last)) << last.y();
    EXPECT_GT(dlg.resultsList->verticalScrollBar()->value(), 0);
}

TEST_F(DownloadRunScreen, UpToDateDownloadedNoDataAndNoConnection) {
    const std::vector<Bar> october = {bar(20261001, 20)}, upd = {bar(20261120, 5), bar(20261122, 6)};
    makeSecurity(folder, "UPD", "Up to date", upd);
    makeSecurity(folder, "DL", "Downloaded", {bar(20261001, 10), bar(20261002, 11), bar(20261005, 12)});
    for (const char* symbol : {"EMPTY", "DROP", "NOD"})
        makeSecurity(folder, symbol, symbol, october);
    // Newest day first, overlapping the stored 2 October.
    replies["DL"] = LoopbackReply::ok(Header + line(bar(20261007, 31)) + line(bar(20261006, 30.5))
                                      + line(bar(20261002, 29.25, 7000)));
    replies["EMPTY"] = LoopbackReply::ok("a,b,c,d,e,f,g,h,i,j,k,l,m,n");   // a table without rows
    replies["DROP"] = LoopbackReply::ok(Header + QByteArray(4000, 'x'));
    replies["DROP"].closeMidBody = true;
    addItem("UPD", {2026, 11, 22});
    addItem("DL", {2026, 10, 5});
    addItem("EMPTY", {2026, 10, 1});
    addItem("DROP", {2026, 10, 1});
    addItem(" NOD ", {2026, 10, 1}, folder + "  ");
    const std::vector<Bar> dl = {bar(20261001, 10), bar(20261002, 29.25, 7000), bar(20261005, 12),
                                 bar(20261006, 30.5), bar(20261007, 31)};

    DownloadProgressWindow dlg;
    dlg.load();

    EXPECT_EQ(lines(dlg.resultsList),
              QStringList({"Upto Date : UPD", "Download Complete : DL", "Download Complete : EMPTY",
                           "No Internet Connection : DROP", "No Data Available :  NOD "}));
    ASSERT_EQ(server.decodedTargets().size(), 4);   // none for the security up to date
    EXPECT_EQ(server.decodedTargets()[0], "/table.csv?s=DL&d=10&e=23&f=2026&g=d&a=7&b=31&c=2026&ignore=.csv");
    EXPECT_TRUE(server.decodedTargets()[3].startsWith("/table.csv?s=NOD&"));

    // The labels show the counts from before the last item; no connection counts nowhere.
    EXPECT_EQ(QStringList({dlg.completedValue->text(), dlg.upToDateValue->text(), dlg.noDataValue->text()}),
              QStringList({"2", "1", "0"}));
    EXPECT_EQ(QList<int>({dlg.completedCount, dlg.upToDateCount, dlg.noDataCount}), QList<int>({2, 1, 1}));
    EXPECT_EQ(QStringList({dlg.symbolLabel->text(), dlg.statusLabel->text(), dlg.windowTitle()}),
              QStringList({" NOD ", " NOD ", "Download Completed. / "}));
    EXPECT_EQ(QList<int>({dlg.itemsBar->maximum(), dlg.itemsBar->value(), dlg.recordsBar->value()}), QList<int>({5, 5, 0}));
    ASSERT_EQ(platform_.boxes.size(), 1);
    expectBox(platform_.boxes[0], "Download Completed.", "Brindlemark v6");

    // The reply wins on 2 October, the older dates stay, the new ones come in.
    EXPECT_EQ(readBars(folder, "DL"), dl);
    EXPECT_EQ(readBars(folder, "UPD"), upd);
    for (const char* symbol : {"EMPTY", "DROP", "NOD"})
        EXPECT_EQ(readBars(folder, symbol), october) << symbol;

    EXPECT_EQ(dlg.cancelButton->text(), "&Close");
    dlg.cancelButton->click();
    EXPECT_EQ(std::pair(dlg.isVisible(), dlg.cancelButton->text()), std::pair(false, QString("Cancel")));
}

TEST_F(DownloadRunScreen, StoppingTakesEffectAfterTheSecurityInHand) {
    enum How { CancelButton, CloseBox, Escape };
    const struct { const char* what; QStringList symbols; How how; QString caption; } cases[] = {
        {"Cancel during the first of three", {"A", "B", "C"}, CancelButton, "1 of 3 Completed. / "},
        {"Cancel during the last item", {"D"}, CancelButton, "1 of 1 Completed. / "},
        {"the close box during the first of two", {"E", "F"}, CloseBox, "1 of 2 Completed. / "},
        {"Escape during the first of two", {"G", "H"}, Escape, "1 of 2 Completed. / "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        handOvers().DownloadItems.clear();
        server.targets.clear();
        platform_.boxes.clear();
        for (const QString& symbol : c.symbols) {
            makeSecurity(folder, symbol, symbol, {bar(20261001, 10)});
            addItem(symbol, {2026, 10, 1});
        }
        replies[c.symbols[0]] = LoopbackReply::ok(Header + line(bar(20261003, 12)) + line(bar(20261002, 11)));

        DownloadProgressWindow dlg;
        onRequest = [&](const QString& symbol) {   // the user acts while the first security is in hand
            if (symbol != c.symbols[0])
                return;
            if (c.how == CloseBox)
                EXPECT_FALSE(dlg.close());
            else if (c.how == Escape)
                QTest::keyClick(&dlg, Qt::Key_Escape);
            else
                dlg.cancelButton->click();
        };
        dlg.load();
        onRequest = {};

        EXPECT_EQ(lines(dlg.resultsList), QStringList({"Download Complete : " + c.symbols[0]}));
        EXPECT_EQ(server.targets.size(), 1);
        EXPECT_EQ(dlg.windowTitle(), c.caption);
        EXPECT_EQ(dlg.isVisible(), c.how == CancelButton);
        EXPECT_EQ(platform_.boxTexts(), QStringList({"Download Completed."}));
        EXPECT_EQ(readBars(folder, c.symbols[0]).size(), 3);   // merged whole
        if (c.symbols.size() > 1) {
            EXPECT_EQ(readBars(folder, c.symbols[1]).size(), 1);
        }
    }
}

// While another program writes a folder of the list, the run fetches nothing and says who holds it.
TEST_F(DownloadRunScreen, AFolderAnotherProgramWritesEndsTheRunWithItsBox) {
    makeSecurity(folder, "A", "A", {bar(20261001, 10)});
    addItem("A", {2026, 10, 1});
    ForeignLockHolder holder(folder);
    DownloadProgressWindow dlg;
    dlg.load();
    EXPECT_TRUE(server.targets.isEmpty());
    ASSERT_EQ(platform_.boxes.size(), 2);
    EXPECT_TRUE(platform_.boxes[0].text.contains("brindlemark-cli (process 4242)")) << platform_.boxes[0].text.toStdString();
    EXPECT_EQ(platform_.boxes[0].icon, MsgIcon::Critical);
    EXPECT_EQ(platform_.boxes[1].text, "Download Completed.");   // the closing steps follow as after any failure
    EXPECT_EQ(readBars(folder, "A").size(), 1);
    EXPECT_TRUE(dlg.close()) << "the run is over: the window closes at once";
}

// An item whose NextDate is no date ("N/A" in the list) ends the run at once while nothing has
// been fetched yet; behind a fetch its failing steps are passed over.
TEST_F(DownloadRunScreen, AFailingItemEndsTheRunOnlyBeforeTheFirstFetch) {
    makeSecurity(folder, "A", "A", {bar(20261001, 10)});
    replies["A"] = LoopbackReply::ok(Header + line(bar(20261002, 11)));
    for (bool behindAFetch : {false, true}) {
        SCOPED_TRACE(behindAFetch);
        handOvers().DownloadItems.clear();
        server.targets.clear();
        platform_.boxes.clear();
        addItem("UPD", {2026, 11, 22});
        handOvers().DownloadItems.append({"NA", "", "", folder});
        addItem("A", {2026, 10, 1});
        if (behindAFetch)
            std::swap(handOvers().DownloadItems[2], handOvers().DownloadItems[3]);
        DownloadProgressWindow dlg;
        dlg.load();
        EXPECT_EQ(platform_.boxTexts(), QStringList({"Download Completed."}));
        if (!behindAFetch) {
            EXPECT_EQ(lines(dlg.resultsList), QStringList({"Upto Date : UPD"}));
            EXPECT_EQ(dlg.windowTitle(), "1 of 3 Completed. / ");
            EXPECT_TRUE(server.targets.isEmpty());
        } else {
            EXPECT_EQ(lines(dlg.resultsList), QStringList({"Upto Date : UPD", "Download Complete : A", "Upto Date : NA"}));
            EXPECT_EQ(dlg.completedCount + dlg.upToDateCount + dlg.noDataCount, 3);
            EXPECT_EQ(dlg.windowTitle(), "Download Completed. / ");
        }
    }
}

} // namespace
