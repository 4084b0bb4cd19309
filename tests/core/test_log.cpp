#include "core/dateformat.h"
#include "core/log.h"
#include "support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

class TestLog : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private Q_SLOTS:
    void init() {
        core::SetDateSeparator(QLatin1Char('/'));
        QVERIFY(core::SetLogFilePath(QString()));
    }

    void entryFormat_data() {
        QTest::addColumn<QChar>("dateSeparator");
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<bool>("nullMessage");
        QTest::addColumn<QByteArray>("entry");

        QTest::newRow("plain") << QChar('/') << QByteArray("x") << false
                               << QByteArray("05/03/2024 14:07:09 > x \r\n");
        QTest::newRow("null message") << QChar('/') << QByteArray() << true
                                      << QByteArray("05/03/2024 14:07:09 > "
                                                    ".................................. \r\n");
        QTest::newRow("date separator of the process")
            << QChar('.') << QByteArray("x") << false << QByteArray("05.03.2024 14:07:09 > x \r\n");
        QTest::newRow("line breaks kept")
            << QChar('/') << QByteArray("...Query:\nSELECT 1") << false
            << QByteArray("05/03/2024 14:07:09 > ...Query:\nSELECT 1 \r\n");
        QTest::newRow("empty message")
            << QChar('/') << QByteArray("") << false << QByteArray("05/03/2024 14:07:09 >  \r\n");
    }

    void entryFormat() {
        QFETCH(QChar, dateSeparator);
        QFETCH(QByteArray, message);
        QFETCH(bool, nullMessage);
        core::SetDateSeparator(dateSeparator);
        const QDateTime when(QDate(2024, 3, 5), QTime(14, 7, 9));
        QTEST(core::FormatLogEntry(when, nullMessage ? nullptr : message.constData()), "entry");
    }

    void emptyPathTouchesNoFile() {
        core::LogLine("nothing");
        QVERIFY(QDir(m_dir.path()).isEmpty());
    }

    // The first entry creates the file; later ones are appended, and an existing file is
    // never truncated.
    void createsThenAppends() {
        const QString path = m_dir.filePath(QStringLiteral("new.log"));
        QVERIFY(core::SetLogFilePath(path));
        core::LogLine("first");
        core::LogLine(QStringLiteral("second"));
        core::LogLine(static_cast<const char*>(nullptr));
        const QList<QByteArray> lines = testsupport::ReadFile(path).split('\n');
        QCOMPARE(lines.size(), 4);
        const QRegularExpression stamp(QStringLiteral(R"(^\d\d/\d\d/\d{4} \d\d.\d\d.\d\d > )"));
        QVERIFY(stamp.match(QString::fromLatin1(lines[0])).hasMatch());
        QVERIFY(lines[0].endsWith(" > first \r"));
        QVERIFY(lines[1].endsWith(" > second \r"));
        QVERIFY(lines[2].endsWith(" > .................................. \r"));
        QCOMPARE(lines[3], QByteArray());
        QVERIFY(testsupport::WriteFile(path, "kept\r\n"));
        core::LogLine("added");
        const QByteArray content = testsupport::ReadFile(path);
        QVERIFY(content.startsWith("kept\r\n"));
        QVERIFY(content.endsWith(" > added \r\n"));
    }

    // A file that cannot be created raises; a write that fails (a full disk) does not. Either
    // way the entry is kept and written ahead of the next one once the file takes it, and the
    // first failure alone is reported.
    void failedEntriesAreKeptAndReportedOnce() {
        QStringList reports;
        core::SetLogFailureHandler([&reports](const QString& text) { reports << text; });
        QVERIFY(core::SetLogFilePath(m_dir.filePath(QStringLiteral("no/such/dir/x.log"))));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, core::LogLine("not created"));
        QVERIFY(core::SetLogFilePath(QStringLiteral("/dev/full")));
        core::LogLine("disk full");
        QVERIFY(core::LogEntriesLost());
        QCOMPARE(reports.size(), 1);
        QVERIFY2(reports[0].contains(QLatin1String("no/such/dir/x.log")), qPrintable(reports[0]));

        const QString path = m_dir.filePath(QStringLiteral("later.log"));
        QVERIFY(core::SetLogFilePath(path));
        core::LogLine("written");
        const QList<QByteArray> lines = testsupport::ReadFile(path).split('\n');
        QCOMPARE(lines.size(), 4);
        QVERIFY(lines[0].endsWith(" > not created \r"));
        QVERIFY(lines[1].endsWith(" > disk full \r"));
        QVERIFY(lines[2].endsWith(" > written \r"));
        QVERIFY(!core::LogEntriesLost());
        QCOMPARE(reports.size(), 1);
    }

    void pathLengthIsBounded() {
        const QString fits = m_dir.path() + QLatin1Char('/') +
                             QString(core::MaxLogPathLength - m_dir.path().size() - 1, 'a');
        QCOMPARE(fits.toLocal8Bit().size(), core::MaxLogPathLength);
        QVERIFY(core::SetLogFilePath(fits));
        QVERIFY(!core::SetLogFilePath(fits + QLatin1Char('a')));
        QCOMPARE(core::LogFilePath(), fits);
    }
};

QTEST_APPLESS_MAIN(TestLog)
#include "test_log.moc"
