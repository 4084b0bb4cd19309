// The results grid's rules that need no widgets: the sort text after a title click and
// the stored column layout values as read (test_gridrange writes and reads them back).

#include "assets/gridlayout.h"
#include "assets/sorttext.h"
#include "support/testsupport.h"

#include <QTest>

using testsupport::AddRow;

class TestGridRules : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void nextSortText_data() {
        QTest::addColumn<QString>("current");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("next");
        AddRow("unsorted", "", "ASSET_TAG", "[ASSET_TAG] ASC");
        AddRow("ascending turns descending", "[ASSET_TAG] ASC", "ASSET_TAG", "[ASSET_TAG] DESC");
        AddRow("descending turns ascending", "[ASSET_TAG] DESC", "ASSET_TAG", "[ASSET_TAG] ASC");
        AddRow("another column after ascending", "[ASSET_TAG] ASC", "NAME", "[NAME] ASC");
        AddRow("another column after descending", "[ASSET_TAG] DESC", "NAME", "[NAME] ASC");
        AddRow("a name inside the sorted one counts as the same", "[ASSET_TAG] ASC", "TAG",
               "[TAG] DESC");
        AddRow("a name around the sorted one is another column", "[TAG] ASC", "ASSET_TAG",
               "[ASSET_TAG] ASC");
        AddRow("the search is case-sensitive", "[asset_tag] ASC", "ASSET_TAG", "[ASSET_TAG] ASC");
        AddRow("a sort text without brackets", "ASSET_TAG ASC", "ASSET_TAG", "[ASSET_TAG] DESC");
        AddRow("a lower-case direction is not ASC", "[ASSET_TAG] asc", "ASSET_TAG",
               "[ASSET_TAG] ASC");
        AddRow("the name found in the direction word", "[ID] DESC", "DESC", "[DESC] ASC");
        AddRow("blanks in a field name", "[PURCHASE DATE] ASC", "PURCHASE DATE",
               "[PURCHASE DATE] DESC");
        AddRow("an empty field name occurs nowhere", "[ASSET_TAG] ASC", "", "[] ASC");
    }
    void nextSortText() {
        QFETCH(QString, current);
        QFETCH(QString, field);
        QTEST(assets::NextSortText(current, field), "next");
    }

    // What is read, as "comma visible width valid appliesWidth" ('-': not read).
    void parseColumnLayout_data() {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("read");
        const auto row = [](const char* value, const char* read) {
            AddRow(*value ? value : "(empty)", value, read);
        };
        row("0,120", "1 0 120 1 1");
        row("1,0", "1 1 0 1 0");
        row("2,80", "1 0 80 1 1");
        row("-1,80", "1 0 80 1 1");
        row("1,-5", "1 1 -5 1 0");
        row(" 1 , 75 ", "1 1 75 1 1");
        row("+1,+75", "1 1 75 1 1");
        row("01,075", "1 1 75 1 1");
        row("120", "0 - - 1 0");
        row("", "0 - - 1 0");
        // A part that is not a decimal number fails the pass; the visibility before it counts.
        row("1,abc", "1 1 - 0 0");
        row("0,", "1 0 - 0 0");
        row("1,75,3", "1 1 - 0 0");
        row("1,0x10", "1 1 - 0 0");
        row("1,99999999999", "1 1 - 0 0");
        row("x,75", "1 - - 0 0");
        row(",75", "1 - - 0 0");
        row("1.5,75", "1 - - 0 0");
    }
    void parseColumnLayout() {
        QFETCH(QString, value);
        const assets::ColumnLayout layout = assets::ParseColumnLayout(value);
        const auto optional = [](const auto& part) {
            return part ? QString::number(*part) : QStringLiteral("-");
        };
        QTEST(QStringList({QString::number(layout.hasComma), optional(layout.visible),
                           optional(layout.width), QString::number(layout.isValid()),
                           QString::number(layout.appliesWidth())})
                  .join(' '),
              "read");
    }
};

QTEST_APPLESS_MAIN(TestGridRules)
#include "test_gridrules.moc"
