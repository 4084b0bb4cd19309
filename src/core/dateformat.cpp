#include "core/dateformat.h"

#include "core/conversions.h"
#include "translation/translate.h"

#include <QElapsedTimer>
#include <QTime>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

namespace core {

namespace {

// ---------------------------------------------------------------------------------
// Patterns

enum class Part { Literal, Day, Month, Year, Hour, Minute, Second, DateSeparator, TimeSeparator };

struct Token {
    Part part;
    int count = 0; // letters in the run
    QString text;  // literal text
};

bool isFormatCharacter(QChar c) {
    return c.category() == QChar::Other_Format;
}

std::vector<Token> tokenize(const QString& pattern) {
    std::vector<Token> tokens;
    auto addLiteral = [&tokens](const QString& text) {
        if (text.isEmpty())
            return;
        if (!tokens.empty() && tokens.back().part == Part::Literal)
            tokens.back().text += text;
        else
            tokens.push_back({Part::Literal, 0, text});
    };
    bool afterHour = false;
    const qsizetype length = pattern.size();
    for (qsizetype i = 0; i < length;) {
        const QChar c = pattern.at(i);
        if (c == QLatin1Char('\'') || c == QLatin1Char('"')) {
            const qsizetype close = pattern.indexOf(c, i + 1);
            const qsizetype end = close < 0 ? length : close;
            addLiteral(pattern.mid(i + 1, end - i - 1));
            i = close < 0 ? length : close + 1;
            continue;
        }
        if (c == QLatin1Char('/')) {
            tokens.push_back({Part::DateSeparator, 0, {}});
            ++i;
            continue;
        }
        if (c == QLatin1Char(':')) {
            tokens.push_back({Part::TimeSeparator, 0, {}});
            ++i;
            continue;
        }
        const char letter = c.toLower().toLatin1();
        if (letter != '\0' && std::strchr("dmyhns", letter) != nullptr) {
            qsizetype run = i + 1;
            while (run < length && pattern.at(run).toLower() == c.toLower())
                ++run;
            const int count = static_cast<int>(run - i);
            Part part = Part::Literal;
            switch (letter) {
            case 'd':
                part = Part::Day;
                break;
            case 'm':
                part = afterHour ? Part::Minute : Part::Month;
                break;
            case 'y':
                part = Part::Year;
                break;
            case 'h':
                part = Part::Hour;
                break;
            case 'n':
                part = Part::Minute;
                break;
            default:
                part = Part::Second;
                break;
            }
            afterHour = part == Part::Hour;
            tokens.push_back({part, count, {}});
            i = run;
            continue;
        }
        addLiteral(QString(c));
        ++i;
    }
    return tokens;
}

QString twoDigits(int value) {
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

// ---------------------------------------------------------------------------------
// Process-wide settings

QChar firstSeparatorIn(const QString& localePattern, QChar fallback) {
    bool quoted = false;
    for (QChar c : localePattern) {
        if (c == QLatin1Char('\'')) {
            quoted = !quoted;
            continue;
        }
        if (!quoted && !c.isLetter() && !isFormatCharacter(c))
            return c;
    }
    return fallback;
}

struct SharedSettings {
    std::mutex mutex;
    DateSettings settings = LocaleDateSettings(QLocale::system());
};

SharedSettings& shared() {
    static SharedSettings instance;
    return instance;
}

// ---------------------------------------------------------------------------------
// Reading

[[noreturn]] void failDate(const QString& text) {
    throw ConversionError(translation::Translate(QStringLiteral("'$VALUE$' is not a valid date"), 0,
                                                 {{QStringLiteral("$VALUE$"), text}}));
}

// Literal text of a pattern with blanks and invisible format marks removed.
QString squeezed(const QString& text) {
    QString result;
    for (QChar c : text)
        if (!c.isSpace() && !isFormatCharacter(c))
            result += c;
    return result;
}

struct DateField {
    int value = 0;
    int digits = 0; // 0 for a month name
    bool monthName = false;
};

// Whether a field can stand for a part: day and month have one or two digits, the month
// may be a name, the year has up to four digits.
bool fits(const DateField& field, Part part) {
    switch (part) {
    case Part::Day:
        return !field.monthName && field.digits <= 2;
    case Part::Month:
        return field.monthName || field.digits <= 2;
    default:
        return !field.monthName;
    }
}

class DateReader {
public:
    DateReader(const QString& text, const DateSettings& settings) : m_settings(settings) {
        for (QChar c : text)
            if (!isFormatCharacter(c))
                m_text += c;
    }

    bool atEnd() const { return m_pos >= m_text.size(); }

    int skipBlanks() {
        int skipped = 0;
        while (!atEnd() && m_text.at(m_pos).isSpace()) {
            ++m_pos;
            ++skipped;
        }
        return skipped;
    }

    // Text that the pattern writes around the date, matched ignoring blanks. Optional:
    // nothing is consumed when it does not match.
    void skipOptional(const QString& literal) {
        if (literal.isEmpty())
            return;
        qsizetype pos = m_pos;
        for (QChar wanted : literal) {
            while (pos < m_text.size() && m_text.at(pos).isSpace())
                ++pos;
            if (pos >= m_text.size() || m_text.at(pos).toCaseFolded() != wanted.toCaseFolded())
                return;
            ++pos;
        }
        m_pos = pos;
    }

    // The separator between two parts: one of the accepted characters, else a blank for
    // blanks alone, else a null character.
    QChar separator() {
        const int blanks = skipBlanks();
        QChar found;
        if (!atEnd() && isAcceptedSeparator(m_text.at(m_pos))) {
            found = m_text.at(m_pos);
            ++m_pos;
        } else if (blanks > 0) {
            found = QLatin1Char(' ');
        }
        skipBlanks();
        return found;
    }

    // One part of a date: up to four digits, or one of the locale's month names (the
    // longest that matches).
    std::optional<DateField> field() {
        DateField field;
        while (!atEnd() && m_text.at(m_pos).isDigit()) {
            if (++field.digits > 4)
                return std::nullopt;
            field.value = field.value * 10 + m_text.at(m_pos).digitValue();
            ++m_pos;
        }
        if (field.digits > 0)
            return field;

        const QLocale& locale = m_settings.locale;
        qsizetype bestLength = 0;
        for (int month = 1; month <= 12; ++month) {
            const std::array<QString, 4> names = {
                locale.monthName(month, QLocale::LongFormat),
                locale.monthName(month, QLocale::ShortFormat),
                locale.standaloneMonthName(month, QLocale::LongFormat),
                locale.standaloneMonthName(month, QLocale::ShortFormat)};
            for (const QString& name : names) {
                if (name.size() > bestLength &&
                    QStringView(m_text).mid(m_pos).startsWith(name, Qt::CaseInsensitive)) {
                    field.value = month;
                    bestLength = name.size();
                }
            }
        }
        if (bestLength == 0)
            return std::nullopt;
        field.monthName = true;
        m_pos += bestLength;
        return field;
    }

private:
    bool isAcceptedSeparator(QChar c) const {
        if (c.isSpace())
            return false;
        return c == m_settings.dateSeparator || c == QLatin1Char('.') || c == QLatin1Char('/') ||
               c == QLatin1Char('-');
    }

    QString m_text;
    qsizetype m_pos = 0;
    const DateSettings& m_settings;
};

int yearInWindow(int twoDigitYear, int referenceYear) {
    const int first = referenceYear - 50;
    int year = first - first % 100 + twoDigitYear;
    if (year < first)
        year += 100;
    return year;
}

// Reads a text exactly as FormatDate writes it with the pattern: each part and each piece of
// literal text in its place. This reads what the lenient reading cannot: text between the
// parts ("2001年3月5日"), month names that begin with a digit ("3月"), day names and
// punctuation after a name ("March 5, 2001"). Where a part can be written in more than one
// length, each is tried; only the first occurrence of a part can branch, later ones must
// repeat its value, so the search stays small.
class PatternReader {
public:
    PatternReader(const std::vector<Token>& tokens, const QString& text,
                  const DateSettings& settings, int referenceYear)
        : m_tokens(tokens), m_text(text), m_settings(settings), m_referenceYear(referenceYear) {}

    std::optional<QDate> read() { return readFrom(0, 0, Values()); }

private:
    struct Values {
        int day = 0;
        int month = 0;
        int year = 0;       // from a year of three or more letters
        int shortYear = -1; // from a year of one or two letters
        int dayOfWeek = 0;
    };

    std::optional<QDate> readFrom(size_t index, qsizetype pos, const Values& values) {
        if (index == m_tokens.size())
            return pos == m_text.size() ? dateOf(values) : std::nullopt;
        const Token& token = m_tokens[index];
        switch (token.part) {
        case Part::Literal:
            return literal(index, pos, values, token.text);
        case Part::DateSeparator:
            return literal(index, pos, values, QString(m_settings.dateSeparator));
        case Part::TimeSeparator:
            return literal(index, pos, values, QString(m_settings.timeSeparator));
        case Part::Hour:
        case Part::Minute:
        case Part::Second: // dates are written at midnight
            return literal(index, pos, values,
                           token.count == 1 ? QStringLiteral("0") : QStringLiteral("00"));
        case Part::Day:
            if (token.count >= 3)
                return names(index, pos, values, &Values::dayOfWeek, 7, [&](int n) {
                    return m_settings.locale.dayName(n, nameFormat(token));
                });
            return number(index, pos, values, &Values::day, token.count == 1 ? 1 : 2, 2);
        case Part::Month:
            if (token.count >= 3)
                return names(index, pos, values, &Values::month, 12, [&](int n) {
                    return m_settings.locale.monthName(n, nameFormat(token));
                });
            return number(index, pos, values, &Values::month, token.count == 1 ? 1 : 2, 2);
        case Part::Year: // years 1 to 9999, written in four digits
            if (token.count <= 2)
                return number(index, pos, values, &Values::shortYear, 2, 2);
            return number(index, pos, values, &Values::year, 4, 4);
        }
        return std::nullopt;
    }

    static QLocale::FormatType nameFormat(const Token& token) {
        return token.count == 3 ? QLocale::ShortFormat : QLocale::LongFormat;
    }

    std::optional<QDate> literal(size_t index, qsizetype pos, const Values& values,
                                 const QString& text) {
        if (!QStringView(m_text).sliced(pos).startsWith(text))
            return std::nullopt;
        return readFrom(index + 1, pos + text.size(), values);
    }

    // A number of minDigits to maxDigits ASCII digits, longest first.
    std::optional<QDate> number(size_t index, qsizetype pos, const Values& values,
                                int Values::*field, int minDigits, int maxDigits) {
        int available = 0;
        while (available < maxDigits && pos + available < m_text.size() &&
               m_text[pos + available] >= QLatin1Char('0') &&
               m_text[pos + available] <= QLatin1Char('9'))
            ++available;
        for (int digits = available; digits >= minDigits; --digits) {
            const int value = QStringView(m_text).sliced(pos, digits).toInt();
            Values next = values;
            if (!assign(next, field, value))
                continue;
            if (std::optional<QDate> date = readFrom(index + 1, pos + digits, next))
                return date;
        }
        return std::nullopt;
    }

    template <typename NameOf>
    std::optional<QDate> names(size_t index, qsizetype pos, const Values& values,
                               int Values::*field, int count, NameOf nameOf) {
        for (int n = 1; n <= count; ++n) {
            const QString name = nameOf(n);
            Values next = values;
            if (name.isEmpty() || !QStringView(m_text).sliced(pos).startsWith(name) ||
                !assign(next, field, n))
                continue;
            if (std::optional<QDate> date = readFrom(index + 1, pos + name.size(), next))
                return date;
        }
        return std::nullopt;
    }

    // A part written twice must say the same both times; the two year forms must agree.
    static bool assign(Values& values, int Values::*field, int value) {
        if (field == &Values::shortYear) {
            if ((values.shortYear >= 0 && values.shortYear != value) ||
                (values.year > 0 && values.year % 100 != value))
                return false;
        } else if (field == &Values::year) {
            if (value <= 0 || (values.shortYear >= 0 && value % 100 != values.shortYear))
                return false;
        }
        if ((field == &Values::day && (value < 1 || value > 31)) ||
            (field == &Values::month && (value < 1 || value > 12)))
            return false;
        if (values.*field > 0 && values.*field != value)
            return false;
        values.*field = value;
        return true;
    }

    std::optional<QDate> dateOf(const Values& values) const {
        int year = values.year;
        if (year == 0 && values.shortYear >= 0)
            year = yearInWindow(values.shortYear, m_referenceYear);
        const QDate date(year, values.month, values.day);
        if (year == 0 || !date.isValid() ||
            (values.dayOfWeek != 0 && date.dayOfWeek() != values.dayOfWeek))
            return std::nullopt;
        return date;
    }

    const std::vector<Token>& m_tokens;
    const QString& m_text;
    const DateSettings& m_settings;
    const int m_referenceYear;
};

} // namespace

// ---------------------------------------------------------------------------------

DateSettings CurrentDateSettings() {
    SharedSettings& instance = shared();
    const std::lock_guard lock(instance.mutex);
    return instance.settings;
}

QChar DateSeparator() {
    return CurrentDateSettings().dateSeparator;
}

void SetDateSeparator(QChar separator) {
    SharedSettings& instance = shared();
    const std::lock_guard lock(instance.mutex);
    instance.settings.dateSeparator = separator;
}

QChar TimeSeparator() {
    return CurrentDateSettings().timeSeparator;
}

QString ShortDateFormat() {
    return CurrentDateSettings().shortDateFormat;
}

QString ClassicDatePattern(const QString& localePattern) {
    QString result;
    QString literal;
    // Letters, quotes and colons would be read as pattern characters: they are quoted.
    auto needsQuotes = [](QChar c) {
        return c.isLetter() || c == QLatin1Char('"') || c == QLatin1Char('\'') ||
               c == QLatin1Char(':');
    };
    auto flushLiteral = [&result, &literal, &needsQuotes] {
        for (qsizetype i = 0; i < literal.size();) {
            qsizetype end = i + 1;
            const bool quoted = needsQuotes(literal.at(i));
            while (end < literal.size() && needsQuotes(literal.at(end)) == quoted)
                ++end;
            const QString run = literal.mid(i, end - i);
            if (!quoted)
                result += run;
            else if (!run.contains(QLatin1Char('"')))
                result += QLatin1Char('"') + run + QLatin1Char('"');
            else
                result += QLatin1Char('\'') + run + QLatin1Char('\'');
            i = end;
        }
        literal.clear();
    };
    const qsizetype length = localePattern.size();
    for (qsizetype i = 0; i < length;) {
        const QChar c = localePattern.at(i);
        if (c == QLatin1Char('\'')) {
            // Quoted text; two quotes stand for one quote character.
            qsizetype j = i + 1;
            if (j < length && localePattern.at(j) == QLatin1Char('\'')) {
                literal += c;
                i = j + 1;
                continue;
            }
            while (j < length) {
                if (localePattern.at(j) == QLatin1Char('\'')) {
                    if (j + 1 < length && localePattern.at(j + 1) == QLatin1Char('\'')) {
                        literal += c;
                        j += 2;
                        continue;
                    }
                    break;
                }
                literal += localePattern.at(j);
                ++j;
            }
            i = j + 1;
            continue;
        }
        if (c == QLatin1Char('d') || c == QLatin1Char('M') || c == QLatin1Char('y')) {
            qsizetype run = i + 1;
            while (run < length && localePattern.at(run) == c)
                ++run;
            const int count = static_cast<int>(run - i);
            flushLiteral();
            if (c == QLatin1Char('d'))
                result += QString(std::min(count, 4), QLatin1Char('d'));
            else if (c == QLatin1Char('M'))
                result += QString(std::min(count, 4), QLatin1Char('m'));
            else
                result += count == 2 ? QStringLiteral("yy") : QStringLiteral("yyyy");
            i = run;
            continue;
        }
        literal += c;
        ++i;
    }
    flushLiteral();
    return result;
}

QString LocaleShortDateFormat(const QLocale& locale) {
    return ClassicDatePattern(locale.dateFormat(QLocale::ShortFormat));
}

QString LocaleShortDateFormat() {
    return LocaleShortDateFormat(QLocale::system());
}

QChar LocaleDateSeparator(const QLocale& locale) {
    // A blank only parts a month name from the numbers ("d MMM yyyy" of the C locale);
    // numeric dates, such as the log's time stamp, then take the usual "/".
    const QChar separator =
        firstSeparatorIn(locale.dateFormat(QLocale::ShortFormat), QLatin1Char('/'));
    return separator.isSpace() ? QLatin1Char('/') : separator;
}

DateSettings LocaleDateSettings(const QLocale& locale) {
    return {LocaleShortDateFormat(locale), LocaleDateSeparator(locale),
            firstSeparatorIn(locale.timeFormat(QLocale::ShortFormat), QLatin1Char(':')), locale};
}

namespace {

// The settings with a custom format made the short date format (see ApplyDateFormat).
void applyCustomFormat(DateSettings& settings, const QString& customFormat) {
    settings.shortDateFormat = customFormat;
    for (QChar c : customFormat) {
        const QChar lower = c.toLower();
        if (lower != QLatin1Char('d') && lower != QLatin1Char('m') && lower != QLatin1Char('y')) {
            settings.dateSeparator = c;
            break;
        }
    }
}

} // namespace

void ApplyDateFormat(const QString& customFormat, const QLocale& locale) {
    SharedSettings& instance = shared();
    const std::lock_guard lock(instance.mutex);
    DateSettings& settings = instance.settings;
    settings.locale = locale;
    if (customFormat.isEmpty()) {
        settings.shortDateFormat = LocaleShortDateFormat(locale);
        settings.dateSeparator = LocaleDateSeparator(locale);
        return;
    }
    applyCustomFormat(settings, customFormat);
}

bool DateFormatReadsBack(const QString& customFormat, const QLocale& locale, int referenceYear) {
    DateSettings settings = CurrentDateSettings();
    settings.locale = locale;
    if (customFormat.isEmpty()) // the locale's format, as ApplyDateFormat takes it
        settings = LocaleDateSettings(locale);
    else
        applyCustomFormat(settings, customFormat);
    auto readsBack = [&](QDate date) {
        return TryStrToDate(DateToStr(date, settings), settings, referenceYear) == date;
    };
    // Every day of 28 years, the stored default 1 January 1990 among them: every calendar a
    // year can have (the weekday it starts on, leap or not), since a day name may be all that
    // tells two readings apart, and years of both centuries the program sees.
    for (QDate date(1990, 1, 1); date.year() < 2018; date = date.addDays(1))
        if (!readsBack(date))
            return false;
    return true;
}

bool DateFormatReadsBack(const QString& customFormat, const QLocale& locale) {
    return DateFormatReadsBack(customFormat, locale, QDate::currentDate().year());
}

void ApplyDateFormat(const QString& customFormat) {
    ApplyDateFormat(customFormat, QLocale::system());
}

QString FormatDateTime(const QString& pattern, const QDateTime& value,
                       const DateSettings& settings) {
    if (!value.isValid())
        return {};
    const QDate date = value.date();
    const QTime time = value.time();
    const QLocale& locale = settings.locale;
    QString result;
    for (const Token& token : tokenize(pattern)) {
        switch (token.part) {
        case Part::Literal:
            result += token.text;
            break;
        case Part::DateSeparator:
            result += settings.dateSeparator;
            break;
        case Part::TimeSeparator:
            result += settings.timeSeparator;
            break;
        case Part::Day:
            if (token.count == 1)
                result += QString::number(date.day());
            else if (token.count == 2)
                result += twoDigits(date.day());
            else
                result += locale.dayName(date.dayOfWeek(), token.count == 3 ? QLocale::ShortFormat
                                                                            : QLocale::LongFormat);
            break;
        case Part::Month:
            if (token.count == 1)
                result += QString::number(date.month());
            else if (token.count == 2)
                result += twoDigits(date.month());
            else
                result += locale.monthName(date.month(), token.count == 3 ? QLocale::ShortFormat
                                                                          : QLocale::LongFormat);
            break;
        case Part::Year:
            if (token.count <= 2)
                result += twoDigits(std::abs(date.year()) % 100);
            else
                result += QStringLiteral("%1").arg(date.year(), 4, 10, QLatin1Char('0'));
            break;
        case Part::Hour:
            result += token.count == 1 ? QString::number(time.hour()) : twoDigits(time.hour());
            break;
        case Part::Minute:
            result += token.count == 1 ? QString::number(time.minute()) : twoDigits(time.minute());
            break;
        case Part::Second:
            result += token.count == 1 ? QString::number(time.second()) : twoDigits(time.second());
            break;
        }
    }
    return result;
}

QString FormatDateTime(const QString& pattern, const QDateTime& value) {
    return FormatDateTime(pattern, value, CurrentDateSettings());
}

QString FormatDate(const QString& pattern, QDate date, const DateSettings& settings) {
    return FormatDateTime(pattern, date.startOfDay(), settings);
}

QString FormatDate(const QString& pattern, QDate date) {
    return FormatDate(pattern, date, CurrentDateSettings());
}

QString DateToStr(QDate date, const DateSettings& settings) {
    return FormatDate(settings.shortDateFormat, date, settings);
}

QString DateToStr(QDate date) {
    return DateToStr(date, CurrentDateSettings());
}

std::optional<QDate> TryStrToDate(const QString& text, const DateSettings& settings,
                                  int referenceYear) {
    const std::vector<Token> tokens = tokenize(settings.shortDateFormat);
    // A text exactly as the short date format writes it reads as written.
    if (std::optional<QDate> date = PatternReader(tokens, text, settings, referenceYear).read())
        return date;

    // Otherwise the lenient reading: the order of the parts and the text around them, from
    // the short date format.
    std::vector<Part> order;
    qsizetype firstPart = -1;
    qsizetype lastPart = -1;
    for (qsizetype i = 0; i < static_cast<qsizetype>(tokens.size()); ++i) {
        const Part part = tokens[i].part;
        if (part != Part::Day && part != Part::Month && part != Part::Year)
            continue;
        if (firstPart < 0)
            firstPart = i;
        lastPart = i;
        if (std::find(order.begin(), order.end(), part) == order.end())
            order.push_back(part);
    }
    for (Part part : {Part::Day, Part::Month, Part::Year})
        if (std::find(order.begin(), order.end(), part) == order.end())
            order.push_back(part);

    auto literalText = [&tokens, &settings](qsizetype from, qsizetype to) {
        QString literal;
        for (qsizetype i = from; i < to; ++i) {
            const Token& token = tokens[i];
            if (token.part == Part::Literal)
                literal += token.text;
            else if (token.part == Part::DateSeparator)
                literal += settings.dateSeparator;
            else if (token.part == Part::TimeSeparator)
                literal += settings.timeSeparator;
        }
        return squeezed(literal);
    };
    const qsizetype tokenCount = static_cast<qsizetype>(tokens.size());
    const QString leading = firstPart < 0 ? QString() : literalText(0, firstPart);
    const QString trailing = lastPart < 0 ? QString() : literalText(lastPart + 1, tokenCount);

    DateReader reader(text, settings);
    reader.skipBlanks();
    reader.skipOptional(leading);
    reader.skipBlanks();

    std::array<DateField, 3> fields;
    QChar firstSeparator;
    for (int i = 0; i < 3; ++i) {
        if (i > 0) {
            const QChar separator = reader.separator();
            if (separator.isNull())
                return std::nullopt;
            if (i == 1)
                firstSeparator = separator;
            else if (separator != firstSeparator)
                return std::nullopt;
        }
        const std::optional<DateField> field = reader.field();
        if (!field)
            return std::nullopt;
        fields[i] = *field;
    }
    reader.skipBlanks();
    reader.skipOptional(trailing);
    reader.skipBlanks();
    if (!reader.atEnd())
        return std::nullopt;
    // Blanks alone separate the parts of a blank-separated format, or a month name in
    // the middle from its neighbours.
    if (firstSeparator == QLatin1Char(' ') && !settings.dateSeparator.isSpace() &&
        !fields[1].monthName)
        return std::nullopt;

    // The order of the short date format, unless the parts cannot be read that way and
    // the year, by its length, stands at the other end: "1990-01-31" under a day-first
    // format, or the stored default "1.1.1990" under a year-first one (then day first).
    using Order = std::array<Part, 3>;
    std::vector<Order> orders = {{order[0], order[1], order[2]}};
    if (fields[0].digits >= 3)
        orders.push_back({Part::Year, Part::Month, Part::Day});
    if (fields[2].digits >= 3)
        orders.push_back({Part::Day, Part::Month, Part::Year});
    const auto readable = std::find_if(orders.begin(), orders.end(), [&fields](const Order& o) {
        return fits(fields[0], o[0]) && fits(fields[1], o[1]) && fits(fields[2], o[2]);
    });
    if (readable == orders.end())
        return std::nullopt;

    int day = 0;
    int month = 0;
    int year = 0;
    for (int i = 0; i < 3; ++i) {
        const DateField& field = fields[i];
        switch ((*readable)[i]) {
        case Part::Day:
            day = field.value;
            break;
        case Part::Month:
            month = field.value;
            break;
        default:
            year = field.digits <= 2 ? yearInWindow(field.value, referenceYear) : field.value;
            break;
        }
    }
    const QDate date(year, month, day);
    if (!date.isValid())
        return std::nullopt;
    return date;
}

QDate StrToDate(const QString& text, const DateSettings& settings, int referenceYear) {
    const std::optional<QDate> date = TryStrToDate(text, settings, referenceYear);
    if (!date)
        failDate(text);
    return *date;
}

namespace {

// The clock's year, read again at most once a minute: reading the date looks the time
// zone up, which costs more than reading a date from text.
int currentYear() {
    thread_local QElapsedTimer age;
    thread_local int year = 0;
    if (!age.isValid() || age.elapsed() > 60000) {
        year = QDate::currentDate().year();
        age.start();
    }
    return year;
}

} // namespace

QDate StrToDate(const QString& text, const DateSettings& settings) {
    return StrToDate(text, settings, currentYear());
}

QDate StrToDate(const QString& text) {
    return StrToDate(text, CurrentDateSettings());
}

} // namespace core
