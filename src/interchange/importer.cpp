#include "interchange/importer.h"

#include "assets/tabledataset.h"
#include "core/log.h"
#include "db/odbc/odbc.h"
#include "interchange/delimited.h"
#include "interchange/linereader.h"
#include "interchange/tablewriter.h"
#include "translation/translate.h"

#include <QHash>
#include <QSet>

#include <deque>
#include <stdexcept>

namespace interchange {

using translation::Translate;

bool IsTrueValue(const std::optional<QByteArray>& field) {
    if (!field || field->isEmpty())
        return false;
    const QString text = QString::fromUtf8(*field);
    const QChar first = text.isEmpty() ? QChar() : text.front();
    return first == u'T' || first == u'Y' || first == u'1' || first == QChar(0xC4) ||
           uchar(field->front()) == 0xC4;
}

namespace {

[[noreturn]] void fail(const char* text) {
    throw std::runtime_error(Translate(QString::fromLatin1(text)).toStdString());
}

// Thrown when a batch of rows could not be written: its lines are gone through again,
// one row at a time. Not an error of a row, so not a std::exception.
struct ReplayNeeded {};

// One run of an import, asset or asset-type, as the user started it.
class Import {
public:
    Import(db::odbc::Connection& connection, const ImportSettings& settings, Progress& progress,
           int rowsPerStatement)
        : m_connection(connection), m_settings(settings), m_progress(progress),
          m_rowsPerStatement(rowsPerStatement), m_types(settings.TypesMode) {}

    ImportResult run(bool showResult);

private:
    struct Line {
        QString text;
        bool tooLong = false;
    };
    struct Counters {
        qint64 imported = 0;
        qint64 errors = 0;
        int progress = 0;
        bool carryOn = true;
    };

    void beginTransaction();
    void readHeader();
    void readTypeLists();
    void mapColumns();
    void rowLoop();
    bool processLine();
    void importRow(const QStringList& values);
    const QString& valueAt(const QStringList& values, int position) const;
    void assignNode(ImportRow& row, const QString& node) const;
    void lookUpNode(ImportRow& row);
    void appendRow();
    void post(ImportRow&& row);
    void flush();
    void rewind();
    bool nextLine();
    void reportRowFailure(const std::exception& error);
    void failOutsideLoop(const std::exception& error);
    void finishTransaction();
    QString resultMessage() const;

    db::odbc::Connection& m_connection;
    ImportSettings m_settings;
    Progress& m_progress;
    const int m_rowsPerStatement;
    const bool m_types;
    bool m_startedTransaction = false;

    LineReader m_reader;
    QStringList m_header;
    int m_typeColumn = -1;
    int m_nodeColumn = -1;
    // Upper-cased: the types that require a node, or (asset types) the types there are.
    QSet<QString> m_typeList;
    // Numbers are read in the user's locale.
    const core::NumberReader m_numbers{QLocale::system()};
    std::unique_ptr<TableWriter> m_writer;
    std::vector<int> m_columnMap;
    int m_nodeField = -1;
    int m_nodeKeyField = -1;
    QHash<QString, std::optional<qint64>> m_nodeKeys;
    std::unique_ptr<db::odbc::Statement> m_lookup;

    Line m_line;
    // The values of the line, kept to reuse their room.
    QStringList m_values;
    Counters m_counters;
    // Appended, not posted yet.
    std::optional<ImportRow> m_pending;

    // Posted rows not written yet, and what it takes to go through their lines again: the
    // counters and the pending row as they were when the first of them was posted, and
    // the lines read since, that one's included.
    std::vector<ImportRow> m_batch;
    TableWriter::Shape m_batchShape;
    size_t m_batchCapacity = 0;
    Counters m_batchCounters;
    ImportRow m_batchFirstRow;
    std::vector<Line> m_batchLines;
    std::deque<Line> m_replay;
    bool m_replaying = false;
};

ImportResult Import::run(bool showResult) {
    core::LogLine(m_types ? "Starting asset types import..." : "Starting import...");
    beginTransaction();
    try {
        m_progress.status(Translate(QStringLiteral("reading file...")));
        core::LogLine(Translate(QStringLiteral("reading file: ")) + m_settings.FileName);
        if (!m_reader.open(m_settings.FileName))
            fail("cannot open file.");
        readHeader();
        readTypeLists();
        mapColumns();
        m_progress.setMaximum(m_reader.size());
        rowLoop();
        if (m_pending) {
            std::vector<ImportRow> last{std::move(*m_pending)};
            m_pending.reset();
            m_writer->write(last);
        }
    } catch (const std::exception& error) {
        failOutsideLoop(error);
    }
    m_writer.reset();
    finishTransaction();
    const QString message = resultMessage();
    core::LogLine(message);
    if (showResult)
        m_progress.message(Translate(m_types ? QStringLiteral("Asset Types Import Results")
                                             : QStringLiteral("Import Results")),
                           message, MessageIcon::None);
    return {m_counters.imported, m_counters.errors, message};
}

void Import::beginTransaction() {
    try {
        if (m_connection.inTransaction())
            m_connection.commit();
        m_connection.begin();
        m_startedTransaction = true;
    } catch (const db::odbc::OdbcError& error) {
        core::LogLine(Translate(QStringLiteral("cannot start a transaction:")));
        core::LogLine(error.message());
    } catch (const std::exception&) {
        core::LogLine(Translate(QStringLiteral("cannot start a transaction.")));
    }
}

void Import::readHeader() {
    // Start row N skips N - 1 lines; comments and blank lines before the header are skipped.
    QString header;
    auto readHeaderLine = [&] {
        if (m_reader.readLine(header))
            return true;
        header.clear();
        return false;
    };
    bool read = true;
    for (int row = 0; read && row < qMax(1, m_settings.StartRow); ++row)
        read = readHeaderLine();
    while (read && !m_reader.lineTooLong() &&
           (header.isEmpty() || header.startsWith(u'/') || header.startsWith(u'#')))
        read = readHeaderLine();
    if (read && m_reader.lineTooLong())
        throw std::runtime_error(
            Translate(QStringLiteral("Line $LINE$ is longer than 65534 characters."), 0,
                      {{QStringLiteral("$LINE$"), QString::number(m_reader.lineNumber())}})
                .toStdString());
    SplitDelimited(header, m_settings.Delimiter, m_header);
    if (m_header.isEmpty())
        fail("no field names found.");
    const QString found = Translate(QStringLiteral("%d fields found"))
                              .replace(QStringLiteral("%d"), QString::number(m_header.size()));
    m_progress.status(found);
    core::LogLine(found);
    for (QString& name : m_header)
        name = name.toUpper();
    m_typeColumn = int(m_header.indexOf(QStringLiteral("ASSETTYPE")));
    if (m_typeColumn < 0)
        fail("field ASSETTYPE not found.");
    if (!m_types)
        m_nodeColumn = int(m_header.indexOf(QStringLiteral("NODENAME")));
}

void Import::readTypeLists() {
    db::odbc::Statement query(m_connection);
    query.executeDirect(m_types ? QStringLiteral("select ASSETTYPE from ASSETTYPES")
                                : QStringLiteral("select ASSETTYPE, NODEREQUIRED from ASSETTYPES"));
    std::vector<db::odbc::Row> rows;
    while (query.fetchBlock(rows)) {
    }
    for (const db::odbc::Row& row : rows) {
        const bool listed = m_types || IsTrueValue(row[1].isNull() ? std::optional<QByteArray>()
                                                                   : std::optional(row[1]));
        if (listed)
            m_typeList.insert(QString::fromUtf8(row[0]).toUpper());
    }
}

void Import::mapColumns() {
    m_writer = std::make_unique<TableWriter>(
        m_connection, m_types ? QStringLiteral("ASSETTYPES") : QStringLiteral("ASSETS"),
        m_rowsPerStatement);
    for (const QString& name : std::as_const(m_header)) {
        const bool unmappedId = !m_types && !m_settings.IdMode && name == QLatin1String("ID");
        m_columnMap.push_back(unmappedId ? -1 : m_writer->fieldIndex(name));
    }
    if (!m_types) {
        m_nodeField = m_writer->fieldIndex(QStringLiteral("NODENAME"));
        m_nodeKeyField = m_writer->fieldIndex(QStringLiteral("FKNODES"));
    }
}

void Import::rowLoop() {
    for (;;) {
        try {
            if (!processLine()) {
                flush();
                return;
            }
        } catch (const ReplayNeeded&) {
            rewind();
        }
    }
}

bool Import::nextLine() {
    if (!m_replay.empty()) {
        m_line = std::move(m_replay.front());
        m_replay.pop_front();
        m_replaying = true;
    } else {
        m_replaying = false;
        if (!m_reader.readLine(m_line.text))
            return false;
        m_line.tooLong = m_reader.lineTooLong();
        m_progress.setPosition(m_reader.bytesRead());
    }
    if (!m_batch.empty())
        m_batchLines.push_back(m_line);
    return true;
}

bool Import::processLine() {
    if (!nextLine())
        return false;
    if (m_line.text.isEmpty() && !m_line.tooLong)
        return true;
    if (!m_counters.carryOn)
        return false;
    try {
        if (m_line.tooLong)
            throw std::runtime_error(
                Translate(QStringLiteral("A line is longer than 65534 characters.")).toStdString());
        SplitDelimited(m_line.text, m_settings.Delimiter, m_values);
        if (!m_values.isEmpty())
            importRow(m_values);
    } catch (const std::exception& error) {
        if (m_connection.isDead())
            throw;
        reportRowFailure(error);
    }
    return true;
}

void Import::reportRowFailure(const std::exception& error) {
    ++m_counters.errors;
    if (m_settings.OnError == OnErrorIgnore)
        return;
    // What the user is told must hold for the rows before: they are written first.
    flush();
    const QString text = QString::fromUtf8(error.what());
    core::LogLine(text);
    m_progress.message(Translate(QStringLiteral("Error")), text, MessageIcon::None);
    m_counters.carryOn = false;
}

const QString& Import::valueAt(const QStringList& values, int position) const {
    if (position >= values.size())
        throw std::out_of_range(
            Translate(QStringLiteral("List index out of bounds ($INDEX$): the line has no value "
                                     "for field $FIELDNAME$."),
                      0,
                      {{QStringLiteral("$INDEX$"), QString::number(position)},
                       {QStringLiteral("$FIELDNAME$"), m_header[position]}})
                .toStdString());
    return values[position];
}

void Import::importRow(const QStringList& values) {
    const QString typeValue = valueAt(values, m_typeColumn).toUpper();
    const bool listed = m_typeList.contains(typeValue);
    if (m_types && listed)
        return;
    const bool nodeRequired = !m_types && listed;
    appendRow();
    ImportRow& row = *m_pending;
    if (nodeRequired && m_nodeColumn < 0)
        assignNode(row, m_settings.Node);
    const std::vector<db::odbc::ColumnInfo>& fields = m_writer->fields();
    for (int position = 0; position < m_header.size(); ++position) {
        if (position == m_nodeColumn && nodeRequired && valueAt(values, position).isEmpty()) {
            assignNode(row, m_settings.Node);
            continue;
        }
        const int field = m_columnMap[size_t(position)];
        if (field >= 0 && !valueAt(values, position).isEmpty())
            row[size_t(field)] =
                assets::StoredFromText(fields[size_t(field)], values[position], m_numbers);
    }
    if (nodeRequired && m_nodeField >= 0)
        lookUpNode(row);
    ++m_counters.imported;
    if (++m_counters.progress > 9) {
        m_progress.status(Translate(QStringLiteral("%d rows imported so far"))
                              .replace(QStringLiteral("%d"), QString::number(m_counters.imported)));
        m_counters.progress = 0;
    }
}

void Import::assignNode(ImportRow& row, const QString& node) const {
    if (m_nodeField < 0)
        return;
    row[size_t(m_nodeField)] =
        node.isEmpty() ? std::optional<QByteArray>() : std::optional(node.toUtf8());
}

// The key of the row's node, by the node's name as written into the statement. A name
// with a quote cannot make a valid statement: the row keeps no key, and the statement is
// not sent, because on PostgreSQL a failed statement can undo the import's earlier rows.
// Each name is looked up once per import.
void Import::lookUpNode(ImportRow& row) {
    const std::optional<QByteArray>& name = row[size_t(m_nodeField)];
    const QString nodeName = name ? QString::fromUtf8(*name) : QString();
    auto known = m_nodeKeys.find(nodeName);
    if (known == m_nodeKeys.end()) {
        std::optional<qint64> key;
        try {
            if (nodeName.contains(u'\''))
                throw std::invalid_argument("quote in a node name");
            if (!m_lookup)
                m_lookup = std::make_unique<db::odbc::Statement>(m_connection);
            db::odbc::Statement& lookup = *m_lookup;
            lookup.executeDirect(QStringLiteral("select OBJECTID from NODES WHERE NODENAME='") +
                                 nodeName + QStringLiteral("'"));
            std::vector<db::odbc::Row> rows;
            lookup.fetchBlock(rows);
            bool converted = false;
            const qint64 objectId = rows.empty() ? 0 : rows.front()[0].toLongLong(&converted);
            if (converted)
                key = objectId;
            lookup.close();
        } catch (const std::exception&) {
        }
        known = m_nodeKeys.insert(nodeName, key);
    }
    if (*known && m_nodeKeyField >= 0)
        row[size_t(m_nodeKeyField)] = QByteArray::number(**known);
}

void Import::appendRow() {
    if (m_pending) {
        ImportRow posted = std::move(*m_pending);
        // A row whose post fails is dropped: the failure counts against the row that
        // is being appended, and the next append does not post it again.
        m_pending.reset();
        post(std::move(posted));
    }
    m_pending = m_writer->emptyRow();
}

void Import::post(ImportRow&& row) {
    if (m_rowsPerStatement <= 1 || m_replaying) {
        m_writer->write({std::move(row)});
        return;
    }
    // A batch is one statement: rows of one shape.
    if (!m_batch.empty() && !m_writer->hasShape(row, m_batchShape))
        flush();
    if (m_batch.empty()) {
        m_batchCounters = m_counters;
        m_batchFirstRow = row;
        m_batchLines.assign(1, m_line);
        m_batchShape = m_writer->shapeOf(row);
        m_batchCapacity = m_writer->rowsPerStatement(m_batchShape);
    }
    m_batch.push_back(std::move(row));
    if (m_batch.size() >= m_batchCapacity)
        flush();
}

void Import::flush() {
    if (m_batch.empty())
        return;
    try {
        m_writer->write(m_batch);
    } catch (const std::exception&) {
        throw ReplayNeeded();
    }
    m_batch.clear();
    m_batchLines.clear();
}

// Back to where the failed batch's first row was posted, to go through its lines again.
void Import::rewind() {
    m_counters = m_batchCounters;
    m_pending = std::move(m_batchFirstRow);
    for (auto line = m_batchLines.rbegin(); line != m_batchLines.rend(); ++line)
        m_replay.push_front(std::move(*line));
    m_batch.clear();
    m_batchLines.clear();
}

void Import::failOutsideLoop(const std::exception& error) {
    const QString text = QString::fromUtf8(error.what());
    if (text.isEmpty()) {
        m_progress.beep();
        return;
    }
    core::LogLine(text);
    m_progress.message(Translate(QStringLiteral("Error")), text, MessageIcon::Error);
    if (m_startedTransaction && m_connection.inTransaction() &&
        m_settings.OnError == OnErrorReject) {
        try {
            m_connection.rollback();
        } catch (const std::exception& rollbackError) {
            core::LogLine(QString::fromUtf8(rollbackError.what()));
        }
        m_counters.imported = 0;
    }
}

void Import::finishTransaction() {
    if (!m_startedTransaction || !m_connection.inTransaction())
        return;
    try {
        // A server that went away took the open transaction with it, whatever a commit
        // through the lost connection answers.
        if (m_connection.isDead())
            throw std::runtime_error(
                Translate(QStringLiteral("the connection to the database was lost."))
                    .toStdString());
        m_connection.commit();
    } catch (const std::exception& error) {
        // Nothing of this import reached the database: the count must not say otherwise.
        const QString text = Translate(QStringLiteral("The import was not committed: ")) +
                             QString::fromUtf8(error.what());
        core::LogLine(text);
        m_progress.message(Translate(QStringLiteral("Error")), text, MessageIcon::Error);
        try {
            m_connection.rollback();
        } catch (const std::exception&) {
        }
        m_counters.imported = 0;
    }
}

QString Import::resultMessage() const {
    return Translate(m_types
                         ? QStringLiteral("$RECORDCOUNT$ asset type(s) imported, $ERRORCOUNT$ "
                                          "error(s) occurred.")
                         : QStringLiteral("$RECORDCOUNT$ row(s) imported, $ERRORCOUNT$ error(s) "
                                          "occurred."),
                     0,
                     {{QStringLiteral("$RECORDCOUNT$"), QString::number(m_counters.imported)},
                      {QStringLiteral("$ERRORCOUNT$"), QString::number(m_counters.errors)}});
}

} // namespace

ImportResult ImportAssets(db::odbc::Connection& connection, const ImportSettings& settings,
                          Progress& progress, int rowsPerStatement) {
    ImportSettings assets = settings;
    assets.TypesMode = false;
    return Import(connection, assets, progress, rowsPerStatement).run(true);
}

ImportResult ImportAssetTypes(db::odbc::Connection& connection, const ImportSettings& settings,
                              Progress& progress, bool showResult, int rowsPerStatement) {
    ImportSettings types = settings;
    types.TypesMode = true;
    return Import(connection, types, progress, rowsPerStatement).run(showResult);
}

} // namespace interchange
