#include "db/parameters.h"

namespace db {

namespace {

bool isNameChar(QChar c) {
    return c.isLetter() || c.isDigit() || c == QLatin1Char('_');
}

// Index just past a quoted stretch that opens at `start` and closes with `close`; a
// doubled closing character stands for itself. The end of the text when unterminated.
qsizetype skipQuoted(const QString& sql, qsizetype start, QChar close) {
    qsizetype i = start + 1;
    while (i < sql.size()) {
        if (sql.at(i) == close) {
            if (i + 1 < sql.size() && sql.at(i + 1) == close) {
                i += 2;
                continue;
            }
            return i + 1;
        }
        ++i;
    }
    return sql.size();
}

qsizetype skipLineComment(const QString& sql, qsizetype start) {
    for (qsizetype i = start + 2; i < sql.size(); ++i) {
        if (sql.at(i) == QLatin1Char('\n') || sql.at(i) == QLatin1Char('\r'))
            return i;
    }
    return sql.size();
}

qsizetype skipBlockComment(const QString& sql, qsizetype start) {
    const qsizetype end = sql.indexOf(QLatin1StringView("*/"), start + 2);
    return end < 0 ? sql.size() : end + 2;
}

QChar at(const QString& sql, qsizetype i) {
    return i < sql.size() ? sql.at(i) : QChar();
}

} // namespace

QList<SqlParameter> FindParameters(const QString& sql) {
    QList<SqlParameter> found;
    qsizetype i = 0;
    while (i < sql.size()) {
        const QChar c = sql.at(i);
        const QChar next = at(sql, i + 1);
        if (c == QLatin1Char('\'') || c == QLatin1Char('"') || c == QLatin1Char('`')) {
            i = skipQuoted(sql, i, c);
        } else if (c == QLatin1Char('[')) {
            i = skipQuoted(sql, i, QLatin1Char(']'));
        } else if (c == QLatin1Char('-') && next == QLatin1Char('-')) {
            i = skipLineComment(sql, i);
        } else if (c == QLatin1Char('/') && next == QLatin1Char('*')) {
            i = skipBlockComment(sql, i);
        } else if (c == QLatin1Char(':') && next == QLatin1Char(':')) {
            while (i < sql.size() && sql.at(i) == QLatin1Char(':'))
                ++i;
        } else if (c == QLatin1Char(':') && isNameChar(next)) {
            qsizetype end = i + 1;
            while (end < sql.size() && isNameChar(sql.at(end)))
                ++end;
            found.append(SqlParameter{sql.mid(i + 1, end - i - 1), i, end - i});
            i = end;
        } else {
            ++i;
        }
    }
    return found;
}

QStringList ParameterNames(const QString& sql) {
    QStringList names;
    for (const SqlParameter& parameter : FindParameters(sql))
        names.append(parameter.name);
    return names;
}

DriverStatement ToDriverStatement(const QString& sql) {
    DriverStatement statement;
    qsizetype copied = 0;
    for (const SqlParameter& parameter : FindParameters(sql)) {
        statement.text += QStringView(sql).mid(copied, parameter.position - copied);
        statement.text += QLatin1Char('?');
        statement.parameterNames.append(parameter.name);
        copied = parameter.position + parameter.length;
    }
    statement.text += QStringView(sql).mid(copied);
    return statement;
}

} // namespace db
