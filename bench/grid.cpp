// Measures the results grid's model on a large ASSETS table.
//
//   grid --dsn NAME [--rows N] [--rounds N] [--isql PATH] [--fetch-only | --edit-only]
//
// Fills ASSETS in the data source with N generated rows (1,000,000 unless told; kept when
// the table already holds exactly N rows), then in the same run, alternating, for the
// given number of rounds: isql exporting "select * from ASSETS" through the same data
// source, and the model reading the same query. Prints the time to the first rows, the
// time until every row is in the model against isql's, the peak memory growth while
// reading against the size of the values as text, and the time of sorts on text and
// number columns. The last line sums it up for scripts. --fetch-only reads the result into
// the model once and stops, for profiling.

#include "assets/ui/grid.h"
#include "assets/resulttablemodel.h"
#include "assets/rowstext.h"
#include "assets/ui/dbgridrange.h"
#include "assets/ui/edit.h"
#include "core/ui/main.h"
#include "core/ui/messages.h"
#include "db/odbc/odbc.h"

#include <QAction>
#include <QApplication>
#include <QDate>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTimer>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <optional>
#include <stdexcept>

namespace {

using db::odbc::Connection;
using db::odbc::Statement;

void say(const QString& text) {
    std::printf("grid: %s\n", qPrintable(text));
    std::fflush(stdout);
}

// ---------------------------------------------------------------------------------
// Generated rows, in the manner of the demo database: every value comes from a fixed
// hash of the row number, so every run builds the same table.

quint32 mix(quint32 value) {
    value ^= value >> 16;
    value *= 0x7feb352dU;
    value ^= value >> 15;
    value *= 0x846ca68bU;
    value ^= value >> 16;
    return value;
}

struct AssetType {
    const char* name;
    const char* code;
    bool onNode;
    const char* info[2];
    const char* makers[3];
    const char* models[3];
    const char* sizes[2];
    int price;
};

const AssetType Types[] = {
    {"Desktop PC",
     "DT",
     false,
     {"Standard office desktop", "Workstation, dual screen"},
     {"Dell", "HP", "Lenovo"},
     {"OptiPlex 7090", "EliteDesk 800 G6", "ThinkCentre M70q"},
     {"SFF", "Tower"},
     780},
    {"Laptop",
     "LT",
     false,
     {"Standard issue laptop", "Developer laptop, 32 GB"},
     {"Lenovo", "Dell", "Apple"},
     {"ThinkPad T14", "Latitude 5420", "MacBook Pro 14"},
     {"14\"", "15.6\""},
     1150},
    {"Monitor",
     "MN",
     false,
     {"24 inch office monitor", "27 inch design monitor"},
     {"Dell", "Iiyama", "LG"},
     {"P2422H", "ProLite XUB2792", "27UL850"},
     {"24\"", "27\""},
     210},
    {"Printer",
     "PR",
     false,
     {"Floor printer", "Colour laser, shared"},
     {"HP", "Brother", "Kyocera"},
     {"LaserJet M507", "HL-L8360CDW", "ECOSYS P3155dn"},
     {"A4", "A3"},
     540},
    {"Mobile Phone",
     "MP",
     false,
     {"Company phone", "On-call phone"},
     {"Apple", "Samsung", "Google"},
     {"iPhone 13", "Galaxy S22", "Pixel 7"},
     {"6.1\"", "6.3\""},
     690},
    {"Server",
     "SV",
     true,
     {"Rack server", "Database server, mirrored"},
     {"Dell", "HPE", "Lenovo"},
     {"PowerEdge R650", "ProLiant DL380 Gen10", "ThinkSystem SR650"},
     {"1U", "2U"},
     6400},
    {"Network Switch",
     "NS",
     true,
     {"Access switch, 48 ports", "Core switch"},
     {"Cisco", "HPE Aruba", "Juniper"},
     {"Catalyst 9300", "CX 6300", "EX4300"},
     {"1U", "2U"},
     3100},
    {"Virtual Machine",
     "VM",
     true,
     {"Application server (virtual)", "Test machine (virtual)"},
     {"VMware", "Microsoft", "Red Hat"},
     {"vSphere 7 guest", "Hyper-V guest", "KVM guest"},
     {"4 vCPU", "8 vCPU"},
     0},
    {"Leased Copier",
     "LC",
     false,
     {"Leased multifunction copier", "Leased copier, finisher"},
     {"Ricoh", "Canon", "Xerox"},
     {"IM C3000", "imageRUNNER C3226i", "AltaLink C8135"},
     {"A3", "A3"},
     0},
};

const char* const Sites[] = {"London HQ", "Manchester Office", "Leeds Office", "Bristol Office",
                             "Edinburgh Office"};
const char* const SiteCodes[] = {"LDN", "MAN", "LDS", "BRS", "EDI"};
const char* const Roles[] = {"DC01",  "DC02",  "FS01",  "APP01",    "APP02",
                             "SQL01", "ESX01", "ESX02", "SWCORE01", "SWACC01"};
const char* const Depts[] = {"Finance",   "Human Resources", "IT Operations", "Sales",
                             "Marketing", "Facilities",      "Legal",         "Engineering"};
const char* const People[] = {"A. Patel",  "J. Thompson", "S. O'Brien", "M. Kowalski",
                              "R. Hughes", "L. Chen",     "D. Evans",   "K. Murphy"};
const char* const Suppliers[] = {"Northgate IT Supplies Ltd", "Pennine Computer Services",
                                 "Citywide Business Systems", "Atlas Network Solutions",
                                 "Meridian Technology Direct"};
const char* const Notes[] = {"Checked at audit",
                             "Spare, in store room",
                             "Überprüft, Etikett neu",
                             "Café floor kiosk",
                             "Battery replaced",
                             "Due for refresh",
                             "Loan unit",
                             "Screen scratched",
                             "Asset tag missing",
                             "Moved from old office"};

constexpr int ColumnCount = 20; // without ID

// One row's values; a null QString is NULL.
std::array<QString, ColumnCount> generatedRow(quint32 n) {
    const quint32 h = mix(n * 2654435761U + 17);
    const quint32 h2 = mix(h ^ 0x9e3779b9U);
    const quint32 h3 = mix(h2 + n);
    const AssetType& type = Types[h % 9];
    const int site = int(h2 % 5);
    const bool purchased = type.price > 0;
    const QDate purchased_on = QDate(2014, 1, 1).addDays(qint64(h3 % 3650));
    static const char Alphabet[] = "BCDFGHJKLMNPQRSTVWXYZ0123456789";
    QString serial = QString::fromLatin1(type.makers[h3 % 3]).left(2).toUpper();
    for (quint32 digits = 0, value = h3; digits < 8; ++digits, value /= 31)
        serial += QLatin1Char(Alphabet[value % 31]);
    std::array<QString, ColumnCount> row;
    row[0] = QString::fromUtf8(type.name);
    row[1] = QString::fromUtf8(type.info[h2 % 2]);
    row[2] = QStringLiteral("%1-%2").arg(QLatin1String(type.code)).arg(n, 7, 10, QLatin1Char('0'));
    row[3] = QString::fromUtf8(type.makers[h3 % 3]);
    row[4] = QString::fromUtf8(type.models[h3 % 3]);
    row[5] = serial;
    row[6] = type.onNode ? QStringLiteral("%1 server room, rack R%2")
                               .arg(QLatin1String(Sites[site]))
                               .arg(1 + h % 12, 2, 10, QLatin1Char('0'))
                         : QStringLiteral("%1, floor %2, room %3")
                               .arg(QLatin1String(Sites[site]))
                               .arg(1 + h3 % 4)
                               .arg(100 + h2 % 40);
    row[7] = QString::fromUtf8(Depts[(h >> 8) % 8]);
    if (type.onNode) {
        const int role = int((h >> 12) % 10);
        row[8] =
            QStringLiteral("%1-%2").arg(QLatin1String(SiteCodes[site]), QLatin1String(Roles[role]));
        row[9] = QString::number(10401 + role * 5 + site);
    }
    if (purchased) {
        row[10] = purchased_on.toString(Qt::ISODate);
        row[11] = QString::fromUtf8(People[(h2 >> 4) % 8]);
        row[12] = QString::fromUtf8(Suppliers[(h3 >> 4) % 5]);
        row[13] =
            QString::number(type.price * (88 + int(h % 25)) / 100.0 + (h2 % 100) / 100.0, 'f', 2);
    }
    row[14] = QString::fromUtf8(type.sizes[(h >> 20) % 2]);
    row[15] = QString::number(h % 7 == 0 ? 2 : 1);
    if (purchased)
        row[16] = purchased_on.addYears(3 + int(h % 3)).toString(Qt::ISODate);
    row[17] = QStringLiteral("servicedesk@%1.example")
                  .arg(QString::fromUtf8(type.makers[h3 % 3]).toLower().remove(QLatin1Char(' ')));
    row[18] = QStringLiteral("CC-%1").arg(1001 + (h2 >> 8) % 40);
    if (h3 % 5 != 0)
        row[19] = QString::fromUtf8(Notes[(h3 >> 8) % 10]);
    return row;
}

long long countRows(const Connection& connection) {
    try {
        Statement statement(connection);
        statement.executeDirect(QStringLiteral("select count(*) from ASSETS"));
        std::vector<db::odbc::Row> rows;
        statement.fetchBlock(rows);
        return rows.empty() ? -1 : rows[0][0].toLongLong();
    } catch (const db::odbc::OdbcError&) {
        return -1; // no table
    }
}

// The record editor reads the asset types and the nodes as well.
void ensureTypeAndNodeTables(Connection& connection) {
    for (const char* table : {"create table ASSETTYPES (ASSETTYPE VARCHAR(50) PRIMARY KEY, "
                              "NODEREQUIRED VARCHAR(5), SHOW_GENERAL_TAB VARCHAR(5), "
                              "SHOW_PURCHASE_TAB VARCHAR(5), SHOW_WARRANTY_TAB VARCHAR(5), "
                              "SHOW_USEREXT_TAB VARCHAR(5))",
                              "create table NODES (OBJECTID INTEGER PRIMARY KEY, NODENAME "
                              "VARCHAR(64))"}) {
        try {
            connection.execute(QLatin1String(table));
        } catch (const db::odbc::OdbcError&) {
            // already there
        }
    }
}

void buildTable(Connection& connection, qint64 rowCount) {
    ensureTypeAndNodeTables(connection);
    const long long existing = countRows(connection);
    if (existing == rowCount) {
        say(QStringLiteral("ASSETS already holds %1 rows; kept").arg(rowCount));
        return;
    }
    say(QStringLiteral("building ASSETS with %1 rows (it held %2)")
            .arg(rowCount)
            .arg(existing < 0 ? QStringLiteral("no table") : QString::number(existing)));
    QElapsedTimer timer;
    timer.start();
    if (existing >= 0)
        connection.execute(QStringLiteral("drop table ASSETS"));
    connection.execute(QStringLiteral(
        "create table ASSETS (ID INTEGER PRIMARY KEY, ASSETTYPE VARCHAR(50), INFO "
        "VARCHAR(255), ASSETID VARCHAR(50), MANUFACTURER VARCHAR(50), MODEL VARCHAR(50), "
        "SERIALNUM VARCHAR(50), ASLOCATION VARCHAR(50), DEPT VARCHAR(50), NODENAME "
        "VARCHAR(64), FKNODES INTEGER, PURCHDATE DATE, PURCHASER VARCHAR(50), SUPPLIER "
        "VARCHAR(50), ITEMVALUE DOUBLE PRECISION, ITEMSIZE VARCHAR(20), QTY INTEGER, "
        "MAINTRENEW DATE, SUPPORTCONTACT VARCHAR(100), USR_COSTCENTRE VARCHAR(20), USR_NOTES "
        "VARCHAR(255))"));
    connection.begin();
    Statement insert(connection);
    insert.prepare(QStringLiteral(
        "insert into ASSETS (ID, ASSETTYPE, INFO, ASSETID, MANUFACTURER, MODEL, SERIALNUM, "
        "ASLOCATION, DEPT, NODENAME, FKNODES, PURCHDATE, PURCHASER, SUPPLIER, ITEMVALUE, "
        "ITEMSIZE, QTY, MAINTRENEW, SUPPORTCONTACT, USR_COSTCENTRE, USR_NOTES) values "
        "(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    for (qint64 n = 1; n <= rowCount; ++n) {
        const std::array<QString, ColumnCount> row = generatedRow(quint32(n));
        insert.bindText(1, QString::number(n));
        for (int column = 0; column < ColumnCount; ++column) {
            if (row[size_t(column)].isNull())
                insert.bindNull(column + 2);
            else
                insert.bindText(column + 2, row[size_t(column)]);
        }
        insert.execute();
        if (n % 200000 == 0)
            say(QStringLiteral("... %1 rows").arg(n));
    }
    connection.commit();
    say(QStringLiteral("built in %1 s").arg(timer.elapsed() / 1000.0, 0, 'f', 1));
}

// ---------------------------------------------------------------------------------
// Measurements

struct Timing {
    qint64 wallMs = 0;
    double cpuSeconds = 0;
};

double cpuSeconds(int who) {
    rusage usage{};
    getrusage(who, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

Timing runIsql(const QString& isql, const QString& dsn, const QString& sql) {
    QProcess process;
    process.setProgram(isql);
    // -b batch, -d| the column separator, -x0x09 a tab as separator instead (hex form)
    process.setArguments(
        {QStringLiteral("-b"), QStringLiteral("-d|"), QStringLiteral("-x0x09"), dsn});
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    const double cpuBefore = cpuSeconds(RUSAGE_CHILDREN);
    QElapsedTimer timer;
    timer.start();
    process.start();
    if (!process.waitForStarted(30000))
        throw std::runtime_error("isql did not start");
    process.write((sql + QLatin1Char('\n')).toUtf8());
    process.closeWriteChannel();
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        throw std::runtime_error("isql failed");
    Timing timing;
    timing.wallMs = timer.elapsed();
    timing.cpuSeconds = cpuSeconds(RUSAGE_CHILDREN) - cpuBefore;
    return timing;
}

// Resident and peak resident memory of this process, in bytes.
qint64 statusBytes(const char* field) {
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return -1;
    const QByteArray prefix = QByteArray(field) + ':';
    for (const QByteArray& line : file.readAll().split('\n'))
        if (line.startsWith(prefix))
            return line.mid(prefix.size()).trimmed().split(' ').value(0).toLongLong() * 1024;
    return -1;
}

bool resetPeakMemory() {
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    return file.open(QIODevice::WriteOnly) && file.write("5") == 1;
}

// Runs the event loop until `signal` of `sender` fires.
template <typename Sender, typename Signal> void waitFor(const Sender* sender, Signal signal) {
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, &QEventLoop::quit);
    loop.exec();
}

struct FetchResult {
    qint64 firstRowsUs = 0;
    qint64 allRowsMs = 0;
    double cpuSeconds = 0;
    qint64 peakGrowth = 0;
    qsizetype rows = 0;
    qsizetype textBytes = 0;
    qsizetype memoryBytes = 0;
};

FetchResult runModel(const Connection& connection, assets::ResultTableModel& model,
                     const QString& sql) {
    model.close();
    FetchResult result;
    const bool peakReset = resetPeakMemory();
    const qint64 before = statusBytes("VmRSS");
    const double cpuBefore = cpuSeconds(RUSAGE_SELF);
    bool finished = false;
    QString failure;
    QEventLoop loop;
    QObject::connect(&model, &assets::ResultTableModel::fetchFinished, &loop, [&] {
        finished = true;
        loop.quit();
    });
    QObject::connect(&model, &assets::ResultTableModel::fetchFailed, &loop,
                     [&](const QString& message) {
                         failure = message;
                         loop.quit();
                     });
    QElapsedTimer timer;
    timer.start();
    Statement statement(connection);
    statement.prepare(sql);
    statement.execute();
    model.open(std::move(statement));
    result.firstRowsUs = timer.nsecsElapsed() / 1000;
    if (model.rowCount() == 0)
        throw std::runtime_error("no rows after open()");
    if (!finished && failure.isEmpty())
        loop.exec();
    result.allRowsMs = timer.elapsed();
    result.cpuSeconds = cpuSeconds(RUSAGE_SELF) - cpuBefore;
    if (!failure.isEmpty())
        throw std::runtime_error("fetch failed: " + failure.toStdString());
    const qint64 peak = peakReset ? statusBytes("VmHWM") : statusBytes("VmRSS");
    result.peakGrowth = peak - before;
    result.rows = model.rowCount();
    result.textBytes = model.textBytes();
    result.memoryBytes = model.memoryBytes();
    return result;
}

qint64 timeSort(assets::ResultTableModel& model, const QString& field, bool descending) {
    QElapsedTimer timer;
    timer.start();
    model.setSortText(QStringLiteral("[%1] %2").arg(field, descending ? QStringLiteral("DESC")
                                                                      : QStringLiteral("ASC")));
    if (!model.isSorting())
        throw std::runtime_error("no sort started for " + field.toStdString());
    waitFor(&model, &assets::ResultTableModel::layoutChanged);
    const qint64 elapsed = timer.elapsed();
    // The order must be right: check every neighbour of a sample of rows.
    const int column = model.fieldIndex(field);
    const QString kind = model.fields()[size_t(column)].isNumeric() ? QStringLiteral("number")
                                                                    : QStringLiteral("text");
    for (int row = 1; row < model.rowCount(); row += 997) {
        const QByteArrayView a = model.value(row - 1, column);
        const QByteArrayView b = model.value(row, column);
        const bool aNull = model.isNull(row - 1, column);
        const bool bNull = model.isNull(row, column);
        bool inOrder = true;
        if (aNull || bNull)
            inOrder = descending ? bNull || !aNull : aNull || !bNull;
        else if (kind == QLatin1String("number"))
            inOrder = descending ? a.toByteArray().toDouble() >= b.toByteArray().toDouble()
                                 : a.toByteArray().toDouble() <= b.toByteArray().toDouble();
        else
            inOrder = descending ? a.compare(b) >= 0 : a.compare(b) <= 0;
        if (!inOrder)
            throw std::runtime_error("rows out of order after sorting by " + field.toStdString());
    }
    return elapsed;
}

QString megabytes(qint64 bytes) {
    return QString::number(bytes / 1048576.0, 'f', 1) + " MiB";
}

// Posts an edit of a record on the first screen of the whole result in the main window's
// docked editor. The window is responsive again when the post returns: the refresh runs
// the query again and does not wait for the rest of the result. The editor is back on the
// record once its row has arrived.
struct EditRefresh {
    qint64 responsiveMs = 0;
    qint64 sameRecordMs = 0;
};

EditRefresh measureEditRefresh(const QString& dsn) {
    ui::SetUnattended(true);
    ui::TfmMain window(
        QStringLiteral("\"grid\" \"ODBC=%1\" \"SQL=select * from ASSETS\"").arg(dsn));
    window.show();
    window.findChild<QAction*>(QStringLiteral("ViewEditForm"))->trigger();
    ui::TEditForm* editor = window.editForm();
    ui::TDBGridRange* grid = window.gridForm()->Grid();
    if (!editor)
        throw std::runtime_error("the record editor did not open");
    const auto settle = [&](const QString& id) {
        QElapsedTimer waited;
        waited.start();
        while (editor->CurrentId() != id && waited.elapsed() < 60000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    };
    grid->setCurrentIndex(grid->model()->index(25, 1));
    const QString id = QString::number(26);
    settle(id);
    assets::TableDataSet& record = editor->AssetsTable();
    record.edit();
    record.setAsText(QStringLiteral("INFO"), QStringLiteral("edited by the benchmark"));
    QElapsedTimer timer;
    timer.start();
    editor->Post();
    EditRefresh result;
    result.responsiveMs = timer.elapsed();
    settle(id);
    result.sameRecordMs = timer.elapsed();
    if (editor->CurrentId() != id)
        throw std::runtime_error("the editor did not come back to the record");
    return result;
}

} // namespace

int main(int argc, char** argv) {
    // The window of the edit measure is never shown on a screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QString dsn;
    qint64 rowCount = 1000000;
    int rounds = 2;
    QString isql = QStringLiteral("isql");
    bool fetchOnly = false;
    bool editOnly = false;
    const QStringList arguments = app.arguments();
    for (qsizetype index = 1; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        const QString next = arguments.value(index + 1);
        if (argument == QLatin1String("--dsn"))
            dsn = next, ++index;
        else if (argument == QLatin1String("--rows"))
            rowCount = next.toLongLong(), ++index;
        else if (argument == QLatin1String("--rounds"))
            rounds = std::max(1, next.toInt()), ++index;
        else if (argument == QLatin1String("--isql"))
            isql = next, ++index;
        else if (argument == QLatin1String("--fetch-only"))
            fetchOnly = true;
        else if (argument == QLatin1String("--edit-only"))
            editOnly = true;
        else {
            std::fprintf(stderr, "usage: grid --dsn NAME [--rows N] [--rounds N] [--isql PATH] "
                                 "[--fetch-only | --edit-only]\n");
            return 2;
        }
    }
    if (dsn.isEmpty() || rowCount <= 0) {
        std::fprintf(stderr, "usage: grid --dsn NAME [--rows N] [--rounds N] [--isql PATH] "
                             "[--fetch-only | --edit-only]\n");
        return 2;
    }
    try {
        Connection connection;
        connection.open(QStringLiteral("DSN=%1").arg(dsn));
        say(QStringLiteral("data source %1 (%2)").arg(dsn, connection.dbmsName()));
        buildTable(connection, rowCount);

        if (editOnly) {
            const EditRefresh edit = measureEditRefresh(dsn);
            say(QStringLiteral("edit posted, responsive %1 ms (editor on the record after %2 ms)")
                    .arg(edit.responsiveMs)
                    .arg(edit.sameRecordMs));
            return 0;
        }
        const QString sql = QStringLiteral("select * from ASSETS");
        assets::ResultTableModel model;
        if (fetchOnly) {
            const FetchResult fetch = runModel(connection, model, sql);
            say(QStringLiteral("model: first rows %1 ms, all %2 rows %3 ms (cpu %4 s), peak "
                               "growth %5, text %6")
                    .arg(fetch.firstRowsUs / 1000.0, 0, 'f', 1)
                    .arg(fetch.rows)
                    .arg(fetch.allRowsMs)
                    .arg(fetch.cpuSeconds, 0, 'f', 2)
                    .arg(megabytes(fetch.peakGrowth), megabytes(fetch.textBytes)));
            return 0;
        }
        std::optional<FetchResult> first;
        FetchResult best;
        Timing bestIsql;
        for (int round = 1; round <= rounds; ++round) {
            const Timing isqlTiming = runIsql(isql, dsn, sql);
            say(QStringLiteral("round %1: isql %2 ms (cpu %3 s)")
                    .arg(round)
                    .arg(isqlTiming.wallMs)
                    .arg(isqlTiming.cpuSeconds, 0, 'f', 2));
            const FetchResult fetch = runModel(connection, model, sql);
            say(QStringLiteral("round %1: model first rows %2 ms, all %3 rows %4 ms (cpu %5 s), "
                               "peak growth %6")
                    .arg(round)
                    .arg(fetch.firstRowsUs / 1000.0, 0, 'f', 1)
                    .arg(fetch.rows)
                    .arg(fetch.allRowsMs)
                    .arg(fetch.cpuSeconds, 0, 'f', 2)
                    .arg(megabytes(fetch.peakGrowth)));
            if (fetch.rows != rowCount)
                throw std::runtime_error("the model holds a different number of rows");
            if (!first) {
                first = fetch;
                best = fetch;
                bestIsql = isqlTiming;
            } else {
                best.firstRowsUs = std::min(best.firstRowsUs, fetch.firstRowsUs);
                best.allRowsMs = std::min(best.allRowsMs, fetch.allRowsMs);
                best.cpuSeconds = std::min(best.cpuSeconds, fetch.cpuSeconds);
                bestIsql.wallMs = std::min(bestIsql.wallMs, isqlTiming.wallMs);
                bestIsql.cpuSeconds = std::min(bestIsql.cpuSeconds, isqlTiming.cpuSeconds);
            }
        }
        // Memory from the first round: later ones may reuse what the first one freed.
        const double memoryRatio = double(first->peakGrowth) / double(first->textBytes);
        const double fetchRatio =
            double(best.allRowsMs) / double(std::max<qint64>(1, bestIsql.wallMs));

        struct SortTiming {
            QString field;
            bool descending;
            qint64 ms;
        };
        std::vector<SortTiming> textSorts;
        std::vector<SortTiming> numberSorts;
        for (const char* field : {"MANUFACTURER", "SERIALNUM", "ASLOCATION", "USR_NOTES"})
            textSorts.push_back({QString::fromLatin1(field), false,
                                 timeSort(model, QString::fromLatin1(field), false)});
        textSorts.push_back({QStringLiteral("ASLOCATION"), true,
                             timeSort(model, QStringLiteral("ASLOCATION"), true)});
        for (const char* field : {"ITEMVALUE", "ID", "FKNODES"})
            numberSorts.push_back({QString::fromLatin1(field), false,
                                   timeSort(model, QString::fromLatin1(field), false)});
        numberSorts.push_back({QStringLiteral("ITEMVALUE"), true,
                               timeSort(model, QStringLiteral("ITEMVALUE"), true)});
        const qint64 dateSort = timeSort(model, QStringLiteral("PURCHDATE"), false);
        // Ctrl+C on every row: the values as shown, tab-separated.
        const qint64 copyMs = [&] {
            std::vector<int> rows(size_t(model.rowCount()));
            std::iota(rows.begin(), rows.end(), 0);
            std::vector<int> columns(size_t(model.columnCount()));
            std::iota(columns.begin(), columns.end(), 0);
            QElapsedTimer timer;
            timer.start();
            const QString text = assets::RowsAsText(model, rows, columns);
            return text.isEmpty() ? qint64(-1) : timer.elapsed();
        }();
        const EditRefresh editRefresh = measureEditRefresh(dsn);
        const qint64 arrival = [&] {
            QElapsedTimer timer;
            timer.start();
            model.setSortText(QString());
            return timer.elapsed();
        }();

        say(QStringLiteral("------------------------------------------------------------"));
        say(QStringLiteral("rows                      %1 x %2 columns")
                .arg(best.rows)
                .arg(model.columnCount()));
        say(QStringLiteral("values as text            %1").arg(megabytes(first->textBytes)));
        say(QStringLiteral("model memory (store)      %1 (%2 x text)")
                .arg(megabytes(first->memoryBytes))
                .arg(double(first->memoryBytes) / double(first->textBytes), 0, 'f', 2));
        say(QStringLiteral("peak RSS growth, fetch    %1 (%2 x text)")
                .arg(megabytes(first->peakGrowth))
                .arg(memoryRatio, 0, 'f', 2));
        say(QStringLiteral("first rows in the model   %1 ms")
                .arg(best.firstRowsUs / 1000.0, 0, 'f', 1));
        say(QStringLiteral("all rows in the model     %1 ms (cpu %2 s)")
                .arg(best.allRowsMs)
                .arg(best.cpuSeconds, 0, 'f', 2));
        say(QStringLiteral("isql export               %1 ms (cpu %2 s)")
                .arg(bestIsql.wallMs)
                .arg(bestIsql.cpuSeconds, 0, 'f', 2));
        say(QStringLiteral("fetch ratio vs isql       %1 (best of %2 rounds each)")
                .arg(fetchRatio, 0, 'f', 2)
                .arg(rounds));
        for (const SortTiming& sort : textSorts)
            say(QStringLiteral("sort text   %1 %2 %3 ms")
                    .arg(sort.field, -14)
                    .arg(sort.descending ? QStringLiteral("DESC") : QStringLiteral("ASC "))
                    .arg(sort.ms));
        for (const SortTiming& sort : numberSorts)
            say(QStringLiteral("sort number %1 %2 %3 ms")
                    .arg(sort.field, -14)
                    .arg(sort.descending ? QStringLiteral("DESC") : QStringLiteral("ASC "))
                    .arg(sort.ms));
        say(QStringLiteral("sort date   %1 ASC  %2 ms")
                .arg(QStringLiteral("PURCHDATE"), -14)
                .arg(dateSort));
        say(QStringLiteral("back to arrival order     %1 ms").arg(arrival));
        say(QStringLiteral("edit posted, responsive   %1 ms (editor on the record after %2 ms)")
                .arg(editRefresh.responsiveMs)
                .arg(editRefresh.sameRecordMs));
        say(QStringLiteral("copy all rows as text     %1 ms (%2 x isql export)")
                .arg(copyMs)
                .arg(double(copyMs) / double(bestIsql.wallMs), 0, 'f', 2));
        auto slowest = [](const std::vector<SortTiming>& sorts) {
            qint64 ms = 0;
            for (const SortTiming& sort : sorts)
                ms = std::max(ms, sort.ms);
            return ms;
        };
        std::printf("grid: first-rows-ms=%.1f fetch-ratio-vs-isql=%.2f peak-mem-ratio=%.2f "
                    "sort-text-ms=%lld sort-num-ms=%lld copy-ratio-vs-isql=%.2f "
                    "edit-refresh-ms=%lld\n",
                    best.firstRowsUs / 1000.0, fetchRatio, memoryRatio,
                    static_cast<long long>(slowest(textSorts)),
                    static_cast<long long>(slowest(numberSorts)),
                    double(copyMs) / double(bestIsql.wallMs),
                    static_cast<long long>(editRefresh.responsiveMs));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "grid: error: %s\n", error.what());
        return 1;
    }
}
