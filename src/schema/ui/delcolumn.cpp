#include "schema/ui/delcolumn.h"

#include "core/commands.h"
#include "core/ui/dialogbuttons.h"
#include "core/ui/hourglass.h"
#include "core/ui/messages.h"
#include "schema/schemacreation.h"
#include "schema/usercolumns.h"
#include "translation/translate.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <exception>

namespace ui {

using translation::Translate;

TfmDeleteColumn::TfmDeleteColumn(db::odbc::Connection& connection, db::DatabaseDialect dialect,
                                 core::CommandTarget& mainWindow, QWidget* parent)
    : QDialog(parent), m_dialect(dialect) {
    setObjectName(QStringLiteral("fmDeleteColumn"));
    setWindowTitle(Translate(QStringLiteral("Delete user column")));
    setProperty("helpContext", HelpContext);
    resize(260, 300);

    LabelPrompt =
        new QLabel(Translate(QStringLiteral("Which column do you want to remove?")), this);
    LabelPrompt->setObjectName(QStringLiteral("LabelPrompt"));
    lbFields = new QListWidget(this);
    lbFields->setObjectName(QStringLiteral("lbFields"));
    const DialogButtons buttons =
        CreateDialogButtons(this, QStringLiteral("&Remove"), QStringLiteral("&Cancel"));
    BtnOk = buttons.ok;
    BtnCancel = buttons.cancel;
    connect(BtnOk, &QPushButton::clicked, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(LabelPrompt);
    layout->addWidget(lbFields, 1);
    layout->addLayout(buttons.layout);

    fillFieldList(connection, mainWindow);
}

void TfmDeleteColumn::fillFieldList(db::odbc::Connection& connection,
                                    core::CommandTarget& mainWindow) {
    mainWindow.DispatchCommand(core::CMD_STATUS_TEXT,
                               Translate(QStringLiteral("Obtaining ASSETS field list...")));
    HourglassCursor hourglass;
    lbFields->clear();
    QString status;
    try {
        const QStringList fields = schema::FieldNamesOf(connection, QStringLiteral("ASSETS"));
        status = Translate(QStringLiteral("$FIELDCOUNT$ ASSETS fields found"), 0,
                           {{QStringLiteral("$FIELDCOUNT$"), QString::number(fields.size())}});
        lbFields->addItems(schema::UserColumnsOf(fields));
    } catch (const std::exception&) {
        status = Translate(QStringLiteral("Unable to open the ASSETS table"));
    }
    mainWindow.DispatchCommand(core::CMD_STATUS_TEXT, status);
}

QString TfmDeleteColumn::readChoice() const {
    QStringList listed;
    for (int row = 0; row < lbFields->count(); ++row)
        listed << lbFields->item(row)->text();
    const QList<QListWidgetItem*> selected = lbFields->selectedItems();
    return schema::ChosenUserColumn(listed, selected.isEmpty() ? -1 : lbFields->row(selected[0]));
}

// Asks before anything is dropped; Yes builds the statement.
bool TfmDeleteColumn::confirmChoice() {
    const QString name = readChoice();
    if (name.isEmpty()) {
        ShowMessage(this, QMessageBox::NoIcon, Translate(QStringLiteral("Deletion")),
                    Translate(QStringLiteral("Select a field you want to delete.")));
        return false;
    }
    const QString question =
        Translate(QStringLiteral("The field '$FIELDNAME$' will be deleted.\\nProceed with "
                                 "deletion?"),
                  0, {{QStringLiteral("$FIELDNAME$"), name}});
    if (ShowMessage(this, QMessageBox::Question, Translate(QStringLiteral("Confirmation")),
                    question, QMessageBox::Yes | QMessageBox::No,
                    QMessageBox::Yes) != QMessageBox::Yes)
        return false;
    m_columnName = readChoice();
    m_statementLines = QStringList{schema::DropUserColumnStatement(m_columnName, m_dialect)};
    return true;
}

void TfmDeleteColumn::done(int result) {
    if (result == Accepted) {
        try {
            if (!confirmChoice())
                return;
        } catch (const std::exception& error) {
            ShowError(this, Translate(QStringLiteral("Error")), QString::fromUtf8(error.what()));
            return;
        }
    }
    QDialog::done(result);
}

} // namespace ui
