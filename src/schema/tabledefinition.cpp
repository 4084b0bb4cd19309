#include "schema/tabledefinition.h"

namespace schema {

namespace {

QString numbered(const char* prefix, int n) {
    return QLatin1String(prefix) + QString::number(n);
}

void addLogEntry(std::vector<SchemaWorkItem>& work, const QString& text) {
    work.push_back({SchemaWorkItem::Kind::LogEntry, text, {}});
}

void readTables(const IniFile& file, const QString& passSection, const TypeMap& types,
                std::vector<SchemaWorkItem>& work) {
    const int tables = file.readInteger(passSection, QStringLiteral("Tables"));
    for (int n = 1; n <= tables; ++n) {
        const QString section = passSection + numbered("_Table", n);
        const QString name = file.readString(section, QStringLiteral("Name")).trimmed();
        if (name.isEmpty())
            continue;
        addLogEntry(work, QStringLiteral("...processing table ") + name);
        const int columnCount = file.readInteger(section, QStringLiteral("Columns"));
        if (columnCount <= 0) {
            addLogEntry(work, QStringLiteral(".......no column definitions found."));
            continue;
        }
        QStringList columns;
        for (int c = 1; c <= columnCount; ++c) {
            const QString line = file.readString(section, numbered("Column", c)).trimmed();
            if (!line.isEmpty())
                columns << MapColumnTypes(line, types);
        }
        if (columns.isEmpty())
            addLogEntry(work, QStringLiteral(".......no columns found."));
        else
            work.push_back({SchemaWorkItem::Kind::Table, name, columns});
    }
}

void readStatements(const IniFile& file, const QString& passSection,
                    std::vector<SchemaWorkItem>& work) {
    const int statements = file.readInteger(passSection, QStringLiteral("Queries"));
    for (int n = 1; n <= statements; ++n) {
        const QString section = passSection + numbered("_Query", n);
        addLogEntry(work, QStringLiteral("...processing SQL query ") + section);
        const int rowCount = file.readInteger(section, QStringLiteral("Rows"));
        if (rowCount <= 0) {
            addLogEntry(work, QStringLiteral(".......no Query rows found."));
            continue;
        }
        QStringList rows;
        for (int r = 1; r <= rowCount; ++r) {
            const QString row = file.readString(section, numbered("Row", r));
            if (!row.isEmpty())
                rows << row;
        }
        if (rows.isEmpty())
            addLogEntry(work, QStringLiteral(".......SQL query is empty."));
        else
            work.push_back(
                {SchemaWorkItem::Kind::Statement, rows.join(QStringLiteral("\r\n")), {}});
    }
}

} // namespace

QString DefaultTableDefinitionPath() {
    return QStringLiteral("table.def");
}

TypeMap ReadTypeMap(const IniFile& file, const QString& passSection,
                    const QString& dialectSection) {
    TypeMap types;
    const int count = file.readInteger(passSection, QStringLiteral("FieldTypes"));
    for (int i = 1; i <= count; ++i) {
        const QString generic = file.readString(passSection, numbered("Type", i)).trimmed();
        if (generic.isEmpty())
            continue;
        const QString native = file.readString(dialectSection, generic).trimmed();
        if (!native.isEmpty())
            types.push_back({generic, native});
    }
    return types;
}

std::vector<SchemaWorkItem> ReadSchemaWork(const IniFile& file, db::DatabaseDialect dialect) {
    const QString defaultSection = db::DialectSectionName(db::DatabaseDialect::Default);
    const QString dialectSection = db::DialectSectionName(dialect);
    std::vector<SchemaWorkItem> work;
    const QString passSections[] = {defaultSection, dialectSection};
    for (int pass = 1; pass <= 2; ++pass) {
        const QString& passSection = passSections[pass - 1];
        addLogEntry(work,
                    QStringLiteral("processing ") + passSection + QStringLiteral(" section."));
        // The "Default" section is worked through once only, even when it is the dialect's.
        if (pass == 2 && passSection == defaultSection)
            break;
        const TypeMap types = ReadTypeMap(file, passSection, dialectSection);
        readTables(file, passSection, types, work);
        readStatements(file, passSection, work);
    }
    return work;
}

} // namespace schema
