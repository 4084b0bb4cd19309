#include "schema/ui/sqlformedit.h"

#include "core/ui/dialogbuttons.h"
#include "core/ui/messages.h"
#include "schema/usercolumns.h"
#include "translation/translate.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace ui {

using translation::Translate;

TSQLForm::TSQLForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("SQLForm"));
    setWindowTitle(Translate(QStringLiteral("SQL Query")));
    setProperty("helpContext", HelpContext);
    resize(420, 240);

    LabelTitle = new QLabel(Translate(QStringLiteral("Enter SQL to select column data:")), this);
    LabelTitle->setObjectName(QStringLiteral("LabelTitle"));
    SQLMemo = new QPlainTextEdit(this);
    SQLMemo->setObjectName(QStringLiteral("SQLMemo"));
    const DialogButtons buttons =
        CreateDialogButtons(this, QStringLiteral("OK"), QStringLiteral("Cancel"));
    BtnOK = buttons.ok;
    BtnOK->setObjectName(QStringLiteral("BtnOK"));
    BtnCancel = buttons.cancel;
    connect(BtnOK, &QPushButton::clicked, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(LabelTitle);
    layout->addWidget(SQLMemo, 1);
    layout->addLayout(buttons.layout);
}

void TSQLForm::SetStatementText(const QString& text) {
    SQLMemo->setPlainText(text);
}

QString TSQLForm::StatementText() const {
    return SQLMemo->toPlainText();
}

void TSQLForm::done(int result) {
    if (result == Accepted && !schema::LooksLikeAddColumn(StatementText())) {
        ShowMessage(this, QMessageBox::Critical, Translate(QStringLiteral("Error")),
                    Translate(QStringLiteral(
                        "SQL statement must contain valid \\\"ALTER TABLE\\\" clause")));
        return;
    }
    QDialog::done(result);
}

} // namespace ui
