// The results grid's model against real databases: SQLite always, PostgreSQL and MariaDB
// when the test environment names their data sources.

#include "assets/resulttablemodel.h"
#include "core/dateformat.h"
#include "db/odbc/odbc.h"
#include "support/testsupport.h"

#include <QAbstractItemModelTester>
#include <QDeadlineTimer>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <numeric>

using assets::ResultTableModel;
using db::odbc::Connection;
using db::odbc::Statement;
using testsupport::TestDatabase;

namespace {

constexpr int WaitMs = 60000;
constexpr int FirstBlock = ResultTableModel::FirstBlockRows;

bool isPostgres(const TestDatabase& database) {
    return database.label == QLatin1String("postgresql");
}
bool isMaria(const TestDatabase& database) {
    return database.label == QLatin1String("mariadb");
}

QString quoted(const QString& text) {
    return QLatin1Char('\'') + QString(text).replace(QLatin1Char('\''), QStringLiteral("''")) +
           QLatin1Char('\'');
}

// A test's connection, tables and model. The model is checked by QAbstractItemModelTester
// and its signals recorded; the tables are dropped again at the end.
struct Fixture {
    explicit Fixture(const TestDatabase& database, const QString& options = QString())
        : database(database) {
        connection.open(database.connectionString() + options);
    }
    ~Fixture() {
        model.close();
        for (const QString& table : tables) {
            try {
                connection.execute(QStringLiteral("drop table ") + table);
            } catch (const db::odbc::OdbcError& error) {
                qWarning() << "cannot drop" << table << error.message();
            }
        }
    }

    // A new table; `rows` of SQL literals are inserted in a few statements.
    QString table(const QString& columns, const std::vector<QStringList>& rows = {}) {
        const QString name = testsupport::UniqueTableName(QStringLiteral("grid"));
        connection.execute(
            QStringLiteral("create table %1 (%2)%3")
                .arg(name, columns,
                     isMaria(database) ? QStringLiteral(" DEFAULT CHARSET=utf8mb4") : QString()));
        tables << name;
        connection.begin();
        for (size_t first = 0; first < rows.size(); first += 200) {
            QStringList values;
            for (size_t row = first; row < std::min(rows.size(), first + 200); ++row)
                values << QLatin1Char('(') + rows[row].join(QStringLiteral(", ")) +
                              QLatin1Char(')');
            connection.execute(QStringLiteral("insert into %1 values %2")
                                   .arg(name, values.join(QStringLiteral(", "))));
        }
        connection.commit();
        return name;
    }
    // ID 1..count and NAME "row <ID>".
    QString numbered(int count) {
        std::vector<QStringList> rows;
        for (int id = 1; id <= count; ++id)
            rows.push_back({QString::number(id), quoted(QStringLiteral("row %1").arg(id))});
        return table(QStringLiteral("ID INTEGER, NAME VARCHAR(40)"), rows);
    }
    Statement executed(const QString& sql) {
        Statement statement(connection);
        statement.prepare(sql);
        statement.execute();
        return statement;
    }
    void open(const QString& sql) { model.open(executed(sql)); }

    TestDatabase database;
    Connection connection;
    QStringList tables;
    ResultTableModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::QtTest};
    QSignalSpy finished{&model, &ResultTableModel::fetchFinished};
    QSignalSpy failed{&model, &ResultTableModel::fetchFailed};
};

// Column `column` of every row in the model's order, as integers.
std::vector<int> integers(const ResultTableModel& model, int column = 0) {
    std::vector<int> values;
    for (int row = 0; row < model.rowCount(); ++row)
        values.push_back(model.value(row, column).toByteArray().toInt());
    return values;
}

std::vector<int> oneTo(int count, bool descending = false) {
    std::vector<int> values(static_cast<size_t>(count));
    std::iota(values.begin(), values.end(), 1);
    if (descending)
        std::reverse(values.begin(), values.end());
    return values;
}

QString display(const ResultTableModel& model, int row, int column, int role = Qt::DisplayRole) {
    return model.data(model.index(row, column), role).toString();
}

} // namespace

class TestResultTableModel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { testsupport::TestDatabases(); }

    void firstBlockAtOnceTheRestInTheBackground_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<int>("rows");
        for (const TestDatabase& database : testsupport::TestDatabases())
            for (int rows : {0, FirstBlock - 1, FirstBlock, 20000})
                QTest::addRow("%s, %d rows", qPrintable(database.label), rows) << database << rows;
    }
    void firstBlockAtOnceTheRestInTheBackground() {
        QFETCH(TestDatabase, database);
        QFETCH(int, rows);
        QUILLET_REQUIRE_DATABASE(database);
        Fixture f(database);
        const QString table = f.numbered(rows);
        QSignalSpy reset(&f.model, &ResultTableModel::modelReset);
        QSignalSpy inserted(&f.model, &ResultTableModel::rowsInserted);
        QVERIFY(!f.model.isOpen());
        f.open(QStringLiteral("select ID, NAME from %1").arg(table));
        // The first block is there before any event is processed.
        const int first = std::min(rows, FirstBlock);
        QVERIFY(f.model.isOpen());
        QCOMPARE(reset.count(), 1);
        QCOMPARE(f.model.rowCount(), first);
        QCOMPARE(f.model.recordCount(), qsizetype(first));
        QCOMPARE(f.model.columnCount(), 2);
        QCOMPARE(f.model.headerData(1, Qt::Horizontal).toString().toUpper(),
                 QStringLiteral("NAME"));
        QCOMPARE(f.model.fieldIndex(QStringLiteral("name")), 1);
        QCOMPARE(f.model.fieldIndex(QStringLiteral("Id")), 0);
        QCOMPARE(f.model.fieldIndex(QStringLiteral("MISSING")), -1);
        if (rows < FirstBlock) // everything came with the first block
            QCOMPARE(f.finished.count(), 1);
        else if (rows > FirstBlock)
            QVERIFY(f.model.isFetching());

        // Meanwhile the record editor and the commands of the main window use the same
        // connection.
        for (int id = 1; id <= 20 && f.model.isFetching(); ++id) {
            Statement other =
                f.executed(QStringLiteral("select NAME from %1 where ID = %2").arg(table).arg(id));
            std::vector<db::odbc::Row> names;
            QVERIFY(other.fetchBlock(names));
            QCOMPARE(names.at(0).at(0), QStringLiteral("row %1").arg(id).toUtf8());
            QTest::qWait(2);
        }

        QVERIFY(f.finished.count() == 1 || f.finished.wait(WaitMs));
        QCOMPARE(f.finished.count(), 1);
        QCOMPARE(f.finished.first().first().value<qsizetype>(), qsizetype(rows));
        QCOMPARE(f.failed.count(), 0);
        QVERIFY(!f.model.isFetching());
        QCOMPARE(integers(f.model), oneTo(rows));
        if (rows > 0)
            QCOMPARE(display(f.model, rows - 1, 1), QStringLiteral("row %1").arg(rows));
        // The rest is announced in a few batches of blocks, not row by row or block by block.
        QVERIFY2(inserted.count() < std::max(1, rows / 200), qPrintable(QString::number(rows)));
        int expectedFirst = first;
        for (const QList<QVariant>& insertion : inserted) {
            QCOMPARE(insertion.at(1).toInt(), expectedFirst);
            expectedFirst = insertion.at(2).toInt() + 1;
        }
        QCOMPARE(expectedFirst, rows);
        QVERIFY(f.model.textBytes() >= rows);
        QVERIFY(f.model.memoryBytes() >= f.model.textBytes());
    }

    void showsNullsTextsNumbersAndBinary_data() { testsupport::AddDatabaseRows(); }
    void showsNullsTextsNumbersAndBinary() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Fixture f(database);
        const bool postgres = isPostgres(database);
        const auto binary = [postgres](const QByteArray& bytes) {
            const QString hex = QString::fromLatin1(bytes.toHex());
            return postgres ? QStringLiteral("decode('%1', 'hex')").arg(hex)
                            : QStringLiteral("X'%1'").arg(hex);
        };
        const QString binaryType = postgres            ? QStringLiteral("BYTEA")
                                   : isMaria(database) ? QStringLiteral("VARBINARY(64)")
                                                       : QStringLiteral("BLOB");
        const QString table =
            f.table(QStringLiteral("ID INTEGER, T VARCHAR(100), B %1, N DOUBLE PRECISION, D DATE")
                        .arg(binaryType),
                    {{"1", "NULL", "NULL", "NULL", "NULL"},
                     {"2", "''", binary("\x01"), "0", "'2024-02-29'"}});
        // As a parameter: SQLite's driver garbles characters beyond the BMP in statement text.
        const QString text = QStringLiteral("Grüße 😀 ünïcödé ‘quoted’");
        const QByteArray bytes("\x00\xff\x10", 3);
        Statement insert(f.connection);
        insert.prepare(QStringLiteral("insert into %1 values (3, ?, %2, -1.5, '1999-12-31')")
                           .arg(table, binary(bytes)));
        insert.bindText(1, text);
        insert.execute();
        f.open(QStringLiteral("select ID, T, B, N, D from %1 order by ID").arg(table));
        QCOMPARE(f.model.rowCount(), 3);
        const int raw = ResultTableModel::RawValueRole;

        // NULL shows nothing; '' is an empty text.
        for (int column = 1; column < 5; ++column) {
            QVERIFY(f.model.isNull(0, column));
            QVERIFY(!f.model.data(f.model.index(0, column)).isValid());
            QVERIFY(f.model.data(f.model.index(0, column), raw).toByteArray().isNull());
        }
        QVERIFY(!f.model.isNull(1, 1));
        QCOMPARE(f.model.data(f.model.index(1, 1)), QVariant(QString()));
        QVERIFY(!f.model.data(f.model.index(1, 1), raw).toByteArray().isNull());

        // UTF-8 text both ways.
        QCOMPARE(display(f.model, 2, 1), text);
        QCOMPARE(f.model.data(f.model.index(2, 1), raw).toByteArray(), text.toUtf8());

        // Binary values show as "(BLOB)", with their bytes in the tip.
        QCOMPARE(display(f.model, 1, 2), QStringLiteral("(BLOB)"));
        QCOMPARE(display(f.model, 2, 2), QStringLiteral("(BLOB)"));
        QCOMPARE(f.model.data(f.model.index(2, 2), raw).toByteArray(), bytes);
        const QString tip = display(f.model, 2, 2, Qt::ToolTipRole);
        QVERIFY2(tip.startsWith(QStringLiteral("00 ff 10")) && tip.contains("3 bytes"),
                 qPrintable(tip));
        QVERIFY(!f.model.data(f.model.index(2, 1), Qt::ToolTipRole).isValid());

        // Numbers and dates as the user reads them; numbers aligned right.
        QCOMPARE(display(f.model, 2, 3).toDouble(), -1.5);
        QCOMPARE(display(f.model, 1, 4), core::DateToStr(QDate(2024, 2, 29)));
        QCOMPARE(f.model.data(f.model.index(2, 4), raw).toByteArray(), QByteArray("1999-12-31"));
        const QVariant right = int(Qt::AlignRight | Qt::AlignVCenter);
        for (int column = 0; column < 5; ++column)
            QCOMPARE(f.model.data(f.model.index(2, column), Qt::TextAlignmentRole),
                     column == 0 || column == 3 ? right : QVariant());
        QCOMPARE(f.model.headerData(1, Qt::Vertical).toInt(), 2);
    }

    void longValuesArriveWholeAndShowCut() {
        // SQLite keeps what it is given, whatever the declared size; such values are read
        // again whole by the driver layer, in the first block and in the background alike.
        // Text beyond DisplayBytes is cut for display only.
        Fixture f(testsupport::TestDatabases().front());
        const QString cut = QString(3000, QChar(0x00e9)) + QStringLiteral("end");
        auto longText = [&cut](int id) {
            return id == 300 ? cut : QStringLiteral("%1 é%2").arg(id).arg(QString(id, 'x'));
        };
        std::vector<QStringList> rows;
        for (int id = 1; id <= 400; ++id)
            rows.push_back({QString::number(id), quoted(longText(id)), quoted("ok")});
        const QString table =
            f.table(QStringLiteral("ID INTEGER, SHORT VARCHAR(5), AFTER VARCHAR(5)"), rows);
        f.open(QStringLiteral("select ID, SHORT, AFTER from %1 order by ID").arg(table));
        f.model.waitForAllRows();
        QCOMPARE(f.model.rowCount(), 400);
        for (int row = 0; row < 400; ++row) {
            QCOMPARE(display(f.model, row, 1, Qt::EditRole), longText(row + 1));
            QCOMPARE(display(f.model, row, 2), QStringLiteral("ok"));
        }
        const QString shown = display(f.model, 299, 1);
        QVERIFY(shown.size() < cut.size() && shown.endsWith(QChar(0x2026)));
        QVERIFY(cut.startsWith(shown.chopped(1)));
        QCOMPARE(f.model.data(f.model.index(299, 1), ResultTableModel::RawValueRole),
                 QVariant(cut.toUtf8()));
    }

    void earlierFetchStopsCleanly_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("how");
        for (const TestDatabase& database : testsupport::TestDatabases())
            for (const char* how : {"closed at once", "closed after a batch", "reopened"})
                QTest::addRow("%s, %s", qPrintable(database.label), how)
                    << database << QString::fromLatin1(how);
    }
    void earlierFetchStopsCleanly() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, how);
        QUILLET_REQUIRE_DATABASE(database);
        Fixture f(database);
        const QString sql = QStringLiteral("select ID, NAME from %1").arg(f.numbered(20000));
        std::vector<QStringList> codes;
        for (int index = 0; index < 300; ++index)
            codes.push_back({quoted(QStringLiteral("c%1").arg(index, 4, 10, QLatin1Char('0')))});
        const QString second = f.table(QStringLiteral("CODE VARCHAR(10)"), codes);
        // Counted on the worker's thread, as the notifications leave.
        std::atomic<int> arrivals{0};
        connect(
            &f.model, &ResultTableModel::blocksArrived, &f.model, [&arrivals] { ++arrivals; },
            Qt::DirectConnection);
        f.open(sql);
        if (how == QLatin1String("reopened")) {
            // No events are processed: the worker's notifications wait in the queue, and
            // are dropped when the next result opens.
            QDeadlineTimer deadline(WaitMs);
            while (arrivals.load() == 0 && !deadline.hasExpired())
                QThread::msleep(5);
            QVERIFY(arrivals.load() > 0);
            QThread::msleep(150);
        } else {
            if (how == QLatin1String("closed after a batch")) {
                QSignalSpy inserted(&f.model, &ResultTableModel::rowsInserted);
                QVERIFY(inserted.wait(WaitMs));
            }
            f.model.close();
            QVERIFY(!f.model.isOpen());
            QVERIFY(!f.model.isFetching());
            QCOMPARE(f.model.columnCount(), 0);
            QVERIFY(f.model.fields().empty());
            QTest::qWait(200); // whatever was on its way arrives now, and is dropped
            QCOMPARE(f.model.rowCount(), 0);
            f.model.close(); // twice is fine
        }
        // Destroyed while fetching and sorting.
        {
            ResultTableModel doomed;
            doomed.open(f.executed(sql));
            doomed.setSortText(QStringLiteral("[NAME] DESC"));
            QThread::msleep(20); // the worker goes on meanwhile
        }

        // The connection serves the next query; only its rows show.
        const qsizetype finishedBefore = f.finished.count();
        f.open(QStringLiteral("select CODE from %1 order by CODE").arg(second));
        QCOMPARE(f.model.columnCount(), 1);
        QCOMPARE(f.model.rowCount(), FirstBlock);
        f.model.waitForAllRows();
        QTest::qWait(50);
        QCOMPARE(f.failed.count(), 0);
        QCOMPARE(f.finished.count(), finishedBefore + 1);
        QCOMPARE(f.finished.last().first().value<qsizetype>(), qsizetype(300));
        QCOMPARE(f.model.rowCount(), 300);
        for (int row = 0; row < 300; ++row)
            QCOMPARE(display(f.model, row, 0),
                     QStringLiteral("c%1").arg(row, 4, 10, QLatin1Char('0')));
    }

    void sortsByTheFieldsType_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("field");
        QTest::addColumn<std::vector<int>>("ascending");
        QTest::addColumn<std::vector<int>>("descending");
        // See the test for the rows. NULL first ascending; ties keep arrival order.
        for (const TestDatabase& database : testsupport::TestDatabases()) {
            const auto row = [&database](const char* name, const char* field,
                                         std::vector<int> ascending, std::vector<int> descending) {
                QTest::addRow("%s, %s", qPrintable(database.label), name)
                    << database << QString::fromLatin1(field) << ascending << descending;
            };
            row("text", "NAME", {2, 6, 3, 4, 1, 5}, {1, 5, 4, 3, 6, 2});
            row("integer", "QTY", {4, 5, 2, 6, 1, 3}, {3, 1, 2, 6, 5, 4});
            row("double", "PRICE", {2, 3, 6, 1, 4, 5}, {5, 1, 4, 6, 3, 2});
            row("date", "DAY", {3, 5, 2, 6, 1, 4}, {1, 4, 6, 2, 5, 3});
            row("key", "id", oneTo(6), oneTo(6, true));
        }
    }
    void sortsByTheFieldsType() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, field);
        QFETCH(std::vector<int>, ascending);
        QFETCH(std::vector<int>, descending);
        QUILLET_REQUIRE_DATABASE(database);
        Fixture f(database);
        const QString table = f.table(
            QStringLiteral("ID INTEGER, NAME VARCHAR(20), QTY INTEGER, PRICE DOUBLE PRECISION, "
                           "DAY DATE"),
            {{"1", "'pear'", "10", "2.5", "'2024-03-01'"},
             {"2", "NULL", "9", "NULL", "'2023-12-31'"},
             {"3", "'Apple'", "100", "-1", "NULL"},
             {"4", "'apple'", "NULL", "2.5", "'2024-03-01'"},
             {"5", "'pear'", "-5", "10", "'1999-01-01'"},
             {"6", "''", "9", "0.25", "'2024-02-29'"}});
        f.open(QStringLiteral("select ID, NAME, QTY, PRICE, DAY from %1 order by ID").arg(table));
        const int column = f.model.fieldIndex(field);
        QVERIFY(column >= 0);
        const QString name = f.model.fields()[size_t(column)].name;
        // The row of ID 5, followed by its bookmark and a persistent index.
        const quint32 bookmark = f.model.bookmark(4);
        QPersistentModelIndex persistent(f.model.index(4, 1));
        QSignalSpy layout(&f.model, &ResultTableModel::layoutChanged);

        // Three clicks on a title: ascending, descending, ascending.
        for (const bool descend : {false, true, false}) {
            const qsizetype before = layout.count();
            const QString direction = QLatin1String(descend ? "DESC" : "ASC");
            f.model.setSortText(QStringLiteral("[%1] %2").arg(field, direction));
            QCOMPARE(f.model.sortText(), QStringLiteral("[%1] %2").arg(name, direction));
            QVERIFY(layout.count() > before || layout.wait(WaitMs));
            QCOMPARE(integers(f.model), descend ? descending : ascending);
            const int row = f.model.rowOfBookmark(bookmark);
            QCOMPARE(display(f.model, row, 0), QStringLiteral("5"));
            QCOMPARE(f.model.bookmark(row), bookmark);
            QCOMPARE(persistent.row(), row);
            QCOMPARE(persistent.data().toString(), QStringLiteral("pear"));
        }
        // A text naming no field, or not of the form, changes nothing.
        for (const char* bad : {"[NOSUCHFIELD] DESC", "[NAME] SIDEWAYS", "[NAME] ASC, [ID] DESC"}) {
            f.model.setSortText(QLatin1String(bad));
            QVERIFY(!f.model.isSorting());
            QCOMPARE(f.model.sortText(), QStringLiteral("[%1] ASC").arg(name));
            QCOMPARE(integers(f.model), ascending);
        }
        QTest::qWait(20);
        QCOMPARE(layout.count(), 3);
        // Empty sort text: the order of arrival.
        f.model.setSortText(QString());
        QCOMPARE(f.model.sortText(), QString());
        QCOMPARE(integers(f.model), oneTo(6));
        QCOMPARE(f.model.rowOfBookmark(bookmark), 4);
        QCOMPARE(persistent.row(), 4);
    }

    void sortsWhileRowsArrive_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<bool>("blocking"); // waitForAllRows() instead of the event loop
        for (const TestDatabase& database : testsupport::TestDatabases())
            QTest::addRow("%s", qPrintable(database.label)) << database << false;
        QTest::addRow("sqlite, blocking") << testsupport::TestDatabases().front() << true;
    }
    void sortsWhileRowsArrive() {
        QFETCH(TestDatabase, database);
        QFETCH(bool, blocking);
        QUILLET_REQUIRE_DATABASE(database);
        Fixture f(database);
        const int count = 20000;
        std::vector<QStringList> rows;
        for (int id = 1; id <= count; ++id)
            rows.push_back(
                {QString::number(id),
                 quoted(QStringLiteral("n%1").arg(qint64(id) * 7919 % count, 6, 10, QChar('0')))});
        const QString table = f.table(QStringLiteral("ID INTEGER, CODE VARCHAR(12)"), rows);
        f.open(QStringLiteral("select ID, CODE from %1").arg(table));
        f.model.setSortText(QStringLiteral("[CODE] DESC"));
        QVERIFY(f.model.isFetching());
        QVERIFY(f.model.isSorting());
        if (blocking) {
            f.model.waitForAllRows();
        } else {
            QDeadlineTimer deadline(WaitMs);
            while ((f.model.isFetching() || f.model.isSorting()) && !deadline.hasExpired())
                QTest::qWait(10);
        }
        QVERIFY(!f.model.isFetching() && !f.model.isSorting());
        QCOMPARE(f.finished.count(), 1);
        QCOMPARE(f.model.rowCount(), count);
        // Every row is there once, and all of them are in order.
        for (int row = 1; row < count; ++row)
            QVERIFY(f.model.value(row - 1, 1).compare(f.model.value(row, 1)) > 0);
        std::vector<int> ids = integers(f.model);
        std::sort(ids.begin(), ids.end());
        QCOMPARE(ids, oneTo(count));
    }

    void fetchFailureKeepsTheRowsRead_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<bool>("dropped"); // the connection, else a row fails
        for (const TestDatabase& database : testsupport::TestDatabases())
            QTest::addRow("%s, failing row", qPrintable(database.label)) << database << false;
        QTest::addRow("postgresql, dropped connection")
            << testsupport::ServerDsn(testsupport::Server::PostgreSql) << true;
    }
    void fetchFailureKeepsTheRowsRead() {
        QFETCH(TestDatabase, database);
        QFETCH(bool, dropped);
        QUILLET_REQUIRE_DATABASE(database);
        if (isMaria(database))
            QSKIP("MariaDB's driver reads the whole result when the statement is executed");
        // PostgreSQL streams only with a cursor; SQLite always does here (StepAPI=1).
        Fixture f(database,
                  isPostgres(database) ? QStringLiteral(";UseDeclareFetch=1;Fetch=40") : QString());
        // The rows read before the failure stay: after a failing row, the blocks before it
        // (the worker reads FirstBlock rows at a time).
        int least = 2 * FirstBlock, most = 120;
        if (dropped) {
            Connection other;
            other.open(database.connectionString());
            const QString table = testsupport::UniqueTableName(QStringLiteral("dropped"));
            other.execute(QStringLiteral("create table %1 as select g as ID, 'row ' || g as NAME "
                                         "from generate_series(1, 200000) g")
                              .arg(table));
            Statement pid = f.executed(QStringLiteral("select pg_backend_pid()"));
            std::vector<db::odbc::Row> pidRows;
            QVERIFY(pid.fetchBlock(pidRows));
            pid = Statement(f.connection);
            f.open(QStringLiteral("select ID, NAME from %1").arg(table));
            other.execute(QStringLiteral("select pg_terminate_backend(%1)")
                              .arg(QString::fromUtf8(pidRows.at(0).at(0))));
            f.model.waitForAllRows();
            other.execute(QStringLiteral("drop table ") + table);
            least = FirstBlock;
            most = 200000 - 1;
        } else {
            // Row 121 fails while it is computed, after several blocks have been read.
            const QString failing =
                isPostgres(database)
                    ? QStringLiteral("select ID, 1 / (ID - 121) from %1")
                    : QStringLiteral("select ID, case when ID > 120 then abs(ID - ID - "
                                     "9223372036854775807 - 1) else ID end from %1");
            f.open(failing.arg(f.numbered(300)));
            QCOMPARE(f.model.rowCount(), FirstBlock);
            QVERIFY(f.failed.wait(WaitMs));
        }
        QCOMPARE(f.failed.count(), 1);
        QCOMPARE(f.finished.count(), 0);
        QVERIFY(!f.model.fetchError().isEmpty());
        QCOMPARE(f.model.fetchError(), f.failed.first().first().toString());
        QVERIFY(!f.model.isFetching());
        QVERIFY(f.model.isOpen());
        const int rows = f.model.rowCount();
        QVERIFY2(rows >= least && rows <= most, qPrintable(QString::number(rows)));
        QCOMPARE(integers(f.model), oneTo(rows));
        if (!dropped) { // and can still be sorted
            f.model.setSortText(QStringLiteral("[ID] DESC"));
            f.model.waitForSort();
            QCOMPARE(integers(f.model), oneTo(rows, true));
        }
    }
};

QTEST_GUILESS_MAIN(TestResultTableModel)
#include "test_resulttablemodel.moc"
