#pragma once

#include <QString>

#include <stdexcept>
#include <vector>

namespace assets {

class ResultTableModel;

// A removal refused before anything was deleted; what() is the translated reason.
class RemovalError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The statement that removes assets shown in a query result: "delete from ASSETS", and
// unless every row of the table goes, " where ID in (4, 9, 12)" with the ID values of
// `rows` (grid rows, in the order given). The values are written bare, whatever the
// field's type, as the database writes them.
//
// Throws RemovalError with "ID field is not defined." when there is no result or it has
// no ID field (also when every row goes), and with "No records have been selected" when
// `rows` is empty and not every row goes.
QString RemovalStatement(const ResultTableModel* result, bool removeAll,
                         const std::vector<int>& rows);

// The values of field `idField` in the given grid rows, in that order, joined by ", " and
// never quoted: "4, 9, 12".
QString BareIdList(const ResultTableModel& result, int idField, const std::vector<int>& rows);

} // namespace assets
