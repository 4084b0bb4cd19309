// Dates and numbers as the user writes them.
//
// Properties, in a locale taken from every locale the toolkit has:
// - StrToDate and the number conversions throw ConversionError and nothing else;
// - a date written with the locale's short format reads back as that date, and one written
//   with a custom format reads back unless DateFormatReadsBack refuses the format;
// - integers and floating-point numbers written by the locale (without group separators) read
//   back as the same number.

#include "core/conversions.h"
#include "core/dateformat.h"
#include "fuzzsupport.h"

#include <cmath>

namespace {

constexpr int ReferenceYear = 2025;

struct LocaleEntry {
    QLocale locale;
    core::DateSettings settings; // its short date format
};

const std::vector<LocaleEntry>& allLocales() {
    static const std::vector<LocaleEntry> entries = [] {
        std::vector<LocaleEntry> result;
        for (const QLocale& locale : QLocale::matchingLocales(
                 QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory))
            result.push_back({locale, core::LocaleDateSettings(locale)});
        return result;
    }();
    return entries;
}

// The settings as the preferences make them from a custom format: the format, and its first
// character that is not d, m or y as the date separator.
core::DateSettings customSettings(const LocaleEntry& entry, const QString& format) {
    core::DateSettings settings = entry.settings;
    if (format.isEmpty())
        return settings;
    settings.shortDateFormat = format;
    for (QChar c : format) {
        if (!QStringLiteral("dmyDMY").contains(c)) {
            settings.dateSeparator = c;
            break;
        }
    }
    return settings;
}

void checkDate(FuzzedDataProvider& input, const LocaleEntry& entry) {
    const QString format = fuzzsupport::takeText(input, 40);
    // Two-digit years read within the hundred years around the reference year.
    const QDate date =
        QDate(ReferenceYear - 50, 1, 1).addDays(input.ConsumeIntegralInRange<int>(0, 36523));
    const core::DateSettings settings = customSettings(entry, format);
    const QString text = core::DateToStr(date, settings);
    const std::optional<QDate> read = core::TryStrToDate(text, settings, ReferenceYear);
    const QString detail = entry.locale.name() + QStringLiteral(" format ") +
                           fuzzsupport::shown(settings.shortDateFormat) +
                           QStringLiteral(" wrote ") + fuzzsupport::shown(text);
    if (read != date)
        FUZZ_CHECK(!format.isEmpty() &&
                       !core::DateFormatReadsBack(format, entry.locale, ReferenceYear),
                   detail);

    const QString any = fuzzsupport::takeText(input, 64);
    try {
        const QDate parsed = core::StrToDate(any, settings, ReferenceYear);
        FUZZ_CHECK(parsed.isValid(), fuzzsupport::shown(any));
    } catch (const core::ConversionError&) {
    }
}

void checkNumbers(FuzzedDataProvider& input, QLocale locale) {
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    const qint64 integer = input.ConsumeIntegral<qint64>();
    const QString integerText = locale.toString(integer);
    FUZZ_CHECK(core::TryStrToInt64(integerText, locale) == integer,
               locale.name() + QLatin1Char(' ') + fuzzsupport::shown(integerText));
    const double number = input.ConsumeFloatingPoint<double>();
    const QString numberText = locale.toString(number, 'g', QLocale::FloatingPointShortest);
    FUZZ_CHECK(core::TryStrToFloat(numberText, locale) == number,
               locale.name() + QLatin1Char(' ') + fuzzsupport::shown(numberText));

    const QString any = fuzzsupport::takeText(input, 64);
    try {
        core::StrToInt(any, locale);
    } catch (const core::ConversionError&) {
    }
    try {
        FUZZ_CHECK(std::isfinite(core::StrToFloat(any, locale)), fuzzsupport::shown(any));
    } catch (const core::ConversionError&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const std::vector<LocaleEntry>& locales = allLocales();
    const LocaleEntry& entry = locales[input.ConsumeIntegralInRange<size_t>(0, locales.size() - 1)];
    checkDate(input, entry);
    checkNumbers(input, entry.locale);
    return 0;
}
