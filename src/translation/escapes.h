#pragma once

#include <QString>

namespace translation {

// Turns the written-out escapes of an interface text into the characters they stand
// for. The text is scanned once from left to right; at each position the sequences
// are tried in this order and the first match is replaced:
//   \\ -> \   \a -> 7   \b -> 8   \f -> 12   \n -> 10   \r -> 13   \t -> 9
//   \v -> 11  \? -> ?   \" -> "   \' -> '
// Anything else, a lone trailing backslash included, is kept as written. Scanning
// resumes after the replaced sequence, so "\\n" gives a backslash followed by "n".
// Texts are UTF-16 here, and a backslash is never part of a surrogate pair, so no
// multi-unit character can be split.
QString Unescape(const QString& text);

} // namespace translation
