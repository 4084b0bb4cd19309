#pragma once

#include "db/dialect.h"
#include "db/odbc/odbc.h"

namespace db {

// The program's one connection to the asset database and the dialect decided for it.
class AssetsConnection {
public:
    // The connect sequence: close, build the connection string, open, decide the dialect.
    // The dialect is left as it was when the connection cannot be opened.
    void connect(const QString& password, const QString& userName, const QString& dataSourceName,
                 const QString& databaseType);
    void disconnect() noexcept { m_connection.close(); }
    // Not active once closed, or once the server has gone away.
    bool isOpen() const { return m_connection.isOpen() && !m_connection.isDead(); }

    odbc::Connection& connection() { return m_connection; }
    DatabaseDialect dialect() const { return m_dialect; }
    // The provider string set by the last connect sequence.
    const QString& connectionString() const { return m_connectionString; }
    // True when the open connection was made with other inputs than these: a query must
    // then connect again, so that it never reaches a database other than the one named.
    bool differsFrom(const QString& password, const QString& userName,
                     const QString& dataSourceName) const;
    // The data source of the open connection; empty when none is open.
    QString connectedDataSource() const;

private:
    odbc::Connection m_connection;
    DatabaseDialect m_dialect = DatabaseDialect::Default;
    QString m_connectionString;
    // The inputs of the last connect sequence that succeeded.
    QString m_password;
    QString m_userName;
    QString m_dataSourceName;
};

} // namespace db
