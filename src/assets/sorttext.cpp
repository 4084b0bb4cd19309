#include "assets/sorttext.h"

namespace assets {

QString NextSortText(const QString& currentSortText, const QString& fieldName) {
    const QString bracketed = QLatin1Char('[') + fieldName + QLatin1Char(']');
    const bool sameColumn = !fieldName.isEmpty() && currentSortText.contains(fieldName);
    if (sameColumn && currentSortText.contains(QLatin1String(" ASC")))
        return bracketed + QLatin1String(" DESC");
    return bracketed + QLatin1String(" ASC");
}

} // namespace assets
