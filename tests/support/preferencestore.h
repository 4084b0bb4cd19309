#pragma once

// The "Preferences" values in the test's private settings store
// (see UseTemporarySettings()).

#include "core/registry.h"

#include <QSettings>
#include <QStringList>
#include <QTest>

namespace testsupport {

// Stores "Name=value;Name=value".
inline void StorePreferences(const QString& values) {
    for (const QString& pair : values.split(u';', Qt::SkipEmptyParts))
        QVERIFY(core::WriteRegistryString(QStringLiteral("Preferences"), pair.section(u'=', 0, 0),
                                          pair.section(u'=', 1)));
}

// "Name=value" for each stored value, sorted.
inline QStringList StoredPreferences() {
    QSettings settings(QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
    settings.beginGroup(QStringLiteral("Preferences"));
    QStringList values;
    for (const QString& name : settings.childKeys()) {
        QString buffer;
        core::ReadRegistryString(QStringLiteral("Preferences"), name, buffer, 259, std::nullopt);
        values << name + u'=' + buffer;
    }
    values.sort();
    return values;
}

} // namespace testsupport
