#include "core/conversions.h"
#include "core/dateformat.h"
#include "core/log.h"
#include "core/preferences.h"
#include "core/registry.h"
#include "support/preferencestore.h"
#include "support/testsupport.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <map>

namespace {

const QLocale enGB(QStringLiteral("en_GB"));
const QLocale deDE(QStringLiteral("de_DE"));

using Values = testsupport::PreferenceValues;
using testsupport::StoredPreference;
using testsupport::StoredPreferenceNames;
using testsupport::StorePreferences;

QByteArray fileText(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

} // namespace

Q_DECLARE_METATYPE(Values)
Q_DECLARE_METATYPE(core::PreferenceValues)
Q_DECLARE_METATYPE(std::optional<QString>)

class TestPreferences : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { testsupport::UseTemporarySettings(); }

    void init() {
        QSettings(QStringLiteral("Marrowby"), QStringLiteral("Quillet")).clear();
        QVERIFY(core::SetLogFilePath(QString()));
        core::ApplyDateFormat(QString(), enGB);
    }

    void cleanup() { QVERIFY(core::SetLogFilePath(QString())); }

    void noStoredValuesAtAll() {
        QVERIFY(core::SetLogFilePath(m_logs.filePath(QStringLiteral("current.log"))));
        core::ApplyDateFormat(QStringLiteral("yyyy.mm.dd"), enGB);
        core::MainPreferences state;
        const core::PreferenceChanges changes = core::LoadPreferences(state, deDE);

        QVERIFY(!changes.layoutChanged);
        QVERIFY(!changes.logFileChanged);
        QVERIFY(state.layoutBottom);
        QVERIFY(state.customDateFormat.isEmpty());
        QCOMPARE(core::ShortDateFormat(), QStringLiteral("dd.mm.yy"));
        QCOMPARE(core::DateSeparator(), QLatin1Char('.'));
        QCOMPARE(core::LogFilePath(), m_logs.filePath(QStringLiteral("current.log")));
        QVERIFY(!QFile::exists(core::LogFilePath()));
        QVERIFY(state.hideId);
        QVERIFY(state.appendId);

        const core::NewRecordDefaults defaults = core::ReadNewRecordDefaults();
        QVERIFY(defaults.dateDefaults);
        QVERIFY(defaults.moneyDefaults);
        QCOMPARE(defaults.dateText, QStringLiteral("1.1.1990"));
        QCOMPARE(defaults.moneyText, QStringLiteral("0"));
        QCOMPARE(core::StrToDate(defaults.dateText), QDate(1990, 1, 1));

        core::PreferenceValues values;
        core::ReadPreferenceValues(values);
        QCOMPARE(values, core::PreferenceValues());
        QVERIFY(StoredPreferenceNames().isEmpty()); // reading writes nothing back
    }

    void editLayout_data() {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("bottom");

        QTest::newRow("Bottom") << "Bottom" << true;
        QTest::newRow("Right") << "Right" << false;
        QTest::newRow("lower case bottom means Right") << "bottom" << false;
        QTest::newRow("blank after Bottom") << "Bottom " << false;
        QTest::newRow("empty") << "" << false;
    }

    void editLayout() {
        QFETCH(QString, stored);
        QFETCH(bool, bottom);

        StorePreferences({{QStringLiteral("EditLayout"), stored}});
        core::MainPreferences state;
        QCOMPARE(core::LoadPreferences(state, enGB).layoutChanged, !bottom);
        QCOMPARE(state.layoutBottom, bottom);
        // Loading again changes nothing more.
        QVERIFY(!core::LoadPreferences(state, enGB).layoutChanged);

        core::PreferenceValues values;
        core::ReadPreferenceValues(values);
        QCOMPARE(values.layoutBottom, bottom);
    }

    void dateFormat_data() {
        QTest::addColumn<Values>("values");
        QTest::addColumn<QString>("custom");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("separator");

        QTest::newRow("Default") << Values{{"DateFormat", "Default"},
                                           {"DateFormatString", "yyyy.mm.dd"}}
                                 << ""
                                 << "dd.mm.yy"
                                 << ".";
        QTest::newRow("Custom") << Values{{"DateFormat", "Custom"},
                                          {"DateFormatString", "yyyy/mm/dd"}}
                                << "yyyy/mm/dd"
                                << "yyyy/mm/dd"
                                << "/";
        QTest::newRow("lower case default means custom")
            << Values{{"DateFormat", "default"}, {"DateFormatString", "dd-mm-yyyy"}} << "dd-mm-yyyy"
            << "dd-mm-yyyy"
            << "-";
        QTest::newRow("specifiers only keep the separator")
            << Values{{"DateFormat", "Custom"}, {"DateFormatString", "ddmmyyyy"}} << "ddmmyyyy"
            << "ddmmyyyy"
            << "#";
        QTest::newRow("custom without a format string is the locale's")
            << Values{{"DateFormat", "Custom"}} << ""
            << "dd.mm.yy"
            << ".";
        QTest::newRow("format string alone is not used")
            << Values{{"DateFormatString", "yyyy/mm/dd"}} << ""
            << "dd.mm.yy"
            << ".";
    }

    void dateFormat() {
        QFETCH(Values, values);
        QFETCH(QString, custom);
        QFETCH(QString, format);
        QFETCH(QString, separator);

        StorePreferences(values);
        core::SetDateSeparator(QLatin1Char('#'));
        core::MainPreferences state;
        state.customDateFormat = QStringLiteral("stale");
        core::LoadPreferences(state, deDE);
        QCOMPARE(state.customDateFormat, custom);
        QCOMPARE(core::ShortDateFormat(), format);
        QCOMPARE(QString(core::DateSeparator()), separator);
    }

    void idFlags_data() {
        QTest::addColumn<Values>("values");
        QTest::addColumn<bool>("initial");
        QTest::addColumn<bool>("hideId");
        QTest::addColumn<bool>("appendId");

        QTest::newRow("Yes") << Values{{"HideID", "Yes"}, {"AppendID", "Yes"}} << false << true
                             << true;
        QTest::newRow("No") << Values{{"HideID", "No"}, {"AppendID", "No"}} << true << false
                            << false;
        QTest::newRow("lower case yes means no")
            << Values{{"HideID", "yes"}, {"AppendID", "YES"}} << true << false << false;
        QTest::newRow("missing keeps the initial flags") << Values{} << false << false << false;
        QTest::newRow("missing keeps the initial flags on") << Values{} << true << true << true;
        QTest::newRow("each on its own") << Values{{"HideID", "No"}} << true << false << true;
    }

    void idFlags() {
        QFETCH(Values, values);
        QFETCH(bool, initial);
        QFETCH(bool, hideId);
        QFETCH(bool, appendId);

        StorePreferences(values);
        core::MainPreferences state;
        state.hideId = initial;
        state.appendId = initial;
        core::LoadPreferences(state, enGB);
        QCOMPARE(state.hideId, hideId);
        QCOMPARE(state.appendId, appendId);
    }

    void logSwitch_data() {
        QTest::addColumn<QString>("keepLog");
        QTest::addColumn<std::optional<QString>>("logFile"); // relative to the log folder
        QTest::addColumn<bool>("switched");

        QTest::newRow("Yes") << "Yes" << std::optional<QString>(QStringLiteral("new.log")) << true;
        QTest::newRow("No changes nothing")
            << "No" << std::optional<QString>(QStringLiteral("new.log")) << false;
        QTest::newRow("lower case yes changes nothing")
            << "yes" << std::optional<QString>(QStringLiteral("new.log")) << false;
        QTest::newRow("no file stored") << "Yes" << std::optional<QString>() << false;
        QTest::newRow("empty file") << "Yes" << std::optional<QString>(QString()) << false;
        QTest::newRow("the current file")
            << "Yes" << std::optional<QString>(QStringLiteral("old.log")) << false;
    }

    void logSwitch() {
        QFETCH(QString, keepLog);
        QFETCH(std::optional<QString>, logFile);
        QFETCH(bool, switched);

        const QString oldLog = m_logs.filePath(QStringLiteral("old.log"));
        const QString newLog = m_logs.filePath(QStringLiteral("new.log"));
        QFile::remove(oldLog);
        QFile::remove(newLog);
        QVERIFY(core::SetLogFilePath(oldLog));

        Values values{{QStringLiteral("KeepLog"), keepLog}};
        if (logFile)
            values[QStringLiteral("LogFile")] =
                logFile->isEmpty() ? QString() : m_logs.filePath(*logFile);
        StorePreferences(values);

        core::MainPreferences state;
        QCOMPARE(core::LoadPreferences(state, enGB).logFileChanged, switched);
        QCOMPARE(core::LogFilePath(), switched ? newLog : oldLog);
        if (switched) {
            const QByteArray oldText = fileText(oldLog);
            QVERIFY2(oldText.endsWith(" > log file changed to " + newLog.toLocal8Bit() + " \r\n"),
                     oldText.constData());
            QCOMPARE(oldText.count('\n'), 1);
            QVERIFY(!QFile::exists(newLog));
            // Loading again does not switch again.
            QVERIFY(!core::LoadPreferences(state, enGB).logFileChanged);
            QCOMPARE(fileText(oldLog), oldText);
        } else {
            QVERIFY(!QFile::exists(oldLog));
        }
    }

    void logSwitchFromNoLog() {
        StorePreferences(
            {{QStringLiteral("KeepLog"), QStringLiteral("Yes")},
             {QStringLiteral("LogFile"), m_logs.filePath(QStringLiteral("first.log"))}});
        core::MainPreferences state;
        QVERIFY(core::LoadPreferences(state, enGB).logFileChanged);
        QCOMPARE(core::LogFilePath(), m_logs.filePath(QStringLiteral("first.log")));
        QVERIFY(!QFile::exists(core::LogFilePath()));
    }

    void logSwitchFromAnUnwritableLog() {
        QVERIFY(core::SetLogFilePath(m_logs.filePath(QStringLiteral("no such folder/old.log"))));
        StorePreferences(
            {{QStringLiteral("KeepLog"), QStringLiteral("Yes")},
             {QStringLiteral("LogFile"), m_logs.filePath(QStringLiteral("other.log"))}});
        core::MainPreferences state;
        QVERIFY(core::LoadPreferences(state, enGB).logFileChanged);
        QCOMPARE(core::LogFilePath(), m_logs.filePath(QStringLiteral("other.log")));
    }

    void logFileTooLongForTheLogPath() {
        const QString oldLog = m_logs.filePath(QStringLiteral("kept.log"));
        QVERIFY(core::SetLogFilePath(oldLog));
        const QString longName = QStringLiteral("/tmp/") + QString(251, QLatin1Char('x'));
        StorePreferences({{QStringLiteral("KeepLog"), QStringLiteral("Yes")},
                          {QStringLiteral("LogFile"), longName}});
        core::MainPreferences state;
        QVERIFY(!core::LoadPreferences(state, enGB).logFileChanged);
        QCOMPARE(core::LogFilePath(), oldLog);
        QVERIFY(!QFile::exists(oldLog));
    }

    void readValuesOverDefaults_data() {
        QTest::addColumn<Values>("values");
        QTest::addColumn<core::PreferenceValues>("expected");

        core::PreferenceValues all;
        all.layoutBottom = false;
        all.defaultDateFormat = false;
        all.dateFormatString = QStringLiteral("yyyy.mm.dd");
        all.keepLog = true;
        all.logFile = QStringLiteral("other.log");
        all.hideId = false;
        all.appendId = false;
        all.setDefaults = false;
        all.dateDefaults = false;
        all.moneyDefaults = false;
        all.defaultDate = QStringLiteral("3.3.2003");
        all.defaultMoney = QStringLiteral("12,5");
        QTest::newRow("every value") << Values{{"EditLayout", "Right"},
                                               {"DateFormat", "Custom"},
                                               {"DateFormatString", "yyyy.mm.dd"},
                                               {"KeepLog", "Yes"},
                                               {"LogFile", "other.log"},
                                               {"HideID", "No"},
                                               {"AppendID", "no"},
                                               {"Defaults", "Maybe"},
                                               {"DateDefault", "No"},
                                               {"MoneyDefault", ""},
                                               {"Date", "3.3.2003"},
                                               {"Money", "12,5"}}
                                     << all;

        core::PreferenceValues some;
        some.keepLog = true;
        some.dateDefaults = false;
        QTest::newRow("some values")
            << Values{{"KeepLog", "Yes"}, {"DateDefault", "No"}, {"Unknown", "x"}} << some;
    }

    void readValuesOverDefaults() {
        QFETCH(Values, values);
        QFETCH(core::PreferenceValues, expected);

        StorePreferences(values);
        core::PreferenceValues read;
        core::ReadPreferenceValues(read);
        QCOMPARE(read, expected);
    }

    void writeValues_data() {
        QTest::addColumn<core::PreferenceValues>("values");
        QTest::addColumn<Values>("expected");
        QTest::addColumn<QString>("format");

        QTest::newRow("dialog defaults, locale format")
            << core::PreferenceValues() << Values{{"EditLayout", "Bottom"},
                                                  {"DateFormat", "Default"},
                                                  {"DateFormatString", "dd-mm-yyyy"},
                                                  {"KeepLog", "No"},
                                                  {"LogFile", "quillet.log"},
                                                  {"HideID", "Yes"},
                                                  {"AppendID", "Yes"},
                                                  {"Defaults", "Yes"},
                                                  {"DateDefault", "Yes"},
                                                  {"MoneyDefault", "Yes"},
                                                  {"Date", "01.01.90"},
                                                  {"Money", "0"}}
            << "dd.mm.yy";

        core::PreferenceValues other;
        other.layoutBottom = false;
        other.defaultDateFormat = false;
        other.dateFormatString = QStringLiteral("yyyy-mm-dd");
        other.keepLog = true;
        other.logFile = QStringLiteral("/var/tmp/q.log");
        other.hideId = false;
        other.appendId = false;
        other.setDefaults = false;
        other.dateDefaults = false;
        other.moneyDefaults = false;
        other.defaultDate = QStringLiteral("31.12.1999");
        other.defaultMoney = QStringLiteral("not checked");
        QTest::newRow("everything the other way") << other
                                                  << Values{{"EditLayout", "Right"},
                                                            {"DateFormat", "Custom"},
                                                            {"DateFormatString", "yyyy-mm-dd"},
                                                            {"KeepLog", "Yes"},
                                                            {"LogFile", "/var/tmp/q.log"},
                                                            {"HideID", "No"},
                                                            {"AppendID", "No"},
                                                            {"Defaults", "No"},
                                                            {"DateDefault", "No"},
                                                            {"MoneyDefault", "No"},
                                                            {"Date", "1999-12-31"},
                                                            {"Money", "not checked"}}
                                                  << "yyyy-mm-dd";
    }

    void writeValues() {
        QFETCH(core::PreferenceValues, values);
        QFETCH(Values, expected);
        QFETCH(QString, format);

        core::WritePreferenceValues(values, deDE);
        QStringList names;
        for (const auto& [name, value] : expected) {
            QCOMPARE(StoredPreference(name), std::optional<QString>(value));
            names << name;
        }
        names.sort();
        QCOMPARE(StoredPreferenceNames(), names);
        QCOMPARE(core::ShortDateFormat(), format);

        // What was written reads back as the same choices.
        core::PreferenceValues read;
        core::ReadPreferenceValues(read);
        core::PreferenceValues written = values;
        written.defaultDate = expected[QStringLiteral("Date")];
        QCOMPARE(read, written);
    }

    void impossibleDefaultDate_data() {
        QTest::addColumn<QString>("date");
        QTest::newRow("31 February") << "31.02.1990";
        QTest::newRow("not a date") << "soon";
        QTest::newRow("empty") << "";
    }

    void impossibleDefaultDate() {
        QFETCH(QString, date);

        StorePreferences({{QStringLiteral("Date"), QStringLiteral("2.2.2002")},
                          {QStringLiteral("Money"), QStringLiteral("5")},
                          {QStringLiteral("HideID"), QStringLiteral("Yes")}});
        core::PreferenceValues values;
        values.defaultDateFormat = false;
        values.dateFormatString = QStringLiteral("yyyy.mm.dd");
        values.hideId = false;
        values.moneyDefaults = false;
        values.defaultDate = date;
        values.defaultMoney = QStringLiteral("99");
        try {
            core::WritePreferenceValues(values, enGB);
            QFAIL("no conversion error");
        } catch (const core::ConversionError& error) {
            QVERIFY2(error.message().contains(QLatin1String("date")), qPrintable(error.message()));
        }
        // Everything before "Date" is saved, and the date format applied.
        QCOMPARE(StoredPreference(QStringLiteral("DateFormat")), QStringLiteral("Custom"));
        QCOMPARE(StoredPreference(QStringLiteral("DateFormatString")),
                 QStringLiteral("yyyy.mm.dd"));
        QCOMPARE(StoredPreference(QStringLiteral("HideID")), QStringLiteral("No"));
        QCOMPARE(StoredPreference(QStringLiteral("MoneyDefault")), QStringLiteral("No"));
        QCOMPARE(core::ShortDateFormat(), QStringLiteral("yyyy.mm.dd"));
        // "Date" and "Money" keep their old values.
        QCOMPARE(StoredPreference(QStringLiteral("Date")), QStringLiteral("2.2.2002"));
        QCOMPARE(StoredPreference(QStringLiteral("Money")), QStringLiteral("5"));
    }

    void defaultDateIsReadWithTheNewFormat() {
        // A month-first format makes 2.3.1990 the 3rd of February.
        core::PreferenceValues values;
        values.defaultDateFormat = false;
        values.dateFormatString = QStringLiteral("mm/dd/yyyy");
        values.defaultDate = QStringLiteral("2.3.1990");
        core::WritePreferenceValues(values, enGB);
        QCOMPARE(StoredPreference(QStringLiteral("Date")), QStringLiteral("02/03/1990"));
        QCOMPARE(core::StrToDate(*StoredPreference(QStringLiteral("Date"))), QDate(1990, 2, 3));
    }

    void newRecordDefaults_data() {
        QTest::addColumn<Values>("values");
        QTest::addColumn<bool>("dateDefaults");
        QTest::addColumn<bool>("moneyDefaults");
        QTest::addColumn<QString>("dateText");
        QTest::addColumn<QString>("moneyText");

        QTest::newRow("nothing stored") << Values{} << true << true << "1.1.1990"
                                        << "0";
        QTest::newRow("all on") << Values{{"Defaults", "Yes"},
                                          {"DateDefault", "Yes"},
                                          {"MoneyDefault", "Yes"},
                                          {"Date", "05.03.24"},
                                          {"Money", "12"}}
                                << true << true << "05.03.24"
                                << "12";
        QTest::newRow("defaults off")
            << Values{{"Defaults", "No"}, {"DateDefault", "Yes"}} << false << false << "1.1.1990"
            << "0";
        QTest::newRow("defaults lower case yes is off")
            << Values{{"Defaults", "yes"}} << false << false << "1.1.1990"
            << "0";
        QTest::newRow("date off") << Values{{"DateDefault", "No"}} << false << true << "1.1.1990"
                                  << "0";
        QTest::newRow("money off")
            << Values{{"Defaults", "Yes"}, {"MoneyDefault", "no"}} << true << false << "1.1.1990"
            << "0";
    }

    void newRecordDefaults() {
        QFETCH(Values, values);
        QFETCH(bool, dateDefaults);
        QFETCH(bool, moneyDefaults);
        QFETCH(QString, dateText);
        QFETCH(QString, moneyText);

        StorePreferences(values);
        const core::NewRecordDefaults defaults = core::ReadNewRecordDefaults();
        QCOMPARE(defaults.dateDefaults, dateDefaults);
        QCOMPARE(defaults.moneyDefaults, moneyDefaults);
        QCOMPARE(defaults.dateText, dateText);
        QCOMPARE(defaults.moneyText, moneyText);
    }

private:
    QTemporaryDir m_logs;
};

QTEST_GUILESS_MAIN(TestPreferences)
#include "test_preferences.moc"
