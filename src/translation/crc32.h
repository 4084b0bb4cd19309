#pragma once

#include <QByteArrayView>
#include <QString>

namespace translation {

// The standard reflected CRC-32: generator 0x04C11DB7 (processed bit-reversed as
// 0xEDB88320), register preset to 0xFFFFFFFF, result inverted. "123456789" gives
// 0xCBF43926. Language files are written with the same variant.
quint32 Crc32(QByteArrayView bytes);

// The lookup key of an interface text: the CRC-32 of its UTF-8 bytes (language files
// are UTF-8, so a text and its file entry hash the same bytes).
quint32 TextKey(const QString& text);

} // namespace translation
