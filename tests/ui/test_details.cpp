// The connection details panel: its controls, the change announcements the main window
// enables Execute on, trimming, Paste SQL and the SQL wizard button, the wizard being a
// real plugin library built for the tests.

#include "test_sqlwizard_helpers.h"

#include "db/ui/details.h"
#include "db/ui/sqlwizardclient.h"

#include <QAction>
#include <QClipboard>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QStyle>
#include <QToolButton>
#include <QtTest>

using namespace Qt::StringLiterals;
using namespace testwizard;

namespace {

const QString Typed = u"select 'typed'"_s;
const QString Built = u"SELECT ID, ASSETTYPE FROM ASSETS"_s;

// A main window with the panel, and the main window's rule for its execute action: on
// each announced change, enable it exactly when both the data source and the SQL text are
// non-empty.
struct Window {
    QMainWindow main;
    QAction* execute = new QAction(u"E&xecute SQL"_s, &main);
    ui::TDetailsForm* details = nullptr;
    int changes = 0;

    Window() {
        execute->setEnabled(false);
        details = new ui::TDetailsForm(execute, &main);
        main.addDockWidget(Qt::BottomDockWidgetArea, details);
        QObject::connect(details, &ui::TDetailsForm::connectionEdited, &main, [this] {
            ++changes;
            execute->setEnabled(!details->dataSourceName().isEmpty() &&
                                !details->sqlText().isEmpty());
        });
    }
    template <typename T = QLineEdit> T* child(const QString& name) const {
        return details->findChild<T*>(name);
    }
    QPlainTextEdit* memo() const { return child<QPlainTextEdit>(u"MemoSQL"_s); }
    QToolButton* button(int number) const {
        return child<QToolButton>(u"SpeedButton"_s + QString::number(number));
    }
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
    void init() { startWizardTest(QStringLiteral(QUILLET_TEST_WIZARD_DIR)); }
    void cleanup() { endWizardTest(); }

    void labels_data() {
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("buddy");
        QTest::newRow("LabelDSN") << u"&DSN Name"_s << u"EditDSN"_s;
        QTest::newRow("LabelID") << u"User &ID"_s << u"EditID"_s;
        QTest::newRow("LabelPass") << u"User &Password"_s << u"EditPass"_s;
        QTest::newRow("LabelSQL") << u"&SQL Code"_s << u"MemoSQL"_s;
    }
    void labels() {
        QFETCH(QString, caption);
        QFETCH(QString, buddy);
        Window window;
        auto* label = window.child<QLabel>(QTest::currentDataTag());
        QVERIFY(label && label->buddy());
        QCOMPARE(label->text(), caption);
        QCOMPARE(label->buddy()->objectName(), buddy);
    }

    void controls() {
        Window window;
        QLineEdit* password = window.child(u"EditPass"_s);
        QCOMPARE(password->echoMode(), QLineEdit::Password);
        QCOMPARE(
            password->style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, password),
            int(u'*'));
        QCOMPARE(window.memo()->lineWrapMode(), QPlainTextEdit::NoWrap);
        QCOMPARE(window.memo()->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
        QCOMPARE(window.memo()->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOn);
        QCOMPARE(window.button(2)->text(), u"S&QLWizard"_s);
        QCOMPARE(window.button(1)->defaultAction(), window.execute);
        // The button keeps the action's caption with its mnemonic, also when it changes.
        QCOMPARE(window.button(1)->text(), u"E&xecute SQL"_s);
        window.execute->setText(u"E&xecute query"_s);
        QCOMPARE(window.button(1)->text(), u"E&xecute query"_s);
    }

    // What the user types, box by box: the data source and the SQL text announce each
    // change, the user and the password none.
    void typing_data() {
        QTest::addColumn<QStringList>("typed");
        QTest::addColumn<int>("changes");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("dsn without sql") << QStringList{"Inventory", "", "", ""} << 9 << false;
        QTest::newRow("user and password alone") << QStringList{"", "a", "s", ""} << 0 << false;
        QTest::newRow("all four") << QStringList{" Inv", "admin ", "secret", "select 1"} << 12
                                  << true;
    }
    void typing() {
        QFETCH(QStringList, typed);
        QFETCH(int, changes);
        QFETCH(bool, enabled);
        Window window;
        QVERIFY(window.showActive());
        QTest::keyClicks(window.child(u"EditDSN"_s), typed[0]);
        QTest::keyClicks(window.child(u"EditID"_s), typed[1]);
        QTest::keyClicks(window.child(u"EditPass"_s), typed[2]);
        QTest::keyClicks(window.memo(), typed[3]);

        QCOMPARE(window.changes, changes);
        QCOMPARE(window.button(1)->isEnabled(), enabled);
        const ui::TDetailsForm& panel = *window.details;
        QCOMPARE(QStringList(
                     {panel.dataSourceName(), panel.userName(), panel.password(), panel.sqlText()}),
                 QStringList({typed[0].trimmed(), typed[1].trimmed(), typed[2].trimmed(),
                              typed[3].trimmed()}));
    }

    void trimming_data() {
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("trimmed");
        QTest::newRow("blanks, tabs, line breaks")
            << u" \t\r\nselect 1;\r\n\n "_s << u"select 1;"_s;
        QTest::newRow("control characters") << u"\u0001\u001fabc\u007f\u000b"_s << u"abc"_s;
        QTest::newRow("no-break spaces") << u"\u00a0abc\u3000"_s << u"abc"_s;
        QTest::newRow("byte order mark") << u"\ufeffselect 1"_s << u"select 1"_s;
        QTest::newRow("inner blanks kept") << u" a  b\tc "_s << u"a  b\tc"_s;
        QTest::newRow("blanks only") << u" \t \n "_s << QString();
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
        QCOMPARE(window.child(u"EditPass"_s)->text(), raw); // the boxes keep what was written
    }

    void pasteSql_data() {
        QTest::addColumn<QString>("clipboard");
        QTest::newRow("replaces") << u"SELECT *\nFROM ASSETS\n"_s;
        QTest::newRow("empty clipboard clears") << QString();
    }
    void pasteSql() {
        QFETCH(QString, clipboard);
        Window window;
        window.details->setFields(u"Inventory"_s, QString(), Typed, QString());
        QGuiApplication::clipboard()->setText(clipboard);
        window.details->PasteSQL();
        QCOMPARE(window.memo()->toPlainText(), clipboard);
        QVERIFY(window.changes > 0);
        QCOMPARE(window.details->sqlText(), clipboard.trimmed());
        QCOMPARE(window.execute->isEnabled(), !clipboard.isEmpty());
    }

    void keyboard() {
        Window window;
        QVERIFY(window.showActive());
        window.execute->setEnabled(true); // a disabled button takes no focus
        window.child(u"EditDSN"_s)->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), window.child(u"EditDSN"_s));
        for (const char* name : {"EditID", "EditPass", "MemoSQL", "SpeedButton1", "SpeedButton2"}) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget()->objectName(), QLatin1String(name));
        }
        // The buttons' mnemonics press them (the labels' are their buddies').
        QSignalSpy executed(window.execute, &QAction::triggered);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_X, Qt::AltModifier);
        QTRY_COMPARE(executed.size(), 1);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Q, Qt::AltModifier);
        QTRY_COMPARE(window.memo()->toPlainText(), Built);
    }

    // The wizard button passes the boxes as typed; a query replaces the SQL text as one
    // undoable edit and is announced; an empty one, a failure or the user ending the
    // operation in the report leaves the panel as it was.
    void wizardButton_data() {
        QTest::addColumn<QString>("directory");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QMessageBox::StandardButton>("answer");
        QTest::addColumn<QString>("memo");
        QTest::addColumn<QString>("box");
        const QString working = QStringLiteral(QUILLET_TEST_WIZARD_DIR);
        const QString failed = hrcheckBox(messageForm(u"Unspecified error"_s));
        const auto no = QMessageBox::No;
        QTest::newRow("query") << working << u"sql"_s << no << Built << QString();
        QTest::newRow("arguments as typed")
            << working << u"echo"_s << no
            << u"dsn=[ Inventory ] user=[ admin] password=[secret\t] sql=[] nlq=[0] nlqtext=[]"_s
            << QString();
        QTest::newRow("empty query") << working << u"empty"_s << no << Typed << QString();
        QTest::newRow("no query") << working << u"none"_s << no << Typed << QString();
        QTest::newRow("failure, go on") << working << u"fail"_s << no << Typed << failed;
        QTest::newRow("failure, end")
            << working << u"fail"_s << QMessageBox::Yes << Typed << failed;
        QTest::newRow("missing library")
            << QDir(working).filePath(u"nothing-here"_s) << u"sql"_s << no << Typed
            << hrcheckBox(messageForm(u"Class not registered"_s));
    }
    void wizardButton() {
        QFETCH(QString, directory);
        QFETCH(QString, mode);
        QFETCH(QMessageBox::StandardButton, answer);
        QFETCH(QString, memo);
        QFETCH(QString, box);
        db::SetSqlWizardDirectories({directory});
        qputenv("QUILLET_TEST_SQLWIZARD_MODE", mode.toUtf8());
        ui::SetUnattended(false);
        Window window;
        window.details->setFields(u" Inventory "_s, u" admin"_s, Typed, u"secret\t"_s);

        BoxAnswerer answerer(answer);
        window.button(2)->click();
        QCOMPARE(answerer.boxes, box.isEmpty() ? QStringList() : QStringList{box});
        QCOMPARE(window.memo()->toPlainText(), memo);
        QCOMPARE(window.changes > 0, memo != Typed);
        if (memo != Typed) {
            QVERIFY(window.execute->isEnabled());
            window.memo()->undo();
            QCOMPARE(window.memo()->toPlainText(), Typed);
        }
    }

    // The Query menu's entry with the same wizard: the query it builds goes nowhere, where
    // the panel's button takes it.
    void menuEntryLeavesThePanel() {
        Window window;
        window.details->setFields(u"Inventory"_s, QString(), Typed, QString());
        QCOMPARE(printedBy([&] {
                     ui::ShowSqlWizard(&window.main, window.details->dataSourceName(),
                                       window.details->userName(), window.details->password());
                 }),
                 QString());
        QCOMPARE(window.memo()->toPlainText(), Typed);
        QCOMPARE(window.changes, 0);
        window.button(2)->click();
        QCOMPARE(window.memo()->toPlainText(), Built);
    }
};

QTEST_MAIN(TestDetails)

#include "test_details.moc"
