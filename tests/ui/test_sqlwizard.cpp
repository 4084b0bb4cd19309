// The SQL wizard client with its failure report: the box's text and answers, and the
// Query menu's entry, against the plugin libraries built for the tests.

#include "test_sqlwizard_helpers.h"

#include "core/ui/messages.h"
#include "db/sqlwizard.h"
#include "db/sqlwizard_interface.h"
#include "db/ui/sqlwizardclient.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using testwizard::GetSqlCall;
using testwizard::HrcheckLine;

namespace {

QString workingPluginDir() {
    return QStringLiteral(QUILLET_TEST_WIZARD_DIR);
}
QString noEntryPluginDir() {
    return QStringLiteral(QUILLET_TEST_WIZARD_NOENTRY_DIR);
}
QString missingPluginDir() {
    return QDir(workingPluginDir()).filePath(QStringLiteral("nothing-here"));
}

QString messageForm(const QString& message) {
    return QStringLiteral("'") + GetSqlCall() + QStringLiteral("': ") + message +
           QStringLiteral(" @ sqlwizard_tlb/147");
}

QString codeForm(const QString& hex, const QString& decimal) {
    return QStringLiteral("(") + GetSqlCall() + QStringLiteral(") Error: ") + hex +
           QStringLiteral(" (") + decimal + QStringLiteral(") @ sqlwizard_tlb/147");
}

} // namespace

class TestSqlWizard : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { testwizard::startWizardTest(workingPluginDir()); }
    void cleanup() { testwizard::endWizardTest(); }

    void failureText_data() {
        QTest::addColumn<qint32>("code");
        QTest::addColumn<QString>("loaderError");
        QTest::addColumn<QString>("expected");
        QTest::newRow("unspecified")
            << ORV_E_FAIL << QString() << messageForm(QStringLiteral("Unspecified error"));
        QTest::newRow("missing library") << ORV_E_CLASSNOTREG << QString()
                                         << messageForm(QStringLiteral("Class not registered"));
        QTest::newRow("library that does not load")
            << ORV_E_ERRORINDLL << QStringLiteral("Cannot load library x: file too short")
            << messageForm(
                   QStringLiteral("Error in the DLL (Cannot load library x: file too short)"));
        QTest::newRow("code without a text")
            << qint32(0x80041234u) << QString()
            << codeForm(QStringLiteral("80041234"), QStringLiteral("-2147216844"));
        QTest::newRow("minus one") << qint32(-1) << QString()
                                   << codeForm(QStringLiteral("FFFFFFFF"), QStringLiteral("-1"));
    }
    void failureText() {
        QFETCH(qint32, code);
        QFETCH(QString, loaderError);
        QFETCH(QString, expected);
        db::SqlWizardOutcome outcome;
        outcome.code = code;
        outcome.loaderError = loaderError;
        QCOMPARE(ui::SqlWizardFailureText(outcome), expected);
    }

    // Unattended, the box prints its line and is answered No: the run goes on with
    // nothing from the wizard.
    void unattendedRun_data() {
        QTest::addColumn<QString>("directory");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QByteArray>("code");
        QTest::addColumn<bool>("hasResult");
        QTest::addColumn<QString>("result");
        QTest::addColumn<QString>("printed");

        QTest::newRow("query") << workingPluginDir() << QStringLiteral("sql") << QByteArray()
                               << true << QStringLiteral("SELECT ID, ASSETTYPE FROM ASSETS")
                               << QString();
        QTest::newRow("empty") << workingPluginDir() << QStringLiteral("empty") << QByteArray()
                               << true << QString() << QString();
        QTest::newRow("failing call")
            << workingPluginDir() << QStringLiteral("fail") << QByteArray() << false << QString()
            << HrcheckLine(messageForm(QStringLiteral("Unspecified error")));
        QTest::newRow("failing call, unknown code")
            << workingPluginDir() << QStringLiteral("fail") << QByteArray("0x8004ABCD") << false
            << QString()
            << HrcheckLine(codeForm(QStringLiteral("8004ABCD"), QStringLiteral("-2147177523")));
        QTest::newRow("cancelled in the wizard")
            << workingPluginDir() << QStringLiteral("fail") << QByteArray("0x800704C7") << false
            << QString()
            << HrcheckLine(messageForm(QStringLiteral("The operation was canceled by the user.")));
        QTest::newRow("class cannot be created")
            << workingPluginDir() << QStringLiteral("nocreate") << QByteArray("0x80004002") << false
            << QString() << HrcheckLine(messageForm(QStringLiteral("No such interface supported")));
        QTest::newRow("no entry point")
            << noEntryPluginDir() << QStringLiteral("sql") << QByteArray() << false << QString()
            << HrcheckLine(
                   messageForm(QStringLiteral("ClassFactory cannot supply requested class")));
        QTest::newRow("no library")
            << missingPluginDir() << QStringLiteral("sql") << QByteArray() << false << QString()
            << HrcheckLine(messageForm(QStringLiteral("Class not registered")));
    }
    void unattendedRun() {
        QFETCH(QString, directory);
        QFETCH(QString, mode);
        QFETCH(QByteArray, code);
        QFETCH(bool, hasResult);
        QFETCH(QString, result);
        QFETCH(QString, printed);

        db::SetSqlWizardDirectories({directory});
        qputenv("QUILLET_TEST_SQLWIZARD_MODE", mode.toUtf8());
        if (!code.isEmpty())
            qputenv("QUILLET_TEST_SQLWIZARD_CODE", code);

        testwizard::StderrCapture capture;
        std::optional<QString> answer;
        try {
            answer = ui::RunSqlWizard(nullptr, QStringLiteral("Inventory"), QStringLiteral("admin"),
                                      QStringLiteral("secret"));
        } catch (const ui::SqlWizardTerminated& error) {
            QFAIL(error.what());
        }
        const QString output = capture.finish();

        QCOMPARE(answer.has_value(), hasResult);
        if (hasResult)
            QCOMPARE(*answer, result);
        QCOMPARE(output, printed.isEmpty() ? QString() : printed + QLatin1Char('\n'));
    }

    void libraryThatDoesNotLoad() {
        QTemporaryDir root;
        QVERIFY(root.isValid());
        QFile file(root.filePath(QStringLiteral("libsqlwizard.so")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("not a library");
        file.close();
        db::SetSqlWizardDirectories({root.path()});

        testwizard::StderrCapture capture;
        const std::optional<QString> answer =
            ui::RunSqlWizard(nullptr, QString(), QString(), QString());
        const QString output = capture.finish();

        QVERIFY(!answer);
        const QString start =
            QStringLiteral("HRCHECK: : '") + GetSqlCall() + QStringLiteral("': Error in the DLL (");
        QVERIFY2(output.startsWith(start), qPrintable(output));
        QVERIFY2(output.contains(file.fileName()), qPrintable(output));
        QVERIFY2(output.endsWith(QStringLiteral(") @ sqlwizard_tlb/147\nPress [Y]es to terminate, "
                                                "[N]o to continue and [C]ancel to Debug\n")),
                 qPrintable(output));
    }

    // The answers of a person: Yes ends the operation, No and Cancel (no debugger here)
    // go on with nothing.
    void answers_data() {
        QTest::addColumn<QMessageBox::StandardButton>("answer");
        QTest::addColumn<bool>("terminated");
        QTest::newRow("yes") << QMessageBox::Yes << true;
        QTest::newRow("no") << QMessageBox::No << false;
        QTest::newRow("cancel") << QMessageBox::Cancel << false;
    }
    void answers() {
        QFETCH(QMessageBox::StandardButton, answer);
        QFETCH(bool, terminated);
        QVERIFY2(!db::DebuggerAttached(), "the Cancel answer would stop in the debugger");

        ui::SetUnattended(false);
        qputenv("QUILLET_TEST_SQLWIZARD_MODE", "fail");
        const QString description = messageForm(QStringLiteral("Unspecified error"));

        testwizard::BoxAnswerer answerer(answer);
        bool thrown = false;
        std::optional<QString> result;
        try {
            result = ui::RunSqlWizard(nullptr, QStringLiteral("Inventory"), QString(), QString());
        } catch (const ui::SqlWizardTerminated& error) {
            thrown = true;
            QCOMPARE(QString::fromStdString(error.what()), description);
        }
        QCOMPARE(thrown, terminated);
        QVERIFY(!result);
        QCOMPARE(answerer.boxes(), QStringList{HrcheckLine(description)});
        QCOMPARE(answerer.defaults(), QList<QMessageBox::StandardButton>{QMessageBox::No});
    }

    // The menu entry passes the main window's connection, ends quietly on every answer
    // and uses nothing the wizard returns.
    void menuEntry_data() {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QMessageBox::StandardButton>("answer");
        QTest::addColumn<int>("boxes");
        QTest::newRow("query built") << QStringLiteral("echo") << QMessageBox::Yes << 0;
        QTest::newRow("failure, terminate") << QStringLiteral("fail") << QMessageBox::Yes << 1;
        QTest::newRow("failure, continue") << QStringLiteral("fail") << QMessageBox::No << 1;
    }
    void menuEntry() {
        QFETCH(QString, mode);
        QFETCH(QMessageBox::StandardButton, answer);
        QFETCH(int, boxes);

        ui::SetUnattended(false);
        QTemporaryDir scratch;
        QVERIFY(scratch.isValid());
        const QString recordPath = scratch.filePath(QStringLiteral("calls.txt"));
        qputenv("QUILLET_TEST_SQLWIZARD_MODE", mode.toUtf8());
        qputenv("QUILLET_TEST_SQLWIZARD_RECORD", recordPath.toUtf8());

        testwizard::BoxAnswerer answerer(answer);
        ui::ShowSqlWizard(nullptr, QStringLiteral("Inventory"), QStringLiteral("admin"),
                          QStringLiteral("secret"));
        QCOMPARE(answerer.boxes().size(), boxes);

        QFile record(recordPath);
        QVERIFY(record.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(record.readLine()).trimmed(),
                 QStringLiteral("dsn=[Inventory] user=[admin] password=[secret] sql=[] nlq=[0] "
                                "nlqtext=[]"));
    }
};

QTEST_MAIN(TestSqlWizard)

#include "test_sqlwizard.moc"
