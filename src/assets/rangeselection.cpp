#include "assets/rangeselection.h"

namespace assets {

void RangeSelection::recordAnchor(const RangeCursor& cursor) {
    m_anchorRecordNumber = cursor.recordNumber();
    m_anchorGridRow = cursor.gridRow();
    m_anchorBookmark = cursor.bookmark();
}

void RangeSelection::plainPress(const RangeCursor& cursor, bool linkActive) {
    m_scrolled = false;
    if (linkActive)
        recordAnchor(cursor);
}

bool RangeSelection::shiftPress(RangeCursor& cursor, int clickedGridRow) {
    const int currentGridRow = cursor.gridRow();
    if (clickedGridRow < 1 || clickedGridRow == currentGridRow)
        return false;
    if (clickedGridRow > currentGridRow) {
        for (int row = currentGridRow; row < clickedGridRow; ++row) {
            cursor.setCurrentRowSelected(row >= m_anchorGridRow);
            cursor.next();
        }
    } else {
        for (int row = currentGridRow; row > clickedGridRow; --row) {
            cursor.setCurrentRowSelected(row <= m_anchorGridRow);
            cursor.prior();
        }
    }
    cursor.selectCurrent(true);
    return true;
}

void RangeSelection::shiftPressAfterScroll(RangeCursor& cursor) {
    const quint32 target = cursor.bookmark();
    m_targetBookmark = target;
    const bool clickedAtOrBeforeAnchor = cursor.recordNumber() <= m_anchorRecordNumber;
    // An anchor that no longer exists (the result was reopened) leaves the click as the
    // grid's own handling made it.
    if (cursor.gotoBookmark(m_anchorBookmark)) {
        if (clickedAtOrBeforeAnchor) {
            // Backwards the end is found by comparing the bookmarks themselves ...
            while (cursor.bookmark() != target) {
                cursor.setCurrentRowSelected(true);
                if (!cursor.prior())
                    break;
            }
        } else {
            // ... forwards by the data set's comparison of positions.
            while (cursor.compareBookmarks(cursor.bookmark(), target) != 0) {
                cursor.setCurrentRowSelected(true);
                if (!cursor.next())
                    break;
            }
        }
    }
    m_scrolled = false;
}

void RangeSelection::markGoingUp(RangeCursor& cursor) const {
    cursor.setCurrentRowSelected(!(cursor.recordNumber() > m_anchorRecordNumber));
}

void RangeSelection::markGoingDown(RangeCursor& cursor) const {
    cursor.setCurrentRowSelected(!(cursor.recordNumber() < m_anchorRecordNumber));
}

void RangeSelection::shiftKey(RangeCursor& cursor, RangeKey key) {
    if (!cursor.hasSelectedRows())
        recordAnchor(cursor);
    // One more than the rows on screen, so that a page step always shows a new row.
    const int pageStep = cursor.visibleRowCount() + 1;
    switch (key) {
    case RangeKey::Up:
        markGoingUp(cursor);
        cursor.prior();
        break;
    case RangeKey::Down:
        markGoingDown(cursor);
        cursor.next();
        break;
    case RangeKey::PageUp:
        for (int step = 0; step < pageStep; ++step) {
            markGoingUp(cursor);
            cursor.prior();
        }
        break;
    case RangeKey::PageDown:
        for (int step = 0; step < pageStep; ++step) {
            markGoingDown(cursor);
            cursor.next();
        }
        break;
    case RangeKey::Home:
        while (!cursor.atBeginning()) {
            markGoingUp(cursor);
            if (!cursor.prior())
                break;
        }
        break;
    case RangeKey::End:
        while (!cursor.atEnd()) {
            markGoingDown(cursor);
            if (!cursor.next())
                break;
        }
        break;
    }
    cursor.selectCurrent(true);
}

} // namespace assets
