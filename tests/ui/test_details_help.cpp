// Help contents: finding the HTML manual and handing it to the browser, with an opener
// that records the address instead of starting a browser.

#include "test_sqlwizard_helpers.h"

#include "db/ui/help.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

using namespace Qt::StringLiterals;
using testwizard::printedBy;

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
    void contents_data() {
        QTest::addColumn<QString>("files");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("manual");
        const QString beside = u"bin/Quillet.html"_s, shared = u"share/doc/quillet/Quillet.html"_s;
        QTest::newRow("beside the program") << beside << QString() << beside;
        QTest::newRow("in the shared folder") << shared << QString() << shared;
        QTest::newRow("both: the program's folder first")
            << beside + u' ' + shared << QString() << beside;
        QTest::newRow("missing") << QString() << QString() << QString();
        QTest::newRow("a folder of that name") << QString() << beside << QString();
    }
    void contents() {
        QFETCH(QString, files);
        QFETCH(QString, folder);
        QFETCH(QString, manual);
        QTemporaryDir root;
        const QDir dir(root.path());
        QVERIFY(dir.mkpath(u"bin"_s) && dir.mkpath(u"share/doc/quillet"_s));
        for (const QString& path : files.split(u' ', Qt::SkipEmptyParts)) {
            QFile file(dir.filePath(path));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        QVERIFY(folder.isEmpty() || dir.mkpath(folder));

        const QString program = dir.filePath(u"bin"_s);
        bool shown = false;
        const QString printed = printedBy([&] { shown = ui::ShowHelpContents(nullptr, program); });
        QCOMPARE(shown, !manual.isEmpty());
        QCOMPARE(opened,
                 shown ? QList<QUrl>{QUrl::fromLocalFile(dir.filePath(manual))} : QList<QUrl>());
        QCOMPARE(printed, shown ? QString()
                                : u"Error: The help file Quillet.html was not found.\n"
                                  u"It belongs in %1 or %2.\n"_s.arg(
                                      dir.filePath(u"bin/Quillet.html"_s),
                                      dir.filePath(u"share/doc/quillet/Quillet.html"_s)));
    }

    void browserDoesNotStart() {
        QTemporaryDir root;
        const QString manual = root.filePath(u"Quillet.html"_s);
        QFile file(manual);
        QVERIFY(file.open(QIODevice::WriteOnly));
        browserStarts = false;
        bool shown = true;
        QCOMPARE(
            printedBy([&] { shown = ui::ShowHelpContents(nullptr, root.path()); }),
            u"Error: The help file %1 could not be opened in the web browser.\n"_s.arg(manual));
        QVERIFY(!shown);
        QCOMPARE(opened.size(), 1);
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
        QVERIFY(printedBy([&] {
                    shown = ui::ShowHelpContents(nullptr);
                }).contains(QCoreApplication::applicationDirPath()));
        QVERIFY(!shown);
    }
};

QTEST_MAIN(TestDetailsHelp)

#include "test_details_help.moc"
