#include "core/commandline.h"

#include <QFile>
#include <QFileInfo>

#include <limits>

namespace core {

namespace {

QString valueOf(const QString& piece) {
    const qsizetype equals = piece.indexOf(QLatin1Char('='));
    return equals < 0 ? QString() : piece.mid(equals + 1);
}

QString sqlTextFrom(const QString& value) {
    const QFileInfo info(value);
    if (!value.isEmpty() && info.exists() && info.isFile())
        return ReadTextFileAsLines(value);
    return value;
}

void applyPiece(const QString& piece, CommandLineValues& values) {
    const QString upper = piece.toUpper();
    auto matches = [&upper](const char* keyword) { return upper.contains(QLatin1String(keyword)); };
    const QString value = valueOf(piece);
    if (matches(keyword::Odbc))
        values.dataSourceName = value;
    if (matches(keyword::Sql))
        values.sqlText = sqlTextFrom(value);
    if (matches(keyword::User))
        values.userName = value;
    if (matches(keyword::Pwd))
        values.password = value;
    if (matches(keyword::Title))
        values.title = value;
    if (matches(keyword::Log))
        values.logFilePath = value;
    if (matches(keyword::NoGui))
        values.noGui = true;
    if (matches(keyword::Create))
        values.create = true;
    if (matches(keyword::CreateFile)) {
        values.create = true;
        values.tableDefinitionPath = value;
    }
    if (matches(keyword::Types))
        values.assetTypeFile = value;
    if (matches(keyword::Delim))
        values.delimiter = value;
    if (matches(keyword::StartRow))
        values.startRow = LeadingDecimal(value);
    if (matches(keyword::DbType))
        values.databaseType = value;
}

} // namespace

QStringList SplitCommandLine(const QString& rawCommandLine) {
    return rawCommandLine.split(QLatin1Char('"'), Qt::KeepEmptyParts);
}

void ParseCommandLine(const QString& rawCommandLine, CommandLineValues& values) {
    for (const QString& piece : SplitCommandLine(rawCommandLine))
        applyPiece(piece, values);
}

QString RawCommandLine(const QStringList& arguments) {
    QStringList quoted;
    quoted.reserve(arguments.size());
    for (const QString& argument : arguments)
        quoted << QLatin1Char('"') + argument + QLatin1Char('"');
    return quoted.join(QLatin1Char(' '));
}

QString ReadTextFileAsLines(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    const QString content = QString::fromLocal8Bit(file.readAll());
    QString text;
    text.reserve(content.size() + content.size() / 16);
    qsizetype start = 0;
    while (start < content.size()) {
        qsizetype end = start;
        while (end < content.size() && content[end] != QLatin1Char('\r') &&
               content[end] != QLatin1Char('\n'))
            ++end;
        text += QStringView(content).mid(start, end - start);
        text += QLatin1String("\r\n");
        // CR LF, LF and CR each end one line.
        if (end < content.size() && content[end] == QLatin1Char('\r') && end + 1 < content.size() &&
            content[end + 1] == QLatin1Char('\n'))
            ++end;
        start = end + 1;
    }
    return text;
}

int LeadingDecimal(const QString& text) {
    long long number = 0;
    for (QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            break;
        number =
            qMin<long long>(number * 10 + (c.unicode() - '0'), std::numeric_limits<int>::max());
    }
    return static_cast<int>(number);
}

} // namespace core
