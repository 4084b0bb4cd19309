#pragma once

#include "interchange/importsettings.h"
#include "interchange/progress.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace db::odbc {
class Connection;
}

namespace interchange {

// True for "T", "Y", "1" or "Ä" at the start; case matters on purpose ("t" is false).
bool IsTrueValue(const std::optional<QByteArray>& field);

struct ImportResult {
    qint64 imported = 0;
    qint64 errors = 0;
    // "N row(s) imported, M error(s) occurred.", as logged and shown.
    QString message;
};

// Rows written by one INSERT statement. 1 writes each row as it is posted, one statement
// each, exactly as the row-by-row procedure describes; more rows give the same contents,
// counts and messages much faster: a batch whose write fails is undone and its lines are
// gone through again one row at a time.
inline constexpr int DefaultRowsPerStatement = 100;

// Appends the rows of an asset file (settings: FileName, Delimiter, StartRow, OnError,
// IdMode, Node) to ASSETS in one transaction, logging its steps, showing its errors and
// the result through progress. The caller re-runs its query afterwards.
ImportResult ImportAssets(db::odbc::Connection& connection, const ImportSettings& settings,
                          Progress& progress, int rowsPerStatement = DefaultRowsPerStatement);

// Appends the asset types of an asset-type file to ASSETTYPES, skipping the types that
// exist; the result box is shown only when showResult is true.
ImportResult ImportAssetTypes(db::odbc::Connection& connection, const ImportSettings& settings,
                              Progress& progress, bool showResult,
                              int rowsPerStatement = DefaultRowsPerStatement);

} // namespace interchange
