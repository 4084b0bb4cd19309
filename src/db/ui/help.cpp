#include "db/ui/help.h"

#include "core/ui/messages.h"
#include "translation/translate.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include <utility>

namespace ui {

using translation::Translate;

namespace {

UrlOpener& currentOpener() {
    static UrlOpener opener;
    return opener;
}

// A clean absolute path of `relative` seen from `directory`; above the root is the root.
QString resolvedPath(const QString& directory, const QString& relative) {
    QString path = QDir::cleanPath(QDir(directory).absoluteFilePath(relative));
    while (path.startsWith(QLatin1String("/../")))
        path.remove(0, 3);
    return path;
}

bool openUrl(const QUrl& url) {
    const UrlOpener& opener = currentOpener();
    return opener ? opener(url) : QDesktopServices::openUrl(url);
}

} // namespace

UrlOpener SetUrlOpener(UrlOpener opener) {
    return std::exchange(currentOpener(), opener);
}

QStringList HelpManualCandidates(const QString& programDirectory) {
    const QString name = QLatin1String(HelpManualFileName);
    return {resolvedPath(programDirectory, name),
            resolvedPath(programDirectory, QStringLiteral("../share/doc/quillet/") + name)};
}

QString FindHelpManual(const QString& programDirectory) {
    for (const QString& candidate : HelpManualCandidates(programDirectory)) {
        if (QFileInfo(candidate).isFile())
            return candidate;
    }
    return {};
}

bool ShowHelpContents(QWidget* parent, const QString& programDirectory) {
    const QString directory =
        programDirectory.isEmpty() ? QCoreApplication::applicationDirPath() : programDirectory;
    const QString manual = FindHelpManual(directory);
    if (manual.isEmpty()) {
        ShowError(
            parent, Translate(QStringLiteral("Error")),
            Translate(QStringLiteral("The help file $FILENAME$ was not found.\\n"
                                     "It belongs in $DETAILS$."),
                      0,
                      {{QStringLiteral("$FILENAME$"), QLatin1String(HelpManualFileName)},
                       {QStringLiteral("$DETAILS$"),
                        HelpManualCandidates(directory).join(Translate(QStringLiteral(" or ")))}}));
        return false;
    }
    if (!openUrl(QUrl::fromLocalFile(manual))) {
        ShowError(parent, Translate(QStringLiteral("Error")),
                  Translate(QStringLiteral("The help file $FILENAME$ could not be opened in "
                                           "the web browser."),
                            0, {{QStringLiteral("$FILENAME$"), manual}}));
        return false;
    }
    return true;
}

} // namespace ui
