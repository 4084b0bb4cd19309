#pragma once

#include "db/dialect.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace schema {

// One generic type name of the table definition file and the native type text that stands
// for it on the connected database.
struct TypeMapping {
    QString genericName;
    QString nativeType;

    bool operator==(const TypeMapping&) const = default;
};
using TypeMap = std::vector<TypeMapping>;

// For each pair in order, replaces the first occurrence of the generic name anywhere in the
// definition (plain, case-sensitive substring) by the native text. Only one occurrence per
// pair is replaced, and a later pair sees the text as the earlier ones left it.
QString MapColumnTypes(const QString& definition, const TypeMap& types);

// The column name of a definition: the text before the first blank, or all of it.
QString ColumnNameOf(const QString& definition);

// "CREATE TABLE name (def1, def2, ...)".
QString CreateTableStatement(const QString& tableName, const QStringList& columnDefinitions);

// "ALTER TABLE name ADD definition"; Access takes "ADD COLUMN".
QString AddColumnStatement(const QString& tableName, const QString& columnDefinition,
                           db::DatabaseDialect dialect);

// A name quoted for the dialect: [name] for Access and SqlServer, "name" for Oracle, bare
// for Default.
QString QuotedIdentifier(const QString& name, db::DatabaseDialect dialect);

// The text sent to the database for a schema statement: every CR, LF and TAB becomes a blank.
QString ExecutableStatementText(const QString& statement);

} // namespace schema
