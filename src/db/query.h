#pragma once

#include "db/odbc/odbc.h"

namespace db {

// A whole result read into memory.
struct QueryResult {
    std::vector<odbc::ColumnInfo> columns;
    std::vector<odbc::Row> rows;
};

// Runs one statement and reads all its rows.
QueryResult OpenQuery(odbc::Connection& connection, const QString& sql);

} // namespace db
