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

QString binaryType(const TestDatabase& database, bool isLong = false) {
    if (isPostgres(database))
        return QStringLiteral("BYTEA");
    if (isMaria(database))
        return isLong ? QStringLiteral("LONGBLOB") : QStringLiteral("VARBINARY(64)");
    return QStringLiteral("BLOB");
}

QString binaryLiteral(const TestDatabase& database, const QByteArray& bytes) {
    const QString hex = QString::fromLatin1(bytes.toHex());
    return isPostgres(database) ? QStringLiteral("decode('%1', 'hex')").arg(hex)
                                : QStringLiteral("X'%1'").arg(hex);
}

// A table of one test's own, dropped at its end.
class ScratchTable {
public:
    ScratchTable(Connection& connection, const TestDatabase& database, const QString& columns)
        : m_connection(connection), m_name(testsupport::UniqueTableName("scratch")) {
        const QString options = isMaria(database) ? " DEFAULT CHARSET=utf8mb4" : "";
        m_connection.execute("CREATE TABLE " + m_name + " (" + columns + ")" + options);
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
    ScratchTable(const ScratchTable&) = delete;
    ScratchTable& operator=(const ScratchTable&) = delete;

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

// Inserts rows of (id, text) in one transaction through a prepared statement.
void insertNumbered(Connection& connection, const ScratchTable& table, int count,
                    const std::function<QString(int)>& textOf) {
    connection.begin();
    Statement insert(connection);
    insert.prepare(table.sql("INSERT INTO %1 VALUES (?, ?)"));
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

    // A statement keeps its connection alive after close(); both can be moved.
    void connectionLifecycle_data() { testsupport::AddDatabaseRows(); }
    void connectionLifecycle() {
        CONNECT_TO_ROW_DATABASE();
        QVERIFY(connection.isOpen());
        QVERIFY(!connection.inTransaction());
        const QString completed = connection.completedConnectionString();
        qInfo("%s completes the connection string to: %s", qPrintable(database.label),
              qPrintable(completed));
        QVERIFY2(completed.startsWith("DSN=" + database.dsn, Qt::CaseInsensitive),
                 qPrintable(completed));
        QCOMPARE(connection.dbmsName(), isSqlite(database)     ? QStringLiteral("SQLite")
                                        : isPostgres(database) ? QStringLiteral("PostgreSQL")
                                                               : QStringLiteral("MariaDB"));
        Statement statement(connection);
        connection.close();
        QVERIFY(!connection.isOpen());
        QVERIFY(connection.completedConnectionString().isEmpty());
        statement.executeDirect(QStringLiteral("SELECT 1"));
        QCOMPARE(fetchAll(statement), Rows{{"1"}});
        Statement moved = std::move(statement);
        moved.executeDirect(QStringLiteral("SELECT 2"));
        QCOMPARE(fetchAll(moved), Rows{{"2"}});

        Connection second = connectTo(database);
        Connection third = std::move(second);
        QVERIFY(third.isOpen());
        QCOMPARE(query(third, QStringLiteral("SELECT 3")), Rows{{"3"}});
    }

    void badConnectionRaisesError_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("connectionString");
        QTest::addColumn<QString>("sqlState");
        QTest::addColumn<QString>("messagePart");
        const std::vector<TestDatabase> databases = testsupport::TestDatabases();
        const auto row = [](const char* name, const TestDatabase& database, const QString& suffix,
                            const QString& state, const QString& message) {
            QTest::newRow(name) << database << database.connectionString() + suffix << state
                                << message;
        };
        QTest::newRow("no such data source")
            << databases[0] << QStringLiteral("DSN=QuilletNoSuchSource") << "IM002"
            << "Data source name not found";
        row("sqlite: folder missing", databases[0], ";Database=/nonexistent-folder/x.db", "HY000",
            "connect failed");
        row("postgresql: wrong password", databases[1], "-wrong", "08001",
            "password authentication failed");
        row("mariadb: no such database", databases[2], ";Database=quillet_no_such_db", "42000",
            "quillet_no_such_db");
    }
    void badConnectionRaisesError() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, connectionString);
        QFETCH(QString, messagePart);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection;
        const std::optional<OdbcError> error = errorOf([&] { connection.open(connectionString); });
        QVERIFY(error.has_value());
        QTEST(error->sqlState(), "sqlState");
        QVERIFY2(error->message().contains(messagePart), error->what());
        QCOMPARE(error->message(), error->diagnostics().front().message);
        QCOMPARE(error->context(), QStringLiteral("SQLDriverConnect"));
        QVERIFY(!connection.isOpen());
    }

    // Errors on each driver: the state and message are the driver's, and the connection
    // stays usable.
    void badStatementRaisesError_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("sqlState");
        QTest::addColumn<int>("nativeError"); // -1: not checked
        QTest::addColumn<QString>("messagePart");
        const QString syntax = QStringLiteral("SELEC id FRM %1");
        const QString duplicate = QStringLiteral("INSERT INTO %1 VALUES (1)");
        for (const TestDatabase& database : testsupport::TestDatabases()) {
            const auto row = [&](const char* kind, const QString& sql, const QString& state,
                                 int native, const QString& message) {
                QTest::addRow("%s: %s", qPrintable(database.label), kind)
                    << database << sql << state << native << message;
            };
            if (isSqlite(database)) {
                row("syntax", syntax, "HY000", 1, "syntax error");
                row("duplicate key", duplicate, "HY000", 19, "UNIQUE constraint failed");
            } else if (isPostgres(database)) {
                row("syntax", syntax, "42601", -1, "syntax error");
                row("duplicate key", duplicate, "23505", -1, "duplicate key");
            } else {
                row("syntax", syntax, "42000", 1064, "SQL syntax");
                row("duplicate key", duplicate, "23000", 1062, "Duplicate entry");
            }
        }
    }
    void badStatementRaisesError() {
        CONNECT_TO_ROW_DATABASE();
        QFETCH(QString, sql);
        QFETCH(int, nativeError);
        QFETCH(QString, messagePart);
        ScratchTable table(connection, database, QStringLiteral("id INTEGER PRIMARY KEY"));
        connection.execute(table.sql("INSERT INTO %1 VALUES (1)"));
        const std::optional<OdbcError> error =
            errorOf([&] { connection.execute(sql.arg(table.name())); });
        QVERIFY(error.has_value());
        QTEST(error->sqlState(), "sqlState");
        if (nativeError >= 0)
            QCOMPARE(error->nativeError(), nativeError);
        QVERIFY2(error->message().contains(messagePart), error->what());
        QCOMPARE(error->context(), QStringLiteral("SQLExecDirect"));
        QCOMPARE(countRows(connection, table), 1LL);
    }

    void errorJoinsDiagnostics_data() {
        QTest::addColumn<std::vector<Diagnostic>>("diagnostics");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("sqlState");
        QTest::addColumn<int>("nativeError");
        QTest::newRow("two records, the first decides the state")
            << std::vector<Diagnostic>{{"23000", 1062, "Duplicate"}, {"01000", 0, "Rolled back"}}
            << "Duplicate\nRolled back" << QStringLiteral("23000") << 1062;
        QTest::newRow("record without text")
            << std::vector<Diagnostic>{{"HY000", 7, ""}, {"HY000", 8, "Second"}} << "Second"
            << QStringLiteral("HY000") << 7;
        QTest::newRow("no records")
            << std::vector<Diagnostic>{} << "ODBC call failed: SQLExecDirect" << QString() << 0;
    }
    void errorJoinsDiagnostics() {
        QFETCH(std::vector<Diagnostic>, diagnostics);
        QFETCH(QString, message);
        const OdbcError error(QStringLiteral("SQLExecDirect"), diagnostics);
        QCOMPARE(QString::fromUtf8(error.what()), message);
        QCOMPARE(error.message(), message);
        QTEST(error.sqlState(), "sqlState");
        QTEST(error.nativeError(), "nativeError");
        QCOMPARE(error.diagnostics().size(), diagnostics.size());
    }

    // Warnings (SQL_SUCCESS_WITH_INFO) are success, also when debug logging reads them;
    // the rows affected; transactions.
    void executeAndTransactions_data() { testsupport::AddDatabaseRows(); }
    void executeAndTransactions() {
        CONNECT_TO_ROW_DATABASE();
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
        connection.close();
        QCOMPARE(countRows(other, table), 3LL);
        connection.open(database.connectionString());
    }

    void preparedStatementBindsTextAndNull_data() { testsupport::AddDatabaseRows(); }
    void preparedStatementBindsTextAndNull() {
        CONNECT_TO_ROW_DATABASE();
        ScratchTable table(connection, database,
                           "id INTEGER, name VARCHAR(40), note VARCHAR(40), amount INTEGER");
        Statement insert(connection);
        insert.prepare(table.sql("INSERT INTO %1 (id, name, note, amount) VALUES (?, ?, ?, ?)"));
        QCOMPARE(insert.parameterCount(), 4);
        const QString unicode = QStringLiteral("Müller 東京 𝄞");
        const std::vector<std::vector<std::optional<QString>>> values{
            {"1", "Alice", "", "42"},
            {"2", unicode, std::nullopt, std::nullopt},
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
            QVERIFY(insert.columns().empty());
        }
        const Rows rows =
            query(connection, table.sql("SELECT id, name, note, amount FROM %1 ORDER BY id"));
        QCOMPARE(rows.size(), values.size());
        for (size_t r = 0; r < rows.size(); ++r)
            for (size_t c = 0; c < values[r].size(); ++c) {
                QCOMPARE(rows[r][c].isNull(), !values[r][c].has_value());
                QCOMPARE(rows[r][c], values[r][c].value_or(QString()).toUtf8());
            }

        // Executed twice with other values, on the same prepared statement.
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
    }

    void columnsDescribeNamesAndTypes_data() { testsupport::AddDatabaseRows(); }
    void columnsDescribeNamesAndTypes() {
        CONNECT_TO_ROW_DATABASE();
        ScratchTable table(connection, database,
                           "id INTEGER NOT NULL, name VARCHAR(30), amount DECIMAL(10,2), "
                           "ratio DOUBLE PRECISION, born DATE, data " +
                               binaryType(database));
        Statement statement(connection);
        statement.executeDirect(table.sql("SELECT id, name, amount, ratio, born, data FROM %1"));
        const std::vector<ColumnInfo>& columns = statement.columns();
        QStringList names;
        for (const ColumnInfo& column : columns)
            names << column.name.toLower();
        QCOMPARE(names, QStringList({"id", "name", "amount", "ratio", "born", "data"}));

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
            row("blocks of 40", 40, 0, {40, 40, 40, 3});
            row("at most one row", 0, 1, {1});
            row("at most 3 rows in blocks of 2", 2, 3, {2, 1});
        }
    }
    void fetchBlockReadsRowsInBlocks() {
        CONNECT_TO_ROW_DATABASE();
        QFETCH(int, blockSize);
        QFETCH(int, maxRows);
        QFETCH(QList<int>, blockRows);
        ScratchTable table(connection, database, QStringLiteral("id INTEGER, label VARCHAR(20)"));
        insertNumbered(connection, table, 123,
                       [](int id) { return QStringLiteral("row %1").arg(id); });

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
            QCOMPARE(rows[index], (Row{QByteArray::number(int(index) + 1),
                                       QStringLiteral("row %1").arg(index + 1).toUtf8()}));
        // 0 lifts the limit again.
        statement.setMaxRows(0);
        statement.executeDirect(table.sql("SELECT id FROM %1"));
        QCOMPARE(fetchAll(statement).size(), size_t(123));
    }

    // NULL told from '' and binary values read whole, in bound columns (short text, small
    // binary) and with SQLGetData (long text, long binary of more than one 64 KB piece).
    void fetchBlockReadsNullEmptyAndBinary_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockReadsNullEmptyAndBinary() {
        CONNECT_TO_ROW_DATABASE();
        ScratchTable table(
            connection, database,
            QStringLiteral("id INTEGER, name VARCHAR(10), body %1, small %2, large %3")
                .arg(longTextType(database), binaryType(database), binaryType(database, true)));
        const QByteArray small = QByteArray::fromHex("00017f80ff") + "abc";
        QByteArray large;
        for (int index = 0; index < 100000; ++index)
            large.append(char((index * 7) & 0xff));
        const auto insert = [&](const QStringList& values) {
            connection.execute(table.sql("INSERT INTO %1 VALUES (%2)").arg(values.join(", ")));
        };
        const QString empty = binaryLiteral(database, QByteArray());
        insert({"1", "NULL", "NULL", "NULL", "NULL"});
        insert({"2", "''", "''", empty, empty});
        insert({"3", "'x'", "'y'", binaryLiteral(database, small), binaryLiteral(database, large)});
        const std::vector<std::pair<const char*, QByteArray>> columns{
            {"name", "x"}, {"body", "y"}, {"small", small}, {"large", large}};
        for (const auto& [column, value] : columns) {
            const Rows rows =
                query(connection, table.sql("SELECT id, %2 FROM %1 ORDER BY id").arg(column));
            QCOMPARE(rows.size(), size_t(3));
            QVERIFY2(rows[0][1].isNull(), column);
            QVERIFY2(!rows[1][1].isNull() && rows[1][1].isEmpty(), column);
            QCOMPARE(rows[2][1], value);
        }
    }

    // Numbers, dates and times come as the driver's text form.
    void fetchBlockReadsNumbersAndDatesAsText_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockReadsNumbersAndDatesAsText() {
        CONNECT_TO_ROW_DATABASE();
        // SQLite keeps a DECIMAL as a floating-point number.
        const QByteArray decimal = isSqlite(database) ? "1234.5" : "1234.50";
        ScratchTable table(connection, database,
                           "i INTEGER, b BIGINT, d DECIMAL(12,2), f DOUBLE PRECISION, s SMALLINT, "
                           "dt DATE, ts TIMESTAMP");
        connection.execute(table.sql("INSERT INTO %1 VALUES (-7, 9007199254740993, 1234.5, 0.25, "
                                     "12, '2020-01-02', '2020-01-02 03:04:05')"));
        connection.execute(table.sql("INSERT INTO %1 VALUES (NULL, NULL, NULL, NULL, NULL, NULL, "
                                     "NULL)"));
        const Rows rows = query(connection, table.sql("SELECT * FROM %1"));
        QCOMPARE(rows.size(), size_t(2));
        const bool nullsFirst = rows[0].front().isNull();
        QCOMPARE(rows[nullsFirst ? 1 : 0], (Row{"-7", "9007199254740993", decimal, "0.25", "12",
                                                "2020-01-02", "2020-01-02 03:04:05"}));
        for (const QByteArray& value : rows[nullsFirst ? 0 : 1])
            QVERIFY(value.isNull());
    }

    // SQLite keeps whatever it is given, whatever the declared type.
    void sqliteValuesNeedNotMatchDeclaredTypes() {
        const TestDatabase database = testsupport::TestDatabases().front();
        Connection connection = connectTo(database);
        ScratchTable table(connection, database, QStringLiteral("n INTEGER, d DATE, v VARCHAR(3)"));
        const QString text = QStringLiteral("Müller 東京 ");
        const QString longText = text + QString(500, QChar(u'x'));
        Statement insert(connection);
        insert.prepare(table.sql("INSERT INTO %1 VALUES (?, ?, ?)"));
        insert.bindText(1, text);
        insert.bindText(2, longText);
        insert.bindText(3, longText);
        insert.execute();
        QCOMPARE(query(connection, table.sql("SELECT n, d, v FROM %1")),
                 (Rows{{text.toUtf8(), longText.toUtf8(), longText.toUtf8()}}));
    }

    // Each text once in the statement text (even ids) and once as a parameter (odd). The
    // SQLite driver garbles characters beyond the BMP in statement text (0.9998), so there
    // they go as parameters only.
    void fetchBlockReadsUtf8Text_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockReadsUtf8Text() {
        CONNECT_TO_ROW_DATABASE();
        ScratchTable table(connection, database,
                           "id INTEGER, name VARCHAR(40), body " + longTextType(database));
        const QStringList texts{QStringLiteral("Müller 東京"), QStringLiteral("𝄞 clef, emoji 😀"),
                                QStringLiteral("plain ascii"), QStringLiteral("ÆØÅ æøå €")};
        Statement insert(connection);
        insert.prepare(table.sql("INSERT INTO %1 VALUES (?, ?, ?)"));
        for (int id = 0; id < 2 * texts.size(); ++id) {
            const QString& text = texts[id / 2];
            const bool beyondBmp =
                std::any_of(text.begin(), text.end(), [](QChar c) { return c.isSurrogate(); });
            if (id % 2 == 0 && !(isSqlite(database) && beyondBmp)) {
                connection.execute(table.sql("INSERT INTO %1 VALUES (%2, '%3', '%3')")
                                       .arg(id)
                                       .arg(QString(text).replace("'", "''")));
                continue;
            }
            insert.bindText(1, QString::number(id));
            insert.bindText(2, text);
            insert.bindText(3, text);
            insert.execute();
        }
        const Rows rows = query(connection, table.sql("SELECT name, body FROM %1 ORDER BY id"));
        QCOMPARE(rows.size(), size_t(2 * texts.size()));
        for (size_t index = 0; index < rows.size(); ++index)
            QCOMPARE(rows[index], Row(2, texts[qsizetype(index / 2)].toUtf8()));
        for (const QString& text : {texts[0], texts[3]}) {
            const Rows found =
                query(connection, table.sql("SELECT id FROM %1 WHERE name = '%2'").arg(text));
            QCOMPARE(found.size(), size_t(2));
        }
    }

    // Long text read in pieces: a bound column before it, an unbound one after it.
    void fetchBlockReadsLongText_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockReadsLongText() {
        CONNECT_TO_ROW_DATABASE();
        ScratchTable table(connection, database,
                           "id INTEGER, body " + longTextType(database) + ", tail VARCHAR(10)");
        QString body;
        while (body.size() < 12345)
            body += QStringLiteral("Zeile %1 äöü 東京 𝄞; ").arg(body.size());
        // Row 1 is longer than one piece of 64 KB in any encoding; row 2 is NULL.
        const auto bodyOf = [&](int id) {
            if (id == 2)
                return QString();
            return id % 3 == 0 ? QStringLiteral("short")
                               : body.repeated(id == 1 ? 6 : 1) + QString::number(id);
        };
        Statement insert(connection);
        insert.prepare(table.sql("INSERT INTO %1 VALUES (?, ?, ?)"));
        for (int id = 1; id <= 60; ++id) {
            insert.bindText(1, QString::number(id));
            if (id == 2)
                insert.bindNull(2);
            else
                insert.bindText(2, bodyOf(id));
            insert.bindText(3, QStringLiteral("end %1").arg(id));
            insert.execute();
        }
        const Rows rows = query(connection, table.sql("SELECT id, body, tail FROM %1 ORDER BY id"));
        QCOMPARE(rows.size(), size_t(60));
        QVERIFY(rows[1][1].isNull());
        for (int id = 1; id <= 60; ++id)
            QCOMPARE(rows[size_t(id - 1)], (Row{QByteArray::number(id), bodyOf(id).toUtf8(),
                                                QStringLiteral("end %1").arg(id).toUtf8()}));
    }

    // Values longer than the size the driver reports for their column are still read
    // whole: SQLite does not enforce declared sizes, psqlODBC reports an unbounded
    // VARCHAR as 255 characters.
    void fetchBlockReadsValuesLongerThanReported_data() { testsupport::AddDatabaseRows(); }
    void fetchBlockReadsValuesLongerThanReported() {
        CONNECT_TO_ROW_DATABASE();
        ScratchTable table(connection, database,
                           "id INTEGER, body " +
                               (isSqlite(database) ? "VARCHAR(5)" : longTextType(database)));
        const auto textOf = [](int id) {
            return QStringLiteral("%1:").arg(id) + QString(300 + id, QChar(u'a' + id % 26));
        };
        insertNumbered(connection, table, 120, textOf);
        const QString expression = isSqlite(database)     ? QStringLiteral("body")
                                   : isPostgres(database) ? QStringLiteral("CAST(body AS VARCHAR)")
                                                          : QStringLiteral("CAST(body AS CHAR)");
        Statement statement(connection);
        statement.executeDirect(table.sql("SELECT id, %2 FROM %1 ORDER BY id").arg(expression));
        if (!isMaria(database)) // which reports the real size
            QVERIFY(statement.columns().at(1).size < 300);
        const Rows rows = fetchAll(statement);
        QCOMPARE(rows.size(), size_t(120));
        for (int id = 1; id <= 120; ++id)
            QCOMPARE(rows[size_t(id - 1)][1], textOf(id).toUtf8());
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

    void dataSourcesListTheDsn_data() { testsupport::AddDatabaseRows(); }
    void dataSourcesListTheDsn() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        const std::vector<db::odbc::DataSource> sources = db::odbc::DataSources();
        const auto found = std::find_if(sources.begin(), sources.end(), [&](const auto& source) {
            return source.name == database.dsn;
        });
        QVERIFY(found != sources.end());
        // "SQLite3", "PostgreSQL Unicode", "MariaDB Unicode"
        QVERIFY2(found->driverDescription.toUpper().contains(database.label.toUpper()),
                 qPrintable(found->driverDescription));
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
        QCOMPARE(query(connection, QStringLiteral("SELECT 1")), Rows{{"1"}});
    }

    void closedConnectionRaisesError() {
        Connection connection;
        QVERIFY(!connection.isOpen());
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
        Rows rows;
        QVERIFY(!statement.fetchBlock(rows));
        QVERIFY(rows.empty());
        statement.executeDirect(QStringLiteral("SELECT 3"));
        QCOMPARE(fetchAll(statement), Rows{{"3"}});
    }

    void driverManagerVersionIsDotted() {
        const QString version = db::odbc::DriverManagerVersion();
        static const QRegularExpression dotted(QStringLiteral("^\\d{2}\\.\\d{2}\\.\\d{4}"));
        QVERIFY2(dotted.match(version).hasMatch(), qPrintable(version));
    }
};

QTEST_GUILESS_MAIN(TestOdbc)
#include "test_odbc.moc"
