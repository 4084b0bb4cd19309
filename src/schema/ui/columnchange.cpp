#include "schema/ui/columnchange.h"

#include "core/log.h"
#include "core/ui/messages.h"
#include "schema/schemacreation.h"
#include "schema/ui/custfld.h"
#include "schema/ui/delcolumn.h"
#include "schema/usercolumns.h"
#include "translation/translate.h"

#include <exception>
#include <stdexcept>

namespace ui {

namespace {

using translation::Translate;

// Shows the dialog until it is cancelled or `work` succeeds. A failure is logged, and the
// user is asked whether to return to the dialog.
void runUntilDone(QDialog& dialog, const QString& question, const ColumnChangeHost& host,
                  const std::function<void()>& work) {
    while (dialog.exec() == QDialog::Accepted) {
        try {
            // The dialog's place on the window is painted over before the work starts.
            host.window->repaint();
            work();
            host.runQuery();
            return;
        } catch (const std::exception& error) {
            const QString details = QString::fromUtf8(error.what());
            core::LogLineQuietly(details);
            const QMessageBox::StandardButton answer =
                ShowMessage(host.window, QMessageBox::Question, Translate(QStringLiteral("Error")),
                            Translate(question, 0, {{QStringLiteral("$DETAILS$"), details}}),
                            QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes);
            if (answer != QMessageBox::Yes)
                return;
        }
    }
}

} // namespace

void ExecuteAddColumn(const ColumnChangeHost& host) {
    TCustFldForm wizard(host.dialect, host.window);
    runUntilDone(wizard,
                 QStringLiteral("An error has occurred:\\r$DETAILS$\\rReturn to the field "
                                "definition form?"),
                 host, [&] {
                     if (!wizard.FinishError().isEmpty())
                         throw std::runtime_error(wizard.FinishError().toStdString());
                     schema::ExecuteSchemaStatement(host.connection, wizard.StatementText());
                 });
}

void ExecuteDeleteColumn(const ColumnChangeHost& host) {
    TfmDeleteColumn dialog(host.connection, host.dialect, host.commands, host.window);
    runUntilDone(dialog,
                 QStringLiteral("An error has occurred:\\r$DETAILS$\\rReturn to the field "
                                "deletion form?"),
                 host, [&] {
                     schema::DropUserColumn(host.connection, dialog.StatementText(),
                                            dialog.ColumnName());
                 });
}

} // namespace ui
