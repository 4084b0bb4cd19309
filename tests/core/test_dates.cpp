#include "core/conversions.h"
#include "core/dateformat.h"
#include "support/testsupport.h"

#include <QTest>

using core::DateSettings;

using testsupport::AddRow;

namespace {

// Dates are read against a fixed year so that the two-digit years are predictable.
constexpr int ReferenceYear = 2025;

DateSettings settingsFor(const QString& format, QChar separator) {
    return {format, separator, QLatin1Char('.'), QLocale::c()};
}

const QDate Samples[] = {QDate(1990, 1, 1), QDate(2000, 2, 29), QDate(1999, 12, 31),
                         QDate(2024, 3, 5), QDate(1975, 6, 15), QDate(2074, 11, 30)};

} // namespace

class TestDates : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The locale's short format and separator; its dates read back, and so does the
    // stored default "1.1.1990", whatever the locale's order and separator.
    void localeDates_data() {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("separator");
        QTest::addColumn<QString>("firstOfJanuary1990");
        AddRow("en_US", "en_US", "m/d/yy", "/", "1/1/90");
        AddRow("en_GB", "en_GB", "dd/mm/yyyy", "/", "01/01/1990");
        AddRow("de_DE", "de_DE", "dd.mm.yy", ".", "01.01.90");
        AddRow("fr_FR", "fr_FR", "dd/mm/yyyy", "/", "01/01/1990");
        AddRow("C: month names, numeric dates take /", "C", "d mmm yyyy", "/", "1 Jan 1990");
        AddRow("ja_JP", "ja_JP", "yyyy/mm/dd", "/", "1990/01/01");
        AddRow("ko_KR: two-digit year first", "ko_KR", "yy. m. d.", ".", "90. 1. 1.");
        AddRow("hu_HU: trailing dot", "hu_HU", "yyyy. mm. dd.", ".", "1990. 01. 01.");
        AddRow("bg_BG: quoted year word", "bg_BG", "d.mm.yy \"г\".", ".", "1.01.90 г.");
        AddRow("ar_SA: direction marks", "ar_SA", "d\u200F/m\u200F/yyyy", "/",
               "1\u200F/1\u200F/1990");
    }

    void localeDates() {
        QFETCH(QString, locale);
        QFETCH(QString, format);
        QFETCH(QString, separator);
        QFETCH(QString, firstOfJanuary1990);

        const QLocale qlocale(locale);
        const DateSettings settings = core::LocaleDateSettings(qlocale);
        QCOMPARE(core::LocaleShortDateFormat(qlocale), format);
        QCOMPARE(QString(core::LocaleDateSeparator(qlocale)), separator);
        QCOMPARE(core::DateToStr(QDate(1990, 1, 1), settings), firstOfJanuary1990);
        for (const QDate& date : Samples)
            QCOMPARE(core::TryStrToDate(core::DateToStr(date, settings), settings, ReferenceYear)
                         .value_or(QDate()),
                     date);
        QCOMPARE(core::TryStrToDate(QStringLiteral("1.1.1990"), settings, ReferenceYear)
                     .value_or(QDate()),
                 QDate(1990, 1, 1));
    }

    void classicPattern_data() {
        QTest::addColumn<QString>("localePattern");
        QTest::addColumn<QString>("classic");
        AddRow("one-letter year is the full year", "y-MM-dd", "yyyy-mm-dd");
        AddRow("names", "dddd, d MMMM yyyy", "dddd, d mmmm yyyy");
        AddRow("quoted word", "d 'de' MMMM", "d \"de\" mmmm");
        AddRow("escaped quote", "d''MM", "d\"'\"mm");
        AddRow("letters that are not date parts are quoted", "dd.MM.yyyy g", "dd.mm.yyyy \"g\"");
    }

    void classicPattern() {
        QFETCH(QString, localePattern);
        QFETCH(QString, classic);
        QCOMPARE(core::ClassicDatePattern(localePattern), classic);
    }

    void format_data() {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QDateTime>("when");
        QTest::addColumn<QString>("separator");
        QTest::addColumn<QString>("expected");

        const QDateTime march5(QDate(2004, 3, 5), QTime(14, 7, 9));
        AddRow("day and month", "d dd m mm", march5, "/", "5 05 3 03");
        AddRow("two digits anyway", "d m", QDateTime(QDate(1999, 12, 31), QTime()), "/", "31 12");
        AddRow("years", "y yy yyy yyyy", march5, "/", "04 04 2004 2004");
        AddRow("small year", "yyyy yy", QDateTime(QDate(5, 1, 1), QTime()), "/", "0005 05");
        AddRow("names", "ddd dddd mmm mmmm", march5, "/", "Fri Friday Mar March");
        AddRow("upper case", "DD-MM-YYYY", march5, "/", "05-03-2004");
        AddRow("separators", "dd/mm/yyyy hh:nn:ss", march5, "-", "05-03-2004 14.07.09");
        AddRow("other characters as they stand", "yyyy.mm,dd", march5, "-", "2004.03,05");
        AddRow("one-digit time parts", "h n s", march5, "/", "14 7 9");
        AddRow("m right after an hour is the minute", "hh:mm d/m", march5, "-", "14.07 5-3");
        AddRow("quoted", "'day' d \"of\" m", march5, "/", "day 5 of 3");
        AddRow("unclosed quote", "d 'rest", march5, "/", "5 rest");
    }

    void format() {
        QFETCH(QString, pattern);
        QFETCH(QDateTime, when);
        QFETCH(QString, separator);
        QFETCH(QString, expected);

        const DateSettings settings = settingsFor(QStringLiteral("dd/mm/yyyy"), separator.at(0));
        QCOMPARE(core::FormatDateTime(pattern, when, settings), expected);
        QCOMPARE(core::FormatDate(pattern, when.date(), settings),
                 core::FormatDateTime(pattern, when.date().startOfDay(), settings));
        QCOMPARE(core::FormatDateTime(pattern, QDateTime(), settings), QString());
    }

    // Every pattern the preferences note allows (d or dd, m or mm, yy, yyy or yyyy, in
    // the three orders and with three separators) writes dates that read back.
    void notePatternsRoundTrip_data() {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("locale");
        for (const char* d : {"d", "dd"})
            for (const char* m : {"m", "mm"})
                for (const char* y : {"yy", "yyy", "yyyy"})
                    for (const char* s : {"/", ".", "-"})
                        for (const QStringList& parts :
                             {QStringList{d, m, y}, QStringList{m, d, y}, QStringList{y, m, d}}) {
                            const QString pattern = parts.join(QLatin1String(s));
                            QTest::newRow(qPrintable(pattern)) << pattern << "en_GB";
                        }
        // And formats with names and text between the parts.
        AddRow("long month name and a comma", "mmmm d, yyyy", "en_US");
        AddRow("text between the parts", "yyyy'\u5E74'm'\u6708'd'\u65E5'", "ja_JP");
        AddRow("month names that begin with a digit", "dd mmm yy", "ja_JP");
        AddRow("day names", "dddd, d. mmmm yyyy", "de_DE");
    }

    void notePatternsRoundTrip() {
        QFETCH(QString, pattern);
        QFETCH(QString, locale);
        core::ApplyDateFormat(pattern, QLocale(locale));
        const DateSettings settings = core::CurrentDateSettings();
        QCOMPARE(settings.shortDateFormat, pattern);
        for (const QDate& date : Samples)
            QCOMPARE(core::TryStrToDate(core::DateToStr(date), settings, ReferenceYear)
                         .value_or(QDate()),
                     date);
    }

    // The preferences accept a custom format only when its dates read back.
    void customFormatAcceptance_data() {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<bool>("readsBack");
        AddRow("long month name and a comma", "mmmm d, yyyy", "en_US", true);
        AddRow("month names that begin with a digit", "dd mmm yy", "ja_JP", true);
        AddRow("letters only", "ddmmyyyy", "en_GB", true);
        AddRow("empty: the locale's", "", "ja_JP", true);
        AddRow("no year", "dd.mm", "en_GB", false);
        AddRow("no day", "mmmm yyyy", "en_GB", false);
        AddRow("ambiguous: 1112001", "dmyyyy", "en_GB", false);
        AddRow("ambiguous unless a day name tells: 1 November or 11 January", "dm-md dddd", "en_GB",
               false);
    }

    void customFormatAcceptance() {
        QFETCH(QString, pattern);
        QFETCH(QString, locale);
        QTEST(core::DateFormatReadsBack(pattern, QLocale(locale), ReferenceYear), "readsBack");
    }

    void parse_data() {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("separator");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDate>("expected"); // null: not a date

        const QDate none;
        const QDate feb3(1990, 2, 3);
        // Order of the short format.
        AddRow("day first", "dd/mm/yyyy", "/", "3/2/1990", feb3);
        AddRow("month first", "m/d/yy", "/", "2/3/1990", feb3);
        AddRow("year first", "yyyy-mm-dd", "-", "1990-2-3", feb3);
        // Separators: the current one, ".", "/" and "-" whatever the current one is.
        AddRow("dot under a slash format", "m/d/yy", "/", "2.3.1990", feb3);
        AddRow("slash under a dot format", "dd.mm.yy", ".", "3/2/1990", feb3);
        AddRow("own separator", "dd|mm|yyyy", "|", "3|2|1990", feb3);
        AddRow("blanks around", "dd.mm.yyyy", ".", "  3 . 2 .1990 ", feb3);
        AddRow("comma is not a separator", "dd.mm.yyyy", ".", "3,2,1990", none);
        AddRow("mixed separators", "dd.mm.yyyy", ".", "3.2/1990", none);
        AddRow("doubled separator", "dd.mm.yyyy", ".", "3..2.1990", none);
        AddRow("blanks alone", "dd.mm.yyyy", ".", "3 2 1990", none);
        AddRow("blanks under a blank format", "d mmm yyyy", " ", "3 2 1990", feb3);
        // Month names.
        AddRow("long month name, any case", "d mmm yyyy", " ", "3 FEBRUARY 1990", feb3);
        AddRow("month name under a numeric format", "dd.mm.yyyy", ".", "3.feb.1990", feb3);
        AddRow("unknown name", "d mmm yyyy", " ", "3 Foo 1990", none);
        AddRow("name in the day's place", "d mmm yyyy", " ", "Feb 3 1990", none);
        // Text the format writes around the date.
        AddRow("trailing dot of the format", "yyyy. mm. dd.", ".", "1990. 02. 03.", feb3);
        AddRow("trailing dot left out", "yyyy. mm. dd.", ".", "1990. 2. 3", feb3);
        AddRow("trailing dot the format lacks", "dd.mm.yyyy", ".", "3.2.1990.", none);
        AddRow("leading text of the format", "'on' dd.mm.yyyy", ".", "on 03.02.1990", feb3);
        // The year at the other end.
        AddRow("ISO under a day-first format", "dd/mm/yyyy", "/", "1990-02-03", feb3);
        AddRow("dotted default under a year-first format", "yyyy/mm/dd", "/", "3.2.1990", feb3);
        AddRow("format order wins when it reads", "yyyy/mm/dd", "/", "90.2.3", feb3);
        // Exactly as the format writes it; a four-digit year never takes a fifth digit.
        AddRow("parts run together", "yyyydmyyyyd", "-", "1977111197711", QDate(1977, 1, 11));
        // Not dates.
        AddRow("empty", "dd.mm.yyyy", ".", "", none);
        AddRow("two parts", "dd.mm.yyyy", ".", "3.2", none);
        AddRow("trailing garbage", "dd.mm.yyyy", ".", "3.2.1990x", none);
        AddRow("sign", "dd.mm.yyyy", ".", "+3.2.1990", none);
        AddRow("three-digit day", "dd.mm.yyyy", ".", "003.2.1990", none);
        AddRow("five-digit year", "dd.mm.yyyy", ".", "3.2.19900", none);
        // Dates that do not exist.
        AddRow("31 February", "dd.mm.yyyy", ".", "31.02.1990", none);
        AddRow("29 February 1900", "dd.mm.yyyy", ".", "29.2.1900", none);
        AddRow("29 February 2000", "dd.mm.yyyy", ".", "29.2.2000", QDate(2000, 2, 29));
        AddRow("day 0", "dd.mm.yyyy", ".", "0.1.1990", none);
        AddRow("month 13", "dd.mm.yyyy", ".", "1.13.1990", none);
        AddRow("year 0", "dd.mm.yyyy", ".", "1.1.0000", none);
        // Two-digit years fall in the hundred years from 1975 to 2074.
        AddRow("90 is 1990", "dd.mm.yy", ".", "1.6.90", QDate(1990, 6, 1));
        AddRow("75, first of the window", "dd.mm.yy", ".", "1.6.75", QDate(1975, 6, 1));
        AddRow("74, last of the window", "dd.mm.yy", ".", "1.6.74", QDate(2074, 6, 1));
        AddRow("one-digit year", "dd.mm.yy", ".", "1.6.5", QDate(2005, 6, 1));
        AddRow("three-digit year as written", "dd.mm.yy", ".", "1.6.990", QDate(990, 6, 1));
    }

    void parse() {
        QFETCH(QString, format);
        QFETCH(QString, separator);
        QFETCH(QString, text);
        QFETCH(QDate, expected);

        const DateSettings settings = settingsFor(format, separator.at(0));
        const std::optional<QDate> date = core::TryStrToDate(text, settings, ReferenceYear);
        if (!expected.isNull()) {
            QVERIFY2(date, qPrintable(text));
            QCOMPARE(*date, expected);
            QCOMPARE(core::StrToDate(text, settings, ReferenceYear), expected);
            return;
        }
        QVERIFY2(!date, qPrintable(date ? date->toString(Qt::ISODate) : QString()));
        try {
            core::StrToDate(text, settings, ReferenceYear);
            QFAIL("no conversion error");
        } catch (const core::ConversionError& error) {
            QCOMPARE(error.message(), QStringLiteral("'%1' is not a valid date").arg(text));
            QCOMPARE(QString::fromStdString(error.what()), error.message());
        }
    }

    // The window follows the clock: its first and last years.
    void twoDigitYearsFollowTheClock() {
        const DateSettings settings = settingsFor(QStringLiteral("dd.mm.yy"), QLatin1Char('.'));
        const int now = QDate::currentDate().year();
        for (const int year : {now - 50, now + 49}) {
            const QString text = QStringLiteral("1.1.%1").arg(year % 100, 2, 10, QLatin1Char('0'));
            QCOMPARE(core::StrToDate(text, settings).year(), year);
        }
    }

    void applyDateFormat_data() {
        QTest::addColumn<QString>("custom");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("separator");
        AddRow("dashes, upper case", "DD-MM-YYYY", "en_US", "DD-MM-YYYY", "-");
        AddRow("first letter other than d, m or y", "mm/dd-yy", "de_DE", "mm/dd-yy", "/");
        AddRow("letters only keep the separator", "ddmmyyyy", "de_DE", "ddmmyyyy", "#");
        AddRow("locale en_US", "", "en_US", "m/d/yy", "/");
        AddRow("locale de_DE", "", "de_DE", "dd.mm.yy", ".");
    }

    void applyDateFormat() {
        QFETCH(QString, custom);
        QFETCH(QString, locale);
        QFETCH(QString, format);
        QFETCH(QString, separator);
        core::SetDateSeparator(QLatin1Char('#'));
        core::ApplyDateFormat(custom, QLocale(locale));
        QCOMPARE(core::ShortDateFormat(), format);
        QCOMPARE(QString(core::DateSeparator()), separator);
        QCOMPARE(core::CurrentDateSettings().locale, QLocale(locale));
    }

    void processWideSettings() {
        core::ApplyDateFormat(QStringLiteral("dd/mm/yyyy"), QLocale(QStringLiteral("de_DE")));
        core::SetDateSeparator(QLatin1Char('.'));
        QCOMPARE(core::DateToStr(QDate(2024, 3, 5)), QStringLiteral("05.03.2024"));
        QCOMPARE(core::FormatDate(QStringLiteral("d mmmm yyyy"), QDate(2024, 3, 5)),
                 QStringLiteral("5 März 2024"));
        QCOMPARE(core::StrToDate(QStringLiteral("5 März 2024")), QDate(2024, 3, 5));
        QVERIFY_THROWS_EXCEPTION(core::ConversionError,
                                 core::StrToDate(QStringLiteral("31.02.1990")));
    }
};

QTEST_APPLESS_MAIN(TestDates)
#include "test_dates.moc"
