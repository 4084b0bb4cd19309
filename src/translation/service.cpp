#include "translation/service.h"

#include "translation/crc32.h"
#include "translation/escapes.h"
#include "translation/lkpfile.h"
#include "translation/placeholders.h"

#include <QCoreApplication>
#include <QDir>
#include <QtDebug>

#include <algorithm>

namespace translation {

namespace {

QStringList searchDirectoriesOf(const QString& baseDirectory) {
    const QDir base(baseDirectory);
    return {base.path(), QDir::cleanPath(base.filePath(QStringLiteral("../share/quillet")))};
}

} // namespace

Service::Service(const QString& baseDirectory, const QLocale& locale)
    : m_directories(searchDirectoriesOf(baseDirectory)),
      m_language(ChooseLanguage(m_directories, locale)) {}

QString Service::translate(const QString& text, unsigned flags,
                           std::initializer_list<Placeholder> placeholders) const {
    if (flags & NeverTranslate)
        return FillPlaceholders(text, placeholders);
    const QString* translation = find(TextKey(text));
    return FillPlaceholders(translation ? *translation : Unescape(text), placeholders);
}

QString Service::languageFile() const {
    ensureLoaded();
    return m_file;
}

int Service::entryCount() const {
    ensureLoaded();
    return static_cast<int>(m_entries.size());
}

void Service::ensureLoaded() const {
    std::call_once(m_loaded, [this] {
        QString path = FindLanguageFile(m_directories, Module::OrvLib, m_language);
        if (path.isEmpty() && m_language != Language::English)
            path = FindLanguageFile(m_directories, Module::OrvLib, Language::English);
        if (path.isEmpty())
            return; // no file: texts are shown in English

        LkpContents contents = ReadLkpFile(path);
        if (!contents.complete)
            qWarning("%s:%d: %s; the entries after this point are ignored", qPrintable(path),
                     contents.errorLine, qPrintable(contents.error));
        m_file = path;
        m_entries.reserve(contents.entries.size());
        for (LkpEntry& entry : contents.entries)
            m_entries.push_back({TextKey(entry.source), std::move(entry.translation)});
        std::stable_sort(m_entries.begin(), m_entries.end(),
                         [](const Entry& a, const Entry& b) { return a.key < b.key; });
    });
}

const QString* Service::find(quint32 key) const {
    ensureLoaded();
    const auto it =
        std::lower_bound(m_entries.begin(), m_entries.end(), key,
                         [](const Entry& entry, quint32 value) { return entry.key < value; });
    return it != m_entries.end() && it->key == key ? &it->translation : nullptr;
}

QString DefaultBaseDirectory() {
    return QCoreApplication::instance() ? QCoreApplication::applicationDirPath()
                                        : QDir::currentPath();
}

const Service& GlobalService() {
    static const Service service(DefaultBaseDirectory(), QLocale::system());
    return service;
}

} // namespace translation
