#include "assets/displaytext.h"

#include <QDate>
#include <QTime>

#include <optional>

namespace assets {

namespace {

using Kind = db::odbc::ColumnInfo::Kind;

// Drivers write dates and times as "yyyy-mm-dd", "hh:mm:ss[.fraction]" and the two
// joined by a blank (or a "T").
std::optional<QDate> isoDate(QByteArrayView text) {
    if (text.size() < 10)
        return std::nullopt;
    const QDate date = QDate::fromString(QLatin1String(text.first(10)), Qt::ISODate);
    return date.isValid() ? std::optional(date) : std::nullopt;
}

std::optional<QTime> isoTime(QByteArrayView text) {
    if (text.size() < 8 || text[2] != ':' || text[5] != ':')
        return std::nullopt;
    const QTime time = QTime::fromString(QLatin1String(text.first(8)), Qt::ISODate);
    if (!time.isValid())
        return std::nullopt;
    QByteArrayView rest = text.sliced(8);
    if (rest.empty())
        return time;
    if (rest[0] != '.' || rest.size() < 2)
        return std::nullopt;
    int milliseconds = 0;
    for (qsizetype i = 1; i < rest.size(); ++i) {
        if (rest[i] < '0' || rest[i] > '9')
            return std::nullopt;
        if (i <= 3)
            milliseconds = milliseconds * 10 + (rest[i] - '0');
    }
    for (qsizetype i = rest.size(); i <= 3; ++i)
        milliseconds *= 10;
    return time.addMSecs(milliseconds);
}

QString timeText(QTime time, const core::DateSettings& dates) {
    const QString pattern =
        time.msec() ? QStringLiteral("hh:nn:ss.zzz") : QStringLiteral("hh:nn:ss");
    return core::FormatDateTime(pattern, QDateTime(QDate(1899, 12, 30), time), dates);
}

std::optional<QString> dateTimeText(Kind kind, QByteArrayView bytes,
                                    const core::DateSettings& dates) {
    if (kind == Kind::Time) {
        const auto time = isoTime(bytes);
        return time ? std::optional(timeText(*time, dates)) : std::nullopt;
    }
    const auto date = isoDate(bytes);
    if (!date)
        return std::nullopt;
    QString text = core::DateToStr(*date, dates);
    QByteArrayView rest = bytes.sliced(10);
    if (rest.empty())
        return text;
    if (rest[0] != ' ' && rest[0] != 'T')
        return std::nullopt;
    const auto time = isoTime(rest.sliced(1));
    if (!time)
        return std::nullopt;
    if (*time != QTime(0, 0))
        text += QLatin1Char(' ') + timeText(*time, dates);
    return text;
}

std::optional<QString> floatText(QByteArrayView bytes, const QLocale& locale) {
    bool read = false;
    const double value = QByteArray::fromRawData(bytes.data(), bytes.size()).toDouble(&read);
    if (!read)
        return std::nullopt;
    return locale.toString(value, 'g', QLocale::FloatingPointShortest);
}

bool isPlainDecimal(QByteArrayView bytes) {
    qsizetype digits = 0;
    qsizetype points = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (bytes[i] >= '0' && bytes[i] <= '9')
            ++digits;
        else if (bytes[i] == '.')
            ++points;
        else if (i > 0 || bytes[i] != '-')
            return false;
    }
    return digits > 0 && points <= 1;
}

// Exact decimals keep the digits the database gives; only the signs are the locale's.
std::optional<QString> decimalText(QByteArrayView bytes, int decimalDigits, const QLocale& locale) {
    if (!isPlainDecimal(bytes))
        return std::nullopt;
    QString text = QString::fromLatin1(bytes);
    // Some drivers write 11890.5 for 11890.50.
    qsizetype digits = text.indexOf(QLatin1Char('.'));
    if (digits < 0 && decimalDigits > 0)
        text += QLatin1Char('.');
    digits = digits < 0 ? 0 : text.size() - digits - 1;
    if (digits < decimalDigits)
        text += QString(decimalDigits - digits, QLatin1Char('0'));
    if (text.startsWith(QLatin1Char('-')))
        text.replace(0, 1, locale.negativeSign());
    const qsizetype point = text.indexOf(QLatin1Char('.'));
    if (point >= 0)
        text.replace(point, 1, locale.decimalPoint());
    return text;
}

} // namespace

QLocale NumberLocale() {
    QLocale locale = QLocale::system();
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale;
}

QString DisplayText(const db::odbc::ColumnInfo& column, QByteArrayView bytes,
                    const core::DateSettings& dates, const QLocale& locale) {
    std::optional<QString> text;
    const Kind kind = column.kind();
    switch (kind) {
    case Kind::Date:
    case Kind::Time:
    case Kind::DateTime:
        text = dateTimeText(kind, bytes, dates);
        break;
    case Kind::Float:
        text = floatText(bytes, locale);
        break;
    case Kind::Decimal:
        text = decimalText(bytes, column.decimalDigits, locale);
        break;
    case Kind::Integer:
    case Kind::Text:
    case Kind::Binary:
        break;
    }
    return text ? *text : QString::fromUtf8(bytes);
}

} // namespace assets
