#pragma once

#include "assets/rangeselection.h"

#include <QColor>
#include <QHash>
#include <QTableView>

#include <vector>

namespace assets {
class QueryDataSet;
}

namespace ui {

// A read-only data grid with contiguous range selection of rows by Shift with the mouse
// and the keyboard, on top of the ordinary multi-row selection (the selection model's
// selected rows). A model that is a query result (assets::QueryDataSet) gives the rows
// bookmarks that survive sorting; any other model uses row positions.
//
// The current cell and every cell of a selected row are highlighted. A plain click
// selects the clicked row alone, Ctrl+click toggles it, and moving with the keys without
// Shift clears the selection.
class TDBGridRange : public QTableView {
    Q_OBJECT
    // Backgrounds of the body and of the header cells in the grid's HTML output.
    Q_PROPERTY(QColor HTMLColor READ HTMLColor WRITE setHTMLColor)
    Q_PROPERTY(QColor HTMLFixedColor READ HTMLFixedColor WRITE setHTMLFixedColor)
public:
    explicit TDBGridRange(QWidget* parent = nullptr);
    ~TDBGridRange() override;

    // The grid does not own the model.
    void setModel(QAbstractItemModel* model) override;
    // The model as a query result, or null.
    assets::QueryDataSet* DataSet() const;
    // There is a model, and a query result is open.
    bool LinkActive() const;

    // Multi-select (on by default): several rows may be selected, and Shift selects ranges.
    bool MultiSelect() const;
    void SetMultiSelect(bool multiSelect);
    // Whole-row-select mode (off by default): the selection follows the current row, and
    // SelectCurrent does nothing.
    bool RowSelect() const { return m_rowSelect; }
    void SetRowSelect(bool rowSelect);

    // A batch update: selection changes and moves of the current row are collected and
    // shown together when the outermost DoneUpdate comes.
    void StartUpdate();
    void DoneUpdate();
    // Sets the current row's selected state, except in whole-row-select mode.
    void SelectCurrent(bool selected);

    int SelectedRowCount() const;
    // In ascending order.
    std::vector<int> SelectedRows() const;
    // In the order of the selection list (the selection model's ranges as it lists them,
    // each from its top row down, each row once): the order in which the user selected
    // them, a Shift range counting from its top row.
    std::vector<int> SelectedRowsInSelectionOrder() const;
    void ClearSelection();

    // Set when the user scrolled with the vertical scroll bar (or the wheel) since the
    // last plain click; the next Shift-click then selects by walking the bookmarks.
    bool Scrolled() const { return m_range.scrolled(); }
    const assets::RangeSelection& RangeState() const { return m_range; }

    // Data rows completely visible.
    int VisibleRowCount() const;

    // Grid columns are the model's columns; a hidden column keeps its width.
    int ColumnCount() const;
    // The field name, or the column title for a model that is not a query result.
    QString ColumnFieldName(int column) const;
    bool ColumnVisible(int column) const;
    void SetColumnVisible(int column, bool visible);
    int ColumnWidth(int column) const;
    void SetColumnWidth(int column, int width);
    // The cell of that column and row, in the viewport's pixels; empty when the cell is
    // not on screen.
    QRect CellRect(int column, int row) const;

    // Shows the data set's sort column and direction in the column titles.
    void ShowSortIndicator();

    QColor HTMLColor() const { return m_htmlColor; }
    void setHTMLColor(const QColor& color) { m_htmlColor = color; }
    QColor HTMLFixedColor() const { return m_htmlFixedColor; }
    void setHTMLFixedColor(const QColor& color) { m_htmlFixedColor = color; }

    // HTML output of the grid (see interchange/html.h): "#RRGGBB" of a colour.
    static QString ColorToHtmlColor(const QColor& color);
    // The title row: every column's field name, on HTMLFixedColor.
    QString HTMLHeaderToString() const;
    // A row per record on HTMLColor, each value as the grid shows it ("&nbsp;" for an
    // empty one): the selected rows in selection order, or, when none are selected or
    // `selectedOnly` is false, every row of the result (waiting for all of them). A
    // cell's WIDTH and HEIGHT are those of CellRect(row counter, column index), the
    // component's own exchange of column and row.
    QString HTMLBodyToString(bool selectedOnly) const;
    // A whole page with the title row and the body rows, replacing the file.
    void HTMLSaveToFile(const QString& fileName, bool selectedOnly) const;
    // A template's text with every occurrence of `placeholder` replaced, ignoring case;
    // a null text when the template does not exist.
    QString HTMLProcessTemplate(const QString& templateFileName, const QString& placeholder,
                                const QString& replacement) const;
    // The same written to a file; nothing is written when the template does not exist.
    void HTMLProcessTemplate(const QString& templateFileName, const QString& outputFileName,
                             const QString& placeholder, const QString& replacement) const;

Q_SIGNALS:
    // A click on a column title; not sent for a Shift-click while ranges can be selected.
    void titleClicked(int column);
    // A key or mouse button was released over the grid's cells.
    void keyReleased();
    void mouseReleased();
    // A double click anywhere in the cells.
    void dblClicked();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class Cursor;
    friend class Cursor;

    bool rangeApplies() const;
    int rowCount() const;
    // The model row shown first, fixed for the length of a batch update.
    int topRow() const;
    int currentRow() const;
    int currentColumn() const;
    void setCurrentRow(int row);
    void markRow(int row, bool selected);
    bool rowSelectedNow(int row) const;
    void applyPendingMarks();
    void makeFirstRowCurrent();
    void TitleClick(int column);

    assets::RangeSelection m_range;
    QColor m_htmlColor{0xFF, 0xFF, 0xFF};
    QColor m_htmlFixedColor{0xC0, 0xC0, 0xC0};
    bool m_rowSelect = false;

    // Batch update state.
    int m_updateDepth = 0;
    int m_batchRow = -1;
    int m_batchColumn = 0;
    int m_batchTopRow = 0;
    // Rows that arrive during a batch are left to the next one.
    int m_batchRowCount = 0;
    // Per row: -1 untouched, 0 unselected, 1 selected; rows m_pendingLow..m_pendingHigh.
    std::vector<qint8> m_pendingMarks;
    int m_pendingLow = -1;
    int m_pendingHigh = -1;

    // A Shift-press handled here; the view's own drag selection is kept out until release.
    bool m_rangePressActive = false;
    Qt::KeyboardModifiers m_titlePressModifiers;
    // Widths of hidden columns, which the header reports as 0.
    QHash<int, int> m_hiddenWidths;
    QMetaObject::Connection m_currentRowConnection;
    std::vector<QMetaObject::Connection> m_modelConnections;
};

} // namespace ui
