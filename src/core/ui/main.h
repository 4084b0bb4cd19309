#pragma once

#include "core/commandline.h"
#include "core/commands.h"
#include "core/preferences.h"
#include "db/assetsconnection.h"

#include <QMainWindow>

#include <functional>
#include <optional>

class QAction;
class QLabel;
class QSplitter;

namespace assets {
class ResultTableModel;
}

namespace ui {

class TAboutForm;
class TDetailsForm;
class TEditForm;
class TGridForm;
class TStatementRunner;
struct ColumnChangeHost;

// The main window. Its creation runs the whole start-up: preferences, command line,
// log banner, connection, schema creation, asset-type import and the first query.
// Child windows reach it through numbered commands (core::CommandTarget).
class TfmMain : public QMainWindow, public core::CommandTarget {
    Q_OBJECT
public:
    explicit TfmMain(const QString& rawCommandLine, QWidget* parent = nullptr);
    ~TfmMain() override;

    bool noGui() const { return m_noGui; }
    QString statusText() const;
    void SetStatusText(const QString& text);

    // The about box is created after the main window and shown by the Help menu.
    void setAboutForm(TAboutForm* aboutForm);

    // Asks for one parameter's value; no value when the user cancels. The default
    // shows an input box.
    using ParameterPrompt = std::function<std::optional<QString>(const QString& name)>;
    void setParameterPrompt(ParameterPrompt prompt) { m_parameterPrompt = std::move(prompt); }

    // (Re)connects when the connection inputs changed, analyses and runs the SQL text.
    void RunQuery();
    // Runs the query again after a change of data, keeping the current row.
    void RefreshQuery();

    qint64 DispatchCommand(int command, const QVariant& argument) override;
    QString LastCommandError() const override { return m_lastCommandError; }
    // The one connection, which dialogs work on.
    db::AssetsConnection& Connection() { return ASSETS; }

    bool queryIsOpen() const;
    bool editableAssets() const { return m_editableAssets; }
    assets::ResultTableModel* viewQuery() const { return ViewQuery; }
    TGridForm* gridForm() const { return m_grid; }
    TEditForm* editForm() const { return m_editor; }
    bool editorShown() const;
    // Picks the asset type of a new record; the default shows the asset-type list.
    void setAssetTypeChooser(std::function<std::optional<QString>()> chooser) {
        m_assetTypeChooser = std::move(chooser);
    }
    TDetailsForm* detailsForm() const { return m_details; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    // The statement last run, as the driver got it, with the parameter values given.
    struct ExecutedQuery {
        QString driverText;
        std::vector<std::optional<QString>> parameterValues;
    };

    void FormCreate(const QString& rawCommandLine);
    void runStartupSteps(const QString& rawCommandLine);
    void loadPreferences();
    // Takes the connection inputs from the command line; the rest is what it asks of
    // this start-up.
    core::CommandLineValues applyCommandLine(const QString& rawCommandLine);
    void createActions();
    QAction* createAction(const char* name, const QString& caption, const QString& hint = {});
    void createGridPanel();
    void connectDatabase();
    void showConnectedDataSource();
    void restoreWindowLayout();
    void saveWindowLayout();
    void processTableDefinition(const QString& path);
    void importAssetTypes(const core::CommandLineValues& options);

    void runAnalysedQuery();
    ExecutedQuery prepareQuery(const QString& sqlText);
    void executeQuery(const ExecutedQuery& query);
    void runStatement(db::odbc::Statement& statement, const std::function<void()>& work);
    static QString noResultSetMessage(long long rowsAffected);
    void closeQuery();
    void applyIdColumnVisibility();
    void showRecordCount();
    void rememberConnection();
    void commitOpenTransaction();
    int currentRow() const;
    void locateRow(int row);
    int rowWithId(int idIndex, const QByteArray& id, int firstRow = 0) const;
    // Makes the record with this ID current as soon as its row has arrived.
    void goToRecordWhenArrived(int idIndex, const QByteArray& id);
    void goToPendingRecord(bool fetchEnded);
    // The current row's ID as text; "0" when there is none.
    QString currentIdText() const;

    void placeEditor();
    void openEditor();
    void closeEditor();
    void followCurrentRecord();
    std::optional<QString> chooseAssetType();

    void showDetailsFromLastConnection();
    void copyDetailsIntoFields();
    void reportError(const QString& message);
    void updateActions();

    void ExitActionExecute();
    void ActionExecuteExecute();
    void ViewEditFormExecute();
    void ActionAddRowExecute();
    void ActionDeleteExecute();
    void ActionEditAssetTypesExecute();
    void ActionImportExecute();
    void ActionImportAssetTypesExecute();
    void ActionNewAssetExecute();
    void ActionAddColumnExecute();
    void ActionDeleteColumnExecute();
    // Closes the record editor while `work` changes what it shows, then opens it again.
    void withEditorClosed(const std::function<void()>& work);
    ColumnChangeHost columnChangeHost();
    void ViewDetailsExecute();
    void ActionPasteSQLExecute();
    void ActionSQLWizardExecute();
    void ActionHelpContentsExecute();
    void ActionPrefExecute();
    void ActionExportExecute();
    void ActionExportAssetTypesExecute();
    void ActionSaveHtmlExecute();
    void ActionAboutExecute();

    QString m_dataSourceName;
    QString m_sqlText;
    QString m_userName;
    QString m_password;
    QString m_title;
    QString m_databaseType;
    bool m_noGui = false;
    bool m_editableAssets = false;
    core::MainPreferences m_preferences;
    ExecutedQuery m_executed;
    QString m_lastCommandError;
    // A window's status text stays until the next one, over the count at the end of a fetch.
    bool m_commandStatusShown = false;
    struct PendingRecord {
        int idIndex = -1;
        QByteArray id;
        int searchedRows = 0;
    };
    std::optional<PendingRecord> m_pendingRecord;
    std::function<std::optional<QString>()> m_assetTypeChooser;
    ParameterPrompt m_parameterPrompt;

    db::AssetsConnection ASSETS;
    assets::ResultTableModel* ViewQuery = nullptr;

    QWidget* Grid_Edit = nullptr;
    QWidget* pnGrid = nullptr;
    TGridForm* m_grid = nullptr;
    TEditForm* m_editor = nullptr;
    QSplitter* m_gridEditSplitter = nullptr;
    TDetailsForm* m_details = nullptr;
    TAboutForm* m_aboutForm = nullptr;
    QLabel* StatusBar = nullptr;
    QLabel* StatusDataSource = nullptr;
    TStatementRunner* m_statementRunner = nullptr;

    QAction* ExitAction = nullptr;
    QAction* ActionExecute = nullptr;
    QAction* ViewEditForm = nullptr;
    QAction* ViewDetails = nullptr;
    QAction* ActionAddRow = nullptr;
    QAction* ActionDelete = nullptr;
    QAction* ActionEditAssetTypes = nullptr;
    QAction* ActionImport = nullptr;
    QAction* ActionImportAssetTypes = nullptr;
    QAction* ActionNewAsset = nullptr;
    QAction* ActionAddColumn = nullptr;
    QAction* ActionDeleteColumn = nullptr;
    QAction* ActionPasteSQL = nullptr;
    QAction* ActionSQLWizard = nullptr;
    QAction* ActionHelpContents = nullptr;
    QAction* ActionPref = nullptr;
    QAction* ActionExport = nullptr;
    QAction* ActionExportAssetTypes = nullptr;
    QAction* ActionSaveHtml = nullptr;
    QAction* ActionAbout = nullptr;
};

} // namespace ui
