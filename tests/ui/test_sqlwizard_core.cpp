// The headless SQL wizard client: the failure report's text, the plugin search and the
// calls into real plugin libraries built for the tests.

#include "db/sqlwizard.h"
#include "db/sqlwizard_interface.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString CallText =
    QStringLiteral("this->GetSQL(dsn, user, password, sql, nlq, nlqtext, (BSTR*)&sqltext)");

QString workingPluginDir() {
    return QStringLiteral(QUILLET_TEST_WIZARD_DIR);
}
QString noEntryPluginDir() {
    return QStringLiteral(QUILLET_TEST_WIZARD_NOENTRY_DIR);
}

QStringList readLines(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

} // namespace

class TestSqlWizardCore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        qunsetenv("QUILLET_TEST_SQLWIZARD_MODE");
        qunsetenv("QUILLET_TEST_SQLWIZARD_CODE");
        qunsetenv("QUILLET_TEST_SQLWIZARD_SQL");
        qunsetenv("QUILLET_TEST_SQLWIZARD_RECORD");
    }

    void systemMessageText_data() {
        QTest::addColumn<qint32>("code");
        QTest::addColumn<QString>("text");
        QTest::newRow("unspecified") << ORV_E_FAIL << QStringLiteral("Unspecified error");
        QTest::newRow("no interface")
            << ORV_E_NOINTERFACE << QStringLiteral("No such interface supported");
        QTest::newRow("class not registered")
            << ORV_E_CLASSNOTREG << QStringLiteral("Class not registered");
        QTest::newRow("no entry point")
            << ORV_E_CLASSNOTAVAILABLE
            << QStringLiteral("ClassFactory cannot supply requested class");
        QTest::newRow("catastrophic") << ORV_E_UNEXPECTED << QStringLiteral("Catastrophic failure");
        QTest::newRow("invalid argument")
            << ORV_E_INVALIDARG << QStringLiteral("The parameter is incorrect.");
        QTest::newRow("cancelled")
            << ORV_E_CANCELLED << QStringLiteral("The operation was canceled by the user.");
        QTest::newRow("unknown failure") << qint32(0x80041234u) << QString();
        QTest::newRow("small negative") << qint32(-5) << QString();
        QTest::newRow("success") << ORV_S_OK << QString();
    }
    void systemMessageText() {
        QFETCH(qint32, code);
        QFETCH(QString, text);
        QCOMPARE(db::SystemMessageText(code), text);
    }

    void formatPrintf_data() {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QVariantList>("arguments");
        QTest::addColumn<QString>("expected");
        QTest::newRow("texts and decimal")
            << QStringLiteral("'%s': %s @ %s/%d")
            << QVariantList{QStringLiteral("call"), QStringLiteral("message"),
                            QStringLiteral("src"), 147}
            << QStringLiteral("'call': message @ src/147");
        QTest::newRow("hex and long decimal")
            << QStringLiteral("(%s) Error: %lX (%ld) @ %s/%d")
            << QVariantList{QStringLiteral("c"), qint32(0x80004005u), qint32(0x80004005u),
                            QStringLiteral("s"), 1}
            << QStringLiteral("(c) Error: 80004005 (-2147467259) @ s/1");
        QTest::newRow("small negative in hex")
            << QStringLiteral("%X|%d") << QVariantList{qint32(-5), qint32(-5)}
            << QStringLiteral("FFFFFFFB|-5");
        QTest::newRow("percent sign")
            << QStringLiteral("100%% %s") << QVariantList{QStringLiteral("done")}
            << QStringLiteral("100% done");
        QTest::newRow("missing arguments left out")
            << QStringLiteral("a%sb%dc") << QVariantList{} << QStringLiteral("abc");
        QTest::newRow("number for text")
            << QStringLiteral("[%s]") << QVariantList{qint32(42)} << QStringLiteral("[42]");
        QTest::newRow("text for number")
            << QStringLiteral("[%lX]") << QVariantList{QStringLiteral("x")}
            << QStringLiteral("[x]");
        QTest::newRow("other conversion kept")
            << QStringLiteral("%f %lu %s") << QVariantList{QStringLiteral("t")}
            << QStringLiteral("%f %lu t");
        QTest::newRow("lone percent at the end")
            << QStringLiteral("50%") << QVariantList{} << QStringLiteral("50%");
        QTest::newRow("text with a percent sign is not read again")
            << QStringLiteral("%s/%d") << QVariantList{QStringLiteral("%d%s"), 3}
            << QStringLiteral("%d%s/3");
    }
    void formatPrintf() {
        QFETCH(QString, pattern);
        QFETCH(QVariantList, arguments);
        QFETCH(QString, expected);
        std::vector<db::FormatArgument> values;
        for (const QVariant& argument : arguments) {
            if (argument.typeId() == QMetaType::QString)
                values.emplace_back(argument.toString());
            else
                values.emplace_back(std::int32_t(argument.toInt()));
        }
        QCOMPARE(db::FormatPrintf(pattern, values), expected);
    }

    void hrcheckDescription_data() {
        QTest::addColumn<qint32>("code");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("expected");
        QTest::newRow("with the system's text")
            << ORV_E_FAIL << QStringLiteral("Unspecified error")
            << QStringLiteral("'") + CallText +
                   QStringLiteral("': Unspecified error @ sqlwizard_tlb/147");
        QTest::newRow("class not registered")
            << ORV_E_CLASSNOTREG << QStringLiteral("Class not registered")
            << QStringLiteral("'") + CallText +
                   QStringLiteral("': Class not registered @ sqlwizard_tlb/147");
        QTest::newRow("without a text")
            << qint32(0x80041234u) << QString()
            << QStringLiteral("(") + CallText +
                   QStringLiteral(") Error: 80041234 (-2147216844) @ sqlwizard_tlb/147");
        QTest::newRow("small negative without a text")
            << qint32(-1) << QString()
            << QStringLiteral("(") + CallText +
                   QStringLiteral(") Error: FFFFFFFF (-1) @ sqlwizard_tlb/147");
    }
    void hrcheckDescription() {
        QFETCH(qint32, code);
        QFETCH(QString, message);
        QFETCH(QString, expected);
        QCOMPARE(db::HrcheckDescription(QLatin1String(db::HrcheckMessagePattern),
                                        QLatin1String(db::HrcheckCodePattern),
                                        QLatin1String(db::SqlWizardCallText), code, message,
                                        QLatin1String(db::SqlWizardSourceName),
                                        db::SqlWizardSourceLine),
                 expected);
    }

    void defaultDirectories_data() {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("installed") << QStringLiteral("/opt/quillet/bin")
                                   << QStringList{QStringLiteral("/opt/quillet/bin"),
                                                  QStringLiteral("/opt/quillet/lib/quillet")};
        QTest::newRow("trailing slash")
            << QStringLiteral("/usr/bin/")
            << QStringList{QStringLiteral("/usr/bin"), QStringLiteral("/usr/lib/quillet")};
        QTest::newRow("root") << QStringLiteral("/")
                              << QStringList{QStringLiteral("/"), QStringLiteral("/lib/quillet")};
        QTest::newRow("dot segments") << QStringLiteral("/opt/./q/../quillet/bin")
                                      << QStringList{QStringLiteral("/opt/quillet/bin"),
                                                     QStringLiteral("/opt/quillet/lib/quillet")};
        QTest::newRow("relative")
            << QStringLiteral("build")
            << QStringList{QDir::current().absoluteFilePath(QStringLiteral("build")),
                           QDir::current().absoluteFilePath(QStringLiteral("lib/quillet"))};
    }
    void defaultDirectories() {
        QFETCH(QString, program);
        QFETCH(QStringList, expected);
        QCOMPARE(db::DefaultSqlWizardDirectories(program), expected);
    }

    void configuredDirectories() {
        const QStringList defaults = db::DefaultSqlWizardDirectories(QDir::currentPath());
        QCOMPARE(db::SqlWizardDirectories(), defaults);
        db::SetSqlWizardDirectories({QStringLiteral("/somewhere")});
        QCOMPARE(db::SqlWizardDirectories(), QStringList{QStringLiteral("/somewhere")});
        db::SetSqlWizardDirectories({});
        QCOMPARE(db::SqlWizardDirectories(), defaults);
    }

    void findLibrary() {
        QTemporaryDir root;
        QVERIFY(root.isValid());
        const QDir dir(root.path());
        for (const char* folder : {"a", "b", "c/libsqlwizard.so"})
            QVERIFY(dir.mkpath(QLatin1String(folder)));
        const QString a = dir.filePath(QStringLiteral("a"));
        const QString b = dir.filePath(QStringLiteral("b"));
        const QString c = dir.filePath(QStringLiteral("c"));
        const QString missing = dir.filePath(QStringLiteral("missing"));

        QCOMPARE(db::FindSqlWizardLibrary({}), QString());
        QCOMPARE(db::FindSqlWizardLibrary({a, b, missing}), QString());

        QFile second(dir.filePath(QStringLiteral("b/libsqlwizard.so")));
        QVERIFY(second.open(QIODevice::WriteOnly));
        second.close();
        QCOMPARE(db::FindSqlWizardLibrary({a, b}), second.fileName());
        // A folder of that name does not count, and an empty entry is passed over.
        QCOMPARE(db::FindSqlWizardLibrary({c, QString(), b}), second.fileName());

        QFile first(dir.filePath(QStringLiteral("a/libsqlwizard.so")));
        QVERIFY(first.open(QIODevice::WriteOnly));
        first.close();
        QCOMPARE(db::FindSqlWizardLibrary({a, b}), first.fileName());
        QCOMPARE(db::FindSqlWizardLibrary({b, a}), second.fileName());
    }

    void callSqlWizard_data() {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("directory");
        QTest::addColumn<qint32>("code");
        QTest::addColumn<QString>("sqlText");
        QTest::addColumn<bool>("called");

        const QString working = workingPluginDir();
        QTest::newRow("query") << QStringLiteral("sql") << working << ORV_S_OK
                               << QStringLiteral("SELECT ID, ASSETTYPE FROM ASSETS") << true;
        QTest::newRow("arguments as given")
            << QStringLiteral("echo") << working << ORV_S_OK
            << QStringLiteral("dsn=[ Inventory\t] user=[ admin ] password=[p;w\u00e9] "
                              "sql=[select 1] nlq=[7] nlqtext=[all assets]")
            << true;
        QTest::newRow("empty text")
            << QStringLiteral("empty") << working << ORV_S_OK << QString() << true;
        QTest::newRow("no text") << QStringLiteral("none") << working << ORV_S_OK << QString()
                                 << true;
        QTest::newRow("failure, its text ignored")
            << QStringLiteral("fail") << working << ORV_E_FAIL << QString() << true;
        QTest::newRow("exception from the call")
            << QStringLiteral("throw") << working << ORV_E_UNEXPECTED << QString() << true;
        QTest::newRow("creation fails")
            << QStringLiteral("nocreate") << working << ORV_E_FAIL << QString() << false;
        QTest::newRow("exception from the creation")
            << QStringLiteral("createthrow") << working << ORV_E_UNEXPECTED << QString() << false;
        QTest::newRow("created without an object")
            << QStringLiteral("noobject") << working << ORV_E_NOINTERFACE << QString() << false;
        QTest::newRow("no entry point") << QStringLiteral("sql") << noEntryPluginDir()
                                        << ORV_E_CLASSNOTAVAILABLE << QString() << false;
        QTest::newRow("no library")
            << QStringLiteral("sql") << QDir(working).filePath(QStringLiteral("nothing-here"))
            << ORV_E_CLASSNOTREG << QString() << false;
    }
    void callSqlWizard() {
        QFETCH(QString, mode);
        QFETCH(QString, directory);
        QFETCH(qint32, code);
        QFETCH(QString, sqlText);
        QFETCH(bool, called);

        QTemporaryDir scratch;
        QVERIFY(scratch.isValid());
        const QString recordPath = scratch.filePath(QStringLiteral("calls.txt"));
        qputenv("QUILLET_TEST_SQLWIZARD_MODE", mode.toUtf8());
        qputenv("QUILLET_TEST_SQLWIZARD_RECORD", recordPath.toUtf8());

        db::SqlWizardRequest request;
        request.dsn = QStringLiteral(" Inventory\t");
        request.user = QStringLiteral(" admin ");
        request.password = QStringLiteral("p;w\u00e9");
        request.sql = QStringLiteral("select 1");
        request.nlq = 7;
        request.nlqText = QStringLiteral("all assets");
        const db::SqlWizardOutcome outcome = db::CallSqlWizard({directory}, request);

        QCOMPARE(outcome.code, code);
        QCOMPARE(outcome.failed(), code < 0);
        QCOMPARE(outcome.sqlText, sqlText);
        QVERIFY(outcome.loaderError.isEmpty());
        if (code == ORV_E_CLASSNOTREG)
            QVERIFY(outcome.libraryPath.isEmpty());
        else
            QCOMPARE(outcome.libraryPath,
                     QDir(directory).absoluteFilePath(QStringLiteral("libsqlwizard.so")));

        const QStringList calls = readLines(recordPath);
        if (!called) {
            QVERIFY(calls.filter(QStringLiteral("dsn=")).isEmpty());
            return;
        }
        QCOMPARE(calls.size(), 2);
        QCOMPARE(calls.at(0),
                 QStringLiteral("dsn=[ Inventory\t] user=[ admin ] password=[p;w\u00e9] "
                                "sql=[select 1] nlq=[7] nlqtext=[all assets]"));
        // Every object released and every text given back.
        QCOMPARE(calls.at(1), QStringLiteral("released objects=0 texts=0"));
    }

    void failureCodeOfThePlugin_data() {
        QTest::addColumn<QByteArray>("configured");
        QTest::addColumn<qint32>("code");
        QTest::newRow("unknown code") << QByteArray("0x80041234") << qint32(0x80041234u);
        QTest::newRow("small negative") << QByteArray("-5") << qint32(-5);
        QTest::newRow("positive is success") << QByteArray("1") << ORV_S_FALSE;
    }
    void failureCodeOfThePlugin() {
        QFETCH(QByteArray, configured);
        QFETCH(qint32, code);
        qputenv("QUILLET_TEST_SQLWIZARD_MODE", "fail");
        qputenv("QUILLET_TEST_SQLWIZARD_CODE", configured);
        const db::SqlWizardOutcome outcome = db::CallSqlWizard({workingPluginDir()}, {});
        QCOMPARE(outcome.code, code);
        // A success code hands the text over even from this mode.
        QCOMPARE(outcome.sqlText.isEmpty(), code < 0);
    }

    void longQuery() {
        QString sql = QStringLiteral("SELECT ID FROM ASSETS WHERE ID IN (0");
        for (int i = 1; sql.size() < 20000; ++i)
            sql += QStringLiteral(", ") + QString::number(i);
        sql += QLatin1Char(')');
        qputenv("QUILLET_TEST_SQLWIZARD_SQL", sql.toUtf8());
        const db::SqlWizardOutcome outcome = db::CallSqlWizard({workingPluginDir()}, {});
        QCOMPARE(outcome.code, ORV_S_OK);
        QCOMPARE(outcome.sqlText, sql);
    }

    void libraryBesideTheProgram() {
        QTemporaryDir root;
        QVERIFY(root.isValid());
        const QDir dir(root.path());
        QVERIFY(dir.mkpath(QStringLiteral("bin")));
        QVERIFY(dir.mkpath(QStringLiteral("lib/quillet")));
        const QString program = dir.filePath(QStringLiteral("bin"));
        const QString installed = dir.filePath(QStringLiteral("lib/quillet/libsqlwizard.so"));
        QVERIFY(QFile::copy(QDir(workingPluginDir()).filePath(QStringLiteral("libsqlwizard.so")),
                            installed));

        qputenv("QUILLET_TEST_SQLWIZARD_SQL", "SELECT * FROM NODES");
        db::SqlWizardOutcome outcome =
            db::CallSqlWizard(db::DefaultSqlWizardDirectories(program), {});
        QCOMPARE(outcome.code, ORV_S_OK);
        QCOMPARE(outcome.libraryPath, installed);
        QCOMPARE(outcome.sqlText, QStringLiteral("SELECT * FROM NODES"));

        // One in the program's own folder comes first.
        const QString beside = dir.filePath(QStringLiteral("bin/libsqlwizard.so"));
        QVERIFY(QFile::copy(QDir(noEntryPluginDir()).filePath(QStringLiteral("libsqlwizard.so")),
                            beside));
        outcome = db::CallSqlWizard(db::DefaultSqlWizardDirectories(program), {});
        QCOMPARE(outcome.code, ORV_E_CLASSNOTAVAILABLE);
        QCOMPARE(outcome.libraryPath, beside);
    }

    void libraryThatDoesNotLoad_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty file") << QByteArray();
        QTest::newRow("text") << QByteArray("not a library\n");
        QTest::newRow("truncated ELF header") << QByteArray("\x7f"
                                                            "ELF\x02\x01\x01",
                                                            7);
    }
    void libraryThatDoesNotLoad() {
        QFETCH(QByteArray, content);
        QTemporaryDir root;
        QVERIFY(root.isValid());
        QFile file(root.filePath(QStringLiteral("libsqlwizard.so")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        const db::SqlWizardOutcome outcome = db::CallSqlWizard({root.path()}, {});
        QCOMPARE(outcome.code, ORV_E_ERRORINDLL);
        QCOMPARE(outcome.libraryPath, file.fileName());
        QVERIFY2(outcome.loaderError.contains(QStringLiteral("libsqlwizard.so")),
                 qPrintable(outcome.loaderError));
    }

    void tracerPid_data() {
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<long>("pid");
        QTest::newRow("not traced")
            << QByteArray("Name:\tquillet\nState:\tS (sleeping)\nTracerPid:\t0\nUid:\t0\n") << 0L;
        QTest::newRow("traced") << QByteArray("Name:\tquillet\nTracerPid:\t4242\nUid:\t1000\n")
                                << 4242L;
        QTest::newRow("last line without newline") << QByteArray("Name:\tx\nTracerPid:\t17") << 17L;
        QTest::newRow("line missing") << QByteArray("Name:\tx\nUid:\t0\n") << 0L;
        QTest::newRow("empty") << QByteArray() << 0L;
        QTest::newRow("garbage value") << QByteArray("TracerPid:\tabc\n") << 0L;
        QTest::newRow("similar key") << QByteArray("NotTracerPid:\t12\nTracerPid:\t0\n") << 0L;
    }
    void tracerPid() {
        QFETCH(QByteArray, status);
        QFETCH(long, pid);
        QCOMPARE(db::TracerPidFromStatus(status), pid);
    }
};

QTEST_APPLESS_MAIN(TestSqlWizardCore)

#include "test_sqlwizard_core.moc"
