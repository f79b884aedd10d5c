#include "download/DownloadRun.h"

#include "download/Inet.h"
#include "download/DailyQuotes.h"
#include "frame/Failure.h"
#include "frame/ProgramState.h"
#include "frame/Platform.h"
#include "frame/Regional.h"
#include "store/FolderLock.h"
#include "store/SecurityWriter.h"

#include <QSet>

#include <algorithm>
#include <limits>
#include <list>

namespace {

[[noreturn]] void typeMismatch() {
    throw Failure(FailureNumber::TypeMismatch, QStringLiteral("Type mismatch"), QStringLiteral("RunDownload"));
}

QDate readDateOrFail(const QString& text) {
    const auto date = Regional::readDate(text);
    if (!date)
        typeMismatch();
    return *date;
}

// A number as the store takes it: through its text form, 15 significant digits.
double throughText(double value) {
    const auto back = Regional::readNumber(Regional::numberText(value));
    if (!back)
        typeMismatch();
    return *back;
}

} // namespace

DownloadRun::DownloadRun(Inet& connection, DownloadListener& listener)
    : connection_(connection), listener_(listener) {}

DownloadRun::~DownloadRun() = default;

SecurityWriter& DownloadRun::writer() {
    if (!writer_)
        writer_ = std::make_unique<SecurityWriter>();
    return *writer_;
}

DailyQuotes& DownloadRun::fetcher() {
    if (!fetcher_) {
        fetcher_ = std::make_unique<DailyQuotes>(connection_);
        fetcher_->CancelFlag = &CancelRequested;
    }
    return *fetcher_;
}

void DownloadRun::release() {
    writer_.reset();
    fetcher_.reset();
}

template <typename Step>
void DownloadRun::step(Step&& action) {
    if (!fetchReached_) {
        std::forward<Step>(action)();
        return;
    }
    try {
        std::forward<Step>(action)();
    } catch (const Failure& failure) {
        if (ItemFailure.isEmpty())
            ItemFailure = failure.Description;
    }
}

void DownloadRun::RunDownload() {
    running_ = true;
    fetchReached_ = false;
    const int count = handOvers().DownloadItems.upperBound();
    bool cancelled = false, refused = false;
    // Every folder of the run is held for the whole run, so that no other program writes it
    // meanwhile; one that another program holds now stops the run before anything is fetched.
    std::list<FolderLock> locks;
    QStringList lockedFolders;
    try {
        for (int i = 1; i <= count; ++i) {
            const QString folder = handOvers().DownloadItems[i].Folder.trimmed();
            if (!folder.isEmpty() && !lockedFolders.contains(folder)) {
                locks.emplace_back(folder, "DownloadRun", "RunDownload");
                lockedFolders << folder;
            }
        }
    } catch (const Failure& failure) {
        // A failure before the first fetch: the user reads why, then the run ends as any other.
        locks.clear();
        MsgBox(failure.Description, MsgIcon::Critical);
        EndedBy = failure.Description;
        refused = true;
    }
    try {
        for (int i = 1; !refused && i <= count && i <= std::numeric_limits<qint16>::max(); ++i) {
            handleItem(i, count);
            if (CancelRequested) {
                cancelled = true;
                break;
            }
        }
        if (!cancelled && !refused) {
            release();
            listener_.captionChanged(QStringLiteral("Download Completed. / "));
        }
    } catch (const Failure& failure) {
        // A failure before the first fetch ends the run at once.
        EndedBy = failure.Description;
        release();
    }

    locks.clear();   // not held while the box waits for the user

    // Closing steps, reached by every end of the run.
    passOver([&] { listener_.runEnded(); });
    connection_.Cancel();
    running_ = false;
    MsgBox(QStringLiteral("Download Completed."), MsgIcon::Information);
}

void DownloadRun::handleItem(int index, int count) {
    const DownloadItem item = handOvers().DownloadItems[index];
    ItemIndex = static_cast<qint16>(index);
    ItemFailure.clear();

    step([&] { listener_.itemStarted(index, count, item.Symbol, completedCount, upToDateCount, noDataCount); });

    // Up to date when the next date lacking has reached today. Should the date not read, the
    // test counts as passed.
    bool upToDate = true;
    step([&] { upToDate = readDateOrFail(item.NextDate) >= platform().today(); });

    if (upToDate) {
        step([&] { listener_.lineAdded(QStringLiteral("Upto Date : ") + item.Symbol); });
        ++upToDateCount;
        listener_.countersChanged(completedCount, upToDateCount, noDataCount);
    } else {
        step([&] { listener_.fetching(item.Symbol); });
        step([&] { writer().OpenFolder(item.Folder.trimmed()); });
        step([&] { writer().OpenSecurity(item.Symbol.trimmed()); });

        QDate firstDate;
        step([&] { firstDate = readDateOrFail(item.FirstDate); });
        fetchReached_ = true;
        DailyQuotes& dq = fetcher();
        if (firstDate.isValid()) {
            dq.DownloadDailyQuotes(item.Symbol, firstDate, platform().today());
        } else {
            // No fetch without a first date; nothing of an earlier reply may reach this security.
            handOvers().Quotes.clear();
            dq.Error = 2;
        }

        DaysStored = 0;
        if (dq.Error == 0)
            merge();

        step([&] { listener_.recordProgress(0); });
        step([&] { writer().SaveQuotes(); });
        step([&] { writer().CloseSecurity(); });
        step([&] { writer().CloseFolder(); });

        switch (dq.Error) {
        case 0:
        case 1:
            step([&] { listener_.lineAdded(QStringLiteral("Download Complete : ") + item.Symbol); });
            ++completedCount;
            break;
        case 2:
            step([&] { listener_.lineAdded(QStringLiteral("No Data Available : ") + item.Symbol); });
            ++noDataCount;
            break;
        case DailyQuotes::TooManyRequests:
            // The service is there but refuses for now: the user tries again later, or slower.
            step([&] { listener_.lineAdded(QStringLiteral("Too Many Requests : ") + item.Symbol); });
            break;
        default:
            step([&] { listener_.lineAdded(QStringLiteral("No Internet Connection : ") + item.Symbol); });
            break;
        }
        listener_.countersChanged(completedCount, upToDateCount, noDataCount);
    }

    step([&] {
        listener_.captionChanged(QString::number(index) + QStringLiteral(" of ") + QString::number(count)
                                 + QStringLiteral(" Completed. / "));
    });
}

void DownloadRun::merge() {
    const auto& quotes = handOvers().Quotes;
    QSet<qint32> stored;
    // A security takes at most 32,767 records from one reply.
    const int highest = std::min(quotes.upperBound(), int(std::numeric_limits<qint16>::max()));
    step([&] { listener_.recordRange(highest); });
    for (int r = highest; r >= 1; --r) {
        RecordIndex = static_cast<qint16>(r);
        const QuoteRecord& record = quotes[r];
        step([&] { listener_.recordProgress(highest - r + 1); });

        QString key;
        step([&] { key = Regional::yyyymmdd(readDateOrFail(record.Dat)); });

        bool exists = true;
        step([&] {
            if (key.isEmpty())
                typeMismatch();
            exists = writer().DateExists(key);
        });
        if (exists)
            step([&] { writer().DeleteQuote(key); });

        step([&] {
            bool ok = false;
            const qint32 date = key.toInt(&ok);
            if (!ok)
                typeMismatch();
            writer().AddQuote(date, 0, throughText(record.OpenPrice), throughText(record.High),
                              throughText(record.Low), throughText(record.ClosePrice),
                              throughText(record.Volume), 0.0);
            stored.insert(date);
        });
    }
    DaysStored = int(stored.size());
}
