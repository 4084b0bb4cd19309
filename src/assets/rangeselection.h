#pragma once

#include <QtGlobal>

#include <optional>

namespace assets {

// The grid as the range selection sees it: a current row that moves one record at a
// time, the selected state of rows, and row identities (bookmarks) that survive sorting.
//
// Record numbers are 1-based positions in the current order. Grid rows are the rows
// on screen: 0 is the title row, 1 the first data row shown.
class RangeCursor {
public:
    virtual ~RangeCursor() = default;

    virtual int recordNumber() const = 0;
    virtual int gridRow() const = 0;
    virtual quint32 bookmark() const = 0;
    // Makes the row with this bookmark current; false when no row has it.
    virtual bool gotoBookmark(quint32 bookmark) = 0;
    // The data set's own comparison of two bookmarks by the rows' positions:
    // negative, 0 or positive.
    virtual int compareBookmarks(quint32 left, quint32 right) const = 0;

    // Move one record; false (and no move) at the first or last row.
    virtual bool next() = 0;
    virtual bool prior() = 0;
    virtual bool atBeginning() const = 0;
    virtual bool atEnd() const = 0;

    // Marks the current row in the list of selected rows.
    virtual void setCurrentRowSelected(bool selected) = 0;
    // The grid's own "select the current row", which whole-row-select mode ignores.
    virtual void selectCurrent(bool selected) = 0;
    virtual bool hasSelectedRows() const = 0;

    // Data rows completely visible on screen.
    virtual int visibleRowCount() const = 0;
};

// The keys that extend a range while Shift is held.
enum class RangeKey { Up, Down, PageUp, PageDown, Home, End };

// Contiguous range selection with Shift, by mouse and by keyboard, on top of a list of
// selected rows. The anchor is where the range started; after the user scrolled, a
// Shift-click selects by walking the bookmarks from the anchor, because the grid rows
// on screen no longer tell where the anchor is.
class RangeSelection {
public:
    // A press without Shift, after the grid's own handling made the clicked row current.
    // `linkActive`: the grid shows an open result.
    void plainPress(const RangeCursor& cursor, bool linkActive);

    // A Shift-press with the scrolled flag clear: walks from the current row to the
    // clicked grid row, deciding each row by its grid row against the anchor's.
    // Returns false when nothing changed (the title row or the current row was clicked).
    bool shiftPress(RangeCursor& cursor, int clickedGridRow);

    // A Shift-press after a scroll, once the grid's own handling made the clicked row
    // current: walks the bookmarks from the anchor to the clicked row. The clicked row
    // keeps the state the grid's own handling gave it. Clears the scrolled flag.
    void shiftPressAfterScroll(RangeCursor& cursor);

    void shiftKey(RangeCursor& cursor, RangeKey key);

    bool scrolled() const { return m_scrolled; }
    void setScrolled(bool scrolled) { m_scrolled = scrolled; }

    quint32 anchorBookmark() const { return m_anchorBookmark; }
    int anchorRecordNumber() const { return m_anchorRecordNumber; }
    int anchorGridRow() const { return m_anchorGridRow; }
    // The clicked row of the last bookmark walk, if there was one.
    std::optional<quint32> targetBookmark() const { return m_targetBookmark; }

private:
    void recordAnchor(const RangeCursor& cursor);
    void markGoingUp(RangeCursor& cursor) const;
    void markGoingDown(RangeCursor& cursor) const;

    quint32 m_anchorBookmark = 0;
    std::optional<quint32> m_targetBookmark;
    int m_anchorRecordNumber = 0;
    int m_anchorGridRow = 0;
    bool m_scrolled = false;
};

} // namespace assets
