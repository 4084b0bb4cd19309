#include "interchange/importsettings.h"

#include "core/registry.h"
#include "interchange/delimited.h"

namespace interchange {

namespace {

// The values are read as into a buffer of 255 bytes.
constexpr int SettingBufferLength = 255;

QString onErrorText(int onError) {
    switch (onError) {
    case OnErrorIgnore:
        return QStringLiteral("Ignore");
    case OnErrorStop:
        return QStringLiteral("Stop");
    default:
        return QStringLiteral("Reject");
    }
}

int onErrorOfText(const QString& text) {
    if (text == QLatin1String("Ignore"))
        return OnErrorIgnore;
    if (text == QLatin1String("Stop"))
        return OnErrorStop;
    return OnErrorReject;
}

} // namespace

void ReadImportSettings(ImportSettings& settings) {
    const QString key = InterchangeSettingsKey(settings.TypesMode);
    QString value;
    auto read = [&](const char* name) {
        return core::ReadRegistryString(key, QLatin1String(name), value, SettingBufferLength,
                                        std::nullopt);
    };
    if (read("FileName"))
        settings.FileName = value;
    if (read("InitialDir"))
        settings.InitialDir = value;
    if (read("Delimiter"))
        settings.Delimiter = value;
    if (read("StartRow"))
        settings.StartRow = qMax(1, value.toInt());
    if (read("OnError"))
        settings.OnError = onErrorOfText(value);
    if (read("Node"))
        settings.Node = value;
}

void WriteImportSettings(const ImportSettings& settings) {
    core::WriteRegistryStrings(InterchangeSettingsKey(settings.TypesMode),
                               {{QStringLiteral("FileName"), settings.FileName},
                                {QStringLiteral("InitialDir"), settings.InitialDir},
                                {QStringLiteral("Delimiter"), settings.Delimiter},
                                {QStringLiteral("StartRow"), QString::number(settings.StartRow)},
                                {QStringLiteral("ID"), settings.IdMode ? QStringLiteral("Assign")
                                                                       : QStringLiteral("Auto")},
                                {QStringLiteral("OnError"), onErrorText(settings.OnError)},
                                {QStringLiteral("Node"), settings.Node}});
}

} // namespace interchange
