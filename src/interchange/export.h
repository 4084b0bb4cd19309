#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace assets {
class ResultTableModel;
}

namespace db::odbc {
class Connection;
}

namespace interchange {

class Progress;

// What the export dialog asks for, and remembers per kind of file under
// InterchangeSettingsKey(TypesMode).
struct ExportSettings {
    QString FileName;
    QString Delimiter;
    QString InitialDir;
    bool AllRecords = true;
    bool AddHeader = false;
    // The stored header text; none when no line count is stored (the dialog then keeps
    // its default text).
    std::optional<QStringList> HeaderLines;
    bool TypesMode = false;
};

// A value missing from the store leaves the field as it is in `settings`.
void LoadExportSettings(ExportSettings& settings);
// Writes every value, the header lines as "HeaderLines" and "HeaderLine000"... .
bool SaveExportSettings(const ExportSettings& settings, const QStringList& headerLines);

// The statement that reads the assets to export: every row of ASSETS, or only those whose
// IDs the grid rows `selectedRows` show, in that order, written bare ("where ID in (12,
// 5)"). Throws std::runtime_error "No records to export (not selected?)." when not every
// row goes and `selectedRows` is empty. The result must have an ID field.
QString ExportAssetsSql(const assets::ResultTableModel& grid, bool allRecords,
                        const std::vector<int>& selectedRows);

// Writes the rows of ASSETS (all, or the grid's selected rows given in selection order)
// to a delimited file: the header lines when there are any, the field names separated by
// the delimiter, then per row every value followed by the delimiter; lines end in CR LF;
// a value is written as the grid shows it, NULL as nothing, with no quoting. Rows are
// written as they are fetched. The file is created first and stays, empty, when the grid
// has no ID field: the export then ends without a word. The result, or a failure, is
// logged and shown through `progress`, which also shows the rows written.
void ExportAssets(db::odbc::Connection& connection, const QString& fileName,
                  const QString& delimiter, const QStringList* headerLines, bool allRecords,
                  const assets::ResultTableModel* grid, const std::vector<int>& selectedRows,
                  Progress& progress);

// The same for every row of ASSETTYPES.
void ExportAssetTypes(db::odbc::Connection& connection, const QString& fileName,
                      const QString& delimiter, const QStringList* headerLines, Progress& progress);

} // namespace interchange
