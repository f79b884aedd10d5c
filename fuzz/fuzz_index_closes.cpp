// The exchange's daily index closes from any bytes: the reader never fails, and every row it gives
// back has a name, a valid date and finite numbers. Seeds: the index closes among the service
// replies beside the repository (fixtures/services/ind_close_all_*.csv).
#include "download/IndexCloses.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), qsizetype(size));
    const auto rows = IndexCloses::read(body);
    if (rows && rows->isEmpty())
        std::abort();   // a file without rows is no data, never an empty day
    for (const IndexClose& row : rows.value_or(QList<IndexClose>{})) {
        if (row.Name.isEmpty() || row.Name != row.Name.trimmed() || !row.Date.isValid())
            std::abort();
        for (double value : {row.Open, row.High, row.Low, row.Close, row.Volume})
            if (!std::isfinite(value))
                std::abort();
    }
    return 0;
}
