#include "support/testsupport.h"
#include "translation/crc32.h"
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

using Pairs = QList<Placeholder>;
Q_DECLARE_METATYPE(translation::Language)
Q_DECLARE_METATYPE(Pairs)

using testsupport::AddRow;

namespace {

QByteArray entry(const char* source, const char* translation) {
    return FormatLkpEntry(QString::fromUtf8(source), QString::fromUtf8(translation));
}

// Source and translation of every entry read, one after the other.
QStringList texts(const LkpContents& contents) {
    QStringList result;
    for (const LkpEntry& entry : contents.entries)
        result << entry.source << entry.translation;
    return result;
}

QString canonical(const QString& path) {
    return QFileInfo(path).canonicalFilePath();
}

// A language folder laid out as installed: the program's folder and ../share/quillet.
class LanguageFolder {
public:
    LanguageFolder() {
        QDir(m_root.path()).mkpath(QStringLiteral("bin"));
        QDir(m_root.path()).mkpath(QStringLiteral("share/quillet"));
    }
    QString programDirectory() const { return m_root.filePath(QStringLiteral("bin")); }
    // "FR" names OrvLibFR.LKP beside the program, "share/FR" the one in the share folder.
    QString path(const QString& where) const {
        const QString folder = where.startsWith(QLatin1String("share/"))
                                   ? m_root.filePath(QStringLiteral("share/quillet"))
                                   : programDirectory();
        return QDir(folder).filePath(QStringLiteral("OrvLib%1.LKP").arg(where.section(u'/', -1)));
    }
    bool add(const QString& where, const QByteArray& content) const {
        return testsupport::WriteFile(path(where), content);
    }

private:
    QTemporaryDir m_root;
};

} // namespace

class TestTranslation : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void crc32_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<quint32>("crc");
        AddRow("check value", QByteArray("123456789"), 0xCBF43926u);
        AddRow("fox", QByteArray("The quick brown fox jumps over the lazy dog"), 0x414FA339u);
        AddRow("UTF-8 text", QStringLiteral("Donn\u00E9es").toUtf8(), 0xC2201017u);
    }

    void crc32() {
        QFETCH(QByteArray, bytes);
        QFETCH(quint32, crc);
        QCOMPARE(Crc32(bytes), crc);
        QCOMPARE(TextKey(QString::fromUtf8(bytes)), crc);
    }

    void parse_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("entries"); // source and translation of those kept
        QTest::addColumn<int>("errorLine");       // 0: read to the end

        AddRow("good file",
               QByteArray("\xEF\xBB\xBF# French texts\n"
                          "T \"Error\" \"Erreur\"   # trailing comment\n\n"
                          "T\t\"Line one\\\\nLine two\"\n  \"Ligne un\\nLigne deux\"\n"
                          "T \"Say \\\"#1\\\"\" \"Dites \\\"n\xC2\xB0 1\\\"\"\n"
                          "T \"Two\nlines\" \"\"\n"
                          "T \"C:\\\\temp\" \"C:\\\\temp\"#comment right after\n"),
               QStringList{"Error", "Erreur", "Line one\\nLine two", "Ligne un\nLigne deux",
                           "Say \"#1\"", "Dites \"n\xC2\xB0 1\"", "Two\nlines", "", "C:\\temp",
                           "C:\\temp"},
               0);
        AddRow("empty file", QByteArray(), QStringList(), 0);
        AddRow("blanks and a comment", QByteArray(" \n\t# nothing yet\r\n"), QStringList(), 0);
        AddRow("invalid UTF-8 inside strings",
               QByteArray("T \"\xFF\" \"\xC3\"\nT \"Ok\" \"Bien\"\n"),
               QStringList{QString::fromUtf8("\xFF"), QString::fromUtf8("\xC3"), "Ok", "Bien"}, 0);

        const QByteArray good = "T \"One\" \"Un\"\nT \"Two\" \"Deux\"\n";
        const QStringList kept{"One", "Un", "Two", "Deux"};
        AddRow("string cut short", good + "T \"Three\" \"Tr", kept, 3);
        AddRow("closing quote escaped at the end", good + "T \"Three\" \"Trois\\\"", kept, 3);
        AddRow("backslash as the last byte", good + "T \"Three\" \"Trois\\", kept, 3);
        AddRow("marker missing", good + "\"Three\" \"Trois\"\nT \"Four\" \"Quatre\"\n", kept, 3);
        AddRow("lower-case marker", good + "t \"Three\" \"Trois\"\n", kept, 3);
        AddRow("marker glued to string", good + "T\"Three\" \"Trois\"\n", kept, 3);
        AddRow("translation missing at the end", good + "T \"Three\"", kept, 3);
        AddRow("translation replaced by a word", good + "T \"Three\" Trois\n", kept, 3);
        AddRow("strings glued together", good + "T \"Three\"\"Trois\"\n", kept, 3);
        AddRow("third string", good + "T \"Three\" \"Trois\" \"Drei\"\n",
               kept + QStringList{"Three", "Trois"}, 3);
        AddRow("lines inside strings count", good + "T \"Thr\nee\" \"Tr\n\nois\"\n\n oops",
               kept + QStringList{"Thr\nee", "Tr\n\nois"}, 8);
        QByteArray binary;
        for (int i = 0; i < 1024; ++i)
            binary.append(static_cast<char>((i * 37 + 11) % 256));
        AddRow("binary", binary, QStringList(), 1);
    }

    void parse() {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, entries);
        QFETCH(int, errorLine);
        const LkpContents contents = ParseLkp(content);
        QCOMPARE(texts(contents), entries);
        QCOMPARE(contents.errorLine, errorLine);
        QCOMPARE(contents.complete, errorLine == 0);
        QCOMPARE(contents.error.isEmpty(), contents.complete);
    }

    void readFile_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<qint64>("maxSize");
        QTest::addColumn<int>("kept");
        QTest::addColumn<bool>("complete");
        const qint64 first = entry("First", "Premier").size();
        const qint64 second = entry("Second", "Deuxi\xC3\xA8me").size();
        AddRow("whole file", "three.LKP", MaxLkpFileSize, 3, true);
        AddRow("cut inside the second entry", "three.LKP", first + 10, 1, false);
        AddRow("cut right after the second entry", "three.LKP", first + second, 2, false);
        AddRow("missing file", "none.LKP", MaxLkpFileSize, 0, false);
    }

    void readFile() {
        QFETCH(QString, name);
        QFETCH(qint64, maxSize);
        QFETCH(int, kept);
        QFETCH(bool, complete);
        QTemporaryDir directory;
        QVERIFY(testsupport::WriteFile(directory.filePath(QStringLiteral("three.LKP")),
                                       entry("First", "Premier") +
                                           entry("Second", "Deuxi\xC3\xA8me") +
                                           entry("Third", "Troisi\xC3\xA8me")));
        const LkpContents contents = ReadLkpFile(directory.filePath(name), maxSize);
        const QStringList all{"First",           "Premier", "Second",
                              "Deuxi\xC3\xA8me", "Third",   "Troisi\xC3\xA8me"};
        QCOMPARE(texts(contents), all.mid(0, 2 * kept));
        QCOMPARE(contents.complete, complete);
        QCOMPARE(contents.error.isEmpty(), complete);
    }

    void readLargeFile() {
        QTemporaryDir directory;
        const QString path = directory.filePath(QStringLiteral("large.LKP"));
        QByteArray content;
        for (int i = 0; i < 200000; ++i)
            content += FormatLkpEntry(QStringLiteral("Text number %1").arg(i),
                                      QStringLiteral("Texte num\u00E9ro %1").arg(i));
        QVERIFY(testsupport::WriteFile(path, content));
        const LkpContents contents = ReadLkpFile(path);
        QVERIFY(contents.complete);
        QCOMPARE(contents.entries.size(), std::size_t(200000));
        QCOMPARE(contents.entries.back().translation, QStringLiteral("Texte num\u00E9ro 199999"));
    }

    void formatRoundTrip_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("translation");
        AddRow("escapes, quotes, hash, control characters", "Cannot open\\n\"#1\"\a\b\f\n\r\t\v",
               "\\\\server\\share\\");
        AddRow("empty and Japanese", "", "\xE3\x81\xAF\xE3\x81\x84");
        const QString byteOrderMark(QChar(0xFEFF));
        AddRow("leading byte-order mark is text", byteOrderMark + "x", byteOrderMark);
    }

    void formatRoundTrip() {
        QFETCH(QString, source);
        QFETCH(QString, translation);
        const LkpContents contents = ParseLkp(FormatLkpEntry(source, translation));
        QVERIFY(contents.complete);
        QCOMPARE(texts(contents), (QStringList{source, translation}));
    }

    void names_data() {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("suffix");
        const char* suffixes[] = {"EN", "FR", "DE", "ES", "RU", "IT", "JP"};
        for (int code = 0; code < 7; ++code)
            AddRow(suffixes[code], code, suffixes[code]);
        AddRow("7 out of range", 7, "EN");
        AddRow("-1 out of range", -1, "EN");
    }

    void names() {
        QFETCH(int, code);
        QFETCH(QString, suffix);
        const auto language = static_cast<Language>(code);
        QCOMPARE(LanguageSuffix(language), suffix);
        QCOMPARE(LanguageFileName(static_cast<Module>(code), language), "OrvLib" + suffix + ".LKP");
    }

    // A locale's language identifier (when a locale is named) and the language it decides.
    void languageOfLocale_data() {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<int>("languageId");
        QTest::addColumn<Language>("language");
        AddRow("en_US", "en_US", 0x0409, Language::English);
        AddRow("en_GB", "en_GB", 0x0809, Language::English);
        AddRow("fr_CA", "fr_CA", 0x0C0C, Language::French);
        AddRow("fr_SN: primary only", "fr_SN", 0x040C, Language::French);
        AddRow("de_AT", "de_AT", 0x0C07, Language::German);
        AddRow("de_LU: primary only", "de_LU", 0x0407, Language::German);
        AddRow("es_MX", "es_MX", 0x080A, Language::Spanish);
        AddRow("es_AR: primary only", "es_AR", 0x040A, Language::Spanish);
        AddRow("ru_RU", "ru_RU", 0x0419, Language::Russian);
        AddRow("ru_UA unknown", "ru_UA", 0, Language::English);
        AddRow("it_IT", "it_IT", 0x0410, Language::Italian);
        AddRow("it_CH", "it_CH", 0x0810, Language::Italian);
        AddRow("ja", "ja", 0x0411, Language::Japanese);
        AddRow("C", "C", 0, Language::English);
        AddRow("0x000C French neutral", "", 0x000C, Language::French);
        AddRow("0x0819 Russian (Moldova)", "", 0x0819, Language::English);
        AddRow("0x0010 Italian neutral", "", 0x0010, Language::English);
    }

    void languageOfLocale() {
        QFETCH(QString, locale);
        QFETCH(int, languageId);
        QFETCH(Language, language);
        if (!locale.isEmpty()) {
            QCOMPARE(int(WindowsLanguageId(QLocale(locale))), languageId);
            QCOMPARE(LanguageFromLocale(QLocale(locale)), language);
        }
        QCOMPARE(LanguageFromLanguageId(static_cast<quint16>(languageId)), language);
    }

    // Each file translates "Hello" into its own suffix.
    void service_data() {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<Language>("language");
        QTest::addColumn<QString>("loaded"); // the file in use, or empty

        using L = Language;
        AddRow("no files: locale", QStringList(), "ru_RU", L::Russian, "");
        AddRow("only FR beats ja_JP", QStringList{"FR"}, "ja_JP", L::French, "FR");
        AddRow("only ES beats de_DE", QStringList{"ES"}, "de_DE", L::Spanish, "ES");
        AddRow("only DE beats en_US", QStringList{"DE"}, "en_US", L::German, "DE");
        AddRow("only JP beats fr_FR", QStringList{"JP"}, "fr_FR", L::Japanese, "JP");
        AddRow("only FR, in the share folder", QStringList{"share/FR"}, "it_IT", L::French,
               "share/FR");
        AddRow("one probed file beside others", QStringList{"DE", "EN", "RU", "IT"}, "ja_JP",
               L::German, "DE");
        AddRow("FR and DE: locale it_CH", QStringList{"FR", "DE"}, "it_CH", L::Italian, "");
        AddRow("ES beside, JP in share: locale de_AT", QStringList{"ES", "share/JP"}, "de_AT",
               L::German, "");
        AddRow("all four: locale fr_CA", QStringList{"FR", "ES", "DE", "JP"}, "fr_CA", L::French,
               "FR");
        AddRow("only IT is not probed; English uses no other file", QStringList{"IT"}, "en_GB",
               L::English, "");
        AddRow("own file", QStringList{"RU", "EN"}, "ru_RU", L::Russian, "RU");
        AddRow("falls back to EN", QStringList{"EN"}, "ru_RU", L::Russian, "EN");
        AddRow("falls back to EN in share", QStringList{"share/EN"}, "ja_JP", L::Japanese,
               "share/EN");
        AddRow("own file in share before EN beside the program", QStringList{"EN", "share/IT"},
               "it_IT", L::Italian, "share/IT");
        AddRow("beside the program before share", QStringList{"share/RU", "RU"}, "ru_RU",
               L::Russian, "RU");
        AddRow("English uses the EN file", QStringList{"EN"}, "en_US", L::English, "EN");
    }

    void service() {
        QFETCH(QStringList, files);
        QFETCH(QString, locale);
        QFETCH(Language, language);
        QFETCH(QString, loaded);

        LanguageFolder folder;
        for (const QString& file : files)
            QVERIFY(
                folder.add(file, FormatLkpEntry(QStringLiteral("Hello"), file.section(u'/', -1))));
        const Service service(folder.programDirectory(), QLocale(locale));
        QCOMPARE(service.language(), language);
        const bool japanese = language == Language::Japanese;
        QCOMPARE(service.dialogFont(), QLatin1String(japanese ? "MS PGothic" : "MS Sans Serif"));
        QCOMPARE(service.dialogFontIsSubstitute(), japanese);
        QCOMPARE(service.translate(QStringLiteral("Hello")),
                 loaded.isEmpty() ? "Hello" : loaded.section(u'/', -1));
        QCOMPARE(canonical(service.languageFile()),
                 loaded.isEmpty() ? QString() : canonical(folder.path(loaded)));
        QCOMPARE(service.entryCount(), loaded.isEmpty() ? 0 : 1);
    }

    // Lookups in an Italian file (or, for English, an English one).
    void translate_data() {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<unsigned>("flags");
        QTest::addColumn<QString>("count"); // the value of $COUNT$; null: no value
        QTest::addColumn<QString>("shown");

        const QString none;
        const unsigned always = TranslateAlways;
        const unsigned never = NeverTranslate;
        AddRow("entry for the text as written", "it_IT", "Cannot open\\nfile", 0u, none,
               "Impossibile aprire\nil file");
        AddRow("a real line break is another text", "it_IT", "Cannot open\nfile", 0u, none,
               "Cannot open\nfile");
        AddRow("entry whose source has a real break", "it_IT", "Real\nbreak", 0u, none,
               "Vera\ninterruzione");
        AddRow("no entry: escapes turned into characters", "it_IT", "Real\\nbreak", 0u, none,
               "Real\nbreak");
        AddRow("translation shown as read", "it_IT", "Path", 0u, none, "Percorso \\\\server\\new");
        AddRow("first of duplicate entries", "it_IT", "Open", 0u, none, "Apri");
        AddRow("product names of the translated text", "it_IT", "About $PKGNAME$", 0u, none,
               "Orvane Asset Management info");
        AddRow("caller value in the translation", "it_IT", "Items", 0u, "3", "3 elementi");
        AddRow("value not unescaped", "it_IT", "$COUNT$\\tleft", 0u, "\\t", "\\t\tleft");
        AddRow("always", "it_IT", "Tab\\there", always, none, "Tab\tqui");
        AddRow("never", "it_IT", "Tab\\there", never, none, "Tab\\there");
        AddRow("both: never wins", "it_IT", "Tab\\there", always | never, none, "Tab\\there");
        AddRow("never still fills placeholders", "it_IT", "$PKGNAME$ $COUNT$\\n", never, "2",
               "Orvane 2\\n");
        AddRow("English file for English", "en_US", "Tab\\there", 0u, none, "Tab\there (EN)");
    }

    void translate() {
        QFETCH(QString, locale);
        QFETCH(QString, text);
        QFETCH(unsigned, flags);
        QFETCH(QString, count);
        QFETCH(QString, shown);

        LanguageFolder folder;
        QByteArray italian = "T \"Cannot open\\\\nfile\" \"Impossibile aprire\\nil file\"\n"
                             "T \"Real\\nbreak\" \"Vera\\ninterruzione\"\n"
                             "T \"Path\" \"Percorso \\\\\\\\server\\\\new\"\n"
                             "T \"Tab\\\\there\" \"Tab\\tqui\"\n";
        // Enough entries before the duplicates that sorting the keys moves them.
        for (int i = 0; i < 50; ++i)
            italian += entry(QByteArray::number(i).constData(), "x");
        italian += entry("Open", "Apri") + entry("Open", "Aprite") +
                   entry("About $PKGNAME$", "$PKGFULLNAME$ info") +
                   entry("Items", "$COUNT$ elementi");
        QVERIFY(folder.add(QStringLiteral("IT"), italian));
        QVERIFY(folder.add(QStringLiteral("EN"), "T \"Tab\\\\there\" \"Tab\\there (EN)\"\n"));
        const Service service(folder.programDirectory(), QLocale(locale));
        QCOMPARE(service.translate(text, flags, {{QStringLiteral("$COUNT$"), count}}), shown);
    }

    void malformedFileKeepsEarlierEntries() {
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

    void placeholders_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<Pairs>("pairs");
        QTest::addColumn<QString>("expected");

        AddRow("text without $ is not scanned", "NAME and NAME", Pairs{{"NAME", "x"}},
               "NAME and NAME");
        AddRow("product names", "$PKGFULLNAME$ ($PKGNAME$)", Pairs(),
               "Orvane Asset Management (Orvane)");
        AddRow("every occurrence", "$F$, $F$ and $F$", Pairs{{"$F$", "USR_A"}},
               "USR_A, USR_A and USR_A");
        AddRow("value filled again by a later pair", "Error: $DETAILS$",
               Pairs{{"$DETAILS$", "bad $F$"}, {"$F$", "USR_X"}}, "Error: bad USR_X");
        AddRow("value not filled by an earlier pair", "Error: $DETAILS$",
               Pairs{{"$F$", "USR_X"}, {"$DETAILS$", "bad $F$"}}, "Error: bad $F$");
        AddRow("product pairs come first", "$PKGNAME$ $X$", Pairs{{"$X$", "$PKGNAME$"}},
               "Orvane $PKGNAME$");
        AddRow("caller may override the product name", "$A$",
               Pairs{{"$A$", "$PKGFULLNAME$"}, {"$PKGFULLNAME$", "Other"}}, "Other");
        AddRow("empty placeholder and null value skipped", "a$B$c",
               Pairs{{"", "zz"}, {"$B$", QString()}, {"$B$", "b"}}, "abc");
        AddRow("empty value removes", "a$B$c", Pairs{{"$B$", QStringLiteral("")}, {"$B$", "b"}},
               "ac");
        Pairs seven;
        for (char c = '1'; c <= '7'; ++c)
            seven << Placeholder(QStringLiteral("$%1$").arg(c), QString(QChar(c - '1' + 'a')));
        AddRow("seventh pair ignored", "$1$$2$$3$$4$$5$$6$$7$", seven, "abcdef$7$");
        AddRow(
            "skipped pairs count towards six", "$1$$7$",
            Pairs{{"", "a"}, {"", "b"}, {"", "c"}, {"", "d"}, {"", "e"}, {"$1$", ""}, {"$7$", "g"}},
            "$7$");
        AddRow("case matters", "$pkgname$", Pairs(), "$pkgname$");
    }

    void placeholders() {
        QFETCH(QString, text);
        QFETCH(Pairs, pairs);
        QFETCH(QString, expected);
        // Always seven pairs: the unused ones have no placeholder and are skipped.
        const auto at = [&pairs](int i) { return i < pairs.size() ? pairs[i] : Placeholder(); };
        QCOMPARE(FillPlaceholders(text, {at(0), at(1), at(2), at(3), at(4), at(5), at(6)}),
                 expected);
    }

    void fontFamilyToUse_data() {
        QTest::addColumn<QString>("family");
        QTest::addColumn<QStringList>("installed");
        QTest::addColumn<QString>("used");
        const QStringList installed{"DejaVu Sans", "MS PGothic", "ms sans serif"};
        AddRow("installed under another case", "MS Sans Serif", installed, "ms sans serif");
        AddRow("missing", "MS Sans Serif", QStringList{"DejaVu Sans"}, "");
        AddRow("no family wanted", "", installed, "");
        AddRow("prefix is not a match", "MS", installed, "");
    }

    void fontFamilyToUse() {
        QFETCH(QString, family);
        QFETCH(QStringList, installed);
        QFETCH(QString, used);
        QCOMPARE(FontFamilyToUse(family, installed), used);
    }

    void globalService() {
        // Without an application object the program's folder is the current one, where the
        // test runs without language files.
        QCOMPARE(DefaultBaseDirectory(), QDir::currentPath());
        QVERIFY(GlobalService().languageFile().isEmpty());
        QCOMPARE(
            Translate(QStringLiteral("Welcome to $PKGNAME$\\n\\t$USER$"), 0, {{"$USER$", "admin"}}),
            QStringLiteral("Welcome to Orvane\n\tadmin"));
        QCOMPARE(Translate(QStringLiteral("A\\tB"), NeverTranslate), QStringLiteral("A\\tB"));
        QCOMPARE(DialogFont(), GlobalService().dialogFont());
        QCOMPARE(DialogFontIsSubstitute(), DialogFont() == QLatin1String("MS PGothic"));
    }
};

QTEST_APPLESS_MAIN(TestTranslation)
#include "test_translation.moc"
