#pragma once

#include "translation/language.h"
#include "translation/translate.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <initializer_list>
#include <mutex>
#include <vector>

namespace translation {

// The interface text service behind Translate and DialogFont. The program uses one
// process-wide instance (GlobalService); tests make their own over a folder of their
// choosing.
class Service {
public:
    // Chooses the language now, from the language files in baseDirectory and in
    // baseDirectory/../share/quillet and from the locale. The language file itself is
    // read on the first lookup.
    Service(const QString& baseDirectory, const QLocale& locale);
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    // The folders searched for language files, in order.
    const QStringList& searchDirectories() const { return m_directories; }
    Language language() const { return m_language; }

    // The text to show for a built-in English text; see Translate.
    //
    // A started service always has a language, English included, so every call looks
    // the text up unless NeverTranslate is set; TranslateAlways (look up even when no
    // language is active) is accepted and changes nothing. This is what lets an
    // English file, when one is installed, reword the texts on English systems too.
    // A text without an entry is shown with its written-out escapes turned into the
    // characters they stand for. NeverTranslate leaves the text exactly as given,
    // backslashes included, and only fills its placeholders.
    QString translate(const QString& text, unsigned flags = 0,
                      std::initializer_list<Placeholder> placeholders = {}) const;

    // The language file whose entries are in use, reading it if that has not happened
    // yet; empty when neither the language's file nor the English one exists.
    QString languageFile() const;
    int entryCount() const;

    QString dialogFont() const { return DialogFontName(m_language); }
    bool dialogFontIsSubstitute() const { return IsSubstituteDialogFont(m_language); }

private:
    struct Entry {
        quint32 key;
        QString translation;
    };

    void ensureLoaded() const;
    const QString* find(quint32 key) const;

    QStringList m_directories;
    Language m_language;

    // Filled once, on the first lookup.
    mutable std::once_flag m_loaded;
    mutable QString m_file;
    mutable std::vector<Entry> m_entries; // sorted by key; on equal keys, file order
};

// The program's folder (the current folder when there is no application object).
QString DefaultBaseDirectory();

// The instance behind Translate and DialogFont, started on first use over
// DefaultBaseDirectory() and the system locale.
const Service& GlobalService();

} // namespace translation
