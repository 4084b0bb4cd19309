#pragma once

#include <QString>

#include <optional>

namespace assets {

// One grid column's stored layout: the text "%d,%d", first the visibility (1 visible,
// 0 hidden), then the width in pixels. Stored under GridLayoutKey, one value per column,
// named after the column's field name.

constexpr auto GridLayoutKey = "Preferences\\GridLayout";
// Values are read into a buffer of this many characters, terminator included.
constexpr int GridLayoutBufferLength = 259;

QString FormatColumnLayout(bool visible, int width);

// A stored value cut at its first comma, each part read as a decimal integer (surrounding
// blanks allowed, nothing else). The parts are applied in order, visibility first: a part
// that is not a number is a failure of the loading pass at that point.
struct ColumnLayout {
    bool hasComma = false;       // without a comma the column is left alone
    std::optional<bool> visible; // the first part was a number: visible exactly when 1
    std::optional<int> width;    // the second part was a number

    bool isValid() const { return !hasComma || (visible && width); }
    // The width is applied only when it is greater than 0.
    bool appliesWidth() const { return hasComma && visible && width && *width > 0; }
};

ColumnLayout ParseColumnLayout(const QString& value);

} // namespace assets
