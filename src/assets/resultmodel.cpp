#include "assets/resultmodel.h"

namespace assets {

void QueryResultModel::setResult(db::QueryResult result) {
    beginResetModel();
    m_result = std::move(result);
    endResetModel();
}

void QueryResultModel::clear() { setResult({}); }

int QueryResultModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_result.rows.size());
}

int QueryResultModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_result.columns.size());
}

QVariant QueryResultModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || role != Qt::DisplayRole)
        return {};
    const db::odbc::Row& row = m_result.rows[static_cast<size_t>(index.row())];
    const QByteArray& value = row[static_cast<size_t>(index.column())];
    if (value.isNull())
        return {};
    if (m_result.columns[static_cast<size_t>(index.column())].isBinary())
        return QStringLiteral("(BLOB)");
    return QString::fromUtf8(value);
}

QVariant QueryResultModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section + 1;
    return m_result.columns[static_cast<size_t>(section)].name;
}

} // namespace assets
