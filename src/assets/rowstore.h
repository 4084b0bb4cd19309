#pragma once

// Compact storage for the rows of one query result.
//
// Rows are kept in blocks. A block holds the values of a run of rows: one byte arena with
// every value's bytes back to back, row by row, one 32-bit end offset per value and one
// bit per value for NULL. A value costs its own bytes plus about four, instead
// of a heap object per value, so that a million-row result needs little more memory than
// its text. Blocks never change once built and are shared by pointer: a copy of a store
// is cheap and can be read on another thread while the original grows.

#include "db/odbc/odbc.h"

#include <QByteArrayView>

#include <cstdint>
#include <memory>
#include <vector>

namespace assets {

class RowBlock {
public:
    qsizetype rowCount() const { return m_rowCount; }
    int columnCount() const { return m_columnCount; }

    bool isNull(qsizetype row, int column) const {
        const size_t slot = this->slot(row, column);
        return (m_nulls[slot / 64] >> (slot % 64)) & 1u;
    }
    // The value's bytes; empty for NULL (isNull tells NULL from '').
    QByteArrayView value(qsizetype row, int column) const {
        const size_t slot = this->slot(row, column);
        const quint32 begin = slot == 0 ? 0 : m_ends[slot - 1];
        return QByteArrayView(m_bytes.data() + begin, qsizetype(m_ends[slot] - begin));
    }
    // Bytes of all values together.
    qsizetype textBytes() const { return m_textBytes; }
    // Heap memory the block holds.
    qsizetype memoryBytes() const;

private:
    friend class RowBlockBuilder;
    RowBlock() = default;

    size_t slot(qsizetype row, int column) const {
        return size_t(row) * size_t(m_columnCount) + size_t(column);
    }

    qsizetype m_rowCount = 0;
    int m_columnCount = 0;
    qsizetype m_textBytes = 0;
    std::vector<char> m_bytes;
    std::vector<quint32> m_ends;  // end of each value in m_bytes, row by row
    std::vector<quint64> m_nulls; // one bit per value, same order
};

// Collects rows and turns them into a block. Not thread-safe; one builder per producer.
class RowBlockBuilder {
public:
    explicit RowBlockBuilder(int columnCount = 0);

    int columnCount() const { return m_columnCount; }
    qsizetype rowCount() const { return m_rowCount; }
    qsizetype textBytes() const { return m_textBytes; }
    bool isEmpty() const { return m_rowCount == 0; }

    // Appends one row; a null QByteArray is NULL. Missing trailing values are NULL and
    // surplus ones are ignored.
    void addRow(const db::odbc::Row& row);
    // The same for values as a RowSink receives them.
    void addViews(const std::vector<db::odbc::ValueView>& row);

    // The rows collected so far as a block (nullptr when there are none); the builder
    // starts over, keeping its column count.
    std::shared_ptr<const RowBlock> finish();

    // Blocks keep 32-bit offsets: a block is finished before its bytes reach this size.
    static constexpr qsizetype MaxBlockBytes = qsizetype(1) << 30;

private:
    void appendValue(QByteArrayView value, bool isNull);
    template <typename Values, typename Bytes, typename Null>
    void appendRow(const Values& row, Bytes bytes, Null isNull);
    void reserveNext();

    int m_columnCount = 0;
    qsizetype m_rowCount = 0;
    qsizetype m_textBytes = 0;
    // Handed to the block as they are by finish(); room for the next block is reserved
    // from the size of the last one, so that blocks seldom carry unused capacity.
    std::vector<char> m_bytes;
    std::vector<quint32> m_ends;
    std::vector<quint64> m_nulls;
    qsizetype m_lastRows = 0;
    qsizetype m_lastBytes = 0;
};

// The rows of a result in arrival order, as a list of blocks.
class RowStore {
public:
    RowStore() = default;
    explicit RowStore(int columnCount) : m_columnCount(columnCount) {}

    int columnCount() const { return m_columnCount; }
    qsizetype rowCount() const { return m_rowCount; }
    qsizetype textBytes() const { return m_textBytes; }
    qsizetype memoryBytes() const;

    // Adds a block whose column count matches; an empty block or nullptr is ignored.
    void append(std::shared_ptr<const RowBlock> block);
    void clear(int columnCount = 0);

    bool isNull(qsizetype row, int column) const {
        const Location at = locate(row);
        return at.block->isNull(at.row, column);
    }
    QByteArrayView value(qsizetype row, int column) const {
        const Location at = locate(row);
        return at.block->value(at.row, column);
    }

    qsizetype blockCount() const { return qsizetype(m_blocks.size()); }
    const RowBlock& block(qsizetype index) const { return *m_blocks[size_t(index)]; }
    // The row number of the block's first row.
    qsizetype blockStart(qsizetype index) const { return m_starts[size_t(index)]; }

private:
    struct Location {
        const RowBlock* block;
        qsizetype row;
    };
    // Rows must be in range. Remembers the last block found: reading rows near each other
    // costs no search. Const methods are therefore not safe to call on one store from two
    // threads at once; give the other thread its own copy.
    Location locate(qsizetype row) const;

    int m_columnCount = 0;
    qsizetype m_rowCount = 0;
    qsizetype m_textBytes = 0;
    std::vector<std::shared_ptr<const RowBlock>> m_blocks;
    std::vector<qsizetype> m_starts;
    mutable size_t m_lastBlock = 0;
};

} // namespace assets
