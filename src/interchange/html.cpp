#include "interchange/html.h"

#include <QFile>
#include <QSaveFile>

#include <stdexcept>

namespace interchange {

namespace {

const QLatin1String LineEnd("\r\n");

QString joinedLines(const QStringList& lines) {
    QString text;
    for (const QString& line : lines)
        text += line + LineEnd;
    return text;
}

QString cellLine(const QString& color, const QString& size, const QString& text) {
    return QStringLiteral("<TD BGCOLOR=\"%1\"%2 ALIGN=\"LEFT\" VALIGN=\"TOP\">%3</TD>")
        .arg(color, size, text);
}

} // namespace

QString ColorToHtmlColor(quint32 color) {
    const QString digits = QStringLiteral("%1").arg(color, 6, 16, QLatin1Char('0')).toUpper();
    return QLatin1Char('#') + digits.mid(4, 2) + digits.mid(2, 2) + digits.mid(0, 2);
}

QString HtmlHeaderRow(const QStringList& fieldNames, const QString& color) {
    QStringList lines{QStringLiteral("<TR>")};
    for (const QString& name : fieldNames)
        lines << cellLine(color, QString(), name);
    lines << QStringLiteral("</TR>");
    return joinedLines(lines);
}

QString HtmlBodyRow(const std::vector<HtmlCell>& cells, const QString& color) {
    QStringList lines{QStringLiteral("<TR>")};
    for (const HtmlCell& cell : cells)
        lines << cellLine(
            color, QStringLiteral(" WIDTH=\"%1\" HEIGHT=\"%2\"").arg(cell.width).arg(cell.height),
            cell.text.isEmpty() ? QStringLiteral("&nbsp;") : cell.text);
    lines << QStringLiteral("</TR>");
    return joinedLines(lines);
}

QString HtmlPage(const QString& headerRows, const QString& bodyRows, int width, int height) {
    return joinedLines({QStringLiteral("<HTML>"), QStringLiteral("<BODY>"),
                        QStringLiteral("<TABLE CELLPADDING=\"1\" CELLSPACING=\"1\" WIDTH=") +
                            QString::number(width) + QStringLiteral(" HEIGHT=") +
                            QString::number(height) + QStringLiteral(" BORDER=\"1\">"),
                        headerRows, bodyRows, QStringLiteral("</TABLE>"), QStringLiteral("</BODY>"),
                        QStringLiteral("</HTML>")});
}

std::optional<QString> ProcessHtmlTemplate(const QString& templateFileName,
                                           const QString& placeholder, const QString& replacement) {
    QFile file(templateFileName);
    if (!file.exists())
        return std::nullopt;
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error(QStringLiteral("Cannot open file \"%1\". %2")
                                     .arg(templateFileName, file.errorString())
                                     .toStdString());
    QString text = QString::fromUtf8(file.readAll());
    if (!placeholder.isEmpty())
        text.replace(placeholder, replacement, Qt::CaseInsensitive);
    return text;
}

void ProcessHtmlTemplate(const QString& templateFileName, const QString& outputFileName,
                         const QString& placeholder, const QString& replacement) {
    if (const auto text = ProcessHtmlTemplate(templateFileName, placeholder, replacement))
        SaveHtmlText(outputFileName, *text);
}

void SaveHtmlText(const QString& fileName, const QString& text) {
    QSaveFile file(fileName);
    const QByteArray bytes = text.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw std::runtime_error(QStringLiteral("Cannot write file \"%1\". %2")
                                     .arg(fileName, file.errorString())
                                     .toStdString());
}

} // namespace interchange
