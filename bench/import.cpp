// Times one asset import, for scripts/bench import.
//
//   import --dsn NAME --file PATH [--date-format FORMAT] [--rows-per-statement N]
//          [--status-line]
//
// Imports the asset file into ASSETS of the data source, with "Continue import", and
// prints the time, the counts and the peak memory of this process. --status-line paints
// the progress on a real main window's status line and bar (offscreen), to measure what
// painting costs.

#include "core/dateformat.h"
#include "db/odbc/odbc.h"
#include "interchange/importer.h"
#include "interchange/ui/statusprogress.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>

#include <sys/resource.h>

#include <cstdio>
#include <memory>

namespace {

class Silent : public interchange::Progress {
public:
    void status(const QString&) override {}
    void setMaximum(qint64) override {}
    void setPosition(qint64) override {}
    void message(const QString& title, const QString& text, interchange::MessageIcon) override {
        std::printf("import: box %s: %s\n", qPrintable(title), qPrintable(text));
    }
    void beep() override {}
};

QString argument(const QStringList& arguments, const char* name, const QString& fallback = {}) {
    const qsizetype at = arguments.indexOf(QLatin1String(name));
    return at >= 0 && at + 1 < arguments.size() ? arguments[at + 1] : fallback;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    core::ApplyDateFormat(argument(arguments, "--date-format", QStringLiteral("yyyy-mm-dd")));
    interchange::ImportSettings settings;
    settings.FileName = argument(arguments, "--file");
    settings.Delimiter = QStringLiteral(";");
    settings.Node = QStringLiteral("UNSPECIFIED");
    const int rowsPerStatement = argument(arguments, "--rows-per-statement",
                                          QString::number(interchange::DefaultRowsPerStatement))
                                     .toInt();

    db::odbc::Connection connection;
    connection.open(QStringLiteral("DSN=") + argument(arguments, "--dsn"));
    QMainWindow window;
    auto* statusLine = new QLabel(&window);
    window.statusBar()->addWidget(statusLine, 1);
    window.resize(900, 600);
    std::unique_ptr<interchange::Progress> progress;
    if (arguments.contains(QStringLiteral("--status-line"))) {
        window.show();
        progress = std::make_unique<interchange::ui::StatusProgress>(&window, statusLine);
    } else {
        progress = std::make_unique<Silent>();
    }
    QElapsedTimer timer;
    timer.start();
    const interchange::ImportResult result =
        interchange::ImportAssets(connection, settings, *progress, rowsPerStatement);
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("import: seconds=%.3f imported=%lld errors=%lld peak-mib=%.1f\n", seconds,
                static_cast<long long>(result.imported), static_cast<long long>(result.errors),
                double(usage.ru_maxrss) / 1024.0);
    return 0;
}
