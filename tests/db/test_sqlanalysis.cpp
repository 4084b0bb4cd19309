#include "db/sqlanalysis.h"

#include <QTest>

using db::AnalyseAssetsQuery;
using db::AppendIdColumn;
using db::AssetsQueryAnalysis;

class TestSqlAnalysis : public QObject {
    Q_OBJECT

private:
    // A statement of exactly `length` characters: "SELECT C0000, C0001, ..." padded with
    // blanks before `rest`.
    static QString longStatement(qsizetype length, const QString& selectTail, const QString& rest) {
        QString sql = QStringLiteral("SELECT ");
        for (int i = 0; sql.size() + 7 + selectTail.size() + rest.size() < length; ++i)
            sql += QStringLiteral("C%1, ").arg(i, 4, 10, QLatin1Char('0'));
        sql += selectTail;
        sql += QString(length - sql.size() - rest.size(), QLatin1Char(' '));
        sql += rest;
        return sql;
    }

    // The long statement as AppendIdColumn starts from it: the blanks before "FROM" go,
    // as the head is trimmed.
    static QString withSelectBlanksTrimmed(const QString& sql) {
        const qsizetype from = sql.indexOf(QLatin1String(" FROM "));
        return db::TrimBlanks(sql.left(from)) + QLatin1Char(' ') + sql.mid(from + 1);
    }

private Q_SLOTS:
    // The from-part: the text after the first "FROM", cut at the first clause keyword of
    // the fixed list, and which of the five tests finds ASSETS in it.
    void fromPart_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("fromPart");
        QTest::addColumn<int>("test");

        QTest::newRow("star from ASSETS: blank and ASSETS, test 4") << "SELECT * FROM ASSETS"
                                                                    << " ASSETS" << 4;
        QTest::newRow("owner-qualified with alias: test 2") << "SELECT A.NAME FROM DBO.ASSETS A"
                                                            << " DBO.ASSETS A" << 2;
        QTest::newRow("cut at ORDER: ASSETS between blanks, test 1")
            << "SELECT ID FROM ASSETS ORDER BY ID"
            << " ASSETS " << 1;
        QTest::newRow("NODES: length 6 passes test 4") << "SELECT * FROM NODES"
                                                       << " NODES" << 4;
        QTest::newRow("ASSETSX is not ASSETS") << "SELECT NAME FROM ASSETSX"
                                               << " ASSETSX" << 0;
        QTest::newRow("no FROM") << "SELECT 1"
                                 << "" << 0;
        QTest::newRow("only the text before WHERE counts")
            << "SELECT N.NODENAME FROM NODES N WHERE N.OBJECTID IN (SELECT FKNODES FROM ASSETS )"
            << " NODES N " << 0;
        QTest::newRow("join with a WHERE naming the table")
            << "SELECT A.ID, N.NODENAME FROM ASSETS A JOIN NODES N ON A.FKNODES = N.OBJECTID "
               "WHERE N.NODENAME = 'ASSETS'"
            << " ASSETS A JOIN NODES N ON A.FKNODES = N.OBJECTID " << 1;
        QTest::newRow("algorithm example: cut at WHERE") << "select name from assets where x = 'a'"
                                                         << " ASSETS " << 1;

        QTest::newRow("quoted name: test 3") << "SELECT * FROM \"ASSETS\""
                                             << " \"ASSETS\"" << 3;
        QTest::newRow("quoted owner and name: test 3") << "SELECT * FROM \"DBO\".\"ASSETS\" A"
                                                       << " \"DBO\".\"ASSETS\" A" << 3;
        QTest::newRow("owner-qualified at the end: test 5") << "SELECT * FROM DBO.ASSETS"
                                                            << " DBO.ASSETS" << 5;
        QTest::newRow("owner-qualified before WHERE: test 2")
            << "SELECT * FROM DBO.ASSETS WHERE ID = 1"
            << " DBO.ASSETS " << 2;
        QTest::newRow("alias: test 1") << "SELECT * FROM ASSETS A"
                                       << " ASSETS A" << 1;
        QTest::newRow("five characters fail test 4") << "SELECT * FROM NODE"
                                                     << " NODE" << 0;
        QTest::newRow("seven characters fail test 4") << "SELECT * FROM NODESX"
                                                      << " NODESX" << 0;
        QTest::newRow("six characters of anything pass test 4") << "SELECT * FROM(ABCDE"
                                                                << "(ABCDE" << 4;
        QTest::newRow("empty from-part") << "SELECT * FROM"
                                         << "" << 0;
        QTest::newRow("ASSETSOLD is not ASSETS") << "SELECT * FROM ASSETSOLD"
                                                 << " ASSETSOLD" << 0;
        QTest::newRow("MYASSETS is not ASSETS") << "SELECT * FROM MYASSETS"
                                                << " MYASSETS" << 0;
        QTest::newRow("OLD_ASSETS is not ASSETS") << "SELECT * FROM OLD_ASSETS"
                                                  << " OLD_ASSETS" << 0;
        QTest::newRow("ASSETS last in a list: test 4") << "SELECT * FROM NODES, ASSETS"
                                                       << " NODES, ASSETS" << 4;
        QTest::newRow("ASSETS first in a list, comma after it") << "SELECT * FROM ASSETS, NODES"
                                                                << " ASSETS, NODES" << 0;
        QTest::newRow("ends with ASSETS but the first occurrence is ASSETSOLD")
            << "SELECT * FROM ASSETSOLD, ASSETS"
            << " ASSETSOLD, ASSETS" << 0;
        QTest::newRow("semicolon right after the name") << "SELECT * FROM ASSETS;"
                                                        << " ASSETS;" << 0;
        QTest::newRow("semicolon after a blank") << "SELECT * FROM ASSETS ;"
                                                 << " ASSETS ;" << 1;
        QTest::newRow("brackets are not recognised") << "SELECT * FROM [ASSETS]"
                                                     << " [ASSETS]" << 0;
        QTest::newRow("lower case") << "select * from assets where id = 1"
                                    << " ASSETS " << 1;
        QTest::newRow("mixed case") << "Select * From Assets Order By Id"
                                    << " ASSETS " << 1;
        QTest::newRow("DELETE FROM ASSETS, the name as the last word") << "DELETE FROM ASSETS"
                                                                       << " ASSETS" << 4;
        QTest::newRow("blanks and line breaks at the ends are trimmed")
            << "\r\n  SELECT * FROM ASSETS \t\r\n"
            << " ASSETS" << 4;

        // The keywords are tried in the fixed order WHERE, START, GROUP, HAVING, HAVING,
        // ORDER, and the first one present cuts, wherever it stands.
        QTest::newRow("WHERE cuts although ORDER comes first")
            << "SELECT * FROM NODES ORDER BY (SELECT MAX(ID) FROM ASSETS WHERE ID > 0)"
            << " NODES ORDER BY (SELECT MAX(ID) FROM ASSETS " << 1;
        QTest::newRow("WHERE cuts although START comes first")
            << "SELECT * FROM NODES START WITH OBJECTID IN (SELECT FKNODES FROM ASSETS WHERE "
               "ID = 1)"
            << " NODES START WITH OBJECTID IN (SELECT FKNODES FROM ASSETS " << 1;
        QTest::newRow("START cuts although GROUP comes first")
            << "SELECT * FROM NODES GROUP BY (SELECT MAX(ID) FROM ASSETS ) START WITH X"
            << " NODES GROUP BY (SELECT MAX(ID) FROM ASSETS ) " << 1;
        QTest::newRow("GROUP cuts although HAVING comes first")
            << "SELECT * FROM NODES HAVING COUNT(*) > (SELECT COUNT(*) FROM ASSETS ) GROUP BY X"
            << " NODES HAVING COUNT(*) > (SELECT COUNT(*) FROM ASSETS ) " << 1;
        QTest::newRow("HAVING cuts although ORDER comes first")
            << "SELECT * FROM NODES ORDER BY (SELECT COUNT(*) FROM ASSETS ) HAVING X"
            << " NODES ORDER BY (SELECT COUNT(*) FROM ASSETS ) " << 1;
        QTest::newRow("GROUP cuts before HAVING")
            << "SELECT ASSETTYPE, COUNT(*) FROM ASSETS GROUP BY ASSETTYPE HAVING COUNT(*) > 1"
            << " ASSETS " << 1;
        QTest::newRow("HAVING without GROUP") << "SELECT COUNT(*) FROM ASSETS HAVING COUNT(*) > 1"
                                              << " ASSETS " << 1;
        QTest::newRow("START WITH") << "SELECT ID FROM ASSETS START WITH ID = 1"
                                    << " ASSETS " << 1;
        QTest::newRow("START inside a table name")
            << "SELECT A.ID FROM ASSETS A JOIN RESTARTS R ON R.ID = A.ID"
            << " ASSETS A JOIN RE" << 1;
        QTest::newRow("GROUP inside a table name before ASSETS")
            << "SELECT A.ID FROM GROUPS G, ASSETS A"
            << " " << 0;
        QTest::newRow("WHERE inside a column name of the select list only")
            << "SELECT SOMEWHERE FROM ASSETS"
            << " ASSETS" << 4;
        QTest::newRow("first FROM inside a column name") << "SELECT FROM_DATE, ID FROM ASSETS"
                                                         << "_DATE, ID FROM ASSETS" << 4;
        QTest::newRow("first FROM inside a string literal") << "SELECT 'from' AS X FROM ASSETS"
                                                            << "' AS X FROM ASSETS" << 4;

        // Lines are joined with CR LF before the tests, and only blanks count as blanks.
        QTest::newRow("line break before FROM") << "SELECT *\nFROM ASSETS"
                                                << " ASSETS" << 4;
        QTest::newRow("line break before WHERE hides ASSETS")
            << "SELECT *\nFROM ASSETS\nWHERE ID = 1"
            << " ASSETS\r\n"
            << 0;
        QTest::newRow("blank and line break before WHERE") << "SELECT *\nFROM ASSETS \nWHERE ID = 1"
                                                           << " ASSETS \r\n"
                                                           << 1;
        QTest::newRow("line break after FROM hides ASSETS") << "SELECT * FROM\nASSETS"
                                                            << "\r\nASSETS" << 0;
        QTest::newRow("LF counts as CR LF: six characters") << "SELECT * FROM\nNODE"
                                                            << "\r\nNODE" << 4;
        QTest::newRow("lone CR counts as CR LF") << "SELECT * FROM\rNODE"
                                                 << "\r\nNODE" << 4;
        QTest::newRow("CR LF stays CR LF") << "SELECT * FROM\r\nNODE"
                                           << "\r\nNODE" << 4;
        QTest::newRow("tab after FROM hides ASSETS") << "SELECT * FROM\tASSETS"
                                                     << "\tASSETS" << 0;
        QTest::newRow("tabs around ASSETS") << "SELECT *\tFROM\tASSETS\tWHERE ID = 1"
                                            << "\tASSETS\t" << 0;
    }

    void fromPart() {
        QFETCH(QString, sql);
        const AssetsQueryAnalysis result = AnalyseAssetsQuery(sql, false);
        QTEST(result.fromPart, "fromPart");
        QTEST(result.fromPartTest, "test");
        QCOMPARE(result.readsAssets, result.fromPartTest != 0);
    }

    // The select part: the text before the first "FROM", tested only for ASSETS queries.
    void idSelected_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<bool>("idSelected");

        QTest::newRow("star") << "SELECT * FROM ASSETS" << true;
        QTest::newRow("ID ORDER BY ID") << "SELECT ID FROM ASSETS ORDER BY ID" << true;
        QTest::newRow("qualified name only") << "SELECT A.NAME FROM DBO.ASSETS A" << false;
        QTest::newRow("blank ID blank") << "SELECT NAME, ID FROM ASSETS" << true;
        QTest::newRow("blank ID comma") << "SELECT ID, NAME FROM ASSETS" << true;
        QTest::newRow("comma ID blank") << "SELECT NAME,ID FROM ASSETS" << true;
        QTest::newRow("comma ID comma") << "SELECT NAME,ID,ASSETTYPE FROM ASSETS" << true;
        QTest::newRow("quoted ID") << "SELECT \"ID\" FROM ASSETS" << true;
        QTest::newRow("quoted lower-case id") << "SELECT \"id\" FROM ASSETS" << true;
        QTest::newRow("lower case") << "select id from assets" << true;
        QTest::newRow("star of COUNT") << "SELECT COUNT(*) FROM ASSETS" << true;
        QTest::newRow("star in a product") << "SELECT PRICE*2 FROM ASSETS" << true;
        QTest::newRow("alias after ID") << "SELECT ID AS KEY FROM ASSETS" << true;
        QTest::newRow("DISTINCT ID") << "SELECT DISTINCT ID FROM ASSETS" << true;
        QTest::newRow("qualified A.ID") << "SELECT A.ID FROM ASSETS A" << false;
        QTest::newRow("IDX") << "SELECT IDX FROM ASSETS" << false;
        QTest::newRow("PID") << "SELECT PID FROM ASSETS" << false;
        QTest::newRow("ID in parentheses") << "SELECT MAX(ID) FROM ASSETS" << false;
        QTest::newRow("ID only in the WHERE clause")
            << "SELECT NAME FROM ASSETS WHERE ID = 1" << false;
        QTest::newRow("line break after ID") << "SELECT ID\nFROM ASSETS" << false;
        QTest::newRow("tabs around ID") << "SELECT\tID\tFROM ASSETS" << false;
        QTest::newRow("ID last, cut before a FROM inside a column name")
            << "SELECT FROM_DATE, ID FROM ASSETS" << false;
        QTest::newRow("not an ASSETS query: not tested") << "SELECT * FROM NODE" << false;
        QTest::newRow("ASSETSX: not tested") << "SELECT ID FROM ASSETSX" << false;
        QTest::newRow("NODES passes as ASSETS") << "SELECT ID FROM NODES" << true;
    }

    void idSelected() {
        QFETCH(QString, sql);
        QFETCH(bool, idSelected);
        const AssetsQueryAnalysis result = AnalyseAssetsQuery(sql, false);
        QCOMPARE(result.idSelected, idSelected);
        QCOMPARE(result.editableAssets, idSelected);
        QCOMPARE(result.sqlRewritten, false);
        QCOMPARE(result.sqlText, sql);
    }

    // The whole analysis as the query sees it: the flag, the text to run, and whether the
    // editor has to be closed.
    void analyse_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<bool>("appendId");
        QTest::addColumn<bool>("editable");
        QTest::addColumn<bool>("rewritten");
        QTest::addColumn<QString>("sqlText");

        QTest::newRow("star, append off")
            << "SELECT * FROM ASSETS" << false << true << false << "SELECT * FROM ASSETS";
        QTest::newRow("star, append on")
            << "SELECT * FROM ASSETS" << true << true << false << "SELECT * FROM ASSETS";
        QTest::newRow("owner-qualified, append on")
            << "SELECT A.NAME FROM DBO.ASSETS A" << true << true << true
            << "SELECT A.NAME,ID FROM DBO.ASSETS A";
        QTest::newRow("owner-qualified, append off: editor closed")
            << "SELECT A.NAME FROM DBO.ASSETS A" << false << false << false
            << "SELECT A.NAME FROM DBO.ASSETS A";
        QTest::newRow("ID ORDER BY ID") << "SELECT ID FROM ASSETS ORDER BY ID" << true << true
                                        << false << "SELECT ID FROM ASSETS ORDER BY ID";
        QTest::newRow("NODES is taken for ASSETS")
            << "SELECT * FROM NODES" << false << true << false << "SELECT * FROM NODES";
        QTest::newRow("ASSETSX, append on")
            << "SELECT NAME FROM ASSETSX" << true << false << false << "SELECT NAME FROM ASSETSX";
        QTest::newRow("no FROM, append on: never changed")
            << "select 1 + 1" << true << false << false << "select 1 + 1";
        QTest::newRow("join, WHERE naming the table, append on")
            << "SELECT N.NODENAME FROM NODES N WHERE N.OBJECTID IN (SELECT FKNODES FROM ASSETS )"
            << true << false << false
            << "SELECT N.NODENAME FROM NODES N WHERE N.OBJECTID IN (SELECT FKNODES FROM ASSETS )";
        QTest::newRow("algorithm example: literal upper-cased")
            << "select name from assets where x = 'a'" << true << true << true
            << "SELECT NAME,ID FROM ASSETS WHERE X = 'A'";
        QTest::newRow("algorithm example, append off")
            << "select name from assets where x = 'a'" << false << false << false
            << "select name from assets where x = 'a'";

        QTest::newRow("empty text") << "" << true << false << false << "";
        QTest::newRow("blanks only") << " \t\r\n" << true << false << false << " \t\r\n";
        QTest::newRow("lower case with ID: text kept as typed")
            << "select id, name from assets" << true << true << false
            << "select id, name from assets";
        QTest::newRow("qualified A.ID gets a second ID")
            << "SELECT A.ID FROM ASSETS A" << true << true << true
            << "SELECT A.ID,ID FROM ASSETS A";
        QTest::newRow("NODES without ID is rewritten too")
            << "select name from nodes" << true << true << true << "SELECT NAME,ID FROM NODES";
        QTest::newRow("blanks around FROM collapse")
            << "SELECT NAME    FROM ASSETS  " << true << true << true
            << "SELECT NAME,ID FROM ASSETS";
        QTest::newRow("lines around FROM collapse, later breaks become CR LF")
            << "  select name\n  from assets \nwhere tag = 'b:c'\n"
            << true << true << true << "SELECT NAME,ID FROM ASSETS \r\nWHERE TAG = 'B:C'";
        QTest::newRow("line break after ID: ID appended again")
            << "SELECT ID\r\nFROM ASSETS" << true << true << true << "SELECT ID,ID FROM ASSETS";
        QTest::newRow("parameter names are upper-cased too")
            << "select name from assets where assettype = :type" << true << true << true
            << "SELECT NAME,ID FROM ASSETS WHERE ASSETTYPE = :TYPE";
        QTest::newRow("accented letters upper-cased, sharp s kept")
            << "select name from assets where owner = 'Straße été'" << true << true << true
            << "SELECT NAME,ID FROM ASSETS WHERE OWNER = 'STRAßE ÉTÉ'";
        QTest::newRow("FROM inside a column name: ID before it")
            << "SELECT FROM_DATE, ID FROM ASSETS" << true << true << true
            << "SELECT,ID FROM_DATE, ID FROM ASSETS";
        QTest::newRow("FROM inside a literal: ID inside it")
            << "SELECT 'from' AS X FROM ASSETS" << true << true << true
            << "SELECT ',ID FROM' AS X FROM ASSETS";
        QTest::newRow("empty select list")
            << "SELECT FROM ASSETS" << true << true << true << "SELECT,ID FROM ASSETS";
        QTest::newRow("line break before WHERE: not an ASSETS query")
            << "SELECT NAME\nFROM ASSETS\nWHERE ID = 1" << true << false << false
            << "SELECT NAME\nFROM ASSETS\nWHERE ID = 1";
        QTest::newRow("GROUP BY, append on")
            << "select assettype, count(name) from assets group by assettype" << true << true
            << true << "SELECT ASSETTYPE, COUNT(NAME),ID FROM ASSETS GROUP BY ASSETTYPE";
    }

    void analyse() {
        QFETCH(QString, sql);
        QFETCH(bool, appendId);
        QFETCH(bool, editable);
        QFETCH(bool, rewritten);
        const AssetsQueryAnalysis result = AnalyseAssetsQuery(sql, appendId);
        QCOMPARE(result.editableAssets, editable);
        QCOMPARE(result.closeEditor(), !editable);
        QCOMPARE(result.sqlRewritten, rewritten);
        QTEST(result.sqlText, "sqlText");
        if (rewritten) {
            QVERIFY(result.readsAssets);
            QVERIFY(!result.idSelected);
            QCOMPARE(db::UpperCaseSql(result.sqlText), result.sqlText);
        }
    }

    // The second run sees the rewritten text and finds ID where it was put.
    void rewrittenTextIsEditableAsIs_data() {
        QTest::addColumn<QString>("sql");
        QTest::newRow("plain") << "select name from assets where x = 'a'";
        QTest::newRow("owner-qualified") << "SELECT A.NAME FROM DBO.ASSETS A";
        QTest::newRow("multi-line") << "select name\nfrom assets \nwhere tag = 'b'";
    }

    void rewrittenTextIsEditableAsIs() {
        QFETCH(QString, sql);
        const AssetsQueryAnalysis first = AnalyseAssetsQuery(sql, true);
        QVERIFY(first.sqlRewritten);
        const AssetsQueryAnalysis second = AnalyseAssetsQuery(first.sqlText, true);
        QVERIFY(second.editableAssets);
        QVERIFY(second.idSelected);
        QVERIFY(!second.sqlRewritten);
        QCOMPARE(second.sqlText, first.sqlText);
    }

    void appendIdColumn_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("appended");
        QTest::addColumn<QString>("result");

        QTest::newRow("algorithm example") << "SELECT NAME FROM ASSETS WHERE X = 'A'" << true
                                           << "SELECT NAME,ID FROM ASSETS WHERE X = 'A'";
        QTest::newRow("owner-qualified")
            << "SELECT A.NAME FROM DBO.ASSETS A" << true << "SELECT A.NAME,ID FROM DBO.ASSETS A";
        QTest::newRow("no FROM: unchanged") << "SELECT 1" << false << "SELECT 1";
        QTest::newRow("empty") << "" << false << "";
        QTest::newRow("case-sensitive: lower-case from is not found")
            << "select name from assets" << false << "select name from assets";
        QTest::newRow("head and tail trimmed, inner blanks kept")
            << "  SELECT NAME   FROM   ASSETS  \r\n"
            << true << "SELECT NAME,ID FROM   ASSETS";
        QTest::newRow("line break before FROM")
            << "SELECT NAME\r\nFROM ASSETS" << true << "SELECT NAME,ID FROM ASSETS";
        QTest::newRow("nothing before FROM") << "FROM ASSETS" << true << ",ID FROM ASSETS";
        QTest::newRow("first FROM inside a word")
            << "SELECT FROMAGE FROM T" << true << "SELECT,ID FROMAGE FROM T";
        QTest::newRow("FROM at the very end")
            << "SELECT NAME FROM" << true << "SELECT NAME,ID FROM";
    }

    void appendIdColumn() {
        QFETCH(QString, text);
        QFETCH(bool, appended);
        QCOMPARE(AppendIdColumn(text), appended);
        QTEST(text, "result");
    }

    void longStatements_data() {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<bool>("appendId");
        QTest::addColumn<int>("test");
        QTest::addColumn<bool>("editable");
        QTest::addColumn<bool>("rewritten");

        QTest::newRow("10,000 characters, ID selected")
            << longStatement(10000, QStringLiteral("ID"),
                             QStringLiteral(" FROM ASSETS WHERE NAME = 'X'"))
            << false << 1 << true << false;
        QTest::newRow("10,000 characters, ID appended")
            << longStatement(10000, QStringLiteral("NAME"),
                             QStringLiteral(" FROM ASSETS ORDER BY NAME"))
            << true << 1 << true << true;
        QTest::newRow("10,000 characters, ASSETS last of a long table list") << [] {
            QString sql = QStringLiteral("SELECT * FROM T0000");
            for (int i = 1; sql.size() < 10000 - 7; ++i)
                sql += QStringLiteral(",T%1").arg(i % 10000, 4, 10, QLatin1Char('0'));
            return sql + QStringLiteral(" ASSETS");
        }() << false << 4 << true << false;
        QTest::newRow("10,000 characters, not ASSETS")
            << longStatement(10000, QStringLiteral("ID"), QStringLiteral(" FROM NODES N ,X"))
            << true << 0 << false << false;
    }

    void longStatements() {
        QFETCH(QString, sql);
        QFETCH(bool, appendId);
        QFETCH(bool, rewritten);
        QVERIFY(sql.size() >= 10000);
        const AssetsQueryAnalysis result = AnalyseAssetsQuery(sql, appendId);
        QTEST(result.fromPartTest, "test");
        QTEST(result.editableAssets, "editable");
        QCOMPARE(result.sqlRewritten, rewritten);
        if (rewritten) {
            QCOMPARE(result.sqlText.size(), withSelectBlanksTrimmed(sql).size() + 3);
            QVERIFY(result.sqlText.contains(QLatin1String("NAME,ID FROM ASSETS")));
        } else {
            QCOMPARE(result.sqlText, sql);
        }
    }

    void upperCase_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("upper");

        QTest::newRow("ASCII") << "select a_1 from t"
                               << "SELECT A_1 FROM T";
        QTest::newRow("accents") << "été à ñ"
                                 << "ÉTÉ À Ñ";
        QTest::newRow("sharp s keeps its length") << "straße"
                                                  << "STRAßE";
        QTest::newRow("dotless i") << "ı"
                                   << "I";
        QTest::newRow("outside the basic plane")
            << QString::fromUcs4(U"\U00010428x") << QString::fromUcs4(U"\U00010400X");
        QTest::newRow("controls untouched") << "a\r\n\tb"
                                            << "A\r\n\tB";
        QTest::newRow("empty") << ""
                               << "";
    }

    void upperCase() {
        QFETCH(QString, text);
        const QString upper = db::UpperCaseSql(text);
        QTEST(upper, "upper");
        QCOMPARE(upper.size(), text.size());
    }

    void trim_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("trimmed");

        QTest::newRow("blanks") << "  SELECT 1  "
                                << "SELECT 1";
        QTest::newRow("line breaks and tabs") << "\r\n\tSELECT 1\t\r\n"
                                              << "SELECT 1";
        QTest::newRow("other control characters")
            << QStringLiteral("\x01SELECT 1\x1f\x7f") << "SELECT 1";
        QTest::newRow("inner blanks kept") << " A  B "
                                           << "A  B";
        QTest::newRow("no-break space kept")
            << QStringLiteral("\u00a0A\u00a0") << QStringLiteral("\u00a0A\u00a0");
        QTest::newRow("blanks only") << " \t\r\n "
                                     << "";
        QTest::newRow("empty") << ""
                               << "";
    }

    void trim() {
        QFETCH(QString, text);
        QTEST(db::TrimBlanks(text), "trimmed");
    }
};

QTEST_APPLESS_MAIN(TestSqlAnalysis)
#include "test_sqlanalysis.moc"
