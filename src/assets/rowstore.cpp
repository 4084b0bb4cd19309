#include "assets/rowstore.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace assets {

qsizetype RowBlock::memoryBytes() const {
    const size_t slots = size_t(m_rowCount) * size_t(m_columnCount);
    return qsizetype(sizeof(RowBlock)) + m_textBytes + qsizetype(slots * sizeof(quint32)) +
           qsizetype((slots + 63) / 64 * sizeof(quint64));
}

// ---------------------------------------------------------------------------------

RowBlockBuilder::RowBlockBuilder(int columnCount)
    : m_columnCount(std::max(0, columnCount)), m_columns(size_t(m_columnCount)) {}

void RowBlockBuilder::appendValue(Column& column, const QByteArray& value) {
    const size_t row = column.lengths.size();
    if (row % 64 == 0)
        column.nulls.push_back(0);
    if (value.isNull())
        column.nulls.back() |= quint64(1) << (row % 64);
    else
        column.bytes.insert(column.bytes.end(), value.constData(),
                            value.constData() + value.size());
    column.lengths.push_back(value.isNull() ? 0 : quint32(value.size()));
}

void RowBlockBuilder::addRow(const db::odbc::Row& row) {
    qsizetype bytes = 0;
    const size_t given = std::min(row.size(), size_t(m_columnCount));
    for (size_t index = 0; index < given; ++index)
        bytes += row[index].size();
    if (m_textBytes + bytes > qsizetype(std::numeric_limits<quint32>::max()))
        throw std::length_error("a row block cannot hold more than 4 GiB");
    static const QByteArray null;
    for (size_t index = 0; index < size_t(m_columnCount); ++index)
        appendValue(m_columns[index], index < given ? row[index] : null);
    m_textBytes += bytes;
    ++m_rowCount;
}

std::shared_ptr<const RowBlock> RowBlockBuilder::finish() {
    if (m_rowCount == 0)
        return nullptr;
    std::shared_ptr<RowBlock> block(new RowBlock);
    const size_t rows = size_t(m_rowCount);
    const size_t slots = rows * size_t(m_columnCount);
    block->m_rowCount = m_rowCount;
    block->m_columnCount = m_columnCount;
    block->m_textBytes = m_textBytes;
    block->m_bytes = std::make_unique_for_overwrite<char[]>(size_t(std::max<qsizetype>(
        m_textBytes, 1)));
    block->m_ends = std::make_unique_for_overwrite<quint32[]>(std::max<size_t>(slots, 1));
    block->m_nulls = std::make_unique<quint64[]>(std::max<size_t>((slots + 63) / 64, 1));
    quint32 end = 0;
    size_t slot = 0;
    for (Column& column : m_columns) {
        if (!column.bytes.empty())
            std::memcpy(block->m_bytes.get() + end, column.bytes.data(), column.bytes.size());
        for (size_t row = 0; row < rows; ++row, ++slot) {
            end += column.lengths[row];
            block->m_ends[slot] = end;
            if ((column.nulls[row / 64] >> (row % 64)) & 1u)
                block->m_nulls[slot / 64] |= quint64(1) << (slot % 64);
        }
        // Capacity stays for the next block.
        column.bytes.clear();
        column.lengths.clear();
        column.nulls.clear();
    }
    m_rowCount = 0;
    m_textBytes = 0;
    return block;
}

// ---------------------------------------------------------------------------------

qsizetype RowStore::memoryBytes() const {
    qsizetype bytes = qsizetype(m_blocks.capacity() * sizeof(m_blocks[0]) +
                                m_starts.capacity() * sizeof(m_starts[0]));
    for (const auto& block : m_blocks)
        bytes += block->memoryBytes();
    return bytes;
}

void RowStore::append(std::shared_ptr<const RowBlock> block) {
    if (!block || block->rowCount() == 0)
        return;
    if (block->columnCount() != m_columnCount)
        throw std::invalid_argument("a row block's column count differs from the store's");
    m_starts.push_back(m_rowCount);
    m_rowCount += block->rowCount();
    m_textBytes += block->textBytes();
    m_blocks.push_back(std::move(block));
}

void RowStore::clear(int columnCount) {
    m_columnCount = columnCount;
    m_rowCount = 0;
    m_textBytes = 0;
    m_blocks.clear();
    m_starts.clear();
    m_lastBlock = 0;
}

RowStore::Location RowStore::locate(qsizetype row) const {
    size_t index = m_lastBlock;
    if (index >= m_blocks.size() || row < m_starts[index] ||
        row >= m_starts[index] + m_blocks[index]->rowCount()) {
        index = size_t(std::upper_bound(m_starts.begin(), m_starts.end(), row) -
                       m_starts.begin()) -
                1;
        m_lastBlock = index;
    }
    return {m_blocks[index].get(), row - m_starts[index]};
}

} // namespace assets
