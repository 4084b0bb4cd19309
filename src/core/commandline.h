#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace core {

// The keywords, tested in this order against every piece of the command line.
namespace keyword {
inline constexpr auto Odbc = "ODBC=";
inline constexpr auto Sql = "SQL=";
inline constexpr auto User = "USER=";
inline constexpr auto Pwd = "PWD=";
inline constexpr auto Title = "TITLE=";
inline constexpr auto Log = "LOG=";
inline constexpr auto NoGui = "/NOGUI";
inline constexpr auto Create = "/CREATE";
inline constexpr auto CreateFile = "CREATE=";
inline constexpr auto Types = "TYPES=";
inline constexpr auto Delim = "DELIM=";
inline constexpr auto StartRow = "STARTROW=";
inline constexpr auto DbType = "DBTYPE=";
// Known to the command line but acted on by nothing: no run writes a report.
inline constexpr auto Template = "TEMPLATE=";
inline constexpr auto Report = "REPORT=";
} // namespace keyword

// What the command line can set. Fields start with the caller's current values and
// later pieces overwrite earlier ones.
struct CommandLineValues {
    QString dataSourceName;
    QString sqlText;
    QString userName;
    QString password;
    QString databaseType;
    std::optional<QString> title;
    std::optional<QString> logFilePath;
    bool noGui = false;
    bool create = false;
    QString tableDefinitionPath = QStringLiteral("table.def");
    QString assetTypeFile;
    QString delimiter = QStringLiteral(";");
    int startRow = 1;
};

// Splits at every double quote; the pieces between quotes, empty ones included.
QStringList SplitCommandLine(const QString& rawCommandLine);

// Applies every piece that contains a keyword (upper-cased containment match).
void ParseCommandLine(const QString& rawCommandLine, CommandLineValues& values);

// The raw command line: each argument, the program path included, in double quotes,
// separated by one blank.
QString RawCommandLine(const QStringList& arguments);

// A file's lines, each followed by CR LF.
QString ReadTextFileAsLines(const QString& path);

// The leading decimal digits of a text as a number; 0 when there are none.
int LeadingDecimal(const QString& text);

} // namespace core
