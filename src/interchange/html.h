#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace interchange {

// The text pieces of the grid's HTML output. Lines end in CR LF, each line followed by
// one; cell texts are written as they are, without escaping.

// "#RRGGBB" of a colour value held as 0x00BBGGRR: the value as at least six upper-case
// hexadecimal digits, whose digits 5-6, 3-4 and 1-2 are taken in that order. A value with
// more digits (a system colour constant) is taken the same way.
QString ColorToHtmlColor(quint32 color);

// The header row: a cell per field name on the background `color` ("#RRGGBB").
QString HtmlHeaderRow(const QStringList& fieldNames, const QString& color);

struct HtmlCell {
    QString text; // empty shows as "&nbsp;"
    int width = 0;
    int height = 0;
};
// One body row: a cell per value, with its pixel size, on the background `color`.
QString HtmlBodyRow(const std::vector<HtmlCell>& cells, const QString& color);

// A whole page holding one table of the given pixel size with these rows.
QString HtmlPage(const QString& headerRows, const QString& bodyRows, int width, int height);

// The text of a template file with every occurrence of `placeholder` replaced, ignoring
// case; none when the file does not exist. Throws std::runtime_error when it exists but
// cannot be read.
std::optional<QString> ProcessHtmlTemplate(const QString& templateFileName,
                                           const QString& placeholder, const QString& replacement);
// The same, written to `outputFileName`; nothing is written when the template does not
// exist.
void ProcessHtmlTemplate(const QString& templateFileName, const QString& outputFileName,
                         const QString& placeholder, const QString& replacement);

// Writes text as UTF-8, replacing the file; throws std::runtime_error on failure.
void SaveHtmlText(const QString& fileName, const QString& text);

} // namespace interchange
