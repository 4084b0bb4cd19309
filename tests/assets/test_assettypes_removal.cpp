// Asset types and the removal of assets over real databases: the type list as picker and
// manager, the type form, deleting a type with its assets in one transaction, and removing
// the grid's selected rows (or every asset) after the confirmation.

#include "assets/resulttablemodel.h"
#include "assets/ui/assettype.h"
#include "assets/ui/dbgridrange.h"
#include "assets/ui/deleteform.h"
#include "assets/ui/grid.h"
#include "assets/ui/typelistdlg.h"
#include "core/commands.h"
#include "core/ui/messages.h"
#include "support/queryrows.h"
#include "support/testsupport.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

using testsupport::AddDatabaseRow;
using testsupport::PrintedBy;
using testsupport::TestDatabase;

namespace {

const auto Yes = QMessageBox::Yes;
const auto No = QMessageBox::No;
using Answers = QList<QMessageBox::StandardButton>;

// The main window's side: statements run on the connection, other commands noted as
// "<number> <argument>".
class MainWindow : public core::CommandTarget {
public:
    explicit MainWindow(db::odbc::Connection& connection) : m_connection(connection) {}
    qint64 DispatchCommand(int command, const QVariant& argument) override {
        if (command != core::CMD_EXECUTE_SQL) {
            sent << QString::number(command) + QLatin1Char(' ') + argument.toString();
            return 0;
        }
        try {
            return m_connection.execute(argument.toString());
        } catch (const std::exception& error) {
            m_error = QString::fromUtf8(error.what());
            return -1;
        }
    }
    QString LastCommandError() const override { return m_error; }
    QStringList sent;

private:
    db::odbc::Connection& m_connection;
    QString m_error;
};

QString typesText(db::odbc::Connection& connection) {
    return testsupport::RowsText(
        connection, QStringLiteral("select ASSETTYPE, NODEREQUIRED, SHOW_GENERAL_TAB, "
                                   "SHOW_PURCHASE_TAB, SHOW_WARRANTY_TAB, SHOW_USEREXT_TAB "
                                   "from ASSETTYPES order by ASSETTYPE"));
}

QString assetIds(db::odbc::Connection& connection) {
    return testsupport::RowsText(connection, QStringLiteral("select ID from ASSETS order by ID"));
}

const QString SeededTypes =
    "O'Brien,True,True,True,True,True;PC,True,True,False,True,False;Printer,False,True,True,"
    "True,True";
const QString SeededIds = "4;9;12;20;31";

// Once a modal dialog of the type shows, `work` works it as a user would.
template <typename Dialog> void whenShown(const std::function<void(Dialog&)>& work) {
    QTimer::singleShot(0, [work] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (!dialog)
            qFatal("the expected dialog is not showing");
        work(*dialog);
    });
}

template <typename Control> void click(QWidget& dialog, const char* name) {
    dialog.findChild<Control*>(QLatin1String(name))->click();
}

} // namespace

class TestAssetTypesRemoval : public QObject {
    Q_OBJECT

    db::odbc::Connection m_connection;

    // Private tables of this connection: ASSETS 4, 9 (PC), 12 (O'Brien), 20, 31 (Monitor)
    // and the types O'Brien, PC and Printer.
    void connect(const TestDatabase& database) {
        m_connection.open(database.connectionString());
        const QString flag = QStringLiteral("VARCHAR(10)");
        m_connection.execute(
            QStringLiteral("CREATE TEMPORARY TABLE ASSETTYPES (ASSETTYPE VARCHAR(50) PRIMARY KEY, "
                           "NODEREQUIRED %1, SHOW_GENERAL_TAB %1, SHOW_PURCHASE_TAB %1, "
                           "SHOW_WARRANTY_TAB %1, SHOW_USEREXT_TAB %1)")
                .arg(flag));
        m_connection.execute(QStringLiteral("CREATE TEMPORARY TABLE ASSETS (ID INTEGER PRIMARY "
                                            "KEY, ASSETTYPE VARCHAR(50), NAME VARCHAR(40))"));
        m_connection.execute(
            QStringLiteral("INSERT INTO ASSETTYPES VALUES ('PC', 'True', 'True', 'False', 'True', "
                           "'False'), ('Printer', 'False', 'True', 'True', 'True', 'True'), "
                           "('O''Brien', 'True', 'True', 'True', 'True', 'True')"));
        m_connection.execute(
            QStringLiteral("INSERT INTO ASSETS VALUES (4, 'PC', 'a'), (9, 'PC', 'b'), (12, "
                           "'O''Brien', 'c'), (20, 'Monitor', 'd'), (31, 'Monitor', 'e')"));
        QCOMPARE(typesText(m_connection), SeededTypes);
    }

private Q_SLOTS:
    void initTestCase() {
        testsupport::UseTemporarySettings();
        ui::SetUnattended(true);
    }

    void cleanup() { m_connection.close(); }

    // Letters without Alt, with or without Shift, trigger nothing in the removal dialog.
    void removalDialogIgnoresPlainLetters() {
        ui::TDelForm remove;
        remove.show();
        for (const char key : {'a', 'r', 'c', 's'}) {
            QTest::keyClick(&remove, key);
            QTest::keyClick(&remove, key, Qt::ShiftModifier);
        }
        QVERIFY(remove.isVisible());
        QVERIFY(remove.findChild<QRadioButton*>(QStringLiteral("RB_Sel"))->isChecked());
    }

    // OK and double click in picker and manager mode; Edit and Delete need a selection.
    void typeListRules_data() {
        QTest::addColumn<bool>("manager");
        QTest::addColumn<QString>("select");
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("result"); // -1: the dialog stays open
        QTest::addColumn<QString>("printed");
        const QString mustSelect = "Error: Asset Type must be selected\n";
        testsupport::AddRow("picker, selected", false, "Printer", "ok", 1, "");
        testsupport::AddRow("picker, none", false, "", "ok", -1, mustSelect);
        testsupport::AddRow("picker, double click", false, "PC", "double", 1, "");
        testsupport::AddRow("manager, selected", true, "PC", "ok", 1, "");
        testsupport::AddRow("manager, none", true, "", "ok", 0, "");
        testsupport::AddRow("edit, none", true, "", "edit", -1, mustSelect);
        testsupport::AddRow("delete, none", true, "", "delete", -1, mustSelect);
    }
    void typeListRules() {
        QFETCH(bool, manager);
        QFETCH(QString, select);
        QFETCH(QString, action);
        QFETCH(int, result);
        QFETCH(QString, printed);
        connect(testsupport::TestDatabases().front());
        MainWindow mainWindow(m_connection);
        ui::TAssetTypeListForm list(m_connection, mainWindow);
        if (manager)
            list.SetManagerMode();
        list.show();
        auto* names = list.findChild<QListWidget*>(QStringLiteral("TypeList"));
        QStringList shown;
        for (int row = 0; row < names->count(); ++row)
            shown << names->item(row)->text();
        QCOMPARE(shown, (QStringList{"O'Brien", "PC", "Printer"}));
        QCOMPARE(list.findChild<QPushButton*>(QStringLiteral("BtnOk"))->text(),
                 manager ? QStringLiteral("OK") : QStringLiteral("Add Asset..."));
        QCOMPARE(list.findChild<QPushButton*>(QStringLiteral("BtnCancel"))->isVisible(), !manager);
        QListWidgetItem* item = select.isEmpty() ? nullptr : names->findItems(select, {}).value(0);
        if (item)
            item->setSelected(true);

        QCOMPARE(PrintedBy([&] {
                     if (action == QLatin1String("double")) {
                         const QPoint centre = names->visualItemRect(item).center();
                         QTest::mousePress(names->viewport(), Qt::LeftButton, {}, centre);
                         QTest::mouseDClick(names->viewport(), Qt::LeftButton, {}, centre);
                     } else if (action == QLatin1String("edit"))
                         list.BtnEditAssetTypeClick();
                     else if (action == QLatin1String("delete"))
                         list.BtnDeleteAssetTypeClick();
                     else
                         list.BtnOkClick();
                 }),
                 printed);
        QCOMPARE(list.isVisible(), result < 0);
        if (result >= 0)
            QCOMPARE(list.result(), result);
        QCOMPARE(list.SelectedType(), result == 1 ? select : QString());
    }

    // Add and Edit open the type form, on the selected type for Edit, and show the list
    // anew after OK.
    void typeListAddsAndEditsThroughTheForm() {
        connect(testsupport::TestDatabases().front());
        MainWindow mainWindow(m_connection);
        ui::TAssetTypeListForm list(m_connection, mainWindow);
        list.SetManagerMode();
        list.show();
        whenShown<ui::TAssetTypeForm>([](ui::TAssetTypeForm& form) {
            QTest::keyClicks(form.findChild<QLineEdit*>(QStringLiteral("DB_Name")), "Scanner");
            click<QPushButton>(form, "BtnOk");
        });
        click<QPushButton>(list, "BitBtn4");
        auto* names = list.findChild<QListWidget*>(QStringLiteral("TypeList"));
        QCOMPARE(names->count(), 4);
        names->item(3)->setSelected(true);
        whenShown<ui::TAssetTypeForm>([](ui::TAssetTypeForm& form) {
            QCOMPARE(form.AssetType(), QStringLiteral("Scanner"));
            click<QCheckBox>(form, "DB_User");
            click<QPushButton>(form, "BtnOk");
        });
        click<QPushButton>(list, "BitBtn5");
        QCOMPARE(names->count(), 4);
        QCOMPARE(typesText(m_connection), SeededTypes + ";Scanner,True,True,True,True,False");
    }

    // The type form: a new type starts with every flag set; flags are stored as "True" and
    // "False"; an empty or taken name keeps the form open; Cancel stores nothing.
    void typeForm_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("clicked");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("shownFlags");
        QTest::addColumn<QString>("printed"); // the start of what the boxes print
        QTest::addColumn<int>("result");      // -1: the form stays open
        QTest::addColumn<QString>("stored");
        AddDatabaseRow("new type", "", "Scanner", QStringList{"DB_Warranty"}, true, "11111", "", 1,
                       SeededTypes + ";Scanner,True,True,True,False,True");
        AddDatabaseRow("new type without a name", "", "", QStringList{}, true, "11111",
                       "test_assettypes_removal: Asset Type cannot be empty", -1, SeededTypes);
        AddDatabaseRow("new type with a taken name", "", "PC", QStringList{}, true, "11111",
                       "Error: ", -1, SeededTypes);
        AddDatabaseRow(
            "edited type", "PC", "", QStringList{"DB_Node", "DB_User"}, true, "11010", "", 1,
            "O'Brien,True,True,True,True,True;PC,False,True,False,True,True;Printer,False,"
            "True,True,True,True");
        AddDatabaseRow(
            "renamed type", "Printer", "s", QStringList{}, true, "01111", "", 1,
            "O'Brien,True,True,True,True,True;PC,True,True,False,True,False;Printers,False,"
            "True,True,True,True");
        AddDatabaseRow("edited type, cancelled", "PC", "x", QStringList{"DB_Node"}, false, "11010",
                       "", 0, SeededTypes);
    }
    void typeForm() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, type);
        QFETCH(QString, typed);
        QFETCH(QStringList, clicked);
        QFETCH(bool, ok);
        QFETCH(QString, shownFlags);
        QFETCH(QString, printed);
        QFETCH(int, result);
        QFETCH(QString, stored);
        QUILLET_REQUIRE_DATABASE(database);
        connect(database);
        ui::TAssetTypeForm form(m_connection);
        form.SetAssetType(type);
        form.show();
        auto* name = form.findChild<QLineEdit*>(QStringLiteral("DB_Name"));
        QCOMPARE(name->text(), type);
        QString flags;
        for (const char* box :
             {"DB_Node", "DB_GeneralTab", "DB_Purchase", "DB_Warranty", "DB_User"})
            flags += form.findChild<QCheckBox*>(QLatin1String(box))->isChecked() ? '1' : '0';
        QCOMPARE(flags, shownFlags);

        QTest::keyClick(name, Qt::Key_End);
        QTest::keyClicks(name, typed);
        for (const QString& box : clicked)
            form.findChild<QCheckBox*>(box)->click();
        const QString boxes = PrintedBy([&] {
            if (ok)
                form.findChild<QPushButton*>(QStringLiteral("BtnOk"))->click();
            else
                form.findChild<QPushButton*>(QStringLiteral("BtnCancel"))->click();
        });
        QVERIFY2(printed.isEmpty() ? boxes.isEmpty() : boxes.startsWith(printed),
                 qPrintable(boxes));
        QCOMPARE(form.isVisible(), result < 0);
        if (result >= 0)
            QCOMPARE(form.result(), result);
        QCOMPARE(typesText(m_connection), stored);
    }

    // A type whose name has a quote cannot even be read; the form closes with Cancel.
    void typeFormWithQuoteInNameCloses() {
        connect(testsupport::TestDatabases().front());
        ui::TAssetTypeForm form(m_connection);
        form.SetAssetType(QStringLiteral("O'Brien"));
        QVERIFY(PrintedBy([&] { form.show(); }).startsWith(QStringLiteral("Error: ")));
        QTRY_VERIFY(!form.isVisible());
        QCOMPARE(form.result(), int(QDialog::Rejected));
    }

    // Deleting a type with its assets: one transaction (an open one is committed first),
    // the count in the status bar, a warning only when assets went; a quote in the name
    // fails the first statement and nothing is removed.
    void deleteType_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("type");
        QTest::addColumn<Answers>("answers");
        QTest::addColumn<QString>("printed"); // after the confirmation
        QTest::addColumn<QStringList>("sent");
        QTest::addColumn<QString>("ids");
        QTest::addColumn<QString>("types");
        const QString committed = ";99";
        AddDatabaseRow(
            "with assets", "PC", Answers{Yes},
            "Warning: 2 Asset(s) deleted.\rSelect Execute SQL from the Query Menu to display "
            "changes.\n",
            QStringList{"10101 3 record(s) deleted."}, "12;20;31;99", "O'Brien;Printer");
        AddDatabaseRow("without assets", "Printer", Answers{Yes}, "",
                       QStringList{"10101 1 record(s) deleted."}, SeededIds + committed,
                       "O'Brien;PC");
        AddDatabaseRow("quote in the name", "O'Brien", Answers{Yes},
                       "Assets Deletion Error: ", QStringList{}, SeededIds + committed,
                       "O'Brien;PC;Printer");
        AddDatabaseRow("answered No", "PC", Answers{No}, "", QStringList{}, SeededIds + committed,
                       "O'Brien;PC;Printer");
    }
    void deleteType() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, type);
        QFETCH(Answers, answers);
        QFETCH(QString, printed);
        QFETCH(QStringList, sent);
        QFETCH(QString, ids);
        QFETCH(QString, types);
        QUILLET_REQUIRE_DATABASE(database);
        connect(database);
        MainWindow mainWindow(m_connection);
        ui::TAssetTypeListForm list(m_connection, mainWindow);
        list.SetManagerMode();
        list.show();
        auto* names = list.findChild<QListWidget*>(QStringLiteral("TypeList"));
        names->findItems(type, {}).value(0)->setSelected(true);
        m_connection.begin();
        m_connection.execute(QStringLiteral("INSERT INTO ASSETS VALUES (99, 'Monitor', 'f')"));

        ui::QueueUnattendedAnswers(answers);
        const QString boxes = PrintedBy([&] { list.BtnDeleteAssetTypeClick(); });
        const QString question = "Delete confirmation: Are you sure you want to delete the \"" +
                                 type + "\" asset type\r and all Asset entries of this type?\n";
        QVERIFY2(boxes.startsWith(question + printed), qPrintable(boxes));
        QCOMPARE(boxes == question + printed, !printed.endsWith(QLatin1String(": ")));
        QCOMPARE(mainWindow.sent, sent);
        if (answers.front() == Yes)
            QVERIFY(!m_connection.inTransaction());
        else
            m_connection.commit();
        QCOMPARE(assetIds(m_connection), ids);
        QCOMPARE(testsupport::RowsText(
                     m_connection,
                     QStringLiteral("select ASSETTYPE from ASSETTYPES order by ASSETTYPE")),
                 types);
        QCOMPARE(names->count(), int(types.count(QLatin1Char(';')) + 1));
    }

    // Removing rows from the results grid: the selected rows' IDs in the order they were
    // selected, or every asset even when the grid shows a few; refusals delete nothing.
    void removal_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QStringList>("clicks");
        QTest::addColumn<bool>("allRows");
        QTest::addColumn<Answers>("answers");
        QTest::addColumn<QString>("printed"); // after the confirmation
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QStringList>("sent");
        QTest::addColumn<QString>("ids");
        const QString idAndName = "select ID, NAME from ASSETS order by ID";
        const QString untouched = "delete from ASSETS";
        AddDatabaseRow("a range", idAndName, QStringList{"press 0", "shift 2"}, false, Answers{},
                       "", "delete from ASSETS where ID in (4, 9, 12)",
                       QStringList{"10102 1", "10101 3 record(s) have been deleted"}, "20;31");
        AddDatabaseRow("in the order of selection", idAndName,
                       QStringList{"ctrl 3", "ctrl 0", "ctrl 1"}, false, Answers{}, "",
                       "delete from ASSETS where ID in (20, 4, 9)",
                       QStringList{"10102 1", "10101 3 record(s) have been deleted"}, "12;31");
        AddDatabaseRow("all rows of a subset", QString("select ID, NAME from ASSETS where ID > 10"),
                       QStringList{"press 0"}, true, Answers{}, "", untouched,
                       QStringList{"10102 1", "10101 5 record(s) have been deleted"}, "");
        AddDatabaseRow("nothing selected", idAndName, QStringList{}, false, Answers{},
                       "Error: No records have been selected\n", untouched, QStringList{},
                       SeededIds);
        AddDatabaseRow("no ID field", QString("select NAME from ASSETS"), QStringList{}, true,
                       Answers{}, "Error: ID field is not defined.\n", untouched, QStringList{},
                       SeededIds);
        AddDatabaseRow("answered No", idAndName, QStringList{"press 0"}, false, Answers{No}, "",
                       untouched, QStringList{}, SeededIds);
    }
    void removal() {
        QFETCH(TestDatabase, database);
        QFETCH(QString, sql);
        QFETCH(QStringList, clicks);
        QFETCH(bool, allRows);
        QFETCH(Answers, answers);
        QFETCH(QString, printed);
        QFETCH(QString, statement);
        QFETCH(QStringList, sent);
        QFETCH(QString, ids);
        QUILLET_REQUIRE_DATABASE(database);
        connect(database);
        MainWindow mainWindow(m_connection);
        assets::ResultTableModel result;
        db::odbc::Statement query(m_connection);
        query.executeDirect(sql);
        result.open(std::move(query));
        result.waitForAllRows();
        ui::TGridForm form(mainWindow, ui::GridActions{});
        form.SetModel(&result);
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        for (const QString& step : clicks) {
            // "press R", "ctrl R", "shift R": a click on row R with those keys held.
            const Qt::KeyboardModifiers held =
                step.startsWith(QLatin1String("ctrl"))    ? Qt::ControlModifier
                : step.startsWith(QLatin1String("shift")) ? Qt::ShiftModifier
                                                          : Qt::NoModifier;
            const QRect cell = form.Grid()->visualRect(
                form.Grid()->model()->index(step.section(' ', 1).toInt(), 0));
            QTest::mouseClick(form.Grid()->viewport(), Qt::LeftButton, held, cell.center());
        }
        mainWindow.sent.clear();

        ui::QueueUnattendedAnswers(answers);
        whenShown<ui::TDelForm>([allRows](ui::TDelForm& dialog) {
            if (allRows)
                click<QRadioButton>(dialog, "RB_All");
            click<QPushButton>(dialog, "BtnOk");
        });
        const QString boxes = PrintedBy([&] { form.DeleteSelectedRecords(m_connection); });
        QCOMPARE(boxes, "Remove Assets: Are you sure you want to remove these Assets?\n" + printed);
        QCOMPARE(form.DeleteQuery(), statement);
        QCOMPARE(mainWindow.sent, sent);
        QCOMPARE(assetIds(m_connection), ids);
    }
};

QTEST_MAIN(TestAssetTypesRemoval)
#include "test_assettypes_removal.moc"
