#pragma once

// Selected rows as a short text: "2-5,9".

#include <QStringList>

namespace rangestext {

// `rows` in ascending order.
template <typename Rows> QString RangesText(const Rows& rows) {
    QStringList parts;
    for (auto it = rows.begin(); it != rows.end();) {
        const int first = *it;
        int last = first;
        while (++it != rows.end() && *it == last + 1)
            ++last;
        parts << (first == last ? QString::number(first)
                                : QStringLiteral("%1-%2").arg(first).arg(last));
    }
    return parts.join(QLatin1Char(','));
}

} // namespace rangestext
