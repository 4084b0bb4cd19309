// The record editor docked in the main window over real databases: following the grid,
// editing and posting, new records with defaults and a type, the checks before a post,
// tab visibility by the type's flags and the user-field page.

#include "assets/resulttablemodel.h"
#include "assets/ui/dbcontrols.h"
#include "assets/ui/dbgridrange.h"
#include "assets/ui/edit.h"
#include "assets/ui/grid.h"
#include "assets/ui/newrecord.h"
#include "assets/ui/userfields.h"
#include "core/commands.h"
#include "core/dateformat.h"
#include "core/ui/main.h"
#include "core/ui/messages.h"
#include "db/odbc/odbc.h"
#include "support/assetschema.h"
#include "support/queryrows.h"
#include "support/testsupport.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>

using testsupport::TestDatabase;
using ui::TfmMain;

namespace {

QWidget* pageNamed(ui::TEditForm* editor, const char* name) {
    return editor->findChild<QWidget*>(QLatin1String(name));
}

bool tabShown(ui::TEditForm* editor, const char* name) {
    QTabWidget* pages = editor->Pages();
    return pages->isTabVisible(pages->indexOf(pageNamed(editor, name)));
}

} // namespace

class TestEditor : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<TfmMain> m_window;
    db::odbc::Connection m_connection;

    void openWindow(const TestDatabase& database) {
        m_connection.open(database.connectionString());
        testsupport::CreateAssetsSchema(m_connection);
        m_window = std::make_unique<TfmMain>(
            QStringLiteral("\"quillet\" \"ODBC=%1\" \"USER=%2\" \"PWD=%3\" \"SQL=select * from "
                           "ASSETS order by ID\"")
                .arg(database.dsn, database.user, database.password));
        m_window->setAssetTypeChooser([] { return std::optional<QString>(QStringLiteral("PC")); });
        m_window->show();
        m_window->findChild<QAction*>(QStringLiteral("ViewEditForm"))->trigger();
        QVERIFY(m_window->editorShown());
    }

    ui::TEditForm* editor() const { return m_window->editForm(); }
    QLineEdit* edit(const char* name) const {
        return editor()->findChild<QLineEdit*>(QLatin1String(name));
    }
    void selectRow(int row) {
        ui::TDBGridRange* grid = m_window->gridForm()->Grid();
        grid->setCurrentIndex(grid->model()->index(row, 1));
        QTRY_COMPARE(editor()->CurrentId(), QString::number(row + 1));
    }
    void click(const char* button) {
        QTest::mouseClick(editor()->findChild<QToolButton*>(QLatin1String(button)), Qt::LeftButton);
    }

private Q_SLOTS:
    void initTestCase() {
        testsupport::UseTemporarySettings();
        ui::SetUnattended(true);
        core::ApplyDateFormat(QStringLiteral("dd.mm.yyyy"), QLocale::c());
    }

    void cleanup() {
        m_window.reset();
        m_connection.close();
    }

    // The editor follows the grid; an edit posted with the navigator reaches the database,
    // and the refreshed grid stays on the record.
    void editFollowsTheGridAndPosts_data() { testsupport::AddDatabaseRows(); }
    void editFollowsTheGridAndPosts() {
        QFETCH(TestDatabase, database);
        QUILLET_REQUIRE_DATABASE(database);
        openWindow(database);
        selectRow(1);
        QCOMPARE(edit("DB_Description")->text(), QStringLiteral("asset 2"));
        QTest::keyClicks(edit("DB_Description"), QStringLiteral(" renamed"));
        click("nbPost");
        QCOMPARE(editor()->AssetsTable().state(), assets::TableDataSet::State::Browse);
        QCOMPARE(testsupport::RowsText(m_connection,
                                       QStringLiteral("select INFO from ASSETS where ID = 2")),
                 QStringLiteral("asset 2 renamed"));
        QTRY_COMPARE(m_window->gridForm()->Grid()->currentIndex().row(), 1);
        QCOMPARE(editor()->CurrentId(), QStringLiteral("2"));
    }

    // "Asset Details": defaults without preferences, the type asked for, checks that keep
    // the dialog open with the failing page active, and the post.
    void newRecordGetsDefaultsTypeAndChecks() {
        const TestDatabase database = testsupport::TestDatabases().front();
        openWindow(database);
        ui::TFormNewAsset dialog(m_connection, *m_window);
        dialog.Editor()->SetTypeChooser([] { return std::optional<QString>("Server"); });
        QVERIFY(dialog.StartRecord());
        assets::TableDataSet& record = dialog.Editor()->AssetsTable();
        QCOMPARE(record.asText(QStringLiteral("PURCHDATE")), core::DateToStr(QDate(1990, 1, 1)));
        QCOMPARE(record.asText(QStringLiteral("ITEMVALUE")), QStringLiteral("0"));
        QVERIFY(record.isNull(QStringLiteral("QTY")));

        // No node chosen: the node page shows.
        QString error;
        QVERIFY(!dialog.Editor()->Validate(error));
        QCOMPARE(dialog.Editor()->Pages()->currentWidget()->objectName(),
                 QStringLiteral("tsRelatedNode"));
        auto* node = dialog.Editor()->findChild<QComboBox*>(QStringLiteral("DB_NodeName"));
        node->setCurrentIndex(node->findText(QStringLiteral("beta")));
        auto* date = dialog.Editor()
                         ->findChild<QWidget*>(QStringLiteral("PurchaseTabForm"))
                         ->findChild<QLineEdit*>(QStringLiteral("DB_PurchaseDate"));
        date->setText(QStringLiteral("31.02.1990"));
        QVERIFY(!dialog.Editor()->Validate(error));
        QCOMPARE(error, QStringLiteral("Invalid Purchase Date format."));
        date->clear();
        QVERIFY(dialog.Editor()->Validate(error));
        QCOMPARE(record.asText(QStringLiteral("FKNODES")), QStringLiteral("8"));

        record.setAsText(QStringLiteral("ID"), QStringLiteral("10"));
        dialog.accept();
        QCOMPARE(testsupport::RowsText(
                     m_connection,
                     QStringLiteral("select ASSETTYPE, FKNODES from ASSETS where ID = 10")),
                 QStringLiteral("Server,8"));

        // No type picked: the record is not started.
        ui::TFormNewAsset untyped(m_connection, *m_window);
        untyped.Editor()->SetTypeChooser([] { return std::optional<QString>(); });
        QVERIFY(!untyped.StartRecord());
    }

    // Pages follow the flags of the record's type, whatever their spelling; a type without
    // a row shows the defaults. The user-field page has an edit for each USR_ column.
    void pagesFollowTheTypeAndUserColumns() {
        const TestDatabase database = testsupport::TestDatabases().front();
        openWindow(database);
        m_connection.execute(QStringLiteral("UPDATE ASSETS SET ASSETTYPE = 'Copier' WHERE ID = 2"));
        m_connection.execute(
            QStringLiteral("UPDATE ASSETS SET ASSETTYPE = 'Unknown' WHERE ID = 1"));
        // The pages shown, "1" or "0" for each of General, Node, Purchase, Warranty, User.
        const std::pair<const char*, QString> cases[] = {
            {"2", "10001"}, {"3", "11011"}, {"1", "10111"}};
        for (const auto& [id, expected] : cases) {
            editor()->ShowRecord(QLatin1String(id));
            QString shown;
            for (const char* page :
                 {"tsGeneral", "tsRelatedNode", "tsPurchase", "tsWarranty", "tsExtensions"})
                shown += tabShown(editor(), page) ? '1' : '0';
            QCOMPARE(shown, expected);
        }

        auto* userFields = editor()->findChild<ui::TUserFieldsForm*>();
        QVERIFY(editor()->findChild<QLabel*>(QStringLiteral("lblUSR_COST")));
        // Columns are added on the program's own connection, as the add-column wizard does.
        for (const char* column : {"\"USR_A B\"", "\"USR_A@B\""})
            m_window->DispatchCommand(
                core::CMD_EXECUTE_SQL,
                QStringLiteral("ALTER TABLE ASSETS ADD %1 VARCHAR(20)").arg(QLatin1String(column)));
        editor()->OpenTables();
        QStringList names;
        for (const ui::TDBEdit* field : userFields->Edits())
            names << field->objectName();
        QCOMPARE(names, (QStringList{"DB_USR_COST", "DB_USR_A_B", "DB_USR_A_B_2"}));
    }
};

QTEST_MAIN(TestEditor)
#include "test_editor.moc"
