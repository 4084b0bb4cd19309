// Range selection with Shift over a plain table of rows, without widgets.

#include "assets/rangeselection.h"
#include "rangestext.h"

#include <QTest>

#include <set>

using assets::RangeKey;

namespace {

// A table of rows as a grid shows it: `visible` rows on screen from `top` on, a current
// row, a set of selected rows. Bookmarks differ from positions (they count down), so a
// walk that mixed them up would go wrong.
class TableCursor : public assets::RangeCursor {
public:
    TableCursor(int rows, int visible) : rows(rows), m_visible(visible) {}

    int recordNumber() const override { return current + 1; }
    int gridRow() const override { return current - top + 1; }
    quint32 bookmark() const override { return quint32(100000 - current); }
    bool gotoBookmark(quint32 bookmark) override {
        const int row = rowOf(bookmark);
        if (row >= 0)
            current = row;
        return row >= 0;
    }
    int compareBookmarks(quint32 left, quint32 right) const override {
        return rowOf(left) - rowOf(right);
    }
    bool next() override { return !atEnd() && (++current, true); }
    bool prior() override { return !atBeginning() && (--current, true); }
    bool atBeginning() const override { return current == 0; }
    bool atEnd() const override { return current == rows - 1; }
    void setCurrentRowSelected(bool selected) override { mark(current, selected); }
    void selectCurrent(bool selected) override {
        if (!rowSelectMode)
            mark(current, selected);
    }
    bool hasSelectedRows() const override { return !selected.empty(); }
    int visibleRowCount() const override { return m_visible; }

    // What the grid itself does on a click: the clicked row becomes current, and it is
    // selected alone, or toggled with Ctrl.
    void click(int row, bool control) {
        current = row;
        if (!control)
            selected.clear();
        mark(row, !control || !selected.count(row));
    }
    QString selectedText() const { return rangestext::RangesText(selected); }

    int rows;
    int top = 0; // the row shown first
    int current = 0;
    bool rowSelectMode = false;
    std::set<int> selected;

private:
    int rowOf(quint32 bookmark) const {
        const int row = 100000 - int(bookmark);
        return row >= 0 && row < rows ? row : -1;
    }
    void mark(int row, bool on) {
        if (on)
            selected.insert(row);
        else
            selected.erase(row);
    }

    int m_visible;
};

// Steps, each "verb argument":
//   press R / ctrl R   a plain / Ctrl click on row R (the grid toggles R with Ctrl)
//   shift R            a Shift-click on row R
//   key K              Shift + K (Up, Down, PageUp, PageDown, Home, End)
//   scroll T           the user scrolls so that row T is shown first
//   move R             the current row moves to R without the user scrolling
//   clear              the selection is cleared
//   rowselect          the grid selects whole rows itself
//   shrink N           the result now has N rows (a smaller one came back)
void run(assets::RangeSelection& range, TableCursor& cursor, const QStringList& steps) {
    static const QHash<QString, RangeKey> keys{{QStringLiteral("Up"), RangeKey::Up},
                                               {QStringLiteral("Down"), RangeKey::Down},
                                               {QStringLiteral("PageUp"), RangeKey::PageUp},
                                               {QStringLiteral("PageDown"), RangeKey::PageDown},
                                               {QStringLiteral("Home"), RangeKey::Home},
                                               {QStringLiteral("End"), RangeKey::End}};
    for (const QString& step : steps) {
        const QString verb = step.section(QLatin1Char(' '), 0, 0);
        const QString word = step.section(QLatin1Char(' '), 1);
        if (verb == QLatin1String("press") || verb == QLatin1String("ctrl")) {
            cursor.click(word.toInt(), verb == QLatin1String("ctrl"));
            range.plainPress(cursor, true);
        } else if (verb == QLatin1String("shift") && range.scrolled()) {
            cursor.click(word.toInt(), false);
            range.shiftPressAfterScroll(cursor);
        } else if (verb == QLatin1String("shift")) {
            range.shiftPress(cursor, word.toInt() - cursor.top + 1);
        } else if (verb == QLatin1String("key") && keys.contains(word)) {
            range.shiftKey(cursor, keys.value(word));
        } else if (verb == QLatin1String("scroll")) {
            cursor.top = word.toInt();
            range.setScrolled(true);
        } else if (verb == QLatin1String("move")) {
            cursor.current = word.toInt();
        } else if (verb == QLatin1String("clear")) {
            cursor.selected.clear();
        } else if (verb == QLatin1String("rowselect")) {
            cursor.rowSelectMode = true;
        } else if (verb == QLatin1String("shrink")) {
            cursor.rows = word.toInt();
        } else {
            QFAIL(qPrintable(QStringLiteral("unknown step ") + step));
        }
    }
}

} // namespace

class TestRangeSelection : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void selection_data() {
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("visible");
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<int>("current");

        // Steps are separated by commas.
        const auto row = [](const char* name, int rows, int visible, const char* steps,
                            const char* selected, int current) {
            QTest::newRow(name) << rows << visible << QString::fromLatin1(steps).split(", ")
                                << QString::fromLatin1(selected) << current;
        };
        // Keys. Nothing selected: the anchor is the current row.
        row("up from an unselected row", 20, 5, "move 4, key Up", "3-4", 3);
        row("down then up back to the anchor", 20, 5, "move 4, key Down, key Up", "4", 4);
        row("up then down back to the anchor", 20, 5, "move 4, key Up, key Down", "4", 4);
        row("down across the anchor and back up past it", 20, 5,
            "move 4, key Down, key Down, key Up, key Up, key Up", "3-4", 3);
        row("up at the first row stays there", 20, 5, "move 0, key Up, key Up", "0", 0);
        row("down at the last row stays there", 20, 5, "move 19, key Down", "19", 19);
        row("page down stops at the last row", 10, 5, "move 7, key PageDown", "7-9", 9);
        row("page down with no rows on screen steps one", 10, 0, "move 3, key PageDown", "3-4", 4);
        row("end then home swings over the anchor", 10, 5, "press 5, key End, key Home", "0-5", 0);
        row("home at the first row", 10, 5, "move 0, key Home", "0", 0);
        row("a selection keeps its anchor", 20, 5, "press 3, move 8, key Down", "3,8-9", 9);
        row("a cleared selection takes a new anchor", 20, 5, "press 3, clear, move 10, key Down",
            "10-11", 11);

        // Shift-clicks without scrolling: grid rows against the anchor's grid row.
        row("a second click shrinks the range", 20, 10, "press 3, shift 8, shift 5", "3-5", 5);
        row("grid rows count from the row shown first", 60, 10, "scroll 20, press 23, shift 26",
            "23-26", 26);
        row("the current row changes nothing", 20, 10, "press 4, shift 4", "4", 4);
        row("a plain click after a scroll ends the bookmark mode", 100, 10,
            "press 2, scroll 50, press 52, shift 55", "52-55", 55);

        // After a scroll, a Shift-click walks the bookmarks from the anchor; then grid rows
        // count again, against the grid row the anchor had when it was clicked.
        row("after a walk the next click goes by grid rows", 100, 10,
            "press 2, scroll 50, shift 55, shift 57", "2-57", 57);
        // The anchor's row is gone: the click stays as the grid made it, the bookmark mode
        // ends.
        row("a lost anchor leaves the click", 100, 10, "press 90, scroll 10, shrink 50, shift 12",
            "12", 12);
        // The rows walked over are marked; the row arrived at is left to the grid.
        row("whole-row select mode leaves the current row", 20, 5,
            "rowselect, move 4, key Down, key Down", "4-5", 6);
    }
    void selection() {
        QFETCH(int, rows);
        QFETCH(int, visible);
        QFETCH(QStringList, steps);
        QFETCH(QString, selected);
        QFETCH(int, current);
        TableCursor cursor(rows, visible);
        assets::RangeSelection range;
        run(range, cursor, steps);
        QCOMPARE(cursor.selectedText(), selected);
        QCOMPARE(cursor.current, current);
        QVERIFY(!range.scrolled() || steps.last().startsWith(QLatin1String("scroll")));
    }

    void anchorFollowsPlainPress() {
        TableCursor cursor(50, 10);
        assets::RangeSelection range;
        run(range, cursor, {"scroll 10", "press 14"});
        QCOMPARE(range.anchorRecordNumber(), 15);
        QCOMPARE(range.anchorGridRow(), 5);
        QCOMPARE(range.anchorBookmark(), quint32(100000 - 14));
        // A press on a grid without an open result keeps the old anchor but still ends the
        // bookmark mode.
        range.setScrolled(true);
        cursor.click(30, false);
        range.plainPress(cursor, false);
        QVERIFY(!range.scrolled());
        QCOMPARE(range.anchorRecordNumber(), 15);
        // The target of a walk is remembered.
        QVERIFY(!range.targetBookmark());
        run(range, cursor, {"press 14", "scroll 30", "shift 33"});
        QCOMPARE(range.targetBookmark(), std::optional<quint32>(100000 - 33));
    }
};

QTEST_APPLESS_MAIN(TestRangeSelection)
#include "test_rangeselection.moc"
