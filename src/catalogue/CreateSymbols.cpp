#include "catalogue/CreateSymbols.h"

#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Regional.h"
#include "store/SecurityWriter.h"

#include <QDir>
#include <QSaveFile>

namespace CreateSymbols {

namespace {
// Periodicity code of a daily security.
constexpr qint32 Daily = 1;

QString twoDigits(int n) { return QString::number(n).rightJustified(2, u'0'); }
} // namespace

QString ValuesFilePath(const QString& folder) {
    if (folder.endsWith(u'/') || folder.endsWith(u'\\'))
        return folder + ValuesFileName;
    return folder + u'/' + ValuesFileName;
}

QByteArray ValuesFileText(const QDate& fromDate) {
    QString sep = GetDateSeparator();
    if (sep.isEmpty())
        sep = QStringLiteral("/");
    const QString line = twoDigits(fromDate.day()) + sep + twoDigits(fromDate.month()) + sep
                         + QString::number(fromDate.year()).rightJustified(4, u'0');
    return (line + QStringLiteral("\r\n")).toUtf8();
}

void WriteValuesFile(const QString& folder, const QDate& fromDate) { WriteValuesText(folder, ValuesFileText(fromDate)); }

void WriteValuesText(const QString& folder, const QByteArray& text) {
    const QString path = ValuesFilePath(folder);
    QSaveFile file(path);
    const auto fail = [&] {
        throw Failure(FailureNumber::PathNotFound,
                      QStringLiteral("Could not write %1: %2").arg(QDir::toNativeSeparators(path), file.errorString()),
                      QStringLiteral("CreateSymbols::WriteValuesFile"));
    };
    if (!file.open(QIODevice::WriteOnly))
        fail();
    file.write(text);
    if (!file.commit())
        fail();
}

void CreateSecurities(SecurityWriter& writer, const QString& folder, const QStringList& symbols,
                      const QDate& fromDate) {
    const qint32 storeDate = Regional::toStoreDate(fromDate);
    const QString storeDateText = Regional::yyyymmdd(fromDate);
    if (!SecurityWriter::CanHoldDate(storeDate))   // refused before any security is deleted or made
        throw Failure(FailureNumber::Store,
                      QStringLiteral("%1 is not a date the store can hold: a day of the years 1900 to 2999.")
                          .arg(Regional::dateText(fromDate)),
                      QStringLiteral("CreateSymbols::CreateSecurities"));
    writer.OpenFolder(folder);
    for (const QString& line : symbols) {
        const QString symbol = line.trimmed();
        if (writer.SymbolExists(symbol))
            writer.DeleteSecurity(symbol);
        writer.CreateSecurity(symbol, symbol, Daily);
        // The seed record: added and taken out again, so that the security carries the from
        // date as its first and last date while it holds no records.
        writer.AddQuote(storeDate, 0, 0, 0, 0, 0, 0, 0);
        writer.DeleteQuote(storeDateText);
        writer.CloseSecurity();
    }
    writer.CloseFolder();
}

} // namespace CreateSymbols
