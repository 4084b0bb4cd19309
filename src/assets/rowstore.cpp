#include "assets/rowstore.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace assets {

qsizetype RowBlock::memoryBytes() const {
    return qsizetype(sizeof(RowBlock) + m_bytes.capacity() + m_ends.capacity() * sizeof(quint32) +
                     m_nulls.capacity() * sizeof(quint64));
}

// ---------------------------------------------------------------------------------

RowBlockBuilder::RowBlockBuilder(int columnCount) : m_columnCount(std::max(0, columnCount)) {}

void RowBlockBuilder::appendValue(QByteArrayView value, bool isNull) {
    const size_t slot = m_ends.size();
    if (slot % 64 == 0)
        m_nulls.push_back(0);
    if (isNull)
        m_nulls.back() |= quint64(1) << (slot % 64);
    else
        m_bytes.insert(m_bytes.end(), value.data(), value.data() + value.size());
    m_ends.push_back(quint32(m_bytes.size()));
}

template <typename Values, typename Bytes, typename Null>
void RowBlockBuilder::appendRow(const Values& row, Bytes bytes, Null isNull) {
    qsizetype total = 0;
    const size_t given = std::min(row.size(), size_t(m_columnCount));
    for (size_t index = 0; index < given; ++index)
        total += bytes(row[index]).size();
    if (m_textBytes + total > qsizetype(std::numeric_limits<quint32>::max()))
        throw std::length_error("a row block cannot hold more than 4 GiB");
    if (m_rowCount == 0)
        reserveNext();
    for (size_t index = 0; index < given; ++index)
        appendValue(bytes(row[index]), isNull(row[index]));
    for (size_t index = given; index < size_t(m_columnCount); ++index)
        appendValue(QByteArrayView(), true);
    m_textBytes += total;
    ++m_rowCount;
}

void RowBlockBuilder::addRow(const db::odbc::Row& row) {
    appendRow(
        row, [](const QByteArray& value) { return QByteArrayView(value); },
        [](const QByteArray& value) { return value.isNull(); });
}

void RowBlockBuilder::addViews(const std::vector<db::odbc::ValueView>& row) {
    appendRow(
        row, [](const db::odbc::ValueView& value) { return value.bytes; },
        [](const db::odbc::ValueView& value) { return value.isNull; });
}

void RowBlockBuilder::reserveNext() {
    if (m_lastRows == 0)
        return;
    // As many rows as last time, with a little room for longer values.
    const size_t slots = size_t(m_lastRows) * size_t(m_columnCount);
    m_bytes.reserve(size_t(m_lastBytes + m_lastBytes / 16 + 64));
    m_ends.reserve(slots);
    m_nulls.reserve((slots + 63) / 64);
}

std::shared_ptr<const RowBlock> RowBlockBuilder::finish() {
    if (m_rowCount == 0)
        return nullptr;
    std::shared_ptr<RowBlock> block(new RowBlock);
    block->m_rowCount = m_rowCount;
    block->m_columnCount = m_columnCount;
    block->m_textBytes = m_textBytes;
    // Capacity beyond an eighth of what is used is given back.
    auto tight = [](auto& vector) {
        if (vector.capacity() - vector.size() > vector.size() / 8)
            vector.shrink_to_fit();
    };
    tight(m_bytes);
    tight(m_ends);
    tight(m_nulls);
    block->m_bytes = std::move(m_bytes);
    block->m_ends = std::move(m_ends);
    block->m_nulls = std::move(m_nulls);
    m_lastRows = m_rowCount;
    m_lastBytes = m_textBytes;
    m_bytes = {};
    m_ends = {};
    m_nulls = {};
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
        index =
            size_t(std::upper_bound(m_starts.begin(), m_starts.end(), row) - m_starts.begin()) - 1;
        m_lastBlock = index;
    }
    return {m_blocks[index].get(), row - m_starts[index]};
}

} // namespace assets
