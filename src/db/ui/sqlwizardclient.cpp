#include "db/ui/sqlwizardclient.h"

#include "core/ui/messages.h"
#include "db/sqlwizard_interface.h"
#include "translation/translate.h"

#include <csignal>

namespace ui {

using translation::Translate;

QString SqlWizardFailureText(const db::SqlWizardOutcome& outcome) {
    QString message;
    const QString systemText = db::SystemMessageText(outcome.code);
    if (!systemText.isEmpty())
        message = Translate(systemText);
    if (!outcome.loaderError.isEmpty())
        message += QStringLiteral(" (") + outcome.loaderError + QLatin1Char(')');
    return db::HrcheckDescription(Translate(QLatin1String(db::HrcheckMessagePattern)),
                                  Translate(QLatin1String(db::HrcheckCodePattern)),
                                  QLatin1String(db::SqlWizardCallText), outcome.code,
                                  message.trimmed(), QLatin1String(db::SqlWizardSourceName),
                                  db::SqlWizardSourceLine);
}

void ReportSqlWizardFailure(QWidget* parent, const db::SqlWizardOutcome& outcome) {
    const QString description = SqlWizardFailureText(outcome);
    const QString text =
        description + Translate(QStringLiteral(
                          "\\nPress [Y]es to terminate, [N]o to continue and [C]ancel to Debug"));
    const QMessageBox::StandardButton answer =
        ShowMessage(parent, QMessageBox::Critical, Translate(QStringLiteral("HRCHECK: ")), text,
                    QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::No);
    switch (answer) {
    case QMessageBox::Yes:
        throw SqlWizardTerminated(description.toStdString());
    case QMessageBox::Cancel:
        if (db::DebuggerAttached())
            std::raise(SIGTRAP);
        break;
    default:
        break;
    }
}

std::optional<QString> RunSqlWizard(QWidget* parent, const QString& dsn, const QString& user,
                                    const QString& password) {
    db::SqlWizardRequest request;
    request.dsn = dsn;
    request.user = user;
    request.password = password;
    const db::SqlWizardOutcome outcome = db::CallSqlWizard(db::SqlWizardDirectories(), request);
    if (outcome.failed()) {
        ReportSqlWizardFailure(parent, outcome);
        return std::nullopt;
    }
    return outcome.sqlText;
}

void ShowSqlWizard(QWidget* parent, const QString& dsn, const QString& user,
                   const QString& password) {
    try {
        // The menu entry only lets the user work in the wizard; its query goes nowhere.
        (void)RunSqlWizard(parent, dsn, user, password);
    } catch (const SqlWizardTerminated&) {
        // The user ended the operation in the failure report; nothing more to say.
    }
}

} // namespace ui
