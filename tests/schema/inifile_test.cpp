#include "schema/inifile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <limits>
#include <unistd.h>

using schema::IniFile;

class IniFileTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readString_data();
    void readString();
    void readInteger_data();
    void readInteger();
    void missingFileReadsAsEmpty();
    void emptyFileReadsAsEmpty();
    void longLineIsReadWhole();
    void binaryFileDoesNotBreakReading();
    void directoryCannotBeRead();
    void unreadableFileThrows();

private:
    QTemporaryDir m_dir;
    QString writeFile(const QString& name, const QByteArray& bytes);
};

QString IniFileTest::writeFile(const QString& name, const QByteArray& bytes) {
    const QString path = m_dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("cannot write %s", qPrintable(path));
    file.write(bytes);
    return path;
}

void IniFileTest::readString_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");

    QTest::newRow("plain") << QByteArray("[Default]\nName=ASSETS\n") << "Default"
                           << "Name"
                           << "ASSETS";
    QTest::newRow("section in mixed case") << QByteArray("[DeFaULT]\nName=ASSETS\n") << "default"
                                           << "Name"
                                           << "ASSETS";
    QTest::newRow("key in mixed case") << QByteArray("[Default]\nnAmE=ASSETS\n") << "DEFAULT"
                                       << "NAME"
                                       << "ASSETS";
    QTest::newRow("blanks and tabs trimmed")
        << QByteArray("[Default]\n \t Name \t=  \tASSETS  TABLE \t \n") << "Default"
        << "Name"
        << "ASSETS  TABLE";
    QTest::newRow("blanks inside the header")
        << QByteArray("  [  Default  ]  \nName=A\n") << "Default"
        << "Name"
        << "A";
    QTest::newRow("cut at the first equals sign")
        << QByteArray("[Q]\nRow1=UPDATE A SET B = 1\n") << "Q"
        << "Row1"
        << "UPDATE A SET B = 1";
    QTest::newRow("empty value") << QByteArray("[S]\nName=\n") << "S"
                                 << "Name" << QString();
    QTest::newRow("first of two equal keys wins")
        << QByteArray("[S]\nName=first\nName=second\n") << "S"
        << "Name"
        << "first";
    QTest::newRow("first wins without regard to case")
        << QByteArray("[S]\nNAME=first\nname=second\n") << "S"
        << "Name"
        << "first";
    QTest::newRow("repeated section adds its keys")
        << QByteArray("[S]\nA=1\n[T]\nB=2\n[s]\nC=3\n") << "S"
        << "C"
        << "3";
    QTest::newRow("repeated section keeps the first value")
        << QByteArray("[S]\nA=1\n[S]\nA=2\n") << "S"
        << "A"
        << "1";
    QTest::newRow("comment line") << QByteArray("[S]\n;Name=commented\nName=real\n") << "S"
                                  << "Name"
                                  << "real";
    QTest::newRow("indented comment line") << QByteArray("[S]\n   ; Name=commented\n") << "S"
                                           << "Name" << QString();
    QTest::newRow("semicolon inside a value is kept")
        << QByteArray("[S]\nRow1=SELECT 1; SELECT 2\n") << "S"
        << "Row1"
        << "SELECT 1; SELECT 2";
    QTest::newRow("key before any section is ignored")
        << QByteArray("Name=lost\n[S]\nOther=1\n") << "S"
        << "Name" << QString();
    QTest::newRow("line without equals sign is ignored")
        << QByteArray("[S]\nName\nName=ok\n") << "S"
        << "Name"
        << "ok";
    QTest::newRow("empty key is ignored") << QByteArray("[S]\n=value\n") << "S"
                                          << "" << QString();
    QTest::newRow("missing key") << QByteArray("[S]\nName=x\n") << "S"
                                 << "Columns" << QString();
    QTest::newRow("missing section") << QByteArray("[S]\nName=x\n") << "T"
                                     << "Name" << QString();
    QTest::newRow("keys stay in their section") << QByteArray("[S]\nName=s\n[T]\nName=t\n") << "T"
                                                << "Name"
                                                << "t";
    QTest::newRow("CR LF line ends") << QByteArray("[S]\r\nName=x\r\nColumns=2\r\n") << "S"
                                     << "Name"
                                     << "x";
    QTest::newRow("CR line ends") << QByteArray("[S]\rName=x\rColumns=2\r") << "S"
                                  << "Columns"
                                  << "2";
    QTest::newRow("no line end at the end") << QByteArray("[S]\nName=last") << "S"
                                            << "Name"
                                            << "last";
    QTest::newRow("header without closing bracket")
        << QByteArray("[Default_Table1\nName=x\n") << "Default_Table1"
        << "Name"
        << "x";
    QTest::newRow("text after the header is ignored")
        << QByteArray("[S] ; the section\nName=x\n") << "S"
        << "Name"
        << "x";
    QTest::newRow("empty section name") << QByteArray("[]\nName=x\n") << ""
                                        << "Name"
                                        << "x";
    QTest::newRow("UTF-8 byte-order mark") << QByteArray("\xEF\xBB\xBF[S]\nName=x\n") << "S"
                                           << "Name"
                                           << "x";
    QTest::newRow("NUL ends the line") << QByteArray("[S]\nName=AB\0CD\n", 15) << "S"
                                       << "Name"
                                       << "AB";
    QTest::newRow("generic type name as key")
        << QByteArray("[Oracle]\n%TEXT50%=VARCHAR2(50)\n") << "oracle"
        << "%text50%"
        << "VARCHAR2(50)";
    QTest::newRow("slashes are plain text") << QByteArray("[S]\nPath/Name=C:\\data\\x.db\n") << "S"
                                            << "path/name"
                                            << "C:\\data\\x.db";
}

void IniFileTest::readString() {
    QFETCH(QByteArray, text);
    QFETCH(QString, section);
    QFETCH(QString, key);
    QFETCH(QString, expected);
    const IniFile ini = IniFile::fromBytes(text);
    QCOMPARE(ini.readString(section, key), expected);
}

void IniFileTest::readInteger_data() {
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("expected");

    QTest::newRow("decimal") << QByteArray("12") << 12;
    QTest::newRow("zero") << QByteArray("0") << 0;
    QTest::newRow("leading zeros") << QByteArray("007") << 7;
    QTest::newRow("blanks around") << QByteArray("  3  ") << 3;
    QTest::newRow("plus sign") << QByteArray("+5") << 5;
    QTest::newRow("negative") << QByteArray("-3") << -3;
    QTest::newRow("empty") << QByteArray("") << 0;
    QTest::newRow("word") << QByteArray("three") << 0;
    QTest::newRow("digits then letters") << QByteArray("12abc") << 0;
    QTest::newRow("inner blank") << QByteArray("1 2") << 0;
    QTest::newRow("hexadecimal") << QByteArray("0x10") << 0;
    QTest::newRow("exponent") << QByteArray("1e3") << 0;
    QTest::newRow("decimal point") << QByteArray("2.0") << 0;
    QTest::newRow("sign only") << QByteArray("-") << 0;
    QTest::newRow("two signs") << QByteArray("--1") << 0;
    QTest::newRow("largest int") << QByteArray("2147483647") << std::numeric_limits<int>::max();
    QTest::newRow("smallest int") << QByteArray("-2147483648") << std::numeric_limits<int>::min();
    QTest::newRow("too large") << QByteArray("2147483648") << 0;
    QTest::newRow("far too large") << QByteArray("99999999999999999999999") << 0;
    QTest::newRow("full-width digits") << QByteArray("\xEF\xBC\x91") << 0;
}

void IniFileTest::readInteger() {
    QFETCH(QByteArray, value);
    QFETCH(int, expected);
    const IniFile ini = IniFile::fromBytes("[Default]\nTables=" + value + "\n");
    QCOMPARE(ini.readInteger(QStringLiteral("Default"), QStringLiteral("Tables")), expected);
    QCOMPARE(ini.readInteger(QStringLiteral("Default"), QStringLiteral("Missing")), 0);
    QCOMPARE(ini.readInteger(QStringLiteral("Default"), QStringLiteral("Missing"), 9), 9);
}

void IniFileTest::missingFileReadsAsEmpty() {
    const IniFile ini = IniFile::fromFile(m_dir.filePath(QStringLiteral("no-such.def")));
    QVERIFY(ini.isEmpty());
    QCOMPARE(ini.readString(QStringLiteral("Default"), QStringLiteral("Tables")), QString());
    QCOMPARE(ini.readInteger(QStringLiteral("Default"), QStringLiteral("Tables")), 0);
}

void IniFileTest::emptyFileReadsAsEmpty() {
    const IniFile ini = IniFile::fromFile(writeFile(QStringLiteral("empty.def"), QByteArray()));
    QVERIFY(ini.isEmpty());
    QVERIFY(!ini.hasSection(QStringLiteral("Default")));
}

void IniFileTest::longLineIsReadWhole() {
    const QByteArray longValue = QByteArray(64 * 1024, 'x');
    const QByteArray longKey = QByteArray(64 * 1024, 'k');
    const QByteArray longSection = QByteArray(64 * 1024, 's');
    const QByteArray text = "[Default_Table1]\nColumn1=" + longValue + "\n" + longKey + "=key\n[" +
                            longSection + "]\nName=far\n[Default_Table1]\nName=T\n";
    const IniFile ini = IniFile::fromFile(writeFile(QStringLiteral("long.def"), text));
    const QString table = QStringLiteral("Default_Table1");
    QCOMPARE(ini.readString(table, QStringLiteral("Column1")), QString::fromLatin1(longValue));
    QCOMPARE(ini.readString(table, QString::fromLatin1(longKey)), QStringLiteral("key"));
    QCOMPARE(ini.readString(QString::fromLatin1(longSection), QStringLiteral("name")),
             QStringLiteral("far"));
    QCOMPARE(ini.readString(table, QStringLiteral("Name")), QStringLiteral("T"));
}

void IniFileTest::binaryFileDoesNotBreakReading() {
    // Every byte value, many times over, with no line that starts a section.
    QByteArray noise;
    for (int round = 0; round < 64; ++round)
        for (int byte = 255; byte >= 0; --byte)
            noise.append(static_cast<char>(byte == '[' || byte == '\n' ? 'x' : byte));
    const IniFile garbage = IniFile::fromFile(writeFile(QStringLiteral("noise.bin"), noise));
    QVERIFY(garbage.isEmpty());
    QCOMPARE(garbage.readInteger(QStringLiteral("Default"), QStringLiteral("Tables")), 0);

    // Every byte value in order, which holds "[", "]", "=", ";" and line ends, then a real
    // section: the reader still finds it.
    QByteArray bytes;
    for (int round = 0; round < 64; ++round)
        for (int byte = 0; byte < 256; ++byte)
            bytes.append(static_cast<char>(byte));
    bytes += "\n[Default]\nTables=2\n";
    const IniFile mixed = IniFile::fromFile(writeFile(QStringLiteral("mixed.bin"), bytes));
    QCOMPARE(mixed.readInteger(QStringLiteral("Default"), QStringLiteral("Tables")), 2);
}

void IniFileTest::directoryCannotBeRead() {
    QVERIFY_THROWS_EXCEPTION(schema::IniFileError, IniFile::fromFile(m_dir.path()));
}

void IniFileTest::unreadableFileThrows() {
    if (::geteuid() == 0)
        QSKIP("file permissions do not bind the super-user");
    const QString path = writeFile(QStringLiteral("locked.def"), "[Default]\nTables=1\n");
    QFile::setPermissions(path, QFileDevice::WriteOwner);
    QVERIFY_THROWS_EXCEPTION(schema::IniFileError, IniFile::fromFile(path));
}

QTEST_APPLESS_MAIN(IniFileTest)
#include "inifile_test.moc"
