// The compact row store and the sort keys of the results grid: pure logic, no database.

#include "assets/rowstore.h"
#include "assets/sortkeys.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <optional>

using assets::RowBlockBuilder;
using assets::RowStore;
using assets::SortKind;
using db::odbc::Row;

namespace {

QByteArray null() {
    return QByteArray();
}

// A store of one block per `blockRows` rows.
RowStore storeOf(const std::vector<Row>& rows, int columns, qsizetype blockRows) {
    RowStore store(columns);
    RowBlockBuilder builder(columns);
    for (const Row& row : rows) {
        builder.addRow(row);
        if (builder.rowCount() == blockRows)
            store.append(builder.finish());
    }
    store.append(builder.finish());
    return store;
}

// The values of one text column, NULL as nullopt.
using Column = std::vector<std::optional<QByteArray>>;

RowStore storeOfColumn(const Column& values, qsizetype blockRows) {
    std::vector<Row> rows;
    for (const auto& value : values)
        rows.push_back({value ? *value : null()});
    return storeOf(rows, 1, blockRows);
}

// The order a plain, obviously right sort gives: NULL first, then by `less`, ties by arrival;
// descending reverses everything but the ties.
template <typename Less>
std::vector<quint32> referenceOrder(const Column& values, bool descending, Less less) {
    std::vector<quint32> order(values.size());
    for (size_t index = 0; index < order.size(); ++index)
        order[index] = quint32(index);
    auto before = [&](quint32 a, quint32 b) {
        const auto& x = values[a];
        const auto& y = values[b];
        if (!x || !y)
            return !x && y;
        return less(*x, *y);
    };
    std::stable_sort(order.begin(), order.end(), [&](quint32 a, quint32 b) {
        return descending ? before(b, a) : before(a, b);
    });
    return order;
}

QByteArray randomText(QRandomGenerator& random) {
    // Few letters and shared prefixes longer than eight bytes, so that ties and long
    // equal runs are common; now and then a multi-byte character.
    static const QByteArray prefixes[] = {
        "", "Hewlett-Packard ", "Hewlett-Packard Enterprise", "Lenovo", "Len", "\xc3\x84rger", "A"};
    QByteArray text = prefixes[random.bounded(7)];
    const int extra = random.bounded(4);
    for (int index = 0; index < extra; ++index)
        text += char('a' + random.bounded(3));
    if (random.bounded(10) == 0)
        text += '\0'; // bytes after a zero byte still count
    return text;
}

} // namespace

class TestRowStore : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // ------------------------------------------------------------------ store

    void keepsValuesNullsAndEmptyTexts_data() {
        QTest::addColumn<qsizetype>("blockRows");
        QTest::newRow("one block") << qsizetype(1000);
        QTest::newRow("one row per block") << qsizetype(1);
        QTest::newRow("blocks of three") << qsizetype(3);
    }
    void keepsValuesNullsAndEmptyTexts() {
        QFETCH(qsizetype, blockRows);
        const std::vector<Row> rows = {
            {"1", "plain", null()},
            {"2", "", "\x00\x01\xff"},
            {null(),
             QByteArray("Gr\xc3\xbc\xc3\x9f"
                        "e \xf0\x9f\x98\x80"),
             ""},
            {"4", QByteArray(70000, 'x'), null()},
            {"5", null(), QByteArray("\0", 1)},
        };
        const RowStore store = storeOf(rows, 3, blockRows);
        QCOMPARE(store.rowCount(), qsizetype(rows.size()));
        QCOMPARE(store.columnCount(), 3);
        qsizetype bytes = 0;
        for (size_t row = 0; row < rows.size(); ++row)
            for (int column = 0; column < 3; ++column) {
                const QByteArray& expected = rows[row][size_t(column)];
                QCOMPARE(store.isNull(qsizetype(row), column), expected.isNull());
                QCOMPARE(store.value(qsizetype(row), column).toByteArray(), expected);
                bytes += expected.size();
            }
        QCOMPARE(store.textBytes(), bytes);
        QVERIFY(store.memoryBytes() >= bytes);
    }

    void readsRowsInAnyOrderAcrossBlocks() {
        std::vector<Row> rows;
        for (int index = 0; index < 5000; ++index)
            rows.push_back(
                {QByteArray::number(index), index % 7 == 0 ? null() : QByteArray(index % 13, 'v')});
        const RowStore store = storeOf(rows, 2, 97);
        QCOMPARE(store.blockCount(), qsizetype((5000 + 96) / 97));
        QCOMPARE(store.blockStart(1), qsizetype(97));
        QRandomGenerator random(42);
        for (int probe = 0; probe < 20000; ++probe) {
            const int row = random.bounded(5000);
            QCOMPARE(store.value(row, 0).toByteArray(), rows[size_t(row)][0]);
            QCOMPARE(store.isNull(row, 1), rows[size_t(row)][1].isNull());
            QCOMPARE(store.value(row, 1).size(), rows[size_t(row)][1].size());
        }
    }

    void shortRowsAreFilledWithNulls() {
        RowBlockBuilder builder(3);
        builder.addRow({"a"});
        builder.addRow({"b", "c", "d", "surplus"});
        RowStore store(3);
        store.append(builder.finish());
        QCOMPARE(store.rowCount(), qsizetype(2));
        QVERIFY(store.isNull(0, 1));
        QVERIFY(store.isNull(0, 2));
        QCOMPARE(store.value(1, 2).toByteArray(), QByteArray("d"));
        QCOMPARE(store.textBytes(), qsizetype(4));
    }

    void takesValueViewsLikeRows() {
        const QByteArray text("Gr\xc3\xbc\xc3\x9f"
                              "e");
        const QByteArray bytes("\0\1", 2);
        RowBlockBuilder builder(4);
        builder.addViews({{QByteArrayView(text), false},
                          {QByteArrayView(), true},
                          {QByteArrayView("", 0), false},
                          {QByteArrayView(bytes), false}});
        builder.addViews({{QByteArrayView("x"), false}});
        RowStore store(4);
        store.append(builder.finish());
        QCOMPARE(store.rowCount(), qsizetype(2));
        QCOMPARE(store.value(0, 0).toByteArray(), text);
        QVERIFY(store.isNull(0, 1));
        QVERIFY(!store.isNull(0, 2));
        QVERIFY(store.value(0, 2).isEmpty());
        QCOMPARE(store.value(0, 3).toByteArray(), bytes);
        QCOMPARE(store.value(1, 0).toByteArray(), QByteArray("x"));
        QVERIFY(store.isNull(1, 3));
        QCOMPARE(store.textBytes(), text.size() + bytes.size() + 1);
    }

    void emptyBuilderGivesNoBlock() {
        RowBlockBuilder builder(2);
        QVERIFY(builder.finish() == nullptr);
        RowStore store(2);
        store.append(nullptr);
        QCOMPARE(store.rowCount(), qsizetype(0));
        QCOMPARE(store.blockCount(), qsizetype(0));
        // The builder starts over after finish().
        builder.addRow({"x", "y"});
        const auto block = builder.finish();
        QVERIFY(block != nullptr);
        QCOMPARE(block->rowCount(), qsizetype(1));
        QCOMPARE(builder.rowCount(), qsizetype(0));
        QVERIFY(builder.finish() == nullptr);
    }

    void blockOfAnotherWidthIsRefused() {
        RowBlockBuilder builder(2);
        builder.addRow({"x", "y"});
        RowStore store(3);
        QVERIFY_THROWS_EXCEPTION(std::invalid_argument, store.append(builder.finish()));
        QCOMPARE(store.rowCount(), qsizetype(0));
    }

    void copiesShareBlocksAndStayUnchanged() {
        RowStore store(1);
        RowBlockBuilder builder(1);
        builder.addRow({"first"});
        store.append(builder.finish());
        const RowStore copy = store;
        builder.addRow({"second"});
        store.append(builder.finish());
        QCOMPARE(copy.rowCount(), qsizetype(1));
        QCOMPARE(store.rowCount(), qsizetype(2));
        QCOMPARE(copy.value(0, 0).toByteArray(), QByteArray("first"));
        QCOMPARE(store.value(1, 0).toByteArray(), QByteArray("second"));
        store.clear(4);
        QCOMPARE(store.rowCount(), qsizetype(0));
        QCOMPARE(store.columnCount(), 4);
        QCOMPARE(copy.value(0, 0).toByteArray(), QByteArray("first"));
    }

    void memoryStaysCloseToTheText() {
        // Values of ten bytes: offsets and NULL bits add about four bytes each.
        RowStore store(10);
        RowBlockBuilder builder(10);
        for (int row = 0; row < 20000; ++row) {
            builder.addRow(Row(10, QByteArray("0123456789")));
            if (builder.rowCount() == 4096)
                store.append(builder.finish());
        }
        store.append(builder.finish());
        QCOMPARE(store.textBytes(), qsizetype(20000 * 10 * 10));
        QVERIFY2(store.memoryBytes() < store.textBytes() * 3 / 2,
                 qPrintable(QString::number(store.memoryBytes())));
    }

    // ------------------------------------------------------------------ sort text

    void parsesSortText_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<QString>("field");
        QTest::addColumn<bool>("descending");
        QTest::newRow("ascending") << "[NAME] ASC" << true << "NAME" << false;
        QTest::newRow("descending") << "[NAME] DESC" << true << "NAME" << true;
        QTest::newRow("keywords in any case") << "[Name] desc" << true << "Name" << true;
        QTest::newRow("no direction") << "[NAME]" << true << "NAME" << false;
        QTest::newRow("no brackets") << "NAME DESC" << true << "NAME" << true;
        QTest::newRow("blanks in the name") << "[ASSET TAG] ASC" << true << "ASSET TAG" << false;
        QTest::newRow("bracket in the name") << "[A]B] DESC" << true << "A]B" << true;
        QTest::newRow("blanks around") << "  [ID]   ASC " << true << "ID" << false;
        QTest::newRow("empty") << "" << true << "" << false;
        QTest::newRow("blank") << "   " << true << "" << false;
        QTest::newRow("unknown direction") << "[NAME] UP" << false << "" << false;
        QTest::newRow("two fields") << "[A] ASC, [B] DESC" << false << "" << false;
        QTest::newRow("unclosed bracket") << "[NAME ASC" << false << "" << false;
        QTest::newRow("empty name") << "[] ASC" << false << "" << false;
    }
    void parsesSortText() {
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QFETCH(QString, field);
        QFETCH(bool, descending);
        const std::optional<assets::SortRequest> request = assets::ParseSortText(text);
        QCOMPARE(request.has_value(), valid);
        if (valid) {
            QCOMPARE(request->field, field);
            QCOMPARE(request->descending, descending);
        }
    }

    // ------------------------------------------------------------------ keys

    void numberKeysOrderAsNumbers_data() {
        QTest::addColumn<QByteArray>("smaller");
        QTest::addColumn<QByteArray>("larger");
        QTest::newRow("integers") << QByteArray("9") << QByteArray("10");
        QTest::newRow("negative") << QByteArray("-10") << QByteArray("-9");
        QTest::newRow("sign") << QByteArray("-0.5") << QByteArray("0");
        QTest::newRow("fraction") << QByteArray("1.25") << QByteArray("1.3");
        QTest::newRow("integer and fraction") << QByteArray("2") << QByteArray("2.000001");
        QTest::newRow("exponent") << QByteArray("9e2") << QByteArray("1.0E3");
        QTest::newRow("beyond 2^53")
            << QByteArray("9007199254740993") << QByteArray("9007199254740994");
        QTest::newRow("int64 limits")
            << QByteArray("-9223372036854775808") << QByteArray("9223372036854775807");
        QTest::newRow("huge") << QByteArray("9223372036854775807") << QByteArray("1e300");
        QTest::newRow("beyond double") << QByteArray("1e300") << QByteArray("1e999");
        QTest::newRow("blanks and plus") << QByteArray(" 3 ") << QByteArray("+4");
        QTest::newRow("infinity") << QByteArray("-inf") << QByteArray("-1e308");
        QTest::newRow("NaN last") << QByteArray("inf") << QByteArray("NaN");
    }
    void numberKeysOrderAsNumbers() {
        QFETCH(QByteArray, smaller);
        QFETCH(QByteArray, larger);
        const auto a = assets::NumberKey(smaller);
        const auto b = assets::NumberKey(larger);
        QVERIFY(a && b);
        QVERIFY(*a < *b);
    }

    void numberKeysOfEqualNumbersAreEqual() {
        QCOMPARE(*assets::NumberKey("0"), *assets::NumberKey("-0.0"));
        QCOMPARE(*assets::NumberKey("12"), *assets::NumberKey("12.000"));
        QCOMPARE(*assets::NumberKey("1e2"), *assets::NumberKey("100"));
    }

    void numberKeysRefuseText_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("blank") << QByteArray("  ");
        QTest::newRow("word") << QByteArray("abc");
        QTest::newRow("trailing text") << QByteArray("12abc");
        QTest::newRow("two signs") << QByteArray("+-1");
        QTest::newRow("comma") << QByteArray("1,5");
        QTest::newRow("hex") << QByteArray("0x10");
    }
    void numberKeysRefuseText() {
        QFETCH(QByteArray, text);
        QVERIFY(!assets::NumberKey(text));
    }

    void dateKeysOrderAsMoments_data() {
        QTest::addColumn<QByteArray>("earlier");
        QTest::addColumn<QByteArray>("later");
        QTest::newRow("days") << QByteArray("2023-12-31") << QByteArray("2024-01-01");
        QTest::newRow("years before months")
            << QByteArray("1999-12-31") << QByteArray("2000-01-01");
        QTest::newRow("date then time")
            << QByteArray("2024-01-01") << QByteArray("2024-01-01 00:00:01");
        QTest::newRow("times") << QByteArray("2024-01-01 09:59:59")
                               << QByteArray("2024-01-01 10:00:00");
        QTest::newRow("fractions")
            << QByteArray("2024-01-01 10:00:00.1") << QByteArray("2024-01-01 10:00:00.25");
        QTest::newRow("T separator")
            << QByteArray("2024-01-01T10:00") << QByteArray("2024-01-01 10:01");
        QTest::newRow("time of day") << QByteArray("09:30:00") << QByteArray("10:00");
        QTest::newRow("zone ignored")
            << QByteArray("2024-05-01 10:00:00+02") << QByteArray("2024-05-01 11:00:00Z");
    }
    void dateKeysOrderAsMoments() {
        QFETCH(QByteArray, earlier);
        QFETCH(QByteArray, later);
        const auto a = assets::DateTimeKey(earlier);
        const auto b = assets::DateTimeKey(later);
        QVERIFY(a && b);
        QVERIFY(*a < *b);
    }

    void dateKeysRefuseOtherText_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("day first") << QByteArray("31/12/2023");
        QTest::newRow("month 13") << QByteArray("2023-13-01");
        QTest::newRow("day 0") << QByteArray("2023-12-00");
        QTest::newRow("short year") << QByteArray("23-12-01");
        QTest::newRow("era") << QByteArray("0044-03-15 BC");
        QTest::newRow("minute 60") << QByteArray("2023-01-01 10:60");
        QTest::newRow("word") << QByteArray("soon");
    }
    void dateKeysRefuseOtherText() {
        QFETCH(QByteArray, text);
        QVERIFY(!assets::DateTimeKey(text));
    }

    void kindFollowsColumnType() {
        db::odbc::ColumnInfo column;
        column.sqlType = 4; // SQL_INTEGER
        QCOMPARE(assets::SortKindOf(column), SortKind::Number);
        column.sqlType = 8; // SQL_DOUBLE
        QCOMPARE(assets::SortKindOf(column), SortKind::Number);
        column.sqlType = 91; // SQL_TYPE_DATE
        QCOMPARE(assets::SortKindOf(column), SortKind::DateTime);
        column.sqlType = 93; // SQL_TYPE_TIMESTAMP
        QCOMPARE(assets::SortKindOf(column), SortKind::DateTime);
        column.sqlType = 12; // SQL_VARCHAR
        QCOMPARE(assets::SortKindOf(column), SortKind::Text);
        column.sqlType = -9; // SQL_WVARCHAR
        QCOMPARE(assets::SortKindOf(column), SortKind::Text);
    }

    // ------------------------------------------------------------------ sorting

    void sortsTextLikeAPlainStableSort_data() {
        QTest::addColumn<bool>("descending");
        QTest::addColumn<qsizetype>("blockRows");
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("varied"); // most values distinct
        for (bool descending : {false, true}) {
            const char* direction = descending ? "descending" : "ascending";
            QTest::addRow("%s", direction) << descending << qsizetype(1000) << 3000 << false;
            QTest::addRow("%s, small blocks", direction)
                << descending << qsizetype(7) << 3000 << false;
            // Enough rows for ranking the few distinct values, and for giving up on it.
            QTest::addRow("%s, many rows", direction)
                << descending << qsizetype(4096) << 30000 << false;
            QTest::addRow("%s, many distinct rows", direction)
                << descending << qsizetype(4096) << 30000 << true;
        }
    }
    void sortsTextLikeAPlainStableSort() {
        QFETCH(bool, descending);
        QFETCH(qsizetype, blockRows);
        QFETCH(int, count);
        QFETCH(bool, varied);
        QRandomGenerator random(7);
        Column values;
        for (int index = 0; index < count; ++index) {
            if (random.bounded(12) == 0) {
                values.push_back(std::nullopt);
                continue;
            }
            QByteArray text = randomText(random);
            if (varied)
                text += QByteArray::number(random.bounded(1000000));
            values.push_back(text);
        }
        const RowStore store = storeOfColumn(values, blockRows);
        const std::vector<quint32> expected =
            referenceOrder(values, descending, [](const QByteArray& a, const QByteArray& b) {
                return QByteArrayView(a).compare(QByteArrayView(b)) < 0;
            });
        QCOMPARE(assets::SortedRows(store, 0, SortKind::Text, descending), expected);
    }

    void sortsTextByCodePoints() {
        // Upper case before lower case, accented letters after z, shorter prefix first.
        const Column values = {QByteArray("b"), QByteArray("B"),   QByteArray("\xc3\xa4"),
                               QByteArray("a"), QByteArray("abc"), QByteArray("ab"),
                               QByteArray("Z"), QByteArray(""),    std::nullopt};
        const RowStore store = storeOfColumn(values, 4);
        const std::vector<quint32> ascending{8, 7, 1, 6, 3, 5, 4, 0, 2};
        QCOMPARE(assets::SortedRows(store, 0, SortKind::Text, false), ascending);
        const std::vector<quint32> descending{2, 0, 4, 5, 3, 6, 1, 7, 8};
        QCOMPARE(assets::SortedRows(store, 0, SortKind::Text, true), descending);
    }

    void sortsNumbersByValueWithTextLast() {
        const Column values = {QByteArray("10"),   QByteArray("9"),   std::nullopt,
                               QByteArray("-1.5"), QByteArray("abc"), QByteArray("9.0"),
                               QByteArray(""),     std::nullopt,      QByteArray("1e1")};
        const RowStore store = storeOfColumn(values, 3);
        // NULLs, numbers (ties in arrival order), then what is not a number, as text.
        const std::vector<quint32> ascending{2, 7, 3, 1, 5, 0, 8, 6, 4};
        QCOMPARE(assets::SortedRows(store, 0, SortKind::Number, false), ascending);
        const std::vector<quint32> descending{4, 6, 0, 8, 1, 5, 3, 2, 7};
        QCOMPARE(assets::SortedRows(store, 0, SortKind::Number, true), descending);
    }

    void sortsDatesByMoment() {
        const Column values = {QByteArray("2024-01-02"),
                               QByteArray("2023-12-31 23:59:59"),
                               std::nullopt,
                               QByteArray("2024-01-02 00:00:00"),
                               QByteArray("not a date"),
                               QByteArray("2023-12-31")};
        const RowStore store = storeOfColumn(values, 2);
        const std::vector<quint32> ascending{2, 5, 1, 0, 3, 4};
        QCOMPARE(assets::SortedRows(store, 0, SortKind::DateTime, false), ascending);
        const std::vector<quint32> descending{4, 0, 3, 1, 5, 2};
        QCOMPARE(assets::SortedRows(store, 0, SortKind::DateTime, true), descending);
    }

    void sortsNumbersLikeAPlainStableSort() {
        QRandomGenerator random(11);
        Column values;
        for (int index = 0; index < 5000; ++index) {
            if (random.bounded(15) == 0)
                values.push_back(std::nullopt);
            else
                values.push_back(QByteArray::number(random.bounded(-300, 300) / 4.0));
        }
        const RowStore store = storeOfColumn(values, 333);
        auto less = [](const QByteArray& a, const QByteArray& b) {
            return a.toDouble() < b.toDouble();
        };
        QCOMPARE(assets::SortedRows(store, 0, SortKind::Number, false),
                 referenceOrder(values, false, less));
        QCOMPARE(assets::SortedRows(store, 0, SortKind::Number, true),
                 referenceOrder(values, true, less));
    }

    void sortsTheChosenColumnOnly() {
        const std::vector<Row> rows = {{"b", "1"}, {"a", "3"}, {"c", "2"}};
        const RowStore store = storeOf(rows, 2, 2);
        QCOMPARE(assets::SortedRows(store, 0, SortKind::Text, false),
                 (std::vector<quint32>{1, 0, 2}));
        QCOMPARE(assets::SortedRows(store, 1, SortKind::Number, false),
                 (std::vector<quint32>{0, 2, 1}));
    }

    void badColumnOrCancelGivesNothing() {
        const RowStore store = storeOfColumn({QByteArray("x"), QByteArray("y")}, 10);
        QVERIFY(assets::SortedRows(store, 1, SortKind::Text, false).empty());
        QVERIFY(assets::SortedRows(store, -1, SortKind::Text, false).empty());
        std::atomic<bool> cancelled{true};
        QVERIFY(assets::SortedRows(store, 0, SortKind::Text, false, &cancelled).empty());
        QVERIFY(assets::SortedRows(RowStore(1), 0, SortKind::Text, false).empty());
    }
};

QTEST_APPLESS_MAIN(TestRowStore)
#include "test_rowstore.moc"
