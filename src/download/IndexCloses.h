#pragma once
// The exchange's daily closes of its indices, "ind_close_all_<ddmmyyyy>.csv": one line per index
// under a header. Columns are found by their names in the header, wherever they stand:
//   Index Name, Index Date (dd-mm-yyyy), Open Index Value, High Index Value, Low Index Value,
//   Closing Index Value, Volume
// (further columns are passed over). Numbers are read with a decimal point whatever the user's
// regional settings: an index value is the exchange's value. "-" stands for a value that does not
// exist: an open, high or low without one takes the close, a volume without one is 0, and a line
// without a close gives no row.

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>

#include <optional>

struct IndexClose {
    QString Name;   // trimmed, never empty
    QDate Date;     // from the line's own Index Date
    double Open = 0;
    double High = 0;
    double Low = 0;
    double Close = 0;
    double Volume = 0;
};

namespace IndexCloses {

// The rows of a file, in its order. A line whose name is empty, whose date does not read or whose
// numbers do not read (other than "-") gives no row. Empty when the text is no such file (no
// header with a name, a date and a close: an error page, a captive portal's page) or holds no row.
std::optional<QList<IndexClose>> read(const QByteArray& csv);

} // namespace IndexCloses
