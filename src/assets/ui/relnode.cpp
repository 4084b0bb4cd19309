#include "assets/ui/relnode.h"

#include "db/odbc/odbc.h"
#include "translation/translate.h"

#include <QFormLayout>
#include <QLabel>

namespace ui {

TRelatedNodeTabForm::TRelatedNodeTabForm(TDataSource* dataSource, db::odbc::Connection& connection,
                                         std::function<bool()> nodeRequired, QWidget* parent)
    : TEditTab(dataSource, parent), m_connection(connection),
      m_nodeRequired(std::move(nodeRequired)) {
    setObjectName(QStringLiteral("RelatedNodeTabForm"));
    DB_NodeName = new TDBLookupComboBox(dataSource, QStringLiteral("NODENAME"), this);
    DB_NodeName->setObjectName(QStringLiteral("DB_NodeName"));
    auto* label = new QLabel(translation::Translate(QStringLiteral("Nodename:")), this);
    label->setBuddy(DB_NodeName);
    formLayout()->addRow(label, DB_NodeName);
}

void TRelatedNodeTabForm::OpenTab() {
    db::odbc::Statement nodes(m_connection);
    nodes.executeDirect(QStringLiteral("select NODENAME, OBJECTID from NODES order by NODENAME"));
    std::vector<db::odbc::Row> rows;
    while (nodes.fetchBlock(rows)) {
    }
    std::vector<std::pair<QString, QString>> items;
    items.reserve(rows.size());
    for (const db::odbc::Row& row : rows)
        items.emplace_back(QString::fromUtf8(row.at(0)), QString::fromUtf8(row.at(1)));
    DB_NodeName->SetItems(items);
}

void TRelatedNodeTabForm::CloseTab() {
    DB_NodeName->SetItems({});
}

bool TRelatedNodeTabForm::ValidateTab(QString& error) {
    if (!m_nodeRequired())
        return true;
    if (DB_NodeName->currentIndex() < 0) {
        error = translation::Translate(QStringLiteral("NodeName must be specified."));
        return false;
    }
    dataSource()->DataSet().setAsText(QStringLiteral("FKNODES"), DB_NodeName->ChosenKey());
    return true;
}

} // namespace ui
