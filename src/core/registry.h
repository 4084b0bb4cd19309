#pragma once

#include <QString>

#include <optional>
#include <utility>
#include <vector>

namespace core {

// The settings store: values under "Marrowby\Quillet\" + subkey, per user or for
// the machine. Subkeys may be nested with "\" ("Preferences\GridLayout").

// Reads a value into `buffer`, keeping at most bufferLength - 1 characters.
// A missing value with a default writes the default back and returns it.
// Returns false when the value is missing and there is no default.
bool ReadRegistryString(const QString& subkey, const QString& valueName, QString& buffer,
                        int bufferLength, const std::optional<QString>& defaultValue,
                        bool perUser = true);

bool WriteRegistryString(const QString& subkey, const QString& valueName, const QString& value,
                         bool perUser = true);
// Several values of one subkey, written to the store at once.
bool WriteRegistryStrings(const QString& subkey,
                          const std::vector<std::pair<QString, QString>>& values,
                          bool perUser = true);

constexpr auto RegistryFolder = "Marrowby\\Quillet";

// Subkeys and values of the last connection.
constexpr auto LastConnectionKey = "LastConnection";
constexpr int LastConnectionBufferLength = 64000;

} // namespace core
