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

    void textValues_data() {
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("dsn");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("databaseType");

        QTest::newRow("quoted arguments")
            << R"("q" "ODBC=Assets" "SQL=select * from ASSETS" "USER=Ann" "PWD=s3;cret" "DBTYPE=oracle9")"
            << "Assets"
            << "select * from ASSETS"
            << "Ann"
            << "s3;cret"
            << "oracle9";
        QTest::newRow("unquoted arguments run together") << "q ODBC=a SQL=b"
                                                         << "a SQL=b"
                                                         << "a SQL=b"
                                                         << ""
                                                         << ""
                                                         << "";
        QTest::newRow("keyword in lower case, value case kept") << R"("q" "odbc=MyName")"
                                                                << "MyName"
                                                                << ""
                                                                << ""
                                                                << ""
                                                                << "";
        QTest::newRow("MSSQL= matches SQL=") << R"("q" "MSSQL=x")"
                                             << ""
                                             << "x"
                                             << ""
                                             << ""
                                             << "";
        QTest::newRow("later pieces win") << R"("q" "ODBC=a" "ODBC=b")"
                                          << "b"
                                          << ""
                                          << ""
                                          << ""
                                          << "";
        QTest::newRow("keyword anywhere in the piece") << R"("q" "my ODBC=x")"
                                                       << "x"
                                                       << ""
                                                       << ""
                                                       << ""
                                                       << "";
        QTest::newRow("value after the first equals sign")
            << R"("q" "SQL=select * from T where A='=' ")"
            << ""
            << "select * from T where A='=' "
            << ""
            << ""
            << "";
        QTest::newRow("a piece matching two keywords") << R"("q" "USER=ODBC=x")"
                                                       << "ODBC=x"
                                                       << ""
                                                       << "ODBC=x"
                                                       << ""
                                                       << "";
        QTest::newRow("empty values") << R"("q" "ODBC=" "USER=" "PWD=")"
                                      << ""
                                      << ""
                                      << ""
                                      << ""
                                      << "";
        QTest::newRow("a quote inside a value cuts it") << R"("q" "SQL=select "x" from T")"
                                                        << ""
                                                        << "select "
                                                        << ""
                                                        << ""
                                                        << "";
        QTest::newRow("report and template change nothing")
            << R"("q" "REPORT=r.htm" "TEMPLATE=t.htm")"
            << ""
            << ""
            << ""
            << ""
            << "";
    }

    void textValues() {
        QFETCH(QString, raw);
        const CommandLineValues values = parse(raw);
        QTEST(values.dataSourceName, "dsn");
        QTEST(values.sqlText, "sql");
        QTEST(values.userName, "user");
        QTEST(values.password, "password");
        QTEST(values.databaseType, "databaseType");
    }

    void flagsAndStartupValues_data() {
        QTest::addColumn<QString>("raw");
        QTest::addColumn<bool>("noGui");
        QTest::addColumn<bool>("create");
        QTest::addColumn<QString>("tableDefinition");
        QTest::addColumn<QString>("types");
        QTest::addColumn<QString>("delimiter");
        QTest::addColumn<int>("startRow");

        QTest::newRow("defaults") << R"("q")" << false << false << "table.def"
                                  << ""
                                  << ";" << 1;
        QTest::newRow("nogui and create")
            << R"("q" "/nogui" "/CREATE")" << true << true << "table.def"
            << ""
            << ";" << 1;
        QTest::newRow("create with a file")
            << R"("q" "CREATE=schema.def")" << false << true << "schema.def"
            << ""
            << ";" << 1;
        QTest::newRow("type import") << R"("q" "TYPES=types.aty" "DELIM=||" "STARTROW=12abc")"
                                     << false << false << "table.def"
                                     << "types.aty"
                                     << "||" << 12;
        QTest::newRow("start row without digits")
            << R"("q" "STARTROW=abc")" << false << false << "table.def"
            << ""
            << ";" << 0;
        QTest::newRow("start row beyond int")
            << R"("q" "STARTROW=99999999999")" << false << false << "table.def"
            << ""
            << ";" << 2147483647;
    }

    void flagsAndStartupValues() {
        QFETCH(QString, raw);
        const CommandLineValues values = parse(raw);
        QTEST(values.noGui, "noGui");
        QTEST(values.create, "create");
        QTEST(values.tableDefinitionPath, "tableDefinition");
        QTEST(values.assetTypeFile, "types");
        QTEST(values.delimiter, "delimiter");
        QTEST(values.startRow, "startRow");
    }

    void titleAndLogAreSetOnlyWhenGiven() {
        const CommandLineValues none = parse(QStringLiteral(R"("q" "ODBC=x")"));
        QVERIFY(!none.title);
        QVERIFY(!none.logFilePath);
        const CommandLineValues both =
            parse(QStringLiteral(R"("q" "TITLE=Stores" "LOG=/tmp/run.log" "TITLE=")"));
        QCOMPARE(both.title, QString());
        QCOMPARE(both.logFilePath, QStringLiteral("/tmp/run.log"));
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
