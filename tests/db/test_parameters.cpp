#include "db/parameters.h"

#include <QTest>

using db::DriverStatement;
using db::SqlParameter;

class TestParameters : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The names found and the driver's form of the text, side by side.
    void driverStatement_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("driverText");

        QTest::newRow("no parameters")
            << "SELECT * FROM ASSETS" << QStringList{} << "SELECT * FROM ASSETS";
        QTest::newRow("empty text") << "" << QStringList{} << "";
        QTest::newRow("one at the very end")
            << "SELECT * FROM ASSETS WHERE ID = :id" << QStringList{"id"}
            << "SELECT * FROM ASSETS WHERE ID = ?";
        QTest::newRow("two, in order")
            << "SELECT * FROM ASSETS WHERE ASSETTYPE = :type AND FKNODES = :node"
            << QStringList{"type", "node"}
            << "SELECT * FROM ASSETS WHERE ASSETTYPE = ? AND FKNODES = ?";
        QTest::newRow("order of appearance, not of name")
            << "WHERE B = :zeta OR A = :alpha" << QStringList{"zeta", "alpha"}
            << "WHERE B = ? OR A = ?";
        QTest::newRow("a name twice is two parameters")
            << "WHERE A = :x OR B = :x" << QStringList{"x", "x"} << "WHERE A = ? OR B = ?";
        QTest::newRow("case kept")
            << "WHERE T = :AssetType" << QStringList{"AssetType"} << "WHERE T = ?";
        QTest::newRow("only the text is the whole parameter") << ":p" << QStringList{"p"} << "?";

        // Name characters.
        QTest::newRow("digits may start a name")
            << "VALUES (:1, :2)" << QStringList{"1", "2"} << "VALUES (?, ?)";
        QTest::newRow("digits then letters") << "= :1abc" << QStringList{"1abc"} << "= ?";
        QTest::newRow("underscores") << "= :_a_b2" << QStringList{"_a_b2"} << "= ?";
        QTest::newRow("letters beyond ASCII") << "= :größe" << QStringList{"größe"} << "= ?";
        QTest::newRow("closing parenthesis ends a name")
            << "IN (:a,:b)" << QStringList{"a", "b"} << "IN (?,?)";
        QTest::newRow("operators end a name")
            << ":a+:b-:c" << QStringList{"a", "b", "c"} << "?+?-?";
        QTest::newRow("semicolon ends a name") << "= :a;" << QStringList{"a"} << "= ?;";
        QTest::newRow("dot ends a name") << "= :a.b" << QStringList{"a"} << "= ?.b";
        QTest::newRow("right after a word") << "x:y" << QStringList{"y"} << "x?";
        QTest::newRow("line breaks and tabs around")
            << "SELECT *\n\tFROM T\r\n\tWHERE A = :a\n\tAND B=:b\r\n"
            << QStringList{"a", "b"} << "SELECT *\n\tFROM T\r\n\tWHERE A = ?\n\tAND B=?\r\n";

        // Colons that are not parameters.
        QTest::newRow("cast") << "SELECT ID::text FROM ASSETS" << QStringList{}
                              << "SELECT ID::text FROM ASSETS";
        QTest::newRow("parameter then cast")
            << "SELECT :v::int" << QStringList{"v"} << "SELECT ?::int";
        QTest::newRow("three colons") << "a:::b" << QStringList{} << "a:::b";
        QTest::newRow("assignment")
            << "BEGIN x := 1; y:=2; END" << QStringList{} << "BEGIN x := 1; y:=2; END";
        QTest::newRow("colon then blank") << "a : b" << QStringList{} << "a : b";
        QTest::newRow("colon at the end") << "SELECT 1 :" << QStringList{} << "SELECT 1 :";
        QTest::newRow("colon then punctuation") << "(:)" << QStringList{} << "(:)";

        // String literals.
        QTest::newRow("time in a literal")
            << "WHERE T = '12:30'" << QStringList{} << "WHERE T = '12:30'";
        QTest::newRow("format in a literal")
            << "TO_DATE(:d, 'HH24:MI')" << QStringList{"d"} << "TO_DATE(?, 'HH24:MI')";
        QTest::newRow("doubled quote inside a literal")
            << "WHERE N = 'it''s :not' AND M = :yes" << QStringList{"yes"}
            << "WHERE N = 'it''s :not' AND M = ?";
        QTest::newRow("empty literal")
            << "WHERE N = '' AND M = :p" << QStringList{"p"} << "WHERE N = '' AND M = ?";
        QTest::newRow("literal of one doubled quote")
            << "WHERE N = '''' AND M = :p" << QStringList{"p"} << "WHERE N = '''' AND M = ?";
        QTest::newRow("parameter right after a literal") << "'a':b" << QStringList{"b"} << "'a'?";
        QTest::newRow("unterminated literal runs to the end")
            << "WHERE A = :a AND B = 'open :b" << QStringList{"a"}
            << "WHERE A = ? AND B = 'open :b";
        QTest::newRow("lone quote at the end") << "= :a '" << QStringList{"a"} << "= ? '";

        // Quoted identifiers.
        QTest::newRow("double quotes")
            << "SELECT \"A:B\", :c FROM T" << QStringList{"c"} << "SELECT \"A:B\", ? FROM T";
        QTest::newRow("doubled double quote")
            << "SELECT \"a\"\":b\", :c" << QStringList{"c"} << "SELECT \"a\"\":b\", ?";
        QTest::newRow("apostrophe in double quotes")
            << "SELECT \"it's\", :p" << QStringList{"p"} << "SELECT \"it's\", ?";
        QTest::newRow("brackets") << "SELECT [A:B], :c FROM T" << QStringList{"c"}
                                  << "SELECT [A:B], ? FROM T";
        QTest::newRow("doubled closing bracket")
            << "SELECT [a]]:b], :c" << QStringList{"c"} << "SELECT [a]]:b], ?";
        QTest::newRow("array slice in brackets")
            << "SELECT a[1:2]" << QStringList{} << "SELECT a[1:2]";
        QTest::newRow("backquotes") << "SELECT `A:B`, :c" << QStringList{"c"} << "SELECT `A:B`, ?";
        QTest::newRow("doubled backquote")
            << "SELECT `a``:b`, :c" << QStringList{"c"} << "SELECT `a``:b`, ?";
        QTest::newRow("quote inside brackets")
            << "SELECT [it's], :p" << QStringList{"p"} << "SELECT [it's], ?";
        QTest::newRow("unterminated identifier")
            << "SELECT \"open :b" << QStringList{} << "SELECT \"open :b";

        // Comments.
        QTest::newRow("line comment before")
            << "-- :x\nSELECT :y" << QStringList{"y"} << "-- :x\nSELECT ?";
        QTest::newRow("line comment ended by CR")
            << "-- :x\rSELECT :y" << QStringList{"y"} << "-- :x\rSELECT ?";
        QTest::newRow("line comment at the end")
            << "SELECT :a -- :x" << QStringList{"a"} << "SELECT ? -- :x";
        QTest::newRow("block comment")
            << "/* :x\n :z */ SELECT :y" << QStringList{"y"} << "/* :x\n :z */ SELECT ?";
        QTest::newRow("block comments do not nest")
            << "/* /* :x */ :y */" << QStringList{"y"} << "/* /* :x */ ? */";
        QTest::newRow("unterminated block comment")
            << "SELECT :a /* :x" << QStringList{"a"} << "SELECT ? /* :x";
        QTest::newRow("quote inside a comment")
            << "-- it's\nSELECT :a" << QStringList{"a"} << "-- it's\nSELECT ?";
        QTest::newRow("comment marks inside a literal")
            << "SELECT '--', '/*', :a" << QStringList{"a"} << "SELECT '--', '/*', ?";
        QTest::newRow("minus before a parameter")
            << "SELECT 5-:n" << QStringList{"n"} << "SELECT 5-?";
        QTest::newRow("division by a parameter")
            << "SELECT 10/:n" << QStringList{"n"} << "SELECT 10/?";

        // Markers already in the driver's form.
        QTest::newRow("existing question mark kept")
            << "WHERE A = ? AND B = :b" << QStringList{"b"} << "WHERE A = ? AND B = ?";
    }

    void driverStatement() {
        QFETCH(QString, sql);
        QFETCH(QStringList, names);
        const DriverStatement statement = db::ToDriverStatement(sql);
        QCOMPARE(statement.parameterNames, names);
        QTEST(statement.text, "driverText");
        QCOMPARE(db::ParameterNames(sql), names);
        QCOMPARE(db::FindParameters(sql).size(), names.size());
    }

    // Where each parameter sits: the colon's offset and the length with the colon.
    void positions_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QList<SqlParameter>>("parameters");

        QTest::newRow("two") << "A = :id AND B = :x"
                             << QList<SqlParameter>{{"id", 4, 3}, {"x", 16, 2}};
        QTest::newRow("at the start and the end")
            << ":a,:bc" << QList<SqlParameter>{{"a", 0, 2}, {"bc", 3, 3}};
        QTest::newRow("after a literal") << "'x:y' :z" << QList<SqlParameter>{{"z", 6, 2}};
        QTest::newRow("none") << "a::b" << QList<SqlParameter>{};
    }

    void positions() {
        QFETCH(QString, sql);
        QFETCH(QList<SqlParameter>, parameters);
        const QList<SqlParameter> found = db::FindParameters(sql);
        QCOMPARE(found, parameters);
        for (const SqlParameter& parameter : found)
            QCOMPARE(sql.mid(parameter.position, parameter.length),
                     QLatin1Char(':') + parameter.name);
    }

    // A long statement: every parameter found, the text around them kept.
    void longStatement() {
        QString sql = QStringLiteral("SELECT * FROM ASSETS WHERE 1 = 1");
        QString expected = sql;
        QStringList names;
        for (int i = 0; sql.size() < 10000; ++i) {
            const QString name = QStringLiteral("p%1").arg(i);
            sql += QStringLiteral(" OR NAME = :%1 OR TAG = '%2:%3'").arg(name).arg(i).arg(i);
            expected += QStringLiteral(" OR NAME = ? OR TAG = '%1:%2'").arg(i).arg(i);
            names.append(name);
        }
        const DriverStatement statement = db::ToDriverStatement(sql);
        QCOMPARE(statement.parameterNames, names);
        QCOMPARE(statement.text, expected);
    }
};

QTEST_APPLESS_MAIN(TestParameters)
#include "test_parameters.moc"
