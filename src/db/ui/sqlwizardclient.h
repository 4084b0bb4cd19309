#pragma once

// The SQL wizard client: opens the external wizard plugin (db/sqlwizard_interface.h) for
// the details panel and for the Query menu, and reports a failed call.

#include "db/sqlwizard.h"

#include <QString>

#include <optional>
#include <stdexcept>

class QWidget;

namespace ui {

// Raised when the user answers Yes ("terminate") to the report of a failed wizard call:
// the operation ends there. what() is the report's description.
class SqlWizardTerminated : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The description of a failed wizard call, without the question that follows it in the
// box: "'<call>': <system text> @ sqlwizard_tlb/147", or
// "(<call>) Error: <hex> (<decimal>) @ sqlwizard_tlb/147" for a code without a text.
QString SqlWizardFailureText(const db::SqlWizardOutcome& outcome);

// The check of a failed call. Shows the box titled "HRCHECK: " with the description and
// the question "Press [Y]es to terminate, [N]o to continue and [C]ancel to Debug"; No is
// the default answer (so an unattended run goes on). Yes throws SqlWizardTerminated.
// Cancel breaks into the debugger when one is attached and then goes on; without a
// debugger it acts as No.
void ReportSqlWizardFailure(QWidget* parent, const db::SqlWizardOutcome& outcome);

// Opens the wizard with the connection given, taken as it is (not trimmed), an empty
// start query, nlq 0 and an empty nlq text. Returns the query the wizard built (possibly
// empty), or nothing when the wizard could not be created or failed and the user chose
// to go on. Throws SqlWizardTerminated when the user chose to end the operation.
std::optional<QString> RunSqlWizard(QWidget* parent, const QString& dsn, const QString& user,
                                    const QString& password);

// The Query menu's "S&QLWizard": opens the wizard with the connection given and lets the
// user work in it. The query it builds is not used anywhere.
void ShowSqlWizard(QWidget* parent, const QString& dsn, const QString& user,
                   const QString& password);

} // namespace ui
