#pragma once
// How a fuzz input is cut into files: a byte of flags, then each file as a 16-bit little-endian
// length and its bytes. make_seeds writes inputs in the same form.

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <vector>

struct FuzzReader {
    const uint8_t* data;
    size_t size;
    size_t at = 0;

    uint8_t byte() { return at < size ? data[at++] : 0; }
    QByteArray chunk() {
        const size_t length = size_t(byte()) | (size_t(byte()) << 8);
        const size_t take = at + length <= size ? length : size - at;
        QByteArray out(reinterpret_cast<const char*>(data + at), qsizetype(take));
        at += take;
        return out;
    }
};

inline QByteArray fuzzChunk(const QByteArray& bytes) {
    const auto n = uint16_t(bytes.size());
    return QByteArray(1, char(n & 0xFF)) + QByteArray(1, char(n >> 8)) + bytes.left(n);
}
