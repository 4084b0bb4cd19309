#include "core/commandline.h"
#include "support/testsupport.h"

#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using testsupport::AddRow;

namespace {

// Every value as "name=value"; an unset optional value is left out.
QStringList describe(const core::CommandLineValues& v) {
    QStringList fields{"dsn=" + v.dataSourceName,
                       "sql=" + v.sqlText,
                       "user=" + v.userName,
                       "pwd=" + v.password,
                       "dbtype=" + v.databaseType,
                       "nogui=" + QString::number(v.noGui),
                       "create=" + QString::number(v.create),
                       "def=" + v.tableDefinitionPath,
                       "types=" + v.assetTypeFile,
                       "delim=" + v.delimiter,
                       "startrow=" + QString::number(v.startRow)};
    if (v.title)
        fields << "title=" + *v.title;
    if (v.logFilePath)
        fields << "log=" + *v.logFilePath;
    return fields;
}

} // namespace

class TestCommandLine : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    void splitAndJoin() {
        QCOMPARE(core::SplitCommandLine(
                     R"(C:\quillet.exe "ODBC=Assets" "SQL=select * from ASSETS" "/NOGUI")"),
                 QStringList({"C:\\quillet.exe ", "ODBC=Assets", " ", "SQL=select * from ASSETS",
                              " ", "/NOGUI", ""}));
        QCOMPARE(core::RawCommandLine({"/usr/bin/quillet", "ODBC=My DSN", "/NOGUI"}),
                 QStringLiteral(R"("/usr/bin/quillet" "ODBC=My DSN" "/NOGUI")"));
    }

    // `changed`: the values that differ from the defaults.
    void parse_data() {
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QStringList>("changed");
        AddRow("quoted arguments",
               R"("q" "ODBC=Assets" "SQL=select * from ASSETS" "USER=Ann" "PWD=s3;cret" )"
               R"("DBTYPE=oracle9")",
               QStringList{"dsn=Assets", "sql=select * from ASSETS", "user=Ann", "pwd=s3;cret",
                           "dbtype=oracle9"});
        AddRow("unquoted arguments run together", "q ODBC=a SQL=b",
               QStringList{"dsn=a SQL=b", "sql=a SQL=b"});
        AddRow("keyword in lower case, value case kept", R"("q" "odbc=MyName")",
               QStringList{"dsn=MyName"});
        AddRow("MSSQL= matches SQL=", R"("q" "MSSQL=x")", QStringList{"sql=x"});
        AddRow("later pieces win", R"("q" "ODBC=a" "ODBC=b")", QStringList{"dsn=b"});
        AddRow("keyword anywhere in the piece", R"("q" "my ODBC=x")", QStringList{"dsn=x"});
        AddRow("value after the first equals sign", R"("q" "SQL=select * from T where A='=' ")",
               QStringList{"sql=select * from T where A='=' "});
        AddRow("a piece matching two keywords", R"("q" "USER=ODBC=x")",
               QStringList{"dsn=ODBC=x", "user=ODBC=x"});
        AddRow("empty values", R"("q" "ODBC=" "USER=" "PWD=")", QStringList{});
        AddRow("a quote inside a value cuts it", R"("q" "SQL=select "x" from T")",
               QStringList{"sql=select "});
        AddRow("report and template change nothing", R"("q" "REPORT=r.htm" "TEMPLATE=t.htm")",
               QStringList{});
        AddRow("nogui and create", R"("q" "/nogui" "/CREATE")", QStringList{"nogui=1", "create=1"});
        AddRow("create with a file", R"("q" "CREATE=schema.def")",
               QStringList{"create=1", "def=schema.def"});
        AddRow("type import", R"("q" "TYPES=types.aty" "DELIM=||" "STARTROW=12abc")",
               QStringList{"types=types.aty", "delim=||", "startrow=12"});
        AddRow("start row without digits", R"("q" "STARTROW=abc")", QStringList{"startrow=0"});
        AddRow("start row beyond int", R"("q" "STARTROW=99999999999")",
               QStringList{"startrow=2147483647"});
        AddRow("title and log only when given, empty title",
               R"("q" "TITLE=S" "LOG=/r.log" "TITLE=")", QStringList{"title=", "log=/r.log"});
    }
    void parse() {
        QFETCH(QString, raw);
        QFETCH(QStringList, changed);
        QStringList expected = describe({});
        for (const QString& value : changed) {
            const QString name = value.section('=', 0, 0) + '=';
            const auto it = std::find_if(expected.begin(), expected.end(),
                                         [&](const QString& f) { return f.startsWith(name); });
            if (it == expected.end())
                expected << value;
            else
                *it = value;
        }
        core::CommandLineValues values;
        core::ParseCommandLine(raw, values);
        QCOMPARE(describe(values), expected);
    }

    // Lines end in CR LF; a name of no file is the text itself.
    void sqlFromFile_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("sql");
        AddRow("LF lines", QByteArray("select *\nfrom ASSETS\n"), "select *\r\nfrom ASSETS\r\n");
        AddRow("CR LF lines, no final break", QByteArray("select *\r\nfrom ASSETS"),
               "select *\r\nfrom ASSETS\r\n");
        AddRow("CR lines and an empty line", QByteArray("a\r\rb"), "a\r\n\r\nb\r\n");
        AddRow("empty file", QByteArray(), "");
        AddRow("no such file", QByteArray(), "missing");
        AddRow("a folder", QByteArray(), "");
    }
    void sqlFromFile() {
        QFETCH(QByteArray, content);
        QFETCH(QString, sql);
        QString path = m_dir.filePath(QTest::currentDataTag());
        if (sql == QLatin1String("missing"))
            sql = path;
        else if (QTest::currentDataTag() == QLatin1String("a folder"))
            sql = path = m_dir.path();
        else
            QVERIFY(testsupport::WriteFile(path, content));
        core::CommandLineValues values;
        core::ParseCommandLine(QStringLiteral("\"q\" \"SQL=%1\"").arg(path), values);
        QCOMPARE(values.sqlText, sql);
    }
};

QTEST_APPLESS_MAIN(TestCommandLine)
#include "test_commandline.moc"
