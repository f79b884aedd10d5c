#include "Cli.h"

#include "DownloadCommands.h"
#include "ExportCommand.h"

#include "catalogue/CreateSymbols.h"
#include "download/ServiceAddresses.h"
#include "frame/Failure.h"
#include "frame/Regional.h"
#include "store/MetaStockFormat.h"
#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"
#include "store/StoreCheck.h"

#include <QFile>

#include <charconv>
#include <vector>

namespace {

const QString Header = QStringLiteral("Date,Open,High,Low,Close,Volume");

struct Usage {
    QString text;
};

QString csvField(const QString& text) {
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString fileStem(const QString& fileName) {
    const int dot = fileName.indexOf(QLatin1Char('.'));
    return dot < 0 ? fileName : fileName.left(dot);
}

// The store date of "yyyymmdd" text; 0 when it is no day the store can hold.
qint32 storeDateOf(const QString& text) {
    const qint32 date = Regional::toStoreDate(Regional::fromYyyymmdd(text.trimmed()));
    return metastock::isValidStoreDate(date) ? date : 0;
}

// Every argument that looks like an option is one of `known`: a misspelt option is bad usage, not
// a folder or a symbol to work on.
void onlyOptions(const QStringList& arguments, const QStringList& known = {}) {
    for (const QString& a : arguments)
        if (a.startsWith(QLatin1Char('-')) && a.size() > 1 && !known.contains(a))
            throw Usage{QStringLiteral("unknown option \"%1\"").arg(a)};
}

// The symbols of a --symbols list; a list that names none is bad usage, not "all of them".
QStringList symbolList(const QString& text) {
    QStringList symbols;
    for (const QString& s : text.split(QLatin1Char(',')))
        if (!s.trimmed().isEmpty())
            symbols << s.trimmed();
    if (symbols.isEmpty())
        throw Usage{QStringLiteral("--symbols takes a list of symbols")};
    return symbols;
}

qint32 dateArgument(const QString& text) {
    const qint32 date = storeDateOf(text);
    if (date == 0)
        throw Usage{QStringLiteral("\"%1\" is not a date of the form YYYYMMDD").arg(text)};
    return date;
}

int list(const QString& folder, QTextStream& out) {
    SecurityReader reader;
    reader.OpenFolder(folder);
    out << "Symbol,Name,File,FirstDate,LastDate,Periodicity,Records\n";
    while (reader.GetSecuritiesRemaining() > 0) {
        reader.NextSecurity();
        const char letter = metastock::periodicityLetter(reader.GetPeriodicity());
        qint32 count = 0;
        try {
            count = reader.GetRecordCount();
        } catch (const Failure&) {
            count = 0;  // a broken data file: `check` tells what is wrong with it
        }
        out << csvField(reader.GetSymbol()) << ',' << csvField(reader.GetName()) << ','
            << fileStem(reader.GetFileName()) << ',' << reader.GetFirstDate() << ',' << reader.GetLastDate() << ','
            << (letter ? QString(QLatin1Char(letter)) : QStringLiteral("?")) << ',' << count << '\n';
    }
    reader.CloseFolder();
    return 0;
}

int dump(const QString& folder, const QString& symbol, QTextStream& out) {
    SecurityReader reader;
    reader.OpenFolder(folder);
    reader.OpenSecurity(symbol);
    out << Header << '\n';
    while (reader.GetRecordsRemaining() > 0) {
        reader.NextRecord();
        out << reader.GetDate() << ',' << shortestFloatText(float(reader.GetOpen())) << ','
            << shortestFloatText(float(reader.GetHigh())) << ',' << shortestFloatText(float(reader.GetLow())) << ','
            << shortestFloatText(float(reader.GetClose())) << ',' << shortestFloatText(float(reader.GetVolume()))
            << '\n';
    }
    reader.CloseSecurity();
    reader.CloseFolder();
    return 0;
}

int create(const QString& folder, qint32 from, const QStringList& symbols) {
    // Every symbol is checked before any security is replaced.
    for (const QString& symbol : symbols)
        SecurityWriter::CheckSymbol(symbol);
    if (!SecurityWriter::CanHoldDate(from))
        throw Usage{QStringLiteral("a security cannot start on %1: an index takes that day for no date").arg(from)};
    SecurityWriter writer;
    writer.OpenFolder(folder);
    const QString fromText = QString::number(from);
    for (const QString& raw : symbols) {
        const QString symbol = raw.trimmed();
        if (writer.SymbolExists(symbol))
            writer.DeleteSecurity(symbol);
        writer.CreateSecurity(symbol, symbol, 1);
        writer.AddQuote(from, 0, 0, 0, 0, 0, 0, 0);
        writer.DeleteQuote(fromText);
        writer.CloseSecurity();
    }
    writer.CloseFolder();
    // As Create New Symbols leaves the folder: the NSE India walk starts after this date.
    CreateSymbols::WriteValuesFile(folder, Regional::fromStoreDate(from));
    return 0;
}

struct Row {
    qint32 date;
    double values[5];
};

int import(const QString& folder, const QString& symbol, const QString& fileName, QTextStream& err) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        err << "The file " << fileName << " cannot be opened: " << file.errorString() << '\n';
        return 1;
    }
    std::vector<Row> rows;
    int lineNumber = 0;
    bool header = false;
    // Read up to the end of the file; a pipe has its lines when they come.
    for (QByteArray bytes = file.readLine(); !bytes.isEmpty(); bytes = file.readLine()) {
        const QString line = QString::fromUtf8(bytes).trimmed();
        ++lineNumber;
        if (line.isEmpty() && lineNumber > 1)
            continue;
        if (lineNumber == 1) {
            header = true;
            if (QString(line).remove(QLatin1Char(' ')).compare(Header, Qt::CaseInsensitive) != 0) {
                err << fileName << ": the first line must be " << Header << '\n';
                return 1;
            }
            continue;
        }
        const QStringList fields = line.split(QLatin1Char(','));
        bool ok = fields.size() == 6;
        Row row{};
        if (ok) {
            row.date = storeDateOf(fields[0]);
            ok = row.date != 0;
        }
        for (int i = 0; ok && i < 5; ++i)
            row.values[i] = fields[i + 1].trimmed().toDouble(&ok);
        if (!ok) {
            err << fileName << ", line " << lineNumber << ": not a record of the form " << Header << '\n';
            return 1;
        }
        rows.push_back(row);
    }
    if (!header) {
        err << fileName << ": the file is empty; its first line must be " << Header << '\n';
        return 1;
    }
    SecurityWriter writer;
    writer.OpenFolder(folder);
    writer.OpenSecurity(symbol);
    for (const Row& r : rows)
        writer.AddQuote(r.date, 0, r.values[0], r.values[1], r.values[2], r.values[3], r.values[4], 0);
    writer.SaveQuotes();
    writer.CloseSecurity();
    writer.CloseFolder();
    return 0;
}

int check(const QString& folder, QTextStream& out) {
    const auto findings = StoreCheck::checkFolder(folder);
    int problems = 0;
    for (const auto& f : findings) {
        out << (f.problem ? "problem: " : "note: ") << f.text << '\n';
        problems += f.problem ? 1 : 0;
    }
    out << (problems == 0   ? QStringLiteral("No inconsistency found.")
            : problems == 1 ? QStringLiteral("1 inconsistency found.")
                            : QStringLiteral("%1 inconsistencies found.").arg(problems))
        << '\n';
    return problems == 0 ? 0 : 1;
}

} // namespace

QString shortestFloatText(float value) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return QString::fromLatin1(buffer, int(result.ptr - buffer));
}

QString cliUsage() {
    return QStringLiteral(
        "Usage: brindlemark-cli COMMAND ARGUMENTS\n"
        "\n"
        "Commands:\n"
        "  list FOLDER                             the securities of a data folder, in the store's order:\n"
        "                                          Symbol,Name,File,FirstDate,LastDate,Periodicity,Records\n"
        "  dump FOLDER SYMBOL                      the records of a security, oldest first:\n"
        "                                          Date,Open,High,Low,Close,Volume\n"
        "  create FOLDER --from YYYYMMDD SYMBOL... new empty securities whose data starts at that date\n"
        "                                          (an existing security of the symbol is replaced);\n"
        "                                          the date goes into values.dat\n"
        "  import FOLDER SYMBOL FILE               adds the records of a CSV file with the header of dump;\n"
        "                                          a date the security holds is replaced\n"
        "  check FOLDER                            reports every inconsistency of the folder\n"
        "  export FOLDER DEST [--merge] [--symbols S,...] [--iso]\n"
        "                                          the CSV files of Tools > Convert: data.csv (--merge) or\n"
        "                                          SYMBOL.csv each; --iso writes yyyy-mm-dd dates and a\n"
        "                                          decimal point whatever the regional settings\n"
        "  download bhavcopy FOLDER [--from YYYYMMDD] [--to YYYYMMDD]\n"
        "                                          the NSE India walk, one request per calendar day from\n"
        "                                          the day after the date in values.dat (or from the\n"
        "                                          --from day) to today (or the --to day); one line per\n"
        "                                          day with data\n"
        "  download index FOLDER                   the NSE India Index folder brought up to date: one\n"
        "                                          request per calendar day from the day after its last\n"
        "                                          date to today (or the archive of an endpoint source\n"
        "                                          unpacked over it); one line per day with data\n"
        "  download quotes FOLDER... [--symbols S,...]\n"
        "                                          the World Exchanges download of every security of the\n"
        "                                          folders (or of the symbols given), merged as the\n"
        "                                          program merges; one line per security, a summary\n"
        "  download ... --source NAME=VALUE        for this run, the source NAME (quotes, bhavcopy or\n"
        "                                          index) is VALUE, as the settings' section Sources\n"
        "                                          holds it: today, today@URL or an older endpoint\n"
        "  --help                                  this text\n"
        "\n"
        "Exit status: 0 done, 1 failed or inconsistencies found, 2 bad usage, 130 stopped by Ctrl+C\n"
        "(after the security in hand; nothing is half written).\n");
}

namespace {

// The download commands, with --source taken out already.
int download(const QStringList& rest, QTextStream& out, QTextStream& err, bool progressOnTerminal) {
    if (rest.value(0) == QLatin1String("bhavcopy")) {
        onlyOptions(rest, {QStringLiteral("--from"), QStringLiteral("--to")});
        QStringList folders;
        QDate from, to;
        for (int i = 1; i < rest.size(); ++i) {
            if (rest[i] == QLatin1String("--from") || rest[i] == QLatin1String("--to")) {
                if (i + 1 >= rest.size())
                    throw Usage{QStringLiteral("%1 takes a date YYYYMMDD").arg(rest[i])};
                const QDate date = Regional::fromStoreDate(dateArgument(rest[i + 1]));
                (rest[i] == QLatin1String("--from") ? from : to) = date;
                ++i;
            } else {
                folders << rest[i];
            }
        }
        if (folders.size() != 1)
            throw Usage{QStringLiteral("download bhavcopy takes one folder")};
        return downloadBhavCopies(folders[0], from, to, out, err);
    }
    if (rest.value(0) == QLatin1String("index")) {
        onlyOptions(rest);
        if (rest.size() != 2)
            throw Usage{QStringLiteral("download index takes one folder")};
        return downloadIndex(rest[1], out, err);
    }
    if (rest.value(0) != QLatin1String("quotes"))
        throw Usage{QStringLiteral("download takes: quotes, bhavcopy or index")};
    onlyOptions(rest, {QStringLiteral("--symbols")});
    QStringList folders, symbols;
    for (int i = 1; i < rest.size(); ++i) {
        if (rest[i] == QLatin1String("--symbols")) {
            if (++i >= rest.size())
                throw Usage{QStringLiteral("--symbols takes a list of symbols")};
            symbols += symbolList(rest[i]);
        } else {
            folders << rest[i];
        }
    }
    if (folders.isEmpty())
        throw Usage{QStringLiteral("download quotes takes one or more folders")};
    return downloadQuotes(folders, symbols, out, err, progressOnTerminal);
}

// The settings key of a --source name; empty for an unknown one.
QString sourceKey(const QString& name) {
    const QString n = name.trimmed().toLower();
    if (n == QLatin1String("quotes"))
        return QStringLiteral("Quotes");
    if (n == QLatin1String("bhavcopy"))
        return QStringLiteral("Bhavcopy");
    if (n == QLatin1String("index") || n == QLatin1String("indexarchive"))
        return QStringLiteral("IndexArchive");
    return {};
}

} // namespace

int runCli(const QStringList& arguments, QTextStream& out, QTextStream& err, bool progressOnTerminal) {
    try {
        if (arguments.isEmpty())
            throw Usage{QStringLiteral("no command given")};
        const QString command = arguments.first();
        const QStringList rest = arguments.mid(1);
        if (command == QLatin1String("--help") || command == QLatin1String("-h") || command == QLatin1String("help")) {
            out << cliUsage();
            return 0;
        }
        if (command == QLatin1String("list")) {
            onlyOptions(rest);
            if (rest.size() != 1)
                throw Usage{QStringLiteral("list takes one folder")};
            return list(rest[0], out);
        }
        if (command == QLatin1String("dump")) {
            onlyOptions(rest);
            if (rest.size() != 2)
                throw Usage{QStringLiteral("dump takes a folder and a symbol")};
            return dump(rest[0], rest[1], out);
        }
        if (command == QLatin1String("create")) {
            onlyOptions(rest, {QStringLiteral("--from")});
            if (rest.size() < 4 || rest[1] != QLatin1String("--from"))
                throw Usage{QStringLiteral("create takes a folder, --from YYYYMMDD and one or more symbols")};
            return create(rest[0], dateArgument(rest[2]), rest.mid(3));
        }
        if (command == QLatin1String("import")) {
            onlyOptions(rest);
            if (rest.size() != 3)
                throw Usage{QStringLiteral("import takes a folder, a symbol and a file")};
            return import(rest[0], rest[1], rest[2], err);
        }
        if (command == QLatin1String("check")) {
            onlyOptions(rest);
            if (rest.size() != 1)
                throw Usage{QStringLiteral("check takes one folder")};
            return check(rest[0], out);
        }
        if (command == QLatin1String("export")) {
            onlyOptions(rest, {QStringLiteral("--merge"), QStringLiteral("--iso"), QStringLiteral("--symbols")});
            QStringList places, symbols;
            bool merge = false, iso = false;
            for (int i = 0; i < rest.size(); ++i) {
                if (rest[i] == QLatin1String("--merge")) {
                    merge = true;
                } else if (rest[i] == QLatin1String("--iso")) {
                    iso = true;
                } else if (rest[i] == QLatin1String("--symbols")) {
                    if (++i >= rest.size())
                        throw Usage{QStringLiteral("--symbols takes a list of symbols")};
                    symbols += symbolList(rest[i]);
                } else {
                    places << rest[i];
                }
            }
            if (places.size() != 2)
                throw Usage{QStringLiteral("export takes a folder and a destination")};
            return exportCsv(places[0], places[1], symbols, merge, iso, out, err);
        }
        if (command == QLatin1String("download")) {
            // --source KEY=VALUE, anywhere after "download": a source for this run only.
            QList<QPair<QString, QString>> sources;
            QStringList kept;
            for (int i = 0; i < rest.size(); ++i) {
                if (rest[i] != QLatin1String("--source")) {
                    kept << rest[i];
                    continue;
                }
                const QString pair = rest.value(++i);
                const qsizetype equals = pair.indexOf(QLatin1Char('='));
                const QString key = sourceKey(pair.left(equals));
                if (equals < 1 || key.isEmpty())
                    throw Usage{QStringLiteral("--source takes quotes=VALUE, bhavcopy=VALUE or index=VALUE")};
                sources.append({key, pair.mid(equals + 1)});
            }
            const ServiceAddresses::SourcesForRun forRun(sources);
            return download(kept, out, err, progressOnTerminal);
        }
        throw Usage{QStringLiteral("unknown command \"%1\"").arg(command)};
    } catch (const Usage& usage) {
        err << "brindlemark-cli: " << usage.text << '\n' << "Try 'brindlemark-cli --help'.\n";
        return 2;
    } catch (const Failure& failure) {
        err << "brindlemark-cli: " << failure.Description << '\n';
        return 1;
    }
}
