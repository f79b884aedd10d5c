// Writes the seed corpus of the fuzz targets: index files and data files as the store builds
// them, for a few shapes of folder. Usage: fuzz_make_seeds INDEX_DIR DATA_DIR
#include "FuzzInput.h"
#include "store/MetaStockFormat.h"

#include <QDir>
#include <QFile>

using namespace metastock;

namespace {

void save(const QString& dir, const QString& name, const QByteArray& bytes) {
    QDir().mkpath(dir);
    QFile f(QDir(dir).filePath(name));
    if (f.open(QIODevice::WriteOnly))
        f.write(bytes);
}

Security security(int number, bool extended, const char* symbol, const char* name, qint32 first, qint32 last,
                  int fields = 7, int bits = 0x7F, char periodicity = 'D') {
    Security s;
    s.fileNumber = number;
    s.extended = extended;
    s.symbol = QString::fromLatin1(symbol);
    s.name = QString::fromLatin1(name);
    s.firstDate = first;
    s.lastDate = last;
    s.fieldCount = fields;
    s.fieldBits = bits;
    s.periodicity = periodicity;
    return s;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    const QString indexDir = QString::fromLocal8Bit(argv[1]);
    const QString dataDir = QString::fromLocal8Bit(argv[2]);

    Index small;
    small.securities = {security(1, false, "AAA", "AAA", 20050801, 20050805),
                        security(2, false, "LONG", "A NAME LONGER THAN SIXTEEN", 19970923, 20111227)};
    Index wide = small;
    wide.securities.push_back(security(256, true, "XXX", "IN XMASTER", 0, 0));
    wide.securities.push_back(security(300, true, "YYY.L", "ANOTHER", 19820104, 19820105));
    Index intraday;
    intraday.securities = {security(1, false, "2HR.DE", "H&R", 20131115, 20131122, 7, 0xBF, 'I')};

    int n = 0;
    for (const Index* index : {&small, &wide, &intraday}) {
        const QByteArray m = buildMaster(*index), e = buildEmaster(*index), x = buildXmaster(*index);
        save(indexDir, QStringLiteral("seed%1").arg(++n), QByteArray(1, char(3)) + fuzzChunk(m) + fuzzChunk(e) + fuzzChunk(x));
        save(indexDir, QStringLiteral("seed%1").arg(++n), QByteArray(1, char(0)) + fuzzChunk(m));
    }

    std::vector<Record> records;
    for (int i = 0; i < 6; ++i) {
        Record r;
        r.date = 20050801 + i;
        r.time = 93000 + 500 * i;
        r.open = 10.25f + float(i);
        r.high = r.open + 1;
        r.low = r.open - 1;
        r.close = r.open + 0.5f;
        r.volume = 1000.0f * float(i + 1);
        records.push_back(r);
    }
    const struct {
        int fields, bits;
        char periodicity;
    } layouts[] = {{5, -1, 'D'}, {6, -1, 'D'}, {7, 0x7F, 'D'}, {7, 0xBF, 'I'}, {7, -1, 'I'}, {8, 0xFF, 'I'}};
    n = 0;
    for (const auto& l : layouts) {
        const Layout layout = *Layout::of(l.fields, l.bits, l.periodicity);
        const QByteArray head = QByteArray(1, char(l.fields | (l.bits >= 0 ? 0x80 : 0))) +
                                QByteArray(1, char(l.bits >= 0 ? l.bits : 0)) + QByteArray(1, l.periodicity);
        save(dataDir, QStringLiteral("seed%1").arg(++n), head + fuzzChunk(buildData(records, layout)));
        save(dataDir, QStringLiteral("seed%1").arg(++n), head + fuzzChunk(buildData({}, layout)));
    }
    return 0;
}
