#pragma once

// Helpers shared by the tests. Headless: Qt Core (and Qt Test for the data tables).
//
// ODBC data sources. Every test process gets a private user odbc.ini (ODBCINI); the
// user data sources of an inherited ODBCINI are copied into it, the system ones
// (ODBCSYSINI) stay where they are. unixODBC 2.3.11 reads odbc.ini on every look-up,
// so a data source added after the first ODBC call is seen at once (test_odbc checks
// this). Should a driver manager ever cache the file, register the data sources before
// the first ODBC call: TestDatabases() in initTestCase() does so for the SQLite one.

#include <QMetaType>
#include <QString>
#include <QTest>

#include <functional>
#include <vector>

namespace testsupport {

// One row of a _data() table: its name, then a value for each column in order.
template <typename... Values> void AddRow(const char* name, const Values&... values) {
    (QTest::newRow(name) << ... << values);
}

struct TestDatabase;
std::vector<TestDatabase> TestDatabases();

// One row per test database, "<label>: <name>", with the database first; skip the
// unavailable ones with QUILLET_REQUIRE_DATABASE.
template <typename... Values> void AddDatabaseRow(const char* name, const Values&... values);

// Points the settings store (QSettings, "Marrowby"/"Quillet", user scope) at a fresh
// temporary folder kept for the rest of the process, via XDG_CONFIG_HOME and QSettings'
// own user paths. Returns the folder. Call it before the code under test reads settings.
QString UseTemporarySettings();

// Adds or replaces the user data source `dsnName` for the SQLite3 driver on the database
// file `databasePath` (created by the driver when first opened). `driver` is the driver's
// name in odbcinst.ini or the path of its library.
void SqliteDsn(const QString& dsnName, const QString& databasePath,
               const QString& driver = QStringLiteral("SQLite3"));

// The absolute path of a driver's library as odbcinst.ini ($ODBCSYSINI, else /etc) names
// it; empty when the driver or its file is not found.
QString OdbcDriverLibrary(const QString& driverName);

// A database the tests can reach through ODBC.
struct TestDatabase {
    QString label; // "sqlite", "postgresql" or "mariadb"
    QString dsn;   // empty when not configured
    QString user;
    QString password;

    bool isAvailable() const { return !dsn.isEmpty(); }
    bool is(const char* name) const { return label == QLatin1String(name); }
    // "DSN=...;UID=...;PWD=..."
    QString connectionString() const;
    // What differs between the databases in table definitions and literals.
    QString longTextType() const { return is("mariadb") ? "LONGTEXT" : "TEXT"; }
    QString timestampType() const { return is("mariadb") ? "DATETIME" : "TIMESTAMP"; }
    QString binaryType(bool isLong = false) const;
    QString binaryLiteral(const QByteArray& bytes) const;
    // After the columns of CREATE TABLE: MariaDB's default character set is not UTF-8.
    QString tableOptions() const { return is("mariadb") ? " DEFAULT CHARSET=utf8mb4" : ""; }
};

enum class Server { PostgreSql, MariaDb };

// A server data source from QUILLET_TEST_PG_DSN / _USER / _PWD or
// QUILLET_TEST_MARIA_DSN / _USER / _PWD; the dsn is empty when the variable is unset.
TestDatabase ServerDsn(Server server);

// "sqlite" (a fresh database file of this process, user data source
// "QuilletTestSqlite"), "postgresql" and "mariadb", always in this order; the servers
// may be unavailable.
std::vector<TestDatabase> TestDatabases();
// The available ones only.
std::vector<TestDatabase> AvailableDatabases();

// For a _data() function: a column "database" of TestDatabase and one row per entry of
// TestDatabases(), named by its label. Skip unavailable rows with
// QUILLET_REQUIRE_DATABASE.
void AddDatabaseRows();

// A whole file's bytes; empty when it cannot be read.
QByteArray ReadFile(const QString& path);
// Writes a file whole; false when it cannot be written.
bool WriteFile(const QString& path, const QByteArray& content);

// What `action` writes to standard error: in an unattended run, one "TITLE: TEXT" line
// for each message box.
QString PrintedBy(const std::function<void()>& action);

// A table name no other test process uses at the same time: "q<stem>_<pid>_<n>",
// lower case so that every database keeps it as written.
QString UniqueTableName(const QString& stem);

template <typename... Values> void AddDatabaseRow(const char* name, const Values&... values) {
    for (const TestDatabase& database : TestDatabases())
        AddRow(qPrintable(database.label + QStringLiteral(": ") + QLatin1String(name)), database,
               values...);
}

} // namespace testsupport

Q_DECLARE_METATYPE(testsupport::TestDatabase)

// Skips the current test row when its database is not configured.
#define QUILLET_REQUIRE_DATABASE(database)                                                         \
    do {                                                                                           \
        if (!(database).isAvailable())                                                             \
            QSKIP(qPrintable(                                                                      \
                QStringLiteral("%1 is not configured for the tests").arg((database).label)));      \
    } while (false)
