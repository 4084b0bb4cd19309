#include "core/conversions.h"
#include "core/dateformat.h"
#include "core/log.h"
#include "core/preferences.h"
#include "support/preferencestore.h"
#include "support/testsupport.h"

#include <QFile>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using testsupport::AddRow;

namespace {

const QLocale enGB(QStringLiteral("en_GB"));
const QLocale deDE(QStringLiteral("de_DE"));

using Values = testsupport::PreferenceValues;
using testsupport::StoredPreference;
using testsupport::StoredPreferenceNames;
using testsupport::StorePreferences;

// The stored names in the order in which they are saved, which is also the order of
// the members of PreferenceValues.
const QStringList SaveOrder{
    "EditLayout", "DateFormat", "DateFormatString", "KeepLog",      "LogFile", "HideID",
    "AppendID",   "Defaults",   "DateDefault",      "MoneyDefault", "Date",    "Money"};

Values inSaveOrder(const QStringList& words) {
    Values values;
    for (qsizetype i = 0; i < SaveOrder.size(); ++i)
        values[SaveOrder[i]] = words[i];
    return values;
}

} // namespace

Q_DECLARE_METATYPE(Values)
Q_DECLARE_METATYPE(core::PreferenceValues)

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

    void nothingStored() {
        const QString log = m_logs.filePath(QStringLiteral("current.log"));
        QVERIFY(core::SetLogFilePath(log));
        core::ApplyDateFormat(QStringLiteral("yyyy.mm.dd"), enGB);
        core::MainPreferences state;
        const core::PreferenceChanges changes = core::LoadPreferences(state, deDE);
        QVERIFY(!changes.layoutChanged);
        QVERIFY(!changes.logFileChanged);
        QVERIFY(state.layoutBottom && state.hideId && state.appendId);
        QVERIFY(state.customDateFormat.isEmpty());
        QCOMPARE(core::ShortDateFormat(), QStringLiteral("dd.mm.yy"));
        QCOMPARE(core::LogFilePath(), log);
        QVERIFY(!QFile::exists(log));

        core::PreferenceValues values;
        core::ReadPreferenceValues(values);
        QCOMPARE(values, core::PreferenceValues());
        QVERIFY(StoredPreferenceNames().isEmpty()); // reading writes nothing back
    }

    // Layout, date format and ID flags; the layout and ID flags start as `initial`.
    void load_data() {
        QTest::addColumn<Values>("values");
        QTest::addColumn<bool>("initial");
        QTest::addColumn<bool>("bottom");
        QTest::addColumn<bool>("hideId");
        QTest::addColumn<bool>("appendId");
        QTest::addColumn<QString>("custom");
        QTest::addColumn<QString>("format");

        const char* locale = "dd.mm.yy";
        AddRow("Bottom", Values{{"EditLayout", "Bottom"}}, false, true, false, false, "", locale);
        AddRow("Right", Values{{"EditLayout", "Right"}}, true, false, true, true, "", locale);
        AddRow("lower case bottom means Right", Values{{"EditLayout", "bottom"}}, true, false, true,
               true, "", locale);
        AddRow("blank after Bottom", Values{{"EditLayout", "Bottom "}}, true, false, true, true, "",
               locale);
        AddRow("Default format",
               Values{{"DateFormat", "Default"}, {"DateFormatString", "yyyy.mm.dd"}}, true, true,
               true, true, "", locale);
        AddRow("Custom format",
               Values{{"DateFormat", "Custom"}, {"DateFormatString", "yyyy/mm/dd"}}, true, true,
               true, true, "yyyy/mm/dd", "yyyy/mm/dd");
        AddRow("lower case default means custom",
               Values{{"DateFormat", "default"}, {"DateFormatString", "dd-mm-yyyy"}}, true, true,
               true, true, "dd-mm-yyyy", "dd-mm-yyyy");
        AddRow("custom without a format string is the locale's", Values{{"DateFormat", "Custom"}},
               true, true, true, true, "", locale);
        AddRow("format string alone is not used", Values{{"DateFormatString", "yyyy/mm/dd"}}, true,
               true, true, true, "", locale);
        AddRow("ID flags Yes", Values{{"HideID", "Yes"}, {"AppendID", "Yes"}}, false, false, true,
               true, "", locale);
        AddRow("ID flags No", Values{{"HideID", "No"}, {"AppendID", "No"}}, true, true, false,
               false, "", locale);
        AddRow("lower case yes means no", Values{{"HideID", "yes"}, {"AppendID", "YES"}}, true,
               true, false, false, "", locale);
        AddRow("each flag on its own", Values{{"HideID", "No"}}, true, true, false, true, "",
               locale);
        AddRow("nothing stored keeps the flags off", Values{}, false, false, false, false, "",
               locale);
    }

    void load() {
        QFETCH(Values, values);
        QFETCH(bool, initial);
        QFETCH(bool, bottom);
        QFETCH(bool, hideId);
        QFETCH(bool, appendId);
        QFETCH(QString, custom);
        QFETCH(QString, format);

        StorePreferences(values);
        core::MainPreferences state;
        state.layoutBottom = state.hideId = state.appendId = initial;
        state.customDateFormat = QStringLiteral("stale");
        QCOMPARE(core::LoadPreferences(state, deDE).layoutChanged, bottom != initial);
        QCOMPARE(state.layoutBottom, bottom);
        QCOMPARE(state.hideId, hideId);
        QCOMPARE(state.appendId, appendId);
        QCOMPARE(state.customDateFormat, custom);
        QCOMPARE(core::ShortDateFormat(), format);
        QVERIFY(!core::LoadPreferences(state, deDE).layoutChanged); // nothing more to change
    }

    // Every row also stores a custom date format, which must not apply to the entry
    // written to the old log.
    void logSwitch_data() {
        QTest::addColumn<QString>("current"); // in the log folder; empty: no log
        QTest::addColumn<QString>("keepLog");
        QTest::addColumn<QString>("logFile"); // in the log folder; null: not stored
        QTest::addColumn<bool>("switched");
        QTest::addColumn<bool>("noted"); // the old log records the switch

        const QString none;
        const QString empty = QStringLiteral("");
        AddRow("Yes", "old.log", "Yes", "new.log", true, true);
        AddRow("No changes nothing", "old.log", "No", "new.log", false, false);
        AddRow("lower case yes changes nothing", "old.log", "yes", "new.log", false, false);
        AddRow("no file stored", "old.log", "Yes", none, false, false);
        AddRow("empty file", "old.log", "Yes", empty, false, false);
        AddRow("the current file", "old.log", "Yes", "old.log", false, false);
        AddRow("from no log", "", "Yes", "new.log", true, false);
        AddRow("from a log that cannot be written", "no such folder/old.log", "Yes", "new.log",
               true, false);
        AddRow("file name too long for the log path", "old.log", "Yes", QString(251, u'x'), false,
               false);
    }

    void logSwitch() {
        QFETCH(QString, current);
        QFETCH(QString, keepLog);
        QFETCH(QString, logFile);
        QFETCH(bool, switched);
        QFETCH(bool, noted);

        const QString oldLog = current.isEmpty() ? QString() : m_logs.filePath(current);
        const QString newLog = logFile.isEmpty() ? logFile : m_logs.filePath(logFile);
        for (const QString& path : {oldLog, newLog})
            if (!path.isEmpty())
                QFile::remove(path);
        QVERIFY(core::SetLogFilePath(oldLog));
        Values values{
            {"KeepLog", keepLog}, {"DateFormat", "Custom"}, {"DateFormatString", "y-m-d"}};
        if (!logFile.isNull())
            values["LogFile"] = newLog;
        StorePreferences(values);

        core::MainPreferences state;
        QCOMPARE(core::LoadPreferences(state, enGB).logFileChanged, switched);
        QCOMPARE(core::LogFilePath(), switched ? newLog : oldLog);
        QVERIFY(!QFile::exists(newLog));
        const QByteArray oldText = testsupport::ReadFile(oldLog);
        if (noted) {
            const QRegularExpression entry(
                QStringLiteral("^\\d\\d/\\d\\d/\\d{4} [^>]* > log file changed to %1 \r\n$")
                    .arg(QRegularExpression::escape(newLog)));
            QVERIFY2(entry.match(QString::fromLocal8Bit(oldText)).hasMatch(), oldText.constData());
            QVERIFY(!core::LoadPreferences(state, enGB).logFileChanged); // not switched again
            QCOMPARE(testsupport::ReadFile(oldLog), oldText);
        } else {
            QVERIFY(oldText.isEmpty());
        }
    }

    void readValues_data() {
        QTest::addColumn<Values>("values");
        QTest::addColumn<core::PreferenceValues>("expected");

        AddRow("every value, exact words only",
               inSaveOrder({"bottom", "default", "yyyy.mm.dd", "Yes", "other.log", "No", "yes",
                            "Maybe", "No", "", "3.3.2003", "12,5"}),
               core::PreferenceValues{false, false, "yyyy.mm.dd", true, "other.log", false, false,
                                      false, false, false, "3.3.2003", "12,5"});
        core::PreferenceValues some;
        some.keepLog = true;
        some.dateDefaults = false;
        AddRow("the others keep their values",
               Values{{"KeepLog", "Yes"}, {"DateDefault", "No"}, {"Unknown", "x"}}, some);
    }

    void readValues() {
        QFETCH(Values, values);
        QFETCH(core::PreferenceValues, expected);
        StorePreferences(values);
        core::PreferenceValues read;
        core::ReadPreferenceValues(read);
        QCOMPARE(read, expected);
    }

    // Over a store that holds Date "2.2.2002" and Money "5".
    void writeValues_data() {
        QTest::addColumn<core::PreferenceValues>("values");
        QTest::addColumn<QStringList>("stored"); // in save order
        QTest::addColumn<QString>("format");
        QTest::addColumn<bool>("fails");

        AddRow("dialog defaults, locale format", core::PreferenceValues(),
               QStringList{"Bottom", "Default", "dd-mm-yyyy", "No", "quillet.log", "Yes", "Yes",
                           "Yes", "Yes", "Yes", "01.01.90", "0"},
               "dd.mm.yy", false);
        AddRow("everything the other way",
               core::PreferenceValues{false, false, "yyyy-mm-dd", true, "/var/tmp/q.log", false,
                                      false, false, false, false, "31.12.1999", "not checked"},
               QStringList{"Right", "Custom", "yyyy-mm-dd", "Yes", "/var/tmp/q.log", "No", "No",
                           "No", "No", "No", "1999-12-31", "not checked"},
               "yyyy-mm-dd", false);
        // A month-first format makes 2.3.1990 the 3rd of February.
        AddRow("default date read with the new format",
               core::PreferenceValues{true, false, "mm/dd/yyyy", false, "q.log", true, true, true,
                                      true, true, "2.3.1990", "7"},
               QStringList{"Bottom", "Custom", "mm/dd/yyyy", "No", "q.log", "Yes", "Yes", "Yes",
                           "Yes", "Yes", "02/03/1990", "7"},
               "mm/dd/yyyy", false);
        // Everything before "Date" is saved and the format applied; Date and Money stay.
        for (const char* date : {"31.02.1990", "soon"})
            AddRow(date,
                   core::PreferenceValues{true, false, "yyyy.mm.dd", false, "q.log", false, true,
                                          true, true, false, date, "99"},
                   QStringList{"Bottom", "Custom", "yyyy.mm.dd", "No", "q.log", "No", "Yes", "Yes",
                               "Yes", "No", "2.2.2002", "5"},
                   "yyyy.mm.dd", true);
    }

    void writeValues() {
        QFETCH(core::PreferenceValues, values);
        QFETCH(QStringList, stored);
        QFETCH(QString, format);
        QFETCH(bool, fails);

        StorePreferences({{"Date", "2.2.2002"}, {"Money", "5"}});
        try {
            core::WritePreferenceValues(values, deDE);
            QVERIFY(!fails);
        } catch (const core::ConversionError& error) {
            QVERIFY(fails);
            QVERIFY2(error.message().contains(QLatin1String("date")), qPrintable(error.message()));
        }
        QStringList names = SaveOrder;
        names.sort();
        QCOMPARE(StoredPreferenceNames(), names);
        for (qsizetype i = 0; i < SaveOrder.size(); ++i)
            QCOMPARE(StoredPreference(SaveOrder[i]), std::optional<QString>(stored[i]));
        QCOMPARE(core::ShortDateFormat(), format);
        if (fails)
            return;
        // What was written reads back as the same choices.
        core::PreferenceValues read;
        core::ReadPreferenceValues(read);
        values.defaultDate = stored[10];
        QCOMPARE(read, values);
    }

    void newRecordDefaults_data() {
        QTest::addColumn<Values>("values");
        QTest::addColumn<bool>("dateDefaults");
        QTest::addColumn<bool>("moneyDefaults");
        QTest::addColumn<QString>("dateText");
        QTest::addColumn<QString>("moneyText");

        AddRow("nothing stored", Values{}, true, true, "1.1.1990", "0");
        AddRow("all on",
               Values{{"Defaults", "Yes"},
                      {"DateDefault", "Yes"},
                      {"MoneyDefault", "Yes"},
                      {"Date", "05.03.24"},
                      {"Money", "12"}},
               true, true, "05.03.24", "12");
        AddRow("defaults off", Values{{"Defaults", "No"}, {"DateDefault", "Yes"}}, false, false,
               "1.1.1990", "0");
        AddRow("defaults lower case yes is off", Values{{"Defaults", "yes"}}, false, false,
               "1.1.1990", "0");
        AddRow("date off", Values{{"DateDefault", "No"}}, false, true, "1.1.1990", "0");
        AddRow("money off", Values{{"Defaults", "Yes"}, {"MoneyDefault", "no"}}, true, false,
               "1.1.1990", "0");
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
