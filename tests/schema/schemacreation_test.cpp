// Schema work from a table definition file over real databases: SQLite always (a private
// database file per test), PostgreSQL and MariaDB when the test environment names them. On the
// shared servers every table gets a name of its own and is dropped afterwards.

#include "core/log.h"
#include "db/dialect.h"
#include "db/odbc/odbc.h"
#include "schema/inifile.h"
#include "schema/schemacreation.h"
#include "support/testsupport.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

using db::DatabaseDialect;
using testsupport::TestDatabase;

Q_DECLARE_METATYPE(DatabaseDialect)

namespace {

// An expected log entry ending with this matches any entry that starts with the text before it
// and goes on with at least one character: for driver messages the test does not predict.
const QString AnyText = QStringLiteral("<driver message>");

const QString DefaultPass = QStringLiteral("processing Default section.");

// The shipped file's tables with its generic type names, and the native texts of these names in
// the order key, integer, text50, text255, memo, money, date, flag.
const QString AssetsColumns = QStringLiteral(
    "ID %KEY%, ASSETTYPE %TEXT50%, INFO %TEXT255%, ASSETID %TEXT50%, MANUFACTURER %TEXT50%, "
    "MODEL %TEXT50%, SERIALNUM %TEXT50%, ASLOCATION %TEXT50%, DEPT %TEXT50%, NODENAME %TEXT50%, "
    "FKNODES %INT%, PURCHDATE %DATE%, PURCHASER %TEXT50%, SUPPLIER %TEXT50%, ITEMVALUE %MONEY%, "
    "ITEMSIZE %TEXT50%, QTY %INT%, MAINTRENEW %DATE%, SUPPORTCONTACT %TEXT255%, "
    "USR_COSTCENTRE %TEXT50%, USR_NOTES %MEMO%");
const QString AssetTypesColumns = QStringLiteral(
    "ASSETTYPE %TEXT50% NOT NULL PRIMARY KEY, NODEREQUIRED %FLAG%, SHOW_GENERAL_TAB %FLAG%, "
    "SHOW_PURCHASE_TAB %FLAG%, SHOW_WARRANTY_TAB %FLAG%, SHOW_USEREXT_TAB %FLAG%");
const QString NodesColumns =
    QStringLiteral("NODENAME %TEXT50% NOT NULL PRIMARY KEY, OBJECTID %INT%");
const QStringList DefaultTypes =
    QStringLiteral("INTEGER /*! AUTO_INCREMENT */ PRIMARY KEY|INTEGER|VARCHAR(50)|VARCHAR(255)|"
                   "TEXT|DOUBLE PRECISION|DATE|VARCHAR(5)")
        .split('|');

QString withTypes(QString columns, const QStringList& types) {
    const QStringList generic =
        QStringLiteral("%KEY%|%INT%|%TEXT50%|%TEXT255%|%MEMO%|%MONEY%|%DATE%|%FLAG%").split('|');
    for (qsizetype i = 0; i < generic.size(); ++i)
        columns.replace(generic[i], types[i]);
    return columns;
}

// The column names of definitions "NAME TYPE ..., NAME TYPE ...".
QStringList namesOf(const QString& columns) {
    QStringList names;
    for (const QString& definition : columns.split(QStringLiteral(", ")))
        names << definition.section(QLatin1Char(' '), 0, 0);
    return names;
}

// The log entries of a table that is created.
QStringList createdLog(const QString& table, const QString& columns) {
    return {"...processing table " + table, "...creating table: " + table,
            "...Query:\nCREATE TABLE " + table + " (" + columns + ")",
            "......table " + table + " successfully created."};
}

// The messages of the log file, time stamps and entry ends taken off. An entry that does not end
// with " \r\n" is returned with a marker so that the comparison shows it.
QStringList logEntries(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    static const QRegularExpression stamp(
        QStringLiteral("^\\d\\d\\D\\d\\d\\D\\d{4} \\d\\d\\D\\d\\d\\D\\d\\d > "),
        QRegularExpression::MultilineOption);
    QStringList entries = QString::fromLocal8Bit(file.readAll()).split(stamp);
    entries.removeFirst(); // the text before the first time stamp
    for (QString& entry : entries)
        entry = entry.endsWith(QStringLiteral(" \r\n")) ? entry.chopped(3)
                                                        : entry + "<entry end missing>";
    return entries;
}

// The error text a statement gives on the connection, or nothing when it succeeds. A table is
// opened as the schema work opens it, with at most one row.
std::optional<QString> errorOf(db::odbc::Connection& connection, const QString& sql,
                               bool asTableOpen = false) {
    try {
        db::odbc::Statement statement(connection);
        if (asTableOpen)
            statement.setMaxRows(1);
        statement.executeDirect(sql);
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    }
    return std::nullopt;
}

QStringList fieldNames(db::odbc::Connection& connection, const QString& table) {
    db::odbc::Statement statement(connection);
    statement.setMaxRows(1);
    statement.executeDirect("SELECT * FROM " + table);
    QStringList names;
    for (const db::odbc::ColumnInfo& column : statement.columns())
        names << column.name.toUpper();
    return names;
}

std::vector<db::odbc::Row> query(db::odbc::Connection& connection, const QString& sql) {
    db::odbc::Statement statement(connection);
    statement.executeDirect(sql);
    std::vector<db::odbc::Row> rows;
    while (statement.fetchBlock(rows)) {
    }
    return rows;
}

} // namespace

class SchemaCreationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_dir.emplace();
        QVERIFY(m_dir->isValid());
        m_logPath = m_dir->filePath(QStringLiteral("schema.log"));
        QVERIFY(core::SetLogFilePath(m_logPath));
        m_tables.clear();
        m_tableStems.clear();
        m_label.clear();
    }

    void cleanup() {
        if (m_connection.isOpen() && m_label != QLatin1String("sqlite"))
            for (const QString& table : std::as_const(m_tables))
                errorOf(m_connection, "DROP TABLE " + quoted(table));
        m_connection.close();
        core::SetLogFilePath(QString());
        m_dir.reset();
    }

    // The shipped file creates every table in a fresh database; the second run only verifies.
    void freshThenUpToDate_data() { testsupport::AddDatabaseRows(); }
    void freshThenUpToDate() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        connect(database);
        const QString path = shippedDefinition();
        const QString assets = tableName("ASSETS");
        const QString types = tableName("ASSETTYPES");
        const QString nodes = tableName("NODES");

        schema::ProcessTableDefinitionFile(m_connection, DatabaseDialect::Default, path);

        compareLog(QStringList{"Table definition file: " + path, DefaultPass} +
                   createdLog(assets, withTypes(AssetsColumns, DefaultTypes)) +
                   createdLog(types, withTypes(AssetTypesColumns, DefaultTypes)) +
                   createdLog(nodes, withTypes(NodesColumns, DefaultTypes)) +
                   QStringList{DefaultPass});
        QCOMPARE(fieldNames(m_connection, assets), namesOf(AssetsColumns));
        QCOMPARE(fieldNames(m_connection, types), namesOf(AssetTypesColumns));
        QCOMPARE(fieldNames(m_connection, nodes), namesOf(NodesColumns));

        // SQLite and MariaDB number new assets themselves; PostgreSQL is given the key.
        const bool numbersKeys = database.label != QLatin1String("postgresql");
        const QString insert = QStringLiteral("INSERT INTO %1 (%2ASSETTYPE, ITEMVALUE, PURCHDATE) "
                                              "VALUES (%3'PC', 12345678.9012345, '2024-03-05')");
        for (const QString& id : {QStringLiteral("1, "), QStringLiteral("2, ")})
            m_connection.execute(numbersKeys ? insert.arg(assets, QString(), QString())
                                             : insert.arg(assets, QStringLiteral("ID, "), id));
        const auto rows =
            query(m_connection, "SELECT ID, ITEMVALUE, PURCHDATE FROM " + assets + " ORDER BY ID");
        QCOMPARE(rows.size(), size_t(2));
        QCOMPARE(rows[0][0], QByteArray("1"));
        QCOMPARE(rows[1][0], QByteArray("2"));
        QCOMPARE(rows[0][1].toDouble(), 12345678.9012345);
        QVERIFY2(rows[0][2].startsWith("2024-03-05"), rows[0][2].constData());

        QFile::remove(m_logPath);
        schema::ProcessTableDefinitionFile(m_connection, DatabaseDialect::Default, path);
        QStringList expected = {"Table definition file: " + path, DefaultPass};
        for (const QString& name : {assets, types, nodes})
            expected << "...processing table " + name << "...verifying table: " + name
                     << "......table " + name + " verification successfully finished.";
        compareLog(expected << DefaultPass);
    }

    // A table that lacks two columns (names compared without regard to case), one that cannot
    // be opened, one that cannot be created and a new one; then statements in order, of which
    // a failing one does not stop the next.
    void tablesAndStatements_data() { testsupport::AddDatabaseRows(); }
    void tablesAndStatements() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        connect(database);
        const QString partial = tableName("partial");
        m_connection.execute("CREATE TABLE " + partial + " (ID INTEGER, NAME VARCHAR(20))");
        m_connection.execute("INSERT INTO " + partial + " (ID, NAME) VALUES (1, 'kept')");
        // Listed but "SELECT * FROM name" cannot open it: its name has a blank.
        const QString unopenable = tableName("unopenable") + " x";
        m_tables.last() = unopenable;
        m_connection.execute("CREATE TABLE " + quoted(unopenable) + " (A INTEGER)");
        const QString broken = tableName("broken");
        const QString numbers = tableName("numbers");
        const QString missing = testsupport::UniqueTableName("missing");
        const QString path = writeDefinition(
            QStringLiteral(
                "[Default]\nFieldTypes=2\nType1=%INT%\nType2=%TEXT%\n%INT%=INTEGER\n"
                "%TEXT%=VARCHAR(40)\nTables=4\nQueries=5\n"
                "[Default_Table1]\nName=%1\nColumns=5\nColumn1=id %INT%\nColumn2=QTY %INT%\n"
                "Column3=NAME %TEXT% NOT NULL\nColumn4=Note %TEXT%\nColumn5=ID\n"
                "[Default_Table2]\nName=%2\nColumns=2\nColumn1=A %INT%\nColumn2=B %INT%\n"
                "[Default_Table3]\nName=%3\nColumns=1\nColumn1=A %INT% (\n"
                "[Default_Table4]\nName=%4\nColumns=1\nColumn1=N %INT%\n"
                "[Default_Query1]\nRows=3\nRow1=INSERT INTO %4 (N)\nRow2=\nRow3=VALUES (1)\n"
                "[Default_Query2]\nRows=1\nRow1=INSERT INTO %5 (N) VALUES (2)\n"
                "[Default_Query3]\nRows=1\nRow1=UPDATE %4\tSET N = N * 10 + 3\n"
                "[Default_Query4]\nRows=0\nRow1=DELETE FROM %4\n[Default_Query5]\nRows=2\n")
                .arg(partial, unopenable, broken, numbers, missing));

        schema::ProcessTableDefinitionFile(m_connection, DatabaseDialect::Default, path);

        const std::optional<QString> openError =
            errorOf(m_connection, "SELECT * FROM " + unopenable, true);
        const std::optional<QString> createError =
            errorOf(m_connection, "CREATE TABLE " + broken + " (A INTEGER ()");
        const std::optional<QString> insertError =
            errorOf(m_connection, "INSERT INTO " + missing + " (N) VALUES (2)");
        QVERIFY(openError && createError && insertError);
        compareLog(
            QStringList{"Table definition file: " + path, DefaultPass,
                        "...processing table " + partial, "...verifying table: " + partial,
                        "...Query:\nALTER TABLE " + partial + " ADD QTY INTEGER",
                        "...Query:\nALTER TABLE " + partial + " ADD Note VARCHAR(40)",
                        "......table " + partial + " verification successfully finished.",
                        "...processing table " + unopenable, "...verifying table: " + unopenable,
                        "...Error: " + *openError, "...processing table " + broken,
                        "...creating table: " + broken,
                        "...Query:\nCREATE TABLE " + broken + " (A INTEGER ()",
                        "...Error: " + *createError} +
            createdLog(numbers, "N INTEGER") +
            QStringList{
                "...processing SQL query Default_Query1",
                "...Query:\nINSERT INTO " + numbers + " (N)\r\nVALUES (1)",
                ".......query successfully executed.", "...processing SQL query Default_Query2",
                "...Query:\nINSERT INTO " + missing + " (N) VALUES (2)",
                "Query Error: " + *insertError, "...processing SQL query Default_Query3",
                "...Query:\nUPDATE " + numbers + "\tSET N = N * 10 + 3",
                ".......query successfully executed.", "...processing SQL query Default_Query4",
                ".......no Query rows found.", "...processing SQL query Default_Query5",
                ".......SQL query is empty.", DefaultPass});
        QCOMPARE(fieldNames(m_connection, partial), QStringList({"ID", "NAME", "QTY", "NOTE"}));
        const auto kept = query(m_connection, "SELECT NAME, QTY FROM " + partial);
        QCOMPARE(kept.size(), size_t(1));
        QCOMPARE(kept[0][0], QByteArray("kept"));
        QVERIFY(kept[0][1].isNull());
        // 13 only when the insert ran before the update.
        QCOMPARE(query(m_connection, "SELECT N FROM " + numbers),
                 std::vector<db::odbc::Row>{{"13"}});
    }

    // The shipped file with the dialects the SQLite driver never reports: a new ASSETS and
    // ASSETTYPES, and a NODES table that lacks one column.
    void forcedDialectOverSqlite_data() {
        QTest::addColumn<DatabaseDialect>("dialect");
        QTest::addColumn<QStringList>("types");
        QTest::addColumn<QString>("assetsOutcome");
        QTest::addColumn<QString>("addColumn");
        const auto row = [](const char* name, DatabaseDialect dialect, const QString& types,
                            const QString& assetsOutcome, const QString& addColumn) {
            QTest::newRow(name) << dialect << types.split('|') << assetsOutcome << addColumn;
        };
        row("Access", DatabaseDialect::Access,
            "COUNTER PRIMARY KEY|INTEGER|TEXT(50)|TEXT(255)|MEMO|DOUBLE|DATETIME|TEXT(5)",
            "......table ASSETS successfully created.",
            "ALTER TABLE NODES ADD COLUMN OBJECTID INTEGER");
        // SQLite knows no identity columns: the statement is logged and rejected.
        row("Oracle", DatabaseDialect::Oracle,
            "NUMBER(10) GENERATED BY DEFAULT ON NULL AS IDENTITY PRIMARY KEY|NUMBER(10)|"
            "VARCHAR2(50)|VARCHAR2(255)|VARCHAR2(4000)|BINARY_DOUBLE|DATE|VARCHAR2(5)",
            "...Error: " + AnyText, "ALTER TABLE NODES ADD OBJECTID NUMBER(10)");
        // SQLite rejects VARCHAR(MAX).
        row("SqlServer", DatabaseDialect::SqlServer,
            "INT IDENTITY(1,1) PRIMARY KEY|INT|VARCHAR(50)|VARCHAR(255)|VARCHAR(MAX)|FLOAT(53)|"
            "DATETIME|VARCHAR(5)",
            "...Error: " + AnyText, "ALTER TABLE NODES ADD OBJECTID INT");
    }
    void forcedDialectOverSqlite() {
        QFETCH(DatabaseDialect, dialect);
        QFETCH(QStringList, types);
        QFETCH(QString, assetsOutcome);
        QFETCH(QString, addColumn);
        connect(testsupport::TestDatabases().front());
        // The Oracle table listing reads the catalogue view USER_TABLES; give SQLite one.
        if (dialect == DatabaseDialect::Oracle)
            m_connection.execute("CREATE VIEW USER_TABLES AS SELECT name AS TABLE_NAME "
                                 "FROM sqlite_master WHERE type = 'table'");
        m_connection.execute("CREATE TABLE NODES (NODENAME VARCHAR(50))");
        const QString path = shippedDefinition();

        schema::ProcessTableDefinitionFile(m_connection, dialect, path);

        compareLog(
            {"Table definition file: " + path, DefaultPass, "...processing table ASSETS",
             "...creating table: ASSETS",
             "...Query:\nCREATE TABLE ASSETS (" + withTypes(AssetsColumns, types) + ")",
             assetsOutcome, "...processing table ASSETTYPES", "...creating table: ASSETTYPES",
             "...Query:\nCREATE TABLE ASSETTYPES (" + withTypes(AssetTypesColumns, types) + ")",
             "......table ASSETTYPES successfully created.", "...processing table NODES",
             "...verifying table: NODES", "...Query:\n" + addColumn,
             "......table NODES verification successfully finished.",
             "processing " + db::DialectSectionName(dialect) + " section."});
        QCOMPARE(fieldNames(m_connection, "NODES"), QStringList({"NODENAME", "OBJECTID"}));
    }

    // A file that does not exist is no work: only the two passes are logged.
    void missingFileIsNoWork_data() {
        QTest::addColumn<DatabaseDialect>("dialect");
        QTest::newRow("Default") << DatabaseDialect::Default;
        QTest::newRow("Oracle") << DatabaseDialect::Oracle;
    }
    void missingFileIsNoWork() {
        QFETCH(DatabaseDialect, dialect);
        connect(testsupport::TestDatabases().front());
        const QString path = m_dir->filePath(QStringLiteral("table.def"));
        schema::ProcessTableDefinitionFile(m_connection, dialect, path);
        compareLog({"Table definition file: " + path, DefaultPass,
                    "processing " + db::DialectSectionName(dialect) + " section."});
        QVERIFY(m_connection.tableNames().isEmpty());
    }

    void tableListFailureEndsTheWork() {
        // Oracle's listing over SQLite without a USER_TABLES view cannot be had.
        connect(testsupport::TestDatabases().front());
        const QString path = shippedDefinition();
        QVERIFY_THROWS_EXCEPTION(
            db::odbc::OdbcError,
            schema::ProcessTableDefinitionFile(m_connection, DatabaseDialect::Oracle, path));
        compareLog({"Table definition file: " + path, DefaultPass, "...processing table ASSETS"});
        QVERIFY(m_connection.tableNames().isEmpty());
    }

private:
    // Opens the database of the current row: a fresh file for SQLite, the server otherwise.
    void connect(const TestDatabase& database) {
        m_label = database.label;
        if (database.label == QLatin1String("sqlite"))
            m_connection.open("Driver=SQLite3;Database=" + m_dir->filePath("test.sqlite"));
        else
            m_connection.open(database.connectionString());
    }

    QString quoted(const QString& table) const {
        const QString quote = m_label == QLatin1String("mariadb") ? "`" : "\"";
        return quote + table + quote;
    }

    // The name a table of the test gets: itself in the private SQLite file, a name of its own
    // on a shared server. Tables named here are dropped after the test.
    QString tableName(const QString& stem) {
        const qsizetype known = m_tableStems.indexOf(stem);
        if (known >= 0)
            return m_tables[known];
        m_tableStems << stem;
        m_tables << (m_label == QLatin1String("sqlite") ? stem
                                                        : testsupport::UniqueTableName(stem));
        return m_tables.last();
    }

    // The shipped table definition file with its tables renamed by tableName().
    QString shippedDefinition() {
        QFile file(QStringLiteral(QUILLET_SOURCE_DIR "/data/table.def"));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read the shipped table definition file");
        QString text = QString::fromLocal8Bit(file.readAll());
        for (const char* stem : {"ASSETS", "ASSETTYPES", "NODES"})
            text.replace(QRegularExpression(QStringLiteral("^Name=%1$").arg(QLatin1String(stem)),
                                            QRegularExpression::MultilineOption),
                         "Name=" + tableName(stem));
        return writeDefinition(text);
    }

    QString writeDefinition(const QString& text) {
        const QString path = m_dir->filePath(QStringLiteral("table.def"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(text.toLocal8Bit()) < 0)
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    // The whole log, entry by entry.
    void compareLog(const QStringList& expected) {
        const QStringList actual = logEntries(m_logPath);
        for (qsizetype i = 0; i < qMin(actual.size(), expected.size()); ++i) {
            const QString prefix =
                expected[i].endsWith(AnyText) ? expected[i].chopped(AnyText.size()) : QString();
            if (prefix.isEmpty() || !actual[i].startsWith(prefix) || actual[i] == prefix)
                QCOMPARE(actual[i], expected[i]);
        }
        if (actual.size() != expected.size())
            qWarning().noquote() << "the log:" << actual;
        QCOMPARE(actual.size(), expected.size());
    }

    std::optional<QTemporaryDir> m_dir;
    db::odbc::Connection m_connection;
    QString m_label;
    QString m_logPath;
    QStringList m_tables;
    QStringList m_tableStems;
};

QTEST_GUILESS_MAIN(SchemaCreationTest)
#include "schemacreation_test.moc"
