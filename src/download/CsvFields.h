#pragma once
// Reading of the exchange's CSV files, as bytes: lines, fields (quoted ones too) and numbers in the
// C locale's form.

#include <QByteArrayView>
#include <QList>

#include <optional>

namespace CsvFields {

// The next line of `text` from `at` (line feeds, carriage returns or both end a line), `at` moved
// past it.
QByteArrayView nextLine(QByteArrayView text, qsizetype& at);

// The fields of a line, each trimmed. Commas part them; a field that starts with a double quote
// runs to its closing quote and may hold commas (a doubled quote in it stays doubled). False when a
// quote is left open.
bool splitFields(QByteArrayView line, QList<QByteArrayView>& fields);

// A number in the C locale's form, whatever the user's; empty when the field holds none.
std::optional<double> number(QByteArrayView field);

} // namespace CsvFields
