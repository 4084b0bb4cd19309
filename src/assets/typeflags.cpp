#include "assets/typeflags.h"

namespace assets {

bool TypeFlagIsTrue(const QString& text, bool defaultValue) {
    if (text.isEmpty())
        return defaultValue;
    const QChar first = text.toUpper().at(0);
    return first == u'T' || first == u'Y' || first == u'1' || first == QChar(0xC4);
}

} // namespace assets
