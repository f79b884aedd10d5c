#pragma once
// Filling a chart from the store: every record of one security, read once through SecurityReader
// with the store's progress window up, into the chart's own series. The redraws work on that
// series and never go back to the store.

#include "frame/Records.h"

#include <QString>

#include <vector>

enum class ChartLoadEnd {
    Complete,    // every record was read
    Cancelled,   // the user cancelled in the progress window; the records read so far are kept
};

// A chart holds at most this many records: its record counter is a signed 16-bit number.
inline constexpr int ChartRecordLimit = 32767;

// Reads the security of `symbol` in `folder` (both trimmed here) into `quotes`, oldest first,
// appending one record at a time. Each record keeps its date as date text, its prices as the
// "####0.00" text read back (the chart works with two decimals), its volume rounded half to even
// into 32 bits. A failing store operation, record number 32,768 and a volume beyond 32 bits raise a
// Failure; the records read until then stay in `quotes` (the one of an out-of-range volume with a
// volume of 0).
ChartLoadEnd LoadChart(const QString& folder, const QString& symbol, std::vector<QuoteRecord>& quotes);
