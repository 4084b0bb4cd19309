#include "assetdata.h"

#include <QDate>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <sys/resource.h>
#include <sys/wait.h>

#include <array>
#include <stdexcept>

namespace bench {

using db::odbc::Connection;
using db::odbc::Statement;

namespace {

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

} // namespace

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

namespace {

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

} // namespace

void buildTable(Connection& connection, qint64 rowCount, const Say& say) {
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
    // Many rows per statement: a round trip per row would take minutes on a server.
    constexpr qint64 RowsPerStatement = 500;
    const QString columns = QStringLiteral(
        "insert into ASSETS (ID, ASSETTYPE, INFO, ASSETID, MANUFACTURER, MODEL, SERIALNUM, "
        "ASLOCATION, DEPT, NODENAME, FKNODES, PURCHDATE, PURCHASER, SUPPLIER, ITEMVALUE, "
        "ITEMSIZE, QTY, MAINTRENEW, SUPPORTCONTACT, USR_COSTCENTRE, USR_NOTES) values ");
    for (qint64 first = 1; first <= rowCount; first += RowsPerStatement) {
        QString sql = columns;
        for (qint64 n = first; n < first + RowsPerStatement && n <= rowCount; ++n) {
            if (n != first)
                sql += QLatin1Char(',');
            sql += QStringLiteral("(") + QString::number(n);
            for (const QString& value : generatedRow(quint32(n)))
                sql += value.isNull()
                           ? QStringLiteral(",NULL")
                           : QStringLiteral(",'") +
                                 QString(value).replace(QLatin1Char('\''), QStringLiteral("''")) +
                                 QLatin1Char('\'');
            sql += QLatin1Char(')');
        }
        connection.execute(sql);
        if ((first + RowsPerStatement - 1) % 200000 == 0)
            say(QStringLiteral("... %1 rows").arg(first + RowsPerStatement - 1));
    }
    connection.commit();
    say(QStringLiteral("built in %1 s").arg(timer.elapsed() / 1000.0, 0, 'f', 1));
}

double cpuSeconds(int who) {
    rusage usage{};
    getrusage(who, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
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

QString megabytes(qint64 bytes) {
    return QString::number(bytes / 1048576.0, 'f', 1) + " MiB";
}

Timing runProgram(const QString& program, const QStringList& arguments, const QString& outputFile,
                  const QByteArray& input) {
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setStandardOutputFile(outputFile.isEmpty() ? QProcess::nullDevice() : outputFile);
    process.setStandardErrorFile(QProcess::nullDevice());
    // The child's peak memory: wait4 on it ourselves instead of QProcess's reaper.
    const double cpuBefore = cpuSeconds(RUSAGE_CHILDREN);
    QElapsedTimer timer;
    timer.start();
    process.start();
    if (!process.waitForStarted(30000))
        throw std::runtime_error(program.toStdString() + " did not start");
    const qint64 pid = process.processId();
    // The input must be written before waiting in wait4, which runs no event loop.
    if (!input.isEmpty()) {
        process.write(input);
        while (process.bytesToWrite() > 0 && process.waitForBytesWritten(30000)) {
        }
    }
    process.closeWriteChannel();
    int status = 0;
    rusage usage{};
    const bool reaped = ::wait4(pid_t(pid), &status, 0, &usage) == pid_t(pid);
    process.waitForFinished(-1);
    Timing timing;
    timing.wallMs = timer.elapsed();
    timing.cpuSeconds = cpuSeconds(RUSAGE_CHILDREN) - cpuBefore;
    if (reaped) {
        timing.peakRssBytes = qint64(usage.ru_maxrss) * 1024;
        timing.cpuSeconds = double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                            double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    }
    const bool failed =
        reaped ? !WIFEXITED(status) || WEXITSTATUS(status) != 0
               : process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0;
    if (failed)
        throw std::runtime_error(program.toStdString() + " failed");
    return timing;
}

Timing runIsql(const QString& isql, const QString& dsn, const QString& sql,
               const QString& outputFile) {
    // -b batch, -d| the column separator, -x0x09 a tab as separator instead (hex form)
    return runProgram(isql,
                      {QStringLiteral("-b"), QStringLiteral("-d|"), QStringLiteral("-x0x09"), dsn},
                      outputFile, (sql + QLatin1Char('\n')).toUtf8());
}

} // namespace bench
