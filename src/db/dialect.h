#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>

namespace db {

namespace odbc {
class Connection;
}

enum class DatabaseDialect : std::uint8_t { Default = 0, Access = 1, Oracle = 2, SqlServer = 3 };

// The table definition file's section for a dialect: "Default", "Access", "Oracle", "MSSQL".
QString DialectSectionName(DatabaseDialect dialect);

// The provider string of the connection, values inserted verbatim.
QString BuildConnectionString(const QString& password, const QString& userName,
                              const QString& dataSourceName);

// The string the ODBC driver manager is given, values inserted verbatim.
QString OdbcConnectionString(const QString& password, const QString& userName,
                             const QString& dataSourceName);

// The connection string as the provider reports it back after connecting.
QString ReportedConnectionString(const QString& providerString, const QString& completedOdbcString);

// Decides the dialect: the database type text first, then the reported connection
// string (empty when the connection is not active), then the driver description of
// the data source, which can only yield Oracle.
DatabaseDialect DetectDatabaseDialect(const QString& databaseType,
                                      const QString& reportedConnectionString,
                                      const QString& driverDescription);

// The user's tables: the Oracle catalogue query for Oracle, else the driver's table list.
QStringList ListTableNames(odbc::Connection& connection, DatabaseDialect dialect);

} // namespace db
