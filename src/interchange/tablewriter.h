#pragma once

#include "db/odbc/odbc.h"

#include <QString>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace interchange {

// A row appended by an import: a value for each field of the table, as the database
// writes it (see assets::StoredFromText); nullopt where the row assigns nothing, so that
// the column keeps its default.
using ImportRow = std::vector<std::optional<QByteArray>>;

// Writes the rows an import appends to one table, many rows to a statement.
//
// A column without a default is always written (NULL where a row assigns nothing, which
// is what leaving it out gives), so that rows share one statement shape however their
// empty values fall. Each write is one statement, so that it takes effect whole or not
// at all: a failed statement leaves the transaction as it was (PostgreSQL's driver
// rolls a failed statement back to a savepoint of its own).
class TableWriter {
public:
    // Which columns a row's statement writes: '1' for each written field.
    using Shape = std::string;

    TableWriter(db::odbc::Connection& connection, const QString& table, int rowsPerStatement);

    const std::vector<db::odbc::ColumnInfo>& fields() const { return m_fields; }
    // By name, ignoring case; -1 when the table has no such field.
    int fieldIndex(const QString& name) const;
    ImportRow emptyRow() const { return ImportRow(m_fields.size()); }

    Shape shapeOf(const ImportRow& row) const;
    bool hasShape(const ImportRow& row, const Shape& shape) const;
    // How many rows of the shape one statement takes.
    size_t rowsPerStatement(const Shape& shape) const;
    // Writes rows of one shape, at most rowsPerStatement(shape), with one statement; a
    // failure is thrown with the database's text.
    void write(const std::vector<ImportRow>& rows);

private:
    db::odbc::Statement& statementFor(const Shape& shape, size_t rowCount);

    db::odbc::Connection& m_connection;
    QString m_table;
    int m_rowsPerStatement;
    std::vector<db::odbc::ColumnInfo> m_fields;
    std::vector<bool> m_hasDefault;
    std::map<std::pair<Shape, size_t>, std::unique_ptr<db::odbc::Statement>> m_statements;
};

} // namespace interchange
