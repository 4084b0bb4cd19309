// Measures the export of a large ASSETS table to a delimited file.
//
//   export --sqlite-dsn NAME --sqlite-db PATH --pg-dsn NAME --pg-port PORT [--rows N]
//          [--rounds N] [--folder DIR]
//   export --export-only --dsn NAME --file PATH [--peak-file PATH]
//
// Fills ASSETS in both data sources with N generated rows (1,000,000 unless told; a table
// that already holds exactly N rows is kept), then, for each, alternating for the given
// number of rounds: our export (a process of its own, so that its peak memory is its own),
// the database's own client writing CSV (sqlite3 -csv, psql \copy ... to) and isql
// through the same data source. The best time of each counts. The last line sums it up:
//   export: sqlite-ratio-vs-cli=R pg-ratio-vs-cli=R ratio-vs-isql=R peak-mib=M
// where ratio-vs-isql is the larger of the two databases' ratios and peak-mib the larger
// peak resident memory of the export process.
//
// The asset file exported from SQLite stays in the folder as bench-assets-sqlite.txt.
//
// --export-only exports every asset once into the file, in an offscreen main window with
// its status bar, as the Export command does; --peak-file receives its peak resident
// memory in bytes.

#include "interchange/export.h"
#include "assetdata.h"
#include "assets/resulttablemodel.h"
#include "core/ui/messages.h"
#include "db/odbc/odbc.h"
#include "interchange/ui/statusprogress.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>
#include <stdexcept>

namespace {

using namespace bench;

void say(const QString& text) {
    std::printf("export: %s\n", qPrintable(text));
    std::fflush(stdout);
}

// The export as the main window runs it: a result with an ID field in the grid, every
// record of ASSETS to the file.
int exportOnce(const QString& dsn, const QString& fileName, const QString& peakFile) {
    db::odbc::Connection connection;
    connection.open(QStringLiteral("DSN=%1").arg(dsn));
    assets::ResultTableModel grid;
    db::odbc::Statement query(connection);
    query.executeDirect(QStringLiteral("select ID from ASSETS where ID < 0"));
    grid.open(std::move(query));
    grid.waitForAllRows();
    QMainWindow window;
    auto* statusLine = new QLabel(&window);
    window.statusBar()->addWidget(statusLine, 1);
    window.resize(800, 600);
    window.show();
    ui::SetUnattended(true);
    interchange::ui::StatusProgress progress(&window, statusLine);
    interchange::ExportAssets(connection, fileName, QStringLiteral(";"), nullptr, true, &grid, {},
                              progress);
    // The parent cannot tell this: a child's ru_maxrss starts from the parent's own peak.
    QFile peak(peakFile);
    if (!peakFile.isEmpty() && peak.open(QIODevice::WriteOnly))
        peak.write(QByteArray::number(statusBytes("VmHWM")));
    return ui::ErrorWasShown() ? 1 : 0;
}

qint64 lineCount(const QString& fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    qint64 lines = 0;
    QByteArray block;
    while (!(block = file.read(1 << 20)).isEmpty())
        lines += block.count('\n');
    return lines;
}

struct Best {
    std::optional<Timing> timing;
    void add(const Timing& next) {
        if (!timing) {
            timing = next;
            return;
        }
        timing->wallMs = std::min(timing->wallMs, next.wallMs);
        timing->cpuSeconds = std::min(timing->cpuSeconds, next.cpuSeconds);
        timing->peakRssBytes = std::max(timing->peakRssBytes, next.peakRssBytes);
    }
    qint64 ms() const { return std::max<qint64>(1, timing->wallMs); }
};

struct DatabaseRun {
    DatabaseRun(QString label, QString dsn, QString cliName,
                std::function<Timing(const QString& file)> cli)
        : label(std::move(label)), dsn(std::move(dsn)), cliName(std::move(cliName)),
          cli(std::move(cli)) {}
    QString label;
    QString dsn;
    QString cliName;
    std::function<Timing(const QString& file)> cli;
    Best ours, peer, isql;
    qint64 fileBytes = 0;
};

QString timingText(const Timing& timing) {
    QString text =
        QStringLiteral("%1 ms (cpu %2 s)").arg(timing.wallMs).arg(timing.cpuSeconds, 0, 'f', 2);
    if (timing.peakRssBytes > 0)
        text += QStringLiteral(", peak ") + megabytes(timing.peakRssBytes);
    return text;
}

void measure(DatabaseRun& run, int rounds, qint64 rowCount, const QString& folder,
             const QString& self, bool keepFile) {
    const QString file =
        QDir(folder).filePath(QStringLiteral("bench-assets-%1.txt").arg(run.label));
    for (int round = 1; round <= rounds; ++round) {
        // A child's ru_maxrss counts this process's image before exec: not shown.
        Timing peer = run.cli(file);
        peer.peakRssBytes = 0;
        run.peer.add(peer);
        Timing isql =
            runIsql(QStringLiteral("isql"), run.dsn, QStringLiteral("select * from ASSETS"), file);
        isql.peakRssBytes = 0;
        run.isql.add(isql);
        const QString peakFile = file + QStringLiteral(".peak");
        Timing ours = runProgram(self, {QStringLiteral("--export-only"), QStringLiteral("--dsn"),
                                        run.dsn, QStringLiteral("--file"), file,
                                        QStringLiteral("--peak-file"), peakFile});
        QFile peak(peakFile);
        ours.peakRssBytes = peak.open(QIODevice::ReadOnly) ? peak.readAll().toLongLong() : -1;
        QFile::remove(peakFile);
        run.ours.add(ours);
        const qint64 lines = lineCount(file);
        if (lines != rowCount + 1)
            throw std::runtime_error(QStringLiteral("%1: the export wrote %2 lines, not %3")
                                         .arg(run.label)
                                         .arg(lines)
                                         .arg(rowCount + 1)
                                         .toStdString());
        run.fileBytes = QFileInfo(file).size();
        say(QStringLiteral("%1 round %2: %3 %4; isql %5; ours %6")
                .arg(run.label)
                .arg(round)
                .arg(run.cliName, timingText(peer), timingText(isql), timingText(ours)));
    }
    // The last asset file stays for the import benchmark.
    if (!keepFile)
        QFile::remove(file);
}

int usage() {
    std::fprintf(stderr, "usage: export --sqlite-dsn NAME --sqlite-db PATH --pg-dsn NAME "
                         "--pg-port PORT [--rows N] [--rounds N] [--folder DIR]\n"
                         "       export --export-only --dsn NAME --file PATH [--peak-file PATH]\n");
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QString sqliteDsn, sqliteDb, pgDsn, pgPort, dsn, file, peakFile;
    QString folder = QDir::tempPath();
    qint64 rowCount = 1000000;
    int rounds = 2;
    bool exportOnly = false;
    const QStringList arguments = app.arguments();
    for (qsizetype index = 1; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        const QString next = arguments.value(index + 1);
        QString* value = argument == QLatin1String("--sqlite-dsn")  ? &sqliteDsn
                         : argument == QLatin1String("--sqlite-db") ? &sqliteDb
                         : argument == QLatin1String("--pg-dsn")    ? &pgDsn
                         : argument == QLatin1String("--pg-port")   ? &pgPort
                         : argument == QLatin1String("--dsn")       ? &dsn
                         : argument == QLatin1String("--file")      ? &file
                         : argument == QLatin1String("--folder")    ? &folder
                         : argument == QLatin1String("--peak-file") ? &peakFile
                                                                    : nullptr;
        if (value)
            *value = next, ++index;
        else if (argument == QLatin1String("--rows"))
            rowCount = next.toLongLong(), ++index;
        else if (argument == QLatin1String("--rounds"))
            rounds = std::max(1, next.toInt()), ++index;
        else if (argument == QLatin1String("--export-only"))
            exportOnly = true;
        else
            return usage();
    }
    try {
        if (exportOnly)
            return dsn.isEmpty() || file.isEmpty() ? usage() : exportOnce(dsn, file, peakFile);
        if (sqliteDsn.isEmpty() || sqliteDb.isEmpty() || pgDsn.isEmpty() || pgPort.isEmpty() ||
            rowCount <= 0)
            return usage();
        const QString sql = QStringLiteral("select * from ASSETS");
        DatabaseRun sqlite{QStringLiteral("sqlite"), sqliteDsn, QStringLiteral("sqlite3 -csv"),
                           [&](const QString& out) {
                               return runProgram(QStringLiteral("sqlite3"),
                                                 {QStringLiteral("-csv"), sqliteDb, sql}, out);
                           }};
        DatabaseRun pg{QStringLiteral("postgresql"), pgDsn, QStringLiteral("psql \\copy"),
                       [&](const QString& out) {
                           return runProgram(
                               QStringLiteral("psql"),
                               {QStringLiteral("-X"), QStringLiteral("-q"), QStringLiteral("-h"),
                                QStringLiteral("127.0.0.1"), QStringLiteral("-p"), pgPort,
                                QStringLiteral("-U"), QStringLiteral("quillet"),
                                QStringLiteral("-d"), QStringLiteral("quillet"),
                                QStringLiteral("-c"),
                                QStringLiteral("\\copy (%1) to '%2' csv").arg(sql, out)});
                       }};
        for (DatabaseRun* run : {&sqlite, &pg}) {
            db::odbc::Connection connection;
            connection.open(QStringLiteral("DSN=%1").arg(run->dsn));
            say(QStringLiteral("data source %1 (%2)").arg(run->dsn, connection.dbmsName()));
            buildTable(connection, rowCount, say);
        }
        say(QStringLiteral("machine: load average before the runs %1").arg(QString::fromLatin1([] {
            QFile load(QStringLiteral("/proc/loadavg"));
            return load.open(QIODevice::ReadOnly) ? load.readLine(64).trimmed() : QByteArray();
        }())));
        measure(sqlite, rounds, rowCount, folder, arguments.first(), true);
        measure(pg, rounds, rowCount, folder, arguments.first(), false);

        say(QStringLiteral("------------------------------------------------------------"));
        double worstIsql = 0;
        qint64 peak = 0;
        for (const DatabaseRun* run : {&sqlite, &pg}) {
            const double cliRatio = double(run->ours.ms()) / double(run->peer.ms());
            const double isqlRatio = double(run->ours.ms()) / double(run->isql.ms());
            worstIsql = std::max(worstIsql, isqlRatio);
            peak = std::max(peak, run->ours.timing->peakRssBytes);
            say(QStringLiteral("%1: %2 rows, file %3; ours %4 ms, %5 %6 ms (%7x), isql %8 ms "
                               "(%9x), export peak %10")
                    .arg(run->label)
                    .arg(rowCount)
                    .arg(megabytes(run->fileBytes))
                    .arg(run->ours.ms())
                    .arg(run->cliName)
                    .arg(run->peer.ms())
                    .arg(cliRatio, 0, 'f', 2)
                    .arg(run->isql.ms())
                    .arg(isqlRatio, 0, 'f', 2)
                    .arg(megabytes(run->ours.timing->peakRssBytes)));
        }
        std::printf("export: sqlite-ratio-vs-cli=%.2f pg-ratio-vs-cli=%.2f ratio-vs-isql=%.2f "
                    "peak-mib=%.1f\n",
                    double(sqlite.ours.ms()) / double(sqlite.peer.ms()),
                    double(pg.ours.ms()) / double(pg.peer.ms()), worstIsql,
                    double(peak) / 1048576.0);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "export: error: %s\n", error.what());
        return 1;
    }
}
