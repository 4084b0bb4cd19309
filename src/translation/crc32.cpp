#include "translation/crc32.h"

#include <array>

namespace translation {

namespace {

constexpr quint32 ReflectedPolynomial = 0xEDB88320u; // 0x04C11DB7 with its bits reversed

constexpr std::array<quint32, 256> makeTable() {
    std::array<quint32, 256> table{};
    for (quint32 i = 0; i < 256; ++i) {
        quint32 value = i;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1u) ? (value >> 1) ^ ReflectedPolynomial : value >> 1;
        table[i] = value;
    }
    return table;
}

constexpr std::array<quint32, 256> Table = makeTable();

} // namespace

quint32 Crc32(QByteArrayView bytes) {
    quint32 crc = 0xFFFFFFFFu;
    for (const char c : bytes)
        crc = Table[(crc ^ static_cast<unsigned char>(c)) & 0xFFu] ^ (crc >> 8);
    return crc ^ 0xFFFFFFFFu;
}

quint32 TextKey(const QString& text) {
    return Crc32(text.toUtf8());
}

} // namespace translation
