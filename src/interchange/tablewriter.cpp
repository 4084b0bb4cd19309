#include "interchange/tablewriter.h"

#include "assets/tabledataset.h"

#include <QStringList>

#include <algorithm>

namespace interchange {

namespace {

// Parameters of one statement stay well inside every driver's limit (SQLite's is the
// lowest, 32,766).
constexpr size_t MaxParametersPerStatement = 30000;
// Prepared statements kept for reuse: a few shapes cover almost every file.
constexpr size_t MaxKeptStatements = 16;

} // namespace

TableWriter::TableWriter(db::odbc::Connection& connection, const QString& table,
                         int rowsPerStatement)
    : m_connection(connection), m_table(table), m_rowsPerStatement(std::max(1, rowsPerStatement)) {
    db::odbc::Statement columns(connection);
    columns.executeDirect(QStringLiteral("select * from %1 where 1=0").arg(table));
    m_fields = columns.columns();
    columns.close();
    // Without the catalog's word every column counts as having a default: rows are then
    // grouped by the columns they assign, which is always right.
    m_hasDefault.assign(m_fields.size(), true);
    try {
        // Catalogs match names as the database keeps them: the table may be stored in
        // lower case.
        std::optional<QStringList> defaults = connection.columnsWithDefaults(table);
        if (!defaults)
            defaults = connection.columnsWithDefaults(table.toLower());
        if (defaults)
            for (size_t field = 0; field < m_fields.size(); ++field)
                m_hasDefault[field] = defaults->contains(m_fields[field].name, Qt::CaseInsensitive);
    } catch (const std::exception&) {
    }
}

int TableWriter::fieldIndex(const QString& name) const {
    return db::odbc::ColumnIndex(m_fields, name);
}

TableWriter::Shape TableWriter::shapeOf(const ImportRow& row) const {
    Shape shape(m_fields.size(), '0');
    for (size_t field = 0; field < m_fields.size(); ++field)
        if (row[field] || !m_hasDefault[field])
            shape[field] = '1';
    return shape;
}

bool TableWriter::hasShape(const ImportRow& row, const Shape& shape) const {
    for (size_t field = 0; field < m_fields.size(); ++field)
        if ((row[field] || !m_hasDefault[field]) != (shape[field] == '1'))
            return false;
    return true;
}

size_t TableWriter::rowsPerStatement(const Shape& shape) const {
    const size_t columns = size_t(std::count(shape.begin(), shape.end(), '1'));
    if (columns == 0)
        return 1;
    return std::clamp(MaxParametersPerStatement / columns, size_t(1), size_t(m_rowsPerStatement));
}

db::odbc::Statement& TableWriter::statementFor(const Shape& shape, size_t rowCount) {
    std::unique_ptr<db::odbc::Statement>& kept = m_statements[{shape, rowCount}];
    if (kept)
        return *kept;
    if (m_statements.size() > MaxKeptStatements) {
        m_statements.clear();
        return statementFor(shape, rowCount);
    }
    QStringList names;
    for (size_t field = 0; field < m_fields.size(); ++field)
        if (shape[field] == '1')
            names << m_fields[field].name;
    QString sql;
    if (names.isEmpty()) {
        sql = QStringLiteral("insert into %1 default values").arg(m_table);
    } else {
        const QString marks = QLatin1Char('(') +
                              QStringList(names.size(), QStringLiteral("?")).join(u',') +
                              QLatin1Char(')');
        sql = QStringLiteral("insert into %1 (%2) values %3")
                  .arg(m_table, names.join(QStringLiteral(", ")),
                       QStringList(qsizetype(rowCount), marks).join(u','));
    }
    kept = std::make_unique<db::odbc::Statement>(m_connection);
    try {
        kept->prepare(sql);
    } catch (...) {
        kept.reset();
        m_statements.erase({shape, rowCount});
        throw;
    }
    return *kept;
}

void TableWriter::write(const std::vector<ImportRow>& rows) {
    if (rows.empty())
        return;
    const Shape shape = shapeOf(rows.front());
    db::odbc::Statement& statement = statementFor(shape, rows.size());
    int parameter = 1;
    for (const ImportRow& row : rows)
        for (size_t field = 0; field < m_fields.size(); ++field)
            if (shape[field] == '1')
                assets::BindStoredValue(statement, parameter++, m_fields[field].kind(), row[field]);
    statement.execute();
}

} // namespace interchange
