#pragma once

#include "assets/ui/edittab.h"

#include <functional>

namespace db::odbc {
class Connection;
}

namespace ui {

// The Related Node page: the node the asset belongs to, chosen from the list of nodes.
// When the asset type requires a node, the post needs one, and the record's FKNODES
// becomes the chosen node's OBJECTID.
class TRelatedNodeTabForm : public TEditTab {
    Q_OBJECT
public:
    TRelatedNodeTabForm(TDataSource* dataSource, db::odbc::Connection& connection,
                        std::function<bool()> nodeRequired, QWidget* parent);

    // Reads the node list ("NodesQuery") when the editor opens; empties it when it closes.
    void OpenTab() override;
    void CloseTab() override;
    bool ValidateTab(QString& error) override;

private:
    db::odbc::Connection& m_connection;
    std::function<bool()> m_nodeRequired;
    TDBLookupComboBox* DB_NodeName;
};

} // namespace ui
