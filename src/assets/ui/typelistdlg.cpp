#include "assets/ui/typelistdlg.h"

#include "assets/ui/assettype.h"
#include "core/commands.h"
#include "core/ui/messages.h"
#include "db/odbc/odbc.h"
#include "translation/translate.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>

namespace ui {

using translation::Translate;

namespace {

QString translated(const char* text) {
    return Translate(QString::fromLatin1(text));
}

} // namespace

TAssetTypeListForm::TAssetTypeListForm(db::odbc::Connection& connection,
                                       core::CommandTarget& mainWindow, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint),
      m_connection(connection), m_mainWindow(mainWindow) {
    setObjectName(QStringLiteral("AssetTypeListForm"));
    setWindowTitle(translated("Asset Types"));
    setProperty("helpContext", HelpContext);
    createControls();
}

void TAssetTypeListForm::createControls() {
    const auto button = [this](QWidget* parent, const char* name, const char* caption,
                               const char* hint) {
        auto* result = new QPushButton(translated(caption), parent);
        result->setObjectName(QLatin1String(name));
        if (hint)
            result->setToolTip(translated(hint));
        return result;
    };
    Label1 = new QLabel(translated("Select asset type:"), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    TypeList = new QListWidget(this);
    TypeList->setObjectName(QStringLiteral("TypeList"));
    Label1->setBuddy(TypeList);
    BtnOk = button(this, "BtnOk", "Add Asset...", nullptr);
    BtnOk->setDefault(true);
    BtnCancel = button(this, "BtnCancel", "Cancel", nullptr);
    GroupBox1 = new QGroupBox(translated("Asset Type"), this);
    GroupBox1->setObjectName(QStringLiteral("GroupBox1"));
    BitBtn4 = button(GroupBox1, "BitBtn4", "Add Type...", "add new Asset Type");
    BitBtn5 = button(GroupBox1, "BitBtn5", "Edit Type...", "edit current Asset Type");
    BitBtn6 = button(GroupBox1, "BitBtn6", "Delete Type...", "delete current Asset Type");

    connect(TypeList, &QListWidget::itemDoubleClicked, this, &TAssetTypeListForm::TypeListDblClick);
    connect(BtnOk, &QPushButton::clicked, this, &TAssetTypeListForm::BtnOkClick);
    connect(BtnCancel, &QPushButton::clicked, this, &TAssetTypeListForm::reject);
    connect(BitBtn4, &QPushButton::clicked, this, &TAssetTypeListForm::BtnAddAssetTypeClick);
    connect(BitBtn5, &QPushButton::clicked, this, &TAssetTypeListForm::BtnEditAssetTypeClick);
    connect(BitBtn6, &QPushButton::clicked, this, &TAssetTypeListForm::BtnDeleteAssetTypeClick);

    auto* typeButtons = new QVBoxLayout(GroupBox1);
    for (QWidget* typeButton : {BitBtn4, BitBtn5, BitBtn6})
        typeButtons->addWidget(typeButton);
    typeButtons->addStretch();
    auto* side = new QVBoxLayout;
    side->addWidget(BtnOk);
    side->addWidget(BtnCancel);
    side->addWidget(GroupBox1);
    auto* list = new QVBoxLayout;
    list->addWidget(Label1);
    list->addWidget(TypeList);
    auto* layout = new QHBoxLayout(this);
    layout->addLayout(list, 1);
    layout->addLayout(side);
}

void TAssetTypeListForm::SetManagerMode() {
    BtnCancel->hide();
    BtnOk->setText(translated("OK"));
}

void TAssetTypeListForm::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!event->spontaneous())
        FillList();
}

void TAssetTypeListForm::FillList() {
    TypeList->clear();
    try {
        db::odbc::Statement query(m_connection);
        query.executeDirect(QString::fromLatin1(AssetTypeListQuery));
        std::vector<db::odbc::Row> rows;
        while (query.fetchBlock(rows)) {
        }
        for (const db::odbc::Row& row : rows)
            TypeList->addItem(QString::fromUtf8(row.at(0)));
    } catch (const std::exception& error) {
        ShowMessage(this, QMessageBox::Warning, translated("Error"),
                    QString::fromUtf8(error.what()));
    }
}

std::optional<QString> TAssetTypeListForm::selectedName() const {
    const QList<QListWidgetItem*> selected = TypeList->selectedItems();
    if (selected.isEmpty())
        return std::nullopt;
    return selected.constFirst()->text();
}

void TAssetTypeListForm::BtnOkClick() {
    if (const std::optional<QString> name = selectedName()) {
        m_selectedType = *name;
        accept();
    } else if (!BtnCancel->isHidden()) {
        ShowError(this, translated("Error"), translated("Asset Type must be selected"));
    } else {
        reject();
    }
}

void TAssetTypeListForm::TypeListDblClick() {
    BtnOkClick();
}

bool TAssetTypeListForm::editType(const QString& name) {
    TAssetTypeForm form(m_connection, this);
    form.SetAssetType(name);
    return form.exec() == QDialog::Accepted;
}

void TAssetTypeListForm::BtnAddAssetTypeClick() {
    if (editType(QString()))
        FillList();
}

void TAssetTypeListForm::BtnEditAssetTypeClick() {
    const std::optional<QString> name = selectedName();
    if (!name) {
        ShowError(this, translated("Error"), translated("Asset Type must be selected"));
        return;
    }
    if (editType(*name))
        FillList();
}

void TAssetTypeListForm::BtnDeleteAssetTypeClick() {
    if (!m_connection.isOpen()) {
        ShowError(this, translated("Error"), translated("No Database connection."));
        return;
    }
    const std::optional<QString> name = selectedName();
    if (!name) {
        ShowError(this, translated("Error"), translated("Asset Type must be selected"));
        return;
    }
    const QString question =
        Translate(QStringLiteral("Are you sure you want to delete the \\\"$ASSETTYPE$\\\" asset "
                                 "type\\r and all Asset entries of this type?"),
                  0, {{QStringLiteral("$ASSETTYPE$"), *name}});
    if (ShowMessage(this, QMessageBox::Question, translated("Delete confirmation"), question,
                    QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes) != QMessageBox::Yes)
        return;
    deleteType(*name);
    FillList();
}

void TAssetTypeListForm::deleteType(const QString& name) {
    try {
        if (m_connection.inTransaction())
            m_connection.commit();
        m_connection.begin();
    } catch (const std::exception& error) {
        ShowMessage(this, QMessageBox::Warning, translated("Error"),
                    QString::fromUtf8(error.what()));
        return;
    }
    // The name goes into the statements as it is: a quote in it makes them fail.
    const QString condition = QStringLiteral(" where ASSETTYPE = '") + name + QLatin1Char('\'');
    bool failed = true;
    const qint64 assets = executeShowingError(QStringLiteral("delete from ASSETS") + condition,
                                              translated("Assets Deletion Error"));
    if (assets >= 0) {
        const qint64 types = executeShowingError(
            QStringLiteral("delete from ASSETTYPES") + condition, translated("Deletion Error"));
        failed = types < 0;
        if (!failed)
            reportDeleted(assets, types);
    }
    try {
        if (m_connection.inTransaction() && failed)
            m_connection.rollback();
        else if (m_connection.inTransaction())
            m_connection.commit();
    } catch (const std::exception& error) {
        ShowMessage(this, QMessageBox::Warning, translated("Error"),
                    QString::fromUtf8(error.what()));
    }
}

void TAssetTypeListForm::reportDeleted(qint64 assets, qint64 types) {
    const QString status =
        Translate(QStringLiteral("$RECORDCOUNT$ record(s) deleted."), 0,
                  {{QStringLiteral("$RECORDCOUNT$"), QString::number(assets + types)}});
    m_mainWindow.DispatchCommand(core::CMD_STATUS_TEXT, status);
    if (assets > 0)
        ShowMessage(this, QMessageBox::NoIcon, translated("Warning"),
                    Translate(QStringLiteral("$RECORDCOUNT$ Asset(s) deleted.\\rSelect Execute SQL "
                                             "from the Query Menu to display changes."),
                              0, {{QStringLiteral("$RECORDCOUNT$"), QString::number(assets)}}));
}

qint64 TAssetTypeListForm::executeShowingError(const QString& sql, const QString& errorTitle) {
    const qint64 rows = m_mainWindow.DispatchCommand(core::CMD_EXECUTE_SQL, sql);
    if (rows < 0)
        ShowMessage(this, QMessageBox::Warning, errorTitle, m_mainWindow.LastCommandError());
    return rows;
}

} // namespace ui
