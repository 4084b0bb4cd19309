#include "schema/ddl.h"
#include "schema/inifile.h"
#include "schema/tabledefinition.h"

#include <QTest>

using db::DatabaseDialect;
using schema::SchemaWorkItem;

Q_DECLARE_METATYPE(schema::TypeMap)
Q_DECLARE_METATYPE(DatabaseDialect)

namespace {

// The work read from the file as text, one line per item, for golden comparisons.
// A refused file gives the one line "error: " + the message.
QStringList describe(const QByteArray& file, DatabaseDialect dialect) {
    std::vector<SchemaWorkItem> work;
    try {
        work = schema::ReadSchemaWork(schema::IniFile::fromBytes(file), dialect);
    } catch (const schema::IniFileError& error) {
        return {QStringLiteral("error: ") + QString::fromUtf8(error.what())};
    }
    QStringList lines;
    for (const SchemaWorkItem& item : work) {
        switch (item.kind) {
        case SchemaWorkItem::Kind::LogEntry:
            lines << "log: " + item.text;
            break;
        case SchemaWorkItem::Kind::Table:
            lines << "table: " + item.text + " | " + item.columns.join(" | ");
            break;
        case SchemaWorkItem::Kind::Statement:
            lines << "statement: " + item.text;
            break;
        }
    }
    return lines;
}

// The small file of the table definition file's documentation.
const QByteArray ExampleFile = "[Default]\n"
                               "FieldTypes=2\nType1=TEXT50\nType2=NUMBER10\n"
                               "TEXT50=VARCHAR(50)\nNUMBER10=INTEGER\nTables=1\nQueries=1\n"
                               "[Oracle]\n"
                               "TEXT50=VARCHAR2(50)\nNUMBER10=NUMBER(10)\nTables=0\n"
                               "[Default_Table1]\n"
                               "Name=ASSETS\nColumns=2\n"
                               "Column1=USR_LOCATION TEXT50\nColumn2=USR_FLOOR NUMBER10\n"
                               "[Default_Query1]\n"
                               "Rows=2\nRow1=UPDATE ASSETS\nRow2=SET USR_FLOOR = 0\n";

} // namespace

class DdlTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Each pair replaces the first occurrence of its generic name, case-sensitive, anywhere.
    void mapColumnTypes_data() {
        QTest::addColumn<QString>("definition");
        QTest::addColumn<schema::TypeMap>("types");
        QTest::addColumn<QString>("expected");
        const schema::TypeMap oracle = {{"TEXT50", "VARCHAR2(50)"}, {"NUMBER10", "NUMBER(10)"}};
        const auto row = [](const char* name, const QString& definition,
                            const schema::TypeMap& types, const QString& expected) {
            QTest::newRow(name) << definition << types << expected;
        };
        row("no generic name", "USR_FLOOR INTEGER", oracle, "USR_FLOOR INTEGER");
        row("first occurrence only", "A TEXT50 DEFAULT 'TEXT50'", oracle,
            "A VARCHAR2(50) DEFAULT 'TEXT50'");
        row("inside the column name comes first", "USR_TEXT50 TEXT50", oracle,
            "USR_VARCHAR2(50) TEXT50");
        row("case-sensitive", "A text50", oracle, "A text50");
        row("each pair once, in order", "A TEXT50, B NUMBER10 NOT NULL, C TEXT50", oracle,
            "A VARCHAR2(50), B NUMBER(10) NOT NULL, C TEXT50");
        row("a later pair sees the earlier replacement", "A MONEY",
            {{"MONEY", "DOUBLE X"}, {"X", "PRECISION"}}, "A DOUBLE PRECISION");
        row("an earlier pair does not see a later one", "A X",
            {{"MONEY", "DOUBLE"}, {"X", "MONEY"}}, "A MONEY");
    }
    void mapColumnTypes() {
        QFETCH(QString, definition);
        QFETCH(schema::TypeMap, types);
        QTEST(schema::MapColumnTypes(definition, types), "expected");
    }

    void statementTexts() {
        QCOMPARE(schema::ColumnNameOf("ID INTEGER NOT NULL"), QStringLiteral("ID"));
        QCOMPARE(schema::ColumnNameOf("USR_FLOOR"), QStringLiteral("USR_FLOOR"));
        QCOMPARE(schema::ColumnNameOf("USR_FLOOR\tINTEGER"), QStringLiteral("USR_FLOOR\tINTEGER"));
        QCOMPARE(schema::CreateTableStatement("T", {"A VARCHAR(5) NOT NULL", "B INTEGER"}),
                 QStringLiteral("CREATE TABLE T (A VARCHAR(5) NOT NULL, B INTEGER)"));
        for (const DatabaseDialect dialect : {DatabaseDialect::Default, DatabaseDialect::Oracle})
            QCOMPARE(schema::AddColumnStatement("T", "X INT", dialect),
                     QStringLiteral("ALTER TABLE T ADD X INT"));
        QCOMPARE(schema::AddColumnStatement("T", "X INT", DatabaseDialect::Access),
                 QStringLiteral("ALTER TABLE T ADD COLUMN X INT"));
        // Every CR, LF and TAB becomes a blank; nothing else changes.
        QCOMPARE(schema::ExecutableStatementText("UPDATE T\r\nSET A\n=\r'a;b'\t\"T\""),
                 QStringLiteral("UPDATE T  SET A = 'a;b' \"T\""));
    }

    // The work read from a file for a dialect: Default runs the Default section twice,
    // another dialect the Default section and then its own; the types take their native
    // text from the dialect's section.
    void schemaWork_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<DatabaseDialect>("dialect");
        QTest::addColumn<QStringList>("expected");
        const auto example = [](const QString& columns, const QString& second) {
            return QStringList{"log: processing Default section.",
                               "log: ...processing table ASSETS",
                               "table: ASSETS | " + columns,
                               "log: ...processing SQL query Default_Query1",
                               "statement: UPDATE ASSETS\r\nSET USR_FLOOR = 0",
                               "log: processing " + second + " section."};
        };
        QTest::newRow("example, Default")
            << ExampleFile << DatabaseDialect::Default
            << example("USR_LOCATION VARCHAR(50) | USR_FLOOR INTEGER", "Default");
        QTest::newRow("example, Oracle")
            << ExampleFile << DatabaseDialect::Oracle
            << example("USR_LOCATION VARCHAR2(50) | USR_FLOOR NUMBER(10)", "Oracle");
        // No MSSQL section: the generic names have no native text and stay as they are.
        QTest::newRow("example, SqlServer")
            << ExampleFile << DatabaseDialect::SqlServer
            << example("USR_LOCATION TEXT50 | USR_FLOOR NUMBER10", "MSSQL");
        const QByteArray oracle =
            "[Default]\nFieldTypes=1\nType1=%TEXT%\n%TEXT%=VARCHAR(20)\nTables=1\n"
            "[Oracle]\nFieldTypes=1\nType1=%TEXT%\n%TEXT%=VARCHAR2(20)\nTables=2\nQueries=1\n"
            "[Default_Table1]\nName=NODES\nColumns=1\nColumn1=NODENAME %TEXT%\n"
            "[Oracle_Table1]\nName=ORA_EXTRA\nColumns=1\nColumn1=NOTE %TEXT%\n"
            "[Oracle_Table2]\nName=  \nColumns=1\nColumn1=NOTE %TEXT%\n"
            "[Oracle_Query1]\nRows=1\nRow1=COMMENT ON TABLE NODES IS 'n'\n";
        QTest::newRow("Oracle: both passes with Oracle types")
            << oracle << DatabaseDialect::Oracle
            << QStringList{"log: processing Default section.",
                           "log: ...processing table NODES",
                           "table: NODES | NODENAME VARCHAR2(20)",
                           "log: processing Oracle section.",
                           "log: ...processing table ORA_EXTRA",
                           "table: ORA_EXTRA | NOTE VARCHAR2(20)",
                           "log: ...processing SQL query Oracle_Query1",
                           "statement: COMMENT ON TABLE NODES IS 'n'"};
        const auto row = [](const char* name, const QByteArray& text, const QStringList& lines) {
            const QString pass = QStringLiteral("log: processing Default section.");
            QTest::newRow(name) << text << DatabaseDialect::Default
                                << QStringList{pass} + lines + QStringList{pass};
        };
        row("Default never reads the Oracle section", oracle,
            {"log: ...processing table NODES", "table: NODES | NODENAME VARCHAR(20)"});
        const QString noDefinitions = QStringLiteral("log: .......no column definitions found.");
        row("table without a name is skipped silently",
            "[Default]\nTables=2\n[Default_Table1]\nColumns=1\nColumn1=A INTEGER\n"
            "[Default_Table2]\nName=T\nColumns=1\nColumn1=A INTEGER\n",
            {"log: ...processing table T", "table: T | A INTEGER"});
        row("Columns missing, zero, negative, not a number",
            "[Default]\nTables=4\n[Default_Table1]\nName=T1\n"
            "[Default_Table2]\nName=T2\nColumns=0\nColumn1=A X\n"
            "[Default_Table3]\nName=T3\nColumns=-1\nColumn1=A X\n"
            "[Default_Table4]\nName=T4\nColumns=two\nColumn1=A X\n",
            {"log: ...processing table T1", noDefinitions, "log: ...processing table T2",
             noDefinitions, "log: ...processing table T3", noDefinitions,
             "log: ...processing table T4", noDefinitions});
        row("empty column lines skipped, none left",
            "[Default]\nTables=2\n[Default_Table1]\nName=T\nColumns=4\n"
            "Column1=\nColumn2=A INTEGER\nColumn3=   \nColumn4=B INTEGER\n"
            "[Default_Table2]\nName=U\nColumns=2\nColumn1=\n",
            {"log: ...processing table T", "table: T | A INTEGER | B INTEGER",
             "log: ...processing table U", "log: .......no columns found."});
        row("Tables negative, Queries not a number",
            "[Default]\nTables=-2\nQueries=x1\n[Default_Table1]\nName=T\nColumns=1\n"
            "Column1=A INTEGER\n[Default_Query1]\nRows=1\nRow1=SELECT 1\n",
            {});
        row("Rows missing, zero, not a number, all empty",
            "[Default]\nQueries=4\n[Default_Query2]\nRows=0\nRow1=SELECT 1\n"
            "[Default_Query3]\nRows=many\n[Default_Query4]\nRows=2\nRow2=\n",
            {"log: ...processing SQL query Default_Query1", "log: .......no Query rows found.",
             "log: ...processing SQL query Default_Query2", "log: .......no Query rows found.",
             "log: ...processing SQL query Default_Query3", "log: .......no Query rows found.",
             "log: ...processing SQL query Default_Query4", "log: .......SQL query is empty."});
        row("empty rows dropped, the rest joined by CR LF",
            "[Default]\nQueries=1\n[Default_Query1]\nRows=4\n"
            "Row1=UPDATE T\nRow2=\nRow3=  SET A = 1  \nRow4=WHERE B = 2\n",
            {"log: ...processing SQL query Default_Query1",
             "statement: UPDATE T\r\nSET A = 1\r\nWHERE B = 2"});
        row("counts above the keys given; only the written numbers count",
            "[Default]\nTables=1\n[Default_Table1]\nName=T\nColumns=9\nColumn3=B X\n"
            "column1=A X\nColumn03=Z\nColumn+2=Y\nColumn10=W\n",
            {"log: ...processing table T", "table: T | A X | B X"});
        // A count above the lines of the file is refused before any work, whatever its size.
        const auto refused = [](const char* name, const QByteArray& text, const QString& error) {
            QTest::newRow(name) << text << DatabaseDialect::Default << QStringList{error};
        };
        refused("absurd column count",
                "[Default]\nTables=1\n[Default_Table1]\nName=T\nColumns=2000000000\n",
                "error: \"Columns=2000000000\" in section [Default_Table1] is more than the 5 "
                "sections and keys of the table definition file can hold.");
        refused("absurd type count", "[Default]\nFieldTypes=1001476\n",
                "error: \"FieldTypes=1001476\" in section [Default] is more than the 2 sections "
                "and keys of the table definition file can hold.");
        row("type with an empty half is left out",
            "[Default]\nFieldTypes=3\nType1=\nType2=%B%\nType3=%C%\n%C%=INTEGER\n"
            "Tables=1\n[Default_Table1]\nName=T\nColumns=1\nColumn1=A %B% %C%\n",
            {"log: ...processing table T", "table: T | A %B% INTEGER"});
    }
    void schemaWork() {
        QFETCH(QByteArray, text);
        QFETCH(DatabaseDialect, dialect);
        QTEST(describe(text, dialect), "expected");
    }
};

QTEST_APPLESS_MAIN(DdlTest)
#include "ddl_test.moc"
