#include "schema/ddl.h"

namespace schema {

QString MapColumnTypes(const QString& definition, const TypeMap& types) {
    QString mapped = definition;
    for (const TypeMapping& type : types) {
        if (type.genericName.isEmpty())
            continue;
        const qsizetype at = mapped.indexOf(type.genericName, 0, Qt::CaseSensitive);
        if (at >= 0)
            mapped.replace(at, type.genericName.size(), type.nativeType);
    }
    return mapped;
}

QString ColumnNameOf(const QString& definition) {
    const qsizetype blank = definition.indexOf(QLatin1Char(' '));
    return blank < 0 ? definition : definition.left(blank);
}

QString CreateTableStatement(const QString& tableName, const QStringList& columnDefinitions) {
    return QStringLiteral("CREATE TABLE ") + tableName + QStringLiteral(" (") +
           columnDefinitions.join(QStringLiteral(", ")) + QLatin1Char(')');
}

QString AddColumnStatement(const QString& tableName, const QString& columnDefinition,
                           db::DatabaseDialect dialect) {
    QString statement = QStringLiteral("ALTER TABLE ") + tableName + QStringLiteral(" ADD ");
    if (dialect == db::DatabaseDialect::Access)
        statement += QStringLiteral("COLUMN ");
    return statement + columnDefinition;
}

QString QuotedIdentifier(const QString& name, db::DatabaseDialect dialect) {
    switch (dialect) {
    case db::DatabaseDialect::Access:
    case db::DatabaseDialect::SqlServer:
        return QLatin1Char('[') + name + QLatin1Char(']');
    case db::DatabaseDialect::Oracle:
        return QLatin1Char('"') + name + QLatin1Char('"');
    case db::DatabaseDialect::Default:
        break;
    }
    return name;
}

QString ExecutableStatementText(const QString& statement) {
    QString text = statement;
    for (QChar& c : text)
        if (c == QLatin1Char('\r') || c == QLatin1Char('\n') || c == QLatin1Char('\t'))
            c = QLatin1Char(' ');
    return text;
}

} // namespace schema
