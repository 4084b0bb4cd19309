#include "core/conversions.h"

#include "translation/translate.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace core {

namespace {

QLocale strict(QLocale locale) {
    locale.setNumberOptions(locale.numberOptions() | QLocale::RejectGroupSeparator);
    return locale;
}

bool isDirectionMark(QChar c) {
    const char16_t u = c.unicode();
    return u == 0x200E || u == 0x200F || u == 0x061C || (u >= 0x202A && u <= 0x202E) ||
           (u >= 0x2066 && u <= 0x2069);
}

QString withoutDirectionMarks(const QString& text) {
    QString result;
    result.reserve(text.size());
    for (QChar c : text)
        if (!isDirectionMark(c))
            result += c;
    return result;
}

// The number in the C locale's form: the locale's digits, decimal point, signs and exponent
// (and their ASCII forms) mapped, direction marks dropped; empty when anything else is in it.
// Some locales write numbers that the toolkit's own reader refuses: signs that carry a
// direction mark (Arabic, Persian, Hebrew) and exponents such as "×10^".
QString cNumberForm(const QString& text, const QLocale& locale) {
    const char32_t zero = locale.zeroDigit().toUcs4().value(0, U'0');
    const std::pair<QString, QChar> symbols[] = {
        {withoutDirectionMarks(locale.exponential()), QLatin1Char('e')},
        {withoutDirectionMarks(locale.negativeSign()), QLatin1Char('-')},
        {withoutDirectionMarks(locale.positiveSign()), QLatin1Char('+')},
        {locale.decimalPoint(), QLatin1Char('.')},
        {QStringLiteral("\u2212"), QLatin1Char('-')},
        {QStringLiteral("e"), QLatin1Char('e')},
        {QStringLiteral("-"), QLatin1Char('-')},
        {QStringLiteral("+"), QLatin1Char('+')},
    };
    const QString plain = withoutDirectionMarks(text.trimmed());
    QString result;
    for (qsizetype i = 0; i < plain.size();) {
        char32_t code = plain[i].unicode();
        qsizetype width = 1;
        if (plain[i].isHighSurrogate() && i + 1 < plain.size() && plain[i + 1].isLowSurrogate()) {
            code = QChar::surrogateToUcs4(plain[i], plain[i + 1]);
            width = 2;
        }
        if ((code >= zero && code <= zero + 9) || (code >= U'0' && code <= U'9')) {
            result += QLatin1Char(char('0' + (code >= zero ? code - zero : code - U'0')));
            i += width;
            continue;
        }
        const auto symbol =
            std::find_if(std::begin(symbols), std::end(symbols), [&](const auto& s) {
                return !s.first.isEmpty() &&
                       QStringView(plain).sliced(i).startsWith(s.first, Qt::CaseInsensitive);
            });
        if (symbol == std::end(symbols))
            return {};
        result += symbol->second;
        i += symbol->first.size();
    }
    return result;
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
    qint64 value = strict(locale).toLongLong(text.trimmed(), &ok);
    if (!ok)
        value = strict(QLocale::c()).toLongLong(cNumberForm(text, locale), &ok);
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
    double value = strict(locale).toDouble(text.trimmed(), &ok);
    if (!ok)
        value = strict(QLocale::c()).toDouble(cNumberForm(text, locale), &ok);
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

namespace {

// Digits, with a minus sign before and a decimal point between them where allowed: the
// numbers every locale with ASCII digits, sign and point reads the same. A leading zero
// and long numbers are left to the locale.
bool isPlainNumber(QStringView text, bool decimals) {
    constexpr qsizetype MaxPlainLength = 17;
    if (text.startsWith(u'-'))
        text = text.sliced(1);
    if (text.isEmpty() || text.size() > MaxPlainLength ||
        (text[0] == u'0' && text.size() > 1 && text[1] != u'.'))
        return false;
    bool point = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c >= u'0' && c <= u'9')
            continue;
        if (c != u'.' || !decimals || point || i == 0 || i + 1 == text.size())
            return false;
        point = true;
    }
    return true;
}

template <typename Number> std::optional<Number> plainNumber(QStringView text) {
    char ascii[24];
    for (qsizetype i = 0; i < text.size(); ++i)
        ascii[i] = char(text[i].unicode());
    Number value{};
    const auto [end, error] = std::from_chars(ascii, ascii + text.size(), value);
    if (error != std::errc() || end != ascii + text.size() || (value == 0 && ascii[0] == '-'))
        return std::nullopt;
    return value;
}

} // namespace

NumberReader::NumberReader(const QLocale& locale) : m_locale(locale) {
    m_asciiIntegers =
        locale.zeroDigit() == QLatin1String("0") && locale.negativeSign() == QLatin1String("-");
    m_asciiDecimals = m_asciiIntegers && locale.decimalPoint() == QLatin1String(".");
}

qint64 NumberReader::toInt64(const QString& text) const {
    if (m_asciiIntegers && isPlainNumber(text, false))
        if (const std::optional<qint64> value = plainNumber<qint64>(text))
            return *value;
    return StrToInt64(text, m_locale);
}

double NumberReader::toFloat(const QString& text) const {
    if (m_asciiDecimals && isPlainNumber(text, true))
        if (const std::optional<double> value = plainNumber<double>(text))
            return *value;
    return StrToFloat(text, m_locale);
}

} // namespace core
