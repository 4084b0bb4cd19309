// Help contents: finding the HTML manual and handing it to the browser, with an opener
// that records the address instead of starting a browser.

#include "core/ui/messages.h"
#include "db/ui/help.h"
#include "support/testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

using namespace Qt::StringLiterals;
using testsupport::PrintedBy;

class TestDetailsHelp : public QObject {
    Q_OBJECT

    QList<QUrl> opened;
    bool browserStarts = true;

private Q_SLOTS:
    void init() {
        ui::SetUnattended(true);
        opened.clear();
        browserStarts = true;
        ui::SetUrlOpener([this](const QUrl& url) {
            opened << url;
            return browserStarts;
        });
    }
    void cleanup() {
        ui::SetUnattended(false);
        ui::SetUrlOpener({});
    }

    // Above the root is the root.
    void candidatesAtTheRoot() {
        QCOMPARE(ui::HelpManualCandidates(u"/"_s),
                 QStringList({u"/Quillet.html"_s, u"/share/doc/quillet/Quillet.html"_s}));
    }

    // Where the manual is: the file handed to the browser, or an error box and no browser.
    // A file name ending in "/" is a folder.
    void contents_data() {
        QTest::addColumn<QString>("files");
        QTest::addColumn<bool>("browserStarts");
        QTest::addColumn<QString>("manual");
        QTest::addColumn<QString>("printed"); // %1, %2: the places looked at, %3: the manual
        const QString beside = u"bin/Quillet.html"_s, shared = u"share/doc/quillet/Quillet.html"_s;
        const QString missing =
            u"Error: The help file Quillet.html was not found.\nIt belongs in %1 or %2.\n"_s;
        QTest::newRow("beside the program") << beside << true << beside << QString();
        QTest::newRow("in the shared folder") << shared << true << shared << QString();
        QTest::newRow("both: the program's folder first")
            << beside + u' ' + shared << true << beside << QString();
        QTest::newRow("missing") << QString() << true << QString() << missing;
        QTest::newRow("a folder of that name") << beside + u'/' << true << QString() << missing;
        QTest::newRow("browser does not start")
            << beside << false << beside
            << u"Error: The help file %3 could not be opened in the web browser.\n"_s;
    }
    void contents() {
        QFETCH(QString, files);
        QFETCH(QString, manual);
        QFETCH(QString, printed);
        QFETCH(bool, browserStarts);
        this->browserStarts = browserStarts;
        QTemporaryDir root;
        const QDir dir(root.path());
        QVERIFY(dir.mkpath(u"bin"_s) && dir.mkpath(u"share/doc/quillet"_s));
        for (const QString& path : files.split(u' ', Qt::SkipEmptyParts))
            QVERIFY(path.endsWith(u'/') ? dir.mkpath(path)
                                        : testsupport::WriteFile(dir.filePath(path), {}));
        const QString expected =
            QString(printed)
                .replace(u"%1"_s, dir.filePath(u"bin/Quillet.html"_s))
                .replace(u"%2"_s, dir.filePath(u"share/doc/quillet/Quillet.html"_s))
                .replace(u"%3"_s, dir.filePath(manual));
        bool shown = false;
        QCOMPARE(PrintedBy([&] { shown = ui::ShowHelpContents(nullptr, dir.filePath(u"bin"_s)); }),
                 expected);
        QCOMPARE(shown, printed.isEmpty());
        QCOMPARE(opened, manual.isEmpty() ? QList<QUrl>()
                                          : QList<QUrl>{QUrl::fromLocalFile(dir.filePath(manual))});
    }

    // The build puts the manual beside the program; without a folder given the running
    // program's own folder, which holds none, is searched.
    void manualOfTheBuild() {
        const QString program = QFileInfo(QStringLiteral(QUILLET_BINARY)).absolutePath();
        const QString manual = QDir(program).filePath(u"Quillet.html"_s);
        QFile file(manual);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray html = file.readAll();
        for (const char* part :
             {"<title>", "F5", "/NOGUI", "table.def", "Shift", "Quillet.conf", "LOG="})
            QVERIFY2(html.contains(part), part);
        QVERIFY(ui::ShowHelpContents(nullptr, program));
        QCOMPARE(opened, QList<QUrl>{QUrl::fromLocalFile(manual)});

        bool shown = true;
        QVERIFY(PrintedBy([&] {
                    shown = ui::ShowHelpContents(nullptr);
                }).contains(QCoreApplication::applicationDirPath()));
        QVERIFY(!shown);
    }
};

QTEST_MAIN(TestDetailsHelp)

#include "test_details_help.moc"
