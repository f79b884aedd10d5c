// The Downloader: the remembered folders, the security list with its ticks, and the hand-over.

#include "DownloadTestKit.h"

#include "download/ui/DownloaderDialog.h"

#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>
#include <QTreeWidget>

namespace {

// The first column of every row; with `all`, "Security;Symbol;Last Date|x", x for a tick.
QStringList rows(const QTreeWidget* list, bool all = false) {
    QStringList texts;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* row = list->topLevelItem(i);
        texts << (all ? row->text(0) + ';' + row->text(1) + ';' + row->text(2) + '|' + (row->checkState(0) == Qt::Checked ? "x" : " ")
                      : row->text(0));
    }
    return texts;
}
QStringList securityRows(const QTreeWidget* list) { return rows(list, true); }

// What the user does with a check box.
void tick(QTreeWidget* list, int row, bool on) {
    list->topLevelItem(row)->setCheckState(0, on ? Qt::Checked : Qt::Unchecked);
}

class Downloader : public DownloadTest {
protected:
    QString foldersFile() const { return QDir(platform_.programDir.path()).filePath("folders.txt"); }

    // Two folders in folders.txt: the first with a security up to date and one behind, the
    // second with one.
    void makeFolders() {
        makeSecurity(one, "AAA", "Alpha", {bar(20261001, 10), bar(20261123, 11)});
        makeSecurity(one, "ADANIPORTS.NS", "Adani Ports", {bar(20261001, 10), bar(20261020, 11)});
        makeSecurity(two, "CCC", "Gamma", {bar(20260105, 10)});
        writeTextFile(foldersFile(), (one + "\r\n" + two + "\r\n").toUtf8());
    }

    const QString one = temp.sub("one"), two = temp.sub("two");
    const QString today = Regional::dateText({2026, 11, 23}), lastAdani = Regional::dateText({2026, 10, 20});
};

TEST_F(Downloader, FoldersFileRoundTrip) {
    {
        DownloaderDialog dlg;   // no file yet
        dlg.show();
        EXPECT_EQ(dlg.foldersList->topLevelItemCount(), 0);
        dlg.reject();
    }
    EXPECT_TRUE(QFileInfo::exists(foldersFile()));
    EXPECT_EQ(readFileBytes(foldersFile()), "");

    // Fields end at a comma or a line end; a quoted field runs to its closing quote.
    writeTextFile(foldersFile(), "C:\\Data\\Stocks\n/data/x,y\r\n   /lead  \r\n\"/quoted, with comma\" \r\n\r\n\"/ends,\"\n/last");
    {
        DownloaderDialog dlg;
        EXPECT_EQ(rows(dlg.foldersList), QStringList({"C:\\Data\\Stocks", "/data/x", "y", "/lead  ", "/quoted, with comma", "", "/ends,", "/last"}));
        EXPECT_EQ(dlg.foldersList->topLevelItem(0)->checkState(0), Qt::Unchecked);
        dlg.closeButton->click();
    }
    EXPECT_EQ(readFileBytes(foldersFile()), "C:\\Data\\Stocks\r\n/data/x\r\ny\r\n/lead\r\n/quoted, with comma\r\n\r\n/ends,\r\n/last\r\n");
    // A list that cannot be saved is said so.
    ASSERT_TRUE(QFile::remove(foldersFile()) && QDir().mkdir(foldersFile()));
    DownloaderDialog().reject();
    ASSERT_EQ(platform_.boxes.size(), 1);
    expectBox(platform_.boxes[0], "The list of folders could not be saved in " + foldersFile() + ".", "Marrowfin", MsgIcon::Critical);
}

TEST_F(Downloader, BrowseAddRemoveAndRemoveAll) {
    DownloaderDialog dlg;
    platform_.chooseNext("D:\\");
    dlg.browseButton->click();
    EXPECT_EQ(dlg.folderEdit->text(), "D:");
    EXPECT_EQ(platform_.chooserTitles, QStringList({"Browse For Folder"}));
    dlg.browseButton->click();   // cancelled
    dlg.addFolderButton->click();   // nothing to add
    EXPECT_EQ(dlg.foldersList->topLevelItemCount(), 0);

    for (const char* typed : {"  /data/one ", "/data/one", "/DATA/one", "/data/two\\"}) {
        dlg.folderEdit->setText(typed);
        dlg.addFolderButton->click();
        EXPECT_EQ(dlg.folderEdit->text(), typed);
    }
    EXPECT_EQ(rows(dlg.foldersList), QStringList({"/data/one", "/DATA/one", "/data/two\\"}));
    EXPECT_EQ(dlg.foldersList->topLevelItem(2)->checkState(0), Qt::Unchecked);   // listed, not yet ticked
    ASSERT_EQ(platform_.boxes.size(), 1);
    expectBox(platform_.boxes[0], "Already Exists.", "Marrowfin");

    dlg.removeFolderButton->click();   // no row selected
    EXPECT_EQ(dlg.foldersList->topLevelItemCount(), 3);
    dlg.foldersList->selectionModel()->setCurrentIndex(   // the focus on a row that isn't selected
        dlg.foldersList->model()->index(2, 0), QItemSelectionModel::NoUpdate);
    dlg.removeFolderButton->click();
    EXPECT_EQ(dlg.foldersList->topLevelItemCount(), 3);
    dlg.foldersList->setCurrentItem(dlg.foldersList->topLevelItem(1));
    dlg.removeFolderButton->click();
    EXPECT_EQ(rows(dlg.foldersList), QStringList({"/data/one", "/data/two\\"}));

    dlg.removeAllButton->click();
    EXPECT_EQ(dlg.foldersList->topLevelItemCount(), 0);
    dlg.downloadButton->click();
    expectBox(platform_.boxes.last(), "No Securities Selected.", "Marrowfin");
    EXPECT_TRUE(handOvers().DownloadItems.isEmpty());
}

TEST_F(Downloader, TickingFoldersAndRows) {
    makeFolders();
    DownloaderDialog dlg;
    tick(dlg.foldersList, 0, true);
    EXPECT_EQ(securityRows(dlg.securitiesList), QStringList({one + ";;|x", "Alpha;AAA;" + today + "| ",
                                                        "Adani Ports;ADANIPORTS.NS;" + lastAdani + "|x"}));
    EXPECT_EQ(dlg.selectionLabel->text(), "1 Securities Selected.");
    // The Symbol column shows the longer exchange symbols whole.
    EXPECT_LE(static_cast<QAbstractItemView*>(dlg.securitiesList)->sizeHintForColumn(1), dlg.securitiesList->header()->sectionSize(1));

    tick(dlg.foldersList, 1, true);
    EXPECT_EQ(dlg.securitiesList->topLevelItemCount(), 5);
    EXPECT_EQ(dlg.selectionLabel->text(), "2 Securities Selected.");

    // A tick set by hand survives ticking a further folder but not unticking one.
    tick(dlg.securitiesList, 1, true);
    EXPECT_EQ(dlg.selectionLabel->text(), "3 Securities Selected.");
    tick(dlg.foldersList, 1, false);
    EXPECT_EQ(dlg.securitiesList->topLevelItemCount(), 3);
    EXPECT_EQ(dlg.securitiesList->topLevelItem(1)->checkState(0), Qt::Unchecked);
    EXPECT_EQ(dlg.selectionLabel->text(), "1 Securities Selected.");

    // Unticking a folder row unticks its securities only.
    tick(dlg.foldersList, 1, true);
    tick(dlg.securitiesList, 0, false);
    EXPECT_EQ(securityRows(dlg.securitiesList).mid(0, 4), QStringList({one + ";;| ", "Alpha;AAA;" + today + "| ",
                                                                  "Adani Ports;ADANIPORTS.NS;" + lastAdani + "| ", two + ";;|x"}));
    EXPECT_EQ(dlg.selectionLabel->text(), "1 Securities Selected.");
    EXPECT_EQ(dlg.foldersList->topLevelItem(0)->checkState(0), Qt::Checked);
    tick(dlg.securitiesList, 3, false);   // the last folder row: its securities run to the list's end
    EXPECT_EQ(securityRows(dlg.securitiesList).mid(3), QStringList({two + ";;| ", "Gamma;CCC;" + Regional::dateText({2026, 1, 5}) + "| "}));
    EXPECT_EQ(dlg.selectionLabel->text(), "0 Securities Selected.");

    // Unticking every folder empties the list and says so.
    tick(dlg.foldersList, 0, false);
    tick(dlg.foldersList, 1, false);
    EXPECT_EQ(dlg.securitiesList->topLevelItemCount(), 0);
    EXPECT_EQ(dlg.selectionLabel->text(), "No Securities Selected.");
}

TEST_F(Downloader, AFolderWithoutAStoreGoesAndRemovedFoldersKeepTheirRowsUntilTheLast) {
    makeFolders();
    writeTextFile(foldersFile(), (one + "\r\n" + temp.sub("no-store") + "\r\n" + two + "\r\n").toUtf8());
    DownloaderDialog dlg;
    tick(dlg.foldersList, 0, true);
    tick(dlg.foldersList, 1, true);
    ASSERT_EQ(platform_.boxes.size(), 1);
    expectBox(platform_.boxes[0], "No MetaStock Files Found.", "Fernwoodglade");
    EXPECT_EQ(rows(dlg.foldersList), QStringList({one, two}));
    EXPECT_EQ(dlg.securitiesList->topLevelItemCount(), 3);
    EXPECT_EQ(dlg.selectionLabel->text(), "1 Securities Selected.");
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);

    tick(dlg.foldersList, 1, true);
    for (int removed = 1; removed <= 2; ++removed) {
        dlg.foldersList->setCurrentItem(dlg.foldersList->topLevelItem(0));
        dlg.removeFolderButton->click();
        EXPECT_EQ(dlg.securitiesList->topLevelItemCount(), removed == 1 ? 5 : 0);
    }
    EXPECT_EQ(dlg.selectionLabel->text(), "2 Securities Selected.");
}

// The items handed over, and the run reading back the dates the selection wrote.
class DownloaderHandOver : public Downloader, public ::testing::WithParamInterface<const char*> {};

TEST_P(DownloaderHandOver, ItemsCarryDatesTheRunReadsBack) {
    LocaleGuard locale(QString::fromLatin1(GetParam()));
    const Bar wholeNumbers{20261021, 12, 13, 11, 12, 900};   // read under a decimal comma too
    replies["ADANIPORTS.NS"] = replies["CCC"] = LoopbackReply::ok(Header + line(wholeNumbers));
    makeFolders();
    writeTextFile(foldersFile(), (two + "\r\n" + one + "\r\n").toUtf8());
    handOvers().DownloadItems.append({"OLD", "", "", ""});
    DownloaderDialog dlg;
    tick(dlg.foldersList, 1, true);   // "one" first: the order of ticking
    tick(dlg.foldersList, 0, true);
    tick(dlg.securitiesList, 1, true);   // Alpha, up to date, ticked by hand

    QStringList progressLines;
    platform_.onBox = [&](const ShownBox&) {   // the modal Download Progress window's closing box
        QWidget* progress = QApplication::activeModalWidget();
        ASSERT_NE(progress, nullptr);
        progressLines = lines(child<QListWidget>(progress, "resultsList"));
        child<QPushButton>(progress, "cancelButton")->click();
    };
    dlg.downloadButton->click();
    EXPECT_FALSE(dlg.isVisible());

    const auto& items = handOvers().DownloadItems;
    ASSERT_EQ(items.upperBound(), 3);
    const QStringList expected[] = {
        {"AAA", Regional::dateText({2026, 10, 19}), Regional::dateText({2026, 11, 24}), one},
        {"ADANIPORTS.NS", Regional::dateText({2026, 9, 15}), Regional::dateText({2026, 10, 21}), one},
        {"CCC", Regional::dateText({2025, 12, 1}), Regional::dateText({2026, 1, 6}), two},
    };
    for (int i = 1; i <= 3; ++i)
        EXPECT_EQ(QStringList({items[i].Symbol, items[i].FirstDate, items[i].NextDate, items[i].Folder}), expected[i - 1]);

    EXPECT_EQ(progressLines, QStringList({"Upto Date : AAA", "Download Complete : ADANIPORTS.NS", "Download Complete : CCC"}));
    EXPECT_EQ(server.decodedTargets(), QStringList({"/table.csv?s=ADANIPORTS.NS&d=10&e=23&f=2026&g=d&a=8&b=15&c=2026&ignore=.csv",
                                                    "/table.csv?s=CCC&d=10&e=23&f=2026&g=d&a=11&b=1&c=2025&ignore=.csv"}));
    EXPECT_EQ(readBars(one, "ADANIPORTS.NS").back(), wholeNumbers);
    EXPECT_EQ(readFileBytes(foldersFile()), (two + "\r\n" + one + "\r\n").toUtf8());   // saved on the way out
}

INSTANTIATE_TEST_SUITE_P(Locales, DownloaderHandOver, ::testing::Values("en_US", "de_DE"));

} // namespace
