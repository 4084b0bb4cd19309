#pragma once

#include <QString>

#include <functional>
#include <vector>

class QAbstractItemModel;

namespace assets {

// Rows of a grid as tab-separated text for the clipboard: a title line of the columns'
// titles, then one line per row with the values as the user sees them. NULL is empty, and
// tabs and line breaks inside a value become blanks, so every row stays one line.
// `progress` is told the number of rows written every few thousand rows and stops the
// work by returning false; the result is then empty.
QString RowsAsText(const QAbstractItemModel& model, const std::vector<int>& rows,
                   const std::vector<int>& columns,
                   const std::function<bool(qsizetype rowsDone)>& progress = {});

} // namespace assets
