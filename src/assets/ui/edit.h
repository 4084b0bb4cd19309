#pragma once

#include "assets/tabledataset.h"

#include <QWidget>

#include <functional>
#include <optional>
#include <vector>

class QAction;
class QLabel;
class QTabWidget;
class QToolBar;
class QToolButton;

namespace core {
class CommandTarget;
}

namespace ui {

class TDataSource;
class TDBNavigator;
class TDBText;
class TEditTab;
class TGeneralTabForm;
class TPurchaseTabForm;
class TRelatedNodeTabForm;
class TUserFieldsForm;
class TWarrantyTabForm;

// The record editor: one row of ASSETS, chosen by its ID, on five pages whose visibility
// follows the flags of the row's asset type. It follows the grid's current row, edits,
// posts, cancels and refreshes through its navigator, gives new records the default dates
// and amounts of the preferences and asks for their type, and checks a record page by
// page before it is written. After a post or cancel it asks the main window to refresh
// the grid (CMD_REQUERY).
class TEditForm : public QWidget {
    Q_OBJECT
public:
    // Picks an asset type; nullopt when the user picked none.
    using TypeChooser = std::function<std::optional<QString>()>;

    TEditForm(db::odbc::Connection& connection, core::CommandTarget& mainWindow,
              QWidget* parent = nullptr);
    ~TEditForm() override;

    // The new-asset dialog hides the navigator and asks for the type itself.
    void SetShowNavigator(bool show);
    void SetAskTypeOnInsert(bool ask) { m_askTypeOnInsert = ask; }
    void SetTypeChooser(TypeChooser chooser) { m_typeChooser = std::move(chooser); }

    // Shows the record with this ID; an empty ID closes the editor's tables.
    void ShowRecord(const QString& id);
    const QString& CurrentId() const { return m_currentId; }
    void OpenTables();
    void CloseTables();
    // Starts a new record, with the defaults (and the type, when asked for).
    void Append();
    // Writes the record after checking it; throws with the check's or the database's text.
    void Post();
    void Cancel();
    // Asks for the type and sets it; throws "ASSET TYPE must be selected." when none is
    // picked.
    void ChooseAssetType();

    // A flag of the record's asset type (NODEREQUIRED, SHOW_..._TAB); the default when the
    // type or the column is missing or the value is empty.
    bool TypeFlag(const QString& column, bool defaultValue) const;
    // False, with the text to show, when the record may not be posted; the failing page
    // becomes the active one.
    bool Validate(QString& error);

    assets::TableDataSet& AssetsTable() { return ASSETSTable; }
    bool Inserting() const { return m_inserting; }
    QTabWidget* Pages() const { return EditPages; }

Q_SIGNALS:
    // The editor closed its tables and wants to be hidden (its record is gone).
    void closed();

private:
    void createControls();
    void connectEvents();
    void UpdateTabVisibility();
    void filterAssetTypes(const QString& type);
    void applyDefaults();
    void AfterInsert();
    void AfterPost();
    void AfterCancel();
    void AfterDelete();
    void ItemClearExecute();
    void ItemClearUpdate();
    void LabelAssetTypeClick();
    void showError(const QString& message);

    core::CommandTarget& m_mainWindow;
    db::odbc::Connection& m_connection;
    assets::TableDataSet ASSETSTable;
    assets::TableDataSet AssetTypesTable;
    TDataSource* EditDataSource;

    QString m_currentId;
    bool m_inserting = false;
    bool m_showNavigator = true;
    bool m_askTypeOnInsert = true;
    TypeChooser m_typeChooser;

    QWidget* pActionPanel = nullptr;
    QToolBar* pActionToolBar = nullptr;
    TDBNavigator* DBNavigator1 = nullptr;
    QToolButton* BtnClear = nullptr;
    QWidget* pnAssetType = nullptr;
    QLabel* LabelAssetType = nullptr;
    TDBText* DBAssetTitle = nullptr;
    QTabWidget* EditPages = nullptr;
    QAction* ItemClear = nullptr;
    TGeneralTabForm* m_general = nullptr;
    TRelatedNodeTabForm* m_relatedNode = nullptr;
    TPurchaseTabForm* m_purchase = nullptr;
    TWarrantyTabForm* m_warranty = nullptr;
    TUserFieldsForm* m_userFields = nullptr;
    // The five page forms, in page order.
    std::vector<TEditTab*> m_tabs;
};

} // namespace ui
