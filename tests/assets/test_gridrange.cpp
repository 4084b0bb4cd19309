// The results grid and its form over a real result of the SQLite ODBC driver (and, for
// comparison, over a plain item model), driven with the mouse and the keys: range
// selection, title click sorting, status texts and other commands the form sends, and
// the stored column layout.

#include "assets/gridlayout.h"
#include "assets/resulttablemodel.h"
#include "assets/ui/dbgridrange.h"
#include "assets/ui/grid.h"
#include "core/commands.h"
#include "core/registry.h"
#include "db/odbc/odbc.h"
#include "support/testsupport.h"

#include <QAction>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QHeaderView>
#include <QImage>
#include <QMenu>
#include <QRegularExpression>
#include <QScrollBar>
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

namespace {

constexpr int RowCount = 150;

// RowCount rows in the SQLite test database: ID 1..150, ASSET_TAG "AT<nnn>" and TAG
// "T<nnn>" in a shuffled order, NAME "Name <151 - ID>" (zero-padded), PRICE ID * 1.5.
struct GridTable {
    void create() {
        testsupport::UseTemporarySettings();
        connection.open(testsupport::TestDatabases().front().connectionString());
        name = testsupport::UniqueTableName(QStringLiteral("grid"));
        connection.execute(QStringLiteral("CREATE TABLE %1 (ID INTEGER, ASSET_TAG VARCHAR(20), "
                                          "TAG VARCHAR(20), NAME VARCHAR(40), PRICE NUMERIC(10,2))")
                               .arg(name));
        connection.execute(
            QStringLiteral(
                "INSERT INTO %1 WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
                "WHERE i < %2) SELECT i, printf('AT%03d', (i * 37) % 151), printf('T%03d', "
                "(i * 53) % 151), printf('Name %03d', 151 - i), i * 1.5 FROM n")
                .arg(name)
                .arg(RowCount));
    }
    // The whole result of "SELECT <columns> FROM <the table> <rest>".
    std::unique_ptr<assets::ResultTableModel> open(const QString& columns = Columns,
                                                   const QString& rest = "ORDER BY ID") {
        auto model = std::make_unique<assets::ResultTableModel>();
        db::odbc::Statement statement(connection);
        statement.executeDirect(QStringLiteral("SELECT %1 FROM %2 %3").arg(columns, name, rest));
        model->open(std::move(statement));
        model->waitForAllRows();
        return model;
    }

    static inline const QString Columns = QStringLiteral("ID, ASSET_TAG, TAG, NAME, PRICE");
    db::odbc::Connection connection;
    QString name;
};

// The centre of a row's cell in the grid's second column (the first one may be hidden).
QPoint cellCentre(const TDBGridRange& grid, int row) {
    const QRect rect = grid.visualRect(grid.model()->index(row, 1));
    if (!grid.viewport()->rect().contains(rect))
        qFatal("row %d is not on screen", row);
    return rect.center();
}

void clickRow(TDBGridRange& grid, int row, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, modifiers, cellCentre(grid, row));
}

void clickTitle(TDBGridRange& grid, int column, Qt::KeyboardModifiers modifiers = {}) {
    QHeaderView* header = grid.horizontalHeader();
    const QPoint centre(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                        header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, modifiers, centre);
}

// Pages with the scroll bar, as a click on its groove below or above the slider does.
void clickScrollBar(QScrollBar* bar, bool down) {
    bar->triggerAction(down ? QAbstractSlider::SliderPageStepAdd
                            : QAbstractSlider::SliderPageStepSub);
}

// The selected rows as "2-5,9".
QString selectedText(const TDBGridRange& grid) {
    const std::vector<int> rows = grid.SelectedRows();
    QStringList parts;
    for (auto it = rows.begin(); it != rows.end();) {
        const int first = *it;
        int last = first;
        while (++it != rows.end() && *it == last + 1)
            ++last;
        parts << (first == last ? QString::number(first)
                                : QStringLiteral("%1-%2").arg(first).arg(last));
    }
    return parts.join(',');
}

// One step, "verb argument":
//   press R / ctrl R / shift R / shiftctrl R   a click on row R with those modifiers
//   title                                      a Shift-click on the second column's title
//   key K / plain K    key K (Up, Down, PageUp, PageDown, Home, End) with Shift / without
//   scroll R           the user pages with the scroll bar until row R is wholly on screen
//   row R / rowshift R a left click / a Shift right click on row R's indicator
void run(TDBGridRange& grid, const QStringList& steps) {
    static const QHash<QString, Qt::KeyboardModifiers> clicks{
        {"press", {}},
        {"ctrl", Qt::ControlModifier},
        {"shift", Qt::ShiftModifier},
        {"shiftctrl", Qt::ShiftModifier | Qt::ControlModifier}};
    static const QHash<QString, Qt::Key> keys{
        {"Up", Qt::Key_Up},         {"Down", Qt::Key_Down},
        {"PageUp", Qt::Key_PageUp}, {"PageDown", Qt::Key_PageDown},
        {"Home", Qt::Key_Home},     {"End", Qt::Key_End}};
    for (const QString& step : steps) {
        const QString verb = step.section(' ', 0, 0), argument = step.section(' ', 1);
        if (clicks.contains(verb)) {
            clickRow(grid, argument.toInt(), clicks.value(verb));
        } else if (verb.startsWith(QLatin1String("row"))) {
            const int row = argument.toInt();
            const QPoint point(2, grid.rowViewportPosition(row) + grid.rowHeight(row) / 2);
            QTest::mouseClick(grid.verticalHeader()->viewport(),
                              verb == QLatin1String("row") ? Qt::LeftButton : Qt::RightButton,
                              verb == QLatin1String("row") ? Qt::NoModifier : Qt::ShiftModifier,
                              point);
        } else if (verb == QLatin1String("title")) {
            clickTitle(grid, 1, Qt::ShiftModifier);
        } else if ((verb == QLatin1String("key") || verb == QLatin1String("plain")) &&
                   keys.contains(argument)) {
            QTest::keyClick(&grid, keys.value(argument),
                            verb == QLatin1String("key") ? Qt::ShiftModifier : Qt::NoModifier);
        } else if (verb == QLatin1String("scroll")) {
            const auto shown = [&] {
                const QRect rect = grid.visualRect(grid.model()->index(argument.toInt(), 0));
                return rect.top() >= 0 && rect.bottom() < grid.viewport()->height();
            };
            for (int pages = 0; pages < 100 && !shown(); ++pages)
                clickScrollBar(grid.verticalScrollBar(), grid.rowAt(0) < argument.toInt());
            QVERIFY2(shown(), qPrintable(step));
        } else {
            QFAIL(qPrintable("unknown step " + step));
        }
    }
}

// The cell's background (its top left pixel) and the colours of the other pixels.
struct CellPixels {
    QColor background;
    QRect ink;
    QSet<QRgb> inkColours;
};

CellPixels cellPixels(const QImage& image, const QRect& rect) {
    CellPixels cell{image.pixelColor(rect.topLeft() + QPoint(1, 1)), {}, {}};
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        for (int x = rect.left(); x <= rect.right(); ++x)
            if (image.pixel(x, y) != cell.background.rgb()) {
                cell.ink = cell.ink.united(QRect(x, y, 1, 1));
                cell.inkColours.insert(image.pixel(x, y));
            }
    return cell;
}

// The main window's side of the command protocol: what it was sent, "<command> <argument>".
class CommandLog : public core::CommandTarget {
public:
    qint64 DispatchCommand(int command, const QVariant& argument) override {
        static const QHash<int, QString> names{{core::CMD_STATUS_TEXT, QStringLiteral("status")},
                                               {core::CMD_SYNC_EDITOR, QStringLiteral("sync")},
                                               {core::CMD_OPEN_EDITOR, QStringLiteral("editor")}};
        sent << names.value(command, QString::number(command)) + ' ' + argument.toString();
        return 0;
    }
    QStringList sent;
};

std::optional<QString> storedLayout(const QString& fieldName) {
    QString buffer;
    if (!core::ReadRegistryString(assets::GridLayoutKey, fieldName, buffer,
                                  assets::GridLayoutBufferLength, std::nullopt))
        return std::nullopt;
    return buffer;
}

void storeLayout(const QString& fieldName, const QString& value) {
    QVERIFY(core::WriteRegistryString(assets::GridLayoutKey, fieldName, value));
}

// "1101": a 1 for each visible column.
QString visibility(const TDBGridRange& grid) {
    QString text;
    for (int column = 0; column < grid.ColumnCount(); ++column)
        text += grid.ColumnVisible(column) ? '1' : '0';
    return text;
}

} // namespace

class TestGridRange : public QObject {
    Q_OBJECT

    GridTable m_table;
    std::unique_ptr<assets::ResultTableModel> m_result;
    std::unique_ptr<TDBGridRange> m_grid;
    CommandLog m_log;
    QAction m_addRow{QStringLiteral("&Add")};
    QAction m_delete{QStringLiteral("De&lete")};
    QAction m_addColumn{QStringLiteral("Add &Column")};
    QAction m_editForm{QStringLiteral("&Edit")};
    QAction m_details{QStringLiteral("&Details")};
    std::unique_ptr<TGridForm> m_form;

    void showGrid(QAbstractItemModel* model) {
        m_grid = std::make_unique<TDBGridRange>();
        m_grid->resize(420, 320);
        m_grid->setModel(model);
        m_grid->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_grid.get()));
        m_grid->setFocus();
    }
    void showForm(QAbstractItemModel* model) {
        m_form = std::make_unique<TGridForm>(
            m_log, ui::GridActions{&m_addRow, &m_delete, &m_addColumn, &m_editForm, &m_details});
        m_form->SetModel(model);
        m_form->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_form.get()));
        grid().setFocus();
    }
    TDBGridRange& grid() const { return *m_form->Grid(); }

private Q_SLOTS:
    void initTestCase() { m_table.create(); }

    void init() {
        m_log.sent.clear();
        QSettings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"))
            .remove(QStringLiteral("Preferences/GridLayout"));
        m_result = m_table.open();
        QCOMPARE(m_result->rowCount(), RowCount);
    }

    void cleanup() {
        m_form.reset();
        m_grid.reset();
        m_result.reset();
    }

    // ------------------------------------------------------------------ the form

    // First: nothing has produced a status text in this process yet.
    void noStatusTextBeforeTheFirst() {
        // A query object that is not open, then a model that is not a query object: neither
        // has anything to say, and there is no earlier text to repeat. Nor does a title
        // click sort a model that is not a query object.
        assets::ResultTableModel closed;
        showForm(&closed);
        QTest::mouseClick(grid().viewport(), Qt::LeftButton, {}, QPoint(30, 30));
        QTest::keyClick(&grid(), Qt::Key_Down);
        QStandardItemModel plain(6, 3);
        for (int row = 0; row < 6; ++row)
            plain.setItem(row, 1, new QStandardItem(QString::number(6 - row)));
        m_form->SetModel(&plain);
        run(grid(), {"press 2", "key Down"});
        clickTitle(grid(), 1);
        QCOMPARE(grid().SelectedRowCount(), 2);
        QCOMPARE(plain.item(0, 1)->text(), QStringLiteral("6"));
        QCOMPARE(m_log.sent, QStringList());
        m_form.reset();
    }

    // Each button runs its action and stays disabled without one; the grid is read-only
    // and selects several whole rows.
    void formControls() {
        showForm(m_result.get());
        QCOMPARE(m_form->findChild<TDBGridRange*>(QStringLiteral("DBGrid")), &grid());
        const std::pair<const char*, QAction*> expected[] = {{"BtnAdd", &m_addRow},
                                                             {"BtnDelete", &m_delete},
                                                             {"SpeedButton1", &m_addColumn},
                                                             {"BtnEdit", &m_editForm},
                                                             {"BtnDetails", &m_details}};
        TGridForm bare(m_log, ui::GridActions{});
        for (const auto& [name, action] : expected) {
            auto* tool = m_form->findChild<QToolButton*>(QString::fromLatin1(name));
            QVERIFY2(tool, name);
            QCOMPARE(tool->defaultAction(), action);
            QVERIFY(!bare.findChild<QToolButton*>(QString::fromLatin1(name))->isEnabled());
        }
        QCOMPARE(grid().editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(grid().MultiSelect());
        QCOMPARE(grid().selectionBehavior(), QAbstractItemView::SelectRows);
    }

    void statusTexts_data() {
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QStringList>("texts");
        const QString one = QStringLiteral("There are 1 records selected");
        const QString all = QStringLiteral("There are 150 record(s) in the dataset");
        const QString two = QStringLiteral("There are 2 records selected");
        const QString three = QStringLiteral("There are 3 records selected");
        const auto row = [](const char* name, const char* steps, const QStringList& texts) {
            QTest::newRow(name) << QString::fromLatin1(steps).split(", ") << texts;
        };
        row("a click selects one row", "press 2", {one});
        // Letting go of Shift is a key release of its own.
        row("shift+down twice", "press 2, key Down, key Down", {one, two, two, three, three});
        row("a shift-click selects a range", "press 2, shift 4", {one, three});
        row("a move without shift counts the dataset", "press 2, plain Down", {one, all});
        row("ctrl-click takes the only row out", "press 2, ctrl 2", {one, all});
        // With nothing new to say, the last text is sent again.
        row("a closed query resends the last text", "press 2, shift 4, close, click",
            {one, three, three});
        row("a plain model resends the last text", "press 2, shift 4, plain model, press 1",
            {one, three, three});
    }
    void statusTexts() {
        QFETCH(QStringList, steps);
        QFETCH(QStringList, texts);
        showForm(m_result.get());
        QStandardItemModel plain(4, 2);
        for (const QString& step : steps) {
            if (step == QLatin1String("close")) {
                m_result->close();
                QCOMPARE(grid().SelectedRowCount(), 0);
            } else if (step == QLatin1String("click")) {
                QTest::mouseClick(grid().viewport(), Qt::LeftButton, {}, QPoint(30, 30));
            } else if (step == QLatin1String("plain model")) {
                m_form->SetModel(&plain);
            } else {
                run(grid(), {step});
            }
        }
        // One text per key or mouse button release, nothing else.
        for (QString& text : texts)
            text.prepend(QStringLiteral("status "));
        QCOMPARE(m_log.sent, texts);
        m_form.reset();
    }

    // The sort rule itself is in test_gridrules. A double click opens the editor.
    void titleClickSortsDoubleClickEdits() {
        const QStringList titles{"NAME", "NAME", "PRICE", "NAME"};
        const QStringList sortTexts{"[NAME] ASC", "[NAME] DESC", "[PRICE] ASC", "[NAME] ASC"};
        showForm(m_result.get());
        QHeaderView* header = grid().horizontalHeader();
        QVERIFY(!header->isSortIndicatorShown());
        for (qsizetype click = 0; click < titles.size(); ++click) {
            run(grid(), {"press 2", "shift 5"});
            m_log.sent.clear();
            const int column = m_result->fieldIndex(titles.at(click));
            clickTitle(grid(), column);
            QCOMPARE(m_result->sortText(), sortTexts.at(click));
            QVERIFY(header->isSortIndicatorShown());
            QCOMPARE(header->sortIndicatorSection(), column);
            QCOMPARE(header->sortIndicatorOrder(), sortTexts.at(click).endsWith(" DESC")
                                                       ? Qt::DescendingOrder
                                                       : Qt::AscendingOrder);
            // The selection is cleared and the editor told to follow the current row; the
            // status text waits for the next release.
            QCOMPARE(grid().SelectedRowCount(), 0);
            QCOMPARE(m_log.sent, QStringList{"sync 0"});
            m_result->waitForSort();
        }
        m_log.sent.clear();
        QTest::mouseDClick(grid().viewport(), Qt::LeftButton, {}, cellCentre(grid(), 3));
        QCOMPARE(m_log.sent.filter(QRegularExpression("^(editor|sync) ")), QStringList{"editor 0"});
    }

    void layoutRoundTrip() {
        showForm(m_result.get());
        const int tag = m_result->fieldIndex("TAG");
        const int name = m_result->fieldIndex("NAME");
        // As the user resizes with the mouse.
        grid().horizontalHeader()->resizeSection(name, 173);
        grid().horizontalHeader()->resizeSection(tag, 61);
        m_form->SetColumnVisibility(tag, true);
        // A value stored under the name in another case is the one saved.
        storeLayout(QStringLiteral("name"), QStringLiteral("1,1"));
        m_form->SaveLayout();
        QCOMPARE(storedLayout("NAME"), std::optional<QString>("1,173"));
        QSettings store(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
        store.beginGroup(QStringLiteral("Preferences/GridLayout"));
        QCOMPARE(store.childKeys().filter(QStringLiteral("name"), Qt::CaseInsensitive),
                 QStringList{QStringLiteral("name")});
        QCOMPARE(storedLayout("TAG"), std::optional<QString>("0,61"));
        QCOMPARE(storedLayout("ID"), std::optional<QString>(QStringLiteral("1,%1").arg(
                                         grid().columnWidth(m_result->fieldIndex("ID")))));
        QVERIFY(storedLayout("ASSET_TAG") && storedLayout("PRICE"));

        // The next query, in a new form, gets the columns back by name, wherever they are.
        m_form.reset();
        const auto other = m_table.open(QStringLiteral("NAME, PRICE, TAG"));
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

    // Selected rows in the order shown, visible columns only, NULL empty, tabs and line
    // breaks inside values as blanks; without a selection the current cell alone.
    void copyPutsRowsOnTheClipboard() {
        const auto few = m_table.open(QStringLiteral("NAME, NULL AS GONE, 'a' || char(9) || 'b' "
                                                     "|| char(10) || 'c' AS NOTE, ID"),
                                      QStringLiteral("WHERE ID <= 3 ORDER BY ID"));
        showForm(few.get());
        QClipboard* clipboard = QGuiApplication::clipboard();
        grid().setCurrentIndex(few->index(1, 0));
        grid().ClearSelection();
        QTest::keyClick(&grid(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(clipboard->text(), QStringLiteral("Name 149"));
        grid().SetColumnVisible(3, false);
        grid().selectRow(2);
        grid().selectionModel()->select(few->index(1, 0),
                                        QItemSelectionModel::Select | QItemSelectionModel::Rows);
        m_form->ActionCopyExecute();
        QCOMPARE(clipboard->text(),
                 QStringLiteral("NAME\tGONE\tNOTE\nName 149\t\ta b c\nName 148\t\ta b c\n"));
        m_form.reset();
    }

    // The titles' menu hides and shows columns, but not the last one shown, and resets.
    void headerMenuHidesShowsAndResetsColumns() {
        showForm(m_result.get());
        std::unique_ptr<QMenu> menu(m_form->CreateHeaderMenu());
        QCOMPARE(menu->actions().size(), 7); // five columns, a separator, reset
        for (const int column : {0, 2, 3, 4})
            menu->actions()[column]->setChecked(false);
        QCOMPARE(visibility(grid()), QStringLiteral("01000"));
        menu.reset(m_form->CreateHeaderMenu());
        QVERIFY(!menu->actions()[1]->isEnabled() && menu->actions()[0]->isEnabled());
        menu->findChild<QAction*>(QStringLiteral("ActionResetLayout"))->trigger();
        QCOMPARE(visibility(grid()), QStringLiteral("11111"));
    }

    // NAME's stored value (null: none; stored as "name", found whatever the case) and what loading
    // makes of it: "visible width stops" (width 0: the width it had; stops: later columns are not
    // applied). The parsing itself is in test_gridrules.
    void loadLayout_data() {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("loaded");
        testsupport::AddRow("0,120 hides, width 120", "0,120", "0 120 0");
        testsupport::AddRow("1,0 shows, keeps the width", "1,0", "1 0 0");
        testsupport::AddRow("not stored", QString(), "1 0 0");
        // A visibility read before the failure counts.
        testsupport::AddRow("no number at all", "abc,5", "1 0 1");
        testsupport::AddRow("visibility read, width not", "0,wide", "0 0 1");
        testsupport::AddRow("longer than the buffer", "0," + QString(300, '1'), "0 0 1");
    }
    void loadLayout() {
        QFETCH(QString, stored);
        QFETCH(QString, loaded);
        if (!stored.isNull())
            storeLayout(QStringLiteral("name"), stored);
        storeLayout(QStringLiteral("PRICE"), QStringLiteral("1,77"));
        showForm(m_result.get());
        const int name = m_result->fieldIndex("NAME");
        const int price = m_result->fieldIndex("PRICE");
        const int before = grid().ColumnWidth(name);
        m_form->LoadLayout();
        QCOMPARE(QStringLiteral("%1 %2 %3")
                     .arg(grid().ColumnVisible(name))
                     .arg(grid().ColumnWidth(name) == before ? 0 : grid().ColumnWidth(name))
                     .arg(grid().ColumnWidth(price) != 77),
                 loaded);
        // Another pass runs again from the first column.
        storeLayout(QStringLiteral("name"), QStringLiteral("1,50"));
        m_form->LoadLayout();
        QCOMPARE(visibility(grid()), QStringLiteral("11111"));
        QCOMPARE(grid().ColumnWidth(price), 77);
    }

    // Nothing is saved into a store that cannot be written, nor for a grid without columns.
    void saveLayoutFails() {
        showForm(m_result.get());
        QString storePath;
        {
            QSettings settings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
            settings.setValue(QStringLiteral("Preferences/Probe"), 1);
            settings.sync();
            storePath = settings.fileName();
        }
        // A folder where the store's file should be: nothing can be written.
        const QString kept = storePath + QStringLiteral(".kept");
        QVERIFY(QFile::rename(storePath, kept));
        QVERIFY(QDir().mkpath(storePath));
        m_form->SaveLayout();
        QVERIFY(QDir().rmdir(storePath));
        QVERIFY(QFile::rename(kept, storePath));
        QCOMPARE(storedLayout("ID"), std::optional<QString>());
        QCOMPARE(storedLayout("NAME"), std::optional<QString>());
        // With the store back, it saves again.
        m_form->SaveLayout();
        QVERIFY(storedLayout("NAME"));

        QSettings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"))
            .remove(QStringLiteral("Preferences/GridLayout"));
        showForm(nullptr);
        m_form->SaveLayout();
        m_form->LoadLayout();
        m_form->SetColumnVisibility(0, true);
        QCOMPARE(grid().ColumnCount(), 0);
        QSettings settings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
        settings.beginGroup(QStringLiteral("Preferences/GridLayout"));
        QCOMPARE(settings.childKeys(), QStringList());
    }

    // Calls of SetColumnVisibility, "h<index>" hides, "s<index>" shows.
    void setColumnVisibility_data() {
        QTest::addColumn<QString>("calls");
        QTest::addColumn<QString>("visibility");
        testsupport::AddRow("hide the first", "h0", "01111");
        testsupport::AddRow("hide then show", "h0 s0", "11111");
        testsupport::AddRow("index = column count", "h5", "11111");
        testsupport::AddRow("a failure does not stop a later call", "h-1 h1", "10111");
    }
    void setColumnVisibility() {
        QFETCH(QString, calls);
        showForm(m_result.get());
        for (const QString& call : calls.split(' '))
            m_form->SetColumnVisibility(call.mid(1).toInt(), call.startsWith('h'));
        QTEST(visibility(grid()), "visibility");
    }

    // ------------------------------------------------------------------ the grid alone

    // Steps are separated by commas; see run().
    void selection_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<int>("current");
        const std::tuple<const char*, const char*, const char*, int> cases[] = {
            {"shift+down from an unselected row", "press 3, plain Down, key Down", "4-5", 5},
            {"shift+up twice", "press 6, key Up, key Up", "4-6", 4},
            {"shift+home", "press 5, key Home", "0-5", 0},
            {"shift+end", "press 5, key End", "5-149", 149},
            {"keys without shift clear the selection", "press 3, key Down, plain Down", "", 5},
            {"shift-clicks below and across the anchor", "press 5, shift 8, shift 2", "2-5", 2},
            {"a plain click starts again", "press 2, shift 6, press 4", "4", 4},
            {"ctrl-click adds a row, moves the anchor", "press 2, ctrl 5, shift 7", "2,5-7", 7},
            {"ctrl-click takes a row out", "press 2, shift 6, ctrl 4", "2-3,5-6", 4},
            {"shift-click on the title row", "press 2, shift 5, title", "2-5", 5},
            // The row indicator takes clicks as the row's cells do, Shift with any button.
            {"row indicator clicks", "row 4, rowshift 1", "1-4", 1},
            // After the scroll bar the bookmarks are walked.
            {"walk forwards", "press 2, scroll 60, shift 60", "2-60", 60},
            {"walk backwards", "press 2, scroll 90, press 90, scroll 10, shift 10", "10-90", 10},
            {"walk to the anchor", "scroll 70, press 70, scroll 110, scroll 70, shift 70", "70",
             70},
            // The clicked row keeps the state the Ctrl-click gave it.
            {"walk forwards, toggled", "press 5, key End, scroll 45, shiftctrl 45", "5-44,46-149",
             45},
            {"walk backwards, toggled", "scroll 60, press 60, key Home, scroll 30, shiftctrl 30",
             "0-29,31-60", 30},
        };
        for (const char* model : {"query", "sorted query", "plain model"})
            for (const auto& [name, steps, selected, current] : cases)
                QTest::addRow("%s: %s", model, name)
                    << QString::fromLatin1(model) << QString::fromLatin1(steps).split(", ")
                    << QString::fromLatin1(selected) << current;
    }
    void selection() {
        QFETCH(QString, model);
        QFETCH(QStringList, steps);
        QFETCH(int, current);
        // The same rows in a model that is not a query result.
        QStandardItemModel plain(RowCount, m_result->columnCount());
        for (int row = 0; row < RowCount; ++row)
            for (int column = 0; column < m_result->columnCount(); ++column)
                plain.setItem(row, column,
                              new QStandardItem(m_result->index(row, column).data().toString()));
        if (model == QLatin1String("sorted query")) {
            // Ascending by NAME is descending by ID: bookmarks count down.
            m_result->setSortText(QStringLiteral("[NAME] ASC"));
            m_result->waitForSort();
            QCOMPARE(m_result->bookmark(0), quint32(RowCount - 1));
        }
        showGrid(model == QLatin1String("plain model") ? static_cast<QAbstractItemModel*>(&plain)
                                                       : m_result.get());
        QVERIFY(m_grid->LinkActive());
        run(*m_grid, steps);
        QTEST(selectedText(*m_grid), "selected");
        QCOMPARE(m_grid->currentIndex().row(), current);
        QVERIFY(!m_grid->Scrolled());
        m_grid.reset();
    }

    void pageKeysStepVisibleRowsAndOne() {
        showGrid(m_result.get());
        const int visible = m_grid->VisibleRowCount();
        QVERIFY(visible > 2 && visible < 20);
        const QString firstPage = QStringLiteral("2-%1").arg(2 + visible + 1);
        run(*m_grid, {"press 2", "key PageDown"});
        QCOMPARE(selectedText(*m_grid), firstPage);
        run(*m_grid, {"key PageDown"});
        QCOMPARE(m_grid->currentIndex().row(), 2 + 2 * (visible + 1));
        run(*m_grid, {"key PageUp"});
        QCOMPARE(selectedText(*m_grid), firstPage);
        run(*m_grid, {"key PageUp"});
        QCOMPARE(selectedText(*m_grid), QStringLiteral("2"));
        // Page Up above the anchor stops at the first row.
        run(*m_grid, {"key PageUp"});
        QCOMPARE(selectedText(*m_grid), QStringLiteral("0-2"));
        QCOMPARE(m_grid->currentIndex().row(), 0);
        // With no whole row on screen a page is one row.
        m_grid->resize(420, m_grid->horizontalHeader()->height() + 8);
        QCOMPARE(m_grid->VisibleRowCount(), 0);
        run(*m_grid, {"plain Down", "key PageDown"});
        QCOMPARE(selectedText(*m_grid), QStringLiteral("1-2"));
    }

    void scrolledOnlyByTheScrollBarOrTheWheel() {
        showGrid(m_result.get());
        run(*m_grid, {"press 1"});
        const QPoint centre = m_grid->viewport()->rect().center();
        QWheelEvent wheel(centre, m_grid->viewport()->mapToGlobal(centre), QPoint(),
                          QPoint(0, -360), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(m_grid->viewport(), &wheel);
        QVERIFY(m_grid->rowAt(0) > 1);
        QVERIFY(m_grid->Scrolled());
        const int target = m_grid->rowAt(m_grid->viewport()->height() / 2);
        clickRow(*m_grid, target, Qt::ShiftModifier);
        QCOMPARE(selectedText(*m_grid), QStringLiteral("1-%1").arg(target));
        QVERIFY(!m_grid->Scrolled());
        // The view following the current row is no scroll.
        const int top = m_grid->rowAt(0);
        run(*m_grid, {"plain PageDown", "plain PageDown", "plain PageDown", "plain PageDown"});
        QVERIFY(m_grid->rowAt(0) > top);
        run(*m_grid, {"key End"});
        QVERIFY(!m_grid->Scrolled());
        clickScrollBar(m_grid->verticalScrollBar(), false);
        QVERIFY(m_grid->Scrolled());
        clickRow(*m_grid, m_grid->rowAt(0) + 1); // a plain click ends it
        QVERIFY(!m_grid->Scrolled());
    }

    void titleClicks() {
        showGrid(m_result.get());
        QSignalSpy titles(m_grid.get(), &TDBGridRange::titleClicked);
        QSignalSpy releases(m_grid.get(), &TDBGridRange::mouseReleased);
        run(*m_grid, {"press 2"});
        QCOMPARE(releases.count(), 1);
        clickTitle(*m_grid, 2);
        QCOMPARE(titles.count(), 1);
        QCOMPARE(titles.at(0).at(0).toInt(), 2);
        // Titles are not cells: no release is reported, and no column gets selected.
        QCOMPARE(releases.count(), 1);
        QCOMPARE(selectedText(*m_grid), QStringLiteral("2"));
        // Ctrl does not keep a title click from being one; Shift does, scrolled or not.
        clickTitle(*m_grid, 0, Qt::ControlModifier);
        QCOMPARE(titles.count(), 2);
        run(*m_grid, {"press 2", "shift 5"});
        for (const bool scrolled : {false, true}) {
            if (scrolled)
                clickScrollBar(m_grid->verticalScrollBar(), true);
            QCOMPARE(m_grid->Scrolled(), scrolled);
            clickTitle(*m_grid, 2, Qt::ShiftModifier);
            QCOMPARE(selectedText(*m_grid), QStringLiteral("2-5"));
            QCOMPARE(m_grid->currentIndex().row(), 5);
            QCOMPARE(titles.count(), 2);
        }
    }

    // Below the last row, without multi-select and over a closed result, Shift adds
    // nothing of its own.
    void shiftWithoutARange() {
        auto few = m_table.open(QStringLiteral("ID, NAME"), QStringLiteral("WHERE ID <= 3"));
        showGrid(few.get());
        run(*m_grid, {"press 1"});
        const QPoint below(20, m_grid->visualRect(few->index(2, 0)).bottom() + 30);
        QVERIFY(m_grid->rowAt(below.y()) < 0);
        QTest::mouseClick(m_grid->viewport(), Qt::LeftButton, Qt::ShiftModifier, below);
        QCOMPARE(selectedText(*m_grid), QStringLiteral("1"));
        QCOMPARE(m_grid->currentIndex().row(), 1);

        showGrid(m_result.get());
        m_grid->SetMultiSelect(false);
        QVERIFY(!m_grid->MultiSelect());
        run(*m_grid, {"press 2", "shift 6", "key Down"});
        QCOMPARE(selectedText(*m_grid), QStringLiteral("7"));
        m_grid->SetMultiSelect(true);
        m_result->close();
        QVERIFY(!m_grid->LinkActive());
        // A press without an open result keeps the anchor (the plain press on row 2).
        QCOMPARE(m_grid->RangeState().anchorRecordNumber(), 3);
        QTest::mouseClick(m_grid->viewport(), Qt::LeftButton, {}, QPoint(30, 30));
        QCOMPARE(m_grid->RangeState().anchorRecordNumber(), 3);
        QTest::keyClick(m_grid.get(), Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(selectedText(*m_grid), QString());
    }

    void selectCurrentAndBatchUpdate() {
        showGrid(m_result.get());
        run(*m_grid, {"press 4", "plain Down"});
        m_grid->SelectCurrent(true);
        QCOMPARE(selectedText(*m_grid), QStringLiteral("5"));
        m_grid->SelectCurrent(false);
        QCOMPARE(selectedText(*m_grid), QString());
        // Inside a batch the change shows when the outermost batch ends.
        m_grid->StartUpdate();
        m_grid->StartUpdate();
        m_grid->SelectCurrent(true);
        m_grid->DoneUpdate();
        QCOMPARE(selectedText(*m_grid), QString());
        m_grid->DoneUpdate();
        QCOMPARE(selectedText(*m_grid), QStringLiteral("5"));
        // Whole-row-select mode ignores it.
        m_grid->SetRowSelect(true);
        m_grid->SelectCurrent(false);
        QCOMPARE(selectedText(*m_grid), QStringLiteral("5"));
    }

    void drawing() {
        showGrid(m_result.get());
        // Row 7 selected; the current cell (row 8, column 1) in no selected row.
        run(*m_grid, {"press 7"});
        QTest::keyClick(m_grid.get(), Qt::Key_Down, Qt::ControlModifier);
        QCOMPARE(selectedText(*m_grid), QStringLiteral("7"));
        QCOMPARE(m_grid->currentIndex(), m_result->index(8, 1));
        const auto cell = [this](const QImage& image, int row, int column) {
            return cellPixels(image, m_grid->visualRect(m_result->index(row, column)));
        };
        const QPalette palette = m_grid->palette();
        const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
        const QRgb highlightedText =
            palette.color(QPalette::Active, QPalette::HighlightedText).rgb();
        QVERIFY(highlight != palette.color(QPalette::Active, QPalette::Base));
        m_grid->clearFocus(); // the selection shows without the focus too
        QImage image = m_grid->viewport()->grab().toImage();
        // A selected row and the current cell: highlight background, highlighted text; the
        // rest of the current row is not highlighted.
        for (const auto& [row, column] : {std::pair{7, 2}, std::pair{8, 1}}) {
            QCOMPARE(cell(image, row, column).background, highlight);
            QVERIFY(cell(image, row, column).inkColours.contains(highlightedText));
        }
        QCOMPARE(cell(image, 8, 2).background, palette.color(QPalette::Active, QPalette::Base));
        QVERIFY(cell(image, 8, 2).inkColours.contains(palette.color(QPalette::Text).rgb()));
        // Text columns on the left, number columns on the right, 2 pixels from the edges.
        const QRect nameRect = m_grid->visualRect(m_result->index(3, 3));
        const QRect name = cell(image, 3, 3).ink;
        QVERIFY(!name.isEmpty());
        QVERIFY(name.left() >= nameRect.left() + 2 && name.left() < nameRect.center().x());
        const QRect idRect = m_grid->visualRect(m_result->index(3, 0));
        const QRect id = cell(image, 3, 0).ink;
        QVERIFY(!id.isEmpty());
        QVERIFY(id.right() <= idRect.right() - 2 && id.left() > idRect.center().x());
        // A disabled grid writes grey text, in highlighted cells too.
        m_grid->setEnabled(false);
        image = m_grid->viewport()->grab().toImage();
        const QRgb grey = palette.color(QPalette::Disabled, QPalette::Text).rgb();
        QVERIFY(cell(image, 8, 2).inkColours.contains(grey));
        QVERIFY(cell(image, 7, 2).inkColours.contains(grey));
        QVERIFY(!cell(image, 7, 2).inkColours.contains(highlightedText));
    }

    void columnWidthSurvivesHiding() {
        showGrid(m_result.get());
        const int name = m_result->fieldIndex("NAME");
        QCOMPARE(m_grid->ColumnCount(), 5);
        QCOMPARE(m_grid->ColumnFieldName(name), QStringLiteral("NAME"));
        m_grid->SetColumnWidth(name, 155);
        m_grid->SetColumnVisible(name, false);
        QVERIFY(!m_grid->ColumnVisible(name));
        QCOMPARE(m_grid->ColumnWidth(name), 155);
        m_grid->SetColumnWidth(name, 90);
        m_grid->SetColumnVisible(name, true);
        QCOMPARE(m_grid->columnWidth(name), 90);

        // A new result on the same model shows every column at its default width.
        m_grid->SetColumnVisible(name, false);
        db::odbc::Statement statement(m_table.connection);
        statement.executeDirect(
            QStringLiteral("SELECT %1 FROM %2").arg(GridTable::Columns, m_table.name));
        m_result->open(std::move(statement));
        m_result->waitForAllRows();
        QVERIFY(m_grid->ColumnVisible(name));
        const int defaultWidth = m_grid->horizontalHeader()->defaultSectionSize();
        QCOMPARE(m_grid->ColumnWidth(name), defaultWidth);
        m_grid->SetColumnVisible(name, false);
        QCOMPARE(m_grid->ColumnWidth(name), defaultWidth);
        QCOMPARE(m_grid->currentIndex().row(), 0);
        m_grid.reset();
    }
};

QTEST_MAIN(TestGridRange)
#include "test_gridrange.moc"
