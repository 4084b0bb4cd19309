#pragma once

// The rows of the main query for the results grid.
//
// open() takes a statement that has already been prepared, bound and executed: errors of
// execution reach the caller where it executed, synchronously. open() reads the first
// block of rows at once, so that the grid shows them immediately, and hands the
// statement to a worker thread that reads the rest block by block into a compact row
// store. Finished blocks travel back to the interface thread, which appends them and
// announces them with beginInsertRows()/endInsertRows(); the interface thread never waits
// for the whole result.
//
// Threads. The statement belongs to the worker from open() until the fetch ends or
// close() stops it. The connection it was made on stays usable on the interface thread
// meanwhile, so calls reach it from two threads. unixODBC does not serialize them unless
// odbcinst.ini sets Threading for the driver (its default is 0, no locking); the drivers
// this program is tested with cope: psqlODBC and MariaDB's lock each connection, and
// SQLite serializes calls on a database handle (test_resulttablemodel runs statements on
// the connection while the grid fills, on all three). SQLCancel is the exception for
// SQLite's driver: see close(). Whether rows really stream depends on the data source:
// SQLite's driver needs StepAPI=1, psqlODBC UseDeclareFetch=1, and MariaDB's driver reads
// the whole result when the statement is executed.
//
// Notifications from the worker and from sorting carry a generation token: whatever
// was on its way from an earlier result is dropped once close() or open() has run.
// The worker sends blocks of a few thousand rows, and at most one notification is
// pending at a time: however fast rows come, the event loop sees one event per batch of
// blocks it has not yet taken, a few hundred for a million rows.
//
// Sorting (setSortText) orders the whole result by the field's type (see sortkeys.h)
// on a thread of the model's own; the new order replaces the old one in one layout
// change. While rows are still arriving, a sort orders the rows there are, later rows
// are added below them in arrival order, and once the last row has arrived the whole
// result is sorted again by the same field.

#include "assets/dataset.h"
#include "assets/rowstore.h"
#include "core/dateformat.h"
#include "db/odbc/odbc.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QThreadPool>

#include <memory>
#include <thread>
#include <vector>

namespace assets {

class ResultTableModel : public QAbstractTableModel, public QueryDataSet {
    Q_OBJECT
public:
    // Rows read by open() before it returns: the grid's first screenful.
    static constexpr int FirstBlockRows = 50;
    // Text longer than this many bytes is cut in the display role (EditRole and
    // RawValueRole give the whole value).
    static constexpr qsizetype DisplayBytes = 4096;

    enum Role {
        // The value's bytes as a QByteArray (UTF-8 text, raw binary); null for NULL.
        RawValueRole = Qt::UserRole + 1,
        // True for SQL NULL, which the display role gives as an empty text.
        NullRole,
    };

    explicit ResultTableModel(QObject* parent = nullptr);
    ~ResultTableModel() override;

    // Shows the result of an executed statement, replacing any earlier one. Throws
    // db::odbc::OdbcError when the first block cannot be read; the model is then closed.
    // When the first block holds the whole result, fetchFinished() is emitted before
    // open() returns; otherwise the rest arrives in the background.
    void open(db::odbc::Statement&& executed);
    // The same in two steps, so that the first rows can be read on another thread.
    struct FirstBlock {
        std::vector<db::odbc::Row> rows;
        bool complete = false; // the rows are the whole result
    };
    static FirstBlock ReadFirstBlock(db::odbc::Statement& executed);
    void open(db::odbc::Statement&& executed, FirstBlock first);
    // Stops a running fetch, waits for the worker to stop and empties the model. The
    // worker stops after the block it is reading; a fetch call that takes longer than a
    // moment is cancelled (Statement::cancel). Safe to call at any time, more than once,
    // and from the destructor.
    void close();

    // True while rows are still being read.
    bool isFetching() const;
    // Blocks until every row has been read and is in the model, and a sort that is in
    // effect has been applied to all of them (for export and unattended runs). The
    // signals of the fetch are emitted before it returns.
    void waitForAllRows();
    // The message of a failed background fetch; empty otherwise.
    QString fetchError() const { return m_fetchError; }

    // True while a sort is being computed.
    bool isSorting() const { return m_sortJob != nullptr; }
    // Blocks until a sort in progress has been applied.
    void waitForSort();

    // A value by grid row (in the current order) and column.
    bool isNull(int row, int column) const;
    QByteArrayView value(int row, int column) const;
    // A value as the user sees it (see displaytext.h), whole; empty for NULL, "(BLOB)"
    // for binary values. The display role gives the same, cut after DisplayBytes.
    QString displayText(int row, int column) const;
    // Shows the values again in the date format and locale now in force.
    void refreshDisplay();
    // Bytes of all values read so far, and the memory that holds them.
    qsizetype textBytes() const { return m_store.textBytes(); }
    qsizetype memoryBytes() const;

    // QAbstractItemModel
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // QueryDataSet
    bool isOpen() const override { return m_open; }
    qsizetype recordCount() const override { return m_store.rowCount(); }
    const std::vector<db::odbc::ColumnInfo>& fields() const override { return m_fields; }
    int fieldIndex(const QString& name) const override;
    QString sortText() const override { return m_sortText; }
    // "[NAME] ASC", "[NAME] DESC", or empty for arrival order. A text naming no field of
    // the result, or not of this form, changes nothing.
    void setSortText(const QString& sortText) override;
    // The row's position in arrival order; it survives sorting.
    quint32 bookmark(int row) const override;
    int rowOfBookmark(quint32 bookmark) const override;

Q_SIGNALS:
    // Every row is in the model.
    void fetchFinished(qsizetype recordCount);
    // Reading the rest of the result failed; the rows read before the failure stay.
    void fetchFailed(const QString& message);

    // From the worker and the sort thread to the interface thread (queued).
    void blocksArrived(quint64 generation, QPrivateSignal);
    void sortArrived(quint64 generation, QPrivateSignal);

private:
    struct Fetch;
    struct SortJob;

    static void readRest(ResultTableModel* model, std::shared_ptr<Fetch> fetch, qsizetype total);
    void takeArrivedBlocks(quint64 generation);
    void finishFetch(const QString& error);
    void stopFetch();
    void closeResult(bool announce);

    void startSort();
    void cancelSort();
    void applySort(quint64 generation);
    void setOrder(std::vector<quint32> order, std::vector<quint32> inverse);

    qsizetype arrivalRow(int row) const {
        return size_t(row) < m_order.size() ? qsizetype(m_order[size_t(row)]) : row;
    }

    bool m_open = false;
    quint64 m_generation = 0;
    std::vector<db::odbc::ColumnInfo> m_fields;
    std::vector<bool> m_rightAligned;
    // Taken when a result opens and by refreshDisplay().
    QLocale m_numberLocale;
    core::DateSettings m_dateSettings;
    // Display texts of date and time values by their stored bytes. The format is the same
    // for every column, so one table serves them all.
    mutable QHash<QByteArray, QString> m_dateTexts;
    RowStore m_store;

    std::shared_ptr<Fetch> m_fetch;
    std::thread m_worker;
    QString m_fetchError;

    // Display order: m_order[row] is the arrival row shown at `row` for the first
    // m_order.size() rows; the rows after them are shown in arrival order. m_inverse
    // maps back. Both are empty in arrival order.
    std::vector<quint32> m_order;
    std::vector<quint32> m_inverse;
    QString m_sortText;
    int m_sortColumn = -1;
    bool m_sortDescending = false;
    quint64 m_sortGeneration = 0;
    std::shared_ptr<SortJob> m_sortJob;
    QThreadPool m_sortThreads;
};

} // namespace assets
