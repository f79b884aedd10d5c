#pragma once
// The addresses of the web services the download runs fetch from. They live here and nowhere
// else; tests point them at a loopback server through the settings.
//
// Each source is chosen in the per-user settings, section "Sources" (keys "Quotes", "Bhavcopy",
// "IndexArchive"):
//   today                        today's service at its own address (the default, also when the
//                                key is missing or empty)
//   today@<scheme://host:port>   today's protocol, spoken to another host (a mirror, a caching
//                                proxy, a test server); plain HTTP is allowed there
//   anything else                an endpoint that speaks the older protocol, used as it stands

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

namespace ServiceAddresses {

// The endpoint of the historical quotes service when the setting "Quotes" names one: scheme and
// host (and port), no path; the fetcher appends "/table.csv?s=..." to it.
QString yahooQuotes();

// The endpoint of the exchange's archive of daily bhav copies when the setting "Bhavcopy" names
// one: scheme and host, no path; the NSE run appends "/content/historical/EQUITIES/..." to it.
QString nseBhavCopies();
// The endpoint of the server that holds the archive of index data when the setting
// "IndexArchive" names one: scheme and host (and port), no path; the archive lies at
// IndexArchivePath on it.
QString nseIndexArchive();
inline const QString IndexArchivePath = QStringLiteral("/downloads/index.zip");
struct Source {
    bool today = true;   // today's protocol, else the older one
    // today: scheme, host and port, no path and no final slash ("https://query2.finance.yahoo.com");
    // else the endpoint as the setting holds it, trimmed.
    QString address;
};

// A setting's value read as a source; `todayAddress` is where today's service lives.
Source readSource(const QString& value, const QString& todayAddress);

// The sources as the settings choose them now.
Source quotesSource();
Source bhavcopySource();
Source indexArchiveSource();

// Where today's services live.
inline constexpr const char* TodayQuotesAddress = "https://query2.finance.yahoo.com";
inline constexpr const char* TodayExchangeAddress = "https://nsearchives.nseindia.com";

// Sources chosen for one run in place of the settings (the command line's --source), keyed as the
// settings are ("Quotes", "Bhavcopy", "IndexArchive"), with values as the settings hold them. Once
// the object is released, the settings hold again.
class SourcesForRun {
public:
    explicit SourcesForRun(const QList<QPair<QString, QString>>& values);
    ~SourcesForRun();
    SourcesForRun(const SourcesForRun&) = delete;
    SourcesForRun& operator=(const SourcesForRun&) = delete;
};

// The User-Agent of a desktop browser: today's services answer programs without one badly.
QByteArray browserUserAgent();

} // namespace ServiceAddresses
