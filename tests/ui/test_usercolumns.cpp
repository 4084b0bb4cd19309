// User columns: the add-column wizard's pages, checks and statements, the deletion dialog's
// list, choice and statements, and both run from the main window over real databases.

#include "assets/resulttablemodel.h"
#include "assets/ui/dbcontrols.h"
#include "assets/ui/edit.h"
#include "assets/ui/userfields.h"
#include "core/dateformat.h"
#include "core/ui/main.h"
#include "core/ui/messages.h"
#include "schema/schemacreation.h"
#include "schema/ui/custfld.h"
#include "schema/ui/delcolumn.h"
#include "support/assetschema.h"
#include "support/modalsteps.h"
#include "support/testsupport.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using testsupport::ModalSteps;
using testsupport::TestDatabase;
using ui::TfmMain;

namespace {

template <typename T> T* child(QWidget& parent, const char* name) {
    T* found = parent.findChild<T*>(QLatin1String(name));
    if (!found)
        qFatal("no child %s", name);
    return found;
}

void click(QWidget& dialog, const char* button) {
    child<QAbstractButton>(dialog, button)->click();
}

// The wizard's answers, page by page; `kind` names the type's radio button.
struct Answers {
    QString name;
    QString kind;
    bool fixed;
    QString length;
    QString defaultValue;
};

Answers A(const QString& name = "col", const QString& kind = "RB_Text", bool fixed = false,
          const QString& length = "50", const QString& defaultValue = {}) {
    return {name, kind, fixed, length, defaultValue};
}

int page(QWidget& wizard) {
    return child<QTabWidget>(wizard, "PageFieldDef")->currentIndex();
}

void answerAndGoToSummary(QWidget& wizard, const Answers& answers) {
    child<QLineEdit>(wizard, "EditName")->setText(answers.name);
    click(wizard, "BtnNext");
    if (page(wizard) != 1)
        return;
    click(wizard, qPrintable(answers.kind));
    click(wizard, answers.fixed ? "RB_Char" : "RB_VarChar");
    child<QLineEdit>(wizard, "EditLength")->setText(answers.length);
    child<QLineEdit>(wizard, "EditDefVal")->setText(answers.defaultValue);
    click(wizard, "BtnNext");
}

QString tabsShown(QWidget& wizard) {
    auto* pages = child<QTabWidget>(wizard, "PageFieldDef");
    QString shown;
    for (int i = 0; i < pages->count(); ++i)
        shown += pages->isTabVisible(i) ? '1' : '0';
    return shown;
}

db::DatabaseDialect forcedDialect(const QString& databaseType) {
    return db::DetectDatabaseDialect(databaseType, {}, {});
}

void useLocaleDates(const QString& locale) {
    core::ApplyDateFormat(QString(), QLocale(locale));
}

} // namespace

Q_DECLARE_METATYPE(Answers)

class TestUserColumns : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    db::odbc::Connection m_connection;

    QString logPath() const { return m_dir.filePath(QStringLiteral("columns.log")); }

    // A window on a fresh asset database; on a query of ASSETS its record editor is open.
    std::unique_ptr<TfmMain>
    openWindow(const TestDatabase& database, const QString& databaseType = {},
               const QString& sql = QStringLiteral("select * from ASSETS order by ID")) {
        m_connection.close();
        m_connection.open(database.connectionString());
        testsupport::CreateAssetsSchema(m_connection);
        m_connection.close();
        auto window = std::make_unique<TfmMain>(
            QStringLiteral("\"quillet\" \"ODBC=%1\" \"USER=%2\" \"PWD=%3\" \"LOG=%4\" "
                           "\"DBTYPE=%5\" \"SQL=%6\"")
                .arg(database.dsn, database.user, database.password, logPath(), databaseType, sql));
        window->show();
        window->findChild<QAction*>(QStringLiteral("ViewEditForm"))->trigger();
        return window;
    }

    static QStringList userFieldEdits(TfmMain& window) {
        QStringList names;
        for (const ui::TDBEdit* edit :
             window.editForm()->findChild<ui::TUserFieldsForm*>()->Edits())
            names << edit->objectName();
        return names;
    }

private Q_SLOTS:
    void initTestCase() {
        testsupport::UseTemporarySettings();
        ui::SetUnattended(true);
        useLocaleDates(QStringLiteral("en_US"));
    }

    void cleanup() {
        useLocaleDates(QStringLiteral("en_US"));
        m_connection.close();
    }

    // The statement for each dialect: quoting, type words, the default clause.
    void wizardStatements_data() {
        QTest::addColumn<QString>("databaseType");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<Answers>("answers");
        QTest::addColumn<QString>("statement");
        testsupport::AddRow("default, trimmed name", "", "en_US", A("  abc  "),
                            "ALTER TABLE ASSETS ADD USR_abc VARCHAR(50)");
        testsupport::AddRow("access, no default clause", "Access", "en_US",
                            A("field_1", "RB_Text", false, "50", "x"),
                            "ALTER TABLE ASSETS ADD COLUMN [USR_field_1] VARCHAR(50)\n");
        testsupport::AddRow("sql server currency", "SQL Server", "en_US",
                            A("cost", "RB_Currency", false, "50", "0"),
                            "ALTER TABLE ASSETS ADD [USR_cost] money\n DEFAULT 0");
        testsupport::AddRow("oracle date, de_DE", "Oracle", "de_DE",
                            A("d", "RB_Date", false, "50", "5.3.2004"),
                            "ALTER TABLE ASSETS ADD \"USR_d\" DATE\n DEFAULT "
                            "TO_DATE('05-03-2004','DD-MM-YYYY')");
        testsupport::AddRow("default date with time, en_US", "", "en_US",
                            A("d", "RB_Date", false, "50", "3/5/2004 10:30"),
                            "ALTER TABLE ASSETS ADD USR_d DATE\n DEFAULT "
                            "TO_DATE('05-03-2004','DD-MM-YYYY')");
        testsupport::AddRow("sql server date as typed", "SQL Server", "de_DE",
                            A("d", "RB_Date", false, "50", "5.3.2004"),
                            "ALTER TABLE ASSETS ADD [USR_d] datetime\n DEFAULT '5.3.2004'");
        testsupport::AddRow("sql server integer", "SQL Server", "en_US",
                            A("n", "RB_Number", false, "50", "-7"),
                            "ALTER TABLE ASSETS ADD [USR_n] int\n DEFAULT -7");
        testsupport::AddRow("access currency", "Access", "en_US",
                            A("n", "RB_Currency", false, "50", ""),
                            "ALTER TABLE ASSETS ADD COLUMN [USR_n] CURRENCY");
        testsupport::AddRow("oracle integer", "Oracle", "en_US", A("n", "RB_Number"),
                            "ALTER TABLE ASSETS ADD \"USR_n\" INTEGER");
        testsupport::AddRow("char 255, quote kept", "", "en_US",
                            A("note", "RB_Text", true, "255", "it's"),
                            "ALTER TABLE ASSETS ADD USR_note CHAR(255)\n DEFAULT 'it's'");
        testsupport::AddRow("oracle float", "Oracle8", "en_US",
                            A("p", "RB_Currency", false, "", "1.5"),
                            "ALTER TABLE ASSETS ADD \"USR_p\" FLOAT\n DEFAULT 1.5");
    }
    void wizardStatements() {
        QFETCH(QString, databaseType);
        QFETCH(Answers, answers);
        QFETCH(QString, locale);
        useLocaleDates(locale);
        ui::TCustFldForm wizard(forcedDialect(databaseType));
        wizard.show();
        answerAndGoToSummary(wizard, answers);
        QCOMPARE(page(wizard), 2);
        click(wizard, "BtnOK");
        QCOMPARE(wizard.result(), int(QDialog::Accepted));
        QCOMPARE(wizard.FinishError(), QString());
        QTEST(wizard.StatementText(), "statement");
    }

    // What each page lets through; a refused answer keeps the page and every value.
    void wizardChecks_data() {
        QTest::addColumn<Answers>("answers");
        QTest::addColumn<QString>("refusal");
        const QString none;
        testsupport::AddRow("name of blanks", A("   "), QString("Field Name cannot be empty."));
        testsupport::AddRow("length empty", A("c", "RB_Text", false, ""),
                            QString("Field Length must be greater then zero."));
        testsupport::AddRow("length 0", A("c", "RB_Text", false, "0"),
                            QString("Field Length must be greater then zero."));
        testsupport::AddRow("length 255", A("c", "RB_Text", false, "255"), none);
        testsupport::AddRow("length 256", A("c", "RB_Text", false, "256"),
                            QString("Field Length must be less then 255."));
        testsupport::AddRow("length abc", A("c", "RB_Text", true, "abc"),
                            QString("'abc' is not a valid integer value"));
        testsupport::AddRow("length of a date ignored", A("c", "RB_Date", false, "abc"), none);
        testsupport::AddRow("no such date", A("c", "RB_Date", false, "50", "2/30/2004"),
                            QString("The default value cannot be converted to a date/time."));
        testsupport::AddRow("integer", A("c", "RB_Number", false, "50", "1.5"),
                            QString("The default value cannot be converted to an integer."));
        testsupport::AddRow("currency", A("c", "RB_Currency", false, "50", "abc"),
                            QString("The default value cannot be converted to a currency(float)."));
    }
    void wizardChecks() {
        QFETCH(Answers, answers);
        QFETCH(QString, refusal);
        ui::TCustFldForm wizard(db::DatabaseDialect::Default);
        wizard.show();
        const QString printed =
            testsupport::PrintedBy([&] { answerAndGoToSummary(wizard, answers); });
        const bool nameRefused = answers.name.trimmed().isEmpty();
        QCOMPARE(page(wizard), refusal.isEmpty() ? 2 : nameRefused ? 0 : 1);
        QCOMPARE(printed.trimmed(),
                 refusal.isEmpty() ? QString() : QStringLiteral("Validation Error: ") + refusal);
        QCOMPARE(tabsShown(wizard), QLatin1String(refusal.isEmpty() ? "111"
                                                  : nameRefused     ? "100"
                                                                    : "110"));
        QCOMPARE(child<QLineEdit>(wizard, "EditLength")->text(), answers.length);
        QCOMPARE(child<QLineEdit>(wizard, "EditDefVal")->text(),
                 nameRefused ? QString() : answers.defaultValue);
    }

    // Next, Previous and the tabs turn the pages alike; Finish stays once reached; an
    // edited statement shows in the summary but Finish builds it afresh.
    void wizardPagesAndStatementEdit() {
        ui::TCustFldForm wizard(db::DatabaseDialect::Default);
        wizard.show();
        QCOMPARE(child<QLabel>(wizard, "lbDateFormat")->text(), core::ShortDateFormat());
        auto* name = child<QLineEdit>(wizard, "EditName");
        QCOMPARE(name->text(), QStringLiteral("field_1"));
        name->setText(QString(27, 'n'));
        QCOMPARE(name->text(), QString(26, 'n'));
        auto* pages = child<QTabWidget>(wizard, "PageFieldDef");
        const auto state = [&] {
            return QStringLiteral("%1 tabs %2 prev %3 next %4 finish %5 help %6")
                .arg(page(wizard))
                .arg(tabsShown(wizard))
                .arg(child<QPushButton>(wizard, "BtnPrev")->isEnabled())
                .arg(child<QPushButton>(wizard, "BtnNext")->isEnabled())
                .arg(child<QPushButton>(wizard, "BtnOK")->isEnabled())
                .arg(wizard.property("helpContext").toInt());
        };
        QCOMPARE(state(), QStringLiteral("0 tabs 100 prev 0 next 1 finish 0 help 1100"));
        click(wizard, "BtnNext");
        QCOMPARE(state(), QStringLiteral("1 tabs 110 prev 1 next 1 finish 0 help 1120"));
        click(wizard, "RB_Number");
        QVERIFY(!child<QWidget>(wizard, "PanelText")->isVisible());
        click(wizard, "RB_Text");
        QVERIFY(child<QWidget>(wizard, "PanelText")->isVisible());
        child<QLineEdit>(wizard, "EditDefVal")->setText(QStringLiteral("x"));
        pages->setCurrentIndex(2);
        QCOMPARE(state(), QStringLiteral("2 tabs 111 prev 1 next 0 finish 1 help 1140"));
        QCOMPARE(child<QPlainTextEdit>(wizard, "MemoResult")->toPlainText(),
                 "The following field will be added into the ASSETS table: \n\tName:\t USR_" +
                     QString(26, 'n') +
                     "\n\tType:\t VARCHAR\n\tLength:\t 50\n\tDefault:\t x\n\n SQL:\nALTER TABLE "
                     "ASSETS ADD USR_" +
                     QString(26, 'n') + " VARCHAR(50)\n DEFAULT 'x'");
        const QString built = wizard.StatementText();
        click(wizard, "BtnPrev");
        pages->setCurrentIndex(0);
        QCOMPARE(state(), QStringLiteral("0 tabs 111 prev 0 next 1 finish 1 help 1100"));
        pages->setCurrentIndex(2);

        const QString edited = QStringLiteral("alter table ASSETS add USR_other int");
        ModalSteps steps{
            [](QWidget& sql) {
                sql.findChild<QPlainTextEdit*>("SQLMemo")->setPlainText("DROP TABLE ASSETS");
                const QString printed = testsupport::PrintedBy([&] { click(sql, "BtnOK"); });
                QCOMPARE(printed.trimmed(),
                         QStringLiteral("Error: SQL statement must contain valid "
                                        "\"ALTER TABLE\" clause"));
                QVERIFY(sql.isVisible());
            },
            [&](QWidget& sql) {
                sql.findChild<QPlainTextEdit*>("SQLMemo")->setPlainText(edited);
                click(sql, "BtnOK");
            }};
        click(wizard, "BtnEditSQL");
        QVERIFY(steps.done());
        QVERIFY(child<QPlainTextEdit>(wizard, "MemoResult")
                    ->toPlainText()
                    .endsWith("\n SQL:\n" + edited));
        QCOMPARE(wizard.StatementText(), edited);
        click(wizard, "BtnOK");
        QCOMPARE(wizard.StatementText(), built);
        QCOMPARE(wizard.FinishError(), QString());

        // Finish on the first page with the name made blank: the error goes to the caller.
        pages->setCurrentIndex(0);
        name->setText(QStringLiteral(" "));
        click(wizard, "BtnOK");
        QCOMPARE(wizard.FinishError(), QStringLiteral("Field Name cannot be empty."));
    }

    // The list holds the user columns; OK needs a choice and a Yes, then the statement is
    // the dialect's.
    void deleteDialog_data() {
        QTest::addColumn<QString>("extraColumns");
        QTest::addColumn<QString>("databaseType");
        QTest::addColumn<int>("chosen");
        QTest::addColumn<QMessageBox::StandardButton>("answer");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("printed");
        QTest::addColumn<QString>("statement");
        const QString listed = "24 ASSETS fields found";
        const QString extra = "USR_ VARCHAR(5), USR_b INTEGER, Usr_c INTEGER";
        const auto yes = QMessageBox::Yes;
        testsupport::AddRow("nothing chosen", extra, "", -1, yes, listed,
                            "Error: Select a field to delete", "");
        testsupport::AddRow("answer no", extra, "", 1, QMessageBox::No, listed,
                            "Confirmation: The field 'USR_b' will be deleted.\nProceed with "
                            "deletion?",
                            "");
        testsupport::AddRow("default", extra, "", 1, yes, listed, "",
                            "ALTER TABLE ASSETS DROP COLUMN USR_b");
        testsupport::AddRow("access", extra, "Access", 0, yes, listed, "",
                            "ALTER TABLE ASSETS DROP COLUMN [USR_COST]");
        testsupport::AddRow("sql server", extra, "SQL Server", 0, yes, listed, "",
                            "ALTER TABLE ASSETS DROP COLUMN [USR_COST]");
        testsupport::AddRow("oracle", extra, "Oracle9", 0, yes, listed, "",
                            "ALTER TABLE ASSETS DROP COLUMN \"USR_COST\" CASCADE CONSTRAINTS");
        testsupport::AddRow("no user columns", "", "", -1, yes, "20 ASSETS fields found",
                            "Deletion: Select a field you want to delete.", "");
        testsupport::AddRow("no ASSETS table", "-", "", -1, yes, "Unable to open the ASSETS table",
                            "Deletion: Select a field you want to delete.", "");
    }
    void deleteDialog() {
        QFETCH(QString, extraColumns);
        QFETCH(QString, databaseType);
        QFETCH(int, chosen);
        QFETCH(QMessageBox::StandardButton, answer);
        QFETCH(QString, printed);
        QFETCH(QString, statement);
        auto window = openWindow(testsupport::TestDatabases().front(), {}, "select 1 as ONE");
        db::odbc::Connection& connection = window->Connection().connection();
        if (extraColumns == QLatin1String("-"))
            connection.execute(QStringLiteral("ALTER TABLE ASSETS RENAME TO ASSETS_GONE"));
        else if (!extraColumns.isEmpty())
            for (const QString& column : extraColumns.split(QStringLiteral(", ")))
                connection.execute(QStringLiteral("ALTER TABLE ASSETS ADD ") + column);
        else
            connection.execute(QStringLiteral("ALTER TABLE ASSETS DROP COLUMN USR_COST"));

        ui::TfmDeleteColumn dialog(connection, forcedDialect(databaseType), *window);
        QTEST(window->statusText(), "status");
        QStringList items;
        for (int i = 0; i < dialog.findChild<QListWidget*>()->count(); ++i)
            items << dialog.findChild<QListWidget*>()->item(i)->text();
        const bool listed = !extraColumns.isEmpty() && extraColumns != "-";
        QCOMPARE(items, listed ? QStringList({"COST", "b"}) : QStringList());
        if (chosen >= 0)
            dialog.findChild<QListWidget*>()->item(chosen)->setSelected(true);
        dialog.show();
        if (chosen >= 0)
            ui::QueueUnattendedAnswers({answer});
        const QString shown = testsupport::PrintedBy([&] { dialog.done(QDialog::Accepted); });
        if (!printed.isEmpty())
            QCOMPARE(shown.trimmed(), printed);
        QCOMPARE(dialog.isVisible(), statement.isEmpty());
        QCOMPARE(dialog.StatementText(), statement);
        if (chosen >= 0)
            QVERIFY(dialog.findChild<QListWidget*>()->item(chosen)->isSelected());
    }

    // A column of each type, with and without a default, added from the main window and
    // dropped again: the grid and the user-field page follow. A statement the database
    // refuses returns to the wizard with the database's message and changes nothing.
    void columnsAddedAndDropped_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<Answers>("answers");
        QTest::addColumn<bool>("added");
        const std::pair<const char*, Answers> columns[] = {
            {"varchar", A()},
            {"char with default", A("col", "RB_Text", true, "10", "x y")},
            {"date", A("col", "RB_Date")},
            {"integer", A("col", "RB_Number")},
            {"integer with default", A("col", "RB_Number", false, "", "5")},
            {"float", A("col", "RB_Currency")},
            {"float with default", A("col", "RB_Currency", false, "", "1.5")},
            // The default dialect's TO_DATE and an unescaped quote fail at the database.
            {"date with default", A("col", "RB_Date", false, "", "3/5/2004")},
            {"quote in the default", A("col", "RB_Text", false, "10", "it's")},
        };
        for (const TestDatabase& database : testsupport::TestDatabases()) {
            // The PostgreSQL driver makes the dialect SQL Server: brackets fail there.
            const bool postgres = database.is("postgresql");
            for (const auto& [name, answers] : columns) {
                const bool refused =
                    QByteArray(name).contains("date with") || QByteArray(name).contains("quote");
                if (!postgres || !refused)
                    testsupport::AddRow(qPrintable(database.label + ": " + name), database, answers,
                                        !postgres && !refused);
                if (postgres)
                    break;
            }
        }
    }
    void columnsAddedAndDropped() {
        QFETCH(TestDatabase, database);
        QFETCH(Answers, answers);
        QFETCH(bool, added);
        QUILLET_REQUIRE_DATABASE(database);
        auto window = openWindow(database);
        const auto inGrid = [&] { return window->viewQuery()->fieldIndex("USR_col") >= 0; };
        const auto onUserPage = [&] { return userFieldEdits(*window).contains("DB_USR_col"); };

        QString printed;
        {
            ModalSteps steps{[&](QWidget& wizard) {
                                 answerAndGoToSummary(wizard, answers);
                                 click(wizard, "BtnOK");
                             },
                             [&](QWidget& wizard) {
                                 QCOMPARE(page(wizard), 2);
                                 QCOMPARE(child<QLineEdit>(wizard, "EditDefVal")->text(),
                                          answers.defaultValue);
                                 click(wizard, "BtnCancel");
                             }};
            printed = testsupport::PrintedBy(
                [&] { window->findChild<QAction*>("ActionAddColumn")->trigger(); });
            QCOMPARE(steps.done(), !added);
        }
        QCOMPARE(inGrid(), added);
        QVERIFY(window->editorShown());
        QCOMPARE(onUserPage(), added);
        QCOMPARE(
            schema::FieldNamesOf(window->Connection().connection(), "ASSETS").contains("USR_col"),
            added);
        if (!added) {
            QVERIFY2(printed.startsWith("Error: An error has occurred:\r") &&
                         printed.trimmed().endsWith("\rReturn to the field definition form?"),
                     qPrintable(printed));
            const QString details = printed.section('\r', 1, 1);
            QVERIFY(details.size() > 10);
            QVERIFY(testsupport::ReadFile(logPath()).contains(details.toLocal8Bit()));
            return;
        }
        ModalSteps steps{[&](QWidget& dialog) {
            auto* list = child<QListWidget>(dialog, "lbFields");
            list->findItems("col", Qt::MatchExactly).front()->setSelected(true);
            click(dialog, "BtnOk");
        }};
        window->findChild<QAction*>("ActionDeleteColumn")->trigger();
        QVERIFY(steps.done());
        QVERIFY(!inGrid());
        QVERIFY(!onUserPage());
    }

    // A drop that fails is tried again after the default constraints are dropped; where
    // the catalogue query does not work, its error is the one reported.
    void failedDropReportsTheCatalogueError() {
        auto window = openWindow(testsupport::TestDatabases().front(), "Oracle");
        ModalSteps steps{[](QWidget& dialog) {
                             child<QListWidget>(dialog, "lbFields")->item(0)->setSelected(true);
                             click(dialog, "BtnOk");
                         },
                         [](QWidget& dialog) { click(dialog, "BtnCancel"); }};
        const QString printed = testsupport::PrintedBy(
            [&] { window->findChild<QAction*>("ActionDeleteColumn")->trigger(); });
        QVERIFY(steps.done());
        QVERIFY2(printed.contains("sysobjects") &&
                     printed.trimmed().endsWith("\rReturn to the field deletion form?"),
                 qPrintable(printed));
        QVERIFY(window->viewQuery()->fieldIndex("USR_COST") >= 0);
    }
};

QTEST_MAIN(TestUserColumns)
#include "test_usercolumns.moc"
