#include "assets/tabledataset.h"

#include "assets/displaytext.h"
#include "core/conversions.h"
#include "core/dateformat.h"
#include "translation/translate.h"

#include <QLocale>
#include <QTime>

#include <stdexcept>

namespace assets {

namespace {

using Kind = db::odbc::ColumnInfo::Kind;
using translation::Translate;

[[noreturn]] void fail(const QString& message) {
    throw std::runtime_error(message.toStdString());
}

std::optional<QTime> timeOfDay(const QString& text) {
    for (const char* format : {"h:m:s", "h:m", "h:m:s.z"}) {
        const QTime time = QTime::fromString(text, QLatin1String(format));
        if (time.isValid())
            return time;
    }
    return std::nullopt;
}

QByteArray dateTimeFromText(const QString& text) {
    // A date, with the time of day after the last blank where there is one.
    const QString trimmed = text.trimmed();
    const qsizetype blank = trimmed.lastIndexOf(QLatin1Char(' '));
    if (blank > 0) {
        QString time = trimmed.mid(blank + 1);
        const std::optional<QTime> parsed = timeOfDay(time.replace(core::TimeSeparator(), u':'));
        if (parsed)
            return (core::StrToDate(trimmed.left(blank)).toString(Qt::ISODate) + QLatin1Char(' ') +
                    parsed->toString(QStringLiteral("hh:mm:ss")))
                .toLatin1();
    }
    return (core::StrToDate(trimmed).toString(Qt::ISODate) + QStringLiteral(" 00:00:00"))
        .toLatin1();
}

QByteArray timeFromText(const QString& text) {
    QString written = text.trimmed();
    const std::optional<QTime> time = timeOfDay(written.replace(core::TimeSeparator(), u':'));
    if (!time)
        throw core::ConversionError(Translate(QStringLiteral("'$VALUE$' is not a valid time"), 0,
                                              {{QStringLiteral("$VALUE$"), text}}));
    return time->toString(QStringLiteral("hh:mm:ss")).toLatin1();
}

// A date as the database writes it, yyyy-mm-dd; a year outside 1 to 9999 as Qt writes it.
QByteArray storedDate(QDate date) {
    if (date.year() < 1 || date.year() > 9999)
        return date.toString(Qt::ISODate).toLatin1();
    QByteArray text("0000-00-00");
    auto put = [&](int value, qsizetype end) {
        for (qsizetype at = end - 1; value > 0; --at, value /= 10)
            text[at] = char('0' + value % 10);
    };
    put(date.year(), 4);
    put(date.month(), 7);
    put(date.day(), 10);
    return text;
}

int digitsValue(const char* digits, int count) {
    int value = 0;
    for (int i = 0; i < count; ++i) {
        if (digits[i] < '0' || digits[i] > '9')
            return -1;
        value = value * 10 + (digits[i] - '0');
    }
    return value;
}

// The date of a stored value that begins yyyy-mm-dd; read by the toolkit where it does not.
QDate dateOfStored(const QByteArray& stored) {
    const char* text = stored.constData();
    if (stored.size() >= 10 && text[4] == '-' && text[7] == '-') {
        const int year = digitsValue(text, 4);
        const int month = digitsValue(text + 5, 2);
        const int day = digitsValue(text + 8, 2);
        if (year > 0 && month >= 0 && day >= 0 && QDate::isValid(year, month, day))
            return QDate(year, month, day);
    }
    return QDate::fromString(QString::fromLatin1(stored.left(10)), Qt::ISODate);
}

QDateTime storedDateTime(const QByteArray& stored) {
    return QDateTime::fromString(QString::fromLatin1(stored.left(19)),
                                 QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

} // namespace

QByteArray StoredFromText(const db::odbc::ColumnInfo& field, const QString& text) {
    return StoredFromText(field, text, core::NumberReader(QLocale::system()));
}

QByteArray StoredFromText(const db::odbc::ColumnInfo& field, const QString& text,
                          const core::NumberReader& numbers) {
    switch (field.kind()) {
    case Kind::Integer:
        return QByteArray::number(numbers.toInt64(text));
    case Kind::Decimal:
    case Kind::Float:
        return QByteArray::number(numbers.toFloat(text), 'g', QLocale::FloatingPointShortest);
    case Kind::Date:
        return storedDate(core::StrToDate(text));
    case Kind::DateTime:
        return dateTimeFromText(text);
    case Kind::Time:
        return timeFromText(text);
    case Kind::Text:
    case Kind::Binary:
        break;
    }
    return text.toUtf8();
}

TableDataSet::TableDataSet(db::odbc::Connection& connection, const QString& tableName,
                           const QString& keyField)
    : m_connection(connection), m_tableName(tableName), m_keyField(keyField) {}

void TableDataSet::open() {
    close();
    db::odbc::Statement statement(m_connection);
    QString sql = QStringLiteral("select * from ") + m_tableName;
    if (!m_filter.isEmpty())
        sql += QStringLiteral(" where ") + m_filter;
    statement.executeDirect(sql);
    std::vector<db::odbc::Row> rows;
    while (statement.fetchBlock(rows)) {
    }
    m_fields = statement.columns();
    m_rows.clear();
    m_rows.reserve(rows.size());
    for (db::odbc::Row& row : rows) {
        Record record;
        record.reserve(row.size());
        for (QByteArray& value : row)
            record.push_back(value.isNull() ? Value() : Value(std::move(value)));
        m_rows.push_back(std::move(record));
    }
    m_current = m_rows.empty() ? -1 : 0;
    m_state = State::Browse;
}

void TableDataSet::close() {
    m_state = State::Closed;
    m_rows.clear();
    m_buffer.clear();
    m_assigned.clear();
    m_current = -1;
}

void TableDataSet::moveTo(int index) {
    if (m_state == State::Edit || m_state == State::Insert)
        post();
    if (index >= 0 && index < recordCount())
        m_current = index;
}

int TableDataSet::fieldIndex(const QString& name) const {
    return db::odbc::ColumnIndex(m_fields, name);
}

int TableDataSet::requireField(const QString& name) const {
    const int field = fieldIndex(name);
    if (field < 0)
        fail(Translate(QStringLiteral("Field '$FIELDNAME$' not found"), 0,
                       {{QStringLiteral("$FIELDNAME$"), name}}));
    return field;
}

const TableDataSet::Record& TableDataSet::shownRecord() const {
    static const Record none;
    if (m_state == State::Edit || m_state == State::Insert)
        return m_buffer;
    return m_current >= 0 ? m_rows[size_t(m_current)] : none;
}

bool TableDataSet::isNull(const QString& field) const {
    return !storedValue(field).has_value();
}

std::optional<QByteArray> TableDataSet::storedValue(const QString& field) const {
    const int index = requireField(field);
    const Record& record = shownRecord();
    return size_t(index) < record.size() ? record[size_t(index)] : Value();
}

QString TableDataSet::asText(const QString& field) const {
    const Value value = storedValue(field);
    if (!value)
        return QString();
    return DisplayText(m_fields[size_t(fieldIndex(field))], *value, core::CurrentDateSettings(),
                       NumberLocale());
}

void TableDataSet::requireEditing(const char* what) const {
    if (m_state != State::Edit && m_state != State::Insert)
        fail(Translate(QStringLiteral("Dataset not in edit or insert mode")) +
             QStringLiteral(" (%1)").arg(QLatin1String(what)));
}

void TableDataSet::setAsText(const QString& field, const QString& text) {
    requireEditing("set");
    const int index = requireField(field);
    if (text.isEmpty()) {
        setNull(field);
        return;
    }
    m_buffer[size_t(index)] = StoredFromText(m_fields[size_t(index)], text);
    m_assigned[size_t(index)] = true;
}

void TableDataSet::setNull(const QString& field) {
    requireEditing("set");
    const int index = requireField(field);
    m_buffer[size_t(index)].reset();
    m_assigned[size_t(index)] = true;
}

bool TableDataSet::modified() const {
    for (const bool assigned : m_assigned)
        if (assigned)
            return true;
    return false;
}

void TableDataSet::edit() {
    if (m_state == State::Edit || m_state == State::Insert)
        return;
    if (m_state == State::Closed || m_current < 0)
        fail(Translate(QStringLiteral("Cannot edit: there is no record")));
    m_buffer = m_rows[size_t(m_current)];
    m_assigned.assign(m_fields.size(), false);
    m_state = State::Edit;
}

void TableDataSet::append() {
    if (m_state == State::Closed)
        fail(Translate(QStringLiteral("Cannot perform this operation on a closed dataset")));
    if (m_state == State::Edit || m_state == State::Insert)
        post();
    if (events.beforeInsert)
        events.beforeInsert();
    m_buffer.assign(m_fields.size(), Value());
    m_assigned.assign(m_fields.size(), false);
    m_state = State::Insert;
    if (events.afterInsert)
        events.afterInsert();
}

void TableDataSet::post() {
    if (m_state != State::Edit && m_state != State::Insert)
        return;
    if (events.beforePost)
        events.beforePost();
    if (m_state == State::Edit)
        postEdit();
    else
        postInsert();
    m_assigned.clear();
    m_state = State::Browse;
    if (events.afterPost)
        events.afterPost();
}

void TableDataSet::postEdit() {
    QStringList assignments;
    std::vector<int> changed;
    for (size_t field = 0; field < m_fields.size(); ++field) {
        if (!m_assigned[field])
            continue;
        assignments << m_fields[field].name + QStringLiteral(" = ?");
        changed.push_back(int(field));
    }
    if (changed.empty()) {
        m_buffer.clear();
        return;
    }
    const int key = requireField(m_keyField);
    db::odbc::Statement update(m_connection);
    update.prepare(
        QStringLiteral("update %1 set %2 where %3 = ?")
            .arg(m_tableName, assignments.join(QStringLiteral(", ")), m_fields[size_t(key)].name));
    int parameter = 1;
    for (const int field : changed)
        bindValue(update, parameter++, field, m_buffer[size_t(field)]);
    bindValue(update, parameter, key, m_rows[size_t(m_current)][size_t(key)]);
    update.execute();
    if (update.rowsAffected() == 0)
        fail(Translate(QStringLiteral("The record was not saved: it was changed or deleted by "
                                      "another user since it was read. Refresh it and make the "
                                      "change again.")));
    m_rows[size_t(m_current)] = std::move(m_buffer);
    m_buffer.clear();
}

void TableDataSet::postInsert() {
    QStringList names;
    QStringList marks;
    std::vector<int> assigned;
    for (size_t field = 0; field < m_fields.size(); ++field) {
        if (!m_assigned[field])
            continue;
        names << m_fields[field].name;
        marks << QStringLiteral("?");
        assigned.push_back(int(field));
    }
    db::odbc::Statement insert(m_connection);
    insert.prepare(
        QStringLiteral("insert into %1 (%2) values (%3)")
            .arg(m_tableName, names.join(QStringLiteral(", ")), marks.join(QStringLiteral(", "))));
    int parameter = 1;
    for (const int field : assigned)
        bindValue(insert, parameter++, field, m_buffer[size_t(field)]);
    insert.execute();
    m_rows.push_back(std::move(m_buffer));
    m_buffer.clear();
    m_current = recordCount() - 1;
}

void BindStoredValue(db::odbc::Statement& statement, int parameter, Kind kind,
                     const std::optional<QByteArray>& value) {
    if (!value) {
        statement.bindNull(parameter, kind);
        return;
    }
    switch (kind) {
    case Kind::Integer:
        statement.bindInteger(parameter, value->toLongLong());
        return;
    case Kind::Decimal:
    case Kind::Float:
        statement.bindDouble(parameter, value->toDouble());
        return;
    case Kind::Date:
        statement.bindDate(parameter, dateOfStored(*value));
        return;
    case Kind::DateTime:
        statement.bindTimestamp(parameter, storedDateTime(*value));
        return;
    case Kind::Time:
    case Kind::Text:
    case Kind::Binary:
        break;
    }
    statement.bindUtf8(parameter, *value);
}

void TableDataSet::bindValue(db::odbc::Statement& statement, int parameter, int field,
                             const Value& value) const {
    BindStoredValue(statement, parameter, m_fields[size_t(field)].kind(), value);
}

void TableDataSet::cancel() {
    if (m_state != State::Edit && m_state != State::Insert)
        return;
    m_buffer.clear();
    m_assigned.clear();
    m_state = State::Browse;
    if (events.afterCancel)
        events.afterCancel();
}

void TableDataSet::deleteRecord() {
    if (m_state == State::Insert) {
        cancel();
        return;
    }
    if (m_state == State::Closed || m_current < 0)
        fail(Translate(QStringLiteral("Cannot delete: there is no record")));
    const int key = requireField(m_keyField);
    db::odbc::Statement remove(m_connection);
    remove.prepare(
        QStringLiteral("delete from %1 where %2 = ?").arg(m_tableName, m_fields[size_t(key)].name));
    bindValue(remove, 1, key, m_rows[size_t(m_current)][size_t(key)]);
    remove.execute();
    m_rows.erase(m_rows.begin() + m_current);
    m_current = std::min(m_current, recordCount() - 1);
    m_buffer.clear();
    m_state = State::Browse;
    if (events.afterDelete)
        events.afterDelete();
}

} // namespace assets
