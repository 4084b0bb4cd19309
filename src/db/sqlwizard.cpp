#include "db/sqlwizard.h"

#include "db/sqlwizard_interface.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>

#include <fstream>
#include <iterator>
#include <mutex>
#include <string>

namespace db {

namespace {

struct SystemMessage {
    std::int32_t code;
    const char* text;
};

// The texts the system gives for the codes that plugins and the loader use.
constexpr SystemMessage SystemMessages[] = {
    {ORV_E_NOTIMPL, "Not implemented"},
    {ORV_E_NOINTERFACE, "No such interface supported"},
    {ORV_E_POINTER, "Invalid pointer"},
    {ORV_E_ABORT, "Operation aborted"},
    {ORV_E_FAIL, "Unspecified error"},
    {ORV_E_UNEXPECTED, "Catastrophic failure"},
    {ORV_E_ACCESSDENIED, "Access is denied."},
    {ORV_E_OUTOFMEMORY, "Not enough storage is available to complete this operation."},
    {ORV_E_INVALIDARG, "The parameter is incorrect."},
    {ORV_E_CANCELLED, "The operation was canceled by the user."},
    {ORV_E_CLASSNOTREG, "Class not registered"},
    {ORV_E_CLASSNOTAVAILABLE, "ClassFactory cannot supply requested class"},
    {ORV_E_ERRORINDLL, "Error in the DLL"},
};

std::mutex directoriesMutex;
QStringList configuredDirectories;

// A clean absolute path of `relative` seen from `directory`; above the root is the root.
QString resolvedPath(const QString& directory, const QString& relative) {
    QString path = QDir::cleanPath(QDir(directory).absoluteFilePath(relative));
    while (path.startsWith(QLatin1String("/../")))
        path.remove(0, 3);
    if (path == QLatin1String("/.."))
        path = QStringLiteral("/");
    return path;
}

std::u16string wide(const QString& text) {
    return std::u16string(reinterpret_cast<const char16_t*>(text.utf16()),
                          static_cast<std::size_t>(text.size()));
}

// Releases the wizard on every way out.
class WizardHolder {
public:
    WizardHolder() = default;
    ~WizardHolder() {
        if (m_wizard)
            m_wizard->Release();
    }
    WizardHolder(const WizardHolder&) = delete;
    WizardHolder& operator=(const WizardHolder&) = delete;

    IORVSqlWizard** out() { return &m_wizard; }
    IORVSqlWizard* get() const { return m_wizard; }

private:
    IORVSqlWizard* m_wizard = nullptr;
};

} // namespace

QString SystemMessageText(std::int32_t code) {
    for (const SystemMessage& message : SystemMessages) {
        if (message.code == code)
            return QString::fromLatin1(message.text);
    }
    return {};
}

QString FormatPrintf(const QString& pattern, const std::vector<FormatArgument>& arguments) {
    QString result;
    result.reserve(pattern.size() + 64);
    std::size_t next = 0;
    const qsizetype length = pattern.size();
    qsizetype i = 0;
    while (i < length) {
        const QChar c = pattern.at(i);
        if (c != u'%' || i + 1 >= length) {
            result.append(c);
            ++i;
            continue;
        }
        if (pattern.at(i + 1) == u'%') {
            result.append(u'%');
            i += 2;
            continue;
        }
        qsizetype j = i + 1;
        if (pattern.at(j) == u'l' && j + 1 < length)
            ++j;
        const QChar kind = pattern.at(j);
        if (kind != u's' && kind != u'd' && kind != u'X') {
            result.append(pattern.mid(i, j + 1 - i));
            i = j + 1;
            continue;
        }
        i = j + 1;
        if (next >= arguments.size())
            continue;
        const FormatArgument& argument = arguments[next++];
        if (const QString* text = std::get_if<QString>(&argument)) {
            result.append(*text);
            continue;
        }
        const std::int32_t number = std::get<std::int32_t>(argument);
        if (kind == u'X')
            result.append(QString::number(static_cast<std::uint32_t>(number), 16).toUpper());
        else
            result.append(QString::number(number));
    }
    return result;
}

QString HrcheckDescription(const QString& messagePattern, const QString& codePattern,
                           const QString& call, std::int32_t code, const QString& message,
                           const QString& source, int line) {
    if (!message.isEmpty())
        return FormatPrintf(messagePattern, {call, message, source, std::int32_t{line}});
    return FormatPrintf(codePattern, {call, code, code, source, std::int32_t{line}});
}

QStringList DefaultSqlWizardDirectories(const QString& programDirectory) {
    return {resolvedPath(programDirectory, QStringLiteral(".")),
            resolvedPath(programDirectory, QStringLiteral("../lib/quillet"))};
}

QStringList SqlWizardDirectories() {
    {
        const std::lock_guard<std::mutex> lock(directoriesMutex);
        if (!configuredDirectories.isEmpty())
            return configuredDirectories;
    }
    if (!QCoreApplication::instance())
        return DefaultSqlWizardDirectories(QDir::currentPath());
    return DefaultSqlWizardDirectories(QCoreApplication::applicationDirPath());
}

void SetSqlWizardDirectories(const QStringList& directories) {
    const std::lock_guard<std::mutex> lock(directoriesMutex);
    configuredDirectories = directories;
}

QString FindSqlWizardLibrary(const QStringList& directories) {
    for (const QString& directory : directories) {
        if (directory.isEmpty())
            continue;
        const QFileInfo file(QDir(directory).filePath(QLatin1String(SqlWizardLibraryFileName)));
        if (file.isFile())
            return file.absoluteFilePath();
    }
    return {};
}

SqlWizardOutcome CallSqlWizard(const QStringList& directories, const SqlWizardRequest& request) {
    SqlWizardOutcome outcome;
    outcome.libraryPath = FindSqlWizardLibrary(directories);
    if (outcome.libraryPath.isEmpty()) {
        outcome.code = ORV_E_CLASSNOTREG;
        return outcome;
    }

    // Not unloaded afterwards: the next call finds it loaded.
    QLibrary library(outcome.libraryPath);
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    if (!library.load()) {
        outcome.code = ORV_E_ERRORINDLL;
        outcome.loaderError = library.errorString();
        return outcome;
    }
    const auto create =
        reinterpret_cast<CreateORVSqlWizardFunction>(library.resolve(ORV_SQLWIZARD_ENTRY_POINT));
    if (!create) {
        outcome.code = ORV_E_CLASSNOTAVAILABLE;
        return outcome;
    }

    WizardHolder wizard;
    try {
        outcome.code = create(ORV_SQLWIZARD_INTERFACE_VERSION, wizard.out());
    } catch (...) {
        outcome.code = ORV_E_UNEXPECTED;
    }
    if (outcome.failed())
        return outcome;
    if (!wizard.get()) {
        outcome.code = ORV_E_NOINTERFACE;
        return outcome;
    }

    const std::u16string dsn = wide(request.dsn);
    const std::u16string user = wide(request.user);
    const std::u16string password = wide(request.password);
    const std::u16string sql = wide(request.sql);
    const std::u16string nlqText = wide(request.nlqText);
    char16_t* sqlText = nullptr;
    try {
        outcome.code = wizard.get()->GetSQL(dsn.c_str(), user.c_str(), password.c_str(),
                                            sql.c_str(), request.nlq, nlqText.c_str(), &sqlText);
    } catch (...) {
        outcome.code = ORV_E_UNEXPECTED;
    }
    if (sqlText) {
        if (!outcome.failed())
            outcome.sqlText = QString::fromUtf16(sqlText);
        wizard.get()->FreeString(sqlText);
    }
    return outcome;
}

long TracerPidFromStatus(const QByteArray& statusText) {
    static const QByteArray key("TracerPid:");
    for (const QByteArray& line : statusText.split('\n')) {
        if (!line.startsWith(key))
            continue;
        bool ok = false;
        const long pid = line.mid(key.size()).trimmed().toLong(&ok);
        return ok && pid > 0 ? pid : 0;
    }
    return 0;
}

bool DebuggerAttached() {
    std::ifstream status("/proc/self/status", std::ios::binary);
    if (!status)
        return false;
    const std::string text((std::istreambuf_iterator<char>(status)),
                           std::istreambuf_iterator<char>());
    return TracerPidFromStatus(QByteArray::fromStdString(text)) != 0;
}

} // namespace db
