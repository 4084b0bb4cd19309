#include "interchange/export.h"

#include "assets/displaytext.h"
#include "assets/removal.h"
#include "assets/resulttablemodel.h"
#include "core/dateformat.h"
#include "core/log.h"
#include "core/registry.h"
#include "db/odbc/odbc.h"
#include "interchange/delimited.h"
#include "interchange/progress.h"
#include "translation/translate.h"

#include <QFile>
#include <QHash>

#include <functional>
#include <stdexcept>

namespace interchange {

using translation::Translate;

namespace {

// Values are read into a buffer of this many bytes, the terminating zero included.
constexpr int SettingsBufferLength = 255;

[[noreturn]] void fail(const char* englishText) {
    throw std::runtime_error(Translate(QLatin1String(englishText)).toStdString());
}

void logQuietly(const QString& message) {
    try {
        core::LogLine(message);
    } catch (const std::exception&) {
    }
}

// The file, written in large pieces: a write that fails (a full disk, a lost share)
// fails the export with the system's words.
class OutputFile {
public:
    explicit OutputFile(const QString& fileName) : m_file(fileName) {
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
            throw std::runtime_error(QStringLiteral("Cannot create file \"%1\". %2")
                                         .arg(fileName, m_file.errorString())
                                         .toStdString());
    }
    QByteArray& buffer() { return m_buffer; }
    void flushIfFull() {
        if (m_buffer.size() >= FlushBytes)
            flush();
    }
    void flush() {
        if (!m_buffer.isEmpty() && m_file.write(m_buffer) != m_buffer.size())
            throw std::runtime_error(QStringLiteral("Cannot write file \"%1\". %2")
                                         .arg(m_file.fileName(), m_file.errorString())
                                         .toStdString());
        m_buffer.clear();
    }
    void close() {
        flush();
        m_file.close();
        if (m_file.error() != QFileDevice::NoError)
            throw std::runtime_error(m_file.errorString().toStdString());
    }

private:
    static constexpr qsizetype FlushBytes = 256 * 1024;
    QFile m_file;
    QByteArray m_buffer;
};

// Appends each fetched row as a data line: every value as the grid shows it, followed by
// the delimiter. Text and whole numbers are written as the driver gives them; dates are
// formatted once per distinct value.
class DataLines : public db::odbc::RowSink {
public:
    DataLines(const std::vector<db::odbc::ColumnInfo>& columns, const QString& delimiter,
              OutputFile& file, Progress& progress)
        : m_columns(columns), m_delimiter(delimiter.toUtf8()), m_file(file), m_progress(progress),
          m_dates(core::CurrentDateSettings()), m_locale(assets::NumberLocale()) {}

    qint64 rows() const { return m_rows; }

    void addRow(const std::vector<db::odbc::ValueView>& values) override {
        QByteArray& line = m_file.buffer();
        for (size_t column = 0; column < values.size(); ++column) {
            if (!values[column].isNull)
                appendValue(line, m_columns[column], values[column].bytes);
            line += m_delimiter;
        }
        line += "\r\n";
        m_progress.setPosition(++m_rows);
    }

private:
    using Kind = db::odbc::ColumnInfo::Kind;

    void appendValue(QByteArray& line, const db::odbc::ColumnInfo& column, QByteArrayView bytes) {
        switch (column.kind()) {
        case Kind::Text:
        case Kind::Integer:
            line += bytes;
            return;
        case Kind::Binary:
            line += "(BLOB)";
            return;
        case Kind::Date:
        case Kind::Time:
        case Kind::DateTime:
            line += dateText(column, bytes);
            return;
        case Kind::Float:
        case Kind::Decimal:
            line += assets::DisplayText(column, bytes, m_dates, m_locale).toUtf8();
            return;
        }
    }

    const QByteArray& dateText(const db::odbc::ColumnInfo& column, QByteArrayView bytes) {
        const QByteArray key = QByteArray::fromRawData(bytes.data(), bytes.size());
        const auto known = m_dateTexts.constFind(key);
        if (known != m_dateTexts.cend())
            return *known;
        constexpr qsizetype DateTextsKept = 100000;
        if (m_dateTexts.size() >= DateTextsKept)
            m_dateTexts.clear();
        return *m_dateTexts.insert(bytes.toByteArray(),
                                   assets::DisplayText(column, bytes, m_dates, m_locale).toUtf8());
    }

    const std::vector<db::odbc::ColumnInfo>& m_columns;
    const QByteArray m_delimiter;
    OutputFile& m_file;
    Progress& m_progress;
    const core::DateSettings m_dates;
    const QLocale m_locale;
    QHash<QByteArray, QByteArray> m_dateTexts;
    qint64 m_rows = 0;
};

qint64 countRows(db::odbc::Connection& connection, const QString& sql) {
    db::odbc::Statement count(connection);
    count.executeDirect(QStringLiteral("select count(*) from (%1) counted").arg(sql));
    std::vector<db::odbc::Row> rows;
    count.fetchBlock(rows);
    return rows.empty() ? 0 : rows.front().front().toLongLong();
}

struct ExportJob {
    const char* errorTitle;
    const char* notFound;
    const char* result;
};

// Runs `sql` and writes its rows after the header lines and the field names. False
// when the query has no rows; the file is then left as it was.
qint64 writeRows(db::odbc::Connection& connection, const QString& sql, const QString& delimiter,
                 const QStringList* headerLines, OutputFile& file, Progress& progress) {
    progress.setMaximum(countRows(connection, sql));
    db::odbc::Statement query(connection);
    query.setBlockSize(500);
    query.executeDirect(sql);
    const std::vector<db::odbc::ColumnInfo>& columns = query.columns();
    QByteArray lines;
    if (headerLines)
        for (const QString& line : *headerLines)
            lines += line.toUtf8() + "\r\n";
    QStringList names;
    for (const db::odbc::ColumnInfo& column : columns)
        names << column.name;
    lines += names.join(delimiter).toUtf8() + "\r\n";
    file.buffer() = lines;

    DataLines data(columns, delimiter, file, progress);
    bool more = query.fetchBlock(data);
    if (data.rows() == 0)
        return 0;
    while (more) {
        file.flushIfFull();
        more = query.fetchBlock(data);
    }
    file.close();
    return data.rows();
}

void runExport(const ExportJob& job, const QString& fileName, Progress& progress,
               const std::function<qint64(OutputFile&)>& work) {
    try {
        OutputFile file(fileName);
        const qint64 rows = work(file);
        if (rows < 0)
            return;
        if (rows == 0)
            fail(job.notFound);
        const QString message =
            Translate(QLatin1String(job.result), 0,
                      {{QStringLiteral("$RECORDCOUNT$"), QString::number(rows)}});
        core::LogLine(message);
        progress.message(Translate(QStringLiteral("Export Result")), message, MessageIcon::None);
    } catch (const std::exception& error) {
        const QString text = QString::fromUtf8(error.what());
        if (text.isEmpty()) {
            progress.beep();
            return;
        }
        logQuietly(text);
        progress.message(Translate(QLatin1String(job.errorTitle)), text, MessageIcon::Error);
    }
}

const QStringList* nonEmpty(const QStringList* lines) {
    return lines && !lines->isEmpty() ? lines : nullptr;
}

} // namespace

void LoadExportSettings(ExportSettings& settings) {
    const QString key = InterchangeSettingsKey(settings.TypesMode);
    const auto read = [&key](const QString& name, QString& value) {
        return core::ReadRegistryString(key, name, value, SettingsBufferLength, std::nullopt);
    };
    read(QStringLiteral("FileName"), settings.FileName);
    read(QStringLiteral("InitialDir"), settings.InitialDir);
    read(QStringLiteral("Delimiter"), settings.Delimiter);
    QString value;
    if (read(QStringLiteral("Records"), value))
        settings.AllRecords = value == QLatin1String("All");
    if (read(QStringLiteral("Header"), value))
        settings.AddHeader = value == QLatin1String("Yes");
    if (!read(QStringLiteral("HeaderLines"), value))
        return;
    const int count = value.toInt();
    settings.HeaderLines = QStringList();
    for (int index = 0; index < count; ++index)
        if (read(QString::asprintf("HeaderLine%03d", index), value))
            settings.HeaderLines->append(value);
}

bool SaveExportSettings(const ExportSettings& settings, const QStringList& headerLines) {
    std::vector<std::pair<QString, QString>> values = {
        {QStringLiteral("FileName"), settings.FileName},
        {QStringLiteral("InitialDir"), settings.InitialDir},
        {QStringLiteral("Delimiter"), settings.Delimiter},
        {QStringLiteral("Records"),
         settings.AllRecords ? QStringLiteral("All") : QStringLiteral("Selected")},
        {QStringLiteral("Header"),
         settings.AddHeader ? QStringLiteral("Yes") : QStringLiteral("No")},
        {QStringLiteral("HeaderLines"), QString::number(headerLines.size())},
    };
    for (qsizetype index = 0; index < headerLines.size(); ++index)
        values.emplace_back(QString::asprintf("HeaderLine%03d", int(index)), headerLines[index]);
    return core::WriteRegistryStrings(InterchangeSettingsKey(settings.TypesMode), values);
}

QString ExportAssetsSql(const assets::ResultTableModel& grid, bool allRecords,
                        const std::vector<int>& selectedRows) {
    QString sql = QStringLiteral("select * from assets");
    if (allRecords)
        return sql;
    if (selectedRows.empty())
        fail("No records to export (not selected?).");
    return sql + QStringLiteral(" where ID in (") +
           assets::BareIdList(grid, grid.fieldIndex(QStringLiteral("ID")), selectedRows) +
           QLatin1Char(')');
}

void ExportAssets(db::odbc::Connection& connection, const QString& fileName,
                  const QString& delimiter, const QStringList* headerLines, bool allRecords,
                  const assets::ResultTableModel* grid, const std::vector<int>& selectedRows,
                  Progress& progress) {
    const ExportJob job{"Assets Export Error", "No records to export - not found.",
                        "$RECORDCOUNT$ record(s) have been exported."};
    runExport(job, fileName, progress, [&](OutputFile& file) -> qint64 {
        if (!grid || grid->fieldIndex(QStringLiteral("ID")) < 0)
            return -1;
        const QString sql = ExportAssetsSql(*grid, allRecords, selectedRows);
        return writeRows(connection, sql, delimiter, nonEmpty(headerLines), file, progress);
    });
}

void ExportAssetTypes(db::odbc::Connection& connection, const QString& fileName,
                      const QString& delimiter, const QStringList* headerLines,
                      Progress& progress) {
    const ExportJob job{"Asset Types Export Error", "No asset type records to export  - not found.",
                        "$RECORDCOUNT$ asset type record(s) exported."};
    runExport(job, fileName, progress, [&](OutputFile& file) {
        return writeRows(connection, QStringLiteral("select * from ASSETTYPES"), delimiter,
                         nonEmpty(headerLines), file, progress);
    });
}

} // namespace interchange
