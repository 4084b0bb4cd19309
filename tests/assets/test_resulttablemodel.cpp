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
#include <map>
#include <numeric>

using assets::ResultTableModel;
using db::odbc::Statement;
using testsupport::TestDatabase;

namespace {

constexpr int WaitMs = 60000;
constexpr int FirstBlock = ResultTableModel::FirstBlockRows;

QString quoted(const QString& text) {
    return '\'' + QString(text).replace('\'', QStringLiteral("''")) + '\'';
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
            QStringLiteral("create table %1 (%2)%3").arg(name, columns, database.tableOptions()));
        tables << name;
        for (size_t first = 0; first < rows.size(); first += 200) {
            QStringList values;
            for (size_t row = first; row < std::min(rows.size(), first + 200); ++row)
                values << '(' + rows[row].join(QStringLiteral(", ")) + ')';
            connection.execute(
                QStringLiteral("insert into %1 values %2").arg(name, values.join(',')));
        }
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
    QString display(int row, int column, int role = Qt::DisplayRole) const {
        return model.data(model.index(row, column), role).toString();
    }
    // Column `column` of every row in the model's order, as integers.
    std::vector<int> integers(int column = 0) const {
        std::vector<int> values;
        for (int row = 0; row < model.rowCount(); ++row)
            values.push_back(model.value(row, column).toByteArray().toInt());
        return values;
    }

    TestDatabase database;
    db::odbc::Connection connection;
    QStringList tables;
    ResultTableModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::QtTest};
    QSignalSpy finished{&model, &ResultTableModel::fetchFinished};
    QSignalSpy failed{&model, &ResultTableModel::fetchFailed};
};

std::vector<int> oneTo(int count, bool descending = false) {
    std::vector<int> values(static_cast<size_t>(count));
    std::iota(values.begin(), values.end(), 1);
    if (descending)
        std::reverse(values.begin(), values.end());
    return values;
}

// A column "database" and a row per database and each of `cases`.
void addDatabaseRows(const char* column, const QStringList& cases) {
    QTest::addColumn<TestDatabase>("database");
    QTest::addColumn<QString>(column);
    for (const TestDatabase& database : testsupport::TestDatabases())
        for (const QString& name : cases)
            QTest::addRow("%s, %s", qPrintable(database.label), qPrintable(name))
                << database << name;
}

} // namespace

#define FIXTURE_OF_ROW_DATABASE()                                                                  \
    QFETCH(TestDatabase, database);                                                                \
    QUILLET_REQUIRE_DATABASE(database);                                                            \
    Fixture f(database)

class TestResultTableModel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { testsupport::TestDatabases(); }

    void firstBlockAtOnceTheRestInTheBackground_data() {
        addDatabaseRows(
            "rows", {"0", QString::number(FirstBlock - 1), QString::number(FirstBlock), "20000"});
    }
    void firstBlockAtOnceTheRestInTheBackground() {
        FIXTURE_OF_ROW_DATABASE();
        QFETCH(QString, rows);
        const int count = rows.toInt();
        const QString table = f.numbered(count);
        QSignalSpy reset(&f.model, &ResultTableModel::modelReset);
        QSignalSpy inserted(&f.model, &ResultTableModel::rowsInserted);
        QVERIFY(!f.model.isOpen());
        f.open(QStringLiteral("select ID, NAME from %1").arg(table));
        // The first block is there before any event is processed.
        const int first = std::min(count, FirstBlock);
        QVERIFY(f.model.isOpen());
        QCOMPARE(reset.count(), 1);
        QCOMPARE(f.model.rowCount(), first);
        QCOMPARE(f.model.recordCount(), qsizetype(first));
        QCOMPARE(f.model.columnCount(), 2);
        QCOMPARE(f.model.headerData(1, Qt::Horizontal).toString().toUpper(),
                 QStringLiteral("NAME"));
        QCOMPARE(f.model.fieldIndex(QStringLiteral("name")), 1);
        QCOMPARE(f.model.fieldIndex(QStringLiteral("MISSING")), -1);
        if (count < FirstBlock) // everything came with the first block
            QCOMPARE(f.finished.count(), 1);
        else if (count > FirstBlock)
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
        QCOMPARE(f.finished.first().first().value<qsizetype>(), qsizetype(count));
        QCOMPARE(f.failed.count(), 0);
        QVERIFY(!f.model.isFetching());
        QCOMPARE(f.integers(), oneTo(count));
        if (count > 0)
            QCOMPARE(f.display(count - 1, 1), QStringLiteral("row %1").arg(count));
        // The rest is announced in a few batches of blocks, not row by row or block by block.
        QVERIFY2(inserted.count() < std::max(1, count / 200), qPrintable(rows));
        int expectedFirst = first;
        for (const QList<QVariant>& insertion : inserted) {
            QCOMPARE(insertion.at(1).toInt(), expectedFirst);
            expectedFirst = insertion.at(2).toInt() + 1;
        }
        QCOMPARE(expectedFirst, count);
        QVERIFY(f.model.textBytes() >= count);
        QVERIFY(f.model.memoryBytes() >= f.model.textBytes());
    }

    void showsNullsTextsNumbersAndBinary_data() { testsupport::AddDatabaseRows(); }
    void showsNullsTextsNumbersAndBinary() {
        FIXTURE_OF_ROW_DATABASE();
        const QString table =
            f.table(QStringLiteral("ID INTEGER, T VARCHAR(100), B %1, N DOUBLE PRECISION, D DATE, "
                                   "TS %2, X DECIMAL(10,2)")
                        .arg(database.binaryType(), database.timestampType()),
                    {{"1", "NULL", "NULL", "NULL", "NULL", "NULL", "NULL"},
                     {"2", "''", database.binaryLiteral("\x01"), "11890", "'2024-02-29'",
                      "'2024-02-29 13:45:06'", "11890.5"}});
        // As a parameter: SQLite's driver garbles characters beyond the BMP in statement text.
        const QString text = QStringLiteral("Grüße 😀 ünïcödé ‘quoted’");
        const QByteArray bytes("\x00\xff\x10", 3);
        Statement insert(f.connection);
        insert.prepare(QStringLiteral("insert into %1 values (3, ?, %2, -1.5, '1999-12-31', "
                                      "'1999-12-31 00:00:00', -3)")
                           .arg(table, database.binaryLiteral(bytes)));
        insert.bindText(1, text);
        insert.execute();
        f.open(QStringLiteral("select ID, T, B, N, D, TS, X from %1 order by ID").arg(table));
        QCOMPARE(f.model.rowCount(), 3);
        const int raw = ResultTableModel::RawValueRole;
        // NULL shows nothing; '' is an empty text.
        for (int column = 1; column < 7; ++column) {
            QVERIFY(f.model.isNull(0, column));
            QVERIFY(!f.model.data(f.model.index(0, column)).isValid());
            QVERIFY(f.model.data(f.model.index(0, column), raw).toByteArray().isNull());
        }
        QVERIFY(!f.model.isNull(1, 1));
        QCOMPARE(f.model.data(f.model.index(1, 1)), QVariant(QString()));
        QVERIFY(!f.model.data(f.model.index(1, 1), raw).toByteArray().isNull());
        QCOMPARE(f.display(2, 1), text);
        QCOMPARE(f.model.data(f.model.index(2, 1), raw).toByteArray(), text.toUtf8());
        // Binary values show as "(BLOB)", with their bytes in the tip.
        QCOMPARE(f.display(1, 2), QStringLiteral("(BLOB)"));
        QCOMPARE(f.display(2, 2), QStringLiteral("(BLOB)"));
        QCOMPARE(f.model.data(f.model.index(2, 2), raw).toByteArray(), bytes);
        const QString tip = f.display(2, 2, Qt::ToolTipRole);
        QVERIFY2(tip.startsWith(QStringLiteral("00 ff 10")) && tip.contains("3 bytes"),
                 qPrintable(tip));
        QVERIFY(!f.model.data(f.model.index(2, 1), Qt::ToolTipRole).isValid());
        // Numbers as numbers, aligned right; SQLite's driver reports no decimal digits.
        QCOMPARE(f.display(1, 3), QStringLiteral("11890"));
        QCOMPARE(f.display(2, 3), QStringLiteral("-1.5"));
        const bool digits = !database.is("sqlite");
        QCOMPARE(f.display(1, 6), digits ? QStringLiteral("11890.50") : QStringLiteral("11890.5"));
        QCOMPARE(f.display(2, 6), digits ? QStringLiteral("-3.00") : QStringLiteral("-3"));
        const QVariant right = int(Qt::AlignRight | Qt::AlignVCenter);
        for (int column = 0; column < 5; ++column)
            QCOMPARE(f.model.data(f.model.index(2, column), Qt::TextAlignmentRole),
                     column == 0 || column == 3 ? right : QVariant());
        QCOMPARE(f.model.headerData(1, Qt::Vertical).toInt(), 2);
        // Dates in the short date format in force, times where there are any.
        const QString formats[][4] = {
            {"dd.mm.yyyy", "29.02.2024", "29.02.2024 13:45:06", "31.12.1999"},
            {"yyyy/mm/dd", "2024/02/29", "2024/02/29 13:45:06", "1999/12/31"},
            {"d mmm yyyy", "29 Feb 2024", "29 Feb 2024 13:45:06", "31 Dec 1999"}};
        for (const auto& [format, date, stamp, midnight] : formats) {
            core::ApplyDateFormat(format, QLocale::c());
            f.model.refreshDisplay();
            QCOMPARE(f.display(1, 4), date);
            QCOMPARE(f.display(1, 5), stamp);
            QCOMPARE(f.display(2, 5), midnight);
        }
        core::ApplyDateFormat(QString());
    }

    // SQLite keeps what it is given, whatever the declared size; such values are read
    // whole in the first block and in the background alike. Text beyond DisplayBytes is
    // cut for display only.
    void longValuesArriveWholeAndShowCut() {
        Fixture f(testsupport::TestDatabases().front());
        // The cut falls inside a character of two bytes.
        const QString cut = 'x' + QString(3000, QChar(0x00e9)) + QStringLiteral("end");
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
            QCOMPARE(f.display(row, 1, Qt::EditRole), longText(row + 1));
            QCOMPARE(f.display(row, 2), QStringLiteral("ok"));
        }
        const QString shown = f.display(299, 1);
        QVERIFY(shown.size() < cut.size() && shown.endsWith(QChar(0x2026)));
        QVERIFY(cut.startsWith(shown.chopped(1)));
        QCOMPARE(f.model.data(f.model.index(299, 1), ResultTableModel::RawValueRole),
                 QVariant(cut.toUtf8()));
    }

    void earlierFetchStopsCleanly_data() {
        addDatabaseRows("how", {"closed at once", "closed after a batch", "reopened"});
    }
    void earlierFetchStopsCleanly() {
        FIXTURE_OF_ROW_DATABASE();
        QFETCH(QString, how);
        const QString sql = QStringLiteral("select ID, NAME from %1").arg(f.numbered(20000));
        const QString second = f.numbered(300);
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
            QVERIFY(!f.model.isOpen() && !f.model.isFetching());
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
        f.open(QStringLiteral("select ID from %1 order by ID").arg(second));
        QCOMPARE(f.model.columnCount(), 1);
        QCOMPARE(f.model.rowCount(), FirstBlock);
        f.model.waitForAllRows();
        QTest::qWait(50);
        QCOMPARE(f.failed.count(), 0);
        QCOMPARE(f.finished.count(), finishedBefore + 1);
        QCOMPARE(f.finished.last().first().value<qsizetype>(), qsizetype(300));
        QCOMPARE(f.integers(), oneTo(300));
    }

    // Each field by its type, as the driver reports it: three clicks on a title sort
    // ascending, descending, ascending; the row of ID 5 is followed by its bookmark and a
    // persistent index. NULL first ascending; ties keep arrival order.
    void sortsByTheFieldsType_data() {
        addDatabaseRows("field", {"NAME", "QTY", "PRICE", "DAY", "id"});
    }
    void sortsByTheFieldsType() {
        FIXTURE_OF_ROW_DATABASE();
        QFETCH(QString, field);
        const std::map<QString, std::vector<int>> ascending{{"NAME", {2, 6, 3, 4, 1, 5}},
                                                            {"QTY", {4, 5, 2, 6, 1, 3}},
                                                            {"PRICE", {2, 3, 6, 1, 4, 5}},
                                                            {"DAY", {3, 5, 2, 6, 1, 4}},
                                                            {"id", oneTo(6)}};
        const std::map<QString, std::vector<int>> descending{{"NAME", {1, 5, 4, 3, 6, 2}},
                                                             {"QTY", {3, 1, 2, 6, 5, 4}},
                                                             {"PRICE", {5, 1, 4, 6, 3, 2}},
                                                             {"DAY", {1, 4, 6, 2, 5, 3}},
                                                             {"id", oneTo(6, true)}};
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
        const quint32 bookmark = f.model.bookmark(4);
        QPersistentModelIndex persistent(f.model.index(4, 1));
        QSignalSpy layout(&f.model, &ResultTableModel::layoutChanged);
        for (const bool descend : {false, true, false}) {
            const qsizetype before = layout.count();
            const QString direction = QLatin1String(descend ? "DESC" : "ASC");
            f.model.setSortText(QStringLiteral("[%1] %2").arg(field, direction));
            QCOMPARE(f.model.sortText(), QStringLiteral("[%1] %2").arg(name, direction));
            QVERIFY(layout.count() > before || layout.wait(WaitMs));
            QCOMPARE(f.integers(), (descend ? descending : ascending).at(field));
            const int row = f.model.rowOfBookmark(bookmark);
            QCOMPARE(f.display(row, 0), QStringLiteral("5"));
            QCOMPARE(f.model.bookmark(row), bookmark);
            QCOMPARE(persistent.row(), row);
            QCOMPARE(persistent.data().toString(), QStringLiteral("pear"));
        }
        // A text naming no field changes nothing; an empty one is the order of arrival.
        f.model.setSortText(QStringLiteral("[NOSUCHFIELD] DESC"));
        QVERIFY(!f.model.isSorting());
        QCOMPARE(f.model.sortText(), QStringLiteral("[%1] ASC").arg(name));
        QTest::qWait(20);
        QCOMPARE(layout.count(), 3);
        f.model.setSortText(QString());
        QCOMPARE(f.model.sortText(), QString());
        QCOMPARE(f.integers(), oneTo(6));
        QCOMPARE(persistent.row(), 4);
    }

    // Sorted while the rows arrive, waiting in the event loop or blocked.
    void sortsWhileRowsArrive_data() { addDatabaseRows("wait", {"events", "blocking"}); }
    void sortsWhileRowsArrive() {
        FIXTURE_OF_ROW_DATABASE();
        QFETCH(QString, wait);
        const int count = 20000;
        std::vector<QStringList> rows;
        for (int id = 1; id <= count; ++id)
            rows.push_back(
                {QString::number(id),
                 quoted(QStringLiteral("n%1").arg(qint64(id) * 7919 % count, 6, 10, QChar('0')))});
        const QString table = f.table(QStringLiteral("ID INTEGER, CODE VARCHAR(12)"), rows);
        f.open(QStringLiteral("select ID, CODE from %1").arg(table));
        f.model.setSortText(QStringLiteral("[CODE] DESC"));
        QVERIFY(f.model.isFetching() && f.model.isSorting());
        QDeadlineTimer deadline(WaitMs);
        if (wait == QLatin1String("blocking"))
            f.model.waitForAllRows();
        while (wait == QLatin1String("events") && (f.model.isFetching() || f.model.isSorting()) &&
               !deadline.hasExpired())
            QTest::qWait(10);
        QVERIFY(!f.model.isFetching() && !f.model.isSorting());
        QCOMPARE(f.finished.count(), 1);
        QCOMPARE(f.model.rowCount(), count);
        // Every row is there once, and all of them are in order.
        for (int row = 1; row < count; ++row)
            QVERIFY(f.model.value(row - 1, 1).compare(f.model.value(row, 1)) > 0);
        std::vector<int> ids = f.integers();
        std::sort(ids.begin(), ids.end());
        QCOMPARE(ids, oneTo(count));
    }

    void fetchFailureKeepsTheRowsRead_data() {
        addDatabaseRows("cause", {"failing row"});
        QTest::addRow("postgresql, dropped connection")
            << testsupport::ServerDsn(testsupport::Server::PostgreSql)
            << QStringLiteral("dropped connection");
    }
    void fetchFailureKeepsTheRowsRead() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, cause);
        QUILLET_REQUIRE_DATABASE(database);
        if (database.is("mariadb"))
            QSKIP("MariaDB's driver reads the whole result when the statement is executed");
        const bool dropped = cause == QLatin1String("dropped connection");
        // PostgreSQL streams only with a cursor; SQLite always does here (StepAPI=1).
        Fixture f(database, database.is("postgresql") ? ";UseDeclareFetch=1;Fetch=40" : "");
        // The rows read before the failure stay: after a failing row, the blocks before it
        // (the worker reads FirstBlock rows at a time).
        int least = 2 * FirstBlock, most = 120;
        if (dropped) {
            db::odbc::Connection other;
            other.open(database.connectionString());
            const QString table = testsupport::UniqueTableName(QStringLiteral("dropped"));
            other.execute(QStringLiteral("create table %1 as select g as ID, 'row ' || g as NAME "
                                         "from generate_series(1, 200000) g")
                              .arg(table));
            std::vector<db::odbc::Row> pid;
            QVERIFY(f.executed(QStringLiteral("select pg_backend_pid()")).fetchBlock(pid));
            f.open(QStringLiteral("select ID, NAME from %1").arg(table));
            other.execute(QStringLiteral("select pg_terminate_backend(%1)")
                              .arg(QString::fromUtf8(pid.at(0).at(0))));
            f.model.waitForAllRows();
            other.execute(QStringLiteral("drop table ") + table);
            least = FirstBlock;
            most = 200000 - 1;
        } else {
            // Row 121 fails while it is computed, after several blocks have been read.
            const QString failing =
                database.is("postgresql")
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
        QVERIFY(!f.model.isFetching() && f.model.isOpen());
        const int rows = f.model.rowCount();
        QVERIFY2(rows >= least && rows <= most, qPrintable(QString::number(rows)));
        QCOMPARE(f.integers(), oneTo(rows));
        if (!dropped) { // and can still be sorted
            f.model.setSortText(QStringLiteral("[ID] DESC"));
            f.model.waitForSort();
            QCOMPARE(f.integers(), oneTo(rows, true));
        }
    }
};

QTEST_GUILESS_MAIN(TestResultTableModel)
#include "test_resulttablemodel.moc"
