#pragma once

#include <QChar>
#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <QString>

#include <optional>

namespace core {

// Dates are written and read everywhere in the program with the classic patterns:
//
//   d     day without a leading zero          dd    day in two digits
//   ddd   short day name                      dddd  long day name
//   m     month without a leading zero        mm    month in two digits
//   mmm   short month name                    mmmm  long month name
//   y yy  year in two digits                  yyy yyyy (or longer)  four-digit year
//   h hh  hour      n nn  minute      s ss  second      (m or mm right after an hour: minute)
//   /     the date separator                  :     the time separator
//   '...' or "..."  text written as it stands
//
// Letters are recognised in either case; any other character is written as it stands.
// So "dd-mm-yyy" writes 05-03-2004, and "dd/mm/yyyy" writes 05.03.2004 while the date
// separator is ".".

// The settings that formatting and parsing use. The process keeps one set, changed
// only by ApplyDateFormat and SetDateSeparator; every function without a settings
// argument uses it.
struct DateSettings {
    QString shortDateFormat; // in the classic patterns
    QChar dateSeparator;
    QChar timeSeparator;
    QLocale locale; // day and month names
};

DateSettings CurrentDateSettings();

// Process-wide date and time separators. They start as the system locale's and the
// date separator may be replaced by the preferences.
QChar DateSeparator();
void SetDateSeparator(QChar separator);
QChar TimeSeparator();

// The process-wide short date format; it starts as the system locale's.
QString ShortDateFormat();

// A locale's short date format turned into the classic patterns ("M/d/yy" becomes
// "m/d/yy", "dd.MM.yyyy" becomes "dd.mm.yyyy"), and its date separator: the first
// character of its short format that is not a letter, not quoted and not an invisible
// direction mark ("/" when there is none).
QString ClassicDatePattern(const QString& localePattern);
QString LocaleShortDateFormat(const QLocale& locale);
QString LocaleShortDateFormat();
QChar LocaleDateSeparator(const QLocale& locale);
DateSettings LocaleDateSettings(const QLocale& locale);

// Makes `customFormat` the process-wide short date format, with its first character
// that is not d, m or y (either case) as the date separator; a format of specifier
// letters alone keeps the separator. An empty text takes the locale's short format
// and separator instead.
void ApplyDateFormat(const QString& customFormat, const QLocale& locale);
void ApplyDateFormat(const QString& customFormat);

// Whether every date that a custom format writes reads back as that date with StrToDate,
// checked on every day of the 28 years from 1990, which hold every calendar a year can
// have (two-digit years within the hundred years around referenceYear). The preferences accept only such
// formats: not one that lacks the day, the month or the year, nor one whose parts run
// together ambiguously ("dmyyyy" writes 1112001 for both 1 November and 11 January).
// An empty format stands for the locale's.
bool DateFormatReadsBack(const QString& customFormat, const QLocale& locale, int referenceYear);
bool DateFormatReadsBack(const QString& customFormat, const QLocale& locale);

// Formatting with a pattern (see above). The date-only forms write midnight for any
// time specifier.
QString FormatDateTime(const QString& pattern, const QDateTime& value,
                       const DateSettings& settings);
QString FormatDateTime(const QString& pattern, const QDateTime& value);
QString FormatDate(const QString& pattern, QDate date, const DateSettings& settings);
QString FormatDate(const QString& pattern, QDate date);

// A date in the short date format.
QString DateToStr(QDate date, const DateSettings& settings);
QString DateToStr(QDate date);

// Reads a date. A text exactly as the short date format writes it reads as that date,
// for years 1 to 9999 (each part and each piece of literal text in its place; when a
// part's length is open, as with "dmyyyy", the longest reading wins). Any other text is read leniently, in the
// order of day, month and year of the short date format:
//  - day and month of one or two digits; the month may also be written as the
//    locale's short or long month name;
//  - a year of three or four digits as written; a year of one or two digits falls in
//    the hundred years from 50 before `referenceYear` to 49 after it ("90" is 1990 and
//    "74" is 2074 in 2025);
//  - between the parts the same separator twice: the current date separator, or ".",
//    "/" or "-", whatever the current one is, so that "1.1.1990" and "1/1/1990" read
//    on every machine; blanks around the separator are allowed, and blanks alone
//    separate the parts when the date separator is a blank or the month is written as
//    a name in the middle ("5 March 2024");
//  - surrounding blanks, and text that the short date format itself writes before or
//    after the date (a trailing "." or a year word), are allowed; nothing else is.
// When the parts cannot stand in that order and the year, by its three or four digits,
// stands at the other end, the date is read year-month-day ("1990-01-31" under a
// day-first format) or day-month-year ("1.1.1990" under a year-first one). A reading
// in the format's order is never replaced by these.
//
// A text that is not such a date, or a date that does not exist ("31.02.1990"),
// throws ConversionError with a message that contains the word "date". The overloads
// without a reference year take the current year.
std::optional<QDate> TryStrToDate(const QString& text, const DateSettings& settings,
                                  int referenceYear);
QDate StrToDate(const QString& text, const DateSettings& settings, int referenceYear);
QDate StrToDate(const QString& text, const DateSettings& settings);
QDate StrToDate(const QString& text);

} // namespace core
