#pragma once

#include "db/query.h"

#include <QAbstractTableModel>

namespace assets {

// Read-only table model over a result held in memory.
class QueryResultModel : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit QueryResultModel(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

    void setResult(db::QueryResult result);
    void clear();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    db::QueryResult m_result;
};

} // namespace assets
