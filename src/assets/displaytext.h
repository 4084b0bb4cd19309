#pragma once

#include "core/dateformat.h"
#include "db/odbc/odbc.h"

#include <QByteArrayView>
#include <QLocale>
#include <QString>

namespace assets {

// How a value of a query result shows to the user: dates in the short date format in
// force, with the time after them where there is one (midnight shows the date alone),
// times of day as hh:nn:ss, numbers as numbers in the user's locale without group
// separators (an approximate number in its shortest exact form, so 11890.0 and 11890 read
// alike; an exact decimal with at least its column's decimal digits), anything else as it
// is. A value that does not read as its column's type
// (SQLite lets any column hold any text) shows as it is stored. `locale` is a locale
// whose number options omit the group separator: NumberLocale() gives the user's.
QString DisplayText(const db::odbc::ColumnInfo& column, QByteArrayView bytes,
                    const core::DateSettings& dates, const QLocale& locale);

QLocale NumberLocale();

} // namespace assets
