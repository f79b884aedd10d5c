#include "download/ServiceAddresses.h"

#include "frame/Platform.h"

namespace {
const QString DefaultYahooQuotes = QStringLiteral("http://ichart.finance.yahoo.com");
const QString DefaultNseBhavCopies = QStringLiteral("http://www.nseindia.com");
const QString DefaultNseIndexArchive = QStringLiteral("http://www.brindlemark.net");

const QString SourcesSection = QStringLiteral("Sources");
const QString TodayValue = QStringLiteral("today");

QList<QPair<QString, QString>> forRun;   // the sources of the run in hand, if any

QString setting(const QString& key) {
    for (const auto& [name, value] : forRun)
        if (name.compare(key, Qt::CaseInsensitive) == 0)
            return value;
    return platform().getSetting(SourcesSection, key, TodayValue);
}
} // namespace

namespace ServiceAddresses {

Source readSource(const QString& value, const QString& todayAddress) {
    const QString text = value.trimmed();
    if (text.isEmpty() || text.compare(TodayValue, Qt::CaseInsensitive) == 0)
        return {true, todayAddress};
    const QString prefix = TodayValue + u'@';
    if (text.startsWith(prefix, Qt::CaseInsensitive)) {
        QString address = text.mid(prefix.size()).trimmed();
        while (address.endsWith(u'/'))
            address.chop(1);
        return {true, address.isEmpty() ? todayAddress : address};
    }
    return {false, text};
}

Source quotesSource() {
    return readSource(setting(QStringLiteral("Quotes")), QString::fromLatin1(TodayQuotesAddress));
}

Source bhavcopySource() {
    return readSource(setting(QStringLiteral("Bhavcopy")), QString::fromLatin1(TodayExchangeAddress));
}

Source indexArchiveSource() {
    return readSource(setting(QStringLiteral("IndexArchive")), QString::fromLatin1(TodayExchangeAddress));
}

QString yahooQuotes() {
    const Source source = quotesSource();
    return source.today ? DefaultYahooQuotes : source.address;
}

QString nseBhavCopies() {
    const Source source = bhavcopySource();
    return source.today ? DefaultNseBhavCopies : source.address;
}

QString nseIndexArchive() {
    const Source source = indexArchiveSource();
    return source.today ? DefaultNseIndexArchive : source.address;
}

SourcesForRun::SourcesForRun(const QList<QPair<QString, QString>>& values) { forRun = values; }

SourcesForRun::~SourcesForRun() { forRun.clear(); }

QByteArray browserUserAgent() {
    return QByteArrayLiteral("Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 "
                             "(KHTML, like Gecko) Chrome/130.0.0.0 Safari/537.36");
}

} // namespace ServiceAddresses
