#pragma once

// Mouse clicks on a range-selection grid's cells and titles, as a user makes them.

#include "assets/ui/dbgridrange.h"

#include <QHeaderView>
#include <QTest>

namespace gridclicks {

// The centre of a row's cell in the grid's second column (the first one may be hidden).
inline QPoint cellCentre(const ui::TDBGridRange& grid, int row) {
    const QRect rect = grid.visualRect(grid.model()->index(row, 1));
    if (!grid.viewport()->rect().contains(rect))
        qFatal("row %d is not on screen", row);
    return rect.center();
}

inline void clickRow(ui::TDBGridRange& grid, int row, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, modifiers, cellCentre(grid, row));
}

inline void clickTitle(ui::TDBGridRange& grid, int column, Qt::KeyboardModifiers modifiers = {}) {
    QHeaderView* header = grid.horizontalHeader();
    const QPoint centre(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                        header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, modifiers, centre);
}

} // namespace gridclicks
