// brindlemark-cli, run as a user runs it.
#include "Cli.h"
#include "StoreHelpers.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>

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
    o.flush(), e.flush();
    return {status, out, err};
}

const QString ListHeader = QStringLiteral("Symbol,Name,File,FirstDate,LastDate,Periodicity,Records\n");
const QString DumpHeader = QStringLiteral("Date,Open,High,Low,Close,Volume\n");

} // namespace

TEST(Cli, HelpAndBadUsage) {
    const CliRun help = cli({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* word : {"list", "dump", "create", "import", "check"})
        EXPECT_TRUE(help.out.contains(QString::fromLatin1(word))) << word;
    const QStringList bad[] = {{}, {"frobnicate"}, {"list"}, {"dump", "/tmp"}, {"create", "/tmp", "AAA"}, {"create", "/tmp", "--from", "20050231", "A"},
                               {"create", "/tmp", "--from", "2005-08-06", "A"}, {"import", "/tmp", "A"}, {"check"},
                               // A misspelt option is no folder or symbol; nor is a day an index takes for none.
                               {"list", "--help"}, {"download", "quotes", "/tmp", "--symbol", "A"}, {"export", "/tmp", "/tmp", "--merged"},
                               {"create", "/tmp", "--from", "19000101", "A"}};
    for (const QStringList& args : bad) {
        const CliRun r = inProcess(args);
        EXPECT_TRUE(r.status == 2 && !r.err.isEmpty() && r.out.isEmpty()) << args.join(u' ').toStdString();
    }
}

TEST(Cli, ListAndDumpAFixtureAndFailOnStandardError) {
    REQUIRE_FIXTURE("vendor-small");
    const QString folder = metastockFixture(QStringLiteral("vendor-small"));
    const CliRun list = cli({"list", folder}), dump = cli({"dump", folder, ".FCHI"});
    EXPECT_EQ(list.status + dump.status, 0) << list.err.toStdString();
    // A long name from EMASTER; the last date is the records' own (the index says 20111227).
    EXPECT_EQ(list.out, ListHeader + QStringLiteral(".DJX,1/100 Dow Jones INDU,F1,19970923,19970923,D,1\n.FCHI,CAC 40 INDICE,F2,19880819,19880822,D,2\n"
                                                    "AZM.L,AZM.L,F256,19961231,19961231,D,1\n.N225,NIKKEI 225 INDEX,F2853,19820104,19820105,D,2\n"));
    EXPECT_EQ(dump.out, DumpHeader + QStringLiteral("19880819,1308.62,1308.62,1308.62,1308.62,0\n19880822,1308.13,1308.13,1308.13,1308.13,0\n"));
    TempFolder empty;
    const std::pair<CliRun, const char*> failed[] = {{cli({"dump", folder, "NOPE"}), "NOPE"}, {cli({"list", empty.path()}), "MASTER"},
                                                     {cli({"check", empty.file(QStringLiteral("nowhere"))}), nullptr}};
    for (const auto& [r, says] : failed) {
        EXPECT_TRUE(r.status == 1 && !(r.err + r.out).isEmpty()) << r.err.toStdString();
        EXPECT_TRUE(!says || (r.err.contains(QString::fromLatin1(says)) && r.out.isEmpty())) << r.err.toStdString();
    }
    // A folder without a store is a problem to `check`, not an empty store.
    const CliRun checked = cli({"check", empty.path()});
    EXPECT_TRUE(checked.status == 1 && checked.out.contains("has no MASTER file")) << checked.out.toStdString();
}

TEST(Cli, CreateImportDumpAndCheck) {
    TempFolder folder;
    CliRun r = cli({"create", folder.path(), "--from", "20050806", "INFY", "TCS"});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(cli({"list", folder.path()}).out, ListHeader + QStringLiteral("INFY,INFY,F1,20050806,20050806,D,0\nTCS,TCS,F2,20050806,20050806,D,0\n"));
    EXPECT_TRUE(QRegularExpression("^06\\D08\\D2005\r\n$").match(QString::fromLatin1(readFileBytes(folder.file(QStringLiteral("values.dat"))))).hasMatch());
    // Written out of order, one date twice: the last one wins, records come oldest first.
    writeTextFile(folder.file(QStringLiteral("in.csv")), "Date,Open,High,Low,Close,Volume\n20050809,1.5,2,1,1.75,300\n"
                                                         "20050808,1.1,1.2,1.05,1.15,1e6\n20050809,1.25,2,1,1.75,400\n");
    r = cli({"import", folder.path(), "TCS", folder.file(QStringLiteral("in.csv"))});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(cli({"dump", folder.path(), "TCS"}).out, DumpHeader + QStringLiteral("20050808,1.1,1.2,1.05,1.15,1e+06\n20050809,1.25,2,1,1.75,400\n"));
    EXPECT_TRUE(inProcess({"list", folder.path()}).out.contains(QStringLiteral("TCS,TCS,F2,20050808,20050809,D,2\n")));
    // Creating a symbol again empties it, in a file of a number not used before.
    ASSERT_EQ(inProcess({"create", folder.path(), "--from", "20060102", "TCS"}).status, 0);
    EXPECT_TRUE(inProcess({"list", folder.path()}).out.contains(QStringLiteral("TCS,TCS,F3,20060102,20060102,D,0\n")));
    r = cli({"check", folder.path()});
    EXPECT_TRUE(r.status == 0 && r.out.contains(QStringLiteral("No inconsistency found."))) << r.out.toStdString();
    // Names with commas and quotes are quoted in the list.
    writeFolder(folder.path(), [](SecurityWriter& w) { w.ChangeSecurity(QStringLiteral("INFY"), QStringLiteral("Smith, Jones \"and\" Co"), QStringLiteral("INFY")); });
    EXPECT_TRUE(inProcess({"list", folder.path()}).out.contains(QStringLiteral("INFY,\"Smith, Jones \"\"and\"\" Co\",F1,")));
    // A symbol the store refuses leaves every other one as it was, the one before it too.
    const QString listed = inProcess({"list", folder.path()}).out;
    r = inProcess({"create", folder.path(), "--from", "20060102", "INFY", "NEW", "\u65E5\u672C"});
    EXPECT_TRUE(r.status == 1 && r.err.contains("cannot hold")) << r.err.toStdString();
    EXPECT_EQ(inProcess({"list", folder.path()}).out, listed);
    // A bad file is refused, and nothing of it is written.
    const QByteArray before = readFileBytes(folder.file(QStringLiteral("F1.DAT")));
    for (const char* rows : {"", "Date;Open;High;Low;Close;Volume\n20050808,1,1,1,1,1\n", "20050808,1,1,1,1,1\n20050809,1,1,1,1\n", "20050832,1,1,1,1,1\n",
                             "20050808,1,one,1,1,1\n", "20050808,1,1,1,1,1\n20050809,1,1,1,1,1\n20050810,1e39,1,1,1,1\n"}) {
        writeTextFile(folder.file(QStringLiteral("bad.csv")), rows[0] == 'D' || !rows[0] ? QByteArray(rows) : DumpHeader.toLatin1() + rows);
        r = inProcess({"import", folder.path(), "INFY", folder.file(QStringLiteral("bad.csv"))});
        EXPECT_TRUE(r.status == 1 && !r.err.isEmpty()) << rows;
        EXPECT_EQ(readFileBytes(folder.file(QStringLiteral("F1.DAT"))), before);
    }
    // `check` reports a missing data file, and notes what an unpacking left.
    QFile::remove(folder.file(QStringLiteral("F3.DAT")));
    writeTextFile(folder.file(QStringLiteral(".bm-Ab12Cd.part")), "half");
    r = inProcess({"check", folder.path()});
    EXPECT_TRUE(r.status == 1 && r.out.contains(QStringLiteral("problem: F3.DAT (TCS): the data file is missing"))) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(".bm-Ab12Cd.part: a temporary file left by an unpacking") && r.out.endsWith("\n1 inconsistency found.\n"))
        << r.out.toStdString();
    // Whatever the output could not take is a failure.
    if (!QFile::exists(QStringLiteral("/dev/full")))
        return;
    QProcess full;
    full.setStandardOutputFile(QStringLiteral("/dev/full"));
    full.start(QStringLiteral(BM_CLI_PATH), {"list", folder.path()});
    ASSERT_TRUE(full.waitForFinished(30000));
    EXPECT_EQ(full.exitCode(), 1);
    EXPECT_TRUE(full.readAllStandardError().contains("could not be written"));
}

TEST(Cli, CheckReportsEveryInconsistency) {
    REQUIRE_FIXTURE("third-party");
    const CliRun r = cli({"check", metastockFixture(QStringLiteral("third-party"))});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.out.contains(QStringLiteral("problem: F15.DAT (OV): 1 record comes before the record ahead of it"))) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(QStringLiteral("problem: F15.DAT (OV): 1 record repeats the date of the record ahead of it")));
    EXPECT_TRUE(r.out.contains(QStringLiteral("note: MASTER: 53 bytes past its last security record")));
    // Two records of one day at different times are in order.
    const CliRun intraday = cli({"check", metastockFixture(QStringLiteral("intraday"))});
    EXPECT_EQ(intraday.status, 0) << intraday.out.toStdString();
    // The same two the other way round are not.
    TempFolder swapped;
    ASSERT_TRUE(copyFixture("intraday", swapped.path()));
    const QByteArray data = readFileBytes(swapped.file("F1.DAT"));
    writeTextFile(swapped.file("F1.DAT"), data.left(28) + data.mid(56, 28) + data.mid(28, 28));
    const CliRun out = cli({"check", swapped.path()});
    EXPECT_TRUE(out.status == 1 && out.out.contains("1 record comes before")) << out.out.toStdString();
    writeTextFile(swapped.file("F1.DAT"), data.left(56) + data.mid(28, 28));   // one bar twice
    EXPECT_TRUE(cli({"check", swapped.path()}).out.contains("1 record repeats the date of the record ahead of it"));
    // An EMASTER that counts fewer securities than MASTER.
    TempFolder counted;
    ASSERT_TRUE(copyFixture("vendor-small", counted.path()));
    writeTextFile(counted.file("EMASTER"), readFileBytes(counted.file("EMASTER")).replace(0, 1, "\x01"));
    const CliRun short_ = cli({"check", counted.path()});
    EXPECT_TRUE(short_.out.contains("note: EMASTER: no record for F2.DAT\nnote: EMASTER: 1 record, MASTER 2\n")) << short_.out.toStdString();
}
