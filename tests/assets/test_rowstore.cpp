// The compact row store and the sort keys of the results grid: pure logic, no database.

#include "assets/rowstore.h"
#include "assets/sortkeys.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <numeric>
#include <optional>

using assets::RowBlockBuilder;
using assets::RowStore;
using assets::SortKind;
using db::odbc::Row;

// The values of one text column, NULL as nullopt.
using Column = std::vector<std::optional<QByteArray>>;
using Order = std::vector<quint32>;

Q_DECLARE_METATYPE(SortKind)

namespace {

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

RowStore storeOfColumn(const Column& values, qsizetype blockRows) {
    std::vector<Row> rows;
    for (const auto& value : values)
        rows.push_back({value.value_or(QByteArray())});
    return storeOf(rows, 1, blockRows);
}

// The order a plain, obviously right sort gives: NULL first, then by value (numbers) or
// bytes, ties by arrival; descending reverses everything but the ties.
Order referenceOrder(const Column& values, SortKind kind, bool descending) {
    Order order(values.size());
    std::iota(order.begin(), order.end(), 0u);
    auto before = [&](quint32 a, quint32 b) {
        if (!values[a] || !values[b])
            return !values[a] && values[b];
        if (kind == SortKind::Number)
            return values[a]->toDouble() < values[b]->toDouble();
        return QByteArrayView(*values[a]).compare(QByteArrayView(*values[b])) < 0;
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

    // Values, NULLs and empty texts in blocks of several sizes; the totals of bytes.
    void keepsValuesNullsAndEmptyTexts_data() {
        QTest::addColumn<qsizetype>("blockRows");
        QTest::newRow("one block") << qsizetype(1000);
        QTest::newRow("one row per block") << qsizetype(1);
        QTest::newRow("blocks of three") << qsizetype(3);
    }
    void keepsValuesNullsAndEmptyTexts() {
        QFETCH(qsizetype, blockRows);
        const std::vector<Row> rows = {
            {"1", "plain", QByteArray()},
            {"2", "", QByteArray("\x00\x01\xff", 3)},
            {QByteArray(), "Gr\xc3\xbc\xc3\x9f\xf0\x9f\x98\x80", ""},
            {"4", QByteArray(70000, 'x'), QByteArray()},
            {"5", QByteArray(), QByteArray("\0", 1)},
        };
        const RowStore store = storeOf(rows, 3, blockRows);
        QCOMPARE(store.rowCount(), qsizetype(rows.size()));
        QCOMPARE(store.columnCount(), 3);
        QCOMPARE(store.blockCount(), (qsizetype(rows.size()) + blockRows - 1) / blockRows);
        QCOMPARE(store.blockStart(store.blockCount() - 1), (store.blockCount() - 1) * blockRows);
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
        // Values of ten bytes: offsets and NULL bits add about four bytes each.
        const RowStore big = storeOf(std::vector<Row>(20000, Row(10, "0123456789")), 10, 4096);
        QCOMPARE(big.textBytes(), qsizetype(20000 * 10 * 10));
        QVERIFY2(big.memoryBytes() < big.textBytes() * 3 / 2,
                 qPrintable(QString::number(big.memoryBytes())));
    }

    // Rows of views and of other widths; empty builders; blocks of another width; copies.
    void buildersBlocksAndCopies() {
        const QByteArray bytes("\0\1", 2);
        RowBlockBuilder builder(4);
        QVERIFY(builder.finish() == nullptr);
        builder.addViews({{QByteArrayView("Gr\xc3\xbc"), false},
                          {QByteArrayView(), true},
                          {QByteArrayView("", 0), false},
                          {QByteArrayView(bytes), false}});
        // Short rows are filled with NULLs, surplus values dropped.
        builder.addViews({{QByteArrayView("x"), false}});
        builder.addRow({"b", "c", "d", "e", "surplus"});
        RowStore store(4);
        store.append(nullptr);
        QCOMPARE(store.blockCount(), qsizetype(0));
        store.append(builder.finish());
        QCOMPARE(builder.rowCount(), qsizetype(0));
        QVERIFY(builder.finish() == nullptr);
        QCOMPARE(store.rowCount(), qsizetype(3));
        QCOMPARE(store.value(0, 0).toByteArray(), QByteArray("Gr\xc3\xbc"));
        QVERIFY(store.isNull(0, 1));
        QVERIFY(!store.isNull(0, 2) && store.value(0, 2).isEmpty());
        QCOMPARE(store.value(0, 3).toByteArray(), bytes);
        QCOMPARE(store.value(1, 0).toByteArray(), QByteArray("x"));
        QVERIFY(store.isNull(1, 1) && store.isNull(1, 3));
        QCOMPARE(store.value(2, 3).toByteArray(), QByteArray("e"));
        QCOMPARE(store.textBytes(), 4 + bytes.size() + 1 + 4);
        // A block of another width is refused.
        RowBlockBuilder wide(2);
        wide.addRow({"x", "y"});
        QVERIFY_THROWS_EXCEPTION(std::invalid_argument, store.append(wide.finish()));
        QCOMPARE(store.rowCount(), qsizetype(3));
        // Copies share blocks and stay as they were.
        const RowStore copy = store;
        builder.addRow({"second"});
        store.append(builder.finish());
        QCOMPARE(copy.rowCount(), qsizetype(3));
        QCOMPARE(store.value(3, 0).toByteArray(), QByteArray("second"));
        store.clear(2);
        QCOMPARE(store.rowCount(), qsizetype(0));
        QCOMPARE(store.columnCount(), 2);
        QCOMPARE(copy.value(1, 0).toByteArray(), QByteArray("x"));
    }

    // ------------------------------------------------------------------ sort text and keys

    // "field direction", or "invalid".
    void parsesSortText_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("request");
        const auto row = [](const char* text, const char* request) {
            QTest::newRow(*text ? text : "(empty)") << QString(text) << QString(request);
        };
        row("[NAME] ASC", "NAME asc");
        row("[Name] desc", "Name desc");
        row("[NAME]", "NAME asc");
        row("NAME DESC", "NAME desc");
        row("[ASSET TAG] ASC", "ASSET TAG asc");
        row("[A]B] DESC", "A]B desc");
        row("  [ID]   ASC ", "ID asc");
        row("", " asc");
        row("   ", " asc");
        row("[NAME] UP", "invalid");
        row("[A] ASC, [B] DESC", "invalid");
        row("[NAME ASC", "invalid");
        row("[] ASC", "invalid");
    }
    void parsesSortText() {
        QFETCH(QString, text);
        const std::optional<assets::SortRequest> request = assets::ParseSortText(text);
        QTEST(request ? request->field + (request->descending ? " desc" : " asc")
                      : QStringLiteral("invalid"),
              "request");
    }

    // `second` empty: `first` is refused.
    void keysOrderAsTheValues_data() {
        QTest::addColumn<SortKind>("kind");
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        QTest::addColumn<int>("order"); // of first against second: -1 or 0
        const auto row = [](const char* name, SortKind kind, const char* first, const char* second,
                            int order) {
            QTest::newRow(name) << kind << QByteArray(first) << QByteArray(second) << order;
        };
        const SortKind N = SortKind::Number;
        row("integers", N, "9", "10", -1);
        row("sign", N, "-0.5", "0", -1);
        row("integer and fraction", N, "2", "2.000001", -1);
        row("exponent", N, "9e2", "1.0E3", -1);
        row("beyond 2^53", N, "9007199254740993", "9007199254740994", -1);
        row("int64 limits", N, "-9223372036854775808", "9223372036854775807", -1);
        row("huge", N, "9223372036854775807", "1e300", -1);
        row("beyond double", N, "1e300", "1e999", -1);
        row("blanks and plus", N, " 3 ", "+4", -1);
        row("infinity", N, "-inf", "-1e308", -1);
        row("NaN last", N, "inf", "NaN", -1);
        row("zero and minus zero", N, "0", "-0.0", 0);
        row("trailing zeros", N, "12", "12.000", 0);
        row("exponent equals", N, "1e2", "100", 0);
        const SortKind D = SortKind::DateTime;
        row("years before months", D, "1999-12-31", "2000-01-01", -1);
        row("date then time", D, "2024-01-01", "2024-01-01 00:00:01", -1);
        row("times", D, "2024-01-01 09:59:59", "2024-01-01 10:00:00", -1);
        row("fractions", D, "2024-01-01 10:00:00.1", "2024-01-01 10:00:00.25", -1);
        row("T separator", D, "2024-01-01T10:00", "2024-01-01 10:01", -1);
        row("time of day", D, "09:30:00", "10:00", -1);
        row("zone ignored", D, "2024-05-01 10:00:00+02", "2024-05-01 11:00:00Z", -1);
        for (const char* text : {"", "  ", "abc", "12abc", "+-1", "1,5", "0x10"})
            row(qPrintable(QStringLiteral("number refused: '%1'").arg(text)), N, text, "", 0);
        for (const char* text : {"", "31/12/2023", "2023-13-01", "2023-12-00", "23-12-01",
                                 "0044-03-15 BC", "2023-01-01 10:60", "soon"})
            row(qPrintable(QStringLiteral("date refused: '%1'").arg(text)), D, text, "", 0);
    }
    void keysOrderAsTheValues() {
        QFETCH(SortKind, kind);
        QFETCH(QByteArray, first);
        QFETCH(QByteArray, second);
        QFETCH(int, order);
        const auto key = kind == SortKind::Number ? assets::NumberKey : assets::DateTimeKey;
        if (second.isEmpty()) {
            QVERIFY(!key(first));
            return;
        }
        const auto a = key(first);
        const auto b = key(second);
        QVERIFY(a && b);
        QCOMPARE(*a < *b, order < 0);
        QCOMPARE(*a == *b, order == 0);
    }

    void kindFollowsColumnType() {
        // SQL_INTEGER, SQL_DOUBLE, SQL_TYPE_DATE, SQL_TYPE_TIMESTAMP, SQL_VARCHAR, SQL_WVARCHAR
        const std::pair<int, SortKind> kinds[] = {
            {4, SortKind::Number},    {8, SortKind::Number}, {91, SortKind::DateTime},
            {93, SortKind::DateTime}, {12, SortKind::Text},  {-9, SortKind::Text}};
        for (const auto& [sqlType, kind] : kinds) {
            db::odbc::ColumnInfo column;
            column.sqlType = sqlType;
            QCOMPARE(assets::SortKindOf(column), kind);
        }
    }

    // ------------------------------------------------------------------ sorting

    void sortsLikeAPlainStableSort_data() {
        QTest::addColumn<SortKind>("kind");
        QTest::addColumn<bool>("descending");
        QTest::addColumn<qsizetype>("blockRows");
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("varied"); // most values distinct
        for (bool descending : {false, true}) {
            const char* direction = descending ? "descending" : "ascending";
            const auto text = [&](const char* name, qsizetype blockRows, int count, bool varied) {
                QTest::addRow("text %s%s", direction, name)
                    << SortKind::Text << descending << blockRows << count << varied;
            };
            text("", 1000, 3000, false);
            text(", small blocks", 7, 3000, false);
            // Enough rows for ranking the few distinct values, and for giving up on it.
            text(", many rows", 4096, 30000, false);
            text(", many distinct rows", 4096, 30000, true);
            QTest::addRow("numbers %s", direction)
                << SortKind::Number << descending << qsizetype(333) << 5000 << false;
        }
    }
    void sortsLikeAPlainStableSort() {
        QFETCH(SortKind, kind);
        QFETCH(bool, descending);
        QFETCH(qsizetype, blockRows);
        QFETCH(int, count);
        QFETCH(bool, varied);
        QRandomGenerator random(7);
        Column values;
        for (int index = 0; index < count; ++index) {
            if (random.bounded(12) == 0)
                values.push_back(std::nullopt);
            else if (kind == SortKind::Number)
                values.push_back(QByteArray::number(random.bounded(-300, 300) / 4.0));
            else if (varied)
                values.push_back(randomText(random) + QByteArray::number(random.bounded(1000000)));
            else
                values.push_back(randomText(random));
        }
        QCOMPARE(assets::SortedRows(storeOfColumn(values, blockRows), 0, kind, descending),
                 referenceOrder(values, kind, descending));
    }

    void sortsByKind_data() {
        QTest::addColumn<SortKind>("kind");
        QTest::addColumn<Column>("values");
        QTest::addColumn<Order>("ascending");
        QTest::addColumn<Order>("descending");
        const std::nullopt_t null = std::nullopt;
        // Upper case before lower case, accented letters after z, shorter prefix first.
        QTest::newRow("text by code points")
            << SortKind::Text << Column{"b", "B", "\xc3\xa4", "a", "abc", "ab", "Z", "", null}
            << Order{8, 7, 1, 6, 3, 5, 4, 0, 2} << Order{2, 0, 4, 5, 3, 6, 1, 7, 8};
        // NULLs, numbers (ties in arrival order), then what is not a number, as text.
        QTest::newRow("numbers by value, text last")
            << SortKind::Number << Column{"10", "9", null, "-1.5", "abc", "9.0", "", null, "1e1"}
            << Order{2, 7, 3, 1, 5, 0, 8, 6, 4} << Order{4, 6, 0, 8, 1, 5, 3, 2, 7};
        QTest::newRow("dates by moment")
            << SortKind::DateTime
            << Column{"2024-01-02",          "2023-12-31 23:59:59", null,
                      "2024-01-02 00:00:00", "not a date",          "2023-12-31"}
            << Order{2, 5, 1, 0, 3, 4} << Order{4, 0, 3, 1, 5, 2};
    }
    void sortsByKind() {
        QFETCH(SortKind, kind);
        QFETCH(Column, values);
        QFETCH(Order, ascending);
        QFETCH(Order, descending);
        const RowStore store = storeOfColumn(values, 4);
        QCOMPARE(assets::SortedRows(store, 0, kind, false), ascending);
        QCOMPARE(assets::SortedRows(store, 0, kind, true), descending);
    }

    void sortsTheChosenColumnOnly() {
        const RowStore store = storeOf({{"b", "1"}, {"a", "3"}, {"c", "2"}}, 2, 2);
        QCOMPARE(assets::SortedRows(store, 0, SortKind::Text, false), (Order{1, 0, 2}));
        QCOMPARE(assets::SortedRows(store, 1, SortKind::Number, false), (Order{0, 2, 1}));
        // No such column, a cancelled sort, no rows: nothing.
        QVERIFY(assets::SortedRows(store, 2, SortKind::Text, false).empty());
        QVERIFY(assets::SortedRows(store, -1, SortKind::Text, false).empty());
        std::atomic<bool> cancelled{true};
        QVERIFY(assets::SortedRows(store, 0, SortKind::Text, false, &cancelled).empty());
        QVERIFY(assets::SortedRows(RowStore(1), 0, SortKind::Text, false).empty());
    }
};

QTEST_APPLESS_MAIN(TestRowStore)
#include "test_rowstore.moc"
