#pragma once

#include <QString>

namespace assets {

// An asset type's flag as text (NODEREQUIRED, SHOW_..._TAB): empty gives the default;
// otherwise, upper-cased, true exactly when it begins with "T", "Y", "1" or the character
// 0xC4. So "yes", "True" and "1" are true, "no", "N", "0" and "F" false.
bool TypeFlagIsTrue(const QString& text, bool defaultValue);

} // namespace assets
