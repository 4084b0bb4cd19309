// The command line and the reading of a "SQL=" file.
//
// Properties: ParseCommandLine agrees with a plain reading of its rules (split at every double
// quote, each keyword matched anywhere in the upper-cased piece, the value after the first "=",
// later pieces win); a "SQL=" value that names a file gives the file's lines, each ended by
// CR LF (CR LF, LF and CR each end a line). "%F" in the input stands for the path of a file
// that holds the rest of the input.

#include "core/commandline.h"
#include "fuzzsupport.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <climits>

namespace {

QString linesReference(QString content) {
    content.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    content.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    QStringList lines = content.split(QLatin1Char('\n'));
    if (lines.last().isEmpty())
        lines.removeLast();
    QString text;
    for (const QString& line : lines)
        text += line + QLatin1String("\r\n");
    return text;
}

int leadingDecimalReference(const QString& text) {
    long long number = 0;
    for (QChar c : text) {
        if (!(c >= QLatin1Char('0') && c <= QLatin1Char('9')))
            break;
        number = std::min<long long>(number * 10 + c.digitValue(), INT_MAX);
    }
    return static_cast<int>(number);
}

// sqlFileKnown: false when a "SQL=" value named some other existing file.
core::CommandLineValues reference(const QString& raw, const QString& sqlPath,
                                  const QString& sqlFileText, bool& sqlFileKnown) {
    core::CommandLineValues values;
    sqlFileKnown = true;
    for (const QString& piece : raw.split(QLatin1Char('"'))) {
        const QString upper = piece.toUpper();
        const qsizetype equals = piece.indexOf(QLatin1Char('='));
        const QString value = equals < 0 ? QString() : piece.mid(equals + 1);
        auto has = [&upper](const char* keyword) { return upper.contains(QLatin1String(keyword)); };
        if (has("ODBC="))
            values.dataSourceName = value;
        if (has("SQL=")) {
            values.sqlText = value == sqlPath ? sqlFileText : value;
            if (value != sqlPath && !value.isEmpty() && QFileInfo(value).isFile())
                sqlFileKnown = false;
        }
        if (has("USER="))
            values.userName = value;
        if (has("PWD="))
            values.password = value;
        if (has("TITLE="))
            values.title = value;
        if (has("LOG="))
            values.logFilePath = value;
        if (has("/NOGUI"))
            values.noGui = true;
        if (has("/CREATE"))
            values.create = true;
        if (has("CREATE=")) {
            values.create = true;
            values.tableDefinitionPath = value;
        }
        if (has("TYPES="))
            values.assetTypeFile = value;
        if (has("DELIM="))
            values.delimiter = value;
        if (has("STARTROW="))
            values.startRow = leadingDecimalReference(value);
        if (has("DBTYPE="))
            values.databaseType = value;
    }
    return values;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // In memory where the system has it: a file is written for most inputs.
    static QTemporaryDir dir = QFileInfo(QStringLiteral("/dev/shm")).isDir()
                                   ? QTemporaryDir(QStringLiteral("/dev/shm/quillet-fuzz-XXXXXX"))
                                   : QTemporaryDir();
    static const QString sqlPath = dir.filePath(QStringLiteral("query.sql"));
    FuzzedDataProvider input(data, size);
    const std::string fileBytes = input.ConsumeRandomLengthString(4096);
    QString raw = fuzzsupport::text(input.ConsumeRemainingBytesAsString());
    QString fileText;
    if (raw.contains(QLatin1String("%F"))) {
        raw.replace(QLatin1String("%F"), sqlPath);
        QFile file(sqlPath);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            std::abort();
        file.write(fileBytes.data(), static_cast<qint64>(fileBytes.size()));
        file.close();
        fileText = linesReference(QString::fromLocal8Bit(fileBytes));
        FUZZ_CHECK(core::ReadTextFileAsLines(sqlPath) == fileText, fuzzsupport::shown(fileText));
    }

    core::CommandLineValues parsed;
    core::ParseCommandLine(raw, parsed);
    bool sqlFileKnown = true;
    const core::CommandLineValues expected = reference(raw, sqlPath, fileText, sqlFileKnown);
    const QString detail = fuzzsupport::shown(raw);
    FUZZ_CHECK(core::SplitCommandLine(raw).size() == raw.count(QLatin1Char('"')) + 1, detail);
    FUZZ_CHECK(parsed.dataSourceName == expected.dataSourceName, detail);
    FUZZ_CHECK(!sqlFileKnown || parsed.sqlText == expected.sqlText, detail);
    FUZZ_CHECK(parsed.userName == expected.userName, detail);
    FUZZ_CHECK(parsed.password == expected.password, detail);
    FUZZ_CHECK(parsed.title == expected.title, detail);
    FUZZ_CHECK(parsed.logFilePath == expected.logFilePath, detail);
    FUZZ_CHECK(parsed.noGui == expected.noGui, detail);
    FUZZ_CHECK(parsed.create == expected.create, detail);
    FUZZ_CHECK(parsed.tableDefinitionPath == expected.tableDefinitionPath, detail);
    FUZZ_CHECK(parsed.assetTypeFile == expected.assetTypeFile, detail);
    FUZZ_CHECK(parsed.delimiter == expected.delimiter, detail);
    FUZZ_CHECK(parsed.startRow == expected.startRow, detail);
    FUZZ_CHECK(parsed.databaseType == expected.databaseType, detail);
    return 0;
}
