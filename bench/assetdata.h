#pragma once

// What the benchmarks share: a large generated ASSETS table, and measuring helpers.

#include "db/odbc/odbc.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace bench {

using Say = std::function<void(const QString&)>;

// Rows of ASSETS, or -1 when there is no such table.
long long countRows(const db::odbc::Connection& connection);

// Fills ASSETS with `rowCount` generated rows (the same ones on every run, in the manner
// of the demo database: 20 columns besides ID, some NULL), unless it already holds
// exactly that many; creates ASSETTYPES and NODES when missing.
void buildTable(db::odbc::Connection& connection, qint64 rowCount, const Say& say);

struct Timing {
    qint64 wallMs = 0;
    double cpuSeconds = 0;
    qint64 peakRssBytes = 0; // of a child process; 0 when not measured
};

double cpuSeconds(int who);

// Runs a program to its end, stdin from `input` (when not empty), stdout to `outputFile`
// (the null device when empty); throws when it fails. Wall and CPU time and its peak
// resident memory.
Timing runProgram(const QString& program, const QStringList& arguments,
                  const QString& outputFile = QString(), const QByteArray& input = QByteArray());

// isql exporting `sql` through the data source, tab-separated, into `outputFile`.
Timing runIsql(const QString& isql, const QString& dsn, const QString& sql,
               const QString& outputFile = QString());

// Resident and peak resident memory of this process, in bytes ("VmRSS", "VmHWM").
qint64 statusBytes(const char* field);
bool resetPeakMemory();

QString megabytes(qint64 bytes);

} // namespace bench
