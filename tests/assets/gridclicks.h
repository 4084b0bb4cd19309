#pragma once

// For the tests of the results grid: a table of rows shown in it, and a user's mouse
// clicks, scrolling and keys, also as steps of a data table.

#include "assets/resulttablemodel.h"
#include "assets/ui/dbgridrange.h"
#include "db/odbc/odbc.h"
#include "rangestext.h"
#include "support/testsupport.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QStyleOptionSlider>
#include <QTest>

#include <memory>

namespace gridclicks {

constexpr int RowCount = 150;

// A table of RowCount rows in the SQLite test database: ID 1..150, ASSET_TAG "AT<nnn>" and
// TAG "T<nnn>" in a shuffled order, NAME "Name <151 - ID>" (zero-padded), PRICE ID * 1.5.
struct GridTable {
    // Also points the settings at a temporary folder.
    void create() {
        testsupport::UseTemporarySettings();
        connection.open(testsupport::TestDatabases().front().connectionString());
        name = testsupport::UniqueTableName(QStringLiteral("grid"));
        connection.execute(QStringLiteral("CREATE TABLE %1 (ID INTEGER, ASSET_TAG VARCHAR(20), "
                                          "TAG VARCHAR(20), NAME VARCHAR(40), PRICE NUMERIC(10,2))")
                               .arg(name));
        connection.execute(
            QStringLiteral(
                "INSERT INTO %1 WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
                "WHERE i < %2) SELECT i, printf('AT%03d', (i * 37) % 151), printf('T%03d', "
                "(i * 53) % 151), printf('Name %03d', 151 - i), i * 1.5 FROM n")
                .arg(name)
                .arg(RowCount));
    }
    // The whole result of "SELECT <columns> FROM <the table> <rest>".
    std::unique_ptr<assets::ResultTableModel> open(const QString& columns,
                                                   const QString& rest = "ORDER BY ID") {
        auto model = std::make_unique<assets::ResultTableModel>();
        db::odbc::Statement statement(connection);
        statement.executeDirect(QStringLiteral("SELECT %1 FROM %2 %3").arg(columns, name, rest));
        model->open(std::move(statement));
        model->waitForAllRows();
        return model;
    }

    db::odbc::Connection connection;
    QString name;
};

// The centre of a row's cell in the grid's second column (the first one may be hidden).
inline QPoint cellCentre(const ui::TDBGridRange& grid, int row) {
    const QRect rect = grid.visualRect(grid.model()->index(row, 1));
    if (!grid.viewport()->rect().contains(rect))
        qFatal("row %d is not on screen", row);
    return rect.center();
}

inline void clickRow(ui::TDBGridRange& grid, int row, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, modifiers, cellCentre(grid, row));
}

inline void clickTitle(ui::TDBGridRange& grid, int column, Qt::KeyboardModifiers modifiers = {}) {
    QHeaderView* header = grid.horizontalHeader();
    const QPoint centre(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                        header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, modifiers, centre);
}

// Clicks the scroll bar's groove below or above its slider, as a user pages with it.
inline void clickScrollBar(QScrollBar* bar, bool down) {
    QStyleOptionSlider option;
    option.initFrom(bar);
    option.orientation = bar->orientation();
    option.minimum = bar->minimum();
    option.maximum = bar->maximum();
    option.sliderPosition = bar->sliderPosition();
    option.sliderValue = bar->value();
    option.singleStep = bar->singleStep();
    option.pageStep = bar->pageStep();
    option.subControls = QStyle::SC_All;
    const QRect groove = bar->style()->subControlRect(
        QStyle::CC_ScrollBar, &option,
        down ? QStyle::SC_ScrollBarAddPage : QStyle::SC_ScrollBarSubPage, bar);
    if (groove.isEmpty())
        qFatal("no room to page the scroll bar");
    QTest::mouseClick(bar, Qt::LeftButton, {}, groove.center());
}

// The user pages with the scroll bar until `row` is completely on screen.
inline void scrollUntilShown(ui::TDBGridRange& grid, int row) {
    const auto shown = [&] {
        const QRect rect = grid.visualRect(grid.model()->index(row, 0));
        return rect.top() >= 0 && rect.bottom() < grid.viewport()->height();
    };
    for (int clicks = 0; clicks < 100 && !shown(); ++clicks)
        clickScrollBar(grid.verticalScrollBar(), grid.rowAt(0) < row);
    if (!shown())
        qFatal("scrolling did not bring row %d on screen", row);
}

inline QString selectedText(const ui::TDBGridRange& grid) {
    return rangestext::RangesText(grid.SelectedRows());
}

// One step, "verb argument":
//   press R / ctrl R / shift R / shiftctrl R   a click on row R with those modifiers
//   title                                      a Shift-click on the second column's title
//   key K / plain K    key K (Up, Down, PageUp, PageDown, Home, End) with Shift / without
//   scroll R           the user pages with the scroll bar until row R shows
// Returns false for an unknown step.
inline bool runStep(ui::TDBGridRange& grid, const QString& step) {
    static const QHash<QString, Qt::KeyboardModifiers> clicks{
        {QStringLiteral("press"), {}},
        {QStringLiteral("ctrl"), Qt::ControlModifier},
        {QStringLiteral("shift"), Qt::ShiftModifier},
        {QStringLiteral("shiftctrl"), Qt::ShiftModifier | Qt::ControlModifier}};
    static const QHash<QString, Qt::Key> keys{
        {QStringLiteral("Up"), Qt::Key_Up},         {QStringLiteral("Down"), Qt::Key_Down},
        {QStringLiteral("PageUp"), Qt::Key_PageUp}, {QStringLiteral("PageDown"), Qt::Key_PageDown},
        {QStringLiteral("Home"), Qt::Key_Home},     {QStringLiteral("End"), Qt::Key_End}};
    const QStringList words = step.split(QLatin1Char(' '));
    const QString& verb = words.at(0);
    const QString argument = words.value(1);
    if (clicks.contains(verb))
        clickRow(grid, argument.toInt(), clicks.value(verb));
    else if (verb == QLatin1String("title"))
        clickTitle(grid, 1, Qt::ShiftModifier);
    else if ((verb == QLatin1String("key") || verb == QLatin1String("plain")) &&
             keys.contains(argument))
        QTest::keyClick(&grid, keys.value(argument),
                        verb == QLatin1String("key") ? Qt::ShiftModifier : Qt::NoModifier);
    else if (verb == QLatin1String("scroll"))
        scrollUntilShown(grid, argument.toInt());
    else
        return false;
    return true;
}

inline void run(ui::TDBGridRange& grid, const QStringList& steps) {
    for (const QString& step : steps)
        QVERIFY2(runStep(grid, step), qPrintable(step));
}

} // namespace gridclicks
