#include "download/ServiceAddresses.h"

namespace {
const QString DefaultYahooQuotes = QStringLiteral("http://ichart.finance.yahoo.com");
QString yahooOverride;
const QString DefaultNseBhavCopies = QStringLiteral("http://www.nseindia.com");
QString nseOverride;
} // namespace

namespace ServiceAddresses {

QString yahooQuotes() { return yahooOverride.isEmpty() ? DefaultYahooQuotes : yahooOverride; }

void setYahooQuotes(const QString& endpoint) { yahooOverride = endpoint; }

QString nseBhavCopies() { return nseOverride.isEmpty() ? DefaultNseBhavCopies : nseOverride; }

void setNseBhavCopies(const QString& endpoint) { nseOverride = endpoint; }

} // namespace ServiceAddresses
