// The number conversions that sit beside the date conversions.
#include "core/conversions.h"

#include <QTest>

class TestDatesNumbers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void integers_data() {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<qlonglong>("expected");

        QTest::newRow("plain") << "en_US"
                               << "42" << true << 42LL;
        QTest::newRow("negative, blanks around") << "en_US"
                                                 << " -7 " << true << -7LL;
        QTest::newRow("plus sign") << "de_DE"
                                   << "+3" << true << 3LL;
        QTest::newRow("leading zeros") << "en_US"
                                       << "007" << true << 7LL;
        QTest::newRow("beyond int, within 64 bits") << "en_US"
                                                    << "2147483648" << true << 2147483648LL;
        QTest::newRow("group separator") << "en_US"
                                         << "1,000" << false << 0LL;
        QTest::newRow("group separator de") << "de_DE"
                                            << "1.000" << false << 0LL;
        QTest::newRow("decimals") << "en_US"
                                  << "1.5" << false << 0LL;
        QTest::newRow("trailing garbage") << "en_US"
                                          << "12abc" << false << 0LL;
        QTest::newRow("leading garbage") << "en_US"
                                         << "x12" << false << 0LL;
        QTest::newRow("inner blank") << "en_US"
                                     << "1 2" << false << 0LL;
        QTest::newRow("empty") << "en_US"
                               << "" << false << 0LL;
        QTest::newRow("sign alone") << "en_US"
                                    << "-" << false << 0LL;
        QTest::newRow("hexadecimal") << "en_US"
                                     << "0x1F" << false << 0LL;
    }

    void integers() {
        QFETCH(QString, locale);
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QFETCH(qlonglong, expected);

        const QLocale qlocale(locale);
        const std::optional<qint64> value = core::TryStrToInt64(text, qlocale);
        QCOMPARE(value.has_value(), valid);
        if (valid) {
            QCOMPARE(*value, expected);
            QCOMPARE(core::StrToInt64(text, qlocale), expected);
            return;
        }
        try {
            core::StrToInt64(text, qlocale);
            QFAIL("no conversion error");
        } catch (const core::ConversionError& error) {
            QCOMPARE(error.message(),
                     QStringLiteral("'%1' is not a valid integer value").arg(text));
        }
    }

    void intRange_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");

        QTest::newRow("largest") << "2147483647" << true;
        QTest::newRow("smallest") << "-2147483648" << true;
        QTest::newRow("one above") << "2147483648" << false;
        QTest::newRow("one below") << "-2147483649" << false;
    }

    void intRange() {
        QFETCH(QString, text);
        QFETCH(bool, valid);

        const QLocale locale(QStringLiteral("en_US"));
        if (valid)
            QCOMPARE(core::StrToInt(text, locale), text.toInt());
        else
            QVERIFY_THROWS_EXCEPTION(core::ConversionError, core::StrToInt(text, locale));
    }

    void floats_data() {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<double>("expected");

        QTest::newRow("en_US point") << "en_US"
                                     << "1.5" << true << 1.5;
        QTest::newRow("de_DE comma") << "de_DE"
                                     << "1,5" << true << 1.5;
        QTest::newRow("fr_FR comma") << "fr_FR"
                                     << "-0,25" << true << -0.25;
        QTest::newRow("whole number") << "de_DE"
                                      << "12" << true << 12.0;
        QTest::newRow("exponent") << "en_US"
                                  << "1e3" << true << 1000.0;
        QTest::newRow("blanks around") << "en_US"
                                       << " 2.5 " << true << 2.5;
        QTest::newRow("de_DE point is not decimal") << "de_DE"
                                                    << "1.5" << false << 0.0;
        QTest::newRow("en_US comma is not decimal") << "en_US"
                                                    << "1,5" << false << 0.0;
        QTest::newRow("group separator") << "en_US"
                                         << "1,000.5" << false << 0.0;
        QTest::newRow("trailing garbage") << "en_US"
                                          << "1.5x" << false << 0.0;
        QTest::newRow("currency sign") << "en_US"
                                       << "$1.5" << false << 0.0;
        QTest::newRow("empty") << "en_US"
                               << "" << false << 0.0;
        QTest::newRow("not a number") << "en_US"
                                      << "nan" << false << 0.0;
        QTest::newRow("infinity") << "en_US"
                                  << "inf" << false << 0.0;
        QTest::newRow("overflow") << "en_US"
                                  << "1e999" << false << 0.0;
    }

    void floats() {
        QFETCH(QString, locale);
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QFETCH(double, expected);

        const QLocale qlocale(locale);
        const std::optional<double> value = core::TryStrToFloat(text, qlocale);
        QCOMPARE(value.has_value(), valid);
        if (valid) {
            QCOMPARE(*value, expected);
            QCOMPARE(core::StrToFloat(text, qlocale), expected);
            return;
        }
        try {
            core::StrToFloat(text, qlocale);
            QFAIL("no conversion error");
        } catch (const core::ConversionError& error) {
            QCOMPARE(error.message(),
                     QStringLiteral("'%1' is not a valid floating point value").arg(text));
            QVERIFY(!error.message().contains(QLatin1String("date")));
        }
    }

    void systemLocaleWrappers() {
        const QLocale system = QLocale::system();
        const QString number = system.toString(1.25);
        QCOMPARE(core::StrToFloat(number), 1.25);
        QCOMPARE(core::StrToInt(QStringLiteral("-17")), -17);
        QCOMPARE(core::StrToInt64(QStringLiteral("9000000000")), 9000000000LL);
    }
};

QTEST_APPLESS_MAIN(TestDatesNumbers)
#include "test_dates_numbers.moc"
