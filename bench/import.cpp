// Measures the asset import of a large asset file.
//
//   import --sqlite-dsn NAME --sqlite-db PATH --pg-dsn NAME --pg-port PORT [--rows N]
//          [--folder DIR]
//   import --import-only --connect TEXT --file PATH [--rows-per-statement N] [--status-line]
//
// Fills ASSETS of the SQLite data source with N generated rows (1,000,000 unless told;
// kept when it holds that many), writes them as an asset file (dates yyyy-mm-dd), then
// imports the file, in processes of their own, into an empty SQLite database and into
// PostgreSQL, against sqlite3 .import and psql \copy of the same rows and against a
// python3-pyodbc script executing one INSERT per row in one transaction (into SQLite).
// The last line sums it up:
//   import: sqlite-ratio-vs-cli=R pg-ratio-vs-copy=R speedup-vs-pyodbc=R peak-mib=M
//
// --import-only imports the file once through the connection, with "Continue import";
// --status-line paints the progress on an offscreen main window's status bar.

#include "assetdata.h"
#include "core/dateformat.h"
#include "db/odbc/odbc.h"
#include "interchange/importer.h"
#include "interchange/ui/statusprogress.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QMainWindow>
#include <QProcess>
#include <QStatusBar>

#include <sys/resource.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace {

class Silent : public interchange::Progress {
public:
    void status(const QString&) override {}
    void setMaximum(qint64) override {}
    void setPosition(qint64) override {}
    void message(const QString& title, const QString& text, interchange::MessageIcon) override {
        std::printf("import: box %s: %s\n", qPrintable(title), qPrintable(text));
    }
    void beep() override {}
};

QString argument(const QStringList& arguments, const char* name, const QString& fallback = {}) {
    const qsizetype at = arguments.indexOf(QLatin1String(name));
    return at >= 0 && at + 1 < arguments.size() ? arguments[at + 1] : fallback;
}

} // namespace

int importOnly(const QStringList& arguments) {
    core::ApplyDateFormat(QStringLiteral("yyyy-mm-dd"));
    interchange::ImportSettings settings;
    settings.FileName = argument(arguments, "--file");
    settings.Delimiter = QStringLiteral(";");
    settings.Node = QStringLiteral("UNSPECIFIED");
    const int rowsPerStatement = argument(arguments, "--rows-per-statement",
                                          QString::number(interchange::DefaultRowsPerStatement))
                                     .toInt();
    db::odbc::Connection connection;
    connection.open(argument(arguments, "--connect"));
    QMainWindow window;
    auto* statusLine = new QLabel(&window);
    window.statusBar()->addWidget(statusLine, 1);
    window.resize(900, 600);
    std::unique_ptr<interchange::Progress> progress;
    if (arguments.contains(QStringLiteral("--status-line"))) {
        window.show();
        progress = std::make_unique<interchange::ui::StatusProgress>(&window, statusLine);
    } else {
        progress = std::make_unique<Silent>();
    }
    const interchange::ImportResult result =
        interchange::ImportAssets(connection, settings, *progress, rowsPerStatement);
    return result.errors == 0 ? 0 : 1;
}

void say(const QString& text) {
    std::printf("import: %s\n", qPrintable(text));
    std::fflush(stdout);
}

// The ASSETS table's rows as an asset file (header, values each followed by ";", CR LF)
// and as the same rows for the command-line clients (no header, no last ";").
void writeFiles(const QString& database, const QString& assetFile, const QString& peerFile) {
    QProcess dump;
    dump.start(QStringLiteral("sqlite3"),
               {QStringLiteral("-header"), QStringLiteral("-separator"), QStringLiteral(";"),
                database, QStringLiteral("select * from ASSETS order by ID")});
    QFile assets(assetFile);
    QFile peer(peerFile);
    if (!dump.waitForStarted() || !assets.open(QIODevice::WriteOnly) ||
        !peer.open(QIODevice::WriteOnly))
        throw std::runtime_error("cannot write the asset files");
    bool header = true;
    QByteArray pending;
    auto writeLine = [&](const QByteArray& line) {
        assets.write(line + (header ? "\r\n" : ";\r\n"));
        if (!header)
            peer.write(line + '\n');
        header = false;
    };
    while (dump.waitForReadyRead(-1) || dump.bytesAvailable() > 0) {
        pending += dump.readAll();
        qsizetype end;
        while ((end = pending.indexOf('\n')) >= 0) {
            writeLine(pending.left(end));
            pending.remove(0, end + 1);
        }
        if (dump.state() == QProcess::NotRunning && dump.bytesAvailable() == 0)
            break;
    }
    dump.waitForFinished(-1);
}

QString columnsOf(const QString& assetFile) {
    QFile file(assetFile);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read the asset file");
    return QString::fromUtf8(file.readLine()).trimmed().replace(u';', u',');
}

const char* const TargetTables =
    "CREATE TABLE ASSETS (ID %1, ASSETTYPE VARCHAR(50), INFO VARCHAR(255), ASSETID VARCHAR(50), "
    "MANUFACTURER VARCHAR(50), MODEL VARCHAR(50), SERIALNUM VARCHAR(50), ASLOCATION VARCHAR(50), "
    "DEPT VARCHAR(50), NODENAME VARCHAR(64), FKNODES INTEGER, PURCHDATE DATE, "
    "PURCHASER VARCHAR(50), SUPPLIER VARCHAR(50), ITEMVALUE DOUBLE PRECISION, "
    "ITEMSIZE VARCHAR(20), QTY INTEGER, MAINTRENEW DATE, SUPPORTCONTACT VARCHAR(100), "
    "USR_COSTCENTRE VARCHAR(20), USR_NOTES VARCHAR(255));"
    "CREATE TABLE ASSETTYPES (ASSETTYPE VARCHAR(50) PRIMARY KEY, NODEREQUIRED VARCHAR(5));"
    "CREATE TABLE NODES (OBJECTID INTEGER PRIMARY KEY, NODENAME VARCHAR(64));";

// An empty SQLite database with the asset tables.
void freshSqlite(const QString& path) {
    QFile::remove(path);
    bench::runProgram(QStringLiteral("sqlite3"),
                      {path, QString::fromLatin1(TargetTables).arg("INTEGER PRIMARY KEY")});
}

void freshPostgres(const QString& dsn) {
    db::odbc::Connection connection;
    connection.open(QStringLiteral("DSN=") + dsn);
    connection.execute(QStringLiteral("DROP TABLE IF EXISTS ASSETS, ASSETTYPES, NODES"));
    for (const QString& statement : QString::fromLatin1(TargetTables)
                                        .arg("SERIAL PRIMARY KEY")
                                        .split(u';', Qt::SkipEmptyParts))
        connection.execute(statement);
}

double seconds(const bench::Timing& timing) {
    return double(timing.wallMs) / 1000.0;
}

int measure(const QStringList& arguments) {
    const QString folder = argument(arguments, "--folder", QDir::currentPath());
    const qint64 rows = argument(arguments, "--rows", QStringLiteral("1000000")).toLongLong();
    const QString sourceDb = argument(arguments, "--sqlite-db");
    {
        db::odbc::Connection source;
        source.open(QStringLiteral("DSN=") + argument(arguments, "--sqlite-dsn"));
        bench::buildTable(source, rows, say);
    }
    const QString assetFile = folder + QStringLiteral("/bench-import-assets.txt");
    const QString peerFile = folder + QStringLiteral("/bench-import-peer.txt");
    writeFiles(sourceDb, assetFile, peerFile);
    say(QStringLiteral("asset file: %1 rows, %2")
            .arg(rows)
            .arg(bench::megabytes(QFile(assetFile).size())));
    const QString columns = columnsOf(assetFile);
    const QString self = QCoreApplication::applicationFilePath();
    const QString target = folder + QStringLiteral("/bench-import-target.db");
    const QStringList psql{
        QStringLiteral("-X"),        QStringLiteral("-q"),      QStringLiteral("-h"),
        QStringLiteral("127.0.0.1"), QStringLiteral("-p"),      argument(arguments, "--pg-port"),
        QStringLiteral("-U"),        QStringLiteral("quillet"), QStringLiteral("-d"),
        QStringLiteral("quillet"),   QStringLiteral("-v"),      QStringLiteral("ON_ERROR_STOP=1")};
    auto ours = [&](const QString& connect) {
        return bench::runProgram(self,
                                 {QStringLiteral("--import-only"), QStringLiteral("--connect"),
                                  connect, QStringLiteral("--file"), assetFile});
    };

    freshSqlite(target);
    const bench::Timing sqliteCli =
        bench::runProgram(QStringLiteral("sqlite3"),
                          {target, QStringLiteral(".separator ;"),
                           QStringLiteral(".import ") + peerFile + QStringLiteral(" ASSETS")});
    freshSqlite(target);
    const bench::Timing sqliteOurs =
        ours(QStringLiteral("Driver=SQLite3;Database=%1;StepAPI=1").arg(target));
    say(QStringLiteral("SQLite: ours %1 s (peak %2), sqlite3 .import %3 s")
            .arg(seconds(sqliteOurs))
            .arg(bench::megabytes(sqliteOurs.peakRssBytes))
            .arg(seconds(sqliteCli)));

    freshPostgres(argument(arguments, "--pg-dsn"));
    const bench::Timing pgCopy = bench::runProgram(
        QStringLiteral("psql"),
        psql + QStringList{QStringLiteral("-c"),
                           QStringLiteral("\\copy ASSETS(%1) from '%2' with (format text, "
                                          "delimiter ';', null '')")
                               .arg(columns, peerFile)});
    freshPostgres(argument(arguments, "--pg-dsn"));
    const bench::Timing pgOurs = ours(QStringLiteral("DSN=") + argument(arguments, "--pg-dsn"));
    say(QStringLiteral("PostgreSQL: ours %1 s (peak %2), psql \\copy %3 s")
            .arg(seconds(pgOurs))
            .arg(bench::megabytes(pgOurs.peakRssBytes))
            .arg(seconds(pgCopy)));

    double speedup = 0;
    freshSqlite(target);
    try {
        const bench::Timing script = bench::runProgram(
            QStringLiteral("/usr/bin/python3"),
            {QStringLiteral(QUILLET_SOURCE_DIR "/bench/import_pyodbc.py"),
             QStringLiteral("Driver=SQLite3;Database=%1;StepAPI=1").arg(target), assetFile});
        speedup = seconds(script) / seconds(sqliteOurs);
        say(QStringLiteral("SQLite: python3-pyodbc, one execute per row, %1 s")
                .arg(seconds(script)));
    } catch (const std::exception& error) {
        say(QStringLiteral("python3-pyodbc script failed: %1")
                .arg(QString::fromUtf8(error.what())));
    }
    std::printf("import: sqlite-ratio-vs-cli=%.2f pg-ratio-vs-copy=%.2f speedup-vs-pyodbc=%.1f "
                "peak-mib=%.1f\n",
                seconds(sqliteOurs) / seconds(sqliteCli), seconds(pgOurs) / seconds(pgCopy),
                speedup,
                double(qMax(sqliteOurs.peakRssBytes, pgOurs.peakRssBytes)) / (1024.0 * 1024.0));
    return 0;
}

int main(int argc, char** argv) {
    // The status bar is painted offscreen: no display is needed.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    try {
        return arguments.contains(QStringLiteral("--import-only")) ? importOnly(arguments)
                                                                   : measure(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "import: %s\n", error.what());
        return 1;
    }
}
