// Text outside ASCII reaches each database intact, in statements and in parameters,
// whatever the process locale: ctest runs this test under the C locale and a UTF-8 one.
// What was stored is read back with the database's own client, byte for byte. (Finding
// such text by a literal or a parameter is in test_odbc.)

#include "db/odbc/odbc.h"
#include "support/queryrows.h"
#include "support/testsupport.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using testsupport::TestDatabase;

namespace {

const QString Texts[] = {QStringLiteral("Zürich"), QStringLiteral("中文資料"),
                         QStringLiteral("ok \U0001F600")};

// "id:HEX" lines of the table's rows in id order, as the database's own client reads them.
QStringList storedBytes(const TestDatabase& database, const QString& sqlitePath,
                        const QString& table) {
    QProcess client;
    QStringList arguments;
    const QString query = QStringLiteral("select id, %2 from %1 order by id").arg(table);
    if (database.label == QLatin1String("sqlite")) {
        client.setProgram(QStringLiteral("sqlite3"));
        arguments << QStringLiteral("-separator") << QStringLiteral(":") << sqlitePath
                  << query.arg(QStringLiteral("hex(v)"));
    } else if (database.label == QLatin1String("postgresql")) {
        client.setProgram(QStringLiteral("psql"));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PGPASSWORD"), database.password);
        client.setProcessEnvironment(environment);
        arguments << QStringLiteral("-XAt") << QStringLiteral("-F:")
                  << QStringLiteral("-h127.0.0.1")
                  << QStringLiteral("-p") + qEnvironmentVariable("QUILLET_TEST_PG_PORT")
                  << QStringLiteral("-U") + database.user << QStringLiteral("-dquillet")
                  << QStringLiteral("-c")
                  << query.arg(QStringLiteral("upper(encode(convert_to(v, 'UTF8'), 'hex'))"));
    } else {
        client.setProgram(QStringLiteral("mariadb"));
        arguments << QStringLiteral("--no-defaults") << QStringLiteral("-h127.0.0.1")
                  << QStringLiteral("-P") + qEnvironmentVariable("QUILLET_TEST_MARIA_PORT")
                  << QStringLiteral("-u") + database.user
                  << QStringLiteral("-p") + database.password << QStringLiteral("-N")
                  << QStringLiteral("quillet") << QStringLiteral("-e")
                  << query.arg(QStringLiteral("concat(':', hex(v))"));
    }
    client.setArguments(arguments);
    client.start();
    if (!client.waitForFinished(30000) || client.exitCode() != 0)
        return {QString::fromLocal8Bit(client.readAllStandardError())};
    QString output = QString::fromUtf8(client.readAllStandardOutput());
    output.remove(QLatin1Char('\t'));
    return output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace

class TestEncoding : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString sqlitePath() const { return m_dir.filePath(QStringLiteral("encoding.db")); }

private Q_SLOTS:
    void initTestCase() { testsupport::SqliteDsn(QStringLiteral("QuilletEncoding"), sqlitePath()); }

    void textReachesTheDatabaseIntact_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::newRow("sqlite") << TestDatabase{
            QStringLiteral("sqlite"), QStringLiteral("QuilletEncoding"), {}, {}};
        QTest::newRow("postgresql") << testsupport::ServerDsn(testsupport::Server::PostgreSql);
        QTest::newRow("mariadb") << testsupport::ServerDsn(testsupport::Server::MariaDb);
    }

    void textReachesTheDatabaseIntact() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        db::odbc::Connection connection;
        connection.open(database.connectionString());
        const QString table = testsupport::UniqueTableName(QStringLiteral("enc"));
        connection.execute(
            QStringLiteral("CREATE TABLE %1 (id INTEGER, v VARCHAR(50))").arg(table));
        // Each text in the statement (id i), then as a parameter (id i + 10).
        QStringList expected[2];
        db::odbc::Statement insert(connection);
        insert.prepare(QStringLiteral("INSERT INTO %1 (id, v) VALUES (?, ?)").arg(table));
        for (int i = 0; i < 3; ++i) {
            connection.execute(
                QStringLiteral("INSERT INTO %1 VALUES (%2, '%3')").arg(table).arg(i).arg(Texts[i]));
            insert.bindText(1, QString::number(i + 10));
            insert.bindText(2, Texts[i]);
            insert.execute();
            const QString hex = QString::fromLatin1(Texts[i].toUtf8().toHex().toUpper());
            expected[0] << QStringLiteral("%1:%2").arg(i).arg(hex);
            expected[1] << QStringLiteral("%1:%2").arg(i + 10).arg(hex);
        }
        // Read back whole, whatever the locale.
        QStringList read;
        for (const db::odbc::Row& row :
             testsupport::QueryRows(connection, QStringLiteral("select v from %1").arg(table)))
            read << QString::fromUtf8(row.at(0));
        QCOMPARE(read.size(), 6);
        for (const QString& text : Texts)
            QCOMPARE(read.count(text), 2);
        QCOMPARE(storedBytes(database, sqlitePath(), table), expected[0] + expected[1]);
        connection.execute(QStringLiteral("DROP TABLE %1").arg(table));
    }
};

QTEST_GUILESS_MAIN(TestEncoding)
#include "test_encoding.moc"
