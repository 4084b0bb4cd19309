// The connection details panel: its controls, the change announcements the main window
// enables Execute on, trimming, Paste SQL and the SQL wizard, a real plugin library built
// for the tests; the wizard client's failure report, its answers and the Query menu's entry.

#include "core/ui/messages.h"
#include "db/sqlwizard_interface.h"
#include "db/ui/details.h"
#include "db/ui/sqlwizardclient.h"
#include "support/testsupport.h"

#include <QAction>
#include <QClipboard>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QStyle>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

#include <tuple>

using namespace Qt::StringLiterals;
using testsupport::PrintedBy;

namespace {

const QString Working = QStringLiteral(QUILLET_TEST_WIZARD_DIR);
const QString Typed = u"select 'typed'"_s;
const QString Built = u"SELECT ID, ASSETTYPE FROM ASSETS"_s;

// While it lives, answers each modal message box with `answer` and notes its
// "TITLE: TEXT" and its default button.
class BoxAnswerer {
public:
    explicit BoxAnswerer(QMessageBox::StandardButton answer) {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this, answer] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || box == m_last || !box->isVisible())
                return;
            m_last = box;
            boxes << box->windowTitle() + QStringLiteral(": ") + box->text();
            defaults << box->standardButton(box->defaultButton());
            box->button(answer)->click();
        });
        m_timer.start(5);
    }
    QStringList boxes;
    QList<QMessageBox::StandardButton> defaults;

private:
    QTimer m_timer;
    QPointer<QMessageBox> m_last;
};

// The description of a failed call with the system's text, and with a bare code.
QString messageForm(const QString& message) {
    return u"'this->GetSQL(dsn, user, password, sql, nlq, nlqtext, (BSTR*)&sqltext)': %1 @ "
           u"sqlwizard_tlb/147"_s.arg(message);
}
QString codeForm(const QString& hex, const QString& decimal) {
    return u"(this->GetSQL(dsn, user, password, sql, nlq, nlqtext, (BSTR*)&sqltext)) Error: "
           u"%1 (%2) @ sqlwizard_tlb/147"_s.arg(hex, decimal);
}
// The box of a failed call as "TITLE: TEXT".
QString hrcheckBox(const QString& description) {
    return u"HRCHECK: : "_s + description +
           u"\nPress [Y]es to terminate, [N]o to continue and [C]ancel to Debug"_s;
}

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
    QStringList fields() const {
        return {details->dataSourceName(), details->userName(), details->password(),
                details->sqlText()};
    }
};

} // namespace

class TestDetails : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The test plugin in its default mode, message boxes printed instead of shown.
    void init() {
        for (const char* name : {"QUILLET_TEST_SQLWIZARD_MODE", "QUILLET_TEST_SQLWIZARD_RECORD"})
            qunsetenv(name);
        ui::SetUnattended(true);
        db::SetSqlWizardDirectories({Working});
    }
    void cleanup() {
        ui::SetUnattended(false);
        db::SetSqlWizardDirectories({});
    }

    void controls() {
        Window window;
        const std::tuple<const char*, const char*, const char*> labels[] = {
            {"LabelDSN", "&DSN Name", "EditDSN"},
            {"LabelID", "User &ID", "EditID"},
            {"LabelPass", "User &Password", "EditPass"},
            {"LabelSQL", "&SQL Code", "MemoSQL"}};
        for (const auto& [label, caption, buddy] : labels) {
            auto* widget = window.child<QLabel>(label);
            QVERIFY(widget && widget->buddy());
            QCOMPARE(widget->text(), QString(caption));
            QCOMPARE(widget->buddy()->objectName(), QString(buddy));
        }
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
    // change, the user and the password none. Tab moves through the boxes and buttons, and
    // the buttons' mnemonics press them (the labels' are their buddies').
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
        window.main.show();
        window.main.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window.main));
        const QStringList order{"EditDSN", "EditID", "EditPass", "MemoSQL", "SpeedButton1"};
        window.child(u"EditDSN"_s)->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), window.child(u"EditDSN"_s));
        for (int box = 0; box < 4; ++box) {
            QCOMPARE(QApplication::focusWidget()->objectName(), order[box]);
            QTest::keyClicks(QApplication::focusWidget(), typed[box]);
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(window.changes, changes);
        QCOMPARE(window.button(1)->isEnabled(), enabled);
        QCOMPARE(window.fields(), QStringList({typed[0].trimmed(), typed[1].trimmed(),
                                               typed[2].trimmed(), typed[3].trimmed()}));
        // A disabled button takes no focus.
        QCOMPARE(QApplication::focusWidget()->objectName(),
                 enabled ? u"SpeedButton1"_s : u"SpeedButton2"_s);
        QSignalSpy executed(window.execute, &QAction::triggered);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_X, Qt::AltModifier);
        QTRY_COMPARE(executed.size(), enabled ? 1 : 0);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Q, Qt::AltModifier);
        QTRY_COMPARE(window.memo()->toPlainText(), Built);
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
        QCOMPARE(window.fields(), QStringList(4, trimmed));
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

    // The wizard button passes the boxes as typed; a query replaces the SQL text as one
    // undoable edit and is announced; an empty one, a failure or the user ending the
    // operation in the report leaves the panel as it was.
    void wizardButton_data() {
        QTest::addColumn<QString>("directory");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QMessageBox::StandardButton>("answer");
        QTest::addColumn<QString>("memo");
        QTest::addColumn<QString>("box");
        const QString failed = hrcheckBox(messageForm(u"Unspecified error"_s));
        const auto no = QMessageBox::No;
        QTest::newRow("query") << Working << u"sql"_s << no << Built << QString();
        QTest::newRow("arguments as typed")
            << Working << u"echo"_s << no
            << u"dsn=[ Inventory ] user=[ admin] password=[secret\t] sql=[] nlq=[0] nlqtext=[]"_s
            << QString();
        QTest::newRow("empty query") << Working << u"empty"_s << no << Typed << QString();
        QTest::newRow("failure, go on") << Working << u"fail"_s << no << Typed << failed;
        QTest::newRow("failure, end")
            << Working << u"fail"_s << QMessageBox::Yes << Typed << failed;
        QTest::newRow("missing library")
            << QDir(Working).filePath(u"nothing-here"_s) << u"sql"_s << no << Typed
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
        QCOMPARE(PrintedBy([&] {
                     ui::ShowSqlWizard(&window.main, window.details->dataSourceName(),
                                       window.details->userName(), window.details->password());
                 }),
                 QString());
        QCOMPARE(window.memo()->toPlainText(), Typed);
        QCOMPARE(window.changes, 0);
        window.button(2)->click();
        QCOMPARE(window.memo()->toPlainText(), Built);
    }

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
        db::SqlWizardOutcome outcome;
        outcome.code = code;
        outcome.loaderError = loaderError;
        QTEST(ui::SqlWizardFailureText(outcome), "expected");
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
        QCOMPARE(testsupport::ReadFile(record),
                 QByteArray("dsn=[Inventory] user=[admin] password=[secret] sql=[] nlq=[0] "
                            "nlqtext=[]\nreleased objects=0 texts=0\n"));
    }
};

QTEST_MAIN(TestDetails)

#include "test_details.moc"
