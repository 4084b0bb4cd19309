#include "core/ui/main.h"

#include "assets/resultmodel.h"
#include "core/commandline.h"
#include "core/log.h"
#include "core/registry.h"
#include "core/ui/about.h"
#include "core/ui/messages.h"
#include "db/query.h"
#include "db/ui/details.h"
#include "translation/translate.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QScreen>
#include <QStatusBar>
#include <QTableView>
#include <QVBoxLayout>

#include <stdexcept>

namespace ui {

using translation::Translate;

namespace {

const char* const StartBanner = "....................  Program started  ....................";
const char* const EndBanner = "                     Program terminated                     ";

// Restores the normal cursor on every way out of a long operation.
class HourglassCursor {
public:
    HourglassCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~HourglassCursor() { QApplication::restoreOverrideCursor(); }
    HourglassCursor(const HourglassCursor&) = delete;
    HourglassCursor& operator=(const HourglassCursor&) = delete;
};

// Logging inside an error handler must not raise a second error.
void logQuietly(const QString& message) {
    try {
        core::LogLine(message);
    } catch (const std::exception&) {
    }
}

QString readLastConnection(const char* valueName, const QString& current) {
    QString value;
    if (core::ReadRegistryString(QLatin1String(core::LastConnectionKey), QLatin1String(valueName),
                                 value, core::LastConnectionBufferLength, std::nullopt))
        return value;
    return current;
}

} // namespace

// The start-up locals: what the command line asks of this run beyond the connection.
struct TfmMain::StartupOptions {
    bool create = false;
    QString tableDefinitionPath = QStringLiteral("table.def");
    QString assetTypeFile;
    QString delimiter = QStringLiteral(";");
    int startRow = 1;
};

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

    createActions();
    FormCreate(rawCommandLine);
}

TfmMain::~TfmMain() { logQuietly(QLatin1String(EndBanner)); }

void TfmMain::createActions() {
    ExitAction = new QAction(Translate(QStringLiteral("E&xit")), this);
    ExitAction->setObjectName(QStringLiteral("ExitAction"));
    connect(ExitAction, &QAction::triggered, this, &TfmMain::ExitActionExecute);

    ActionExecute = new QAction(Translate(QStringLiteral("E&xecute SQL")), this);
    ActionExecute->setObjectName(QStringLiteral("ActionExecute"));
    ActionExecute->setStatusTip(Translate(QStringLiteral("Execute Query")));
    ActionExecute->setToolTip(ActionExecute->statusTip());
    ActionExecute->setShortcut(Qt::Key_F5);
    connect(ActionExecute, &QAction::triggered, this, &TfmMain::ActionExecuteExecute);

    ViewDetails = new QAction(Translate(QStringLiteral("&Details")), this);
    ViewDetails->setObjectName(QStringLiteral("ViewDetails"));
    ViewDetails->setStatusTip(Translate(QStringLiteral("Details of current Connection & Query")));
    connect(ViewDetails, &QAction::triggered, this, &TfmMain::ViewDetailsExecute);

    ActionAbout = new QAction(Translate(QStringLiteral("&About...")), this);
    ActionAbout->setObjectName(QStringLiteral("ActionAbout"));
    connect(ActionAbout, &QAction::triggered, this, &TfmMain::ActionAboutExecute);

    QMenu* file = menuBar()->addMenu(Translate(QStringLiteral("&File")));
    file->addAction(ExitAction);
    QMenu* query = menuBar()->addMenu(Translate(QStringLiteral("&Query")));
    query->addAction(ActionExecute);
    QMenu* view = menuBar()->addMenu(Translate(QStringLiteral("&View")));
    view->addAction(ViewDetails);
    QMenu* help = menuBar()->addMenu(Translate(QStringLiteral("&Help")));
    help->addAction(ActionAbout);
    updateActions();
}

void TfmMain::FormCreate(const QString& rawCommandLine) {
    try {
        runStartupSteps(rawCommandLine);
    } catch (const std::exception& error) {
        reportError(QString::fromLocal8Bit(error.what()));
    }
    if (m_noGui)
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

void TfmMain::runStartupSteps(const QString& rawCommandLine) {
    StartupOptions options;
    applyCommandLine(rawCommandLine, options);
    core::LogLine(StartBanner);
    if (m_noGui)
        setAttribute(Qt::WA_DontShowOnScreen);
    else
        createGridPanel();
    if (!m_dataSourceName.isEmpty()) {
        connectDatabase();
        importAssetTypes(options);
    } else {
        core::LogLine("no Data Source specified.");
    }
    RunQuery();
}

void TfmMain::applyCommandLine(const QString& rawCommandLine, StartupOptions& options) {
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
    options.create = values.create;
    options.tableDefinitionPath = values.tableDefinitionPath;
    options.assetTypeFile = values.assetTypeFile;
    options.delimiter = values.delimiter;
    options.startRow = values.startRow;
    if (values.logFilePath && !core::SetLogFilePath(*values.logFilePath))
        throw std::runtime_error(
            Translate(QStringLiteral("The log file path is longer than 255 characters."))
                .toStdString());
    updateActions();
}

void TfmMain::createGridPanel() {
    pnGrid = new QWidget(Grid_Edit);
    pnGrid->setObjectName(QStringLiteral("pnGrid"));
    auto* layout = new QVBoxLayout(pnGrid);
    layout->setContentsMargins(0, 0, 0, 0);
    m_resultModel = new assets::QueryResultModel(this);
    m_resultView = new QTableView(pnGrid);
    m_resultView->setObjectName(QStringLiteral("DBGrid"));
    m_resultView->setModel(m_resultModel);
    m_resultView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_resultView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_resultView->verticalHeader()->setDefaultSectionSize(
        m_resultView->fontMetrics().height() + 4);
    layout->addWidget(m_resultView);
    Grid_Edit->layout()->addWidget(pnGrid);
}

void TfmMain::connectDatabase() {
    HourglassCursor hourglass;
    ASSETS.connect(m_password, m_userName, m_dataSourceName, m_databaseType);
}

void TfmMain::importAssetTypes(const StartupOptions& options) {
    if (options.assetTypeFile.isEmpty())
        return;
    throw std::runtime_error(
        Translate(QStringLiteral("Asset type import is not available in this version."))
            .toStdString());
}

void TfmMain::RunQuery() {
    const QString oldDataSource = m_dataSourceName;
    const QString oldUser = m_userName;
    const QString oldPassword = m_password;
    copyDetailsIntoFields();
    if (m_dataSourceName.isEmpty() || m_sqlText.isEmpty()) {
        if (!m_details && !m_noGui)
            showDetailsFromLastConnection();
        return;
    }
    HourglassCursor hourglass;
    try {
        if (m_dataSourceName != oldDataSource || m_userName != oldUser ||
            m_password != oldPassword || !ASSETS.isOpen())
            ASSETS.connect(m_password, m_userName, m_dataSourceName, m_databaseType);
        openQuery();
    } catch (const std::exception& error) {
        reportError(QString::fromLocal8Bit(error.what()));
    }
}

void TfmMain::openQuery() {
    if (m_resultModel)
        m_resultModel->clear();
    db::QueryResult result = db::OpenQuery(ASSETS.connection(), m_sqlText);
    const qsizetype recordCount = static_cast<qsizetype>(result.rows.size());
    if (m_resultModel)
        m_resultModel->setResult(std::move(result));
    SetStatusText(Translate(QStringLiteral("There are $RECORDCOUNT$ record(s) in the dataset"), 0,
                            {{QStringLiteral("$RECORDCOUNT$"), QString::number(recordCount)}}));
    const QString key = QLatin1String(core::LastConnectionKey);
    core::WriteRegistryString(key, QStringLiteral("DSN"), m_dataSourceName);
    core::WriteRegistryString(key, QStringLiteral("UserName"), m_userName);
    core::WriteRegistryString(key, QStringLiteral("SQL"), m_sqlText);
}

void TfmMain::showDetailsFromLastConnection() {
    m_details = new TDetailsForm(ActionExecute, this);
    addDockWidget(Qt::BottomDockWidgetArea, m_details);
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
    logQuietly(message);
    ShowError(this, Translate(QStringLiteral("Error")), message);
}

void TfmMain::updateActions() {
    ActionExecute->setEnabled(!m_dataSourceName.isEmpty() && !m_sqlText.isEmpty());
    const bool detailsShown = m_details && m_details->isVisible();
    ViewDetails->setText(Translate(detailsShown ? QStringLiteral("Hide &Details")
                                                : QStringLiteral("&Details")));
}

QString TfmMain::statusText() const { return StatusBar->text(); }

void TfmMain::SetStatusText(const QString& text) { StatusBar->setText(text); }

void TfmMain::closeEvent(QCloseEvent* event) { event->accept(); }

void TfmMain::ExitActionExecute() { close(); }

void TfmMain::ActionExecuteExecute() { RunQuery(); }

void TfmMain::ViewDetailsExecute() {
    if (!m_details)
        showDetailsFromLastConnection();
    else
        m_details->setVisible(!m_details->isVisible());
    updateActions();
}

void TfmMain::setAboutForm(TAboutForm* aboutForm) { m_aboutForm = aboutForm; }

void TfmMain::ActionAboutExecute() {
    if (m_aboutForm)
        m_aboutForm->exec();
}

} // namespace ui
