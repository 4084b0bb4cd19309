// The table data set over real databases: typed values written and read back as the user
// writes them, NULL, strict conversions and a post that finds its row gone, while the grid
// still reads a large result on the same connection.

#include "assets/resulttablemodel.h"
#include "assets/tabledataset.h"
#include "core/conversions.h"
#include "core/dateformat.h"
#include "support/queryrows.h"
#include "support/testsupport.h"

#include <QTest>

using assets::TableDataSet;
using testsupport::TestDatabase;

class TestTableDataSet : public QObject {
    Q_OBJECT

private:
    db::odbc::Connection m_connection;
    QString m_table;

    void connect(const TestDatabase& database) {
        m_connection.open(database.connectionString());
        m_table = testsupport::UniqueTableName(QStringLiteral("data"));
        m_connection.execute(
            QStringLiteral(
                "CREATE TABLE %1 (ID INTEGER PRIMARY KEY, NAME VARCHAR(50), QTY INTEGER, "
                "PRICE DOUBLE PRECISION, BOUGHT DATE, STAMP %2)")
                .arg(m_table, database.timestampType()));
        m_connection.execute(
            QStringLiteral("INSERT INTO %1 (ID, NAME, QTY) VALUES (1, 'pc', 3)").arg(m_table));
    }

private Q_SLOTS:
    void initTestCase() { core::ApplyDateFormat(QStringLiteral("dd.mm.yyyy"), QLocale::c()); }

    void cleanup() {
        if (m_connection.isOpen())
            m_connection.execute(QStringLiteral("DROP TABLE %1").arg(m_table));
        m_connection.close();
    }

    void editAndInsertWriteTypedValues_data() { testsupport::AddDatabaseRows(); }
    void editAndInsertWriteTypedValues() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        connect(database);
        if (database.is("mariadb"))
            m_connection.execute(QStringLiteral("SET SESSION max_recursive_iterations = 1000000"));
        db::odbc::Statement big(m_connection);
        big.executeDirect(QStringLiteral("with recursive c(x) as (select 1 union all select x + 1 "
                                         "from c where x < 200000) select x from c"));
        assets::ResultTableModel grid;
        grid.open(std::move(big));

        TableDataSet table(m_connection, m_table);
        table.setFilter(QStringLiteral("ID = 1"));
        table.open();
        QCOMPARE(table.recordCount(), 1);
        QCOMPARE(table.asText(QStringLiteral("name")), QStringLiteral("pc"));

        table.edit();
        const struct {
            const char *field, *text;
        } values[] = {{"NAME", "Zürich ✓"},
                      {"QTY", "42"},
                      {"PRICE", "12.5"},
                      {"BOUGHT", "04.03.2020"},
                      {"STAMP", "05.03.2020 10:11:12"}};
        for (const auto& value : values)
            table.setAsText(QString::fromLatin1(value.field), QString::fromUtf8(value.text));
        table.post();
        QCOMPARE(table.state(), TableDataSet::State::Browse);

        table.append();
        table.setAsText(QStringLiteral("ID"), QStringLiteral("2"));
        table.setAsText(QStringLiteral("BOUGHT"), QStringLiteral("29.02.2024"));
        table.setAsText(QStringLiteral("NAME"), QString()); // empty text is NULL
        table.post();

        table.setFilter(QString());
        table.open();
        QCOMPARE(table.recordCount(), 2);
        for (const auto& value : values)
            QCOMPARE(table.asText(QString::fromLatin1(value.field)), QString::fromUtf8(value.text));
        const auto rows = testsupport::QueryRows(
            m_connection,
            QStringLiteral("select BOUGHT, NAME, QTY from %1 where ID = 2").arg(m_table));
        QCOMPARE(rows.at(0).at(0).left(10), QByteArray("2024-02-29"));
        QVERIFY(rows[0][1].isNull() && rows[0][2].isNull());
        table.deleteRecord();
        QCOMPARE(table.recordCount(), 1);
        grid.waitForAllRows();
        QCOMPARE(grid.rowCount(), 200000);
        QVERIFY(grid.fetchError().isEmpty());
    }

    // A text that does not convert leaves the value; a post whose row is gone fails and
    // keeps the user's values in edit state; a failing check before the post stops it.
    void failuresKeepTheRecord_data() { testsupport::AddDatabaseRows(); }
    void failuresKeepTheRecord() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        connect(database);
        TableDataSet table(m_connection, m_table);
        table.setFilter(QStringLiteral("ID = 1"));
        table.open();
        table.edit();
        QVERIFY_THROWS_EXCEPTION(core::ConversionError,
                                 table.setAsText(QStringLiteral("QTY"), QStringLiteral("abc")));
        QVERIFY_THROWS_EXCEPTION(
            core::ConversionError,
            table.setAsText(QStringLiteral("BOUGHT"), QStringLiteral("31.02.2020")));
        QCOMPARE(table.asText(QStringLiteral("QTY")), QStringLiteral("3"));

        table.events.beforePost = [] { throw std::runtime_error("checked"); };
        table.setAsText(QStringLiteral("QTY"), QStringLiteral("7"));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, table.post());
        QCOMPARE(table.state(), TableDataSet::State::Edit);
        table.events.beforePost = nullptr;

        m_connection.execute(QStringLiteral("DELETE FROM %1 WHERE ID = 1").arg(m_table));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, table.post());
        QCOMPARE(table.state(), TableDataSet::State::Edit);
        QCOMPARE(table.asText(QStringLiteral("QTY")), QStringLiteral("7"));
        table.cancel();
        QCOMPARE(table.asText(QStringLiteral("QTY")), QStringLiteral("3"));
    }
};

QTEST_GUILESS_MAIN(TestTableDataSet)
#include "test_tabledataset.moc"
