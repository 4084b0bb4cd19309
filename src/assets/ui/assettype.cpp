#include "assets/ui/assettype.h"

#include "assets/ui/dbcontrols.h"
#include "core/ui/dialogbuttons.h"
#include "core/ui/messages.h"
#include "translation/translate.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>

namespace ui {

using translation::Translate;

TAssetTypeForm::TAssetTypeForm(db::odbc::Connection& connection, QWidget* parent)
    : QDialog(parent),
      TypesTable(connection, QStringLiteral("ASSETTYPES"), QStringLiteral("ASSETTYPE")) {
    setObjectName(QStringLiteral("AssetTypeForm"));
    setWindowTitle(Translate(QStringLiteral("New Asset Type")));
    setProperty("helpContext", HelpContext);
    TypesDS = new TDataSource(TypesTable, this);
    TypesDS->setObjectName(QStringLiteral("TypesDS"));
    TypesDS->SetAutoEdit(false);
    createControls();
}

TAssetTypeForm::~TAssetTypeForm() = default;

void TAssetTypeForm::createControls() {
    Label1 = new QLabel(Translate(QStringLiteral("Asset Type:")), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    DB_Name = new TDBEdit(TypesDS, QStringLiteral("ASSETTYPE"), this);
    DB_Name->setObjectName(QStringLiteral("DB_Name"));
    DB_Name->setToolTip(Translate(QStringLiteral("Name of the asset/equipment type.")));
    Label1->setBuddy(DB_Name);
    Label2 = new QLabel(Translate(QStringLiteral("Fields that control whether we prompt for each "
                                                 "group of information against this item:")),
                        this);
    Label2->setObjectName(QStringLiteral("Label2"));
    Label2->setWordWrap(true);

    const auto flag = [this](const char* name, const char* field, const char* caption) {
        auto* box =
            new TDBCheckBox(TypesDS, QLatin1String(field), Translate(QLatin1String(caption)), this);
        box->setObjectName(QLatin1String(name));
        return box;
    };
    DB_Node = flag("DB_Node", "NODEREQUIRED", "Node &Required");
    DB_Node->setToolTip(
        Translate(QStringLiteral("Flag that this asset type always relates to a PC node.")));
    DB_GeneralTab = flag("DB_GeneralTab", "SHOW_GENERAL_TAB", "Show &General tab");
    DB_Purchase = flag("DB_Purchase", "SHOW_PURCHASE_TAB", "Show &Purchase tab");
    DB_Warranty = flag("DB_Warranty", "SHOW_WARRANTY_TAB", "Show &Warranty tab");
    DB_User = flag("DB_User", "SHOW_USEREXT_TAB", "Show &User Extensions tab");

    const DialogButtons buttons =
        CreateDialogButtons(this, QStringLiteral("OK"), QStringLiteral("Cancel"));
    BtnOk = buttons.ok;
    BtnCancel = buttons.cancel;
    connect(BtnOk, &QPushButton::clicked, this, &TAssetTypeForm::BtnOkClick);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Label1);
    layout->addWidget(DB_Name);
    layout->addWidget(DB_Node);
    layout->addWidget(Label2);
    for (QWidget* tab : {DB_GeneralTab, DB_Purchase, DB_Warranty, DB_User})
        layout->addWidget(tab);
    layout->addLayout(buttons.layout);
}

void TAssetTypeForm::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!event->spontaneous())
        FormShow();
}

void TAssetTypeForm::FormShow() {
    try {
        openRecord();
    } catch (const std::exception& error) {
        reportFailure(error);
        // Not from inside the showing itself: the dialog's own loop has yet to start.
        QMetaObject::invokeMethod(this, &TAssetTypeForm::reject, Qt::QueuedConnection);
    }
}

void TAssetTypeForm::openRecord() {
    TypesTable.setFilter(QString());
    if (!m_assetType.isEmpty())
        TypesTable.setFilter(QStringLiteral("ASSETTYPE = '") + m_assetType + QLatin1Char('\''));
    TypesTable.open();
    TypesDS->DataChanged();
    if (!TypesTable.isEmpty())
        TypesDS->Edit();
    if (!m_assetType.isEmpty())
        return;
    // A new type starts with every flag set, written into the record as the boxes show it.
    TypesTable.append();
    TypesDS->DataChanged();
    for (TDBCheckBox* box : {DB_Node, DB_GeneralTab, DB_Purchase, DB_Warranty, DB_User})
        box->setChecked(true);
    TypesDS->UpdateRecord();
}

void TAssetTypeForm::BtnOkClick() {
    if (DB_Name->text().isEmpty()) {
        ShowMessage(this, QMessageBox::NoIcon, QGuiApplication::applicationDisplayName(),
                    Translate(QStringLiteral("Asset Type cannot be empty")));
        return;
    }
    try {
        // Saves a new type, and the changes to an existing one (none: nothing is written).
        TypesDS->Post();
    } catch (const std::exception& error) {
        reportFailure(error);
        return;
    }
    accept();
}

void TAssetTypeForm::reject() {
    if (TypesTable.isOpen()) {
        TypesDS->Cancel(); // drops a new record and any change
        TypesTable.close();
        TypesDS->DataChanged();
    }
    QDialog::reject();
}

void TAssetTypeForm::reportFailure(const std::exception& error) {
    ShowMessage(this, QMessageBox::Warning, Translate(QStringLiteral("Error")),
                QString::fromUtf8(error.what()));
}

} // namespace ui
