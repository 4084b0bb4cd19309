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

QString keyPath(const QString& subkey, const QString& valueName) {
    QString group = subkey;
    group.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return group.isEmpty() ? valueName : group + QLatin1Char('/') + valueName;
}

} // namespace

bool ReadRegistryString(const QString& subkey, const QString& valueName, QString& buffer,
                        int bufferLength, const std::optional<QString>& defaultValue,
                        bool perUser) {
    buffer.clear();
    const int capacity = qMax(0, bufferLength - 1);
    QSettings store = openStore(perUser);
    const QString key = keyPath(subkey, valueName);
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
    QSettings store = openStore(perUser);
    if (!store.isWritable())
        return false;
    store.setValue(keyPath(subkey, valueName), value);
    store.sync();
    return store.status() == QSettings::NoError;
}

} // namespace core
