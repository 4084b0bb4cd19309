// The connection string and the database dialect: the rules on their own and the connect
// sequence against real data sources, whose drivers complete the strings in their own ways.

#include "db/assetsconnection.h"
#include "db/dialect.h"
#include "support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using db::DatabaseDialect;
using db::DialectSectionName;
using testsupport::TestDatabase;

class TestDialect : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        // Registers the SQLite data source before the first ODBC call.
        testsupport::TestDatabases();
    }

    // The values go in verbatim: no quoting, no escaping.
    void connectionStrings() {
        QCOMPARE(db::BuildConnectionString(" p\"w;x ", "Jane Doe", "My Assets"),
                 QStringLiteral("Provider=MSDASQL.1;Password= p\"w;x ;Persist Security Info=False;"
                                "User ID=Jane Doe;Data Source=My Assets"));
        QCOMPARE(db::BuildConnectionString("", "", ""),
                 QStringLiteral("Provider=MSDASQL.1;Password=;Persist Security Info=False;"
                                "User ID=;Data Source="));
        QCOMPARE(db::OdbcConnectionString("a;b", "sa", "Assets"),
                 QStringLiteral("DSN=Assets;UID=sa;PWD=a;b"));
        QCOMPARE(db::ReportedConnectionString("Provider=MSDASQL.1;Data Source=X", "DSN=X;UID=u"),
                 QStringLiteral("Provider=MSDASQL.1;Data Source=X;"
                                "Extended Properties=\"DSN=X;UID=u\""));
    }

    // The rules in their order; the expected dialect is named by its section.
    void detectDatabaseDialect_data() {
        QTest::addColumn<QString>("databaseType");
        QTest::addColumn<QString>("connectionString");
        QTest::addColumn<QString>("driverDescription");
        QTest::addColumn<QString>("dialect");
        const auto row = [](const char* name, const QString& type, const QString& connection,
                            const QString& driver, const QString& dialect) {
            QTest::newRow(name) << type << connection << driver << dialect;
        };
        const QString msdasql = QStringLiteral("Provider=MSDASQL.1;Extended Properties=\"%1\"");
        const QString sqlServer = msdasql.arg("DSN=x;DATABASE=Assets");

        row("type oracle9, any case, before the connection", "oracle9", sqlServer, "", "Oracle");
        row("type ORACLE8", "ORACLE8", "", "", "Oracle");
        row("type access before the driver", "access", "", "Oracle", "Access");
        row("type Sql Server", "Sql Server", "", "", "MSSQL");
        row("type matched as a whole", "Oracle 10", "", "", "Default");
        row("unknown type falls through to the string", "DB2", sqlServer, "", "MSSQL");
        row("MSDAORA before SQLOLEDB", "", "Provider=MSDAORA;x=SQLOLEDB", "", "Oracle");
        row("SQLOLEDB", "", "Provider=SQLOLEDB.1;Data Source=s", "", "MSSQL");
        row("ms access in another case", "", msdasql.arg("DSN=a;FIL=ms access;"), "", "Default");
        row("MS Access without MSDASQL", "", "Provider=Other;FIL=MS Access", "", "Default");
        row("MS Access before DBQ=ORACLE and DATABASE=", "",
            msdasql.arg("FIL=MS Access;DBQ=ORACLE;DATABASE=x"), "", "Access");
        row("DBQ=ORACLE before DATABASE=", "", msdasql.arg("DBQ=ORACLE9;DATABASE=x"), "", "Oracle");
        row("DBQ= ORACLE is not it", "", msdasql.arg("DSN=o;DBQ= ORACLE9;"), "", "Default");
        row("Database= in another case", "", msdasql.arg("DSN=x;Database=y"), "", "Default");
        row("driver description naming Oracle, any case", "", msdasql.arg("DSN=x"),
            "my OraCLE odbc driver", "Oracle");
        row("driver description only when still Default", "", sqlServer, "Oracle", "MSSQL");
        row("unknown type, other driver", "DB2", "", "SQL Server", "Default");
        row("password with a semicolon, verbatim", "",
            db::ReportedConnectionString(db::BuildConnectionString("x;DATABASE=y", "u", "d"),
                                         "DSN=d"),
            "", "MSSQL");
    }

    void detectDatabaseDialect() {
        QFETCH(QString, databaseType);
        QFETCH(QString, connectionString);
        QFETCH(QString, driverDescription);
        QFETCH(QString, dialect);
        QCOMPARE(DialectSectionName(
                     db::DetectDatabaseDialect(databaseType, connectionString, driverDescription)),
                 dialect);
    }

    // The connect sequence against each data source, with and without a database type.
    void assetsConnectionDecidesDialect_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("databaseType");
        QTest::addColumn<QString>("dialect");
        const std::vector<TestDatabase> databases = testsupport::TestDatabases();
        const auto row = [](const char* name, const TestDatabase& database, const QString& type,
                            const QString& dialect) {
            QTest::newRow(name) << database << type << dialect;
        };
        row("sqlite", databases[0], "", "Default");
        row("sqlite, type oracle wins", databases[0], "oracle", "Oracle");
        row("sqlite, type DB2 falls through", databases[0], "DB2", "Default");
        row("postgresql", databases[1], "", "MSSQL");
        row("postgresql, type access wins", databases[1], "Access", "Access");
        row("mariadb", databases[2], "", "Default");
    }
    void assetsConnectionDecidesDialect() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, databaseType);
        QFETCH(QString, dialect);
        QUILLET_REQUIRE_DATABASE(database);
        db::AssetsConnection assets;
        QCOMPARE(assets.dialect(), DatabaseDialect::Default);
        assets.connect(database.password, database.user, database.dsn, databaseType);
        QVERIFY(assets.isOpen());
        QCOMPARE(assets.connectionString(),
                 db::BuildConnectionString(database.password, database.user, database.dsn));
        qInfo("%s: %s gives %s", qPrintable(database.label),
              qPrintable(assets.connection().completedConnectionString()),
              qPrintable(DialectSectionName(assets.dialect())));
        QCOMPARE(DialectSectionName(assets.dialect()), dialect);
        assets.disconnect();
        QVERIFY(!assets.isOpen());
    }

    void failedConnectKeepsDialect() {
        db::AssetsConnection assets;
        assets.connect("", "", testsupport::TestDatabases().front().dsn, "Oracle");
        QCOMPARE(assets.dialect(), DatabaseDialect::Oracle);
        QVERIFY_THROWS_EXCEPTION(db::odbc::OdbcError,
                                 assets.connect("pw", "user", "QuilletNoSuchSource", "Access"));
        QCOMPARE(assets.dialect(), DatabaseDialect::Oracle);
        QVERIFY(!assets.isOpen());
        QCOMPARE(assets.connectionString(),
                 db::BuildConnectionString("pw", "user", "QuilletNoSuchSource"));
    }

    // The last rule with a live data source: a driver whose description names Oracle.
    // The SQLite driver is registered under a path that contains "Oracle", which the
    // driver manager reports as the data source's driver description.
    void driverDescriptionNamesOracle() {
        const QString library = testsupport::OdbcDriverLibrary(QStringLiteral("SQLite3"));
        if (library.isEmpty())
            QSKIP("the SQLite3 driver library is not found in odbcinst.ini");
        QTemporaryDir folder;
        QVERIFY(folder.isValid());
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("OracleCompatible")));
        const QString link = folder.filePath(QStringLiteral("OracleCompatible/libsqliteodbc.so"));
        QVERIFY(QFile::link(library, link));
        const QString dsn = QStringLiteral("QuilletOracleLike");
        testsupport::SqliteDsn(dsn, folder.filePath(QStringLiteral("oracle-like.sqlite")), link);
        QCOMPARE(db::odbc::DriverDescriptionOf(dsn), link);

        db::AssetsConnection assets;
        assets.connect("", "", dsn, "");
        QVERIFY(assets.connection().completedConnectionString().contains("Database="));
        QCOMPARE(assets.dialect(), DatabaseDialect::Oracle);
        // A known database type still wins.
        assets.connect("", "", dsn, "access");
        QCOMPARE(assets.dialect(), DatabaseDialect::Access);
    }
};

QTEST_GUILESS_MAIN(TestDialect)
#include "test_dialect.moc"
