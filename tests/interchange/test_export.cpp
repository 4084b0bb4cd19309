// The grid's output: delimited export files of assets and asset types over real databases
// (file format, selected rows, messages, failures), the export dialog and its stored
// settings, and the grid's HTML rows, pages and templates.

#include "assets/resulttablemodel.h"
#include "assets/ui/dbgridrange.h"
#include "core/dateformat.h"
#include "core/ui/messages.h"
#include "interchange/export.h"
#include "interchange/html.h"
#include "interchange/ui/exportform.h"
#include "interchange/ui/statusprogress.h"
#include "support/testsupport.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using testsupport::AddDatabaseRow;
using testsupport::AddRow;
using testsupport::PrintedBy;
using testsupport::TestDatabase;

namespace {

using Rows = std::vector<int>;

const QString AllAssets = "ID;ASSETTYPE;NAME;PURCHDATE\r\n"
                          "5;Monitor;Desk 1;05/03/2021;\r\n"
                          "7;PC;Desk 3;;\r\n"
                          "12;PC;;31/12/2020;\r\n"
                          "20;Printer;a;b;;\r\n";

// A main window with a status bar, as the export reports to it.
struct Window {
    QMainWindow window;
    QLabel* statusLine = new QLabel(&window);
    Window() {
        window.statusBar()->addWidget(statusLine, 1);
        window.resize(600, 400);
    }
};

// PostgreSQL names the columns of unquoted identifiers in lower case.
QByteArray namesAsReturned(const QByteArray& file, const TestDatabase& database) {
    if (!database.is("postgresql"))
        return file;
    QList<QByteArray> lines = file.split('\n');
    for (QByteArray& line : lines)
        if (!line.startsWith('/') && !line.startsWith('#')) {
            line = line.toLower();
            break;
        }
    return lines.join('\n');
}

} // namespace

class TestExport : public QObject {
    Q_OBJECT

    db::odbc::Connection m_connection;
    QTemporaryDir m_folder;

    // Private tables of this connection: four assets (a NULL name, a NULL date, a name
    // holding the delimiter) and two asset types. MariaDB keeps table names as written.
    void connect(const TestDatabase& database) {
        m_connection.open(database.connectionString());
        m_connection.execute(QStringLiteral("CREATE TEMPORARY TABLE assets (ID INTEGER PRIMARY "
                                            "KEY, ASSETTYPE VARCHAR(50), NAME VARCHAR(40), "
                                            "PURCHDATE DATE)%1")
                                 .arg(database.tableOptions()));
        m_connection.execute(
            QStringLiteral("CREATE TEMPORARY TABLE ASSETTYPES (ASSETTYPE VARCHAR(50) PRIMARY "
                           "KEY, NODEREQUIRED VARCHAR(10))"));
        m_connection.execute(QStringLiteral(
            "INSERT INTO assets VALUES (5, 'Monitor', 'Desk 1', '2021-03-05'), (7, 'PC', 'Desk "
            "3', NULL), (12, 'PC', NULL, '2020-12-31'), (20, 'Printer', 'a;b', NULL)"));
        m_connection.execute(
            QStringLiteral("INSERT INTO ASSETTYPES VALUES ('PC', 'True'), ('Printer', 'False')"));
    }

    QString path(const QString& name) const { return m_folder.filePath(name); }

private Q_SLOTS:
    void initTestCase() {
        testsupport::UseTemporarySettings();
        ui::SetUnattended(true);
        core::ApplyDateFormat(QStringLiteral("dd/mm/yyyy"));
        QVERIFY(m_folder.isValid());
    }

    void cleanup() { m_connection.close(); }

    // The file and the boxes of an export, from the results grid of `gridSql` with
    // `selected` grid rows selected in that order.
    void exportFile_data() {
        QTest::addColumn<TestDatabase>("database");
        QTest::addColumn<bool>("typesMode");
        QTest::addColumn<QString>("gridSql");
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("delimiter");
        QTest::addColumn<QStringList>("header");
        QTest::addColumn<bool>("allRecords");
        QTest::addColumn<Rows>("selected");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("printed");
        const QString grid = "select ID, NAME from assets order by ID";
        const QStringList none;
        AddDatabaseRow("every asset", false, grid, QString(), ";", none, true, Rows{2},
                       AllAssets.toUtf8(), "Export Result: 4 record(s) have been exported.\n");
        AddDatabaseRow("selected rows with a header, two-character delimiter", false, grid,
                       QString(), "||", QStringList{"// Assets Export File", "# exported"}, false,
                       Rows{2, 0},
                       QByteArray("// Assets Export File\r\n# exported\r\nID||ASSETTYPE||NAME||"
                                  "PURCHDATE\r\n5||Monitor||Desk 1||05/03/2021||\r\n12||PC||||"
                                  "31/12/2020||\r\n"),
                       "Export Result: 2 record(s) have been exported.\n");
        AddDatabaseRow("nothing selected", false, grid, QString(), ";", none, false, Rows{},
                       QByteArray(),
                       "Assets Export Error: No records to export (not selected?).\n");
        AddDatabaseRow("no rows", false, grid, "delete from assets", ";", none, true, Rows{},
                       QByteArray(), "Assets Export Error: No records to export - not found.\n");
        AddDatabaseRow("grid without ID", false, QString("select NAME from assets"), QString(), ";",
                       none, true, Rows{}, QByteArray(), "");
        AddDatabaseRow("asset types", true, grid, QString(), "\t", none, true, Rows{},
                       QByteArray("ASSETTYPE\tNODEREQUIRED\r\nPC\tTrue\t\r\nPrinter\tFalse\t\r\n"),
                       "Export Result: 2 asset type record(s) exported.\n");
        AddDatabaseRow("no asset types", true, grid, "delete from ASSETTYPES", ";", none, true,
                       Rows{}, QByteArray(),
                       "Asset Types Export Error: No asset type records to export  - not "
                       "found.\n");
    }
    void exportFile() {
        QFETCH(TestDatabase, database);
        QFETCH(bool, typesMode);
        QFETCH(QString, gridSql);
        QFETCH(QString, before);
        QFETCH(QString, delimiter);
        QFETCH(QStringList, header);
        QFETCH(bool, allRecords);
        QFETCH(Rows, selected);
        QFETCH(QByteArray, file);
        QFETCH(QString, printed);
        QUILLET_REQUIRE_DATABASE(database);
        connect(database);
        assets::ResultTableModel result;
        db::odbc::Statement query(m_connection);
        query.executeDirect(gridSql);
        result.open(std::move(query));
        result.waitForAllRows();
        if (!before.isEmpty())
            m_connection.execute(before);

        Window window;
        const QString fileName = path(QStringLiteral("export.txt"));
        QFile::remove(fileName);
        QProgressBar* bar = nullptr;
        const QString boxes = PrintedBy([&] {
            interchange::ui::StatusProgress progress(&window.window, window.statusLine);
            if (typesMode)
                interchange::ExportAssetTypes(m_connection, fileName, delimiter, &header, progress);
            else
                interchange::ExportAssets(m_connection, fileName, delimiter, &header, allRecords,
                                          &result, selected, progress);
            bar = window.window.findChild<QProgressBar*>();
            if (bar && !file.isEmpty())
                QCOMPARE(bar->value(), bar->maximum());
        });
        QCOMPARE(boxes, printed);
        QVERIFY(QFile::exists(fileName));
        QCOMPARE(testsupport::ReadFile(fileName), namesAsReturned(file, database));
        QVERIFY(!window.window.findChild<QProgressBar*>());
    }

    // The statement reads the selected rows' IDs bare, in the order of selection.
    void selectedRowsSql() {
        connect(testsupport::TestDatabases().front());
        assets::ResultTableModel result;
        db::odbc::Statement query(m_connection);
        query.executeDirect(QStringLiteral("select NAME, ID from assets order by ID"));
        result.open(std::move(query));
        result.waitForAllRows();
        QCOMPARE(interchange::ExportAssetsSql(result, false, {2, 0}),
                 "select * from assets where ID in (12, 5)");
        QCOMPARE(interchange::ExportAssetsSql(result, true, {2, 0}), "select * from assets");
    }

    // A file that cannot be written fails with the system's words and logs nothing else.
    void writeFailure_data() {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("printed");
        AddRow("full disk", QString("/dev/full"),
               QString("Assets Export Error: Cannot write file \"/dev/full\". No space left on "
                       "device\n"));
        AddRow("folder refusing new files", QString("/sys/export.txt"),
               QString("Assets Export Error: Cannot create file \"/sys/export.txt\". Permission "
                       "denied\n"));
    }
    void writeFailure() {
        QFETCH(QString, fileName);
        QFETCH(QString, printed);
        connect(testsupport::TestDatabases().front());
        assets::ResultTableModel result;
        db::odbc::Statement query(m_connection);
        query.executeDirect(QStringLiteral("select ID from assets"));
        result.open(std::move(query));
        result.waitForAllRows();
        Window window;
        QCOMPARE(PrintedBy([&] {
                     interchange::ui::StatusProgress progress(&window.window, window.statusLine);
                     interchange::ExportAssets(m_connection, fileName, QStringLiteral(";"), nullptr,
                                               true, &result, {}, progress);
                 }),
                 printed);
    }

    // The dialog refuses a missing file name or delimiter; otherwise it stores its
    // settings, which the next dialog of the kind shows again.
    void dialog_data() {
        QTest::addColumn<bool>("typesMode");
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<int>("delimiterItem");
        QTest::addColumn<QString>("other");
        QTest::addColumn<QString>("memo");
        QTest::addColumn<QString>("printed");
        QTest::addColumn<QStringList>("stored");
        AddRow("three header lines", false, QString("a.txt"), 4, QString("~|"),
               QString("one\ntwo\nthree"), QString(),
               QStringList{"Delimiter=~|", "FileName=a.txt", "Header=Yes", "HeaderLine000=one",
                           "HeaderLine001=two", "HeaderLine002=three", "HeaderLines=3",
                           "Records=Selected"});
        AddRow("asset types, empty header", true, QString("t.aty"), 0, QString(), QString(),
               QString(),
               QStringList{"Delimiter=\t", "FileName=t.aty", "Header=Yes", "HeaderLines=0",
                           "Records=Selected"});
        AddRow("no file name", false, QString(), 1, QString(), QString("x"),
               QString("Error: File Name must be specified.\n"), QStringList{});
        AddRow("no delimiter", false, QString("a.txt"), 4, QString(), QString("x"),
               QString("Error: Fields Delimiter must be specified.\n"), QStringList{});
    }
    void dialog() {
        QFETCH(bool, typesMode);
        QFETCH(QString, fileName);
        QFETCH(int, delimiterItem);
        QFETCH(QString, other);
        QFETCH(QString, memo);
        QFETCH(QString, printed);
        QFETCH(QStringList, stored);
        const QString key = typesMode ? "TypesExportImport" : "ExportImport";
        QSettings(QStringLiteral("Marrowby"), QStringLiteral("Quillet")).remove(key);
        {
            interchange::ui::TFormExport form(typesMode);
            form.show();
            QCOMPARE(form.windowTitle(), typesMode ? "Export Asset Types" : "Export Assets");
            QCOMPARE(form.findChild<QGroupBox*>("GroupBoxRows")->isVisible(), !typesMode);
            QCOMPARE(form.findChild<QPlainTextEdit*>("MemoHeader")->toPlainText(),
                     "// Assets Export File");
            form.findChild<QLineEdit*>("EditFileName")->setText(fileName);
            form.findChild<QComboBox*>("DelimList")->setCurrentIndex(delimiterItem);
            form.findChild<QLineEdit*>("EditDelimiter")->setText(other);
            form.findChild<QRadioButton*>("RB_selected")->setChecked(true);
            form.findChild<QCheckBox*>("CB_Header")->setChecked(true);
            form.findChild<QPlainTextEdit*>("MemoHeader")->setPlainText(memo);
            QCOMPARE(PrintedBy([&] { form.findChild<QPushButton*>("BtnOK")->click(); }), printed);
            QCOMPARE(form.isVisible(), !printed.isEmpty());
        }
        QSettings settings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
        settings.beginGroup(key);
        QStringList values;
        for (const QString& name : settings.childKeys())
            if (name != QLatin1String("InitialDir"))
                values << name + u'=' + settings.value(name).toString();
        QCOMPARE(values, stored);
        if (stored.isEmpty())
            return;
        interchange::ui::TFormExport again(typesMode);
        again.show();
        QCOMPARE(again.findChild<QLineEdit*>("EditFileName")->text(), fileName);
        QCOMPARE(again.findChild<QComboBox*>("DelimList")->currentIndex(), delimiterItem);
        QCOMPARE(again.findChild<QLineEdit*>("EditDelimiter")->isVisible(), delimiterItem == 4);
        QVERIFY(again.findChild<QRadioButton*>("RB_selected")->isChecked());
        QCOMPARE(again.findChild<QPlainTextEdit*>("MemoHeader")->toPlainText(), memo);
    }

    void colorToHtml_data() {
        QTest::addColumn<quint32>("color");
        QTest::addColumn<QString>("html");
        AddRow("red", quint32(0x0000FF), QString("#FF0000"));
        AddRow("silver", quint32(0xC0C0C0), QString("#C0C0C0"));
        AddRow("blue-green", quint32(0x804020), QString("#204080"));
        AddRow("system colour, as it is", quint32(0x80000005), QString("#000080"));
    }
    void colorToHtml() {
        QFETCH(quint32, color);
        QFETCH(QString, html);
        QCOMPARE(interchange::ColorToHtmlColor(color), html);
    }

    // Title and body rows of a grid over a SQLite result: a NULL and an empty text as
    // "&nbsp;", cell sizes asked for with row counter and column exchanged, the selected
    // rows in selection order or every row.
    void htmlRows_data() {
        QTest::addColumn<Rows>("selected");
        QTest::addColumn<bool>("selectedOnly");
        QTest::addColumn<QStringList>("records"); // "ID|NAME"
        const QStringList all{"5|Desk 1", "7|Desk 3", "12|&nbsp;", "20|a;b"};
        AddRow("every row", Rows{2}, false, all);
        AddRow("selected rows in order", Rows{3, 0}, true, QStringList{"20|a;b", "5|Desk 1"});
        AddRow("nothing selected", Rows{}, true, all);
    }
    void htmlRows() {
        QFETCH(Rows, selected);
        QFETCH(bool, selectedOnly);
        QFETCH(QStringList, records);
        connect(testsupport::TestDatabases().front());
        assets::ResultTableModel result;
        db::odbc::Statement query(m_connection);
        query.executeDirect(QStringLiteral("select ID, NAME from assets order by ID"));
        result.open(std::move(query));
        ui::TDBGridRange grid;
        grid.setModel(&result);
        grid.resize(400, 300);
        grid.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        for (const int row : selected)
            grid.selectionModel()->select(result.index(row, 0),
                                          QItemSelectionModel::Select | QItemSelectionModel::Rows);
        grid.setHTMLFixedColor(QColor(0x10, 0x20, 0x30));

        QCOMPARE(grid.HTMLHeaderToString(),
                 "<TR>\r\n<TD BGCOLOR=\"#102030\" ALIGN=\"LEFT\" VALIGN=\"TOP\">ID</TD>\r\n"
                 "<TD BGCOLOR=\"#102030\" ALIGN=\"LEFT\" VALIGN=\"TOP\">NAME</TD>\r\n</TR>\r\n");
        QString expected;
        for (qsizetype counter = 0; counter < records.size(); ++counter) {
            expected += "<TR>\r\n";
            for (int column = 0; column < 2; ++column) {
                const QRect cell = grid.CellRect(int(counter), column);
                expected += QStringLiteral("<TD BGCOLOR=\"#FFFFFF\" WIDTH=\"%1\" HEIGHT=\"%2\" "
                                           "ALIGN=\"LEFT\" VALIGN=\"TOP\">%3</TD>\r\n")
                                .arg(cell.width())
                                .arg(cell.height())
                                .arg(records[counter].section(u'|', column, column));
            }
            expected += "</TR>\r\n";
        }
        QCOMPARE(grid.HTMLBodyToString(selectedOnly), expected);
        // The second record's first cell is the cell of column 1, row 0; the third
        // record's has no cell.
        QVERIFY(grid.CellRect(1, 0).width() > 0);
        QCOMPARE(grid.CellRect(2, 0), QRect());

        const QString page = path(QStringLiteral("page.html"));
        grid.HTMLSaveToFile(page, selectedOnly);
        QCOMPARE(QString::fromUtf8(testsupport::ReadFile(page)),
                 QStringLiteral("<HTML>\r\n<BODY>\r\n<TABLE CELLPADDING=\"1\" CELLSPACING=\"1\" "
                                "WIDTH=400 HEIGHT=300 BORDER=\"1\">\r\n") +
                     grid.HTMLHeaderToString() + "\r\n" + grid.HTMLBodyToString(selectedOnly) +
                     "\r\n</TABLE>\r\n</BODY>\r\n</HTML>\r\n");
    }

    // Templates: every occurrence replaced ignoring case; no placeholder copies the text;
    // a missing template gives no text and writes no file.
    void htmlTemplate_data() {
        QTest::addColumn<QByteArray>("templateText"); // empty: no template file
        QTest::addColumn<QString>("placeholder");
        QTest::addColumn<QString>("result");
        AddRow("replaced ignoring case", QByteArray("<p>$Rows$</p>$ROWS$ $rows"), QString("$ROWS$"),
               QString("<p>Ä</p>Ä $rows"));
        AddRow("no placeholder", QByteArray("<p>plain</p>"), QString("$ROWS$"),
               QString("<p>plain</p>"));
        AddRow("missing template", QByteArray(), QString("$ROWS$"), QString());
    }
    void htmlTemplate() {
        QFETCH(QByteArray, templateText);
        QFETCH(QString, placeholder);
        QFETCH(QString, result);
        const QString templateFile = path(QStringLiteral("template.html"));
        const QString output = path(QStringLiteral("report.html"));
        QFile::remove(templateFile);
        QFile::remove(output);
        if (!templateText.isEmpty())
            QVERIFY(testsupport::WriteFile(templateFile, templateText));
        ui::TDBGridRange grid;
        const QString text = grid.HTMLProcessTemplate(templateFile, placeholder, "Ä");
        QCOMPARE(text, result);
        QCOMPARE(text.isNull(), templateText.isEmpty());
        grid.HTMLProcessTemplate(templateFile, output, placeholder, "Ä");
        QCOMPARE(QFile::exists(output), !templateText.isEmpty());
        if (!templateText.isEmpty())
            QCOMPARE(QString::fromUtf8(testsupport::ReadFile(output)), result);
    }
};

QTEST_MAIN(TestExport)
#include "test_export.moc"
