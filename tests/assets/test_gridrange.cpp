// The range-selection grid driven with the mouse and the keys over a real result of the
// SQLite ODBC driver (and, for comparison, over a plain item model).

#include "assets/resulttablemodel.h"
#include "assets/ui/dbgridrange.h"
#include "db/odbc/odbc.h"
#include "gridclicks.h"
#include "support/testsupport.h"

#include <QHeaderView>
#include <QImage>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStyleOptionSlider>
#include <QTest>

#include <memory>

using ui::TDBGridRange;

namespace {

constexpr int RowCount = 150;

// "2-5,9" style, from the grid's selected rows.
QString rangesText(const std::vector<int>& rows) {
    QStringList parts;
    std::size_t index = 0;
    while (index < rows.size()) {
        const int first = rows[index];
        int last = first;
        while (++index < rows.size() && rows[index] == last + 1)
            ++last;
        parts << (first == last ? QString::number(first)
                                : QStringLiteral("%1-%2").arg(first).arg(last));
    }
    return parts.join(QLatin1Char(','));
}

QString selectedText(const TDBGridRange& grid) {
    return rangesText(grid.SelectedRows());
}

using gridclicks::cellCentre;
using gridclicks::clickRow;
using gridclicks::clickTitle;

bool rowFullyShown(const TDBGridRange& grid, int row) {
    const QRect rect = grid.visualRect(grid.model()->index(row, 0));
    return rect.top() >= 0 && rect.bottom() < grid.viewport()->height();
}

// Clicks the scroll bar's groove above or below its slider, as a user pages with it.
void clickScrollBar(QScrollBar* bar, bool down) {
    QStyleOptionSlider option;
    option.initFrom(bar);
    option.orientation = bar->orientation();
    option.minimum = bar->minimum();
    option.maximum = bar->maximum();
    option.sliderPosition = bar->sliderPosition();
    option.sliderValue = bar->value();
    option.singleStep = bar->singleStep();
    option.pageStep = bar->pageStep();
    option.subControls = QStyle::SC_All;
    const QRect groove = bar->style()->subControlRect(
        QStyle::CC_ScrollBar, &option,
        down ? QStyle::SC_ScrollBarAddPage : QStyle::SC_ScrollBarSubPage, bar);
    if (groove.isEmpty())
        qFatal("no room to page the scroll bar");
    QTest::mouseClick(bar, Qt::LeftButton, {}, groove.center());
}

// The user pages with the scroll bar until `row` is completely on screen.
void scrollUntilShown(TDBGridRange& grid, int row) {
    for (int clicks = 0; clicks < 100 && !rowFullyShown(grid, row); ++clicks)
        clickScrollBar(grid.verticalScrollBar(), grid.rowAt(0) < row);
    if (!rowFullyShown(grid, row))
        qFatal("scrolling did not bring row %d on screen", row);
}

std::optional<Qt::Key> keyNamed(const QString& name) {
    static const QHash<QString, Qt::Key> keys{
        {QStringLiteral("Up"), Qt::Key_Up},         {QStringLiteral("Down"), Qt::Key_Down},
        {QStringLiteral("PageUp"), Qt::Key_PageUp}, {QStringLiteral("PageDown"), Qt::Key_PageDown},
        {QStringLiteral("Home"), Qt::Key_Home},     {QStringLiteral("End"), Qt::Key_End},
    };
    if (!keys.contains(name))
        return std::nullopt;
    return keys.value(name);
}

// Steps, each "verb argument":
//   press R / ctrl R / shift R   a click on row R, plain, with Ctrl, with Shift
//   shiftctrl R                  a click on row R with Shift and Ctrl
//   title                        a Shift-click on the second column's title
//   key K / plain K              key K with Shift / without modifiers
//   scroll R                     the user pages with the scroll bar until row R shows
void run(TDBGridRange& grid, const QStringList& steps) {
    for (const QString& step : steps) {
        const QStringList words = step.split(QLatin1Char(' '));
        const QString& verb = words.at(0);
        const int row = words.size() > 1 ? words.at(1).toInt() : 0;
        if (verb == QLatin1String("press"))
            clickRow(grid, row);
        else if (verb == QLatin1String("ctrl"))
            clickRow(grid, row, Qt::ControlModifier);
        else if (verb == QLatin1String("shift"))
            clickRow(grid, row, Qt::ShiftModifier);
        else if (verb == QLatin1String("shiftctrl"))
            clickRow(grid, row, Qt::ShiftModifier | Qt::ControlModifier);
        else if (verb == QLatin1String("title"))
            clickTitle(grid, 1, Qt::ShiftModifier);
        else if (verb == QLatin1String("key") || verb == QLatin1String("plain")) {
            const auto key = keyNamed(words.at(1));
            QVERIFY2(key, qPrintable(step));
            QTest::keyClick(&grid, *key,
                            verb == QLatin1String("key") ? Qt::ShiftModifier : Qt::NoModifier);
        } else if (verb == QLatin1String("scroll"))
            scrollUntilShown(grid, row);
        else
            QFAIL(qPrintable(QStringLiteral("unknown step ") + step));
    }
}

} // namespace

class TestGridRange : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void selection_data();
    void selection();
    void pageKeysStepVisibleRowsAndOne();
    void bookmarkWalkAfterScrollBar_data();
    void bookmarkWalkAfterScrollBar();
    void movingTheCurrentRowIsNoScroll();
    void wheelCountsAsScrolling();
    void shiftClickOnTitleChangesNothing();
    void titleClickIsReported();
    void clickBelowTheLastRow();
    void withoutMultiSelectShiftIsPlain();
    void selectCurrentAndBatchUpdate();
    void htmlColours();
    void drawing();
    void columnWidthSurvivesHiding();

private:
    std::unique_ptr<assets::ResultTableModel> openResult(const QString& sql);
    void showGrid(QAbstractItemModel* model);

    db::odbc::Connection m_connection;
    QString m_table;
    std::unique_ptr<assets::ResultTableModel> m_result;
    std::unique_ptr<QStandardItemModel> m_plain;
    std::unique_ptr<TDBGridRange> m_grid;
};

void TestGridRange::initTestCase() {
    testsupport::UseTemporarySettings();
    const testsupport::TestDatabase database = testsupport::TestDatabases().front();
    QUILLET_REQUIRE_DATABASE(database);
    m_connection.open(database.connectionString());
    m_table = testsupport::UniqueTableName(QStringLiteral("grid"));
    m_connection.execute(
        QStringLiteral("CREATE TABLE %1 (ID INTEGER, ASSET_TAG VARCHAR(20), NAME VARCHAR(40), "
                       "PRICE NUMERIC(10,2))")
            .arg(m_table));
    m_connection.execute(
        QStringLiteral("INSERT INTO %1 (ID, ASSET_TAG, NAME, PRICE) "
                       "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
                       "WHERE i < %2) "
                       "SELECT i, printf('AT%03d', (i * 37) % 151), printf('Name %03d', 151 - i), "
                       "i * 1.5 FROM n")
            .arg(m_table)
            .arg(RowCount));
}

std::unique_ptr<assets::ResultTableModel> TestGridRange::openResult(const QString& sql) {
    auto model = std::make_unique<assets::ResultTableModel>();
    db::odbc::Statement statement(m_connection);
    statement.executeDirect(sql);
    model->open(std::move(statement));
    model->waitForAllRows();
    return model;
}

void TestGridRange::init() {
    m_result = openResult(
        QStringLiteral("SELECT ID, ASSET_TAG, NAME, PRICE FROM %1 ORDER BY ID").arg(m_table));
    QCOMPARE(m_result->rowCount(), RowCount);
    // The same rows in a model that is not a query result.
    m_plain = std::make_unique<QStandardItemModel>(RowCount, m_result->columnCount());
    for (int row = 0; row < RowCount; ++row)
        for (int column = 0; column < m_result->columnCount(); ++column)
            m_plain->setItem(row, column,
                             new QStandardItem(m_result->index(row, column).data().toString()));
}

void TestGridRange::cleanup() {
    m_grid.reset();
    m_result.reset();
    m_plain.reset();
}

void TestGridRange::showGrid(QAbstractItemModel* model) {
    m_grid = std::make_unique<TDBGridRange>();
    m_grid->resize(420, 320);
    m_grid->setModel(model);
    m_grid->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_grid.get()));
    m_grid->setFocus();
}

void TestGridRange::selection_data() {
    QTest::addColumn<QString>("model");
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<int>("current");

    struct Case {
        const char* name;
        QStringList steps;
        const char* selected;
        int current;
    };
    const Case cases[] = {
        {"shift+down from an unselected row", {"press 3", "plain Down", "key Down"}, "4-5", 5},
        {"shift+down and shift+up back to the anchor",
         {"press 3", "plain Down", "key Down", "key Up"},
         "4",
         4},
        {"shift+up twice", {"press 6", "key Up", "key Up"}, "4-6", 4},
        {"shift+home", {"press 5", "key Home"}, "0-5", 0},
        {"shift+end", {"press 5", "key End"}, "5-149", 149},
        {"shift+end then shift+home", {"press 5", "key End", "key Home"}, "0-5", 0},
        {"keys without shift clear the selection", {"press 3", "key Down", "plain Down"}, "", 5},
        {"shift-click below", {"press 2", "shift 6"}, "2-6", 6},
        {"shift-click above", {"press 6", "shift 2"}, "2-6", 2},
        {"a second shift-click shrinks the range", {"press 2", "shift 8", "shift 4"}, "2-4", 4},
        {"a second shift-click crosses the anchor", {"press 5", "shift 8", "shift 2"}, "2-5", 2},
        {"a plain click starts again", {"press 2", "shift 6", "press 4"}, "4", 4},
        {"ctrl-click adds a row and moves the anchor",
         {"press 2", "ctrl 5", "shift 7"},
         "2,5-7",
         7},
        {"ctrl-click takes a row out", {"press 2", "shift 6", "ctrl 4"}, "2-3,5-6", 4},
        {"shift-click on the title row", {"press 2", "shift 5", "title"}, "2-5", 5},
        {"shift-click after the scroll bar walks the bookmarks",
         {"press 2", "scroll 60", "shift 60"},
         "2-60",
         60},
        {"backwards after the scroll bar",
         {"press 2", "scroll 90", "press 90", "scroll 10", "shift 10"},
         "10-90",
         10},
        {"after the scroll bar the clicked row keeps its toggled state",
         {"press 5", "key End", "scroll 45", "shiftctrl 45"},
         "5-44,46-149",
         45},
        {"backwards, the clicked row keeps its toggled state",
         {"scroll 60", "press 60", "key Home", "scroll 30", "shiftctrl 30"},
         "0-29,31-60",
         30},
    };
    for (const char* model : {"query", "sorted query", "plain model"}) {
        for (const Case& c : cases) {
            QTest::addRow("%s: %s", model, c.name) << QString::fromLatin1(model) << c.steps
                                                   << QString::fromLatin1(c.selected) << c.current;
        }
    }
}

void TestGridRange::selection() {
    QFETCH(QString, model);
    QFETCH(QStringList, steps);
    QFETCH(QString, selected);
    QFETCH(int, current);

    if (model == QLatin1String("sorted query")) {
        // Ascending by NAME is descending by ID: bookmarks count down.
        m_result->setSortText(QStringLiteral("[NAME] ASC"));
        m_result->waitForSort();
        QCOMPARE(m_result->bookmark(0), quint32(RowCount - 1));
    }
    showGrid(model == QLatin1String("plain model") ? static_cast<QAbstractItemModel*>(m_plain.get())
                                                   : m_result.get());
    QVERIFY(m_grid->LinkActive());
    run(*m_grid, steps);
    QCOMPARE(selectedText(*m_grid), selected);
    QCOMPARE(m_grid->currentIndex().row(), current);
    QVERIFY(!m_grid->Scrolled());
}

void TestGridRange::pageKeysStepVisibleRowsAndOne() {
    showGrid(m_result.get());
    const int visible = m_grid->VisibleRowCount();
    QVERIFY(visible > 2);
    QVERIFY(visible < 20);
    run(*m_grid, {"press 2", "key PageDown"});
    QCOMPARE(m_grid->currentIndex().row(), 2 + visible + 1);
    QCOMPARE(selectedText(*m_grid), QStringLiteral("2-%1").arg(2 + visible + 1));
    run(*m_grid, {"key PageDown"});
    QCOMPARE(m_grid->currentIndex().row(), 2 + 2 * (visible + 1));
    run(*m_grid, {"key PageUp"});
    QCOMPARE(selectedText(*m_grid), QStringLiteral("2-%1").arg(2 + visible + 1));
    run(*m_grid, {"key PageUp"});
    QCOMPARE(selectedText(*m_grid), QStringLiteral("2"));
    QCOMPARE(m_grid->currentIndex().row(), 2);
    // Page Up above the anchor, stopping at the first row.
    run(*m_grid, {"key PageUp"});
    QCOMPARE(selectedText(*m_grid), QStringLiteral("0-2"));
    QCOMPARE(m_grid->currentIndex().row(), 0);
}

void TestGridRange::bookmarkWalkAfterScrollBar_data() {
    QTest::addColumn<int>("anchor");
    QTest::addColumn<int>("target");
    QTest::newRow("forwards") << 1 << 120;
    QTest::newRow("backwards") << 140 << 3;
    QTest::newRow("to the anchor") << 70 << 70;
}

void TestGridRange::bookmarkWalkAfterScrollBar() {
    QFETCH(int, anchor);
    QFETCH(int, target);
    showGrid(m_result.get());
    run(*m_grid, {QStringLiteral("scroll %1").arg(anchor), QStringLiteral("press %1").arg(anchor)});
    QVERIFY(!m_grid->Scrolled());
    // One page away from the anchor, then back to the target.
    clickScrollBar(m_grid->verticalScrollBar(), target >= anchor);
    scrollUntilShown(*m_grid, target);
    QVERIFY(m_grid->Scrolled());
    const int visible = m_grid->VisibleRowCount();
    clickRow(*m_grid, target, Qt::ShiftModifier);
    const int first = qMin(anchor, target);
    const int last = qMax(anchor, target);
    QCOMPARE(selectedText(*m_grid),
             first == last ? QString::number(first) : QStringLiteral("%1-%2").arg(first).arg(last));
    QVERIFY(last - first + 1 > visible || first == last);
    QCOMPARE(m_grid->currentIndex().row(), target);
    QVERIFY(!m_grid->Scrolled());
    QCOMPARE(m_grid->RangeState().targetBookmark(),
             std::optional<quint32>(m_result->bookmark(target)));
}

void TestGridRange::movingTheCurrentRowIsNoScroll() {
    showGrid(m_result.get());
    run(*m_grid, {"press 1"});
    const int top = m_grid->rowAt(0);
    for (int step = 0; step < 5; ++step)
        QTest::keyClick(m_grid.get(), Qt::Key_PageDown);
    QVERIFY(m_grid->rowAt(0) > top); // the view followed the current row
    QVERIFY(!m_grid->Scrolled());
    run(*m_grid, {"key End"});
    QVERIFY(!m_grid->Scrolled());
    clickScrollBar(m_grid->verticalScrollBar(), false);
    QVERIFY(m_grid->Scrolled());
    // A plain click ends it.
    clickRow(*m_grid, m_grid->rowAt(0) + 1);
    QVERIFY(!m_grid->Scrolled());
}

void TestGridRange::wheelCountsAsScrolling() {
    showGrid(m_result.get());
    run(*m_grid, {"press 1"});
    const int top = m_grid->rowAt(0);
    const QPoint centre = m_grid->viewport()->rect().center();
    QWheelEvent wheel(centre, m_grid->viewport()->mapToGlobal(centre), QPoint(), QPoint(0, -360),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(m_grid->viewport(), &wheel);
    QVERIFY(m_grid->rowAt(0) > top);
    QVERIFY(m_grid->Scrolled());
    const int target = m_grid->rowAt(m_grid->viewport()->height() / 2);
    clickRow(*m_grid, target, Qt::ShiftModifier);
    QCOMPARE(selectedText(*m_grid), QStringLiteral("1-%1").arg(target));
}

void TestGridRange::shiftClickOnTitleChangesNothing() {
    showGrid(m_result.get());
    QSignalSpy titles(m_grid.get(), &TDBGridRange::titleClicked);
    run(*m_grid, {"press 2", "shift 5"});
    for (const bool scrolled : {false, true}) {
        if (scrolled)
            clickScrollBar(m_grid->verticalScrollBar(), true);
        QCOMPARE(m_grid->Scrolled(), scrolled);
        clickTitle(*m_grid, 2, Qt::ShiftModifier);
        QCOMPARE(selectedText(*m_grid), QStringLiteral("2-5"));
        QCOMPARE(m_grid->currentIndex().row(), 5);
        QCOMPARE(titles.count(), 0);
        QCOMPARE(m_result->sortText(), QString());
    }
}

void TestGridRange::titleClickIsReported() {
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
    // Ctrl does not keep a title click from being one.
    clickTitle(*m_grid, 0, Qt::ControlModifier);
    QCOMPARE(titles.count(), 2);
}

void TestGridRange::clickBelowTheLastRow() {
    auto few = openResult(QStringLiteral("SELECT ID, NAME FROM %1 WHERE ID <= 3").arg(m_table));
    showGrid(few.get());
    run(*m_grid, {"press 1"});
    const QPoint below(20, m_grid->visualRect(few->index(2, 0)).bottom() + 30);
    QVERIFY(m_grid->rowAt(below.y()) < 0);
    QTest::mouseClick(m_grid->viewport(), Qt::LeftButton, Qt::ShiftModifier, below);
    QCOMPARE(selectedText(*m_grid), QStringLiteral("1"));
    QCOMPARE(m_grid->currentIndex().row(), 1);
    m_grid.reset();
}

void TestGridRange::withoutMultiSelectShiftIsPlain() {
    showGrid(m_result.get());
    m_grid->SetMultiSelect(false);
    QVERIFY(!m_grid->MultiSelect());
    run(*m_grid, {"press 2", "shift 6", "key Down"});
    QCOMPARE(selectedText(*m_grid), QStringLiteral("7"));

    // A closed result: the link is inactive, Shift does nothing of its own.
    m_grid->SetMultiSelect(true);
    m_result->close();
    QVERIFY(!m_grid->LinkActive());
    QTest::keyClick(m_grid.get(), Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(selectedText(*m_grid), QString());
}

void TestGridRange::selectCurrentAndBatchUpdate() {
    showGrid(m_result.get());
    run(*m_grid, {"press 4", "plain Down"});
    QCOMPARE(selectedText(*m_grid), QString());
    m_grid->SelectCurrent(true);
    QCOMPARE(selectedText(*m_grid), QStringLiteral("5"));
    m_grid->SelectCurrent(false);
    QCOMPARE(selectedText(*m_grid), QString());

    // Inside a batch the change shows when the batch ends.
    m_grid->StartUpdate();
    m_grid->StartUpdate();
    m_grid->SelectCurrent(true);
    m_grid->DoneUpdate();
    QCOMPARE(selectedText(*m_grid), QString());
    m_grid->DoneUpdate();
    QCOMPARE(selectedText(*m_grid), QStringLiteral("5"));
    m_grid->DoneUpdate(); // one too many changes nothing
    QCOMPARE(selectedText(*m_grid), QStringLiteral("5"));

    // Whole-row-select mode ignores it.
    m_grid->SetRowSelect(true);
    m_grid->SelectCurrent(false);
    QCOMPARE(selectedText(*m_grid), QStringLiteral("5"));
}

void TestGridRange::htmlColours() {
    TDBGridRange grid;
    QCOMPARE(grid.property("HTMLColor").value<QColor>(), QColor(0xFF, 0xFF, 0xFF));
    QCOMPARE(grid.property("HTMLFixedColor").value<QColor>(), QColor(0xC0, 0xC0, 0xC0));
    QVERIFY(grid.setProperty("HTMLColor", QColor(Qt::red)));
    QCOMPARE(grid.HTMLColor(), QColor(Qt::red));
    QVERIFY(grid.setProperty("HTMLFixedColor", QColor(0x12, 0x34, 0x56)));
    QCOMPARE(grid.HTMLFixedColor(), QColor(0x12, 0x34, 0x56));
}

namespace {

struct CellPixels {
    QColor background;
    QRect ink; // where pixels differ from the background
    QSet<QRgb> inkColours;
};

CellPixels cellPixels(const QImage& image, const QRect& rect) {
    CellPixels cell;
    cell.background = image.pixelColor(rect.topLeft() + QPoint(1, 1));
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        for (int x = rect.left(); x <= rect.right(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            if (pixel == cell.background.rgb())
                continue;
            cell.ink = cell.ink.united(QRect(x, y, 1, 1));
            cell.inkColours.insert(pixel);
        }
    return cell;
}

} // namespace

void TestGridRange::drawing() {
    showGrid(m_result.get());
    // Row 7 selected; the current cell (row 8, column 1) in no selected row.
    run(*m_grid, {"press 7"});
    QTest::keyClick(m_grid.get(), Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(selectedText(*m_grid), QStringLiteral("7"));
    QCOMPARE(m_grid->currentIndex(), m_result->index(8, 1));

    const auto grab = [this] { return m_grid->viewport()->grab().toImage(); };
    const auto rectOf = [this](int row, int column) {
        return m_grid->visualRect(m_result->index(row, column));
    };
    const QPalette palette = m_grid->palette();
    const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
    const QColor highlightedText = palette.color(QPalette::Active, QPalette::HighlightedText);
    const QColor base = palette.color(QPalette::Active, QPalette::Base);
    const QColor text = palette.color(QPalette::Active, QPalette::Text);
    QVERIFY(highlight != base);

    m_grid->clearFocus(); // the selection shows without the focus too
    QImage image = grab();
    // A selected row: highlight background, highlighted text.
    const CellPixels selected = cellPixels(image, rectOf(7, 2));
    QCOMPARE(selected.background, highlight);
    QVERIFY(selected.inkColours.contains(highlightedText.rgb()));
    // The current cell is highlighted, the rest of its row is not.
    const CellPixels current = cellPixels(image, rectOf(8, 1));
    QCOMPARE(current.background, highlight);
    QVERIFY(current.inkColours.contains(highlightedText.rgb()));
    const CellPixels other = cellPixels(image, rectOf(8, 2));
    QCOMPARE(other.background, base);
    QVERIFY(other.inkColours.contains(text.rgb()));

    // Text columns on the left, number columns on the right, 2 pixels from the edges.
    const QRect nameRect = rectOf(3, 2);
    const CellPixels name = cellPixels(image, nameRect);
    QVERIFY(!name.ink.isEmpty());
    QVERIFY(name.ink.left() >= nameRect.left() + 2);
    QVERIFY(name.ink.left() < nameRect.center().x());
    const QRect idRect = rectOf(3, 0);
    const CellPixels id = cellPixels(image, idRect);
    QVERIFY(!id.ink.isEmpty());
    QVERIFY(id.ink.right() <= idRect.right() - 2);
    QVERIFY(id.ink.left() > idRect.center().x());

    // A disabled grid writes grey text, in highlighted cells too.
    m_grid->setEnabled(false);
    image = grab();
    const QColor grey = palette.color(QPalette::Disabled, QPalette::Text);
    QVERIFY(cellPixels(image, rectOf(8, 2)).inkColours.contains(grey.rgb()));
    const CellPixels disabledSelected = cellPixels(image, rectOf(7, 2));
    QVERIFY(disabledSelected.inkColours.contains(grey.rgb()));
    QVERIFY(!disabledSelected.inkColours.contains(highlightedText.rgb()));
    m_grid->setEnabled(true);
}

void TestGridRange::columnWidthSurvivesHiding() {
    showGrid(m_result.get());
    QCOMPARE(m_grid->ColumnCount(), 4);
    QCOMPARE(m_grid->ColumnFieldName(2), QStringLiteral("NAME"));
    QCOMPARE(m_grid->ColumnFieldName(7), QString());
    m_grid->SetColumnWidth(2, 155);
    m_grid->SetColumnVisible(2, false);
    QVERIFY(!m_grid->ColumnVisible(2));
    QCOMPARE(m_grid->ColumnWidth(2), 155);
    m_grid->SetColumnWidth(2, 90);
    QCOMPARE(m_grid->ColumnWidth(2), 90);
    m_grid->SetColumnVisible(2, true);
    QCOMPARE(m_grid->columnWidth(2), 90);
    QCOMPARE(m_grid->ColumnWidth(2), 90);

    // A new result on the same model shows every column at its default width.
    m_grid->SetColumnVisible(2, false);
    db::odbc::Statement statement(m_connection);
    statement.executeDirect(
        QStringLiteral("SELECT ID, ASSET_TAG, NAME, PRICE FROM %1").arg(m_table));
    m_result->open(std::move(statement));
    m_result->waitForAllRows();
    QVERIFY(m_grid->ColumnVisible(2));
    const int defaultWidth = m_grid->horizontalHeader()->defaultSectionSize();
    QCOMPARE(m_grid->ColumnWidth(2), defaultWidth);
    m_grid->SetColumnVisible(2, false);
    QCOMPARE(m_grid->ColumnWidth(2), defaultWidth);
    QCOMPARE(m_grid->currentIndex().row(), 0);

    // A plain model names its columns by their titles.
    m_plain->setHorizontalHeaderLabels({"A", "B"});
    m_grid->setModel(m_plain.get());
    QCOMPARE(m_grid->ColumnFieldName(1), QStringLiteral("B"));
}

QTEST_MAIN(TestGridRange)
#include "test_gridrange.moc"
