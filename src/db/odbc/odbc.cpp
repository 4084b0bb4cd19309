#include "db/odbc/odbc.h"

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX // keeps std::min and std::max usable
#endif
#include <windows.h>
#endif
#include <sql.h>
#include <sqlext.h>

#include <QLoggingCategory>
#include <QStringEncoder>
#include <QStringView>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <map>
#include <thread>
#include <utility>

namespace db::odbc {

namespace {

Q_LOGGING_CATEGORY(lcOdbc, "quillet.odbc", QtWarningMsg)

// Text crosses the API as UTF-16: unixODBC's SQLWCHAR is unsigned short, Windows' is wchar_t.
static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "SQLWCHAR must be a UTF-16 code unit");

constexpr int DefaultBlockSize = 50;
// Columns wider than this (in characters or bytes) are read with SQLGetData.
constexpr SQLULEN MaxBoundColumnSize = 8000;
// The completed connection string; some drivers do not report truncation.
constexpr SQLSMALLINT CompletedConnectionCapacity = 8192;
constexpr SQLSMALLINT DiagnosticMessageCapacity = 4096;
// Some drivers never answer SQL_NO_DATA to SQLGetDiagRec; stop after this many records.
constexpr SQLSMALLINT MaxDiagnosticRecords = 16;
// Piece size when reading long values with SQLGetData.
constexpr SQLLEN LongDataChunkBytes = 64 * 1024;

SQLWCHAR* sqlText(const QString& text) {
    return const_cast<SQLWCHAR*>(reinterpret_cast<const SQLWCHAR*>(text.utf16()));
}

// Statement text for drivers whose narrow text is UTF-8: passed through the narrow entry
// points, where the driver manager leaves the bytes as they are.
SQLCHAR* narrowSqlText(QByteArray& utf8) {
    return reinterpret_cast<SQLCHAR*>(utf8.data());
}

const char16_t* utf16(const SQLWCHAR* text) {
    return reinterpret_cast<const char16_t*>(text);
}

// Text of a driver-filled buffer: at most `length` units, cut at the first terminator.
QString textFromBuffer(const SQLWCHAR* buffer, qsizetype length, qsizetype capacity) {
    length = std::clamp<qsizetype>(length, 0, capacity);
    const SQLWCHAR* end = std::find(buffer, buffer + length, SQLWCHAR(0));
    return QString::fromUtf16(utf16(buffer), end - buffer);
}

QString joinMessages(const QString& context, const std::vector<Diagnostic>& diagnostics) {
    QStringList messages;
    for (const Diagnostic& diagnostic : diagnostics)
        if (!diagnostic.message.isEmpty())
            messages << diagnostic.message;
    if (messages.isEmpty())
        return context.isEmpty() ? QStringLiteral("ODBC call failed")
                                 : QStringLiteral("ODBC call failed: ") + context;
    return messages.join(QLatin1Char('\n'));
}

// Reads every diagnostic record of a handle. This is the only place that calls
// SQLGetDiagRec: one call per record into a buffer large enough for any message
// (a second call for the same record is known to crash some unixODBC drivers),
// the length taken from the driver and clamped, identical records dropped, and
// the loop bounded because some drivers repeat the last record forever.
std::vector<Diagnostic> readDiagnostics(SQLSMALLINT handleType, SQLHANDLE handle) {
    std::vector<Diagnostic> diagnostics;
    if (handle == SQL_NULL_HANDLE)
        return diagnostics;
    std::vector<SQLWCHAR> message(DiagnosticMessageCapacity + 1, 0);
    for (SQLSMALLINT record = 1; record <= MaxDiagnosticRecords; ++record) {
        SQLWCHAR state[SQL_SQLSTATE_SIZE + 1] = {};
        SQLINTEGER nativeError = 0;
        SQLSMALLINT length = 0;
        std::fill(message.begin(), message.end(), SQLWCHAR(0));
        const SQLRETURN rc = SQLGetDiagRecW(handleType, handle, record, state, &nativeError,
                                            message.data(), DiagnosticMessageCapacity, &length);
        if (!SQL_SUCCEEDED(rc))
            break;
        Diagnostic diagnostic;
        diagnostic.sqlState = textFromBuffer(state, SQL_SQLSTATE_SIZE, SQL_SQLSTATE_SIZE);
        diagnostic.nativeError = static_cast<int>(nativeError);
        diagnostic.message = textFromBuffer(message.data(), length, DiagnosticMessageCapacity - 1);
        const bool repeated =
            std::any_of(diagnostics.begin(), diagnostics.end(), [&](const Diagnostic& earlier) {
                return earlier.sqlState == diagnostic.sqlState &&
                       earlier.nativeError == diagnostic.nativeError &&
                       earlier.message == diagnostic.message;
            });
        if (!repeated)
            diagnostics.push_back(std::move(diagnostic));
    }
    return diagnostics;
}

// The one gate every ODBC call passes. SQL_SUCCESS_WITH_INFO is success (its
// diagnostics go to the debug log); SQL_ERROR and SQL_INVALID_HANDLE throw.
SQLRETURN check(SQLRETURN rc, SQLSMALLINT handleType, SQLHANDLE handle, const char* context) {
    switch (rc) {
    case SQL_SUCCESS:
    case SQL_NO_DATA:
    case SQL_NEED_DATA:
    case SQL_STILL_EXECUTING:
        return rc;
    case SQL_SUCCESS_WITH_INFO:
        if (lcOdbc().isDebugEnabled())
            for (const Diagnostic& info : readDiagnostics(handleType, handle))
                qCDebug(lcOdbc) << context << info.sqlState << info.nativeError << info.message;
        return rc;
    case SQL_INVALID_HANDLE:
        throw OdbcError(QString::fromLatin1(context),
                        {{QStringLiteral("HY000"), 0, QStringLiteral("Invalid ODBC handle")}});
    default:
        throw OdbcError(QString::fromLatin1(context), readDiagnostics(handleType, handle));
    }
}

[[noreturn]] void throwNotOpen(const char* context) {
    throw OdbcError(QString::fromLatin1(context),
                    {{QStringLiteral("08003"), 0, QStringLiteral("The connection is not open")}});
}

// Owns one ODBC handle; the destructor frees it and never throws.
template <SQLSMALLINT Type> class Handle {
public:
    Handle() = default;
    Handle(SQLHANDLE parent, SQLSMALLINT parentType, const char* context) {
        SQLHANDLE handle = SQL_NULL_HANDLE;
        const SQLRETURN rc = SQLAllocHandle(Type, parent, &handle);
        if (!SQL_SUCCEEDED(rc)) {
            // The diagnostics of a failed allocation are on the parent handle.
            check(rc == SQL_NO_DATA ? SQL_ERROR : rc, parentType, parent, context);
            throw OdbcError(QString::fromLatin1(context), {});
        }
        m_handle = handle;
    }
    ~Handle() { reset(); }
    Handle(Handle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        if (this != &other) {
            reset();
            m_handle = std::exchange(other.m_handle, nullptr);
        }
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void reset() noexcept {
        if (m_handle != nullptr)
            SQLFreeHandle(Type, m_handle);
        m_handle = nullptr;
    }
    SQLHANDLE get() const { return m_handle; }

private:
    SQLHANDLE m_handle = nullptr;
};

// The process-wide ODBC 3 environment. Connections hold a share of it, so it is
// freed only after the last connection.
struct Environment {
    Environment() {
        SQLHANDLE handle = SQL_NULL_HANDLE;
        if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &handle)))
            throw OdbcError(
                QStringLiteral("SQLAllocHandle(SQL_HANDLE_ENV)"),
                {{QStringLiteral("HY001"), 0,
                  QStringLiteral("The ODBC driver manager cannot allocate an environment")}});
        m_handle = handle;
        try {
            check(SQLSetEnvAttr(m_handle, SQL_ATTR_ODBC_VERSION,
                                reinterpret_cast<SQLPOINTER>(static_cast<uintptr_t>(SQL_OV_ODBC3)),
                                0),
                  SQL_HANDLE_ENV, m_handle, "SQLSetEnvAttr(SQL_ATTR_ODBC_VERSION)");
        } catch (...) {
            SQLFreeHandle(SQL_HANDLE_ENV, m_handle);
            throw;
        }
    }
    ~Environment() { SQLFreeHandle(SQL_HANDLE_ENV, m_handle); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    SQLHENV handle() const { return m_handle; }

private:
    SQLHENV m_handle = SQL_NULL_HENV;
};

std::shared_ptr<Environment> sharedEnvironment() {
    // Initialised once, thread-safely; a failed attempt is retried on the next call.
    static const std::shared_ptr<Environment> environment = std::make_shared<Environment>();
    return environment;
}

SQLPOINTER integerAttribute(SQLULEN value) {
    return reinterpret_cast<SQLPOINTER>(static_cast<uintptr_t>(value));
}

QString connectionInfoText(SQLHDBC dbc, SQLUSMALLINT infoType, const char* context) {
    SQLWCHAR buffer[512] = {};
    SQLSMALLINT bytes = 0;
    check(SQLGetInfoW(dbc, infoType, buffer, sizeof(buffer), &bytes), SQL_HANDLE_DBC, dbc, context);
    const qsizetype capacity = qsizetype(sizeof(buffer) / sizeof(SQLWCHAR)) - 1;
    return textFromBuffer(buffer, bytes / qsizetype(sizeof(SQLWCHAR)), capacity);
}

// The length in UTF-16 units of a complete text value the driver wrote into a buffer of
// `room` units plus terminator. A conforming driver puts the terminator right after the
// `indicator` bytes it reports; where it does not, the reported length is wrong (MariaDB
// Connector/ODBC 3.1 under-reports some texts with Latin-1 letters) and the terminator it
// wrote decides.
qsizetype textLength(const char16_t* text, SQLLEN indicator, qsizetype room) {
    const qsizetype reported = qsizetype(indicator) / qsizetype(sizeof(char16_t));
    if (reported >= room || text[reported] == u'\0')
        return reported;
    return std::find(text + reported, text + room, u'\0') - text;
}

bool isLongType(int sqlType) {
    return sqlType == SQL_LONGVARCHAR || sqlType == SQL_WLONGVARCHAR ||
           sqlType == SQL_LONGVARBINARY;
}

bool isCharacterType(int sqlType) {
    return sqlType == SQL_CHAR || sqlType == SQL_VARCHAR || sqlType == SQL_WCHAR ||
           sqlType == SQL_WVARCHAR;
}

// How a column's values are fetched: as UTF-16 text, as the driver's text form in plain
// ASCII (numbers, dates and times: no conversion to UTF-16 in the driver, which costs
// some drivers a lot), as UTF-8 text where the driver's narrow text is UTF-8, or as raw
// bytes.
enum class ValueKind { Wide, Ascii, Utf8, Bytes };

// The exact and approximate numeric types: ColumnInfo::isNumeric.
bool isNumericType(int sqlType) {
    switch (sqlType) {
    case SQL_NUMERIC:
    case SQL_DECIMAL:
    case SQL_INTEGER:
    case SQL_SMALLINT:
    case SQL_FLOAT:
    case SQL_REAL:
    case SQL_DOUBLE:
    case SQL_TINYINT:
    case SQL_BIGINT:
        return true;
    default:
        return false;
    }
}

// Numbers, BIT, GUID, dates, times and intervals.
bool hasAsciiTextForm(int sqlType) {
    if (isNumericType(sqlType))
        return true;
    switch (sqlType) {
    case SQL_BIT:
    case SQL_GUID:
    case SQL_DATETIME:
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIME:
    case SQL_TYPE_TIMESTAMP:
    case SQL_TIME:
    case SQL_TIMESTAMP:
        return true;
    default:
        return sqlType >= SQL_INTERVAL_YEAR && sqlType <= SQL_INTERVAL_MINUTE_TO_SECOND;
    }
}

SQLSMALLINT cTypeOf(ValueKind kind) {
    switch (kind) {
    case ValueKind::Wide:
        return SQL_C_WCHAR;
    case ValueKind::Ascii:
    case ValueKind::Utf8:
        return SQL_C_CHAR;
    case ValueKind::Bytes:
        break;
    }
    return SQL_C_BINARY;
}

// Bytes of the terminator the driver adds after a value of this kind.
SQLLEN terminatorBytes(ValueKind kind) {
    switch (kind) {
    case ValueKind::Wide:
        return SQLLEN(sizeof(SQLWCHAR));
    case ValueKind::Ascii:
    case ValueKind::Utf8:
        return 1;
    case ValueKind::Bytes:
        break;
    }
    return 0;
}

const QByteArray& emptyValue() {
    static const QByteArray empty(""); // empty but not null: the value ''
    return empty;
}

} // namespace

// ---------------------------------------------------------------------------------
// OdbcError

OdbcError::OdbcError(const QString& context, std::vector<Diagnostic> diagnostics)
    : std::runtime_error(joinMessages(context, diagnostics).toStdString()), m_context(context),
      m_diagnostics(std::move(diagnostics)) {}

QString OdbcError::sqlState() const {
    return m_diagnostics.empty() ? QString() : m_diagnostics.front().sqlState;
}

int OdbcError::nativeError() const {
    return m_diagnostics.empty() ? 0 : m_diagnostics.front().nativeError;
}

// ---------------------------------------------------------------------------------
// Column types

int ColumnIndex(const std::vector<ColumnInfo>& columns, const QString& name) {
    for (size_t column = 0; column < columns.size(); ++column)
        if (columns[column].name.compare(name, Qt::CaseInsensitive) == 0)
            return int(column);
    return -1;
}

ColumnInfo::Kind ColumnInfo::kind() const {
    switch (sqlType) {
    case SQL_INTEGER:
    case SQL_SMALLINT:
    case SQL_TINYINT:
    case SQL_BIGINT:
        return Kind::Integer;
    case SQL_NUMERIC:
    case SQL_DECIMAL:
        return Kind::Decimal;
    case SQL_FLOAT:
    case SQL_REAL:
    case SQL_DOUBLE:
        return Kind::Float;
    case SQL_DATETIME: // SQL_DATE of ODBC 2
    case SQL_TYPE_DATE:
        return Kind::Date;
    case SQL_TIME:
    case SQL_TYPE_TIME:
        return Kind::Time;
    case SQL_TIMESTAMP:
    case SQL_TYPE_TIMESTAMP:
        return Kind::DateTime;
    default:
        return isBinary() ? Kind::Binary : Kind::Text;
    }
}

bool ColumnInfo::isNumeric() const {
    return isNumericType(sqlType);
}

bool ColumnInfo::isDateOrTime() const {
    switch (sqlType) {
    case SQL_DATETIME: // the verbose type, and SQL_DATE of ODBC 2
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIME:
    case SQL_TYPE_TIMESTAMP:
    case SQL_TIME: // ODBC 2 codes, still reported by some drivers
    case SQL_TIMESTAMP:
        return true;
    default:
        return false;
    }
}

bool ColumnInfo::isBinary() const {
    return sqlType == SQL_BINARY || sqlType == SQL_VARBINARY || sqlType == SQL_LONGVARBINARY;
}

// ---------------------------------------------------------------------------------
// Connection

struct ConnectionState {
    // Member order matters: the connection handle is freed before the environment.
    std::shared_ptr<Environment> environment;
    Handle<SQL_HANDLE_DBC> dbc;
    bool connected = false;
    bool inTransaction = false;
    // Drivers older than ODBC 3.5 know no wide SQL types for parameters.
    bool wideParameters = true;
    // SQL_GETDATA_EXTENSIONS: where SQLGetData may be used besides unbound columns.
    SQLUINTEGER getDataExtensions = 0;
    // False where a column's values need not fit its declared type (SQLite): a value may be
    // longer than the reported size, and text may stand in a numeric column. Results are
    // then fetched a row at a time, so that every value can be read whole, and as text.
    bool enforcesDeclaredTypes = true;
    // True where SQL_C_CHAR gives the database's UTF-8 text unchanged (SQLite's driver
    // outside Windows): every value is then fetched as stored, without the driver's
    // conversion to UTF-16 and ours back.
    bool narrowTextIsUtf8 = false;
    // True where text parameters go to the driver best as UTF-8 through SQL_C_CHAR
    // (SQLite's driver, which has no wide entry points, and MariaDB's, whose wide
    // parameters lose text): the driver then gets the bytes unchanged, whatever the
    // process locale, which the driver manager would otherwise convert them by.
    bool narrowParameters = false;
    // False where SQLCancel from another thread frees what a running fetch still reads
    // (SQLite's driver): a fetch is then left to finish its call.
    bool cancelsFromAnotherThread = true;
    QString completedConnectionString;
    // Calls made on the connection while a result is read in the background. The reader
    // waits between its blocks while there are any: drivers serialise calls on a
    // connection, and a reader that fetches without a pause can hold a waiting statement
    // off until the last row (SQLite's does).
    std::atomic<int> foregroundCalls{0};

    ConnectionState() = default;
    ConnectionState(const ConnectionState&) = delete;
    ConnectionState& operator=(const ConnectionState&) = delete;
    ~ConnectionState() { disconnect(); }

    SQLHDBC handle() const { return dbc.get(); }

    void disconnect() noexcept {
        if (!connected)
            return;
        if (inTransaction)
            SQLEndTran(SQL_HANDLE_DBC, handle(), SQL_ROLLBACK);
        SQLDisconnect(handle());
        connected = false;
        inTransaction = false;
    }
};

namespace {

// Marks a call that a background reader must let through.
class ForegroundCall {
public:
    explicit ForegroundCall(ConnectionState& state) : m_state(state) { ++m_state.foregroundCalls; }
    ~ForegroundCall() { --m_state.foregroundCalls; }
    ForegroundCall(const ForegroundCall&) = delete;
    ForegroundCall& operator=(const ForegroundCall&) = delete;

private:
    ConnectionState& m_state;
};

ConnectionState& openState(const std::shared_ptr<ConnectionState>& state, const char* context) {
    if (!state || !state->connected)
        throwNotOpen(context);
    return *state;
}

void setAutocommit(ConnectionState& state, bool on) {
    check(SQLSetConnectAttrW(state.handle(), SQL_ATTR_AUTOCOMMIT,
                             integerAttribute(on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF),
                             SQL_IS_UINTEGER),
          SQL_HANDLE_DBC, state.handle(), "SQLSetConnectAttr(SQL_ATTR_AUTOCOMMIT)");
}

// The database the connection works in, where the driver tells it; empty otherwise.
QString currentCatalog(const ConnectionState& state) {
    SQLWCHAR buffer[512] = {};
    SQLINTEGER bytes = 0;
    try {
        const SQLRETURN rc =
            check(SQLGetConnectAttrW(state.handle(), SQL_ATTR_CURRENT_CATALOG, buffer,
                                     sizeof(buffer) - sizeof(SQLWCHAR), &bytes),
                  SQL_HANDLE_DBC, state.handle(), "SQLGetConnectAttr(SQL_ATTR_CURRENT_CATALOG)");
        if (rc == SQL_NO_DATA || bytes <= 0)
            return QString();
    } catch (const OdbcError&) {
        return QString(); // drivers without catalogs
    }
    const qsizetype capacity = qsizetype(sizeof(buffer) / sizeof(SQLWCHAR)) - 1;
    return textFromBuffer(buffer, bytes / qsizetype(sizeof(SQLWCHAR)), capacity);
}

void endTransaction(const std::shared_ptr<ConnectionState>& pointer, SQLSMALLINT completion,
                    const char* context) {
    ConnectionState& state = openState(pointer, context);
    const ForegroundCall foreground(state);
    if (!state.inTransaction)
        return;
    check(SQLEndTran(SQL_HANDLE_DBC, state.handle(), completion), SQL_HANDLE_DBC, state.handle(),
          context);
    state.inTransaction = false;
    setAutocommit(state, true);
}

} // namespace

Connection::Connection() = default;
Connection::~Connection() = default;
Connection::Connection(Connection&&) noexcept = default;
Connection& Connection::operator=(Connection&&) noexcept = default;

void Connection::open(const QString& connectionString) {
    close();
    auto state = std::make_shared<ConnectionState>();
    state->environment = sharedEnvironment();
    state->dbc = Handle<SQL_HANDLE_DBC>(state->environment->handle(), SQL_HANDLE_ENV,
                                        "SQLAllocHandle(SQL_HANDLE_DBC)");
    std::vector<SQLWCHAR> completed(CompletedConnectionCapacity + 1, 0);
    SQLSMALLINT completedLength = 0;
    check(SQLDriverConnectW(state->handle(), nullptr, sqlText(connectionString), SQL_NTS,
                            completed.data(), CompletedConnectionCapacity, &completedLength,
                            SQL_DRIVER_NOPROMPT),
          SQL_HANDLE_DBC, state->handle(), "SQLDriverConnect");
    state->connected = true;
    state->completedConnectionString =
        textFromBuffer(completed.data(), completedLength, CompletedConnectionCapacity - 1);
    setAutocommit(*state, true);
    // Unanswered questions leave the defaults.
    try {
        const QString version =
            connectionInfoText(state->handle(), SQL_DRIVER_ODBC_VER, "SQLGetInfo");
        state->wideParameters = version.isEmpty() || version >= QLatin1String("03.50");
    } catch (const OdbcError&) {
    }
    try {
        SQLUINTEGER extensions = 0;
        check(SQLGetInfoW(state->handle(), SQL_GETDATA_EXTENSIONS, &extensions, sizeof(extensions),
                          nullptr),
              SQL_HANDLE_DBC, state->handle(), "SQLGetInfo(SQL_GETDATA_EXTENSIONS)");
        state->getDataExtensions = extensions;
    } catch (const OdbcError&) {
    }
    try {
        const QString dbms =
            connectionInfoText(state->handle(), SQL_DBMS_NAME, "SQLGetInfo(SQL_DBMS_NAME)");
        const bool sqlite = dbms.compare(QLatin1String("SQLite"), Qt::CaseInsensitive) == 0;
        state->enforcesDeclaredTypes = !sqlite;
        state->cancelsFromAnotherThread = !sqlite;
#ifndef _WIN32
        state->narrowTextIsUtf8 = sqlite;
        state->narrowParameters = sqlite ||
                                  dbms.contains(QLatin1String("MariaDB"), Qt::CaseInsensitive) ||
                                  dbms.contains(QLatin1String("MySQL"), Qt::CaseInsensitive);
#endif
    } catch (const OdbcError&) {
    }
    m_state = std::move(state);
}

void Connection::close() noexcept {
    // Statements made from this connection keep the driver connection until they go.
    m_state.reset();
}

bool Connection::isOpen() const {
    return m_state && m_state->connected;
}

bool Connection::isDead() const {
    if (!isOpen())
        return false;
    SQLUINTEGER dead = SQL_CD_FALSE;
    const SQLRETURN rc =
        SQLGetConnectAttrW(m_state->handle(), SQL_ATTR_CONNECTION_DEAD, &dead, 0, nullptr);
    return SQL_SUCCEEDED(rc) && dead == SQL_CD_TRUE;
}

QString Connection::completedConnectionString() const {
    return m_state ? m_state->completedConnectionString : QString();
}

QString Connection::dbmsName() const {
    const ConnectionState& state = openState(m_state, "SQLGetInfo(SQL_DBMS_NAME)");
    return connectionInfoText(state.handle(), SQL_DBMS_NAME, "SQLGetInfo(SQL_DBMS_NAME)");
}

void Connection::begin() {
    ConnectionState& state = openState(m_state, "SQLSetConnectAttr(SQL_ATTR_AUTOCOMMIT)");
    if (state.inTransaction)
        return;
    setAutocommit(state, false);
    state.inTransaction = true;
}

void Connection::commit() {
    endTransaction(m_state, SQL_COMMIT, "SQLEndTran(SQL_COMMIT)");
}

void Connection::rollback() {
    endTransaction(m_state, SQL_ROLLBACK, "SQLEndTran(SQL_ROLLBACK)");
}

bool Connection::inTransaction() const {
    return m_state && m_state->inTransaction;
}

long long Connection::execute(const QString& sql) {
    Statement statement(*this);
    statement.executeDirect(sql);
    return statement.rowsAffected();
}

namespace {

constexpr qsizetype CatalogNameCapacity = 1024;

// A name from a catalog column bound as wide text of CatalogNameCapacity characters.
QString boundName(const std::vector<SQLWCHAR>& buffer, SQLLEN indicator) {
    const auto* text = utf16(buffer.data());
    return QString::fromUtf16(text, indicator == SQL_NO_TOTAL ||
                                            indicator > SQLLEN(CatalogNameCapacity * 2)
                                        ? std::find(text, text + CatalogNameCapacity, u'\0') - text
                                        : textLength(text, indicator, CatalogNameCapacity));
}

} // namespace

QStringList Connection::tableNames() const {
    const ConnectionState& state = openState(m_state, "SQLTables");
    Handle<SQL_HANDLE_STMT> statement(state.handle(), SQL_HANDLE_DBC,
                                      "SQLAllocHandle(SQL_HANDLE_STMT)");
    const SQLHSTMT handle = statement.get();
    // Only base tables of the current catalog (the database, where the driver has more
    // than one): no system tables and no views.
    const QString catalog = currentCatalog(state);
    const QString tableType = QStringLiteral("TABLE");
    check(SQLTablesW(handle, catalog.isEmpty() ? nullptr : sqlText(catalog),
                     catalog.isEmpty() ? 0 : SQL_NTS, nullptr, 0, nullptr, 0, sqlText(tableType),
                     SQL_NTS),
          SQL_HANDLE_STMT, handle, "SQLTables");
    std::vector<SQLWCHAR> name(CatalogNameCapacity + 1, 0);
    SQLLEN indicator = 0;
    check(SQLBindCol(handle, 3, SQL_C_WCHAR, name.data(), SQLLEN(name.size() * sizeof(SQLWCHAR)),
                     &indicator),
          SQL_HANDLE_STMT, handle, "SQLBindCol");
    QStringList names;
    while (check(SQLFetch(handle), SQL_HANDLE_STMT, handle, "SQLFetch") != SQL_NO_DATA)
        if (indicator != SQL_NULL_DATA)
            names << boundName(name, indicator);
    return names;
}

std::optional<QStringList> Connection::columnsWithDefaults(const QString& table) const {
    const ConnectionState& state = openState(m_state, "SQLColumns");
    Handle<SQL_HANDLE_STMT> statement(state.handle(), SQL_HANDLE_DBC,
                                      "SQLAllocHandle(SQL_HANDLE_STMT)");
    const SQLHSTMT handle = statement.get();
    const QString catalog = currentCatalog(state);
    check(SQLColumnsW(handle, catalog.isEmpty() ? nullptr : sqlText(catalog),
                      catalog.isEmpty() ? 0 : SQL_NTS, nullptr, 0, sqlText(table), SQL_NTS, nullptr,
                      0),
          SQL_HANDLE_STMT, handle, "SQLColumns");
    std::vector<SQLWCHAR> name(CatalogNameCapacity + 1, 0);
    std::vector<SQLWCHAR> defaultValue(CatalogNameCapacity + 1, 0);
    SQLLEN nameIndicator = 0;
    SQLLEN defaultIndicator = 0;
    check(SQLBindCol(handle, 4, SQL_C_WCHAR, name.data(), SQLLEN(name.size() * sizeof(SQLWCHAR)),
                     &nameIndicator),
          SQL_HANDLE_STMT, handle, "SQLBindCol");
    check(SQLBindCol(handle, 13, SQL_C_WCHAR, defaultValue.data(),
                     SQLLEN(defaultValue.size() * sizeof(SQLWCHAR)), &defaultIndicator),
          SQL_HANDLE_STMT, handle, "SQLBindCol");
    QStringList names;
    bool listed = false;
    while (check(SQLFetch(handle), SQL_HANDLE_STMT, handle, "SQLFetch") != SQL_NO_DATA) {
        listed = true;
        if (nameIndicator == SQL_NULL_DATA || defaultIndicator == SQL_NULL_DATA)
            continue;
        // A default of NULL (the unquoted word) is what leaving the column out gives anyway;
        // some drivers report it for every column without a default.
        if (boundName(defaultValue, defaultIndicator)
                .trimmed()
                .compare(QLatin1String("NULL"), Qt::CaseInsensitive) == 0)
            continue;
        names << boundName(name, nameIndicator);
    }
    if (!listed)
        return std::nullopt;
    return names;
}

// ---------------------------------------------------------------------------------
// Statement

namespace {

// A bound parameter value; the map that holds it keeps its address stable.
// A bound parameter's value: UTF-16 text, UTF-8 text for narrow parameters, or a number,
// date or time stamp in the driver's own structure.
struct Parameter {
    std::vector<SQLWCHAR> text;
    QByteArray narrowText;
    union {
        SQLBIGINT integer;
        SQLDOUBLE real;
        SQL_DATE_STRUCT date;
        SQL_TIMESTAMP_STRUCT timestamp;
    } fixed{};
    SQLLEN indicator = 0;
};

// The column-wise buffer of one bound result column.
struct ColumnBuffer {
    ValueKind kind = ValueKind::Wide;
    SQLLEN elementBytes = 0;
    std::unique_ptr<char[]> data;
    std::unique_ptr<SQLLEN[]> indicators;
};

} // namespace

struct Statement::Impl {
    // Member order matters: the statement handle is freed before the connection share.
    std::shared_ptr<ConnectionState> connection;
    Handle<SQL_HANDLE_STMT> statement;

    std::map<int, Parameter> parameters;
    std::vector<ColumnInfo> columns;
    long long rowsAffected = -1;
    quint64 maxRows = 0;
    int blockSize = DefaultBlockSize;

    // The open result and its fetch state.
    bool resultOpen = false;
    bool atEnd = true;
    bool bindingsReady = false;
    // Set when a value could not be read whole in a block: fetch single rows from then on.
    bool singleRowsFromNow = false;
    quint64 rowsReturned = 0;
    // Columns from this index on are not bound and are read with SQLGetData.
    size_t firstUnbound = 0;
    SQLULEN rowsetSize = 1;
    SQLULEN rowsFetched = 0;
    std::vector<ColumnBuffer> buffers;
    std::unique_ptr<SQLUSMALLINT[]> rowStatus;
    std::unique_ptr<char[]> chunk;
    std::u16string wideScratch;
    QByteArray byteScratch;

    SQLHSTMT handle() const { return statement.get(); }

    SQLRETURN call(SQLRETURN rc, const char* context) const {
        return check(rc, SQL_HANDLE_STMT, handle(), context);
    }

    // Cleanup in noexcept paths: failures of these calls are of no consequence.
    void releaseResult() noexcept {
        if (resultOpen)
            SQLFreeStmt(handle(), SQL_CLOSE);
        SQLFreeStmt(handle(), SQL_UNBIND);
        resultOpen = false;
        atEnd = true;
        bindingsReady = false;
        singleRowsFromNow = false;
        rowsReturned = 0;
        rowsFetched = 0;
        columns.clear();
        buffers.clear();
        rowsAffected = -1;
    }

    void afterExecute(SQLRETURN rc) {
        if (rc == SQL_NO_DATA) {
            // A searched UPDATE or DELETE that touched no row.
            rowsAffected = 0;
            return;
        }
        SQLLEN count = -1;
        call(SQLRowCount(handle(), &count), "SQLRowCount");
        rowsAffected = count;
        SQLSMALLINT columnCount = 0;
        call(SQLNumResultCols(handle(), &columnCount), "SQLNumResultCols");
        if (columnCount <= 0)
            return;
        describeColumns(columnCount);
        resultOpen = true;
        atEnd = false;
    }

    void describeColumns(SQLSMALLINT columnCount) {
        columns.reserve(size_t(columnCount));
        std::vector<SQLWCHAR> name(256, 0);
        for (SQLUSMALLINT column = 1; column <= SQLUSMALLINT(columnCount); ++column) {
            SQLSMALLINT nameLength = 0;
            SQLSMALLINT dataType = 0;
            SQLULEN size = 0;
            SQLSMALLINT digits = 0;
            SQLSMALLINT nullable = SQL_NULLABLE_UNKNOWN;
            ColumnInfo info;
            if (connection->narrowTextIsUtf8) {
                QByteArray narrowName(1024, '\0');
                call(SQLDescribeCol(handle(), column, reinterpret_cast<SQLCHAR*>(narrowName.data()),
                                    SQLSMALLINT(narrowName.size()), &nameLength, &dataType, &size,
                                    &digits, &nullable),
                     "SQLDescribeCol");
                info.name = QString::fromUtf8(
                    narrowName.first(std::clamp<qsizetype>(nameLength, 0, narrowName.size() - 1)));
            } else {
                auto describe = [&] {
                    call(SQLDescribeColW(handle(), column, name.data(), SQLSMALLINT(name.size()),
                                         &nameLength, &dataType, &size, &digits, &nullable),
                         "SQLDescribeCol");
                };
                describe();
                if (nameLength >= SQLSMALLINT(name.size())) {
                    name.assign(size_t(nameLength) + 1, 0);
                    describe();
                }
                info.name = textFromBuffer(name.data(), nameLength, qsizetype(name.size()) - 1);
            }
            info.sqlType = dataType;
            info.size = size;
            info.decimalDigits = digits;
            info.nullable = nullable != SQL_NO_NULLS;
            columns.push_back(std::move(info));
        }
    }

    static bool readsWithGetData(const ColumnInfo& column) {
        return isLongType(column.sqlType) || column.size == 0 || column.size > MaxBoundColumnSize;
    }

    ValueKind kindOf(const ColumnInfo& column) const {
        if (column.isBinary())
            return ValueKind::Bytes;
        if (connection->narrowTextIsUtf8)
            return ValueKind::Utf8;
        return hasAsciiTextForm(column.sqlType) && connection->enforcesDeclaredTypes
                   ? ValueKind::Ascii
                   : ValueKind::Wide;
    }

    // Bytes one value of a bound column takes, terminator included.
    static SQLLEN elementBytes(const ColumnInfo& column, ValueKind kind) {
        switch (kind) {
        case ValueKind::Bytes:
            return SQLLEN(column.size);
        case ValueKind::Ascii:
            // The text form may be longer than the precision: sign, point, exponent.
            return SQLLEN(std::max<SQLULEN>(column.size + 32, 64)) + 1;
        case ValueKind::Utf8:
            // Up to four bytes a character.
            return isCharacterType(column.sqlType)
                       ? SQLLEN(column.size * 4) + 1
                       : SQLLEN(std::max<SQLULEN>(column.size + 32, 64)) + 1;
        case ValueKind::Wide:
            break;
        }
        // Room for surrogate pairs in character columns; other types' text forms may be
        // longer than their reported size.
        const SQLULEN units = isCharacterType(column.sqlType)
                                  ? column.size * 2 + 1
                                  : std::max<SQLULEN>(column.size + 32, 64) + 1;
        return SQLLEN(units * sizeof(SQLWCHAR));
    }

    // Binds the columns before the first one read with SQLGetData. Whenever a column is
    // read with SQLGetData the rowset is one row: SQLGetData on block cursors is not portable.
    void bindColumns() {
        call(SQLFreeStmt(handle(), SQL_UNBIND), "SQLFreeStmt(SQL_UNBIND)");
        firstUnbound = columns.size();
        for (size_t index = 0; index < columns.size(); ++index)
            if (readsWithGetData(columns[index])) {
                firstUnbound = index;
                break;
            }
        const bool singleRows = singleRowsFromNow || firstUnbound < columns.size() ||
                                !connection->enforcesDeclaredTypes;
        rowsetSize = singleRows ? 1 : SQLULEN(std::max(1, blockSize));
        call(SQLSetStmtAttrW(handle(), SQL_ATTR_ROW_BIND_TYPE, integerAttribute(SQL_BIND_BY_COLUMN),
                             0),
             "SQLSetStmtAttr(SQL_ATTR_ROW_BIND_TYPE)");
        call(SQLSetStmtAttrW(handle(), SQL_ATTR_ROW_ARRAY_SIZE, integerAttribute(rowsetSize), 0),
             "SQLSetStmtAttr(SQL_ATTR_ROW_ARRAY_SIZE)");
        call(SQLSetStmtAttrW(handle(), SQL_ATTR_ROWS_FETCHED_PTR, &rowsFetched, 0),
             "SQLSetStmtAttr(SQL_ATTR_ROWS_FETCHED_PTR)");
        rowStatus = std::make_unique<SQLUSMALLINT[]>(rowsetSize);
        call(SQLSetStmtAttrW(handle(), SQL_ATTR_ROW_STATUS_PTR, rowStatus.get(), 0),
             "SQLSetStmtAttr(SQL_ATTR_ROW_STATUS_PTR)");
        buffers.clear();
        buffers.resize(firstUnbound);
        for (size_t index = 0; index < firstUnbound; ++index) {
            ColumnBuffer& buffer = buffers[index];
            buffer.kind = kindOf(columns[index]);
            buffer.elementBytes = elementBytes(columns[index], buffer.kind);
            buffer.data = std::make_unique<char[]>(size_t(buffer.elementBytes) * rowsetSize);
            buffer.indicators = std::make_unique<SQLLEN[]>(rowsetSize);
            call(SQLBindCol(handle(), SQLUSMALLINT(index + 1), cTypeOf(buffer.kind),
                            buffer.data.get(), buffer.elementBytes, buffer.indicators.get()),
                 "SQLBindCol");
        }
        bindingsReady = true;
    }

    // Reads a whole value with SQLGetData, piece by piece: text as UTF-16 into wideScratch,
    // ASCII text and bytes into byteScratch. False when the value is NULL.
    bool readPieces(size_t index, ValueKind kind) {
        const SQLUSMALLINT column = SQLUSMALLINT(index + 1);
        const SQLLEN room = LongDataChunkBytes - terminatorBytes(kind);
        if (!chunk)
            chunk = std::make_unique<char[]>(size_t(LongDataChunkBytes));
        wideScratch.clear();
        byteScratch = QByteArray();
        for (;;) {
            SQLLEN indicator = 0;
            const SQLRETURN rc = call(SQLGetData(handle(), column, cTypeOf(kind), chunk.get(),
                                                 LongDataChunkBytes, &indicator),
                                      "SQLGetData");
            if (rc == SQL_NO_DATA)
                return true;
            if (indicator == SQL_NULL_DATA)
                return false;
            const bool complete = indicator != SQL_NO_TOTAL && indicator <= room;
            // The first piece tells the whole length where the driver knows it.
            const bool knownTotal = !complete && indicator != SQL_NO_TOTAL;
            if (kind == ValueKind::Wide) {
                const auto* text = reinterpret_cast<const char16_t*>(chunk.get());
                const qsizetype units = room / SQLLEN(sizeof(char16_t));
                if (knownTotal && wideScratch.empty())
                    wideScratch.reserve(size_t(indicator) / sizeof(char16_t));
                wideScratch.append(text,
                                   size_t(complete ? textLength(text, indicator, units) : units));
            } else {
                if (knownTotal && byteScratch.isEmpty())
                    byteScratch.reserve(qsizetype(indicator));
                byteScratch.append(chunk.get(), qsizetype(complete ? indicator : room));
            }
            if (complete)
                return true;
        }
    }

    QByteArray scratchValue(ValueKind kind) const {
        if (kind != ValueKind::Wide)
            return byteScratch.isEmpty() ? emptyValue() : byteScratch;
        if (wideScratch.empty())
            return emptyValue();
        return QStringView(wideScratch.data(), qsizetype(wideScratch.size())).toUtf8();
    }

    QByteArray readData(size_t index) {
        const ValueKind kind = kindOf(columns[index]);
        return readPieces(index, kind) ? scratchValue(kind) : QByteArray();
    }

    bool scratchStartsWith(ValueKind kind, const char* prefix, SQLLEN prefixBytes) const {
        const bool wide = kind == ValueKind::Wide;
        const char* data =
            wide ? reinterpret_cast<const char*>(wideScratch.data()) : byteScratch.constData();
        const SQLLEN size =
            wide ? SQLLEN(wideScratch.size() * sizeof(char16_t)) : SQLLEN(byteScratch.size());
        return size >= prefixBytes && std::memcmp(data, prefix, size_t(prefixBytes)) == 0;
    }

    // A value longer than its bound buffer: the driver reported the column narrower than
    // its data. It is read again whole with SQLGetData where the driver allows that on
    // the row, and taken only if it begins with what the buffer got. Otherwise the cut
    // value stays, with a warning, and the rest of the result is fetched a row at a time,
    // where SQLGetData can read such values.
    QByteArray readTruncated(size_t index, SQLULEN row, const char* prefix, SQLLEN prefixBytes) {
        const ValueKind kind = buffers[index].kind;
        const SQLUINTEGER extensions = connection->getDataExtensions;
        const bool allowed =
            (extensions & SQL_GD_BOUND) && (rowsetSize == 1 || (extensions & SQL_GD_BLOCK));
        if (allowed) {
            try {
                if (rowsetSize > 1)
                    call(SQLSetPos(handle(), SQLSETPOSIROW(row + 1), SQL_POSITION,
                                   SQL_LOCK_NO_CHANGE),
                         "SQLSetPos(SQL_POSITION)");
                if (readPieces(index, kind) && scratchStartsWith(kind, prefix, prefixBytes))
                    return scratchValue(kind);
            } catch (const OdbcError& error) {
                qCDebug(lcOdbc) << "Cannot read the whole value again:" << error.message();
            }
        }
        qCWarning(lcOdbc) << "The value of column" << columns[index].name
                          << "is cut to the size the driver reported:" << columns[index].size;
        if (rowsetSize > 1)
            singleRowsFromNow = true;
        if (kind != ValueKind::Wide)
            return QByteArray(prefix, qsizetype(prefixBytes));
        return QStringView(reinterpret_cast<const char16_t*>(prefix),
                           qsizetype(prefixBytes) / qsizetype(sizeof(char16_t)))
            .toUtf8();
    }

    QByteArray boundValue(size_t index, SQLULEN row) {
        const ColumnBuffer& buffer = buffers[index];
        const SQLLEN indicator = buffer.indicators[row];
        if (indicator == SQL_NULL_DATA)
            return QByteArray();
        const char* data = buffer.data.get() + SQLLEN(row) * buffer.elementBytes;
        const SQLLEN room = buffer.elementBytes - terminatorBytes(buffer.kind);
        const bool truncated = indicator == SQL_NO_TOTAL || indicator > room;
        if (buffer.kind != ValueKind::Wide) {
            if (truncated)
                return readTruncated(index, row, data, room);
            return indicator <= 0 ? emptyValue() : QByteArray(data, qsizetype(indicator));
        }
        const auto* text = reinterpret_cast<const char16_t*>(data);
        const qsizetype units = room / qsizetype(sizeof(char16_t));
        if (truncated) {
            // What arrived ends at the terminator the driver wrote.
            const qsizetype length = std::find(text, text + units, u'\0') - text;
            return readTruncated(index, row, data, SQLLEN(length * qsizetype(sizeof(char16_t))));
        }
        const qsizetype length = textLength(text, indicator, units);
        if (length <= 0)
            return emptyValue();
        return QStringView(text, length).toUtf8();
    }

    void appendRow(std::vector<Row>& rows, SQLULEN rowIndex) {
        Row row;
        row.reserve(columns.size());
        for (size_t index = 0; index < firstUnbound; ++index)
            row.push_back(boundValue(index, rowIndex));
        for (size_t index = firstUnbound; index < columns.size(); ++index)
            row.push_back(readData(index));
        rows.push_back(std::move(row));
    }

    bool limitReached() const { return maxRows != 0 && rowsReturned >= maxRows; }

    // One SQLFetch; false at the end of the result.
    bool fetchRowset() {
        rowsFetched = 0;
        std::fill(rowStatus.get(), rowStatus.get() + rowsetSize, SQLUSMALLINT(SQL_ROW_SUCCESS));
        if (call(SQLFetch(handle()), "SQLFetch") == SQL_NO_DATA) {
            atEnd = true;
            return false;
        }
        // Some drivers leave SQL_ATTR_ROWS_FETCHED_PTR alone for a one-row rowset.
        if (rowsFetched == 0 && rowsetSize == 1)
            rowsFetched = 1;
        return true;
    }

    // Fetches the next block and calls perRow(rowIndex) for each of its rows; false when
    // the result had no more rows.
    template <typename PerRow> bool fetchRows(PerRow&& perRow) {
        if (!resultOpen || atEnd)
            return false;
        if (!bindingsReady || (singleRowsFromNow && rowsetSize > 1))
            bindColumns();
        const quint64 before = rowsReturned;
        // A block is one rowset, or as many single-row fetches.
        const int fetches = rowsetSize > 1 ? 1 : std::max(1, blockSize);
        for (int fetch = 0; fetch < fetches && !limitReached(); ++fetch) {
            if (!fetchRowset())
                break;
            for (SQLULEN index = 0; index < rowsFetched && !limitReached(); ++index) {
                const SQLUSMALLINT status = rowStatus[index];
                if (status == SQL_ROW_NOROW)
                    continue;
                if (status == SQL_ROW_ERROR)
                    throw OdbcError(QStringLiteral("SQLFetch"),
                                    readDiagnostics(SQL_HANDLE_STMT, handle()));
                perRow(index);
                ++rowsReturned;
            }
        }
        if (limitReached())
            atEnd = true;
        return rowsReturned > before;
    }

    bool fetchBlock(std::vector<Row>& rows) {
        const size_t before = rows.size();
        const size_t wanted = size_t(std::max(1, blockSize));
        // Room for the block, growing geometrically: callers append block after block.
        if (resultOpen && !atEnd && rows.capacity() < before + wanted)
            rows.reserve(std::max(before + wanted, rows.capacity() * 2));
        return fetchRows([&](SQLULEN index) { appendRow(rows, index); });
    }

    // ---- Rows for a RowSink: values are handed on as views, not copied one by one.

    // UTF-8 of values that are not UTF-8 in their buffer, one per column, reused.
    std::vector<QByteArray> sinkScratch;
    std::vector<ValueView> sinkRow;
    QStringEncoder utf8Encoder{QStringEncoder::Utf8, QStringConverter::Flag::Stateless};

    ValueView utf8View(QStringView text, QByteArray& scratch) {
        const qsizetype room = utf8Encoder.requiredSpace(text.size());
        if (scratch.size() < room)
            scratch.resize(std::max(room, scratch.size() * 2));
        char* end = utf8Encoder.appendToBuffer(scratch.data(), text);
        return {QByteArrayView(scratch.constData(), end - scratch.constData()), false};
    }

    ValueView heldView(QByteArray value, QByteArray& scratch) {
        scratch = std::move(value);
        return {QByteArrayView(scratch.constData(), scratch.size()), scratch.isNull()};
    }

    ValueView boundView(size_t index, SQLULEN row) {
        const ColumnBuffer& buffer = buffers[index];
        const SQLLEN indicator = buffer.indicators[row];
        if (indicator == SQL_NULL_DATA)
            return {QByteArrayView(), true};
        const char* data = buffer.data.get() + SQLLEN(row) * buffer.elementBytes;
        const SQLLEN room = buffer.elementBytes - terminatorBytes(buffer.kind);
        const bool truncated = indicator == SQL_NO_TOTAL || indicator > room;
        if (truncated)
            return heldView(boundValue(index, row), sinkScratch[index]);
        if (buffer.kind != ValueKind::Wide)
            return {QByteArrayView(data, indicator <= 0 ? 0 : qsizetype(indicator)), false};
        const auto* text = reinterpret_cast<const char16_t*>(data);
        const qsizetype length = textLength(text, indicator, room / qsizetype(sizeof(char16_t)));
        return utf8View(QStringView(text, std::max<qsizetype>(length, 0)), sinkScratch[index]);
    }

    bool fetchBlock(RowSink& sink) {
        if (sinkScratch.size() != columns.size()) {
            sinkScratch.assign(columns.size(), QByteArray());
            sinkRow.assign(columns.size(), ValueView());
        }
        return fetchRows([&](SQLULEN index) {
            for (size_t column = 0; column < firstUnbound; ++column)
                sinkRow[column] = boundView(column, index);
            for (size_t column = firstUnbound; column < columns.size(); ++column)
                sinkRow[column] = heldView(readData(column), sinkScratch[column]);
            sink.addRow(sinkRow);
        });
    }
};

Statement::Statement(const Connection& connection) : m_impl(std::make_unique<Impl>()) {
    m_impl->connection = connection.state();
    const ConnectionState& state = openState(m_impl->connection, "SQLAllocHandle(SQL_HANDLE_STMT)");
    m_impl->statement =
        Handle<SQL_HANDLE_STMT>(state.handle(), SQL_HANDLE_DBC, "SQLAllocHandle(SQL_HANDLE_STMT)");
}

Statement::~Statement() = default;
Statement::Statement(Statement&&) noexcept = default;
Statement& Statement::operator=(Statement&&) noexcept = default;

void Statement::prepare(const QString& sql) {
    const ForegroundCall foreground(*m_impl->connection);
    m_impl->releaseResult();
    m_impl->call(SQLFreeStmt(m_impl->handle(), SQL_RESET_PARAMS), "SQLFreeStmt(SQL_RESET_PARAMS)");
    m_impl->parameters.clear();
    if (m_impl->connection->narrowTextIsUtf8) {
        QByteArray text = sql.toUtf8();
        m_impl->call(SQLPrepare(m_impl->handle(), narrowSqlText(text), SQLINTEGER(text.size())),
                     "SQLPrepare");
        return;
    }
    m_impl->call(SQLPrepareW(m_impl->handle(), sqlText(sql), SQL_NTS), "SQLPrepare");
}

int Statement::parameterCount() const {
    SQLSMALLINT count = 0;
    m_impl->call(SQLNumParams(m_impl->handle(), &count), "SQLNumParams");
    return count;
}

void Statement::bindText(int index, const QString& value) {
    if (m_impl->connection->narrowParameters) {
        bindNarrowText(index, value.toUtf8());
        return;
    }
    Parameter& parameter = m_impl->parameters[index];
    parameter.text.assign(reinterpret_cast<const SQLWCHAR*>(value.utf16()),
                          reinterpret_cast<const SQLWCHAR*>(value.utf16()) + value.size());
    parameter.text.push_back(0);
    parameter.indicator = SQLLEN(value.size()) * SQLLEN(sizeof(SQLWCHAR));
    const SQLULEN columnSize = SQLULEN(std::max<qsizetype>(value.size(), 1));
    // Long texts need the long types on drivers that cap the plain ones (4000 or 8000).
    const bool wide = m_impl->connection->wideParameters;
    const SQLSMALLINT sqlType = wide ? (columnSize > 4000 ? SQL_WLONGVARCHAR : SQL_WVARCHAR)
                                     : (columnSize > 8000 ? SQL_LONGVARCHAR : SQL_VARCHAR);
    m_impl->call(SQLBindParameter(m_impl->handle(), SQLUSMALLINT(index), SQL_PARAM_INPUT,
                                  SQL_C_WCHAR, sqlType, columnSize, 0, parameter.text.data(),
                                  SQLLEN(parameter.text.size() * sizeof(SQLWCHAR)),
                                  &parameter.indicator),
                 "SQLBindParameter");
}

void Statement::bindUtf8(int index, const QByteArray& utf8) {
    if (m_impl->connection->narrowParameters)
        bindNarrowText(index, utf8);
    else
        bindText(index, QString::fromUtf8(utf8));
}

void Statement::bindNarrowText(int index, const QByteArray& utf8) {
    Parameter& parameter = m_impl->parameters[index];
    parameter.narrowText = utf8;
    parameter.indicator = SQLLEN(utf8.size());
    const SQLULEN columnSize = SQLULEN(std::max<qsizetype>(utf8.size(), 1));
    const SQLSMALLINT sqlType = columnSize > 8000 ? SQL_LONGVARCHAR : SQL_VARCHAR;
    m_impl->call(SQLBindParameter(m_impl->handle(), SQLUSMALLINT(index), SQL_PARAM_INPUT,
                                  SQL_C_CHAR, sqlType, columnSize, 0, parameter.narrowText.data(),
                                  SQLLEN(utf8.size() + 1), &parameter.indicator),
                 "SQLBindParameter");
}

void Statement::bindFixed(int index, int cType, int sqlType, quint64 columnSize, int digits) {
    Parameter& parameter = m_impl->parameters[index];
    parameter.indicator = 0;
    m_impl->call(SQLBindParameter(m_impl->handle(), SQLUSMALLINT(index), SQL_PARAM_INPUT,
                                  SQLSMALLINT(cType), SQLSMALLINT(sqlType), SQLULEN(columnSize),
                                  SQLSMALLINT(digits), &parameter.fixed, 0, &parameter.indicator),
                 "SQLBindParameter");
}

void Statement::bindInteger(int index, qint64 value) {
    m_impl->parameters[index].fixed.integer = value;
    bindFixed(index, SQL_C_SBIGINT, SQL_BIGINT, 19, 0);
}

void Statement::bindDouble(int index, double value) {
    m_impl->parameters[index].fixed.real = value;
    bindFixed(index, SQL_C_DOUBLE, SQL_DOUBLE, 15, 0);
}

void Statement::bindDate(int index, QDate value) {
    SQL_DATE_STRUCT& date = m_impl->parameters[index].fixed.date;
    date.year = SQLSMALLINT(value.year());
    date.month = SQLUSMALLINT(value.month());
    date.day = SQLUSMALLINT(value.day());
    bindFixed(index, SQL_C_TYPE_DATE, SQL_TYPE_DATE, 10, 0);
}

void Statement::bindTimestamp(int index, const QDateTime& value) {
    SQL_TIMESTAMP_STRUCT& stamp = m_impl->parameters[index].fixed.timestamp;
    const QDate date = value.date();
    const QTime time = value.time();
    stamp = {SQLSMALLINT(date.year()),           SQLUSMALLINT(date.month()),
             SQLUSMALLINT(date.day()),           SQLUSMALLINT(time.hour()),
             SQLUSMALLINT(time.minute()),        SQLUSMALLINT(time.second()),
             SQLUINTEGER(time.msec()) * 1000000u};
    bindFixed(index, SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 23, 3);
}

void Statement::bindNull(int index, ColumnInfo::Kind kind) {
    switch (kind) {
    case ColumnInfo::Kind::Integer:
        bindFixed(index, SQL_C_SBIGINT, SQL_BIGINT, 19, 0);
        break;
    case ColumnInfo::Kind::Decimal:
    case ColumnInfo::Kind::Float:
        bindFixed(index, SQL_C_DOUBLE, SQL_DOUBLE, 15, 0);
        break;
    case ColumnInfo::Kind::Date:
        bindFixed(index, SQL_C_TYPE_DATE, SQL_TYPE_DATE, 10, 0);
        break;
    case ColumnInfo::Kind::DateTime:
        bindFixed(index, SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, 23, 3);
        break;
    default:
        bindNull(index);
        return;
    }
    m_impl->parameters[index].indicator = SQL_NULL_DATA;
}

void Statement::bindNull(int index) {
    Parameter& parameter = m_impl->parameters[index];
    parameter.text.assign(1, 0);
    parameter.indicator = SQL_NULL_DATA;
    const SQLSMALLINT sqlType = m_impl->connection->wideParameters ? SQL_WVARCHAR : SQL_VARCHAR;
    m_impl->call(SQLBindParameter(m_impl->handle(), SQLUSMALLINT(index), SQL_PARAM_INPUT,
                                  SQL_C_WCHAR, sqlType, 1, 0, parameter.text.data(),
                                  SQLLEN(sizeof(SQLWCHAR)), &parameter.indicator),
                 "SQLBindParameter");
}

void Statement::execute() {
    const ForegroundCall foreground(*m_impl->connection);
    m_impl->releaseResult();
    m_impl->afterExecute(m_impl->call(SQLExecute(m_impl->handle()), "SQLExecute"));
}

void Statement::executeDirect(const QString& sql) {
    const ForegroundCall foreground(*m_impl->connection);
    m_impl->releaseResult();
    if (m_impl->connection->narrowTextIsUtf8) {
        QByteArray text = sql.toUtf8();
        m_impl->afterExecute(m_impl->call(
            SQLExecDirect(m_impl->handle(), narrowSqlText(text), SQLINTEGER(text.size())),
            "SQLExecDirect"));
        return;
    }
    m_impl->afterExecute(
        m_impl->call(SQLExecDirectW(m_impl->handle(), sqlText(sql), SQL_NTS), "SQLExecDirect"));
}

void Statement::setMaxRows(quint64 maxRows) {
    // The driver is told (it may stop early), and fetchBlock() holds the limit for drivers
    // that ignore it.
    m_impl->call(
        SQLSetStmtAttrW(m_impl->handle(), SQL_ATTR_MAX_ROWS, integerAttribute(SQLULEN(maxRows)), 0),
        "SQLSetStmtAttr(SQL_ATTR_MAX_ROWS)");
    m_impl->maxRows = maxRows;
}

long long Statement::rowsAffected() const {
    return m_impl->rowsAffected;
}

const std::vector<ColumnInfo>& Statement::columns() const {
    return m_impl->columns;
}

void Statement::setBlockSize(int rows) {
    m_impl->blockSize = std::max(1, rows);
}

bool Statement::fetchBlock(std::vector<Row>& rows) {
    const ForegroundCall foreground(*m_impl->connection);
    return m_impl->fetchBlock(rows);
}

bool Statement::fetchBlock(RowSink& sink) {
    while (m_impl->connection->foregroundCalls.load() > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return m_impl->fetchBlock(sink);
}

void Statement::cancel() noexcept {
    if (canCancel())
        SQLCancel(m_impl->handle());
}

bool Statement::canCancel() const {
    return m_impl && m_impl->connection->cancelsFromAnotherThread;
}

void Statement::close() noexcept {
    if (m_impl)
        m_impl->releaseResult();
}

// ---------------------------------------------------------------------------------
// Driver manager

std::vector<DataSource> DataSources() {
    const std::shared_ptr<Environment> environment = sharedEnvironment();
    std::vector<DataSource> sources;
    constexpr SQLSMALLINT Capacity = 1024;
    std::vector<SQLWCHAR> name(Capacity + 1, 0);
    std::vector<SQLWCHAR> description(Capacity + 1, 0);
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    for (;;) {
        SQLSMALLINT nameLength = 0;
        SQLSMALLINT descriptionLength = 0;
        std::fill(name.begin(), name.end(), SQLWCHAR(0));
        std::fill(description.begin(), description.end(), SQLWCHAR(0));
        const SQLRETURN rc =
            check(SQLDataSourcesW(environment->handle(), direction, name.data(), Capacity,
                                  &nameLength, description.data(), Capacity, &descriptionLength),
                  SQL_HANDLE_ENV, environment->handle(), "SQLDataSources");
        if (rc == SQL_NO_DATA)
            break;
        sources.push_back({textFromBuffer(name.data(), nameLength, Capacity - 1),
                           textFromBuffer(description.data(), descriptionLength, Capacity - 1)});
        direction = SQL_FETCH_NEXT;
    }
    return sources;
}

QString DriverDescriptionOf(const QString& dataSourceName) {
    try {
        const std::vector<DataSource> sources = DataSources();
        for (const DataSource& source : sources)
            if (source.name == dataSourceName)
                return source.driverDescription;
        // Data source names are not case-sensitive.
        for (const DataSource& source : sources)
            if (source.name.compare(dataSourceName, Qt::CaseInsensitive) == 0)
                return source.driverDescription;
    } catch (...) {
        // An unreadable data-source list means no description.
    }
    return QString();
}

QString DriverManagerVersion() {
    try {
        const std::shared_ptr<Environment> environment = sharedEnvironment();
        Handle<SQL_HANDLE_DBC> dbc(environment->handle(), SQL_HANDLE_ENV,
                                   "SQLAllocHandle(SQL_HANDLE_DBC)");
        const QString version = connectionInfoText(dbc.get(), SQL_DM_VER, "SQLGetInfo(SQL_DM_VER)");
        if (!version.isEmpty())
            return version;
    } catch (...) {
        // Fall back to the API version the program was built against.
    }
    return QStringLiteral("%1.%2.0000")
        .arg(ODBCVER >> 8, 2, 16, QLatin1Char('0'))
        .arg(ODBCVER & 0xff, 2, 16, QLatin1Char('0'));
}

} // namespace db::odbc
