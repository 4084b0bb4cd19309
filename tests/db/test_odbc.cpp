// The ODBC layer against real drivers: SQLite always, PostgreSQL and MariaDB when the
// test environment names their data sources.

#include "db/odbc/odbc.h"
#include "support/testsupport.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <atomic>
#include <functional>
#include <optional>
#include <thread>

using db::odbc::ColumnInfo;
using db::odbc::Connection;
using db::odbc::Diagnostic;
using db::odbc::OdbcError;
using db::odbc::Row;
using db::odbc::Statement;
using testsupport::TestDatabase;

Q_DECLARE_METATYPE(db::odbc::Diagnostic)

namespace {

Connection connectTo(const TestDatabase& database) {
    Connection connection;
    connection.open(database.connectionString());
    return connection;
}

std::vector<Row> fetchAll(Statement& statement) {
    std::vector<Row> rows;
    while (statement.fetchBlock(rows)) {
    }
    return rows;
}

std::vector<Row> query(const Connection& connection, const QString& sql) {
    Statement statement(connection);
    statement.executeDirect(sql);
    return fetchAll(statement);
}

QByteArray utf8(const QString& text) {
    return text.toUtf8();
}

template <typename Action> std::optional<OdbcError> errorOf(Action&& action) {
    try {
        action();
    } catch (const OdbcError& error) {
        return error;
    }
    return std::nullopt;
}

// What differs between the databases under test.
bool isSqlite(const TestDatabase& database) {
    return database.label == QLatin1String("sqlite");
}
bool isPostgres(const TestDatabase& database) {
    return database.label == QLatin1String("postgresql");
}
bool isMaria(const TestDatabase& database) {
    return database.label == QLatin1String("mariadb");
}

QString longTextType(const TestDatabase& database) {
    return isMaria(database) ? QStringLiteral("LONGTEXT") : QStringLiteral("TEXT");
}

QString binaryType(const TestDatabase& database) {
    if (isPostgres(database))
        return QStringLiteral("BYTEA");
    return isMaria(database) ? QStringLiteral("VARBINARY(64)") : QStringLiteral("BLOB");
}

QString longBinaryType(const TestDatabase& database) {
    if (isPostgres(database))
        return QStringLiteral("BYTEA");
    return isMaria(database) ? QStringLiteral("LONGBLOB") : QStringLiteral("BLOB");
}

QString binaryLiteral(const TestDatabase& database, const QByteArray& bytes) {
    const QString hex = QString::fromLatin1(bytes.toHex());
    if (isPostgres(database))
        return QStringLiteral("decode('%1', 'hex')").arg(hex);
    return QStringLiteral("X'%1'").arg(hex);
}

// A table of one test's own, dropped at its end.
class ScratchTable {
public:
    ScratchTable(Connection& connection, const TestDatabase& database, const QString& stem,
                 const QString& columns)
        : m_connection(connection), m_name(testsupport::UniqueTableName(stem)) {
        const QString options =
            isMaria(database) ? QStringLiteral(" DEFAULT CHARSET=utf8mb4") : QString();
        m_connection.execute(
            QStringLiteral("CREATE TABLE %1 (%2)%3").arg(m_name, columns, options));
    }
    ~ScratchTable() {
        try {
            if (m_connection.inTransaction())
                m_connection.rollback();
            if (m_connection.isOpen())
                m_connection.execute(QStringLiteral("DROP TABLE ") + m_name);
        } catch (const OdbcError& error) {
            qWarning("cannot drop %s: %s", qPrintable(m_name), error.what());
        }
    }
    ScratchTable(const ScratchTable&) = delete;
    ScratchTable& operator=(const ScratchTable&) = delete;

    const QString& name() const { return m_name; }

private:
    Connection& m_connection;
    QString m_name;
};

long long countRows(const Connection& connection, const QString& table) {
    const std::vector<Row> rows =
        query(connection, QStringLiteral("SELECT COUNT(*) FROM ") + table);
    return rows.at(0).at(0).toLongLong();
}

// Inserts rows of (id, text) in one transaction through a prepared statement.
void insertNumbered(Connection& connection, const QString& table, int count,
                    const std::function<QString(int)>& textOf) {
    connection.begin();
    Statement insert(connection);
    insert.prepare(QStringLiteral("INSERT INTO %1 VALUES (?, ?)").arg(table));
    for (int id = 1; id <= count; ++id) {
        insert.bindText(1, QString::number(id));
        insert.bindText(2, textOf(id));
        insert.execute();
    }
    connection.commit();
}

} // namespace

class TestOdbc : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        // Registers the SQLite data source before the first ODBC call.
        testsupport::TestDatabases();
    }

    void connectReportsCompletedString_data() { testsupport::AddDatabaseRows(); }
    void connectReportsCompletedString() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection;
        QVERIFY(!connection.isOpen());
        connection.open(database.connectionString());
        QVERIFY(connection.isOpen());
        QVERIFY(!connection.inTransaction());
        const QString completed = connection.completedConnectionString();
        qInfo("%s completes the connection string to: %s", qPrintable(database.label),
              qPrintable(completed));
        QVERIFY2(completed.startsWith(QStringLiteral("DSN=") + database.dsn, Qt::CaseInsensitive),
                 qPrintable(completed));
        const QString expectedDbms = isSqlite(database)     ? QStringLiteral("SQLite")
                                     : isPostgres(database) ? QStringLiteral("PostgreSQL")
                                                            : QStringLiteral("MariaDB");
        QCOMPARE(connection.dbmsName(), expectedDbms);
        connection.close();
        QVERIFY(!connection.isOpen());
        QVERIFY(connection.completedConnectionString().isEmpty());
    }

    void badConnectionRaisesError_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("connectionString");
        QTest::addColumn<QString>("sqlState");
        QTest::addColumn<QString>("messagePart");
        for (const TestDatabase& database : testsupport::TestDatabases()) {
            const QString base = database.connectionString();
            const QString wrongPassword = QStringLiteral("DSN=%1;UID=%2;PWD=%3-wrong")
                                              .arg(database.dsn, database.user, database.password);
            const QString noDatabase = base + QStringLiteral(";Database=quillet_no_such_db");
            if (isSqlite(database)) {
                QTest::newRow("no such data source")
                    << database << QStringLiteral("DSN=QuilletNoSuchSource") << "IM002"
                    << "Data source name not found";
                QTest::newRow("sqlite: folder missing")
                    << database << base + QStringLiteral(";Database=/nonexistent-folder/x.db")
                    << "HY000"
                    << "connect failed";
            } else if (isPostgres(database)) {
                QTest::newRow("postgresql: no such database") << database << noDatabase << "08001"
                                                              << "quillet_no_such_db";
                QTest::newRow("postgresql: wrong password") << database << wrongPassword << "08001"
                                                            << "password authentication failed";
            } else {
                QTest::newRow("mariadb: no such database") << database << noDatabase << "42000"
                                                           << "quillet_no_such_db";
                QTest::newRow("mariadb: wrong password") << database << wrongPassword << "28000"
                                                         << "Access denied";
            }
        }
    }
    void badConnectionRaisesError() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, connectionString);
        QFETCH(QString, sqlState);
        QFETCH(QString, messagePart);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection;
        const std::optional<OdbcError> error = errorOf([&] { connection.open(connectionString); });
        QVERIFY(error.has_value());
        QCOMPARE(error->sqlState(), sqlState);
        QVERIFY2(error->message().contains(messagePart), error->what());
        QCOMPARE(error->message(), error->diagnostics().front().message);
        QCOMPARE(error->context(), QStringLiteral("SQLDriverConnect"));
        QVERIFY(!connection.isOpen());
    }

    // Provokes errors on each driver: diagnostics are read without crashing, the state
    // and message are the driver's, and the connection stays usable.
    void badStatementRaisesError_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("sqlState");
        QTest::addColumn<int>("nativeError"); // -1: not checked
        QTest::addColumn<QString>("messagePart");
        for (const TestDatabase& database : testsupport::TestDatabases()) {
            auto row = [&](const char* kind) -> QTestData& {
                return QTest::addRow("%s: %s", qPrintable(database.label), kind)
                       << database << QString::fromLatin1(kind);
            };
            if (isSqlite(database)) {
                row("syntax") << "HY000" << 1 << "syntax error";
                row("missing table") << "HY000" << 1 << "no such table";
                row("duplicate key") << "HY000" << 19 << "UNIQUE constraint failed";
            } else if (isPostgres(database)) {
                row("syntax") << "42601" << -1 << "syntax error";
                row("missing table") << "42P01" << -1 << "does not exist";
                row("duplicate key") << "23505" << -1 << "duplicate key";
            } else {
                row("syntax") << "42000" << 1064 << "SQL syntax";
                row("missing table") << "42S02" << 1146 << "doesn't exist";
                row("duplicate key") << "23000" << 1062 << "Duplicate entry";
            }
        }
    }
    void badStatementRaisesError() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, kind);
        QFETCH(QString, sqlState);
        QFETCH(int, nativeError);
        QFETCH(QString, messagePart);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(connection, database, QStringLiteral("errors"),
                           QStringLiteral("id INTEGER PRIMARY KEY"));
        connection.execute(QStringLiteral("INSERT INTO %1 VALUES (1)").arg(table.name()));
        QString sql;
        if (kind == QLatin1String("syntax"))
            sql = QStringLiteral("SELEC id FRM ") + table.name();
        else if (kind == QLatin1String("missing table"))
            sql = QStringLiteral("SELECT * FROM ") + testsupport::UniqueTableName("missing");
        else
            sql = QStringLiteral("INSERT INTO %1 VALUES (1)").arg(table.name());

        const std::optional<OdbcError> error = errorOf([&] { connection.execute(sql); });
        QVERIFY(error.has_value());
        QCOMPARE(error->sqlState(), sqlState);
        if (nativeError >= 0)
            QCOMPARE(error->nativeError(), nativeError);
        QVERIFY2(error->message().contains(messagePart), error->what());
        QCOMPARE(error->context(), QStringLiteral("SQLExecDirect"));
        QCOMPARE(countRows(connection, table.name()), 1LL);
    }

    void errorJoinsDiagnostics_data() {
        QTest::addColumn<std::vector<Diagnostic>>("diagnostics");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("sqlState");
        QTest::addColumn<int>("nativeError");
        QTest::newRow("one record")
            << std::vector<Diagnostic>{{"42S02", 1146, "Table missing"}} << "Table missing"
            << "42S02" << 1146;
        QTest::newRow("two records, first decides the state")
            << std::vector<Diagnostic>{{"23000", 1062, "Duplicate"}, {"01000", 0, "Rolled back"}}
            << "Duplicate\nRolled back"
            << "23000" << 1062;
        QTest::newRow("record without text")
            << std::vector<Diagnostic>{{"HY000", 7, ""}, {"HY000", 8, "Second"}} << "Second"
            << "HY000" << 7;
        QTest::newRow("no records")
            << std::vector<Diagnostic>{} << "ODBC call failed: SQLExecDirect"
            << "" << 0;
    }
    void errorJoinsDiagnostics() {
        QFETCH(std::vector<Diagnostic>, diagnostics);
        QFETCH(QString, message);
        QFETCH(QString, sqlState);
        QFETCH(int, nativeError);
        const OdbcError error(QStringLiteral("SQLExecDirect"), diagnostics);
        QCOMPARE(QString::fromUtf8(error.what()), message);
        QCOMPARE(error.message(), message);
        QCOMPARE(error.sqlState(), sqlState);
        QCOMPARE(error.nativeError(), nativeError);
        QCOMPARE(error.diagnostics().size(), diagnostics.size());
    }

    // Warnings (SQL_SUCCESS_WITH_INFO) are success; with debug logging on they are read.
    void warningsAreSuccess_data() { testsupport::AddDatabaseRows(); }
    void warningsAreSuccess() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        QLoggingCategory::setFilterRules(QStringLiteral("quillet.odbc.debug=true"));
        const std::optional<OdbcError> error = errorOf([&] {
            connection.execute(QStringLiteral("DROP TABLE IF EXISTS ") +
                               testsupport::UniqueTableName("absent"));
        });
        QLoggingCategory::setFilterRules(QString());
        QVERIFY2(!error.has_value(), error ? error->what() : "");
        QCOMPARE(query(connection, QStringLiteral("SELECT 1")).at(0).at(0), QByteArray("1"));
    }

    void executeReturnsRowsAffected_data() { testsupport::AddDatabaseRows(); }
    void executeReturnsRowsAffected() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(connection, database, QStringLiteral("affected"),
                           QStringLiteral("id INTEGER PRIMARY KEY, name VARCHAR(20)"));
        const QString& t = table.name();
        for (int id = 1; id <= 3; ++id)
            QCOMPARE(connection.execute(
                         QStringLiteral("INSERT INTO %1 VALUES (%2, 'n%2')").arg(t).arg(id)),
                     1LL);
        QCOMPARE(connection.execute(QStringLiteral("UPDATE %1 SET name = 'x'").arg(t)), 3LL);
        QCOMPARE(
            connection.execute(QStringLiteral("UPDATE %1 SET name = 'y' WHERE id = 99").arg(t)),
            0LL);
        QCOMPARE(connection.execute(QStringLiteral("DELETE FROM %1 WHERE id = 99").arg(t)), 0LL);
        QCOMPARE(connection.execute(QStringLiteral("DELETE FROM %1 WHERE id < 3").arg(t)), 2LL);

        Statement update(connection);
        update.prepare(QStringLiteral("UPDATE %1 SET name = ? WHERE id = ?").arg(t));
        update.bindText(1, QStringLiteral("z"));
        update.bindText(2, QStringLiteral("3"));
        update.execute();
        QCOMPARE(update.rowsAffected(), 1LL);
        QVERIFY(update.columns().empty());
        update.bindText(2, QStringLiteral("4"));
        update.execute();
        QCOMPARE(update.rowsAffected(), 0LL);
    }

    void rollbackDiscardsCommitKeeps_data() { testsupport::AddDatabaseRows(); }
    void rollbackDiscardsCommitKeeps() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(connection, database, QStringLiteral("transactions"),
                           QStringLiteral("id INTEGER"));
        const QString insert = QStringLiteral("INSERT INTO %1 VALUES (%2)").arg(table.name());

        connection.begin();
        QVERIFY(connection.inTransaction());
        connection.execute(insert.arg(1));
        QCOMPARE(countRows(connection, table.name()), 1LL);
        connection.rollback();
        QVERIFY(!connection.inTransaction());
        QCOMPARE(countRows(connection, table.name()), 0LL);

        connection.begin();
        connection.execute(insert.arg(2));
        connection.commit();
        QVERIFY(!connection.inTransaction());
        Connection other = connectTo(database);
        QCOMPARE(countRows(other, table.name()), 1LL);

        // Back in autocommit: a statement outside a transaction is kept at once.
        connection.execute(insert.arg(3));
        QCOMPARE(countRows(other, table.name()), 2LL);

        // Closing the connection rolls an open transaction back.
        connection.begin();
        connection.execute(insert.arg(4));
        connection.close();
        QCOMPARE(countRows(other, table.name()), 2LL);
        connection.open(database.connectionString());
    }

    void preparedStatementBindsTextAndNull_data() { testsupport::AddDatabaseRows(); }
    void preparedStatementBindsTextAndNull() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(
            connection, database, QStringLiteral("parameters"),
            QStringLiteral("id INTEGER, name VARCHAR(40), note VARCHAR(40), amount INTEGER"));
        Statement insert(connection);
        insert.prepare(QStringLiteral("INSERT INTO %1 (id, name, note, amount) VALUES (?, ?, ?, ?)")
                           .arg(table.name()));
        QCOMPARE(insert.parameterCount(), 4);
        const std::vector<std::vector<std::optional<QString>>> values{
            {"1", "Alice", "", "42"},
            {"2", QStringLiteral("Müller 東京 𝄞"), std::nullopt, std::nullopt},
            {"3", "O'Brien; \"quoted\" ?", "x", "-7"},
        };
        for (const auto& row : values) {
            for (int index = 0; index < int(row.size()); ++index) {
                if (row[size_t(index)])
                    insert.bindText(index + 1, *row[size_t(index)]);
                else
                    insert.bindNull(index + 1);
            }
            insert.execute();
            QCOMPARE(insert.rowsAffected(), 1LL);
        }

        const std::vector<Row> rows = query(
            connection,
            QStringLiteral("SELECT id, name, note, amount FROM %1 ORDER BY id").arg(table.name()));
        QCOMPARE(rows.size(), values.size());
        for (size_t r = 0; r < rows.size(); ++r)
            for (size_t c = 0; c < values[r].size(); ++c) {
                const QByteArray& value = rows[r][c];
                if (!values[r][c]) {
                    QVERIFY2(value.isNull(),
                             qPrintable(QStringLiteral("row %1 column %2").arg(r).arg(c)));
                } else {
                    QVERIFY(!value.isNull());
                    QCOMPARE(value, utf8(*values[r][c]));
                }
            }

        Statement select(connection);
        select.prepare(
            QStringLiteral("SELECT name FROM %1 WHERE id = ? OR name = ?").arg(table.name()));
        QCOMPARE(select.parameterCount(), 2);
        select.bindText(1, QStringLiteral("2"));
        select.bindNull(2);
        select.execute();
        std::vector<Row> found = fetchAll(select);
        QCOMPARE(found.size(), size_t(1));
        QCOMPARE(found[0][0], utf8(QStringLiteral("Müller 東京 𝄞")));
        // Executed again with other values, on the same prepared statement.
        select.bindText(1, QStringLiteral("0"));
        select.bindText(2, QStringLiteral("Alice"));
        select.execute();
        found = fetchAll(select);
        QCOMPARE(found.size(), size_t(1));
        QCOMPARE(found[0][0], QByteArray("Alice"));
    }

    void columnsDescribeNamesAndTypes_data() { testsupport::AddDatabaseRows(); }
    void columnsDescribeNamesAndTypes() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(connection, database, QStringLiteral("columns"),
                           QStringLiteral("id INTEGER NOT NULL, name VARCHAR(30), amount "
                                          "DECIMAL(10,2), ratio DOUBLE PRECISION, born DATE, "
                                          "data %1")
                               .arg(binaryType(database)));
        Statement statement(connection);
        statement.executeDirect(
            QStringLiteral("SELECT id, name, amount, ratio, born, data FROM %1").arg(table.name()));
        const std::vector<ColumnInfo>& columns = statement.columns();
        QCOMPARE(columns.size(), size_t(6));
        const QStringList names{"id", "name", "amount", "ratio", "born", "data"};
        for (size_t index = 0; index < columns.size(); ++index)
            QCOMPARE(columns[index].name.toLower(), names[qsizetype(index)]);

        QVERIFY(columns[0].isNumeric());
        QVERIFY(!columns[1].isNumeric() && !columns[1].isDateOrTime() && !columns[1].isBinary());
        QVERIFY2(columns[1].sqlType == 12 /* SQL_VARCHAR */ ||
                     columns[1].sqlType == -9 /* SQL_WVARCHAR */,
                 qPrintable(QString::number(columns[1].sqlType)));
        QCOMPARE(columns[1].size, quint64(30));
        QVERIFY(columns[1].nullable);
        // SQLite reports a declared DECIMAL as text; the servers as an exact number.
        QCOMPARE(columns[2].isNumeric(), !isSqlite(database));
        if (!isSqlite(database)) {
            QCOMPARE(columns[2].decimalDigits, 2);
            QVERIFY(!columns[0].nullable);
        }
        QVERIFY(columns[3].isNumeric());
        QVERIFY(columns[4].isDateOrTime() && !columns[4].isNumeric());
        QVERIFY(columns[5].isBinary() && !columns[5].isNumeric());
    }

    void fetchBlockReadsRowsInBlocks_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<int>("blockSize"); // 0: the default
        QTest::addColumn<QList<int>>("blockRows");
        for (const TestDatabase& database : testsupport::TestDatabases()) {
            QTest::addRow("%s: default block", qPrintable(database.label))
                << database << 0 << QList<int>{50, 50, 23};
            QTest::addRow("%s: blocks of 7", qPrintable(database.label))
                << database << 7
                << QList<int>{7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 4};
            QTest::addRow("%s: one block", qPrintable(database.label))
                << database << 500 << QList<int>{123};
        }
    }
    void fetchBlockReadsRowsInBlocks() {
        QFETCH(TestDatabase, database);
        QFETCH(int, blockSize);
        QFETCH(QList<int>, blockRows);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(connection, database, QStringLiteral("blocks"),
                           QStringLiteral("id INTEGER, label VARCHAR(20)"));
        insertNumbered(connection, table.name(), 123,
                       [](int id) { return QStringLiteral("row %1").arg(id); });

        Statement statement(connection);
        if (blockSize > 0)
            statement.setBlockSize(blockSize);
        statement.executeDirect(
            QStringLiteral("SELECT id, label FROM %1 ORDER BY id").arg(table.name()));
        std::vector<Row> rows;
        for (int expected : blockRows) {
            const size_t before = rows.size();
            QVERIFY(statement.fetchBlock(rows));
            QCOMPARE(int(rows.size() - before), expected);
        }
        QVERIFY(!statement.fetchBlock(rows));
        QVERIFY(!statement.fetchBlock(rows));
        QCOMPARE(rows.size(), size_t(123));
        for (int index = 0; index < 123; ++index) {
            QCOMPARE(rows[size_t(index)].size(), size_t(2));
            QCOMPARE(rows[size_t(index)][0], QByteArray::number(index + 1));
            QCOMPARE(rows[size_t(index)][1], utf8(QStringLiteral("row %1").arg(index + 1)));
        }
    }

    void fetchBlockTellsNullFromEmpty_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockTellsNullFromEmpty() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(connection, database, QStringLiteral("nulls"),
                           QStringLiteral("id INTEGER, name VARCHAR(10), body %1, data %2")
                               .arg(longTextType(database), binaryType(database)));
        connection.execute(
            QStringLiteral("INSERT INTO %1 VALUES (1, NULL, NULL, NULL)").arg(table.name()));
        connection.execute(QStringLiteral("INSERT INTO %1 VALUES (2, '', '', %2)")
                               .arg(table.name(), binaryLiteral(database, QByteArray())));
        connection.execute(QStringLiteral("INSERT INTO %1 VALUES (3, 'x', 'y', %2)")
                               .arg(table.name(), binaryLiteral(database, "z")));
        // Bound columns first, then the same values read with SQLGetData.
        for (const QString& columns :
             {QStringLiteral("id, name"), QStringLiteral("id, body"), QStringLiteral("id, data")}) {
            const std::vector<Row> rows =
                query(connection,
                      QStringLiteral("SELECT %1 FROM %2 ORDER BY id").arg(columns, table.name()));
            QCOMPARE(rows.size(), size_t(3));
            QVERIFY2(rows[0][1].isNull(), qPrintable(columns));
            QVERIFY2(!rows[1][1].isNull(), qPrintable(columns));
            QVERIFY2(rows[1][1].isEmpty(), qPrintable(columns));
            QCOMPARE(rows[2][1].size(), 1);
        }
    }

    // Numbers, dates and times come as the driver's text form.
    void fetchBlockReadsNumbersAndDatesAsText_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("decimal");
        const std::vector<TestDatabase> databases = testsupport::TestDatabases();
        // SQLite keeps a DECIMAL as a floating-point number.
        QTest::newRow("sqlite") << databases[0] << "1234.5";
        QTest::newRow("postgresql") << databases[1] << "1234.50";
        QTest::newRow("mariadb") << databases[2] << "1234.50";
    }
    void fetchBlockReadsNumbersAndDatesAsText() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, decimal);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(connection, database, QStringLiteral("numbers"),
                           QStringLiteral("i INTEGER, b BIGINT, d DECIMAL(12,2), f DOUBLE "
                                          "PRECISION, s SMALLINT, dt DATE, ts TIMESTAMP"));
        connection.execute(
            QStringLiteral("INSERT INTO %1 VALUES (-7, 9007199254740993, 1234.5, 0.25, 12, "
                           "'2020-01-02', '2020-01-02 03:04:05')")
                .arg(table.name()));
        connection.execute(
            QStringLiteral("INSERT INTO %1 VALUES (NULL, NULL, NULL, NULL, NULL, NULL, NULL)")
                .arg(table.name()));
        const std::vector<Row> rows =
            query(connection, QStringLiteral("SELECT * FROM %1 ORDER BY i DESC").arg(table.name()));
        QCOMPARE(rows.size(), size_t(2));
        const std::vector<QByteArray> expected{
            "-7", "9007199254740993", decimal.toUtf8(),     "0.25",
            "12", "2020-01-02",       "2020-01-02 03:04:05"};
        const Row& values = rows[0].front().isNull() ? rows[1] : rows[0];
        const Row& nulls = rows[0].front().isNull() ? rows[0] : rows[1];
        for (size_t index = 0; index < expected.size(); ++index) {
            QCOMPARE(values[index], expected[index]);
            QVERIFY(nulls[index].isNull());
        }
    }

    // SQLite keeps whatever it is given, whatever the declared type.
    void sqliteValuesNeedNotMatchDeclaredTypes() {
        const TestDatabase database = testsupport::TestDatabases().front();
        Connection connection = connectTo(database);
        ScratchTable table(connection, database, QStringLiteral("dynamic"),
                           QStringLiteral("n INTEGER, d DATE, v VARCHAR(3)"));
        const QString longText = QStringLiteral("Müller 東京 ") + QString(500, QChar(u'x'));
        Statement insert(connection);
        insert.prepare(QStringLiteral("INSERT INTO %1 VALUES (?, ?, ?)").arg(table.name()));
        insert.bindText(1, QStringLiteral("Müller 東京"));
        insert.bindText(2, longText);
        insert.bindText(3, longText);
        insert.execute();
        const std::vector<Row> rows =
            query(connection, QStringLiteral("SELECT n, d, v FROM %1").arg(table.name()));
        QCOMPARE(rows.size(), size_t(1));
        QCOMPARE(rows[0][0], utf8(QStringLiteral("Müller 東京")));
        QCOMPARE(rows[0][1], utf8(longText));
        QCOMPARE(rows[0][2], utf8(longText));
    }

    void fetchBlockReadsUtf8Text_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockReadsUtf8Text() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(
            connection, database, QStringLiteral("unicode"),
            QStringLiteral("id INTEGER, name VARCHAR(40), body %1").arg(longTextType(database)));
        const QStringList texts{QStringLiteral("Müller 東京"), QStringLiteral("𝄞 clef, emoji 😀"),
                                QStringLiteral("plain ascii"), QStringLiteral("ÆØÅ æøå €")};
        // Each text once in the statement text (even ids) and once as a parameter (odd).
        // The SQLite driver garbles characters beyond the BMP in statement text (0.9998),
        // so there they go as parameters only.
        Statement insert(connection);
        insert.prepare(QStringLiteral("INSERT INTO %1 VALUES (?, ?, ?)").arg(table.name()));
        for (int index = 0; index < texts.size(); ++index) {
            const bool beyondBmp = std::any_of(texts[index].begin(), texts[index].end(),
                                               [](QChar c) { return c.isSurrogate(); });
            const QString literal = isSqlite(database) && beyondBmp
                                        ? QStringLiteral("?")
                                        : QString(texts[index]).replace("'", "''");
            if (literal == QLatin1String("?")) {
                insert.bindText(1, QString::number(2 * index));
                insert.bindText(2, texts[index]);
                insert.bindText(3, texts[index]);
                insert.execute();
            } else
                connection.execute(QStringLiteral("INSERT INTO %1 VALUES (%2, '%3', '%3')")
                                       .arg(table.name())
                                       .arg(2 * index)
                                       .arg(literal));
            insert.bindText(1, QString::number(2 * index + 1));
            insert.bindText(2, texts[index]);
            insert.bindText(3, texts[index]);
            insert.execute();
        }
        const std::vector<Row> rows = query(
            connection, QStringLiteral("SELECT name, body FROM %1 ORDER BY id").arg(table.name()));
        QCOMPARE(rows.size(), size_t(2 * texts.size()));
        for (size_t index = 0; index < rows.size(); ++index) {
            const QString& text = texts[qsizetype(index / 2)];
            QCOMPARE(rows[index][0], utf8(text));
            QCOMPARE(rows[index][1], utf8(text));
        }
        for (const QString& text : {texts[0], texts[3]}) {
            const std::vector<Row> found =
                query(connection, QStringLiteral("SELECT id FROM %1 WHERE name = '%2' ORDER BY id")
                                      .arg(table.name(), text));
            // Reading it back hides this: the same driver under-reports the length of
            // such texts by one character when it returns them.
            if (text == texts[3])
                QEXPECT_FAIL("mariadb",
                             "MariaDB Connector/ODBC 3.1 stores some Latin-1 texts given as "
                             "parameters with a NUL character appended",
                             Continue);
            QCOMPARE(found.size(), size_t(2));
        }
    }

    void fetchBlockReadsBinary_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockReadsBinary() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(connection, database, QStringLiteral("binary"),
                           QStringLiteral("id INTEGER, small %1, large %2")
                               .arg(binaryType(database), longBinaryType(database)));
        const QByteArray small = QByteArray::fromHex("00017f80ff") + "abc";
        QByteArray large;
        for (int index = 0; index < 20000; ++index)
            large.append(char((index * 7) & 0xff));
        connection.execute(
            QStringLiteral("INSERT INTO %1 VALUES (1, %2, %3)")
                .arg(table.name(), binaryLiteral(database, small), binaryLiteral(database, large)));
        connection.execute(QStringLiteral("INSERT INTO %1 VALUES (2, %2, %2)")
                               .arg(table.name(), binaryLiteral(database, "\xff")));
        const std::vector<Row> rows =
            query(connection,
                  QStringLiteral("SELECT small, large FROM %1 ORDER BY id").arg(table.name()));
        QCOMPARE(rows.size(), size_t(2));
        QCOMPARE(rows[0][0], small);
        QCOMPARE(rows[0][1].size(), large.size());
        QCOMPARE(rows[0][1], large);
        QCOMPARE(rows[1][0], QByteArray("\xff"));
        QCOMPARE(rows[1][1], QByteArray("\xff"));
    }

    void fetchBlockReadsLongText_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockReadsLongText() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        // A bound column before the long one and an unbound one after it.
        ScratchTable table(
            connection, database, QStringLiteral("longtext"),
            QStringLiteral("id INTEGER, body %1, tail VARCHAR(10)").arg(longTextType(database)));
        QString body;
        while (body.size() < 12345)
            body += QStringLiteral("Zeile %1 äöü 東京 𝄞; ").arg(body.size());
        const QString shortBody = QStringLiteral("short");
        Statement insert(connection);
        insert.prepare(QStringLiteral("INSERT INTO %1 VALUES (?, ?, ?)").arg(table.name()));
        for (int id = 1; id <= 60; ++id) {
            insert.bindText(1, QString::number(id));
            if (id == 2)
                insert.bindNull(2);
            else
                insert.bindText(2, id % 3 == 0 ? shortBody : body + QString::number(id));
            insert.bindText(3, QStringLiteral("end %1").arg(id));
            insert.execute();
        }
        const std::vector<Row> rows =
            query(connection,
                  QStringLiteral("SELECT id, body, tail FROM %1 ORDER BY id").arg(table.name()));
        QCOMPARE(rows.size(), size_t(60));
        for (int id = 1; id <= 60; ++id) {
            const Row& row = rows[size_t(id - 1)];
            QCOMPARE(row[0], QByteArray::number(id));
            if (id == 2)
                QVERIFY(row[1].isNull());
            else
                QCOMPARE(row[1], utf8(id % 3 == 0 ? shortBody : body + QString::number(id)));
            QCOMPARE(row[2], utf8(QStringLiteral("end %1").arg(id)));
        }
    }

    // Values longer than the size the driver reports for their column are still read
    // whole: SQLite does not enforce declared sizes, psqlODBC reports an unbounded
    // VARCHAR as 255 characters.
    void fetchBlockReadsValuesLongerThanReported_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockReadsValuesLongerThanReported() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(
            connection, database, QStringLiteral("oversize"),
            QStringLiteral("id INTEGER, body %1")
                .arg(isSqlite(database) ? QStringLiteral("VARCHAR(5)") : longTextType(database)));
        auto textOf = [](int id) {
            return QStringLiteral("%1:").arg(id) + QString(300 + id, QChar(u'a' + id % 26));
        };
        insertNumbered(connection, table.name(), 120, textOf);
        const QString expression = isSqlite(database)     ? QStringLiteral("body")
                                   : isPostgres(database) ? QStringLiteral("CAST(body AS VARCHAR)")
                                                          : QStringLiteral("CAST(body AS CHAR)");
        Statement statement(connection);
        statement.executeDirect(
            QStringLiteral("SELECT id, %1 FROM %2 ORDER BY id").arg(expression, table.name()));
        if (!isMaria(database)) // which reports the real size
            QVERIFY(statement.columns().at(1).size < 300);
        const std::vector<Row> rows = fetchAll(statement);
        QCOMPARE(rows.size(), size_t(120));
        for (int id = 1; id <= 120; ++id)
            QCOMPARE(rows[size_t(id - 1)][1], utf8(textOf(id)));
    }

    void setMaxRowsLimitsRows_data() { testsupport::AddDatabaseRows(); }
    void setMaxRowsLimitsRows() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable table(connection, database, QStringLiteral("maxrows"),
                           QStringLiteral("id INTEGER, label VARCHAR(10)"));
        insertNumbered(connection, table.name(), 5, [](int id) { return QString::number(id); });
        const QString sql = QStringLiteral("SELECT id FROM %1 ORDER BY id").arg(table.name());
        Statement statement(connection);
        statement.setMaxRows(1);
        statement.executeDirect(sql);
        std::vector<Row> rows = fetchAll(statement);
        QCOMPARE(rows.size(), size_t(1));
        QCOMPARE(rows[0][0], QByteArray("1"));

        statement.setMaxRows(3);
        statement.setBlockSize(2);
        statement.executeDirect(sql);
        QCOMPARE(fetchAll(statement).size(), size_t(3));

        statement.setMaxRows(0);
        statement.executeDirect(sql);
        QCOMPARE(fetchAll(statement).size(), size_t(5));
    }

    void tableNamesListsUserTablesOnly_data() { testsupport::AddDatabaseRows(); }
    void tableNamesListsUserTablesOnly() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        ScratchTable first(connection, database, QStringLiteral("listed"),
                           QStringLiteral("id INTEGER"));
        ScratchTable second(connection, database, QStringLiteral("listed"),
                            QStringLiteral("id INTEGER"));
        const QString view = testsupport::UniqueTableName("view");
        connection.execute(
            QStringLiteral("CREATE VIEW %1 AS SELECT id FROM %2").arg(view, first.name()));
        const QStringList names = connection.tableNames();
        connection.execute(QStringLiteral("DROP VIEW ") + view);

        QVERIFY2(names.contains(first.name(), Qt::CaseInsensitive), qPrintable(names.join(' ')));
        QVERIFY2(names.contains(second.name(), Qt::CaseInsensitive), qPrintable(names.join(' ')));
        QVERIFY2(!names.contains(view, Qt::CaseInsensitive), qPrintable(names.join(' ')));
        static const QRegularExpression system(
            QStringLiteral("^(sqlite_|pg_|sql_)|^(tables|columns|user|db|global_status|"
                           "session_status|session_account_connect_attrs)$"),
            QRegularExpression::CaseInsensitiveOption);
        for (const QString& name : names)
            QVERIFY2(!system.match(name).hasMatch(), qPrintable(name));
    }

    void dataSourcesListTheDsn_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("driverPart");
        const std::vector<TestDatabase> databases = testsupport::TestDatabases();
        QTest::newRow("sqlite") << databases[0] << "SQLITE";
        QTest::newRow("postgresql") << databases[1] << "POSTGRESQL";
        QTest::newRow("mariadb") << databases[2] << "MARIADB";
    }
    void dataSourcesListTheDsn() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, driverPart);
        QUILLET_REQUIRE_DATABASE(database);
        const std::vector<db::odbc::DataSource> sources = db::odbc::DataSources();
        const auto found = std::find_if(sources.begin(), sources.end(), [&](const auto& source) {
            return source.name == database.dsn;
        });
        QVERIFY(found != sources.end());
        QVERIFY2(found->driverDescription.toUpper().contains(driverPart),
                 qPrintable(found->driverDescription));
        QCOMPARE(db::odbc::DriverDescriptionOf(database.dsn), found->driverDescription);
        QCOMPARE(db::odbc::DriverDescriptionOf(database.dsn.toLower()), found->driverDescription);
        QVERIFY(db::odbc::DriverDescriptionOf(QStringLiteral("QuilletNoSuchSource")).isEmpty());
        QVERIFY(db::odbc::DriverDescriptionOf(QString()).isEmpty());
    }

    // The driver manager reads the user's odbc.ini on every look-up, so a data source
    // registered after the first ODBC call of the process is usable at once.
    void dataSourceAddedLaterIsSeen() {
        QVERIFY(!db::odbc::DataSources().empty());
        const QString dsn = testsupport::UniqueTableName("LateSource");
        QVERIFY(db::odbc::DriverDescriptionOf(dsn).isEmpty());
        QTemporaryDir folder;
        QVERIFY(folder.isValid());
        testsupport::SqliteDsn(dsn, folder.filePath(QStringLiteral("late.sqlite")));
        QCOMPARE(db::odbc::DriverDescriptionOf(dsn), QStringLiteral("SQLite3"));
        Connection connection;
        connection.open(QStringLiteral("DSN=") + dsn);
        QVERIFY(connection.completedConnectionString().contains(folder.path()));
        connection.execute(QStringLiteral("CREATE TABLE late (id INTEGER)"));
        QCOMPARE(connection.tableNames(), QStringList{QStringLiteral("late")});
    }

    void cancelStopsRunningStatement_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("sql");
        // SQLite's driver is never cancelled from another thread: it frees what the running
        // call still reads. Its statements are left to finish.
        const std::vector<TestDatabase> databases = testsupport::TestDatabases();
        QTest::newRow("postgresql") << databases[1] << "SELECT pg_sleep(60)";
        QTest::newRow("mariadb") << databases[2] << "SELECT SLEEP(60)";
    }
    void cancelStopsRunningStatement() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, sql);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        Statement statement(connection);
        std::atomic<bool> done{false};
        std::optional<OdbcError> error;
        QElapsedTimer timer;
        timer.start();
        std::thread worker([&] {
            error = errorOf([&] {
                statement.executeDirect(sql);
                fetchAll(statement);
            });
            done = true;
        });
        // Cancelling before the statement runs does nothing, so keep at it.
        while (!done && timer.elapsed() < 30000) {
            QThread::msleep(200);
            statement.cancel();
        }
        worker.join();
        QVERIFY2(timer.elapsed() < 20000, qPrintable(QString::number(timer.elapsed())));
        if (error)
            qInfo("%s: cancelled with %s: %s", qPrintable(database.label),
                  qPrintable(error->sqlState()), error->what());
        // The connection is usable afterwards.
        QCOMPARE(query(connection, QStringLiteral("SELECT 1")).at(0).at(0), QByteArray("1"));
    }

    void statementKeepsConnectionAlive_data() { testsupport::AddDatabaseRows(); }
    void statementKeepsConnectionAlive() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        Statement statement(connection);
        connection.close();
        QVERIFY(!connection.isOpen());
        statement.executeDirect(QStringLiteral("SELECT 1"));
        QCOMPARE(fetchAll(statement).at(0).at(0), QByteArray("1"));

        Statement moved = std::move(statement);
        moved.executeDirect(QStringLiteral("SELECT 2"));
        QCOMPARE(fetchAll(moved).at(0).at(0), QByteArray("2"));

        Connection first = connectTo(database);
        Connection second = std::move(first);
        QVERIFY(second.isOpen());
        QCOMPARE(query(second, QStringLiteral("SELECT 3")).at(0).at(0), QByteArray("3"));
    }

    void closedConnectionRaisesError() {
        Connection connection;
        const auto notOpen = [](const std::optional<OdbcError>& error) {
            return error && error->sqlState() == QLatin1String("08003");
        };
        QVERIFY(notOpen(errorOf([&] { Statement statement(connection); })));
        QVERIFY(notOpen(errorOf([&] { connection.execute(QStringLiteral("SELECT 1")); })));
        QVERIFY(notOpen(errorOf([&] { connection.begin(); })));
        QVERIFY(notOpen(errorOf([&] { connection.tableNames(); })));
        QVERIFY(notOpen(errorOf([&] { connection.dbmsName(); })));
        QVERIFY(!connection.inTransaction());
    }

    void closeEndsTheResult() {
        Connection connection = connectTo(testsupport::TestDatabases().front());
        Statement statement(connection);
        statement.executeDirect(QStringLiteral("SELECT 1 UNION ALL SELECT 2"));
        QCOMPARE(statement.columns().size(), size_t(1));
        statement.close();
        QVERIFY(statement.columns().empty());
        std::vector<Row> rows;
        QVERIFY(!statement.fetchBlock(rows));
        QVERIFY(rows.empty());
        statement.executeDirect(QStringLiteral("SELECT 3"));
        QCOMPARE(fetchAll(statement).at(0).at(0), QByteArray("3"));
    }

    void driverManagerVersionIsDotted() {
        const QString version = db::odbc::DriverManagerVersion();
        static const QRegularExpression dotted(QStringLiteral("^\\d{2}\\.\\d{2}\\.\\d{4}"));
        QVERIFY2(dotted.match(version).hasMatch(), qPrintable(version));
    }
};

QTEST_GUILESS_MAIN(TestOdbc)
#include "test_odbc.moc"
