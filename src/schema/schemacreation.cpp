#include "schema/schemacreation.h"

#include "core/log.h"
#include "db/odbc/odbc.h"
#include "schema/ddl.h"
#include "schema/inifile.h"
#include "schema/tabledefinition.h"

#include <exception>

namespace schema {

namespace {

QString errorText(const std::exception& error) {
    return QString::fromUtf8(error.what());
}

bool containsName(const QStringList& names, const QString& name) {
    return names.contains(name, Qt::CaseInsensitive);
}

} // namespace

QStringList FieldNamesOf(db::odbc::Connection& connection, const QString& tableName) {
    db::odbc::Statement statement(connection);
    statement.setMaxRows(1);
    statement.executeDirect(QStringLiteral("SELECT * FROM ") + tableName);
    QStringList names;
    for (const db::odbc::ColumnInfo& column : statement.columns())
        names << column.name;
    statement.close();
    return names;
}

void ExecuteSchemaStatement(db::odbc::Connection& connection, const QString& statement) {
    core::LogLine(QStringLiteral("...Query:\n") + statement);
    connection.execute(ExecutableStatementText(statement));
}

bool VerifyOrCreateTable(db::odbc::Connection& connection, db::DatabaseDialect dialect,
                         const QString& tableName, const QStringList& columnDefinitions) {
    const QStringList existing = db::ListTableNames(connection, dialect);
    try {
        if (containsName(existing, tableName)) {
            core::LogLine(QStringLiteral("...verifying table: ") + tableName);
            const QStringList fields = FieldNamesOf(connection, tableName);
            for (const QString& definition : columnDefinitions)
                if (!containsName(fields, ColumnNameOf(definition)))
                    ExecuteSchemaStatement(connection,
                                           AddColumnStatement(tableName, definition, dialect));
            core::LogLine(QStringLiteral("......table ") + tableName +
                          QStringLiteral(" verification successfully finished."));
        } else {
            core::LogLine(QStringLiteral("...creating table: ") + tableName);
            ExecuteSchemaStatement(connection, CreateTableStatement(tableName, columnDefinitions));
            core::LogLine(QStringLiteral("......table ") + tableName +
                          QStringLiteral(" successfully created."));
        }
        return true;
    } catch (const std::exception& error) {
        core::LogLine(QStringLiteral("...Error: ") + errorText(error));
        return false;
    }
}

void ProcessTableDefinitionFile(db::odbc::Connection& connection, db::DatabaseDialect dialect,
                                const QString& path) {
    core::LogLine(QStringLiteral("Table definition file: ") + path);
    const IniFile file = IniFile::fromFile(path, MaxTableDefinitionFileSize);
    for (const SchemaWorkItem& item : ReadSchemaWork(file, dialect)) {
        switch (item.kind) {
        case SchemaWorkItem::Kind::LogEntry:
            core::LogLine(item.text);
            break;
        case SchemaWorkItem::Kind::Table:
            VerifyOrCreateTable(connection, dialect, item.text, item.columns);
            break;
        case SchemaWorkItem::Kind::Statement:
            try {
                ExecuteSchemaStatement(connection, item.text);
                core::LogLine(QStringLiteral(".......query successfully executed."));
            } catch (const std::exception& error) {
                core::LogLine(QStringLiteral("Query Error: ") + errorText(error));
            }
            break;
        }
    }
}

} // namespace schema
