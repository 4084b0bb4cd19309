#include "translation/crc32.h"
#include "translation/escapes.h"
#include "translation/language.h"
#include "translation/lkpfile.h"
#include "translation/placeholders.h"
#include "translation/service.h"
#include "translation/translate.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace translation;

Q_DECLARE_METATYPE(translation::Language)

namespace {

bool writeFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

// A language folder laid out as installed: the program's folder and ../share/quillet.
class LanguageFolder {
public:
    LanguageFolder() {
        QDir(m_root.path()).mkpath(QStringLiteral("bin"));
        QDir(m_root.path()).mkpath(QStringLiteral("share/quillet"));
    }
    QString programDirectory() const { return m_root.filePath(QStringLiteral("bin")); }
    QString shareDirectory() const { return m_root.filePath(QStringLiteral("share/quillet")); }

    // "FR" writes OrvLibFR.LKP beside the program, "share/FR" into the share folder.
    bool add(const QString& where, const QByteArray& content = "") const {
        const bool inShare = where.startsWith(QLatin1String("share/"));
        const QString suffix = inShare ? where.mid(6) : where;
        const QString directory = inShare ? shareDirectory() : programDirectory();
        return writeFile(QDir(directory).filePath(QStringLiteral("OrvLib%1.LKP").arg(suffix)),
                         content);
    }

private:
    QTemporaryDir m_root;
};

QByteArray entry(const char* source, const char* translation) {
    return FormatLkpEntry(QString::fromUtf8(source), QString::fromUtf8(translation));
}

} // namespace

class TestTranslation : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void crc32_data();
    void crc32();
    void textKeyHashesUtf8();

    void unescape_data();
    void unescape();

    void parseGoodFile();
    void parseMalformed_data();
    void parseMalformed();
    void readHugeFile();
    void readStopsAtSizeLimit();
    void readMissingFile();
    void formatRoundTrip_data();
    void formatRoundTrip();

    void names_data();
    void names();
    void languageFromLanguageId_data();
    void languageFromLanguageId();
    void languageFromLocale_data();
    void languageFromLocale();
    void chooseLanguage_data();
    void chooseLanguage();

    void searchDirectories();
    void loadsChosenLanguageFile_data();
    void loadsChosenLanguageFile();
    void lookupUsesTextAsWritten();
    void untranslatedTextIsUnescaped();
    void firstOfDuplicateEntriesWins();
    void malformedFileKeepsEarlierEntries();
    void flags_data();
    void flags();

    void placeholders_data();
    void placeholders();
    void placeholdersOfTranslatedText();

    void dialogFont_data();
    void dialogFont();
    void fontFamilyToUse_data();
    void fontFamilyToUse();

    void globalService();
};

// --- CRC-32 -------------------------------------------------------------------------

void TestTranslation::crc32_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<quint32>("crc");
    QTest::newRow("check value") << QByteArray("123456789") << 0xCBF43926u;
    QTest::newRow("empty") << QByteArray() << 0x00000000u;
    QTest::newRow("a") << QByteArray("a") << 0xE8B7BE43u;
    QTest::newRow("abc") << QByteArray("abc") << 0x352441C2u;
    QTest::newRow("fox") << QByteArray("The quick brown fox jumps over the lazy dog")
                         << 0x414FA339u;
    QTest::newRow("zero byte") << QByteArray(1, '\0') << 0xD202EF8Du;
}

void TestTranslation::crc32() {
    QFETCH(QByteArray, bytes);
    QFETCH(quint32, crc);
    QCOMPARE(Crc32(bytes), crc);
}

void TestTranslation::textKeyHashesUtf8() {
    QCOMPARE(TextKey(QStringLiteral("123456789")), 0xCBF43926u);
    const QString accented = QStringLiteral("Donn\u00E9es");
    QCOMPARE(TextKey(accented), Crc32("Donn\xC3\xA9"
                                      "es"));
    QVERIFY(TextKey(accented) != Crc32(accented.toLatin1()));
}

// --- Unescaping ---------------------------------------------------------------------

void TestTranslation::unescape_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no escapes") << "Plain text"
                                << "Plain text";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("backslashes") << "a\\\\b"
                                 << "a\\b";
    QTest::newRow("bell") << "\\a"
                          << "\a";
    QTest::newRow("backspace") << "\\b"
                               << "\b";
    QTest::newRow("form feed") << "\\f"
                               << "\f";
    QTest::newRow("line feed") << "one\\ntwo"
                               << "one\ntwo";
    QTest::newRow("carriage return") << "\\r"
                                     << "\r";
    QTest::newRow("tab") << "a\\tb"
                         << "a\tb";
    QTest::newRow("vertical tab") << "\\v"
                                  << "\v";
    QTest::newRow("question mark") << "\\?"
                                   << "?";
    QTest::newRow("double quote") << "say \\\"hi\\\""
                                  << "say \"hi\"";
    QTest::newRow("single quote") << "it\\'s"
                                  << "it's";
    QTest::newRow("doubled backslash before n") << "C:\\\\new"
                                                << "C:\\new";
    QTest::newRow("three backslashes and n") << "\\\\\\n"
                                             << "\\\n";
    QTest::newRow("unknown escape kept") << "\\x41\\0"
                                         << "\\x41\\0";
    QTest::newRow("trailing backslash") << "end\\"
                                        << "end\\";
    QTest::newRow("unknown then known") << "\\q\\n"
                                        << "\\q\n";
    QTest::newRow("all in a row") << "\\a\\b\\f\\n\\r\\t\\v\\?\\\"\\'\\\\"
                                  << "\a\b\f\n\r\t\v?\"'\\";
    QTest::newRow("beside non-BMP") << QString::fromUtf8("\xF0\x9F\x98\x80\\n\xF0\x9F\x98\x80")
                                    << QString::fromUtf8("\xF0\x9F\x98\x80\n\xF0\x9F\x98\x80");
}

void TestTranslation::unescape() {
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(Unescape(text), expected);
}

// --- Language files -----------------------------------------------------------------

void TestTranslation::parseGoodFile() {
    const QByteArray content = "\xEF\xBB\xBF# French texts\n"
                               "T \"Error\" \"Erreur\"   # trailing comment\n"
                               "\n"
                               "T\t\"Line one\\\\nLine two\"\n"
                               "  \"Ligne un\\nLigne deux\"\n"
                               "T \"Say \\\"#1\\\"\" \"Dites \\\"n\xC2\xB0 1\\\"\"\n"
                               "T \"Two\n"
                               "lines\" \"\"\n"
                               "T \"C:\\\\temp\" \"C:\\\\temp\"#comment right after\n";
    const LkpContents contents = ParseLkp(content);
    QVERIFY2(contents.complete, qPrintable(contents.error));
    QCOMPARE(contents.errorLine, 0);
    QCOMPARE(contents.entries.size(), std::size_t(5));
    QCOMPARE(contents.entries[0].source, QStringLiteral("Error"));
    QCOMPARE(contents.entries[0].translation, QStringLiteral("Erreur"));
    QCOMPARE(contents.entries[1].source, QStringLiteral("Line one\\nLine two"));
    QCOMPARE(contents.entries[1].translation, QStringLiteral("Ligne un\nLigne deux"));
    QCOMPARE(contents.entries[2].source, QStringLiteral("Say \"#1\""));
    QCOMPARE(contents.entries[2].translation, QStringLiteral("Dites \"n\u00B0 1\""));
    QCOMPARE(contents.entries[3].source, QStringLiteral("Two\nlines"));
    QCOMPARE(contents.entries[3].translation, QString());
    QCOMPARE(contents.entries[4].source, QStringLiteral("C:\\temp"));
}

void TestTranslation::parseMalformed_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("sources"); // of the entries kept
    QTest::addColumn<bool>("complete");
    QTest::addColumn<int>("errorLine");

    const QByteArray good = "T \"One\" \"Un\"\nT \"Two\" \"Deux\"\n";
    const QStringList kept{"One", "Two"};

    QTest::newRow("empty file") << QByteArray() << QStringList() << true << 0;
    QTest::newRow("only white space") << QByteArray(" \n\t\r\n") << QStringList() << true << 0;
    QTest::newRow("only a comment") << QByteArray("# nothing yet") << QStringList() << true << 0;
    QTest::newRow("string cut short in source") << good + "T \"Thr" << kept << false << 3;
    QTest::newRow("string cut short in translation")
        << good + "T \"Three\" \"Tr" << kept << false << 3;
    QTest::newRow("closing quote escaped at the end")
        << good + "T \"Three\" \"Trois\\\"" << kept << false << 3;
    QTest::newRow("backslash as the last byte")
        << good + "T \"Three\" \"Trois\\" << kept << false << 3;
    QTest::newRow("marker missing") << good + "\"Three\" \"Trois\"\nT \"Four\" \"Quatre\"\n"
                                    << kept << false << 3;
    QTest::newRow("stray token between entries") << good + "X\nT \"Three\" \"Trois\"\n"
                                                 << kept << false << 3;
    QTest::newRow("lower-case marker") << good + "t \"Three\" \"Trois\"\n" << kept << false << 3;
    QTest::newRow("marker glued to string") << good + "T\"Three\" \"Trois\"\n"
                                            << kept << false << 3;
    QTest::newRow("marker at the end") << good + "T" << kept << false << 3;
    QTest::newRow("translation missing at the end") << good + "T \"Three\"" << kept << false << 3;
    QTest::newRow("translation replaced by a word") << good + "T \"Three\" Trois\n"
                                                    << kept << false << 3;
    QTest::newRow("string glued to a word") << good + "T \"Three\"x \"Trois\"\n"
                                            << kept << false << 3;
    QTest::newRow("strings glued together") << good + "T \"Three\"\"Trois\"\n"
                                            << kept << false << 3;
    QTest::newRow("third string") << good + "T \"Three\" \"Trois\" \"Drei\"\n"
                                  << QStringList{"One", "Two", "Three"} << false << 3;
    QTest::newRow("string over several lines then cut") << good + "\n\nT \"Three\n\n\n"
                                                        << kept << false << 5;

    QByteArray binary;
    for (int i = 0; i < 1024; ++i)
        binary.append(static_cast<char>((i * 37 + 11) % 256));
    QTest::newRow("binary") << binary << QStringList() << false << 1;
    QTest::newRow("binary after entries") << good + binary << kept << false << 3;
    QTest::newRow("image header") << QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16)
                                  << QStringList() << false << 1;
    QTest::newRow("invalid UTF-8 inside strings")
        << QByteArray("T \"\xFF\xFE\" \"\xC3\"\nT \"Ok\" \"Bien\"\n")
        << QStringList{QString::fromUtf8("\xFF\xFE"), "Ok"} << true << 0;
}

void TestTranslation::parseMalformed() {
    QFETCH(QByteArray, content);
    QFETCH(QStringList, sources);
    QFETCH(bool, complete);
    QFETCH(int, errorLine);

    const LkpContents contents = ParseLkp(content);
    QStringList read;
    for (const LkpEntry& entry : contents.entries)
        read << entry.source;
    QCOMPARE(read, sources);
    QCOMPARE(contents.complete, complete);
    QCOMPARE(contents.errorLine, errorLine);
    QCOMPARE(contents.error.isEmpty(), complete);
}

void TestTranslation::readHugeFile() {
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("huge.LKP"));
    constexpr int Count = 200000;
    QByteArray content;
    for (int i = 0; i < Count; ++i)
        content += FormatLkpEntry(QStringLiteral("Text number %1\\n").arg(i),
                                  QStringLiteral("Texte num\u00E9ro %1\n").arg(i));
    QVERIFY(content.size() > 8 * 1024 * 1024);
    QVERIFY(writeFile(path, content));

    const LkpContents contents = ReadLkpFile(path);
    QVERIFY(contents.complete);
    QCOMPARE(contents.entries.size(), std::size_t(Count));
    QCOMPARE(contents.entries.back().source, QStringLiteral("Text number 199999\\n"));
    QCOMPARE(contents.entries.back().translation, QStringLiteral("Texte num\u00E9ro 199999\n"));
}

void TestTranslation::readStopsAtSizeLimit() {
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("big.LKP"));
    const QByteArray first = entry("First", "Premier");
    const QByteArray second = entry("Second", "Deuxi\xC3\xA8me");
    QVERIFY(writeFile(path, first + second + entry("Third", "Troisi\xC3\xA8me")));

    // Cut inside the second entry: only the first is kept.
    LkpContents contents = ReadLkpFile(path, first.size() + 10);
    QCOMPARE(contents.entries.size(), std::size_t(1));
    QVERIFY(!contents.complete);

    // Cut right after the second entry: both kept, still reported as incomplete.
    contents = ReadLkpFile(path, first.size() + second.size());
    QCOMPARE(contents.entries.size(), std::size_t(2));
    QCOMPARE(contents.entries[1].translation, QStringLiteral("Deuxi\u00E8me"));
    QVERIFY(!contents.complete);
    QVERIFY(!contents.error.isEmpty());

    contents = ReadLkpFile(path);
    QCOMPARE(contents.entries.size(), std::size_t(3));
    QVERIFY(contents.complete);
}

void TestTranslation::readMissingFile() {
    QTemporaryDir directory;
    const LkpContents contents = ReadLkpFile(directory.filePath(QStringLiteral("none.LKP")));
    QVERIFY(contents.entries.empty());
    QVERIFY(!contents.complete);
    QVERIFY(!contents.error.isEmpty());
}

void TestTranslation::formatRoundTrip_data() {
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("translation");
    QTest::newRow("plain") << "Error"
                           << "Erreur";
    QTest::newRow("written-out escape") << "Cannot open\\nthe file"
                                        << "Impossible\nd'ouvrir";
    QTest::newRow("quotes and hash") << "Value \"#1\""
                                     << "Valeur \u00AB#1\u00BB";
    QTest::newRow("control characters") << "\a\b\f\n\r\t\v"
                                        << "\t";
    QTest::newRow("backslashes") << "\\\\server\\share\\"
                                 << "\\";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("japanese") << "Yes" << QString::fromUtf8("\xE3\x81\xAF\xE3\x81\x84");
}

void TestTranslation::formatRoundTrip() {
    QFETCH(QString, source);
    QFETCH(QString, translation);
    const LkpContents contents =
        ParseLkp(FormatLkpEntry(source, translation) + FormatLkpEntry(translation, source));
    QVERIFY(contents.complete);
    QCOMPARE(contents.entries.size(), std::size_t(2));
    QCOMPARE(contents.entries[0].source, source);
    QCOMPARE(contents.entries[0].translation, translation);
    QCOMPARE(contents.entries[1].source, translation);
}

// --- Languages ----------------------------------------------------------------------

void TestTranslation::names_data() {
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("0") << 0 << "EN";
    QTest::newRow("1") << 1 << "FR";
    QTest::newRow("2") << 2 << "DE";
    QTest::newRow("3") << 3 << "ES";
    QTest::newRow("4") << 4 << "RU";
    QTest::newRow("5") << 5 << "IT";
    QTest::newRow("6") << 6 << "JP";
    QTest::newRow("7 out of range") << 7 << "EN";
    QTest::newRow("-1 out of range") << -1 << "EN";
}

void TestTranslation::names() {
    QFETCH(int, code);
    QFETCH(QString, suffix);
    const auto language = static_cast<Language>(code);
    QCOMPARE(LanguageSuffix(language), suffix);
    QCOMPARE(LanguageFileName(Module::OrvLib, language), "OrvLib" + suffix + ".LKP");
    QCOMPARE(LanguageFileName(static_cast<Module>(code), language), "OrvLib" + suffix + ".LKP");
    QCOMPARE(ModuleName(static_cast<Module>(code)), QStringLiteral("OrvLib"));
}

void TestTranslation::languageFromLanguageId_data() {
    QTest::addColumn<int>("languageId");
    QTest::addColumn<Language>("language");
    QTest::newRow("0x040C French") << 0x040C << Language::French;
    QTest::newRow("0x0C0C French (Canada)") << 0x0C0C << Language::French;
    QTest::newRow("0x000C French neutral") << 0x000C << Language::French;
    QTest::newRow("0x0C0A Spanish") << 0x0C0A << Language::Spanish;
    QTest::newRow("0x080A Spanish (Mexico)") << 0x080A << Language::Spanish;
    QTest::newRow("0x0407 German") << 0x0407 << Language::German;
    QTest::newRow("0x0807 German (Switzerland)") << 0x0807 << Language::German;
    QTest::newRow("0x0409 English") << 0x0409 << Language::English;
    QTest::newRow("0x0809 English (UK)") << 0x0809 << Language::English;
    QTest::newRow("0x0419 Russian") << 0x0419 << Language::Russian;
    QTest::newRow("0x0819 Russian (Moldova)") << 0x0819 << Language::English;
    QTest::newRow("0x0410 Italian") << 0x0410 << Language::Italian;
    QTest::newRow("0x0810 Italian (Switzerland)") << 0x0810 << Language::Italian;
    QTest::newRow("0x0010 Italian neutral") << 0x0010 << Language::English;
    QTest::newRow("0x0411 Japanese") << 0x0411 << Language::Japanese;
    QTest::newRow("0x0413 Dutch") << 0x0413 << Language::English;
    QTest::newRow("0 unreadable") << 0 << Language::English;
    QTest::newRow("0xFFFF") << 0xFFFF << Language::English;
}

void TestTranslation::languageFromLanguageId() {
    QFETCH(int, languageId);
    QFETCH(Language, language);
    QCOMPARE(LanguageFromLanguageId(static_cast<quint16>(languageId)), language);
}

void TestTranslation::languageFromLocale_data() {
    QTest::addColumn<QString>("locale");
    QTest::addColumn<int>("languageId");
    QTest::addColumn<Language>("language");
    QTest::newRow("en_US") << "en_US" << 0x0409 << Language::English;
    QTest::newRow("en_GB") << "en_GB" << 0x0809 << Language::English;
    QTest::newRow("fr_FR") << "fr_FR" << 0x040C << Language::French;
    QTest::newRow("fr_CA") << "fr_CA" << 0x0C0C << Language::French;
    QTest::newRow("fr_SN: primary only") << "fr_SN" << 0x040C << Language::French;
    QTest::newRow("de_DE") << "de_DE" << 0x0407 << Language::German;
    QTest::newRow("de_AT") << "de_AT" << 0x0C07 << Language::German;
    QTest::newRow("de_LU: primary only") << "de_LU" << 0x0407 << Language::German;
    QTest::newRow("es_ES") << "es_ES" << 0x0C0A << Language::Spanish;
    QTest::newRow("es_MX") << "es_MX" << 0x080A << Language::Spanish;
    QTest::newRow("es_AR: primary only") << "es_AR" << 0x040A << Language::Spanish;
    QTest::newRow("ru_RU") << "ru_RU" << 0x0419 << Language::Russian;
    QTest::newRow("ru_UA unknown") << "ru_UA" << 0 << Language::English;
    QTest::newRow("it_IT") << "it_IT" << 0x0410 << Language::Italian;
    QTest::newRow("it_CH") << "it_CH" << 0x0810 << Language::Italian;
    QTest::newRow("ja") << "ja" << 0x0411 << Language::Japanese;
    QTest::newRow("nl_NL unknown") << "nl_NL" << 0 << Language::English;
    QTest::newRow("pt_BR unknown") << "pt_BR" << 0 << Language::English;
    QTest::newRow("C") << "C" << 0 << Language::English;
}

void TestTranslation::languageFromLocale() {
    QFETCH(QString, locale);
    QFETCH(int, languageId);
    QFETCH(Language, language);
    QCOMPARE(int(WindowsLanguageId(QLocale(locale))), languageId);
    QCOMPARE(LanguageFromLocale(QLocale(locale)), language);
}

void TestTranslation::chooseLanguage_data() {
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("locale");
    QTest::addColumn<Language>("language");

    QTest::newRow("no files: locale") << QStringList() << "ru_RU" << Language::Russian;
    QTest::newRow("no files: unknown locale") << QStringList() << "nl_NL" << Language::English;
    QTest::newRow("only FR beats ja_JP") << QStringList{"FR"} << "ja_JP" << Language::French;
    QTest::newRow("only ES beats de_DE") << QStringList{"ES"} << "de_DE" << Language::Spanish;
    QTest::newRow("only DE beats en_US") << QStringList{"DE"} << "en_US" << Language::German;
    QTest::newRow("only JP beats fr_FR") << QStringList{"JP"} << "fr_FR" << Language::Japanese;
    QTest::newRow("only FR, in the share folder")
        << QStringList{"share/FR"} << "it_IT" << Language::French;
    QTest::newRow("one probed file beside others")
        << QStringList{"DE", "EN", "RU", "IT"} << "ja_JP" << Language::German;
    QTest::newRow("FR and DE: locale it_CH")
        << QStringList{"FR", "DE"} << "it_CH" << Language::Italian;
    QTest::newRow("FR and DE: locale es_ES")
        << QStringList{"FR", "DE"} << "es_ES" << Language::Spanish;
    QTest::newRow("FR and DE: unknown locale")
        << QStringList{"FR", "DE"} << "pt_BR" << Language::English;
    QTest::newRow("ES beside, JP in share: locale de_AT")
        << QStringList{"ES", "share/JP"} << "de_AT" << Language::German;
    QTest::newRow("all four: locale fr_CA")
        << QStringList{"FR", "ES", "DE", "JP"} << "fr_CA" << Language::French;
    QTest::newRow("only RU is not probed") << QStringList{"RU"} << "en_US" << Language::English;
    QTest::newRow("only IT is not probed") << QStringList{"IT"} << "en_GB" << Language::English;
}

void TestTranslation::chooseLanguage() {
    QFETCH(QStringList, files);
    QFETCH(QString, locale);
    QFETCH(Language, language);

    LanguageFolder folder;
    for (const QString& file : files)
        QVERIFY(folder.add(file));
    const Service service(folder.programDirectory(), QLocale(locale));
    QCOMPARE(service.language(), language);
}

// --- The service --------------------------------------------------------------------

void TestTranslation::searchDirectories() {
    LanguageFolder folder;
    const Service service(folder.programDirectory(), QLocale(QLocale::English));
    QCOMPARE(service.searchDirectories().size(), 2);
    QCOMPARE(QFileInfo(service.searchDirectories().at(0)).canonicalFilePath(),
             QFileInfo(folder.programDirectory()).canonicalFilePath());
    QCOMPARE(QFileInfo(service.searchDirectories().at(1)).canonicalFilePath(),
             QFileInfo(folder.shareDirectory()).canonicalFilePath());
}

void TestTranslation::loadsChosenLanguageFile_data() {
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("loaded"); // the file whose entry is used, or empty
    QTest::addColumn<QString>("shown");

    QTest::newRow("own file") << QStringList{"RU", "EN"} << "ru_RU"
                              << "RU"
                              << "RU";
    QTest::newRow("falls back to EN") << QStringList{"EN"} << "ru_RU"
                                      << "EN"
                                      << "EN";
    QTest::newRow("falls back to EN in share") << QStringList{"share/EN"} << "ja_JP"
                                               << "share/EN"
                                               << "EN";
    QTest::newRow("own file in share before EN beside the program")
        << QStringList{"EN", "share/IT"} << "it_IT"
        << "share/IT"
        << "IT";
    QTest::newRow("beside the program before share") << QStringList{"share/RU", "RU"} << "ru_RU"
                                                     << "RU"
                                                     << "RU";
    QTest::newRow("English uses the EN file") << QStringList{"EN"} << "en_US"
                                              << "EN"
                                              << "EN";
    QTest::newRow("no file at all") << QStringList() << "it_IT"
                                    << ""
                                    << "Hello";
    QTest::newRow("other languages only") << QStringList{"IT", "RU"} << "es_ES"
                                          << ""
                                          << "Hello";
    QTest::newRow("English does not fall back elsewhere") << QStringList{"FR", "DE"} << "en_US"
                                                          << ""
                                                          << "Hello";
}

void TestTranslation::loadsChosenLanguageFile() {
    QFETCH(QStringList, files);
    QFETCH(QString, locale);
    QFETCH(QString, loaded);
    QFETCH(QString, shown);

    LanguageFolder folder;
    for (const QString& file : files) {
        // Each file translates "Hello" into the name of its own language.
        const QString suffix = file.section(u'/', -1);
        QVERIFY(folder.add(file, FormatLkpEntry(QStringLiteral("Hello"), suffix)));
    }
    const Service service(folder.programDirectory(), QLocale(locale));
    QCOMPARE(service.translate(QStringLiteral("Hello")), shown);
    if (loaded.isEmpty()) {
        QVERIFY(service.languageFile().isEmpty());
        QCOMPARE(service.entryCount(), 0);
    } else {
        const bool inShare = loaded.startsWith(QLatin1String("share/"));
        const QString directory = inShare ? folder.shareDirectory() : folder.programDirectory();
        const QString expected =
            QDir(directory).filePath(QStringLiteral("OrvLib%1.LKP").arg(loaded.section(u'/', -1)));
        QCOMPARE(QFileInfo(service.languageFile()).canonicalFilePath(),
                 QFileInfo(expected).canonicalFilePath());
        QCOMPARE(service.entryCount(), 1);
    }
}

void TestTranslation::lookupUsesTextAsWritten() {
    LanguageFolder folder;
    // The first source, unescaped, reads Cannot open\nfile with the escape written out,
    // as the program writes its texts; the second unescapes to a real line break.
    QVERIFY(folder.add(QStringLiteral("IT"),
                       "T \"Cannot open\\\\nfile\" \"Impossibile aprire\\nil file\"\n"
                       "T \"Real\\nbreak\" \"Vera\\ninterruzione\"\n"));
    const Service service(folder.programDirectory(), QLocale(QStringLiteral("it_IT")));

    QCOMPARE(service.translate(QStringLiteral("Cannot open\\nfile")),
             QStringLiteral("Impossibile aprire\nil file"));
    // The same words with a real line break are another text: no entry, shown as is.
    QCOMPARE(service.translate(QStringLiteral("Cannot open\nfile")),
             QStringLiteral("Cannot open\nfile"));

    QCOMPARE(service.translate(QStringLiteral("Real\nbreak")),
             QStringLiteral("Vera\ninterruzione"));
    QCOMPARE(service.translate(QStringLiteral("Real\\nbreak")), QStringLiteral("Real\nbreak"));
}

void TestTranslation::untranslatedTextIsUnescaped() {
    LanguageFolder folder;
    QVERIFY(folder.add(QStringLiteral("DE"), "T \"Path\" \"Pfad \\\\\\\\server\\\\new\"\n"));
    const Service service(folder.programDirectory(), QLocale(QStringLiteral("en_US")));
    QCOMPARE(service.language(), Language::German);

    // A translation is shown exactly as read: its backslashes are not unescaped again.
    QCOMPARE(service.translate(QStringLiteral("Path")), QStringLiteral("Pfad \\\\server\\new"));
    QCOMPARE(service.translate(QStringLiteral("Name:\\tvalue\\n\\\"quoted\\\"")),
             QStringLiteral("Name:\tvalue\n\"quoted\""));

    const Service english(folder.shareDirectory(), QLocale(QStringLiteral("en_US")));
    QCOMPARE(english.translate(QStringLiteral("One\\r\\nTwo")), QStringLiteral("One\r\nTwo"));
}

void TestTranslation::firstOfDuplicateEntriesWins() {
    LanguageFolder folder;
    QByteArray content;
    for (int i = 0; i < 50; ++i)
        content += entry(QByteArray::number(i).constData(), "x");
    content += entry("Open", "Ouvrir") + entry("Open", "Ouvrez") + entry("Close", "Fermer");
    QVERIFY(folder.add(QStringLiteral("FR"), content));
    const Service service(folder.programDirectory(), QLocale(QStringLiteral("ja_JP")));
    QCOMPARE(service.translate(QStringLiteral("Open")), QStringLiteral("Ouvrir"));
    QCOMPARE(service.translate(QStringLiteral("Close")), QStringLiteral("Fermer"));
    QCOMPARE(service.entryCount(), 53);
}

void TestTranslation::malformedFileKeepsEarlierEntries() {
    LanguageFolder folder;
    QVERIFY(folder.add(QStringLiteral("ES"), entry("Yes", "S\xC3\xAD") + "T \"No\" oops\n" +
                                                 entry("Cancel", "Cancelar")));
    const Service service(folder.programDirectory(), QLocale(QStringLiteral("en_US")));
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("OrvLibES\\.LKP:2: .*ignored")));
    QCOMPARE(service.translate(QStringLiteral("Yes")), QStringLiteral("S\u00ED"));
    QCOMPARE(service.translate(QStringLiteral("Cancel")), QStringLiteral("Cancel"));
    QCOMPARE(service.entryCount(), 1);
}

void TestTranslation::flags_data() {
    QTest::addColumn<QString>("locale");
    QTest::addColumn<unsigned>("flags");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");

    const unsigned both = TranslateAlways | NeverTranslate;
    QTest::newRow("Italian, 0") << "it_IT" << 0u << "Tab\\there"
                                << "Tab\tqui";
    QTest::newRow("Italian, always") << "it_IT" << unsigned(TranslateAlways) << "Tab\\there"
                                     << "Tab\tqui";
    QTest::newRow("Italian, never") << "it_IT" << unsigned(NeverTranslate) << "Tab\\there"
                                    << "Tab\\there";
    QTest::newRow("Italian, both: never wins") << "it_IT" << both << "Tab\\there"
                                               << "Tab\\there";
    QTest::newRow("Italian, no entry") << "it_IT" << 0u << "C:\\\\dir"
                                       << "C:\\dir";
    QTest::newRow("Italian, never keeps a path")
        << "it_IT" << unsigned(NeverTranslate) << "C:\\dir\\new"
        << "C:\\dir\\new";
    // The English file is consulted for English as well.
    QTest::newRow("English, 0") << "en_US" << 0u << "Tab\\there"
                                << "Tab\there (EN)";
    QTest::newRow("English, always") << "en_US" << unsigned(TranslateAlways) << "Tab\\there"
                                     << "Tab\there (EN)";
    QTest::newRow("English, never") << "en_US" << unsigned(NeverTranslate) << "Tab\\there"
                                    << "Tab\\there";
    QTest::newRow("never still fills placeholders")
        << "it_IT" << unsigned(NeverTranslate) << "$PKGNAME$\\n"
        << "Orvane\\n";
}

void TestTranslation::flags() {
    QFETCH(QString, locale);
    QFETCH(unsigned, flags);
    QFETCH(QString, text);
    QFETCH(QString, shown);

    LanguageFolder folder;
    QVERIFY(folder.add(QStringLiteral("IT"), "T \"Tab\\\\there\" \"Tab\\tqui\"\n"));
    QVERIFY(folder.add(QStringLiteral("EN"), "T \"Tab\\\\there\" \"Tab\\there (EN)\"\n"));
    const Service service(folder.programDirectory(), QLocale(locale));
    QCOMPARE(service.translate(text, flags), shown);
}

// --- Placeholders -------------------------------------------------------------------

using Pairs = QList<Placeholder>;
Q_DECLARE_METATYPE(Pairs)

namespace {

// FillPlaceholders takes an initializer list, as callers write it; spell out up to
// seven pairs from a test row.
QString fill(const QString& text, const Pairs& p) {
    const Placeholder none;
    auto at = [&](int i) { return i < p.size() ? p[i] : none; };
    switch (p.size()) {
    case 0:
        return FillPlaceholders(text, {});
    case 1:
        return FillPlaceholders(text, {at(0)});
    case 2:
        return FillPlaceholders(text, {at(0), at(1)});
    case 3:
        return FillPlaceholders(text, {at(0), at(1), at(2)});
    case 4:
        return FillPlaceholders(text, {at(0), at(1), at(2), at(3)});
    case 5:
        return FillPlaceholders(text, {at(0), at(1), at(2), at(3), at(4)});
    case 6:
        return FillPlaceholders(text, {at(0), at(1), at(2), at(3), at(4), at(5)});
    default:
        return FillPlaceholders(text, {at(0), at(1), at(2), at(3), at(4), at(5), at(6)});
    }
}

} // namespace

void TestTranslation::placeholders_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<Pairs>("pairs");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no placeholders") << "Done." << Pairs() << "Done.";
    QTest::newRow("text without $ is not scanned")
        << "NAME and NAME" << Pairs{{"NAME", "x"}} << "NAME and NAME";
    QTest::newRow("product name") << "Welcome to $PKGNAME$" << Pairs() << "Welcome to Orvane";
    QTest::newRow("full product name")
        << "$PKGFULLNAME$ ($PKGNAME$)" << Pairs() << "Orvane Asset Management (Orvane)";
    QTest::newRow("every occurrence")
        << "$FIELDNAME$, $FIELDNAME$ and $FIELDNAME$" << Pairs{{"$FIELDNAME$", "USR_A"}}
        << "USR_A, USR_A and USR_A";
    QTest::newRow("caller pairs") << "There are $RECORDCOUNT$ record(s) in $PKGNAME$"
                                  << Pairs{{"$RECORDCOUNT$", "12"}}
                                  << "There are 12 record(s) in Orvane";
    QTest::newRow("value filled again by a later pair")
        << "Error: $DETAILS$" << Pairs{{"$DETAILS$", "bad $FIELDNAME$"}, {"$FIELDNAME$", "USR_X"}}
        << "Error: bad USR_X";
    QTest::newRow("value not filled by an earlier pair")
        << "Error: $DETAILS$" << Pairs{{"$FIELDNAME$", "USR_X"}, {"$DETAILS$", "bad $FIELDNAME$"}}
        << "Error: bad $FIELDNAME$";
    QTest::newRow("product name in a value is left")
        << "$DETAILS$" << Pairs{{"$DETAILS$", "see $PKGNAME$"}} << "see $PKGNAME$";
    QTest::newRow("product pairs come first")
        << "$PKGNAME$ $X$" << Pairs{{"$X$", "$PKGNAME$"}} << "Orvane $PKGNAME$";
    QTest::newRow("caller may override the product name")
        << "$A$" << Pairs{{"$A$", "$PKGFULLNAME$"}, {"$PKGFULLNAME$", "Other"}} << "Other";
    QTest::newRow("empty placeholder skipped")
        << "a$B$c" << Pairs{{"", "zz"}, {"$B$", "b"}} << "abc";
    QTest::newRow("null value skipped")
        << "a$B$c" << Pairs{{"$B$", QString()}, {"$B$", "b"}} << "abc";
    QTest::newRow("empty value removes")
        << "a$B$c" << Pairs{{"$B$", QStringLiteral("")}, {"$B$", "b"}} << "ac";
    QTest::newRow("six pairs used")
        << "$1$$2$$3$$4$$5$$6$"
        << Pairs{{"$1$", "a"}, {"$2$", "b"}, {"$3$", "c"}, {"$4$", "d"}, {"$5$", "e"}, {"$6$", "f"}}
        << "abcdef";
    QTest::newRow("seventh pair ignored")
        << "$1$$2$$3$$4$$5$$6$$7$" << Pairs{{"$1$", "a"}, {"$2$", "b"}, {"$3$", "c"}, {"$4$", "d"},
                                            {"$5$", "e"}, {"$6$", "f"}, {"$7$", "g"}}
        << "abcdef$7$";
    QTest::newRow("skipped pairs count towards six")
        << "$1$$7$" << Pairs{{"", "a"}, {"", "b"},          {"", "c"},   {"", "d"},
                             {"", "e"}, {"$1$", QString()}, {"$7$", "g"}}
        << "$1$$7$";
    QTest::newRow("case matters") << "$pkgname$" << Pairs() << "$pkgname$";
    QTest::newRow("value with backslashes kept")
        << "File $FILE$" << Pairs{{"$FILE$", "C:\\new\\table.def"}} << "File C:\\new\\table.def";
}

void TestTranslation::placeholders() {
    QFETCH(QString, text);
    QFETCH(Pairs, pairs);
    QFETCH(QString, expected);
    QCOMPARE(fill(text, pairs), expected);
}

void TestTranslation::placeholdersOfTranslatedText() {
    LanguageFolder folder;
    QVERIFY(folder.add(
        QStringLiteral("JP"),
        entry("About $PKGNAME$", "$PKGFULLNAME$ \xE3\x81\xAB\xE3\x81\xA4\xE3\x81\x84\xE3\x81\xA6") +
            entry("Plain", "$COUNT$ items")));
    const Service service(folder.programDirectory(), QLocale(QStringLiteral("en_US")));
    // The product names are chosen by the translated text, not by the source.
    QCOMPARE(service.translate(QStringLiteral("About $PKGNAME$")),
             QString::fromUtf8(
                 "Orvane Asset Management \xE3\x81\xAB\xE3\x81\xA4\xE3\x81\x84\xE3\x81\xA6"));
    QCOMPARE(service.translate(QStringLiteral("Plain"), 0, {{"$COUNT$", "3"}}),
             QStringLiteral("3 items"));
    QCOMPARE(service.translate(QStringLiteral("$COUNT$\\tleft"), 0, {{"$COUNT$", "\\t"}}),
             QStringLiteral("\\t\tleft"));
}

// --- Fonts --------------------------------------------------------------------------

void TestTranslation::dialogFont_data() {
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("font");
    QTest::addColumn<bool>("substitute");
    QTest::newRow("Japanese file") << "JP"
                                   << "en_US"
                                   << "MS PGothic" << true;
    QTest::newRow("Japanese locale") << ""
                                     << "ja_JP"
                                     << "MS PGothic" << true;
    QTest::newRow("French") << "FR"
                            << "ja_JP"
                            << "MS Sans Serif" << false;
    QTest::newRow("English") << ""
                             << "en_US"
                             << "MS Sans Serif" << false;
}

void TestTranslation::dialogFont() {
    QFETCH(QString, file);
    QFETCH(QString, locale);
    QFETCH(QString, font);
    QFETCH(bool, substitute);
    LanguageFolder folder;
    if (!file.isEmpty())
        QVERIFY(folder.add(file));
    const Service service(folder.programDirectory(), QLocale(locale));
    QCOMPARE(service.dialogFont(), font);
    QCOMPARE(service.dialogFontIsSubstitute(), substitute);
}

void TestTranslation::fontFamilyToUse_data() {
    QTest::addColumn<QString>("family");
    QTest::addColumn<QStringList>("installed");
    QTest::addColumn<QString>("used");
    const QStringList installed{"DejaVu Sans", "MS PGothic", "ms sans serif"};
    QTest::newRow("installed") << "MS PGothic" << installed << "MS PGothic";
    QTest::newRow("installed under another case")
        << "MS Sans Serif" << installed << "ms sans serif";
    QTest::newRow("missing") << "MS Sans Serif" << QStringList{"DejaVu Sans"} << "";
    QTest::newRow("nothing installed") << "MS PGothic" << QStringList() << "";
    QTest::newRow("no family wanted") << "" << installed << "";
    QTest::newRow("prefix is not a match") << "MS" << installed << "";
}

void TestTranslation::fontFamilyToUse() {
    QFETCH(QString, family);
    QFETCH(QStringList, installed);
    QFETCH(QString, used);
    QCOMPARE(FontFamilyToUse(family, installed), used);
}

// --- The process-wide service -------------------------------------------------------

void TestTranslation::globalService() {
    // Without an application object the program's folder is the current one, where the
    // test runs without language files.
    QCOMPARE(DefaultBaseDirectory(), QDir::currentPath());
    QVERIFY(GlobalService().languageFile().isEmpty());
    QCOMPARE(&GlobalService(), &GlobalService());

    QCOMPARE(
        Translate(QStringLiteral("Welcome to $PKGNAME$\\n\\t$USER$"), 0, {{"$USER$", "admin"}}),
        QStringLiteral("Welcome to Orvane\n\tadmin"));
    QCOMPARE(Translate(QStringLiteral("A\\tB"), NeverTranslate), QStringLiteral("A\\tB"));
    QCOMPARE(DialogFont(), GlobalService().dialogFont());
    QCOMPARE(DialogFontIsSubstitute(), DialogFont() == QLatin1String("MS PGothic"));
}

QTEST_APPLESS_MAIN(TestTranslation)
#include "test_translation.moc"
