// The main window's query routine over a real SQLite database: connection reuse,
// parameters, the status text, the remembered connection, the ID column and refresh.

#include "assets/resulttablemodel.h"
#include "assets/ui/dbgridrange.h"
#include "assets/ui/grid.h"
#include "core/registry.h"
#include "core/ui/main.h"
#include "core/ui/messages.h"
#include "core/ui/preferences.h"
#include "db/odbc/odbc.h"
#include "db/ui/details.h"
#include "support/testsupport.h"

#include <QAction>
#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <memory>

using ui::TfmMain;

namespace {

const QString Dsn = QStringLiteral("QuilletMainWindow");
const QString OtherDsn = QStringLiteral("QuilletMainWindowOther");

// Marks a database with its name, in a table of that name.
void createWhichDb(const QString& dsn, const QString& name) {
    db::odbc::Connection connection;
    connection.open(QStringLiteral("DSN=") + dsn);
    connection.execute(QStringLiteral("CREATE TABLE WHICHDB (NAME VARCHAR(10))"));
    connection.execute(QStringLiteral("INSERT INTO WHICHDB VALUES ('%1')").arg(name));
}

QString rememberedSql() {
    QString value;
    core::ReadRegistryString(QStringLiteral("LastConnection"), QStringLiteral("SQL"), value, 64000,
                             std::nullopt);
    return value;
}

} // namespace

class TestMainWindow : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    static std::unique_ptr<TfmMain> openWindow(const QString& sql, const QString& extra = {}) {
        const QString raw =
            QStringLiteral("\"quillet\" \"ODBC=%1\" \"SQL=%2\"%3").arg(Dsn, sql, extra);
        return std::make_unique<TfmMain>(raw);
    }

    static QString cell(TfmMain& window, int row, const QString& field) {
        assets::ResultTableModel* model = window.viewQuery();
        const int column = model->fieldIndex(field);
        return model->data(model->index(row, column)).toString();
    }

    // A window on the PostgreSQL server, or none when it is not configured.
    static std::unique_ptr<TfmMain> serverWindow(const QString& sql) {
        const auto server = testsupport::ServerDsn(testsupport::Server::PostgreSql);
        if (!server.isAvailable())
            return nullptr;
        return std::make_unique<TfmMain>(
            QStringLiteral("\"quillet\" \"ODBC=%1\" \"USER=%2\" \"PWD=%3\" \"SQL=%4\"")
                .arg(server.dsn, server.user, server.password, sql));
    }

    static void setPanelSql(TfmMain& window, const QString& sql) {
        window.findChild<QPlainTextEdit*>(QStringLiteral("MemoSQL"))->setPlainText(sql);
    }

    // Opens the details panel and runs `sql` from it.
    static void runFromPanel(TfmMain& window, const QString& sql) {
        window.findChild<QAction*>(QStringLiteral("ViewDetails"))->trigger();
        setPanelSql(window, sql);
        window.RunQuery();
    }

private Q_SLOTS:
    void initTestCase() {
        testsupport::UseTemporarySettings();
        ui::SetUnattended(true);
        testsupport::SqliteDsn(Dsn, m_dir.filePath(QStringLiteral("assets.db")));
        db::odbc::Connection connection;
        connection.open(QStringLiteral("DSN=") + Dsn);
        connection.execute(QStringLiteral(
            "CREATE TABLE ASSETS (ID INTEGER PRIMARY KEY, ASSETTYPE VARCHAR(50), QTY INTEGER)"));
        connection.begin();
        db::odbc::Statement insert(connection);
        insert.prepare(QStringLiteral("INSERT INTO ASSETS (ASSETTYPE, QTY) VALUES (?, ?)"));
        for (int i = 1; i <= 250; ++i) {
            insert.bindText(1, i % 2 ? QStringLiteral("PC") : QStringLiteral("Printer"));
            insert.bindText(2, QString::number(i));
            insert.execute();
        }
        connection.commit();
        createWhichDb(Dsn, QStringLiteral("first"));
        testsupport::SqliteDsn(OtherDsn, m_dir.filePath(QStringLiteral("other.db")));
        createWhichDb(OtherDsn, QStringLiteral("second"));
    }

    // The startup query shows its rows and count; a query on ASSETS gets the ID column,
    // hidden; the remembered text is the user's, not the rewritten one.
    void startupQuery_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<bool>("editable");
        QTest::addColumn<QString>("status");
        const QString three = "There are 3 record(s) in the dataset";
        testsupport::AddRow("ID appended", "select ASSETTYPE from ASSETS where QTY <= 3", true,
                            three);
        testsupport::AddRow("ID selected", "select ID, ASSETTYPE from ASSETS where QTY < 4", true,
                            three);
        testsupport::AddRow("another table", "select 1 as ONE", false,
                            "There are 1 record(s) in the dataset");
    }
    void startupQuery() {
        QFETCH(QString, sql);
        QFETCH(bool, editable);
        auto window = openWindow(sql);
        QTEST(window->statusText(), "status");
        QCOMPARE(window->editableAssets(), editable);
        const int idIndex = window->viewQuery()->fieldIndex(QStringLiteral("ID"));
        QCOMPARE(idIndex >= 0, editable);
        if (editable)
            QVERIFY(window->gridForm()->Grid()->isColumnHidden(idIndex));
        QCOMPARE(rememberedSql(), sql);
    }

    void parametersAskedInOrder_data() {
        QTest::addColumn<QStringList>("answers");
        QTest::addColumn<QString>("status");
        testsupport::AddRow("both answered", QStringList{"PC", "5"},
                            QString("There are 3 record(s) in the dataset"));
        testsupport::AddRow("second cancelled", QStringList{"PC", QString()}, QString());
    }

    void parametersAskedInOrder() {
        QFETCH(QStringList, answers);
        QFETCH(QString, status);
        auto window = openWindow(QStringLiteral("select QTY from ASSETS where 1 = 0"));
        QStringList asked;
        window->setParameterPrompt([&](const QString& name) -> std::optional<QString> {
            const QString answer = answers.value(asked.size());
            asked << name;
            return answer.isNull() ? std::nullopt : std::optional<QString>(answer);
        });
        const QString before = window->statusText();
        runFromPanel(*window, QStringLiteral("select QTY from ASSETS where ASSETTYPE = :kind and "
                                             "QTY <= :most and ':x' <> '::'"));
        // Appending ID to a query on ASSETS writes the statement in upper case.
        QCOMPARE(asked, (QStringList{"KIND", "MOST"}));
        QCOMPARE(window->statusText(), status.isEmpty() ? before : status);
        QCOMPARE(window->viewQuery()->isOpen(), !status.isEmpty());
    }

    void failedQueryKeepsStatusAndLastConnection() {
        auto window = openWindow(QStringLiteral("select QTY from ASSETS where QTY = 1"));
        const QString status = window->statusText();
        runFromPanel(*window, QStringLiteral("select nothing from NOWHERE"));
        QVERIFY(ui::ErrorWasShown());
        QCOMPARE(window->statusText(), status);
        QVERIFY(!window->viewQuery()->isOpen());
        QVERIFY(!window->editableAssets());
        QCOMPARE(rememberedSql(), QStringLiteral("select QTY from ASSETS where QTY = 1"));
        // Statements from other windows answer the rows they changed, or less than 0.
        QCOMPARE(
            window->DispatchCommand(core::CMD_EXECUTE_SQL,
                                    QStringLiteral("UPDATE ASSETS SET QTY = QTY WHERE QTY <= 4")),
            4);
        QVERIFY(window->DispatchCommand(core::CMD_EXECUTE_SQL, QStringLiteral("UPDATE NOWHERE")) <
                0);
    }

    // A status text from another window stays when the last rows of a large result arrive.
    void commandStatusTextOutlivesTheFetch() {
        auto window = openWindow(QStringLiteral("select 1 as ONE"));
        runFromPanel(*window, QStringLiteral("with recursive c(x) as (select 1 union all select x "
                                             "+ 1 from c where x < 100000) select x from c"));
        window->DispatchCommand(core::CMD_STATUS_TEXT, QStringLiteral("3 record(s) deleted"));
        window->viewQuery()->waitForAllRows();
        QCOMPARE(window->statusText(), QStringLiteral("3 record(s) deleted"));
    }

    // What the panel names is what the statement reaches. A temporary table lives only as
    // long as its connection: it tells whether the window kept the connection.
    void panelChangesReachTheNamedDatabase_data() {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("database");
        QTest::addColumn<int>("sessionMarks");
        testsupport::AddRow("unchanged", "EditID", "", "first", 1);
        testsupport::AddRow("password", "EditPass", "other", "first", 0);
        testsupport::AddRow("data source", "EditDSN", OtherDsn, "second", 0);
        testsupport::AddRow("unknown data source", "EditDSN", "NoSuchSource", "", 0);
    }

    void panelChangesReachTheNamedDatabase() {
        QFETCH(QString, box);
        QFETCH(QString, value);
        QFETCH(QString, database);
        QFETCH(int, sessionMarks);
        auto window = openWindow(QStringLiteral("select 1 as ONE"));
        window->DispatchCommand(core::CMD_EXECUTE_SQL,
                                QStringLiteral("CREATE TEMP TABLE SESSIONMARK (X INTEGER)"));
        window->findChild<QAction*>(QStringLiteral("ViewDetails"))->trigger();
        window->findChild<QLineEdit*>(box)->setText(value);
        setPanelSql(*window,
                    QStringLiteral("select NAME, (select count(*) from sqlite_temp_master) "
                                   "as MARKS from WHICHDB"));
        window->RunQuery();
        const QString shown =
            window->findChild<QLabel*>(QStringLiteral("StatusDataSource"))->text();
        if (database.isEmpty()) {
            QVERIFY(!window->viewQuery()->isOpen());
            QCOMPARE(shown, QStringLiteral("Not connected"));
            return;
        }
        QCOMPARE(cell(*window, 0, QStringLiteral("NAME")), database);
        QCOMPARE(cell(*window, 0, QStringLiteral("MARKS")).toInt(), sessionMarks);
        QVERIFY2(shown.endsWith(box == QLatin1String("EditDSN") ? value : Dsn), qPrintable(shown));
    }

    // A statement without a result set ran all the same: the box says what it changed.
    void statementWithoutRowsSaysWhatItChanged() {
        const QString log = m_dir.filePath(QStringLiteral("norows.log"));
        auto window = openWindow(QStringLiteral("UPDATE ASSETS SET QTY = QTY WHERE QTY <= 4"),
                                 QStringLiteral(" \"LOG=%1\"").arg(log));
        QVERIFY(!window->viewQuery()->isOpen());
        QVERIFY2(testsupport::ReadFile(log).contains(
                     "The statement ran and changed 4 row(s), but it does not return a result set "
                     "to show."),
                 testsupport::ReadFile(log).constData());
    }

    // While a slow statement runs the window repaints, and Cancel in the status bar stops it.
    void slowStatementKeepsTheWindowAliveAndCancels() {
        const auto shown = serverWindow(QStringLiteral("select 1 as ONE"));
        if (!shown)
            QSKIP("postgresql is not configured for the tests");
        TfmMain& window = *shown;
        window.show();
        bool paintedWhileRunning = false;
        QTimer::singleShot(500, &window, [&] {
            auto* cancel = window.findChild<QToolButton*>(QStringLiteral("BtnCancelStatement"));
            QVERIFY(cancel->isVisible() && cancel->isEnabled());
            QVERIFY(!window.findChild<QAction*>(QStringLiteral("ActionExecute"))->isEnabled());
            paintedWhileRunning = !window.grab().isNull();
            QTest::mouseClick(cancel, Qt::LeftButton);
        });
        QElapsedTimer elapsed;
        elapsed.start();
        runFromPanel(window, QStringLiteral("select pg_sleep(60) as SLEPT"));
        QVERIFY(paintedWhileRunning);
        QVERIFY2(elapsed.elapsed() < 20000, "the statement was not cancelled");
        QVERIFY(!window.viewQuery()->isOpen());
        QVERIFY(window.findChild<QAction*>(QStringLiteral("ActionExecute"))->isEnabled());
    }

    // Size and position come back in the next run; the preferences show every tab title.
    void windowLayoutIsKeptAndPreferencesShowEveryTab() {
        {
            auto window = openWindow(QStringLiteral("select 1 as ONE"));
            window->setGeometry(40, 50, 700, 420);
            window->close();
        }
        auto window = openWindow(QStringLiteral("select 1 as ONE"));
        QCOMPARE(window->size(), QSize(700, 420));

        ui::TPreferences preferences(window.get());
        preferences.show();
        const auto* tabs = preferences.findChild<QTabWidget*>(QStringLiteral("PageControl1"));
        QVERIFY(tabs->tabBar()->width() >= tabs->tabBar()->sizeHint().width());
    }

    void refreshKeepsTheCurrentRecord_data() {
        QTest::addColumn<QString>("sql");
        testsupport::AddRow("small result", "select ID, ASSETTYPE from ASSETS where QTY <= 50");
        testsupport::AddRow("large result", "select ID, ASSETTYPE from ASSETS");
    }

    // The changed record moves to the other end of the sorted result; refreshing must
    // keep it current and keep the order.
    void refreshKeepsTheCurrentRecord() {
        QFETCH(QString, sql);
        auto window = openWindow(sql);
        assets::ResultTableModel* model = window->viewQuery();
        model->waitForAllRows();
        model->setSortText(QStringLiteral("[ASSETTYPE] DESC"));
        model->waitForSort();
        ui::TDBGridRange* grid = window->gridForm()->Grid();
        grid->setCurrentIndex(model->index(7, 1));
        const QString id = cell(*window, 7, QStringLiteral("ID"));
        const QString type = cell(*window, 7, QStringLiteral("ASSETTYPE"));
        const QString update =
            QStringLiteral("UPDATE ASSETS SET ASSETTYPE = '%1' WHERE ID = ") + id;
        QCOMPARE(window->DispatchCommand(core::CMD_EXECUTE_SQL, update.arg(QStringLiteral("AAA"))),
                 1);
        window->DispatchCommand(core::CMD_REQUERY, 0);
        model->waitForAllRows();
        const int row = grid->currentIndex().row();
        QCOMPARE(model->sortText(), QStringLiteral("[ASSETTYPE] DESC"));
        QCOMPARE(row, model->rowCount() - 1);
        QCOMPARE(cell(*window, row, QStringLiteral("ID")), id);
        QCOMPARE(cell(*window, row, QStringLiteral("ASSETTYPE")), QStringLiteral("AAA"));
        window->DispatchCommand(core::CMD_EXECUTE_SQL, update.arg(type));
    }

    // The server ends the session between two runs: the next run reports the driver's
    // error, and the one after it connects again.
    void droppedServerSessionIsReportedThenReconnected() {
        const auto shown = serverWindow(QStringLiteral("select pg_backend_pid() as PID"));
        if (!shown)
            QSKIP("postgresql is not configured for the tests");
        TfmMain& window = *shown;
        QVERIFY(window.viewQuery()->isOpen());
        const QString firstSession = cell(window, 0, QStringLiteral("PID"));
        window.DispatchCommand(core::CMD_EXECUTE_SQL,
                               QStringLiteral("select pg_terminate_backend(pg_backend_pid())"));
        window.RunQuery();
        if (!window.viewQuery()->isOpen())
            window.RunQuery();
        QVERIFY(window.viewQuery()->isOpen());
        QVERIFY(cell(window, 0, QStringLiteral("PID")) != firstSession);
    }

    // Columns fit the rows on screen, up to a limit, and a stored width wins over the fit.
    void columnWidthsFitTheRowsUnlessStored() {
        core::WriteRegistryString(QStringLiteral("Preferences\\GridLayout"),
                                  QStringLiteral("STORED"), QStringLiteral("1,77"));
        auto window = openWindow(QStringLiteral("select 'x' as NARROW, '%1' as WIDE, '%2' as HUGE, "
                                                "'y' as STORED")
                                     .arg(QString(12, 'x'), QString(200, 'h')));
        ui::TDBGridRange* grid = window->gridForm()->Grid();
        const int limit = grid->fontMetrics().horizontalAdvance(QLatin1Char('x')) * 30;
        QVERIFY(grid->columnWidth(1) > grid->columnWidth(0));
        QVERIFY(grid->columnWidth(1) < limit);
        QCOMPARE(grid->columnWidth(2), limit);
        QCOMPARE(grid->columnWidth(3), 77);
    }

    // Without a connection, or one that fails, the panel opens: on the last connection's
    // data source and statement, or on the one that failed. Paste SQL replaces its text.
    void detailsPanelOpensWithoutAConnection() {
        TfmMain failed(QStringLiteral("\"quillet\" \"ODBC=NoSuchSource\" \"SQL=select 1\""));
        QVERIFY(failed.detailsForm() && failed.detailsForm()->isVisibleTo(&failed));
        QCOMPARE(failed.detailsForm()->dataSourceName(), QStringLiteral("NoSuchSource"));

        core::WriteRegistryString(QStringLiteral("LastConnection"), QStringLiteral("DSN"), Dsn);
        core::WriteRegistryString(QStringLiteral("LastConnection"), QStringLiteral("SQL"),
                                  QStringLiteral("select 2 as TWO"));
        TfmMain window(QStringLiteral("\"quillet\""));
        QVERIFY(window.detailsForm());
        QCOMPARE(window.detailsForm()->dataSourceName(), Dsn);
        QCOMPARE(window.detailsForm()->sqlText(), QStringLiteral("select 2 as TWO"));
        QVERIFY(!window.viewQuery()->isOpen());
        QAction* execute = window.findChild<QAction*>(QStringLiteral("ActionExecute"));
        QVERIFY(execute->isEnabled());
        QGuiApplication::clipboard()->setText(QStringLiteral("select 3 as THREE"));
        window.findChild<QAction*>(QStringLiteral("ActionPasteSQL"))->trigger();
        QCOMPARE(window.detailsForm()->sqlText(), QStringLiteral("select 3 as THREE"));
        execute->trigger();
        QCOMPARE(window.statusText(), QStringLiteral("There are 1 record(s) in the dataset"));
        QCOMPARE(cell(window, 0, QStringLiteral("THREE")), QStringLiteral("3"));
    }
};

QTEST_MAIN(TestMainWindow)
#include "test_mainwindow.moc"
