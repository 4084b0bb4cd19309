#include "core/registry.h"
#include "support/testsupport.h"

#include <QSettings>
#include <QTest>

using testsupport::AddRow;

class TestRegistry : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { testsupport::UseTemporarySettings(); }

    // A null value: nothing written first. A missing value with a default gets it written
    // back; without one it is not found and the buffer is emptied.
    void writeThenRead_data() {
        QTest::addColumn<QString>("subkey");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::addColumn<int>("length");
        QTest::addColumn<QString>("fallback"); // null: none
        QTest::addColumn<QString>("expected"); // null: not found

        const QString none;
        AddRow("plain", "LastConnection", "SQL", "select * from ASSETS", 64000, "unused",
               "select * from ASSETS");
        AddRow("empty value", "LastConnection", "UserName", "", 64000, "unused", "");
        AddRow("nested subkey", "Preferences\\GridLayout", "ID", "1,64", 259, none, "1,64");
        AddRow("cut to the buffer", "Preferences", "LogFile", "abcdef", 4, none, "abc");
        AddRow("line breaks and unicode", "LastConnection", "SQL", "select 'Müller'\r\nfrom T",
               64000, none, "select 'Müller'\r\nfrom T");
        AddRow("value name with blanks", "ExportImport", "Last File", "a.txt", 259, none, "a.txt");
        AddRow("missing, no default", "LastConnection", "DSN", none, 64000, none, none);
        AddRow("missing, default written back", "Preferences", "Money", none, 259, "0", "0");
    }
    void writeThenRead() {
        QFETCH(QString, subkey);
        QFETCH(QString, name);
        QFETCH(QString, value);
        QFETCH(int, length);
        QFETCH(QString, fallback);
        QFETCH(QString, expected);
        if (!value.isNull())
            QVERIFY(core::WriteRegistryString(subkey, name, value));
        for (const std::optional<QString>& defaultValue :
             {fallback.isNull() ? std::nullopt : std::optional(fallback),
              std::optional<QString>()}) {
            QString buffer = QStringLiteral("stale");
            QCOMPARE(core::ReadRegistryString(subkey, name, buffer, length, defaultValue),
                     !expected.isNull());
            QCOMPARE(buffer, expected.isNull() ? QString() : expected);
        }
    }

    void storedUnderTheCompanyAndProgram() {
        QVERIFY(core::WriteRegistryString(QStringLiteral("Preferences\\GridLayout"),
                                          QStringLiteral("ASSETTYPE"), QStringLiteral("0,80")));
        QSettings store(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
        QCOMPARE(store.value(QStringLiteral("Preferences/GridLayout/ASSETTYPE")).toString(),
                 QStringLiteral("0,80"));
        QVERIFY(store.fileName().startsWith(qEnvironmentVariable("XDG_CONFIG_HOME")));
    }
};

QTEST_APPLESS_MAIN(TestRegistry)
#include "test_registry.moc"
