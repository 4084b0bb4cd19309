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
#include <optional>
#include <thread>

using db::odbc::Connection;
using db::odbc::OdbcError;
using db::odbc::Row;
using db::odbc::Statement;
using testsupport::TestDatabase;
using Rows = std::vector<Row>;

Q_DECLARE_METATYPE(db::odbc::Diagnostic)

// Fetches the database of the current row and connects to it; skips the row when the
// database is not configured.
#define CONNECT_TO_ROW_DATABASE()                                                                  \
    QFETCH(TestDatabase, database);                                                                \
    QUILLET_REQUIRE_DATABASE(database);                                                            \
    Connection connection = connectTo(database)

namespace {

Connection connectTo(const TestDatabase& database) {
    Connection connection;
    connection.open(database.connectionString());
    return connection;
}

Rows fetchAll(Statement& statement) {
    Rows rows;
    while (statement.fetchBlock(rows)) {
    }
    return rows;
}

Rows query(const Connection& connection, const QString& sql) {
    Statement statement(connection);
    statement.executeDirect(sql);
    return fetchAll(statement);
}

template <typename Action> std::optional<OdbcError> errorOf(Action&& action) {
    try {
        action();
    } catch (const OdbcError& error) {
        return error;
    }
    return std::nullopt;
}

// A table of one test's own, dropped at its end.
class ScratchTable {
public:
    ScratchTable(Connection& connection, const TestDatabase& database, const QString& columns)
        : m_connection(connection), m_name(testsupport::UniqueTableName("scratch")) {
        m_connection.execute("CREATE TABLE " + m_name + " (" + columns + ")" +
                             database.tableOptions());
    }
    ~ScratchTable() {
        try {
            if (m_connection.inTransaction())
                m_connection.rollback();
            if (m_connection.isOpen())
                m_connection.execute("DROP TABLE " + m_name);
        } catch (const OdbcError& error) {
            qWarning("cannot drop %s: %s", qPrintable(m_name), error.what());
        }
    }
    const QString& name() const { return m_name; }
    // The statement with %1 replaced by the table's name.
    QString sql(const char* statement) const { return QString::fromUtf8(statement).arg(m_name); }

private:
    Connection& m_connection;
    QString m_name;
};

long long countRows(const Connection& connection, const ScratchTable& table) {
    return query(connection, table.sql("SELECT COUNT(*) FROM %1")).at(0).at(0).toLongLong();
}

// Inserts rows of (id, values...) in one transaction through a prepared statement; a null
// value is bound as NULL.
void insertRows(Connection& connection, const ScratchTable& table,
                const std::vector<QStringList>& rows) {
    connection.begin();
    Statement insert(connection);
    const QString marks = QStringList(rows.at(0).size(), QStringLiteral("?")).join(',');
    insert.prepare(table.sql("INSERT INTO %1 VALUES (%2)").arg(marks));
    for (const QStringList& row : rows) {
        for (int index = 0; index < int(row.size()); ++index)
            row[index].isNull() ? insert.bindNull(index + 1)
                                : insert.bindText(index + 1, row[index]);
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

    // Each driver's state and message for a failing connect or statement; after a failing
    // statement the connection stays usable.
    void errorsCarryTheDriversDiagnostics_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("connect"); // appended to the connection string; null: none
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("sqlState");
        QTest::addColumn<int>("nativeError"); // -1: not checked
        QTest::addColumn<QString>("messagePart");
        const std::vector<TestDatabase> dbs = testsupport::TestDatabases();
        const QString none, syntax = QStringLiteral("SELEC id FRM %1"),
                            duplicate = QStringLiteral("INSERT INTO %1 VALUES (1)");
        const auto row = [](const TestDatabase& database, const char* kind, const QString& connect,
                            const QString& sql, const char* state, int native, const char* text) {
            QTest::addRow("%s: %s", qPrintable(database.label), kind)
                << database << connect << sql << QString(state) << native << QString(text);
        };
        row(dbs[0], "no such data source", "QuilletNoSuchSource", none, "IM002", -1,
            "Data source name not found");
        row(dbs[0], "folder missing", ";Database=/nonexistent-folder/x.db", none, "HY000", -1,
            "connect failed");
        row(dbs[1], "wrong password", "-wrong", none, "08001", -1,
            "password authentication failed");
        row(dbs[2], "no such database", ";Database=quillet_no_such_db", none, "42000", -1,
            "quillet_no_such_db");
        row(dbs[0], "syntax", none, syntax, "HY000", 1, "syntax error");
        row(dbs[0], "duplicate key", none, duplicate, "HY000", 19, "UNIQUE constraint failed");
        row(dbs[1], "syntax", none, syntax, "42601", -1, "syntax error");
        row(dbs[1], "duplicate key", none, duplicate, "23505", -1, "duplicate key");
        row(dbs[2], "syntax", none, syntax, "42000", 1064, "SQL syntax");
        row(dbs[2], "duplicate key", none, duplicate, "23000", 1062, "Duplicate entry");
    }
    void errorsCarryTheDriversDiagnostics() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, connect);
        QFETCH(QString, sql);
        QFETCH(int, nativeError);
        QFETCH(QString, messagePart);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection;
        std::optional<OdbcError> error;
        std::optional<ScratchTable> table;
        if (!connect.isNull()) {
            const QString string = connect.startsWith(QLatin1String("Quillet"))
                                       ? "DSN=" + connect
                                       : database.connectionString() + connect;
            error = errorOf([&] { connection.open(string); });
            QVERIFY(!connection.isOpen());
        } else {
            connection = connectTo(database);
            table.emplace(connection, database, QStringLiteral("id INTEGER PRIMARY KEY"));
            connection.execute(table->sql("INSERT INTO %1 VALUES (1)"));
            error = errorOf([&] { connection.execute(sql.arg(table->name())); });
            QCOMPARE(countRows(connection, *table), 1LL);
        }
        QVERIFY(error.has_value());
        QTEST(error->sqlState(), "sqlState");
        if (nativeError >= 0)
            QCOMPARE(error->nativeError(), nativeError);
        QVERIFY2(error->message().contains(messagePart), error->what());
        if (connect.isNull())
            QCOMPARE(error->context(), QStringLiteral("SQLExecDirect"));
        else
            QCOMPARE(error->context(), QStringLiteral("SQLDriverConnect"));
    }

    void errorJoinsDiagnostics_data() {
        QTest::addColumn<std::vector<db::odbc::Diagnostic>>("diagnostics");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("sqlState");
        QTest::addColumn<int>("nativeError");
        using Records = std::vector<db::odbc::Diagnostic>;
        QTest::newRow("two records, the first decides the state")
            << Records{{"23000", 1062, "Duplicate"}, {"01000", 0, "Rolled back"}}
            << "Duplicate\nRolled back" << QStringLiteral("23000") << 1062;
        QTest::newRow("record without text") << Records{{"HY000", 7, ""}, {"HY000", 8, "Second"}}
                                             << "Second" << QStringLiteral("HY000") << 7;
        QTest::newRow("no records")
            << Records{} << "ODBC call failed: SQLExecDirect" << QString() << 0;
    }
    void errorJoinsDiagnostics() {
        QFETCH(std::vector<db::odbc::Diagnostic>, diagnostics);
        const OdbcError error(QStringLiteral("SQLExecDirect"), diagnostics);
        QTEST(error.message(), "message");
        QTEST(error.sqlState(), "sqlState");
        QTEST(error.nativeError(), "nativeError");
        QCOMPARE(error.diagnostics().size(), diagnostics.size());
    }

    // What the connection reports; warnings (SQL_SUCCESS_WITH_INFO) are success, also when
    // debug logging reads them; the rows affected; transactions; a statement keeps its
    // connection alive after close(); both can be moved.
    void connectionExecuteAndTransactions_data() { testsupport::AddDatabaseRows(); }
    void connectionExecuteAndTransactions() {
        CONNECT_TO_ROW_DATABASE();
        QVERIFY(connection.isOpen() && !connection.inTransaction());
        const QString completed = connection.completedConnectionString();
        QVERIFY2(completed.startsWith("DSN=" + database.dsn, Qt::CaseInsensitive),
                 qPrintable(completed));
        QCOMPARE(connection.dbmsName(), database.is("sqlite")       ? QStringLiteral("SQLite")
                                        : database.is("postgresql") ? QStringLiteral("PostgreSQL")
                                                                    : QStringLiteral("MariaDB"));
        QLoggingCategory::setFilterRules(QStringLiteral("quillet.odbc.debug=true"));
        const std::optional<OdbcError> warning = errorOf([&] {
            connection.execute("DROP TABLE IF EXISTS " + testsupport::UniqueTableName("absent"));
        });
        QLoggingCategory::setFilterRules(QString());
        QVERIFY2(!warning.has_value(), warning ? warning->what() : "");

        ScratchTable table(connection, database, QStringLiteral("id INTEGER PRIMARY KEY"));
        const QString insert = table.sql("INSERT INTO %1 VALUES (%2)");
        for (int id = 1; id <= 3; ++id)
            QCOMPARE(connection.execute(insert.arg(id)), 1LL);
        QCOMPARE(connection.execute(table.sql("UPDATE %1 SET id = id + 10")), 3LL);
        QCOMPARE(connection.execute(table.sql("UPDATE %1 SET id = 0 WHERE id = 99")), 0LL);
        QCOMPARE(connection.execute(table.sql("DELETE FROM %1 WHERE id < 13")), 2LL);

        connection.begin();
        QVERIFY(connection.inTransaction());
        connection.execute(insert.arg(1));
        QCOMPARE(countRows(connection, table), 2LL);
        connection.rollback();
        QVERIFY(!connection.inTransaction());
        QCOMPARE(countRows(connection, table), 1LL);
        connection.begin();
        connection.execute(insert.arg(2));
        connection.commit();
        QVERIFY(!connection.inTransaction());
        Connection other = connectTo(database);
        QCOMPARE(countRows(other, table), 2LL);
        // Back in autocommit: a statement outside a transaction is kept at once.
        connection.execute(insert.arg(3));
        QCOMPARE(countRows(other, table), 3LL);
        // Closing the connection rolls an open transaction back.
        connection.begin();
        connection.execute(insert.arg(4));
        Statement statement(connection);
        connection.close();
        QCOMPARE(countRows(other, table), 3LL);
        QVERIFY(!connection.isOpen() && connection.completedConnectionString().isEmpty());
        statement.executeDirect(QStringLiteral("SELECT 1"));
        Statement moved = std::move(statement);
        QCOMPARE(fetchAll(moved), Rows{{"1"}});
        connection = std::move(other);
        QCOMPARE(query(connection, QStringLiteral("SELECT 3")), Rows{{"3"}});
    }

    // Text and NULL parameters, also characters beyond the BMP; one prepared statement
    // executed again with other values. UTF-8 text in the statement text too, also in a
    // condition (the SQLite driver garbles characters beyond the BMP there, 0.9998).
    void preparedStatementBindsTextAndNull_data() { testsupport::AddDatabaseRows(); }
    void preparedStatementBindsTextAndNull() {
        CONNECT_TO_ROW_DATABASE();
        ScratchTable table(connection, database,
                           "id INTEGER, name VARCHAR(40), note VARCHAR(40), amount INTEGER");
        const QString unicode = QStringLiteral("Müller 東京 𝄞");
        const std::vector<QStringList> values{{"1", "Alice", "", "42"},
                                              {"2", unicode, QString(), QString()},
                                              {"3", "O'Brien; \"quoted\" ?", "x", "-7"}};
        Statement insert(connection);
        insert.prepare(table.sql("INSERT INTO %1 (id, name, note, amount) VALUES (?, ?, ?, ?)"));
        QCOMPARE(insert.parameterCount(), 4);
        for (const QStringList& row : values) {
            for (int index = 0; index < 4; ++index)
                row[index].isNull() ? insert.bindNull(index + 1)
                                    : insert.bindText(index + 1, row[index]);
            insert.execute();
            QCOMPARE(insert.rowsAffected(), 1LL);
            QVERIFY(insert.columns().empty());
        }
        const Rows rows = query(connection, table.sql("SELECT * FROM %1 ORDER BY id"));
        QCOMPARE(rows.size(), values.size());
        for (size_t r = 0; r < rows.size(); ++r)
            for (size_t c = 0; c < 4; ++c) {
                QCOMPARE(rows[r][c].isNull(), values[r][c].isNull());
                QCOMPARE(rows[r][c], values[r][c].toUtf8());
            }
        Statement select(connection);
        select.prepare(table.sql("SELECT name FROM %1 WHERE id = ? OR name = ?"));
        QCOMPARE(select.parameterCount(), 2);
        select.bindText(1, QStringLiteral("2"));
        select.bindNull(2);
        select.execute();
        QCOMPARE(fetchAll(select), Rows{{unicode.toUtf8()}});
        select.bindText(1, QStringLiteral("0"));
        select.bindText(2, QStringLiteral("Alice"));
        select.execute();
        QCOMPARE(fetchAll(select), Rows{{"Alice"}});
        const QString literal = QStringLiteral("ÆØÅ æøå € 東京");
        connection.execute(table.sql("INSERT INTO %1 (id, name) VALUES (4, '%2')").arg(literal));
        QCOMPARE(
            query(connection, table.sql("SELECT id, name FROM %1 WHERE name = '%2'").arg(literal)),
            (Rows{{"4", literal.toUtf8()}}));
    }

    // Names, kinds, sizes and nullability of the columns; numbers, dates and times come
    // as the driver's text form, NULL as a null value.
    void columnsAndTheirValues_data() { testsupport::AddDatabaseRows(); }
    void columnsAndTheirValues() {
        CONNECT_TO_ROW_DATABASE();
        ScratchTable table(connection, database,
                           "i INTEGER NOT NULL, name VARCHAR(30), d DECIMAL(12,2), "
                           "f DOUBLE PRECISION, b BIGINT, dt DATE, ts TIMESTAMP, data " +
                               database.binaryType());
        connection.execute(table.sql("INSERT INTO %1 VALUES (-7, NULL, NULL, NULL, NULL, NULL, "
                                     "NULL, NULL)"));
        connection.execute(table.sql("INSERT INTO %1 VALUES (12, 'x', 1234.5, 0.25, "
                                     "9007199254740993, '2020-01-02', '2020-01-02 03:04:05', "
                                     "NULL)"));
        Statement statement(connection);
        statement.executeDirect(table.sql("SELECT * FROM %1 ORDER BY i"));
        const auto& columns = statement.columns();
        QStringList names;
        for (const db::odbc::ColumnInfo& column : columns)
            names << column.name.toLower();
        QCOMPARE(names, QStringList({"i", "name", "d", "f", "b", "dt", "ts", "data"}));
        QVERIFY(columns[0].isNumeric() && columns[3].isNumeric());
        QVERIFY(!columns[1].isNumeric() && !columns[1].isDateOrTime() && !columns[1].isBinary());
        QVERIFY2(columns[1].sqlType == 12 /* SQL_VARCHAR */ ||
                     columns[1].sqlType == -9 /* SQL_WVARCHAR */,
                 qPrintable(QString::number(columns[1].sqlType)));
        QCOMPARE(columns[1].size, quint64(30));
        QVERIFY(columns[1].nullable);
        // SQLite reports a declared DECIMAL as text, and keeps it as a floating-point number.
        QCOMPARE(columns[2].isNumeric(), !database.is("sqlite"));
        if (!database.is("sqlite")) {
            QCOMPARE(columns[2].decimalDigits, 2);
            QVERIFY(!columns[0].nullable);
        }
        QVERIFY(columns[5].isDateOrTime() && !columns[5].isNumeric());
        QVERIFY(columns[7].isBinary() && !columns[7].isNumeric());
        const Rows rows = fetchAll(statement);
        QCOMPARE(rows.size(), size_t(2));
        for (size_t column = 1; column < 8; ++column)
            QVERIFY(rows[0][column].isNull());
        const QByteArray decimal = database.is("sqlite") ? "1234.5" : "1234.50";
        QCOMPARE(rows[1], (Row{"12", "x", decimal, "0.25", "9007199254740993", "2020-01-02",
                               "2020-01-02 03:04:05", QByteArray()}));
    }

    // 123 rows in blocks of the set size (50 by default), up to the set maximum (0: all).
    void fetchBlockReadsRowsInBlocks_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<int>("blockSize"); // 0: the default
        QTest::addColumn<int>("maxRows");
        QTest::addColumn<QList<int>>("blockRows");
        for (const TestDatabase& database : testsupport::TestDatabases()) {
            const auto row = [&](const char* name, int blockSize, int maxRows,
                                 const QList<int>& blocks) {
                QTest::addRow("%s: %s", qPrintable(database.label), name)
                    << database << blockSize << maxRows << blocks;
            };
            row("default block", 0, 0, {50, 50, 23});
            row("at most 3 rows in blocks of 2", 2, 3, {2, 1});
        }
    }
    void fetchBlockReadsRowsInBlocks() {
        CONNECT_TO_ROW_DATABASE();
        QFETCH(int, blockSize);
        QFETCH(int, maxRows);
        QFETCH(QList<int>, blockRows);
        ScratchTable table(connection, database, QStringLiteral("id INTEGER, label VARCHAR(20)"));
        std::vector<QStringList> values;
        for (int id = 1; id <= 123; ++id)
            values.push_back({QString::number(id), QStringLiteral("row %1").arg(id)});
        insertRows(connection, table, values);

        Statement statement(connection);
        if (blockSize > 0)
            statement.setBlockSize(blockSize);
        statement.setMaxRows(maxRows);
        statement.executeDirect(table.sql("SELECT id, label FROM %1 ORDER BY id"));
        Rows rows;
        for (int expected : blockRows) {
            const size_t before = rows.size();
            QVERIFY(statement.fetchBlock(rows));
            QCOMPARE(int(rows.size() - before), expected);
        }
        QVERIFY(!statement.fetchBlock(rows));
        QVERIFY(!statement.fetchBlock(rows));
        for (size_t index = 0; index < rows.size(); ++index)
            QCOMPARE(rows[index], (Row{values[index][0].toUtf8(), values[index][1].toUtf8()}));
        // 0 lifts the limit again.
        statement.setMaxRows(0);
        statement.executeDirect(table.sql("SELECT id FROM %1"));
        QCOMPARE(fetchAll(statement).size(), size_t(123));
    }

    // NULL told from '' and long values read whole: in bound columns (short text, small
    // binary) and with SQLGetData in pieces (long text and binary beyond one 64 KB piece,
    // with multi-byte characters across the piece borders), a bound column after them.
    void fetchBlockReadsNullEmptyAndLongValues_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockReadsNullEmptyAndLongValues() {
        CONNECT_TO_ROW_DATABASE();
        ScratchTable table(
            connection, database,
            QStringLiteral("id INTEGER, name VARCHAR(10), body %1, small %2, large %3, "
                           "tail VARCHAR(10)")
                .arg(database.longTextType(), database.binaryType(), database.binaryType(true)));
        const QByteArray small = QByteArray::fromHex("00017f80ff") + "abc";
        QByteArray large;
        for (int index = 0; index < 100000; ++index)
            large.append(char((index * 7) & 0xff));
        QString body;
        while (body.size() < 70000)
            body += QStringLiteral("Zeile %1 äöü 東京 𝄞; ").arg(body.size());
        const auto insert = [&](const QStringList& values) {
            connection.execute(table.sql("INSERT INTO %1 VALUES (%2)").arg(values.join(", ")));
        };
        const QString empty = database.binaryLiteral(QByteArray());
        insert({"1", "NULL", "NULL", "NULL", "NULL", "'end 1'"});
        insert({"2", "'x'", "'y'", database.binaryLiteral(small), database.binaryLiteral(large),
                "'end 2'"});
        insert({"3", "''", "''", empty, empty, "NULL"});
        Statement update(connection);
        update.prepare(table.sql("UPDATE %1 SET body = ? WHERE id = 2"));
        update.bindText(1, body);
        update.execute();
        const Rows rows = query(connection, table.sql("SELECT * FROM %1 ORDER BY id"));
        QCOMPARE(rows.size(), size_t(3));
        for (size_t column = 1; column < 5; ++column) {
            QVERIFY(rows[0][column].isNull());
            QVERIFY(!rows[2][column].isNull() && rows[2][column].isEmpty());
        }
        QCOMPARE(rows[0][5], QByteArray("end 1"));
        QCOMPARE(rows[1], (Row{"2", "x", body.toUtf8(), small, large, "end 2"}));
        QVERIFY(rows[2][5].isNull());
    }

    // Values longer than the size the driver reports for their column are still read
    // whole: SQLite keeps whatever it is given whatever the declared type and size,
    // psqlODBC reports an unbounded VARCHAR as 255 characters.
    void fetchBlockReadsValuesLongerThanReported_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockReadsValuesLongerThanReported() {
        CONNECT_TO_ROW_DATABASE();
        ScratchTable table(connection, database,
                           "id INTEGER, body " +
                               (database.is("sqlite") ? "INTEGER" : database.longTextType()));
        std::vector<QStringList> values;
        for (int id = 1; id <= 120; ++id)
            values.push_back({QString::number(id), QStringLiteral("%1 é:").arg(id) +
                                                       QString(300 + id, QChar(u'a' + id % 26))});
        insertRows(connection, table, values);
        const QString expression = database.is("sqlite") ? QStringLiteral("body")
                                   : database.is("postgresql")
                                       ? QStringLiteral("CAST(body AS VARCHAR)")
                                       : QStringLiteral("CAST(body AS CHAR)");
        Statement statement(connection);
        statement.executeDirect(table.sql("SELECT id, %2 FROM %1 ORDER BY id").arg(expression));
        if (!database.is("mariadb")) // which reports the real size
            QVERIFY(statement.columns().at(1).size < 300);
        const Rows rows = fetchAll(statement);
        QCOMPARE(rows.size(), size_t(120));
        for (size_t index = 0; index < rows.size(); ++index)
            QCOMPARE(rows[index][1], values[index][1].toUtf8());
    }

    void tableNamesListsUserTablesOnly_data() { testsupport::AddDatabaseRows(); }
    void tableNamesListsUserTablesOnly() {
        CONNECT_TO_ROW_DATABASE();
        ScratchTable table(connection, database, QStringLiteral("id INTEGER"));
        const QString view = testsupport::UniqueTableName("view");
        connection.execute(table.sql("CREATE VIEW %2 AS SELECT id FROM %1").arg(view));
        const QStringList names = connection.tableNames();
        connection.execute("DROP VIEW " + view);

        QVERIFY2(names.contains(table.name(), Qt::CaseInsensitive), qPrintable(names.join(' ')));
        QVERIFY2(!names.contains(view, Qt::CaseInsensitive), qPrintable(names.join(' ')));
        static const QRegularExpression system(
            QStringLiteral("^(sqlite_|pg_|sql_)|^(tables|columns|user|db|global_status|"
                           "session_status|session_account_connect_attrs)$"),
            QRegularExpression::CaseInsensitiveOption);
        for (const QString& name : names)
            QVERIFY2(!system.match(name).hasMatch(), qPrintable(name));
    }

    // Every configured data source with its driver; the driver manager reads the user's
    // odbc.ini on every look-up, so a data source registered after the first ODBC call of
    // the process is usable at once.
    void dataSources() {
        const std::vector<db::odbc::DataSource> sources = db::odbc::DataSources();
        for (const TestDatabase& database : testsupport::AvailableDatabases()) {
            const auto found = std::find_if(sources.begin(), sources.end(),
                                            [&](const auto& s) { return s.name == database.dsn; });
            QVERIFY(found != sources.end());
            // "SQLite3", "PostgreSQL Unicode", "MariaDB Unicode"
            QVERIFY2(found->driverDescription.toUpper().contains(database.label.toUpper()),
                     qPrintable(found->driverDescription));
            QCOMPARE(db::odbc::DriverDescriptionOf(database.dsn.toLower()),
                     found->driverDescription);
        }
        QVERIFY(db::odbc::DriverDescriptionOf(QString()).isEmpty());
        const QString dsn = testsupport::UniqueTableName("LateSource");
        QVERIFY(db::odbc::DriverDescriptionOf(dsn).isEmpty());
        QTemporaryDir folder;
        testsupport::SqliteDsn(dsn, folder.filePath(QStringLiteral("late.sqlite")));
        QCOMPARE(db::odbc::DriverDescriptionOf(dsn), QStringLiteral("SQLite3"));
        Connection connection;
        connection.open("DSN=" + dsn);
        QVERIFY(connection.completedConnectionString().contains(folder.path()));
        connection.execute(QStringLiteral("CREATE TABLE late (id INTEGER)"));
        QCOMPARE(connection.tableNames(), QStringList{QStringLiteral("late")});
    }

    // SQLite's driver is never cancelled from another thread: it frees what the running
    // call still reads. Its statements are left to finish.
    void cancelStopsRunningStatement_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("sql");
        const std::vector<TestDatabase> databases = testsupport::TestDatabases();
        QTest::newRow("postgresql") << databases[1] << QStringLiteral("SELECT pg_sleep(60)");
        QTest::newRow("mariadb") << databases[2] << QStringLiteral("SELECT SLEEP(60)");
    }
    void cancelStopsRunningStatement() {
        CONNECT_TO_ROW_DATABASE();
        QFETCH(QString, sql);
        Statement statement(connection);
        std::atomic<bool> done{false};
        QElapsedTimer timer;
        timer.start();
        std::thread worker([&] {
            errorOf([&] {
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
        QCOMPARE(query(connection, QStringLiteral("SELECT 1")), Rows{{"1"}});
    }

    // Calls on a closed connection fail with 08003; a closed statement has no result.
    void closedConnectionAndStatement() {
        Connection closed;
        const auto notOpen = [](const std::optional<OdbcError>& error) {
            return error && error->sqlState() == QLatin1String("08003");
        };
        QVERIFY(notOpen(errorOf([&] { Statement statement(closed); })));
        QVERIFY(notOpen(errorOf([&] { closed.execute(QStringLiteral("SELECT 1")); })));
        QVERIFY(notOpen(errorOf([&] { closed.begin(); })));
        QVERIFY(notOpen(errorOf([&] { closed.tableNames(); })));
        QVERIFY(notOpen(errorOf([&] { closed.dbmsName(); })));
        QVERIFY(!closed.isOpen() && !closed.inTransaction());

        Connection connection = connectTo(testsupport::TestDatabases().front());
        Statement statement(connection);
        statement.executeDirect(QStringLiteral("SELECT 1 UNION ALL SELECT 2"));
        QCOMPARE(statement.columns().size(), size_t(1));
        statement.close();
        QVERIFY(statement.columns().empty());
        Rows rows;
        QVERIFY(!statement.fetchBlock(rows) && rows.empty());
        statement.executeDirect(QStringLiteral("SELECT 3"));
        QCOMPARE(fetchAll(statement), Rows{{"3"}});

        static const QRegularExpression dotted(QStringLiteral("^\\d{2}\\.\\d{2}\\.\\d{4}"));
        QVERIFY(dotted.match(db::odbc::DriverManagerVersion()).hasMatch());
    }
};

QTEST_GUILESS_MAIN(TestOdbc)
#include "test_odbc.moc"
