#include "core/log.h"

#include "core/dateformat.h"

#include <QDateTime>
#include <QFile>

#include <cstdio>
#include <stdexcept>

namespace core {

namespace {

void writeToStderr(const QString& text) {
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    std::fflush(stderr);
}

struct LogState {
    QString path;
    QList<QByteArray> pending; // entries not written yet, oldest first
    qsizetype pendingBytes = 0;
    bool dropped = false;
    bool failureReported = false;
    LogFailureHandler failureHandler = writeToStderr;
};

LogState& state() {
    static LogState instance;
    return instance;
}

QString& logPath() {
    return state().path;
}

void keepPending(QByteArray entry) {
    LogState& log = state();
    log.pendingBytes += entry.size();
    log.pending.append(std::move(entry));
    while (log.pendingBytes > MaxPendingLogBytes && log.pending.size() > 1) {
        log.pendingBytes -= log.pending.takeFirst().size();
        log.dropped = true;
    }
}

void reportFailure(const QString& text) {
    LogState& log = state();
    if (log.failureReported)
        return;
    log.failureReported = true;
    if (log.failureHandler)
        log.failureHandler(text);
}

const char* const NullMessageLine = "..................................";

} // namespace

bool SetLogFilePath(const QString& path) {
    if (path.toLocal8Bit().size() > MaxLogPathLength)
        return false;
    logPath() = path;
    return true;
}

QString LogFilePath() {
    return logPath();
}

QByteArray FormatLogEntry(const QDateTime& when, const char* message) {
    const QDate date = when.date();
    const QTime time = when.time();
    const QChar dateSep = DateSeparator();
    const QChar timeSep = TimeSeparator();
    const QString stamp = QStringLiteral("%1%2%3%4%5 %6%7%8%9%10")
                              .arg(date.day(), 2, 10, QLatin1Char('0'))
                              .arg(dateSep)
                              .arg(date.month(), 2, 10, QLatin1Char('0'))
                              .arg(dateSep)
                              .arg(date.year(), 4, 10, QLatin1Char('0'))
                              .arg(time.hour(), 2, 10, QLatin1Char('0'))
                              .arg(timeSep)
                              .arg(time.minute(), 2, 10, QLatin1Char('0'))
                              .arg(timeSep)
                              .arg(time.second(), 2, 10, QLatin1Char('0'));
    QByteArray entry = stamp.toLocal8Bit();
    entry += " > ";
    entry += message ? message : NullMessageLine;
    entry += " \r\n";
    return entry;
}

void SetLogFailureHandler(LogFailureHandler handler) {
    state().failureHandler = std::move(handler);
}

bool LogEntriesLost() {
    const LogState& log = state();
    return log.dropped || !log.pending.isEmpty();
}

void LogLine(const char* message) {
    LogState& log = state();
    if (log.path.isEmpty())
        return;
    keepPending(FormatLogEntry(QDateTime::currentDateTime(), message));
    // Unbuffered, so that a failing write shows in the result of the write itself.
    QFile file(log.path);
    // Open without truncating; when that fails (usually: no file yet), create it.
    if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered) &&
        !file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
        const QString text =
            QStringLiteral("Cannot create file \"%1\". %2").arg(log.path, file.errorString());
        reportFailure(text);
        throw std::runtime_error(text.toStdString());
    }
    const qint64 end = file.size();
    const QByteArray entries = log.pending.join();
    if ((!file.isSequential() && !file.seek(end)) || file.write(entries) != entries.size()) {
        const QString reason = file.errorString();
        file.resize(end); // no cut-off entry stays behind to be written twice
        reportFailure(QStringLiteral("Cannot write to file \"%1\". %2").arg(log.path, reason));
        return;
    }
    file.close();
    log.pending.clear();
    log.pendingBytes = 0;
}

void LogLine(const QString& message) {
    LogLine(message.toLocal8Bit().constData());
}

void LogLineQuietly(const QString& message) noexcept {
    try {
        LogLine(message);
    } catch (const std::exception&) {
    }
}

} // namespace core
