#pragma once
// The exchange's daily equity file as it is published today, in either of its two forms, read
// into the rows of a day. Columns are found by the names in the header, wherever they stand:
//   since 8 July 2024   TckrSymb, SctySrs, OpnPric, HghPric, LwPric, ClsPric, TtlTradgVol
//   before              SYMBOL, SERIES, OPEN, HIGH, LOW, CLOSE, TOTTRDQTY
// Numbers are read with a decimal point whatever the user's regional settings: a price is the
// exchange's price.

#include "download/BhavCopy.h"

#include <QByteArray>
#include <QDate>

#include <optional>

namespace BhavCopyCsv {

// One row per symbol, in the order in which the symbols first appear: the row of the EQ series
// when the symbol has one, else of BE, else its first row. A line whose fields are missing or
// whose numbers do not read gives no row, nor does a row of the symbol "W1". Empty when the text
// is no such file (no header of either form: an error page, a captive portal's page) or holds no
// row.
// `tradeDay`, when given, takes the day the file says its trades are of (TradDt, TIMESTAMP), as
// its first row says it; an invalid date when the file says none.
std::optional<QList<BhavRow>> read(const QByteArray& csv, QDate* tradeDay = nullptr);

} // namespace BhavCopyCsv
