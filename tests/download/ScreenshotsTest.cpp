// Pictures of the two screens for a person to look at; runs only when BM_SCREENSHOT_DIR is set.

#include "DownloadFolders.h"

#include "download/ServiceAddresses.h"
#include "download/clsDailyQuotes.h"
#include "download/ui/frmDownload.h"
#include "download/ui/frmDownloadProgress.h"
#include "frame/Module1.h"
#include "frame/Regional.h"
#include "support/LoopbackHttpServer.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QLineEdit>
#include <QPixmap>
#include <QTreeWidget>

#include <gtest/gtest.h>

TEST(Screenshots, DownloaderAndProgress) {
    const QString target = qEnvironmentVariable("BM_SCREENSHOT_DIR");
    if (target.isEmpty())
        GTEST_SKIP() << "set BM_SCREENSHOT_DIR to take the pictures";
    ScriptedPlatform platform_;
    platform_.todayDate = QDate(2026, 11, 23);
    TempFolder temp;
    const QString folder = temp.sub("Stocks");
    makeSecurity(folder, "IBM", "International Business Machines", {bar(20261001, 10), bar(20261120, 11)});
    makeSecurity(folder, "MSFT", "Microsoft", {bar(20261123, 20)});
    makeSecurity(folder, "^GSPC", "S&P 500", {bar(20261016, 30)});
    makeSecurity(folder, "XYZ", "Delisted Co", {bar(20250101, 5)});
    writeTextFile(QDir(platform_.programDir.path()).filePath("folders.txt"),
                  (folder + "\r\n/home/user/Empty folder\r\n").toUtf8());

    frmDownload dlg;
    dlg.show();
    dlg.Text1->setText(folder);
    dlg.ListView2->topLevelItem(0)->setCheckState(0, Qt::Checked);
    dlg.grab().save(QDir(target).filePath("downloader.png"));

    LoopbackHttpServer server;
    server.setHandler([](const QByteArray& request) {
        if (request.contains("s=XYZ"))
            return LoopbackReply::ok("Date,Open,High,Low,Close,Volume,Adj Close\n");
        return LoopbackReply::ok("Date,Open,High,Low,Close,Volume,Adj Close\n"
                                 "2026-11-20,12,13,11,12.5,900,12.5\n2026-11-19,11,12,10,11.5,800,11.5\n");
    });
    ServiceAddresses::setYahooQuotes(server.endpoint());
    clsDailyQuotes::setTracePath(temp.file("t.txt"));
    const char* symbols[] = {"IBM", "MSFT", "^GSPC", "XYZ"};
    const QDate lasts[] = {{2026, 11, 20}, {2026, 11, 23}, {2026, 10, 16}, {2025, 1, 1}};
    for (int i = 0; i < 4; ++i)
        Module1::DownloadItems.append({symbols[i], Regional::dateText(lasts[i].addDays(-35)),
                                       Regional::dateText(lasts[i].addDays(1)), folder});
    frmDownloadProgress progress;
    progress.Form_Load();
    progress.grab().save(QDir(target).filePath("download-progress.png"));
    ServiceAddresses::setYahooQuotes({});
    clsDailyQuotes::setTracePath({});
}
