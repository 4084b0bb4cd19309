// The results grid as its users drive it: values shown as they read them on every
// database, copying rows, the column titles' menu and sort mark, layout names in any case,
// and clicks on the row indicator.

#include "assets/resulttablemodel.h"
#include "assets/ui/dbgridrange.h"
#include "assets/ui/grid.h"
#include "core/commands.h"
#include "core/dateformat.h"
#include "core/registry.h"
#include "db/odbc/odbc.h"
#include "support/testsupport.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QMenu>
#include <QSettings>
#include <QTest>

using testsupport::TestDatabase;

namespace {

struct CommandRecorder : core::CommandTarget {
    qint64 DispatchCommand(int, const QVariant&) override { return 0; }
};

std::unique_ptr<assets::ResultTableModel> openResult(db::odbc::Connection& connection,
                                                     const QString& sql) {
    db::odbc::Statement statement(connection);
    statement.executeDirect(sql);
    auto model = std::make_unique<assets::ResultTableModel>();
    model->open(std::move(statement));
    model->waitForAllRows();
    return model;
}

QString timestampType(const TestDatabase& database) {
    return database.label == QLatin1String("mariadb") ? QStringLiteral("DATETIME")
                                                      : QStringLiteral("TIMESTAMP");
}

} // namespace

class TestGridUsability : public QObject {
    Q_OBJECT

private:
    db::odbc::Connection m_sqlite;
    QString m_table;
    std::unique_ptr<assets::ResultTableModel> m_model;
    CommandRecorder m_commands;
    std::unique_ptr<ui::TGridForm> m_form;

    ui::TDBGridRange* grid() const { return m_form->Grid(); }

private Q_SLOTS:
    void initTestCase() {
        testsupport::UseTemporarySettings();
        const TestDatabase sqlite = testsupport::TestDatabases().front();
        m_sqlite.open(sqlite.connectionString());
        m_table = testsupport::UniqueTableName(QStringLiteral("grid"));
        m_sqlite.execute(QStringLiteral("CREATE TABLE %1 (NAME VARCHAR(20), QTY INTEGER, "
                                        "NOTE VARCHAR(20))")
                             .arg(m_table));
        m_sqlite.execute(QStringLiteral("INSERT INTO %1 VALUES ('pc', 1, 'a\tb'), ('printer', 2, "
                                        "NULL), ('copier', 3, 'x\ny')")
                             .arg(m_table));
    }

    void init() {
        m_model = openResult(m_sqlite, QStringLiteral("select * from %1").arg(m_table));
        m_form = std::make_unique<ui::TGridForm>(m_commands, ui::GridActions{});
        m_form->SetModel(m_model.get());
        m_form->resize(600, 300);
        m_form->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_form.get()));
    }

    void cleanup() {
        m_form.reset();
        m_model.reset();
    }

    // Dates in the short date format in force, times where there are any, numbers as
    // numbers, NULL apart from '', whatever text the driver writes.
    void valuesShowAsTheUserReadsThem_data() { testsupport::AddDatabaseRows(); }

    void valuesShowAsTheUserReadsThem() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        db::odbc::Connection connection;
        connection.open(database.connectionString());
        const QString table = testsupport::UniqueTableName(QStringLiteral("shown"));
        connection.execute(QStringLiteral("CREATE TABLE %1 (D DATE, TS %2, M DOUBLE PRECISION, "
                                          "X DECIMAL(10,2), V VARCHAR(10))")
                               .arg(table, timestampType(database)));
        connection.execute(QStringLiteral("INSERT INTO %1 VALUES ('2017-02-27', '2017-02-27 "
                                          "13:45:06', 11890, 11890.5, NULL)")
                               .arg(table));
        connection.execute(QStringLiteral("INSERT INTO %1 VALUES ('2017-03-01', '2017-03-01 "
                                          "00:00:00', 0.1, -3, '')")
                               .arg(table));
        auto model =
            openResult(connection, QStringLiteral("select * from %1 order by D").arg(table));
        connection.execute(QStringLiteral("DROP TABLE %1").arg(table));

        const auto shown = [&](int row, int column) { return model->displayText(row, column); };
        const struct {
            QString format, date, stamp, midnight;
        } formats[] = {
            {"dd.mm.yyyy", "27.02.2017", "27.02.2017 13:45:06", "01.03.2017"},
            {"yyyy/mm/dd", "2017/02/27", "2017/02/27 13:45:06", "2017/03/01"},
            {"d mmm yyyy", "27 Feb 2017", "27 Feb 2017 13:45:06", "1 Mar 2017"},
        };
        for (const auto& format : formats) {
            core::ApplyDateFormat(format.format, QLocale::c());
            model->refreshDisplay();
            QCOMPARE(shown(0, 0), format.date);
            QCOMPARE(shown(0, 1), format.stamp);
            QCOMPARE(shown(1, 1), format.midnight);
        }
        core::ApplyDateFormat(QString());
        QCOMPARE(shown(0, 2), QStringLiteral("11890"));
        QCOMPARE(shown(1, 2), QStringLiteral("0.1"));
        // SQLite's driver does not report a decimal column's digits.
        const bool digits = database.label != QLatin1String("sqlite");
        QCOMPARE(shown(0, 3), digits ? QStringLiteral("11890.50") : QStringLiteral("11890.5"));
        QCOMPARE(shown(1, 3), digits ? QStringLiteral("-3.00") : QStringLiteral("-3"));
        QVERIFY(model->index(0, 4).data(assets::ResultTableModel::NullRole).toBool());
        QVERIFY(!model->index(1, 4).data(assets::ResultTableModel::NullRole).toBool());

        // Sorting stays by value: 01.03 after 27.02 whatever the format writes.
        model->setSortText(QStringLiteral("[D] DESC"));
        model->waitForSort();
        QCOMPARE(model->value(0, 0).toByteArray().left(10), QByteArray("2017-03-01"));
    }

    // Selected rows in the order shown, visible columns only, NULL empty, tabs and line
    // breaks inside values as blanks; without a selection the current cell alone.
    void copyPutsRowsOnTheClipboard() {
        QClipboard* clipboard = QGuiApplication::clipboard();
        grid()->setCurrentIndex(m_model->index(1, 0));
        grid()->ClearSelection();
        QTest::keyClick(grid(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(clipboard->text(), QStringLiteral("printer"));

        grid()->SetColumnVisible(1, false);
        grid()->selectRow(2);
        grid()->selectionModel()->select(m_model->index(1, 0),
                                         QItemSelectionModel::Select | QItemSelectionModel::Rows);
        m_form->ActionCopyExecute();
        QCOMPARE(clipboard->text(), QStringLiteral("NAME\tNOTE\nprinter\t\ncopier\tx y\n"));
    }

    void headerMenuHidesShowsAndResetsColumns() {
        QMenu* menu = m_form->CreateHeaderMenu();
        QList<QAction*> items = menu->actions();
        QCOMPARE(items.size(), 5); // three columns, a separator, reset
        items[0]->setChecked(false);
        items[2]->setChecked(false);
        QVERIFY(!grid()->ColumnVisible(0) && !grid()->ColumnVisible(2));
        delete menu;

        // The last column shown cannot be hidden.
        menu = m_form->CreateHeaderMenu();
        items = menu->actions();
        QVERIFY(!items[1]->isEnabled() && items[0]->isEnabled());
        menu->findChild<QAction*>(QStringLiteral("ActionResetLayout"))->trigger();
        for (int column = 0; column < 3; ++column)
            QVERIFY(grid()->ColumnVisible(column));
        delete menu;
    }

    void titleClickMarksTheSortColumnAndDirection() {
        QHeaderView* titles = grid()->horizontalHeader();
        QVERIFY(!titles->isSortIndicatorShown());
        m_form->DBGridTitleClick(1);
        QVERIFY(titles->isSortIndicatorShown());
        QCOMPARE(titles->sortIndicatorSection(), 1);
        QCOMPARE(titles->sortIndicatorOrder(), Qt::AscendingOrder);
        m_form->DBGridTitleClick(1);
        QCOMPARE(titles->sortIndicatorOrder(), Qt::DescendingOrder);
    }

    // Layout values are found whatever the case of the column name, and saving writes the
    // value found rather than a second one.
    void layoutNamesIgnoreCase() {
        const QString key = QStringLiteral("Preferences\\GridLayout");
        core::WriteRegistryString(key, QStringLiteral("name"), QStringLiteral("0,50"));
        m_form->LoadLayout();
        QVERIFY(!grid()->ColumnVisible(0));
        QCOMPARE(grid()->ColumnWidth(0), 50);
        m_form->SaveLayout();
        QSettings store(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
        store.beginGroup(QStringLiteral("Preferences/GridLayout"));
        QCOMPARE(store.childKeys().filter(QStringLiteral("name"), Qt::CaseInsensitive),
                 QStringList{QStringLiteral("name")});
    }

    // The row indicator takes clicks as the row's cells do, Shift with any button included.
    void rowIndicatorClicksSelectRows() {
        QWidget* indicator = grid()->verticalHeader()->viewport();
        const auto rowPoint = [this](int row) {
            return QPoint(2, grid()->rowViewportPosition(row) + grid()->rowHeight(row) / 2);
        };
        QTest::mouseClick(indicator, Qt::LeftButton, {}, rowPoint(2));
        QCOMPARE(grid()->currentIndex().row(), 2);
        QCOMPARE(grid()->SelectedRows(), std::vector<int>{2});
        QTest::mouseClick(indicator, Qt::RightButton, Qt::ShiftModifier, rowPoint(0));
        QCOMPARE(grid()->SelectedRows(), (std::vector<int>{0, 1, 2}));
    }
};

QTEST_MAIN(TestGridUsability)
#include "test_gridusability.moc"
