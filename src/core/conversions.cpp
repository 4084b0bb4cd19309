#include "core/conversions.h"

#include "translation/translate.h"

#include <cmath>
#include <limits>

namespace core {

namespace {

QLocale strict(QLocale locale) {
    locale.setNumberOptions(locale.numberOptions() | QLocale::RejectGroupSeparator);
    return locale;
}

[[noreturn]] void fail(const char* message, const QString& text) {
    throw ConversionError(translation::Translate(QString::fromLatin1(message), 0,
                                                 {{QStringLiteral("$VALUE$"), text}}));
}

} // namespace

ConversionError::ConversionError(const QString& message)
    : std::runtime_error(message.toStdString()), m_message(message) {}

std::optional<qint64> TryStrToInt64(const QString& text, const QLocale& locale) {
    bool ok = false;
    const qint64 value = strict(locale).toLongLong(text.trimmed(), &ok);
    if (!ok)
        return std::nullopt;
    return value;
}

qint64 StrToInt64(const QString& text, const QLocale& locale) {
    const std::optional<qint64> value = TryStrToInt64(text, locale);
    if (!value)
        fail("'$VALUE$' is not a valid integer value", text);
    return *value;
}

qint64 StrToInt64(const QString& text) {
    return StrToInt64(text, QLocale::system());
}

int StrToInt(const QString& text, const QLocale& locale) {
    const std::optional<qint64> value = TryStrToInt64(text, locale);
    if (!value || *value < std::numeric_limits<int>::min() ||
        *value > std::numeric_limits<int>::max())
        fail("'$VALUE$' is not a valid integer value", text);
    return static_cast<int>(*value);
}

int StrToInt(const QString& text) {
    return StrToInt(text, QLocale::system());
}

std::optional<double> TryStrToFloat(const QString& text, const QLocale& locale) {
    bool ok = false;
    const double value = strict(locale).toDouble(text.trimmed(), &ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

double StrToFloat(const QString& text, const QLocale& locale) {
    const std::optional<double> value = TryStrToFloat(text, locale);
    if (!value)
        fail("'$VALUE$' is not a valid floating point value", text);
    return *value;
}

double StrToFloat(const QString& text) {
    return StrToFloat(text, QLocale::system());
}

} // namespace core
