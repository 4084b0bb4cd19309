#include "translation/translate.h"

#include "translation/service.h"

namespace translation {

QString Translate(const QString& text, unsigned flags,
                  std::initializer_list<Placeholder> placeholders) {
    return GlobalService().translate(text, flags, placeholders);
}

QString DialogFont() {
    return GlobalService().dialogFont();
}

bool DialogFontIsSubstitute() {
    return GlobalService().dialogFontIsSubstitute();
}

QString FontFamilyToUse(const QString& family, const QStringList& installedFamilies) {
    if (family.isEmpty())
        return {};
    for (const QString& installed : installedFamilies) {
        if (installed.compare(family, Qt::CaseInsensitive) == 0)
            return installed;
    }
    return {};
}

} // namespace translation
