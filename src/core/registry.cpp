#include "core/registry.h"

#include <QSettings>

namespace core {

namespace {

// On Windows this is HKCU\SOFTWARE\Marrowby\Quillet (or HKLM); elsewhere the
// per-user or system configuration file of the same names.
QSettings openStore(bool perUser) {
    return QSettings(perUser ? QSettings::UserScope : QSettings::SystemScope,
                     QStringLiteral("Marrowby"), QStringLiteral("Quillet"));
}

// The stored name that equals `name` ignoring case, or `name` when there is none.
QString storedName(const QStringList& names, const QString& name) {
    if (names.contains(name))
        return name;
    for (const QString& stored : names)
        if (stored.compare(name, Qt::CaseInsensitive) == 0)
            return stored;
    return name;
}

// Key and value names are found whatever their case, as in the registry, so that a value
// written as "Assettype" is the one read as "ASSETTYPE".
QString keyPath(QSettings& store, const QString& subkey, const QString& valueName) {
    QStringList groups;
    for (const QString& group : subkey.split(QLatin1Char('\\'), Qt::SkipEmptyParts)) {
        const QString name = storedName(store.childGroups(), group);
        store.beginGroup(name);
        groups << name;
    }
    const QString value = storedName(store.childKeys(), valueName);
    for (qsizetype i = 0; i < groups.size(); ++i)
        store.endGroup();
    groups << value;
    return groups.join(QLatin1Char('/'));
}

} // namespace

bool ReadRegistryString(const QString& subkey, const QString& valueName, QString& buffer,
                        int bufferLength, const std::optional<QString>& defaultValue,
                        bool perUser) {
    buffer.clear();
    const int capacity = qMax(0, bufferLength - 1);
    QSettings store = openStore(perUser);
    const QString key = keyPath(store, subkey, valueName);
    const QVariant stored = store.value(key);
    if (stored.isValid()) {
        buffer = stored.toString().left(capacity);
        return true;
    }
    if (!defaultValue)
        return false;
    store.setValue(key, *defaultValue);
    store.sync();
    buffer = defaultValue->left(capacity);
    return true;
}

bool WriteRegistryString(const QString& subkey, const QString& valueName, const QString& value,
                         bool perUser) {
    return WriteRegistryStrings(subkey, {{valueName, value}}, perUser);
}

bool WriteRegistryStrings(const QString& subkey,
                          const std::vector<std::pair<QString, QString>>& values, bool perUser) {
    QSettings store = openStore(perUser);
    if (!store.isWritable())
        return false;
    for (const auto& [valueName, value] : values)
        store.setValue(keyPath(store, subkey, valueName), value);
    store.sync();
    return store.status() == QSettings::NoError;
}

} // namespace core
