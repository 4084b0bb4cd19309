#pragma once

#include "db/dialect.h"

#include <functional>

class QWidget;

namespace core {
class CommandTarget;
}

namespace db::odbc {
class Connection;
}

namespace ui {

// What adding or dropping a user column needs of the main window.
struct ColumnChangeHost {
    QWidget* window;
    db::odbc::Connection& connection;
    db::DatabaseDialect dialect;
    core::CommandTarget& commands;
    // Runs the main window's current query again, so that the grid shows the change.
    std::function<void()> runQuery;
};

// Shows the add-column wizard until it is cancelled or its statement has run. A failing
// statement is logged, and the user may return to the wizard with every answer kept.
void ExecuteAddColumn(const ColumnChangeHost& host);

// The same for dropping a user column. A drop that fails is tried once more after the
// column's default constraints have been dropped.
void ExecuteDeleteColumn(const ColumnChangeHost& host);

} // namespace ui
