#include "schema/ddl.h"
#include "schema/inifile.h"
#include "schema/tabledefinition.h"

#include <QTest>

using db::DatabaseDialect;
using schema::SchemaWorkItem;

Q_DECLARE_METATYPE(schema::TypeMap)
Q_DECLARE_METATYPE(DatabaseDialect)

namespace {

// The work as text, one line per item, for golden comparisons.
QStringList describe(const std::vector<SchemaWorkItem>& work) {
    QStringList lines;
    for (const SchemaWorkItem& item : work) {
        switch (item.kind) {
        case SchemaWorkItem::Kind::LogEntry:
            lines << QStringLiteral("log: ") + item.text;
            break;
        case SchemaWorkItem::Kind::Table:
            lines << QStringLiteral("table: ") + item.text + QStringLiteral(" | ") +
                         item.columns.join(QStringLiteral(" | "));
            break;
        case SchemaWorkItem::Kind::Statement:
            lines << QStringLiteral("statement: ") + item.text;
            break;
        }
    }
    return lines;
}

// The small file of the table definition file's documentation.
const QByteArray ExampleFile = "[Default]\n"
                               "FieldTypes=2\n"
                               "Type1=TEXT50\n"
                               "Type2=NUMBER10\n"
                               "TEXT50=VARCHAR(50)\n"
                               "NUMBER10=INTEGER\n"
                               "Tables=1\n"
                               "Queries=1\n"
                               "\n"
                               "[Oracle]\n"
                               "TEXT50=VARCHAR2(50)\n"
                               "NUMBER10=NUMBER(10)\n"
                               "Tables=0\n"
                               "\n"
                               "[Default_Table1]\n"
                               "Name=ASSETS\n"
                               "Columns=2\n"
                               "Column1=USR_LOCATION TEXT50\n"
                               "Column2=USR_FLOOR NUMBER10\n"
                               "\n"
                               "[Default_Query1]\n"
                               "Rows=2\n"
                               "Row1=UPDATE ASSETS\n"
                               "Row2=SET USR_FLOOR = 0\n";

} // namespace

class DdlTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void mapColumnTypes_data();
    void mapColumnTypes();
    void columnNameOf_data();
    void columnNameOf();
    void createTableStatement();
    void addColumnStatement_data();
    void addColumnStatement();
    void executableStatementText_data();
    void executableStatementText();
    void typeMapTakesNativeNamesFromTheDialect_data();
    void typeMapTakesNativeNamesFromTheDialect();
    void exampleFile_data();
    void exampleFile();
    void oracleRunsBothPassesWithOracleTypes();
    void unusualSections_data();
    void unusualSections();
};

void DdlTest::mapColumnTypes_data() {
    QTest::addColumn<QString>("definition");
    QTest::addColumn<schema::TypeMap>("types");
    QTest::addColumn<QString>("expected");

    const schema::TypeMap oracle = {{"TEXT50", "VARCHAR2(50)"}, {"NUMBER10", "NUMBER(10)"}};
    QTest::newRow("one type") << "USR_LOCATION TEXT50" << oracle << "USR_LOCATION VARCHAR2(50)";
    QTest::newRow("second pair") << "USR_FLOOR NUMBER10 NOT NULL" << oracle
                                 << "USR_FLOOR NUMBER(10) NOT NULL";
    QTest::newRow("no generic name") << "USR_FLOOR INTEGER" << oracle << "USR_FLOOR INTEGER";
    QTest::newRow("empty map") << "USR_FLOOR NUMBER10" << schema::TypeMap() << "USR_FLOOR NUMBER10";
    QTest::newRow("first occurrence only")
        << "A TEXT50 DEFAULT 'TEXT50'" << oracle << "A VARCHAR2(50) DEFAULT 'TEXT50'";
    QTest::newRow("generic name inside the column name comes first")
        << "USR_TEXT50 TEXT50" << oracle << "USR_VARCHAR2(50) TEXT50";
    QTest::newRow("case-sensitive") << "A text50" << oracle << "A text50";
    QTest::newRow("each pair once, in order")
        << "A TEXT50, B NUMBER10, C TEXT50" << oracle << "A VARCHAR2(50), B NUMBER(10), C TEXT50";
    QTest::newRow("a later pair sees the earlier replacement")
        << "A MONEY" << schema::TypeMap{{"MONEY", "DOUBLE X"}, {"X", "PRECISION"}}
        << "A DOUBLE PRECISION";
    QTest::newRow("an earlier pair does not see a later replacement")
        << "A X" << schema::TypeMap{{"MONEY", "DOUBLE"}, {"X", "MONEY"}} << "A MONEY";
    QTest::newRow("distinctive names")
        << "ITEMVALUE %MONEY%" << schema::TypeMap{{"%MONEY%", "DOUBLE PRECISION"}}
        << "ITEMVALUE DOUBLE PRECISION";
}

void DdlTest::mapColumnTypes() {
    QFETCH(QString, definition);
    QFETCH(schema::TypeMap, types);
    QFETCH(QString, expected);
    QCOMPARE(schema::MapColumnTypes(definition, types), expected);
}

void DdlTest::columnNameOf_data() {
    QTest::addColumn<QString>("definition");
    QTest::addColumn<QString>("expected");
    QTest::newRow("name and type") << "USR_FLOOR INTEGER"
                                   << "USR_FLOOR";
    QTest::newRow("name, type and constraints") << "ID INTEGER NOT NULL PRIMARY KEY"
                                                << "ID";
    QTest::newRow("no blank") << "USR_FLOOR"
                              << "USR_FLOOR";
    QTest::newRow("tab is not a blank") << "USR_FLOOR\tINTEGER"
                                        << "USR_FLOOR\tINTEGER";
    QTest::newRow("empty") << ""
                           << "";
}

void DdlTest::columnNameOf() {
    QFETCH(QString, definition);
    QFETCH(QString, expected);
    QCOMPARE(schema::ColumnNameOf(definition), expected);
}

void DdlTest::createTableStatement() {
    QCOMPARE(
        schema::CreateTableStatement(
            "NODES", {"NODENAME VARCHAR(50) NOT NULL PRIMARY KEY", "OBJECTID INTEGER"}),
        QStringLiteral(
            "CREATE TABLE NODES (NODENAME VARCHAR(50) NOT NULL PRIMARY KEY, OBJECTID INTEGER)"));
    QCOMPARE(schema::CreateTableStatement("T", {"A INTEGER"}),
             QStringLiteral("CREATE TABLE T (A INTEGER)"));
}

void DdlTest::addColumnStatement_data() {
    QTest::addColumn<DatabaseDialect>("dialect");
    QTest::addColumn<QString>("expected");
    QTest::newRow("Default") << DatabaseDialect::Default
                             << "ALTER TABLE ASSETS ADD USR_LOCATION VARCHAR(50)";
    QTest::newRow("Access") << DatabaseDialect::Access
                            << "ALTER TABLE ASSETS ADD COLUMN USR_LOCATION VARCHAR(50)";
    QTest::newRow("Oracle") << DatabaseDialect::Oracle
                            << "ALTER TABLE ASSETS ADD USR_LOCATION VARCHAR(50)";
    QTest::newRow("SqlServer") << DatabaseDialect::SqlServer
                               << "ALTER TABLE ASSETS ADD USR_LOCATION VARCHAR(50)";
}

void DdlTest::addColumnStatement() {
    QFETCH(DatabaseDialect, dialect);
    QFETCH(QString, expected);
    QCOMPARE(schema::AddColumnStatement("ASSETS", "USR_LOCATION VARCHAR(50)", dialect), expected);
}

void DdlTest::executableStatementText_data() {
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QString>("expected");
    QTest::newRow("one line") << "CREATE TABLE T (A INTEGER)"
                              << "CREATE TABLE T (A INTEGER)";
    QTest::newRow("CR LF rows") << "UPDATE ASSETS\r\nSET USR_FLOOR = 0"
                                << "UPDATE ASSETS  SET USR_FLOOR = 0";
    QTest::newRow("LF, CR and TAB each become a blank") << "A\nB\rC\tD\r\n\t"
                                                        << "A B C D   ";
    QTest::newRow("other characters stay") << "SELECT 'a;b' FROM \"T\""
                                           << "SELECT 'a;b' FROM \"T\"";
}

void DdlTest::executableStatementText() {
    QFETCH(QString, statement);
    QFETCH(QString, expected);
    QCOMPARE(schema::ExecutableStatementText(statement), expected);
}

void DdlTest::typeMapTakesNativeNamesFromTheDialect_data() {
    QTest::addColumn<QString>("passSection");
    QTest::addColumn<QString>("dialectSection");
    QTest::addColumn<schema::TypeMap>("expected");
    QTest::newRow("Default with Default")
        << "Default"
        << "Default" << schema::TypeMap{{"TEXT50", "VARCHAR(50)"}, {"NUMBER10", "INTEGER"}};
    QTest::newRow("Default with Oracle")
        << "Default"
        << "Oracle" << schema::TypeMap{{"TEXT50", "VARCHAR2(50)"}, {"NUMBER10", "NUMBER(10)"}};
    QTest::newRow("Oracle lists no types") << "Oracle"
                                           << "Oracle" << schema::TypeMap();
    QTest::newRow("dialect without a section") << "Default"
                                               << "MSSQL" << schema::TypeMap();
}

void DdlTest::typeMapTakesNativeNamesFromTheDialect() {
    QFETCH(QString, passSection);
    QFETCH(QString, dialectSection);
    QFETCH(schema::TypeMap, expected);
    const schema::IniFile file = schema::IniFile::fromBytes(ExampleFile);
    QCOMPARE(schema::ReadTypeMap(file, passSection, dialectSection), expected);
}

void DdlTest::exampleFile_data() {
    QTest::addColumn<DatabaseDialect>("dialect");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("Default") << DatabaseDialect::Default
                             << QStringList{
                                    "log: processing Default section.",
                                    "log: ...processing table ASSETS",
                                    "table: ASSETS | USR_LOCATION VARCHAR(50) | USR_FLOOR INTEGER",
                                    "log: ...processing SQL query Default_Query1",
                                    "statement: UPDATE ASSETS\r\nSET USR_FLOOR = 0",
                                    "log: processing Default section.",
                                };
    QTest::newRow("Oracle")
        << DatabaseDialect::Oracle
        << QStringList{
               "log: processing Default section.",
               "log: ...processing table ASSETS",
               "table: ASSETS | USR_LOCATION VARCHAR2(50) | USR_FLOOR NUMBER(10)",
               "log: ...processing SQL query Default_Query1",
               "statement: UPDATE ASSETS\r\nSET USR_FLOOR = 0",
               "log: processing Oracle section.",
           };
    // No MSSQL section: the generic names have no native text and stay as they are.
    QTest::newRow("SqlServer") << DatabaseDialect::SqlServer
                               << QStringList{
                                      "log: processing Default section.",
                                      "log: ...processing table ASSETS",
                                      "table: ASSETS | USR_LOCATION TEXT50 | USR_FLOOR NUMBER10",
                                      "log: ...processing SQL query Default_Query1",
                                      "statement: UPDATE ASSETS\r\nSET USR_FLOOR = 0",
                                      "log: processing MSSQL section.",
                                  };
}

void DdlTest::exampleFile() {
    QFETCH(DatabaseDialect, dialect);
    QFETCH(QStringList, expected);
    QCOMPARE(describe(schema::ReadSchemaWork(schema::IniFile::fromBytes(ExampleFile), dialect)),
             expected);
}

void DdlTest::oracleRunsBothPassesWithOracleTypes() {
    const QByteArray text = "[Default]\n"
                            "FieldTypes=1\nType1=%TEXT%\n%TEXT%=VARCHAR(20)\n"
                            "Tables=1\n"
                            "[Oracle]\n"
                            "FieldTypes=1\nType1=%TEXT%\n%TEXT%=VARCHAR2(20)\n"
                            "Tables=2\nQueries=1\n"
                            "[Default_Table1]\nName=NODES\nColumns=1\nColumn1=NODENAME %TEXT%\n"
                            "[Oracle_Table1]\nName=ORA_EXTRA\nColumns=1\nColumn1=NOTE %TEXT%\n"
                            "[Oracle_Table2]\nName=  \nColumns=1\nColumn1=NOTE %TEXT%\n"
                            "[Oracle_Query1]\nRows=1\nRow1=COMMENT ON TABLE NODES IS 'nodes'\n";
    const QStringList expected = {
        "log: processing Default section.",
        "log: ...processing table NODES",
        "table: NODES | NODENAME VARCHAR2(20)",
        "log: processing Oracle section.",
        "log: ...processing table ORA_EXTRA",
        "table: ORA_EXTRA | NOTE VARCHAR2(20)",
        "log: ...processing SQL query Oracle_Query1",
        "statement: COMMENT ON TABLE NODES IS 'nodes'",
    };
    QCOMPARE(
        describe(schema::ReadSchemaWork(schema::IniFile::fromBytes(text), DatabaseDialect::Oracle)),
        expected);
    // Dialect Default never reads the Oracle section.
    QCOMPARE(describe(schema::ReadSchemaWork(schema::IniFile::fromBytes(text),
                                             DatabaseDialect::Default)),
             (QStringList{
                 "log: processing Default section.",
                 "log: ...processing table NODES",
                 "table: NODES | NODENAME VARCHAR(20)",
                 "log: processing Default section.",
             }));
}

void DdlTest::unusualSections_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("empty file") << QByteArray()
                                << QStringList{"log: processing Default section.",
                                               "log: processing Default section."};
    QTest::newRow("table without a name is skipped silently")
        << QByteArray("[Default]\nTables=2\n[Default_Table1]\nColumns=1\nColumn1=A INTEGER\n"
                      "[Default_Table2]\nName=T\nColumns=1\nColumn1=A INTEGER\n")
        << QStringList{"log: processing Default section.", "log: ...processing table T",
                       "table: T | A INTEGER", "log: processing Default section."};
    QTest::newRow("Columns missing")
        << QByteArray("[Default]\nTables=1\n[Default_Table1]\nName=T\n")
        << QStringList{"log: processing Default section.", "log: ...processing table T",
                       "log: .......no column definitions found.",
                       "log: processing Default section."};
    QTest::newRow("Columns zero")
        << QByteArray("[Default]\nTables=1\n[Default_Table1]\nName=T\nColumns=0\nColumn1=A X\n")
        << QStringList{"log: processing Default section.", "log: ...processing table T",
                       "log: .......no column definitions found.",
                       "log: processing Default section."};
    QTest::newRow("Columns negative")
        << QByteArray("[Default]\nTables=1\n[Default_Table1]\nName=T\nColumns=-1\nColumn1=A X\n")
        << QStringList{"log: processing Default section.", "log: ...processing table T",
                       "log: .......no column definitions found.",
                       "log: processing Default section."};
    QTest::newRow("Columns not a number")
        << QByteArray("[Default]\nTables=1\n[Default_Table1]\nName=T\nColumns=two\nColumn1=A X\n")
        << QStringList{"log: processing Default section.", "log: ...processing table T",
                       "log: .......no column definitions found.",
                       "log: processing Default section."};
    QTest::newRow("all column lines empty")
        << QByteArray("[Default]\nTables=1\n[Default_Table1]\nName=T\nColumns=2\nColumn1=\n")
        << QStringList{"log: processing Default section.", "log: ...processing table T",
                       "log: .......no columns found.", "log: processing Default section."};
    QTest::newRow("empty column lines skipped")
        << QByteArray("[Default]\nTables=1\n[Default_Table1]\nName=T\nColumns=4\n"
                      "Column1=\nColumn2=A INTEGER\nColumn3=   \nColumn4=B INTEGER\n")
        << QStringList{"log: processing Default section.", "log: ...processing table T",
                       "table: T | A INTEGER | B INTEGER", "log: processing Default section."};
    QTest::newRow("Tables negative or not a number")
        << QByteArray("[Default]\nTables=-2\nQueries=x1\n[Default_Table1]\nName=T\nColumns=1\n"
                      "Column1=A INTEGER\n[Default_Query1]\nRows=1\nRow1=SELECT 1\n")
        << QStringList{"log: processing Default section.", "log: processing Default section."};
    QTest::newRow("Rows missing, zero, not a number, all empty")
        << QByteArray("[Default]\nQueries=4\n[Default_Query2]\nRows=0\nRow1=SELECT 1\n"
                      "[Default_Query3]\nRows=many\n[Default_Query4]\nRows=2\nRow2=\n")
        << QStringList{
               "log: processing Default section.", "log: ...processing SQL query Default_Query1",
               "log: .......no Query rows found.", "log: ...processing SQL query Default_Query2",
               "log: .......no Query rows found.", "log: ...processing SQL query Default_Query3",
               "log: .......no Query rows found.", "log: ...processing SQL query Default_Query4",
               "log: .......SQL query is empty.",  "log: processing Default section."};
    QTest::newRow("empty rows dropped, the rest joined by CR LF")
        << QByteArray("[Default]\nQueries=1\n[Default_Query1]\nRows=4\n"
                      "Row1=UPDATE T\nRow2=\nRow3=  SET A = 1  \nRow4=WHERE B = 2\n")
        << QStringList{"log: processing Default section.",
                       "log: ...processing SQL query Default_Query1",
                       "statement: UPDATE T\r\nSET A = 1\r\nWHERE B = 2",
                       "log: processing Default section."};
    QTest::newRow("section and key names in mixed case")
        << QByteArray("[DEFAULT]\nTABLES=1\nfieldtypes=1\nTYPE1=%T%\n%T%=INTEGER\n"
                      "[default_table1]\nNAME=T\nCOLUMNS=1\ncolumn1=A %T%\n")
        << QStringList{"log: processing Default section.", "log: ...processing table T",
                       "table: T | A INTEGER", "log: processing Default section."};
    QTest::newRow("duplicate keys: the first wins")
        << QByteArray("[Default]\nTables=1\nTables=2\n[Default_Table1]\nName=FIRST\nName=SECOND\n"
                      "Columns=1\nColumn1=A INTEGER\nColumn1=B INTEGER\n"
                      "[Default_Table2]\nName=NEVER\nColumns=1\nColumn1=A INTEGER\n")
        << QStringList{"log: processing Default section.", "log: ...processing table FIRST",
                       "table: FIRST | A INTEGER", "log: processing Default section."};
    QTest::newRow("type with an empty half is left out")
        << QByteArray("[Default]\nFieldTypes=3\nType1=\nType2=%B%\nType3=%C%\n%C%=INTEGER\n"
                      "Tables=1\n[Default_Table1]\nName=T\nColumns=1\nColumn1=A %B% %C%\n")
        << QStringList{"log: processing Default section.", "log: ...processing table T",
                       "table: T | A %B% INTEGER", "log: processing Default section."};
}

void DdlTest::unusualSections() {
    QFETCH(QByteArray, text);
    QFETCH(QStringList, expected);
    QCOMPARE(describe(schema::ReadSchemaWork(schema::IniFile::fromBytes(text),
                                             DatabaseDialect::Default)),
             expected);
}

QTEST_APPLESS_MAIN(DdlTest)
#include "ddl_test.moc"
