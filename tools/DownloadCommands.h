#pragma once
// The unattended downloads of brindlemark-cli.

#include <QDate>
#include <QStringList>
#include <QTextStream>

// `download quotes FOLDER... [--symbols S,...]`: the World Exchanges run over every security of
// each folder (or only the given symbols), from 35 days before each security's last date to
// today, merged as the Download Progress window merges. One line per security on `out`, a
// summary at the end; a progress line on `progress` when it is a terminal. Exit status: 0 all
// done, 1 a security failed (named on `err`), 130 stopped by Ctrl+C after the security in hand.
int downloadQuotes(const QStringList& folders, const QStringList& symbols, QTextStream& out, QTextStream& err,
                   bool progressOnTerminal);

// `download bhavcopy FOLDER [--from DATE] [--to DATE]`: the NSE India walk over the folder, from
// the day after its values.dat's date (or `from`) to today (or `to`); values.dat is rewritten as
// the screen rewrites it. One line per day with data. Exit status: 0 done, 1 the run could not
// start (the reason on `err`), 130 stopped by Ctrl+C after the day in hand.
int downloadBhavCopies(const QString& folder, const QDate& from, const QDate& to, QTextStream& out,
                       QTextStream& err);

// `download index FOLDER`: the index folder brought up to date as NSE India Index does it: day by
// day from the exchange's daily closes (the source of today), or the archive of an endpoint
// unpacked over it. One line per day with data. Exit status: 0 done, 1 failed (the reason on
// `err`), 130 stopped by Ctrl+C after the day in hand.
int downloadIndex(const QString& folder, QTextStream& out, QTextStream& err);

// Asks a run in progress to stop after the security in hand (safe to call from a signal handler).
void requestStop();
