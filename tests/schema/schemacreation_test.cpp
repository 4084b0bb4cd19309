// Schema work from a table definition file over real databases: SQLite always (a private
// database file per test), PostgreSQL and MariaDB when the test environment names them. On the
// shared servers every table gets a name of its own and is dropped afterwards.

#include "core/log.h"
#include "db/dialect.h"
#include "db/odbc/odbc.h"
#include "schema/inifile.h"
#include "schema/schemacreation.h"
#include "support/testsupport.h"

#include <QElapsedTimer>
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

QByteArray readFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("cannot write %s", qPrintable(path));
    file.write(bytes);
}

// The messages of the log file, time stamps and entry ends taken off. An entry that does not end
// with " \r\n" is returned with a marker so that the comparison shows it.
QStringList logEntries(const QString& path) {
    const QString text = QString::fromLocal8Bit(readFile(path));
    static const QRegularExpression stamp(
        QStringLiteral("^\\d\\d\\D\\d\\d\\D\\d{4} \\d\\d\\D\\d\\d\\D\\d\\d > "),
        QRegularExpression::MultilineOption);
    QStringList entries;
    qsizetype messageStart = -1;
    auto matches = stamp.globalMatch(text);
    const auto takeEntry = [&](qsizetype end) {
        if (messageStart < 0)
            return;
        QString entry = text.mid(messageStart, end - messageStart);
        if (entry.endsWith(QStringLiteral(" \r\n")))
            entry.chop(3);
        else
            entry += QStringLiteral("<entry end missing>");
        entries << entry;
    };
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        takeEntry(match.capturedStart());
        messageStart = match.capturedEnd();
    }
    takeEntry(text.size());
    return entries;
}

bool entryMatches(const QString& actual, const QString& expected) {
    if (!expected.endsWith(AnyText))
        return actual == expected;
    const QString prefix = expected.chopped(AnyText.size());
    return actual.startsWith(prefix) && actual.size() > prefix.size();
}

// The error text a statement gives on the connection, or nothing when it succeeds.
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
    statement.executeDirect(QStringLiteral("SELECT * FROM ") + table);
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

// The column definitions of the shipped file with the types of the Default section.
const QString AssetsColumns = QStringLiteral(
    "ID INTEGER /*! AUTO_INCREMENT */ PRIMARY KEY, ASSETTYPE VARCHAR(50), INFO VARCHAR(255), "
    "ASSETID VARCHAR(50), MANUFACTURER VARCHAR(50), MODEL VARCHAR(50), SERIALNUM VARCHAR(50), "
    "ASLOCATION VARCHAR(50), DEPT VARCHAR(50), NODENAME VARCHAR(50), FKNODES INTEGER, "
    "PURCHDATE DATE, PURCHASER VARCHAR(50), SUPPLIER VARCHAR(50), ITEMVALUE DOUBLE PRECISION, "
    "ITEMSIZE VARCHAR(50), QTY INTEGER, MAINTRENEW DATE, SUPPORTCONTACT VARCHAR(255), "
    "USR_COSTCENTRE VARCHAR(50), USR_NOTES TEXT");
const QString AssetTypesColumns = QStringLiteral(
    "ASSETTYPE VARCHAR(50) NOT NULL PRIMARY KEY, NODEREQUIRED VARCHAR(5), "
    "SHOW_GENERAL_TAB VARCHAR(5), SHOW_PURCHASE_TAB VARCHAR(5), SHOW_WARRANTY_TAB VARCHAR(5), "
    "SHOW_USEREXT_TAB VARCHAR(5)");
const QString NodesColumns =
    QStringLiteral("NODENAME VARCHAR(50) NOT NULL PRIMARY KEY, OBJECTID INTEGER");

} // namespace

class SchemaCreationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void freshDatabaseGetsEveryTable_data() { testsupport::AddDatabaseRows(); }
    void freshDatabaseGetsEveryTable();
    void secondRunOnlyVerifies_data() { testsupport::AddDatabaseRows(); }
    void secondRunOnlyVerifies();
    void missingColumnsAreAdded_data() { testsupport::AddDatabaseRows(); }
    void missingColumnsAreAdded();
    void statementsRunInOrder_data() { testsupport::AddDatabaseRows(); }
    void statementsRunInOrder();
    void failingTableDoesNotStopTheNext_data() { testsupport::AddDatabaseRows(); }
    void failingTableDoesNotStopTheNext();
    void forcedDialectOverSqlite_data();
    void forcedDialectOverSqlite();
    void fileWithoutWork_data();
    void fileWithoutWork();
    void unreadableFileEndsTheWork();
    void tableListFailureEndsTheWork();

private:
    // Opens the database of the current row: a fresh file for SQLite, the server otherwise.
    void connect(const TestDatabase& database);
    // The name a table of the test gets: itself in the private SQLite file, a name of its own
    // on a shared server. Tables named here are dropped after the test.
    QString tableName(const QString& stem);
    // The shipped table definition file with its tables renamed by tableName().
    QString shippedDefinition();
    QString writeDefinition(const QByteArray& text);
    void compareLog(const QStringList& expected);
    void resetLog();

    std::optional<QTemporaryDir> m_dir;
    db::odbc::Connection m_connection;
    QString m_label;
    QString m_logPath;
    QStringList m_tables;
    QStringList m_tableStems;
};

void SchemaCreationTest::init() {
    m_dir.emplace();
    QVERIFY(m_dir->isValid());
    m_logPath = m_dir->filePath(QStringLiteral("schema.log"));
    QVERIFY(core::SetLogFilePath(m_logPath));
    m_tables.clear();
    m_tableStems.clear();
    m_label.clear();
}

void SchemaCreationTest::cleanup() {
    if (m_connection.isOpen() && m_label != QLatin1String("sqlite")) {
        for (const QString& table : std::as_const(m_tables)) {
            const QString quoted = m_label == QLatin1String("mariadb")
                                       ? QLatin1Char('`') + table + QLatin1Char('`')
                                       : QLatin1Char('"') + table + QLatin1Char('"');
            errorOf(m_connection, QStringLiteral("DROP TABLE ") + quoted);
        }
    }
    m_connection.close();
    core::SetLogFilePath(QString());
    m_dir.reset();
}

void SchemaCreationTest::connect(const TestDatabase& database) {
    m_label = database.label;
    if (database.label == QLatin1String("sqlite"))
        m_connection.open(QStringLiteral("Driver=SQLite3;Database=") +
                          m_dir->filePath(QStringLiteral("test.sqlite")));
    else
        m_connection.open(database.connectionString());
}

QString SchemaCreationTest::tableName(const QString& stem) {
    const qsizetype known = m_tableStems.indexOf(stem);
    if (known >= 0)
        return m_tables[known];
    const QString name =
        m_label == QLatin1String("sqlite") ? stem : testsupport::UniqueTableName(stem.toLower());
    m_tableStems << stem;
    m_tables << name;
    return name;
}

QString SchemaCreationTest::shippedDefinition() {
    QString text =
        QString::fromLocal8Bit(readFile(QStringLiteral(QUILLET_SOURCE_DIR "/data/table.def")));
    for (const char* stem : {"ASSETS", "ASSETTYPES", "NODES"}) {
        const QString name = tableName(QLatin1String(stem));
        text.replace(QRegularExpression(QStringLiteral("^Name=%1$").arg(QLatin1String(stem)),
                                        QRegularExpression::MultilineOption),
                     QStringLiteral("Name=") + name);
    }
    return writeDefinition(text.toLocal8Bit());
}

QString SchemaCreationTest::writeDefinition(const QByteArray& text) {
    const QString path = m_dir->filePath(QStringLiteral("table.def"));
    writeFile(path, text);
    return path;
}

void SchemaCreationTest::resetLog() {
    QFile::remove(m_logPath);
}

void SchemaCreationTest::compareLog(const QStringList& expected) {
    const QStringList actual = logEntries(m_logPath);
    for (qsizetype i = 0; i < qMin(actual.size(), expected.size()); ++i) {
        if (!entryMatches(actual[i], expected[i]))
            QCOMPARE(actual[i], expected[i]);
    }
    if (actual.size() != expected.size()) {
        const QStringList& longer = actual.size() > expected.size() ? actual : expected;
        qWarning().noquote() << (actual.size() > expected.size() ? "unexpected entries:"
                                                                 : "missing entries:")
                             << longer.mid(qMin(actual.size(), expected.size()));
    }
    QCOMPARE(actual.size(), expected.size());
}

void SchemaCreationTest::freshDatabaseGetsEveryTable() {
    QFETCH(TestDatabase, database);
    QUILLET_REQUIRE_DATABASE(database);
    connect(database);
    const QString path = shippedDefinition();
    const QString assets = tableName(QStringLiteral("ASSETS"));
    const QString types = tableName(QStringLiteral("ASSETTYPES"));
    const QString nodes = tableName(QStringLiteral("NODES"));

    schema::ProcessTableDefinitionFile(m_connection, DatabaseDialect::Default, path);

    compareLog({
        "Table definition file: " + path,
        DefaultPass,
        "...processing table " + assets,
        "...creating table: " + assets,
        "...Query:\nCREATE TABLE " + assets + " (" + AssetsColumns + ")",
        "......table " + assets + " successfully created.",
        "...processing table " + types,
        "...creating table: " + types,
        "...Query:\nCREATE TABLE " + types + " (" + AssetTypesColumns + ")",
        "......table " + types + " successfully created.",
        "...processing table " + nodes,
        "...creating table: " + nodes,
        "...Query:\nCREATE TABLE " + nodes + " (" + NodesColumns + ")",
        "......table " + nodes + " successfully created.",
        DefaultPass,
    });

    QCOMPARE(fieldNames(m_connection, assets),
             QStringList({"ID",       "ASSETTYPE", "INFO",       "ASSETID",        "MANUFACTURER",
                          "MODEL",    "SERIALNUM", "ASLOCATION", "DEPT",           "NODENAME",
                          "FKNODES",  "PURCHDATE", "PURCHASER",  "SUPPLIER",       "ITEMVALUE",
                          "ITEMSIZE", "QTY",       "MAINTRENEW", "SUPPORTCONTACT", "USR_COSTCENTRE",
                          "USR_NOTES"}));
    QCOMPARE(fieldNames(m_connection, types),
             QStringList({"ASSETTYPE", "NODEREQUIRED", "SHOW_GENERAL_TAB", "SHOW_PURCHASE_TAB",
                          "SHOW_WARRANTY_TAB", "SHOW_USEREXT_TAB"}));
    QCOMPARE(fieldNames(m_connection, nodes), QStringList({"NODENAME", "OBJECTID"}));

    // SQLite and MariaDB number new assets themselves; PostgreSQL is given the key.
    const bool numbersKeys = database.label != QLatin1String("postgresql");
    const QString insert = QStringLiteral("INSERT INTO %1 (%2ASSETTYPE, ITEMVALUE, PURCHDATE) "
                                          "VALUES (%3'PC', 12345678.9012345, '2024-03-05')")
                               .arg(assets, numbersKeys ? QString() : QStringLiteral("ID, "));
    m_connection.execute(insert.arg(numbersKeys ? QString() : QStringLiteral("1, ")));
    m_connection.execute(insert.arg(numbersKeys ? QString() : QStringLiteral("2, ")));
    const auto rows =
        query(m_connection, "SELECT ID, ITEMVALUE, PURCHDATE FROM " + assets + " ORDER BY ID");
    QCOMPARE(rows.size(), size_t(2));
    QCOMPARE(rows[0][0], QByteArray("1"));
    QCOMPARE(rows[1][0], QByteArray("2"));
    QCOMPARE(rows[0][1].toDouble(), 12345678.9012345);
    QVERIFY2(rows[0][2].startsWith("2024-03-05"), rows[0][2].constData());
}

void SchemaCreationTest::secondRunOnlyVerifies() {
    QFETCH(TestDatabase, database);
    QUILLET_REQUIRE_DATABASE(database);
    connect(database);
    const QString path = shippedDefinition();
    schema::ProcessTableDefinitionFile(m_connection, DatabaseDialect::Default, path);
    resetLog();

    QElapsedTimer timer;
    timer.start();
    schema::ProcessTableDefinitionFile(m_connection, DatabaseDialect::Default, path);
    const qint64 elapsed = timer.nsecsElapsed();
    qInfo("verifying the demo schema on %s took %.2f ms", qPrintable(database.label),
          double(elapsed) / 1e6);

    QStringList expected = {"Table definition file: " + path, DefaultPass};
    for (const char* stem : {"ASSETS", "ASSETTYPES", "NODES"}) {
        const QString name = tableName(QLatin1String(stem));
        expected << "...processing table " + name << "...verifying table: " + name
                 << "......table " + name + " verification successfully finished.";
    }
    expected << DefaultPass;
    compareLog(expected);
}

void SchemaCreationTest::missingColumnsAreAdded() {
    QFETCH(TestDatabase, database);
    QUILLET_REQUIRE_DATABASE(database);
    connect(database);
    const QString table = tableName(QStringLiteral("partial"));
    m_connection.execute("CREATE TABLE " + table + " (ID INTEGER, NAME VARCHAR(20))");
    m_connection.execute("INSERT INTO " + table + " (ID, NAME) VALUES (1, 'kept')");
    const QString path = writeDefinition("[Default]\n"
                                         "FieldTypes=2\nType1=%INT%\nType2=%TEXT%\n"
                                         "%INT%=INTEGER\n%TEXT%=VARCHAR(40)\n"
                                         "Tables=1\n"
                                         "[Default_Table1]\n"
                                         "Name=" +
                                         table.toLocal8Bit() +
                                         "\nColumns=5\n"
                                         "Column1=id %INT%\n"
                                         "Column2=QTY %INT%\n"
                                         "Column3=NAME %TEXT% NOT NULL\n"
                                         "Column4=Note %TEXT%\n"
                                         "Column5=ID\n");

    schema::ProcessTableDefinitionFile(m_connection, DatabaseDialect::Default, path);

    compareLog({
        "Table definition file: " + path,
        DefaultPass,
        "...processing table " + table,
        "...verifying table: " + table,
        "...Query:\nALTER TABLE " + table + " ADD QTY INTEGER",
        "...Query:\nALTER TABLE " + table + " ADD Note VARCHAR(40)",
        "......table " + table + " verification successfully finished.",
        DefaultPass,
    });
    QCOMPARE(fieldNames(m_connection, table), QStringList({"ID", "NAME", "QTY", "NOTE"}));
    const auto rows = query(m_connection, "SELECT ID, NAME, QTY, NOTE FROM " + table);
    QCOMPARE(rows.size(), size_t(1));
    QCOMPARE(rows[0][1], QByteArray("kept"));
    QVERIFY(rows[0][2].isNull());
}

void SchemaCreationTest::statementsRunInOrder() {
    QFETCH(TestDatabase, database);
    QUILLET_REQUIRE_DATABASE(database);
    connect(database);
    const QString table = tableName(QStringLiteral("numbers"));
    const QString missing = testsupport::UniqueTableName(QStringLiteral("missing"));
    const QString path = writeDefinition("[Default]\nTables=1\nQueries=5\n"
                                         "[Default_Table1]\nName=" +
                                         table.toLocal8Bit() +
                                         "\nColumns=1\nColumn1=N INTEGER\n"
                                         "[Default_Query1]\nRows=3\n"
                                         "Row1=INSERT INTO " +
                                         table.toLocal8Bit() +
                                         " (N)\nRow2=\nRow3=VALUES (1)\n"
                                         "[Default_Query2]\nRows=1\n"
                                         "Row1=INSERT INTO " +
                                         missing.toLocal8Bit() +
                                         " (N) VALUES (2)\n"
                                         "[Default_Query3]\nRows=1\n"
                                         "Row1=UPDATE " +
                                         table.toLocal8Bit() +
                                         "\tSET N = N * 10 + 3\n"
                                         "[Default_Query4]\nRows=0\nRow1=DELETE FROM " +
                                         table.toLocal8Bit() +
                                         "\n"
                                         "[Default_Query5]\nRows=2\n");

    schema::ProcessTableDefinitionFile(m_connection, DatabaseDialect::Default, path);

    const std::optional<QString> failure =
        errorOf(m_connection, "INSERT INTO " + missing + " (N) VALUES (2)");
    QVERIFY(failure.has_value());
    compareLog({
        "Table definition file: " + path,
        DefaultPass,
        "...processing table " + table,
        "...creating table: " + table,
        "...Query:\nCREATE TABLE " + table + " (N INTEGER)",
        "......table " + table + " successfully created.",
        "...processing SQL query Default_Query1",
        "...Query:\nINSERT INTO " + table + " (N)\r\nVALUES (1)",
        ".......query successfully executed.",
        "...processing SQL query Default_Query2",
        "...Query:\nINSERT INTO " + missing + " (N) VALUES (2)",
        "Query Error: " + *failure,
        "...processing SQL query Default_Query3",
        "...Query:\nUPDATE " + table + "\tSET N = N * 10 + 3",
        ".......query successfully executed.",
        "...processing SQL query Default_Query4",
        ".......no Query rows found.",
        "...processing SQL query Default_Query5",
        ".......SQL query is empty.",
        DefaultPass,
    });
    // 13 only when the insert ran before the update.
    const auto rows = query(m_connection, "SELECT N FROM " + table);
    QCOMPARE(rows.size(), size_t(1));
    QCOMPARE(rows[0][0], QByteArray("13"));
}

void SchemaCreationTest::failingTableDoesNotStopTheNext() {
    QFETCH(TestDatabase, database);
    QUILLET_REQUIRE_DATABASE(database);
    connect(database);
    // A table the listing shows but "SELECT * FROM name" cannot open: its name has a blank.
    const QString unopenable = tableName(QStringLiteral("unopenable")) + QStringLiteral(" x");
    m_tables.last() = unopenable;
    const QString quote =
        database.label == QLatin1String("mariadb") ? QStringLiteral("`") : QStringLiteral("\"");
    m_connection.execute("CREATE TABLE " + quote + unopenable + quote + " (A INTEGER)");
    const QString broken = tableName(QStringLiteral("broken"));
    const QString good = tableName(QStringLiteral("good"));
    const QString path = writeDefinition("[Default]\nTables=3\n"
                                         "[Default_Table1]\nName=" +
                                         unopenable.toLocal8Bit() +
                                         "\nColumns=2\nColumn1=A INTEGER\nColumn2=B INTEGER\n"
                                         "[Default_Table2]\nName=" +
                                         broken.toLocal8Bit() +
                                         "\nColumns=1\nColumn1=A INTEGER (\n"
                                         "[Default_Table3]\nName=" +
                                         good.toLocal8Bit() + "\nColumns=1\nColumn1=A INTEGER\n");

    schema::ProcessTableDefinitionFile(m_connection, DatabaseDialect::Default, path);

    const std::optional<QString> openError =
        errorOf(m_connection, "SELECT * FROM " + unopenable, true);
    const std::optional<QString> createError =
        errorOf(m_connection, "CREATE TABLE " + broken + " (A INTEGER ()");
    QVERIFY(openError.has_value());
    QVERIFY(createError.has_value());
    compareLog({
        "Table definition file: " + path,
        DefaultPass,
        "...processing table " + unopenable,
        "...verifying table: " + unopenable,
        "...Error: " + *openError,
        "...processing table " + broken,
        "...creating table: " + broken,
        "...Query:\nCREATE TABLE " + broken + " (A INTEGER ()",
        "...Error: " + *createError,
        "...processing table " + good,
        "...creating table: " + good,
        "...Query:\nCREATE TABLE " + good + " (A INTEGER)",
        "......table " + good + " successfully created.",
        DefaultPass,
    });
    QCOMPARE(fieldNames(m_connection, good), QStringList({"A"}));
}

void SchemaCreationTest::forcedDialectOverSqlite_data() {
    QTest::addColumn<DatabaseDialect>("dialect");
    QTest::addColumn<QStringList>("expected");

    // Native texts in the order key, integer, text50, text255, memo, money, date, flag.
    const auto expectedFor = [](const QString& section, const QStringList& types,
                                const QString& assetsOutcome, const QString& addColumn) {
        const QString& key = types[0];
        const QString& integer = types[1];
        const QString& text50 = types[2];
        const QString& text255 = types[3];
        const QString assets =
            "ID " + key + ", ASSETTYPE " + text50 + ", INFO " + text255 + ", ASSETID " + text50 +
            ", MANUFACTURER " + text50 + ", MODEL " + text50 + ", SERIALNUM " + text50 +
            ", ASLOCATION " + text50 + ", DEPT " + text50 + ", NODENAME " + text50 + ", FKNODES " +
            integer + ", PURCHDATE " + types[6] + ", PURCHASER " + text50 + ", SUPPLIER " + text50 +
            ", ITEMVALUE " + types[5] + ", ITEMSIZE " + text50 + ", QTY " + integer +
            ", MAINTRENEW " + types[6] + ", SUPPORTCONTACT " + text255 + ", USR_COSTCENTRE " +
            text50 + ", USR_NOTES " + types[4];
        QString assetTypes = "ASSETTYPE " + text50 + " NOT NULL PRIMARY KEY";
        for (const char* flag : {"NODEREQUIRED", "SHOW_GENERAL_TAB", "SHOW_PURCHASE_TAB",
                                 "SHOW_WARRANTY_TAB", "SHOW_USEREXT_TAB"})
            assetTypes += QStringLiteral(", ") + QLatin1String(flag) + QLatin1Char(' ') + types[7];
        return QStringList{
            "Table definition file: <path>",
            DefaultPass,
            "...processing table ASSETS",
            "...creating table: ASSETS",
            "...Query:\nCREATE TABLE ASSETS (" + assets + ")",
            assetsOutcome,
            "...processing table ASSETTYPES",
            "...creating table: ASSETTYPES",
            "...Query:\nCREATE TABLE ASSETTYPES (" + assetTypes + ")",
            "......table ASSETTYPES successfully created.",
            "...processing table NODES",
            "...verifying table: NODES",
            "...Query:\n" + addColumn,
            "......table NODES verification successfully finished.",
            "processing " + section + " section.",
        };
    };

    QTest::newRow("Access") << DatabaseDialect::Access
                            << expectedFor("Access",
                                           {"COUNTER PRIMARY KEY", "INTEGER", "TEXT(50)",
                                            "TEXT(255)", "MEMO", "DOUBLE", "DATETIME", "TEXT(5)"},
                                           "......table ASSETS successfully created.",
                                           "ALTER TABLE NODES ADD COLUMN OBJECTID INTEGER");
    // SQLite knows no identity columns: the statement is logged and rejected.
    QTest::newRow("Oracle") << DatabaseDialect::Oracle
                            << expectedFor("Oracle",
                                           {"NUMBER(10) GENERATED BY DEFAULT ON NULL AS IDENTITY "
                                            "PRIMARY KEY",
                                            "NUMBER(10)", "VARCHAR2(50)", "VARCHAR2(255)",
                                            "VARCHAR2(4000)", "BINARY_DOUBLE", "DATE",
                                            "VARCHAR2(5)"},
                                           "...Error: " + AnyText,
                                           "ALTER TABLE NODES ADD OBJECTID NUMBER(10)");
    // SQLite rejects VARCHAR(MAX).
    QTest::newRow("SqlServer") << DatabaseDialect::SqlServer
                               << expectedFor("MSSQL",
                                              {"INT IDENTITY(1,1) PRIMARY KEY", "INT",
                                               "VARCHAR(50)", "VARCHAR(255)", "VARCHAR(MAX)",
                                               "FLOAT(53)", "DATETIME", "VARCHAR(5)"},
                                              "...Error: " + AnyText,
                                              "ALTER TABLE NODES ADD OBJECTID INT");
}

void SchemaCreationTest::forcedDialectOverSqlite() {
    QFETCH(DatabaseDialect, dialect);
    QFETCH(QStringList, expected);
    connect(testsupport::TestDatabases().front());
    // The Oracle table listing reads the catalogue view USER_TABLES; give SQLite one.
    if (dialect == DatabaseDialect::Oracle)
        m_connection.execute(QStringLiteral("CREATE VIEW USER_TABLES AS SELECT name AS TABLE_NAME "
                                            "FROM sqlite_master WHERE type = 'table'"));
    m_connection.execute(QStringLiteral("CREATE TABLE NODES (NODENAME VARCHAR(50))"));
    const QString path = shippedDefinition();
    expected.first().replace(QStringLiteral("<path>"), path);

    schema::ProcessTableDefinitionFile(m_connection, dialect, path);

    compareLog(expected);
    QCOMPARE(fieldNames(m_connection, QStringLiteral("NODES")),
             QStringList({"NODENAME", "OBJECTID"}));
}

void SchemaCreationTest::fileWithoutWork_data() {
    QTest::addColumn<bool>("exists");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<DatabaseDialect>("dialect");
    QTest::addColumn<QStringList>("expected");

    QByteArray binary;
    for (int round = 0; round < 16; ++round)
        for (int byte = 0; byte < 256; ++byte)
            binary.append(static_cast<char>(byte));
    const QStringList defaultOnly = {DefaultPass, DefaultPass};

    QTest::newRow("missing file") << false << QByteArray() << DatabaseDialect::Default
                                  << defaultOnly;
    QTest::newRow("empty file") << true << QByteArray() << DatabaseDialect::Default << defaultOnly;
    QTest::newRow("binary file") << true << binary << DatabaseDialect::Default << defaultOnly;
    QTest::newRow("64 KB line") << true << QByteArray(64 * 1024, 'T') << DatabaseDialect::Default
                                << defaultOnly;
    QTest::newRow("missing file, Oracle") << false << QByteArray() << DatabaseDialect::Oracle
                                          << QStringList{DefaultPass, "processing Oracle section."};
}

void SchemaCreationTest::fileWithoutWork() {
    QFETCH(bool, exists);
    QFETCH(QByteArray, content);
    QFETCH(DatabaseDialect, dialect);
    QFETCH(QStringList, expected);
    connect(testsupport::TestDatabases().front());
    const QString path = m_dir->filePath(QStringLiteral("table.def"));
    if (exists)
        writeFile(path, content);

    schema::ProcessTableDefinitionFile(m_connection, dialect, path);

    expected.prepend("Table definition file: " + path);
    compareLog(expected);
    QVERIFY(m_connection.tableNames().isEmpty());
}

void SchemaCreationTest::unreadableFileEndsTheWork() {
    connect(testsupport::TestDatabases().front());
    const QString path = m_dir->path();
    QVERIFY_THROWS_EXCEPTION(
        schema::IniFileError,
        schema::ProcessTableDefinitionFile(m_connection, DatabaseDialect::Default, path));
    compareLog({"Table definition file: " + path});
}

void SchemaCreationTest::tableListFailureEndsTheWork() {
    // Oracle's listing over SQLite without a USER_TABLES view cannot be had.
    connect(testsupport::TestDatabases().front());
    const QString path = shippedDefinition();
    QVERIFY_THROWS_EXCEPTION(db::odbc::OdbcError, schema::ProcessTableDefinitionFile(
                                                      m_connection, DatabaseDialect::Oracle, path));
    compareLog({"Table definition file: " + path, DefaultPass, "...processing table ASSETS"});
    QVERIFY(m_connection.tableNames().isEmpty());
}

QTEST_GUILESS_MAIN(SchemaCreationTest)
#include "schemacreation_test.moc"
