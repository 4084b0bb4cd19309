#include "core/log.h"

#include "core/dateformat.h"

#include <QDateTime>
#include <QFile>

#include <stdexcept>

namespace core {

namespace {

QString& logPath() {
    static QString path;
    return path;
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

void LogLine(const char* message) {
    const QString& path = logPath();
    if (path.isEmpty())
        return;
    QFile file(path);
    // Open without truncating; when that fails (usually: no file yet), create it.
    if (!file.open(QIODevice::ReadWrite) && !file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw std::runtime_error(QStringLiteral("Cannot create file \"%1\". %2")
                                     .arg(path, file.errorString())
                                     .toStdString());
    file.seek(file.size());
    file.write(FormatLogEntry(QDateTime::currentDateTime(), message));
    file.close();
}

void LogLine(const QString& message) {
    LogLine(message.toLocal8Bit().constData());
}

} // namespace core
