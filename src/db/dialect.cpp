#include "db/dialect.h"

#include "db/odbc/odbc.h"

namespace db {

QString DialectSectionName(DatabaseDialect dialect) {
    switch (dialect) {
    case DatabaseDialect::Access:
        return QStringLiteral("Access");
    case DatabaseDialect::Oracle:
        return QStringLiteral("Oracle");
    case DatabaseDialect::SqlServer:
        return QStringLiteral("MSSQL");
    case DatabaseDialect::Default:
        break;
    }
    return QStringLiteral("Default");
}

QString BuildConnectionString(const QString& password, const QString& userName,
                              const QString& dataSourceName) {
    return QStringLiteral("Provider=MSDASQL.1;Password=") + password +
           QStringLiteral(";Persist Security Info=False;User ID=") + userName +
           QStringLiteral(";Data Source=") + dataSourceName;
}

QString OdbcConnectionString(const QString& password, const QString& userName,
                             const QString& dataSourceName) {
    return QStringLiteral("DSN=") + dataSourceName + QStringLiteral(";UID=") + userName +
           QStringLiteral(";PWD=") + password;
}

QString ReportedConnectionString(const QString& providerString,
                                 const QString& completedOdbcString) {
    return providerString + QStringLiteral(";Extended Properties=\"") + completedOdbcString +
           QLatin1Char('"');
}

namespace {

DatabaseDialect dialectFromType(const QString& databaseType) {
    const QString type = databaseType.toUpper();
    if (type == QLatin1String("ORACLE") || type == QLatin1String("ORACLE8") ||
        type == QLatin1String("ORACLE9"))
        return DatabaseDialect::Oracle;
    if (type == QLatin1String("ACCESS"))
        return DatabaseDialect::Access;
    if (type == QLatin1String("SQL SERVER"))
        return DatabaseDialect::SqlServer;
    return DatabaseDialect::Default;
}

// Case-sensitive on purpose: "MS Access" is the driver name as the ODBC layer writes it.
DatabaseDialect dialectFromConnectionString(const QString& connectionString) {
    if (connectionString.contains(QLatin1String("MSDAORA")))
        return DatabaseDialect::Oracle;
    if (connectionString.contains(QLatin1String("SQLOLEDB")))
        return DatabaseDialect::SqlServer;
    if (!connectionString.contains(QLatin1String("MSDASQL")))
        return DatabaseDialect::Default;
    if (connectionString.contains(QLatin1String("MS Access")))
        return DatabaseDialect::Access;
    if (connectionString.contains(QLatin1String("DBQ=ORACLE")))
        return DatabaseDialect::Oracle;
    if (connectionString.contains(QLatin1String("DATABASE=")))
        return DatabaseDialect::SqlServer;
    return DatabaseDialect::Default;
}

} // namespace

DatabaseDialect DetectDatabaseDialect(const QString& databaseType,
                                      const QString& reportedConnectionString,
                                      const QString& driverDescription) {
    DatabaseDialect dialect = DatabaseDialect::Default;
    if (!databaseType.isEmpty())
        dialect = dialectFromType(databaseType);
    if (dialect == DatabaseDialect::Default && !reportedConnectionString.isEmpty())
        dialect = dialectFromConnectionString(reportedConnectionString);
    if (dialect == DatabaseDialect::Default &&
        driverDescription.toUpper().contains(QLatin1String("ORACLE")))
        dialect = DatabaseDialect::Oracle;
    return dialect;
}

QStringList ListTableNames(odbc::Connection& connection, DatabaseDialect dialect) {
    if (dialect != DatabaseDialect::Oracle)
        return connection.tableNames();
    QStringList names;
    odbc::Statement statement(connection);
    statement.executeDirect(QStringLiteral("SELECT DISTINCT TABLE_NAME FROM USER_TABLES"));
    std::vector<odbc::Row> rows;
    while (statement.fetchBlock(rows)) {
    }
    for (const odbc::Row& row : rows)
        if (!row.empty())
            names << QString::fromUtf8(row.front());
    return names;
}

} // namespace db
