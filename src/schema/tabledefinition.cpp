#include "schema/tabledefinition.h"

namespace schema {

namespace {

QString numbered(const char* prefix, int n) {
    return QLatin1String(prefix) + QString::number(n);
}

// A count of the file; one larger than the file can hold is refused (see the header).
int readCount(const IniFile& file, const QString& section, const char* key) {
    const int count = file.readInteger(section, QLatin1String(key));
    if (count > file.entryCount())
        throw IniFileError(QStringLiteral("\"%1=%2\" in section [%3] is more than the %4 sections "
                                          "and keys of the table definition file can hold.")
                               .arg(QLatin1String(key))
                               .arg(count)
                               .arg(section)
                               .arg(file.entryCount())
                               .toStdString());
    return count;
}

void addLogEntry(std::vector<SchemaWorkItem>& work, const QString& text) {
    work.push_back({SchemaWorkItem::Kind::LogEntry, text, {}});
}

void readTables(const IniFile& file, const QString& passSection, const TypeMap& types,
                std::vector<SchemaWorkItem>& work) {
    const int tables = readCount(file, passSection, "Tables");
    for (int n = 1; n <= tables; ++n) {
        const QString section = passSection + numbered("_Table", n);
        const QString name = file.readString(section, QStringLiteral("Name")).trimmed();
        if (name.isEmpty())
            continue;
        addLogEntry(work, QStringLiteral("...processing table ") + name);
        const int columnCount = readCount(file, section, "Columns");
        if (columnCount <= 0) {
            addLogEntry(work, QStringLiteral(".......no column definitions found."));
            continue;
        }
        QStringList columns;
        for (const QString& line :
             file.readNumbered(section, QStringLiteral("Column"), columnCount))
            if (!line.isEmpty())
                columns << MapColumnTypes(line, types);
        if (columns.isEmpty())
            addLogEntry(work, QStringLiteral(".......no columns found."));
        else
            work.push_back({SchemaWorkItem::Kind::Table, name, columns});
    }
}

void readStatements(const IniFile& file, const QString& passSection,
                    std::vector<SchemaWorkItem>& work) {
    const int statements = readCount(file, passSection, "Queries");
    for (int n = 1; n <= statements; ++n) {
        const QString section = passSection + numbered("_Query", n);
        addLogEntry(work, QStringLiteral("...processing SQL query ") + section);
        const int rowCount = readCount(file, section, "Rows");
        if (rowCount <= 0) {
            addLogEntry(work, QStringLiteral(".......no Query rows found."));
            continue;
        }
        QStringList rows = file.readNumbered(section, QStringLiteral("Row"), rowCount);
        rows.removeAll(QString());
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
    const int count = readCount(file, passSection, "FieldTypes");
    for (const QString& listed : file.readNumbered(passSection, QStringLiteral("Type"), count)) {
        const QString generic = listed.trimmed();
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
