// Unattended runs of the real program: command line in, log file, exit status,
// stderr and the remembered connection out.

#include "db/odbc/odbc.h"
#include "support/queryrows.h"
#include "support/testsupport.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QByteArray StartBanner = "....................  Program started  ....................";
const QByteArray EndBanner = "                     Program terminated                     ";

struct Run {
    int exitCode = -1;
    QByteArray log;
    QByteArray standardError;
    qint64 milliseconds = 0;
};

} // namespace

class TestNoGui : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_database;

    QString path(const QString& name) const { return m_dir.filePath(name); }

    void writeUserDsnFile() {
        QFile file(path(QStringLiteral("odbc.ini")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QStringLiteral("[QuilletNoGui]\nDriver=SQLite3\nDatabase=%1\nStepAPI=1\n\n"
                                  "[QuilletDown]\nDriver=PostgreSQL Unicode\n"
                                  "Servername=127.0.0.1\nPort=1\nDatabase=quillet\n")
                       .arg(m_database)
                       .toUtf8());
    }

    Run run(const QStringList& arguments, const QString& logName = QStringLiteral("run.log")) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("ODBCINI"), path(QStringLiteral("odbc.ini")));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral("config")));
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("en_US.UTF-8"));
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
        QFile::remove(path(logName));

        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_dir.path());
        QElapsedTimer timer;
        timer.start();
        process.start(QStringLiteral(QUILLET_BINARY), arguments);
        process.closeWriteChannel();
        if (!process.waitForFinished(60000))
            process.kill();
        Run result;
        result.milliseconds = timer.elapsed();
        result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        result.standardError = process.readAllStandardError();
        QFile log(path(logName));
        if (log.open(QIODevice::ReadOnly))
            result.log = log.readAll();
        return result;
    }

    // The log's messages, each checked for its time stamp and its " \r\n" end.
    static QList<QByteArray> messages(const QByteArray& log) {
        static const QRegularExpression entry(
            QStringLiteral(R"(^\d\d/\d\d/\d{4} \d\d:\d\d:\d\d > (.*) \r\n)"),
            QRegularExpression::DotMatchesEverythingOption |
                QRegularExpression::InvertedGreedinessOption);
        QList<QByteArray> result;
        QString rest = QString::fromUtf8(log);
        while (!rest.isEmpty()) {
            const QRegularExpressionMatch match = entry.match(rest);
            if (!match.hasMatch()) {
                result << QByteArray("<malformed: ") + rest.toUtf8() + '>';
                break;
            }
            result << match.captured(1).toUtf8();
            rest = rest.mid(match.capturedLength());
        }
        return result;
    }

    QString lastConnection(const QString& name) const {
        QSettings store(path(QStringLiteral("config/Marrowby/Quillet.conf")), QSettings::IniFormat);
        return store.value(QStringLiteral("LastConnection/") + name).toString();
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        m_database = path(QStringLiteral("assets.db"));
        db::odbc::Connection connection;
        connection.open(QStringLiteral("Driver=SQLite3;Database=") + m_database);
        connection.execute(QStringLiteral(
            "CREATE TABLE ASSETS (ID INTEGER PRIMARY KEY AUTOINCREMENT, ASSETTYPE VARCHAR(50))"));
        for (int i = 0; i < 3; ++i)
            connection.execute(QStringLiteral("INSERT INTO ASSETS (ASSETTYPE) VALUES ('PC')"));
        connection.execute(QStringLiteral("CREATE TABLE ASSETTYPES (ASSETTYPE VARCHAR(50) PRIMARY "
                                          "KEY, NODEREQUIRED VARCHAR(5))"));
        connection.execute(QStringLiteral("INSERT INTO ASSETTYPES VALUES ('PC', 'F')"));
        writeUserDsnFile();
    }

    void queryRunsOnceAndIsRemembered() {
        const QString log = path(QStringLiteral("run.log"));
        const Run result =
            run({QStringLiteral("/NOGUI"), QStringLiteral("ODBC=QuilletNoGui"),
                 QStringLiteral("USER=ann"), QStringLiteral("PWD=secret"),
                 QStringLiteral("SQL=select * from ASSETS"), QStringLiteral("LOG=") + log});
        QCOMPARE(result.standardError, QByteArray());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(messages(result.log), (QList<QByteArray>{StartBanner, EndBanner}));
        QCOMPARE(lastConnection(QStringLiteral("DSN")), QStringLiteral("QuilletNoGui"));
        QCOMPARE(lastConnection(QStringLiteral("UserName")), QStringLiteral("ann"));
        QCOMPARE(lastConnection(QStringLiteral("SQL")), QStringLiteral("select * from ASSETS"));
        QCOMPARE(lastConnection(QStringLiteral("Password")), QString());
        QFile settings(path(QStringLiteral("config/Marrowby/Quillet.conf")));
        QVERIFY(settings.open(QIODevice::ReadOnly));
        QVERIFY(!settings.readAll().contains("secret"));
    }

    void sqlFromAFile() {
        QFile sql(path(QStringLiteral("query.sql")));
        QVERIFY(sql.open(QIODevice::WriteOnly));
        sql.write("select ID\nfrom ASSETS\n");
        sql.close();
        const Run result =
            run({QStringLiteral("/NOGUI"), QStringLiteral("ODBC=QuilletNoGui"),
                 QStringLiteral("SQL=") + sql.fileName(), QStringLiteral("LOG=run.log")});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(lastConnection(QStringLiteral("SQL")),
                 QStringLiteral("select ID\r\nfrom ASSETS\r\n"));
    }

    void createsTheSchemaThenVerifiesIt() {
        const QString dsnDatabase = path(QStringLiteral("schema.db"));
        QFile::remove(dsnDatabase);
        QFile ini(path(QStringLiteral("odbc.ini")));
        QVERIFY(ini.open(QIODevice::Append));
        ini.write(QStringLiteral("\n[QuilletSchema]\nDriver=SQLite3\nDatabase=%1\n")
                      .arg(dsnDatabase)
                      .toUtf8());
        ini.close();
        const QStringList arguments{QStringLiteral("/NOGUI"), QStringLiteral("ODBC=QuilletSchema"),
                                    QStringLiteral("CREATE=" QUILLET_SOURCE_DIR "/data/table.def"),
                                    QStringLiteral("LOG=run.log")};
        const Run created = run(arguments);
        QCOMPARE(created.exitCode, 0);
        const QList<QByteArray> creation = messages(created.log);
        for (const char* table : {"ASSETS", "ASSETTYPES", "NODES"})
            QVERIFY(
                creation.contains(QByteArray("......table ") + table + " successfully created."));
        const Run verified = run(arguments);
        QCOMPARE(verified.exitCode, 0);
        const QList<QByteArray> verification = messages(verified.log);
        QVERIFY(!verification.contains("...Query:"));
        QVERIFY(verification.contains("......table NODES verification successfully finished."));
    }

    // The result box is left out; error boxes are printed and fail the run. The short last
    // row counts as an error and is still written with the value before the gap.
    void importsAssetTypes() {
        QVERIFY(
            testsupport::WriteFile(path(QStringLiteral("types.aty")),
                                   "ASSETTYPE;NODEREQUIRED\r\npc;T\r\nPrinter;F\r\nScanner\r\n"));
        const Run imported = run({"/NOGUI", "ODBC=QuilletNoGui", "TYPES=types.aty", "LOG=run.log"});
        QCOMPARE(imported.standardError, QByteArray());
        QCOMPARE(imported.exitCode, 0);
        QCOMPARE(messages(imported.log),
                 (QList<QByteArray>{StartBanner, "Starting asset types import...",
                                    "reading file: types.aty", "2 fields found",
                                    "1 asset type(s) imported, 1 error(s) occurred.", EndBanner}));
        db::odbc::Connection connection;
        connection.open(QStringLiteral("Driver=SQLite3;Database=") + m_database);
        QCOMPARE(testsupport::RowsText(connection, QStringLiteral("select * from ASSETTYPES "
                                                                  "order by ASSETTYPE")),
                 QStringLiteral("PC,F;Printer,F;Scanner,"));

        const Run missing = run({"/NOGUI", "ODBC=QuilletNoGui", "TYPES=gone.aty", "LOG=run.log"});
        QCOMPARE(missing.standardError, QByteArray("Error: cannot open file.\n"));
        QCOMPARE(missing.exitCode, 1);
    }

    // A table definition file that cannot be read, is too large or holds a count it cannot
    // hold ends the schema work at once with a clear message; the rest of the start-up goes on.
    void badTableDefinitionIsReported_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("folder") << m_dir.path() << QByteArray() << QByteArray("Cannot open file");
        QTest::newRow("endless device")
            << QStringLiteral("/dev/zero") << QByteArray() << QByteArray("is larger than");
        QTest::newRow("absurd column count")
            << path(QStringLiteral("absurd.def"))
            << QByteArray(
                   "[Default]\nTables=1\n[Default_Table1]\nName=ASSETS\nColumns=2000000000\n")
            << QByteArray("\"Columns=2000000000\" in section [Default_Table1]");
    }

    void badTableDefinitionIsReported() {
        QFETCH(QString, file);
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, message);
        if (!content.isEmpty())
            QVERIFY(testsupport::WriteFile(file, content));
        const Run result =
            run({QStringLiteral("/NOGUI"), QStringLiteral("ODBC=QuilletNoGui"),
                 QStringLiteral("CREATE=") + file, QStringLiteral("SQL=select * from NOPE"),
                 QStringLiteral("LOG=run.log")});
        QVERIFY2(result.milliseconds < 5000, "bad schema input must end within seconds");
        QCOMPARE(result.exitCode, 1);
        const QList<QByteArray> stderrLines = result.standardError.split('\n');
        QVERIFY2(stderrLines[0].startsWith("Table Creation Error: ") &&
                     stderrLines[0].contains(message),
                 result.standardError.constData());
        // The query runs after the schema work: its error follows.
        QVERIFY2(stderrLines[1].contains("no such table"), result.standardError.constData());
        const QList<QByteArray> logged = messages(result.log);
        QCOMPARE(logged.size(), 5);
        QCOMPARE(logged[1], "Table definition file: " + file.toUtf8());
        QCOMPARE(logged[2], stderrLines[0].mid(int(strlen("Table Creation Error: "))));
        QCOMPARE(logged.last(), EndBanner);
    }

    void logFileFromPreferencesUnlessGivenOnTheCommandLine() {
        const QString preferred = path(QStringLiteral("preferred.log"));
        QFile::remove(preferred);
        {
            QSettings store(path(QStringLiteral("config/Marrowby/Quillet.conf")),
                            QSettings::IniFormat);
            store.setValue(QStringLiteral("Preferences/KeepLog"), QStringLiteral("Yes"));
            store.setValue(QStringLiteral("Preferences/LogFile"), preferred);
        }
        const Run fromPreferences =
            run({QStringLiteral("/NOGUI")}, QStringLiteral("preferred.log"));
        QCOMPARE(fromPreferences.exitCode, 0);
        QCOMPARE(messages(fromPreferences.log),
                 (QList<QByteArray>{StartBanner, "no Data Source specified.", EndBanner}));

        QVERIFY(QFile::remove(preferred));
        const Run commandLineWins = run({QStringLiteral("/NOGUI"), QStringLiteral("LOG=run.log")});
        QCOMPARE(messages(commandLineWins.log).size(), 3);
        QFile log(preferred);
        QVERIFY(!log.exists());

        QSettings store(path(QStringLiteral("config/Marrowby/Quillet.conf")), QSettings::IniFormat);
        store.remove(QStringLiteral("Preferences"));
    }

    void failures_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("expectedMessage");

        QTest::newRow("no data source") << QStringList{"/NOGUI", "LOG=run.log"} << QByteArray();
        QTest::newRow("unknown data source")
            << QStringList{"/NOGUI", "ODBC=NoSuchDsn", "SQL=select 1", "LOG=run.log"}
            << QByteArray("Data source name not found");
        QTest::newRow("bad SQL") << QStringList{"/NOGUI", "ODBC=QuilletNoGui",
                                                "SQL=selec * fro ASSETS", "LOG=run.log"}
                                 << QByteArray("syntax error");
        QTest::newRow("unknown table")
            << QStringList{"/NOGUI", "ODBC=QuilletNoGui", "SQL=select * from NOPE", "LOG=run.log"}
            << QByteArray("no such table");
        QTest::newRow("unreachable server")
            << QStringList{"/NOGUI", "ODBC=QuilletDown", "SQL=select 1", "LOG=run.log"}
            << QByteArray("127.0.0.1");
    }

    void failures() {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, expectedMessage);
        const Run result = run(arguments);
        QVERIFY2(result.milliseconds < 20000, "an unattended failure must end within seconds");
        const QList<QByteArray> logged = messages(result.log);
        QCOMPARE(logged.first(), StartBanner);
        QCOMPARE(logged.last(), EndBanner);
        if (expectedMessage.isEmpty()) {
            QCOMPARE(logged,
                     (QList<QByteArray>{StartBanner, "no Data Source specified.", EndBanner}));
            QCOMPARE(result.exitCode, 0);
            QCOMPARE(result.standardError, QByteArray());
            return;
        }
        QCOMPARE(logged.size(), 3);
        QVERIFY2(logged[1].contains(expectedMessage), logged[1].constData());
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.standardError, "Error: " + logged[1] + '\n');
    }

    // A log that cannot be created or written, or whose path is too long, fails the run. A
    // failing write is reported once, however many entries it loses; a file that cannot be
    // created is also the error of the start-up step whose entry raised it.
    void unwritableLogIsAnError_data() {
        QTest::addColumn<QString>("log");
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<int>("reports");
        QTest::newRow("no such folder")
            << path(QStringLiteral("no/such/run.log")) << QByteArray("Cannot create file") << 2;
        QTest::newRow("full disk")
            << QStringLiteral("/dev/full")
            << QByteArray("Error: Cannot write to file \"/dev/full\". ") << 1;
        QTest::newRow("path too long")
            << path(QString(300, QLatin1Char('x')))
            << QByteArray("Error: The log file path is longer than 255 characters.\n") << 1;
    }

    void unwritableLogIsAnError() {
        QFETCH(QString, log);
        QFETCH(QByteArray, message);
        QFETCH(int, reports);
        const Run result = run({QStringLiteral("/NOGUI"), QStringLiteral("LOG=") + log});
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.standardError.startsWith("Error: ") &&
                     result.standardError.count(message) == reports &&
                     result.standardError.count('\n') == reports,
                 result.standardError.constData());
    }

    void serverDatabase() {
        bool ranOne = false;
        for (const auto kind : {testsupport::Server::PostgreSql, testsupport::Server::MariaDb}) {
            const testsupport::TestDatabase server = testsupport::ServerDsn(kind);
            if (!server.isAvailable())
                continue;
            ranOne = true;
            const Run result = run(
                {QStringLiteral("/NOGUI"), QStringLiteral("ODBC=") + server.dsn,
                 QStringLiteral("USER=") + server.user, QStringLiteral("PWD=") + server.password,
                 QStringLiteral("SQL=select 1 as ONE"), QStringLiteral("LOG=run.log")});
            QVERIFY2(result.exitCode == 0, result.standardError.constData());
            QCOMPARE(messages(result.log), (QList<QByteArray>{StartBanner, EndBanner}));
            QCOMPARE(lastConnection(QStringLiteral("DSN")), server.dsn);
        }
        if (!ranOne)
            QSKIP("no database server is configured for the tests");
    }
};

QTEST_GUILESS_MAIN(TestNoGui)
#include "test_nogui.moc"
