// The NSE Downloader against a loopback stand-in for the exchange's archive: walks over real
// folders made as Create New Symbols makes them, read back through the store.

#include "DownloadTestKit.h"

#include "download/ui/NseDownloaderDialog.h"

#include <QFileInfo>
#include <QLineEdit>
#include <QProgressBar>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <optional>

namespace {

const QByteArray BhavHeader = "SYMBOL,SERIES,OPEN,HIGH,LOW,CLOSE,LAST,PREVCLOSE,TOTTRDQTY,TOTTRDVAL,TIMESTAMP,\n";

// A line of the archive's daily file: eleven columns, each followed by a comma.
QByteArray bhavRow(const QByteArray& symbol, const Bar& b) {
    const auto n = [](double v) { return QByteArray::number(v); };
    return symbol + ",EQ," + n(b.open) + ',' + n(b.high) + ',' + n(b.low) + ',' + n(b.close) + ",0,0,"
           + n(b.volume) + ",0,01-JAN-2000,\n";
}

// Rows of symbols no folder holds (or all of `symbol`), until the file has at least `size` characters.
QByteArray filler(QByteArray body, qsizetype size = 2001, const QByteArray& symbol = {}) {
    for (int i = 1; body.size() < size; ++i)
        body += bhavRow(symbol.isEmpty() ? "ZZ" + QByteArray::number(i) : symbol, bar(0, 1));
    return body;
}

QByteArray bhavCopy(const QByteArray& rows) { return filler(BhavHeader + rows); }

// The address of a day, written out here the long way.
QString path(const QDate& d) {
    const QString month = QLocale::c().monthName(d.month(), QLocale::ShortFormat).toUpper();
    const QString year = QString::number(d.year());
    return "/content/historical/EQUITIES/" + year + "/" + month + "/cm" + QString::number(d.day()) + month + year + "bhav.csv";
}

QStringList paths(const QDate& first, const QDate& last) {
    return first > last ? QStringList() : QStringList{path(first)} + paths(first.addDays(1), last);
}

// Whole-number prices read alike under every locale.
Bar whole(qint32 date, double price, double volume) { return {date, price, price + 2, price - 1, price + 1, volume}; }

QString updated(const QDate& d) { return Regional::dateText(d) + " Updated."; }

class NseRun : public NseDaysTest {
protected:
    void serveDay(const QDate& day, const QByteArray& rows) { days[path(day)] = LoopbackReply::ok(bhavCopy(rows)); }
    QByteArray valuesFile() const { return readFileBytes(CreateSymbols::ValuesFilePath(folder)); }
    static QByteArray valuesText(const QDate& d) { return (Regional::dateText(d) + "\r\n").toUtf8(); }

    static void expectIdle(const NseDownloaderDialog& dlg) {
        EXPECT_TRUE(dlg.closeButton->isEnabled());
        EXPECT_FALSE(dlg.beginDownloadButton->isHidden());
        EXPECT_TRUE(dlg.stopButton->isHidden());
        EXPECT_FALSE(dlg.progressTimer->isActive());
    }
};

// A month with weekends and a few days of data; values.dat in each locale's own short form is
// read back by the next run, which starts on the day after it.
TEST_F(NseRun, WalksEveryDayToTodayAndTheNextRunGoesOnFromTheLastDayWithData) {
    for (const char* locale : {"en_US", "de_DE"}) {
        SCOPED_TRACE(locale);
        LocaleGuard guard(locale);
        TempFolder own;
        folder = own.sub("nse");
        days.clear();
        server.targets.clear();
        platform_.boxes.clear();

        // 11/10/2026 as Create New Symbols writes it: the 11th of October in every locale, though a
        // month-first short date reads the text as 10 November too.
        createSymbols({"ABC", "XYZ"}, {2026, 10, 11});
        serveDay({2026, 10, 12}, bhavRow("ABC", whole(0, 10, 1500)) + bhavRow("XYZ", whole(0, 20, 700)));
        serveDay({2026, 10, 15}, bhavRow("ABC", whole(0, 11, 1600)));
        serveDay({2026, 10, 22}, bhavRow("XYZ", whole(0, 21, 800)));
        serveDay({2026, 10, 27}, bhavRow("ABC", whole(0, 12, 1700)));
        platform_.todayDate = {2026, 10, 31};

        sharedState().LastFolder = folder;
        NseDownloaderDialog dlg;
        dlg.beginDownloadButton->click();

        EXPECT_EQ(server.decodedTargets(), paths({2026, 10, 12}, {2026, 10, 31}));
        EXPECT_EQ(lines(dlg.daysList), QStringList({updated({2026, 10, 12}), updated({2026, 10, 15}),
                                                    updated({2026, 10, 22}), updated({2026, 10, 27})}));
        EXPECT_EQ(dlg.daysList->currentRow(), 3);
        EXPECT_EQ(platform_.boxTexts(), QStringList({"Download Completed."}));
        expectIdle(dlg);

        EXPECT_EQ(readBars(folder, "ABC"),
                  std::vector<Bar>({whole(20261012, 10, 1500), whole(20261015, 11, 1600), whole(20261027, 12, 1700)}));
        EXPECT_EQ(readBars(folder, "XYZ"), std::vector<Bar>({whole(20261012, 20, 700), whole(20261022, 21, 800)}));
        // The last day with data, not today: the empty days after it are asked for again.
        EXPECT_EQ(valuesFile(), valuesText({2026, 10, 27}));

        server.targets.clear();
        platform_.boxes.clear();
        serveDay({2026, 11, 2}, bhavRow("XYZ", whole(0, 22, 900)));
        platform_.todayDate = {2026, 11, 3};
        dlg.beginDownloadButton->click();
        EXPECT_EQ(server.decodedTargets(), paths({2026, 10, 28}, {2026, 11, 3}));
        EXPECT_EQ(lines(dlg.daysList), QStringList({updated({2026, 11, 2})}));
        EXPECT_EQ(readBars(folder, "XYZ").size(), 3);
        EXPECT_EQ(valuesFile(), valuesText({2026, 11, 2}));
    }
}

// values.dat written under other regional settings than today's: by Create New Symbols, or by a run
// whose last day with data the security ends on. The walk starts on the day after the day meant.
TEST_F(NseRun, AValuesFileWrittenUnderOtherSettingsNamesTheSameDay) {
    const struct { const char* written; const char* read; bool byCreate; } cases[] = {
        {"de_DE", "en_US", true}, {"de_DE", "ja_JP", true}, {"en_US", "de_DE", false}, {"ja_JP", "en_GB", false}};
    const QDate day{2025, 8, 6};
    platform_.todayDate = day.addDays(3);
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.written) + " read under " + c.read);
        TempFolder own;
        folder = own.sub("nse");
        server.targets.clear();
        platform_.boxes.clear();
        {
            LocaleGuard written(c.written);
            if (c.byCreate) {
                createSymbols({"ABC"}, day);
            } else {
                makeSecurity(folder, "ABC", "ABC", {whole(Regional::toStoreDate(day), 10, 100)});
                writeTextFile(CreateSymbols::ValuesFilePath(folder), valuesText(day));
            }
        }
        LocaleGuard read(c.read);
        NseDownloaderDialog dlg;
        dlg.folderEdit->setText(folder);
        dlg.beginDownloadButton->click();
        EXPECT_EQ(server.decodedTargets(), paths(day.addDays(1), day.addDays(3)));
    }
}

// STOP is looked at only after a day with data, the close box after the day in hand, which then
// closes the screen; values.dat names the last day written, and a stop is spent when the run is over.
TEST_F(NseRun, StopAndCloseEndTheRunBetweenDays) {
    createSymbols({"ABC"}, {2026, 9, 30});
    for (int day : {1, 2, 5, 6, 7})
        serveDay({2026, 10, day}, bhavRow("ABC", bar(0, day)));
    platform_.todayDate = {2026, 10, 9};
    for (bool closing : {true, false}) {
        SCOPED_TRACE(closing ? "close box" : "Stop");
        server.targets.clear();
        platform_.boxes.clear();
        NseDownloaderDialog dlg;
        dlg.show();
        dlg.folderEdit->setText(folder);
        bool running = false;
        onRequest = [&](const QString& target) {
            if (target != path({2026, 10, 3}))   // a Saturday: the close box's day in hand, the stop's first day
                return;
            running = !dlg.closeButton->isEnabled() && dlg.beginDownloadButton->isHidden() && dlg.stopButton->isVisible()
                      && dlg.progressTimer->interval() == 100 && dlg.progressTimer->isActive();
            if (closing) {
                EXPECT_FALSE(dlg.close());
            } else {
                dlg.stopButton->click();
                EXPECT_TRUE(dlg.stopButton->isHidden());
            }
        };
        dlg.beginDownloadButton->click();
        EXPECT_TRUE(running);
        EXPECT_EQ(platform_.boxTexts(), QStringList({"Download Completed."}));
        EXPECT_EQ(dlg.isVisible(), !closing);
        if (closing) {
            EXPECT_EQ(server.decodedTargets(), paths({2026, 10, 1}, {2026, 10, 3}));
            EXPECT_EQ(valuesFile(), valuesText({2026, 10, 2}));
            EXPECT_EQ(readBars(folder, "ABC"), std::vector<Bar>({bar(20261001, 1), bar(20261002, 2)}));
            continue;
        }
        EXPECT_EQ(server.decodedTargets(), paths({2026, 10, 3}, {2026, 10, 5}));
        EXPECT_EQ(lines(dlg.daysList), QStringList({updated({2026, 10, 5})}));
        EXPECT_EQ(valuesFile(), valuesText({2026, 10, 5}));
        expectIdle(dlg);
        onRequest = {};
        server.targets.clear();
        dlg.beginDownloadButton->click();
        EXPECT_EQ(server.decodedTargets(), paths({2026, 10, 6}, {2026, 10, 9}));
        EXPECT_EQ(valuesFile(), valuesText({2026, 10, 7}));
    }
}

// Runs that fetch nothing: each ends with its own box, leaves values.dat as it was and the screen idle.
TEST_F(NseRun, RunsThatFetchNothing) {
    const QDate today{2026, 10, 9};
    const struct {
        const char* what;
        QString folderText;
        std::optional<QByteArray> values;   // none: no values.dat
        QString box;
        MsgIcon icon;
        bool listCleared;
    } cases[] = {
        {"blank folder text", "   ", QByteArray("01/10/2026\r\n"), "Data Directory Field is Empty.", MsgIcon::None, false},
        {"no values.dat", "", std::nullopt, "NO Metastock Data Files Found in the Selected Directory.", MsgIcon::Information, false},
        {"an empty values.dat", "", QByteArray(), "NO Metastock Data Files Found in the Selected Directory.", MsgIcon::Information, false},
        {"a blank line first", "", QByteArray("\r\n01/10/2026\r\n"),
         "The date \"\" in values.dat can't be read. Nothing was downloaded.", MsgIcon::Warning, false},
        {"values.dat names today", "", QByteArray("09/10/2026,x\r\n"), "Download Completed.", MsgIcon::Information, true},
        {"no date in values.dat", "", QByteArray("soon\r\n"),
         "The date \"soon\" in values.dat can't be read. Nothing was downloaded.", MsgIcon::Warning, false},
        {"another program writes the folder", "", QByteArray("01/10/2026\r\n"),
         "The folder FOLDER is being written by brindlemark-cli (process 4242). Try again when it has finished.", MsgIcon::Warning, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        TempFolder own;
        folder = own.sub("nse");
        if (c.values)
            writeTextFile(CreateSymbols::ValuesFilePath(folder), *c.values);
        std::optional<ForeignLockHolder> holder;
        if (c.box.contains("FOLDER"))
            holder.emplace(folder);
        platform_.boxes.clear();
        platform_.todayDate = today;

        NseDownloaderDialog dlg;
        dlg.folderEdit->setText(c.folderText.isEmpty() ? " " + folder + " " : c.folderText);
        dlg.daysList->addItem("an earlier line");
        dlg.beginDownloadButton->click();

        EXPECT_TRUE(server.targets.isEmpty());
        ASSERT_EQ(platform_.boxes.size(), 1);
        EXPECT_EQ(platform_.boxes[0].text, QString(c.box).replace("FOLDER", folder));
        EXPECT_EQ(platform_.boxes[0].icon, c.icon);
        EXPECT_EQ(platform_.boxes[0].title, "Brindlemark v6");
        EXPECT_EQ(lines(dlg.daysList), c.listCleared ? QStringList() : QStringList({"an earlier line"}));
        EXPECT_EQ(QFileInfo::exists(CreateSymbols::ValuesFilePath(folder)), c.values.has_value());
        if (c.values) {
            EXPECT_EQ(valuesFile(), *c.values);
        }
        expectIdle(dlg);
    }
}

// The one day that has data decides whether values.dat moves: only rows handed to the writer count.
TEST_F(NseRun, WhatCountsAsADayWithDataAndAsAWrittenRow) {
    const QByteArray abc = BhavHeader + bhavRow("ABC", bar(0, 7));
    const struct { const char* what; QByteArray reply; bool listed; bool rewritten; int abcRecords; } cases[] = {
        {"2,000 characters", filler(abc, 2000).left(2000), false, false, 0},
        {"2,001 characters", filler(abc, 2000).left(2000) + "x", true, true, 1},
        {"2,001 characters of anything else", QByteArray(2001, 'x'), true, false, 0},
        {"only W1 rows", filler(BhavHeader + bhavRow("W1", bar(0, 7)), 2001, " W1 "), true, false, 0},
        {"only symbols the folder lacks", bhavCopy({}), true, true, 0},
        {"lines ended by carriage returns", filler(abc, 2001).replace('\n', '\r'), true, true, 1},
        // Four tokens of a row are enough for it to count; it writes nothing without its prices.
        {"a last row cut after four tokens",
         BhavHeader.left(69) + QByteArray(1950, 'T') + ",\n" + "ABC,EQ,1,2", true, true, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        TempFolder own;
        folder = own.sub("nse");
        createSymbols({"ABC", "W1"}, {2026, 10, 4});
        const QByteArray before = valuesFile();
        days.clear();
        days[path({2026, 10, 5})] = LoopbackReply::ok(c.reply);
        platform_.todayDate = {2026, 10, 6};

        NseDownloaderDialog dlg;
        dlg.folderEdit->setText(folder);
        dlg.beginDownloadButton->click();

        EXPECT_EQ(lines(dlg.daysList), c.listed ? QStringList({updated({2026, 10, 5})}) : QStringList());
        EXPECT_EQ(valuesFile(), c.rewritten ? valuesText({2026, 10, 5}) : before);
        EXPECT_EQ(readBars(folder, "ABC").size(), c.abcRecords);
        EXPECT_TRUE(readBars(folder, "W1").empty());
        // A run creates no security.
        SecurityReader reader;
        reader.OpenFolder(folder);
        EXPECT_EQ(reader.GetSecuritiesRemaining(), 2);
        reader.CloseFolder();
    }
}

// Rows of one day: each goes to the security of its trimmed symbol with the day asked for; a row
// whose numbers don't read, or that ends before its volume, adds nothing; a row of a missing
// symbol is lost without harm to the next one.
TEST_F(NseRun, EachRowGoesToItsOwnSecurity) {
    createSymbols({"ABC", "DUP", "BAD", "AFTER", "SHORT"}, {2026, 10, 4});
    const QByteArray rows = bhavRow(" ABC ", {0, 10.25, 11.5, 9.75, 10.5, 1234})
                            + bhavRow("DUP", bar(0, 1)) + bhavRow("MISSING", bar(0, 2)) + bhavRow("AFTER", bar(0, 3))
                            + bhavRow("DUP", bar(0, 4)) + "BAD,EQ,n/a,2,1,2,0,0,100,0,x,\n";
    days[path({2026, 10, 5})] = LoopbackReply::ok(filler(BhavHeader + rows) + "SHORT,EQ,1,2,1,2,0,0");
    platform_.todayDate = {2026, 10, 5};

    NseDownloaderDialog dlg;
    dlg.show();
    dlg.folderEdit->setText(folder);
    dlg.beginDownloadButton->click();

    EXPECT_EQ(readBars(folder, "ABC"), std::vector<Bar>({{20261005, 10.25, 11.5, 9.75, 10.5, 1234}}));
    EXPECT_EQ(readBars(folder, "DUP"), std::vector<Bar>({bar(20261005, 4)}));
    EXPECT_EQ(readBars(folder, "AFTER"), std::vector<Bar>({bar(20261005, 3)}));
    EXPECT_TRUE(readBars(folder, "BAD").empty());
    EXPECT_TRUE(readBars(folder, "SHORT").empty());
    EXPECT_EQ(valuesFile(), valuesText({2026, 10, 5}));
}

// The folder comes from LastFolder and the chooser; the bar counts 1..100 on the timer's ticks,
// and its counter goes on from one run to the next.
TEST_F(NseRun, FolderChooserAndProgressBar) {
    sharedState().LastFolder = "/old";
    NseDownloaderDialog dlg;
    EXPECT_EQ(dlg.folderEdit->text(), "/old");
    platform_.chooseNext(" " + folder + " ");
    dlg.folderButton->click();
    EXPECT_EQ(platform_.chooserTitles, QStringList({"Select Folder for Download"}));
    EXPECT_EQ(sharedState().LastFolder, folder);
    dlg.show();   // Enter in the folder field starts nothing
    QApplication::setActiveWindow(&dlg);
    dlg.folderEdit->setFocus();
    QTest::keyClick(dlg.folderEdit, Qt::Key_Return);
    EXPECT_TRUE(platform_.boxes.isEmpty() && server.targets.isEmpty()) << platform_.boxTexts().join('|').toStdString();

    for (int i = 0; i < 99; ++i)
        dlg.tick();
    EXPECT_EQ(dlg.progressBar->value(), 99);
    createSymbols({"ABC"}, {2026, 10, 4});
    platform_.todayDate = {2026, 10, 6};
    dlg.beginDownloadButton->click();
    EXPECT_EQ(dlg.progressBar->value(), 1);
    dlg.tick();
    EXPECT_EQ(dlg.progressBar->value(), 100);
    dlg.tick();
    EXPECT_EQ(dlg.progressBar->value(), 1);
}

// brindlemark-cli download bhavcopy: the same walk without a screen, bounded by --from and --to.
TEST_F(NseRun, CommandLineWalksBetweenTheDaysGivenAndKeepsValuesAsTheScreenDoes) {
    createSymbols({"ABC", "XYZ"}, {2026, 11, 2});
    serveDay({2026, 11, 3}, bhavRow("ABC", whole(0, 10, 1500)));
    serveDay({2026, 11, 5}, bhavRow("XYZ", whole(0, 20, 700)));
    CliRun r = cli({"download", "bhavcopy", folder, "--to", "20261104"});
    ASSERT_EQ(r.status, 0);
    EXPECT_EQ(r.out, (QStringList{updated({2026, 11, 3}), "1 day with data"}));
    EXPECT_EQ(server.targets.size(), 2);
    EXPECT_EQ(valuesFile(), valuesText({2026, 11, 3}));
    EXPECT_EQ(readBars(folder, "ABC"), (std::vector<Bar>{whole(20261103, 10, 1500)}));

    r = cli({"download", "bhavcopy", folder, "--from", "20261105", "--to", "20261105"});
    ASSERT_EQ(r.status, 0);
    EXPECT_EQ(r.out, (QStringList{updated({2026, 11, 5}), "1 day with data"}));
    // Filling in a day before the one values.dat names leaves it where the folder stands.
    ASSERT_EQ(cli({"download", "bhavcopy", folder, "--from", "20261103", "--to", "20261103"}).status, 0);
    EXPECT_EQ(valuesFile(), valuesText({2026, 11, 5}));
    // --from needs no values.dat, and the walk writes one.
    QFile::remove(CreateSymbols::ValuesFilePath(folder));
    EXPECT_EQ(cli({"download", "bhavcopy", folder, "--from", "20261105", "--to", "20261105"}).status, 0);
    EXPECT_EQ(valuesFile(), valuesText({2026, 11, 5}));

    EXPECT_EQ(cli({"download", "bhavcopy"}).status, 2);
    EXPECT_EQ(cli({"download", "bhavcopy", folder, "--from", "2026"}).status, 2);
    // A store that will not take a day's records ends the walk before that day, which is asked again.
    ASSERT_TRUE(QFile::setPermissions(folder + "/MASTER", QFile::ReadOwner));
    serveDay({2026, 11, 6}, bhavRow("ABC", whole(0, 30, 100)));
    r = cli({"download", "bhavcopy", folder, "--to", "20261106"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, QStringList{"0 days with data"});
    const QString said = platform_.boxTexts().join('|');   // the box, on standard error outside the tests
    EXPECT_TRUE(said.contains("could not be stored") && said.contains("MASTER is read-only")) << said.toStdString();
    EXPECT_EQ(valuesFile(), valuesText({2026, 11, 5}));
    // So does a security of the folder that cannot be opened.
    ASSERT_TRUE(QFile::setPermissions(folder + "/MASTER", QFile::ReadOwner | QFile::WriteOwner));
    ASSERT_TRUE(QFile::remove(folder + "/F1.DAT") && QDir(folder).mkdir("F1.DAT"));
    platform_.boxes.clear();
    EXPECT_EQ(cli({"download", "bhavcopy", folder, "--to", "20261106"}).status, 1);
    EXPECT_TRUE(platform_.boxTexts().join('|').contains("could not be stored")) << platform_.boxTexts().join('|').toStdString();
    EXPECT_EQ(valuesFile(), valuesText({2026, 11, 5}));
    r = cli({"download", "bhavcopy", temp.path() + "/nowhere"});
    EXPECT_TRUE(r.status == 1 && r.err.contains("/nowhere does not exist")) << r.err.toStdString();
}

} // namespace
