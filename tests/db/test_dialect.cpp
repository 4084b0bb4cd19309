// The connection string and the database dialect: the rules on their own, the strings the
// real drivers complete, and the connect sequence against real data sources.

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

namespace {

// Completed connection strings as the three drivers of the test set-up return them
// (SQLite3 0.9998, psqlODBC 13, MariaDB Connector/ODBC 3.1), before the provider wraps them.
const QString SqliteCompleted = QStringLiteral(
    "DSN=QuilletTestSqlite;Database=/tmp/quillet-sqlite-OoOYaO/quillet-test.sqlite;StepAPI=1;"
    "Timeout=100000;SyncPragma=NORMAL;NoTXN=;ShortNames=;LongNames=;NoCreat=;NoWCHAR=;"
    "FKSupport=;Tracefile=;JournalMode=;LoadExt=;BigInt=;JDConv=;PWD=");
const QString PostgresCompleted = QStringLiteral(
    "DSN=QuilletTestPG;DATABASE=quillet;SERVER=127.0.0.1;PORT=55432;UID=quillet;PWD=quillet;"
    "SSLmode=disable;ReadOnly=0;Protocol=7.4;FakeOidIndex=0;ShowOidColumn=0;RowVersioning=0;"
    "ShowSystemTables=0;Fetch=100;UnknownSizes=0;MaxVarcharSize=255;MaxLongVarcharSize=8190;"
    "Debug=0;CommLog=0;UseDeclareFetch=0;TextAsLongVarchar=1;UnknownsAsLongVarchar=0;"
    "BoolsAsChar=1;Parse=0;ExtraSysTablePrefixes=;LFConversion=0;UpdatableCursors=1;"
    "TrueIsMinus1=0;BI=0;ByteaAsLongVarBinary=1;UseServerSidePrepare=1;LowerCaseIdentifier=0;"
    "D6=-101;OptionalErrors=0;FetchRefcursors=0;");
const QString MariaCompleted = QStringLiteral("DSN=QuilletTestMaria;UID=quillet;PWD=quillet");

QString reported(const QString& dsn, const QString& completed) {
    return db::ReportedConnectionString(
        db::BuildConnectionString(QStringLiteral("quillet"), QStringLiteral("quillet"), dsn),
        completed);
}

} // namespace

class TestDialect : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        // Registers the SQLite data source before the first ODBC call.
        testsupport::TestDatabases();
    }

    void buildConnectionString_data() {
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("userName");
        QTest::addColumn<QString>("dataSource");
        QTest::addColumn<QString>("expected");
        QTest::newRow("all given")
            << "secret"
            << "admin"
            << "Assets"
            << "Provider=MSDASQL.1;Password=secret;Persist Security Info=False;User ID=admin;"
               "Data Source=Assets";
        QTest::newRow("all empty")
            << ""
            << ""
            << ""
            << "Provider=MSDASQL.1;Password=;Persist Security Info=False;User ID=;Data Source=";
        QTest::newRow("password with a semicolon, verbatim")
            << "a;b"
            << "admin"
            << "Assets"
            << "Provider=MSDASQL.1;Password=a;b;Persist Security Info=False;User ID=admin;"
               "Data Source=Assets";
        QTest::newRow("blanks and quotes kept")
            << " p\"w "
            << "Jane Doe"
            << "My Assets"
            << "Provider=MSDASQL.1;Password= p\"w ;Persist Security Info=False;User ID=Jane Doe;"
               "Data Source=My Assets";
    }
    void buildConnectionString() {
        QFETCH(QString, password);
        QFETCH(QString, userName);
        QFETCH(QString, dataSource);
        QFETCH(QString, expected);
        QCOMPARE(db::BuildConnectionString(password, userName, dataSource), expected);
    }

    void odbcAndReportedStrings() {
        QCOMPARE(db::OdbcConnectionString(QStringLiteral("a;b"), QStringLiteral("sa"),
                                          QStringLiteral("Assets")),
                 QStringLiteral("DSN=Assets;UID=sa;PWD=a;b"));
        QCOMPARE(db::ReportedConnectionString(QStringLiteral("Provider=MSDASQL.1;Data Source=X"),
                                              QStringLiteral("DSN=X;UID=u")),
                 QStringLiteral("Provider=MSDASQL.1;Data Source=X;Extended Properties=\"DSN=X;"
                                "UID=u\""));
    }

    void sectionNames_data() {
        QTest::addColumn<int>("dialect");
        QTest::addColumn<QString>("section");
        QTest::newRow("Default") << int(DatabaseDialect::Default) << "Default";
        QTest::newRow("Access") << int(DatabaseDialect::Access) << "Access";
        QTest::newRow("Oracle") << int(DatabaseDialect::Oracle) << "Oracle";
        QTest::newRow("SqlServer") << int(DatabaseDialect::SqlServer) << "MSSQL";
    }
    void sectionNames() {
        QFETCH(int, dialect);
        QFETCH(QString, section);
        QCOMPARE(DialectSectionName(DatabaseDialect(dialect)), section);
    }

    // The rules in their order; the expected dialect is named by its section.
    void detectDatabaseDialect_data() {
        QTest::addColumn<QString>("databaseType");
        QTest::addColumn<QString>("connectionString");
        QTest::addColumn<QString>("driverDescription");
        QTest::addColumn<QString>("dialect");
        const QString msdasql = QStringLiteral("Provider=MSDASQL.1;Extended Properties=\"%1\"");
        const QString sqlServer = msdasql.arg("DSN=x;DATABASE=Assets");

        QTest::newRow("type oracle9, any case, ignores the connection")
            << "oracle9" << sqlServer << ""
            << "Oracle";
        QTest::newRow("type Oracle") << "Oracle"
                                     << ""
                                     << ""
                                     << "Oracle";
        QTest::newRow("type ORACLE8") << "ORACLE8"
                                      << ""
                                      << ""
                                      << "Oracle";
        QTest::newRow("type access") << "access" << sqlServer << "Oracle"
                                     << "Access";
        QTest::newRow("type Sql Server") << "Sql Server"
                                         << ""
                                         << ""
                                         << "MSSQL";
        QTest::newRow("type matched as a whole") << "Oracle 10"
                                                 << ""
                                                 << ""
                                                 << "Default";
        QTest::newRow("type DB2 falls through to the string") << "DB2" << sqlServer << ""
                                                              << "MSSQL";
        QTest::newRow("type DB2, nothing else") << "DB2"
                                                << ""
                                                << ""
                                                << "Default";
        QTest::newRow("MSDAORA before SQLOLEDB") << ""
                                                 << "Provider=MSDAORA;x=SQLOLEDB"
                                                 << ""
                                                 << "Oracle";
        QTest::newRow("SQLOLEDB") << ""
                                  << "Provider=SQLOLEDB.1;Data Source=s"
                                  << ""
                                  << "MSSQL";
        QTest::newRow("MS Access under MSDASQL")
            << "" << msdasql.arg("DSN=a;DBQ=C:\\a.mdb;FIL=MS Access;") << ""
            << "Access";
        QTest::newRow("ms access in another case")
            << "" << msdasql.arg("DSN=a;FIL=ms access;") << ""
            << "Default";
        QTest::newRow("MS Access without MSDASQL") << ""
                                                   << "Provider=Other;FIL=MS Access"
                                                   << ""
                                                   << "Default";
        QTest::newRow("MS Access before DATABASE=")
            << "" << msdasql.arg("FIL=MS Access;DATABASE=x") << ""
            << "Access";
        QTest::newRow("DBQ=ORACLE") << "" << msdasql.arg("DSN=o;DBQ=ORACLE9;") << ""
                                    << "Oracle";
        QTest::newRow("DBQ= ORACLE is not it") << "" << msdasql.arg("DSN=o;DBQ= ORACLE9;") << ""
                                               << "Default";
        QTest::newRow("DATABASE=") << "" << sqlServer << ""
                                   << "MSSQL";
        QTest::newRow("Database= in another case") << "" << msdasql.arg("DSN=x;Database=y") << ""
                                                   << "Default";
        QTest::newRow("driver description Oracle, any case")
            << "" << msdasql.arg("DSN=x") << "Oracle in OraClient11g_home1"
            << "Oracle";
        QTest::newRow("driver description oracle lower case")
            << "" << msdasql.arg("DSN=x") << "my oracle odbc driver"
            << "Oracle";
        QTest::newRow("driver description only when still Default") << "" << sqlServer << "Oracle"
                                                                    << "MSSQL";
        QTest::newRow("driver description without a connection") << ""
                                                                 << ""
                                                                 << "ORACLE"
                                                                 << "Oracle";
        QTest::newRow("unknown type, other driver") << "DB2"
                                                    << ""
                                                    << "SQL Server"
                                                    << "Default";
        QTest::newRow("nothing at all") << ""
                                        << ""
                                        << ""
                                        << "Default";
        QTest::newRow("password with a semicolon, verbatim")
            << ""
            << db::ReportedConnectionString(db::BuildConnectionString("x;DATABASE=y", "u", "d"),
                                            "DSN=d")
            << ""
            << "MSSQL";

        // The real drivers' completed strings, wrapped as the provider reports them.
        QTest::newRow("sqlite driver: Database= is not DATABASE=")
            << "" << reported("QuilletTestSqlite", SqliteCompleted) << "SQLite3"
            << "Default";
        QTest::newRow("postgresql driver: DATABASE=")
            << "" << reported("QuilletTestPG", PostgresCompleted) << "PostgreSQL Unicode"
            << "MSSQL";
        QTest::newRow("mariadb driver: echoes the input")
            << "" << reported("QuilletTestMaria", MariaCompleted) << "MariaDB Unicode"
            << "Default";
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
        QTest::newRow("sqlite") << databases[0] << ""
                                << "Default";
        QTest::newRow("sqlite, type oracle wins") << databases[0] << "oracle"
                                                  << "Oracle";
        QTest::newRow("sqlite, type SQL SERVER wins") << databases[0] << "SQL SERVER"
                                                      << "MSSQL";
        QTest::newRow("sqlite, type DB2 falls through") << databases[0] << "DB2"
                                                        << "Default";
        QTest::newRow("postgresql") << databases[1] << ""
                                    << "MSSQL";
        QTest::newRow("postgresql, type access wins") << databases[1] << "Access"
                                                      << "Access";
        QTest::newRow("mariadb") << databases[2] << ""
                                 << "Default";
    }
    void assetsConnectionDecidesDialect() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, databaseType);
        QFETCH(QString, dialect);
        QUILLET_REQUIRE_DATABASE(database);
        db::AssetsConnection assets;
        QCOMPARE(DialectSectionName(assets.dialect()), QStringLiteral("Default"));
        assets.connect(database.password, database.user, database.dsn, databaseType);
        QVERIFY(assets.isOpen());
        QCOMPARE(assets.connectionString(),
                 db::BuildConnectionString(database.password, database.user, database.dsn));
        const QString completed = assets.connection().completedConnectionString();
        qInfo("%s: %s gives %s", qPrintable(database.label), qPrintable(completed),
              qPrintable(DialectSectionName(assets.dialect())));
        QCOMPARE(DialectSectionName(assets.dialect()), dialect);
        assets.disconnect();
        QVERIFY(!assets.isOpen());
    }

    void failedConnectKeepsDialect() {
        const TestDatabase sqlite = testsupport::TestDatabases().front();
        db::AssetsConnection assets;
        assets.connect(QString(), QString(), sqlite.dsn, QStringLiteral("Oracle"));
        QCOMPARE(assets.dialect(), DatabaseDialect::Oracle);
        QVERIFY_THROWS_EXCEPTION(db::odbc::OdbcError,
                                 assets.connect(QStringLiteral("pw"), QStringLiteral("user"),
                                                QStringLiteral("QuilletNoSuchSource"),
                                                QStringLiteral("Access")));
        QCOMPARE(assets.dialect(), DatabaseDialect::Oracle);
        QVERIFY(!assets.isOpen());
        QCOMPARE(assets.connectionString(),
                 db::BuildConnectionString(QStringLiteral("pw"), QStringLiteral("user"),
                                           QStringLiteral("QuilletNoSuchSource")));
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
        assets.connect(QString(), QString(), dsn, QString());
        QVERIFY(assets.connection().completedConnectionString().contains("Database="));
        QCOMPARE(assets.dialect(), DatabaseDialect::Oracle);
        // A known database type still wins.
        assets.connect(QString(), QString(), dsn, QStringLiteral("access"));
        QCOMPARE(assets.dialect(), DatabaseDialect::Access);
    }

    void listTableNamesUsesTheDriverList() {
        const TestDatabase sqlite = testsupport::TestDatabases().front();
        db::AssetsConnection assets;
        assets.connect(QString(), QString(), sqlite.dsn, QString());
        const QString table = testsupport::UniqueTableName(QStringLiteral("assets"));
        assets.connection().execute(QStringLiteral("CREATE TABLE %1 (id INTEGER)").arg(table));
        const QStringList names = db::ListTableNames(assets.connection(), assets.dialect());
        assets.connection().execute(QStringLiteral("DROP TABLE ") + table);
        QVERIFY2(names.contains(table), qPrintable(names.join(' ')));
    }
};

QTEST_GUILESS_MAIN(TestDialect)
#include "test_dialect.moc"
