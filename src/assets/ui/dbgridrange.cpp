#include "assets/ui/dbgridrange.h"

#include "assets/dataset.h"
#include "assets/resulttablemodel.h"
#include "assets/sortkeys.h"
#include "interchange/html.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QToolTip>

#include <algorithm>
#include <numeric>
#include <optional>
#include <set>

namespace ui {

namespace {

constexpr int CellMargin = 2;
constexpr int IndicatorWidth = 12;

std::optional<assets::RangeKey> rangeKeyOf(int key) {
    switch (key) {
    case Qt::Key_Up:
        return assets::RangeKey::Up;
    case Qt::Key_Down:
        return assets::RangeKey::Down;
    case Qt::Key_PageUp:
        return assets::RangeKey::PageUp;
    case Qt::Key_PageDown:
        return assets::RangeKey::PageDown;
    case Qt::Key_Home:
        return assets::RangeKey::Home;
    case Qt::Key_End:
        return assets::RangeKey::End;
    default:
        return std::nullopt;
    }
}

// Draws a cell from its field's display text: highlighted cells (the current cell and the
// cells of selected rows) in the highlight colours, a disabled grid in grey text, the text
// with a margin of 2 pixels in the column's alignment.
class CellDelegate : public QStyledItemDelegate {
public:
    explicit CellDelegate(TDBGridRange* grid) : QStyledItemDelegate(grid), m_grid(grid) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        QStyleOptionViewItem cell = option;
        initStyleOption(&cell, index);
        const bool enabled = m_grid->isEnabled();
        // The selection shows whether or not the grid has the focus.
        const QPalette::ColorGroup group = enabled ? QPalette::Active : QPalette::Disabled;
        const bool highlighted =
            (option.state & QStyle::State_Selected) || index == m_grid->currentIndex();

        QBrush background = cell.palette.brush(group, QPalette::Base);
        if (highlighted)
            background = cell.palette.brush(group, QPalette::Highlight);
        else if (cell.backgroundBrush.style() != Qt::NoBrush)
            background = cell.backgroundBrush;
        painter->fillRect(option.rect, background);
        if (!m_grid->LinkActive())
            return;

        QColor text = cell.palette.color(group, QPalette::Text);
        if (highlighted)
            text = cell.palette.color(group, QPalette::HighlightedText);
        if (!enabled)
            text = cell.palette.color(QPalette::Disabled, QPalette::Text);

        // NULL is not an empty text: it shows as a dimmed, slanted NULL.
        QFont font = cell.font;
        QString shown = cell.text;
        if (index.data(assets::ResultTableModel::NullRole).toBool()) {
            font.setItalic(true);
            text = cell.palette.color(QPalette::Disabled, QPalette::Text);
            shown = QStringLiteral("NULL");
        }
        const QRect area = textArea(option.rect);
        painter->save();
        painter->setClipRect(option.rect);
        painter->setPen(text);
        painter->setFont(font);
        const Qt::Alignment horizontal =
            QStyle::visualAlignment(cell.direction, columnAlignment(index)) &
            Qt::AlignHorizontal_Mask;
        painter->drawText(area, int(horizontal | Qt::AlignVCenter | Qt::TextSingleLine),
                          QFontMetrics(font).elidedText(shown, Qt::ElideRight, area.width()));
        painter->restore();
    }

    // A value cut off by its column shows whole in a tooltip.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override {
        if (event->type() != QEvent::ToolTip || index.data(Qt::ToolTipRole).isValid())
            return QStyledItemDelegate::helpEvent(event, view, option, index);
        const QString text = index.data(Qt::DisplayRole).toString();
        if (option.fontMetrics.horizontalAdvance(text) <= textArea(option.rect).width()) {
            QToolTip::hideText();
            return true;
        }
        constexpr qsizetype TipCharacters = 2000;
        QString whole = index.data(Qt::EditRole).toString();
        if (whole.size() > TipCharacters)
            whole = whole.left(TipCharacters) + QChar(0x2026);
        QToolTip::showText(event->globalPos(), whole, view, option.rect);
        return true;
    }

private:
    static QRect textArea(const QRect& cell) {
        return cell.adjusted(CellMargin, CellMargin, -CellMargin, -CellMargin);
    }

    Qt::Alignment columnAlignment(const QModelIndex& index) const {
        const QVariant alignment = index.data(Qt::TextAlignmentRole);
        if (alignment.isValid())
            return Qt::Alignment(alignment.toInt()) & Qt::AlignHorizontal_Mask;
        if (const auto* dataSet = m_grid->DataSet()) {
            const auto& fields = dataSet->fields();
            if (index.column() < int(fields.size()) && fields[index.column()].isNumeric())
                return Qt::AlignRight;
        }
        return Qt::AlignLeft;
    }

    TDBGridRange* m_grid;
};

// The row indicator: a narrow column before the cells with a mark at the current row.
class RowIndicator : public QHeaderView {
public:
    explicit RowIndicator(TDBGridRange* grid) : QHeaderView(Qt::Vertical, grid), m_grid(grid) {
        setSectionsClickable(false);
        setMouseTracking(false);
        setSectionResizeMode(QHeaderView::Fixed);
        setHighlightSections(false);
    }

    QSize sizeHint() const override { return {IndicatorWidth, 0}; }

protected:
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override {
        painter->fillRect(rect, palette().brush(QPalette::Button));
        painter->setPen(palette().color(QPalette::Mid));
        painter->drawLine(rect.topRight(), rect.bottomRight());
        painter->drawLine(rect.bottomLeft(), rect.bottomRight());
        if (logicalIndex != m_grid->currentIndex().row())
            return;
        const int size = qMin(rect.width(), rect.height()) / 2;
        const QPoint centre = rect.center();
        const QPoint arrow[] = {
            {centre.x() - size / 2, centre.y() - size / 2},
            {centre.x() + size / 2, centre.y()},
            {centre.x() - size / 2, centre.y() + size / 2},
        };
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(palette().color(QPalette::ButtonText));
        painter->drawPolygon(arrow, 3);
    }

    // A click on the indicator is a click on the row's cell in the current column (or in
    // the first column on screen), with the same selection rules.
    void mousePressEvent(QMouseEvent* event) override { forward(event); }
    void mouseMoveEvent(QMouseEvent* event) override { forward(event); }
    void mouseReleaseEvent(QMouseEvent* event) override { forward(event); }
    void mouseDoubleClickEvent(QMouseEvent* event) override { forward(event); }

private:
    void forward(QMouseEvent* event) {
        const int width = m_grid->viewport()->width();
        int x = m_grid->columnViewportPosition(m_grid->currentIndex().column()) + 1;
        if (x <= 0 || x >= width)
            x = 1;
        const QPointF point(x, event->position().y());
        QMouseEvent moved(event->type(), point, m_grid->viewport()->mapToGlobal(point),
                          event->button(), event->buttons(), event->modifiers());
        QCoreApplication::sendEvent(m_grid->viewport(), &moved);
        event->setAccepted(moved.isAccepted());
    }

    TDBGridRange* m_grid;
};

} // namespace

// The grid as the range selection walks it. Always used inside StartUpdate / DoneUpdate,
// so the current row and the marks are the batch's.
class TDBGridRange::Cursor : public assets::RangeCursor {
public:
    explicit Cursor(TDBGridRange& grid) : m_grid(grid) {}

    int recordNumber() const override { return m_grid.currentRow() + 1; }
    int gridRow() const override { return m_grid.currentRow() - m_grid.topRow() + 1; }
    quint32 bookmark() const override { return bookmarkOf(m_grid.currentRow()); }
    bool gotoBookmark(quint32 bookmark) override {
        const int row = rowOf(bookmark);
        if (row < 0)
            return false;
        m_grid.setCurrentRow(row);
        return true;
    }
    int compareBookmarks(quint32 left, quint32 right) const override {
        const int leftRow = rowOf(left);
        const int rightRow = rowOf(right);
        return leftRow < rightRow ? -1 : (leftRow > rightRow ? 1 : 0);
    }
    bool next() override {
        if (atEnd())
            return false;
        m_grid.setCurrentRow(m_grid.currentRow() + 1);
        return true;
    }
    bool prior() override {
        if (atBeginning())
            return false;
        m_grid.setCurrentRow(m_grid.currentRow() - 1);
        return true;
    }
    bool atBeginning() const override { return m_grid.currentRow() <= 0; }
    bool atEnd() const override { return m_grid.currentRow() >= m_grid.rowCount() - 1; }
    void setCurrentRowSelected(bool selected) override {
        m_grid.markRow(m_grid.currentRow(), selected);
    }
    void selectCurrent(bool selected) override { m_grid.SelectCurrent(selected); }
    bool hasSelectedRows() const override {
        for (int row = m_grid.m_pendingLow; row >= 0 && row <= m_grid.m_pendingHigh; ++row) {
            if (m_grid.m_pendingMarks[std::size_t(row)] == 1)
                return true;
        }
        const QItemSelection selection = m_grid.selectionModel()->selection();
        for (const QItemSelectionRange& range : selection) {
            for (int row = range.top(); row <= range.bottom(); ++row) {
                if (m_grid.rowSelectedNow(row))
                    return true;
            }
        }
        return false;
    }
    int visibleRowCount() const override { return m_grid.VisibleRowCount(); }

private:
    quint32 bookmarkOf(int row) const {
        if (const auto* dataSet = m_grid.DataSet())
            return dataSet->bookmark(row);
        return quint32(row);
    }
    int rowOf(quint32 bookmark) const {
        if (const auto* dataSet = m_grid.DataSet())
            return dataSet->rowOfBookmark(bookmark);
        return bookmark < quint32(m_grid.rowCount()) ? int(bookmark) : -1;
    }

    TDBGridRange& m_grid;
};

TDBGridRange::TDBGridRange(QWidget* parent) : QTableView(parent) {
    setVerticalHeader(new RowIndicator(this));
    setItemDelegate(new CellDelegate(this));
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setTabKeyNavigation(true);
    setShowGrid(true);
    setWordWrap(false);
    setSortingEnabled(false);
    // One line of text per row, as a data grid shows it.
    verticalHeader()->setMinimumSectionSize(fontMetrics().height() + 2);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    horizontalHeader()->setSectionsClickable(true);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->viewport()->installEventFilter(this);
    connect(horizontalHeader(), &QHeaderView::sectionClicked, this, &TDBGridRange::TitleClick);
    // Only the user's scrolling triggers slider actions; moving the current row into view
    // sets the value directly.
    connect(verticalScrollBar(), &QAbstractSlider::actionTriggered, this,
            [this](int) { m_range.setScrolled(true); });
}

TDBGridRange::~TDBGridRange() = default;

void TDBGridRange::setModel(QAbstractItemModel* newModel) {
    for (const auto& connection : m_modelConnections)
        disconnect(connection);
    m_modelConnections.clear();
    disconnect(m_currentRowConnection);
    QItemSelectionModel* oldSelection = selectionModel();
    QTableView::setModel(newModel);
    // The view does not delete the selection model it made for the previous model.
    if (oldSelection && oldSelection != selectionModel() && oldSelection->parent() == this)
        oldSelection->deleteLater();
    m_pendingMarks.clear();
    m_pendingLow = m_pendingHigh = -1;
    m_hiddenWidths.clear();
    if (!newModel)
        return;
    m_currentRowConnection = connect(selectionModel(), &QItemSelectionModel::currentRowChanged,
                                     this, [this] { verticalHeader()->viewport()->update(); });
    m_modelConnections.push_back(connect(newModel, &QAbstractItemModel::modelReset, this, [this] {
        // Marks of a batch in progress belong to rows that are gone.
        std::fill(m_pendingMarks.begin(), m_pendingMarks.end(), qint8(-1));
        m_pendingLow = m_pendingHigh = -1;
        // A new result shows its columns afresh; forget widths of columns shown again.
        for (auto it = m_hiddenWidths.begin(); it != m_hiddenWidths.end();) {
            if (it.key() >= ColumnCount() || ColumnVisible(it.key()))
                it = m_hiddenWidths.erase(it);
            else
                ++it;
        }
        makeFirstRowCurrent();
    }));
    m_modelConnections.push_back(connect(newModel, &QAbstractItemModel::rowsInserted, this,
                                         &TDBGridRange::makeFirstRowCurrent));
    m_modelConnections.push_back(connect(newModel, &QAbstractItemModel::layoutChanged, this,
                                         &TDBGridRange::makeFirstRowCurrent));
    m_modelConnections.push_back(
        connect(newModel, &QAbstractItemModel::modelReset, this, &TDBGridRange::ShowSortIndicator));
    m_modelConnections.push_back(connect(newModel, &QAbstractItemModel::layoutChanged, this,
                                         &TDBGridRange::ShowSortIndicator));
    makeFirstRowCurrent();
    ShowSortIndicator();
}

void TDBGridRange::ShowSortIndicator() {
    const assets::QueryDataSet* dataSet = DataSet();
    const auto request =
        dataSet ? assets::ParseSortText(dataSet->sortText()) : std::optional<assets::SortRequest>();
    const int column =
        request && !request->field.isEmpty() ? dataSet->fieldIndex(request->field) : -1;
    horizontalHeader()->setSortIndicatorShown(column >= 0);
    if (column >= 0)
        horizontalHeader()->setSortIndicator(column, request->descending ? Qt::DescendingOrder
                                                                         : Qt::AscendingOrder);
}

assets::QueryDataSet* TDBGridRange::DataSet() const {
    return dynamic_cast<assets::QueryDataSet*>(model());
}

bool TDBGridRange::LinkActive() const {
    if (!model())
        return false;
    const auto* dataSet = DataSet();
    return !dataSet || dataSet->isOpen();
}

bool TDBGridRange::MultiSelect() const {
    return selectionMode() == QAbstractItemView::ExtendedSelection ||
           selectionMode() == QAbstractItemView::MultiSelection;
}

void TDBGridRange::SetMultiSelect(bool multiSelect) {
    setSelectionMode(multiSelect ? QAbstractItemView::ExtendedSelection
                                 : QAbstractItemView::SingleSelection);
}

void TDBGridRange::SetRowSelect(bool rowSelect) {
    m_rowSelect = rowSelect;
}

void TDBGridRange::StartUpdate() {
    if (m_updateDepth++ > 0)
        return;
    m_batchRowCount = model() ? model()->rowCount() : 0;
    m_batchRow = currentIndex().row();
    m_batchColumn = qMax(0, currentIndex().column());
    m_batchTopRow = qMax(0, rowAt(0));
}

void TDBGridRange::DoneUpdate() {
    if (m_updateDepth == 0 || --m_updateDepth > 0)
        return;
    applyPendingMarks();
    const int row = m_batchRow;
    m_batchRow = -1;
    m_batchRowCount = 0;
    if (model() && row >= 0 && row < rowCount() && row != currentIndex().row())
        selectionModel()->setCurrentIndex(model()->index(row, m_batchColumn),
                                          QItemSelectionModel::NoUpdate);
    viewport()->update();
}

void TDBGridRange::SelectCurrent(bool selected) {
    if (m_rowSelect || !model())
        return;
    const int row = currentRow();
    if (row < 0)
        return;
    if (m_updateDepth > 0) {
        markRow(row, selected);
        return;
    }
    const QModelIndex index = model()->index(row, 0);
    selectionModel()->select(
        index, (selected ? QItemSelectionModel::Select : QItemSelectionModel::Deselect) |
                   QItemSelectionModel::Rows);
}

namespace {

// The selection's rows as sorted, non-overlapping spans of rows.
std::vector<std::pair<int, int>> selectedSpans(const QItemSelectionModel* selection) {
    std::vector<std::pair<int, int>> spans;
    if (!selection)
        return spans;
    for (const QItemSelectionRange& range : selection->selection()) {
        if (range.isValid())
            spans.emplace_back(range.top(), range.bottom());
    }
    std::sort(spans.begin(), spans.end());
    std::vector<std::pair<int, int>> merged;
    for (const auto& span : spans) {
        if (!merged.empty() && span.first <= merged.back().second + 1)
            merged.back().second = qMax(merged.back().second, span.second);
        else
            merged.push_back(span);
    }
    return merged;
}

} // namespace

int TDBGridRange::SelectedRowCount() const {
    int count = 0;
    for (const auto& [top, bottom] : selectedSpans(selectionModel()))
        count += bottom - top + 1;
    return count;
}

std::vector<int> TDBGridRange::SelectedRows() const {
    std::vector<int> rows;
    for (const auto& [top, bottom] : selectedSpans(selectionModel()))
        for (int row = top; row <= bottom; ++row)
            rows.push_back(row);
    return rows;
}

std::vector<int> TDBGridRange::SelectedRowsInSelectionOrder() const {
    std::vector<int> rows;
    if (!selectionModel())
        return rows;
    std::set<int> seen;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        for (int row = range.top(); range.isValid() && row <= range.bottom(); ++row) {
            if (seen.insert(row).second)
                rows.push_back(row);
        }
    }
    return rows;
}

void TDBGridRange::ClearSelection() {
    if (selectionModel())
        selectionModel()->clearSelection();
}

int TDBGridRange::VisibleRowCount() const {
    const int top = rowAt(0);
    if (top < 0)
        return 0;
    const int height = viewport()->height();
    int count = 0;
    for (int row = top; row < rowCount(); ++row) {
        const int position = rowViewportPosition(row);
        if (position < 0)
            continue;
        if (position + rowHeight(row) > height)
            break;
        ++count;
    }
    return count;
}

int TDBGridRange::ColumnCount() const {
    return model() ? model()->columnCount() : 0;
}

QString TDBGridRange::ColumnFieldName(int column) const {
    if (const auto* dataSet = DataSet()) {
        const auto& fields = dataSet->fields();
        return column >= 0 && column < int(fields.size()) ? fields[std::size_t(column)].name
                                                          : QString();
    }
    return model() ? model()->headerData(column, Qt::Horizontal).toString() : QString();
}

bool TDBGridRange::ColumnVisible(int column) const {
    return !isColumnHidden(column);
}

void TDBGridRange::SetColumnVisible(int column, bool visible) {
    if (visible == ColumnVisible(column))
        return;
    if (visible) {
        const int width = m_hiddenWidths.take(column);
        showColumn(column);
        if (width > 0)
            setColumnWidth(column, width);
    } else {
        m_hiddenWidths.insert(column, columnWidth(column));
        hideColumn(column);
    }
}

int TDBGridRange::ColumnWidth(int column) const {
    if (ColumnVisible(column))
        return columnWidth(column);
    return m_hiddenWidths.value(column, horizontalHeader()->defaultSectionSize());
}

void TDBGridRange::SetColumnWidth(int column, int width) {
    if (ColumnVisible(column))
        setColumnWidth(column, width);
    else
        m_hiddenWidths.insert(column, width);
}

bool TDBGridRange::rangeApplies() const {
    return MultiSelect() && LinkActive() && rowCount() > 0;
}

int TDBGridRange::topRow() const {
    return m_updateDepth > 0 ? m_batchTopRow : qMax(0, rowAt(0));
}

int TDBGridRange::rowCount() const {
    if (m_updateDepth > 0)
        return m_batchRowCount;
    return model() ? model()->rowCount() : 0;
}

int TDBGridRange::currentRow() const {
    return m_updateDepth > 0 ? m_batchRow : currentIndex().row();
}

void TDBGridRange::setCurrentRow(int row) {
    if (m_updateDepth > 0) {
        m_batchRow = row;
        return;
    }
    selectionModel()->setCurrentIndex(model()->index(row, qMax(0, currentIndex().column())),
                                      QItemSelectionModel::NoUpdate);
}

void TDBGridRange::markRow(int row, bool selected) {
    if (row < 0 || row >= rowCount())
        return;
    if (m_updateDepth == 0) {
        selectionModel()->select(
            model()->index(row, 0),
            (selected ? QItemSelectionModel::Select : QItemSelectionModel::Deselect) |
                QItemSelectionModel::Rows);
        return;
    }
    if (m_pendingMarks.size() < std::size_t(rowCount()))
        m_pendingMarks.resize(std::size_t(rowCount()), -1);
    m_pendingMarks[std::size_t(row)] = selected ? 1 : 0;
    m_pendingLow = m_pendingLow < 0 ? row : qMin(m_pendingLow, row);
    m_pendingHigh = qMax(m_pendingHigh, row);
}

bool TDBGridRange::rowSelectedNow(int row) const {
    if (row >= m_pendingLow && row <= m_pendingHigh && m_pendingLow >= 0 &&
        m_pendingMarks[std::size_t(row)] >= 0)
        return m_pendingMarks[std::size_t(row)] == 1;
    return selectionModel()->isRowSelected(row, QModelIndex());
}

void TDBGridRange::applyPendingMarks() {
    if (m_pendingLow < 0)
        return;
    const int rows = rowCount();
    const int lastColumn = model() ? model()->columnCount() - 1 : -1;
    QItemSelection toSelect;
    QItemSelection toDeselect;
    int row = m_pendingLow;
    const int high = qMin(m_pendingHigh, rows - 1);
    while (lastColumn >= 0 && row <= high) {
        const qint8 mark = m_pendingMarks[std::size_t(row)];
        int end = row;
        while (end + 1 <= high && m_pendingMarks[std::size_t(end + 1)] == mark)
            ++end;
        if (mark >= 0) {
            const QItemSelectionRange range(model()->index(row, 0),
                                            model()->index(end, lastColumn));
            (mark == 1 ? toSelect : toDeselect).append(range);
        }
        row = end + 1;
    }
    std::fill(m_pendingMarks.begin() + m_pendingLow,
              m_pendingMarks.begin() + qMin<qsizetype>(m_pendingHigh + 1, m_pendingMarks.size()),
              qint8(-1));
    m_pendingLow = m_pendingHigh = -1;
    if (!toDeselect.isEmpty())
        selectionModel()->select(toDeselect, QItemSelectionModel::Deselect);
    if (!toSelect.isEmpty())
        selectionModel()->select(toSelect, QItemSelectionModel::Select);
}

void TDBGridRange::makeFirstRowCurrent() {
    if (!model() || currentIndex().isValid() || rowCount() == 0)
        return;
    int column = 0;
    while (column < model()->columnCount() - 1 && isColumnHidden(column))
        ++column;
    selectionModel()->setCurrentIndex(model()->index(0, column), QItemSelectionModel::NoUpdate);
}

void TDBGridRange::mousePressEvent(QMouseEvent* event) {
    const bool shift = event->modifiers().testFlag(Qt::ShiftModifier);
    if (!shift || !rangeApplies()) {
        QTableView::mousePressEvent(event);
        if (!shift)
            m_range.plainPress(Cursor(*this), LinkActive() && currentIndex().isValid());
        return;
    }
    const int clickedRow = rowAt(event->position().toPoint().y());
    Cursor cursor(*this);
    if (clickedRow < 0 || !m_range.scrolled()) {
        // The view's own press handling does not run, so its release and drag handling
        // must not either.
        m_rangePressActive = true;
        if (clickedRow < 0)
            return; // below the last row: nothing to extend to
        StartUpdate();
        m_range.shiftPress(cursor, clickedRow - m_batchTopRow + 1);
        DoneUpdate();
        return;
    }
    // After a scroll the view's own handling makes the clicked row current (and selects it
    // as a click without Shift does, or toggles it with Ctrl); the walk from the anchor
    // then leaves that row as it is.
    QMouseEvent plain(event->type(), event->position(), event->scenePosition(),
                      event->globalPosition(), event->button(), event->buttons(),
                      event->modifiers() & ~Qt::ShiftModifier, event->pointingDevice());
    QTableView::mousePressEvent(&plain);
    StartUpdate();
    m_range.shiftPressAfterScroll(cursor);
    DoneUpdate();
}

void TDBGridRange::mouseMoveEvent(QMouseEvent* event) {
    if (m_rangePressActive)
        return;
    QTableView::mouseMoveEvent(event);
}

void TDBGridRange::mouseReleaseEvent(QMouseEvent* event) {
    if (m_rangePressActive) {
        m_rangePressActive = false;
        event->accept();
    } else {
        QTableView::mouseReleaseEvent(event);
    }
    Q_EMIT mouseReleased();
}

void TDBGridRange::mouseDoubleClickEvent(QMouseEvent* event) {
    QTableView::mouseDoubleClickEvent(event);
    Q_EMIT dblClicked();
}

void TDBGridRange::keyPressEvent(QKeyEvent* event) {
    if (event->modifiers().testFlag(Qt::ShiftModifier) && rangeApplies()) {
        if (const auto key = rangeKeyOf(event->key())) {
            if (!currentIndex().isValid())
                makeFirstRowCurrent();
            Cursor cursor(*this);
            StartUpdate();
            m_range.shiftKey(cursor, *key);
            DoneUpdate();
            event->accept();
            return;
        }
    }
    QTableView::keyPressEvent(event);
}

void TDBGridRange::keyReleaseEvent(QKeyEvent* event) {
    QTableView::keyReleaseEvent(event);
    Q_EMIT keyReleased();
}

QItemSelectionModel::SelectionFlags TDBGridRange::selectionCommand(const QModelIndex& index,
                                                                   const QEvent* event) const {
    if (selectionMode() != QAbstractItemView::ExtendedSelection || !event ||
        event->type() != QEvent::KeyPress)
        return QTableView::selectionCommand(index, event);
    // Keys without Shift move the current row and clear the selection; moves along the
    // row and moves with Ctrl leave the selection as it is.
    const auto* key = static_cast<const QKeyEvent*>(event);
    switch (key->key()) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Left:
    case Qt::Key_Right:
        return QItemSelectionModel::NoUpdate;
    default:
        break;
    }
    if (key->modifiers().testFlag(Qt::ControlModifier))
        return QTableView::selectionCommand(index, event);
    if (key->key() == Qt::Key_Space)
        return QTableView::selectionCommand(index, event);
    return QItemSelectionModel::Clear;
}

bool TDBGridRange::eventFilter(QObject* watched, QEvent* event) {
    if (watched == horizontalHeader()->viewport() && event->type() == QEvent::MouseButtonPress)
        m_titlePressModifiers = static_cast<QMouseEvent*>(event)->modifiers();
    return QTableView::eventFilter(watched, event);
}

void TDBGridRange::TitleClick(int column) {
    // A Shift-click on the title row belongs to range selection, which has nothing to do
    // there.
    if (m_titlePressModifiers.testFlag(Qt::ShiftModifier) && rangeApplies())
        return;
    Q_EMIT titleClicked(column);
}

QRect TDBGridRange::CellRect(int column, int row) const {
    if (!model() || column < 0 || row < 0 || column >= model()->columnCount() ||
        row >= model()->rowCount() || isColumnHidden(column))
        return QRect();
    const QRect cell = visualRect(model()->index(row, column));
    return cell.intersects(viewport()->rect()) ? cell : QRect();
}

QString TDBGridRange::ColorToHtmlColor(const QColor& color) {
    return interchange::ColorToHtmlColor(quint32(color.red()) | quint32(color.green()) << 8 |
                                         quint32(color.blue()) << 16);
}

QString TDBGridRange::HTMLHeaderToString() const {
    QStringList names;
    for (int column = 0; column < ColumnCount(); ++column)
        names << ColumnFieldName(column);
    return interchange::HtmlHeaderRow(names, ColorToHtmlColor(m_htmlFixedColor));
}

QString TDBGridRange::HTMLBodyToString(bool selectedOnly) const {
    if (!model())
        return QString();
    auto* result = qobject_cast<assets::ResultTableModel*>(model());
    std::vector<int> rows = selectedOnly ? SelectedRowsInSelectionOrder() : std::vector<int>();
    if (rows.empty()) {
        if (result)
            result->waitForAllRows();
        rows.resize(size_t(model()->rowCount()));
        std::iota(rows.begin(), rows.end(), 0);
    }
    const QString color = ColorToHtmlColor(m_htmlColor);
    QString text;
    for (size_t counter = 0; counter < rows.size(); ++counter) {
        std::vector<interchange::HtmlCell> cells;
        for (int column = 0; column < ColumnCount(); ++column) {
            const int row = rows[counter];
            const QRect cell = CellRect(int(counter), column);
            cells.push_back({result ? result->displayText(row, column)
                                    : model()->index(row, column).data().toString(),
                             cell.width(), cell.height()});
        }
        text += interchange::HtmlBodyRow(cells, color);
    }
    return text;
}

void TDBGridRange::HTMLSaveToFile(const QString& fileName, bool selectedOnly) const {
    interchange::SaveHtmlText(fileName, interchange::HtmlPage(HTMLHeaderToString(),
                                                              HTMLBodyToString(selectedOnly),
                                                              width(), height()));
}

QString TDBGridRange::HTMLProcessTemplate(const QString& templateFileName,
                                          const QString& placeholder,
                                          const QString& replacement) const {
    return interchange::ProcessHtmlTemplate(templateFileName, placeholder, replacement)
        .value_or(QString());
}

void TDBGridRange::HTMLProcessTemplate(const QString& templateFileName,
                                       const QString& outputFileName, const QString& placeholder,
                                       const QString& replacement) const {
    interchange::ProcessHtmlTemplate(templateFileName, outputFileName, placeholder, replacement);
}

} // namespace ui
