// The imports of asset and asset-type files, over every test database: the file format,
// the error policies and their counts and messages, and the batched writing checked
// against writing one row at a time.

#include "assets/resulttablemodel.h"
#include "core/dateformat.h"
#include "core/log.h"
#include "interchange/delimited.h"
#include "interchange/export.h"
#include "interchange/importer.h"
#include "support/queryrows.h"
#include "support/testsupport.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using interchange::ImportSettings;
using testsupport::TestDatabase;

namespace {

// What an import told its user: the boxes, and the status line last shown.
class Recorder : public interchange::Progress {
public:
    QStringList boxes;

    void status(const QString&) override {}
    void setMaximum(qint64) override {}
    void setPosition(qint64) override {}
    void message(const QString& title, const QString& text,
                 interchange::MessageIcon icon) override {
        boxes << title + QStringLiteral(": ") + text +
                     (icon == interchange::MessageIcon::Error ? QStringLiteral(" (!)") : QString());
    }
    void beep() override { boxes << QStringLiteral("beep"); }
};

struct Outcome {
    qint64 imported = 0;
    qint64 errors = 0;
    QStringList boxes;
    QStringList log;
    QString rows;
};

void dropTables(db::odbc::Connection& connection) {
    for (const char* table : {"ASSETS", "ASSETTYPES", "NODES"})
        try {
            connection.execute(QStringLiteral("DROP TABLE ") + QLatin1String(table));
        } catch (const std::exception&) {
        }
}

void createSchema(db::odbc::Connection& connection, const TestDatabase& database) {
    dropTables(connection);
    const QString key = database.is("postgresql") ? "SERIAL PRIMARY KEY"
                        : database.is("mariadb")  ? "INTEGER AUTO_INCREMENT PRIMARY KEY"
                                                  : "INTEGER PRIMARY KEY";
    connection.execute(QStringLiteral("CREATE TABLE ASSETS (ID %1, ASSETTYPE VARCHAR(50), "
                                      "INFO VARCHAR(255), ASSETID VARCHAR(50) UNIQUE, "
                                      "NODENAME VARCHAR(64), FKNODES INTEGER, PURCHDATE DATE, "
                                      "ITEMVALUE DOUBLE PRECISION, QTY INTEGER DEFAULT 1)%2")
                           .arg(key, database.tableOptions()));
    connection.execute(QStringLiteral("CREATE TABLE ASSETTYPES (ASSETTYPE VARCHAR(50) PRIMARY KEY, "
                                      "NODEREQUIRED VARCHAR(5))%1")
                           .arg(database.tableOptions()));
    connection.execute(
        QStringLiteral("CREATE TABLE NODES (OBJECTID INTEGER PRIMARY KEY, NODENAME VARCHAR(64))%1")
            .arg(database.tableOptions()));
    connection.execute(QStringLiteral("INSERT INTO ASSETTYPES VALUES ('PC', 'F'), "
                                      "('Server', 'True'), ('pc-lower', 't'), ('Router', 'Yes')"));
    connection.execute(QStringLiteral("INSERT INTO NODES VALUES (7, 'alpha'), (8, 'UNSPECIFIED'), "
                                      "(9, 'O''Brien')"));
}

// The log's messages without their time stamps.
QStringList logMessages(const QString& path) {
    static const QRegularExpression stamp(QStringLiteral(R"(^\S+ \S+ > )"));
    QStringList messages;
    for (QString line :
         QString::fromUtf8(testsupport::ReadFile(path)).split(QStringLiteral(" \r\n")))
        if (!line.isEmpty())
            messages << line.remove(stamp);
    return messages;
}

ImportSettings settingsFor(const QString& path, int onError = interchange::OnErrorIgnore) {
    ImportSettings settings;
    settings.FileName = path;
    settings.Delimiter = QStringLiteral(";");
    settings.Node = QStringLiteral("UNSPECIFIED");
    settings.OnError = onError;
    return settings;
}

QString sortedRows(const QString& rows) {
    QStringList sorted = rows.split(u';');
    sorted.sort();
    return sorted.join(u';');
}

const QString AssetColumns =
    QStringLiteral("ASSETTYPE, INFO, ASSETID, NODENAME, FKNODES, PURCHDATE, ITEMVALUE, QTY");

} // namespace

class TestImport : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString writeFile(const QByteArray& content) {
        static int count = 0;
        const QString path = m_dir.filePath(QStringLiteral("import%1.txt").arg(++count));
        testsupport::WriteFile(path, content);
        return path;
    }

    Outcome import(const TestDatabase& database, ImportSettings settings, int rowsPerStatement,
                   bool keepSchema = false) {
        db::odbc::Connection connection;
        connection.open(database.connectionString());
        if (!keepSchema)
            createSchema(connection, database);
        const QString log = m_dir.filePath(QStringLiteral("import.log"));
        QFile::remove(log);
        core::SetLogFilePath(log);
        Recorder recorder;
        const interchange::ImportResult result =
            settings.TypesMode
                ? interchange::ImportAssetTypes(connection, settings, recorder, true,
                                                rowsPerStatement)
                : interchange::ImportAssets(connection, settings, recorder, rowsPerStatement);
        Outcome outcome{result.imported, result.errors, recorder.boxes, logMessages(log), {}};
        // Sorted here: databases sort NULLs and letter case differently.
        outcome.rows = sortedRows(testsupport::RowsText(
            connection,
            settings.TypesMode
                ? QStringLiteral(
                      "select ASSETTYPE, NODEREQUIRED from ASSETTYPES order by ASSETTYPE")
                : QStringLiteral("select %1 from ASSETS").arg(AssetColumns)));
        return outcome;
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        testsupport::UseTemporarySettings();
        core::ApplyDateFormat(QStringLiteral("dd.mm.yyyy"), QLocale(QLocale::English));
    }

    void splitDelimited_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("delimiter");
        QTest::addColumn<QStringList>("pieces");
        testsupport::AddRow("empty piece kept", QStringLiteral("a;;b"), QStringLiteral(";"),
                            QStringList{"a", "", "b"});
        testsupport::AddRow("trailing delimiter", QStringLiteral("a;b;"), QStringLiteral(";"),
                            QStringList{"a", "b", ""});
        testsupport::AddRow("whole-string delimiter", QStringLiteral("a|b||c|"),
                            QStringLiteral("||"), QStringList{"a|b", "c|"});
        testsupport::AddRow("no text", QString(), QStringLiteral(";"), QStringList{});
        testsupport::AddRow("no delimiter", QStringLiteral("a;b"), QString(), QStringList{});
    }

    void splitDelimited() {
        QFETCH(QString, text);
        QFETCH(QString, delimiter);
        QFETCH(QStringList, pieces);
        QStringList list{QStringLiteral("stale")};
        interchange::SplitDelimited(text, delimiter, list);
        QCOMPARE(list, pieces);
    }

    void isTrueValue() {
        for (const char* text : {"T", "Yes", "1", "\xC3\x84", "\xC4x"})
            QVERIFY2(interchange::IsTrueValue(QByteArray(text)), text);
        for (const char* text : {"t", "y", "False", "0", ""})
            QVERIFY2(!interchange::IsTrueValue(QByteArray(text)), text);
        QVERIFY(!interchange::IsTrueValue(std::nullopt));
    }

    // Each file is imported with "Continue import" unless the row says otherwise.
    void assetFiles_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("startRow");
        QTest::addColumn<int>("onError");
        QTest::addColumn<QString>("boxes");
        QTest::addColumn<QString>("rows");
        const QString none;
        const char* header = "AssetType;Info;AssetId;NodeName;PurchDate;ItemValue;Qty\r\n";
        testsupport::AddDatabaseRow(
            "comments, blank lines, empty values and the node rules",
            QByteArray("// Assets Export File\r\n# more\r\n\r\n") + header +
                "PC;a;A1;;27.02.2017;11890.5;\r\n"
                "\r\n"
                "Server;b;A2;;;;3\r\n"
                "SERVER;c;A3;alpha;;2.5;4;ignored;\r\n"
                "Router;d;A4;O'Brien;;;\r\n",
            1, 0, QStringLiteral("Import Results: 4 row(s) imported, 0 error(s) occurred."),
            QStringLiteral("PC,a,A1,,,2017-02-27,11890.5,1;Router,d,A4,O'Brien,,,,1;"
                           "SERVER,c,A3,alpha,7,,2.5,4;Server,b,A2,UNSPECIFIED,8,,,3"));
        ;
        testsupport::AddDatabaseRow(
            "start row 3: lines 1 and 2 are ignored whatever they hold",
            QByteArray("ASSETTYPE;INFO\nPC;x\n") + "AssetType;Info\nPC;y\n", 3, 0,
            QStringLiteral("Import Results: 1 row(s) imported, 0 error(s) occurred."),
            QStringLiteral("PC,y,,,,,,1"));
        testsupport::AddDatabaseRow(
            "no ASSETTYPE column", QByteArray("Info;AssetId\nx;1\n"), 1, 2,
            QStringLiteral("Error: field ASSETTYPE not found. (!)|"
                           "Import Results: 0 row(s) imported, 0 error(s) occurred."),
            none);
        testsupport::AddDatabaseRow(
            "27 rows, 2 failing while assigned, are still written",
            QByteArray("AssetType;Info;Qty\n") +
                [] {
                    QByteArray rows;
                    for (int row = 1; row <= 27; ++row)
                        rows += "PC;" + QByteArray::number(100 + row) + ";" +
                                (row == 5    ? "five"
                                 : row == 20 ? ""
                                             : QByteArray::number(row)) +
                                (row == 20 ? "x;\n" : "\n");
                    return rows;
                }(),
            1, 0, QStringLiteral("Import Results: 25 row(s) imported, 2 error(s) occurred."),
            QString());
        testsupport::AddDatabaseRow(
            "stop: the row that failed and those before it are kept",
            QByteArray(header) + "PC;a;A1;;;;\r\nPC;b;A2;;nodate;;\r\nPC;c;A3;;;;\r\n", 1, 1,
            QStringLiteral("Error: 'nodate' is not a valid date|"
                           "Import Results: 1 row(s) imported, 1 error(s) occurred."),
            QStringLiteral("PC,a,A1,,,,,1;PC,b,A2,,,,,1"));
        testsupport::AddDatabaseRow(
            "reject: the failing last post undoes the import",
            QByteArray(header) + "PC;a;A1;;;;\nPC;b;A2;;;;\nPC;c;A1;;;;\n", 1, 2,
            QStringLiteral("Error: * (!)|Import Results: 0 row(s) imported, 0 error(s) occurred."),
            none);
        testsupport::AddDatabaseRow(
            "a failing post counts against the next row, which is not written",
            QByteArray(header) + "PC;a;A1;;;;\nPC;b;A1;;;;\nPC;c;A3;;;;\nPC;d;A4;;;;\n", 1, 0,
            QStringLiteral("Import Results: 3 row(s) imported, 1 error(s) occurred."),
            QStringLiteral("PC,a,A1,,,,,1;PC,d,A4,,,,,1"));
        testsupport::AddDatabaseRow(
            "short row, CR line ends, byte-order mark and Latin-1",
            QByteArray("\xEF\xBB\xBF") +
                "AssetType;Info;Qty\rPC;Z\xC3\xBCrich;\rPC\rPC;M\xFCnchen;2",
            1, 0, QStringLiteral("Import Results: 2 row(s) imported, 1 error(s) occurred."),
            QStringLiteral("PC,,,,,,,1;PC,München,,,,,,2;PC,Zürich,,,,,,1"));
    }

    void assetFiles() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        QFETCH(QByteArray, file);
        QFETCH(int, startRow);
        QFETCH(int, onError);
        QFETCH(QString, boxes);
        QFETCH(QString, rows);
        ImportSettings settings = settingsFor(writeFile(file), onError);
        settings.StartRow = startRow;
        const Outcome outcome = import(database, settings, interchange::DefaultRowsPerStatement);
        const QString shown = outcome.boxes.join(u'|');
        const QString pattern =
            QRegularExpression::escape(boxes).replace(QStringLiteral("\\*"), QStringLiteral(".*"));
        QVERIFY2(QRegularExpression(QLatin1Char('^') + pattern + QLatin1Char('$'),
                                    QRegularExpression::DotMatchesEverythingOption)
                     .match(shown)
                     .hasMatch(),
                 qPrintable(shown));
        if (!rows.isNull())
            QCOMPARE(outcome.rows, rows);
        QCOMPARE(outcome.log.first(), QStringLiteral("Starting import..."));
        QCOMPARE(outcome.log.last(), outcome.boxes.last().section(QStringLiteral(": "), 1));
    }

    void assetTypeFiles_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("boxes");
        QTest::addColumn<QString>("rows");
        testsupport::AddDatabaseRow(
            "existing types are skipped, ignoring case",
            QByteArray("AssetType;NodeRequired\nPC;T\nPrinter;F\nPc;T\n"),
            QStringLiteral("Asset Types Import Results: 1 asset type(s) imported, 0 error(s) "
                           "occurred."),
            QStringLiteral("PC,F;Printer,F;Router,Yes;Server,True;pc-lower,t"));
        testsupport::AddDatabaseRow(
            "no ASSETTYPE column", QByteArray("Type;NodeRequired\nPrinter;F\n"),
            QStringLiteral("Error: field ASSETTYPE not found. (!)|Asset Types Import Results: 0 "
                           "asset type(s) imported, 0 error(s) occurred."),
            QStringLiteral("PC,F;Router,Yes;Server,True;pc-lower,t"));
    }

    void assetTypeFiles() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        QFETCH(QByteArray, file);
        QFETCH(QString, boxes);
        QFETCH(QString, rows);
        ImportSettings settings = settingsFor(writeFile(file));
        settings.TypesMode = true;
        const Outcome outcome = import(database, settings, interchange::DefaultRowsPerStatement);
        QCOMPARE(outcome.boxes.join(u'|'), boxes);
        QCOMPARE(outcome.rows, rows);
        QCOMPARE(outcome.log.first(), QStringLiteral("Starting asset types import..."));
    }

    void badFiles_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("error");
        auto file = [this](const QByteArray& content) { return writeFile(content); };
        testsupport::AddRow("missing", m_dir.filePath(QStringLiteral("gone.txt")),
                            QStringLiteral("cannot open file."));
        testsupport::AddRow("empty", file(""), QStringLiteral("no field names found."));
        testsupport::AddRow("comments only", file("// header\n#\n"),
                            QStringLiteral("no field names found."));
        testsupport::AddRow("binary",
                            file(QByteArray("\x7f"
                                            "ELF\x02\x01\0\0\n\xff\xfe",
                                            12)),
                            QStringLiteral("field ASSETTYPE not found."));
        testsupport::AddRow("delimiter that never occurs", file("AssetType,Info\nPC,x\n"),
                            QStringLiteral("field ASSETTYPE not found."));
        testsupport::AddRow("header longer than a line may be",
                            file("AssetType;" + QByteArray(70000, 'x') + "\nPC;x\n"),
                            QStringLiteral("Line 1 is longer than 65534 characters."));
    }

    // Nothing is written; the error is shown with its icon, then the result.
    void badFiles() {
        QFETCH(QString, path);
        QFETCH(QString, error);
        const TestDatabase sqlite = testsupport::TestDatabases().front();
        const Outcome outcome =
            import(sqlite, settingsFor(path), interchange::DefaultRowsPerStatement);
        QCOMPARE(outcome.boxes,
                 (QStringList{
                     QStringLiteral("Error: ") + error + QStringLiteral(" (!)"),
                     QStringLiteral("Import Results: 0 row(s) imported, 0 error(s) occurred.")}));
        QCOMPARE(outcome.rows, QString());
    }

    void longLineIsARowError() {
        const TestDatabase sqlite = testsupport::TestDatabases().front();
        const QString path =
            writeFile("AssetType;Info\nPC;a\nPC;" + QByteArray(70000, 'x') + "\nPC;b\n");
        const Outcome outcome = import(sqlite, settingsFor(path, interchange::OnErrorStop),
                                       interchange::DefaultRowsPerStatement);
        QCOMPARE(outcome.boxes.first(),
                 QStringLiteral("Error: A line is longer than 65534 characters."));
        QCOMPARE(outcome.rows, QStringLiteral("PC,a,,,,,,1"));
    }

    // Batches must give what writing each row as it is posted gives: failures at random
    // lines, at batch boundaries, at the last line and in the final post.
    void batchesAgreeWithRowByRow_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<int>("onError");
        QTest::addColumn<quint32>("seed");
        for (const int onError : {0, 1, 2})
            for (const quint32 seed : {1u, 2u, 3u})
                testsupport::AddDatabaseRow(
                    qPrintable(QStringLiteral("policy %1, seed %2").arg(onError).arg(seed)),
                    onError, seed);
    }

    void batchesAgreeWithRowByRow() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        QFETCH(int, onError);
        QFETCH(quint32, seed);
        QRandomGenerator random(seed);
        const int rowCount = 250;
        QSet<int> failing{7, 8, 99, 100, 101, 199, 200, rowCount};
        while (failing.size() < 16)
            failing.insert(1 + int(random.bounded(rowCount)));
        QByteArray file = "AssetType;Info;AssetId;NodeName;PurchDate;ItemValue;Qty\n";
        for (int row = 1; row <= rowCount; ++row) {
            const bool fails = failing.contains(row) && (onError == 0 || random.bounded(4) == 0);
            const int kind = fails ? int(random.bounded(3)) : -1;
            file += (row % 5 == 0 ? "Server;" : "PC;") + QByteArray::number(100000 + row) + ";" +
                    // A repeated asset id fails the post; the others fail as they are assigned.
                    (kind == 0 ? "A1" : "A" + QByteArray::number(row)) + ";" +
                    (row % 3 == 0 ? "alpha" : "") + ";" +
                    (kind == 1 ? "32.01.2020"
                     : row % 4 ? "01.02.2020"
                               : "") +
                    ";" + (kind == 2 ? "12,5x" : QByteArray::number(row) + ".25") + ";" +
                    (row % 7 ? QByteArray::number(row % 9) : QByteArray()) + "\n";
            if (row % 50 == 0)
                file += "\n";
        }
        const ImportSettings settings = settingsFor(writeFile(file), onError);
        const Outcome reference = import(database, settings, 1);
        for (const int rowsPerStatement : {7, 100}) {
            const Outcome batched = import(database, settings, rowsPerStatement);
            QCOMPARE(batched.imported, reference.imported);
            QCOMPARE(batched.errors, reference.errors);
            QCOMPARE(batched.boxes, reference.boxes);
            QCOMPARE(batched.log, reference.log);
            QCOMPARE(batched.rows, reference.rows);
        }
    }

    // What the export writes, the import reads back whole, in the user's own formats: this
    // function runs again under a German and a British locale (see CMakeLists.txt).
    void roundTrip_data() { testsupport::AddDatabaseRows(); }

    void roundTrip() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        core::ApplyDateFormat(QString());
        db::odbc::Connection connection;
        connection.open(database.connectionString());
        createSchema(connection, database);
        connection.execute(QStringLiteral(
            "INSERT INTO ASSETS (ASSETTYPE, INFO, ASSETID, NODENAME, FKNODES, PURCHDATE, "
            "ITEMVALUE, QTY) VALUES ('Server', 'Zürich ✓ 東京', 'A1', 'alpha', 7, '2017-02-27', "
            "11890.75, 2), ('PC', NULL, 'A2', NULL, NULL, '1999-12-31', 0.1, 1), "
            "('PC', 'x', 'A3', NULL, NULL, NULL, -1234567.5, 0)"));
        const QString assetsSql = QStringLiteral("select %1 from ASSETS").arg(AssetColumns);
        const QString typesSql = QStringLiteral("select ASSETTYPE, NODEREQUIRED from ASSETTYPES");
        const QString assets = sortedRows(testsupport::RowsText(connection, assetsSql));
        const QString types = sortedRows(testsupport::RowsText(connection, typesSql));
        const QString assetFile = m_dir.filePath(QStringLiteral("roundtrip.txt"));
        const QString typeFile = m_dir.filePath(QStringLiteral("roundtrip.aty"));
        Recorder recorder;
        {
            db::odbc::Statement query(connection);
            query.executeDirect(QStringLiteral("select * from ASSETS"));
            assets::ResultTableModel grid;
            grid.open(std::move(query));
            interchange::ExportAssets(connection, assetFile, QStringLiteral(";"), nullptr, true,
                                      &grid, {}, recorder);
        }
        interchange::ExportAssetTypes(connection, typeFile, QStringLiteral(";"), nullptr, recorder);
        connection.execute(QStringLiteral("DELETE FROM ASSETS"));
        connection.execute(QStringLiteral("DELETE FROM ASSETTYPES"));
        interchange::ImportAssets(connection, settingsFor(assetFile), recorder);
        ImportSettings typeSettings = settingsFor(typeFile);
        typeSettings.TypesMode = true;
        interchange::ImportAssetTypes(connection, typeSettings, recorder, true);
        QCOMPARE(recorder.boxes,
                 (QStringList{"Export Result: 3 record(s) have been exported.",
                              "Export Result: 4 asset type record(s) exported.",
                              "Import Results: 3 row(s) imported, 0 error(s) occurred.",
                              "Asset Types Import Results: 4 asset type(s) imported, 0 error(s) "
                              "occurred."}));
        QCOMPARE(sortedRows(testsupport::RowsText(connection, assetsSql)), assets);
        QCOMPARE(sortedRows(testsupport::RowsText(connection, typesSql)), types);
        core::ApplyDateFormat(QStringLiteral("dd.mm.yyyy"), QLocale(QLocale::English));
    }

    void cleanupTestCase() {
        for (const TestDatabase& database : testsupport::AvailableDatabases()) {
            db::odbc::Connection connection;
            connection.open(database.connectionString());
            dropTables(connection);
        }
    }
};

QTEST_GUILESS_MAIN(TestImport)
#include "test_import.moc"
