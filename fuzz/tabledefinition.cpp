// The table definition file: the INI reading and the schema work of both passes.
//
// Properties: IniFileError is the only exception, and it comes exactly when a count is above
// the number of section headers and keys of the file; the work read equals a literal reading of the
// rules (each count looped over key by key); names and values are trimmed and hold no line end.

#include "schema/tabledefinition.h"
#include "fuzzsupport.h"
#include "schema/inifile.h"

namespace {

using schema::IniFile;
using schema::SchemaWorkItem;

QString numbered(const char* prefix, int n) {
    return QLatin1String(prefix) + QString::number(n);
}

// The rules read literally: every count is a loop over its keys.
std::vector<SchemaWorkItem> reference(const IniFile& file, db::DatabaseDialect dialect,
                                      bool& absurd) {
    std::vector<SchemaWorkItem> work;
    const QString passes[] = {QStringLiteral("Default"), db::DialectSectionName(dialect)};
    auto count = [&](const QString& section, const char* key) {
        const int n = file.readInteger(section, QLatin1String(key));
        absurd = absurd || n > file.entryCount();
        return n;
    };
    auto log = [&work](const QString& text) {
        work.push_back({SchemaWorkItem::Kind::LogEntry, text, {}});
    };
    for (int pass = 0; pass < 2 && !absurd; ++pass) {
        const QString& section = passes[pass];
        log(QStringLiteral("processing ") + section + QStringLiteral(" section."));
        if (pass == 1 && section == passes[0])
            break;
        schema::TypeMap types;
        const int typeCount = count(section, "FieldTypes");
        for (int i = 1; i <= typeCount && !absurd; ++i) {
            const QString generic = file.readString(section, numbered("Type", i)).trimmed();
            const QString native = file.readString(passes[1], generic).trimmed();
            if (!generic.isEmpty() && !native.isEmpty())
                types.push_back({generic, native});
        }
        const int tables = count(section, "Tables");
        for (int n = 1; n <= tables && !absurd; ++n) {
            const QString table = section + numbered("_Table", n);
            const QString name = file.readString(table, QStringLiteral("Name"));
            if (name.isEmpty())
                continue;
            log(QStringLiteral("...processing table ") + name);
            const int columnCount = count(table, "Columns");
            if (columnCount <= 0) {
                log(QStringLiteral(".......no column definitions found."));
                continue;
            }
            QStringList columns;
            for (int c = 1; c <= columnCount && !absurd; ++c) {
                const QString line = file.readString(table, numbered("Column", c));
                if (!line.isEmpty())
                    columns << schema::MapColumnTypes(line, types);
            }
            if (columns.isEmpty())
                log(QStringLiteral(".......no columns found."));
            else
                work.push_back({SchemaWorkItem::Kind::Table, name, columns});
        }
        const int queries = count(section, "Queries");
        for (int n = 1; n <= queries && !absurd; ++n) {
            const QString query = section + numbered("_Query", n);
            log(QStringLiteral("...processing SQL query ") + query);
            const int rowCount = count(query, "Rows");
            if (rowCount <= 0) {
                log(QStringLiteral(".......no Query rows found."));
                continue;
            }
            QStringList rows;
            for (int r = 1; r <= rowCount && !absurd; ++r)
                if (const QString row = file.readString(query, numbered("Row", r)); !row.isEmpty())
                    rows << row;
            if (rows.isEmpty())
                log(QStringLiteral(".......SQL query is empty."));
            else
                work.push_back(
                    {SchemaWorkItem::Kind::Statement, rows.join(QLatin1String("\r\n")), {}});
        }
    }
    return work;
}

bool isCleanValue(const QString& text) {
    return text == text.trimmed() && !text.contains(QLatin1Char('\n')) &&
           !text.contains(QLatin1Char('\r')) && !text.contains(QChar(0));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const auto dialect = static_cast<db::DatabaseDialect>(data[0] % 4);
    const QByteArray bytes(reinterpret_cast<const char*>(data + 1),
                           static_cast<qsizetype>(size - 1));
    const IniFile file = IniFile::fromBytes(bytes);

    std::vector<SchemaWorkItem> work;
    bool refused = false;
    try {
        work = schema::ReadSchemaWork(file, dialect);
    } catch (const schema::IniFileError&) {
        refused = true;
    }
    for (const SchemaWorkItem& item : work) {
        if (item.kind == SchemaWorkItem::Kind::Table) {
            FUZZ_CHECK(isCleanValue(item.text), fuzzsupport::shown(item.text));
            FUZZ_CHECK(!item.columns.isEmpty(), item.text);
        }
    }
    // The literal reading loops over every count: kept to files whose counts stay small.
    if (file.entryCount() > 200)
        return 0;
    bool absurd = false;
    const std::vector<SchemaWorkItem> expected = reference(file, dialect, absurd);
    FUZZ_CHECK(refused == absurd, QString::fromUtf8(bytes));
    FUZZ_CHECK(refused || work == expected, QString::fromUtf8(bytes));
    return 0;
}
