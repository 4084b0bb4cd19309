// The SQL wizard client's failure report, its answers and the Query menu's entry, against
// the plugin library built for the tests.

#include "test_sqlwizard_helpers.h"

#include "db/sqlwizard_interface.h"
#include "db/ui/sqlwizardclient.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace testwizard;

class TestSqlWizard : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { startWizardTest(QStringLiteral(QUILLET_TEST_WIZARD_DIR)); }
    void cleanup() { endWizardTest(); }

    // The system's text for the codes of plugins and of the loader, or the bare code.
    void failureText_data() {
        QTest::addColumn<qint32>("code");
        QTest::addColumn<QString>("loaderError");
        QTest::addColumn<QString>("expected");
        const QString none;
        QTest::newRow("exception")
            << ORV_E_UNEXPECTED << none << messageForm(u"Catastrophic failure"_s);
        QTest::newRow("no object")
            << ORV_E_NOINTERFACE << none << messageForm(u"No such interface supported"_s);
        QTest::newRow("cancelled")
            << ORV_E_CANCELLED << none << messageForm(u"The operation was canceled by the user."_s);
        QTest::newRow("missing entry point")
            << ORV_E_CLASSNOTAVAILABLE << none
            << messageForm(u"ClassFactory cannot supply requested class"_s);
        QTest::newRow("library that does not load")
            << ORV_E_ERRORINDLL << u"Cannot load library x: file too short"_s
            << messageForm(u"Error in the DLL (Cannot load library x: file too short)"_s);
        QTest::newRow("code without a text")
            << qint32(0x80041234u) << none << codeForm(u"80041234"_s, u"-2147216844"_s);
        QTest::newRow("small negative") << qint32(-5) << none << codeForm(u"FFFFFFFB"_s, u"-5"_s);
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

    // A person's answers: Yes ends the operation, No and Cancel (no debugger here) go on
    // with nothing; the menu entry ends quietly on Yes too. Both pass the connection on.
    void answers_data() {
        QTest::addColumn<bool>("menu");
        QTest::addColumn<QMessageBox::StandardButton>("answer");
        QTest::addColumn<bool>("terminated");
        QTest::newRow("yes") << false << QMessageBox::Yes << true;
        QTest::newRow("no") << false << QMessageBox::No << false;
        QTest::newRow("cancel") << false << QMessageBox::Cancel << false;
        QTest::newRow("menu, yes") << true << QMessageBox::Yes << false;
    }
    void answers() {
        QFETCH(bool, menu);
        QFETCH(QMessageBox::StandardButton, answer);
        QFETCH(bool, terminated);
        QVERIFY2(!db::DebuggerAttached(), "the Cancel answer would stop in the debugger");
        ui::SetUnattended(false);
        QTemporaryDir scratch;
        const QString record = scratch.filePath(u"calls.txt"_s);
        qputenv("QUILLET_TEST_SQLWIZARD_MODE", "fail");
        qputenv("QUILLET_TEST_SQLWIZARD_RECORD", record.toUtf8());
        const QString description = messageForm(u"Unspecified error"_s);

        BoxAnswerer answerer(answer);
        QString thrown;
        try {
            if (menu)
                ui::ShowSqlWizard(nullptr, u"Inventory"_s, u"admin"_s, u"secret"_s);
            else
                QVERIFY(!ui::RunSqlWizard(nullptr, u"Inventory"_s, u"admin"_s, u"secret"_s));
        } catch (const ui::SqlWizardTerminated& error) {
            thrown = QString::fromStdString(error.what());
        }
        QCOMPARE(thrown, terminated ? description : QString());
        QCOMPARE(answerer.boxes, QStringList{hrcheckBox(description)});
        QCOMPARE(answerer.defaults, QList<QMessageBox::StandardButton>{QMessageBox::No});
        QFile calls(record);
        QVERIFY(calls.open(QIODevice::ReadOnly));
        QCOMPARE(calls.readLine(),
                 QByteArray("dsn=[Inventory] user=[admin] password=[secret] sql=[] "
                            "nlq=[0] nlqtext=[]\n"));
    }
};

QTEST_MAIN(TestSqlWizard)

#include "test_sqlwizard.moc"
