#include "db/ui/details.h"

#include "translation/translate.h"

#include <QAction>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QToolButton>

namespace ui {

using translation::Translate;

namespace {

QLabel* buddyLabel(const QString& caption, QWidget* buddy, const char* name) {
    auto* label = new QLabel(Translate(caption));
    label->setObjectName(QLatin1String(name));
    label->setBuddy(buddy);
    return label;
}

} // namespace

TDetailsForm::TDetailsForm(QAction* executeAction, QWidget* parent)
    : QDockWidget(parent), EditDSN(new QLineEdit), EditID(new QLineEdit),
      EditPass(new QLineEdit), MemoSQL(new QPlainTextEdit), SpeedButton1(new QToolButton) {
    setObjectName(QStringLiteral("DetailsForm"));
    setWindowTitle(Translate(QStringLiteral("Details")));
    setFeatures(QDockWidget::DockWidgetClosable);

    EditDSN->setObjectName(QStringLiteral("EditDSN"));
    EditID->setObjectName(QStringLiteral("EditID"));
    EditPass->setObjectName(QStringLiteral("EditPass"));
    EditPass->setEchoMode(QLineEdit::Password);
    MemoSQL->setObjectName(QStringLiteral("MemoSQL"));
    MemoSQL->setLineWrapMode(QPlainTextEdit::NoWrap);
    SpeedButton1->setObjectName(QStringLiteral("SpeedButton1"));
    SpeedButton1->setDefaultAction(executeAction);
    SpeedButton1->setToolButtonStyle(Qt::ToolButtonTextOnly);

    auto* body = new QWidget;
    auto* form = new QFormLayout(body);
    form->addRow(buddyLabel(QStringLiteral("&DSN Name"), EditDSN, "LabelDSN"), EditDSN);
    form->addRow(buddyLabel(QStringLiteral("User &ID"), EditID, "LabelID"), EditID);
    form->addRow(buddyLabel(QStringLiteral("User &Password"), EditPass, "LabelPass"), EditPass);
    form->addRow(buddyLabel(QStringLiteral("&SQL Code"), MemoSQL, "LabelSQL"), MemoSQL);
    form->addRow(QString(), SpeedButton1);
    setWidget(body);

    connect(EditDSN, &QLineEdit::textChanged, this, &TDetailsForm::connectionEdited);
    connect(MemoSQL, &QPlainTextEdit::textChanged, this, &TDetailsForm::connectionEdited);
}

QString TDetailsForm::dataSourceName() const { return EditDSN->text().trimmed(); }

QString TDetailsForm::userName() const { return EditID->text().trimmed(); }

QString TDetailsForm::password() const { return EditPass->text().trimmed(); }

QString TDetailsForm::sqlText() const { return MemoSQL->toPlainText().trimmed(); }

void TDetailsForm::setFields(const QString& dataSourceName, const QString& userName,
                             const QString& sqlText, const QString& password) {
    const QSignalBlocker dsnBlocker(EditDSN);
    const QSignalBlocker sqlBlocker(MemoSQL);
    EditDSN->setText(dataSourceName);
    EditID->setText(userName);
    MemoSQL->setPlainText(sqlText);
    EditPass->setText(password);
}

} // namespace ui
