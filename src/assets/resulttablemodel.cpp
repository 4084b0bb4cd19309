#include "assets/resulttablemodel.h"

#include "assets/displaytext.h"
#include "assets/sortkeys.h"

#include <QElapsedTimer>
#include <QLoggingCategory>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <limits>
#include <mutex>

namespace assets {

namespace {

Q_LOGGING_CATEGORY(lcResult, "quillet.result", QtWarningMsg)

// A block goes to the interface thread when it has this many rows or bytes, or when
// this much time has passed since the last one: the grid keeps filling on slow links.
constexpr qsizetype PublishRows = 4096;
constexpr qsizetype PublishBytes = 4 * 1024 * 1024;
constexpr qint64 PublishIntervalMs = 100;
// Grid rows are ints.
constexpr qsizetype MaxRows = std::numeric_limits<int>::max();
// close() lets the worker finish the fetch call it is in for this long before it cancels
// the statement. Some drivers' SQLCancel is not safe while another thread fetches on
// the statement (SQLite's frees the row the fetch is reading); a block of rows normally
// takes milliseconds, so only a call that waits long on the database is cancelled.
constexpr std::chrono::milliseconds CancelAfter{200};

QString hexPreview(QByteArrayView bytes) {
    constexpr qsizetype Shown = 32;
    QString text =
        QString::fromLatin1(bytes.first(std::min(bytes.size(), Shown)).toByteArray().toHex(' '));
    if (bytes.size() > Shown)
        text += QStringLiteral(" ...");
    return text + QStringLiteral(" (%1 bytes)").arg(bytes.size());
}

} // namespace

// What the worker and the interface thread share for one fetch.
struct ResultTableModel::Fetch {
    Fetch(quint64 generation, db::odbc::Statement statement, int columnCount)
        : generation(generation), statement(std::move(statement)), columnCount(columnCount) {}

    const quint64 generation;
    db::odbc::Statement statement; // used by the worker only, but for cancel()
    const int columnCount;
    std::atomic<bool> stop{false};

    std::mutex mutex;
    // Guarded by mutex.
    std::vector<std::shared_ptr<const RowBlock>> arrived;
    bool notified = false; // a blocksArrived() is on its way
    bool done = false;     // the worker has published everything
    QString error;
    bool exited = false; // the worker no longer uses the statement
    std::condition_variable exitedChanged;
};

struct ResultTableModel::SortJob {
    quint64 generation = 0;
    RowStore rows; // a snapshot: the blocks there were when the sort began
    qsizetype rowCount = 0;
    int column = -1;
    SortKind kind = SortKind::Text;
    bool descending = false;
    std::atomic<bool> cancelled{false};
    std::atomic<bool> finished{false};
    // Written by the sort thread before `finished` is set.
    std::vector<quint32> order;
    std::vector<quint32> inverse;
};

ResultTableModel::ResultTableModel(QObject* parent) : QAbstractTableModel(parent) {
    m_sortThreads.setMaxThreadCount(1);
    connect(this, &ResultTableModel::blocksArrived, this, &ResultTableModel::takeArrivedBlocks,
            Qt::QueuedConnection);
    connect(this, &ResultTableModel::sortArrived, this, &ResultTableModel::applySort,
            Qt::QueuedConnection);
}

ResultTableModel::~ResultTableModel() {
    closeResult(false);
    m_sortThreads.waitForDone();
}

// ---------------------------------------------------------------------------------
// Opening and fetching

void ResultTableModel::open(db::odbc::Statement&& executed) {
    FirstBlock first = ReadFirstBlock(executed);
    open(std::move(executed), std::move(first));
}

ResultTableModel::FirstBlock ResultTableModel::ReadFirstBlock(db::odbc::Statement& executed) {
    FirstBlock first;
    first.complete = executed.columns().empty();
    if (!first.complete) {
        executed.setBlockSize(FirstBlockRows);
        // A short block means the end of the result; asking again then costs nothing.
        while (first.rows.size() < size_t(FirstBlockRows) && !first.complete)
            first.complete = !executed.fetchBlock(first.rows);
    }
    return first;
}

void ResultTableModel::open(db::odbc::Statement&& executed, FirstBlock first) {
    close();
    db::odbc::Statement statement(std::move(executed));
    const std::vector<db::odbc::ColumnInfo> fields = statement.columns();
    const bool complete = first.complete;
    RowBlockBuilder builder(int(fields.size()));
    for (const db::odbc::Row& row : first.rows)
        builder.addRow(row);

    beginResetModel();
    m_fields = fields;
    m_numberLocale = NumberLocale();
    m_dateSettings = core::CurrentDateSettings();
    m_dateTexts.clear();
    m_rightAligned.assign(fields.size(), false);
    for (size_t column = 0; column < fields.size(); ++column)
        m_rightAligned[column] = fields[column].isNumeric();
    m_store.clear(int(fields.size()));
    m_store.append(builder.finish());
    m_open = true;
    endResetModel();

    if (complete) {
        Q_EMIT fetchFinished(m_store.rowCount());
        return;
    }
    m_fetch = std::make_shared<Fetch>(m_generation, std::move(statement), int(fields.size()));
    m_worker = std::thread(&ResultTableModel::readRest, this, m_fetch, m_store.rowCount());
}

void ResultTableModel::readRest(ResultTableModel* model, std::shared_ptr<Fetch> fetch,
                                qsizetype total) {
    RowBlockBuilder builder(fetch->columnCount);
    // Values go from the driver's buffers straight into the block.
    struct Sink : db::odbc::RowSink {
        explicit Sink(RowBlockBuilder& builder) : builder(builder) {}
        void addRow(const std::vector<db::odbc::ValueView>& values) override {
            builder.addViews(values);
        }
        RowBlockBuilder& builder;
    } sink(builder);
    QElapsedTimer sincePublished;
    sincePublished.start();

    auto publish = [&](bool done, const QString& error) {
        std::shared_ptr<const RowBlock> block = builder.finish();
        bool notify = false;
        {
            std::lock_guard<std::mutex> lock(fetch->mutex);
            if (block)
                fetch->arrived.push_back(std::move(block));
            fetch->done = done;
            fetch->error = error;
            notify = !fetch->notified;
            fetch->notified = true;
        }
        if (notify)
            Q_EMIT model->blocksArrived(fetch->generation, QPrivateSignal());
        sincePublished.restart();
    };

    QString error;
    try {
        for (;;) {
            if (fetch->stop.load())
                break;
            const qsizetype before = builder.rowCount();
            const bool more = fetch->statement.fetchBlock(sink);
            total += builder.rowCount() - before;
            if (total > MaxRows - ResultTableModel::FirstBlockRows) {
                error = QStringLiteral("The result has more rows than the grid can show; "
                                       "the first %1 are shown.")
                            .arg(total);
                break;
            }
            if (!more)
                break;
            if (builder.rowCount() >= PublishRows || builder.textBytes() >= PublishBytes ||
                sincePublished.elapsed() >= PublishIntervalMs)
                publish(false, QString());
        }
    } catch (const db::odbc::OdbcError& failure) {
        error = failure.message();
    } catch (const std::exception& failure) {
        error = QString::fromLocal8Bit(failure.what());
    }
    // A cancelled fetch ends in an error of the driver's; it is no failure.
    if (fetch->stop.load())
        error.clear();
    publish(true, error);
    {
        std::lock_guard<std::mutex> lock(fetch->mutex);
        fetch->exited = true;
    }
    fetch->exitedChanged.notify_all();
}

void ResultTableModel::takeArrivedBlocks(quint64 generation) {
    if (!m_fetch || m_fetch->generation != generation)
        return; // from an earlier result
    std::vector<std::shared_ptr<const RowBlock>> blocks;
    bool done = false;
    QString error;
    {
        std::lock_guard<std::mutex> lock(m_fetch->mutex);
        blocks.swap(m_fetch->arrived);
        m_fetch->notified = false;
        done = m_fetch->done;
        error = m_fetch->error;
    }
    qsizetype added = 0;
    for (const auto& block : blocks)
        added += block->rowCount();
    if (added > 0) {
        const int first = int(m_store.rowCount());
        beginInsertRows(QModelIndex(), first, int(first + added - 1));
        for (auto& block : blocks)
            m_store.append(std::move(block));
        endInsertRows();
        // A view may have closed or replaced the result in the meantime.
        if (!m_fetch || m_fetch->generation != generation)
            return;
    }
    if (done)
        finishFetch(error);
}

void ResultTableModel::finishFetch(const QString& error) {
    if (m_worker.joinable())
        m_worker.join();
    m_fetch.reset();
    m_fetchError = error;
    const qsizetype sorted = m_sortJob ? m_sortJob->rowCount : qsizetype(m_order.size());
    if (m_sortColumn >= 0 && sorted < m_store.rowCount())
        startSort();
    if (!error.isEmpty()) {
        qCWarning(lcResult) << "Reading the result failed:" << error;
        Q_EMIT fetchFailed(error);
    } else {
        Q_EMIT fetchFinished(m_store.rowCount());
    }
}

bool ResultTableModel::isFetching() const {
    return m_fetch != nullptr;
}

void ResultTableModel::waitForAllRows() {
    if (m_fetch) {
        if (m_worker.joinable())
            m_worker.join();
        takeArrivedBlocks(m_fetch->generation);
    }
    waitForSort();
}

void ResultTableModel::stopFetch() {
    if (m_fetch && m_worker.joinable()) {
        m_fetch->stop.store(true);
        std::unique_lock<std::mutex> lock(m_fetch->mutex);
        const Fetch& fetch = *m_fetch;
        if (!m_fetch->exitedChanged.wait_for(lock, CancelAfter,
                                             [&fetch] { return fetch.exited; })) {
            lock.unlock();
            // Still inside the driver: interrupt a call that waits for the database.
            m_fetch->statement.cancel();
        }
    }
    if (m_worker.joinable())
        m_worker.join();
    m_fetch.reset(); // closes the statement's result
}

void ResultTableModel::close() {
    closeResult(true);
}

void ResultTableModel::closeResult(bool announce) {
    ++m_generation;
    stopFetch();
    cancelSort();
    const bool wasShown = m_open || !m_fields.empty();
    if (announce && wasShown)
        beginResetModel();
    m_open = false;
    m_fields.clear();
    m_rightAligned.clear();
    m_store.clear();
    m_order = {};
    m_inverse = {};
    m_fetchError.clear();
    m_sortText.clear();
    m_sortColumn = -1;
    m_sortDescending = false;
    if (announce && wasShown)
        endResetModel();
}

qsizetype ResultTableModel::memoryBytes() const {
    return m_store.memoryBytes() +
           qsizetype((m_order.capacity() + m_inverse.capacity()) * sizeof(quint32));
}

// ---------------------------------------------------------------------------------
// Sorting

void ResultTableModel::setSortText(const QString& sortText) {
    const std::optional<SortRequest> request = ParseSortText(sortText);
    if (!request) {
        qCWarning(lcResult) << "Sort text not understood:" << sortText;
        return;
    }
    if (request->field.isEmpty()) {
        cancelSort();
        m_sortText.clear();
        m_sortColumn = -1;
        m_sortDescending = false;
        if (!m_order.empty())
            setOrder({}, {});
        return;
    }
    const int column = fieldIndex(request->field);
    if (column < 0) {
        qCWarning(lcResult) << "No field" << request->field << "to sort by";
        return;
    }
    m_sortColumn = column;
    m_sortDescending = request->descending;
    m_sortText = QStringLiteral("[%1] %2").arg(m_fields[size_t(column)].name,
                                               request->descending ? QStringLiteral("DESC")
                                                                   : QStringLiteral("ASC"));
    startSort();
}

void ResultTableModel::startSort() {
    cancelSort();
    if (!m_open || m_sortColumn < 0)
        return;
    auto job = std::make_shared<SortJob>();
    job->generation = ++m_sortGeneration;
    job->rows = m_store;
    job->rowCount = m_store.rowCount();
    job->column = m_sortColumn;
    job->kind = SortKindOf(m_fields[size_t(m_sortColumn)]);
    job->descending = m_sortDescending;
    m_sortJob = job;
    m_sortThreads.start([this, job] {
        if (job->cancelled.load())
            return;
        std::vector<quint32> order =
            SortedRows(job->rows, job->column, job->kind, job->descending, &job->cancelled);
        if (job->cancelled.load())
            return;
        std::vector<quint32> inverse(order.size());
        for (size_t row = 0; row < order.size(); ++row)
            inverse[order[row]] = quint32(row);
        job->order = std::move(order);
        job->inverse = std::move(inverse);
        job->rows.clear(); // the snapshot's blocks are no longer needed here
        job->finished.store(true);
        Q_EMIT sortArrived(job->generation, QPrivateSignal());
    });
}

void ResultTableModel::cancelSort() {
    if (m_sortJob)
        m_sortJob->cancelled.store(true);
    m_sortJob.reset();
    ++m_sortGeneration;
}

void ResultTableModel::waitForSort() {
    if (!m_sortJob)
        return;
    // Earlier, cancelled jobs give up at once; the current one is the last queued.
    m_sortThreads.waitForDone();
    applySort(m_sortJob->generation);
}

void ResultTableModel::applySort(quint64 generation) {
    if (!m_sortJob || m_sortJob->generation != generation || !m_sortJob->finished.load())
        return;
    const std::shared_ptr<SortJob> job = std::move(m_sortJob);
    setOrder(std::move(job->order), std::move(job->inverse));
}

void ResultTableModel::setOrder(std::vector<quint32> order, std::vector<quint32> inverse) {
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<quint32> bookmarks;
    bookmarks.reserve(size_t(before.size()));
    for (const QModelIndex& index : before)
        bookmarks.push_back(bookmark(index.row()));
    m_order = std::move(order);
    m_inverse = std::move(inverse);
    QModelIndexList after;
    after.reserve(before.size());
    for (qsizetype index = 0; index < before.size(); ++index)
        after.append(this->index(rowOfBookmark(bookmarks[size_t(index)]), before[index].column()));
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

// ---------------------------------------------------------------------------------
// Reading

bool ResultTableModel::isNull(int row, int column) const {
    return m_store.isNull(arrivalRow(row), column);
}

QByteArrayView ResultTableModel::value(int row, int column) const {
    return m_store.value(arrivalRow(row), column);
}

QString ResultTableModel::displayText(int row, int column) const {
    const qsizetype arrival = arrivalRow(row);
    if (m_store.isNull(arrival, column))
        return QString();
    const db::odbc::ColumnInfo& field = m_fields[size_t(column)];
    if (field.isBinary())
        return QStringLiteral("(BLOB)");
    const QByteArrayView bytes = m_store.value(arrival, column);
    using Kind = db::odbc::ColumnInfo::Kind;
    const Kind kind = field.kind();
    if (kind != Kind::Date && kind != Kind::DateTime && kind != Kind::Time)
        return DisplayText(field, bytes, m_dateSettings, m_numberLocale);
    // Formatting a date is slow and dates repeat: each text is made once.
    const QByteArray key = QByteArray::fromRawData(bytes.data(), bytes.size());
    const auto known = m_dateTexts.constFind(key);
    if (known != m_dateTexts.cend())
        return *known;
    constexpr qsizetype DateTextsKept = 100000;
    if (m_dateTexts.size() >= DateTextsKept)
        m_dateTexts.clear();
    const QString text = DisplayText(field, bytes, m_dateSettings, m_numberLocale);
    m_dateTexts.insert(bytes.toByteArray(), text);
    return text;
}

void ResultTableModel::refreshDisplay() {
    m_numberLocale = NumberLocale();
    m_dateSettings = core::CurrentDateSettings();
    m_dateTexts.clear();
    if (rowCount() > 0 && columnCount() > 0)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1),
                           {Qt::DisplayRole, Qt::EditRole});
}

quint32 ResultTableModel::bookmark(int row) const {
    if (row < 0 || row >= m_store.rowCount())
        return std::numeric_limits<quint32>::max();
    return quint32(arrivalRow(row));
}

int ResultTableModel::rowOfBookmark(quint32 bookmark) const {
    if (qsizetype(bookmark) >= m_store.rowCount())
        return -1;
    return bookmark < m_inverse.size() ? int(m_inverse[bookmark]) : int(bookmark);
}

int ResultTableModel::fieldIndex(const QString& name) const {
    return db::odbc::ColumnIndex(m_fields, name);
}

int ResultTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_store.rowCount());
}

int ResultTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_fields.size());
}

QVariant ResultTableModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.model() != this || index.row() >= rowCount() ||
        index.column() >= columnCount())
        return {};
    const int column = index.column();
    switch (role) {
    case Qt::ToolTipRole:
        // Binary values show as "(BLOB)"; the tip shows their first bytes.
        if (!m_fields[size_t(column)].isBinary() || isNull(index.row(), column))
            return {};
        return hexPreview(value(index.row(), column));
    case Qt::DisplayRole:
    case Qt::EditRole: {
        const qsizetype row = arrivalRow(index.row());
        if (m_store.isNull(row, column))
            return {};
        const QByteArrayView bytes = m_store.value(row, column);
        if (m_fields[size_t(column)].isBinary() && role == Qt::EditRole)
            return hexPreview(bytes);
        if (role == Qt::DisplayRole && bytes.size() > DisplayBytes) {
            qsizetype cut = DisplayBytes;
            while (cut > 0 && (uchar(bytes[cut]) & 0xC0) == 0x80)
                --cut; // not inside a UTF-8 sequence
            return QString::fromUtf8(bytes.first(cut)) + QChar(0x2026);
        }
        return displayText(index.row(), column);
    }
    case NullRole:
        return isNull(index.row(), column);
    case Qt::TextAlignmentRole:
        if (m_rightAligned[size_t(column)])
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    case RawValueRole: {
        const qsizetype row = arrivalRow(index.row());
        if (m_store.isNull(row, column))
            return QByteArray();
        return m_store.value(row, column).toByteArray();
    }
    default:
        return {};
    }
}

QVariant ResultTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole || section < 0)
        return {};
    if (orientation == Qt::Vertical)
        return section < rowCount() ? QVariant(section + 1) : QVariant();
    if (section >= columnCount())
        return {};
    return m_fields[size_t(section)].name;
}

} // namespace assets
