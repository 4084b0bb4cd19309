#include "support/testsupport.h"

#include <QAtomicInt>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMutex>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <cstdio>
#include <stdexcept>
#include <unistd.h>

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

// Written whole or not at all: the driver manager may read the file at any time.
void saveFile(const QString& path, const QByteArray& content) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
        throw std::runtime_error("cannot write " + path.toStdString());
}

// A copy of the inherited user odbc.ini, whose data sources stay usable.
QString createUserOdbcIni() {
    const QString path = keptTemporaryFolder("odbc") + QStringLiteral("/odbc.ini");
    const QString inherited = environment("ODBCINI");
    saveFile(path, inherited.isEmpty() ? QByteArray() : ReadFile(inherited));
    qputenv("ODBCINI", QFile::encodeName(path));
    return path;
}

// The private user odbc.ini of this process; created, and ODBCINI set, on first use.
QString userOdbcIniPath() {
    static const QString path = createUserOdbcIni();
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

void SqliteDsn(const QString& dsnName, const QString& databasePath, const QString& driver) {
    QMutexLocker locker(&odbcIniMutex());
    const QString path = userOdbcIniPath();
    // An earlier section of that name goes: its header and the lines up to the next one.
    QString text = QString::fromUtf8(ReadFile(path));
    text.remove(QRegularExpression(
        QStringLiteral("^\\[%1\\]\n(?:[^[\n].*\n|\n)*").arg(QRegularExpression::escape(dsnName)),
        QRegularExpression::MultilineOption | QRegularExpression::CaseInsensitiveOption));
    if (!text.isEmpty() && !text.endsWith(u'\n'))
        text += u'\n';
    text += QStringLiteral("[%1]\nDriver=%2\nDatabase=%3\nStepAPI=1\n\n")
                .arg(dsnName, driver, databasePath);
    saveFile(path, text.toUtf8());
}

QString OdbcDriverLibrary(const QString& driverName) {
    const QString folder = environment("ODBCSYSINI");
    const QSettings odbcinst((folder.isEmpty() ? QStringLiteral("/etc") : folder) +
                                 QStringLiteral("/odbcinst.ini"),
                             QSettings::IniFormat);
    const QString library = odbcinst.value(driverName + QStringLiteral("/Driver")).toString();
    if (library.isEmpty() || QDir::isAbsolutePath(library))
        return QFile::exists(library) ? library : QString();
    // A bare file name is found on the library path; look where Debian puts drivers.
    QStringList candidates{QStringLiteral("/usr/lib/odbc/") + library};
    for (const QString& triplet :
         QDir(QStringLiteral("/usr/lib")).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        candidates.prepend(QStringLiteral("/usr/lib/%1/odbc/%2").arg(triplet, library));
    for (const QString& path : candidates)
        if (QFile::exists(path))
            return path;
    return QString();
}

QString TestDatabase::connectionString() const {
    return QStringLiteral("DSN=%1;UID=%2;PWD=%3").arg(dsn, user, password);
}

QString TestDatabase::binaryType(bool isLong) const {
    if (is("postgresql"))
        return QStringLiteral("BYTEA");
    if (is("mariadb"))
        return isLong ? QStringLiteral("LONGBLOB") : QStringLiteral("VARBINARY(64)");
    return QStringLiteral("BLOB");
}

QString TestDatabase::binaryLiteral(const QByteArray& bytes) const {
    const QString hex = QString::fromLatin1(bytes.toHex());
    return is("postgresql") ? QStringLiteral("decode('%1', 'hex')").arg(hex)
                            : QStringLiteral("X'%1'").arg(hex);
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

QString PrintedBy(const std::function<void()>& action) {
    QTemporaryFile file;
    if (!file.open())
        qFatal("no temporary file");
    std::fflush(stderr);
    const int saved = ::dup(STDERR_FILENO);
    ::dup2(file.handle(), STDERR_FILENO);
    action();
    std::fflush(stderr);
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    file.seek(0);
    return QString::fromLocal8Bit(file.readAll());
}

} // namespace testsupport
