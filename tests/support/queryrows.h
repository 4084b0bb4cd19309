#pragma once

// What a query reads, for tests that check what reached a database. Header only: the
// support library links Qt Core alone, the tests that use this link the ODBC layer.

#include "db/odbc/odbc.h"

#include <QStringList>

namespace testsupport {

// Every row of the result of `sql`.
inline std::vector<db::odbc::Row> QueryRows(db::odbc::Connection& connection, const QString& sql) {
    db::odbc::Statement statement(connection);
    statement.executeDirect(sql);
    std::vector<db::odbc::Row> rows;
    while (statement.fetchBlock(rows)) {
    }
    return rows;
}

// The same as text: values joined by "," and rows by ";", NULL as an empty value.
inline QString RowsText(db::odbc::Connection& connection, const QString& sql) {
    QStringList lines;
    for (const db::odbc::Row& row : QueryRows(connection, sql)) {
        QStringList values;
        for (const QByteArray& value : row)
            values << QString::fromUtf8(value);
        lines << values.join(QLatin1Char(','));
    }
    return lines.join(QLatin1Char(';'));
}

} // namespace testsupport
