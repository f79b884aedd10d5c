// The Downloader: the remembered folders, the security list with its ticks, and the hand-over.

#include "DownloadFolders.h"

#include "download/FoldersFile.h"
#include "download/Inet.h"
#include "download/ServiceAddresses.h"
#include "download/clsDailyQuotes.h"
#include "download/ui/frmDownload.h"
#include "frame/Module1.h"
#include "frame/Regional.h"
#include "support/LoopbackHttpServer.h"
#include "support/Modal.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QToolButton>
#include <QTreeWidget>
#include <QtTest/QTest>

#include <gtest/gtest.h>

namespace {

QStringList rows(const QTreeWidget* list, int column = 0) {
    QStringList texts;
    for (int i = 0; i < list->topLevelItemCount(); ++i)
        texts << list->topLevelItem(i)->text(column);
    return texts;
}

// "text|tick" for every row of the security list: "Security;Symbol;Last Date|x"
QStringList securityRows(const QTreeWidget* list) {
    QStringList texts;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* row = list->topLevelItem(i);
        texts << row->text(0) + ';' + row->text(1) + ';' + row->text(2) + '|'
                     + (row->checkState(0) == Qt::Checked ? "x" : " ");
    }
    return texts;
}

// What the user does with a check box.
void tick(QTreeWidget* list, int row, bool on) {
    list->topLevelItem(row)->setCheckState(0, on ? Qt::Checked : Qt::Unchecked);
}

class Downloader : public ::testing::Test {
protected:
    Downloader() { platform_.todayDate = QDate(2026, 11, 23); }

    QString foldersFile() const { return QDir(platform_.programDir.path()).filePath("folders.txt"); }

    // Two folders: the first with an up-to-date security and one behind, the second with one.
    void makeFolders() {
        one = temp.sub("one");
        two = temp.sub("two");
        makeSecurity(one, "AAA", "Alpha", {bar(20261001, 10), bar(20261123, 11)});
        makeSecurity(one, "BBB", "Beta", {bar(20261001, 10), bar(20261020, 11)});
        makeSecurity(two, "CCC", "Gamma", {bar(20260105, 10)});
    }

    ScriptedPlatform platform_;
    TempFolder temp;
    QString one, two;
};

TEST_F(Downloader, FoldersFileIsReadAsDelimitedFieldsAndWrittenOnUnload) {
    writeTextFile(foldersFile(), "C:\\Data\\Stocks\r\n/data/x,y\r\n   /lead  \r\n\"/quoted, with comma\"\r\n");
    {
        frmDownload dlg;
        EXPECT_EQ(rows(dlg.ListView2),
                  QStringList({"C:\\Data\\Stocks", "/data/x", "y", "/lead  ", "/quoted, with comma"}));
        for (int i = 0; i < dlg.ListView2->topLevelItemCount(); ++i)
            EXPECT_EQ(dlg.ListView2->topLevelItem(i)->checkState(0), Qt::Unchecked);
        EXPECT_TRUE(dlg.ListView1->topLevelItemCount() == 0);
        dlg.Command5->click();
    }
    EXPECT_EQ(readFileBytes(foldersFile()),
              "C:\\Data\\Stocks\r\n/data/x\r\ny\r\n/lead\r\n/quoted, with comma\r\n");
    // Next time round the path with a comma is two rows.
    frmDownload again;
    EXPECT_EQ(rows(again.ListView2),
              QStringList({"C:\\Data\\Stocks", "/data/x", "y", "/lead", "/quoted", "with comma"}));
}

TEST_F(Downloader, AMissingFoldersFileGivesAnEmptyListAndAnEmptyListAnEmptyFile) {
    {
        frmDownload dlg;
        EXPECT_EQ(dlg.ListView2->topLevelItemCount(), 0);
        EXPECT_EQ(dlg.windowTitle(), "Downloader");
        EXPECT_EQ(dlg.Label1->text(), "No Securities Selected.");
        dlg.reject();
    }
    EXPECT_TRUE(QFileInfo::exists(foldersFile()));
    EXPECT_EQ(readFileBytes(foldersFile()), "");
}

TEST_F(Downloader, AddRemoveAndRemoveAll) {
    frmDownload dlg;
    dlg.Command2->click();   // nothing typed
    EXPECT_EQ(dlg.ListView2->topLevelItemCount(), 0);

    dlg.Text1->setText("  /data/one ");
    dlg.Command2->click();
    EXPECT_EQ(dlg.Text1->text(), "  /data/one ");
    dlg.Text1->setText("/data/one");
    dlg.Command2->click();
    ASSERT_EQ(platform_.boxes.size(), 1);
    EXPECT_EQ(platform_.boxes[0].text, "Already Exists.");
    EXPECT_EQ(platform_.boxes[0].title, "Marrowfin");
    EXPECT_EQ(platform_.boxes[0].icon, MsgIcon::Information);
    dlg.Text1->setText("/DATA/one");
    dlg.Command2->click();
    dlg.Text1->setText("/data/two\\");
    dlg.Command2->click();
    EXPECT_EQ(rows(dlg.ListView2), QStringList({"/data/one", "/DATA/one", "/data/two\\"}));

    dlg.Command3->click();   // no row selected
    EXPECT_EQ(dlg.ListView2->topLevelItemCount(), 3);
    dlg.ListView2->setCurrentItem(dlg.ListView2->topLevelItem(1));
    dlg.Command3->click();
    EXPECT_EQ(rows(dlg.ListView2), QStringList({"/data/one", "/data/two\\"}));

    dlg.Command6->click();
    EXPECT_EQ(dlg.ListView2->topLevelItemCount(), 0);
    dlg.Command4->click();
    EXPECT_EQ(platform_.boxTexts().last(), "No Securities Selected.");
    EXPECT_EQ(platform_.boxes.last().title, "Marrowfin");
    EXPECT_TRUE(Module1::DownloadItems.isEmpty());
}

TEST_F(Downloader, BrowseDropsOneFinalBackslash) {
    frmDownload dlg;
    platform_.chooseNext("D:\\");
    dlg.Command1->click();
    EXPECT_EQ(dlg.Text1->text(), "D:");
    EXPECT_EQ(platform_.chooserTitles, QStringList({"Browse For Folder"}));
    dlg.Command1->click();   // cancelled
    EXPECT_EQ(dlg.Text1->text(), "");
}

TEST_F(Downloader, TickingFoldersListsTheirSecurities) {
    makeFolders();
    writeTextFile(foldersFile(), (one + "\r\n" + two + "\r\n").toUtf8());
    frmDownload dlg;
    const QString lastBeta = Regional::dateText({2026, 10, 20});
    const QString today = Regional::dateText({2026, 11, 23});

    tick(dlg.ListView2, 0, true);
    EXPECT_EQ(securityRows(dlg.ListView1),
              QStringList({one + ";;|x", "Alpha;AAA;" + today + "| ", "Beta;BBB;" + lastBeta + "|x"}));
    EXPECT_EQ(dlg.Label1->text(), "1 Securities Selected.");

    tick(dlg.ListView2, 1, true);
    EXPECT_EQ(dlg.ListView1->topLevelItemCount(), 5);
    EXPECT_EQ(dlg.Label1->text(), "2 Securities Selected.");

    // A tick set by hand survives ticking a further folder but not unticking one.
    tick(dlg.ListView1, 1, true);
    EXPECT_EQ(dlg.Label1->text(), "3 Securities Selected.");
    tick(dlg.ListView2, 1, false);
    EXPECT_EQ(securityRows(dlg.ListView1),
              QStringList({one + ";;|x", "Alpha;AAA;" + today + "| ", "Beta;BBB;" + lastBeta + "|x"}));
    EXPECT_EQ(dlg.Label1->text(), "1 Securities Selected.");

    // Unticking a folder row unticks its securities only.
    tick(dlg.ListView2, 1, true);
    tick(dlg.ListView1, 0, false);
    EXPECT_EQ(securityRows(dlg.ListView1).mid(0, 3),
              QStringList({one + ";;| ", "Alpha;AAA;" + today + "| ", "Beta;BBB;" + lastBeta + "| "}));
    EXPECT_EQ(dlg.Label1->text(), "1 Securities Selected.");
    EXPECT_EQ(dlg.ListView2->topLevelItem(0)->checkState(0), Qt::Checked);
    tick(dlg.ListView1, 3, false);
    EXPECT_EQ(dlg.Label1->text(), "0 Securities Selected.");
    dlg.Command4->click();
    EXPECT_EQ(platform_.boxTexts(), QStringList({"No Securities Selected."}));

    // Unticking every folder empties the list and says so.
    tick(dlg.ListView2, 0, false);
    tick(dlg.ListView2, 1, false);
    EXPECT_EQ(dlg.ListView1->topLevelItemCount(), 0);
    EXPECT_EQ(dlg.Label1->text(), "No Securities Selected.");
}

TEST_F(Downloader, AFolderWithoutAStoreIsRemoved) {
    makeFolders();
    const QString nothing = temp.sub("nothing-here");
    writeTextFile(foldersFile(), (one + "\r\n" + nothing + "\r\n").toUtf8());
    frmDownload dlg;
    tick(dlg.ListView2, 0, true);
    const QString before = dlg.Label1->text();
    tick(dlg.ListView2, 1, true);
    ASSERT_EQ(platform_.boxes.size(), 1);
    EXPECT_EQ(platform_.boxes[0].text, "No MetaStock Files Found.");
    EXPECT_EQ(platform_.boxes[0].title, "Fernwoodglade");
    EXPECT_EQ(platform_.boxes[0].icon, MsgIcon::Information);
    EXPECT_EQ(rows(dlg.ListView2), QStringList({one}));
    EXPECT_EQ(dlg.ListView1->topLevelItemCount(), 3);
    EXPECT_EQ(dlg.Label1->text(), before);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(Downloader, RemovingAFolderKeepsItsRowsUntilTheLastIsGone) {
    makeFolders();
    writeTextFile(foldersFile(), (one + "\r\n" + two + "\r\n").toUtf8());
    frmDownload dlg;
    tick(dlg.ListView2, 0, true);
    tick(dlg.ListView2, 1, true);
    dlg.ListView2->setCurrentItem(dlg.ListView2->topLevelItem(0));
    dlg.Command3->click();
    EXPECT_EQ(dlg.ListView1->topLevelItemCount(), 5);
    dlg.ListView2->setCurrentItem(dlg.ListView2->topLevelItem(0));
    dlg.Command3->click();
    EXPECT_EQ(dlg.ListView1->topLevelItemCount(), 0);
}

// The items handed over, and the run reading back the dates the selection wrote.
class DownloaderHandOver : public Downloader, public ::testing::WithParamInterface<const char*> {
protected:
    DownloaderHandOver() {
        ServiceAddresses::setYahooQuotes(server.endpoint());
        clsDailyQuotes::setTracePath(temp.file("t.txt"));
        server.serve(LoopbackReply::ok("Date,Open,High,Low,Close,Volume,Adj Close\n"
                                       "2026-10-21,12,13,11,12,900,12\n"));
    }
    ~DownloaderHandOver() override {
        ServiceAddresses::setYahooQuotes({});
        clsDailyQuotes::setTracePath({});
    }
    LoopbackHttpServer server;
};

TEST_P(DownloaderHandOver, ItemsCarryDatesTheRunReadsBack) {
    LocaleGuard locale(QString::fromLatin1(GetParam()));
    makeFolders();
    Module1::DownloadItems.append({"OLD", "", "", ""});
    writeTextFile(foldersFile(), (two + "\r\n" + one + "\r\n").toUtf8());
    frmDownload dlg;
    tick(dlg.ListView2, 1, true);   // "one" first: the order of ticking
    tick(dlg.ListView2, 0, true);
    tick(dlg.ListView1, 1, true);   // Alpha, up to date, ticked by hand

    QStringList progressLines;
    closeProgressWhenDone([&](QWidget* modal) {
        auto* list = child<QListWidget>(modal, "lstDownloadComplete");
        for (int i = 0; i < list->count(); ++i)
            progressLines << list->item(i)->text();
    });
    dlg.Command4->click();
    EXPECT_FALSE(dlg.isVisible());

    const auto& items = Module1::DownloadItems;
    ASSERT_EQ(items.upperBound(), 3);
    EXPECT_EQ(items[1].Symbol, "AAA");
    EXPECT_EQ(items[1].Folder, one);
    EXPECT_EQ(items[1].FirstDate, Regional::dateText({2026, 10, 19}));
    EXPECT_EQ(items[1].NextDate, Regional::dateText({2026, 11, 24}));
    EXPECT_EQ(items[2].Symbol, "BBB");
    EXPECT_EQ(items[2].FirstDate, Regional::dateText({2026, 9, 15}));
    EXPECT_EQ(items[2].NextDate, Regional::dateText({2026, 10, 21}));
    EXPECT_EQ(items[3].Symbol, "CCC");
    EXPECT_EQ(items[3].Folder, two);

    EXPECT_EQ(progressLines, QStringList({"Upto Date : AAA", "Download Complete : BBB", "Download Complete : CCC"}));
    ASSERT_EQ(server.targets.size(), 2);
    EXPECT_EQ(server.decodedTargets()[0], "/table.csv?s=BBB&d=10&e=23&f=2026&g=d&a=8&b=15&c=2026&ignore=.csv");
    EXPECT_EQ(server.decodedTargets()[1], "/table.csv?s=CCC&d=10&e=23&f=2026&g=d&a=11&b=1&c=2025&ignore=.csv");
    EXPECT_EQ(storedBars(one, "BBB").last(), (StoredBar{20261021, 12, 13, 11, 12, 900}));
    // The folders were saved on the way out.
    EXPECT_EQ(readFileBytes(foldersFile()), (two + "\r\n" + one + "\r\n").toUtf8());
}

INSTANTIATE_TEST_SUITE_P(Locales, DownloaderHandOver, ::testing::Values("en_GB", "en_US", "de_DE"));

} // namespace

namespace {

TEST(FoldersFileFields, FieldsEndAtCommasAndLineEnds) {
    struct Case {
        QByteArray bytes;
        QStringList fields;
    };
    const Case cases[] = {
        {"", {}},
        {"C:\\Data", {"C:\\Data"}},
        {"C:\\Data\r\n", {"C:\\Data"}},
        {"/a\n/b\n", {"/a", "/b"}},
        {"/a,/b\r\n/c", {"/a", "/b", "/c"}},
        {"   /lead\t\r\n", {"/lead\t"}},
        {"\"/x, y\" \r\n/z\r\n", {"/x, y", "/z"}},
        {"/a\r\n\r\n/b\r\n", {"/a", "", "/b"}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(FoldersFile::delimitedFields(c.bytes), c.fields) << c.bytes.toStdString();
}

} // namespace
