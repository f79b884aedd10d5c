#include "support/StoreKit.h"

#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"

void makeSecurity(const QString& folder, const QString& symbol, const QString& name, const std::vector<Bar>& bars,
                  qint32 periodicity) {
    SecurityWriter writer;
    writer.OpenFolder(folder);
    writer.CreateSecurity(symbol, name, periodicity);
    for (const Bar& b : bars)
        writer.AddQuote(b.date, 0, b.open, b.high, b.low, b.close, b.volume, 0.0);
    writer.SaveQuotes();
    writer.CloseSecurity();
    writer.CloseFolder();
}

std::vector<Bar> readBars(const QString& folder, const QString& symbol) {
    SecurityReader reader;
    reader.OpenFolder(folder);
    reader.OpenSecurity(symbol);
    std::vector<Bar> bars;
    while (reader.GetRecordsRemaining() > 0) {
        reader.NextRecord();
        bars.push_back({reader.GetDate(), reader.GetOpen(), reader.GetHigh(), reader.GetLow(), reader.GetClose(), reader.GetVolume()});
    }
    reader.CloseSecurity();
    reader.CloseFolder();
    return bars;
}

std::vector<qint32> readDates(const QString& folder, const QString& symbol) {
    std::vector<qint32> dates;
    for (const Bar& b : readBars(folder, symbol))
        dates.push_back(b.date);
    return dates;
}
