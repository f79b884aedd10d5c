#include "sheet/ChartData.h"

#include "frame/CommonRoutines.h"
#include "frame/Failure.h"
#include "frame/Regional.h"
#include "sheet/SheetLoad.h"
#include "store/ReadProgress.h"
#include "store/SecurityReader.h"

#include <cmath>
#include <limits>

namespace {

const QString Source = QStringLiteral("ChartData");

// A price as the chart keeps it: written with "####0.00" and read back under the same settings.
double chartPrice(const Regional::NumberReader& numbers, double value) {
    const auto read = numbers.read(Regional::priceText(value));
    if (!read)
        throw Failure(FailureNumber::TypeMismatch, QStringLiteral("Type mismatch"), Source);
    return *read;
}

// A volume rounded to a whole number, halves to even, as a signed 32-bit number.
qint32 chartVolume(double value) {
    const double whole = std::nearbyint(value);
    if (!(whole >= std::numeric_limits<qint32>::min() && whole <= std::numeric_limits<qint32>::max()))
        throw Failure(FailureNumber::Overflow, QStringLiteral("Overflow"), Source);
    return static_cast<qint32>(whole);
}

} // namespace

ChartLoadEnd LoadChart(const QString& folder, const QString& symbol, std::vector<QuoteRecord>& quotes) {
    const std::unique_ptr<ReadProgress> progress = ReadProgress::create();
    SecurityReader reader;

    OpenForLongRead(*progress, reader, folder, symbol);

    reader.SetRecordMode(2);

    if (reader.GetRecordsRemaining() >= 1) {
        const Regional::NumberReader numbers;
        qint16 counter = 0;
        while (reader.GetRecordsRemaining() >= 1) {
            reader.NextRecord();
            if (counter == ChartRecordLimit)
                throw Failure(FailureNumber::Overflow, QStringLiteral("Overflow"), Source);
            ++counter;
            QuoteRecord& record = quotes.emplace_back();
            record.Dat = DateToText(reader.GetDate());
            record.OpenPrice = chartPrice(numbers, reader.GetOpen());
            record.High = chartPrice(numbers, reader.GetHigh());
            record.Low = chartPrice(numbers, reader.GetLow());
            record.ClosePrice = chartPrice(numbers, reader.GetClose());
            record.Volume = chartVolume(reader.GetVolume());

            progress->StepIt();
            if (progress->GetCancelled()) {
                progress->Hide();
                reader.CloseSecurity();
                reader.CloseFolder();
                return ChartLoadEnd::Cancelled;
            }
        }
    }

    reader.CloseSecurity();
    reader.CloseFolder();
    return ChartLoadEnd::Complete;
}
