#include "DownloadCommands.h"

#include "ConsolePlatform.h"

#include "download/BhavCopy.h"
#include "download/DownloadRun.h"
#include "download/IndexDownload.h"
#include "download/NseIndexRun.h"
#include "download/ServiceAddresses.h"
#include "download/NseDailyRun.h"
#include "download/Inet.h"
#include "frame/Failure.h"
#include "frame/ProgramState.h"
#include "frame/Regional.h"
#include "store/FolderLock.h"
#include "store/SecurityReader.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QSet>
#include <QTimer>

#include <algorithm>
#include <csignal>
#include <list>
#include <optional>

namespace {

volatile std::sig_atomic_t stopAsked = 0;

// What the run reports, as lines of text: one result per security, failures apart, and a
// progress line that a terminal overwrites in place.
class ConsoleListener : public DownloadListener {
public:
    ConsoleListener(QTextStream& out, QTextStream& err, bool progress) : out_(out), err_(err), progress_(progress) {
        clock_.start();
    }

    void itemStarted(int index, int count, const QString& symbol, qint16, qint16, qint16) override {
        if (!progress_)
            return;
        const double seconds = clock_.elapsed() / 1000.0;
        const double rate = seconds > 0 ? (index - 1) / seconds : 0.0;
        err_ << QStringLiteral("\r\x1b[K%1 of %2  %3  (%4 securities/s)").arg(index).arg(count).arg(symbol).arg(rate, 0, 'f', 1);
        err_.flush();
    }
    void fetching(const QString&) override {}
    void recordRange(int) override {}
    void recordProgress(int) override {}
    void lineAdded(const QString& line) override {
        // The security's result is written: a Ctrl+C now stops the run before the next one.
        if (stopAsked && run)
            run->CancelRequested = true;
        clearProgress();
        const qsizetype colon = line.indexOf(QLatin1String(" : "));
        const QString outcome = line.left(colon);
        const QString symbol = line.mid(colon + 3);
        if (run && !run->ItemFailure.isEmpty()) {
            // The window passes over a step that failed; here it is the security's result.
            err_ << symbol << ": " << run->ItemFailure << '\n';
            ++failed;
        } else if (outcome == QLatin1String("Download Complete")) {
            out_ << symbol << ' ' << (run ? run->DaysStored : 0) << " records\n";
            ++done;
        } else if (outcome == QLatin1String("Upto Date")) {
            out_ << symbol << " Up to date\n";
            ++upToDate;
        } else if (outcome == QLatin1String("No Data Available")) {
            out_ << symbol << " No Data Available\n";
            ++noData;
        } else {
            err_ << symbol << ": " << outcome << '\n';
            ++failed;
        }
        out_.flush();
    }
    void captionChanged(const QString&) override {}
    void runEnded() override { clearProgress(); }

    DownloadRun* run = nullptr;
    int done = 0, upToDate = 0, noData = 0, failed = 0;

private:
    void clearProgress() {
        if (progress_) {
            err_ << "\r\x1b[K";
            err_.flush();
        }
    }
    QTextStream& out_;
    QTextStream& err_;
    bool progress_;
    QElapsedTimer clock_;
};

// The securities of a folder as download items, as the Downloader makes them for ticked rows. A
// security without records has no date to go on from: it goes into `undated` instead, since
// in a run it would end the run for all the others.
void addItems(const QString& folder, const QSet<QString>& wanted, QSet<QString>& found, QStringList& undated) {
    SecurityReader reader;
    reader.OpenFolder(folder);
    while (reader.GetSecuritiesRemaining() > 0) {
        reader.NextSecurity();
        const QString symbol = reader.GetSymbol().trimmed();
        if (!wanted.isEmpty() && !wanted.contains(symbol.toUpper()))
            continue;
        found.insert(symbol.toUpper());
        DownloadItem item;
        item.Symbol = symbol;
        item.Folder = folder;
        const QDate last = Regional::fromStoreDate(reader.GetLastDate());
        if (!last.isValid()) {
            undated << symbol;
            continue;
        }
        item.FirstDate = Regional::dateText(last.addDays(-35));
        item.NextDate = Regional::dateText(last.addDays(1));
        handOvers().DownloadItems.append(item);
    }
    reader.CloseFolder();
}

QString daysWithData(int days) { return QStringLiteral("%1 %2 with data").arg(days).arg(days == 1 ? "day" : "days"); }

} // namespace

void requestStop() { stopAsked = 1; }

int downloadQuotes(const QStringList& folders, const QStringList& symbols, QTextStream& out, QTextStream& err,
                   bool progressOnTerminal) {
    // The program's own settings and clock, unless services are installed already.
    ConsolePlatform console(err);
    const bool ownPlatform = installedPlatform() == nullptr;
    if (ownPlatform)
        setPlatform(&console);
    ProgramState state;
    stopAsked = 0;

    QSet<QString> wanted, found;
    QStringList undated;
    for (const QString& s : symbols)
        wanted.insert(s.trimmed().toUpper());
    int status = 0;
    // Each folder is held from here to the end: a folder another program is writing is left out.
    std::list<FolderLock> locks;
    QStringList seen;
    for (const QString& folder : folders) {
        // A folder given twice (a/ and a) is downloaded once.
        const QString canonical = QFileInfo(folder).canonicalFilePath();
        if (!canonical.isEmpty() && seen.contains(canonical))
            continue;
        seen << canonical;
        try {
            locks.emplace_back(folder, "brindlemark-cli", "download");
            addItems(folder, wanted, found, undated);
        } catch (const Failure& failure) {
            err << folder << ": " << failure.Description << '\n';
            status = 1;
        }
    }
    const QSet<QString> missing = wanted - found;
    for (const QString& s : missing) {
        err << s << ": not in the folders given\n";
        status = 1;
    }
    for (const QString& s : undated) {
        err << s << ": holds no records, so there is no date to download from; left out\n";
        status = 1;
    }

    ConsoleListener listener(out, err, progressOnTerminal);
    Inet connection;
    DownloadRun run(connection, listener);
    listener.run = &run;
    if (handOvers().DownloadItems.upperBound() > 0)
        run.RunDownload();

    int notReached = 0;
    if (!run.EndedBy.isEmpty()) {
        const int at = run.ItemIndex;
        notReached = handOvers().DownloadItems.upperBound() - std::max(at, 1) + 1;
        err << (at >= 1 && at <= handOvers().DownloadItems.upperBound() ? handOvers().DownloadItems[at].Symbol + QStringLiteral(": ") : QString())
            << run.EndedBy << "; the run ended there\n";
        status = 1;
    }
    const bool stopped = stopAsked || run.CancelRequested;
    out << listener.done << " downloaded, " << listener.upToDate << " up to date, " << listener.noData
        << " without data, " << listener.failed + undated.size() + missing.size() + notReached << " failed\n";
    if (listener.failed > 0)
        status = 1;
    if (stopped) {
        err << "Stopped after the security in hand; nothing is half written.\n";
        status = 130;
    }
    if (ownPlatform)
        setPlatform(nullptr);
    return status;
}

namespace {

class DayLines : public NseDailyListener {
public:
    explicit DayLines(QTextStream& out) : out_(out) {}
    void runStarted() override {}
    void walkStarted() override { walked = true; }
    void dayUpdated(const QString& line) override {
        out_ << line << '\n';
        out_.flush();
        ++days;
    }
    void walkEnded() override {}
    void runEnded() override {}
    int days = 0;
    bool walked = false;   // false: the run could not start, and its box said why

private:
    QTextStream& out_;
};

} // namespace

int downloadBhavCopies(const QString& folder, const QDate& from, const QDate& to, QTextStream& out,
                       QTextStream& err) {
    ConsolePlatform console(err);
    const bool ownPlatform = installedPlatform() == nullptr;
    if (ownPlatform)
        setPlatform(&console);
    stopAsked = 0;

    if (!QFileInfo(folder).isDir()) {
        err << "The folder " << folder << " does not exist.\n";
        if (ownPlatform)
            setPlatform(nullptr);
        return 1;
    }
    std::optional<FolderLock> lock;
    try {
        lock.emplace(folder, "brindlemark-cli", "download");
    } catch (const Failure& failure) {
        err << failure.Description << '\n';
        if (ownPlatform)
            setPlatform(nullptr);
        return 1;
    }

    Inet connection;
    const std::unique_ptr<BhavCopySource> source = MakeBhavCopySource(connection);
    DayLines lines(out);
    NseDailyRun run(*source, lines);
    run.FirstDay = from;
    run.LastDay = to;
    // Ctrl+C ends the walk after the day in hand, with or without data.
    QTimer watch;
    watch.setInterval(50);
    QObject::connect(&watch, &QTimer::timeout, [&] {
        if (stopAsked)
            run.LeaveRequested = true;
    });
    watch.start();
    run.BeginDownload(folder);
    watch.stop();

    int status = lines.walked && run.FetchFailure.isEmpty() ? 0 : 1;
    out << daysWithData(lines.days) << '\n';
    if (stopAsked) {
        err << "Stopped after the day in hand; nothing is half written.\n";
        status = 130;
    }
    if (ownPlatform)
        setPlatform(nullptr);
    return status;
}

namespace {

class IndexDayLines : public NseIndexListener {
public:
    explicit IndexDayLines(QTextStream& out) : out_(out) {}
    void dayStarted(const QString&) override {}
    void dayUpdated(const QString& line) override {
        out_ << line << '\n';
        out_.flush();
    }

private:
    QTextStream& out_;
};

} // namespace

int downloadIndex(const QString& folder, QTextStream& out, QTextStream& err) {
    ConsolePlatform console(err);
    const bool ownPlatform = installedPlatform() == nullptr;
    if (ownPlatform)
        setPlatform(&console);
    stopAsked = 0;

    Inet connection;
    int status = 0;
    const ServiceAddresses::Source source = ServiceAddresses::indexArchiveSource();
    if (source.today) {
        IndexDayLines lines(out);
        NseIndexRun run(connection, source.address, lines);
        // Ctrl+C ends the run once the day in hand is written.
        QTimer watch;
        watch.setInterval(50);
        QObject::connect(&watch, &QTimer::timeout, [&] {
            if (stopAsked)
                run.StopRequested = true;
        });
        watch.start();
        try {
            out << daysWithData(run.Run(folder)) << '\n';
        } catch (const Failure& failure) {
            err << failure.Description << '\n';
            status = 1;
        }
        if (run.Stopped()) {
            err << "Stopped after the day in hand; nothing is half written.\n";
            status = 130;
        }
    } else {
        try {
            IndexDownload(connection).Run(folder);
            out << "Download Complete.\n";
        } catch (const Failure& failure) {
            err << failure.Description << '\n';
            status = 1;
        }
    }
    if (ownPlatform)
        setPlatform(nullptr);
    return status;
}
