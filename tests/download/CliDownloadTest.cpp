// brindlemark-cli's unattended World Exchanges download, run in-process against the loopback
// quotes service (today is 23 November 2026 on the scripted platform).
#include "DownloadCommands.h"
#include "DownloadTestKit.h"

#include "store/StoreCheck.h"

namespace {

class CliDownload : public DownloadTest {
protected:
    int run(const QStringList& arguments) { return (last = cli(arguments)).status; }
    CliRun last;
};

TEST_F(CliDownload, OneLinePerSecurityMergedAsTheScreenMergesAndASummary) {
    const QString a = temp.sub("a"), b = temp.sub("b");
    makeSecurity(a, "EMPTY.NS", "No records yet", {});   // no date to go on from: left out, not the end of the run
    makeSecurity(a, "AAA.NS", "Alpha", {bar(20261110, 10), bar(20261111, 11)});
    makeSecurity(a, "NODATA.NS", "Gone", {bar(20261110, 5)});
    makeSecurity(b, "BBB.NS", "Beta", {bar(20261120, 20)});
    makeSecurity(b, "NEW.NS", "Fresh", {bar(20261123, 30)});
    // AAA's reply overlaps what is stored: the reply wins for 11 November; its first line of 12 November
    // wins over the second, and the day counts once.
    replies.insert("AAA.NS", LoopbackReply::ok(Header + line(bar(20261112, 12)) + line(bar(20261111, 99)) + line(bar(20261112, 13))));
    replies.insert("NODATA.NS", LoopbackReply::withStatus(404, "<html>no</html>"));
    replies.insert("BBB.NS", LoopbackReply::ok(Header + line(bar(20261121, 21))));

    ASSERT_EQ(run({"download", "quotes", a, b}), 1) << last.err.toStdString();
    EXPECT_EQ(last.err, "EMPTY.NS: holds no records, so there is no date to download from; left out\n");
    EXPECT_EQ(last.out, (QStringList{"AAA.NS 2 records", "NODATA.NS No Data Available", "BBB.NS 1 records",
                                        "NEW.NS Up to date",
                                        "2 downloaded, 1 up to date, 1 without data, 1 failed"}));
    EXPECT_EQ(readBars(a, "AAA.NS"), (std::vector<Bar>{bar(20261110, 10), bar(20261111, 99), bar(20261112, 12)}));
    EXPECT_EQ(readBars(b, "BBB.NS"), (std::vector<Bar>{bar(20261120, 20), bar(20261121, 21)}));

    // --source for one run stands in for the setting, which holds again afterwards.
    platform_.settings["Sources/Quotes"] = "http://127.0.0.1:" + QString::number(LoopbackHttpServer::deadPort());
    replies.insert("BBB.NS", LoopbackReply::ok(Header + line(bar(20261121, 77))));
    EXPECT_EQ(run({"download", "--source", "quotes=" + server.endpoint(), "quotes", b, "--symbols", "BBB.NS"}), 0);
    EXPECT_EQ(last.out.first(), "BBB.NS 1 records");
    EXPECT_EQ(run({"download", "quotes", b, "--source", "shares=x"}), 2);
    EXPECT_EQ(run({"download", "quotes", b, "--symbols", "BBB.NS"}), 1);   // the dead setting again
    platform_.settings["Sources/Quotes"] = server.endpoint();

    // Only the symbols asked for; an unknown one is a failure named on standard error.
    replies.insert("BBB.NS", LoopbackReply::ok(Header + line(bar(20261122, 22))));
    EXPECT_EQ(run({"download", "quotes", a, b, "--symbols", "bbb.ns,ZZZ"}), 1);
    EXPECT_EQ(last.out.first(), "BBB.NS 1 records");
    EXPECT_EQ(last.out.size(), 2);
    EXPECT_TRUE(last.err.contains("ZZZ: not in the folders given")) << last.err.toStdString();
}

TEST_F(CliDownload, UsageFailuresAndAStopAfterTheSecurityInHand) {
    EXPECT_EQ(run({"download", "quotes", temp.sub("x"), "--symbols"}), 2);
    EXPECT_EQ(run({"download", "quotes", temp.path() + "/missing"}), 1);

    const QString a = temp.sub("a");
    makeSecurity(a, "AAA.NS", "Alpha", {bar(20261110, 10)});
    makeSecurity(a, "BBB.NS", "Beta", {bar(20261110, 20)});
    replies.insert("AAA.NS", LoopbackReply::ok(Header + line(bar(20261111, 11))));
    replies.insert("BBB.NS", LoopbackReply::ok(Header + line(bar(20261111, 21))));
    server.setHandler([this](const QByteArray&) {
        requestStop();   // Ctrl+C while AAA is asked for
        return replies.value("AAA.NS");
    });
    EXPECT_EQ(run({"download", "quotes", a}), 130);
    EXPECT_EQ(last.out.first(), "AAA.NS 1 records");
    EXPECT_TRUE(last.err.contains("Stopped after the security in hand")) << last.err.toStdString();
    EXPECT_EQ(readBars(a, "BBB.NS"), (std::vector<Bar>{bar(20261110, 20)}));
    EXPECT_TRUE(StoreCheck::checkFolder(a).empty());
}

// What the window passes over is a failure here: a data file the store may not write, and a folder
// whose index it may not write, which ends the run before anything is fetched.
TEST_F(CliDownload, AStoreThatRefusesTheWriteIsAFailureNamedOnStandardError) {
    const QString a = temp.sub("a");
    makeSecurity(a, "AAA.NS", "Alpha", {bar(20261110, 10)});
    makeSecurity(a, "BBB.NS", "Beta", {bar(20261110, 20)});
    replies.insert("AAA.NS", LoopbackReply::ok(Header + line(bar(20261111, 11))));
    replies.insert("BBB.NS", LoopbackReply::ok(Header + line(bar(20261111, 21))));
    ASSERT_TRUE(QFile::setPermissions(a + "/F1.DAT", QFile::ReadOwner));
    EXPECT_EQ(run({"download", "quotes", a}), 1);
    EXPECT_EQ(last.out, (QStringList{"BBB.NS 1 records", "1 downloaded, 0 up to date, 0 without data, 1 failed"}));
    EXPECT_TRUE(last.err.startsWith("AAA.NS: ") && last.err.contains("read-only")) << last.err.toStdString();
    EXPECT_EQ(readBars(a, "AAA.NS"), (std::vector<Bar>{bar(20261110, 10)}));

    ASSERT_TRUE(QFile::setPermissions(a + "/MASTER", QFile::ReadOwner));
    EXPECT_EQ(run({"download", "quotes", a}), 1);
    EXPECT_TRUE(last.err.contains("AAA.NS: ") && last.err.contains("MASTER is read-only") && last.err.contains("the run ended there"))
        << last.err.toStdString();
    EXPECT_EQ(last.out, QStringList{"0 downloaded, 0 up to date, 0 without data, 2 failed"});
}

TEST_F(CliDownload, AFolderAnotherRunIsWritingIsRefusedAndNothingIsAsked) {
    const QString a = temp.sub("a");
    makeSecurity(a, "AAA.NS", "Alpha", {bar(20261110, 10)});
    writeTextFile(a + "/values.dat", "10/11/2026\r\n");
    replies.insert("AAA.NS", LoopbackReply::ok(Header + line(bar(20261111, 11))));
    platform_.settings["Sources/IndexArchive"] = "today@" + server.endpoint();
    const ForeignLockHolder scheduledRun(a);
    for (const char* command : {"quotes", "bhavcopy", "index"}) {
        SCOPED_TRACE(command);
        EXPECT_EQ(run({"download", command, a}), 1);
        EXPECT_TRUE(last.err.contains("is being written by brindlemark-cli (process 4242)")) << last.err.toStdString();
    }
    EXPECT_TRUE(server.targets.isEmpty());
    EXPECT_EQ(readBars(a, "AAA.NS"), (std::vector<Bar>{bar(20261110, 10)}));
}

} // namespace
