#pragma once
// Making empty securities in a data folder, and the folder's values.dat that tells the NSE
// download where to start. What the Create New Symbols dialog does once its checks have passed.

#include <QDate>
#include <QString>
#include <QStringList>

class SecurityWriter;

namespace CreateSymbols {

// The name of the date file in a data folder.
inline const QString ValuesFileName = QStringLiteral("values.dat");

// Where values.dat of `folder` lies (the folder text as given, then the file name).
QString ValuesFilePath(const QString& folder);

// The one line values.dat holds: the date in the pattern dd/mm/yyyy with the user's date
// separator in place of the slash, then a line end.
QByteArray ValuesFileText(const QDate& fromDate);

// Replaces values.dat of `folder` with the from date. Raises Failure when it cannot be written.
void WriteValuesFile(const QString& folder, const QDate& fromDate);
// Replaces values.dat of `folder` with `text` as it stands, whole or not at all. Raises Failure
// when it cannot be written; the old file then stays.
void WriteValuesText(const QString& folder, const QByteArray& text);

// Makes one empty security per symbol, in list order, each with the from date as its first and
// last date. A symbol the folder already holds is deleted first, with all its records. Each
// symbol is trimmed; symbol and name are the same text. The writer is opened on `folder` and
// closed at the end. A Failure is handed on as it comes: what was made before it stays made and
// the folder is left as the failing call left it.
void CreateSecurities(SecurityWriter& writer, const QString& folder, const QStringList& symbols,
                      const QDate& fromDate);

} // namespace CreateSymbols
