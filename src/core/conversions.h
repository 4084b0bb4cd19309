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

// Reads numbers as StrToInt64 and StrToFloat do in one locale, with that locale's forms
// looked up once: for reading many numbers.
class NumberReader {
public:
    explicit NumberReader(const QLocale& locale);
    qint64 toInt64(const QString& text) const;
    double toFloat(const QString& text) const;

private:
    QLocale m_locale;
    // Whether the locale writes digits, minus sign and decimal point as ASCII does: plain
    // numbers then read without the locale.
    bool m_asciiIntegers = false;
    bool m_asciiDecimals = false;
};

} // namespace core
