// Help contents: finding the HTML manual and handing it to the browser, with an opener
// that records the address instead of starting a browser.

#include "test_sqlwizard_helpers.h"

#include "core/ui/messages.h"
#include "db/ui/help.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

namespace {

bool writeFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    return file.write(content) == content.size();
}

// Records each address and answers as told.
struct RecordingOpener {
    QList<QUrl> opened;
    bool succeed = true;

    ui::UrlOpener function() {
        return [this](const QUrl& url) {
            opened.append(url);
            return succeed;
        };
    }
};

} // namespace

class TestDetailsHelp : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { ui::SetUnattended(true); }
    void cleanup() {
        ui::SetUnattended(false);
        ui::SetUrlOpener({});
    }

    void candidates_data() {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("installed")
            << QStringLiteral("/usr/local/bin")
            << QStringList{QStringLiteral("/usr/local/bin/Quillet.html"),
                           QStringLiteral("/usr/local/share/doc/quillet/Quillet.html")};
        QTest::newRow("trailing slash")
            << QStringLiteral("/opt/q/bin/")
            << QStringList{QStringLiteral("/opt/q/bin/Quillet.html"),
                           QStringLiteral("/opt/q/share/doc/quillet/Quillet.html")};
        QTest::newRow("root") << QStringLiteral("/")
                              << QStringList{QStringLiteral("/Quillet.html"),
                                             QStringLiteral("/share/doc/quillet/Quillet.html")};
        QTest::newRow("relative") << QStringLiteral("bin")
                                  << QStringList{QDir::current().absoluteFilePath(
                                                     QStringLiteral("bin/Quillet.html")),
                                                 QDir::current().absoluteFilePath(QStringLiteral(
                                                     "share/doc/quillet/Quillet.html"))};
    }
    void candidates() {
        QFETCH(QString, program);
        QFETCH(QStringList, expected);
        QCOMPARE(ui::HelpManualCandidates(program), expected);
    }

    // Where the manual is and what happens: the file handed to the browser, or an error
    // box and no browser.
    void contents_data() {
        QTest::addColumn<bool>("beside");
        QTest::addColumn<bool>("shared");
        QTest::addColumn<QString>("opened");
        QTest::newRow("beside the program") << true << false << QStringLiteral("bin/Quillet.html");
        QTest::newRow("in the shared folder")
            << false << true << QStringLiteral("share/doc/quillet/Quillet.html");
        QTest::newRow("both: the program's folder first")
            << true << true << QStringLiteral("bin/Quillet.html");
        QTest::newRow("missing") << false << false << QString();
    }
    void contents() {
        QFETCH(bool, beside);
        QFETCH(bool, shared);
        QFETCH(QString, opened);

        QTemporaryDir root;
        QVERIFY(root.isValid());
        const QDir dir(root.path());
        QVERIFY(dir.mkpath(QStringLiteral("bin")));
        QVERIFY(dir.mkpath(QStringLiteral("share/doc/quillet")));
        if (beside)
            QVERIFY(writeFile(dir.filePath(QStringLiteral("bin/Quillet.html")), "<html></html>"));
        if (shared)
            QVERIFY(writeFile(dir.filePath(QStringLiteral("share/doc/quillet/Quillet.html")),
                              "<html></html>"));

        RecordingOpener opener;
        ui::SetUrlOpener(opener.function());
        const QString program = dir.filePath(QStringLiteral("bin"));
        testwizard::StderrCapture capture;
        const bool shown = ui::ShowHelpContents(nullptr, program);
        const QString output = capture.finish();

        QCOMPARE(shown, !opened.isEmpty());
        if (opened.isEmpty()) {
            QVERIFY(opener.opened.isEmpty());
            QCOMPARE(output, QStringLiteral("Error: The help file Quillet.html was not found.\n"
                                            "It belongs in ") +
                                 dir.filePath(QStringLiteral("bin/Quillet.html")) +
                                 QStringLiteral(" or ") +
                                 dir.filePath(QStringLiteral("share/doc/quillet/Quillet.html")) +
                                 QStringLiteral(".\n"));
            QCOMPARE(ui::FindHelpManual(program), QString());
        } else {
            QCOMPARE(opener.opened, QList<QUrl>{QUrl::fromLocalFile(dir.filePath(opened))});
            QCOMPARE(output, QString());
            QCOMPARE(ui::FindHelpManual(program), dir.filePath(opened));
        }
    }

    void browserDoesNotStart() {
        QTemporaryDir root;
        QVERIFY(root.isValid());
        const QString manual = root.filePath(QStringLiteral("Quillet.html"));
        QVERIFY(writeFile(manual, "<html></html>"));
        RecordingOpener opener;
        opener.succeed = false;
        ui::SetUrlOpener(opener.function());

        testwizard::StderrCapture capture;
        QVERIFY(!ui::ShowHelpContents(nullptr, root.path()));
        QCOMPARE(capture.finish(),
                 QStringLiteral("Error: The help file ") + manual +
                     QStringLiteral(" could not be opened in the web browser.\n"));
        QCOMPARE(opener.opened.size(), 1);
    }

    // A folder of the manual's name is no manual.
    void folderIsNoManual() {
        QTemporaryDir root;
        QVERIFY(root.isValid());
        QVERIFY(QDir(root.path()).mkpath(QStringLiteral("Quillet.html")));
        RecordingOpener opener;
        ui::SetUrlOpener(opener.function());
        testwizard::StderrCapture capture;
        QVERIFY(!ui::ShowHelpContents(nullptr, root.path()));
        QVERIFY(capture.finish().startsWith(QStringLiteral("Error: The help file Quillet.html")));
        QVERIFY(opener.opened.isEmpty());
    }

    // The build puts the manual beside the program, and without a folder given the
    // running program's folder is searched.
    void manualOfTheBuild() {
        const QString program = QFileInfo(QStringLiteral(QUILLET_BINARY)).absolutePath();
        const QString manual = QDir(program).filePath(QStringLiteral("Quillet.html"));
        QCOMPARE(ui::FindHelpManual(program), manual);

        QFile file(manual);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString html = QString::fromUtf8(file.readAll());
        for (const char* part :
             {"<title>", "F5", "/NOGUI", "table.def", "Shift", "Quillet.conf", "LOG="})
            QVERIFY2(html.contains(QLatin1String(part)), part);

        RecordingOpener opener;
        ui::SetUrlOpener(opener.function());
        const auto previous = ui::SetUrlOpener(opener.function());
        QVERIFY(previous);
        QVERIFY(ui::ShowHelpContents(nullptr, program));
        QCOMPARE(opener.opened, QList<QUrl>{QUrl::fromLocalFile(manual)});

        // The test program's own folder holds no manual.
        testwizard::StderrCapture capture;
        QVERIFY(!ui::ShowHelpContents(nullptr));
        QVERIFY(capture.finish().contains(QCoreApplication::applicationDirPath()));
    }
};

QTEST_MAIN(TestDetailsHelp)

#include "test_details_help.moc"
