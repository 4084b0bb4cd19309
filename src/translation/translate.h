#pragma once

#include <QString>

#include <initializer_list>
#include <utility>

namespace translation {

enum TranslateFlag : unsigned {
    TranslateAlways = 1, // translate even when no language is active
    NeverTranslate = 2,
};

using Placeholder = std::pair<QString, QString>;

// Looks an English interface text up in the language file and fills its placeholders:
// $PKGNAME$, $PKGFULLNAME$, then up to six of the caller's pairs in order.
QString Translate(const QString& text, unsigned flags = 0,
                  std::initializer_list<Placeholder> placeholders = {});

} // namespace translation
