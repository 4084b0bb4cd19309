#include "assets/gridlayout.h"

namespace assets {

namespace {

std::optional<int> decimal(const QString& text) {
    bool read = false;
    const int number = text.toInt(&read, 10);
    if (!read)
        return std::nullopt;
    return number;
}

} // namespace

QString FormatColumnLayout(bool visible, int width) {
    return QStringLiteral("%1,%2").arg(visible ? 1 : 0).arg(width);
}

ColumnLayout ParseColumnLayout(const QString& value) {
    ColumnLayout layout;
    const qsizetype comma = value.indexOf(QLatin1Char(','));
    if (comma < 0)
        return layout;
    layout.hasComma = true;
    if (const auto visibility = decimal(value.left(comma)))
        layout.visible = *visibility == 1;
    else
        return layout;
    layout.width = decimal(value.mid(comma + 1));
    return layout;
}

} // namespace assets
