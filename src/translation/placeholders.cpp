#include "translation/placeholders.h"

#include <QVarLengthArray>

namespace translation {

QString FillPlaceholders(const QString& text, std::initializer_list<Placeholder> placeholders) {
    if (!text.contains(u'$'))
        return text;

    const QString productName = QLatin1String(ProductNamePlaceholder);
    const QString productFullName = QLatin1String(ProductFullNamePlaceholder);
    QVarLengthArray<Placeholder, MaxCallerPlaceholders + 2> pairs;
    if (text.contains(productName))
        pairs.append({productName, QLatin1String(ProductName)});
    if (text.contains(productFullName))
        pairs.append({productFullName, QLatin1String(ProductFullName)});
    int taken = 0;
    for (const Placeholder& pair : placeholders) {
        if (taken++ == MaxCallerPlaceholders)
            break;
        if (pair.first.isEmpty() || pair.second.isNull())
            continue;
        pairs.append(pair);
    }

    QString result = text;
    for (const Placeholder& pair : pairs)
        result.replace(pair.first, pair.second);
    return result;
}

} // namespace translation
