// "NSE Indices Download" against the loopback server: the folder field and its setting, the run
// with a good archive, a refused one, a garbage body, a dead server, and a second run; with the
// source of today, the folder brought up to date day by day, stopped and closed between days.
#include "download/IndexDownload.h"
#include "download/ui/NseIndexDialog.h"
#include "DownloadTestKit.h"
#include "ZipTestKit.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace {

class IndexScreen : public ::testing::Test {
protected:
    // The older protocol: the archive of an endpoint named in the settings.
    IndexScreen() { platform.settings["Sources/IndexArchive"] = server.endpoint(); }

    ScriptedPlatform platform;
    LoopbackHttpServer server;
    TempFolder root;
    QString folder = root.sub("index");
    const QString key = QStringLiteral("Settings/IndexFolder");

    // Opens the screen, types the folder and clicks "Start Download".
    void run(NseIndexDialog& dialog, const QString& text) {
        dialog.show();
        child<QLineEdit>(&dialog, "folderEdit")->setText(text);
        child<QPushButton>(&dialog, "startDownloadButton")->click();
    }
};

const QList<ZipEntry> FirstArchive = {ZipEntry::file("MASTER", QByteArray(53, 'm')),
                                      ZipEntry::file("F1.DAT", QByteArray(2000, 'd')),
                                      ZipEntry::file("sub/notes.txt", "first")};

// The field opens with the remembered folder; only the chooser stores it, a cancelled choice
// empties the field, and a blank field brings up the chooser instead of a download.
TEST_F(IndexScreen, TheFolderFieldAndItsSetting) {
    platform.settings[key] = "/remembered";
    NseIndexDialog dialog;
    dialog.show();
    auto* edit = child<QLineEdit>(&dialog, "folderEdit");
    EXPECT_EQ(edit->text(), "/remembered");
    platform.chooseNext(folder);
    QTest::keyClick(edit, Qt::Key_Return);   // no button answers Enter
    EXPECT_TRUE(platform.chooserTitles.isEmpty());
    child<QPushButton>(&dialog, "selectFolderButton")->click();
    EXPECT_EQ(platform.chooserTitles, QStringList{"Select folder for Index Data"});
    EXPECT_EQ(edit->text(), folder);
    EXPECT_EQ(platform.settings.value(key), folder);
    child<QPushButton>(&dialog, "selectFolderButton")->click();
    EXPECT_EQ(edit->text(), QString());
    EXPECT_EQ(platform.settings.value(key), folder);

    platform.settings.remove(key);
    platform.chooseNext(folder);
    run(dialog, "   ");
    ASSERT_EQ(platform.boxes.size(), 1);
    expectBox(platform.boxes[0], "Folder Field Empty.", "Brindlemark v6");
    EXPECT_EQ(platform.chooserTitles.size(), 3);
    EXPECT_EQ(platform.settings.value(key), folder);
    EXPECT_TRUE(server.targets.isEmpty());
    EXPECT_TRUE(dialog.isVisible());
}

// Typed text is used but not remembered, blanks around it are not part of the folder; a second run
// unpacks over the first without asking, over files of the same name in another case too.
TEST_F(IndexScreen, AGoodArchiveIsKeptUnpackedAndTheScreenCloses) {
    const QByteArray bytes = makeArchive(FirstArchive);
    NseIndexDialog* seen = nullptr;
    QString captionWhileFetching;
    bool enabledWhileFetching = true;
    server.setHandler([&](const QByteArray&) {
        auto* button = seen->findChild<QPushButton*>("startDownloadButton");
        captionWhileFetching = button->text();
        enabledWhileFetching = button->isEnabled();
        return LoopbackReply::ok(bytes);
    });
    {
        NseIndexDialog dialog;
        seen = &dialog;
        run(dialog, " " + folder + " ");
        EXPECT_EQ(server.targets, QList<QByteArray>{"/downloads/index.zip"});
        EXPECT_EQ(captionWhileFetching, "Downloading....");
        EXPECT_FALSE(enabledWhileFetching);
        expectBox(platform.boxes.value(0), "Download Complete.", "Brindlemark v6");
        EXPECT_EQ(tree(folder), (QStringList{"F1.DAT", "MASTER", "brindlemark.lck", "sub", "sub/notes.txt"}));
        EXPECT_EQ(readFileBytes(IndexDownload::ArchivePath()), bytes);
        EXPECT_EQ(QFileInfo(IndexDownload::ArchivePath()).absolutePath(), QFileInfo(platform.cacheDir.path()).absoluteFilePath());
        EXPECT_FALSE(dialog.isVisible());
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        EXPECT_FALSE(platform.settings.contains(key));
    }
    const QByteArray shorter = makeArchive({ZipEntry::file("Sub/Notes.txt", "second"), ZipEntry::file("f1.dat", "new")});
    server.serve(LoopbackReply::ok(shorter));
    NseIndexDialog dialog;
    run(dialog, folder);
    EXPECT_EQ(platform.boxTexts(), QStringList({"Download Complete.", "Download Complete."}));
    EXPECT_EQ(tree(folder), (QStringList{"F1.DAT", "MASTER", "brindlemark.lck", "sub", "sub/notes.txt"}));
    EXPECT_EQ(readFileBytes(folder + "/sub/notes.txt"), "second");
    EXPECT_EQ(readFileBytes(folder + "/F1.DAT"), "new");
    EXPECT_EQ(readFileBytes(folder + "/MASTER"), QByteArray(53, 'm'));   // unpacked over, not cleared
    EXPECT_EQ(readFileBytes(IndexDownload::ArchivePath()), shorter);
}

// Failed runs leave the folder as it was; the archive's own trouble is the extraction's, and that
// run ends as any other. A folder another program is writing is not fetched for.
TEST_F(IndexScreen, FailuresLeaveTheFolderAsItWas) {
    const QString dead = QStringLiteral("http://127.0.0.1:%1").arg(LoopbackHttpServer::deadPort());
    const struct { LoopbackReply reply; QString source; const char* boxSays; bool held = false; } cases[] = {   // boxSays null: completes
        {LoopbackReply::withStatus(404, "<html>Not Found</html>"), server.endpoint(), "404"},
        {{}, dead, "could not be fetched from http://127.0.0.1:"},
        {LoopbackReply::ok(makeArchive(FirstArchive)), server.endpoint(), "is being written by", true},
        {LoopbackReply::ok("<html>this is not a zip archive</html>"), server.endpoint(), nullptr}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.boxSays ? c.boxSays : "garbage");
        writeTextFile(folder + "/MASTER", "kept");
        platform.settings["Sources/IndexArchive"] = c.source;
        platform.boxes.clear();
        server.targets.clear();
        server.serve(c.reply);
        NseIndexDialog dialog;
        {
            std::optional<ForeignLockHolder> other;
            if (c.held)
                other.emplace(folder);
            run(dialog, folder);
        }
        EXPECT_EQ(server.targets.size(), c.held || c.source == dead ? 0 : 1);
        EXPECT_EQ(tree(folder), (QStringList{"MASTER", "brindlemark.lck"}));
        EXPECT_EQ(readFileBytes(folder + "/MASTER"), "kept");
        ASSERT_EQ(platform.boxes.size(), 1);
        EXPECT_EQ(dialog.isVisible(), c.boxSays != nullptr);
        if (!c.boxSays) {
            EXPECT_EQ(platform.boxes[0].text, "Download Complete.");
            continue;
        }
        auto* button = child<QPushButton>(&dialog, "startDownloadButton");
        EXPECT_TRUE(platform.boxes[0].text.contains(c.boxSays)) << platform.boxes[0].text.toStdString();
        EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Critical);
        EXPECT_EQ(std::pair(button->isEnabled(), button->text()), std::pair(true, QString("Start Download")));
        EXPECT_FALSE(QFileInfo::exists(IndexDownload::ArchivePath()));
    }
}

// Today's source: the folder (its last date 1 November) brought up to date day by day from the
// exchange's closes; today is 6 November.
class IndexScreenToday : public IndexScreen {
protected:
    IndexScreenToday() {
        platform.settings["Sources/IndexArchive"] = "today@" + server.endpoint();
        platform.todayDate = QDate(2024, 11, 6);
        makeSecurity(folder, "NIFTY50", "Nifty 50", {bar(20241101, 100)});
    }
    // Nifty 50 on every weekday, 404 on the weekend; `during` runs while a day is asked for.
    void serveWeekdays(NseIndexDialog& dialog) {
        server.setHandler([this, &dialog](const QByteArray& target) {
            auto* button = child<QPushButton>(&dialog, "startDownloadButton");
            seen << child<QLabel>(&dialog, "progressLabel")->text() + " | " + button->text()
                        + (child<QPushButton>(&dialog, "stopButton")->isVisible() ? " | Stop" : "");
            if (during)
                during();
            const QDate day = QDate::fromString(QString::fromLatin1(target.mid(target.lastIndexOf('_') + 1, 8)), "ddMMyyyy");
            if (day.dayOfWeek() > 5)
                return LoopbackReply::withStatus(404);
            return LoopbackReply::ok("Index Name,Index Date,Closing Index Value\nNifty 50," + day.toString("dd-MM-yyyy").toLatin1()
                                     + "," + QByteArray::number(day.day()) + "\n");
        });
    }
    QStringList seen;
    std::function<void()> during;
};

TEST_F(IndexScreenToday, ShowsTheDayInHandAndStopsOnceItIsWritten) {
    NseIndexDialog dialog;
    serveWeekdays(dialog);
    during = [&] {
        if (server.targets.size() == 3)
            child<QPushButton>(&dialog, "stopButton")->click();
    };
    run(dialog, folder);
    EXPECT_EQ(server.targets.size(), 3);
    EXPECT_EQ(seen.value(2), "Fetching 04/11/2024 (3 of 5) | Downloading.... | Stop");
    EXPECT_TRUE(platform.boxes.isEmpty());
    EXPECT_TRUE(dialog.isVisible());
    auto* button = child<QPushButton>(&dialog, "startDownloadButton");
    EXPECT_EQ(std::pair(button->isEnabled(), button->text()), std::pair(true, QString("Start Download")));
    EXPECT_FALSE(child<QPushButton>(&dialog, "stopButton")->isVisible());
    EXPECT_EQ(readBars(folder, "NIFTY50").back(), (Bar{20241104, 4, 4, 4, 4, 0}));

    // Again: on from 5 November to today, then "Download Complete." and the screen closes.
    during = nullptr;
    server.targets.clear();
    button->click();
    EXPECT_EQ(server.targets, (QList<QByteArray>{"/content/indices/ind_close_all_05112024.csv",
                                                 "/content/indices/ind_close_all_06112024.csv"}));
    EXPECT_EQ(platform.boxTexts(), QStringList{"Download Complete."});
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(readBars(folder, "NIFTY50").size(), 4);
}

TEST_F(IndexScreenToday, ClosedDuringARunItGoesOnceTheDayInHandIsWritten) {
    for (const bool escape : {false, true}) {
        SCOPED_TRACE(escape ? "Escape" : "the close box");
        server.targets.clear();
        NseIndexDialog dialog;
        serveWeekdays(dialog);
        during = [&] { escape ? QTest::keyClick(&dialog, Qt::Key_Escape) : void(dialog.close()); };
        run(dialog, folder);
        EXPECT_EQ(server.targets, QList<QByteArray>{"/content/indices/ind_close_all_02112024.csv"});
        EXPECT_FALSE(dialog.isVisible());
        EXPECT_TRUE(platform.boxes.isEmpty());
        EXPECT_EQ(readBars(folder, "NIFTY50").back().date, 20241101);
    }
}

} // namespace
