#include "download/ServiceAddresses.h"

namespace {
const QString DefaultYahooQuotes = QStringLiteral("http://ichart.finance.yahoo.com");
QString yahooOverride;
const QString DefaultNseIndexArchive = QStringLiteral("http://www.brindlemark.net");
QString nseIndexOverride;
} // namespace

namespace ServiceAddresses {

QString yahooQuotes() { return yahooOverride.isEmpty() ? DefaultYahooQuotes : yahooOverride; }

void setYahooQuotes(const QString& endpoint) { yahooOverride = endpoint; }

QString nseIndexArchive() { return nseIndexOverride.isEmpty() ? DefaultNseIndexArchive : nseIndexOverride; }

void setNseIndexArchive(const QString& endpoint) { nseIndexOverride = endpoint; }

} // namespace ServiceAddresses
