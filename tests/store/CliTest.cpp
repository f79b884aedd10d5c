// brindlemark-cli, run as a user runs it.
#include "Cli.h"
#include "StoreHelpers.h"
#include "support/TestSupport.h"

#include <QProcess>

namespace {

struct CliRun {
    int status;
    QString out, err;
};

CliRun cli(const QStringList& arguments) {
    QProcess p;
    p.start(QStringLiteral(BM_CLI_PATH), arguments);
    EXPECT_TRUE(p.waitForFinished(30000));
    return {p.exitCode(), QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError())};
}

// The same commands in-process, for the many small cases.
CliRun inProcess(const QStringList& arguments) {
    QString out, err;
    QTextStream o(&out), e(&err);
    const int status = runCli(arguments, o, e);
    o.flush();
    e.flush();
    return {status, out, err};
}

} // namespace

TEST(Cli, HelpAndBadUsage) {
    const CliRun help = cli({QStringLiteral("--help")});
    EXPECT_EQ(help.status, 0);
    for (const char* word : {"list", "dump", "create", "import", "check"})
        EXPECT_TRUE(help.out.contains(QString::fromLatin1(word))) << word;

    const QStringList bad[] = {
        {},
        {QStringLiteral("frobnicate")},
        {QStringLiteral("list")},
        {QStringLiteral("dump"), QStringLiteral("/tmp")},
        {QStringLiteral("create"), QStringLiteral("/tmp"), QStringLiteral("AAA")},
        {QStringLiteral("create"), QStringLiteral("/tmp"), QStringLiteral("--from"), QStringLiteral("20050231"), QStringLiteral("A")},
        {QStringLiteral("create"), QStringLiteral("/tmp"), QStringLiteral("--from"), QStringLiteral("2005-08-06"), QStringLiteral("A")},
        {QStringLiteral("import"), QStringLiteral("/tmp"), QStringLiteral("A")},
        {QStringLiteral("check")},
    };
    for (const QStringList& args : bad) {
        const CliRun r = inProcess(args);
        EXPECT_EQ(r.status, 2) << args.join(QLatin1Char(' ')).toStdString();
        EXPECT_FALSE(r.err.isEmpty());
        EXPECT_TRUE(r.out.isEmpty());
    }
    EXPECT_EQ(cli({QStringLiteral("frobnicate")}).status, 2);
}

TEST(Cli, ListAndDumpAFixture) {
    REQUIRE_FIXTURE("vendor-small");
    const QString folder = metastockFixture(QStringLiteral("vendor-small"));
    const CliRun list = cli({QStringLiteral("list"), folder});
    EXPECT_EQ(list.status, 0) << list.err.toStdString();
    EXPECT_EQ(list.out, QStringLiteral("Symbol,Name,File,FirstDate,LastDate,Periodicity,Records\n"
                                       ".DJX,1/100 Dow Jones INDU,F1,19970923,19970923,D,1\n"
                                       ".FCHI,CAC 40 INDICE,F2,19880819,19880822,D,2\n"
                                       "AZM.L,AZM.L,F256,19961231,19961231,D,1\n"
                                       ".N225,NIKKEI 225 INDEX,F2853,19820104,19820105,D,2\n"));
    const CliRun dump = cli({QStringLiteral("dump"), folder, QStringLiteral(".FCHI")});
    EXPECT_EQ(dump.status, 0);
    EXPECT_EQ(dump.out, QStringLiteral("Date,Open,High,Low,Close,Volume\n"
                                       "19880819,1308.62,1308.62,1308.62,1308.62,0\n"
                                       "19880822,1308.13,1308.13,1308.13,1308.13,0\n"));
    const CliRun missing = cli({QStringLiteral("dump"), folder, QStringLiteral("NOPE")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains(QStringLiteral("NOPE")));
    EXPECT_TRUE(missing.out.isEmpty());
}

TEST(Cli, FailuresGoToStandardError) {
    TempFolder folder;
    const CliRun r = cli({QStringLiteral("list"), folder.path()});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.err.contains(QStringLiteral("MASTER"))) << r.err.toStdString();
    EXPECT_TRUE(r.out.isEmpty());
    EXPECT_EQ(cli({QStringLiteral("check"), folder.file(QStringLiteral("nowhere"))}).status, 1);
}

TEST(Cli, CreateImportDumpAndCheck) {
    TempFolder folder;
    CliRun r = cli({QStringLiteral("create"), folder.path(), QStringLiteral("--from"), QStringLiteral("20050806"),
                 QStringLiteral("INFY"), QStringLiteral("TCS")});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(cli({QStringLiteral("list"), folder.path()}).out,
              QStringLiteral("Symbol,Name,File,FirstDate,LastDate,Periodicity,Records\n"
                             "INFY,INFY,F1,20050806,20050806,D,0\n"
                             "TCS,TCS,F2,20050806,20050806,D,0\n"));

    // Written out of order, one date twice: the last one wins, records come oldest first.
    writeTextFile(folder.file(QStringLiteral("in.csv")), "Date,Open,High,Low,Close,Volume\n"
                                                         "20050809,1.5,2,1,1.75,300\n"
                                                         "20050808,1.1,1.2,1.05,1.15,1e6\n"
                                                         "20050809,1.25,2,1,1.75,400\n");
    r = cli({QStringLiteral("import"), folder.path(), QStringLiteral("TCS"), folder.file(QStringLiteral("in.csv"))});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(cli({QStringLiteral("dump"), folder.path(), QStringLiteral("TCS")}).out,
              QStringLiteral("Date,Open,High,Low,Close,Volume\n"
                             "20050808,1.1,1.2,1.05,1.15,1e+06\n"
                             "20050809,1.25,2,1,1.75,400\n"));
    // Creating a symbol again empties it.
    ASSERT_EQ(cli({QStringLiteral("create"), folder.path(), QStringLiteral("--from"), QStringLiteral("20060102"),
                   QStringLiteral("TCS")}).status, 0);
    EXPECT_TRUE(cli({QStringLiteral("list"), folder.path()}).out.contains(QStringLiteral("TCS,TCS,F3,20060102,20060102,D,0\n")));

    r = cli({QStringLiteral("check"), folder.path()});
    EXPECT_EQ(r.status, 0) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(QStringLiteral("No inconsistency found.")));
}

TEST(Cli, ImportRefusesABadFileAndWritesNothing) {
    TempFolder folder;
    ASSERT_EQ(inProcess({QStringLiteral("create"), folder.path(), QStringLiteral("--from"), QStringLiteral("20050806"),
                         QStringLiteral("AAA")}).status, 0);
    const QByteArray before = readFileBytes(folder.file(QStringLiteral("F1.DAT")));
    const QByteArray files[] = {
        "Date;Open;High;Low;Close;Volume\n20050808,1,1,1,1,1\n",
        "Date,Open,High,Low,Close,Volume\n20050808,1,1,1,1,1\n20050809,1,1,1,1\n",
        "Date,Open,High,Low,Close,Volume\n20050832,1,1,1,1,1\n",
        "Date,Open,High,Low,Close,Volume\n20050808,1,one,1,1,1\n",
    };
    for (const QByteArray& content : files) {
        writeTextFile(folder.file(QStringLiteral("bad.csv")), content);
        const CliRun r = inProcess({QStringLiteral("import"), folder.path(), QStringLiteral("AAA"), folder.file(QStringLiteral("bad.csv"))});
        EXPECT_EQ(r.status, 1) << content.toStdString();
        EXPECT_FALSE(r.err.isEmpty());
        EXPECT_EQ(readFileBytes(folder.file(QStringLiteral("F1.DAT"))), before);
    }
}

TEST(Cli, ListQuotesNamesWithCommasAndQuotes) {
    TempFolder folder;
    {
        SecurityWriter w;
        w.OpenFolder(folder.path());
        w.CreateSecurity(QStringLiteral("AB"), QStringLiteral("Smith, Jones \"and\" Co"), 1);
        w.CloseFolder();
    }
    EXPECT_EQ(inProcess({QStringLiteral("list"), folder.path()}).out,
              QStringLiteral("Symbol,Name,File,FirstDate,LastDate,Periodicity,Records\n"
                             "AB,\"Smith, Jones \"\"and\"\" Co\",F1,0,0,D,0\n"));
}

TEST(Cli, CheckReportsEveryInconsistency) {
    REQUIRE_FIXTURE("third-party");
    const CliRun r = cli({QStringLiteral("check"), metastockFixture(QStringLiteral("third-party"))});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.out.contains(QStringLiteral("problem: F15.DAT (OV): 1 records come before the record ahead of them")))
        << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(QStringLiteral("problem: F15.DAT (OV): 1 records repeat the date")));

    TempFolder folder;
    ASSERT_EQ(inProcess({QStringLiteral("create"), folder.path(), QStringLiteral("--from"), QStringLiteral("20050806"),
                         QStringLiteral("AAA"), QStringLiteral("BBB")}).status, 0);
    QFile::remove(folder.file(QStringLiteral("F2.DAT")));
    const CliRun gone = inProcess({QStringLiteral("check"), folder.path()});
    EXPECT_EQ(gone.status, 1);
    EXPECT_TRUE(gone.out.contains(QStringLiteral("problem: F2.DAT (BBB): the data file is missing")));

    for (const float v : {0.1f, 1308.62f, 1e-4f, 61000000.0f, 123456.789f, -2.5f, 0.0f})
        EXPECT_EQ(shortestFloatText(v).toFloat(), v) << v;
    EXPECT_EQ(shortestFloatText(0.1f), QStringLiteral("0.1"));
}
