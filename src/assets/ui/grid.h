#pragma once

#include <QWidget>

#include <vector>

class QAbstractItemModel;
class QAction;
class QFrame;
class QMenu;
class QToolButton;

namespace core {
class CommandTarget;
}

namespace db::odbc {
class Connection;
}

namespace ui {

class TDBGridRange;

// The main window's actions that the grid's buttons show. A missing action leaves its
// button disabled.
struct GridActions {
    QAction* ActionAddRow = nullptr;
    QAction* ActionDelete = nullptr;
    QAction* ActionAddColumn = nullptr;
    QAction* ViewEditForm = nullptr;
    QAction* ViewDetails = nullptr;
};

// The results grid: the rows of the main query in a read-only range-selection grid under
// a row of flat buttons bound to the main window's actions. A click on a column title
// sorts the result, key and mouse releases report the number of rows (or of selected
// rows) in the status bar, a double click opens the record editor, and each column's
// visibility and width are kept in the settings store under its field name.
//
// It asks the main window for work only through numbered commands (core/commands.h).
class TGridForm : public QWidget {
    Q_OBJECT
public:
    TGridForm(core::CommandTarget& mainWindow, const GridActions& actions,
              QWidget* parent = nullptr);
    ~TGridForm() override;

    // Shows the model's rows. Sorting and the record counts need a query result
    // (assets::QueryDataSet); the form does not own the model.
    void SetModel(QAbstractItemModel* model);
    TDBGridRange* Grid() const { return DBGrid; }

    // Each column's visibility and width, under "Preferences\GridLayout" by field name.
    // A failure beeps and ends the pass.
    void SaveLayout();
    void LoadLayout();
    // Fits each column to the rows on screen, up to about thirty characters; called for
    // a new result before its stored layout is loaded.
    void FitColumnsToRows();
    // For the ID column, by its index in the result's fields.
    void SetColumnVisibility(int index, bool hidden);

    // Ctrl+C: the selected rows (or the current cell when none is selected) go to the
    // clipboard as tab-separated text with a title line.
    void ActionCopyExecute();
    // The column titles' context menu: a check item per column to hide or show it, and
    // one that shows every column at the width that fits its rows. Deleted on close.
    QMenu* CreateHeaderMenu();
    void ResetLayout();

    // Asks which rows to remove (TDelForm), then deletes the selected rows' assets by
    // their IDs, or every row of ASSETS, on `connection`; reports the count in the status
    // bar after the main window has reopened the query. A failure is shown and deletes
    // nothing.
    void DeleteSelectedRecords(db::odbc::Connection& connection);
    // The text of the last delete statement run ("delete from ASSETS" before the first).
    const QString& DeleteQuery() const { return m_deleteQuery; }
    // The grid's selected rows in the order of its selection list (the selection model's
    // ranges as it lists them, each from its top row down, each row once): the order in
    // which the user selected them, a Shift range counting from its top row.
    std::vector<int> SelectedRowsInSelectionOrder() const;

    void DBGridTitleClick(int column);
    void DBGridKeyUp();
    void DBGridMouseUp();
    void DBGridDblClick();

private:
    void UpdateStatusText();
    // Visible columns, in the order they are shown.
    std::vector<int> shownColumns() const;
    void copyRows(const std::vector<int>& rows);

    core::CommandTarget& m_mainWindow;
    QString m_deleteQuery = QStringLiteral("delete from ASSETS");

    QWidget* PanelGrid = nullptr;
    QFrame* Bevel1 = nullptr;
    QWidget* pnButtons = nullptr;
    QToolButton* BtnAdd = nullptr;
    QToolButton* BtnDelete = nullptr;
    QToolButton* SpeedButton1 = nullptr;
    QToolButton* BtnEdit = nullptr;
    QToolButton* BtnDetails = nullptr;
    TDBGridRange* DBGrid = nullptr;
    QAction* ActionCopy = nullptr;
};

} // namespace ui
