// The results grid's rules that need no widgets: the sort text after a title click and
// the stored column layout values.

#include "assets/gridlayout.h"
#include "assets/sorttext.h"

#include <QTest>

#include <optional>

using assets::ColumnLayout;

Q_DECLARE_METATYPE(std::optional<bool>)
Q_DECLARE_METATYPE(std::optional<int>)

class TestGridRules : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void nextSortText_data() {
        QTest::addColumn<QString>("current");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("next");
        const auto row = [](const char* name, const char* current, const char* field,
                            const char* next) {
            QTest::newRow(name) << QString::fromLatin1(current) << QString::fromLatin1(field)
                                << QString::fromLatin1(next);
        };
        row("unsorted", "", "ASSET_TAG", "[ASSET_TAG] ASC");
        row("ascending turns descending", "[ASSET_TAG] ASC", "ASSET_TAG", "[ASSET_TAG] DESC");
        row("descending turns ascending", "[ASSET_TAG] DESC", "ASSET_TAG", "[ASSET_TAG] ASC");
        row("another column after ascending", "[ASSET_TAG] ASC", "NAME", "[NAME] ASC");
        row("another column after descending", "[ASSET_TAG] DESC", "NAME", "[NAME] ASC");
        row("a name inside the sorted one counts as the same", "[ASSET_TAG] ASC", "TAG",
            "[TAG] DESC");
        row("a name inside the sorted one, descending", "[ASSET_TAG] DESC", "TAG", "[TAG] ASC");
        row("a name around the sorted one is another column", "[TAG] ASC", "ASSET_TAG",
            "[ASSET_TAG] ASC");
        row("the search is case-sensitive", "[asset_tag] ASC", "ASSET_TAG", "[ASSET_TAG] ASC");
        row("a sort text without brackets", "ASSET_TAG ASC", "ASSET_TAG", "[ASSET_TAG] DESC");
        row("a lower-case direction is not ASC", "[ASSET_TAG] asc", "ASSET_TAG", "[ASSET_TAG] ASC");
        row("the name found in the direction word", "[ID] DESC", "DESC", "[DESC] ASC");
        row("blanks in a field name", "[PURCHASE DATE] ASC", "PURCHASE DATE",
            "[PURCHASE DATE] DESC");
        row("an empty field name occurs nowhere", "[ASSET_TAG] ASC", "", "[] ASC");
    }
    void nextSortText() {
        QFETCH(QString, current);
        QFETCH(QString, field);
        QFETCH(QString, next);
        QCOMPARE(assets::NextSortText(current, field), next);
    }

    void parseColumnLayout_data() {
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("hasComma");
        QTest::addColumn<std::optional<bool>>("visible");
        QTest::addColumn<std::optional<int>>("width");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<bool>("appliesWidth");
        using B = std::optional<bool>;
        using I = std::optional<int>;
        const auto row = [](const char* value, bool hasComma, B visible, I width, bool valid,
                            bool appliesWidth) {
            QTest::newRow(*value ? value : "(empty)") << QString::fromLatin1(value) << hasComma
                                                      << visible << width << valid << appliesWidth;
        };
        row("0,120", true, B(false), I(120), true, true);
        row("1,0", true, B(true), I(0), true, false);
        row("1,75", true, B(true), I(75), true, true);
        row("2,80", true, B(false), I(80), true, true);
        row("-1,80", true, B(false), I(80), true, true);
        row("1,-5", true, B(true), I(-5), true, false);
        row(" 1 , 75 ", true, B(true), I(75), true, true);
        row("+1,+75", true, B(true), I(75), true, true);
        row("01,075", true, B(true), I(75), true, true);
        row("120", false, B(), I(), true, false);
        row("", false, B(), I(), true, false);
        // A part that is not a decimal number fails the pass; the visibility before it counts.
        row("1,abc", true, B(true), I(), false, false);
        row("0,", true, B(false), I(), false, false);
        row("1,75,3", true, B(true), I(), false, false);
        row("1,0x10", true, B(true), I(), false, false);
        row("1,99999999999", true, B(true), I(), false, false);
        row("x,75", true, B(), I(), false, false);
        row(",75", true, B(), I(), false, false);
        row("1.5,75", true, B(), I(), false, false);
    }
    void parseColumnLayout() {
        QFETCH(QString, value);
        QFETCH(bool, hasComma);
        QFETCH(std::optional<bool>, visible);
        QFETCH(std::optional<int>, width);
        QFETCH(bool, valid);
        QFETCH(bool, appliesWidth);
        const ColumnLayout layout = assets::ParseColumnLayout(value);
        QCOMPARE(layout.hasComma, hasComma);
        QCOMPARE(layout.visible, visible);
        QCOMPARE(layout.width, width);
        QCOMPARE(layout.isValid(), valid);
        QCOMPARE(layout.appliesWidth(), appliesWidth);
    }

    void formatColumnLayout_data() {
        QTest::addColumn<bool>("visible");
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("value");
        QTest::newRow("visible") << true << 120 << QStringLiteral("1,120");
        QTest::newRow("hidden") << false << 64 << QStringLiteral("0,64");
        QTest::newRow("no width") << true << 0 << QStringLiteral("1,0");
        QTest::newRow("negative width") << false << -3 << QStringLiteral("0,-3");
    }
    void formatColumnLayout() {
        QFETCH(bool, visible);
        QFETCH(int, width);
        QFETCH(QString, value);
        QCOMPARE(assets::FormatColumnLayout(visible, width), value);
        // And it reads back.
        const ColumnLayout layout = assets::ParseColumnLayout(value);
        QVERIFY(layout.isValid());
        QCOMPARE(layout.visible, std::optional<bool>(visible));
        QCOMPARE(layout.width, std::optional<int>(width));
    }
};

QTEST_APPLESS_MAIN(TestGridRules)
#include "test_gridrules.moc"
