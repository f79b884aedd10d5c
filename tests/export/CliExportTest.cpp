// brindlemark-cli export: the files of Tools > Convert without a screen, and --iso for other
// programs whatever the regional settings.
#include "Cli.h"

#include "store/SecurityWriter.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace {

int run(const QStringList& arguments, QString& outText) {
    QString errText;
    QTextStream out(&outText), err(&errText);
    return runCli(arguments, out, err);
}

TEST(CliExport, IsoFilesReadTheSameInEveryLocaleAndUsageIsChecked) {
    ScriptedPlatform platform;
    TempFolder temp;
    const QString data = temp.sub("data"), dest = temp.path() + "/out";
    {
        SecurityWriter writer;
        writer.OpenFolder(data);
        writer.CreateSecurity("AAA", "Alpha", 1);
        writer.AddQuote(20050806, 0, 12.34, 1234.5, 0.5, 1000.25, 1500000, 0);
        writer.AddQuote(20050805, 0, 10, 11, 9, 10.5, 100, 0);
        writer.SaveQuotes();
        writer.CloseSecurity();
        writer.CreateSecurity("BBB", "Beta", 1);
        writer.CloseFolder();
    }
    for (const char* locale : {"de_DE", "en_US"}) {
        LocaleGuard pinned(QString::fromLatin1(locale));
        QString out;
        ASSERT_EQ(run({"export", data, dest, "--merge", "--iso"}, out), 0) << locale;
        EXPECT_EQ(readFileBytes(dest + "/data.csv"),
                  "Symbol,Date,Open,High,Low,Close,Volume\r\n"
                  "AAA,2005-08-05,10,11,9,10.5,100\r\n"
                  "AAA,2005-08-06,12.34,1234.5,0.5,1000.25,1500000\r\n"
                  "Symbol,Date,Open,High,Low,Close,Volume\r\n")
            << locale;
        EXPECT_EQ(out, "AAA 2 records " + QDir::toNativeSeparators(dest + "/data.csv") + "\nBBB 0 records "
                           + QDir::toNativeSeparators(dest + "/data.csv") + "\n");
    }
    LocaleGuard german(QStringLiteral("de_DE"));
    QString out;
    ASSERT_EQ(run({"export", data, dest, "--symbols", "AAA"}, out), 0);
    EXPECT_EQ(readFileBytes(dest + "/AAA.csv"),
              "Date,Open,High,Low,Close,Volume\r\n05.08.2005,10,11,9,10,5,100\r\n06.08.2005,12,34,1234,5,0,5,1000,25,1500000\r\n");
    EXPECT_EQ(run({"export", data}, out), 2);
    EXPECT_EQ(run({"export", data, dest, "--symbols"}, out), 2);
    EXPECT_EQ(run({"export", temp.path() + "/none", dest}, out), 1);
}

} // namespace
