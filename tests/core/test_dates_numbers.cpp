// The number conversions that sit beside the date conversions.
#include "core/conversions.h"
#include "support/testsupport.h"

#include <QTest>
#include <QVariant>

#include <limits>

using testsupport::AddRow;

class TestDatesNumbers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Integers (StrToInt64, and StrToInt within the range of int) and floating-point numbers;
    // a null expectation means the text is refused with the conversion's message.
    void numbers_data() {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("integer");
        QTest::addColumn<QVariant>("expected");
        const QVariant none;
        const auto integer = [](const char* name, const char* locale, const QString& text,
                                const QVariant& expected) {
            QTest::newRow(name) << QString::fromLatin1(locale) << text << true << expected;
        };
        const auto floating = [](const char* name, const char* locale, const QString& text,
                                 const QVariant& expected) {
            QTest::newRow(name) << QString::fromLatin1(locale) << text << false << expected;
        };
        integer("negative, blanks around", "en_US", " -7 ", -7LL);
        integer("plus sign, leading zeros", "de_DE", "+007", 7LL);
        integer("largest int", "en_US", "2147483647", 2147483647LL);
        integer("smallest int", "en_US", "-2147483648", -2147483648LL);
        integer("beyond int, within 64 bits", "en_US", "2147483648", 2147483648LL);
        integer("below int, within 64 bits", "en_US", "-2147483649", -2147483649LL);
        integer("17 digits", "en_US", "-12345678901234567", -12345678901234567LL);
        integer("beyond 64 bits", "en_US", "9223372036854775808", none);
        integer("group separator", "en_US", "1,000", none);
        integer("group separator de", "de_DE", "1.000", none);
        integer("decimals", "en_US", "1.5", none);
        integer("trailing garbage", "en_US", "12abc", none);
        integer("inner blank", "en_US", "1 2", none);
        integer("empty", "en_US", "", none);
        integer("hexadecimal", "en_US", "0x1F", none);
        // Minus signs that carry a direction mark, as these locales write them.
        integer("Arabic minus", "ar_EG", QStringLiteral("\u061C-\u0665"), -5LL);
        integer("Persian minus", "fa_IR", QStringLiteral("\u200E\u2212\u06F1\u06F2"), -12LL);
        integer("Hebrew minus", "he_IL", QStringLiteral("\u200E-7"), -7LL);
        floating("en_US point", "en_US", "1.5", 1.5);
        floating("en_US zero point", "en_US", "0.125", 0.125);
        floating("de_DE comma", "de_DE", "1,5", 1.5);
        floating("fr_FR comma, negative", "fr_FR", "-0,25", -0.25);
        floating("exponent", "en_US", "1e3", 1000.0);
        floating("blanks around", "en_US", " 2.5 ", 2.5);
        floating("de_DE point is not decimal", "de_DE", "1.5", none);
        floating("en_US comma is not decimal", "en_US", "1,5", none);
        floating("group separator", "en_US", "1,000.5", none);
        floating("trailing garbage", "en_US", "1.5x", none);
        floating("empty", "en_US", "", none);
        floating("not a number", "en_US", "nan", none);
        floating("infinity", "en_US", "inf", none);
        floating("overflow", "en_US", "1e999", none);
        floating("Arabic minus and exponent", "ar_EG",
                 QStringLiteral("\u061C-\u0661\u066B\u0665\u0627\u0633\u061C-\u0660\u0667"),
                 -1.5e-7);
        floating("exponent \u00D710^", "et_EE", QStringLiteral("1,5\u00D710^\u22127"), 1.5e-7);
    }

    void numbers() {
        QFETCH(QString, locale);
        QFETCH(QString, text);
        QFETCH(bool, integer);
        QFETCH(QVariant, expected);
        const QLocale qlocale(locale);
        const QString message =
            QString::fromLatin1(integer ? "'%1' is not a valid integer value"
                                        : "'%1' is not a valid floating point value")
                .arg(text);
        const auto refused = [&message](const auto& convert) {
            try {
                convert();
            } catch (const core::ConversionError& error) {
                return error.message() == message;
            }
            return false;
        };
        // A reader of many numbers reads each as the single conversions do.
        const core::NumberReader reader(qlocale);
        if (!integer) {
            const std::optional<double> value =
                expected.isValid() ? std::optional(expected.toDouble()) : std::nullopt;
            QCOMPARE(core::TryStrToFloat(text, qlocale), value);
            if (value) {
                QCOMPARE(core::StrToFloat(text, qlocale), *value);
                QCOMPARE(reader.toFloat(text), *value);
            } else {
                QVERIFY(refused([&] { core::StrToFloat(text, qlocale); }));
                QVERIFY(refused([&] { reader.toFloat(text); }));
            }
            return;
        }
        const std::optional<qint64> value =
            expected.isValid() ? std::optional(expected.toLongLong()) : std::nullopt;
        QCOMPARE(core::TryStrToInt64(text, qlocale), value);
        if (value) {
            QCOMPARE(core::StrToInt64(text, qlocale), *value);
            QCOMPARE(reader.toInt64(text), *value);
        } else {
            QVERIFY(refused([&] { core::StrToInt64(text, qlocale); }));
            QVERIFY(refused([&] { reader.toInt64(text); }));
        }
        if (value && *value == int(*value))
            QCOMPARE(core::StrToInt(text, qlocale), int(*value));
        else
            QVERIFY(refused([&] { core::StrToInt(text, qlocale); }));
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
