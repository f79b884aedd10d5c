#include "sheet/RecordEdits.h"

#include "frame/Failure.h"
#include "frame/Regional.h"
#include "store/SecurityWriter.h"

namespace {

// A record written by the user carries mark -1 and extra -1.0.
constexpr qint32 UserMark = -1;
constexpr double UserExtra = -1.0;

QString storeDateText(const QDate& date) {
    const QString text = Regional::yyyymmdd(date);
    if (text.isEmpty())
        throw Failure(FailureNumber::Generic, QStringLiteral("Invalid date."), QStringLiteral("DataSheetWindow"));
    return text;
}

} // namespace

InsertEnd InsertRecord(const QString& folder, const QString& symbol, const RecordValues& record,
                       const std::function<void()>& dateExists) {
    const QString d = storeDateText(record.Dat);
    SecurityWriter writer;
    writer.OpenFolder(folder.trimmed());
    writer.OpenSecurity(symbol.trimmed());
    if (writer.DateExists(d)) {
        if (dateExists)
            dateExists();
        writer.CloseSecurity();
        writer.CloseFolder();
        return InsertEnd::DateExists;
    }
    writer.AddQuote(d.toInt(), UserMark, record.OpenPrice, record.High, record.Low, record.ClosePrice,
                    record.Volume, UserExtra);
    writer.CloseSecurity();
    writer.CloseFolder();
    return InsertEnd::Added;
}

void ChangeRecord(const QString& folder, const QString& symbol, const RecordValues& record, RecordPlace place) {
    const QString d = storeDateText(record.Dat);
    SecurityWriter writer;
    writer.OpenFolder(folder.trimmed());
    writer.OpenSecurity(symbol.trimmed());
    if (place.ofDate > 1)
        writer.ChangeNthQuote(d, place.nth, record.OpenPrice, record.High, record.Low, record.ClosePrice, record.Volume);
    else
        writer.ChangeQuote(d, QStringLiteral("-1"), UserMark, record.OpenPrice, record.High, record.Low,
                           record.ClosePrice, record.Volume, UserExtra);
    writer.CloseSecurity();
    writer.CloseFolder();
}

void DeleteRecord(const QString& folder, const QString& symbol, const QDate& date, RecordPlace place) {
    const QString d = storeDateText(date);
    SecurityWriter writer;
    writer.OpenFolder(folder.trimmed());
    writer.OpenSecurity(symbol.trimmed());
    if (place.ofDate > 1) {
        writer.DeleteNthQuote(d, place.nth);   // that bar alone, not its whole day
    } else {
        writer.DeleteQuote(d);
        writer.SaveQuotes();
    }
    writer.CloseSecurity();
    writer.CloseFolder();
}
