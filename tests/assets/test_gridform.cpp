// The results grid form over a real result of the SQLite ODBC driver: its controls, title
// click sorting, status texts and other commands it sends, and the stored column layout.

#include "assets/gridlayout.h"
#include "assets/ui/grid.h"
#include "core/commands.h"
#include "core/registry.h"
#include "gridclicks.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QFrame>
#include <QRegularExpression>
#include <QSettings>
#include <QStandardItemModel>
#include <QTest>
#include <QToolButton>

#include <algorithm>
#include <memory>
#include <optional>

using gridclicks::clickRow;
using gridclicks::clickTitle;
using gridclicks::RowCount;
using ui::TDBGridRange;
using ui::TGridForm;

using VisibilityCalls = QList<std::pair<int, bool>>; // (index, hidden)

Q_DECLARE_METATYPE(std::optional<QString>)

namespace {

const QString LayoutKey = QString::fromLatin1(assets::GridLayoutKey);

// The main window's side of the command protocol: what it was sent, "<command> <argument>".
class CommandLog : public core::CommandTarget {
public:
    qint64 DispatchCommand(int command, const QVariant& argument) override {
        static const QHash<int, QString> names{{core::CMD_STATUS_TEXT, QStringLiteral("status")},
                                               {core::CMD_SYNC_EDITOR, QStringLiteral("sync")},
                                               {core::CMD_OPEN_EDITOR, QStringLiteral("editor")}};
        sent << names.value(command, QString::number(command)) + QLatin1Char(' ') +
                    argument.toString();
        return 0;
    }
    QStringList sent;
};

std::optional<QString> storedLayout(const QString& fieldName) {
    QString buffer;
    if (!core::ReadRegistryString(LayoutKey, fieldName, buffer, assets::GridLayoutBufferLength,
                                  std::nullopt))
        return std::nullopt;
    return buffer;
}

void storeLayout(const QString& fieldName, const QString& value) {
    QVERIFY(core::WriteRegistryString(LayoutKey, fieldName, value));
}

// "1101": a 1 for each visible column.
QString visibility(const TDBGridRange& grid) {
    QString text;
    for (int column = 0; column < grid.ColumnCount(); ++column)
        text += grid.ColumnVisible(column) ? QLatin1Char('1') : QLatin1Char('0');
    return text;
}

} // namespace

class TestGridForm : public QObject {
    Q_OBJECT

    gridclicks::GridTable m_table;
    CommandLog m_log;
    QAction m_addRow{QStringLiteral("&Add")};
    QAction m_delete{QStringLiteral("De&lete")};
    QAction m_addColumn{QStringLiteral("Add &Column")};
    QAction m_editForm{QStringLiteral("&Edit")};
    QAction m_details{QStringLiteral("&Details")};
    std::unique_ptr<assets::ResultTableModel> m_result;
    std::unique_ptr<TGridForm> m_form;

    void showForm(QAbstractItemModel* model) {
        m_form = std::make_unique<TGridForm>(
            m_log, ui::GridActions{&m_addRow, &m_delete, &m_addColumn, &m_editForm, &m_details});
        m_form->SetModel(model);
        m_form->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_form.get()));
        grid().setFocus();
    }
    TDBGridRange& grid() const { return *m_form->Grid(); }

private Q_SLOTS:
    void initTestCase() { m_table.create(); }

    void init() {
        m_log.sent.clear();
        QSettings settings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
        settings.remove(QStringLiteral("Preferences/GridLayout"));
        settings.sync();
        m_result = m_table.open(QStringLiteral("ID, ASSET_TAG, TAG, NAME, PRICE"));
        QCOMPARE(m_result->rowCount(), RowCount);
    }

    void cleanup() {
        m_form.reset();
        m_result.reset();
    }

    // First: nothing has produced a status text in this process yet.
    void noStatusTextBeforeTheFirst() {
        // A query object that is not open, then a model that is not a query object: neither
        // has anything to say, and there is no earlier text to repeat. Nor does a title
        // click sort a model that is not a query object.
        assets::ResultTableModel closed;
        showForm(&closed);
        QTest::mouseClick(grid().viewport(), Qt::LeftButton, {}, QPoint(30, 30));
        QTest::keyClick(&grid(), Qt::Key_Down);
        QStandardItemModel plain(6, 3);
        for (int row = 0; row < 6; ++row)
            plain.setItem(row, 1, new QStandardItem(QString::number(6 - row)));
        m_form->SetModel(&plain);
        clickRow(grid(), 2);
        QTest::keyClick(&grid(), Qt::Key_Down, Qt::ShiftModifier);
        clickTitle(grid(), 1);
        QCOMPARE(grid().SelectedRowCount(), 2);
        QCOMPARE(plain.item(0, 1)->text(), QStringLiteral("6"));
        QCOMPARE(m_log.sent, QStringList());
        m_form.reset();
    }

    void controls() {
        showForm(m_result.get());
        QCOMPARE(m_form->objectName(), QStringLiteral("GridForm"));
        QCOMPARE(m_form->windowTitle(), QStringLiteral("GridForm"));
        QCOMPARE(m_form->size(), QSize(667, 453));
        auto* panel = m_form->findChild<QWidget*>(QStringLiteral("PanelGrid"));
        auto* bevel = m_form->findChild<QFrame*>(QStringLiteral("Bevel1"));
        auto* buttons = m_form->findChild<QWidget*>(QStringLiteral("pnButtons"));
        QVERIFY(panel && bevel && buttons);
        QCOMPARE(m_form->findChild<TDBGridRange*>(QStringLiteral("DBGrid")), &grid());
        QCOMPARE(panel->geometry(), m_form->rect());
        QCOMPARE(bevel->geometry(), QRect(0, 0, panel->width(), 8));
        QCOMPARE(buttons->geometry(), QRect(0, 8, panel->width(), 33));
        QCOMPARE(grid().geometry(), QRect(0, 8 + 33, panel->width(), panel->height() - 8 - 33));

        const struct {
            const char* name;
            int left;
            QAction* action;
            const char* text;
        } expected[] = {
            {"BtnAdd", 1, &m_addRow, "Add"},
            {"BtnDelete", 135, &m_delete, "Delete"},
            {"SpeedButton1", 268, &m_addColumn, "Add Column"},
            {"BtnEdit", 402, &m_editForm, "Edit"},
            {"BtnDetails", 535, &m_details, "Details"},
        };
        TGridForm bare(m_log, ui::GridActions{});
        for (const auto& button : expected) {
            auto* tool = buttons->findChild<QToolButton*>(QString::fromLatin1(button.name));
            QVERIFY2(tool, button.name);
            QCOMPARE(tool->geometry(), QRect(button.left, 1, 128, 25));
            QVERIFY(tool->autoRaise());
            QCOMPARE(tool->defaultAction(), button.action);
            QCOMPARE(tool->text(), QString::fromLatin1(button.text));
            // Without an action a button stays disabled.
            QVERIFY(!bare.findChild<QToolButton*>(QString::fromLatin1(button.name))->isEnabled());
        }

        // The grid: read-only, several rows at once, whole rows.
        QCOMPARE(grid().editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(grid().MultiSelect());
        QCOMPARE(grid().selectionBehavior(), QAbstractItemView::SelectRows);
        QVERIFY(grid().showGrid() && grid().tabKeyNavigation());
        QVERIFY(grid().horizontalHeader()->isVisible() && grid().verticalHeader()->isVisible());
        QCOMPARE(grid().horizontalHeader()->sectionResizeMode(0), QHeaderView::Interactive);
    }

    void statusTexts_data() {
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QStringList>("texts");

        const QString one = QStringLiteral("There are 1 records selected");
        const QString all = QStringLiteral("There are 150 record(s) in the dataset");
        const QString three = QStringLiteral("There are 3 records selected");
        QTest::newRow("a click selects one row") << QStringList{"press 2"} << QStringList{one};
        // Letting go of Shift is a key release of its own.
        QTest::newRow("shift+down twice")
            << QStringList{"press 2", "key Down", "key Down"}
            << QStringList{one, "There are 2 records selected", "There are 2 records selected",
                           three, three};
        QTest::newRow("a shift-click selects a range")
            << QStringList{"press 2", "shift 4"} << QStringList{one, three};
        QTest::newRow("a move without shift counts the dataset")
            << QStringList{"press 2", "plain Down"} << QStringList{one, all};
        QTest::newRow("ctrl-click takes the only row out")
            << QStringList{"press 2", "ctrl 2"} << QStringList{one, all};
        // With nothing new to say, the last text is sent again.
        QTest::newRow("a closed query resends the last text")
            << QStringList{"press 2", "shift 4", "close", "click"}
            << QStringList{one, three, three};
        QTest::newRow("a plain model resends the last text")
            << QStringList{"press 2", "shift 4", "plain model", "press 1"}
            << QStringList{one, three, three};
    }

    void statusTexts() {
        QFETCH(QStringList, steps);
        QFETCH(QStringList, texts);
        showForm(m_result.get());
        QStandardItemModel plain(4, 2);
        for (const QString& step : steps) {
            if (step == QLatin1String("close")) {
                m_result->close();
                QCOMPARE(grid().SelectedRowCount(), 0);
            } else if (step == QLatin1String("click")) {
                QTest::mouseClick(grid().viewport(), Qt::LeftButton, {}, QPoint(30, 30));
            } else if (step == QLatin1String("plain model")) {
                m_form->SetModel(&plain);
            } else {
                QVERIFY2(gridclicks::runStep(grid(), step), qPrintable(step));
            }
        }
        // One text per key or mouse button release, nothing else.
        for (QString& text : texts)
            text.prepend(QStringLiteral("status "));
        QCOMPARE(m_log.sent, texts);
        m_form.reset();
    }

    void titleClickSorts_data() {
        QTest::addColumn<QStringList>("titles");
        QTest::addColumn<QStringList>("sortTexts");

        QTest::newRow("three clicks on one title")
            << QStringList{"NAME", "NAME", "NAME"}
            << QStringList{"[NAME] ASC", "[NAME] DESC", "[NAME] ASC"};
        QTest::newRow("another title starts ascending")
            << QStringList{"NAME", "NAME", "PRICE", "NAME"}
            << QStringList{"[NAME] ASC", "[NAME] DESC", "[PRICE] ASC", "[NAME] ASC"};
        QTest::newRow("TAG after ASSET_TAG counts as the same column")
            << QStringList{"ASSET_TAG", "TAG", "TAG"}
            << QStringList{"[ASSET_TAG] ASC", "[TAG] DESC", "[TAG] ASC"};
        QTest::newRow("ASSET_TAG after TAG is another column")
            << QStringList{"TAG", "ASSET_TAG"} << QStringList{"[TAG] ASC", "[ASSET_TAG] ASC"};
    }

    void titleClickSorts() {
        QFETCH(QStringList, titles);
        QFETCH(QStringList, sortTexts);
        showForm(m_result.get());
        for (qsizetype click = 0; click < titles.size(); ++click) {
            clickRow(grid(), 2);
            clickRow(grid(), 5, Qt::ShiftModifier);
            m_log.sent.clear();
            const int column = m_result->fieldIndex(titles.at(click));
            clickTitle(grid(), column);
            QCOMPARE(m_result->sortText(), sortTexts.at(click));
            // The selection is cleared and the editor told to follow the current row; the
            // status text waits for the next release.
            QCOMPARE(grid().SelectedRowCount(), 0);
            QCOMPARE(m_log.sent, QStringList{"sync 0"});

            m_result->waitForSort();
            QCoreApplication::processEvents();
            QStringList values;
            for (int row = 0; row < m_result->rowCount(); ++row)
                values << m_result->index(row, column).data().toString();
            if (sortTexts.at(click).endsWith(QLatin1String(" DESC")))
                std::reverse(values.begin(), values.end());
            // Numbers as numbers; the texts end in zero-padded numbers.
            const bool number = titles.at(click) == QLatin1String("PRICE");
            QVERIFY(std::is_sorted(
                values.begin(), values.end(), [number](const QString& left, const QString& right) {
                    return number ? left.toDouble() < right.toDouble() : left < right;
                }));
        }
    }

    void doubleClickOpensTheEditor() {
        showForm(m_result.get());
        QTest::mouseDClick(grid().viewport(), Qt::LeftButton, {},
                           gridclicks::cellCentre(grid(), 3));
        QCOMPARE(m_log.sent.filter(QRegularExpression("^(editor|sync) ")), QStringList{"editor 0"});
    }

    void layoutRoundTrip() {
        showForm(m_result.get());
        const int tag = m_result->fieldIndex("TAG");
        const int name = m_result->fieldIndex("NAME");
        // As the user resizes with the mouse.
        grid().horizontalHeader()->resizeSection(name, 173);
        grid().horizontalHeader()->resizeSection(tag, 61);
        m_form->SetColumnVisibility(tag, true);
        m_form->SaveLayout();
        QCOMPARE(storedLayout("NAME"), std::optional<QString>("1,173"));
        QCOMPARE(storedLayout("TAG"), std::optional<QString>("0,61"));
        QCOMPARE(storedLayout("ID"), std::optional<QString>(QStringLiteral("1,%1").arg(
                                         grid().columnWidth(m_result->fieldIndex("ID")))));
        QVERIFY(storedLayout("ASSET_TAG") && storedLayout("PRICE"));

        // The next query, in a new form, gets the columns back by name, wherever they are.
        m_form.reset();
        const auto other = m_table.open(QStringLiteral("NAME, PRICE, TAG"));
        showForm(other.get());
        QCOMPARE(visibility(grid()), QStringLiteral("111"));
        m_form->LoadLayout();
        QCOMPARE(visibility(grid()), QStringLiteral("110"));
        QCOMPARE(grid().columnWidth(0), 173);
        QCOMPARE(grid().ColumnWidth(2), 61);
        m_form->SetColumnVisibility(2, false);
        QCOMPARE(grid().columnWidth(2), 61);
        m_form.reset();
    }

    void loadLayout_data() {
        QTest::addColumn<std::optional<QString>>("stored"); // NAME's
        QTest::addColumn<bool>("visible");
        QTest::addColumn<int>("width"); // 0: the width it had
        QTest::addColumn<bool>("stops");

        using Value = std::optional<QString>;
        QTest::newRow("0,120 hides, width 120") << Value("0,120") << false << 120 << false;
        QTest::newRow("1,0 shows, keeps the width") << Value("1,0") << true << 0 << false;
        QTest::newRow("no comma: ignored") << Value("0") << true << 0 << false;
        QTest::newRow("2,80 hides") << Value("2,80") << false << 80 << false;
        QTest::newRow("negative width kept") << Value("1,-40") << true << 0 << false;
        QTest::newRow("not stored") << Value() << true << 0 << false;
        // A value that does not read stops the pass; a visibility read before the failure counts.
        QTest::newRow("no number at all") << Value("abc,5") << true << 0 << true;
        QTest::newRow("visibility read, width not") << Value("0,wide") << false << 0 << true;
        QTest::newRow("longer than the buffer")
            << Value(QStringLiteral("0,") + QString(300, QLatin1Char('1'))) << false << 0 << true;
    }

    void loadLayout() {
        QFETCH(std::optional<QString>, stored);
        QFETCH(bool, visible);
        QFETCH(int, width);
        QFETCH(bool, stops);
        if (stored)
            storeLayout(QStringLiteral("NAME"), *stored);
        storeLayout(QStringLiteral("PRICE"), QStringLiteral("1,77"));
        showForm(m_result.get());
        const int name = m_result->fieldIndex("NAME");
        const int price = m_result->fieldIndex("PRICE");
        const int before = grid().ColumnWidth(name);
        m_form->LoadLayout();
        QCOMPARE(grid().ColumnVisible(name), visible);
        QCOMPARE(grid().ColumnWidth(name), width > 0 ? width : before);
        // A later column is applied unless the pass stopped.
        QCOMPARE(grid().ColumnWidth(price), stops ? before : 77);
        // Another pass runs again from the first column.
        storeLayout(QStringLiteral("NAME"), QStringLiteral("1,50"));
        m_form->LoadLayout();
        QCOMPARE(visibility(grid()), QStringLiteral("11111"));
        QCOMPARE(grid().ColumnWidth(price), 77);
    }

    void saveLayoutIntoAnUnwritableStore() {
        showForm(m_result.get());
        QString storePath;
        {
            QSettings settings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
            settings.setValue(QStringLiteral("Preferences/Probe"), 1);
            settings.sync();
            storePath = settings.fileName();
        }
        // A folder where the store's file should be: nothing can be written.
        const QString kept = storePath + QStringLiteral(".kept");
        QVERIFY(QFile::rename(storePath, kept));
        QVERIFY(QDir().mkpath(storePath));
        m_form->SaveLayout();
        QVERIFY(QDir().rmdir(storePath));
        QVERIFY(QFile::rename(kept, storePath));
        QCOMPARE(storedLayout("ID"), std::optional<QString>());
        QCOMPARE(storedLayout("NAME"), std::optional<QString>());
        // With the store back, it saves again.
        m_form->SaveLayout();
        QVERIFY(storedLayout("NAME"));
    }

    void layoutWithoutColumns() {
        showForm(nullptr);
        m_form->SaveLayout();
        m_form->LoadLayout();
        m_form->SetColumnVisibility(0, true);
        QCOMPARE(grid().ColumnCount(), 0);
        QSettings settings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
        settings.beginGroup(QStringLiteral("Preferences/GridLayout"));
        QCOMPARE(settings.childKeys(), QStringList());
    }

    void setColumnVisibility_data() {
        QTest::addColumn<VisibilityCalls>("calls");
        QTest::addColumn<QString>("visibility");

        using Calls = VisibilityCalls;
        QTest::newRow("hide the first") << Calls{{0, true}} << QStringLiteral("01111");
        QTest::newRow("hide the last") << Calls{{4, true}} << QStringLiteral("11110");
        QTest::newRow("hide then show") << Calls{{0, true}, {0, false}} << QStringLiteral("11111");
        QTest::newRow("index = column count") << Calls{{5, true}} << QStringLiteral("11111");
        QTest::newRow("negative index") << Calls{{-1, true}} << QStringLiteral("11111");
        QTest::newRow("a failure does not stop a later call")
            << Calls{{-1, true}, {1, true}} << QStringLiteral("10111");
    }

    void setColumnVisibility() {
        QFETCH(VisibilityCalls, calls);
        QFETCH(QString, visibility);
        showForm(m_result.get());
        for (const auto& [index, hidden] : calls)
            m_form->SetColumnVisibility(index, hidden);
        QCOMPARE(::visibility(grid()), visibility);
    }
};

QTEST_MAIN(TestGridForm)
#include "test_gridform.moc"
