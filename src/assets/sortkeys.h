#pragma once

// Client-side sorting of a result by one column.
//
// Values are compared by the column's type: numbers by value, dates and times by the
// moment they name, everything else by its bytes. Text compares as UTF-8 bytes, which is
// Unicode code point order: case-sensitive ("B" before "a"), the same for every user
// and locale, the order of SQLite's BINARY and PostgreSQL's "C" collation, and fast
// enough to sort a million values in a fraction of a second without copying them.
//
// NULL comes first in ascending order. A value of a number or date column that does not
// read as one (SQLite lets any column hold any text) comes after the valid values and is
// ordered as text among the others like it, as SQLite orders numbers before text.
// Descending order is the exact reverse, except that rows with equal values keep their
// arrival order in both directions: the sort is stable.

#include "assets/rowstore.h"
#include "db/odbc/odbc.h"

#include <QString>
#include <QStringView>

#include <atomic>
#include <optional>
#include <vector>

namespace assets {

enum class SortKind { Text, Number, DateTime };

SortKind SortKindOf(const db::odbc::ColumnInfo& column);

struct SortRequest {
    QString field; // empty: the order in which the rows arrived
    bool descending = false;
};

// Reads "[NAME] ASC" or "[NAME] DESC" (the direction may be left out for ascending, the
// brackets too when the name has no blanks; keywords in any case). A blank text asks for
// arrival order. Anything else gives nullopt, a list of several fields included.
std::optional<SortRequest> ParseSortText(QStringView text);

// A number or a date and time as a key that orders as the value does. Exposed for tests.
struct OrderedKey {
    quint64 major = 0;
    quint64 minor = 0;
    friend bool operator==(const OrderedKey&, const OrderedKey&) = default;
    friend auto operator<=>(const OrderedKey&, const OrderedKey&) = default;
};
std::optional<OrderedKey> NumberKey(QByteArrayView text);
std::optional<OrderedKey> DateTimeKey(QByteArrayView text);

// The rows of `rows` (their arrival numbers) in the order of column `column`. Returns an
// empty list when `cancelled` is set before the work is done.
std::vector<quint32> SortedRows(const RowStore& rows, int column, SortKind kind, bool descending,
                                const std::atomic<bool>* cancelled = nullptr);

} // namespace assets
