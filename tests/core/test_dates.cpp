#include "core/conversions.h"
#include "core/dateformat.h"

#include <QTest>

using core::DateSettings;

namespace {

// Dates are read against a fixed year so that the two-digit years are predictable.
constexpr int ReferenceYear = 2025;

DateSettings settingsFor(const QString& format, QChar separator,
                         const QLocale& locale = QLocale::c()) {
    return {format, separator, QLatin1Char(':'), locale};
}

std::optional<QDate> read(const QString& text, const DateSettings& settings) {
    return core::TryStrToDate(text, settings, ReferenceYear);
}

} // namespace

class TestDates : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void localeShortFormats_data() {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("separator");
        QTest::addColumn<QString>("firstOfJanuary1990");

        QTest::newRow("en_US") << "en_US"
                               << "m/d/yy"
                               << "/"
                               << "1/1/90";
        QTest::newRow("en_GB") << "en_GB"
                               << "dd/mm/yyyy"
                               << "/"
                               << "01/01/1990";
        QTest::newRow("de_DE") << "de_DE"
                               << "dd.mm.yy"
                               << "."
                               << "01.01.90";
        QTest::newRow("fr_FR") << "fr_FR"
                               << "dd/mm/yyyy"
                               << "/"
                               << "01/01/1990";
        QTest::newRow("nl_NL") << "nl_NL"
                               << "dd-mm-yyyy"
                               << "-"
                               << "01-01-1990";
        QTest::newRow("ja_JP") << "ja_JP"
                               << "yyyy/mm/dd"
                               << "/"
                               << "1990/01/01";
        QTest::newRow("hu_HU") << "hu_HU"
                               << "yyyy. mm. dd."
                               << "."
                               << "1990. 01. 01.";
        QTest::newRow("C: month names, numeric dates take /") << "C"
                                                              << "d mmm yyyy"
                                                              << "/"
                                                              << "1 Jan 1990";
        QTest::newRow("bg_BG: quoted year word") << "bg_BG"
                                                 << "d.mm.yy \"г\"."
                                                 << "." << QStringLiteral("1.01.90 г.");
    }

    void localeShortFormats() {
        QFETCH(QString, locale);
        QFETCH(QString, format);
        QFETCH(QString, separator);
        QFETCH(QString, firstOfJanuary1990);

        const QLocale qlocale(locale);
        QCOMPARE(core::LocaleShortDateFormat(qlocale), format);
        QCOMPARE(QString(core::LocaleDateSeparator(qlocale)), separator);
        QCOMPARE(core::DateToStr(QDate(1990, 1, 1), core::LocaleDateSettings(qlocale)),
                 firstOfJanuary1990);
    }

    void classicPattern_data() {
        QTest::addColumn<QString>("localePattern");
        QTest::addColumn<QString>("classic");

        QTest::newRow("month letters") << "M/d/yy"
                                       << "m/d/yy";
        QTest::newRow("two-digit parts") << "dd.MM.yyyy"
                                         << "dd.mm.yyyy";
        QTest::newRow("one-letter year is the full year") << "y-MM-dd"
                                                          << "yyyy-mm-dd";
        QTest::newRow("names") << "dddd, d MMMM yyyy"
                               << "dddd, d mmmm yyyy";
        QTest::newRow("quoted word") << "d 'de' MMMM"
                                     << "d \"de\" mmmm";
        QTest::newRow("escaped quote") << "d''MM"
                                       << "d\"'\"mm";
        QTest::newRow("letters that are not date parts are quoted") << "dd.MM.yyyy g"
                                                                    << "dd.mm.yyyy \"g\"";
    }

    void classicPattern() {
        QFETCH(QString, localePattern);
        QFETCH(QString, classic);
        QCOMPARE(core::ClassicDatePattern(localePattern), classic);
    }

    void format_data() {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QDate>("date");
        QTest::addColumn<QString>("separator");
        QTest::addColumn<QString>("expected");

        const QDate march5(2004, 3, 5);
        const QDate december31(1999, 12, 31);
        QTest::newRow("d") << "d" << march5 << "/"
                           << "5";
        QTest::newRow("dd") << "dd" << march5 << "/"
                            << "05";
        QTest::newRow("d two digits anyway") << "d" << december31 << "/"
                                             << "31";
        QTest::newRow("m") << "m" << march5 << "/"
                           << "3";
        QTest::newRow("mm") << "mm" << march5 << "/"
                            << "03";
        QTest::newRow("yy") << "yy" << march5 << "/"
                            << "04";
        QTest::newRow("y") << "y" << march5 << "/"
                           << "04";
        QTest::newRow("yyyy") << "yyyy" << march5 << "/"
                              << "2004";
        QTest::newRow("yyy is the four-digit year") << "dd-mm-yyy" << march5 << "/"
                                                    << "05-03-2004";
        QTest::newRow("slash is the date separator") << "dd/mm/yyyy" << march5 << "."
                                                     << "05.03.2004";
        QTest::newRow("other characters as they stand") << "yyyy.mm.dd" << march5 << "/"
                                                        << "2004.03.05";
        QTest::newRow("upper case") << "DD-MM-YYYY" << march5 << "/"
                                    << "05-03-2004";
        QTest::newRow("quoted") << "'day' d \"of\" m" << march5 << "/"
                                << "day 5 of 3";
        QTest::newRow("unclosed quote") << "d 'rest" << march5 << "/"
                                        << "5 rest";
        QTest::newRow("month names") << "mmm mmmm" << march5 << "/"
                                     << "Mar March";
        QTest::newRow("day names") << "ddd dddd" << march5 << "/"
                                   << "Fri Friday";
        QTest::newRow("small year") << "yyyy yy" << QDate(5, 1, 1) << "/"
                                    << "0005 05";
    }

    void format() {
        QFETCH(QString, pattern);
        QFETCH(QDate, date);
        QFETCH(QString, separator);
        QFETCH(QString, expected);

        const DateSettings settings = settingsFor(QStringLiteral("dd/mm/yyyy"), separator.at(0));
        QCOMPARE(core::FormatDate(pattern, date, settings), expected);
    }

    void formatDateTime_data() {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("expected");

        QTest::newRow("log stamp") << "dd/mm/yyyy hh:nn:ss"
                                   << "05-03-2024 14.07.09";
        QTest::newRow("minutes after the hour") << "h:mm"
                                                << "14.07";
        QTest::newRow("one-digit parts") << "h n s"
                                         << "14 7 9";
        QTest::newRow("month after minutes again") << "hh:mm d/m"
                                                   << "14.07 5-3";
    }

    void formatDateTime() {
        QFETCH(QString, pattern);
        QFETCH(QString, expected);

        const DateSettings settings{QStringLiteral("dd/mm/yyyy"), QLatin1Char('-'),
                                    QLatin1Char('.'), QLocale::c()};
        const QDateTime when(QDate(2024, 3, 5), QTime(14, 7, 9));
        QCOMPARE(core::FormatDateTime(pattern, when, settings), expected);
        QCOMPARE(core::FormatDateTime(pattern, QDateTime(), settings), QString());
    }

    // Every pattern the preferences note allows (d or dd, m or mm, yy, yyy or yyyy, in
    // the three orders and with three separators) writes dates that read back.
    void notePatternsRoundTrip_data() {
        QTest::addColumn<QString>("pattern");

        const QStringList days{QStringLiteral("d"), QStringLiteral("dd")};
        const QStringList months{QStringLiteral("m"), QStringLiteral("mm")};
        const QStringList years{QStringLiteral("yy"), QStringLiteral("yyy"),
                                QStringLiteral("yyyy")};
        const QStringList separators{QStringLiteral("/"), QStringLiteral("."), QStringLiteral("-")};
        for (const QString& d : days)
            for (const QString& m : months)
                for (const QString& y : years)
                    for (const QString& s : separators) {
                        for (const QStringList& parts :
                             {QStringList{d, m, y}, QStringList{m, d, y}, QStringList{y, m, d}}) {
                            const QString pattern = parts.join(s);
                            QTest::newRow(qPrintable(pattern)) << pattern;
                        }
                    }
    }

    void notePatternsRoundTrip() {
        QFETCH(QString, pattern);

        core::ApplyDateFormat(pattern, QLocale(QStringLiteral("en_GB")));
        const DateSettings settings = core::CurrentDateSettings();
        QCOMPARE(settings.shortDateFormat, pattern);
        for (const QDate& date : {QDate(1990, 1, 1), QDate(2000, 2, 29), QDate(1999, 12, 31),
                                  QDate(2024, 3, 5), QDate(1975, 6, 15), QDate(2074, 11, 30)}) {
            const QString text = core::DateToStr(date);
            QCOMPARE(core::StrToDate(text, settings, ReferenceYear), date);
        }
    }

    void localeRoundTrip_data() {
        QTest::addColumn<QString>("locale");
        for (const char* name : {"en_US", "en_GB", "de_DE", "fr_FR", "nl_NL", "ja_JP", "ko_KR",
                                 "hu_HU", "pl_PL", "sv_SE", "zh_CN", "bg_BG", "ar_SA", "C"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void localeRoundTrip() {
        QFETCH(QString, locale);

        const DateSettings settings = core::LocaleDateSettings(QLocale(locale));
        for (const QDate& date : {QDate(1990, 1, 1), QDate(2000, 2, 29), QDate(1999, 12, 31),
                                  QDate(2024, 3, 5), QDate(2074, 11, 30)}) {
            const QString text = core::DateToStr(date, settings);
            QCOMPARE(core::StrToDate(text, settings, ReferenceYear), date);
        }
        // The stored default reads everywhere, whatever the locale's order and separator.
        QCOMPARE(core::StrToDate(QStringLiteral("1.1.1990"), settings, ReferenceYear),
                 QDate(1990, 1, 1));
    }

    void parse_data() {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("separator");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDate>("expected"); // null: not a date

        const QDate none;
        const QDate feb3(1990, 2, 3);
        // Order of the short format.
        QTest::newRow("day first") << "dd/mm/yyyy"
                                   << "/"
                                   << "3/2/1990" << feb3;
        QTest::newRow("month first") << "m/d/yy"
                                     << "/"
                                     << "2/3/1990" << feb3;
        QTest::newRow("year first") << "yyyy-mm-dd"
                                    << "-"
                                    << "1990-2-3" << feb3;
        QTest::newRow("two-digit parts") << "dd.mm.yyyy"
                                         << "."
                                         << "03.02.1990" << feb3;
        // Separators: the current one, ".", "/" and "-" whatever the current one is.
        QTest::newRow("dot under a slash format") << "m/d/yy"
                                                  << "/"
                                                  << "2.3.1990" << feb3;
        QTest::newRow("slash under a dot format") << "dd.mm.yy"
                                                  << "."
                                                  << "3/2/1990" << feb3;
        QTest::newRow("dash under a dot format") << "dd.mm.yy"
                                                 << "."
                                                 << "3-2-1990" << feb3;
        QTest::newRow("own separator") << "dd|mm|yyyy"
                                       << "|"
                                       << "3|2|1990" << feb3;
        QTest::newRow("own separator, dots") << "dd|mm|yyyy"
                                             << "|"
                                             << "3.2.1990" << feb3;
        QTest::newRow("blanks around") << "dd.mm.yyyy"
                                       << "."
                                       << "  3 . 2 .1990 " << feb3;
        QTest::newRow("comma is not a separator") << "dd.mm.yyyy"
                                                  << "."
                                                  << "3,2,1990" << none;
        QTest::newRow("mixed separators") << "dd.mm.yyyy"
                                          << "."
                                          << "3.2/1990" << none;
        QTest::newRow("blanks alone") << "dd.mm.yyyy"
                                      << "."
                                      << "3 2 1990" << none;
        QTest::newRow("blanks under a blank format") << "d mmm yyyy"
                                                     << " "
                                                     << "3 2 1990" << feb3;
        QTest::newRow("doubled separator") << "dd.mm.yyyy"
                                           << "."
                                           << "3..2.1990" << none;
        // Month names.
        QTest::newRow("short month name") << "d mmm yyyy"
                                          << " "
                                          << "3 Feb 1990" << feb3;
        QTest::newRow("long month name, any case") << "d mmm yyyy"
                                                   << " "
                                                   << "3 FEBRUARY 1990" << feb3;
        QTest::newRow("month name under a numeric format") << "dd.mm.yyyy"
                                                           << "."
                                                           << "3.feb.1990" << feb3;
        QTest::newRow("unknown name") << "d mmm yyyy"
                                      << " "
                                      << "3 Foo 1990" << none;
        QTest::newRow("name in the day's place") << "d mmm yyyy"
                                                 << " "
                                                 << "Feb 3 1990" << none;
        // Text the format writes around the date.
        QTest::newRow("trailing dot of the format") << "yyyy. mm. dd."
                                                    << "."
                                                    << "1990. 02. 03." << feb3;
        QTest::newRow("trailing dot left out") << "yyyy. mm. dd."
                                               << "."
                                               << "1990. 2. 3" << feb3;
        QTest::newRow("trailing dot the format lacks") << "dd.mm.yyyy"
                                                       << "."
                                                       << "3.2.1990." << none;
        QTest::newRow("leading text of the format") << "'on' dd.mm.yyyy"
                                                    << "."
                                                    << "on 03.02.1990" << feb3;
        // The year at the other end.
        QTest::newRow("ISO under a day-first format") << "dd/mm/yyyy"
                                                      << "/"
                                                      << "1990-02-03" << feb3;
        QTest::newRow("dotted default under a year-first format") << "yyyy/mm/dd"
                                                                  << "/"
                                                                  << "3.2.1990" << feb3;
        QTest::newRow("format order wins when it reads") << "yyyy/mm/dd"
                                                         << "/"
                                                         << "90.2.3" << QDate(1990, 2, 3);
        // Not dates.
        QTest::newRow("empty") << "dd.mm.yyyy"
                               << "."
                               << "" << none;
        QTest::newRow("blank") << "dd.mm.yyyy"
                               << "."
                               << "   " << none;
        QTest::newRow("two parts") << "dd.mm.yyyy"
                                   << "."
                                   << "3.2" << none;
        QTest::newRow("four parts") << "dd.mm.yyyy"
                                    << "."
                                    << "3.2.1990.1" << none;
        QTest::newRow("trailing garbage") << "dd.mm.yyyy"
                                          << "."
                                          << "3.2.1990x" << none;
        QTest::newRow("leading garbage") << "dd.mm.yyyy"
                                         << "."
                                         << "x3.2.1990" << none;
        QTest::newRow("sign") << "dd.mm.yyyy"
                              << "."
                              << "+3.2.1990" << none;
        QTest::newRow("time part") << "dd.mm.yyyy"
                                   << "."
                                   << "3.2.1990 10:00" << none;
        QTest::newRow("three-digit day") << "dd.mm.yyyy"
                                         << "."
                                         << "003.2.1990" << none;
        QTest::newRow("five-digit year") << "dd.mm.yyyy"
                                         << "."
                                         << "3.2.19900" << none;
        QTest::newRow("letters") << "dd.mm.yyyy"
                                 << "."
                                 << "today" << none;
        // Dates that do not exist.
        QTest::newRow("31 February") << "dd.mm.yyyy"
                                     << "."
                                     << "31.02.1990" << none;
        QTest::newRow("29 February 1900") << "dd.mm.yyyy"
                                          << "."
                                          << "29.2.1900" << none;
        QTest::newRow("29 February 2001") << "dd.mm.yyyy"
                                          << "."
                                          << "29.2.2001" << none;
        QTest::newRow("29 February 2000") << "dd.mm.yyyy"
                                          << "."
                                          << "29.2.2000" << QDate(2000, 2, 29);
        QTest::newRow("day 32") << "dd.mm.yyyy"
                                << "."
                                << "32.1.1990" << none;
        QTest::newRow("day 0") << "dd.mm.yyyy"
                               << "."
                               << "0.1.1990" << none;
        QTest::newRow("month 13") << "dd.mm.yyyy"
                                  << "."
                                  << "1.13.1990" << none;
        QTest::newRow("month 0") << "dd.mm.yyyy"
                                 << "."
                                 << "1.0.1990" << none;
        QTest::newRow("year 0") << "dd.mm.yyyy"
                                << "."
                                << "1.1.0000" << none;
        QTest::newRow("30 April under month first") << "m/d/yyyy"
                                                    << "/"
                                                    << "4/31/1990" << none;
    }

    void parse() {
        QFETCH(QString, format);
        QFETCH(QString, separator);
        QFETCH(QString, text);
        QFETCH(QDate, expected);

        const DateSettings settings = settingsFor(format, separator.at(0));
        const std::optional<QDate> date = read(text, settings);
        if (expected.isNull()) {
            QVERIFY2(!date, qPrintable(date ? date->toString(Qt::ISODate) : QString()));
            try {
                core::StrToDate(text, settings, ReferenceYear);
                QFAIL("no conversion error");
            } catch (const core::ConversionError& error) {
                QVERIFY2(error.message().contains(QLatin1String("date")),
                         qPrintable(error.message()));
                QVERIFY2(error.message().contains(text), qPrintable(error.message()));
            }
        } else {
            QVERIFY2(date, qPrintable(text));
            QCOMPARE(*date, expected);
            QCOMPARE(core::StrToDate(text, settings, ReferenceYear), expected);
        }
    }

    void impossibleDateMessage() {
        const DateSettings settings = settingsFor(QStringLiteral("dd.mm.yyyy"), QLatin1Char('.'));
        QVERIFY_THROWS_EXCEPTION(core::ConversionError,
                                 core::StrToDate(QStringLiteral("31.02.1990"), settings));
        try {
            core::StrToDate(QStringLiteral("31.02.1990"), settings);
        } catch (const core::ConversionError& error) {
            QCOMPARE(error.message(), QStringLiteral("'31.02.1990' is not a valid date"));
            QCOMPARE(QString::fromStdString(error.what()), error.message());
        }
    }

    void twoDigitYears_data() {
        QTest::addColumn<int>("referenceYear");
        QTest::addColumn<QString>("year");
        QTest::addColumn<int>("expected");

        QTest::newRow("90 in 2025") << 2025 << "90" << 1990;
        QTest::newRow("75 in 2025, first of the window") << 2025 << "75" << 1975;
        QTest::newRow("74 in 2025, last of the window") << 2025 << "74" << 2074;
        QTest::newRow("25 in 2025") << 2025 << "25" << 2025;
        QTest::newRow("00 in 2025") << 2025 << "00" << 2000;
        QTest::newRow("one digit") << 2025 << "5" << 2005;
        QTest::newRow("50 in 2000") << 2000 << "50" << 1950;
        QTest::newRow("49 in 2000") << 2000 << "49" << 2049;
        QTest::newRow("99 in 2049, first of the window") << 2049 << "99" << 1999;
        QTest::newRow("98 in 2049, last of the window") << 2049 << "98" << 2098;
        QTest::newRow("three digits as written") << 2025 << "990" << 990;
        QTest::newRow("four digits as written") << 2025 << "2090" << 2090;
    }

    void twoDigitYears() {
        QFETCH(int, referenceYear);
        QFETCH(QString, year);
        QFETCH(int, expected);

        const DateSettings settings = settingsFor(QStringLiteral("dd.mm.yy"), QLatin1Char('.'));
        const std::optional<QDate> date =
            core::TryStrToDate(QStringLiteral("1.6.") + year, settings, referenceYear);
        QVERIFY(date);
        QCOMPARE(date->year(), expected);
    }

    void twoDigitYearsFollowTheClock() {
        const DateSettings settings = settingsFor(QStringLiteral("dd.mm.yy"), QLatin1Char('.'));
        const int now = QDate::currentDate().year();
        const int last = now + 49;
        const QString lastText = QStringLiteral("1.1.%1").arg(last % 100, 2, 10, QLatin1Char('0'));
        QCOMPARE(core::StrToDate(lastText, settings).year(), last);
        const QString firstText =
            QStringLiteral("1.1.%1").arg((now - 50) % 100, 2, 10, QLatin1Char('0'));
        QCOMPARE(core::StrToDate(firstText, settings).year(), now - 50);
    }

    void applyDateFormat_data() {
        QTest::addColumn<QString>("custom");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("separator");

        QTest::newRow("dots") << "yyyy.mm.dd"
                              << "en_US"
                              << "yyyy.mm.dd"
                              << ".";
        QTest::newRow("dashes, upper case") << "DD-MM-YYYY"
                                            << "en_US"
                                            << "DD-MM-YYYY"
                                            << "-";
        QTest::newRow("first non-specifier") << "mm/dd-yy"
                                             << "de_DE"
                                             << "mm/dd-yy"
                                             << "/";
        QTest::newRow("letters only keep the separator") << "ddmmyyyy"
                                                         << "de_DE"
                                                         << "ddmmyyyy"
                                                         << "#";
        QTest::newRow("locale en_US") << ""
                                      << "en_US"
                                      << "m/d/yy"
                                      << "/";
        QTest::newRow("locale de_DE") << ""
                                      << "de_DE"
                                      << "dd.mm.yy"
                                      << ".";
        QTest::newRow("locale fr_FR") << ""
                                      << "fr_FR"
                                      << "dd/mm/yyyy"
                                      << "/";
        QTest::newRow("locale en_GB") << ""
                                      << "en_GB"
                                      << "dd/mm/yyyy"
                                      << "/";
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

    void processWideFormatting() {
        core::ApplyDateFormat(QStringLiteral("dd/mm/yyyy"), QLocale(QStringLiteral("de_DE")));
        core::SetDateSeparator(QLatin1Char('.'));
        QCOMPARE(core::DateToStr(QDate(2024, 3, 5)), QStringLiteral("05.03.2024"));
        QCOMPARE(core::FormatDate(QStringLiteral("d mmmm yyyy"), QDate(2024, 3, 5)),
                 QStringLiteral("5 März 2024"));
        QCOMPARE(core::StrToDate(QStringLiteral("5 März 2024")), QDate(2024, 3, 5));
        QCOMPARE(core::StrToDate(QStringLiteral("05.03.2024")), QDate(2024, 3, 5));
        QVERIFY_THROWS_EXCEPTION(core::ConversionError,
                                 core::StrToDate(QStringLiteral("31.02.1990")));
    }
};

QTEST_APPLESS_MAIN(TestDates)
#include "test_dates.moc"
