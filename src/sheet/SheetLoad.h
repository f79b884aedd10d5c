#pragma once
// Filling a data sheet from the store: the header of one security and all its records, read
// through SecurityReader with the store's progress window up. The screen maps what is reported
// onto its boxes; the rows go into a SheetRows model.

#include <QString>

class SheetRows;

// What the load reports for the header boxes, in the order it learns it.
class SheetLoadListener {
public:
    virtual ~SheetLoadListener() = default;
    virtual void firstDateRead(const QString& dateText) = 0;
    // "Daily", "Weekly", "Monthly", or the digits of any other periodicity code.
    virtual void periodicityRead(const QString& text) = 0;
    // The first date at the start of the load; the date of the record read last at its end.
    virtual void lastDateRead(const QString& dateText) = 0;
};

enum class SheetLoadEnd {
    Complete,    // every record was read
    Cancelled,   // the user cancelled in the progress window; the rows read so far are in place
};

// Reads the security of `symbol` in `folder` (both trimmed here) into `rows`, which are emptied
// first. A failing store operation raises its Failure; the rows read until then are kept.
SheetLoadEnd LoadSheet(const QString& folder, const QString& symbol, SheetRows& rows,
                       SheetLoadListener& listener);

// The periodicity box's text for a periodicity code: "Daily", "Weekly", "Monthly", else the digits.
QString PeriodicityText(qint32 code);

class ReadProgress;
class SecurityReader;
// The start of a long read, as the sheet and the chart make it: the progress window shown, the
// folder and the security opened (names trimmed), the window's range, step, caption and message
// set. Returns the security's record count; a failure of the store is raised.
qint32 OpenForLongRead(ReadProgress& progress, SecurityReader& reader, const QString& folder,
                       const QString& symbol);
