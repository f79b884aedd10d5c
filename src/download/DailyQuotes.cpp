#include "download/DailyQuotes.h"

#include "download/ChartReply.h"
#include "download/Inet.h"
#include "download/ServiceAddresses.h"
#include "frame/Failure.h"
#include "frame/Platform.h"
#include "frame/ProgramState.h"
#include "frame/Regional.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int Stride = 7;   // Date, Open, High, Low, Close, Volume, and a seventh column

double toDouble(const Regional::NumberReader& numbers, QStringView field) {
    const auto value = numbers.read(field);
    if (!value)
        throw Failure(FailureNumber::TypeMismatch, QStringLiteral("Type mismatch"), QStringLiteral("DailyQuotes"));
    return *value;
}

// Text to a signed 32-bit whole number, half to even; out of range is a failure.
qint32 toVolume(const Regional::NumberReader& numbers, QStringView field) {
    const double rounded = std::nearbyint(toDouble(numbers, field));
    if (rounded < std::numeric_limits<qint32>::min() || rounded > std::numeric_limits<qint32>::max())
        throw Failure(FailureNumber::Overflow, QStringLiteral("Overflow"), QStringLiteral("DailyQuotes"));
    return static_cast<qint32>(rounded);
}

void writeTrace(const QString& normalised) {
    QFile file(DailyQuotes::tracePath());
    const QByteArray bytes = normalised.toUtf8() + "\r\n";
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        throw Failure(FailureNumber::PathFileAccess, QStringLiteral("Path/File access error"),
                      QStringLiteral("DailyQuotes"));
}

} // namespace

QString DailyQuotes::tracePath() {
#ifdef Q_OS_WIN
    if (QFileInfo::exists(QStringLiteral("c:/")))
        return QStringLiteral("c:\\t.txt");
#endif
    const QString folder = platform().cacheFolder();
    QDir().mkpath(folder);
    return QDir(folder).filePath(QStringLiteral("t.txt"));
}

QString DailyQuotes::QuotesQuery(const QString& Symbol, const QDate& FirstDate, const QDate& LastDate) {
    const auto n = [](int value) { return QString::number(value); };
    return QStringLiteral("/table.csv?s=") + Symbol.trimmed()
         + QStringLiteral("&d=") + n(LastDate.month() - 1)
         + QStringLiteral("&e=") + n(LastDate.day())
         + QStringLiteral("&f=") + n(LastDate.year())
         + QStringLiteral("&g=d&a=") + n(FirstDate.month() - 1)
         + QStringLiteral("&b=") + n(FirstDate.day())
         + QStringLiteral("&c=") + n(FirstDate.year())
         + QStringLiteral("&ignore=.csv");
}

QString DailyQuotes::NormaliseReply(QString reply) {
    reply.replace(QChar(13), QChar(u','));
    reply.replace(QChar(10), QChar(u','));
    return reply;
}

qint16 DailyQuotes::ReadTable(const QString& normalised) {
    const QList<QStringView> fields = QStringView(normalised).split(u',');
    const qsizetype last = fields.size() - 1;   // L, the highest field number
    if (last <= 10)
        return 2;

    auto& quotes = handOvers().Quotes;
    quotes.clear();
    const Regional::NumberReader numbers;
    try {
        int row = 0;
        for (qsizetype i = Stride; i <= last - Stride; i += Stride) {
            ++row;
            const auto high = numbers.read(fields[i + 2]);
            if (!high)
                continue;   // a High that is no number: the row doesn't count, its index stays empty
            quotes.resizeTo(row);
            QuoteRecord& record = quotes[row];
            record.Dat = fields[i].toString();
            record.OpenPrice = toDouble(numbers, fields[i + 1]);
            record.High = *high;
            record.Low = toDouble(numbers, fields[i + 3]);
            record.ClosePrice = toDouble(numbers, fields[i + 4]);
            record.Volume = toVolume(numbers, fields[i + 5]);
        }
    } catch (const Failure&) {
        return 2;
    }
    return 0;
}

void DailyQuotes::DownloadDailyQuotes(const QString& Symbol, const QDate& FirstDate, const QDate& LastDate) {
    const ServiceAddresses::Source source = ServiceAddresses::quotesSource();
    if (source.today) {
        fetchChart(source.address, Symbol, FirstDate, LastDate);
        return;
    }
    try {
        const QString url = ServiceAddresses::yahooQuotes() + QuotesQuery(Symbol, FirstDate, LastDate);
        const QString normalised = NormaliseReply(connection_.OpenURL(url));
        writeTrace(normalised);
        Error = ReadTable(normalised);
    } catch (const Failure& failure) {
        Error = failure.Number == FailureNumber::Network ? 3 : 2;
    }
}

int DailyQuotes::RetryPauseMs(const QByteArray& retryAfter, int attempt) {
    constexpr qint64 LongestMs = 120 * 1000;
    const QByteArray text = retryAfter.trimmed();
    bool isNumber = false;
    const qint64 seconds = text.toLongLong(&isNumber);
    if (isNumber && seconds >= 0)
        return int(std::min(seconds * 1000, LongestMs));
    // An HTTP date: "Wed, 21 Oct 2015 07:28:00 GMT".
    QDateTime at = QLocale::c().toDateTime(QString::fromLatin1(text), QStringLiteral("ddd, dd MMM yyyy HH:mm:ss 'GMT'"));
    at.setTimeSpec(Qt::UTC);
    if (!text.isEmpty() && at.isValid())
        return int(std::clamp(QDateTime::currentDateTimeUtc().msecsTo(at), qint64(0), LongestMs));
    return 2000 * std::max(attempt, 1);
}

bool DailyQuotes::pause(int milliseconds) {
    if (milliseconds > 0 && !cancelled()) {
        QEventLoop loop;
        QTimer tick;
        QElapsedTimer clock;
        clock.start();
        QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
            if (cancelled() || clock.elapsed() >= milliseconds)
                loop.quit();
        });
        tick.start(std::min(milliseconds, 50));
        loop.exec();
    }
    return !cancelled();
}

void DailyQuotes::fetchChart(const QString& address, const QString& Symbol, const QDate& FirstDate,
                             const QDate& LastDate) {
    auto& quotes = handOvers().Quotes;
    quotes.clear();
    const QString url = address + ChartReply::query(Symbol, FirstDate, LastDate);
    const Inet::Headers headers{{"User-Agent", ServiceAddresses::browserUserAgent()},
                                {"Accept", "application/json"}};
    QByteArray body;
    for (int attempt = 1;; ++attempt) {
        try {
            body = connection_.OpenURLBytes(url, headers);
        } catch (const Failure& failure) {
            Error = failure.Number == FailureNumber::Network ? 3 : 2;
            return;
        }
        if (connection_.ResponseCode() != 429)
            break;
        if (attempt >= MaxTries || !pause(RetryPauseMs(connection_.ResponseHeader("Retry-After"), attempt))) {
            Error = TooManyRequests;
            return;
        }
    }
    try {
        writeTrace(QString::fromUtf8(body));
    } catch (const Failure&) {
        // The trace is an aid only: a reply read well is not lost for it.
    }

    // Anything but a plain answer (404 for a symbol the service does not know) holds no data.
    const QList<ChartBar> bars = connection_.ResponseCode() == 200 ? ChartReply::read(body) : QList<ChartBar>{};
    if (bars.isEmpty()) {
        Error = 2;
        return;
    }
    quotes.resizeTo(int(bars.size()));
    for (int i = 0; i < bars.size(); ++i) {
        const ChartBar& bar = bars[i];
        QuoteRecord& record = quotes[i + 1];
        record.Dat = bar.date.toString(Qt::ISODate);
        record.OpenPrice = bar.open;
        record.High = bar.high;
        record.Low = bar.low;
        record.ClosePrice = bar.close;
        // Whole shares, half to even; stored as it comes, past 32 bits too.
        record.Volume = std::nearbyint(bar.volume);
    }
    Error = 0;
}
