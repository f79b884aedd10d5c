#pragma once
// The three edits of a data sheet on the store: insert one record, change the values of one
// record, delete one record. Each opens the folder and the security through its own
// SecurityWriter, does its work and closes them again. A failing store operation raises its
// Failure; what was written until then stays written.

#include <QDate>
#include <QString>

#include <functional>

// One record as the record dialog gives it.
struct RecordValues {
    QDate Dat;
    double OpenPrice = 0;
    double High = 0;
    double Low = 0;
    double ClosePrice = 0;
    double Volume = 0;
};

enum class InsertEnd {
    Added,         // the record is in the store
    DateExists,    // the security holds that date already; nothing was written
};

// Adds a record written by the user (mark -1), unless the security holds its date already; then
// `dateExists` runs (it tells the user) while the security is still open, and nothing is written.
InsertEnd InsertRecord(const QString& folder, const QString& symbol, const RecordValues& record,
                       const std::function<void()>& dateExists = {});

// Where the security holds one record of a date, the record is known by its date; where it holds
// several (the bars of an intraday day), by its place among them too: `nth` of `ofDate`.
struct RecordPlace {
    int nth = 0;
    int ofDate = 1;
};

// Replaces the values of the record of record.Dat.
void ChangeRecord(const QString& folder, const QString& symbol, const RecordValues& record, RecordPlace place = {});

// Removes the record of that date.
void DeleteRecord(const QString& folder, const QString& symbol, const QDate& date, RecordPlace place = {});
