#pragma once

// The asset database's three tables with a few rows, for tests of the record editor and of
// what changes ASSETS. Header only, as queryrows.h.

#include "db/odbc/odbc.h"

namespace testsupport {

// Drops ASSETS, ASSETTYPES and NODES where they exist and creates them afresh: three
// assets (two of type PC, one Server), three types and two nodes. ASSETS has the user
// columns USR_COST and usr_hidden (not a user column: the prefix is case-sensitive).
inline const char* const AssetsSchemaTables[] = {"ASSETS", "ASSETTYPES", "NODES"};

inline void CreateAssetsSchema(db::odbc::Connection& connection) {
    for (const char* table : AssetsSchemaTables) {
        try {
            connection.execute(QStringLiteral("DROP TABLE %1").arg(QLatin1String(table)));
        } catch (const std::exception&) {
        }
    }
    connection.execute(QStringLiteral(
        "CREATE TABLE ASSETS (ID INTEGER PRIMARY KEY, ASSETTYPE VARCHAR(50), INFO VARCHAR(255), "
        "ASSETID VARCHAR(50), MANUFACTURER VARCHAR(50), MODEL VARCHAR(50), SERIALNUM VARCHAR(50), "
        "ASLOCATION VARCHAR(50), DEPT VARCHAR(50), NODENAME VARCHAR(50), FKNODES INTEGER, "
        "PURCHDATE DATE, PURCHASER VARCHAR(50), SUPPLIER VARCHAR(50), ITEMVALUE DOUBLE PRECISION, "
        "ITEMSIZE VARCHAR(50), QTY INTEGER, MAINTRENEW DATE, SUPPORTCONTACT VARCHAR(255), "
        "USR_COST DOUBLE PRECISION, usr_hidden VARCHAR(10))"));
    connection.execute(QStringLiteral(
        "CREATE TABLE ASSETTYPES (ASSETTYPE VARCHAR(50) PRIMARY KEY, NODEREQUIRED VARCHAR(5), "
        "SHOW_GENERAL_TAB VARCHAR(5), SHOW_PURCHASE_TAB VARCHAR(5), SHOW_WARRANTY_TAB VARCHAR(5), "
        "SHOW_USEREXT_TAB VARCHAR(5))"));
    connection.execute(
        QStringLiteral("CREATE TABLE NODES (OBJECTID INTEGER PRIMARY KEY, NODENAME VARCHAR(50))"));
    connection.execute(QStringLiteral(
        "INSERT INTO ASSETTYPES VALUES ('PC', 'False', 'True', 'True', 'True', 'True'), "
        "('Server', 'True', 'yes', 'no', '1', ''), ('Copier', 'N', 'T', 'F', '0', NULL)"));
    connection.execute(QStringLiteral("INSERT INTO NODES VALUES (7, 'alpha'), (8, 'beta')"));
    for (int id = 1; id <= 3; ++id)
        connection.execute(QStringLiteral("INSERT INTO ASSETS (ID, ASSETTYPE, INFO, DEPT, QTY) "
                                          "VALUES (%1, '%2', 'asset %1', 'IT', %1)")
                               .arg(id)
                               .arg(id == 3 ? QStringLiteral("Server") : QStringLiteral("PC")));
}

} // namespace testsupport
