// The exchange's daily file, either form, from any bytes: the reader never fails, and what it
// gives back is nothing or at least one row, one per symbol, each with a trimmed symbol that is
// not empty and finite numbers. Bytes that start as a zip archive does ("PK") are unpacked in
// memory first, as a day's reply is. Seeds: the two daily files beside the repository
// (fixtures/services/*.csv), plain and zipped.
#include "download/BhavCopyCsv.h"
#include "download/ZipEngine.h"

#include <QSet>

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QByteArray body(reinterpret_cast<const char*>(data), qsizetype(size));
    if (body.startsWith("PK")) {
        const auto file = FirstMemberBytes(body, 1 << 20);
        if (!file)
            return 0;
        if (file->size() > (1 << 20))
            std::abort();
        body = *file;
    }
    const auto rows = BhavCopyCsv::read(body);
    if (!rows)
        return 0;
    if (rows->isEmpty())
        std::abort();
    QSet<QString> symbols;
    for (const BhavRow& row : *rows) {
        if (row.Symbol.isEmpty() || row.Symbol != row.Symbol.trimmed() || !row.HasPrices)
            std::abort();
        if (symbols.contains(row.Symbol))
            std::abort();
        symbols.insert(row.Symbol);
        for (double value : {row.Open, row.High, row.Low, row.Close, row.Volume})
            if (!std::isfinite(value))
                std::abort();
    }
    return 0;
}
