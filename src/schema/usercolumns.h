#pragma once

#include "db/dialect.h"

#include <QString>
#include <QStringList>

namespace db::odbc {
class Connection;
}

namespace schema {

// The columns of ASSETS that belong to the user carry this prefix, case-sensitive; the
// record editor's user-field page shows them.
inline const QString UserColumnPrefix = QStringLiteral("USR_");

// The type chosen on the add-column wizard's type page, as the user left it.
enum class ColumnKind { None, Text, Date, Number, Currency };

struct ColumnTypeChoice {
    ColumnKind kind = ColumnKind::Text;
    bool fixedWidth = false; // "Char" rather than "VarChar"
    QString length;          // as typed
    QString defaultValue;    // as typed
};

// The column the add-column wizard adds.
struct NewUserColumn {
    QString name; // with the prefix
    QString type = QStringLiteral("VARCHAR");
    int length = 50; // 0 for every type but text
    QString defaultValue;
};

// The checks below throw std::runtime_error with the translated text to show.

// The prefix followed by the typed name without its surrounding blanks; blanks alone are
// refused. The characters are not checked.
QString UserColumnName(const QString& typedName);

// Sets the column's type, length and default from the choice, in the dialect's type words.
// A length must be 1 to 255; a default of a date, number or currency column must read as
// one in the user's locale. A text default is taken as it is.
void ApplyColumnType(NewUserColumn& column, const ColumnTypeChoice& choice,
                     db::DatabaseDialect dialect);

// The statement that adds the column: the column itself, then, when a default was typed, a
// second line with the default clause (empty for Access, which gets none). Text defaults are
// quoted as typed; a date default for a DATE column is written day-month-four-digit-year.
QStringList AddUserColumnLines(const NewUserColumn& column, db::DatabaseDialect dialect);

// What the wizard's last page shows: the column's properties, then the statement lines.
QStringList AddUserColumnSummary(const NewUserColumn& column, const QStringList& statementLines);

// An edited statement may stand when it holds "ALTER ", " TABLE " and " ADD " anywhere, in
// any case and order.
bool LooksLikeAddColumn(const QString& statement);

// The user columns among a table's field names, in their order, without the prefix: names
// longer than the prefix that begin with it exactly.
QStringList UserColumnsOf(const QStringList& fieldNames);

// The full name of the column chosen in the deletion list: empty when the list is empty;
// throws when nothing (-1) or an empty entry is chosen.
QString ChosenUserColumn(const QStringList& listed, int chosenIndex);

// "ALTER TABLE ASSETS DROP COLUMN" with the name quoted for the dialect; Oracle drops the
// column's constraints with it.
QString DropUserColumnStatement(const QString& columnName, db::DatabaseDialect dialect);

// The catalogue query that lists the default constraints of a column (names in column 1).
QString DefaultConstraintsQuery(const QString& tableName, const QString& columnName);

// Runs the drop statement. When it fails, drops the column's default constraints (found
// with DefaultConstraintsQuery) and runs it once more; whatever fails then is thrown. Only
// catalogues that know the query get that far: elsewhere the query's own error is thrown.
void DropUserColumn(db::odbc::Connection& connection, const QString& statement,
                    const QString& columnName);

} // namespace schema
