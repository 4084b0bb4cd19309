#pragma once

#include "db/dialect.h"

#include <QString>
#include <QStringList>

namespace db::odbc {
class Connection;
}

namespace schema {

// Creates or completes the tables the table definition file at `path` describes and runs its
// statements, logging every step. A failing table or statement is logged and the work goes on;
// a file that exists but cannot be read, is larger than MaxTableDefinitionFileSize or holds a
// count it cannot hold, or a table list that cannot be had, ends the work with an exception
// whose text the caller logs and shows ("Table Creation Error").
void ProcessTableDefinitionFile(db::odbc::Connection& connection, db::DatabaseDialect dialect,
                                const QString& path);

// Creates the table when the connection has no table of that name (compared without regard to
// case), else adds each column whose name the table lacks. Errors of the table are logged as
// "...Error: " + text and give false; only a failing table list is thrown.
bool VerifyOrCreateTable(db::odbc::Connection& connection, db::DatabaseDialect dialect,
                         const QString& tableName, const QStringList& columnDefinitions);

// The field names of a table, learned by opening it for at most one row.
QStringList FieldNamesOf(db::odbc::Connection& connection, const QString& tableName);

// Logs the statement and runs it as one plain statement; errors are thrown.
void ExecuteSchemaStatement(db::odbc::Connection& connection, const QString& statement);

} // namespace schema
