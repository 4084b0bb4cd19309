#pragma once

#include <QDateTime>
#include <QString>

#include <functional>

namespace core {

// The activity log: one time-stamped entry per call, appended to the file at the
// process-wide log path. An empty path means logging is off.
//
// A null message writes the 34-dot line. Failing to create the file throws
// std::runtime_error, so callers inside error handlers must not rely on logging.
//
// No entry is dropped quietly: an entry that cannot be written (the file cannot be
// opened, or the write fails: full disk, quota, a vanished share) is kept and written
// ahead of the next entry once the file takes writes again. Up to MaxPendingLogBytes
// are kept; beyond that the oldest are dropped. The first failure of the run is
// reported through the failure handler.
void LogLine(const char* message);
void LogLine(const QString& message);
// For error handlers: a log that cannot be written must not hide the error's own message.
void LogLineQuietly(const QString& message) noexcept;

constexpr qsizetype MaxPendingLogBytes = 1024 * 1024;

// Called once per run, at the first entry that could not be written, with a text
// naming the file and the reason. The default handler writes the text to stderr.
using LogFailureHandler = std::function<void(const QString& text)>;
void SetLogFailureHandler(LogFailureHandler handler);

// True while written-out entries are still waiting for the file, or when entries
// were dropped: the log of the run is not complete.
bool LogEntriesLost();

// The path holds at most MaxLogPathLength bytes (255 plus the terminating zero of
// the original buffer); a longer path is refused and the old one kept.
constexpr int MaxLogPathLength = 255;
bool SetLogFilePath(const QString& path);
QString LogFilePath();

// Builds one entry exactly as it is written to the file, for the given moment.
QByteArray FormatLogEntry(const QDateTime& when, const char* message);

} // namespace core
