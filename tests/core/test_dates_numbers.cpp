// The number conversions that sit beside the date conversions.
#include "core/conversions.h"
#include "support/testsupport.h"

#include <QTest>

#include <limits>

using testsupport::AddRow;

class TestDatesNumbers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void integers_data() {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<qlonglong>("expected");
        AddRow("negative, blanks around", "en_US", " -7 ", true, -7LL);
        AddRow("plus sign, leading zeros", "de_DE", "+007", true, 7LL);
        AddRow("largest int", "en_US", "2147483647", true, 2147483647LL);
        AddRow("smallest int", "en_US", "-2147483648", true, -2147483648LL);
        AddRow("beyond int, within 64 bits", "en_US", "2147483648", true, 2147483648LL);
        AddRow("below int, within 64 bits", "en_US", "-2147483649", true, -2147483649LL);
        AddRow("group separator", "en_US", "1,000", false, 0LL);
        AddRow("group separator de", "de_DE", "1.000", false, 0LL);
        AddRow("decimals", "en_US", "1.5", false, 0LL);
        AddRow("trailing garbage", "en_US", "12abc", false, 0LL);
        AddRow("inner blank", "en_US", "1 2", false, 0LL);
        AddRow("empty", "en_US", "", false, 0LL);
        AddRow("hexadecimal", "en_US", "0x1F", false, 0LL);
        // Minus signs that carry a direction mark, as these locales write them.
        AddRow("Arabic minus", "ar_EG", "\u061C-\u0665", true, -5LL);
        AddRow("Persian minus", "fa_IR", "\u200E\u2212\u06F1\u06F2", true, -12LL);
        AddRow("Hebrew minus", "he_IL", "\u200E-7", true, -7LL);
    }

    void integers() {
        QFETCH(QString, locale);
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QFETCH(qlonglong, expected);

        const QLocale qlocale(locale);
        const QString message = QStringLiteral("'%1' is not a valid integer value").arg(text);
        QCOMPARE(core::TryStrToInt64(text, qlocale).has_value(), valid);
        if (valid) {
            QCOMPARE(*core::TryStrToInt64(text, qlocale), expected);
            QCOMPARE(core::StrToInt64(text, qlocale), expected);
        } else {
            QVERIFY_THROWS_EXCEPTION(core::ConversionError, core::StrToInt64(text, qlocale));
        }
        if (valid && expected >= std::numeric_limits<int>::min() &&
            expected <= std::numeric_limits<int>::max()) {
            QCOMPARE(core::StrToInt(text, qlocale), int(expected));
            return;
        }
        try {
            core::StrToInt(text, qlocale);
            QFAIL("no conversion error");
        } catch (const core::ConversionError& error) {
            QCOMPARE(error.message(), message);
        }
    }

    void floats_data() {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<double>("expected");
        AddRow("en_US point", "en_US", "1.5", true, 1.5);
        AddRow("de_DE comma", "de_DE", "1,5", true, 1.5);
        AddRow("fr_FR comma, negative", "fr_FR", "-0,25", true, -0.25);
        AddRow("exponent", "en_US", "1e3", true, 1000.0);
        AddRow("blanks around", "en_US", " 2.5 ", true, 2.5);
        AddRow("de_DE point is not decimal", "de_DE", "1.5", false, 0.0);
        AddRow("en_US comma is not decimal", "en_US", "1,5", false, 0.0);
        AddRow("group separator", "en_US", "1,000.5", false, 0.0);
        AddRow("trailing garbage", "en_US", "1.5x", false, 0.0);
        AddRow("empty", "en_US", "", false, 0.0);
        AddRow("not a number", "en_US", "nan", false, 0.0);
        AddRow("infinity", "en_US", "inf", false, 0.0);
        AddRow("overflow", "en_US", "1e999", false, 0.0);
        AddRow("Arabic minus and exponent", "ar_EG",
               "\u061C-\u0661\u066B\u0665\u0627\u0633\u061C-\u0660\u0667", true, -1.5e-7);
        AddRow("exponent \u00D710^", "et_EE", "1,5\u00D710^\u22127", true, 1.5e-7);
    }

    void floats() {
        QFETCH(QString, locale);
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QFETCH(double, expected);

        const QLocale qlocale(locale);
        QCOMPARE(core::TryStrToFloat(text, qlocale).has_value(), valid);
        if (valid) {
            QCOMPARE(*core::TryStrToFloat(text, qlocale), expected);
            QCOMPARE(core::StrToFloat(text, qlocale), expected);
            return;
        }
        try {
            core::StrToFloat(text, qlocale);
            QFAIL("no conversion error");
        } catch (const core::ConversionError& error) {
            QCOMPARE(error.message(),
                     QStringLiteral("'%1' is not a valid floating point value").arg(text));
        }
    }

    // Every locale the toolkit has reads back the numbers it writes (without group
    // separators, which the conversions refuse).
    void everyLocaleReadsItsOwnNumbers() {
        const qint64 integers[] = {-5, 0, std::numeric_limits<qint64>::min(),
                                   std::numeric_limits<qint64>::max()};
        const double numbers[] = {-1.5e-7, 0.25, -9.87654321e300, 5e-324};
        for (QLocale locale : QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript,
                                                       QLocale::AnyTerritory)) {
            locale.setNumberOptions(QLocale::OmitGroupSeparator);
            for (const qint64 integer : integers)
                QCOMPARE(core::TryStrToInt64(locale.toString(integer), locale), integer);
            for (const double number : numbers)
                QCOMPARE(core::TryStrToFloat(locale.toString(number, 'g', 17), locale), number);
        }
    }

    void systemLocaleWrappers() {
        QCOMPARE(core::StrToFloat(QLocale::system().toString(1.25)), 1.25);
        QCOMPARE(core::StrToInt(QStringLiteral("-17")), -17);
        QCOMPARE(core::StrToInt64(QStringLiteral("9000000000")), 9000000000LL);
    }
};

QTEST_APPLESS_MAIN(TestDatesNumbers)
#include "test_dates_numbers.moc"
