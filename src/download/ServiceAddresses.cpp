#include "download/ServiceAddresses.h"

namespace {
const QString DefaultYahooQuotes = QStringLiteral("http://ichart.finance.yahoo.com");
QString yahooOverride;
} // namespace

namespace ServiceAddresses {

QString yahooQuotes() { return yahooOverride.isEmpty() ? DefaultYahooQuotes : yahooOverride; }

void setYahooQuotes(const QString& endpoint) { yahooOverride = endpoint; }

} // namespace ServiceAddresses
