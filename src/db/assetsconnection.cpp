#include "db/assetsconnection.h"

namespace db {

void AssetsConnection::connect(const QString& password, const QString& userName,
                               const QString& dataSourceName, const QString& databaseType) {
    m_connection.close();
    m_dataSourceName.clear();
    m_connectionString = BuildConnectionString(password, userName, dataSourceName);
    m_connection.open(OdbcConnectionString(password, userName, dataSourceName));
    const QString reported =
        ReportedConnectionString(m_connectionString, m_connection.completedConnectionString());
    m_dialect =
        DetectDatabaseDialect(databaseType, reported, odbc::DriverDescriptionOf(dataSourceName));
    m_password = password;
    m_userName = userName;
    m_dataSourceName = dataSourceName;
}

bool AssetsConnection::differsFrom(const QString& password, const QString& userName,
                                   const QString& dataSourceName) const {
    return password != m_password || userName != m_userName || dataSourceName != m_dataSourceName;
}

QString AssetsConnection::connectedDataSource() const {
    return isOpen() ? m_dataSourceName : QString();
}

} // namespace db
