#include "download/NseDailyRun.h"

#include "catalogue/CreateSymbols.h"
#include "download/BhavCopy.h"
#include "frame/Failure.h"
#include "frame/Platform.h"
#include "frame/Regional.h"
#include "store/FolderLock.h"
#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"

#include <QFile>
#include <QRegularExpression>

#include <limits>
#include <optional>

namespace {

// What values.dat says: the first field of its first line (up to the first comma or the line's
// end), trimmed. None when the file is missing, can't be read or holds nothing at all; a file that
// holds something else than a date gives that text, which then can't be read as a date.
std::optional<QString> readValuesText(const QString& folder) {
    QFile file(CreateSymbols::ValuesFilePath(folder));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QString line = QString::fromUtf8(file.readLine(4096));
    if (line.isEmpty())
        return std::nullopt;
    qsizetype end = 0;
    while (end < line.size() && line[end] != u',' && line[end] != u'\r' && line[end] != u'\n')
        ++end;
    return line.left(end).trimmed();
}

// Whether a security of the folder has `day` as its last date.
bool someSecurityEndsOn(const QString& folder, const QDate& day) {
    SecurityReader reader;
    const qint32 wanted = Regional::toStoreDate(day);
    bool found = false;
    passOver([&] {
        reader.OpenFolder(folder);
        while (!found && reader.GetSecuritiesRemaining() > 0) {
            reader.NextSecurity();
            found = reader.GetLastDate() == wanted;
        }
    });
    passOver([&] { reader.CloseFolder(); });
    return found;
}

// The date of values.dat. The file holds the user's short date form once a run has rewritten it,
// and the day-first form of Create New Symbols before that, each as the regional settings stood
// when it was written. So the text is read in the ways it can have been written: the short form
// of today's settings, day first (with whatever separator it has), under today's settings, month
// first, year first. Where these give more than one day (11/10/2026 under a month-first pattern,
// a file written under other settings), the folder tells which: Create New Symbols gives its
// securities the day it wrote as their last date, and a run writes the last day that gave
// securities records. Otherwise the first reading holds.
std::optional<QDate> valuesDate(const QString& text, const QString& folder) {
    QList<QDate> readings;
    auto add = [&](const QDate& date) {
        if (date.isValid() && !readings.contains(date))
            readings.append(date);
    };
    const auto local = Regional::readDate(text);
    if (local && Regional::dateText(*local) == text)
        add(*local);
    static const QRegularExpression numeric(QStringLiteral("^(\\d{1,4})[^\\d]+(\\d{1,2})[^\\d]+(\\d{1,4})[^\\d]*$"));
    const QRegularExpressionMatch m = numeric.match(text);
    const auto field = [&](int i) { return m.captured(i).toInt(); };
    if (m.hasMatch() && m.captured(3).size() == 4)
        add(QDate(field(3), field(2), field(1)));   // day first, as Create New Symbols writes it
    if (local)
        add(*local);
    if (m.hasMatch() && m.captured(3).size() == 4)
        add(QDate(field(3), field(1), field(2)));   // month first
    if (m.hasMatch() && m.captured(1).size() == 4)
        add(QDate(field(1), field(2), field(3)));   // year first
    if (readings.size() > 1)
        for (const QDate& date : readings)
            if (someSecurityEndsOn(folder, date))
                return date;
    if (readings.isEmpty())
        return std::nullopt;
    return readings.first();
}

} // namespace

NseDailyRun::NseDailyRun(BhavCopySource& source, NseDailyListener& listener)
    : source_(source), listener_(listener) {}

NseDailyRun::~NseDailyRun() = default;

SecurityWriter& NseDailyRun::writer() {
    if (!writer_)
        writer_ = std::make_unique<SecurityWriter>();
    return *writer_;
}

void NseDailyRun::BeginDownload(const QString& folderText) {
    const QString folder = folderText.trimmed();
    if (folder.isEmpty()) {
        MsgBox(QStringLiteral("Data Directory Field is Empty."));
        return;
    }

    running_ = true;
    FetchFailure.clear();
    rowsWritten_ = 0;
    listener_.runStarted();
    const auto backToIdle = [this] {
        StopRequested = false;
        LeaveRequested = false;
        running_ = false;
        listener_.runEnded();
    };

    const std::optional<QString> valuesRead = readValuesText(folder);
    if (!valuesRead && !FirstDay.isValid()) {
        MsgBox(QStringLiteral("NO Metastock Data Files Found in the Selected Directory."), MsgIcon::Information);
        backToIdle();
        return;
    }
    const QString valuesText = valuesRead.value_or(QString());
    const std::optional<QDate> held = valuesRead ? valuesDate(valuesText, folder) : std::nullopt;
    const auto start = FirstDay.isValid() ? std::optional<QDate>(FirstDay.addDays(-1)) : held;
    if (!start) {
        // Never walk from a date that isn't there.
        MsgBox(QStringLiteral("The date \"%1\" in values.dat can't be read. Nothing was downloaded.").arg(valuesText),
               MsgIcon::Warning);
        backToIdle();
        return;
    }
    startDate_ = *start;

    // The folder is held for the whole walk: no other program writes it meanwhile.
    std::optional<FolderLock> lock;
    try {
        lock.emplace(folder, "NseDailyRun", "BeginDownload");
    } catch (const Failure& failure) {
        MsgBox(failure.Description, MsgIcon::Warning);
        backToIdle();
        return;
    }

    listener_.walkStarted();
    walk(folder);

    // A walk over days before the one values.dat names (a filling in from the command line) leaves
    // it: the next run goes on from where the folder stands.
    if (rowsWritten_ > 0 && lastUpdated_.isValid() && !(held && lastUpdated_ <= *held)) {
        startDate_ = lastUpdated_;
        // A file that can't be written stays as it was; the run ends as ever.
        passOver([&] {
            CreateSymbols::WriteValuesText(folder, (Regional::dateText(startDate_) + QStringLiteral("\r\n")).toUtf8());
        });
    }
    lock.reset();   // not held while the box waits for the user
    backToIdle();
    listener_.walkEnded();
    if (!FetchFailure.isEmpty()) {
        MsgBox(FetchFailure + QStringLiteral("\nThe next download asks for that day again."), MsgIcon::Warning);
        return;
    }
    MsgBox(QStringLiteral("Download Completed."), MsgIcon::Information);
}

void NseDailyRun::walk(const QString& folder) {
    // Every calendar day up to today; weekends and holidays are told by their short replies.
    const qint64 days = startDate_.daysTo(LastDay.isValid() ? LastDay : platform().today());
    for (qint64 i = 1; i <= days; ++i) {
        currentDate_ = startDate_.addDays(i);
        std::optional<QList<BhavRow>> rows;
        try {
            rows = source_.FetchDay(currentDate_);
        } catch (const Failure& failure) {
            FetchFailure = failure.Description;
            break;
        }
        if (rows) {
            if (!writeDay(folder, *rows))
                break;   // values.dat stays before this day: the next run asks for it again
            lastUpdated_ = currentDate_;
            listener_.dayUpdated(Regional::dateText(currentDate_) + QStringLiteral(" Updated."));
            if (StopRequested) {
                StopRequested = false;
                break;
            }
        }
        if (LeaveRequested)
            break;
    }
}

bool NseDailyRun::writeDay(const QString& folder, const QList<BhavRow>& rows) {
    // A row of a symbol the folder lacks reaches no security, and is passed over. A store that
    // will not take a day's records (a folder it may not write, a full disk, another program
    // writing) ends the walk as a failed fetch does, so that the day is not passed by for good.
    const qint32 date = Regional::toStoreDate(currentDate_);
    SecurityWriter& w = writer();
    QString failed;
    const auto must = [&](const auto& step) {
        try {
            step();
            return true;
        } catch (const Failure& failure) {
            if (failed.isEmpty())
                failed = failure.Description;
            return false;
        }
    };
    const bool folderOpen = must([&] { w.OpenFolder(folder); });
    for (const BhavRow& row : rows) {
        if (!folderOpen)
            break;
        if (passOver([&] { w.OpenSecurity(row.Symbol); })) {
            if (row.HasPrices)
                must([&] { w.AddQuote(date, 0, row.Open, row.High, row.Low, row.Close, row.Volume, 0.0); });
            must([&] { w.SaveQuotes(); });
            must([&] { w.CloseSecurity(); });
        } else {
            bool held = false;
            passOver([&] { held = w.SymbolExists(row.Symbol); });
            if (held)
                must([&] { w.OpenSecurity(row.Symbol); });   // its own failure, said
        }
        if (rowsWritten_ < std::numeric_limits<qint16>::max())
            ++rowsWritten_;
    }
    if (folderOpen)
        must([&] { w.CloseFolder(); });
    if (failed.isEmpty())
        return true;
    FetchFailure = QStringLiteral("The records of %1 could not be stored: %2").arg(Regional::dateText(currentDate_), failed);
    return false;
}
