#pragma once

// The "Preferences" values in the test's private settings store
// (see UseTemporarySettings()).

#include "core/registry.h"

#include <QSettings>
#include <QStringList>
#include <QTest>

#include <map>
#include <optional>

namespace testsupport {

using PreferenceValues = std::map<QString, QString>;

inline void StorePreferences(const PreferenceValues& values) {
    for (const auto& [name, value] : values)
        QVERIFY(core::WriteRegistryString(QStringLiteral("Preferences"), name, value));
}

inline std::optional<QString> StoredPreference(const QString& name) {
    QString buffer;
    if (!core::ReadRegistryString(QStringLiteral("Preferences"), name, buffer, 259, std::nullopt))
        return std::nullopt;
    return buffer;
}

// The names of the stored values, sorted.
inline QStringList StoredPreferenceNames() {
    QSettings settings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
    settings.beginGroup(QStringLiteral("Preferences"));
    QStringList names = settings.childKeys();
    names.sort();
    return names;
}

} // namespace testsupport
