// The results grid's model against real databases: SQLite always, PostgreSQL and MariaDB
// when the test environment names their data sources.

#include "assets/resulttablemodel.h"
#include "db/odbc/odbc.h"
#include "support/testsupport.h"

#include <QAbstractItemModelTester>
#include <QDeadlineTimer>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <memory>
#include <numeric>

using assets::ResultTableModel;
using db::odbc::Connection;
using db::odbc::Statement;
using testsupport::TestDatabase;

namespace {

constexpr int WaitMs = 60000;

bool isPostgres(const TestDatabase& database) {
    return database.label == QLatin1String("postgresql");
}
bool isMaria(const TestDatabase& database) {
    return database.label == QLatin1String("mariadb");
}

Connection connectTo(const TestDatabase& database, const QString& extra = QString()) {
    Connection connection;
    connection.open(database.connectionString() + extra);
    return connection;
}

Statement executed(const Connection& connection, const QString& sql) {
    Statement statement(connection);
    statement.prepare(sql);
    statement.execute();
    return statement;
}

QString quoted(const QString& text) {
    return QLatin1Char('\'') + QString(text).replace(QLatin1Char('\''), QStringLiteral("''")) +
           QLatin1Char('\'');
}

QString binaryType(const TestDatabase& database) {
    if (isPostgres(database))
        return QStringLiteral("BYTEA");
    return isMaria(database) ? QStringLiteral("VARBINARY(64)") : QStringLiteral("BLOB");
}

QString binaryLiteral(const TestDatabase& database, const QByteArray& bytes) {
    const QString hex = QString::fromLatin1(bytes.toHex());
    if (isPostgres(database))
        return QStringLiteral("decode('%1', 'hex')").arg(hex);
    return QStringLiteral("X'%1'").arg(hex);
}

// A table of the test's own, dropped again when the guard goes.
class Table {
public:
    Table(Connection& connection, const TestDatabase& database, const QString& stem,
          const QString& columns)
        : m_connection(connection), m_name(testsupport::UniqueTableName(stem)) {
        const QString options =
            isMaria(database) ? QStringLiteral(" DEFAULT CHARSET=utf8mb4") : QString();
        m_connection.execute(
            QStringLiteral("create table %1 (%2)%3").arg(m_name, columns, options));
    }
    ~Table() {
        try {
            m_connection.execute(QStringLiteral("drop table ") + m_name);
        } catch (const db::odbc::OdbcError& error) {
            qWarning() << "cannot drop" << m_name << error.message();
        }
    }
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    const QString& name() const { return m_name; }

    // Rows as SQL literals, inserted in a few multi-row statements in one transaction.
    void insert(const QString& columns, const std::vector<QStringList>& rows) {
        m_connection.begin();
        constexpr size_t Batch = 200;
        for (size_t first = 0; first < rows.size(); first += Batch) {
            QStringList values;
            for (size_t row = first; row < std::min(rows.size(), first + Batch); ++row)
                values << QLatin1Char('(') + rows[row].join(QStringLiteral(", ")) +
                              QLatin1Char(')');
            m_connection.execute(QStringLiteral("insert into %1 (%2) values %3")
                                     .arg(m_name, columns, values.join(QStringLiteral(", "))));
        }
        m_connection.commit();
    }

private:
    Connection& m_connection;
    QString m_name;
};

// ID 1..count and NAME "row <ID>".
std::vector<QStringList> numberedRows(int count) {
    std::vector<QStringList> rows;
    rows.reserve(size_t(count));
    for (int id = 1; id <= count; ++id)
        rows.push_back({QString::number(id), quoted(QStringLiteral("row %1").arg(id))});
    return rows;
}

std::unique_ptr<Table> numberedTable(Connection& connection, const TestDatabase& database,
                                     int count) {
    auto table = std::make_unique<Table>(connection, database, QStringLiteral("rows"),
                                         QStringLiteral("ID INTEGER, NAME VARCHAR(40)"));
    table->insert(QStringLiteral("ID, NAME"), numberedRows(count));
    return table;
}

// Column `column` of every row in the model's order, as integers.
std::vector<int> integers(const ResultTableModel& model, int column = 0) {
    std::vector<int> values;
    for (int row = 0; row < model.rowCount(); ++row)
        values.push_back(model.value(row, column).toByteArray().toInt());
    return values;
}

std::vector<int> oneTo(int count) {
    std::vector<int> values(static_cast<size_t>(count));
    std::iota(values.begin(), values.end(), 1);
    return values;
}

QString display(const ResultTableModel& model, int row, int column, int role = Qt::DisplayRole) {
    return model.data(model.index(row, column), role).toString();
}

// Processes events until every row is in and sorted.
bool waitForFetch(ResultTableModel& model) {
    QDeadlineTimer deadline(WaitMs);
    while ((model.isFetching() || model.isSorting()) && !deadline.hasExpired())
        QTest::qWait(10);
    return !model.isFetching() && !model.isSorting();
}

} // namespace

class TestResultTableModel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { testsupport::TestDatabases(); }

    void opensWithTheFirstBlockAtOnce_data() { testsupport::AddDatabaseRows(); }
    void opensWithTheFirstBlockAtOnce() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        const auto table = numberedTable(connection, database, 200);
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &ResultTableModel::fetchFinished);
        QSignalSpy reset(&model, &ResultTableModel::modelReset);
        QVERIFY(!model.isOpen());

        model.open(
            executed(connection, QStringLiteral("select ID, NAME from %1").arg(table->name())));
        // The first block is there before any event is processed; the rest comes later.
        QVERIFY(model.isOpen());
        QCOMPARE(reset.count(), 1);
        QCOMPARE(model.rowCount(), ResultTableModel::FirstBlockRows);
        QCOMPARE(model.recordCount(), qsizetype(ResultTableModel::FirstBlockRows));
        QCOMPARE(model.columnCount(), 2);
        QVERIFY(model.isFetching());
        QCOMPARE(display(model, 0, 1), QStringLiteral("row 1"));
        QCOMPARE(display(model, 49, 0), QStringLiteral("50"));
        QCOMPARE(model.headerData(0, Qt::Horizontal).toString().toUpper(), QStringLiteral("ID"));
        QCOMPARE(model.headerData(1, Qt::Horizontal).toString().toUpper(), QStringLiteral("NAME"));
        QCOMPARE(model.fieldIndex(QStringLiteral("name")), 1);
        QCOMPARE(model.fieldIndex(QStringLiteral("Id")), 0);
        QCOMPARE(model.fieldIndex(QStringLiteral("MISSING")), -1);
        QCOMPARE(model.fields().size(), size_t(2));

        QVERIFY(finished.wait(WaitMs));
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.first().first().value<qsizetype>(), qsizetype(200));
        QVERIFY(!model.isFetching());
        QCOMPARE(model.rowCount(), 200);
        QCOMPARE(integers(model), oneTo(200));
        QCOMPARE(display(model, 199, 1), QStringLiteral("row 200"));
    }

    void smallResultIsCompleteInOpen_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<int>("rows");
        for (const TestDatabase& database : testsupport::TestDatabases())
            for (int rows :
                 {0, 3, ResultTableModel::FirstBlockRows - 1, ResultTableModel::FirstBlockRows})
                QTest::addRow("%s, %d rows", qPrintable(database.label), rows) << database << rows;
    }
    void smallResultIsCompleteInOpen() {
        QFETCH(TestDatabase, database);
        QFETCH(int, rows);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        const auto table = numberedTable(connection, database, rows);
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &ResultTableModel::fetchFinished);
        model.open(
            executed(connection, QStringLiteral("select ID, NAME from %1").arg(table->name())));
        if (rows < ResultTableModel::FirstBlockRows) {
            // Everything came with the first block: finished before open() returned.
            QCOMPARE(finished.count(), 1);
            QVERIFY(!model.isFetching());
        } else {
            QVERIFY(finished.count() == 1 || finished.wait(WaitMs));
        }
        QCOMPARE(finished.first().first().value<qsizetype>(), qsizetype(rows));
        QCOMPARE(model.rowCount(), rows);
        QCOMPARE(model.columnCount(), 2);
        QCOMPARE(integers(model), oneTo(rows));
    }

    void allRowsArriveInFewBatches_data() { testsupport::AddDatabaseRows(); }
    void allRowsArriveInFewBatches() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        const int count = 20000;
        const auto table = numberedTable(connection, database, count);
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &ResultTableModel::fetchFinished);
        QSignalSpy failed(&model, &ResultTableModel::fetchFailed);
        QSignalSpy inserted(&model, &ResultTableModel::rowsInserted);
        model.open(
            executed(connection, QStringLiteral("select ID, NAME from %1").arg(table->name())));
        QVERIFY(finished.wait(WaitMs));
        QCOMPARE(failed.count(), 0);
        QCOMPARE(finished.first().first().value<qsizetype>(), qsizetype(count));
        QCOMPARE(model.rowCount(), count);
        QCOMPARE(integers(model), oneTo(count));
        // Blocks are announced together, not row by row or block by block.
        QVERIFY2(inserted.count() >= 1 && inserted.count() < count / 200,
                 qPrintable(QString::number(inserted.count())));
        int expectedFirst = ResultTableModel::FirstBlockRows;
        for (const QList<QVariant>& insertion : inserted) {
            QCOMPARE(insertion.at(1).toInt(), expectedFirst);
            expectedFirst = insertion.at(2).toInt() + 1;
        }
        QCOMPARE(expectedFirst, count);
        QVERIFY(model.textBytes() > 0);
        QVERIFY(model.memoryBytes() >= model.textBytes());
    }

    void showsNullsTextsNumbersAndBinary_data() { testsupport::AddDatabaseRows(); }
    void showsNullsTextsNumbersAndBinary() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        Table table(connection, database, QStringLiteral("values"),
                    QStringLiteral("ID INTEGER, T VARCHAR(100), B %1, N DOUBLE PRECISION, D DATE")
                        .arg(binaryType(database)));
        const QString text = QStringLiteral("Grüße 😀 ünïcödé ‘quoted’");
        const QByteArray bytes("\x00\xff\x10", 3);
        table.insert(QStringLiteral("ID, T, B, N, D"),
                     {{"1", "NULL", "NULL", "NULL", "NULL"},
                      {"2", "''", binaryLiteral(database, "\x01"), "0", "'2024-02-29'"}});
        // As a parameter: SQLite's driver garbles characters beyond the BMP in statement text.
        Statement insert(connection);
        insert.prepare(QStringLiteral("insert into %1 (ID, T, B, N, D) values (3, ?, %2, -1.5, "
                                      "'1999-12-31')")
                           .arg(table.name(), binaryLiteral(database, bytes)));
        insert.bindText(1, text);
        insert.execute();
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.open(executed(
            connection,
            QStringLiteral("select ID, T, B, N, D from %1 order by ID").arg(table.name())));
        QCOMPARE(model.rowCount(), 3);
        const int raw = ResultTableModel::RawValueRole;

        // NULL shows nothing; '' is an empty text.
        for (int column = 1; column < 5; ++column) {
            QVERIFY(model.isNull(0, column));
            QVERIFY(!model.data(model.index(0, column)).isValid());
            QVERIFY(model.data(model.index(0, column), raw).toByteArray().isNull());
        }
        QVERIFY(!model.isNull(1, 1));
        const QVariant empty = model.data(model.index(1, 1));
        QVERIFY(empty.isValid());
        QCOMPARE(empty.toString(), QString());
        QVERIFY(!model.data(model.index(1, 1), raw).toByteArray().isNull());
        QVERIFY(model.data(model.index(1, 1), raw).toByteArray().isEmpty());

        // UTF-8 text both ways.
        QCOMPARE(display(model, 2, 1), text);
        QCOMPARE(model.data(model.index(2, 1), raw).toByteArray(), text.toUtf8());

        // Binary values show as "(BLOB)", with their bytes in the tip.
        QCOMPARE(display(model, 2, 2), QStringLiteral("(BLOB)"));
        QCOMPARE(model.data(model.index(2, 2), raw).toByteArray(), bytes);
        QVERIFY2(display(model, 2, 2, Qt::ToolTipRole).startsWith(QStringLiteral("00 ff 10")),
                 qPrintable(display(model, 2, 2, Qt::ToolTipRole)));
        QVERIFY(display(model, 2, 2, Qt::ToolTipRole).contains(QStringLiteral("3 bytes")));
        QCOMPARE(display(model, 1, 2), QStringLiteral("(BLOB)"));
        QVERIFY(!model.data(model.index(2, 1), Qt::ToolTipRole).isValid());

        // Numbers and dates as the driver writes them; numbers aligned right.
        QCOMPARE(display(model, 2, 3).toDouble(), -1.5);
        QCOMPARE(display(model, 1, 4), QStringLiteral("2024-02-29"));
        QCOMPARE(display(model, 2, 4), QStringLiteral("1999-12-31"));
        const int right = int(Qt::AlignRight | Qt::AlignVCenter);
        QCOMPARE(model.data(model.index(2, 0), Qt::TextAlignmentRole).toInt(), right);
        QCOMPARE(model.data(model.index(2, 3), Qt::TextAlignmentRole).toInt(), right);
        QVERIFY(!model.data(model.index(2, 1), Qt::TextAlignmentRole).isValid());
        QVERIFY(!model.data(model.index(2, 4), Qt::TextAlignmentRole).isValid());
        QCOMPARE(model.headerData(1, Qt::Vertical).toInt(), 2);
    }

    void longTextIsCutForDisplayOnly() {
        const TestDatabase database = testsupport::TestDatabases().front();
        Connection connection = connectTo(database);
        Table table(connection, database, QStringLiteral("long"), QStringLiteral("T TEXT"));
        // Multi-byte characters across the cut.
        const QString text = QString(3000, QChar(0x00e9)) + QStringLiteral("end");
        table.insert(QStringLiteral("T"), {{quoted(text)}});
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.open(executed(connection, QStringLiteral("select T from %1").arg(table.name())));
        const QString shown = display(model, 0, 0);
        QVERIFY(shown.size() < text.size());
        QVERIFY(shown.endsWith(QChar(0x2026)));
        QVERIFY(text.startsWith(shown.chopped(1)));
        QCOMPARE(display(model, 0, 0, Qt::EditRole), text);
        QCOMPARE(model.data(model.index(0, 0), ResultTableModel::RawValueRole).toByteArray(),
                 text.toUtf8());
    }

    void valuesLongerThanTheirDeclaredSizeArriveWhole() {
        // SQLite keeps what it is given, whatever the declared size; such values are read
        // again whole by the driver layer, in the first block and in the background alike.
        const TestDatabase database = testsupport::TestDatabases().front();
        Connection connection = connectTo(database);
        Table table(connection, database, QStringLiteral("oversize"),
                    QStringLiteral("ID INTEGER, SHORT VARCHAR(5), AFTER VARCHAR(5)"));
        auto longText = [](int id) {
            return QStringLiteral("%1 é%2").arg(id).arg(QString(id % 300, QLatin1Char('x')));
        };
        std::vector<QStringList> rows;
        for (int id = 1; id <= 400; ++id)
            rows.push_back(
                {QString::number(id), quoted(longText(id)), quoted(QStringLiteral("ok"))});
        table.insert(QStringLiteral("ID, SHORT, AFTER"), rows);
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.open(executed(
            connection,
            QStringLiteral("select ID, SHORT, AFTER from %1 order by ID").arg(table.name())));
        model.waitForAllRows();
        QCOMPARE(model.rowCount(), 400);
        for (int row = 0; row < 400; ++row) {
            QCOMPARE(display(model, row, 1, Qt::EditRole), longText(row + 1));
            QCOMPARE(display(model, row, 2), QStringLiteral("ok"));
        }
    }

    void connectionServesOtherStatementsWhileFetching_data() { testsupport::AddDatabaseRows(); }
    void connectionServesOtherStatementsWhileFetching() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        const int count = 20000;
        const auto table = numberedTable(connection, database, count);
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &ResultTableModel::fetchFinished);
        model.open(
            executed(connection, QStringLiteral("select ID, NAME from %1").arg(table->name())));
        // The record editor and the commands of the main window use the same connection
        // while the grid fills.
        int round = 0;
        for (; round < 20 && model.isFetching(); ++round) {
            Statement other =
                executed(connection, QStringLiteral("select NAME from %1 where ID = %2")
                                         .arg(table->name())
                                         .arg(round + 1));
            std::vector<db::odbc::Row> rows;
            QVERIFY(other.fetchBlock(rows));
            QCOMPARE(rows.at(0).at(0), QStringLiteral("row %1").arg(round + 1).toUtf8());
            QTest::qWait(2);
        }
        QVERIFY(round > 0);
        model.waitForAllRows();
        QCOMPARE(finished.count(), 1);
        QCOMPARE(model.rowCount(), count);
        QCOMPARE(integers(model), oneTo(count));
    }

    void closeWhileFetchingStopsCleanly_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<bool>("afterFirstBatch");
        for (const TestDatabase& database : testsupport::TestDatabases()) {
            QTest::addRow("%s, at once", qPrintable(database.label)) << database << false;
            QTest::addRow("%s, after a batch", qPrintable(database.label)) << database << true;
        }
    }
    void closeWhileFetchingStopsCleanly() {
        QFETCH(TestDatabase, database);
        QFETCH(bool, afterFirstBatch);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        const auto table = numberedTable(connection, database, 20000);
        const QString sql = QStringLiteral("select ID, NAME from %1").arg(table->name());
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &ResultTableModel::fetchFinished);
        QSignalSpy failed(&model, &ResultTableModel::fetchFailed);
        model.open(executed(connection, sql));
        if (afterFirstBatch) {
            QSignalSpy inserted(&model, &ResultTableModel::rowsInserted);
            QVERIFY(inserted.wait(WaitMs));
        }
        model.close();
        QVERIFY(!model.isOpen());
        QVERIFY(!model.isFetching());
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), 0);
        QVERIFY(model.fields().empty());
        QTest::qWait(200); // whatever was on its way arrives now, and is dropped
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(failed.count(), 0);
        const int finishedBefore = int(finished.count());
        model.close(); // twice is fine

        // The connection serves the next query.
        model.open(executed(connection, sql));
        model.waitForAllRows();
        QCOMPARE(finished.count(), finishedBefore + 1);
        QCOMPARE(model.rowCount(), 20000);
        QCOMPARE(integers(model), oneTo(20000));
    }

    void destroyWhileFetching_data() { testsupport::AddDatabaseRows(); }
    void destroyWhileFetching() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        const auto table = numberedTable(connection, database, 20000);
        const QString sql = QStringLiteral("select ID, NAME from %1").arg(table->name());
        for (int delayMs : {0, 5, 50}) {
            auto model = std::make_unique<ResultTableModel>();
            model->open(executed(connection, sql));
            QThread::msleep(ulong(delayMs)); // the worker goes on meanwhile
            model->setSortText(QStringLiteral("[NAME] DESC"));
            model.reset();
            QTest::qWait(20);
        }
        Statement count =
            executed(connection, QStringLiteral("select count(*) from %1").arg(table->name()));
        std::vector<db::odbc::Row> rows;
        QVERIFY(count.fetchBlock(rows));
        QCOMPARE(rows.at(0).at(0).toInt(), 20000);
    }

    void secondOpenIgnoresStaleBlocks_data() { testsupport::AddDatabaseRows(); }
    void secondOpenIgnoresStaleBlocks() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        const auto first = numberedTable(connection, database, 20000);
        Table second(connection, database, QStringLiteral("second"),
                     QStringLiteral("CODE VARCHAR(10)"));
        std::vector<QStringList> codes;
        for (int index = 0; index < 300; ++index)
            codes.push_back({quoted(QStringLiteral("c%1").arg(index, 4, 10, QLatin1Char('0')))});
        second.insert(QStringLiteral("CODE"), codes);

        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        // Counted on the worker's thread, as the notifications leave.
        std::atomic<int> arrivals{0};
        connect(
            &model, &ResultTableModel::blocksArrived, &model, [&arrivals] { ++arrivals; },
            Qt::DirectConnection);
        QSignalSpy finished(&model, &ResultTableModel::fetchFinished);
        model.open(
            executed(connection, QStringLiteral("select ID, NAME from %1").arg(first->name())));
        // No events are processed: the worker's notifications wait in the queue.
        QDeadlineTimer deadline(WaitMs);
        while (arrivals.load() == 0 && !deadline.hasExpired())
            QThread::msleep(5);
        QVERIFY(arrivals.load() > 0);
        QThread::msleep(150);
        model.open(executed(
            connection, QStringLiteral("select CODE from %1 order by CODE").arg(second.name())));
        QCOMPARE(model.columnCount(), 1);
        QCOMPARE(model.rowCount(), ResultTableModel::FirstBlockRows);
        QVERIFY(waitForFetch(model));
        QTest::qWait(50);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.first().first().value<qsizetype>(), qsizetype(300));
        QCOMPARE(model.rowCount(), 300);
        QCOMPARE(model.columnCount(), 1);
        for (int row = 0; row < 300; ++row)
            QCOMPARE(display(model, row, 0),
                     QStringLiteral("c%1").arg(row, 4, 10, QLatin1Char('0')));
    }

    void sortsByTheFieldsType_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("field");
        QTest::addColumn<std::vector<int>>("ascending");
        QTest::addColumn<std::vector<int>>("descending");
        // See sortTable() for the rows. NULL first ascending; ties keep arrival order.
        for (const TestDatabase& database : testsupport::TestDatabases()) {
            const QByteArray label = database.label.toLatin1();
            QTest::addRow("%s, text", label.constData())
                << database << "NAME" << std::vector<int>{2, 6, 3, 4, 1, 5}
                << std::vector<int>{1, 5, 4, 3, 6, 2};
            QTest::addRow("%s, integer", label.constData())
                << database << "QTY" << std::vector<int>{4, 5, 2, 6, 1, 3}
                << std::vector<int>{3, 1, 2, 6, 5, 4};
            QTest::addRow("%s, double", label.constData())
                << database << "PRICE" << std::vector<int>{2, 3, 6, 1, 4, 5}
                << std::vector<int>{5, 1, 4, 6, 3, 2};
            QTest::addRow("%s, date", label.constData())
                << database << "DAY" << std::vector<int>{3, 5, 2, 6, 1, 4}
                << std::vector<int>{1, 4, 6, 2, 5, 3};
            QTest::addRow("%s, key", label.constData())
                << database << "id" << std::vector<int>{1, 2, 3, 4, 5, 6}
                << std::vector<int>{6, 5, 4, 3, 2, 1};
        }
    }
    void sortsByTheFieldsType() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, field);
        QFETCH(std::vector<int>, ascending);
        QFETCH(std::vector<int>, descending);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        Table table(connection, database, QStringLiteral("sort"),
                    QStringLiteral("ID INTEGER, NAME VARCHAR(20), QTY INTEGER, PRICE DOUBLE "
                                   "PRECISION, DAY DATE"));
        table.insert(QStringLiteral("ID, NAME, QTY, PRICE, DAY"),
                     {{"1", "'pear'", "10", "2.5", "'2024-03-01'"},
                      {"2", "NULL", "9", "NULL", "'2023-12-31'"},
                      {"3", "'Apple'", "100", "-1", "NULL"},
                      {"4", "'apple'", "NULL", "2.5", "'2024-03-01'"},
                      {"5", "'pear'", "-5", "10", "'1999-01-01'"},
                      {"6", "''", "9", "0.25", "'2024-02-29'"}});
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.open(executed(connection, QStringLiteral("select ID, NAME, QTY, PRICE, DAY from %1 "
                                                       "order by ID")
                                            .arg(table.name())));
        QCOMPARE(integers(model), oneTo(6));
        const int column = model.fieldIndex(field);
        QVERIFY(column >= 0);
        const QString name = model.fields()[size_t(column)].name;
        // The row of ID 5, followed by its bookmark and a persistent index.
        const quint32 bookmark = model.bookmark(4);
        QPersistentModelIndex persistent(model.index(4, 1));
        QSignalSpy layout(&model, &ResultTableModel::layoutChanged);

        // Three clicks on a title: ascending, descending, ascending.
        const std::vector<std::pair<QString, std::vector<int>>> steps = {
            {QStringLiteral("ASC"), ascending},
            {QStringLiteral("DESC"), descending},
            {QStringLiteral("ASC"), ascending}};
        for (const auto& [direction, expected] : steps) {
            const qsizetype before = layout.count();
            model.setSortText(QStringLiteral("[%1] %2").arg(field, direction));
            QCOMPARE(model.sortText(), QStringLiteral("[%1] %2").arg(name, direction));
            QVERIFY(layout.count() > before || layout.wait(WaitMs));
            QCOMPARE(integers(model), expected);
            const int row = model.rowOfBookmark(bookmark);
            QCOMPARE(display(model, row, 0), QStringLiteral("5"));
            QCOMPARE(model.bookmark(row), bookmark);
            QCOMPARE(persistent.row(), row);
            QCOMPARE(persistent.data().toString(), QStringLiteral("pear"));
        }

        // Empty sort text: the order of arrival.
        model.setSortText(QString());
        QCOMPARE(model.sortText(), QString());
        QCOMPARE(integers(model), oneTo(6));
        QCOMPARE(model.rowOfBookmark(bookmark), 4);
        QCOMPARE(persistent.row(), 4);
    }

    void unknownSortFieldChangesNothing_data() {
        QTest::addColumn<QString>("sortText");
        QTest::newRow("unknown field") << "[NOSUCHFIELD] DESC";
        QTest::newRow("bad direction") << "[NAME] SIDEWAYS";
        QTest::newRow("two fields") << "[NAME] ASC, [ID] DESC";
    }
    void unknownSortFieldChangesNothing() {
        QFETCH(QString, sortText);
        const TestDatabase database = testsupport::TestDatabases().front();
        Connection connection = connectTo(database);
        const auto table = numberedTable(connection, database, 30);
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.open(
            executed(connection, QStringLiteral("select ID, NAME from %1").arg(table->name())));
        model.setSortText(QStringLiteral("[ID] DESC"));
        model.waitForSort();
        std::vector<int> descending = oneTo(30);
        std::reverse(descending.begin(), descending.end());
        QCOMPARE(integers(model), descending);

        QSignalSpy layout(&model, &ResultTableModel::layoutChanged);
        model.setSortText(sortText);
        QVERIFY(!model.isSorting());
        QTest::qWait(20);
        QCOMPARE(layout.count(), 0);
        QCOMPARE(model.sortText(), QStringLiteral("[ID] DESC"));
        QCOMPARE(integers(model), descending);
    }

    void equalKeysKeepArrivalOrder_data() { testsupport::AddDatabaseRows(); }
    void equalKeysKeepArrivalOrder() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        Table table(connection, database, QStringLiteral("ties"),
                    QStringLiteral("ID INTEGER, GRP VARCHAR(10), AMOUNT INTEGER"));
        std::vector<QStringList> rows;
        for (int id = 1; id <= 3000; ++id)
            rows.push_back({QString::number(id), quoted(QStringLiteral("k%1").arg(id % 3)),
                            QString::number(id % 4)});
        table.insert(QStringLiteral("ID, GRP, AMOUNT"), rows);
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.open(executed(
            connection,
            QStringLiteral("select ID, GRP, AMOUNT from %1 order by ID").arg(table.name())));
        model.waitForAllRows();
        for (const char* field : {"GRP", "AMOUNT"})
            for (bool descendingOrder : {false, true}) {
                model.setSortText(QStringLiteral("[%1] %2").arg(
                    QLatin1String(field), QLatin1String(descendingOrder ? "DESC" : "ASC")));
                model.waitForSort();
                const int column = model.fieldIndex(QLatin1String(field));
                const std::vector<int> ids = integers(model);
                QCOMPARE(int(ids.size()), 3000);
                for (int row = 1; row < 3000; ++row) {
                    const QByteArray previous = model.value(row - 1, column).toByteArray();
                    const QByteArray current = model.value(row, column).toByteArray();
                    if (previous == current)
                        QVERIFY2(ids[size_t(row - 1)] < ids[size_t(row)],
                                 qPrintable(QStringLiteral("%1 %2").arg(field).arg(row)));
                    else
                        QVERIFY(descendingOrder ? previous > current : previous < current);
                }
            }
    }

    void sortsWhileRowsArrive_data() { testsupport::AddDatabaseRows(); }
    void sortsWhileRowsArrive() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        Connection connection = connectTo(database);
        Table table(connection, database, QStringLiteral("arrive"),
                    QStringLiteral("ID INTEGER, CODE VARCHAR(12)"));
        const int count = 20000;
        std::vector<QStringList> rows;
        for (int id = 1; id <= count; ++id)
            rows.push_back(
                {QString::number(id), quoted(QStringLiteral("n%1").arg(qint64(id) * 7919 % count, 6,
                                                                       10, QLatin1Char('0')))});
        table.insert(QStringLiteral("ID, CODE"), rows);
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &ResultTableModel::fetchFinished);
        model.open(
            executed(connection, QStringLiteral("select ID, CODE from %1").arg(table.name())));
        model.setSortText(QStringLiteral("[CODE] DESC"));
        QVERIFY(model.isFetching());
        QVERIFY(model.isSorting());
        QVERIFY(waitForFetch(model));
        QCOMPARE(finished.count(), 1);
        QCOMPARE(model.rowCount(), count);
        // Every row is there once, and all of them are in order.
        for (int row = 1; row < count; ++row)
            QVERIFY(model.value(row - 1, 1).compare(model.value(row, 1)) > 0);
        std::vector<int> ids = integers(model);
        std::sort(ids.begin(), ids.end());
        QCOMPARE(ids, oneTo(count));
    }

    void waitForAllRowsAppliesTheSort() {
        const TestDatabase database = testsupport::TestDatabases().front();
        Connection connection = connectTo(database);
        const auto table = numberedTable(connection, database, 5000);
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &ResultTableModel::fetchFinished);
        model.open(
            executed(connection, QStringLiteral("select ID, NAME from %1").arg(table->name())));
        model.setSortText(QStringLiteral("[ID] DESC"));
        model.waitForAllRows();
        QCOMPARE(finished.count(), 1);
        QVERIFY(!model.isFetching());
        QVERIFY(!model.isSorting());
        std::vector<int> expected = oneTo(5000);
        std::reverse(expected.begin(), expected.end());
        QCOMPARE(integers(model), expected);
    }

    void failedFetchKeepsTheRowsRead_data() { testsupport::AddDatabaseRows(); }
    void failedFetchKeepsTheRowsRead() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        if (isMaria(database))
            QSKIP("MariaDB's driver reads the whole result when the statement is executed");
        // PostgreSQL streams only with a cursor; SQLite always does here (StepAPI=1).
        Connection connection =
            connectTo(database, isPostgres(database) ? QStringLiteral(";UseDeclareFetch=1;Fetch=40")
                                                     : QString());
        const auto table = numberedTable(connection, database, 300);
        // Row 121 fails while it is computed, after several blocks have been read.
        const QString failing =
            isPostgres(database)
                ? QStringLiteral("select ID, 1 / (ID - 121) from %1")
                : QStringLiteral("select ID, case when ID > 120 then abs(ID - ID - "
                                 "9223372036854775807 - 1) else ID end from %1");
        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &ResultTableModel::fetchFinished);
        QSignalSpy failed(&model, &ResultTableModel::fetchFailed);
        model.open(executed(connection, failing.arg(table->name())));
        QCOMPARE(model.rowCount(), ResultTableModel::FirstBlockRows);
        QVERIFY(failed.wait(WaitMs));
        QCOMPARE(failed.count(), 1);
        QCOMPARE(finished.count(), 0);
        const QString message = failed.first().first().toString();
        QVERIFY(!message.isEmpty());
        QCOMPARE(model.fetchError(), message);
        QVERIFY(!model.isFetching());
        QVERIFY(model.isOpen());
        // The rows before the failing one stay.
        QVERIFY2(model.rowCount() >= ResultTableModel::FirstBlockRows && model.rowCount() <= 120,
                 qPrintable(QString::number(model.rowCount())));
        QCOMPARE(integers(model), oneTo(model.rowCount()));
        // And can still be sorted.
        model.setSortText(QStringLiteral("[ID] DESC"));
        model.waitForSort();
        QCOMPARE(display(model, 0, 0), QString::number(model.rowCount()));
    }

    void droppedConnectionIsReported_data() { testsupport::AddDatabaseRows(); }
    void droppedConnectionIsReported() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        if (!isPostgres(database))
            QSKIP("only a server whose driver streams through a cursor can drop mid-fetch here");
        Connection connection = connectTo(database, QStringLiteral(";UseDeclareFetch=1;Fetch=40"));
        Connection other = connectTo(database);
        const QString table = testsupport::UniqueTableName(QStringLiteral("dropped"));
        other.execute(QStringLiteral("create table %1 as select g as ID, 'row ' || g as NAME from "
                                     "generate_series(1, 200000) g")
                          .arg(table));
        Statement pid = executed(connection, QStringLiteral("select pg_backend_pid()"));
        std::vector<db::odbc::Row> pidRows;
        QVERIFY(pid.fetchBlock(pidRows));
        pid = Statement(connection);

        ResultTableModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &ResultTableModel::fetchFinished);
        QSignalSpy failed(&model, &ResultTableModel::fetchFailed);
        model.open(executed(connection, QStringLiteral("select ID, NAME from %1").arg(table)));
        other.execute(QStringLiteral("select pg_terminate_backend(%1)")
                          .arg(QString::fromUtf8(pidRows.at(0).at(0))));
        model.waitForAllRows();
        other.execute(QStringLiteral("drop table ") + table);
        QCOMPARE(failed.count(), 1);
        QCOMPARE(finished.count(), 0);
        QVERIFY(!failed.first().first().toString().isEmpty());
        QVERIFY(model.rowCount() >= ResultTableModel::FirstBlockRows);
        QVERIFY(model.rowCount() < 200000);
        QCOMPARE(integers(model), oneTo(model.rowCount()));
    }
};

QTEST_GUILESS_MAIN(TestResultTableModel)
#include "test_resulttablemodel.moc"
