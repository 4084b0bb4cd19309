#include "schema/inifile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using schema::IniFile;

namespace {
constexpr qint64 Limit = 1024;
}

class IniFileTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readString_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const QByteArray& text, const QString& section,
                            const QString& key, const QString& expected) {
            QTest::newRow(name) << text << section << key << expected;
        };
        row("names in any case", "[DeFaULT]\nnAmE=ASSETS\n", "default", "NAME", "ASSETS");
        row("blanks and tabs trimmed", "  [  S  ]  \n \t Name \t=  \tA  B \t \n", "S", "Name",
            "A  B");
        row("cut at the first equals sign", "[Q]\nRow1=UPDATE A SET B = 1\n", "Q", "Row1",
            "UPDATE A SET B = 1");
        row("first of two keys wins, any case", "[S]\nNAME=first\nname=second\n", "S", "Name",
            "first");
        row("repeated section adds its keys", "[S]\nA=1\n[T]\nB=2\n[s]\nC=3\n", "S", "C", "3");
        row("repeated section keeps the first value", "[S]\nA=1\n[S]\nA=2\n", "S", "A", "1");
        row("keys stay in their section", "[S]\nName=s\n[T]\nName=t\n", "T", "Name", "t");
        row("missing section", "[S]\nName=x\n", "T", "Name", "");
        row("indented comment line", "[S]\n   ; Name=commented\nOther=1\n", "S", "Name", "");
        row("semicolon inside a value is kept", "[S]\nRow1=SELECT 1; SELECT 2\n", "S", "Row1",
            "SELECT 1; SELECT 2");
        row("key before any section is ignored", "Name=lost\n[S]\nOther=1\n", "S", "Name", "");
        row("line without equals sign is ignored", "[S]\nName\nName=ok\n", "S", "Name", "ok");
        row("empty key is ignored", "[S]\n=value\n", "S", "", "");
        row("CR LF line ends", "[S]\r\nName=x\r\nColumns=2\r\n", "S", "Name", "x");
        row("CR line ends", "[S]\rName=x\rColumns=2\r", "S", "Columns", "2");
        row("NUL ends the line", QByteArray("[S]\nName=AB\0CD\n", 15), "S", "Name", "AB");
        row("no line end at the end", "[S]\nName=last", "S", "Name", "last");
        row("header without closing bracket", "[Default_Table1\nName=x\n", "Default_Table1", "Name",
            "x");
        row("text after the header is ignored", "[S] ; the section\nName=x\n", "S", "Name", "x");
        row("empty section name", "[]\nName=x\n", "", "Name", "x");
        row("UTF-8 byte-order mark", "\xEF\xBB\xBF[S]\nName=x\n", "S", "Name", "x");
        row("slashes and percent signs are plain text", "[S]\n%Path/N%=C:\\d\\x.db\n", "S",
            "%path/n%", "C:\\d\\x.db");
    }

    void readString() {
        QFETCH(QByteArray, text);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QTEST(IniFile::fromBytes(text).readString(section, key), "expected");
    }

    // A decimal integer within the range of int; anything else gives the default (-1 here).
    void readInteger_data() {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<int>("expected");
        const auto row = [](const char* name, const QByteArray& value, int expected) {
            QTest::newRow(name) << value << expected;
        };
        row("blanks and leading zeros", "  007  ", 7);
        row("plus sign", "+5", 5);
        row("negative", "-3", -3);
        row("largest int", "2147483647", 2147483647);
        row("smallest int", "-2147483648", -2147483647 - 1);
        row("too large", "2147483648", -1);
        row("too small", "-2147483649", -1);
        row("empty", "", -1);
        row("sign only", "-", -1);
        row("digits then letters", "12abc", -1);
        row("inner blank", "1 2", -1);
        row("hexadecimal", "0x10", -1);
        row("exponent", "1e3", -1);
        row("decimal point", "2.0", -1);
        row("full-width digit", "\xEF\xBC\x91", -1);
    }

    void readInteger() {
        QFETCH(QByteArray, value);
        QFETCH(int, expected);
        const IniFile ini = IniFile::fromBytes("[Default]\nTables=" + value + "\n");
        QCOMPARE(ini.readInteger("Default", "Tables", -1), expected);
        QCOMPARE(ini.readInteger("Default", "Tables"), expected == -1 ? 0 : expected);
        QCOMPARE(ini.readInteger("Default", "Missing", 9), 9);
    }

    void longLinesAreReadWhole() {
        QTemporaryDir dir;
        const QByteArray value(64 * 1024, 'x'), key(64 * 1024, 'k'), section(64 * 1024, 's');
        QVERIFY(writeFile(dir.filePath("long.def"), "[T]\nColumn1=" + value + "\n" + key +
                                                        "=key\n[" + section + "]\nName=far\n"));
        const IniFile ini = IniFile::fromFile(dir.filePath("long.def"), 1 << 20);
        QCOMPARE(ini.readString("T", "Column1"), QString::fromLatin1(value));
        QCOMPARE(ini.readString("T", QString::fromLatin1(key)), QStringLiteral("key"));
        QCOMPARE(ini.readString(QString::fromLatin1(section), "name"), QStringLiteral("far"));
    }

    // Every byte value in order, which holds "[", "]", "=", ";" and line ends, then a real
    // section: the reader still finds it.
    void binaryFileDoesNotBreakReading() {
        QTemporaryDir dir;
        QByteArray bytes;
        for (int round = 0; round < 64; ++round)
            for (int byte = 0; byte < 256; ++byte)
                bytes.append(static_cast<char>(byte));
        QVERIFY(writeFile(dir.filePath("mixed.bin"), bytes + "\n[Default]\nTables=2\n"));
        QCOMPARE(IniFile::fromFile(dir.filePath("mixed.bin"), Limit * 32)
                     .readInteger("Default", "Tables"),
                 2);
    }

    // A missing or empty file reads as empty. A file that exists but cannot be read throws: a
    // folder, a file without read rights (not binding on the super-user), and a file or device
    // larger than the limit (read only up to it).
    void missingEmptyUnreadableOrOversized() {
        QTemporaryDir dir;
        const IniFile missing = IniFile::fromFile(dir.filePath("no-such.def"), Limit);
        QVERIFY(missing.isEmpty());
        QCOMPARE(missing.readInteger("Default", "Tables"), 0);
        QVERIFY(writeFile(dir.filePath("empty.def"), QByteArray()));
        QVERIFY(IniFile::fromFile(dir.filePath("empty.def"), Limit).isEmpty());
        QVERIFY(writeFile(dir.filePath("full.def"), QByteArray(Limit, ';')));
        QVERIFY(IniFile::fromFile(dir.filePath("full.def"), Limit).isEmpty());

        QVERIFY_THROWS_EXCEPTION(schema::IniFileError, IniFile::fromFile(dir.path(), Limit));
        QVERIFY(writeFile(dir.filePath("over.def"), QByteArray(Limit + 1, ';')));
        QVERIFY_THROWS_EXCEPTION(schema::IniFileError,
                                 IniFile::fromFile(dir.filePath("over.def"), Limit));
        QVERIFY_THROWS_EXCEPTION(schema::IniFileError, IniFile::fromFile("/dev/zero", Limit));
        const QString path = dir.filePath("locked.def");
        QVERIFY(writeFile(path, "[Default]\nTables=1\n"));
        QFile::setPermissions(path, QFileDevice::WriteOwner);
        if (::geteuid() != 0)
            QVERIFY_THROWS_EXCEPTION(schema::IniFileError, IniFile::fromFile(path, Limit));
    }

private:
    static bool writeFile(const QString& path, const QByteArray& bytes) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }
};

QTEST_APPLESS_MAIN(IniFileTest)
#include "inifile_test.moc"
