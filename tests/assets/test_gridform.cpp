// The results grid form over a real result of the SQLite ODBC driver: its controls, title
// click sorting, status texts and other commands it sends, and the stored column layout.

#include "assets/resulttablemodel.h"
#include "assets/ui/dbgridrange.h"
#include "assets/ui/grid.h"
#include "core/commands.h"
#include "core/registry.h"
#include "db/odbc/odbc.h"
#include "gridclicks.h"
#include "support/testsupport.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QFrame>
#include <QHeaderView>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>
#include <QToolButton>

#include <algorithm>
#include <memory>
#include <optional>

using ui::TDBGridRange;
using ui::TGridForm;

using VisibilityCalls = QList<std::pair<int, bool>>; // (index, hidden)

Q_DECLARE_METATYPE(std::optional<QString>)

namespace {

constexpr int RowCount = 150;
const QString LayoutKey = QStringLiteral("Preferences\\GridLayout");

// The main window's side of the command protocol, keeping what it was sent.
class CommandLog : public core::CommandTarget {
public:
    qint64 DispatchCommand(int command, const QVariant& argument) override {
        m_commands.emplace_back(command, argument);
        return 0;
    }

    QList<int> numbers() const {
        QList<int> numbers;
        for (const auto& [command, argument] : m_commands)
            numbers << command;
        return numbers;
    }
    QStringList statusTexts() const {
        QStringList texts;
        for (const auto& [command, argument] : m_commands)
            if (command == core::CMD_STATUS_TEXT)
                texts << argument.toString();
        return texts;
    }
    const std::vector<std::pair<int, QVariant>>& commands() const { return m_commands; }
    void clear() { m_commands.clear(); }

private:
    std::vector<std::pair<int, QVariant>> m_commands;
};

using gridclicks::cellCentre;
using gridclicks::clickRow;
using gridclicks::clickTitle;

std::optional<QString> storedLayout(const QString& fieldName) {
    QString buffer;
    if (!core::ReadRegistryString(LayoutKey, fieldName, buffer, 259, std::nullopt))
        return std::nullopt;
    return buffer;
}

void forgetLayout() {
    QSettings settings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
    settings.remove(QStringLiteral("Preferences/GridLayout"));
    settings.sync();
}

QStringList columnValues(const QAbstractItemModel& model, int column) {
    QStringList values;
    for (int row = 0; row < model.rowCount(); ++row)
        values << model.index(row, column).data().toString();
    return values;
}

// "1101": a 1 for each visible column.
QString visibility(const TDBGridRange& grid) {
    QString text;
    for (int column = 0; column < grid.ColumnCount(); ++column)
        text += grid.ColumnVisible(column) ? QLatin1Char('1') : QLatin1Char('0');
    return text;
}

} // namespace

class TestGridForm : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    // First: nothing has produced a status text in this process yet.
    void noStatusTextBeforeTheFirst();

    void controls();
    void buttonsFollowTheirActions();
    void statusTexts_data();
    void statusTexts();
    void closedQueryResendsTheLastText();
    void titleClickSorts_data();
    void titleClickSorts();
    void titleClickClearsTheSelection();
    void shiftClickOnTitleChangesNothing();
    void noSortingWithoutAQuery();
    void doubleClickOpensTheEditor();
    void layoutRoundTrip();
    void loadLayout_data();
    void loadLayout();
    void loadLayoutStopsAtAFailure_data();
    void loadLayoutStopsAtAFailure();
    void saveLayoutIntoAnUnwritableStore();
    void layoutWithoutColumns();
    void setColumnVisibility_data();
    void setColumnVisibility();

private:
    std::unique_ptr<assets::ResultTableModel> openResult();
    void showForm(QAbstractItemModel* model);
    TDBGridRange& grid() const { return *m_form->Grid(); }

    db::odbc::Connection m_connection;
    QString m_table;
    CommandLog m_log;
    QAction m_addRow{QStringLiteral("&Add")};
    QAction m_delete{QStringLiteral("De&lete")};
    QAction m_addColumn{QStringLiteral("Add &Column")};
    QAction m_editForm{QStringLiteral("&Edit")};
    QAction m_details{QStringLiteral("&Details")};
    std::unique_ptr<assets::ResultTableModel> m_result;
    std::unique_ptr<TGridForm> m_form;
};

void TestGridForm::initTestCase() {
    testsupport::UseTemporarySettings();
    const testsupport::TestDatabase database = testsupport::TestDatabases().front();
    QUILLET_REQUIRE_DATABASE(database);
    m_connection.open(database.connectionString());
    m_table = testsupport::UniqueTableName(QStringLiteral("gridform"));
    m_connection.execute(QStringLiteral("CREATE TABLE %1 (ID INTEGER, ASSET_TAG VARCHAR(20), "
                                        "TAG VARCHAR(20), NAME VARCHAR(40), PRICE NUMERIC(10,2))")
                             .arg(m_table));
    m_connection.execute(
        QStringLiteral(
            "INSERT INTO %1 (ID, ASSET_TAG, TAG, NAME, PRICE) "
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
            "WHERE i < %2) "
            "SELECT i, printf('AT%03d', (i * 37) % 151), printf('T%03d', (i * 53) % 151), "
            "printf('Name %03d', 151 - i), i * 1.5 FROM n")
            .arg(m_table)
            .arg(RowCount));
}

std::unique_ptr<assets::ResultTableModel> TestGridForm::openResult() {
    auto model = std::make_unique<assets::ResultTableModel>();
    db::odbc::Statement statement(m_connection);
    statement.executeDirect(
        QStringLiteral("SELECT ID, ASSET_TAG, TAG, NAME, PRICE FROM %1 ORDER BY ID").arg(m_table));
    model->open(std::move(statement));
    model->waitForAllRows();
    return model;
}

void TestGridForm::init() {
    m_log.clear();
    forgetLayout();
    m_result = openResult();
    QCOMPARE(m_result->rowCount(), RowCount);
}

void TestGridForm::cleanup() {
    m_form.reset();
    m_result.reset();
}

void TestGridForm::showForm(QAbstractItemModel* model) {
    m_form = std::make_unique<TGridForm>(
        m_log, ui::GridActions{&m_addRow, &m_delete, &m_addColumn, &m_editForm, &m_details});
    m_form->SetModel(model);
    m_form->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_form.get()));
    grid().setFocus();
}

void TestGridForm::noStatusTextBeforeTheFirst() {
    // A query object that is not open, then a model that is not a query object: neither
    // has anything to say, and there is no earlier text to repeat.
    assets::ResultTableModel closed;
    QVERIFY(!closed.isOpen());
    showForm(&closed);
    QTest::mouseClick(grid().viewport(), Qt::LeftButton, {}, QPoint(30, 30));
    QTest::keyClick(&grid(), Qt::Key_Down);
    QCOMPARE(m_log.commands().size(), std::size_t(0));

    QStandardItemModel plain(5, 2);
    m_form->SetModel(&plain);
    clickRow(grid(), 2);
    QTest::keyClick(&grid(), Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(m_log.commands().size(), std::size_t(0));
    QCOMPARE(grid().SelectedRowCount(), 2);
    m_form.reset();
}

void TestGridForm::controls() {
    showForm(m_result.get());
    QCOMPARE(m_form->objectName(), QStringLiteral("GridForm"));
    QCOMPARE(m_form->windowTitle(), QStringLiteral("GridForm"));
    QCOMPARE(m_form->size(), QSize(667, 453));

    auto* panel = m_form->findChild<QWidget*>(QStringLiteral("PanelGrid"));
    auto* bevel = m_form->findChild<QFrame*>(QStringLiteral("Bevel1"));
    auto* buttons = m_form->findChild<QWidget*>(QStringLiteral("pnButtons"));
    auto* dbGrid = m_form->findChild<TDBGridRange*>(QStringLiteral("DBGrid"));
    QVERIFY(panel && bevel && buttons && dbGrid);
    QCOMPARE(dbGrid, &grid());
    QCOMPARE(panel->geometry(), m_form->rect());
    QCOMPARE(bevel->height(), 8);
    QCOMPARE(bevel->y(), 0);
    QCOMPARE(bevel->width(), panel->width());
    QCOMPARE(buttons->height(), 33);
    QCOMPARE(buttons->y(), 8);
    QCOMPARE(dbGrid->y(), 8 + 33);
    QCOMPARE(dbGrid->geometry().bottom(), panel->height() - 1);
    QCOMPARE(dbGrid->width(), panel->width());

    const struct {
        const char* name;
        int left;
        QAction* action;
        const char* text;
    } expected[] = {
        {"BtnAdd", 1, &m_addRow, "Add"},
        {"BtnDelete", 135, &m_delete, "Delete"},
        {"SpeedButton1", 268, &m_addColumn, "Add Column"},
        {"BtnEdit", 402, &m_editForm, "Edit"},
        {"BtnDetails", 535, &m_details, "Details"},
    };
    for (const auto& button : expected) {
        auto* tool = buttons->findChild<QToolButton*>(QString::fromLatin1(button.name));
        QVERIFY2(tool, button.name);
        QCOMPARE(tool->geometry(), QRect(button.left, 1, 128, 25));
        QVERIFY(tool->autoRaise());
        QCOMPARE(tool->defaultAction(), button.action);
        QCOMPARE(tool->text(), QString::fromLatin1(button.text));
    }

    // The grid: read-only, several rows at once, whole rows.
    QCOMPARE(dbGrid->editTriggers(), QAbstractItemView::NoEditTriggers);
    QVERIFY(dbGrid->MultiSelect());
    QCOMPARE(dbGrid->selectionBehavior(), QAbstractItemView::SelectRows);
    QVERIFY(dbGrid->showGrid());
    QVERIFY(dbGrid->horizontalHeader()->isVisible());
    QVERIFY(dbGrid->verticalHeader()->isVisible());
    QCOMPARE(dbGrid->horizontalHeader()->sectionResizeMode(0), QHeaderView::Interactive);
    QVERIFY(dbGrid->tabKeyNavigation());
}

void TestGridForm::buttonsFollowTheirActions() {
    showForm(m_result.get());
    auto* edit = m_form->findChild<QToolButton*>(QStringLiteral("BtnEdit"));
    auto* add = m_form->findChild<QToolButton*>(QStringLiteral("BtnAdd"));
    m_editForm.setText(QStringLiteral("Hide &Edit"));
    m_editForm.setToolTip(QStringLiteral("Hide the record editor"));
    QCOMPARE(edit->text(), QStringLiteral("Hide Edit"));
    QCOMPARE(edit->toolTip(), QStringLiteral("Hide the record editor"));
    m_addRow.setEnabled(false);
    QVERIFY(!add->isEnabled());
    m_addRow.setEnabled(true);
    QVERIFY(add->isEnabled());
    QSignalSpy triggered(&m_details, &QAction::triggered);
    QTest::mouseClick(m_form->findChild<QToolButton*>(QStringLiteral("BtnDetails")),
                      Qt::LeftButton);
    QCOMPARE(triggered.count(), 1);
    m_editForm.setText(QStringLiteral("&Edit"));

    // A button without an action stays disabled.
    TGridForm bare(m_log, ui::GridActions{});
    auto* details = bare.findChild<QToolButton*>(QStringLiteral("BtnDetails"));
    QVERIFY(details);
    QVERIFY(!details->isEnabled());
}

void TestGridForm::statusTexts_data() {
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("texts");

    const QString all = QStringLiteral("There are 150 record(s) in the dataset");
    QTest::newRow("a click selects one row")
        << QStringList{"press 2"} << QStringList{"There are 1 records selected"};
    QTest::newRow("a shift-click selects a range")
        << QStringList{"press 2", "shift 5"}
        << QStringList{"There are 1 records selected", "There are 4 records selected"};
    // Letting go of Shift is a key release of its own.
    QTest::newRow("shift+down twice")
        << QStringList{"press 2", "key Down", "key Down"}
        << QStringList{"There are 1 records selected", "There are 2 records selected",
                       "There are 2 records selected", "There are 3 records selected",
                       "There are 3 records selected"};
    QTest::newRow("a move without shift counts the dataset")
        << QStringList{"press 2", "plain Down"} << QStringList{"There are 1 records selected", all};
    QTest::newRow("ctrl-click takes the only row out")
        << QStringList{"press 2", "ctrl 2"} << QStringList{"There are 1 records selected", all};
}

void TestGridForm::statusTexts() {
    QFETCH(QStringList, steps);
    QFETCH(QStringList, texts);
    showForm(m_result.get());
    for (const QString& step : steps) {
        const QStringList words = step.split(QLatin1Char(' '));
        const QString& verb = words.at(0);
        if (verb == QLatin1String("press"))
            clickRow(grid(), words.at(1).toInt());
        else if (verb == QLatin1String("shift"))
            clickRow(grid(), words.at(1).toInt(), Qt::ShiftModifier);
        else if (verb == QLatin1String("ctrl"))
            clickRow(grid(), words.at(1).toInt(), Qt::ControlModifier);
        else if (verb == QLatin1String("key"))
            QTest::keyClick(&grid(), Qt::Key_Down, Qt::ShiftModifier);
        else if (verb == QLatin1String("plain"))
            QTest::keyClick(&grid(), Qt::Key_Down);
    }
    // One text per key or mouse button release, nothing else.
    QCOMPARE(m_log.statusTexts(), texts);
    QCOMPARE(m_log.numbers(), QList<int>(texts.size(), core::CMD_STATUS_TEXT));
}

void TestGridForm::closedQueryResendsTheLastText() {
    showForm(m_result.get());
    clickRow(grid(), 2);
    clickRow(grid(), 4, Qt::ShiftModifier);
    QCOMPARE(m_log.statusTexts().last(), QStringLiteral("There are 3 records selected"));
    m_log.clear();

    m_result->close();
    QCOMPARE(grid().SelectedRowCount(), 0);
    QTest::mouseClick(grid().viewport(), Qt::LeftButton, {}, QPoint(30, 30));
    QCOMPARE(m_log.statusTexts(), QStringList{"There are 3 records selected"});

    // A model that is not a query result sends the stored text too.
    QStandardItemModel plain(4, 2);
    m_form->SetModel(&plain);
    clickRow(grid(), 1);
    QCOMPARE(m_log.statusTexts(),
             (QStringList{"There are 3 records selected", "There are 3 records selected"}));
    m_form.reset();
}

void TestGridForm::titleClickSorts_data() {
    QTest::addColumn<QStringList>("titles");
    QTest::addColumn<QStringList>("sortTexts");

    QTest::newRow("three clicks on one title")
        << QStringList{"NAME", "NAME", "NAME"}
        << QStringList{"[NAME] ASC", "[NAME] DESC", "[NAME] ASC"};
    QTest::newRow("another title starts ascending")
        << QStringList{"NAME", "NAME", "PRICE", "NAME"}
        << QStringList{"[NAME] ASC", "[NAME] DESC", "[PRICE] ASC", "[NAME] ASC"};
    QTest::newRow("TAG after ASSET_TAG counts as the same column")
        << QStringList{"ASSET_TAG", "TAG", "TAG"}
        << QStringList{"[ASSET_TAG] ASC", "[TAG] DESC", "[TAG] ASC"};
    QTest::newRow("ASSET_TAG after TAG is another column")
        << QStringList{"TAG", "ASSET_TAG"} << QStringList{"[TAG] ASC", "[ASSET_TAG] ASC"};
}

void TestGridForm::titleClickSorts() {
    QFETCH(QStringList, titles);
    QFETCH(QStringList, sortTexts);
    showForm(m_result.get());
    for (qsizetype click = 0; click < titles.size(); ++click) {
        m_log.clear();
        const int column = m_result->fieldIndex(titles.at(click));
        QVERIFY(column >= 0);
        clickTitle(grid(), column);
        QCOMPARE(m_result->sortText(), sortTexts.at(click));
        // The editor is told to follow the current row; no status text.
        QCOMPARE(m_log.numbers(), QList<int>{core::CMD_SYNC_EDITOR});
        QCOMPARE(m_log.commands().front().second.toInt(), 0);

        m_result->waitForSort();
        QCoreApplication::processEvents();
        QStringList values = columnValues(*m_result, column);
        if (sortTexts.at(click).endsWith(QLatin1String(" DESC")))
            std::reverse(values.begin(), values.end());
        if (titles.at(click) == QLatin1String("PRICE")) {
            // Numbers sort as numbers.
            QVERIFY(std::is_sorted(values.begin(), values.end(),
                                   [](const QString& left, const QString& right) {
                                       return left.toDouble() < right.toDouble();
                                   }));
        } else {
            QVERIFY(std::is_sorted(values.begin(), values.end()));
        }
    }
}

void TestGridForm::titleClickClearsTheSelection() {
    showForm(m_result.get());
    clickRow(grid(), 2);
    clickRow(grid(), 5, Qt::ShiftModifier);
    QCOMPARE(grid().SelectedRowCount(), 4);
    m_log.clear();
    clickTitle(grid(), m_result->fieldIndex("NAME"));
    QCOMPARE(grid().SelectedRowCount(), 0);
    // The status bar still shows the old count until the next release.
    QCOMPARE(m_log.statusTexts(), QStringList());
    QTest::keyClick(&grid(), Qt::Key_Down);
    QCOMPARE(m_log.statusTexts(), QStringList{"There are 150 record(s) in the dataset"});
}

void TestGridForm::shiftClickOnTitleChangesNothing() {
    showForm(m_result.get());
    clickRow(grid(), 2);
    clickRow(grid(), 5, Qt::ShiftModifier);
    m_log.clear();
    clickTitle(grid(), m_result->fieldIndex("NAME"), Qt::ShiftModifier);
    QCOMPARE(m_result->sortText(), QString());
    QCOMPARE(grid().SelectedRowCount(), 4);
    QCOMPARE(grid().currentIndex().row(), 5);
    QCOMPARE(m_log.commands().size(), std::size_t(0));
}

void TestGridForm::noSortingWithoutAQuery() {
    QStandardItemModel plain(6, 3);
    for (int row = 0; row < 6; ++row)
        plain.setItem(row, 1, new QStandardItem(QString::number(6 - row)));
    showForm(&plain);
    clickRow(grid(), 1);
    clickRow(grid(), 3, Qt::ShiftModifier);
    m_log.clear();
    clickTitle(grid(), 1);
    QCOMPARE(m_log.commands().size(), std::size_t(0));
    QCOMPARE(grid().SelectedRowCount(), 3);
    QCOMPARE(plain.item(0, 1)->text(), QStringLiteral("6"));
}

void TestGridForm::doubleClickOpensTheEditor() {
    showForm(m_result.get());
    QTest::mouseDClick(grid().viewport(), Qt::LeftButton, {}, cellCentre(grid(), 3));
    QList<int> editors;
    for (const auto& [command, argument] : m_log.commands())
        if (command == core::CMD_OPEN_EDITOR)
            editors << argument.toInt();
    QCOMPARE(editors, QList<int>{0});
    QCOMPARE(m_log.numbers().count(core::CMD_SYNC_EDITOR), 0);
}

void TestGridForm::layoutRoundTrip() {
    showForm(m_result.get());
    const int tag = m_result->fieldIndex("TAG");
    const int name = m_result->fieldIndex("NAME");
    const int id = m_result->fieldIndex("ID");
    // As the user resizes with the mouse.
    grid().horizontalHeader()->resizeSection(name, 173);
    grid().horizontalHeader()->resizeSection(tag, 61);
    m_form->SetColumnVisibility(tag, true);
    const int idWidth = grid().columnWidth(id);
    m_form->SaveLayout();

    QCOMPARE(storedLayout("NAME"), std::optional<QString>("1,173"));
    QCOMPARE(storedLayout("TAG"), std::optional<QString>("0,61"));
    QCOMPARE(storedLayout("ID"), std::optional<QString>(QStringLiteral("1,%1").arg(idWidth)));
    QVERIFY(storedLayout("ASSET_TAG"));
    QVERIFY(storedLayout("PRICE"));

    // The next query, in a new form, gets the columns back by name, wherever they are.
    m_form.reset();
    auto other = std::make_unique<assets::ResultTableModel>();
    db::odbc::Statement statement(m_connection);
    statement.executeDirect(QStringLiteral("SELECT NAME, PRICE, TAG FROM %1").arg(m_table));
    other->open(std::move(statement));
    other->waitForAllRows();
    showForm(other.get());
    QCOMPARE(visibility(grid()), QStringLiteral("111"));
    m_form->LoadLayout();
    QCOMPARE(visibility(grid()), QStringLiteral("110"));
    QCOMPARE(grid().columnWidth(0), 173);
    QCOMPARE(grid().ColumnWidth(2), 61);
    m_form->SetColumnVisibility(2, false);
    QCOMPARE(grid().columnWidth(2), 61);
    m_form.reset();
}

void TestGridForm::loadLayout_data() {
    QTest::addColumn<std::optional<QString>>("stored");
    QTest::addColumn<bool>("visible");
    QTest::addColumn<int>("width"); // 0: the width it had

    QTest::newRow("0,120 hides, width 120") << std::optional<QString>("0,120") << false << 120;
    QTest::newRow("1,0 shows, keeps the width") << std::optional<QString>("1,0") << true << 0;
    QTest::newRow("1,95") << std::optional<QString>("1,95") << true << 95;
    QTest::newRow("no comma: ignored") << std::optional<QString>("0") << true << 0;
    QTest::newRow("empty: ignored") << std::optional<QString>("") << true << 0;
    QTest::newRow("2,80 hides") << std::optional<QString>("2,80") << false << 80;
    QTest::newRow("negative width kept") << std::optional<QString>("1,-40") << true << 0;
    QTest::newRow("not stored") << std::optional<QString>() << true << 0;
    QTest::newRow("longer than the buffer")
        << std::optional<QString>(QStringLiteral("0,") + QString(300, QLatin1Char('1'))) << false
        << 0;
}

void TestGridForm::loadLayout() {
    QFETCH(std::optional<QString>, stored);
    QFETCH(bool, visible);
    QFETCH(int, width);
    if (stored)
        QVERIFY(core::WriteRegistryString(LayoutKey, QStringLiteral("NAME"), *stored));
    QVERIFY(core::WriteRegistryString(LayoutKey, QStringLiteral("PRICE"), QStringLiteral("1,77")));
    showForm(m_result.get());
    const int name = m_result->fieldIndex("NAME");
    const int price = m_result->fieldIndex("PRICE");
    const int before = grid().ColumnWidth(name);
    m_form->LoadLayout();
    QCOMPARE(grid().ColumnVisible(name), visible);
    QCOMPARE(grid().ColumnWidth(name), width > 0 ? width : before);
    // A later column is applied unless the pass failed.
    const bool failed = stored && stored->size() > 250;
    QCOMPARE(grid().ColumnWidth(price), failed ? before : 77);
}

void TestGridForm::loadLayoutStopsAtAFailure_data() {
    QTest::addColumn<QString>("idValue");
    QTest::addColumn<QString>("visibility"); // ID, ASSET_TAG, TAG, NAME, PRICE

    QTest::newRow("no number at all") << QStringLiteral("abc,5") << QStringLiteral("11111");
    QTest::newRow("visibility read, width not")
        << QStringLiteral("0,wide") << QStringLiteral("01111");
    QTest::newRow("nothing after the comma") << QStringLiteral("0,") << QStringLiteral("01111");
    QTest::newRow("valid, for comparison") << QStringLiteral("1,50") << QStringLiteral("11100");
}

void TestGridForm::loadLayoutStopsAtAFailure() {
    QFETCH(QString, idValue);
    QFETCH(QString, visibility);
    QVERIFY(core::WriteRegistryString(LayoutKey, QStringLiteral("ID"), idValue));
    QVERIFY(core::WriteRegistryString(LayoutKey, QStringLiteral("NAME"), QStringLiteral("0,50")));
    QVERIFY(core::WriteRegistryString(LayoutKey, QStringLiteral("PRICE"), QStringLiteral("0,50")));
    showForm(m_result.get());
    m_form->LoadLayout();
    QCOMPARE(::visibility(grid()), visibility);
    // Another pass runs again from the first column.
    QVERIFY(core::WriteRegistryString(LayoutKey, QStringLiteral("ID"), QStringLiteral("1,50")));
    m_form->LoadLayout();
    QCOMPARE(::visibility(grid()), QStringLiteral("11100"));
}

void TestGridForm::saveLayoutIntoAnUnwritableStore() {
    showForm(m_result.get());
    QString storePath;
    {
        QSettings settings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
        settings.setValue(QStringLiteral("Preferences/Probe"), 1);
        settings.sync();
        storePath = settings.fileName();
    }
    const QString kept = storePath + QStringLiteral(".kept");
    QVERIFY(QFile::rename(storePath, kept));
    // A folder where the store's file should be: nothing can be written.
    QVERIFY(QDir().mkpath(storePath));
    m_form->SaveLayout();
    QVERIFY(QDir().rmdir(storePath));
    QVERIFY(QFile::rename(kept, storePath));
    QCOMPARE(storedLayout("ID"), std::optional<QString>());
    QCOMPARE(storedLayout("NAME"), std::optional<QString>());

    // With the store back, it saves again.
    m_form->SaveLayout();
    QVERIFY(storedLayout("NAME"));
}

void TestGridForm::layoutWithoutColumns() {
    showForm(nullptr);
    m_form->SaveLayout();
    m_form->LoadLayout();
    m_form->SetColumnVisibility(0, true);
    QCOMPARE(grid().ColumnCount(), 0);
    QSettings settings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
    settings.beginGroup(QStringLiteral("Preferences/GridLayout"));
    QCOMPARE(settings.childKeys(), QStringList());
}

void TestGridForm::setColumnVisibility_data() {
    QTest::addColumn<VisibilityCalls>("calls");
    QTest::addColumn<QString>("visibility");

    using Calls = VisibilityCalls;
    QTest::newRow("hide the first") << Calls{{0, true}} << QStringLiteral("01111");
    QTest::newRow("hide the last") << Calls{{4, true}} << QStringLiteral("11110");
    QTest::newRow("hide then show") << Calls{{0, true}, {0, false}} << QStringLiteral("11111");
    QTest::newRow("show a shown one") << Calls{{2, false}} << QStringLiteral("11111");
    QTest::newRow("index = column count") << Calls{{5, true}} << QStringLiteral("11111");
    QTest::newRow("index far beyond") << Calls{{5000, true}} << QStringLiteral("11111");
    QTest::newRow("negative index") << Calls{{-1, true}} << QStringLiteral("11111");
    QTest::newRow("a failure does not stop a later call")
        << Calls{{-1, true}, {1, true}} << QStringLiteral("10111");
}

void TestGridForm::setColumnVisibility() {
    QFETCH(VisibilityCalls, calls);
    QFETCH(QString, visibility);
    showForm(m_result.get());
    for (const auto& [index, hidden] : calls)
        m_form->SetColumnVisibility(index, hidden);
    QCOMPARE(::visibility(grid()), visibility);
}

QTEST_MAIN(TestGridForm)
#include "test_gridform.moc"
