#include "core/preferences.h"

#include "core/dateformat.h"
#include "core/log.h"
#include "core/registry.h"

#include <exception>
#include <optional>

namespace core {

namespace {

const QString section = QString::fromLatin1(PreferencesKey);

std::optional<QString> read(const char* name) {
    QString buffer;
    if (!ReadRegistryString(section, QString::fromLatin1(name), buffer, PreferencesBufferLength,
                            std::nullopt))
        return std::nullopt;
    return buffer;
}

bool is(const std::optional<QString>& value, const char* word) {
    return value && *value == QLatin1String(word);
}

void readFlag(const char* name, const char* word, bool& flag) {
    if (const std::optional<QString> value = read(name))
        flag = *value == QLatin1String(word);
}

void readText(const char* name, QString& text) {
    if (const std::optional<QString> value = read(name))
        text = *value;
}

void write(const char* name, const QString& value) {
    WriteRegistryString(section, QString::fromLatin1(name), value);
}

void write(const char* name, bool flag, const char* whenSet, const char* whenClear) {
    write(name, QString::fromLatin1(flag ? whenSet : whenClear));
}

void switchLogFile(const QString& logFile, PreferenceChanges& changes) {
    if (logFile.isEmpty() || logFile == LogFilePath() ||
        logFile.toLocal8Bit().size() > MaxLogPathLength)
        return;
    // The old log records where logging went. It may be the very file that can no
    // longer be written, which must not keep the log where it is.
    try {
        LogLine(QString::asprintf("log file changed to %s", logFile.toUtf8().constData()));
    } catch (const std::exception&) {
    }
    changes.logFileChanged = SetLogFilePath(logFile);
}

} // namespace

void ReadPreferenceValues(PreferenceValues& values) {
    readFlag(preference::EditLayout, Bottom, values.layoutBottom);
    readFlag(preference::DateFormat, DefaultFormat, values.defaultDateFormat);
    readText(preference::DateFormatString, values.dateFormatString);
    readFlag(preference::KeepLog, Yes, values.keepLog);
    readText(preference::LogFile, values.logFile);
    readFlag(preference::HideID, Yes, values.hideId);
    readFlag(preference::AppendID, Yes, values.appendId);
    readFlag(preference::Defaults, Yes, values.setDefaults);
    readFlag(preference::DateDefault, Yes, values.dateDefaults);
    readFlag(preference::MoneyDefault, Yes, values.moneyDefaults);
    readText(preference::Date, values.defaultDate);
    readText(preference::Money, values.defaultMoney);
}

void WritePreferenceValues(const PreferenceValues& values, const QLocale& locale) {
    write(preference::EditLayout, values.layoutBottom, Bottom, Right);
    write(preference::DateFormat, values.defaultDateFormat, DefaultFormat, CustomFormat);
    write(preference::DateFormatString, values.dateFormatString);
    write(preference::KeepLog, values.keepLog, Yes, No);
    write(preference::LogFile, values.logFile);
    write(preference::HideID, values.hideId, Yes, No);
    write(preference::AppendID, values.appendId, Yes, No);
    write(preference::Defaults, values.setDefaults, Yes, No);
    write(preference::DateDefault, values.dateDefaults, Yes, No);
    write(preference::MoneyDefault, values.moneyDefaults, Yes, No);

    ApplyDateFormat(values.defaultDateFormat ? QString() : values.dateFormatString, locale);
    const QDate date = StrToDate(values.defaultDate); // throws: Date and Money stay unsaved
    write(preference::Date, DateToStr(date));
    write(preference::Money, values.defaultMoney);
}

void WritePreferenceValues(const PreferenceValues& values) {
    WritePreferenceValues(values, QLocale::system());
}

PreferenceChanges LoadPreferences(MainPreferences& state, const QLocale& locale) {
    PreferenceChanges changes;

    if (const std::optional<QString> layout = read(preference::EditLayout)) {
        const bool bottom = *layout == QLatin1String(Bottom);
        changes.layoutChanged = bottom != state.layoutBottom;
        state.layoutBottom = bottom;
    }

    if (is(read(preference::KeepLog), Yes)) {
        if (const std::optional<QString> logFile = read(preference::LogFile))
            switchLogFile(*logFile, changes);
    }

    const std::optional<QString> dateFormat = read(preference::DateFormat);
    if (!dateFormat || *dateFormat == QLatin1String(DefaultFormat))
        state.customDateFormat.clear();
    else
        state.customDateFormat = read(preference::DateFormatString).value_or(QString());
    ApplyDateFormat(state.customDateFormat, locale);

    readFlag(preference::HideID, Yes, state.hideId);
    readFlag(preference::AppendID, Yes, state.appendId);
    return changes;
}

PreferenceChanges LoadPreferences(MainPreferences& state) {
    return LoadPreferences(state, QLocale::system());
}

NewRecordDefaults ReadNewRecordDefaults() {
    NewRecordDefaults defaults;
    const std::optional<QString> setDefaults = read(preference::Defaults);
    if (setDefaults && *setDefaults != QLatin1String(Yes)) {
        defaults.dateDefaults = false;
        defaults.moneyDefaults = false;
    } else {
        const std::optional<QString> dateDefault = read(preference::DateDefault);
        defaults.dateDefaults = !dateDefault || *dateDefault == QLatin1String(Yes);
        const std::optional<QString> moneyDefault = read(preference::MoneyDefault);
        defaults.moneyDefaults = !moneyDefault || *moneyDefault == QLatin1String(Yes);
    }
    defaults.dateText = read(preference::Date).value_or(QString::fromLatin1(DefaultDateText));
    defaults.moneyText = read(preference::Money).value_or(QString::fromLatin1(DefaultMoneyText));
    return defaults;
}

} // namespace core
