// The range-selection grid driven with the mouse and the keys over a real result of the
// SQLite ODBC driver (and, for comparison, over a plain item model).

#include "gridclicks.h"

#include <QImage>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

#include <memory>

using gridclicks::clickRow;
using gridclicks::clickScrollBar;
using gridclicks::clickTitle;
using gridclicks::RowCount;
using gridclicks::run;
using gridclicks::selectedText;
using ui::TDBGridRange;

namespace {

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

} // namespace

class TestGridRange : public QObject {
    Q_OBJECT

    gridclicks::GridTable m_table;
    std::unique_ptr<assets::ResultTableModel> m_result;
    std::unique_ptr<QStandardItemModel> m_plain;
    std::unique_ptr<TDBGridRange> m_grid;

    void showGrid(QAbstractItemModel* model) {
        m_grid = std::make_unique<TDBGridRange>();
        m_grid->resize(420, 320);
        m_grid->setModel(model);
        m_grid->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_grid.get()));
        m_grid->setFocus();
    }

private Q_SLOTS:
    void initTestCase() { m_table.create(); }

    void init() {
        m_result = m_table.open(QStringLiteral("ID, ASSET_TAG, NAME, PRICE"));
        QCOMPARE(m_result->rowCount(), RowCount);
        // The same rows in a model that is not a query result.
        m_plain = std::make_unique<QStandardItemModel>(RowCount, m_result->columnCount());
        for (int row = 0; row < RowCount; ++row)
            for (int column = 0; column < m_result->columnCount(); ++column)
                m_plain->setItem(row, column,
                                 new QStandardItem(m_result->index(row, column).data().toString()));
    }

    void cleanup() {
        m_grid.reset();
        m_result.reset();
        m_plain.reset();
    }

    void selection_data() {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<int>("current");

        // Steps are separated by commas; see gridclicks::runStep.
        const struct {
            const char* name;
            const char* steps;
            const char* selected;
            int current;
        } cases[] = {
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
            for (const auto& c : cases)
                QTest::addRow("%s: %s", model, c.name)
                    << QString::fromLatin1(model) << QString::fromLatin1(c.steps).split(", ")
                    << QString::fromLatin1(c.selected) << c.current;
    }

    void selection() {
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
        showGrid(model == QLatin1String("plain model")
                     ? static_cast<QAbstractItemModel*>(m_plain.get())
                     : m_result.get());
        QVERIFY(m_grid->LinkActive());
        run(*m_grid, steps);
        QCOMPARE(selectedText(*m_grid), selected);
        QCOMPARE(m_grid->currentIndex().row(), current);
        QVERIFY(!m_grid->Scrolled());
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

    void clickBelowTheLastRow() {
        auto few = m_table.open(QStringLiteral("ID, NAME"), QStringLiteral("WHERE ID <= 3"));
        showGrid(few.get());
        run(*m_grid, {"press 1"});
        const QPoint below(20, m_grid->visualRect(few->index(2, 0)).bottom() + 30);
        QVERIFY(m_grid->rowAt(below.y()) < 0);
        QTest::mouseClick(m_grid->viewport(), Qt::LeftButton, Qt::ShiftModifier, below);
        QCOMPARE(selectedText(*m_grid), QStringLiteral("1"));
        QCOMPARE(m_grid->currentIndex().row(), 1);
        m_grid.reset();
    }

    void withoutMultiSelectShiftIsPlain() {
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
        m_grid->DoneUpdate(); // one too many changes nothing
        QCOMPARE(selectedText(*m_grid), QStringLiteral("5"));
        // Whole-row-select mode ignores it.
        m_grid->SetRowSelect(true);
        m_grid->SelectCurrent(false);
        QCOMPARE(selectedText(*m_grid), QStringLiteral("5"));
    }

    void htmlColours() {
        TDBGridRange grid;
        QCOMPARE(grid.property("HTMLColor").value<QColor>(), QColor(0xFF, 0xFF, 0xFF));
        QCOMPARE(grid.property("HTMLFixedColor").value<QColor>(), QColor(0xC0, 0xC0, 0xC0));
        QVERIFY(grid.setProperty("HTMLColor", QColor(Qt::red)));
        QVERIFY(grid.setProperty("HTMLFixedColor", QColor(0x12, 0x34, 0x56)));
        QCOMPARE(grid.HTMLColor(), QColor(Qt::red));
        QCOMPARE(grid.HTMLFixedColor(), QColor(0x12, 0x34, 0x56));
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
        const QRect nameRect = m_grid->visualRect(m_result->index(3, 2));
        const QRect name = cell(image, 3, 2).ink;
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
        QCOMPARE(m_grid->ColumnCount(), 4);
        QCOMPARE(m_grid->ColumnFieldName(2), QStringLiteral("NAME"));
        QCOMPARE(m_grid->ColumnFieldName(7), QString());
        m_grid->SetColumnWidth(2, 155);
        m_grid->SetColumnVisible(2, false);
        QVERIFY(!m_grid->ColumnVisible(2));
        QCOMPARE(m_grid->ColumnWidth(2), 155);
        m_grid->SetColumnWidth(2, 90);
        m_grid->SetColumnVisible(2, true);
        QCOMPARE(m_grid->columnWidth(2), 90);

        // A new result on the same model shows every column at its default width.
        m_grid->SetColumnVisible(2, false);
        db::odbc::Statement statement(m_table.connection);
        statement.executeDirect(
            QStringLiteral("SELECT ID, ASSET_TAG, NAME, PRICE FROM %1").arg(m_table.name));
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
};

QTEST_MAIN(TestGridRange)
#include "test_gridrange.moc"
