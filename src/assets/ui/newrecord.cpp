#include "assets/ui/newrecord.h"

#include "assets/ui/edit.h"
#include "core/ui/dialogbuttons.h"
#include "core/ui/messages.h"
#include "translation/translate.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include <exception>

namespace ui {

using translation::Translate;

TFormNewAsset::TFormNewAsset(db::odbc::Connection& connection, core::CommandTarget& mainWindow,
                             QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("FormNewAsset"));
    setWindowTitle(Translate(QStringLiteral("Asset Details")));
    setProperty("helpContext", 800);
    resize(491, 284);

    pnEdit = new QWidget(this);
    pnEdit->setObjectName(QStringLiteral("pnEdit"));
    pnEdit->setMinimumSize(361, 281);
    auto* editLayout = new QVBoxLayout(pnEdit);
    editLayout->setContentsMargins(0, 0, 0, 0);
    m_editor = new TEditForm(connection, mainWindow, pnEdit);
    m_editor->SetShowNavigator(false);
    m_editor->SetAskTypeOnInsert(false);
    editLayout->addWidget(m_editor);

    auto* bevel = new QFrame(this);
    bevel->setObjectName(QStringLiteral("Bevel1"));
    bevel->setFrameShape(QFrame::VLine);
    bevel->setFrameShadow(QFrame::Sunken);

    const DialogButtons buttons =
        CreateDialogButtons(this, QStringLiteral("OK"), QStringLiteral("Cancel"), Qt::Vertical);
    BtnOk = buttons.ok;
    BtnCancel = buttons.cancel;
    connect(BtnOk, &QPushButton::clicked, this, &QDialog::accept);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(pnEdit, 1);
    layout->addWidget(bevel);
    layout->addLayout(buttons.layout);
}

bool TFormNewAsset::StartRecord() {
    try {
        m_editor->ShowRecord(QStringLiteral("0"));
        m_editor->OpenTables();
        m_editor->Append();
        m_editor->ChooseAssetType();
        m_started = true;
    } catch (const std::exception& error) {
        ShowMessage(this, QMessageBox::Critical, Translate(QStringLiteral("Error")),
                    QString::fromUtf8(error.what()));
        m_editor->Cancel();
        m_started = false;
    }
    return m_started;
}

int TFormNewAsset::exec() {
    if (!StartRecord())
        return QDialog::Rejected;
    return QDialog::exec();
}

// OK posts the record; a record that cannot be written keeps the dialog open.
void TFormNewAsset::done(int result) {
    if (m_started) {
        try {
            if (result == QDialog::Accepted)
                m_editor->Post();
            else
                m_editor->Cancel();
        } catch (const std::exception& error) {
            ShowMessage(this, QMessageBox::Critical, Translate(QStringLiteral("Error")),
                        QString::fromUtf8(error.what()));
            return;
        }
        m_started = false;
    }
    QDialog::done(result);
}

} // namespace ui
