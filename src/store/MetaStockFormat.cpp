#include "store/MetaStockFormat.h"

#include "frame/Failure.h"

#include <QSet>

#include <algorithm>
#include <charconv>
#include <bit>
#include <cmath>
#include <cstring>

namespace metastock {

namespace {

constexpr unsigned char XmasterMagic[4] = {0x5D, 0xFE, 0x58, 0x4D};
const char Copyright[] = "Brindlemark v6 data store";

[[noreturn]] void corrupt(const QString& file, const QString& what) {
    throw Failure(FailureNumber::Store, QStringLiteral("The file %1 cannot be read: %2.").arg(file, what),
                  QStringLiteral("metastock::parse"));
}

const unsigned char* bytesOf(const QByteArray& b) { return reinterpret_cast<const unsigned char*>(b.constData()); }
unsigned char* bytesOf(QByteArray& b) { return reinterpret_cast<unsigned char*>(b.data()); }

quint16 u16(const QByteArray& b, int off) {
    const unsigned char* p = bytesOf(b) + off;
    return quint16(p[0] | (p[1] << 8));
}
qint32 i32(const QByteArray& b, int off) {
    const unsigned char* p = bytesOf(b) + off;
    return qint32(quint32(p[0]) | (quint32(p[1]) << 8) | (quint32(p[2]) << 16) | (quint32(p[3]) << 24));
}
float f32(const QByteArray& b, int off) {
    float f;
    std::memcpy(&f, b.constData() + off, 4);  // IEEE little-endian, as the hosts we build for
    return f;
}
float mbfAt(const QByteArray& b, int off) { return mbfToFloat(bytesOf(b) + off); }

void putU16(QByteArray& b, int off, quint16 v) {
    b[off] = char(v & 0xFF);
    b[off + 1] = char(v >> 8);
}
void putI32(QByteArray& b, int off, qint32 v) {
    const quint32 u = quint32(v);
    for (int i = 0; i < 4; ++i)
        b[off + i] = char((u >> (8 * i)) & 0xFF);
}
void putF32(QByteArray& b, int off, float v) { std::memcpy(b.data() + off, &v, 4); }
void putMbf(QByteArray& b, int off, float v) {
    unsigned char out[4] = {0, 0, 0, 0};
    floatToMbf(v, out);
    std::memcpy(b.data() + off, out, 4);
}

// Windows-1252 at 0x80..0x9F; the five bytes it leaves undefined stand for themselves.
constexpr char16_t Cp1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The byte of a character; -1 when Windows-1252 has none.
int cp1252Byte(char16_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return c;
    for (int i = 0; i < 32; ++i)
        if (Cp1252High[i] == c)
            return 0x80 + i;
    return -1;
}

// Text of a fixed field: up to the first NUL, blanks trimmed at both ends.
QString textAt(const QByteArray& b, int off, int len) {
    const char* p = b.constData() + off;
    int n = 0;
    while (n < len && p[n] != '\0')
        ++n;
    return decodeText(p, n).trimmed();
}
// A field padded with `pad`; a NUL-padded field loses the blanks that the cut to its length
// leaves at its end, as the vendor's software writes it.
void putText(QByteArray& b, int off, int len, const QString& text, char pad) {
    QByteArray bytes = encodeText(text).left(len);
    if (pad == '\0')
        while (!bytes.isEmpty() && bytes.endsWith(' '))
            bytes.chop(1);
    std::memset(b.data() + off, pad, size_t(len));
    std::memcpy(b.data() + off, bytes.constData(), size_t(bytes.size()));
}

qint32 dateFromIndexInt(qint32 v) {
    if (v == NoDateMarker || !isValidStoreDate(v))
        return 0;
    return v;
}
qint32 dateFromIndexFloat(float v) {
    const qint32 d = storeDateFromYyymmdd(v);
    return (d == NoDateMarker || !isValidStoreDate(d)) ? 0 : d;
}

// What a raw MASTER record says.
Security readMasterRecord(const QByteArray& raw) {
    Security s;
    s.fileNumber = bytesOf(raw)[0];
    s.fieldCount = bytesOf(raw)[4];
    s.name = textAt(raw, 7, 16);
    s.firstDate = dateFromIndexFloat(mbfAt(raw, 25));
    s.lastDate = dateFromIndexFloat(mbfAt(raw, 29));
    s.periodicity = raw[33];
    s.interval = u16(raw, 34);
    s.symbol = textAt(raw, 36, 14);
    s.masterRaw = raw;
    return s;
}

struct EmasterView {
    QString symbol, shortName, fullName;
    qint32 firstDate, lastDate, firstDateLong;
    int fieldCount, fieldBits;
};
EmasterView readEmasterRecord(const QByteArray& raw) {
    EmasterView v;
    v.fieldCount = bytesOf(raw)[6];
    v.fieldBits = bytesOf(raw)[7];
    v.symbol = textAt(raw, 11, 14);
    v.shortName = textAt(raw, 32, 16);
    v.fullName = textAt(raw, 139, 53);
    v.firstDate = dateFromIndexFloat(f32(raw, 64));
    v.lastDate = dateFromIndexFloat(f32(raw, 72));
    v.firstDateLong = dateFromIndexInt(i32(raw, 126));
    return v;
}
QString emasterName(const EmasterView& v) {
    return v.fullName.isEmpty() ? v.shortName : v.fullName;
}

Security readXmasterRecord(const QByteArray& raw) {
    Security s;
    s.extended = true;
    s.symbol = textAt(raw, 1, 15);
    s.name = textAt(raw, 16, 46);
    s.periodicity = raw[62];
    s.interval = u16(raw, 63);
    s.fileNumber = u16(raw, 65);
    s.fieldBits = bytesOf(raw)[70];
    s.fieldCount = std::popcount(unsigned(s.fieldBits));
    s.firstDate = dateFromIndexInt(i32(raw, 108));
    if (s.firstDate == 0)
        s.firstDate = dateFromIndexInt(i32(raw, 104));
    s.lastDate = dateFromIndexInt(i32(raw, 116));
    s.xmasterRaw = raw;
    return s;
}

qint32 indexIntDate(qint32 storeDate) { return storeDate == 0 ? NoDateMarker : storeDate; }

} // namespace

// ---- Text --------------------------------------------------------------------------------------

QString decodeText(const char* bytes, int length) {
    QString text(length, Qt::Uninitialized);
    QChar* out = text.data();
    for (int i = 0; i < length; ++i) {
        const unsigned char c = static_cast<unsigned char>(bytes[i]);
        out[i] = QChar(c >= 0x80 && c < 0xA0 ? Cp1252High[c - 0x80] : char16_t(c));
    }
    return text;
}

QByteArray encodeText(const QString& text) {
    QByteArray bytes(text.size(), Qt::Uninitialized);
    char* out = bytes.data();
    for (const QChar c : text) {
        const int b = cp1252Byte(c.unicode());
        *out++ = char(b < 0 ? '?' : b);
    }
    return bytes;
}

QChar unstorableCharacter(const QString& text) {
    for (const QChar c : text)
        if (cp1252Byte(c.unicode()) < 0)
            return c;
    return QChar();
}

qint64 maxDataSize(const Layout& layout) { return qint64(MaxRecords + 2) * layout.recordLength(); }

// ---- MBF ---------------------------------------------------------------------------------------

float mbfToFloat(const unsigned char* b) {
    if (b[3] <= 2)  // 0 is the value 0; 1 and 2 fall below what a float holds
        return 0.0f;
    const quint32 sign = (b[2] & 0x80u) << 24;
    const quint32 mantissa = (quint32(b[2] & 0x7F) << 16) | (quint32(b[1]) << 8) | b[0];
    const quint32 bits = sign | (quint32(b[3] - 2) << 23) | mantissa;
    float f;
    std::memcpy(&f, &bits, 4);
    return f;
}

bool floatToMbf(float value, unsigned char* out) {
    quint32 bits;
    std::memcpy(&bits, &value, 4);
    const quint32 exponent = (bits >> 23) & 0xFF;
    if (exponent >= 254)
        return false;
    if (exponent == 0) {
        std::memset(out, 0, 4);
        return true;
    }
    const quint32 mantissa = bits & 0x7FFFFF;
    out[0] = mantissa & 0xFF;
    out[1] = (mantissa >> 8) & 0xFF;
    out[2] = ((bits >> 31) << 7) | (mantissa >> 16);
    out[3] = exponent + 2;
    return true;
}

qint32 storeDateFromYyymmdd(double yyymmdd) {
    if (!(yyymmdd > 0) || yyymmdd > 2e7)
        return 0;
    return qint32(yyymmdd + 0.5) + 19000000;   // rounded; positive and small, so no library call
}

double yyymmddFromStoreDate(qint32 storeDate) { return storeDate == 0 ? 0.0 : double(storeDate - 19000000); }

bool isValidStoreDate(qint32 d) {
    const int year = d / 10000, month = (d / 100) % 100, day = d % 100;
    if (year < 1900 || year > 2999 || month < 1 || month > 12 || day < 1)
        return false;
    static constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return day <= days[month - 1] + ((month == 2 && leap) ? 1 : 0);
}

char periodicityLetter(qint32 code) {
    switch (code) {
    case 1: return 'D';
    case 2: return 'W';
    case 3: return 'M';
    case 4: return 'Q';
    case 5: return 'Y';
    case 6: return 'I';
    default: return 0;
    }
}

qint32 periodicityCode(char letter) {
    switch (letter) {
    case 'D': case 'd': return 1;
    case 'W': case 'w': return 2;
    case 'M': case 'm': return 3;
    case 'Q': case 'q': return 4;
    case 'Y': case 'y': return 5;
    case 'I': case 'i': return 6;
    default: return 0;
    }
}

// ---- Layout ------------------------------------------------------------------------------------

std::optional<Layout> Layout::of(int fieldCount, int fieldBits, char periodicity) {
    Layout l;
    l.fieldCount = fieldCount;
    if (fieldBits >= 0 && std::popcount(unsigned(fieldBits & 0xFF)) == fieldCount && (fieldBits & 0x1D) == 0x1D) {
        l.time = fieldBits & 0x80;
        l.open = fieldBits & 0x02;
        l.volume = fieldBits & 0x20;
        l.openInterest = fieldBits & 0x40;
        return l;
    }
    switch (fieldCount) {
    case 5: l.open = false; l.openInterest = false; return l;
    case 6: l.openInterest = false; return l;
    case 7:
        if (periodicity == 'I' || periodicity == 'i') {
            l.time = true;
            l.openInterest = false;
        }
        return l;
    case 8: l.time = true; return l;
    default: return std::nullopt;
    }
}

Layout Security::layout() const {
    if (auto l = Layout::of(fieldCount, fieldBits, periodicity))
        return *l;
    return Layout{};
}

QString dataFileName(int fileNumber, bool extended) {
    // Asked for at every selection of a security: put together by hand.
    char name[24];
    char* p = name;
    *p++ = 'F';
    p = std::to_chars(p, name + sizeof name - 4, fileNumber).ptr;
    std::memcpy(p, extended ? ".MWD" : ".DAT", 4);
    return QString::fromLatin1(name, p + 4 - name);
}

int Index::masterCount() const {
    int n = 0;
    for (const Security& s : securities)
        n += s.extended ? 0 : 1;
    return n;
}
int Index::extendedCount() const { return int(securities.size()) - masterCount(); }

// ---- Index parsing -----------------------------------------------------------------------------

bool isOwnEmaster(const QByteArray& emaster) {
    return emaster.size() >= EmasterRecordLength &&
           std::memcmp(emaster.constData() + 53, Copyright, sizeof(Copyright)) == 0;
}

Index parseIndex(const QByteArray& master, const QByteArray* emaster, const QByteArray* xmaster,
                 bool extendedDataFiles) {
    Index index;
    const QString masterName = QStringLiteral("MASTER");
    if (master.size() < MasterRecordLength)
        corrupt(masterName, QStringLiteral("it is %1 bytes long, shorter than its header").arg(master.size()));
    const int count = u16(master, 0);
    if (count > MaxMasterSecurities)
        corrupt(masterName, QStringLiteral("its header counts %1 securities, more than 255").arg(count));
    if (master.size() < qint64(count + 1) * MasterRecordLength)
        corrupt(masterName, QStringLiteral("its header counts %1 securities but it holds only %2 bytes")
                                .arg(count).arg(master.size()));
    index.hasMaster = true;
    index.masterHeader = master.left(MasterRecordLength);
    index.highestMasterNumber = u16(master, 2);

    QSet<int> numbers;
    for (int i = 1; i <= count; ++i) {
        Security s = readMasterRecord(master.mid(i * MasterRecordLength, MasterRecordLength));
        if (s.fileNumber == 0)
            corrupt(masterName, QStringLiteral("security record %1 has no file number").arg(i));
        if (numbers.contains(s.fileNumber))
            corrupt(masterName, QStringLiteral("file number %1 is listed twice").arg(s.fileNumber));
        if (s.fieldCount < 5 || s.fieldCount > 8)
            corrupt(masterName, QStringLiteral("security record %1 has %2 fields").arg(i).arg(s.fieldCount));
        if (bytesOf(s.masterRaw)[3] != 4 * s.fieldCount)
            corrupt(masterName, QStringLiteral("security record %1 has a record length of %2 for %3 fields")
                                    .arg(i).arg(int(bytesOf(s.masterRaw)[3])).arg(s.fieldCount));
        numbers.insert(s.fileNumber);
        index.securities.push_back(std::move(s));
    }

    if (emaster) {
        const QString name = QStringLiteral("EMASTER");
        if (emaster->size() < EmasterRecordLength)
            corrupt(name, QStringLiteral("it is %1 bytes long, shorter than its header").arg(emaster->size()));
        const int ecount = u16(*emaster, 0);
        if (emaster->size() < qint64(ecount + 1) * EmasterRecordLength)
            corrupt(name, QStringLiteral("its header counts %1 securities but it holds only %2 bytes")
                              .arg(ecount).arg(emaster->size()));
        index.hasEmaster = true;
        index.emasterHeader = emaster->left(EmasterRecordLength);
        for (int i = 1; i <= ecount; ++i) {
            const QByteArray raw = emaster->mid(i * EmasterRecordLength, EmasterRecordLength);
            const int number = bytesOf(raw)[2];
            for (Security& s : index.securities) {
                if (s.fileNumber != number || !s.emasterRaw.isEmpty())
                    continue;
                s.emasterRaw = raw;
                const EmasterView v = readEmasterRecord(raw);
                // EMASTER may lag behind MASTER: its long name counts only while it still
                // starts with MASTER's short one; MASTER's dates win.
                const QString full = emasterName(v);
                if (full.size() > s.name.size() && full.startsWith(s.name))
                    s.name = full;
                if (v.fieldCount == s.fieldCount)
                    s.fieldBits = v.fieldBits;
                break;
            }
        }
    }

    if (xmaster) {
        const QString name = QStringLiteral("XMASTER");
        const bool magic = xmaster->size() >= 4 && std::memcmp(xmaster->constData(), XmasterMagic, 4) == 0;
        if (!magic && !extendedDataFiles) {
            // A file of another program under that name; the folder has no security past the 255th.
            index.foreignXmaster = true;
        } else {
            if (!magic)
                corrupt(name, QStringLiteral("it does not begin as an index file does, yet the folder holds data "
                                             "files of securities past the 255th (Fn.MWD)"));
            if (xmaster->size() < XmasterRecordLength)
                corrupt(name, QStringLiteral("it is %1 bytes long, shorter than its header").arg(xmaster->size()));
            const int xcount = u16(*xmaster, 10);
            if (u16(*xmaster, 14) != xcount)
                corrupt(name, QStringLiteral("its header counts %1 securities in one place and %2 in the other")
                                  .arg(xcount).arg(u16(*xmaster, 14)));
            if (xmaster->size() != qint64(xcount + 1) * XmasterRecordLength)
                corrupt(name, QStringLiteral("its header counts %1 securities but it holds %2 bytes, not %3")
                                  .arg(xcount).arg(xmaster->size()).arg(qint64(xcount + 1) * XmasterRecordLength));
            index.hasXmaster = true;
            index.xmasterHeader = xmaster->left(XmasterRecordLength);
            index.nextExtendedNumber = u16(*xmaster, 18);
            for (int i = 1; i <= xcount; ++i) {
                Security s = readXmasterRecord(xmaster->mid(i * XmasterRecordLength, XmasterRecordLength));
                if (s.fileNumber == 0)
                    corrupt(name, QStringLiteral("security record %1 has no file number").arg(i));
                if (numbers.contains(s.fileNumber))
                    corrupt(name, QStringLiteral("file number %1 is listed twice").arg(s.fileNumber));
                if (!Layout::of(s.fieldCount, s.fieldBits, s.periodicity))
                    corrupt(name, QStringLiteral("security record %1 has the field set %2")
                                      .arg(i).arg(s.fieldBits, 2, 16, QLatin1Char('0')));
                numbers.insert(s.fileNumber);
                index.securities.push_back(std::move(s));
            }
        }
    }
    return index;
}

// ---- Index building ----------------------------------------------------------------------------

namespace {

// The fields the program keeps are written into a record: all of them into a fresh one (`was`
// null), and into a record as read only those that differ from what it says, so that everything
// else stays as it was.

void putMasterFields(QByteArray& r, const Security& s, const Security* was) {
    if (!was || was->name != s.name.left(16).trimmed())
        putText(r, 7, 16, s.name, ' ');
    if (!was || was->symbol != s.symbol)
        putText(r, 36, 14, s.symbol, ' ');
    if (!was || was->firstDate != s.firstDate)
        putMbf(r, 25, float(yyymmddFromStoreDate(s.firstDate)));
    if (!was || was->lastDate != s.lastDate)
        putMbf(r, 29, float(yyymmddFromStoreDate(s.lastDate)));
}

void putEmasterFields(QByteArray& r, const Security& s, const EmasterView* was) {
    if (!was || was->symbol != s.symbol)
        putText(r, 11, 14, s.symbol, '\0');
    if (!was || emasterName(*was) != s.name) {
        putText(r, 32, 16, s.name, '\0');
        putText(r, 139, 53, s.name.size() > 16 ? s.name.left(MaxNameLength) : QString(), '\0');
    }
    if (!was || was->firstDate != s.firstDate)
        putF32(r, 64, float(yyymmddFromStoreDate(s.firstDate)));
    if (!was || was->lastDate != s.lastDate)
        putF32(r, 72, float(yyymmddFromStoreDate(s.lastDate)));
    if (!was || was->firstDateLong != s.firstDate)
        putI32(r, 126, s.firstDate);
}

void putXmasterFields(QByteArray& r, const Security& s, const Security* was) {
    if (!was || was->symbol != s.symbol)
        putText(r, 1, 15, s.symbol.left(MaxSymbolLength), '\0');
    if (!was || was->name != s.name)
        putText(r, 16, 46, s.name.left(MaxNameLength), '\0');
    if (!was || was->firstDate != s.firstDate) {
        putI32(r, 104, indexIntDate(s.firstDate));
        putI32(r, 108, indexIntDate(s.firstDate));
    }
    if (!was || was->lastDate != s.lastDate)
        putI32(r, 116, indexIntDate(s.lastDate));
}

// The record of a security: the one read, brought up to date, or for a new security a fresh one as
// the vendor's software writes it.
QByteArray masterRecordOf(const Security& s) {
    if (s.masterRaw.size() == MasterRecordLength) {
        QByteArray r = s.masterRaw;
        const Security was = readMasterRecord(r);
        putMasterFields(r, s, &was);
        return r;
    }
    QByteArray r(MasterRecordLength, '\0');
    r[0] = char(s.fileNumber);
    putU16(r, 1, 101);
    r[3] = char(4 * s.fieldCount);
    r[4] = char(s.fieldCount);
    r[33] = s.periodicity;
    putU16(r, 34, s.interval);
    r[50] = ' ';
    r[51] = ' ';
    putMasterFields(r, s, nullptr);
    return r;
}

QByteArray emasterRecordOf(const Security& s) {
    if (s.emasterRaw.size() == EmasterRecordLength) {
        QByteArray r = s.emasterRaw;
        const EmasterView was = readEmasterRecord(r);
        putEmasterFields(r, s, &was);
        return r;
    }
    QByteArray r(EmasterRecordLength, '\0');
    r[0] = '6';
    r[1] = '6';
    r[2] = char(s.fileNumber);
    r[6] = char(s.fieldCount);
    r[7] = char(s.fieldBits >= 0 ? s.fieldBits : 0x7F);
    r[9] = ' ';
    r[60] = s.periodicity;
    putU16(r, 62, s.interval);
    putEmasterFields(r, s, nullptr);
    return r;
}

// `shared`: the 8 bytes at 80 that every record of the folder holds alike, empty when none.
QByteArray xmasterRecordOf(const Security& s, const QByteArray& shared) {
    if (s.xmasterRaw.size() == XmasterRecordLength) {
        QByteArray r = s.xmasterRaw;
        const Security was = readXmasterRecord(r);
        putXmasterFields(r, s, &was);
        return r;
    }
    QByteArray r(XmasterRecordLength, '\0');
    r[0] = 0x01;
    r[62] = s.periodicity;
    putU16(r, 63, s.interval);
    putU16(r, 65, quint16(s.fileNumber));
    r[70] = char(s.fieldBits >= 0 ? s.fieldBits : 0x7F);
    if (shared.size() == 8)
        r.replace(80, 8, shared);
    putXmasterFields(r, s, nullptr);
    return r;
}

// MASTER and EMASTER list the same securities (F1..F255) in the same order, under a header that
// counts them and names the highest file number used.
template <typename RecordOf>
QByteArray buildMasterFile(QByteArray header, const Index& index, RecordOf recordOf) {
    int highest = index.highestMasterNumber;
    QByteArray body;
    int count = 0;
    for (const Security& s : index.securities) {
        if (s.extended)
            continue;
        body += recordOf(s);
        highest = std::max(highest, s.fileNumber);
        ++count;
    }
    putU16(header, 0, quint16(count));
    putU16(header, 2, quint16(highest));
    return header + body;
}

} // namespace

QByteArray buildMaster(const Index& index) {
    QByteArray header = index.masterHeader.size() == MasterRecordLength ? index.masterHeader
                                                                         : QByteArray(MasterRecordLength, '\0');
    return buildMasterFile(header, index, masterRecordOf);
}

QByteArray buildEmaster(const Index& index) {
    QByteArray header = index.emasterHeader;
    if (header.size() != EmasterRecordLength) {
        header = QByteArray(EmasterRecordLength, '\0');
        if (index.masterHeader.size() == MasterRecordLength)
            header.replace(49, 4, index.masterHeader.mid(49, 4));
        std::memcpy(header.data() + 53, Copyright, sizeof(Copyright));
    }
    return buildMasterFile(header, index, emasterRecordOf);
}

QByteArray buildXmaster(const Index& index) {
    QByteArray header = index.xmasterHeader;
    if (header.size() != XmasterRecordLength) {
        header = QByteArray(XmasterRecordLength, '\0');
        std::memcpy(header.data(), XmasterMagic, 4);
        if (index.masterHeader.size() == MasterRecordLength)
            header.replace(6, 4, index.masterHeader.mid(49, 4));
        std::memcpy(header.data() + 22, Copyright, sizeof(Copyright));
    }
    // New records take the value of bytes 80..87 that the folder's records hold alike.
    QByteArray shared;
    for (const Security& s : index.securities) {
        if (!s.extended || s.xmasterRaw.size() != XmasterRecordLength)
            continue;
        const QByteArray value = s.xmasterRaw.mid(80, 8);
        if (shared.isNull()) {
            shared = value;
        } else if (shared != value) {
            shared = QByteArray();
            break;
        }
    }
    int next = index.nextExtendedNumber;
    QByteArray body;
    int count = 0;
    for (const Security& s : index.securities) {
        if (!s.extended)
            continue;
        body += xmasterRecordOf(s, shared);
        next = std::max(next, s.fileNumber + 1);
        ++count;
    }
    putU16(header, 10, quint16(count));
    putU16(header, 14, quint16(count));
    putU16(header, 18, quint16(next));
    return header + body;
}

// ---- Data files --------------------------------------------------------------------------------

int dataRecordCount(const QByteArray& head, qint64 fileSize, const Layout& layout, const QString& fileName) {
    const int length = layout.recordLength();
    if (head.size() < 4 || fileSize < length)
        corrupt(fileName, QStringLiteral("it is %1 bytes long, shorter than its header").arg(fileSize));
    const int stated = u16(head, 2);
    const int count = stated > 0 ? stated - 1 : 0;
    const qint64 fit = fileSize / length - 1;
    if (count > fit)
        corrupt(fileName, QStringLiteral("its header counts %1 records but only %2 fit in its %3 bytes")
                              .arg(count).arg(fit).arg(fileSize));
    return count;
}

std::vector<Record> decodeRecords(const QByteArray& bytes, const Layout& layout, int first, int last) {
    const int length = layout.recordLength();
    std::vector<Record> records(static_cast<size_t>(std::max(0, last - first)));
    const unsigned char* p = bytesOf(bytes) + qsizetype(first + 1) * length;
    for (Record& r : records) {
        const unsigned char* f = p;
        r.date = storeDateFromYyymmdd(mbfToFloat(f));
        f += 4;
        if (layout.time) {
            r.time = qint32(std::lround(mbfToFloat(f)));
            f += 4;
        }
        if (layout.open) {
            r.open = mbfToFloat(f);
            f += 4;
        }
        r.high = mbfToFloat(f);
        r.low = mbfToFloat(f + 4);
        r.close = mbfToFloat(f + 8);
        f += 12;
        if (layout.volume) {
            r.volume = mbfToFloat(f);
            f += 4;
        }
        if (layout.openInterest)
            r.openInterest = mbfToFloat(f);
        p += length;
    }
    return records;
}

qint32 recordDate(const QByteArray& bytes, const Layout& layout, int i) {
    return storeDateFromYyymmdd(mbfAt(bytes, (i + 1) * layout.recordLength()));
}

qint32 recordTime(const QByteArray& bytes, const Layout& layout, int i) {
    return layout.time ? qint32(std::lround(mbfAt(bytes, (i + 1) * layout.recordLength() + 4))) : 0;
}

void setDataCount(QByteArray& bytes, int count) { putU16(bytes, 2, quint16(count + 1)); }

std::vector<Record> parseData(const QByteArray& bytes, const Layout& layout, const QString& fileName) {
    const int count = dataRecordCount(bytes, bytes.size(), layout, fileName);
    return decodeRecords(bytes, layout, 0, count);
}

QByteArray dataHeader(int count, const Layout& layout) {
    QByteArray h(layout.recordLength(), '\0');
    putU16(h, 2, quint16(count + 1));
    return h;
}

QByteArray encodeRecords(const std::vector<Record>& records, const Layout& layout) {
    const int length = layout.recordLength();
    QByteArray out(qsizetype(records.size()) * length, '\0');
    unsigned char* p = bytesOf(out);
    for (const Record& r : records) {
        unsigned char* f = p;
        floatToMbf(float(yyymmddFromStoreDate(r.date)), f);
        f += 4;
        if (layout.time) {
            floatToMbf(float(r.time), f);
            f += 4;
        }
        if (layout.open) {
            floatToMbf(r.open, f);
            f += 4;
        }
        floatToMbf(r.high, f);
        floatToMbf(r.low, f + 4);
        floatToMbf(r.close, f + 8);
        f += 12;
        if (layout.volume) {
            floatToMbf(r.volume, f);
            f += 4;
        }
        if (layout.openInterest)
            floatToMbf(r.openInterest, f);
        p += length;
    }
    return out;
}

QByteArray buildData(const std::vector<Record>& records, const Layout& layout) {
    return dataHeader(int(records.size()), layout) + encodeRecords(records, layout);
}

} // namespace metastock
