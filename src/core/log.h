#pragma once

#include <QDateTime>
#include <QString>

namespace core {

// The activity log: one time-stamped entry per call, appended to the file at the
// process-wide log path. An empty path means logging is off.
//
// A null message writes the 34-dot line. Failing to create the file throws
// std::runtime_error, so callers inside error handlers must not rely on logging.
void LogLine(const char* message);
void LogLine(const QString& message);

// The path holds at most MaxLogPathLength bytes (255 plus the terminating zero of
// the original buffer); a longer path is refused and the old one kept.
constexpr int MaxLogPathLength = 255;
bool SetLogFilePath(const QString& path);
QString LogFilePath();

// Builds one entry exactly as it is written to the file, for the given moment.
QByteArray FormatLogEntry(const QDateTime& when, const char* message);

} // namespace core
