// Replies of today's chart service from any bytes: the reader never fails, and what it gives
// back is a list of bars, newest first, one per date, every date a valid date and every number
// finite. Seeds: the service replies beside the repository (fixtures/services/*.json).
#include "download/ChartReply.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), qsizetype(size));
    const QList<ChartBar> bars = ChartReply::read(body);
    for (qsizetype i = 0; i < bars.size(); ++i) {
        const ChartBar& bar = bars[i];
        if (!bar.date.isValid() || bar.date.year() < 1900 || bar.date.year() > 9999)
            std::abort();
        if (i > 0 && !(bar.date < bars[i - 1].date))
            std::abort();
        for (double value : {bar.open, bar.high, bar.low, bar.close, bar.volume})
            if (!std::isfinite(value))
                std::abort();
    }
    return 0;
}
