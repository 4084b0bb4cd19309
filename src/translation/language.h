#pragma once

#include <QLocale>
#include <QString>
#include <QStringList>

namespace translation {

// Interface languages, numbered as the language files know them.
enum class Language : int {
    English = 0,
    French = 1,
    German = 2,
    Spanish = 3,
    Russian = 4,
    Italian = 5,
    Japanese = 6,
};

// "EN", "FR", "DE", "ES", "RU", "IT", "JP"; a code out of range gives "EN".
QString LanguageSuffix(Language language);

// Modules of the product family that share the translation service; this program
// is module 0.
enum class Module : int { OrvLib = 0 };

// "OrvLib"; an index out of range gives the same.
QString ModuleName(Module module);

// Module name + language suffix + ".LKP", for example "OrvLibFR.LKP".
QString LanguageFileName(Module module, Language language);

// The first existing file of that name in the given folders, or an empty string.
QString FindLanguageFile(const QStringList& directories, Module module, Language language);

// The Windows language identifier (LANGID: primary language in the low ten bits,
// sublanguage above) of a locale, as the system reports its default language. Only
// the identifiers that decide a language are known: French, Spanish and German of any
// country, English, Russian, Italian, Italian (Switzerland) and Japanese. Anything
// else gives 0, which no language matches.
quint16 WindowsLanguageId(const QLocale& locale);

// Decides the language by a language identifier: Spanish, French and German by their
// primary language, then 0x409 English, 0x419 Russian, 0x410 and 0x810 Italian,
// 0x411 Japanese; any other identifier gives English.
Language LanguageFromLanguageId(quint16 languageId);

inline Language LanguageFromLocale(const QLocale& locale) {
    return LanguageFromLanguageId(WindowsLanguageId(locale));
}

// The language of the service: when exactly one of the French, Spanish, German and
// Japanese files exists in the folders, that one; otherwise the locale decides.
Language ChooseLanguage(const QStringList& directories, const QLocale& locale);

// The dialog font that suits a language, and whether it replaces the usual one.
QString DialogFontName(Language language);
bool IsSubstituteDialogFont(Language language);

} // namespace translation
