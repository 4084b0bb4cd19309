#pragma once

// A thin RAII layer over the ODBC C API. This folder is the only code that includes
// the ODBC headers; callers see QString, QByteArray and plain C++ types.

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

namespace db::odbc {

struct Diagnostic {
    QString sqlState;
    int nativeError = 0;
    QString message;
};

// Every failing ODBC call raises this. what() is the driver's message text.
class OdbcError : public std::runtime_error {
public:
    OdbcError(const QString& context, std::vector<Diagnostic> diagnostics);
    const std::vector<Diagnostic>& diagnostics() const { return m_diagnostics; }
    // The ODBC function that failed, e.g. "SQLExecDirect".
    const QString& context() const { return m_context; }
    // SQLSTATE and native error of the first diagnostic record.
    QString sqlState() const;
    int nativeError() const;
    QString message() const { return QString::fromUtf8(what()); }

private:
    QString m_context;
    std::vector<Diagnostic> m_diagnostics;
};

struct DataSource {
    QString name;
    QString driverDescription;
};

// User and system data sources known to the driver manager.
std::vector<DataSource> DataSources();
QString DriverDescriptionOf(const QString& dataSourceName);
// The driver manager's version text ("03.52.0000" style).
QString DriverManagerVersion();

struct ColumnInfo {
    QString name;
    int sqlType = 0; // SQL_CHAR, SQL_INTEGER, ... as the driver reports it
    quint64 size = 0;
    int decimalDigits = 0;
    bool nullable = true;

    bool isNumeric() const;
    bool isDateOrTime() const;
    bool isBinary() const;

    // How the column's values read: whole numbers, exact decimals, approximate numbers,
    // dates, times of day, dates with times, raw bytes, or anything else as text.
    enum class Kind { Text, Integer, Decimal, Float, Date, Time, DateTime, Binary };
    Kind kind() const;
};

// The index of the column of that name, ignoring case; -1 when there is none.
int ColumnIndex(const std::vector<ColumnInfo>& columns, const QString& name);

// One value per column; a null QByteArray is SQL NULL, an empty non-null one is ''.
// Text comes as UTF-8, binary columns as their raw bytes.
using Row = std::vector<QByteArray>;

// One value of a fetched row as a RowSink receives it. The bytes (UTF-8 text, raw binary)
// are valid during the call only; they are empty for NULL.
struct ValueView {
    QByteArrayView bytes;
    bool isNull = false;
};

// Takes fetched rows value by value, without a QByteArray for each: for large results.
class RowSink {
public:
    virtual ~RowSink() = default;
    // One row, a value per column.
    virtual void addRow(const std::vector<ValueView>& values) = 0;
};

struct ConnectionState;

class Connection {
public:
    Connection();
    ~Connection();
    Connection(Connection&&) noexcept;
    Connection& operator=(Connection&&) noexcept;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // SQLDriverConnect without prompting; keeps the completed connection string.
    void open(const QString& connectionString);
    // Gives up this object's share of the connection. Statements made from it keep the
    // driver connection alive until they are destroyed; an open transaction is rolled back.
    void close() noexcept;
    bool isOpen() const;
    // True once the driver knows the link to the server is lost (a server that went
    // away); false where the driver cannot tell.
    bool isDead() const;
    QString completedConnectionString() const;
    QString dbmsName() const;

    // Autocommit is on after open(); begin() turns it off until commit or rollback.
    void begin();
    void commit();
    void rollback();
    bool inTransaction() const;

    // Runs a statement text directly; returns the rows affected (-1 when unknown).
    long long execute(const QString& sql);

    // Names of the user's tables (type TABLE; no system tables).
    QStringList tableNames() const;
    // Names of the table's columns that have a default value other than NULL, as the
    // catalog tells them; nullopt when the catalog lists no column of that table.
    std::optional<QStringList> columnsWithDefaults(const QString& table) const;

    std::shared_ptr<ConnectionState> state() const { return m_state; }

private:
    std::shared_ptr<ConnectionState> m_state;
};

class Statement {
public:
    explicit Statement(const Connection& connection);
    ~Statement();
    Statement(Statement&&) noexcept;
    Statement& operator=(Statement&&) noexcept;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void prepare(const QString& sql);
    int parameterCount() const;
    // Parameters are numbered from 1, as in ODBC. Bound values are copied.
    void bindText(int index, const QString& value);
    void bindNull(int index);
    // Text already in UTF-8: handed over as it is where the driver takes UTF-8.
    void bindUtf8(int index, const QByteArray& utf8);
    // Typed values, for columns whose type the driver will not take text for. A NULL of a
    // column's type.
    void bindInteger(int index, qint64 value);
    void bindDouble(int index, double value);
    void bindDate(int index, QDate value);
    void bindTimestamp(int index, const QDateTime& value);
    void bindNull(int index, ColumnInfo::Kind kind);
    void execute();
    void executeDirect(const QString& sql);
    // At most this many rows are returned; 0 means no limit. Set before executing.
    void setMaxRows(quint64 maxRows);

    long long rowsAffected() const;
    const std::vector<ColumnInfo>& columns() const;

    // Rows fetched per call (50 unless set); set before the first fetch.
    void setBlockSize(int rows);
    // Appends the next block of rows; false when the result has no more rows.
    // Columns are bound block-wise; a long or unknown-size column and the ones after it
    // are read with SQLGetData, and then rows are fetched one at a time.
    bool fetchBlock(std::vector<Row>& rows);
    // The same, handing each row to `sink`; false when the result has no more rows.
    bool fetchBlock(RowSink& sink);
    // Cancels a running statement from another thread, where the driver allows it
    // (not SQLite's: there the running call is left to finish).
    void cancel() noexcept;
    // False where the driver does not survive a cancel from another thread.
    bool canCancel() const;
    // Closes the open result and frees its buffers; the statement can be executed again.
    void close() noexcept;

private:
    // bindText for drivers that take parameters as UTF-8 bytes.
    void bindNarrowText(int index, const QByteArray& utf8);
    // Binds the parameter's fixed-size value, set by the caller.
    void bindFixed(int index, int cType, int sqlType, quint64 columnSize, int digits);

    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace db::odbc
