#include "translation/language.h"

#include <QDir>
#include <QFileInfo>

#include <iterator>

namespace translation {

namespace {

constexpr const char* Suffixes[] = {"EN", "FR", "DE", "ES", "RU", "IT", "JP"};
constexpr const char* ModuleNames[] = {"OrvLib"};

// Primary language identifiers.
constexpr quint16 LangGerman = 0x07;
constexpr quint16 LangEnglish = 0x09;
constexpr quint16 LangSpanish = 0x0A;
constexpr quint16 LangFrench = 0x0C;
constexpr quint16 LangItalian = 0x10;
constexpr quint16 LangJapanese = 0x11;
constexpr quint16 LangRussian = 0x19;

constexpr quint16 makeLanguageId(quint16 primary, quint16 sublanguage) {
    return static_cast<quint16>(sublanguage << 10 | primary);
}

constexpr quint16 primaryLanguage(quint16 languageId) {
    return languageId & 0x3FF;
}

constexpr quint16 SublangDefault = 1;

struct KnownLocale {
    QLocale::Language language;
    QLocale::Territory territory;
    quint16 languageId;
};

// Country-specific identifiers. French, Spanish and German are decided by their
// primary language alone, so their other countries get the default sublanguage.
constexpr KnownLocale KnownLocales[] = {
    {QLocale::English, QLocale::UnitedStates, 0x0409},
    {QLocale::English, QLocale::UnitedKingdom, 0x0809},
    {QLocale::English, QLocale::Australia, 0x0C09},
    {QLocale::English, QLocale::Canada, 0x1009},
    {QLocale::Russian, QLocale::Russia, 0x0419},
    {QLocale::Italian, QLocale::Italy, 0x0410},
    {QLocale::Italian, QLocale::Switzerland, 0x0810},
    {QLocale::Japanese, QLocale::Japan, 0x0411},
    {QLocale::French, QLocale::France, 0x040C},
    {QLocale::French, QLocale::Belgium, 0x080C},
    {QLocale::French, QLocale::Canada, 0x0C0C},
    {QLocale::French, QLocale::Switzerland, 0x100C},
    {QLocale::German, QLocale::Germany, 0x0407},
    {QLocale::German, QLocale::Switzerland, 0x0807},
    {QLocale::German, QLocale::Austria, 0x0C07},
    {QLocale::Spanish, QLocale::Spain, 0x0C0A},
    {QLocale::Spanish, QLocale::Mexico, 0x080A},
};

} // namespace

QString LanguageSuffix(Language language) {
    const int code = static_cast<int>(language);
    const int count = static_cast<int>(std::size(Suffixes));
    return QLatin1String(Suffixes[code >= 0 && code < count ? code : 0]);
}

QString ModuleName(Module module) {
    const int index = static_cast<int>(module);
    const int count = static_cast<int>(std::size(ModuleNames));
    return QLatin1String(ModuleNames[index >= 0 && index < count ? index : 0]);
}

QString LanguageFileName(Module module, Language language) {
    return ModuleName(module) + LanguageSuffix(language) + QLatin1String(".LKP");
}

QString FindLanguageFile(const QStringList& directories, Module module, Language language) {
    const QString name = LanguageFileName(module, language);
    for (const QString& directory : directories) {
        const QFileInfo file(QDir(directory), name);
        if (file.isFile())
            return file.filePath();
    }
    return {};
}

quint16 WindowsLanguageId(const QLocale& locale) {
    for (const KnownLocale& known : KnownLocales) {
        if (known.language == locale.language() && known.territory == locale.territory())
            return known.languageId;
    }
    switch (locale.language()) {
    case QLocale::French:
        return makeLanguageId(LangFrench, SublangDefault);
    case QLocale::Spanish:
        return makeLanguageId(LangSpanish, SublangDefault);
    case QLocale::German:
        return makeLanguageId(LangGerman, SublangDefault);
    default:
        return 0;
    }
}

Language LanguageFromLanguageId(quint16 languageId) {
    switch (primaryLanguage(languageId)) {
    case LangSpanish:
        return Language::Spanish;
    case LangFrench:
        return Language::French;
    case LangGerman:
        return Language::German;
    default:
        break;
    }
    switch (languageId) {
    case makeLanguageId(LangEnglish, SublangDefault):
        return Language::English;
    case makeLanguageId(LangRussian, SublangDefault):
        return Language::Russian;
    case makeLanguageId(LangItalian, SublangDefault):
    case makeLanguageId(LangItalian, 2): // Switzerland
        return Language::Italian;
    case makeLanguageId(LangJapanese, SublangDefault):
        return Language::Japanese;
    default:
        return Language::English;
    }
}

Language ChooseLanguage(const QStringList& directories, const QLocale& locale) {
    // Probed in this order; only a single hit decides.
    constexpr Language Probed[] = {Language::French, Language::Spanish, Language::German,
                                   Language::Japanese};
    int found = 0;
    Language only = Language::English;
    for (const Language language : Probed) {
        if (!FindLanguageFile(directories, Module::OrvLib, language).isEmpty()) {
            ++found;
            only = language;
        }
    }
    if (found == 1)
        return only;
    return LanguageFromLocale(locale);
}

QString DialogFontName(Language language) {
    return IsSubstituteDialogFont(language) ? QStringLiteral("MS PGothic")
                                            : QStringLiteral("MS Sans Serif");
}

bool IsSubstituteDialogFont(Language language) {
    return language == Language::Japanese;
}

} // namespace translation
