#pragma once
// The addresses of the web services the download runs fetch from. They live here and nowhere
// else; tests point them at a loopback server.

#include <QString>

namespace ServiceAddresses {

// The endpoint of the historical quotes service: scheme and host (and port), no path; the
// fetcher appends "/table.csv?s=..." to it.
QString yahooQuotes();
// Points the quotes service elsewhere; empty text restores the default.
void setYahooQuotes(const QString& endpoint);

// The endpoint of the exchange's archive of daily bhav copies: scheme and host, no path; the NSE
// run appends "/content/historical/EQUITIES/..." to it.
QString nseBhavCopies();
// Points the archive elsewhere; empty text restores the default.
void setNseBhavCopies(const QString& endpoint);
// The endpoint of the server that holds the archive of index data: scheme and host (and port),
// no path; the archive lies at IndexArchivePath on it.
QString nseIndexArchive();
// Points the index archive elsewhere; empty text restores the default.
void setNseIndexArchive(const QString& endpoint);
inline const QString IndexArchivePath = QStringLiteral("/downloads/index.zip");

} // namespace ServiceAddresses
