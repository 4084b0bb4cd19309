#pragma once

#include "db/dialect.h"
#include "schema/ddl.h"
#include "schema/inifile.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace schema {

// The file read when the command line asks for schema work without naming one; relative to
// the working directory.
QString DefaultTableDefinitionPath();

// Real table definition files hold a few kilobytes; a larger file is refused before any work.
inline constexpr qint64 MaxTableDefinitionFileSize = 256 * 1024;

// A count ("FieldTypes", "Tables", "Queries", "Columns", "Rows") above the number of section
// headers and keys in the file asks for more keys or sections than the file holds: the file is
// refused with IniFileError before any work, since such counts only drive empty loops (and
// each missing statement section costs two log entries).

// The type map of one pass: for i = 1 .. "FieldTypes" of the pass section, the generic name
// "Type<i>" of the pass section and its native text from the dialect section; pairs with an
// empty half are left out.
TypeMap ReadTypeMap(const IniFile& file, const QString& passSection, const QString& dialectSection);

// One step of the schema work a table definition file asks for, in the order it is done.
struct SchemaWorkItem {
    enum class Kind : std::uint8_t {
        LogEntry,  // text: an activity log entry
        Table,     // text: the table name; columns: its definitions with native types
        Statement, // text: the statement, its rows joined by CR LF
    };
    Kind kind = Kind::LogEntry;
    QString text;
    QStringList columns;

    bool operator==(const SchemaWorkItem&) const = default;
};

// Reads the work of both passes (the "Default" section, then the dialect's section) from the
// file, without touching a database: the log entries of the passes, of tables without columns
// and of empty statement sections, the tables to verify or create, and the statements to run.
// Throws IniFileError for a count the file cannot hold.
std::vector<SchemaWorkItem> ReadSchemaWork(const IniFile& file, db::DatabaseDialect dialect);

} // namespace schema
