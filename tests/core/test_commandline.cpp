#include "core/commandline.h"

#include <QTemporaryDir>
#include <QTest>

using core::CommandLineValues;

class TestCommandLine : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString writeFile(const QString& name, const QByteArray& content) {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(path));
        file.write(content);
        return path;
    }

    static CommandLineValues parse(const QString& raw) {
        CommandLineValues values;
        core::ParseCommandLine(raw, values);
        return values;
    }

private Q_SLOTS:
    void splitsAtEveryQuote() {
        const QStringList pieces = core::SplitCommandLine(
            QStringLiteral(R"(C:\quillet.exe "ODBC=Assets" "SQL=select * from ASSETS" "/NOGUI")"));
        const QStringList expected{QStringLiteral("C:\\quillet.exe "),
                                   QStringLiteral("ODBC=Assets"),
                                   QStringLiteral(" "),
                                   QStringLiteral("SQL=select * from ASSETS"),
                                   QStringLiteral(" "),
                                   QStringLiteral("/NOGUI"),
                                   QString()};
        QCOMPARE(pieces, expected);
    }

    void rawLineQuotesEveryArgument() {
        QCOMPARE(core::RawCommandLine({QStringLiteral("/usr/bin/quillet"),
                                       QStringLiteral("ODBC=My DSN"), QStringLiteral("/NOGUI")}),
                 QStringLiteral(R"("/usr/bin/quillet" "ODBC=My DSN" "/NOGUI")"));
    }

    // What a command line sets: "name=value" for each value that differs from its default,
    // and the flags, in a fixed order.
    void values_data() {
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("set");
        const auto row = [](const char* name, const char* raw, const char* set) {
            QTest::newRow(name) << QString::fromUtf8(raw) << QString::fromUtf8(set);
        };
        row("quoted arguments",
            R"("q" "ODBC=Assets" "SQL=select * from ASSETS" "USER=Ann" "PWD=s3;cret" "DBTYPE=o9")",
            "dsn=Assets | sql=select * from ASSETS | user=Ann | pwd=s3;cret | dbtype=o9");
        row("unquoted arguments run together", "q ODBC=a SQL=b", "dsn=a SQL=b | sql=a SQL=b");
        row("keyword in lower case, value case kept", R"("q" "odbc=MyName")", "dsn=MyName");
        row("MSSQL= matches SQL=", R"("q" "MSSQL=x")", "sql=x");
        row("later pieces win", R"("q" "ODBC=a" "ODBC=b")", "dsn=b");
        row("keyword anywhere in the piece", R"("q" "my ODBC=x")", "dsn=x");
        row("value after the first equals sign", R"("q" "SQL=select * from T where A='=' ")",
            "sql=select * from T where A='=' ");
        row("a piece matching two keywords", R"("q" "USER=ODBC=x")", "dsn=ODBC=x | user=ODBC=x");
        row("empty values", R"("q" "ODBC=" "USER=" "PWD=")", "");
        row("a quote inside a value cuts it", R"("q" "SQL=select "x" from T")", "sql=select ");
        row("report and template change nothing", R"("q" "REPORT=r.htm" "TEMPLATE=t.htm")", "");
        row("nogui and create", R"("q" "/nogui" "/CREATE")", "nogui | create");
        row("create with a file", R"("q" "CREATE=schema.def")", "create | tabledef=schema.def");
        row("type import", R"("q" "TYPES=types.aty" "DELIM=||" "STARTROW=12abc")",
            "types=types.aty | delim=|| | startrow=12");
        row("start row without digits", R"("q" "STARTROW=abc")", "startrow=0");
        row("start row beyond int", R"("q" "STARTROW=99999999999")", "startrow=2147483647");
        row("title and log only when given", R"("q" "TITLE=Stores" "LOG=/tmp/run.log" "TITLE=")",
            "title= | log=/tmp/run.log");
    }

    void values() {
        QFETCH(QString, raw);
        const CommandLineValues v = parse(raw);
        const CommandLineValues initial;
        QStringList set;
        const auto add = [&set](const char* name, const QString& value, const QString& init) {
            if (value != init)
                set << QLatin1String(name) + QLatin1Char('=') + value;
        };
        add("dsn", v.dataSourceName, initial.dataSourceName);
        add("sql", v.sqlText, initial.sqlText);
        add("user", v.userName, initial.userName);
        add("pwd", v.password, initial.password);
        add("dbtype", v.databaseType, initial.databaseType);
        if (v.title)
            set << QStringLiteral("title=") + *v.title;
        if (v.logFilePath)
            set << QStringLiteral("log=") + *v.logFilePath;
        if (v.noGui)
            set << QStringLiteral("nogui");
        if (v.create)
            set << QStringLiteral("create");
        add("tabledef", v.tableDefinitionPath, initial.tableDefinitionPath);
        add("types", v.assetTypeFile, initial.assetTypeFile);
        add("delim", v.delimiter, initial.delimiter);
        add("startrow", QString::number(v.startRow), QString::number(initial.startRow));
        QTEST(set.join(QLatin1String(" | ")), "set");
    }

    void sqlFromFile_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("sql");
        QTest::newRow("LF lines") << QByteArray("select *\nfrom ASSETS\n")
                                  << "select *\r\nfrom ASSETS\r\n";
        QTest::newRow("CR LF lines, no final break")
            << QByteArray("select *\r\nfrom ASSETS") << "select *\r\nfrom ASSETS\r\n";
        QTest::newRow("CR lines and an empty line") << QByteArray("a\r\rb") << "a\r\n\r\nb\r\n";
        QTest::newRow("empty file") << QByteArray() << "";
    }

    void sqlFromFile() {
        QFETCH(QByteArray, content);
        const QString path = writeFile(QStringLiteral("query.sql"), content);
        QTEST(parse(QStringLiteral("\"q\" \"SQL=%1\"").arg(path)).sqlText, "sql");
    }

    void sqlNamingNoFileIsText() {
        const QString path = m_dir.filePath(QStringLiteral("missing.sql"));
        QCOMPARE(parse(QStringLiteral("\"q\" \"SQL=%1\"").arg(path)).sqlText, path);
        QCOMPARE(parse(QStringLiteral("\"q\" \"SQL=%1\"").arg(m_dir.path())).sqlText, m_dir.path());
    }
};

QTEST_APPLESS_MAIN(TestCommandLine)
#include "test_commandline.moc"
