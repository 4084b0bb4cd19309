#pragma once

#include "db/odbc/odbc.h"

#include <QString>

namespace assets {

// What the results grid needs from the main query's result beyond a table model:
// the client-side sort, the record count and stable row identities. A model that is
// not a query result does not implement it, and the grid then leaves sorting alone.
class QueryDataSet {
public:
    virtual ~QueryDataSet() = default;

    virtual bool isOpen() const = 0;
    // Rows known so far; grows while the rest of the result arrives.
    virtual qsizetype recordCount() const = 0;
    virtual const std::vector<db::odbc::ColumnInfo>& fields() const = 0;
    // The index of a field by name, case-insensitive; -1 when there is none.
    virtual int fieldIndex(const QString& name) const = 0;

    // "[NAME] ASC" or "[NAME] DESC"; empty for the order in which rows arrived.
    virtual QString sortText() const = 0;
    virtual void setSortText(const QString& sortText) = 0;

    // A row's identity that survives sorting, and the row that has it now (-1 if none).
    virtual quint32 bookmark(int row) const = 0;
    virtual int rowOfBookmark(quint32 bookmark) const = 0;
};

} // namespace assets
