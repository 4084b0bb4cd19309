#pragma once

// Help contents: the HTML manual Quillet.html, opened in the desktop's web browser.

#include <QString>
#include <QStringList>

#include <functional>

class QUrl;
class QWidget;

namespace ui {

inline constexpr char HelpManualFileName[] = "Quillet.html";

// Opens a URL outside the program; true when it was handed over.
using UrlOpener = std::function<bool(const QUrl&)>;

// Replaces the opener (QDesktopServices::openUrl by default); an empty function restores
// the default. Returns the opener in use before.
UrlOpener SetUrlOpener(UrlOpener opener);

// Where the manual is looked for, in order: the program's folder, then
// ../share/doc/quillet beside it.
QStringList HelpManualCandidates(const QString& programDirectory);

// The first candidate that exists, or an empty string.
QString FindHelpManual(const QString& programDirectory);

// Opens the manual of the program in `programDirectory` (by default the running
// program's folder). A missing manual, or a browser that cannot be started, is reported in
// an error box. Returns true when the manual was handed to the browser.
bool ShowHelpContents(QWidget* parent, const QString& programDirectory = QString());

} // namespace ui
