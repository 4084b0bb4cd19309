#include "core/dateformat.h"

#include <QLocale>
#include <QString>

namespace core {

namespace {

// The first character of a locale pattern that is not a letter or a quote.
QChar firstSeparatorIn(const QString& pattern, QChar fallback) {
    for (QChar c : pattern)
        if (!c.isLetter() && c != QLatin1Char('\''))
            return c;
    return fallback;
}

QChar& dateSeparator() {
    static QChar separator =
        firstSeparatorIn(QLocale::system().dateFormat(QLocale::ShortFormat), QLatin1Char('/'));
    return separator;
}

} // namespace

QChar DateSeparator() { return dateSeparator(); }

void SetDateSeparator(QChar separator) { dateSeparator() = separator; }

QChar TimeSeparator() {
    static const QChar separator =
        firstSeparatorIn(QLocale::system().timeFormat(QLocale::ShortFormat), QLatin1Char(':'));
    return separator;
}

} // namespace core
