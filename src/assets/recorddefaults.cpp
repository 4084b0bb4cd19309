#include "assets/recorddefaults.h"

#include "core/dateformat.h"
#include "core/preferences.h"
#include "core/registry.h"

namespace assets {

namespace {

// True unless the value is stored and is not exactly "Yes".
bool switchedOn(const char* name) {
    QString value;
    return !core::ReadRegistryString(QLatin1String(core::PreferencesKey), QLatin1String(name),
                                     value, core::PreferencesBufferLength, std::nullopt) ||
           value == QLatin1String(core::Yes);
}

QString storedOr(const char* name, const char* fallback) {
    QString value;
    if (core::ReadRegistryString(QLatin1String(core::PreferencesKey), QLatin1String(name), value,
                                 core::PreferencesBufferLength, std::nullopt))
        return value;
    return QLatin1String(fallback);
}

} // namespace

NewRecordDefaults ReadNewRecordDefaults() {
    NewRecordDefaults defaults;
    if (!switchedOn(core::preference::Defaults))
        return defaults;
    defaults.dates = switchedOn(core::preference::DateDefault);
    defaults.money = switchedOn(core::preference::MoneyDefault);
    defaults.dateText = storedOr(core::preference::Date, core::DefaultDateText);
    defaults.moneyText = storedOr(core::preference::Money, core::DefaultMoneyText);
    return defaults;
}

void ApplyNewRecordDefaults(TableDataSet& record, const NewRecordDefaults& defaults) {
    using Kind = db::odbc::ColumnInfo::Kind;
    const QString date =
        defaults.dates ? core::DateToStr(core::StrToDate(defaults.dateText)) : QString();
    for (const db::odbc::ColumnInfo& field : record.fields()) {
        const Kind kind = field.kind();
        if (defaults.dates && (kind == Kind::Date || kind == Kind::DateTime))
            record.setAsText(field.name, date);
        else if (defaults.dates && kind == Kind::Time)
            record.setAsText(field.name, QStringLiteral("00:00:00"));
        else if (defaults.money && (kind == Kind::Float || kind == Kind::Decimal))
            record.setAsText(field.name, defaults.moneyText);
    }
}

} // namespace assets
