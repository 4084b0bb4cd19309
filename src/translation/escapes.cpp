#include "translation/escapes.h"

namespace translation {

namespace {

struct Escape {
    char16_t letter;
    char16_t replacement;
};

// In the order in which they are tried.
constexpr Escape Escapes[] = {
    {u'\\', u'\\'}, {u'a', u'\a'}, {u'b', u'\b'}, {u'f', u'\f'}, {u'n', u'\n'},  {u'r', u'\r'},
    {u't', u'\t'},  {u'v', u'\v'}, {u'?', u'?'},  {u'"', u'"'},  {u'\'', u'\''},
};

} // namespace

QString Unescape(const QString& text) {
    const qsizetype backslash = text.indexOf(u'\\');
    if (backslash < 0)
        return text;

    QString result;
    result.reserve(text.size());
    result.append(QStringView(text).left(backslash));
    qsizetype i = backslash;
    while (i < text.size()) {
        const QChar c = text.at(i);
        if (c == u'\\' && i + 1 < text.size()) {
            const char16_t next = text.at(i + 1).unicode();
            bool replaced = false;
            for (const Escape& escape : Escapes) {
                if (escape.letter == next) {
                    result.append(QChar(escape.replacement));
                    i += 2;
                    replaced = true;
                    break;
                }
            }
            if (replaced)
                continue;
        }
        result.append(c);
        ++i;
    }
    return result;
}

} // namespace translation
