#pragma once

#include "core/conversions.h"
#include "db/odbc/odbc.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace assets {

// One table of the database, opened with a filter, for editing a record at a time: the
// record editor, the asset-type form and the imports share it.
//
// Open reads the rows that the filter selects (a WHERE clause, used as written). A record
// moves through the states browse, edit and insert; post writes it with one statement of
// bound parameters: an UPDATE of the changed fields by the key field in edit state, an
// INSERT of the assigned fields in insert state. A post that changes no row (the record
// was changed away or deleted by someone else) fails, and the record keeps the user's
// values and its state.
//
// Values are held as the database writes them (UTF-8 text; dates as yyyy-mm-dd, times
// of day as hh:mm:ss) or NULL. As text they read and write as the user sees them: dates
// in the short date format in force, numbers in the user's locale, strictly converted.
class TableDataSet {
public:
    enum class State { Closed, Browse, Edit, Insert };

    // Called around the changes of state, as their names say. A handler that throws stops
    // the change where the name says "before"; the record then stays as it was.
    struct Events {
        std::function<void()> beforeInsert;
        std::function<void()> afterInsert;
        std::function<void()> beforePost;
        std::function<void()> afterPost;
        std::function<void()> afterCancel;
        std::function<void()> afterDelete;
    };

    TableDataSet(db::odbc::Connection& connection, const QString& tableName,
                 const QString& keyField = QStringLiteral("ID"));

    const QString& tableName() const { return m_tableName; }
    // A WHERE clause, used as written; empty selects every row. Takes effect at open.
    void setFilter(const QString& filter) { m_filter = filter; }
    const QString& filter() const { return m_filter; }

    void open();
    void close();
    bool isOpen() const { return m_state != State::Closed; }
    State state() const { return m_state; }

    int recordCount() const { return int(m_rows.size()); }
    bool isEmpty() const { return m_rows.empty(); }
    // The current record, from 0; -1 when there is none.
    int recordIndex() const { return m_current; }
    void moveTo(int index);

    // Columns in table order.
    const std::vector<db::odbc::ColumnInfo>& fields() const { return m_fields; }
    // By name, ignoring case; -1 when there is no such field.
    int fieldIndex(const QString& name) const;
    bool hasField(const QString& name) const { return fieldIndex(name) >= 0; }

    // Values of the current record (or of the record being edited or inserted).
    bool isNull(const QString& field) const;
    // As the user reads it; empty for NULL.
    QString asText(const QString& field) const;
    // As the database writes it; nullopt for NULL.
    std::optional<QByteArray> storedValue(const QString& field) const;
    // In edit or insert state: converts by the field's type, strictly; a text that does
    // not convert throws core::ConversionError and leaves the value as it was. An empty
    // text sets NULL.
    void setAsText(const QString& field, const QString& text);
    void setNull(const QString& field);
    // True once a value was set since edit() or append().
    bool modified() const;

    void edit();
    void append();
    void post();
    void cancel();
    // Deletes the current record by its key.
    void deleteRecord();

    Events events;

private:
    using Value = std::optional<QByteArray>;
    using Record = std::vector<Value>;

    int requireField(const QString& name) const;
    const Record& shownRecord() const;
    void requireEditing(const char* what) const;
    void bindValue(db::odbc::Statement& statement, int parameter, int field,
                   const Value& value) const;
    void postEdit();
    void postInsert();

    db::odbc::Connection& m_connection;
    QString m_tableName;
    QString m_keyField;
    QString m_filter;
    State m_state = State::Closed;
    std::vector<db::odbc::ColumnInfo> m_fields;
    std::vector<Record> m_rows;
    int m_current = -1;
    // The record being edited or inserted, and which of its fields were set.
    Record m_buffer;
    std::vector<bool> m_assigned;
};

// A field value from text as the user writes it, in the form the database writes it:
// integers in decimal, other numbers with a point, dates yyyy-mm-dd, date-times
// yyyy-mm-dd hh:mm:ss (a date alone is midnight), times hh:mm:ss. Throws
// core::ConversionError for text that does not convert.
QByteArray StoredFromText(const db::odbc::ColumnInfo& field, const QString& text);
// The same with numbers read by `numbers`, for converting many values.
QByteArray StoredFromText(const db::odbc::ColumnInfo& field, const QString& text,
                          const core::NumberReader& numbers);

// Binds a value held as the database writes it (see StoredFromText) as a parameter of the
// field's kind: numbers as numbers, dates as dates; NULL for nullopt.
void BindStoredValue(db::odbc::Statement& statement, int parameter, db::odbc::ColumnInfo::Kind kind,
                     const std::optional<QByteArray>& value);

} // namespace assets
