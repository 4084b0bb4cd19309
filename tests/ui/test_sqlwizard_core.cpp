// The headless SQL wizard client: the report's formatting, the plugin search and the
// calls into the plugin libraries built for the tests.

#include "db/sqlwizard.h"
#include "db/sqlwizard_interface.h"
#include "support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

const QString Working = QStringLiteral(QUILLET_TEST_WIZARD_DIR);

} // namespace

class TestSqlWizardCore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        for (const char* name : {"QUILLET_TEST_SQLWIZARD_MODE", "QUILLET_TEST_SQLWIZARD_CODE",
                                 "QUILLET_TEST_SQLWIZARD_SQL", "QUILLET_TEST_SQLWIZARD_RECORD"})
            qunsetenv(name);
    }

    // The report's two forms are covered through the client; here the odd patterns.
    void formatPrintf_data() {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QVariantList>("arguments");
        QTest::addColumn<QString>("expected");
        QTest::newRow("percent sign") << u"100%% %s"_s << QVariantList{u"done"_s} << u"100% done"_s;
        QTest::newRow("missing arguments") << u"a%sb%dc"_s << QVariantList{} << u"abc"_s;
        QTest::newRow("other kind") << u"[%s|%lX]"_s << QVariantList{42, u"x"_s} << u"[42|x]"_s;
        QTest::newRow("other conversions kept")
            << u"%f %lu %s 50%"_s << QVariantList{u"t"_s} << u"%f %lu t 50%"_s;
        QTest::newRow("text is not read again")
            << u"%s/%d"_s << QVariantList{u"%d%s"_s, 3} << u"%d%s/3"_s;
    }
    void formatPrintf() {
        QFETCH(QString, pattern);
        QFETCH(QVariantList, arguments);
        QFETCH(QString, expected);
        std::vector<db::FormatArgument> values;
        for (const QVariant& argument : arguments) {
            if (argument.typeId() == QMetaType::Int)
                values.emplace_back(std::int32_t(argument.toInt()));
            else
                values.emplace_back(argument.toString());
        }
        QCOMPARE(db::FormatPrintf(pattern, values), expected);
    }

    void directories() {
        QCOMPARE(db::DefaultSqlWizardDirectories(u"/opt/./q/../quillet/bin/"_s),
                 QStringList({u"/opt/quillet/bin"_s, u"/opt/quillet/lib/quillet"_s}));
        QCOMPARE(db::DefaultSqlWizardDirectories(u"/"_s), QStringList({u"/"_s, u"/lib/quillet"_s}));
        const QStringList defaults = db::DefaultSqlWizardDirectories(QDir::currentPath());
        QCOMPARE(db::SqlWizardDirectories(), defaults);
        db::SetSqlWizardDirectories({u"/somewhere"_s});
        QCOMPARE(db::SqlWizardDirectories(), QStringList{u"/somewhere"_s});
        db::SetSqlWizardDirectories({});
        QCOMPARE(db::SqlWizardDirectories(), defaults);
    }

    // The first folder holding the file wins; a folder of that name and an empty entry
    // are passed over.
    void findLibrary() {
        QTemporaryDir root;
        const QDir dir(root.path());
        QVERIFY(dir.mkpath(u"a"_s) && dir.mkpath(u"b"_s) && dir.mkpath(u"c/libsqlwizard.so"_s));
        const QString a = dir.filePath(u"a"_s), b = dir.filePath(u"b"_s), c = dir.filePath(u"c"_s);
        QCOMPARE(db::FindSqlWizardLibrary({a, b, dir.filePath(u"missing"_s)}), QString());
        QVERIFY(testsupport::WriteFile(b + u"/libsqlwizard.so"_s, {}));
        QCOMPARE(db::FindSqlWizardLibrary({c, QString(), a, b}), b + u"/libsqlwizard.so"_s);
        QVERIFY(testsupport::WriteFile(a + u"/libsqlwizard.so"_s, {}));
        QCOMPARE(db::FindSqlWizardLibrary({a, b}), a + u"/libsqlwizard.so"_s);
        QCOMPARE(db::FindSqlWizardLibrary({b, a}), b + u"/libsqlwizard.so"_s);
    }

    // Each way of the test plugin, a library without the entry point and a missing one.
    // The plugin records its arguments and, when released, what it still holds.
    // `configured`: QUILLET_TEST_SQLWIZARD_CODE; `called`: GetSQL was called.
    void callSqlWizard_data() {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("directory");
        QTest::addColumn<QByteArray>("configured");
        QTest::addColumn<qint32>("code");
        QTest::addColumn<QString>("sqlText");
        QTest::addColumn<bool>("called");
        const auto row = [](const char* name, const char* mode, qint32 code, const QString& sql,
                            bool called, const QString& directory = Working,
                            const QByteArray& configured = {}) {
            QTest::newRow(name) << QString(mode) << directory << configured << code << sql
                                << called;
        };
        row("query", "sql", ORV_S_OK, u"SELECT ID, ASSETTYPE FROM ASSETS"_s, true);
        row("arguments as given", "echo", ORV_S_OK,
            u"dsn=[ Inventory\t] user=[ admin ] password=[p;w\u00e9] sql=[select 1] nlq=[7] "
            u"nlqtext=[all assets]"_s,
            true);
        row("empty text", "empty", ORV_S_OK, QString(), true);
        row("no text", "none", ORV_S_OK, QString(), true);
        row("failure, its text ignored", "fail", ORV_E_FAIL, QString(), true);
        row("positive code is success", "fail", ORV_S_FALSE, u"SELECT 'must not be used'"_s, true,
            Working, "1");
        row("exception from the call", "throw", ORV_E_UNEXPECTED, QString(), true);
        row("creation fails", "nocreate", -5, QString(), false, Working, "-5");
        row("exception from the creation", "createthrow", ORV_E_UNEXPECTED, QString(), false);
        row("created without an object", "noobject", ORV_E_NOINTERFACE, QString(), false);
        row("missing entry point", "sql", ORV_E_CLASSNOTAVAILABLE, QString(), false,
            QStringLiteral(QUILLET_TEST_WIZARD_NOENTRY_DIR));
        row("missing library", "sql", ORV_E_CLASSNOTREG, QString(), false,
            QDir(Working).filePath(u"nothing-here"_s));
    }
    void callSqlWizard() {
        QFETCH(QString, mode);
        QFETCH(QString, directory);
        QFETCH(QByteArray, configured);
        QFETCH(qint32, code);
        QFETCH(QString, sqlText);
        QFETCH(bool, called);
        QTemporaryDir scratch;
        const QString record = scratch.filePath(u"calls.txt"_s);
        qputenv("QUILLET_TEST_SQLWIZARD_MODE", mode.toUtf8());
        qputenv("QUILLET_TEST_SQLWIZARD_RECORD", record.toUtf8());
        if (!configured.isEmpty())
            qputenv("QUILLET_TEST_SQLWIZARD_CODE", configured);

        const db::SqlWizardOutcome outcome =
            db::CallSqlWizard({directory}, {u" Inventory\t"_s, u" admin "_s, u"p;w\u00e9"_s,
                                            u"select 1"_s, 7, u"all assets"_s});
        QCOMPARE(outcome.code, code);
        QCOMPARE(outcome.failed(), code < 0);
        QCOMPARE(outcome.sqlText, sqlText);
        QVERIFY(outcome.loaderError.isEmpty());
        QCOMPARE(outcome.libraryPath, code == ORV_E_CLASSNOTREG
                                          ? QString()
                                          : QDir(directory).filePath(u"libsqlwizard.so"_s));
        QCOMPARE(QString::fromUtf8(testsupport::ReadFile(record)),
                 called ? u"dsn=[ Inventory\t] user=[ admin ] password=[p;w\u00e9] sql=[select 1] "
                          u"nlq=[7] nlqtext=[all assets]\nreleased objects=0 texts=0\n"_s
                        : QString());
    }

    // A long query comes whole; a file that is no library is reported with the loader's
    // error.
    void longQueryAndBadLibrary() {
        QString sql = u"SELECT ID FROM ASSETS WHERE ID IN (0"_s;
        for (int i = 1; sql.size() < 20000; ++i)
            sql += u", "_s + QString::number(i);
        qputenv("QUILLET_TEST_SQLWIZARD_SQL", sql.toUtf8());
        QCOMPARE(db::CallSqlWizard({Working}, {}).sqlText, sql);

        QTemporaryDir root;
        const QString path = root.filePath(u"libsqlwizard.so"_s);
        QVERIFY(testsupport::WriteFile(path, "not a library\n"));
        const db::SqlWizardOutcome outcome = db::CallSqlWizard({root.path()}, {});
        QCOMPARE(outcome.code, ORV_E_ERRORINDLL);
        QCOMPARE(outcome.libraryPath, path);
        QVERIFY2(outcome.loaderError.contains(path), qPrintable(outcome.loaderError));
    }

    void tracerPid() {
        QCOMPARE(db::TracerPidFromStatus("Name:\tq\nTracerPid:\t4242"), 4242L);
        QCOMPARE(db::TracerPidFromStatus("TracerPid:\tabc\n"), 0L);
        QCOMPARE(db::TracerPidFromStatus("NotTracerPid:\t12\nTracerPid:\t7\n"), 7L);
    }
};

QTEST_APPLESS_MAIN(TestSqlWizardCore)

#include "test_sqlwizard_core.moc"
