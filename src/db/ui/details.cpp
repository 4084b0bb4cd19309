#include "db/ui/details.h"

#include "db/ui/sqlwizardclient.h"
#include "translation/translate.h"

#include <QAction>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QToolButton>
#include <QVBoxLayout>

namespace ui {

using translation::Translate;

namespace {

QLabel* buddyLabel(const QString& caption, QWidget* buddy, const char* name) {
    auto* label = new QLabel(Translate(caption));
    label->setObjectName(QLatin1String(name));
    label->setBuddy(buddy);
    return label;
}

bool isBlank(QChar c) {
    const char16_t code = c.unicode();
    return code <= 0x20 || (code >= 0x7F && code <= 0x9F) || code == 0xFEFF || c.isSpace();
}

} // namespace

TDetailsForm::TDetailsForm(QAction* executeAction, QWidget* parent)
    : QDockWidget(parent), EditDSN(new QLineEdit), EditID(new QLineEdit), EditPass(new QLineEdit),
      MemoSQL(new QPlainTextEdit), SpeedButton1(new QToolButton), SpeedButton2(new QToolButton) {
    setObjectName(QStringLiteral("DetailsForm"));
    setWindowTitle(Translate(QStringLiteral("Details")));
    setFeatures(QDockWidget::DockWidgetClosable);

    EditDSN->setObjectName(QStringLiteral("EditDSN"));
    EditID->setObjectName(QStringLiteral("EditID"));
    EditPass->setObjectName(QStringLiteral("EditPass"));
    EditPass->setEchoMode(QLineEdit::Password);
    EditPass->setStyleSheet(QStringLiteral("lineedit-password-character: 42;")); // '*'
    MemoSQL->setObjectName(QStringLiteral("MemoSQL"));
    MemoSQL->setLineWrapMode(QPlainTextEdit::NoWrap);
    MemoSQL->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    MemoSQL->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    // Tab leaves the SQL box, as in the other boxes of the panel.
    MemoSQL->setTabChangesFocus(true);

    SpeedButton1->setObjectName(QStringLiteral("SpeedButton1"));
    SpeedButton1->setDefaultAction(executeAction);
    SpeedButton1->setToolButtonStyle(Qt::ToolButtonTextOnly);
    // A tool button shows an action's caption without its mnemonic; this one keeps it,
    // also when the main window changes the caption.
    if (executeAction) {
        SpeedButton1->setText(executeAction->text());
        connect(executeAction, &QAction::changed, SpeedButton1,
                [this, executeAction] { SpeedButton1->setText(executeAction->text()); });
    }
    SpeedButton2->setObjectName(QStringLiteral("SpeedButton2"));
    SpeedButton2->setText(Translate(QStringLiteral("S&QLWizard")));
    SpeedButton2->setToolButtonStyle(Qt::ToolButtonTextOnly);

    LabelDSN = buddyLabel(QStringLiteral("&DSN Name"), EditDSN, "LabelDSN");
    LabelID = buddyLabel(QStringLiteral("User &ID"), EditID, "LabelID");
    LabelPass = buddyLabel(QStringLiteral("User &Password"), EditPass, "LabelPass");
    LabelSQL = buddyLabel(QStringLiteral("&SQL Code"), MemoSQL, "LabelSQL");

    // Connection boxes and buttons on the left, the SQL box filling the rest.
    auto* connection = new QGridLayout;
    connection->addWidget(LabelDSN, 0, 0);
    connection->addWidget(EditDSN, 0, 1);
    connection->addWidget(LabelID, 1, 0);
    connection->addWidget(EditID, 1, 1);
    connection->addWidget(LabelPass, 2, 0);
    connection->addWidget(EditPass, 2, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(SpeedButton1);
    buttons->addWidget(SpeedButton2);
    buttons->addStretch();
    connection->addLayout(buttons, 3, 0, 1, 2);
    connection->setRowStretch(4, 1);

    auto* sql = new QVBoxLayout;
    sql->addWidget(LabelSQL);
    sql->addWidget(MemoSQL, 1);

    auto* body = new QWidget;
    auto* layout = new QHBoxLayout(body);
    layout->addLayout(connection);
    layout->addLayout(sql, 1);
    setWidget(body);

    setTabOrder(EditDSN, EditID);
    setTabOrder(EditID, EditPass);
    setTabOrder(EditPass, MemoSQL);
    setTabOrder(MemoSQL, SpeedButton1);
    setTabOrder(SpeedButton1, SpeedButton2);

    connect(EditDSN, &QLineEdit::textChanged, this, &TDetailsForm::connectionEdited);
    connect(MemoSQL, &QPlainTextEdit::textChanged, this, &TDetailsForm::connectionEdited);
    connect(SpeedButton2, &QToolButton::clicked, this, &TDetailsForm::SpeedButton2Click);
}

QString TDetailsForm::trimmedText(const QString& text) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isBlank(text.at(begin)))
        ++begin;
    while (end > begin && isBlank(text.at(end - 1)))
        --end;
    return text.mid(begin, end - begin);
}

QString TDetailsForm::dataSourceName() const {
    return trimmedText(EditDSN->text());
}

QString TDetailsForm::userName() const {
    return trimmedText(EditID->text());
}

QString TDetailsForm::password() const {
    return trimmedText(EditPass->text());
}

QString TDetailsForm::sqlText() const {
    return trimmedText(MemoSQL->toPlainText());
}

void TDetailsForm::setFields(const QString& dataSourceName, const QString& userName,
                             const QString& sqlText, const QString& password) {
    const QSignalBlocker dsnBlocker(EditDSN);
    const QSignalBlocker sqlBlocker(MemoSQL);
    EditDSN->setText(dataSourceName);
    EditID->setText(userName);
    MemoSQL->setPlainText(sqlText);
    EditPass->setText(password);
}

void TDetailsForm::PasteSQL() {
    MemoSQL->clear();
    MemoSQL->paste();
}

void TDetailsForm::SpeedButton2Click() {
    std::optional<QString> sql;
    try {
        sql = RunSqlWizard(this, EditDSN->text(), EditID->text(), EditPass->text());
    } catch (const SqlWizardTerminated&) {
        // Ended by the user in the failure report: the SQL box keeps its text.
        return;
    }
    if (!sql || sql->isEmpty())
        return;
    // One undoable edit, so that Ctrl+Z brings the previous query back.
    QTextCursor cursor(MemoSQL->document());
    cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.insertText(*sql);
    cursor.endEditBlock();
}

} // namespace ui
