#include "download/ServiceAddresses.h"

namespace {
const QString DefaultYahooQuotes = QStringLiteral("http://ichart.finance.yahoo.com");
QString yahooOverride;
const QString DefaultNseBhavCopies = QStringLiteral("http://www.nseindia.com");
QString nseOverride;
const QString DefaultNseIndexArchive = QStringLiteral("http://www.brindlemark.net");
QString nseIndexOverride;
} // namespace

namespace ServiceAddresses {

QString yahooQuotes() { return yahooOverride.isEmpty() ? DefaultYahooQuotes : yahooOverride; }

void setYahooQuotes(const QString& endpoint) { yahooOverride = endpoint; }

QString nseBhavCopies() { return nseOverride.isEmpty() ? DefaultNseBhavCopies : nseOverride; }

void setNseBhavCopies(const QString& endpoint) { nseOverride = endpoint; }

QString nseIndexArchive() { return nseIndexOverride.isEmpty() ? DefaultNseIndexArchive : nseIndexOverride; }

void setNseIndexArchive(const QString& endpoint) { nseIndexOverride = endpoint; }

} // namespace ServiceAddresses
