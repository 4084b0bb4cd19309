#include "schema/usercolumns.h"

#include "core/conversions.h"
#include "core/dateformat.h"
#include "db/odbc/odbc.h"
#include "schema/ddl.h"
#include "schema/schemacreation.h"
#include "translation/translate.h"

#include <QTime>

#include <stdexcept>

namespace schema {

namespace {

using db::DatabaseDialect;
using translation::Translate;

constexpr int MaxTextLength = 255;
const QString AssetsTable = QStringLiteral("ASSETS");

[[noreturn]] void fail(const QString& englishText) {
    throw std::runtime_error(Translate(englishText).toStdString());
}

// A time after a date, as "h:nn" or "h:nn:ss" with the time separator.
std::optional<QTime> readTime(const QString& text) {
    const QString separator = core::TimeSeparator();
    for (const QString& pattern :
         {QStringLiteral("H%1mm").arg(separator), QStringLiteral("H%1mm%1ss").arg(separator)}) {
        const QTime time = QTime::fromString(text, pattern);
        if (time.isValid())
            return time;
    }
    return std::nullopt;
}

// A date as the user writes it, optionally followed by a time.
std::optional<QDateTime> readDateTime(const QString& text) {
    const core::DateSettings settings = core::CurrentDateSettings();
    const int year = QDate::currentDate().year();
    const QString trimmed = text.trimmed();
    if (const std::optional<QDate> date = core::TryStrToDate(trimmed, settings, year))
        return QDateTime(*date, QTime(0, 0));
    const qsizetype blank = trimmed.lastIndexOf(QLatin1Char(' '));
    if (blank <= 0)
        return std::nullopt;
    const std::optional<QDate> date = core::TryStrToDate(trimmed.left(blank), settings, year);
    const std::optional<QTime> time = readTime(trimmed.mid(blank + 1));
    if (!date || !time)
        return std::nullopt;
    return QDateTime(*date, *time);
}

bool readsAsInteger(const QString& text) {
    try {
        core::StrToInt(text);
        return true;
    } catch (const core::ConversionError&) {
        return false;
    }
}

void applyTextType(NewUserColumn& column, const ColumnTypeChoice& choice) {
    column.type = choice.fixedWidth ? QStringLiteral("CHAR") : QStringLiteral("VARCHAR");
    const QString mustBePositive = QStringLiteral("Field Length must be greater then zero.");
    if (choice.length.isEmpty())
        fail(mustBePositive);
    const int length = core::StrToInt(choice.length);
    if (length <= 0)
        fail(mustBePositive);
    if (length > MaxTextLength)
        fail(QStringLiteral("Field Length must be less then 255."));
    column.length = length;
}

QString defaultLiteral(const NewUserColumn& column) {
    const QString& type = column.type;
    if (type == QLatin1String("CHAR") || type == QLatin1String("VARCHAR") ||
        type == QLatin1String("datetime"))
        return QLatin1Char('\'') + column.defaultValue + QLatin1Char('\'');
    if (type == QLatin1String("DATE")) {
        const std::optional<QDateTime> value = readDateTime(column.defaultValue);
        if (!value)
            fail(QStringLiteral("The default value cannot be converted to a date/time."));
        return QStringLiteral("TO_DATE('") +
               core::FormatDateTime(QStringLiteral("dd-mm-yyy"), *value) +
               QStringLiteral("','DD-MM-YYYY')");
    }
    return column.defaultValue;
}

} // namespace

QString UserColumnName(const QString& typedName) {
    const QString name = typedName.trimmed();
    if (name.isEmpty())
        fail(QStringLiteral("Field Name cannot be empty."));
    return UserColumnPrefix + name;
}

void ApplyColumnType(NewUserColumn& column, const ColumnTypeChoice& choice,
                     DatabaseDialect dialect) {
    column.length = 0;
    column.defaultValue = choice.defaultValue;
    const QString& value = choice.defaultValue;
    switch (choice.kind) {
    case ColumnKind::Text:
        applyTextType(column, choice);
        return;
    case ColumnKind::Date:
        column.type = dialect == DatabaseDialect::SqlServer ? QStringLiteral("datetime")
                                                            : QStringLiteral("DATE");
        if (!value.isEmpty() && !readDateTime(value))
            fail(QStringLiteral("The default value cannot be converted to a date/time."));
        return;
    case ColumnKind::Number:
        column.type = dialect == DatabaseDialect::SqlServer ? QStringLiteral("int")
                                                            : QStringLiteral("INTEGER");
        if (!value.isEmpty() && !readsAsInteger(value))
            fail(QStringLiteral("The default value cannot be converted to an integer."));
        return;
    case ColumnKind::Currency:
        column.type = dialect == DatabaseDialect::Access      ? QStringLiteral("CURRENCY")
                      : dialect == DatabaseDialect::SqlServer ? QStringLiteral("money")
                                                              : QStringLiteral("FLOAT");
        if (!value.isEmpty() && !core::TryStrToFloat(value, QLocale::system()))
            fail(QStringLiteral("The default value cannot be converted to a currency(float)."));
        return;
    case ColumnKind::None:
        break;
    }
    fail(QStringLiteral("Please select field type."));
}

QStringList AddUserColumnLines(const NewUserColumn& column, DatabaseDialect dialect) {
    QString definition = QuotedIdentifier(column.name, dialect) + QLatin1Char(' ') + column.type;
    if (column.length != 0)
        definition += QStringLiteral("(%1)").arg(column.length);
    QStringList lines{AddColumnStatement(AssetsTable, definition, dialect)};
    if (column.defaultValue.isEmpty())
        return lines;
    lines << (dialect == DatabaseDialect::Access
                  ? QString()
                  : QStringLiteral(" DEFAULT ") + defaultLiteral(column));
    return lines;
}

QStringList AddUserColumnSummary(const NewUserColumn& column, const QStringList& statementLines) {
    QStringList summary{
        Translate(QStringLiteral("The following field will be added into the ASSETS table: ")),
        Translate(QStringLiteral("\\tName:\\t $FIELDNAME$"), 0,
                  {{QStringLiteral("$FIELDNAME$"), column.name}}),
        Translate(QStringLiteral("\\tType:\\t $FIELDTYPE$"), 0,
                  {{QStringLiteral("$FIELDTYPE$"), column.type}}),
        Translate(QStringLiteral("\\tLength:\\t $FIELDLENGTH$"), 0,
                  {{QStringLiteral("$FIELDLENGTH$"), QString::number(column.length)}}),
        Translate(QStringLiteral("\\tDefault:\\t $FIELDDEFVALUE$"), 0,
                  {{QStringLiteral("$FIELDDEFVALUE$"), column.defaultValue}}),
        QString(),
        Translate(QStringLiteral(" SQL:"))};
    return summary + statementLines;
}

bool LooksLikeAddColumn(const QString& statement) {
    const QString upper = statement.toUpper();
    return upper.contains(QLatin1String("ALTER ")) && upper.contains(QLatin1String(" TABLE ")) &&
           upper.contains(QLatin1String(" ADD "));
}

QStringList UserColumnsOf(const QStringList& fieldNames) {
    QStringList names;
    for (const QString& name : fieldNames)
        if (name.size() > UserColumnPrefix.size() && name.startsWith(UserColumnPrefix))
            names << name.mid(UserColumnPrefix.size());
    return names;
}

QString ChosenUserColumn(const QStringList& listed, int chosenIndex) {
    if (listed.isEmpty())
        return {};
    if (chosenIndex < 0 || chosenIndex >= listed.size())
        fail(QStringLiteral("Select a field to delete"));
    if (listed[chosenIndex].isEmpty())
        fail(QStringLiteral("Field Name cannot be empty."));
    return UserColumnPrefix + listed[chosenIndex];
}

QString DropUserColumnStatement(const QString& columnName, DatabaseDialect dialect) {
    QString statement =
        QStringLiteral("ALTER TABLE ASSETS DROP COLUMN ") + QuotedIdentifier(columnName, dialect);
    if (dialect == DatabaseDialect::Oracle)
        statement += QStringLiteral(" CASCADE CONSTRAINTS");
    return statement;
}

QString DefaultConstraintsQuery(const QString& tableName, const QString& columnName) {
    return QStringLiteral(
               " select    c_obj.name   from    sysobjects  c_obj   join    syscomments com on  "
               "c_obj.id = com.id   join    sysobjects  t_obj on c_obj.parent_obj = t_obj.id   "
               "join    sysconstraints con on c_obj.id  = con.constid   join    syscolumns  col "
               "on t_obj.id = col.id and con.colid = col.colid where   c_obj.xtype='D' and "
               "t_obj.name = '%1' and col.name = '%2'")
        .arg(tableName, columnName);
}

void DropUserColumn(db::odbc::Connection& connection, const QString& statement,
                    const QString& columnName) {
    try {
        ExecuteSchemaStatement(connection, statement);
        return;
    } catch (const std::exception&) {
        // A default constraint keeps the column: drop those, then try once more.
    }
    std::vector<db::odbc::Row> constraints;
    {
        db::odbc::Statement query(connection);
        query.executeDirect(DefaultConstraintsQuery(AssetsTable, columnName));
        while (query.fetchBlock(constraints)) {
        }
    }
    for (const db::odbc::Row& row : constraints)
        ExecuteSchemaStatement(connection, QStringLiteral("ALTER TABLE %1 DROP CONSTRAINT [%2]")
                                               .arg(AssetsTable, QString::fromUtf8(row.at(0))));
    ExecuteSchemaStatement(connection, statement);
}

} // namespace schema
