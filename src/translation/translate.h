#pragma once

#include <QString>
#include <QStringList>

#include <initializer_list>
#include <utility>

namespace translation {

enum TranslateFlag : unsigned {
    TranslateAlways = 1, // translate even when no language is active
    NeverTranslate = 2,  // show the text as given: no lookup, escapes left written out
};

using Placeholder = std::pair<QString, QString>;

// Looks an English interface text up in the language file and fills its placeholders:
// $PKGNAME$, $PKGFULLNAME$, then up to six of the caller's pairs in order.
//
// The text is written as in the program, escapes such as "\n" spelt out with a
// backslash. A text without an entry in the language file is shown with those escapes
// turned into the characters they stand for.
QString Translate(const QString& text, unsigned flags = 0,
                  std::initializer_list<Placeholder> placeholders = {});

// The dialog font of the interface language: "MS Sans Serif", or "MS PGothic" for
// Japanese, which counts as a substitute font.
QString DialogFont();
bool DialogFontIsSubstitute();

// The installed family to use for a wanted font family: the installed spelling of a
// case-insensitive match, or an empty string (keep the default font) when the family
// is not installed or no family is wanted.
QString FontFamilyToUse(const QString& family, const QStringList& installedFamilies);

} // namespace translation
