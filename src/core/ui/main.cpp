#include "core/ui/main.h"

#include "assets/resulttablemodel.h"
#include "assets/ui/assettype.h"
#include "assets/ui/dbgridrange.h"
#include "assets/ui/edit.h"
#include "assets/ui/grid.h"
#include "assets/ui/newrecord.h"
#include "assets/ui/typelistdlg.h"
#include "core/commandline.h"
#include "core/log.h"
#include "core/registry.h"
#include "core/ui/about.h"
#include "core/ui/hourglass.h"
#include "core/ui/messages.h"
#include "core/ui/preferences.h"
#include "db/parameters.h"
#include "db/sqlanalysis.h"
#include "db/ui/details.h"
#include "db/ui/help.h"
#include "db/ui/sqlwizardclient.h"
#include "db/ui/statementrunner.h"
#include "interchange/ui/exportform.h"
#include "interchange/ui/htmlreport.h"
#include "interchange/ui/import.h"
#include "schema/schemacreation.h"
#include "schema/ui/columnchange.h"
#include "translation/translate.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QInputDialog>
#include <QLabel>
#include <QMenuBar>
#include <QScopeGuard>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>

#include <stdexcept>

namespace ui {

using translation::Translate;

namespace {

const char* const StartBanner = "....................  Program started  ....................";
const char* const EndBanner = "                     Program terminated                     ";

constexpr auto WindowKey = "Window";
constexpr int WindowBufferLength = 4096;

QString readLastConnection(const char* valueName, const QString& current) {
    QString value;
    if (core::ReadRegistryString(QLatin1String(core::LastConnectionKey), QLatin1String(valueName),
                                 value, core::LastConnectionBufferLength, std::nullopt))
        return value;
    return current;
}

} // namespace

TfmMain::TfmMain(const QString& rawCommandLine, QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("fmMain"));
    setWindowTitle(QStringLiteral("Orvane Quillet"));
    resize(638, 478);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());

    Grid_Edit = new QWidget(this);
    Grid_Edit->setObjectName(QStringLiteral("Grid_Edit"));
    new QVBoxLayout(Grid_Edit);
    Grid_Edit->layout()->setContentsMargins(0, 0, 0, 0);
    setCentralWidget(Grid_Edit);

    StatusBar = new QLabel(this);
    StatusBar->setObjectName(QStringLiteral("StatusBar"));
    statusBar()->addWidget(StatusBar, 1);
    // Where the user always sees which database a statement reaches.
    StatusDataSource = new QLabel(this);
    StatusDataSource->setObjectName(QStringLiteral("StatusDataSource"));
    statusBar()->addPermanentWidget(StatusDataSource);
    m_statementRunner = new TStatementRunner(statusBar());
    showConnectedDataSource();

    ViewQuery = new assets::ResultTableModel(this);
    ViewQuery->setObjectName(QStringLiteral("ViewQuery"));
    // The count when the last rows arrive, unless a window said something since.
    connect(ViewQuery, &assets::ResultTableModel::fetchFinished, this, [this] {
        if (!m_commandStatusShown)
            showRecordCount();
        goToPendingRecord(true);
    });
    connect(ViewQuery, &QAbstractItemModel::rowsInserted, this,
            [this] { goToPendingRecord(false); });
    connect(ViewQuery, &assets::ResultTableModel::fetchFailed, this, &TfmMain::reportError);

    m_parameterPrompt = [this](const QString& name) -> std::optional<QString> {
        bool ok = false;
        const QString value =
            QInputDialog::getText(this, Translate(QStringLiteral("Enter parameter for:")), name,
                                  QLineEdit::Normal, QString(), &ok);
        return ok ? std::optional<QString>(value) : std::nullopt;
    };

    createActions();
    FormCreate(rawCommandLine);
    if (!m_noGui)
        restoreWindowLayout();
}

// The window's size, position and maximised state and its panels' sizes, kept between
// runs under "Window".
void TfmMain::restoreWindowLayout() {
    QString geometry;
    QString state;
    if (core::ReadRegistryString(QLatin1String(WindowKey), QStringLiteral("Geometry"), geometry,
                                 WindowBufferLength, std::nullopt))
        restoreGeometry(QByteArray::fromBase64(geometry.toLatin1()));
    if (core::ReadRegistryString(QLatin1String(WindowKey), QStringLiteral("State"), state,
                                 WindowBufferLength, std::nullopt))
        restoreState(QByteArray::fromBase64(state.toLatin1()));
    if (m_details)
        restoreDockWidget(m_details);
}

void TfmMain::saveWindowLayout() {
    core::WriteRegistryString(QLatin1String(WindowKey), QStringLiteral("Geometry"),
                              QString::fromLatin1(saveGeometry().toBase64()));
    core::WriteRegistryString(QLatin1String(WindowKey), QStringLiteral("State"),
                              QString::fromLatin1(saveState().toBase64()));
}

TfmMain::~TfmMain() {
    // The panel is hidden as the window goes: nothing of this window may answer then.
    if (m_details)
        m_details->disconnect(this);
    ViewQuery->close();
    core::LogLineQuietly(QLatin1String(EndBanner));
}

QAction* TfmMain::createAction(const char* name, const QString& caption, const QString& hint) {
    auto* action = new QAction(Translate(caption), this);
    action->setObjectName(QLatin1String(name));
    if (!hint.isEmpty()) {
        action->setStatusTip(Translate(hint));
        action->setToolTip(action->statusTip());
    }
    return action;
}

void TfmMain::createActions() {
    ExitAction = createAction("ExitAction", QStringLiteral("E&xit"));
    connect(ExitAction, &QAction::triggered, this, &TfmMain::ExitActionExecute);

    ActionExecute = createAction("ActionExecute", QStringLiteral("E&xecute SQL"),
                                 QStringLiteral("Execute Query"));
    ActionExecute->setShortcut(Qt::Key_F5);
    connect(ActionExecute, &QAction::triggered, this, &TfmMain::ActionExecuteExecute);

    ViewEditForm =
        createAction("ViewEditForm", QStringLiteral("&Edit"), QStringLiteral("Edit Assets"));
    connect(ViewEditForm, &QAction::triggered, this, &TfmMain::ViewEditFormExecute);
    ViewDetails = createAction("ViewDetails", QStringLiteral("&Details"),
                               QStringLiteral("Details of current Connection & Query"));
    connect(ViewDetails, &QAction::triggered, this, &TfmMain::ViewDetailsExecute);

    // The grid's buttons show these; they get their work with the record editor,
    // removal and the add-column wizard.
    ActionAddRow = createAction("ActionAddRow", QStringLiteral("&Add..."),
                                QStringLiteral("insert new ASSET record"));
    connect(ActionAddRow, &QAction::triggered, this, &TfmMain::ActionAddRowExecute);
    ActionDelete = createAction("ActionDelete", QStringLiteral("&Remove..."),
                                QStringLiteral("Delete selected records"));
    connect(ActionDelete, &QAction::triggered, this, &TfmMain::ActionDeleteExecute);
    ActionEditAssetTypes =
        createAction("ActionEditAssetTypes", QStringLiteral("View Asset &Types List"));
    connect(ActionEditAssetTypes, &QAction::triggered, this, &TfmMain::ActionEditAssetTypesExecute);
    ActionNewAsset = createAction("ActionNewAsset", QStringLiteral("Create New &Asset Type"));
    connect(ActionNewAsset, &QAction::triggered, this, &TfmMain::ActionNewAssetExecute);
    ActionAddColumn = createAction("ActionAddColumn", QStringLiteral("Add &Column..."),
                                   QStringLiteral("Add a new column into ASSETS table"));
    connect(ActionAddColumn, &QAction::triggered, this, &TfmMain::ActionAddColumnExecute);
    ActionDeleteColumn = createAction("ActionDeleteColumn", QStringLiteral("&Delete Column..."),
                                      QStringLiteral("Delete a column from the ASSETS table"));
    connect(ActionDeleteColumn, &QAction::triggered, this, &TfmMain::ActionDeleteColumnExecute);

    ActionImport = createAction("ActionImport", QStringLiteral("&Import Assets..."),
                                QStringLiteral("Import assets from a delimited text file"));
    connect(ActionImport, &QAction::triggered, this, &TfmMain::ActionImportExecute);
    ActionImportAssetTypes =
        createAction("ActionImportAssetTypes", QStringLiteral("Import Asset &Types..."),
                     QStringLiteral("Import asset types from a delimited text file"));
    connect(ActionImportAssetTypes, &QAction::triggered, this,
            &TfmMain::ActionImportAssetTypesExecute);

    ActionPasteSQL = createAction("ActionPasteSQL", QStringLiteral("&Paste SQL"),
                                  QStringLiteral("Replace the SQL with the clipboard text"));
    connect(ActionPasteSQL, &QAction::triggered, this, &TfmMain::ActionPasteSQLExecute);
    ActionSQLWizard = createAction("ActionSQLWizard", QStringLiteral("S&QLWizard"));
    connect(ActionSQLWizard, &QAction::triggered, this, &TfmMain::ActionSQLWizardExecute);
    ActionHelpContents = createAction("ActionHelpContents", QStringLiteral("&Contents"));
    ActionHelpContents->setShortcut(QKeySequence::HelpContents);
    connect(ActionHelpContents, &QAction::triggered, this, &TfmMain::ActionHelpContentsExecute);

    ActionPref = createAction("ActionPref", QStringLiteral("&Preferences"));
    connect(ActionPref, &QAction::triggered, this, &TfmMain::ActionPrefExecute);
    ActionAbout = createAction("ActionAbout", QStringLiteral("&About..."));
    connect(ActionAbout, &QAction::triggered, this, &TfmMain::ActionAboutExecute);

    ActionExport = createAction("ActionExport", QStringLiteral("&Export..."),
                                QStringLiteral("Export assets to a delimited file"));
    connect(ActionExport, &QAction::triggered, this, &TfmMain::ActionExportExecute);
    ActionExportAssetTypes =
        createAction("ActionExportAssetTypes", QStringLiteral("Export Asset &Types..."),
                     QStringLiteral("Export asset types to a delimited file"));
    connect(ActionExportAssetTypes, &QAction::triggered, this,
            &TfmMain::ActionExportAssetTypesExecute);
    ActionSaveHtml = createAction("ActionSaveHtml", QStringLiteral("Save as &HTML..."),
                                  QStringLiteral("Write the grid as an HTML page"));
    connect(ActionSaveHtml, &QAction::triggered, this, &TfmMain::ActionSaveHtmlExecute);

    QMenu* file = menuBar()->addMenu(Translate(QStringLiteral("&File")));
    file->addAction(ActionImport);
    file->addAction(ActionImportAssetTypes);
    file->addAction(ActionExport);
    file->addAction(ActionExportAssetTypes);
    file->addAction(ActionSaveHtml);
    file->addSeparator();
    file->addAction(ActionPref);
    file->addSeparator();
    file->addAction(ExitAction);
    // Alt+Q belongs to the details panel's wizard button.
    QMenu* query = menuBar()->addMenu(Translate(QStringLiteral("Q&uery")));
    query->addAction(ActionExecute);
    query->addAction(ActionPasteSQL);
    query->addAction(ActionSQLWizard);
    query->addSeparator();
    query->addAction(ActionAddColumn);
    query->addAction(ActionDeleteColumn);
    QMenu* view = menuBar()->addMenu(Translate(QStringLiteral("&View")));
    view->addAction(ViewDetails);
    view->addAction(ViewEditForm);
    view->addSeparator();
    view->addAction(ActionEditAssetTypes);
    view->addAction(ActionNewAsset);
    QMenu* help = menuBar()->addMenu(Translate(QStringLiteral("&Help")));
    help->addAction(ActionHelpContents);
    help->addSeparator();
    help->addAction(ActionAbout);
    updateActions();
}

void TfmMain::FormCreate(const QString& rawCommandLine) {
    try {
        runStartupSteps(rawCommandLine);
    } catch (const std::exception& error) {
        reportError(QString::fromUtf8(error.what()));
        // A data source that could not be reached is corrected in the details panel.
        if (!m_noGui && !ASSETS.isOpen() && !m_details)
            showDetailsFromLastConnection();
    }
    if (m_noGui)
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

void TfmMain::runStartupSteps(const QString& rawCommandLine) {
    loadPreferences();
    const core::CommandLineValues options = applyCommandLine(rawCommandLine);
    core::LogLine(StartBanner);
    if (m_noGui)
        setAttribute(Qt::WA_DontShowOnScreen);
    else
        createGridPanel();
    if (!m_dataSourceName.isEmpty()) {
        connectDatabase();
        if (options.create)
            processTableDefinition(options.tableDefinitionPath);
        importAssetTypes(options);
    } else {
        core::LogLine("no Data Source specified.");
    }
    RunQuery();
}

void TfmMain::loadPreferences() {
    core::LoadPreferences(m_preferences);
}

core::CommandLineValues TfmMain::applyCommandLine(const QString& rawCommandLine) {
    core::CommandLineValues values;
    core::ParseCommandLine(rawCommandLine, values);
    m_dataSourceName = values.dataSourceName;
    m_sqlText = values.sqlText;
    m_userName = values.userName;
    m_password = values.password;
    m_databaseType = values.databaseType;
    m_noGui = values.noGui;
    if (values.title) {
        m_title = *values.title;
        setWindowTitle(m_title);
        QGuiApplication::setApplicationDisplayName(m_title);
    }
    if (values.logFilePath && !core::SetLogFilePath(*values.logFilePath))
        throw std::runtime_error(
            Translate(QStringLiteral("The log file path is longer than 255 characters."))
                .toStdString());
    updateActions();
    return values;
}

void TfmMain::createGridPanel() {
    pnGrid = new QWidget(Grid_Edit);
    pnGrid->setObjectName(QStringLiteral("pnGrid"));
    auto* layout = new QVBoxLayout(pnGrid);
    layout->setContentsMargins(0, 0, 0, 0);
    GridActions actions;
    actions.ActionAddRow = ActionAddRow;
    actions.ActionDelete = ActionDelete;
    actions.ActionAddColumn = ActionAddColumn;
    actions.ViewEditForm = ViewEditForm;
    actions.ViewDetails = ViewDetails;
    m_grid = new TGridForm(*this, actions, pnGrid);
    m_grid->SetModel(ViewQuery);
    layout->addWidget(m_grid);
    // The record editor docks below the grid or to its right, as the preferences say.
    m_gridEditSplitter = new QSplitter(Grid_Edit);
    m_gridEditSplitter->setObjectName(QStringLiteral("GridEditSplitter"));
    m_gridEditSplitter->setChildrenCollapsible(false);
    m_gridEditSplitter->addWidget(pnGrid);
    placeEditor();
    Grid_Edit->layout()->addWidget(m_gridEditSplitter);
    // The editor follows the current row, once the grid has settled on it.
    connect(m_grid->Grid()->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &TfmMain::followCurrentRecord, Qt::QueuedConnection);
}

void TfmMain::placeEditor() {
    if (m_gridEditSplitter)
        m_gridEditSplitter->setOrientation(m_preferences.layoutBottom ? Qt::Vertical
                                                                      : Qt::Horizontal);
}

bool TfmMain::editorShown() const {
    return m_editor && m_editor->isVisible();
}

void TfmMain::openEditor() {
    if (!m_gridEditSplitter)
        return;
    if (!m_editor) {
        m_editor = new TEditForm(ASSETS.connection(), *this, m_gridEditSplitter);
        m_editor->SetTypeChooser([this] { return chooseAssetType(); });
        m_gridEditSplitter->addWidget(m_editor);
    }
    m_editor->show();
    try {
        m_editor->OpenTables();
        m_editor->ShowRecord(currentIdText());
    } catch (const std::exception& error) {
        reportError(QString::fromUtf8(error.what()));
    }
    updateActions();
}

void TfmMain::closeEditor() {
    if (!m_editor)
        return;
    m_editor->CloseTables();
    m_editor->hide();
    updateActions();
}

// Shows the current row's record in an open editor.
void TfmMain::followCurrentRecord() {
    if (!m_editableAssets || !editorShown() || !queryIsOpen() || ViewQuery->rowCount() == 0)
        return;
    if (currentIdText() != m_editor->CurrentId())
        m_editor->ShowRecord(currentIdText());
}

void TfmMain::connectDatabase() {
    HourglassCursor hourglass;
    try {
        ASSETS.connect(m_password, m_userName, m_dataSourceName, m_databaseType);
    } catch (...) {
        showConnectedDataSource();
        throw;
    }
    showConnectedDataSource();
}

void TfmMain::showConnectedDataSource() {
    const QString dataSource = ASSETS.connectedDataSource();
    StatusDataSource->setText(dataSource.isEmpty()
                                  ? Translate(QStringLiteral("Not connected"))
                                  : Translate(QStringLiteral("Data source: $DSN$"), 0,
                                              {{QStringLiteral("$DSN$"), dataSource}}));
}

void TfmMain::processTableDefinition(const QString& path) {
    HourglassCursor hourglass;
    try {
        schema::ProcessTableDefinitionFile(ASSETS.connection(), ASSETS.dialect(), path);
    } catch (const std::exception& error) {
        const QString message = QString::fromUtf8(error.what());
        core::LogLineQuietly(message);
        ShowError(this, Translate(QStringLiteral("Table Creation Error")), message);
    }
}

void TfmMain::importAssetTypes(const core::CommandLineValues& options) {
    if (options.assetTypeFile.isEmpty())
        return;
    interchange::ImportSettings settings;
    settings.FileName = options.assetTypeFile;
    settings.Delimiter = options.delimiter;
    settings.StartRow = options.startRow;
    settings.OnError = interchange::OnErrorIgnore;
    const interchange::ImportResult result = interchange::ui::ImportAssetTypesFile(
        this, StatusBar, ASSETS.connection(), settings, m_noGui);
    SetStatusText(result.message);
}

void TfmMain::RunQuery() {
    m_editableAssets = false;
    if (queryIsOpen() && m_grid)
        m_grid->SaveLayout();
    copyDetailsIntoFields();
    if (m_dataSourceName.isEmpty() || m_sqlText.isEmpty()) {
        if (!m_details && !m_noGui)
            showDetailsFromLastConnection();
        return;
    }
    HourglassCursor hourglass;
    try {
        // The panel copies itself into the fields on every change, so the inputs are
        // compared with those the open connection was made with.
        if (ASSETS.differsFrom(m_password, m_userName, m_dataSourceName) || !ASSETS.isOpen())
            connectDatabase();
        runAnalysedQuery();
    } catch (const std::exception& error) {
        closeQuery();
        m_editableAssets = false;
        reportError(QString::fromUtf8(error.what()));
    }
    updateActions();
}

void TfmMain::runAnalysedQuery() {
    closeQuery();
    if (editorShown())
        m_editor->CloseTables();
    const db::AssetsQueryAnalysis analysis =
        db::AnalyseAssetsQuery(m_sqlText, m_preferences.appendId);
    m_editableAssets = analysis.editableAssets;
    if (!m_editableAssets)
        closeEditor();
    executeQuery(prepareQuery(analysis.sqlText));
    if (m_grid) {
        m_grid->FitColumnsToRows();
        m_grid->LoadLayout();
    }
    applyIdColumnVisibility();
    if (editorShown() && m_editableAssets) {
        m_editor->OpenTables();
        m_editor->ShowRecord(currentIdText());
    }
    showRecordCount();
    rememberConnection();
}

// Asks for each parameter in order. A cancelled one stays unset, and so does every one
// of an unattended run: the driver then reports the missing value.
TfmMain::ExecutedQuery TfmMain::prepareQuery(const QString& sqlText) {
    const db::DriverStatement statement = db::ToDriverStatement(sqlText);
    ExecutedQuery query{statement.text, {}};
    query.parameterValues.resize(static_cast<size_t>(statement.parameterNames.size()));
    if (m_noGui)
        return query;
    for (qsizetype i = 0; i < statement.parameterNames.size(); ++i)
        query.parameterValues[static_cast<size_t>(i)] =
            m_parameterPrompt(statement.parameterNames[i]);
    return query;
}

void TfmMain::executeQuery(const ExecutedQuery& query) {
    const QString sortText = ViewQuery->sortText();
    // The result shown is read no further: the connection serves the new statement.
    closeQuery();
    db::odbc::Statement statement(ASSETS.connection());
    statement.prepare(query.driverText);
    for (size_t i = 0; i < query.parameterValues.size(); ++i)
        if (query.parameterValues[i])
            statement.bindText(static_cast<int>(i) + 1, *query.parameterValues[i]);
    assets::ResultTableModel::FirstBlock first;
    runStatement(statement, [&statement, &first] {
        statement.execute();
        first = assets::ResultTableModel::ReadFirstBlock(statement);
    });
    if (statement.columns().empty())
        throw std::runtime_error(noResultSetMessage(statement.rowsAffected()).toStdString());
    ViewQuery->open(std::move(statement), std::move(first));
    m_executed = query;
    if (!sortText.isEmpty())
        ViewQuery->setSortText(sortText);
}

// Unattended, the statement runs here; with a window it runs on a worker thread while
// the window repaints, with everything but the status bar's Cancel button disabled.
void TfmMain::runStatement(db::odbc::Statement& statement, const std::function<void()>& work) {
    if (m_noGui) {
        work();
        return;
    }
    const QList<QWidget*> frozen = {menuBar(), Grid_Edit, m_details};
    for (QWidget* widget : frozen)
        if (widget)
            widget->setEnabled(false);
    const auto thaw = qScopeGuard([this, frozen] {
        for (QWidget* widget : frozen)
            if (widget)
                widget->setEnabled(true);
        updateActions();
    });
    ActionExecute->setEnabled(false);
    m_statementRunner->run(statement, work);
}

QString TfmMain::noResultSetMessage(long long rowsAffected) {
    if (rowsAffected < 0)
        return Translate(QStringLiteral("The statement ran, but it does not return a result set "
                                        "to show."));
    return Translate(QStringLiteral("The statement ran and changed $ROWCOUNT$ row(s), but it "
                                    "does not return a result set to show."),
                     0, {{QStringLiteral("$ROWCOUNT$"), QString::number(rowsAffected)}});
}

void TfmMain::closeQuery() {
    m_pendingRecord.reset();
    ViewQuery->close();
}

bool TfmMain::queryIsOpen() const {
    return ViewQuery->isOpen();
}

void TfmMain::applyIdColumnVisibility() {
    if (!m_editableAssets || !m_grid)
        return;
    const int idIndex = ViewQuery->fieldIndex(QStringLiteral("ID"));
    if (idIndex >= 0)
        m_grid->SetColumnVisibility(idIndex, m_preferences.hideId);
}

void TfmMain::showRecordCount() {
    if (!queryIsOpen())
        return;
    m_commandStatusShown = false;
    SetStatusText(
        Translate(QStringLiteral("There are $RECORDCOUNT$ record(s) in the dataset"), 0,
                  {{QStringLiteral("$RECORDCOUNT$"), QString::number(ViewQuery->recordCount())}}));
}

void TfmMain::rememberConnection() {
    const QString key = QLatin1String(core::LastConnectionKey);
    core::WriteRegistryString(key, QStringLiteral("DSN"), m_dataSourceName);
    core::WriteRegistryString(key, QStringLiteral("UserName"), m_userName);
    core::WriteRegistryString(key, QStringLiteral("SQL"), m_sqlText);
}

void TfmMain::commitOpenTransaction() {
    if (ASSETS.isOpen() && ASSETS.connection().inTransaction())
        ASSETS.connection().commit();
}

int TfmMain::currentRow() const {
    return m_grid ? m_grid->Grid()->currentIndex().row() : -1;
}

void TfmMain::locateRow(int row) {
    if (!m_grid || row < 0 || row >= ViewQuery->rowCount())
        return;
    const int column = qMax(0, m_grid->Grid()->currentIndex().column());
    m_grid->Grid()->setCurrentIndex(ViewQuery->index(row, column));
}

void TfmMain::RefreshQuery() {
    HourglassCursor hourglass;
    try {
        // The record to come back to and the order it was seen in, taken before the
        // query is run again.
        const int row = currentRow();
        const int idIndex = ViewQuery->fieldIndex(QStringLiteral("ID"));
        const QByteArray id = row >= 0 && idIndex >= 0 && !ViewQuery->isNull(row, idIndex)
                                  ? ViewQuery->value(row, idIndex).toByteArray()
                                  : QByteArray();
        const QString sortText = ViewQuery->sortText();
        if (queryIsOpen()) {
            closeQuery();
            commitOpenTransaction();
            executeQuery(m_executed);
            commitOpenTransaction();
        }
        RunQuery();
        commitOpenTransaction();
        if (!queryIsOpen())
            return;
        // Rows are always read afresh here, so a small result refreshed in place and a
        // large one run again end alike: back on the same record, found by its ID (by its
        // position when the result has no ID) as soon as that row has arrived.
        executeQuery(m_executed);
        // The rows there are so far are sorted at once; later ones as they arrive.
        ViewQuery->setSortText(sortText);
        ViewQuery->waitForSort();
        if (id.isNull())
            locateRow(row);
        else
            goToRecordWhenArrived(idIndex, id);
    } catch (const std::exception& error) {
        reportError(QString::fromUtf8(error.what()));
    }
}

int TfmMain::rowWithId(int idIndex, const QByteArray& id, int firstRow) const {
    for (int row = firstRow; row < ViewQuery->rowCount(); ++row)
        if (!ViewQuery->isNull(row, idIndex) && ViewQuery->value(row, idIndex) == id)
            return row;
    return -1;
}

void TfmMain::goToRecordWhenArrived(int idIndex, const QByteArray& id) {
    m_pendingRecord = PendingRecord{idIndex, id, 0};
    goToPendingRecord(!ViewQuery->isFetching());
}

// Looks for the record among the rows that arrived since the last look; at the end of the
// result it looks once more over all of them, as a sort may have moved them.
void TfmMain::goToPendingRecord(bool fetchEnded) {
    if (!m_pendingRecord)
        return;
    PendingRecord& pending = *m_pendingRecord;
    if (fetchEnded)
        pending.searchedRows = 0;
    const int row = rowWithId(pending.idIndex, pending.id, pending.searchedRows);
    pending.searchedRows = ViewQuery->rowCount();
    if (row >= 0 || fetchEnded) {
        m_pendingRecord.reset();
        if (row >= 0)
            locateRow(row);
    }
}

QString TfmMain::currentIdText() const {
    const int row = currentRow();
    const int idIndex = ViewQuery->fieldIndex(QStringLiteral("ID"));
    if (row < 0 || idIndex < 0 || ViewQuery->isNull(row, idIndex))
        return QStringLiteral("0");
    return QString::fromUtf8(ViewQuery->value(row, idIndex).toByteArray());
}

qint64 TfmMain::DispatchCommand(int command, const QVariant& argument) {
    switch (command) {
    case core::CMD_STATUS_TEXT:
        SetStatusText(argument.toString());
        m_commandStatusShown = true;
        return 0;
    case core::CMD_REQUERY:
        if (!queryIsOpen())
            return 0;
        try {
            commitOpenTransaction();
            if (argument.toInt() == 1 || argument.toInt() == 2)
                executeQuery(m_executed);
            else
                RefreshQuery();
            applyIdColumnVisibility();
            if (editorShown())
                m_editor->ShowRecord(currentIdText());
        } catch (const std::exception& error) {
            reportError(QString::fromUtf8(error.what()));
        }
        return 0;
    case core::CMD_EXECUTE_SQL:
        try {
            return ASSETS.connection().execute(argument.toString());
        } catch (const std::exception& error) {
            m_lastCommandError = QString::fromUtf8(error.what());
            core::LogLineQuietly(m_lastCommandError);
            return -1;
        }
    case core::CMD_SYNC_EDITOR:
        if (editorShown())
            m_editor->ShowRecord(currentIdText());
        return 0;
    case core::CMD_OPEN_EDITOR:
        if (!editorShown() && queryIsOpen() && m_editableAssets)
            openEditor();
        return 0;
    default:
        return -1;
    }
}

void TfmMain::showDetailsFromLastConnection() {
    m_details = new TDetailsForm(ActionExecute, this);
    addDockWidget(Qt::BottomDockWidgetArea, m_details);
    restoreDockWidget(m_details);
    connect(m_details, &TDetailsForm::connectionEdited, this, &TfmMain::copyDetailsIntoFields);
    connect(m_details, &QDockWidget::visibilityChanged, this, &TfmMain::updateActions);
    if (m_dataSourceName.isEmpty()) {
        m_dataSourceName = readLastConnection("DSN", m_dataSourceName);
        m_userName = readLastConnection("UserName", m_userName);
    }
    if (m_sqlText.isEmpty())
        m_sqlText = readLastConnection("SQL", m_sqlText);
    m_details->setFields(m_dataSourceName, m_userName, m_sqlText, m_password);
    m_details->show();
    updateActions();
}

void TfmMain::copyDetailsIntoFields() {
    if (!m_details)
        return;
    m_dataSourceName = m_details->dataSourceName();
    m_userName = m_details->userName();
    m_sqlText = m_details->sqlText();
    m_password = m_details->password();
    updateActions();
}

void TfmMain::reportError(const QString& message) {
    core::LogLineQuietly(message);
    ShowError(this, Translate(QStringLiteral("Error")), message);
}

void TfmMain::updateActions() {
    ActionExecute->setEnabled(!m_dataSourceName.isEmpty() && !m_sqlText.isEmpty());
    const bool detailsShown = m_details && m_details->isVisible();
    ViewDetails->setText(
        Translate(detailsShown ? QStringLiteral("Hide &Details") : QStringLiteral("&Details")));
    ViewEditForm->setText(
        Translate(editorShown() ? QStringLiteral("Hide &Edit") : QStringLiteral("&Edit")));
    const bool open = queryIsOpen();
    const bool assetQuery = open && m_editableAssets;
    ViewEditForm->setEnabled(assetQuery);
    ActionAddRow->setEnabled(open);
    ActionNewAsset->setEnabled(open);
    ActionEditAssetTypes->setEnabled(open);
    ActionDelete->setEnabled(assetQuery);
    ActionImport->setEnabled(assetQuery && m_grid);
    ActionImportAssetTypes->setEnabled(open);
    ActionAddColumn->setEnabled(assetQuery);
    ActionDeleteColumn->setEnabled(assetQuery);
    ActionExport->setEnabled(assetQuery && m_grid);
    ActionExportAssetTypes->setEnabled(open);
    ActionSaveHtml->setEnabled(open && m_grid);
}

QString TfmMain::statusText() const {
    return StatusBar->text();
}

void TfmMain::SetStatusText(const QString& text) {
    StatusBar->setText(text);
}

void TfmMain::closeEvent(QCloseEvent* event) {
    // The running statement's caller still waits for it: stop it, then close.
    if (m_statementRunner->isRunning()) {
        m_statementRunner->cancel();
        event->ignore();
        return;
    }
    if (queryIsOpen() && m_grid)
        m_grid->SaveLayout();
    if (!m_noGui)
        saveWindowLayout();
    event->accept();
}

void TfmMain::ExitActionExecute() {
    close();
}

void TfmMain::ActionExecuteExecute() {
    RunQuery();
}

void TfmMain::ViewEditFormExecute() {
    if (editorShown())
        closeEditor();
    else
        openEditor();
}

std::optional<QString> TfmMain::chooseAssetType() {
    if (m_assetTypeChooser)
        return m_assetTypeChooser();
    TAssetTypeListForm picker(ASSETS.connection(), *this, this);
    if (picker.exec() != QDialog::Accepted)
        return std::nullopt;
    return picker.SelectedType();
}

void TfmMain::ActionDeleteExecute() {
    if (!m_grid)
        return;
    m_grid->DeleteSelectedRecords(ASSETS.connection());
    if (editorShown())
        openEditor();
}

void TfmMain::withEditorClosed(const std::function<void()>& work) {
    const bool editorWasShown = editorShown();
    if (editorWasShown)
        closeEditor();
    work();
    if (editorWasShown)
        openEditor();
}

// The editor's tables are closed while the import writes, and opened again afterwards.
void TfmMain::ActionImportExecute() {
    withEditorClosed([this] {
        const std::optional<interchange::ImportResult> result =
            interchange::ui::ImportWithDialog(this, StatusBar, ASSETS.connection(), false);
        if (result) {
            RunQuery();
            SetStatusText(result->message);
        }
    });
}

void TfmMain::ActionImportAssetTypesExecute() {
    withEditorClosed([this] {
        const std::optional<interchange::ImportResult> result =
            interchange::ui::ImportWithDialog(this, StatusBar, ASSETS.connection(), true);
        if (result)
            SetStatusText(result->message);
    });
}

// The editor's tables are closed while the types change under it.
void TfmMain::ActionEditAssetTypesExecute() {
    withEditorClosed([this] {
        TAssetTypeListForm manager(ASSETS.connection(), *this, this);
        manager.SetManagerMode();
        manager.exec();
    });
}

// The editor is built again afterwards, so that its user-field page shows the columns as
// they are now.
void TfmMain::ActionAddColumnExecute() {
    withEditorClosed([this] { ExecuteAddColumn(columnChangeHost()); });
}

void TfmMain::ActionDeleteColumnExecute() {
    withEditorClosed([this] { ExecuteDeleteColumn(columnChangeHost()); });
}

ColumnChangeHost TfmMain::columnChangeHost() {
    return {this, ASSETS.connection(), ASSETS.dialect(), *this, [this] { RunQuery(); }};
}

void TfmMain::ActionNewAssetExecute() {
    TAssetTypeForm form(ASSETS.connection(), this);
    form.exec();
}

void TfmMain::ActionAddRowExecute() {
    try {
        TFormNewAsset dialog(ASSETS.connection(), *this, this);
        dialog.Editor()->SetTypeChooser([this] { return chooseAssetType(); });
        dialog.exec();
    } catch (const std::exception& error) {
        ShowMessage(this, QMessageBox::Critical, Translate(QStringLiteral("Error")),
                    QString::fromUtf8(error.what()));
    }
    if (editorShown())
        openEditor();
}

void TfmMain::ViewDetailsExecute() {
    if (!m_details)
        showDetailsFromLastConnection();
    else
        m_details->setVisible(!m_details->isVisible());
    updateActions();
}

void TfmMain::ActionPasteSQLExecute() {
    if (!m_details)
        showDetailsFromLastConnection();
    m_details->show();
    m_details->PasteSQL();
}

void TfmMain::ActionSQLWizardExecute() {
    ShowSqlWizard(this, m_dataSourceName, m_userName, m_password);
}

void TfmMain::ActionHelpContentsExecute() {
    ShowHelpContents(this);
}

void TfmMain::ActionPrefExecute() {
    TPreferences dialog(this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    loadPreferences();
    placeEditor();
    ViewQuery->refreshDisplay();
    if (queryIsOpen())
        applyIdColumnVisibility();
}

void TfmMain::ActionExportExecute() {
    if (m_grid)
        interchange::ui::ExportAssetsWithDialog(this, StatusBar, ASSETS.connection(), *m_grid);
}

void TfmMain::ActionExportAssetTypesExecute() {
    interchange::ui::ExportAssetTypesWithDialog(this, StatusBar, ASSETS.connection());
}

void TfmMain::ActionSaveHtmlExecute() {
    if (m_grid)
        interchange::ui::SaveGridAsHtml(this, *m_grid->Grid());
}

void TfmMain::setAboutForm(TAboutForm* aboutForm) {
    m_aboutForm = aboutForm;
}

void TfmMain::ActionAboutExecute() {
    if (m_aboutForm)
        m_aboutForm->exec();
}

} // namespace ui
