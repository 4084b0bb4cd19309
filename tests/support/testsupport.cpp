#include "support/testsupport.h"

#include <QAtomicInt>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMutex>
#include <QSaveFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <stdexcept>

namespace testsupport {

namespace {

QMutex& odbcIniMutex() {
    static QMutex mutex;
    return mutex;
}

// A temporary folder that lives until the process ends.
QString keptTemporaryFolder(const char* purpose) {
    auto* folder = new QTemporaryDir(QDir::tempPath() + QStringLiteral("/quillet-") +
                                     QLatin1String(purpose) + QStringLiteral("-XXXXXX"));
    if (!folder->isValid())
        throw std::runtime_error(std::string("cannot create a temporary folder for ") + purpose);
    // Kept until the process exits, when the folders are removed.
    static std::vector<std::unique_ptr<QTemporaryDir>> folders;
    folders.emplace_back(folder);
    return folder->path();
}

QString environment(const char* name) {
    return qEnvironmentVariable(name);
}

struct IniSection {
    QString name;
    QStringList lines; // the lines after the header
};

std::vector<IniSection> readIni(const QString& path) {
    std::vector<IniSection> sections;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return sections;
    IniSection preamble;
    IniSection* current = &preamble;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            sections.push_back({line.mid(1, line.size() - 2), {}});
            current = &sections.back();
        } else if (!line.isEmpty()) {
            current->lines << line;
        }
    }
    return sections;
}

void writeIni(const QString& path, const std::vector<IniSection>& sections) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        throw std::runtime_error("cannot write " + path.toStdString());
    for (const IniSection& section : sections) {
        file.write("[" + section.name.toUtf8() + "]\n");
        for (const QString& line : section.lines)
            file.write(line.toUtf8() + '\n');
        file.write("\n");
    }
    if (!file.commit())
        throw std::runtime_error("cannot write " + path.toStdString());
}

QString createUserOdbcIni() {
    const QString path = keptTemporaryFolder("odbc") + QStringLiteral("/odbc.ini");
    const QString inherited = environment("ODBCINI");
    if (!inherited.isEmpty() && QFile::exists(inherited))
        writeIni(path, readIni(inherited));
    else
        writeIni(path, {});
    qputenv("ODBCINI", QFile::encodeName(path));
    return path;
}

} // namespace

QString UseTemporarySettings() {
    static const QString folder = [] {
        const QString path = keptTemporaryFolder("settings");
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(path));
        // QSettings reads XDG_CONFIG_HOME once; set its paths too in case it already did.
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, path);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, path);
        return path;
    }();
    return folder;
}

QString UserOdbcIniPath() {
    static const QString path = createUserOdbcIni();
    return path;
}

void SqliteDsn(const QString& dsnName, const QString& databasePath, const QString& driver) {
    QMutexLocker locker(&odbcIniMutex());
    const QString path = UserOdbcIniPath();
    std::vector<IniSection> sections = readIni(path);
    const QStringList lines{QStringLiteral("Driver=") + driver,
                            QStringLiteral("Database=") + databasePath,
                            QStringLiteral("StepAPI=1")};
    bool replaced = false;
    for (IniSection& section : sections)
        if (section.name.compare(dsnName, Qt::CaseInsensitive) == 0) {
            section.lines = lines;
            replaced = true;
        }
    if (!replaced)
        sections.push_back({dsnName, lines});
    writeIni(path, sections);
}

QString OdbcDriverLibrary(const QString& driverName) {
    const QString folder = environment("ODBCSYSINI");
    const QString odbcinst =
        (folder.isEmpty() ? QStringLiteral("/etc") : folder) + QStringLiteral("/odbcinst.ini");
    for (const IniSection& section : readIni(odbcinst)) {
        if (section.name.compare(driverName, Qt::CaseInsensitive) != 0)
            continue;
        for (const QString& line : section.lines) {
            const qsizetype equals = line.indexOf(QLatin1Char('='));
            if (equals < 0 || line.left(equals).trimmed().compare(QLatin1String("Driver"),
                                                                  Qt::CaseInsensitive) != 0)
                continue;
            const QString library = line.mid(equals + 1).trimmed();
            if (QDir::isAbsolutePath(library))
                return QFile::exists(library) ? library : QString();
            // A bare file name is found on the library path; look where Debian puts drivers.
            for (const QString& candidate :
                 QDir(QStringLiteral("/usr/lib")).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
                const QString path = QStringLiteral("/usr/lib/%1/odbc/%2").arg(candidate, library);
                if (QFile::exists(path))
                    return path;
            }
            const QString path = QStringLiteral("/usr/lib/odbc/") + library;
            return QFile::exists(path) ? path : QString();
        }
    }
    return QString();
}

QString TestDatabase::connectionString() const {
    return QStringLiteral("DSN=%1;UID=%2;PWD=%3").arg(dsn, user, password);
}

TestDatabase ServerDsn(Server server) {
    if (server == Server::PostgreSql)
        return {QStringLiteral("postgresql"), environment("QUILLET_TEST_PG_DSN"),
                environment("QUILLET_TEST_PG_USER"), environment("QUILLET_TEST_PG_PWD")};
    return {QStringLiteral("mariadb"), environment("QUILLET_TEST_MARIA_DSN"),
            environment("QUILLET_TEST_MARIA_USER"), environment("QUILLET_TEST_MARIA_PWD")};
}

std::vector<TestDatabase> TestDatabases() {
    static const TestDatabase sqlite = [] {
        const QString dsn = QStringLiteral("QuilletTestSqlite");
        SqliteDsn(dsn, keptTemporaryFolder("sqlite") + QStringLiteral("/quillet-test.sqlite"));
        return TestDatabase{QStringLiteral("sqlite"), dsn, QString(), QString()};
    }();
    return {sqlite, ServerDsn(Server::PostgreSql), ServerDsn(Server::MariaDb)};
}

std::vector<TestDatabase> AvailableDatabases() {
    std::vector<TestDatabase> available;
    for (const TestDatabase& database : TestDatabases())
        if (database.isAvailable())
            available.push_back(database);
    return available;
}

void AddDatabaseRows() {
    QTest::addColumn<TestDatabase>("database");
    for (const TestDatabase& database : TestDatabases())
        QTest::newRow(qPrintable(database.label)) << database;
}

QString UniqueTableName(const QString& stem) {
    static QAtomicInt counter;
    return QStringLiteral("q%1_%2_%3")
        .arg(stem.toLower())
        .arg(QCoreApplication::applicationPid())
        .arg(counter.fetchAndAddRelaxed(1) + 1);
}

QByteArray ReadFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool WriteFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

} // namespace testsupport
