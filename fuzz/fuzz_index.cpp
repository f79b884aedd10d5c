// Index files (MASTER, EMASTER, XMASTER) from any bytes: the parser either reads them or raises a
// Failure; what it reads, the builders write back, and that reads again to the same securities.
#include "FuzzInput.h"
#include "frame/Failure.h"
#include "store/MetaStockFormat.h"

#include <cstdlib>

using namespace metastock;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzReader in{data, size};
    const uint8_t flags = in.byte();
    const QByteArray master = in.chunk();
    const QByteArray emaster = in.chunk();
    const QByteArray xmaster = in.chunk();
    Index index;
    try {
        index = parseIndex(master, (flags & 1) ? &emaster : nullptr, (flags & 2) ? &xmaster : nullptr, flags & 4);
    } catch (const Failure&) {
        return 0;
    }
    const bool hasE = index.hasEmaster, hasX = index.hasXmaster;
    const QByteArray m2 = buildMaster(index);
    const QByteArray e2 = buildEmaster(index);
    const QByteArray x2 = buildXmaster(index);
    Index again;
    try {
        again = parseIndex(m2, hasE ? &e2 : nullptr, hasX || index.extendedCount() > 0 ? &x2 : nullptr);
    } catch (const Failure&) {
        std::abort();  // what the store writes, it must read
    }
    if (again.securities.size() != index.securities.size())
        std::abort();
    for (size_t i = 0; i < index.securities.size(); ++i) {
        const Security& a = index.securities[i];
        const Security& b = again.securities[i];
        if (a.fileNumber != b.fileNumber || a.extended != b.extended || a.symbol != b.symbol.left(a.symbol.size()) ||
            a.fieldCount != b.fieldCount || a.firstDate != b.firstDate || a.lastDate != b.lastDate)
            std::abort();
    }
    return 0;
}
