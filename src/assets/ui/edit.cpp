#include "assets/ui/edit.h"

#include "assets/recorddefaults.h"
#include "assets/typeflags.h"
#include "assets/ui/dbcontrols.h"
#include "assets/ui/generaltab.h"
#include "assets/ui/purchasetab.h"
#include "assets/ui/relnode.h"
#include "assets/ui/userfields.h"
#include "assets/ui/warrantytab.h"
#include "core/commands.h"
#include "core/ui/messages.h"
#include "translation/translate.h"

#include <QAction>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <stdexcept>

namespace ui {

using assets::TableDataSet;
using translation::Translate;

namespace {

// A label that reports clicks, for "Asset type:".
class ClickableLabel : public QLabel {
public:
    ClickableLabel(const QString& text, std::function<void()> onClick, QWidget* parent)
        : QLabel(text, parent), m_onClick(std::move(onClick)) {
        setCursor(Qt::PointingHandCursor);
    }

protected:
    void mouseReleaseEvent(QMouseEvent* event) override {
        QLabel::mouseReleaseEvent(event);
        if (event->button() == Qt::LeftButton)
            m_onClick();
    }

private:
    std::function<void()> m_onClick;
};

} // namespace

TEditForm::TEditForm(db::odbc::Connection& connection, core::CommandTarget& mainWindow,
                     QWidget* parent)
    : QWidget(parent), m_mainWindow(mainWindow), m_connection(connection),
      ASSETSTable(connection, QStringLiteral("ASSETS")),
      AssetTypesTable(connection, QStringLiteral("ASSETTYPES"), QStringLiteral("ASSETTYPE")) {
    setObjectName(QStringLiteral("EditForm"));
    setWindowTitle(Translate(QStringLiteral("Asset Tabs")));
    setProperty("helpContext", 100);
    ASSETSTable.setFilter(QStringLiteral("ID = 0"));
    EditDataSource = new TDataSource(ASSETSTable, this);
    EditDataSource->setObjectName(QStringLiteral("EditDataSource"));
    createControls();
    connectEvents();
}

TEditForm::~TEditForm() = default;

void TEditForm::createControls() {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);

    pActionPanel = new QWidget(this);
    pActionPanel->setObjectName(QStringLiteral("pActionPanel"));
    auto* actionLayout = new QHBoxLayout(pActionPanel);
    actionLayout->setContentsMargins(3, 0, 3, 0);
    pActionToolBar = new QToolBar(pActionPanel);
    pActionToolBar->setObjectName(QStringLiteral("pActionToolBar"));
    // Actions of the editor that have no work of their own stay disabled.
    const auto inert = [this](const char* name, const QString& caption, const QString& hint,
                              const QKeySequence& shortcut) {
        auto* action = new QAction(Translate(caption), this);
        action->setObjectName(QLatin1String(name));
        action->setToolTip(Translate(hint));
        action->setShortcut(shortcut);
        action->setEnabled(false);
        return action;
    };
    inert("ItemAdd", QStringLiteral("Add"), QStringLiteral("Add new Record"), Qt::Key_Insert);
    inert("ItemDelete", QStringLiteral("Delete"), QStringLiteral("Delete current record"),
          QKeySequence(Qt::CTRL | Qt::Key_Delete));
    inert("ItemSet", QStringLiteral("Set"), QStringLiteral("Post record changes into database"),
          {});
    inert("ItemCommit", QStringLiteral("Commit"), QStringLiteral("Commit changes"), {});
    inert("ItemRollback", QStringLiteral("Rollback"), QStringLiteral("Undo changes"),
          QKeySequence(Qt::ALT | Qt::Key_Backspace));
    ItemClear = new QAction(Translate(QStringLiteral("&Clear Data")), this);
    ItemClear->setObjectName(QStringLiteral("ItemClear"));
    ItemClear->setToolTip(Translate(QStringLiteral("Clears current tab")));
    connect(ItemClear, &QAction::triggered, this, &TEditForm::ItemClearExecute);
    actionLayout->addWidget(pActionToolBar);

    DBNavigator1 = new TDBNavigator(EditDataSource, pActionPanel);
    connect(DBNavigator1, &TDBNavigator::refreshRequested, this,
            [this] { ShowRecord(m_currentId); });
    connect(DBNavigator1, &TDBNavigator::failed, this, &TEditForm::showError);
    actionLayout->addWidget(DBNavigator1);
    BtnClear = new QToolButton(pActionPanel);
    BtnClear->setObjectName(QStringLiteral("BtnClear"));
    BtnClear->setAutoRaise(true);
    BtnClear->setDefaultAction(ItemClear);
    actionLayout->addWidget(BtnClear);
    actionLayout->addStretch();
    layout->addWidget(pActionPanel);

    pnAssetType = new QWidget(this);
    pnAssetType->setObjectName(QStringLiteral("pnAssetType"));
    auto* typeLayout = new QHBoxLayout(pnAssetType);
    typeLayout->setContentsMargins(3, 0, 3, 0);
    LabelAssetType = new ClickableLabel(
        Translate(QStringLiteral("Asset type:")), [this] { LabelAssetTypeClick(); }, pnAssetType);
    LabelAssetType->setObjectName(QStringLiteral("LabelAssetType"));
    LabelAssetType->setToolTip(Translate(QStringLiteral("Click to select Asset Type")));
    DBAssetTitle = new TDBText(EditDataSource, QStringLiteral("ASSETTYPE"), pnAssetType);
    DBAssetTitle->setObjectName(QStringLiteral("DBAssetTitle"));
    QFont bold = DBAssetTitle->font();
    bold.setBold(true);
    DBAssetTitle->setFont(bold);
    typeLayout->addWidget(LabelAssetType);
    typeLayout->addWidget(DBAssetTitle, 1);
    layout->addWidget(pnAssetType);

    auto* bevel = new QFrame(this);
    bevel->setObjectName(QStringLiteral("Bevel1"));
    bevel->setFrameShape(QFrame::HLine);
    bevel->setFrameShadow(QFrame::Sunken);
    layout->addWidget(bevel);

    EditPages = new QTabWidget(this);
    EditPages->setObjectName(QStringLiteral("EditPages"));
    m_general = new TGeneralTabForm(EditDataSource, EditPages);
    m_relatedNode = new TRelatedNodeTabForm(
        EditDataSource, m_connection,
        [this] { return TypeFlag(QStringLiteral("NODEREQUIRED"), false); }, EditPages);
    m_purchase = new TPurchaseTabForm(EditDataSource, EditPages);
    m_warranty = new TWarrantyTabForm(EditDataSource, EditPages);
    m_userFields = new TUserFieldsForm(EditDataSource, EditPages);
    const struct {
        TEditTab* form;
        const char* name;
        const char* caption;
    } pages[] = {{m_general, "tsGeneral", "General"},
                 {m_relatedNode, "tsRelatedNode", "Related Node"},
                 {m_purchase, "tsPurchase", "Purchase"},
                 {m_warranty, "tsWarranty", "Warranty/Maintenance"},
                 {m_userFields, "tsExtensions", "User-Extensions"}};
    for (const auto& page : pages) {
        auto* sheet = new QWidget(EditPages);
        sheet->setObjectName(QLatin1String(page.name));
        auto* sheetLayout = new QVBoxLayout(sheet);
        sheetLayout->setContentsMargins(0, 0, 0, 0);
        sheetLayout->addWidget(page.form);
        EditPages->addTab(sheet, Translate(QLatin1String(page.caption)));
        m_tabs.push_back(page.form);
    }
    EditPages->setCurrentIndex(0);
    layout->addWidget(EditPages, 1);

    connect(EditDataSource, &TDataSource::stateChanged, this, &TEditForm::ItemClearUpdate);
    ItemClearUpdate();
}

void TEditForm::connectEvents() {
    ASSETSTable.events.beforeInsert = [this] { m_inserting = true; };
    ASSETSTable.events.afterInsert = [this] { AfterInsert(); };
    ASSETSTable.events.afterPost = [this] { AfterPost(); };
    ASSETSTable.events.afterCancel = [this] { AfterCancel(); };
    ASSETSTable.events.afterDelete = [this] { AfterDelete(); };
    EditDataSource->SetValidation([this] {
        QString error;
        if (!Validate(error))
            throw std::runtime_error(error.toStdString());
    });
}

void TEditForm::SetShowNavigator(bool show) {
    m_showNavigator = show;
    DBNavigator1->setVisible(show);
}

void TEditForm::ShowRecord(const QString& id) {
    // A record being edited is written (or dropped when unchanged) before another shows; a
    // record that may not be written stays.
    const TableDataSet::State state = ASSETSTable.state();
    if (state == TableDataSet::State::Edit || state == TableDataSet::State::Insert) {
        try {
            if (EditDataSource->Modified())
                Post();
            else
                Cancel();
        } catch (const std::exception& error) {
            showError(QString::fromUtf8(error.what()));
            return;
        }
    }
    m_currentId = id;
    if (id.isEmpty()) {
        CloseTables();
    } else {
        if (!ASSETSTable.isOpen())
            OpenTables();
        ASSETSTable.setFilter(QStringLiteral("ID = ") + id);
        ASSETSTable.open();
        const QString type = ASSETSTable.isEmpty()
                                 ? QStringLiteral(" ")
                                 : ASSETSTable.asText(QStringLiteral("ASSETTYPE"));
        filterAssetTypes(type);
    }
    EditDataSource->DataChanged();
    UpdateTabVisibility();
}

void TEditForm::filterAssetTypes(const QString& type) {
    AssetTypesTable.setFilter(QStringLiteral("ASSETTYPE = '") + type + QLatin1Char('\''));
    AssetTypesTable.open();
}

void TEditForm::OpenTables() {
    if (!m_currentId.isEmpty()) {
        ASSETSTable.open();
        AssetTypesTable.open();
        for (TEditTab* tab : m_tabs)
            tab->OpenTab();
    }
    m_inserting = false;
    EditDataSource->DataChanged();
}

void TEditForm::CloseTables() {
    m_currentId.clear();
    for (TEditTab* tab : m_tabs)
        tab->CloseTab();
    AssetTypesTable.close();
    ASSETSTable.close();
    EditDataSource->DataChanged();
}

bool TEditForm::TypeFlag(const QString& column, bool defaultValue) const {
    if (!AssetTypesTable.isOpen() || AssetTypesTable.isEmpty() || !AssetTypesTable.hasField(column))
        return defaultValue;
    return assets::TypeFlagIsTrue(AssetTypesTable.asText(column), defaultValue);
}

void TEditForm::UpdateTabVisibility() {
    const struct {
        const char* flag;
        bool defaultValue;
    } flags[] = {{"SHOW_GENERAL_TAB", true},
                 {"NODEREQUIRED", false},
                 {"SHOW_PURCHASE_TAB", true},
                 {"SHOW_WARRANTY_TAB", true},
                 {"SHOW_USEREXT_TAB", true}};
    for (int page = 0; page < EditPages->count(); ++page)
        EditPages->setTabVisible(
            page, TypeFlag(QLatin1String(flags[page].flag), flags[page].defaultValue));
}

void TEditForm::Append() {
    EditDataSource->Append();
}

void TEditForm::AfterInsert() {
    try {
        assets::ApplyNewRecordDefaults(ASSETSTable, assets::ReadNewRecordDefaults());
        if (m_askTypeOnInsert)
            ChooseAssetType();
    } catch (const std::exception& error) {
        ShowMessage(this, QMessageBox::Critical, Translate(QStringLiteral("Error")),
                    QString::fromUtf8(error.what()));
        ASSETSTable.cancel();
    }
}

void TEditForm::ChooseAssetType() {
    const std::optional<QString> type = m_typeChooser ? m_typeChooser() : std::nullopt;
    if (!type || type->isEmpty())
        throw std::runtime_error(
            Translate(QStringLiteral("ASSET TYPE must be selected.")).toStdString());
    ASSETSTable.setAsText(QStringLiteral("ASSETTYPE"), *type);
    AssetTypesTable.close();
    filterAssetTypes(*type);
    UpdateTabVisibility();
    EditDataSource->DataChanged();
}

void TEditForm::LabelAssetTypeClick() {
    if (!m_inserting)
        return;
    try {
        ChooseAssetType();
    } catch (const std::exception& error) {
        showError(QString::fromUtf8(error.what()));
    }
}

bool TEditForm::Validate(QString& error) {
    error = Translate(QStringLiteral("Data validation failed!"));
    if (!ASSETSTable.hasField(QStringLiteral("ASSETTYPE")) ||
        ASSETSTable.isNull(QStringLiteral("ASSETTYPE"))) {
        error = Translate(QStringLiteral("ASSET TYPE field cannot be empty."));
        return false;
    }
    for (size_t page = 0; page < m_tabs.size(); ++page) {
        if (!m_tabs[page]->ValidateTab(error)) {
            EditPages->setCurrentIndex(int(page));
            return false;
        }
    }
    return true;
}

void TEditForm::Post() {
    EditDataSource->Post();
}

void TEditForm::Cancel() {
    EditDataSource->Cancel();
}

void TEditForm::AfterPost() {
    const bool inserted = m_inserting;
    if (inserted)
        ASSETSTable.close();
    m_inserting = false;
    m_mainWindow.DispatchCommand(core::CMD_REQUERY, inserted ? 1 : 0);
}

void TEditForm::AfterCancel() {
    m_inserting = false;
    m_mainWindow.DispatchCommand(core::CMD_REQUERY, 0);
}

void TEditForm::AfterDelete() {
    m_currentId.clear();
    m_inserting = false;
    m_mainWindow.DispatchCommand(core::CMD_REQUERY, 1);
}

void TEditForm::ItemClearUpdate() {
    const TableDataSet::State state = ASSETSTable.state();
    ItemClear->setEnabled(state == TableDataSet::State::Edit ||
                          state == TableDataSet::State::Insert);
}

void TEditForm::ItemClearExecute() {
    const int page = EditPages->currentIndex();
    if (page < 0 || page >= EditPages->count()) {
        ShowMessage(this, QMessageBox::NoIcon, Translate(QStringLiteral("Error")),
                    Translate(QStringLiteral("No Active Page has been selected")));
        return;
    }
    m_tabs[size_t(page)]->ClearTab();
}

void TEditForm::showError(const QString& message) {
    ShowError(this, Translate(QStringLiteral("Error")), message);
}

} // namespace ui
