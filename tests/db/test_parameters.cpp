#include "db/parameters.h"

#include <QTest>

namespace {

void row(const char* name, const QString& sql, const QStringList& names,
         const QString& driverText) {
    QTest::newRow(name) << sql << names << driverText;
}

} // namespace

class TestParameters : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The names found and the driver's form of the text, side by side.
    void driverStatement_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("driverText");

        row("no parameters", "SELECT * FROM ASSETS", {}, "SELECT * FROM ASSETS");
        row("order of appearance, at the ends", ":zeta OR A = :alpha", {"zeta", "alpha"},
            "? OR A = ?");
        row("a name twice is two parameters", "A = :x OR B = :x", {"x", "x"}, "A = ? OR B = ?");
        row("name characters, case kept", "VALUES (:1abc, :_a_B2, :größe)",
            {"1abc", "_a_B2", "größe"}, "VALUES (?, ?, ?)");
        row("what ends a name", "IN (:a,:b)+:c-:d;x:y.z", {"a", "b", "c", "d", "y"},
            "IN (?,?)+?-?;x?.z");
        row("line breaks and tabs kept", "SELECT *\n\tFROM T\r\n\tWHERE A = :a\n", {"a"},
            "SELECT *\n\tFROM T\r\n\tWHERE A = ?\n");
        row("existing question mark kept", "A = ? AND B = :b", {"b"}, "A = ? AND B = ?");

        // Colons that are not parameters.
        row("cast", "SELECT ID::text FROM T", {}, "SELECT ID::text FROM T");
        row("parameter then cast", "SELECT :v::int", {"v"}, "SELECT ?::int");
        row("three colons", "a:::b", {}, "a:::b");
        row("assignment", "x := 1; y:=2", {}, "x := 1; y:=2");
        row("colon before a blank, punctuation, the end", "a : b (:) :", {}, "a : b (:) :");

        // String literals.
        row("time in a literal", "T = '12:30' AND D = :d", {"d"}, "T = '12:30' AND D = ?");
        row("doubled quotes inside a literal", "N = 'it''s :not' AND M = '''' AND :yes", {"yes"},
            "N = 'it''s :not' AND M = '''' AND ?");
        row("parameter right after a literal", "'a':b", {"b"}, "'a'?");
        row("unterminated literal runs to the end", "A = :a AND B = 'open :b", {"a"},
            "A = ? AND B = 'open :b");

        // Quoted identifiers, each with its closing character doubled inside.
        row("double quotes", "SELECT \"a\"\":b\", \"it's\", :c", {"c"},
            "SELECT \"a\"\":b\", \"it's\", ?");
        row("brackets", "SELECT [a]]:b], [it's], a[1:2], :c", {"c"},
            "SELECT [a]]:b], [it's], a[1:2], ?");
        row("backquotes", "SELECT `a``:b`, :c", {"c"}, "SELECT `a``:b`, ?");
        row("unterminated identifier", "SELECT \"open :b", {}, "SELECT \"open :b");

        // Comments.
        row("line comments end at LF or CR", "-- it's :x\nSELECT :y -- :z\r:w", {"y", "w"},
            "-- it's :x\nSELECT ? -- :z\r?");
        row("block comments do not nest", "/* /* :x\n */ :y */", {"y"}, "/* /* :x\n */ ? */");
        row("unterminated block comment", "SELECT :a /* :x", {"a"}, "SELECT ? /* :x");
        row("a comment's closing slash opens nothing", "SELECT /* all */* FROM T WHERE A = :a",
            {"a"}, "SELECT /* all */* FROM T WHERE A = ?");
        row("comment marks inside a literal", "SELECT '--', '/*', :a", {"a"},
            "SELECT '--', '/*', ?");
        row("minus and slash before a parameter", "SELECT 5-:n, 10/:m", {"n", "m"},
            "SELECT 5-?, 10/?");

        QString sql = QStringLiteral("SELECT * FROM ASSETS WHERE 1 = 1");
        QString expected = sql;
        QStringList names;
        for (int i = 0; sql.size() < 10000; ++i) {
            sql += QStringLiteral(" OR NAME = :p%1 OR TAG = '%1:%1'").arg(i);
            expected += QStringLiteral(" OR NAME = ? OR TAG = '%1:%1'").arg(i);
            names << QStringLiteral("p%1").arg(i);
        }
        row("10,000 characters", sql, names, expected);
    }

    void driverStatement() {
        QFETCH(QString, sql);
        QFETCH(QStringList, names);
        const db::DriverStatement statement = db::ToDriverStatement(sql);
        QCOMPARE(statement.parameterNames, names);
        QTEST(statement.text, "driverText");
        QCOMPARE(db::ParameterNames(sql), names);
        const QList<db::SqlParameter> found = db::FindParameters(sql);
        QCOMPARE(found.size(), names.size());
        // Each parameter's offset and length cover the colon and its name.
        for (const db::SqlParameter& parameter : found)
            QCOMPARE(sql.mid(parameter.position, parameter.length),
                     QLatin1Char(':') + parameter.name);
    }
};

QTEST_APPLESS_MAIN(TestParameters)
#include "test_parameters.moc"
