// The connection details panel: its controls, the change announcements the main window
// copies the panel on, trimming, Paste SQL and the SQL wizard button, the wizard being a
// real plugin library built for the tests.

#include "test_sqlwizard_helpers.h"

#include "core/ui/messages.h"
#include "db/sqlwizard.h"
#include "db/ui/details.h"
#include "db/ui/sqlwizardclient.h"

#include <QAction>
#include <QClipboard>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QStyle>
#include <QToolButton>
#include <QtTest>

#include <memory>

namespace {

QString workingPluginDir() {
    return QStringLiteral(QUILLET_TEST_WIZARD_DIR);
}

// A main window with the panel docked at the bottom, and the main window's rule for its
// execute action: on each announced change, copy the panel and enable the action exactly
// when both the data source and the SQL text are non-empty.
struct Window {
    QMainWindow main;
    QAction* execute = nullptr;
    ui::TDetailsForm* details = nullptr;
    QString dsn;
    QString user;
    QString password;
    QString sql;
    int changes = 0;

    Window() {
        execute = new QAction(QStringLiteral("E&xecute SQL"), &main);
        execute->setEnabled(false);
        details = new ui::TDetailsForm(execute, &main);
        main.addDockWidget(Qt::BottomDockWidgetArea, details);
        QObject::connect(details, &ui::TDetailsForm::connectionEdited, &main, [this] {
            ++changes;
            dsn = details->dataSourceName();
            user = details->userName();
            password = details->password();
            sql = details->sqlText();
            execute->setEnabled(!dsn.isEmpty() && !sql.isEmpty());
        });
    }

    template <typename T> T* child(const char* name) const {
        return details->findChild<T*>(QLatin1String(name));
    }
    QLineEdit* edit(const char* name) const { return child<QLineEdit>(name); }
    QPlainTextEdit* memo() const { return child<QPlainTextEdit>("MemoSQL"); }

    bool showActive() {
        main.show();
        main.activateWindow();
        return QTest::qWaitForWindowActive(&main);
    }
};

} // namespace

class TestDetails : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { testwizard::startWizardTest(workingPluginDir()); }
    void cleanup() { testwizard::endWizardTest(); }

    void labels_data() {
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("buddy");
        QTest::newRow("dsn") << "LabelDSN"
                             << "&DSN Name"
                             << "EditDSN";
        QTest::newRow("user") << "LabelID"
                              << "User &ID"
                              << "EditID";
        QTest::newRow("password") << "LabelPass"
                                  << "User &Password"
                                  << "EditPass";
        QTest::newRow("sql") << "LabelSQL"
                             << "&SQL Code"
                             << "MemoSQL";
    }
    void labels() {
        QFETCH(QString, label);
        QFETCH(QString, caption);
        QFETCH(QString, buddy);
        Window window;
        auto* widget = window.details->findChild<QLabel*>(label);
        QVERIFY(widget);
        QCOMPARE(widget->text(), caption);
        QVERIFY(widget->buddy());
        QCOMPARE(widget->buddy()->objectName(), buddy);
    }

    void controls() {
        Window window;
        QLineEdit* password = window.edit("EditPass");
        QCOMPARE(password->echoMode(), QLineEdit::Password);
        QCOMPARE(
            password->style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, password),
            int(u'*'));
        QCOMPARE(window.edit("EditDSN")->echoMode(), QLineEdit::Normal);
        QCOMPARE(window.memo()->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
        QCOMPARE(window.memo()->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
        QCOMPARE(window.memo()->lineWrapMode(), QPlainTextEdit::NoWrap);

        auto* execute = window.child<QToolButton>("SpeedButton1");
        auto* wizard = window.child<QToolButton>("SpeedButton2");
        QVERIFY(execute && wizard);
        QCOMPARE(execute->defaultAction(), window.execute);
        QCOMPARE(execute->text(), QStringLiteral("E&xecute SQL"));
        // The button follows the action's caption.
        window.execute->setText(QStringLiteral("E&xecute query"));
        QCOMPARE(execute->text(), QStringLiteral("E&xecute query"));
        QCOMPARE(wizard->text(), QStringLiteral("S&QLWizard"));
        QCOMPARE(window.main.dockWidgetArea(window.details), Qt::BottomDockWidgetArea);
    }

    void executeButtonFollowsTheAction() {
        Window window;
        auto* button = window.child<QToolButton>("SpeedButton1");
        QSignalSpy triggered(window.execute, &QAction::triggered);
        QVERIFY(!button->isEnabled());
        button->click();
        QCOMPARE(triggered.size(), 0);

        window.execute->setEnabled(true);
        QVERIFY(button->isEnabled());
        button->click();
        QCOMPARE(triggered.size(), 1);
    }

    // What the user types, box by box, and whether Execute is enabled afterwards.
    void typing_data() {
        QTest::addColumn<QString>("dsn");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<int>("changes");
        QTest::newRow("dsn without sql") << "Inventory"
                                         << ""
                                         << ""
                                         << "" << false << 9;
        QTest::newRow("sql without dsn") << ""
                                         << ""
                                         << ""
                                         << "select 1" << false << 8;
        QTest::newRow("dsn and sql") << "Inv"
                                     << ""
                                     << ""
                                     << "select 1" << true << 11;
        QTest::newRow("blank dsn counts as empty") << "   "
                                                   << ""
                                                   << ""
                                                   << "select 1" << false << 11;
        QTest::newRow("blank sql counts as empty") << "Inv"
                                                   << ""
                                                   << ""
                                                   << "  " << false << 5;
        QTest::newRow("user and password alone announce nothing") << ""
                                                                  << "admin"
                                                                  << "secret"
                                                                  << "" << false << 0;
        QTest::newRow("all four") << "Inv"
                                  << "admin"
                                  << "secret"
                                  << "select 1" << true << 11;
    }
    void typing() {
        QFETCH(QString, dsn);
        QFETCH(QString, user);
        QFETCH(QString, password);
        QFETCH(QString, sql);
        QFETCH(bool, enabled);
        QFETCH(int, changes);

        Window window;
        QVERIFY(window.showActive());
        QTest::keyClicks(window.edit("EditDSN"), dsn);
        QTest::keyClicks(window.edit("EditID"), user);
        QTest::keyClicks(window.edit("EditPass"), password);
        QTest::keyClicks(window.memo(), sql);

        QCOMPARE(window.changes, changes);
        QCOMPARE(window.execute->isEnabled(), enabled);
        QCOMPARE(window.child<QToolButton>("SpeedButton1")->isEnabled(), enabled);
        if (changes > 0) {
            QCOMPARE(window.dsn, dsn.trimmed());
            QCOMPARE(window.sql, sql.trimmed());
        }
    }

    // User and password changes are picked up at the next data source or SQL change.
    void userAndPasswordFollowTheNextChange() {
        Window window;
        QVERIFY(window.showActive());
        QTest::keyClicks(window.edit("EditID"), QStringLiteral("admin"));
        QTest::keyClicks(window.edit("EditPass"), QStringLiteral("secret"));
        QCOMPARE(window.changes, 0);
        QCOMPARE(window.user, QString());
        QTest::keyClicks(window.edit("EditDSN"), QStringLiteral("I"));
        QCOMPARE(window.changes, 1);
        QCOMPARE(window.user, QStringLiteral("admin"));
        QCOMPARE(window.password, QStringLiteral("secret"));
    }

    void trimming_data() {
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("trimmed");
        QTest::newRow("plain") << "Inventory"
                               << "Inventory";
        QTest::newRow("blanks") << "  Inventory  "
                                << "Inventory";
        QTest::newRow("tabs and line breaks") << "\t\r\nselect 1;\r\n\n"
                                              << "select 1;";
        QTest::newRow("control characters") << QStringLiteral("\x01\x1f"
                                                              "abc\x7f\x0b")
                                            << "abc";
        QTest::newRow("no-break spaces") << QStringLiteral("\u00a0abc\u3000") << "abc";
        QTest::newRow("byte order mark") << QStringLiteral("\ufeffselect 1") << "select 1";
        QTest::newRow("inner blanks kept") << " a  b\tc "
                                           << "a  b\tc";
        QTest::newRow("blanks only") << " \t \n "
                                     << "";
        QTest::newRow("empty") << ""
                               << "";
        QTest::newRow("letters around") << "x y"
                                        << "x y";
    }
    void trimming() {
        QFETCH(QString, raw);
        QFETCH(QString, trimmed);
        Window window;
        window.details->setFields(raw, raw, raw, raw);
        QCOMPARE(window.details->dataSourceName(), trimmed);
        QCOMPARE(window.details->userName(), trimmed);
        QCOMPARE(window.details->password(), trimmed);
        QCOMPARE(window.details->sqlText(), trimmed);
        QCOMPARE(ui::TDetailsForm::trimmedText(raw), trimmed);
        // The boxes keep what was written.
        QCOMPARE(window.edit("EditDSN")->text(), raw);
        QCOMPARE(window.edit("EditPass")->text(), raw);
    }

    void setFieldsAnnouncesNothing() {
        Window window;
        window.details->setFields(QStringLiteral("Inventory"), QStringLiteral("admin"),
                                  QStringLiteral("select 1"), QStringLiteral("secret"));
        QCOMPARE(window.changes, 0);
        QCOMPARE(window.edit("EditDSN")->text(), QStringLiteral("Inventory"));
        QCOMPARE(window.edit("EditID")->text(), QStringLiteral("admin"));
        QCOMPARE(window.edit("EditPass")->text(), QStringLiteral("secret"));
        QCOMPARE(window.memo()->toPlainText(), QStringLiteral("select 1"));
    }

    void pasteSql_data() {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("clipboard");
        QTest::addColumn<QString>("after");
        QTest::newRow("replaces") << "select 1"
                                  << "SELECT * FROM NODES"
                                  << "SELECT * FROM NODES";
        QTest::newRow("several lines") << "old"
                                       << "SELECT *\nFROM ASSETS\nWHERE ID = :id\n"
                                       << "SELECT *\nFROM ASSETS\nWHERE ID = :id\n";
        QTest::newRow("into an empty box") << ""
                                           << "select 2"
                                           << "select 2";
        QTest::newRow("empty clipboard clears") << "select 1"
                                                << ""
                                                << "";
    }
    void pasteSql() {
        QFETCH(QString, before);
        QFETCH(QString, clipboard);
        QFETCH(QString, after);
        Window window;
        window.details->setFields(QStringLiteral("Inventory"), QString(), before, QString());
        QGuiApplication::clipboard()->setText(clipboard);
        window.details->PasteSQL();
        QCOMPARE(window.memo()->toPlainText(), after);
        QVERIFY(window.changes >= 1);
        QCOMPARE(window.sql, after.trimmed());
        QCOMPARE(window.execute->isEnabled(), !after.trimmed().isEmpty());
    }

    void keyboard() {
        Window window;
        QVERIFY(window.showActive());
        window.edit("EditDSN")->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), window.edit("EditDSN"));

        const char* order[] = {"EditID", "EditPass", "MemoSQL", "SpeedButton1", "SpeedButton2"};
        window.execute->setEnabled(true); // a disabled button takes no focus
        for (const char* name : order) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget()->objectName(), QLatin1String(name));
        }

        const std::pair<Qt::Key, const char*> mnemonics[] = {{Qt::Key_S, "MemoSQL"},
                                                             {Qt::Key_D, "EditDSN"},
                                                             {Qt::Key_P, "EditPass"},
                                                             {Qt::Key_I, "EditID"}};
        for (const auto& [key, name] : mnemonics) {
            QTest::keyClick(QApplication::focusWidget(), key, Qt::AltModifier);
            QCOMPARE(QApplication::focusWidget()->objectName(), QLatin1String(name));
        }

        // The buttons' mnemonics press them.
        QSignalSpy executed(window.execute, &QAction::triggered);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_X, Qt::AltModifier);
        QTRY_COMPARE(executed.size(), 1);
        qputenv("QUILLET_TEST_SQLWIZARD_SQL", "SELECT 'from the wizard'");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Q, Qt::AltModifier);
        QTRY_COMPARE(window.memo()->toPlainText(), QStringLiteral("SELECT 'from the wizard'"));
    }

    // The wizard button: the boxes as typed go to the wizard; a query it builds replaces
    // the SQL text and is announced, an empty one or a failure leaves the panel as it was.
    void wizardButton_data() {
        QTest::addColumn<QString>("directory");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("memo");
        QTest::addColumn<QString>("printed");

        const QString typed = QStringLiteral("select 'typed'");
        QTest::newRow("query replaces the text") << workingPluginDir() << "sql"
                                                 << "SELECT ID, ASSETTYPE FROM ASSETS" << QString();
        QTest::newRow("arguments as typed")
            << workingPluginDir() << "echo"
            << "dsn=[ Inventory ] user=[ admin] password=[secret\t] sql=[] nlq=[0] nlqtext=[]"
            << QString();
        QTest::newRow("empty query leaves the text")
            << workingPluginDir() << "empty" << typed << QString();
        QTest::newRow("no query leaves the text")
            << workingPluginDir() << "none" << typed << QString();
        QTest::newRow("failure leaves the text")
            << workingPluginDir() << "fail" << typed
            << testwizard::HrcheckLine(QStringLiteral("'") + testwizard::GetSqlCall() +
                                       QStringLiteral("': Unspecified error @ sqlwizard_tlb/147"));
        QTest::newRow("missing library leaves the text")
            << QDir(workingPluginDir()).filePath(QStringLiteral("nothing-here")) << "sql" << typed
            << testwizard::HrcheckLine(
                   QStringLiteral("'") + testwizard::GetSqlCall() +
                   QStringLiteral("': Class not registered @ sqlwizard_tlb/147"));
    }
    void wizardButton() {
        QFETCH(QString, directory);
        QFETCH(QString, mode);
        QFETCH(QString, memo);
        QFETCH(QString, printed);

        db::SetSqlWizardDirectories({directory});
        qputenv("QUILLET_TEST_SQLWIZARD_MODE", mode.toUtf8());
        Window window;
        window.details->setFields(QStringLiteral(" Inventory "), QStringLiteral(" admin"),
                                  QStringLiteral("select 'typed'"), QStringLiteral("secret\t"));

        testwizard::StderrCapture capture;
        window.child<QToolButton>("SpeedButton2")->click();
        const QString output = capture.finish();

        QCOMPARE(window.memo()->toPlainText(), memo);
        const bool replaced = memo != QStringLiteral("select 'typed'");
        QCOMPARE(window.changes > 0, replaced);
        if (replaced) {
            QCOMPARE(window.sql, memo);
            QCOMPARE(window.dsn, QStringLiteral("Inventory"));
            QVERIFY(window.execute->isEnabled());
        }
        QCOMPARE(output, printed.isEmpty() ? QString() : printed + QLatin1Char('\n'));
    }

    void wizardResultCanBeUndone() {
        qputenv("QUILLET_TEST_SQLWIZARD_SQL", "SELECT * FROM NODES");
        Window window;
        QVERIFY(window.showActive());
        QTest::keyClicks(window.memo(), QStringLiteral("select 1"));
        window.child<QToolButton>("SpeedButton2")->click();
        QCOMPARE(window.memo()->toPlainText(), QStringLiteral("SELECT * FROM NODES"));
        window.memo()->undo();
        QCOMPARE(window.memo()->toPlainText(), QStringLiteral("select 1"));
    }

    // Yes to the failure report ends the operation: the panel keeps its text and shows
    // nothing more.
    void wizardButtonTerminated() {
        ui::SetUnattended(false);
        qputenv("QUILLET_TEST_SQLWIZARD_MODE", "fail");
        Window window;
        window.details->setFields(QStringLiteral("Inventory"), QString(),
                                  QStringLiteral("select 1"), QString());
        testwizard::BoxAnswerer answerer(QMessageBox::Yes);
        window.child<QToolButton>("SpeedButton2")->click();
        QCOMPARE(answerer.boxes().size(), 1);
        QVERIFY(answerer.boxes().first().startsWith(QStringLiteral("HRCHECK: : '")));
        QCOMPARE(window.memo()->toPlainText(), QStringLiteral("select 1"));
        QCOMPARE(window.changes, 0);
    }

    // The menu entry with the same wizard: the query it builds goes nowhere.
    void menuEntryLeavesThePanel() {
        qputenv("QUILLET_TEST_SQLWIZARD_MODE", "sql");
        Window window;
        window.details->setFields(QStringLiteral("Inventory"), QString(),
                                  QStringLiteral("select 1"), QString());
        testwizard::StderrCapture capture;
        ui::ShowSqlWizard(&window.main, window.details->dataSourceName(),
                          window.details->userName(), window.details->password());
        QCOMPARE(capture.finish(), QString());
        QCOMPARE(window.memo()->toPlainText(), QStringLiteral("select 1"));
        QCOMPARE(window.changes, 0);

        // The panel's button with the same wizard does take the query.
        window.child<QToolButton>("SpeedButton2")->click();
        QCOMPARE(window.memo()->toPlainText(), QStringLiteral("SELECT ID, ASSETTYPE FROM ASSETS"));
    }
};

QTEST_MAIN(TestDetails)

#include "test_details.moc"
