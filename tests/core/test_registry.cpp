#include "core/registry.h"
#include "support/testsupport.h"

#include <QSettings>
#include <QTest>

class TestRegistry : public QObject {
    Q_OBJECT

private:
    static QString read(const QString& subkey, const QString& name, int length,
                        const std::optional<QString>& fallback, bool* found) {
        QString buffer = QStringLiteral("stale");
        *found = core::ReadRegistryString(subkey, name, buffer, length, fallback);
        return buffer;
    }

private Q_SLOTS:
    void initTestCase() { testsupport::UseTemporarySettings(); }

    void missingValueWithoutDefault() {
        bool found = true;
        QCOMPARE(read(QStringLiteral("LastConnection"), QStringLiteral("DSN"), 64000, std::nullopt,
                      &found),
                 QString());
        QVERIFY(!found);
    }

    void missingValueWithDefaultIsWrittenBack() {
        bool found = false;
        QCOMPARE(read(QStringLiteral("Preferences"), QStringLiteral("Money"), 259,
                      QStringLiteral("0"), &found),
                 QStringLiteral("0"));
        QVERIFY(found);
        QCOMPARE(
            read(QStringLiteral("Preferences"), QStringLiteral("Money"), 259, std::nullopt, &found),
            QStringLiteral("0"));
        QVERIFY(found);
    }

    void writeThenRead_data() {
        QTest::addColumn<QString>("subkey");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::addColumn<int>("length");
        QTest::addColumn<QString>("expected");

        QTest::newRow("plain") << "LastConnection"
                               << "SQL"
                               << "select * from ASSETS" << 64000 << "select * from ASSETS";
        QTest::newRow("empty value") << "LastConnection"
                                     << "UserName"
                                     << "" << 64000 << "";
        QTest::newRow("nested subkey") << "Preferences\\GridLayout"
                                       << "ID"
                                       << "1,64" << 259 << "1,64";
        QTest::newRow("cut to the buffer") << "Preferences"
                                           << "LogFile"
                                           << "abcdef" << 4 << "abc";
        QTest::newRow("line breaks and unicode")
            << "LastConnection"
            << "SQL"
            << "select 'Müller'\r\nfrom T" << 64000 << "select 'Müller'\r\nfrom T";
        QTest::newRow("value name with blanks") << "ExportImport"
                                                << "Last File"
                                                << "a.txt" << 259 << "a.txt";
    }

    void writeThenRead() {
        QFETCH(QString, subkey);
        QFETCH(QString, name);
        QFETCH(QString, value);
        QFETCH(int, length);
        QVERIFY(core::WriteRegistryString(subkey, name, value));
        bool found = false;
        QTEST(read(subkey, name, length, QStringLiteral("unused default"), &found), "expected");
        QVERIFY(found);
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
