#pragma once

#include <QLocale>
#include <QString>

#include <optional>
#include <stdexcept>

namespace core {

// A text that does not convert to the wanted value: a date, an integer or a
// floating-point number. The message is translated and names the text.
class ConversionError : public std::runtime_error {
public:
    explicit ConversionError(const QString& message);
    const QString& message() const { return m_message; }

private:
    QString m_message;
};

// Whole numbers and floating-point numbers as the user writes them: the locale's
// digits, signs and decimal point, surrounding blanks ignored, nothing else before or
// after the number. Group separators are refused, so that "1.5" cannot be read as
// fifteen where the point groups thousands. The overloads without a locale use the
// user's locale (QLocale::system()).
std::optional<qint64> TryStrToInt64(const QString& text, const QLocale& locale);
int StrToInt(const QString& text, const QLocale& locale);
int StrToInt(const QString& text);
qint64 StrToInt64(const QString& text, const QLocale& locale);
qint64 StrToInt64(const QString& text);

// Infinity and NaN are refused.
std::optional<double> TryStrToFloat(const QString& text, const QLocale& locale);
double StrToFloat(const QString& text, const QLocale& locale);
double StrToFloat(const QString& text);

} // namespace core
