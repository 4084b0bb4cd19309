#pragma once

#include "translation/translate.h"

#include <QString>

#include <initializer_list>

namespace translation {

inline constexpr int MaxCallerPlaceholders = 6;

// The product names that texts may name through placeholders.
inline constexpr char ProductNamePlaceholder[] = "$PKGNAME$";
inline constexpr char ProductFullNamePlaceholder[] = "$PKGFULLNAME$";
inline constexpr char ProductName[] = "Orvane";
inline constexpr char ProductFullName[] = "Orvane Asset Management";

// Fills the placeholders of a text that is ready to show. The pairs applied are
// ($PKGNAME$, "Orvane") when the text contains $PKGNAME$, ($PKGFULLNAME$, "Orvane Asset
// Management") when it contains $PKGFULLNAME$, then the caller's pairs in order. Only
// the first six caller pairs count, and of those a pair with an empty placeholder or
// a null value is skipped. A text without "$" comes back untouched; otherwise each
// pair in turn replaces every occurrence of its placeholder, so a value that contains
// the placeholder of a later pair is filled in again when that pair comes.
QString FillPlaceholders(const QString& text, std::initializer_list<Placeholder> placeholders);

} // namespace translation
