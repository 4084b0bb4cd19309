#include "db/assetsconnection.h"

namespace db {

void AssetsConnection::connect(const QString& password, const QString& userName,
                               const QString& dataSourceName, const QString& databaseType) {
    m_connection.close();
    m_connectionString = BuildConnectionString(password, userName, dataSourceName);
    m_connection.open(OdbcConnectionString(password, userName, dataSourceName));
    const QString reported =
        ReportedConnectionString(m_connectionString, m_connection.completedConnectionString());
    m_dialect =
        DetectDatabaseDialect(databaseType, reported, odbc::DriverDescriptionOf(dataSourceName));
}

} // namespace db
