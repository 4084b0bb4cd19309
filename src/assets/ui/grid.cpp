#include "assets/ui/grid.h"

#include "assets/dataset.h"
#include "assets/gridlayout.h"
#include "assets/removal.h"
#include "assets/resulttablemodel.h"
#include "assets/rowstext.h"
#include "assets/sorttext.h"
#include "assets/ui/dbgridrange.h"
#include "assets/ui/deleteform.h"
#include "core/commands.h"
#include "core/log.h"
#include "core/registry.h"
#include "core/ui/messages.h"
#include "db/odbc/odbc.h"
#include "translation/translate.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFrame>
#include <QHeaderView>
#include <QMenu>
#include <QProgressDialog>
#include <QScopeGuard>
#include <QToolButton>
#include <QVBoxLayout>

#include <exception>
#include <memory>
#include <set>

namespace ui {

namespace {

constexpr int BevelHeight = 8;
constexpr int ButtonPanelHeight = 33;
constexpr int ButtonWidth = 128;
constexpr int ButtonHeight = 25;
constexpr int ButtonTop = 1;

// Every status text the grid produces is kept here before it is sent, so that a later
// release with nothing new to say sends it again. It lives as long as the program.
QString& lastStatusText() {
    static QString text;
    return text;
}

QString layoutKey() {
    return QString::fromLatin1(assets::GridLayoutKey);
}

} // namespace

TGridForm::TGridForm(core::CommandTarget& mainWindow, const GridActions& actions, QWidget* parent)
    : QWidget(parent), m_mainWindow(mainWindow) {
    setObjectName(QStringLiteral("GridForm"));
    setWindowTitle(translation::Translate(QStringLiteral("GridForm")));
    resize(667, 453);

    auto* formLayout = new QVBoxLayout(this);
    formLayout->setContentsMargins(0, 0, 0, 0);
    PanelGrid = new QWidget(this);
    PanelGrid->setObjectName(QStringLiteral("PanelGrid"));
    formLayout->addWidget(PanelGrid);

    auto* panelLayout = new QVBoxLayout(PanelGrid);
    panelLayout->setContentsMargins(0, 0, 0, 0);
    panelLayout->setSpacing(0);

    Bevel1 = new QFrame(PanelGrid);
    Bevel1->setObjectName(QStringLiteral("Bevel1"));
    Bevel1->setFrameShape(QFrame::HLine);
    Bevel1->setFrameShadow(QFrame::Sunken);
    Bevel1->setFixedHeight(BevelHeight);
    panelLayout->addWidget(Bevel1);

    pnButtons = new QWidget(PanelGrid);
    pnButtons->setObjectName(QStringLiteral("pnButtons"));
    pnButtons->setFixedHeight(ButtonPanelHeight);
    panelLayout->addWidget(pnButtons);

    const auto makeButton = [this](const char* name, int left, QAction* action) {
        auto* button = new QToolButton(pnButtons);
        button->setObjectName(QString::fromLatin1(name));
        button->setAutoRaise(true);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setGeometry(left, ButtonTop, ButtonWidth, ButtonHeight);
        // Caption, enabled state and hint follow the action.
        if (action)
            button->setDefaultAction(action);
        else
            button->setEnabled(false);
        return button;
    };
    BtnAdd = makeButton("BtnAdd", 1, actions.ActionAddRow);
    BtnDelete = makeButton("BtnDelete", 135, actions.ActionDelete);
    SpeedButton1 = makeButton("SpeedButton1", 268, actions.ActionAddColumn);
    BtnEdit = makeButton("BtnEdit", 402, actions.ViewEditForm);
    BtnDetails = makeButton("BtnDetails", 535, actions.ViewDetails);

    DBGrid = new TDBGridRange(PanelGrid);
    DBGrid->setObjectName(QStringLiteral("DBGrid"));
    panelLayout->addWidget(DBGrid, 1);

    ActionCopy = new QAction(translation::Translate(QStringLiteral("&Copy")), DBGrid);
    ActionCopy->setObjectName(QStringLiteral("ActionCopy"));
    ActionCopy->setShortcut(QKeySequence::Copy);
    ActionCopy->setShortcutContext(Qt::WidgetShortcut);
    DBGrid->addAction(ActionCopy);
    connect(ActionCopy, &QAction::triggered, this, &TGridForm::ActionCopyExecute);

    QHeaderView* titles = DBGrid->horizontalHeader();
    titles->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(titles, &QWidget::customContextMenuRequested, this, [this, titles](const QPoint& at) {
        CreateHeaderMenu()->popup(titles->mapToGlobal(at));
    });

    connect(DBGrid, &TDBGridRange::titleClicked, this, &TGridForm::DBGridTitleClick);
    connect(DBGrid, &TDBGridRange::keyReleased, this, &TGridForm::DBGridKeyUp);
    connect(DBGrid, &TDBGridRange::mouseReleased, this, &TGridForm::DBGridMouseUp);
    connect(DBGrid, &TDBGridRange::dblClicked, this, &TGridForm::DBGridDblClick);
}

TGridForm::~TGridForm() = default;

void TGridForm::SetModel(QAbstractItemModel* model) {
    DBGrid->setModel(model);
}

void TGridForm::DBGridTitleClick(int column) {
    assets::QueryDataSet* dataSet = DBGrid->DataSet();
    if (!dataSet)
        return;
    DBGrid->ClearSelection();
    const QString fieldName = DBGrid->ColumnFieldName(column);
    dataSet->setSortText(assets::NextSortText(dataSet->sortText(), fieldName));
    DBGrid->ShowSortIndicator();
    m_mainWindow.DispatchCommand(core::CMD_SYNC_EDITOR, 0);
}

void TGridForm::DBGridKeyUp() {
    UpdateStatusText();
}

void TGridForm::DBGridMouseUp() {
    UpdateStatusText();
}

void TGridForm::DBGridDblClick() {
    m_mainWindow.DispatchCommand(core::CMD_OPEN_EDITOR, 0);
}

void TGridForm::UpdateStatusText() {
    using translation::Translate;
    if (const assets::QueryDataSet* dataSet = DBGrid->DataSet()) {
        const int selected = DBGrid->SelectedRowCount();
        if (selected > 0) {
            lastStatusText() =
                Translate(QStringLiteral("There are $RECORDCOUNT$ records selected"), 0,
                          {{QStringLiteral("$RECORDCOUNT$"), QString::number(selected)}});
        } else if (dataSet->isOpen()) {
            lastStatusText() = Translate(
                QStringLiteral("There are $RECORDCOUNT$ record(s) in the dataset"), 0,
                {{QStringLiteral("$RECORDCOUNT$"), QString::number(dataSet->recordCount())}});
        }
    }
    if (!lastStatusText().isEmpty())
        m_mainWindow.DispatchCommand(core::CMD_STATUS_TEXT, lastStatusText());
}

std::vector<int> TGridForm::SelectedRowsInSelectionOrder() const {
    return DBGrid->SelectedRowsInSelectionOrder();
}

void TGridForm::DeleteSelectedRecords(db::odbc::Connection& connection) {
    using translation::Translate;
    bool removeAll = false;
    {
        TDelForm form(this);
        if (form.exec() != QDialog::Accepted)
            return;
        removeAll = form.RemoveAll();
    }
    long long deleted = 0;
    try {
        const QString statement =
            assets::RemovalStatement(dynamic_cast<const assets::ResultTableModel*>(DBGrid->model()),
                                     removeAll, SelectedRowsInSelectionOrder());
        DBGrid->setUpdatesEnabled(false);
        const auto enableGrid = qScopeGuard([this] { DBGrid->setUpdatesEnabled(true); });
        m_deleteQuery = statement;
        deleted = connection.execute(m_deleteQuery);
    } catch (const std::exception& error) {
        const QString message = QString::fromUtf8(error.what());
        if (!dynamic_cast<const assets::RemovalError*>(&error))
            core::LogLineQuietly(message);
        ShowMessage(this, QMessageBox::Warning, Translate(QStringLiteral("Error")), message);
        return;
    }
    lastStatusText() = Translate(QStringLiteral("$RECORDCOUNT$ record(s) have been deleted"), 0,
                                 {{QStringLiteral("$RECORDCOUNT$"), QString::number(deleted)}});
    m_mainWindow.DispatchCommand(core::CMD_REQUERY, 1);
    m_mainWindow.DispatchCommand(core::CMD_STATUS_TEXT, lastStatusText());
}

void TGridForm::SaveLayout() {
    try {
        std::vector<std::pair<QString, QString>> values;
        for (int column = 0; column < DBGrid->ColumnCount(); ++column)
            values.emplace_back(DBGrid->ColumnFieldName(column),
                                assets::FormatColumnLayout(DBGrid->ColumnVisible(column),
                                                           DBGrid->ColumnWidth(column)));
        // One write for all columns: the store is written to disk once.
        if (!values.empty() && !core::WriteRegistryStrings(layoutKey(), values))
            QApplication::beep();
    } catch (const std::exception&) {
        QApplication::beep();
    }
}

void TGridForm::FitColumnsToRows() {
    if (!DBGrid->model())
        return;
    DBGrid->resizeColumnsToContents();
    const int widest = DBGrid->fontMetrics().horizontalAdvance(QLatin1Char('x')) * 30;
    for (int column = 0; column < DBGrid->model()->columnCount(); ++column)
        DBGrid->setColumnWidth(column, qMin(DBGrid->columnWidth(column), widest));
}

void TGridForm::LoadLayout() {
    try {
        for (int column = 0; column < DBGrid->ColumnCount(); ++column) {
            QString buffer;
            if (!core::ReadRegistryString(layoutKey(), DBGrid->ColumnFieldName(column), buffer,
                                          assets::GridLayoutBufferLength, std::nullopt))
                continue;
            const assets::ColumnLayout layout = assets::ParseColumnLayout(buffer);
            if (!layout.hasComma)
                continue;
            if (layout.visible)
                DBGrid->SetColumnVisible(column, *layout.visible);
            if (!layout.isValid()) {
                QApplication::beep();
                return;
            }
            if (layout.appliesWidth())
                DBGrid->SetColumnWidth(column, *layout.width);
        }
    } catch (const std::exception&) {
        QApplication::beep();
    }
}

std::vector<int> TGridForm::shownColumns() const {
    std::vector<int> columns;
    const QHeaderView* titles = DBGrid->horizontalHeader();
    for (int visual = 0; visual < titles->count(); ++visual) {
        const int column = titles->logicalIndex(visual);
        if (DBGrid->ColumnVisible(column))
            columns.push_back(column);
    }
    return columns;
}

void TGridForm::ActionCopyExecute() {
    if (!DBGrid->model())
        return;
    const std::vector<int> rows = DBGrid->SelectedRows();
    if (!rows.empty()) {
        copyRows(rows);
        return;
    }
    const QModelIndex current = DBGrid->currentIndex();
    if (current.isValid())
        QGuiApplication::clipboard()->setText(current.data(Qt::EditRole).toString());
}

void TGridForm::copyRows(const std::vector<int>& rows) {
    using translation::Translate;
    // Large selections take seconds: they show their progress and can be stopped.
    constexpr size_t QuietRows = 20000;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const auto restoreCursor = qScopeGuard([] { QApplication::restoreOverrideCursor(); });
    std::unique_ptr<QProgressDialog> progress;
    if (rows.size() > QuietRows) {
        progress = std::make_unique<QProgressDialog>(
            Translate(QStringLiteral("Copying the selected rows...")),
            Translate(QStringLiteral("Cancel")), 0, int(rows.size()), this);
        progress->setObjectName(QStringLiteral("CopyProgress"));
        progress->setWindowModality(Qt::WindowModal);
        progress->setMinimumDuration(0);
    }
    const QString text =
        assets::RowsAsText(*DBGrid->model(), rows, shownColumns(), [&](qsizetype done) {
            if (!progress)
                return true;
            progress->setValue(int(done));
            return !progress->wasCanceled();
        });
    if (!text.isEmpty())
        QGuiApplication::clipboard()->setText(text);
}

QMenu* TGridForm::CreateHeaderMenu() {
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("HeaderMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const std::vector<int> shown = shownColumns();
    for (int column = 0; column < DBGrid->ColumnCount(); ++column) {
        QAction* item = menu->addAction(DBGrid->ColumnFieldName(column));
        item->setCheckable(true);
        item->setChecked(DBGrid->ColumnVisible(column));
        // The last column shown stays: a grid without columns cannot be reached again.
        item->setEnabled(!(shown.size() == 1 && shown.front() == column));
        connect(item, &QAction::toggled, this,
                [this, column](bool visible) { DBGrid->SetColumnVisible(column, visible); });
    }
    menu->addSeparator();
    QAction* reset = menu->addAction(translation::Translate(QStringLiteral("&Reset Layout")));
    reset->setObjectName(QStringLiteral("ActionResetLayout"));
    connect(reset, &QAction::triggered, this, &TGridForm::ResetLayout);
    return menu;
}

void TGridForm::ResetLayout() {
    for (int column = 0; column < DBGrid->ColumnCount(); ++column)
        DBGrid->SetColumnVisible(column, true);
    FitColumnsToRows();
}

void TGridForm::SetColumnVisibility(int index, bool hidden) {
    const int count = DBGrid->ColumnCount();
    if (count == 0 || index >= count)
        return;
    if (index < 0) {
        // No such column: a failure like any other of the layout.
        QApplication::beep();
        return;
    }
    DBGrid->SetColumnVisible(index, !hidden);
}

} // namespace ui
