#include "sheet/SheetLoad.h"

#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "sheet/SheetRows.h"
#include "store/ReadProgress.h"
#include "store/SecurityReader.h"

#include <vector>

QString PeriodicityText(qint32 code) {
    switch (code) {
    case 1: return QStringLiteral("Daily");
    case 2: return QStringLiteral("Weekly");
    case 3: return QStringLiteral("Monthly");
    default: return QString::number(code);
    }
}

qint32 OpenForLongRead(ReadProgress& progress, SecurityReader& reader, const QString& folder,
                       const QString& symbol) {
    progress.Show();
    reader.OpenFolder(folder.trimmed());
    reader.OpenSecurity(symbol.trimmed());

    const qint32 count = reader.GetRecordCount();
    progress.SetRange(0, count);
    progress.SetStep(1);
    progress.SetCaption(QStringLiteral("Read Security data..."));
    progress.SetMessage(QStringLiteral("Progress...."));
    return count;
}

SheetLoadEnd LoadSheet(const QString& folder, const QString& symbol, SheetRows& rows,
                       SheetLoadListener& listener) {
    rows.clear();

    // The rows are gathered here and handed to the model in one go, also when the load stops
    // half-way, so that a long security does not cost one view update per record.
    std::vector<SheetRow> read;
    auto handOver = [&] { rows.append(std::move(read)); };

    const std::unique_ptr<ReadProgress> progress = ReadProgress::create();
    SecurityReader reader;
    try {
        const qint32 count = OpenForLongRead(*progress, reader, folder, symbol);

        // "Last Date" starts as the first date; the record read last replaces it at the end.
        const QString firstDate = DateToText(reader.GetFirstDate());
        listener.firstDateRead(firstDate);
        listener.periodicityRead(PeriodicityText(reader.GetPeriodicity()));
        listener.lastDateRead(firstDate);

        reader.SetRecordMode(2);

        if (reader.GetRecordsRemaining() >= 1) {
            if (count > 0)
                read.reserve(static_cast<size_t>(count));
            while (reader.GetRecordsRemaining() >= 1) {
                reader.NextRecord();
                SheetRow row;
                row.date = reader.GetDate();
                row.values[0] = reader.GetOpen();
                row.values[1] = reader.GetHigh();
                row.values[2] = reader.GetLow();
                row.values[3] = reader.GetClose();
                row.values[4] = reader.GetVolume();
                read.push_back(row);

                progress->StepIt();
                if (progress->GetCancelled()) {
                    progress->Hide();
                    reader.CloseSecurity();
                    reader.CloseFolder();
                    handOver();
                    return SheetLoadEnd::Cancelled;
                }
            }
            listener.lastDateRead(DateToText(reader.GetDate()));
        }

        reader.CloseSecurity();
        reader.CloseFolder();
    } catch (const Failure&) {
        handOver();
        throw;
    }
    handOver();
    return SheetLoadEnd::Complete;
}
