// Range selection with Shift over a plain table of rows, without widgets.

#include "assets/rangeselection.h"

#include <QStringList>
#include <QTest>

#include <set>

using assets::RangeKey;

namespace {

// A table of rows as a grid shows it: `visible` rows on screen from `top` on, a current
// row, a set of selected rows. Bookmarks differ from positions (they count down), so a
// walk that mixed them up would go wrong.
class TableCursor : public assets::RangeCursor {
public:
    TableCursor(int rows, int visible) : m_rows(rows), m_visible(visible) {}

    int recordNumber() const override { return m_current + 1; }
    int gridRow() const override { return m_current - m_top + 1; }
    quint32 bookmark() const override { return bookmarkOf(m_current); }
    bool gotoBookmark(quint32 bookmark) override {
        const int row = rowOf(bookmark);
        if (row < 0)
            return false;
        m_current = row;
        return true;
    }
    int compareBookmarks(quint32 left, quint32 right) const override {
        return rowOf(left) - rowOf(right);
    }
    bool next() override {
        if (atEnd())
            return false;
        ++m_current;
        return true;
    }
    bool prior() override {
        if (atBeginning())
            return false;
        --m_current;
        return true;
    }
    bool atBeginning() const override { return m_current == 0; }
    bool atEnd() const override { return m_current == m_rows - 1; }
    void setCurrentRowSelected(bool selected) override { mark(m_current, selected); }
    void selectCurrent(bool selected) override {
        if (!m_rowSelectMode)
            mark(m_current, selected);
    }
    bool hasSelectedRows() const override { return !m_selected.empty(); }
    int visibleRowCount() const override { return m_visible; }

    // What the grid itself does on a click: the clicked row becomes current, and it is
    // selected alone, or toggled with Ctrl.
    void click(int row, bool control) {
        m_current = row;
        if (control) {
            mark(row, !m_selected.count(row));
        } else {
            m_selected.clear();
            m_selected.insert(row);
        }
    }
    // The user scrolled: another row is shown first; the current row stays.
    void scrollTo(int top) { m_top = top; }
    void moveTo(int row) { m_current = row; }
    void clear() { m_selected.clear(); }
    void setRowSelectMode(bool on) { m_rowSelectMode = on; }

    int current() const { return m_current; }
    int top() const { return m_top; }

    // "2-5,9" style.
    QString selectedText() const {
        QStringList parts;
        auto it = m_selected.begin();
        while (it != m_selected.end()) {
            const int first = *it;
            int last = first;
            while (++it != m_selected.end() && *it == last + 1)
                ++last;
            parts << (first == last ? QString::number(first)
                                    : QStringLiteral("%1-%2").arg(first).arg(last));
        }
        return parts.join(QLatin1Char(','));
    }

private:
    quint32 bookmarkOf(int row) const { return quint32(100000 - row); }
    int rowOf(quint32 bookmark) const {
        const int row = 100000 - int(bookmark);
        return row >= 0 && row < m_rows ? row : -1;
    }
    void mark(int row, bool selected) {
        if (selected)
            m_selected.insert(row);
        else
            m_selected.erase(row);
    }

    int m_rows;
    int m_visible;
    int m_top = 0;
    int m_current = 0;
    bool m_rowSelectMode = false;
    std::set<int> m_selected;
};

RangeKey keyNamed(const QString& name) {
    static const QHash<QString, RangeKey> keys{
        {QStringLiteral("Up"), RangeKey::Up},
        {QStringLiteral("Down"), RangeKey::Down},
        {QStringLiteral("PageUp"), RangeKey::PageUp},
        {QStringLiteral("PageDown"), RangeKey::PageDown},
        {QStringLiteral("Home"), RangeKey::Home},
        {QStringLiteral("End"), RangeKey::End},
    };
    if (!keys.contains(name))
        qFatal("no key %s", qPrintable(name));
    return keys.value(name);
}

// Steps, each "verb argument":
//   press R       a plain click on row R
//   ctrl R        a Ctrl-click on row R (toggles it; no Shift, so the anchor moves)
//   shift R       a Shift-click on row R
//   shiftctrl R   a Shift+Ctrl-click on row R (after a scroll the grid toggles R first)
//   title         a Shift-click on the title row
//   key K         Shift + K (Up, Down, PageUp, PageDown, Home, End)
//   scroll T      the user scrolls so that row T is shown first
//   move R        the current row moves to R without the user scrolling
//   clear         the selection is cleared
void run(assets::RangeSelection& range, TableCursor& cursor, const QStringList& steps) {
    for (const QString& step : steps) {
        const QStringList words = step.split(QLatin1Char(' '));
        const QString& verb = words.at(0);
        const int argument = words.size() > 1 ? words.at(1).toInt() : 0;
        if (verb == QLatin1String("press") || verb == QLatin1String("ctrl")) {
            cursor.click(argument, verb == QLatin1String("ctrl"));
            range.plainPress(cursor, true);
        } else if (verb == QLatin1String("shift") || verb == QLatin1String("shiftctrl")) {
            if (range.scrolled()) {
                cursor.click(argument, verb == QLatin1String("shiftctrl"));
                range.shiftPressAfterScroll(cursor);
            } else {
                range.shiftPress(cursor, argument - cursor.top() + 1);
            }
        } else if (verb == QLatin1String("title")) {
            QVERIFY(!range.shiftPress(cursor, 0));
        } else if (verb == QLatin1String("key")) {
            range.shiftKey(cursor, keyNamed(words.at(1)));
        } else if (verb == QLatin1String("scroll")) {
            cursor.scrollTo(argument);
            range.setScrolled(true);
        } else if (verb == QLatin1String("move")) {
            cursor.moveTo(argument);
        } else if (verb == QLatin1String("clear")) {
            cursor.clear();
        } else {
            QFAIL(qPrintable(QStringLiteral("unknown step ") + step));
        }
    }
}

} // namespace

class TestRangeSelection : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void selection_data();
    void selection();
    void anchorFollowsPlainPress();
    void wholeRowSelectModeLeavesTheCurrentRow();
    void lostAnchorLeavesTheClick();
};

void TestRangeSelection::selection_data() {
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("visible");
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<int>("current");

    const auto row = [](const char* name, int rows, int visible, const QStringList& steps,
                        const char* selected, int current) {
        QTest::newRow(name) << rows << visible << steps << QString::fromLatin1(selected) << current;
    };
    // Keys. Nothing selected: the anchor is the current row.
    row("down from an unselected row selects both", 20, 5, {"move 4", "key Down"}, "4-5", 5);
    row("down then up back to the anchor", 20, 5, {"move 4", "key Down", "key Up"}, "4", 4);
    row("three down one up", 20, 5, {"move 4", "key Down", "key Down", "key Down", "key Up"}, "4-6",
        6);
    row("up from an unselected row", 20, 5, {"move 4", "key Up"}, "3-4", 3);
    row("up then down back to the anchor", 20, 5, {"move 4", "key Up", "key Down"}, "4", 4);
    row("down across the anchor and back up past it", 20, 5,
        {"move 4", "key Down", "key Down", "key Up", "key Up", "key Up"}, "3-4", 3);
    row("up at the first row stays there", 20, 5, {"move 0", "key Up", "key Up"}, "0", 0);
    row("down at the last row stays there", 20, 5, {"move 19", "key Down"}, "19", 19);
    row("page down steps visible rows + 1", 40, 5, {"move 2", "key PageDown"}, "2-8", 8);
    row("page up steps visible rows + 1", 40, 5, {"move 20", "key PageUp"}, "14-20", 14);
    row("page down then page up returns to the anchor", 40, 5,
        {"move 2", "key PageDown", "key PageUp"}, "2", 2);
    row("page down near the end stops at the last row", 10, 5, {"move 7", "key PageDown"}, "7-9",
        9);
    row("page down with no rows on screen steps one", 10, 0, {"move 3", "key PageDown"}, "3-4", 4);
    row("home selects up to the first row", 20, 5, {"move 5", "key Home"}, "0-5", 0);
    row("end selects down to the last row", 10, 5, {"move 5", "key End"}, "5-9", 9);
    row("end then home swings the range over the anchor", 10, 5, {"press 5", "key End", "key Home"},
        "0-5", 0);
    row("home at the first row", 10, 5, {"move 0", "key Home"}, "0", 0);
    row("a selection keeps its anchor", 20, 5, {"press 3", "move 8", "key Down"}, "3,8-9", 9);
    row("a cleared selection takes a new anchor", 20, 5,
        {"press 3", "clear", "move 10", "key Down"}, "10-11", 11);

    // Shift-clicks without scrolling: grid rows against the anchor's grid row.
    row("click below the anchor", 20, 10, {"press 3", "shift 7"}, "3-7", 7);
    row("click above the anchor", 20, 10, {"press 7", "shift 3"}, "3-7", 3);
    row("a second click shrinks the range", 20, 10, {"press 3", "shift 8", "shift 5"}, "3-5", 5);
    row("a second click crosses the anchor", 20, 10, {"press 5", "shift 8", "shift 2"}, "2-5", 2);
    row("grid rows count from the row shown first", 60, 10, {"scroll 20", "press 23", "shift 26"},
        "23-26", 26);
    row("the title row changes nothing", 20, 10, {"press 4", "title"}, "4", 4);
    row("the current row changes nothing", 20, 10, {"press 4", "shift 4"}, "4", 4);
    row("a plain click after a scroll ends the bookmark mode", 100, 10,
        {"press 2", "scroll 50", "press 52", "shift 55"}, "52-55", 55);

    // Shift-clicks after a scroll: the bookmark walk from the anchor.
    row("walk forwards over more than a screen", 100, 10, {"press 2", "scroll 50", "shift 55"},
        "2-55", 55);
    row("walk backwards over more than a screen", 100, 10, {"press 80", "scroll 10", "shift 12"},
        "12-80", 12);
    row("walk to the anchor itself", 100, 10, {"press 40", "scroll 30", "shift 40"}, "40", 40);
    row("walk forwards: the clicked row keeps what the grid gave it", 100, 10,
        {"press 5", "key End", "scroll 40", "shiftctrl 45"}, "5-44,46-99", 45);
    row("walk backwards: the clicked row keeps what the grid gave it", 100, 10,
        {"press 60", "key Home", "scroll 20", "shiftctrl 30"}, "0-29,31-60", 30);
    // (The anchor's grid row is the one it had when it was clicked.)
    row("after a walk the next click goes by grid rows", 100, 10,
        {"press 2", "scroll 50", "shift 55", "shift 57"}, "2-57", 57);
}

void TestRangeSelection::selection() {
    QFETCH(int, rows);
    QFETCH(int, visible);
    QFETCH(QStringList, steps);
    QFETCH(QString, selected);
    QFETCH(int, current);

    TableCursor cursor(rows, visible);
    assets::RangeSelection range;
    run(range, cursor, steps);
    QCOMPARE(cursor.selectedText(), selected);
    QCOMPARE(cursor.current(), current);
    QVERIFY(!range.scrolled() || steps.last().startsWith(QLatin1String("scroll")));
}

void TestRangeSelection::anchorFollowsPlainPress() {
    TableCursor cursor(50, 10);
    assets::RangeSelection range;
    cursor.scrollTo(10);
    run(range, cursor, {"press 14"});
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

void TestRangeSelection::wholeRowSelectModeLeavesTheCurrentRow() {
    TableCursor cursor(20, 5);
    cursor.setRowSelectMode(true);
    assets::RangeSelection range;
    run(range, cursor, {"move 4", "key Down", "key Down"});
    // The rows walked over are marked; the row arrived at is left to the grid.
    QCOMPARE(cursor.selectedText(), QStringLiteral("4-5"));
    QCOMPARE(cursor.current(), 6);
}

void TestRangeSelection::lostAnchorLeavesTheClick() {
    // The anchor's row is gone (a smaller result came back): the click stays as the grid
    // made it, and the bookmark mode ends.
    TableCursor before(100, 10);
    assets::RangeSelection range;
    run(range, before, {"press 90", "scroll 10"});
    TableCursor after(50, 10);
    after.scrollTo(10);
    after.click(12, false);
    range.shiftPressAfterScroll(after);
    QCOMPARE(after.selectedText(), QStringLiteral("12"));
    QCOMPARE(after.current(), 12);
    QVERIFY(!range.scrolled());
}

QTEST_APPLESS_MAIN(TestRangeSelection)
#include "test_rangeselection.moc"
