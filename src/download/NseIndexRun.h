#pragma once
// The NSE index run: brings an index folder up to date from the exchange's daily closes of its
// indices. It asks for one calendar day at a time, from the day after the folder's last date (the
// latest last date of its securities; a folder without securities starts NewFolderDays back) to
// today, and adds every index of a day with data to its security, made when the index is first
// seen. A security stands for the index of its name; its symbol is made from the name.
//
// The run knows no screen: it reports each day through a listener. A stop asked for during a
// day takes effect once that day is written whole.

#include <QDate>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

class Inet;
struct IndexClose;

class NseIndexListener {
public:
    virtual ~NseIndexListener() = default;
    // A day is being asked for; its progress line ("Fetching 04/11/2024 (3 of 21)").
    virtual void dayStarted(const QString& line) = 0;
    // A day with data has been written; its line ("04/11/2024 Updated: 5 indices.").
    virtual void dayUpdated(const QString& line) = 0;
};

class NseIndexRun {
public:
    // `address`: where today's protocol is spoken (scheme, host and port, no final slash).
    NseIndexRun(Inet& connection, const QString& address, NseIndexListener& listener);

    // Brings the folder (trimmed; made when missing) up to date and returns the number of days
    // with data. The folder's lock is held meanwhile. Raises Failure when another program holds
    // it, when the folder can't be read, or when a day can't be written (the days before it stay
    // written).
    int Run(const QString& folderText);

    // Set to stop after the day in hand; cleared when a run starts.
    bool StopRequested = false;
    // Whether the last run ended on a stop before today.
    bool Stopped() const { return stopped_; }

    // How far back a folder without securities starts.
    static constexpr int NewFolderDays = 365;

    // The symbol of a new security for the index `name`: the name's letters and digits in upper
    // case, at most 14 of them, with a number at the end when the symbol is among `taken` (upper
    // case) already.
    static QString SymbolFor(const QString& name, const QSet<QString>& taken);

private:
    void survey(const QString& folder);
    int writeDay(const QString& folder, const QList<IndexClose>& rows);

    Inet& connection_;
    QString address_;
    NseIndexListener& listener_;
    bool stopped_ = false;

    QHash<QString, QString> symbolOf_;   // the key of an index's name -> its security's symbol
    QSet<QString> taken_;                // the folder's symbols, upper case
    QDate lastDate_;                     // the folder's last date; invalid without securities
};
