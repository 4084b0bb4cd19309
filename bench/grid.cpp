// Measures the results grid's model on a large ASSETS table.
//
//   grid --dsn NAME [--rows N] [--rounds N] [--isql PATH] [--fetch-only | --edit-only]
//
// Fills ASSETS in the data source with N generated rows (1,000,000 unless told; kept when
// the table already holds exactly N rows), then in the same run, alternating, for the
// given number of rounds: isql exporting "select * from ASSETS" through the same data
// source, and the model reading the same query. Prints the time to the first rows, the
// time until every row is in the model against isql's, the peak memory growth while
// reading against the size of the values as text, and the time of sorts on text and
// number columns. The last line sums it up for scripts. --fetch-only reads the result into
// the model once and stops, for profiling.

#include "assets/ui/grid.h"
#include "assetdata.h"
#include "assets/resulttablemodel.h"
#include "assets/rowstext.h"
#include "assets/ui/dbgridrange.h"
#include "assets/ui/edit.h"
#include "core/ui/main.h"
#include "core/ui/messages.h"
#include "db/odbc/odbc.h"

#include <QAction>
#include <QApplication>
#include <QDate>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <QTimer>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <optional>
#include <stdexcept>

namespace {

using db::odbc::Connection;
using db::odbc::Statement;
using namespace bench;

void say(const QString& text) {
    std::printf("grid: %s\n", qPrintable(text));
    std::fflush(stdout);
}

// Runs the event loop until `signal` of `sender` fires.
template <typename Sender, typename Signal> void waitFor(const Sender* sender, Signal signal) {
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, &QEventLoop::quit);
    loop.exec();
}

struct FetchResult {
    qint64 firstRowsUs = 0;
    qint64 allRowsMs = 0;
    double cpuSeconds = 0;
    qint64 peakGrowth = 0;
    qsizetype rows = 0;
    qsizetype textBytes = 0;
    qsizetype memoryBytes = 0;
};

FetchResult runModel(const Connection& connection, assets::ResultTableModel& model,
                     const QString& sql) {
    model.close();
    FetchResult result;
    const bool peakReset = resetPeakMemory();
    const qint64 before = statusBytes("VmRSS");
    const double cpuBefore = cpuSeconds(RUSAGE_SELF);
    bool finished = false;
    QString failure;
    QEventLoop loop;
    QObject::connect(&model, &assets::ResultTableModel::fetchFinished, &loop, [&] {
        finished = true;
        loop.quit();
    });
    QObject::connect(&model, &assets::ResultTableModel::fetchFailed, &loop,
                     [&](const QString& message) {
                         failure = message;
                         loop.quit();
                     });
    QElapsedTimer timer;
    timer.start();
    Statement statement(connection);
    statement.prepare(sql);
    statement.execute();
    model.open(std::move(statement));
    result.firstRowsUs = timer.nsecsElapsed() / 1000;
    if (model.rowCount() == 0)
        throw std::runtime_error("no rows after open()");
    if (!finished && failure.isEmpty())
        loop.exec();
    result.allRowsMs = timer.elapsed();
    result.cpuSeconds = cpuSeconds(RUSAGE_SELF) - cpuBefore;
    if (!failure.isEmpty())
        throw std::runtime_error("fetch failed: " + failure.toStdString());
    const qint64 peak = peakReset ? statusBytes("VmHWM") : statusBytes("VmRSS");
    result.peakGrowth = peak - before;
    result.rows = model.rowCount();
    result.textBytes = model.textBytes();
    result.memoryBytes = model.memoryBytes();
    return result;
}

qint64 timeSort(assets::ResultTableModel& model, const QString& field, bool descending) {
    QElapsedTimer timer;
    timer.start();
    model.setSortText(QStringLiteral("[%1] %2").arg(field, descending ? QStringLiteral("DESC")
                                                                      : QStringLiteral("ASC")));
    if (!model.isSorting())
        throw std::runtime_error("no sort started for " + field.toStdString());
    waitFor(&model, &assets::ResultTableModel::layoutChanged);
    const qint64 elapsed = timer.elapsed();
    // The order must be right: check every neighbour of a sample of rows.
    const int column = model.fieldIndex(field);
    const QString kind = model.fields()[size_t(column)].isNumeric() ? QStringLiteral("number")
                                                                    : QStringLiteral("text");
    for (int row = 1; row < model.rowCount(); row += 997) {
        const QByteArrayView a = model.value(row - 1, column);
        const QByteArrayView b = model.value(row, column);
        const bool aNull = model.isNull(row - 1, column);
        const bool bNull = model.isNull(row, column);
        bool inOrder = true;
        if (aNull || bNull)
            inOrder = descending ? bNull || !aNull : aNull || !bNull;
        else if (kind == QLatin1String("number"))
            inOrder = descending ? a.toByteArray().toDouble() >= b.toByteArray().toDouble()
                                 : a.toByteArray().toDouble() <= b.toByteArray().toDouble();
        else
            inOrder = descending ? a.compare(b) >= 0 : a.compare(b) <= 0;
        if (!inOrder)
            throw std::runtime_error("rows out of order after sorting by " + field.toStdString());
    }
    return elapsed;
}

// Posts an edit of a record on the first screen of the whole result in the main window's
// docked editor. The window is responsive again when the post returns: the refresh runs
// the query again and does not wait for the rest of the result. The editor is back on the
// record once its row has arrived.
struct EditRefresh {
    qint64 responsiveMs = 0;
    qint64 sameRecordMs = 0;
};

EditRefresh measureEditRefresh(const QString& dsn) {
    ui::SetUnattended(true);
    ui::TfmMain window(
        QStringLiteral("\"grid\" \"ODBC=%1\" \"SQL=select * from ASSETS\"").arg(dsn));
    window.show();
    window.findChild<QAction*>(QStringLiteral("ViewEditForm"))->trigger();
    ui::TEditForm* editor = window.editForm();
    ui::TDBGridRange* grid = window.gridForm()->Grid();
    if (!editor)
        throw std::runtime_error("the record editor did not open");
    const auto settle = [&](const QString& id) {
        QElapsedTimer waited;
        waited.start();
        while (editor->CurrentId() != id && waited.elapsed() < 60000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    };
    grid->setCurrentIndex(grid->model()->index(25, 1));
    const QString id = QString::number(26);
    settle(id);
    assets::TableDataSet& record = editor->AssetsTable();
    record.edit();
    record.setAsText(QStringLiteral("INFO"), QStringLiteral("edited by the benchmark"));
    QElapsedTimer timer;
    timer.start();
    editor->Post();
    EditRefresh result;
    result.responsiveMs = timer.elapsed();
    settle(id);
    result.sameRecordMs = timer.elapsed();
    if (editor->CurrentId() != id)
        throw std::runtime_error("the editor did not come back to the record");
    return result;
}

} // namespace

int main(int argc, char** argv) {
    // The window of the edit measure is never shown on a screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QString dsn;
    qint64 rowCount = 1000000;
    int rounds = 2;
    QString isql = QStringLiteral("isql");
    bool fetchOnly = false;
    bool editOnly = false;
    const QStringList arguments = app.arguments();
    for (qsizetype index = 1; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        const QString next = arguments.value(index + 1);
        if (argument == QLatin1String("--dsn"))
            dsn = next, ++index;
        else if (argument == QLatin1String("--rows"))
            rowCount = next.toLongLong(), ++index;
        else if (argument == QLatin1String("--rounds"))
            rounds = std::max(1, next.toInt()), ++index;
        else if (argument == QLatin1String("--isql"))
            isql = next, ++index;
        else if (argument == QLatin1String("--fetch-only"))
            fetchOnly = true;
        else if (argument == QLatin1String("--edit-only"))
            editOnly = true;
        else {
            std::fprintf(stderr, "usage: grid --dsn NAME [--rows N] [--rounds N] [--isql PATH] "
                                 "[--fetch-only | --edit-only]\n");
            return 2;
        }
    }
    if (dsn.isEmpty() || rowCount <= 0) {
        std::fprintf(stderr, "usage: grid --dsn NAME [--rows N] [--rounds N] [--isql PATH] "
                             "[--fetch-only | --edit-only]\n");
        return 2;
    }
    try {
        Connection connection;
        connection.open(QStringLiteral("DSN=%1").arg(dsn));
        say(QStringLiteral("data source %1 (%2)").arg(dsn, connection.dbmsName()));
        buildTable(connection, rowCount, say);

        if (editOnly) {
            const EditRefresh edit = measureEditRefresh(dsn);
            say(QStringLiteral("edit posted, responsive %1 ms (editor on the record after %2 ms)")
                    .arg(edit.responsiveMs)
                    .arg(edit.sameRecordMs));
            return 0;
        }
        const QString sql = QStringLiteral("select * from ASSETS");
        assets::ResultTableModel model;
        if (fetchOnly) {
            const FetchResult fetch = runModel(connection, model, sql);
            say(QStringLiteral("model: first rows %1 ms, all %2 rows %3 ms (cpu %4 s), peak "
                               "growth %5, text %6")
                    .arg(fetch.firstRowsUs / 1000.0, 0, 'f', 1)
                    .arg(fetch.rows)
                    .arg(fetch.allRowsMs)
                    .arg(fetch.cpuSeconds, 0, 'f', 2)
                    .arg(megabytes(fetch.peakGrowth), megabytes(fetch.textBytes)));
            return 0;
        }
        std::optional<FetchResult> first;
        FetchResult best;
        Timing bestIsql;
        for (int round = 1; round <= rounds; ++round) {
            const Timing isqlTiming = runIsql(isql, dsn, sql);
            say(QStringLiteral("round %1: isql %2 ms (cpu %3 s)")
                    .arg(round)
                    .arg(isqlTiming.wallMs)
                    .arg(isqlTiming.cpuSeconds, 0, 'f', 2));
            const FetchResult fetch = runModel(connection, model, sql);
            say(QStringLiteral("round %1: model first rows %2 ms, all %3 rows %4 ms (cpu %5 s), "
                               "peak growth %6")
                    .arg(round)
                    .arg(fetch.firstRowsUs / 1000.0, 0, 'f', 1)
                    .arg(fetch.rows)
                    .arg(fetch.allRowsMs)
                    .arg(fetch.cpuSeconds, 0, 'f', 2)
                    .arg(megabytes(fetch.peakGrowth)));
            if (fetch.rows != rowCount)
                throw std::runtime_error("the model holds a different number of rows");
            if (!first) {
                first = fetch;
                best = fetch;
                bestIsql = isqlTiming;
            } else {
                best.firstRowsUs = std::min(best.firstRowsUs, fetch.firstRowsUs);
                best.allRowsMs = std::min(best.allRowsMs, fetch.allRowsMs);
                best.cpuSeconds = std::min(best.cpuSeconds, fetch.cpuSeconds);
                bestIsql.wallMs = std::min(bestIsql.wallMs, isqlTiming.wallMs);
                bestIsql.cpuSeconds = std::min(bestIsql.cpuSeconds, isqlTiming.cpuSeconds);
            }
        }
        // Memory from the first round: later ones may reuse what the first one freed.
        const double memoryRatio = double(first->peakGrowth) / double(first->textBytes);
        const double fetchRatio =
            double(best.allRowsMs) / double(std::max<qint64>(1, bestIsql.wallMs));

        struct SortTiming {
            QString field;
            bool descending;
            qint64 ms;
        };
        std::vector<SortTiming> textSorts;
        std::vector<SortTiming> numberSorts;
        for (const char* field : {"MANUFACTURER", "SERIALNUM", "ASLOCATION", "USR_NOTES"})
            textSorts.push_back({QString::fromLatin1(field), false,
                                 timeSort(model, QString::fromLatin1(field), false)});
        textSorts.push_back({QStringLiteral("ASLOCATION"), true,
                             timeSort(model, QStringLiteral("ASLOCATION"), true)});
        for (const char* field : {"ITEMVALUE", "ID", "FKNODES"})
            numberSorts.push_back({QString::fromLatin1(field), false,
                                   timeSort(model, QString::fromLatin1(field), false)});
        numberSorts.push_back({QStringLiteral("ITEMVALUE"), true,
                               timeSort(model, QStringLiteral("ITEMVALUE"), true)});
        const qint64 dateSort = timeSort(model, QStringLiteral("PURCHDATE"), false);
        // Ctrl+C on every row: the values as shown, tab-separated.
        const qint64 copyMs = [&] {
            std::vector<int> rows(size_t(model.rowCount()));
            std::iota(rows.begin(), rows.end(), 0);
            std::vector<int> columns(size_t(model.columnCount()));
            std::iota(columns.begin(), columns.end(), 0);
            QElapsedTimer timer;
            timer.start();
            const QString text = assets::RowsAsText(model, rows, columns);
            return text.isEmpty() ? qint64(-1) : timer.elapsed();
        }();
        const EditRefresh editRefresh = measureEditRefresh(dsn);
        const qint64 arrival = [&] {
            QElapsedTimer timer;
            timer.start();
            model.setSortText(QString());
            return timer.elapsed();
        }();

        say(QStringLiteral("------------------------------------------------------------"));
        say(QStringLiteral("rows                      %1 x %2 columns")
                .arg(best.rows)
                .arg(model.columnCount()));
        say(QStringLiteral("values as text            %1").arg(megabytes(first->textBytes)));
        say(QStringLiteral("model memory (store)      %1 (%2 x text)")
                .arg(megabytes(first->memoryBytes))
                .arg(double(first->memoryBytes) / double(first->textBytes), 0, 'f', 2));
        say(QStringLiteral("peak RSS growth, fetch    %1 (%2 x text)")
                .arg(megabytes(first->peakGrowth))
                .arg(memoryRatio, 0, 'f', 2));
        say(QStringLiteral("first rows in the model   %1 ms")
                .arg(best.firstRowsUs / 1000.0, 0, 'f', 1));
        say(QStringLiteral("all rows in the model     %1 ms (cpu %2 s)")
                .arg(best.allRowsMs)
                .arg(best.cpuSeconds, 0, 'f', 2));
        say(QStringLiteral("isql export               %1 ms (cpu %2 s)")
                .arg(bestIsql.wallMs)
                .arg(bestIsql.cpuSeconds, 0, 'f', 2));
        say(QStringLiteral("fetch ratio vs isql       %1 (best of %2 rounds each)")
                .arg(fetchRatio, 0, 'f', 2)
                .arg(rounds));
        for (const SortTiming& sort : textSorts)
            say(QStringLiteral("sort text   %1 %2 %3 ms")
                    .arg(sort.field, -14)
                    .arg(sort.descending ? QStringLiteral("DESC") : QStringLiteral("ASC "))
                    .arg(sort.ms));
        for (const SortTiming& sort : numberSorts)
            say(QStringLiteral("sort number %1 %2 %3 ms")
                    .arg(sort.field, -14)
                    .arg(sort.descending ? QStringLiteral("DESC") : QStringLiteral("ASC "))
                    .arg(sort.ms));
        say(QStringLiteral("sort date   %1 ASC  %2 ms")
                .arg(QStringLiteral("PURCHDATE"), -14)
                .arg(dateSort));
        say(QStringLiteral("back to arrival order     %1 ms").arg(arrival));
        say(QStringLiteral("edit posted, responsive   %1 ms (editor on the record after %2 ms)")
                .arg(editRefresh.responsiveMs)
                .arg(editRefresh.sameRecordMs));
        say(QStringLiteral("copy all rows as text     %1 ms (%2 x isql export)")
                .arg(copyMs)
                .arg(double(copyMs) / double(bestIsql.wallMs), 0, 'f', 2));
        auto slowest = [](const std::vector<SortTiming>& sorts) {
            qint64 ms = 0;
            for (const SortTiming& sort : sorts)
                ms = std::max(ms, sort.ms);
            return ms;
        };
        std::printf("grid: first-rows-ms=%.1f fetch-ratio-vs-isql=%.2f peak-mem-ratio=%.2f "
                    "sort-text-ms=%lld sort-num-ms=%lld copy-ratio-vs-isql=%.2f "
                    "edit-refresh-ms=%lld\n",
                    best.firstRowsUs / 1000.0, fetchRatio, memoryRatio,
                    static_cast<long long>(slowest(textSorts)),
                    static_cast<long long>(slowest(numberSorts)),
                    double(copyMs) / double(bestIsql.wallMs),
                    static_cast<long long>(editRefresh.responsiveMs));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "grid: error: %s\n", error.what());
        return 1;
    }
}
