#include "core/conversions.h"
#include "core/dateformat.h"
#include "core/log.h"
#include "core/preferences.h"
#include "support/preferencestore.h"
#include "support/testsupport.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using testsupport::AddRow;
using testsupport::StorePreferences;

namespace {

const QLocale enGB(QStringLiteral("en_GB"));
const QLocale deDE(QStringLiteral("de_DE"));

// The state after loading, and the date format in force.
QString describe(const core::MainPreferences& state) {
    return QStringLiteral("%1 hide=%2 append=%3 custom=%4 format=%5")
        .arg(state.layoutBottom ? "bottom" : "right")
        .arg(state.hideId)
        .arg(state.appendId)
        .arg(state.customDateFormat, core::ShortDateFormat());
}

} // namespace

Q_DECLARE_METATYPE(core::PreferenceValues)

class TestPreferences : public QObject {
    Q_OBJECT

    QTemporaryDir m_logs;

private Q_SLOTS:
    void initTestCase() { testsupport::UseTemporarySettings(); }

    void init() {
        QSettings(QStringLiteral("Marrowby"), QStringLiteral("Quillet")).clear();
        QVERIFY(core::SetLogFilePath(QString()));
        core::ApplyDateFormat(QString(), enGB);
    }

    void cleanup() { QVERIFY(core::SetLogFilePath(QString())); }

    // Layout, date format and ID flags; the layout and ID flags start as `initial`. The
    // stored words count only as written exactly.
    void load_data() {
        QTest::addColumn<QString>("values");
        QTest::addColumn<bool>("initial");
        QTest::addColumn<QString>("loaded");
        const QString locale = QStringLiteral(" custom= format=dd.mm.yy");
        AddRow("Bottom", "EditLayout=Bottom", false, "bottom hide=0 append=0" + locale);
        AddRow("Right", "EditLayout=Right", true, "right hide=1 append=1" + locale);
        AddRow("lower case bottom means Right", "EditLayout=bottom", true,
               "right hide=1 append=1" + locale);
        AddRow("blank after Bottom", "EditLayout=Bottom ", true, "right hide=1 append=1" + locale);
        AddRow("Default format", "DateFormat=Default;DateFormatString=yyyy.mm.dd", true,
               "bottom hide=1 append=1" + locale);
        AddRow("Custom format", "DateFormat=Custom;DateFormatString=yyyy/mm/dd", true,
               "bottom hide=1 append=1 custom=yyyy/mm/dd format=yyyy/mm/dd");
        AddRow("lower case default means custom", "DateFormat=default;DateFormatString=dd-mm-yyyy",
               true, "bottom hide=1 append=1 custom=dd-mm-yyyy format=dd-mm-yyyy");
        AddRow("custom without a format string is the locale's", "DateFormat=Custom", true,
               "bottom hide=1 append=1" + locale);
        AddRow("format string alone is not used", "DateFormatString=yyyy/mm/dd", true,
               "bottom hide=1 append=1" + locale);
        AddRow("ID flags Yes", "HideID=Yes;AppendID=Yes", false, "right hide=1 append=1" + locale);
        AddRow("lower case yes means no, each flag on its own", "HideID=yes", true,
               "bottom hide=0 append=1" + locale);
        AddRow("nothing stored keeps the flags", "", false, "right hide=0 append=0" + locale);
    }
    void load() {
        QFETCH(QString, values);
        QFETCH(bool, initial);
        QFETCH(QString, loaded);
        StorePreferences(values);
        const QStringList stored = testsupport::StoredPreferences();
        core::MainPreferences state;
        state.layoutBottom = state.hideId = state.appendId = initial;
        state.customDateFormat = QStringLiteral("stale");
        const bool changed = core::LoadPreferences(state, deDE).layoutChanged;
        QCOMPARE(changed, state.layoutBottom != initial);
        QCOMPARE(describe(state), loaded);
        QVERIFY(!core::LoadPreferences(state, deDE).layoutChanged); // nothing more to change
        QCOMPARE(testsupport::StoredPreferences(), stored);         // loading writes nothing
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
        AddRow("Yes", "old.log", "Yes", "new.log", true, true);
        AddRow("No changes nothing", "old.log", "No", "new.log", false, false);
        AddRow("lower case yes changes nothing", "old.log", "yes", "new.log", false, false);
        AddRow("no file stored", "old.log", "Yes", none, false, false);
        AddRow("empty file", "old.log", "Yes", "", false, false);
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
        StorePreferences("KeepLog=" + keepLog + ";DateFormat=Custom;DateFormatString=y-m-d" +
                         (logFile.isNull() ? QString() : ";LogFile=" + newLog));

        core::MainPreferences state;
        QCOMPARE(core::LoadPreferences(state, enGB).logFileChanged, switched);
        QCOMPARE(core::LogFilePath(), switched ? newLog : oldLog);
        QVERIFY(!QFile::exists(newLog));
        const QByteArray oldText = testsupport::ReadFile(oldLog);
        if (!noted) {
            QVERIFY(oldText.isEmpty());
            return;
        }
        const QRegularExpression entry(
            QStringLiteral("^\\d\\d/\\d\\d/\\d{4} [^>]* > log file changed to %1 \r\n$")
                .arg(QRegularExpression::escape(newLog)));
        QVERIFY2(entry.match(QString::fromLocal8Bit(oldText)).hasMatch(), oldText.constData());
        QVERIFY(!core::LoadPreferences(state, enGB).logFileChanged); // not switched again
        QCOMPARE(testsupport::ReadFile(oldLog), oldText);
    }

    // Reading every value: test_preferencesdialog (opens).

    // Over a store that holds Date "2.2.2002" and Money "5". `stored` in save order.
    void writeValues_data() {
        QTest::addColumn<core::PreferenceValues>("values");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("format");
        QTest::addColumn<bool>("fails");
        AddRow("dialog defaults, locale format", core::PreferenceValues(),
               "Bottom Default dd-mm-yyyy No quillet.log Yes Yes Yes Yes Yes 01.01.90 0",
               "dd.mm.yy", false);
        AddRow("everything the other way",
               core::PreferenceValues{false, false, "yyyy-mm-dd", true, "/var/tmp/q.log", false,
                                      false, false, false, false, "31.12.1999", "not checked"},
               "Right Custom yyyy-mm-dd Yes /var/tmp/q.log No No No No No 1999-12-31 not checked",
               "yyyy-mm-dd", false);
        // A month-first format makes 2.3.1990 the 3rd of February.
        AddRow("default date read with the new format",
               core::PreferenceValues{true, false, "mm/dd/yyyy", false, "q.log", true, true, true,
                                      true, true, "2.3.1990", "7"},
               "Bottom Custom mm/dd/yyyy No q.log Yes Yes Yes Yes Yes 02/03/1990 7", "mm/dd/yyyy",
               false);
        // Everything before "Date" is saved and the format applied; Date and Money stay.
        for (const char* date : {"31.02.1990", "soon"})
            AddRow(date,
                   core::PreferenceValues{true, false, "yyyy.mm.dd", false, "q.log", false, true,
                                          true, true, false, date, "99"},
                   "Bottom Custom yyyy.mm.dd No q.log No Yes Yes Yes No 2.2.2002 5", "yyyy.mm.dd",
                   true);
    }
    void writeValues() {
        QFETCH(core::PreferenceValues, values);
        QFETCH(QString, stored);
        QFETCH(bool, fails);
        StorePreferences("Date=2.2.2002;Money=5");
        try {
            core::WritePreferenceValues(values, deDE);
            QVERIFY(!fails);
        } catch (const core::ConversionError& error) {
            QVERIFY(fails);
            QVERIFY2(error.message().contains(QLatin1String("date")), qPrintable(error.message()));
        }
        const QStringList names{
            "EditLayout", "DateFormat", "DateFormatString", "KeepLog",      "LogFile", "HideID",
            "AppendID",   "Defaults",   "DateDefault",      "MoneyDefault", "Date",    "Money"};
        const QStringList words = stored.split(' ');
        QStringList expected;
        for (qsizetype i = 0; i < names.size(); ++i)
            expected << names[i] + '=' + (i < 11 ? words[i] : words.mid(11).join(' '));
        expected.sort();
        QCOMPARE(testsupport::StoredPreferences(), expected);
        QTEST(core::ShortDateFormat(), "format");
        if (fails)
            return;
        // What was written reads back as the same choices.
        core::PreferenceValues read;
        core::ReadPreferenceValues(read);
        values.defaultDate = words[10];
        QCOMPARE(read, values);
    }

    void newRecordDefaults_data() {
        QTest::addColumn<QString>("values");
        QTest::addColumn<QString>("defaults"); // date, money, date text, money text
        AddRow("nothing stored", "", "1 1 1.1.1990 0");
        AddRow("all on", "Defaults=Yes;DateDefault=Yes;MoneyDefault=Yes;Date=05.03.24;Money=12",
               "1 1 05.03.24 12");
        AddRow("defaults off", "Defaults=No;DateDefault=Yes", "0 0 1.1.1990 0");
        AddRow("defaults lower case yes is off", "Defaults=yes", "0 0 1.1.1990 0");
        AddRow("date off", "DateDefault=No", "0 1 1.1.1990 0");
        AddRow("money off", "Defaults=Yes;MoneyDefault=no", "1 0 1.1.1990 0");
    }
    void newRecordDefaults() {
        QFETCH(QString, values);
        StorePreferences(values);
        const core::NewRecordDefaults read = core::ReadNewRecordDefaults();
        QTEST(QStringLiteral("%1 %2 %3 %4")
                  .arg(read.dateDefaults)
                  .arg(read.moneyDefaults)
                  .arg(read.dateText, read.moneyText),
              "defaults");
    }
};

QTEST_GUILESS_MAIN(TestPreferences)
#include "test_preferences.moc"
