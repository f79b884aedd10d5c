// Convert To CSV File: the bytes of merged and separate output of a real data folder against files
// checked by hand, the text of one record line under several locales, and what the user sees when
// a field is empty, nothing is marked, a security has no records or a file cannot be written.

#include "../store/StoreHelpers.h"
#include "Cli.h"
#include "export/CsvConversion.h"
#include "export/CsvText.h"
#include "export/ui/ConvertToCsvWindow.h"
#include "frame/Failure.h"
#include "support/ProgressRecorder.h"
#include "support/ScriptedPlatform.h"
#include "support/TestSupport.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QToolButton>

#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <memory>
#include <string>

namespace {

// Three securities of the vendor's folder, one of its first index file and two of its extended one:
// the same price four times, prices below a hundredth, prices of four decimals and volumes in the
// millions.
const QStringList Chosen = {QStringLiteral("NR"), QStringLiteral("WSN10"), QStringLiteral("TES")};

// The merged output of the three, en_GB, checked by hand and against the data files' bytes read
// another way. The other outputs are the same records:
// under de_DE with the date's dots and the decimal comma, and separately without the symbol column.
QByteArray checkedMerged(bool decimalComma) {
    QFile file(QDir(QStringLiteral(EXPORT_EXPECTED_DIR)).filePath(QStringLiteral("merged-en_GB.csv")));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray bytes = file.readAll();
    if (decimalComma) {
        const qsizetype body = bytes.indexOf('\n') + 1;
        bytes = bytes.left(body) + bytes.mid(body).replace('.', ',').replace('/', '.');
    }
    return bytes;
}

class ConvertToCsv : public ::testing::Test {
protected:
    ScriptedPlatform platform;
    TempFolder temp;
    ProgressRecorder progress;
    std::unique_ptr<ConvertToCsvWindow> window = std::make_unique<ConvertToCsvWindow>();

    void chooseDataFolder(const QString& path) {
        platform.chooseNext(path);
        window->dataFolderButton->click();
    }
    QStringList listed() const {
        QStringList lines;
        for (int i = 0; i < window->symbolsList->count(); ++i)
            lines << window->symbolsList->item(i)->text();
        return lines;
    }
    void mark(const QStringList& symbols) {
        for (const QString& symbol : symbols) {
            const auto found = window->symbolsList->findItems(symbol, Qt::MatchExactly);
            ASSERT_EQ(found.size(), 1) << symbol.toStdString();
            found.first()->setSelected(true);
        }
    }
    QStringList written() const { return QDir(temp.sub("out")).entryList(QDir::Files, QDir::Name); }
};

// --- a real folder, byte for byte ---

TEST_F(ConvertToCsv, MergedOutputOfTheVendorsFolderThroughTheScreen) {
    REQUIRE_FIXTURE("vendor-xmaster");
    chooseDataFolder(metastockFixture("vendor-xmaster"));
    // Every security, in the reader's order.
    QStringList inStore;
    for (const Listed& l : listFolder(metastockFixture("vendor-xmaster")))
        inStore << l.symbol;
    EXPECT_EQ(inStore.size(), 462);
    EXPECT_EQ(listed(), inStore);
    mark(Chosen);
    platform.chooseNext(temp.sub("out"));
    window->destinationButton->click();
    window->mergeCheck->setChecked(true);
    window->convertButton->click();

    EXPECT_EQ(platform.boxTexts(), QStringList{"Conversion Completed."});
    EXPECT_EQ(platform.boxes.value(0).title, ProgramTitle);
    EXPECT_EQ(written(), QStringList{"data.csv"});
    EXPECT_TRUE(readFileBytes(temp.file("out/data.csv")) == checkedMerged(false));
    // Each security: the window up with its message and range, one step a record, never asked
    // for a cancel, taken down at the end.
    EXPECT_EQ(progress.calls.count("Hide"), 3);
    EXPECT_EQ(progress.calls.count("SetMessage Converting Security"), 3);
    EXPECT_EQ(progress.cancelQuestions, 0);
    EXPECT_EQ(progress.calls.first(), "OfferCancel 0");   // nor is a Cancel button shown
    EXPECT_EQ(progress.calls.last(), "Hide");
    // The screen stays as it was.
    EXPECT_EQ(window->symbolsList->selectedItems().size(), 3);
    EXPECT_TRUE(window->mergeCheck->isChecked());
}

TEST_F(ConvertToCsv, SeparateOutputAndMergedUnderADecimalComma) {
    REQUIRE_FIXTURE("vendor-xmaster");
    CsvConversion conversion;
    conversion.convert(metastockFixture("vendor-xmaster"), " " + temp.sub("out") + " ", Chosen, false);
    EXPECT_EQ(written(), (QStringList{"NR.csv", "TES.csv", "WSN10.csv"}));
    for (const QString& symbol : Chosen) {
        QByteArray separate = "Date,Open,High,Low,Close,Volume\r\n";
        for (const QByteArray& line : checkedMerged(false).split('\n'))
            if (line.startsWith(symbol.toLatin1() + ','))
                separate += line.mid(symbol.size() + 1) + '\n';
        EXPECT_TRUE(readFileBytes(temp.file("out/" + symbol + ".csv")) == separate) << symbol.toStdString();
    }
    LocaleGuard locale(QStringLiteral("de_DE"));
    conversion.convert(metastockFixture("vendor-xmaster"), temp.sub("out"), Chosen, true);
    EXPECT_TRUE(readFileBytes(temp.file("out/data.csv")) == checkedMerged(true));
}

// --- the code page ---

// Where the locale names no code page of its own ("C"), text is written in Windows-1252: its own
// characters at 0x80..0x9F, Latin-1 above, "?" for the rest.
TEST(CodePageText, Windows1252WhereTheLocaleNamesNone) {
    const std::string before = std::setlocale(LC_CTYPE, nullptr);
    std::setlocale(LC_CTYPE, "C");
    const CodePage page;
    std::setlocale(LC_CTYPE, before.c_str());
    EXPECT_EQ(page.name(), "windows-1252");
    EXPECT_EQ(page.encode(u"A\u20AC\u0152\u00E9\u0080\u0100").toHex(' '), QByteArray("A\x80\x8C\xE9??").toHex(' '));
}

// --- one record line ---

struct LineCase {
    const char* locale;
    qint32 date;
    std::array<double, 5> values;
    const char* line;
};
void PrintTo(const LineCase& c, std::ostream* out) { *out << c.locale << ' ' << c.date << ' ' << c.line; }

class RecordLine : public ::testing::TestWithParam<LineCase> {};

TEST_P(RecordLine, IsTheDateTextAndTheShortestNumbers) {
    LocaleGuard locale(QString::fromLatin1(GetParam().locale));
    const CsvText text;
    QByteArray line;
    text.appendRecord("SYM,", GetParam().date, GetParam().values, line);
    EXPECT_EQ(line.toStdString(), std::string(GetParam().line) + "\r\n");
}

INSTANTIATE_TEST_SUITE_P(
    Locales, RecordLine,
    ::testing::Values(
        LineCase{"en_GB", 20050806, {12.34f, 1234.5, 0.00390625, 100, 1500000}, "SYM,06/08/2005,12.34,1234.5,0.00390625,100,1500000"},
        LineCase{"de_DE", 20050806, {12.34f, 1234.5, 0.00390625, 100, 1500000}, "SYM,06.08.2005,12,34,1234,5,0,00390625,100,1500000"},
        LineCase{"en_US", 20050806, {12.34f, 1234.5, 0.00390625, 100, 1500000}, "SYM,8/6/2005,12.34,1234.5,0.00390625,100,1500000"},
        // No date: "N/A" in every locale.
        LineCase{"de_DE", 0, {1, 2, 3, 4, 5}, "SYM,N/A,1,2,3,4,5"},
        // A date no calendar has, from another program's file: as the date text gives it.
        LineCase{"en_GB", 20050260, {1, 2, 3, 4, 5}, "SYM,60/3/2005,1,2,3,4,5"},
        // Negative values, -0, a volume past the float's exact digits, values far from 1, and a
        // value that is no single-precision number (15 significant digits).
        LineCase{"en_GB", 19991231, {-0.5, -0.0, 123456792.0, 1e-5f, 0.1}, "SYM,31/12/1999,-0.5,0,123456792,1E-05,0.1"},
        LineCase{"de_DE", 20000101, {0.0001f, 99999.99f, 1e20f, -7.25, 2.0 / 3}, "SYM,01.01.2000,0,0001,99999,99,1E+20,-7,25,0,666666666666667"},
        // The shortest digits where they are many, where fewer than the float's own read back
        // (4194303.75 is 4194303.8), and with zeros after the separator.
        LineCase{"en_GB", 21000301, {8388607.5f, 0.00012345f, -1234.5677f, 4194303.75f, 1.0000001f},
                 "SYM,01/03/2100,8388607.5,0.00012345,-1234.5677,4194303.8,1.0000001"},
        LineCase{"de_DE", 20240229, {999999.94f, -0.0123f, 0.0009765625f, 100.01f, 3.1415927f},
                 "SYM,29.02.2024,999999,94,-0,0123,0,0009765625,100,01,3,1415927"}));

// --- the user's path ---

TEST_F(ConvertToCsv, EmptyFieldsAskForTheFolderAndStop) {
    window->show();
    expectControlsLaidOut(window.get());
    // The data folder first: its box, then the chooser, which the user cancels.
    window->destinationEdit->setText(temp.sub("out"));
    window->convertButton->click();
    EXPECT_EQ(platform.boxTexts(), QStringList{"Data Folder is empty"});
    EXPECT_EQ(platform.boxes.value(0).icon, MsgIcon::Information);
    EXPECT_EQ(platform.chooserTitles, QStringList{"Select the Data Folder"});

    // The list fills only through the chooser; a cancelled choice empties the field and keeps it.
    TempFolder store;
    makeSecurity(store.path(), "BHP", {20050804});
    window->dataFolderEdit->setText(store.path());
    EXPECT_EQ(window->symbolsList->count(), 0);
    chooseDataFolder(store.path());
    EXPECT_EQ(listed(), QStringList{"BHP"});
    window->dataFolderButton->click();   // cancelled
    EXPECT_EQ(window->dataFolderEdit->text(), "");
    EXPECT_EQ(listed(), QStringList{"BHP"});

    window->dataFolderEdit->setText(store.path());
    window->destinationEdit->setText("  ");
    platform.chooseNext(temp.sub("out"));
    window->convertButton->click();
    EXPECT_EQ(platform.boxTexts(), (QStringList{"Data Folder is empty", "Destination folder is empty"}));
    EXPECT_EQ(platform.chooserTitles.last(), "Select the Destination Folder");
    EXPECT_EQ(window->destinationEdit->text(), temp.path() + "/out");
    EXPECT_TRUE(written().isEmpty()) << "the conversion does not go on by itself";
}

TEST_F(ConvertToCsv, NothingMarkedMakesAnEmptyMergedFileAndNoRecordsAHeaderOnly) {
    const QString store = temp.sub("store");
    makeSecurity(store, "EMPTY", {});
    makeSecurity(store, "ONE", {20050804});
    writeTextFile(temp.sub("out") + "/data.csv", "old contents\r\n");
    writeTextFile(temp.file("out/EMPTY.csv"), "old contents that are longer than the new\r\n");
    CsvConversion conversion;
    for (bool merge : {true, false})
        conversion.convert(store, temp.file("out"), {}, merge);
    EXPECT_EQ(written(), (QStringList{"EMPTY.csv", "data.csv"}));
    EXPECT_EQ(readFileBytes(temp.file("out/data.csv")), QByteArray());
    conversion.convert(store, temp.file("out"), {"EMPTY", "ONE"}, false);
    EXPECT_EQ(readFileBytes(temp.file("out/EMPTY.csv")), "Date,Open,High,Low,Close,Volume\r\n");
    conversion.convert(store, temp.file("out"), {"EMPTY", "ONE"}, true);
    EXPECT_EQ(readFileBytes(temp.file("out/data.csv")),
              "Symbol,Date,Open,High,Low,Close,Volume\r\n"
              "Symbol,Date,Open,High,Low,Close,Volume\r\n"
              "ONE,04/08/2005,75,77,74,76,1804\r\n");
}

// --- failures ---

TEST_F(ConvertToCsv, AFileThatCannotBeWrittenStopsWithABoxNamingIt) {
    makeSecurity(temp.sub("store"), "BHP", {20050804});
    writeTextFile(temp.file("notafolder"), "a file where a folder should be");
    // A full disk: the merged file leads to the system's device that refuses every write.
    QFile::link(QStringLiteral("/dev/full"), temp.sub("full") + "/data.csv");
    chooseDataFolder(temp.file("store"));
    mark({"BHP"});
    // A file not made in the loop over the securities, and one not written at the end.
    for (const auto& [destination, merge] : {std::pair{QStringLiteral("notafolder"), false}, std::pair{QStringLiteral("full"), true}}) {
        SCOPED_TRACE(destination.toStdString());
        platform.boxes.clear();
        progress.calls.clear();
        window->destinationEdit->setText(temp.file(destination));
        window->mergeCheck->setChecked(merge);
        window->convertButton->click();
        ASSERT_EQ(platform.boxes.size(), 1);
        EXPECT_EQ(platform.boxes[0].icon, MsgIcon::Critical);
        EXPECT_EQ(platform.boxes[0].title, ProgramTitle);
        EXPECT_TRUE(platform.boxes[0].text.contains(QDir::toNativeSeparators(temp.file(destination + (merge ? "/data.csv" : "/BHP.csv")))))
            << platform.boxes[0].text.toStdString();
        EXPECT_TRUE(platform.boxes[0].text.startsWith(merge ? "The file could not be written: " : "The file could not be created: "))
            << platform.boxes[0].text.toStdString();
        EXPECT_EQ(progress.calls.last(), "Hide");
    }
}

TEST_F(ConvertToCsv, AFailureHalfWayKeepsWhatWasWritten) {
    const QString store = temp.sub("store");
    makeSecurity(store, "BHP", {20050804});
    makeSecurity(store, "A/B", {20050804});
    CsvConversion conversion;
    for (const QString& second : {QStringLiteral("GONE"), QStringLiteral("A/B")}) {
        QFile::remove(temp.sub("out") + "/BHP.csv");
        try {
            conversion.convert(store, temp.file("out"), {"BHP", second, "BHP"}, false);
            ADD_FAILURE() << "no failure for " << second.toStdString();
        } catch (const Failure& failure) {
            EXPECT_TRUE(failure.Description.contains(second)) << failure.Description.toStdString();
        }
        EXPECT_EQ(readFileBytes(temp.file("out/BHP.csv")), "Date,Open,High,Low,Close,Volume\r\n04/08/2005,75,77,74,76,1804\r\n");
        EXPECT_EQ(progress.calls.last(), "Hide");
    }
    // Merged, the file holds what came before the failure.
    EXPECT_THROW(conversion.convert(store, temp.file("out"), {"BHP", "GONE"}, true), Failure);
    EXPECT_EQ(readFileBytes(temp.file("out/data.csv")),
              "Symbol,Date,Open,High,Low,Close,Volume\r\nBHP,04/08/2005,75,77,74,76,1804\r\n");
}

// --- brindlemark-cli export: the same files without a screen, and --iso for other programs ---

int run(const QStringList& arguments, QString& outText) {
    QString errText;
    QTextStream out(&outText), err(&errText);
    return runCli(arguments, out, err);
}

TEST_F(ConvertToCsv, CliIsoFilesReadTheSameInEveryLocaleAndUsageIsChecked) {
    const QString data = temp.sub("data"), dest = temp.path() + "/out";
    makeSecurity(data, "AAA", {20050805, 20050806});
    makeSecurity(data, "BBB", {});
    for (const char* locale : {"de_DE", "en_US"}) {
        LocaleGuard pinned(QString::fromLatin1(locale));
        QString out;
        ASSERT_EQ(run({"export", data, dest, "--merge", "--iso"}, out), 0) << locale;
        EXPECT_EQ(readFileBytes(dest + "/data.csv"),
                  "Symbol,Date,Open,High,Low,Close,Volume\r\n"
                  "AAA,2005-08-05,75.25,77.25,74.25,76.25,1805\r\n"
                  "AAA,2005-08-06,75.5,77.5,74.5,76.5,1806\r\n"
                  "Symbol,Date,Open,High,Low,Close,Volume\r\n")
            << locale;
        EXPECT_EQ(out, "AAA 2 records " + QDir::toNativeSeparators(dest + "/data.csv") + "\nBBB 0 records "
                           + QDir::toNativeSeparators(dest + "/data.csv") + "\n");
    }
    LocaleGuard german(QStringLiteral("de_DE"));
    QString out;
    ASSERT_EQ(run({"export", data, dest, "--symbols", "aaa"}, out), 0);   // the store's symbol, whatever the case typed
    EXPECT_EQ(QDir(dest).entryList({"*a*.csv"}, QDir::Files | QDir::CaseSensitive), QStringList{"data.csv"});
    EXPECT_EQ(readFileBytes(dest + "/AAA.csv"),
              "Date,Open,High,Low,Close,Volume\r\n05.08.2005,75,25,77,25,74,25,76,25,1805\r\n06.08.2005,75,5,77,5,74,5,76,5,1806\r\n");
    EXPECT_EQ(run({"export", data}, out), 2);
    EXPECT_EQ(run({"export", data, dest, "--symbols"}, out), 2);
    EXPECT_EQ(run({"export", data, dest, "--symbols", ","}, out), 2);   // no symbol named is not "all of them"
    // A folder that can't be read, or a symbol it lacks, makes and writes nothing.
    EXPECT_EQ(run({"export", temp.path() + "/none", temp.path() + "/made"}, out), 1);
    EXPECT_EQ(run({"export", data, temp.path() + "/made", "--symbols", "AAA,ZZZ"}, out), 1);
    EXPECT_FALSE(QFileInfo::exists(temp.path() + "/made"));
}

} // namespace
