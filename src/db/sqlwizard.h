#pragma once

// The SQL wizard client, headless part: finding and loading the wizard plugin, calling
// it, and the text of the check that reports a failed call.

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <variant>
#include <vector>

namespace db {

// What the failure report names: the call, the source and the line of the check.
inline constexpr char SqlWizardCallText[] =
    "this->GetSQL(dsn, user, password, sql, nlq, nlqtext, (BSTR*)&sqltext)";
inline constexpr char SqlWizardSourceName[] = "sqlwizard_tlb";
inline constexpr int SqlWizardSourceLine = 147;

// The two forms of the report: with the system's text for the code, and without.
inline constexpr char HrcheckMessagePattern[] = "'%s': %s @ %s/%d";
inline constexpr char HrcheckCodePattern[] = "(%s) Error: %lX (%ld) @ %s/%d";

// The file name of the plugin library.
inline constexpr char SqlWizardLibraryFileName[] = "libsqlwizard.so";

// The system's text for a result code (the common codes of plugins and of the loader),
// or an empty string when there is none.
QString SystemMessageText(std::int32_t code);

// A value for FormatPrintf: a text, or a 32-bit code or number.
using FormatArgument = std::variant<QString, std::int32_t>;

// Fills a printf-style pattern: %s takes a text, %d and %ld a number in decimal, %X and
// %lX a number in upper-case hexadecimal as an unsigned 32-bit value, %% is a percent
// sign. The arguments are taken in order; one of the other kind is written as text or in
// decimal, a conversion without an argument is left out and any other conversion is
// copied as it stands.
QString FormatPrintf(const QString& pattern, const std::vector<FormatArgument>& arguments);

// The report of a failed call: the message form when `message` is not empty, otherwise
// the code form, with the patterns given (translated by the caller).
QString HrcheckDescription(const QString& messagePattern, const QString& codePattern,
                           const QString& call, std::int32_t code, const QString& message,
                           const QString& source, int line);

// The folders searched for the plugin, in order: the program's folder, then
// ../lib/quillet beside it.
QStringList DefaultSqlWizardDirectories(const QString& programDirectory);

// The folders in use: those set by SetSqlWizardDirectories, or else the default ones of
// the running program.
QStringList SqlWizardDirectories();
// An empty list restores the default.
void SetSqlWizardDirectories(const QStringList& directories);

// The plugin file in the first of `directories` that holds one, or an empty string.
QString FindSqlWizardLibrary(const QStringList& directories);

struct SqlWizardRequest {
    QString dsn;
    QString user;
    QString password;
    QString sql;
    std::int32_t nlq = 0;
    QString nlqText;
};

struct SqlWizardOutcome {
    // The wizard's result code, or the loader's code when the wizard could not be created.
    std::int32_t code = 0;
    // The query built; empty on failure.
    QString sqlText;
    // For a library that exists but does not load: the loader's explanation.
    QString loaderError;
    // The library used, empty when none was found.
    QString libraryPath;

    bool failed() const { return code < 0; }
};

// Creates a wizard from the plugin in the first of `directories` that holds one, calls
// GetSQL once with `request` and releases the wizard. A missing library gives
// ORV_E_CLASSNOTREG, a library that does not load ORV_E_ERRORINDLL, a library without
// the entry point ORV_E_CLASSNOTAVAILABLE, an entry point that succeeds without an object
// ORV_E_NOINTERFACE, an exception escaping the plugin ORV_E_UNEXPECTED. The library stays
// loaded for the rest of the run.
SqlWizardOutcome CallSqlWizard(const QStringList& directories, const SqlWizardRequest& request);

// The TracerPid line of a /proc/<pid>/status text: the process id of the tracing
// debugger, 0 when none or when the line is missing.
long TracerPidFromStatus(const QByteArray& statusText);

// True when a debugger traces this process.
bool DebuggerAttached();

} // namespace db
