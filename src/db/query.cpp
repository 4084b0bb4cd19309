#include "db/query.h"

namespace db {

QueryResult OpenQuery(odbc::Connection& connection, const QString& sql) {
    odbc::Statement statement(connection);
    statement.executeDirect(sql);
    QueryResult result;
    result.columns = statement.columns();
    while (statement.fetchBlock(result.rows)) {
    }
    return result;
}

} // namespace db
