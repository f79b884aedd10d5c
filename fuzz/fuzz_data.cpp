// Data files (Fn.DAT, Fn.MWD) from any bytes, under any layout: the parser either reads them or
// raises a Failure; records written back read again the same.
#include "FuzzInput.h"
#include "frame/Failure.h"
#include "store/MetaStockFormat.h"

#include <cstdlib>
#include <cstring>

using namespace metastock;

namespace {
bool same(const std::vector<Record>& a, const std::vector<Record>& b) {
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::memcmp(&a[i], &b[i], sizeof(Record)) != 0)
            return false;
    return true;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzReader in{data, size};
    const int first = in.byte();  // bit 7: the index gives a field bit set
    const int fields = first & 0x7F;
    const int bits = in.byte();
    const char periodicity = char(in.byte());
    const auto layout = Layout::of(fields, (first & 0x80) ? bits : -1, periodicity);
    if (!layout)
        return 0;
    const QByteArray file = in.chunk();
    std::vector<Record> records;
    try {
        records = parseData(file, *layout, QStringLiteral("F1.DAT"));
        (void)dataRecordCount(file.left(4), file.size(), *layout, QStringLiteral("F1.DAT"));
    } catch (const Failure&) {
        return 0;
    }
    const std::vector<Record> once = parseData(buildData(records, *layout), *layout, QStringLiteral("F1.DAT"));
    const std::vector<Record> twice = parseData(buildData(once, *layout), *layout, QStringLiteral("F1.DAT"));
    if (!same(once, twice))
        std::abort();
    return 0;
}
