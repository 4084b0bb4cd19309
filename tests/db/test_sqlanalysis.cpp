#include "db/sqlanalysis.h"

#include <QTest>

using db::AnalyseAssetsQuery;
using db::AssetsQueryAnalysis;

namespace {

void fromPartRow(const char* name, const QString& sql, const QString& fromPart, int test) {
    QTest::newRow(name) << sql << fromPart << test;
}

// expected: the text to run; null when it is the input unchanged.
void analyseRow(const char* name, const QString& sql, bool appendId, bool editable, bool rewritten,
                const QString& expected = QString()) {
    QTest::newRow(name) << sql << appendId << editable << rewritten
                        << (expected.isNull() ? sql : expected);
}

} // namespace

class TestSqlAnalysis : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The from-part: the text after the first "FROM", cut at the first clause keyword of
    // the fixed list, and which of the five tests finds ASSETS in it.
    void fromPart_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("fromPart");
        QTest::addColumn<int>("test");

        fromPartRow("test 1: ASSETS between blanks", "SELECT ID FROM ASSETS ORDER BY ID",
                    " ASSETS ", 1);
        fromPartRow("test 2: owner-qualified with alias", "SELECT A.NAME FROM DBO.ASSETS A",
                    " DBO.ASSETS A", 2);
        fromPartRow("test 3: quoted name", "SELECT * FROM \"DBO\".\"ASSETS\" A",
                    " \"DBO\".\"ASSETS\" A", 3);
        fromPartRow("test 4: ASSETS at the end", "SELECT * FROM NODES, ASSETS", " NODES, ASSETS",
                    4);
        fromPartRow("test 5: owner-qualified at the end", "SELECT * FROM DBO.ASSETS", " DBO.ASSETS",
                    5);
        // Test 4 with ASSETS absent: position 0 plus 6 equals a length of six.
        fromPartRow("test 4: six characters of anything", "SELECT * FROM(ABCDE", "(ABCDE", 4);
        fromPartRow("five characters fail", "SELECT * FROM NODE", " NODE", 0);
        fromPartRow("seven characters fail", "SELECT * FROM NODESX", " NODESX", 0);
        fromPartRow("ends with ASSETS, first occurrence elsewhere",
                    "SELECT * FROM ASSETSOLD, ASSETS", " ASSETSOLD, ASSETS", 0);
        fromPartRow("ASSETSX is not ASSETS", "SELECT NAME FROM ASSETSX", " ASSETSX", 0);
        fromPartRow("semicolon right after the name", "SELECT * FROM ASSETS;", " ASSETS;", 0);
        fromPartRow("brackets are not recognised", "SELECT * FROM [ASSETS]", " [ASSETS]", 0);
        fromPartRow("no FROM", "SELECT 1", "", 0);
        fromPartRow("lower case, cut at WHERE", "select name from assets where x = 'a'", " ASSETS ",
                    1);
        fromPartRow("ends trimmed", "\r\n  SELECT * FROM ASSETS \t\r\n", " ASSETS", 4);
        fromPartRow("only the text before WHERE counts",
                    "SELECT N.NAME FROM NODES N WHERE N.ID IN (SELECT FKNODES FROM ASSETS )",
                    " NODES N ", 0);
        fromPartRow("first FROM inside a column name", "SELECT FROM_DATE, ID FROM ASSETS",
                    "_DATE, ID FROM ASSETS", 4);

        // The keywords are tried in the fixed order WHERE, START, GROUP, HAVING, ORDER, and
        // the first one present cuts, wherever it stands.
        fromPartRow("WHERE cuts although ORDER comes first",
                    "SELECT * FROM NODES ORDER BY (SELECT MAX(ID) FROM ASSETS WHERE ID > 0)",
                    " NODES ORDER BY (SELECT MAX(ID) FROM ASSETS ", 1);
        fromPartRow("WHERE cuts although START comes first",
                    "SELECT * FROM NODES START WITH X IN (SELECT Y FROM ASSETS WHERE ID = 1)",
                    " NODES START WITH X IN (SELECT Y FROM ASSETS ", 1);
        fromPartRow("START cuts although GROUP comes first",
                    "SELECT * FROM NODES GROUP BY (SELECT MAX(ID) FROM ASSETS ) START WITH X",
                    " NODES GROUP BY (SELECT MAX(ID) FROM ASSETS ) ", 1);
        fromPartRow("GROUP cuts although HAVING comes first",
                    "SELECT * FROM NODES HAVING COUNT(*) > (SELECT 1 FROM ASSETS ) GROUP BY X",
                    " NODES HAVING COUNT(*) > (SELECT 1 FROM ASSETS ) ", 1);
        fromPartRow("HAVING cuts although ORDER comes first",
                    "SELECT * FROM NODES ORDER BY (SELECT COUNT(*) FROM ASSETS ) HAVING X",
                    " NODES ORDER BY (SELECT COUNT(*) FROM ASSETS ) ", 1);
        fromPartRow("START inside a table name",
                    "SELECT A.ID FROM ASSETS A JOIN RESTARTS R ON R.ID = A.ID", " ASSETS A JOIN RE",
                    1);

        // Lines are joined with CR LF before the tests, and only blanks count as blanks.
        fromPartRow("line break before WHERE hides ASSETS", "SELECT *\nFROM ASSETS\nWHERE ID = 1",
                    " ASSETS\r\n", 0);
        fromPartRow("LF counts as CR LF: six characters", "SELECT * FROM\nNODE", "\r\nNODE", 4);
        fromPartRow("lone CR counts as CR LF", "SELECT * FROM\rNODE", "\r\nNODE", 4);
        fromPartRow("CR LF stays CR LF", "SELECT * FROM\r\nNODE", "\r\nNODE", 4);
        fromPartRow("tab after FROM hides ASSETS", "SELECT * FROM\tASSETS", "\tASSETS", 0);

        QString tables = QStringLiteral(" T0000");
        for (int i = 1; tables.size() < 10000; ++i)
            tables += QStringLiteral(",T%1").arg(i, 4, 10, QLatin1Char('0'));
        tables += QStringLiteral(" ASSETS");
        fromPartRow("10,000 characters, ASSETS last of the tables", "SELECT * FROM" + tables,
                    tables, 4);
    }

    void fromPart() {
        QFETCH(QString, sql);
        const AssetsQueryAnalysis result = AnalyseAssetsQuery(sql, false);
        QTEST(result.fromPart, "fromPart");
        QTEST(result.fromPartTest, "test");
        QCOMPARE(result.readsAssets, result.fromPartTest != 0);
    }

    // The whole analysis as the query sees it: the flag, the text to run, and whether the
    // editor has to be closed. The select part (before the first "FROM") names ID with
    // "*", "ID" in double quotes, " ID ", " ID,", ",ID " or ",ID,".
    void analyse_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<bool>("appendId");
        QTest::addColumn<bool>("editable");
        QTest::addColumn<bool>("rewritten");
        QTest::addColumn<QString>("sqlText");

        analyseRow("star of COUNT", "SELECT COUNT(*) FROM ASSETS", false, true, false);
        analyseRow("blank ID blank", "SELECT NAME, ID FROM ASSETS", false, true, false);
        analyseRow("blank ID comma", "SELECT ID, NAME FROM ASSETS", false, true, false);
        analyseRow("comma ID blank", "SELECT NAME,ID FROM ASSETS", false, true, false);
        analyseRow("comma ID comma", "SELECT NAME,ID,TAG FROM ASSETS", false, true, false);
        analyseRow("quoted lower-case id", "SELECT \"id\" FROM ASSETS", false, true, false);
        analyseRow("IDX", "SELECT IDX FROM ASSETS", false, false, false);
        analyseRow("ID in parentheses", "SELECT MAX(ID) FROM ASSETS", false, false, false);
        analyseRow("ID only in the WHERE clause", "SELECT NAME FROM ASSETS WHERE ID = 1", false,
                   false, false);
        analyseRow("NODE is no ASSETS query", "SELECT * FROM NODE", false, false, false);
        analyseRow("NODES passes as ASSETS", "SELECT ID FROM NODES", false, true, false);
        analyseRow("owner-qualified, append off: editor closed", "SELECT A.NAME FROM DBO.ASSETS A",
                   false, false, false);

        analyseRow("owner-qualified, append on", "SELECT A.NAME FROM DBO.ASSETS A", true, true,
                   true, "SELECT A.NAME,ID FROM DBO.ASSETS A");
        analyseRow("lower case with ID: text kept as typed", "select id, name from assets", true,
                   true, false);
        analyseRow("ASSETSX, append on", "SELECT NAME FROM ASSETSX", true, false, false);
        analyseRow("no FROM, append on", "select 1 + 1", true, false, false);
        analyseRow("blanks only, append on", " \t\r\n", true, false, false);
        analyseRow("ASSETS only after WHERE, append on",
                   "SELECT N.NAME FROM NODES N WHERE N.ID IN (SELECT FKNODES FROM ASSETS )", true,
                   false, false);
        analyseRow("literals and parameter names upper-cased",
                   "select name from assets where x = 'a' and t = :type", true, true, true,
                   "SELECT NAME,ID FROM ASSETS WHERE X = 'A' AND T = :TYPE");
        analyseRow("qualified A.ID gets a second ID", "SELECT A.ID FROM ASSETS A", true, true, true,
                   "SELECT A.ID,ID FROM ASSETS A");
        analyseRow("line break after ID: ID appended again", "SELECT ID\r\nFROM ASSETS", true, true,
                   true, "SELECT ID,ID FROM ASSETS");
        analyseRow("NODES without ID is rewritten too", "select name from nodes", true, true, true,
                   "SELECT NAME,ID FROM NODES");
        analyseRow("lines around FROM collapse, later breaks become CR LF",
                   "  select name\n  from assets \nwhere tag = 'b:c'\n", true, true, true,
                   "SELECT NAME,ID FROM ASSETS \r\nWHERE TAG = 'B:C'");
        analyseRow("FROM inside a column name: ID before it", "SELECT FROM_DATE, ID FROM ASSETS",
                   true, true, true, "SELECT,ID FROM_DATE, ID FROM ASSETS");
        analyseRow("FROM inside a literal: ID inside it", "SELECT 'from' AS X FROM ASSETS", true,
                   true, true, "SELECT ',ID FROM' AS X FROM ASSETS");

        // 10,000 characters: the select list, blanks, then the rest.
        QString head = QStringLiteral("SELECT ");
        for (int i = 0; head.size() < 9900; ++i)
            head += QStringLiteral("C%1, ").arg(i, 4, 10, QLatin1Char('0'));
        const auto padded = [&](const QString& last, const QString& rest) {
            return head + last + QString(10000 - head.size() - last.size() - rest.size(), ' ') +
                   rest;
        };
        analyseRow("10,000 characters, ID selected", padded("ID", " FROM ASSETS WHERE NAME = 'X'"),
                   true, true, false);
        analyseRow("10,000 characters, ID appended", padded("NAME", " FROM ASSETS ORDER BY NAME"),
                   true, true, true, head + "NAME,ID FROM ASSETS ORDER BY NAME");
    }

    void analyse() {
        QFETCH(QString, sql);
        QFETCH(bool, appendId);
        QFETCH(bool, editable);
        QFETCH(bool, rewritten);
        const AssetsQueryAnalysis result = AnalyseAssetsQuery(sql, appendId);
        QCOMPARE(result.editableAssets, editable);
        QCOMPARE(result.closeEditor(), !editable);
        QCOMPARE(result.idSelected, editable && !rewritten);
        QCOMPARE(result.sqlRewritten, rewritten);
        QTEST(result.sqlText, "sqlText");
        if (rewritten) {
            QVERIFY(result.readsAssets);
            // The second run sees the rewritten text and finds ID where it was put.
            const AssetsQueryAnalysis again = AnalyseAssetsQuery(result.sqlText, true);
            QVERIFY(again.idSelected);
            QVERIFY(!again.sqlRewritten);
            QCOMPARE(again.sqlText, result.sqlText);
        }
    }

    // The text helpers: "append" (AppendIdColumn), "upper" (UpperCaseSql), "trim"
    // (TrimBlanks).
    void textRules_data() {
        QTest::addColumn<QString>("rule");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const char* rule, const QString& text,
                            const QString& expected) {
            QTest::newRow(name) << QString::fromLatin1(rule) << text << expected;
        };
        row("append: no FROM, unchanged", "append", "SELECT 1", "SELECT 1");
        row("append: lower-case from is not found", "append", "select name from assets",
            "select name from assets");
        row("append: ends and the text around FROM trimmed, inner blanks kept", "append",
            "  SELECT NAME  \r\nFROM   ASSETS  \r\n", "SELECT NAME,ID FROM   ASSETS");
        row("append: nothing before FROM", "append", "FROM ASSETS", ",ID FROM ASSETS");
        row("append: FROM at the very end", "append", "SELECT NAME FROM", "SELECT NAME,ID FROM");
        row("upper: ASCII, accents, controls untouched", "upper", "select a_1 été ñ\r\n\tb",
            "SELECT A_1 ÉTÉ Ñ\r\n\tB");
        row("upper: sharp s keeps its length", "upper", "straße", "STRAßE");
        row("upper: dotless i", "upper", "ı", "I");
        row("upper: outside the basic plane", "upper", QString::fromUcs4(U"\U00010428x"),
            QString::fromUcs4(U"\U00010400X"));
        row("trim: blanks, line breaks, tabs; inner blanks kept", "trim", " \r\n\tA  B\t\r\n ",
            "A  B");
        row("trim: other control characters", "trim", QStringLiteral("\x01SELECT 1\x1f\x7f"),
            "SELECT 1");
        row("trim: no-break space kept", "trim", QStringLiteral("\u00a0A\u00a0"),
            QStringLiteral("\u00a0A\u00a0"));
        row("trim: blanks only", "trim", " \t\r\n ", "");
    }
    void textRules() {
        QFETCH(QString, rule);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        if (rule == QLatin1String("append")) {
            QString rewritten = text;
            QCOMPARE(db::AppendIdColumn(rewritten), expected != text);
            QCOMPARE(rewritten, expected);
        } else {
            QCOMPARE(rule == QLatin1String("upper") ? db::UpperCaseSql(text) : db::TrimBlanks(text),
                     expected);
        }
    }
};

QTEST_APPLESS_MAIN(TestSqlAnalysis)
#include "test_sqlanalysis.moc"
