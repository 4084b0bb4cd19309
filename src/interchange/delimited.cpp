#include "interchange/delimited.h"

namespace interchange {

void SplitDelimited(const QString& text, const QString& delimiter, QStringList& list) {
    list.clear();
    if (text.isEmpty() || delimiter.isEmpty())
        return;
    qsizetype start = 0;
    for (qsizetype found = text.indexOf(delimiter); found >= 0;
         found = text.indexOf(delimiter, start)) {
        list.append(text.mid(start, found - start));
        start = found + delimiter.size();
    }
    list.append(text.mid(start));
}

namespace {
const QString ItemDelimiters[] = {QStringLiteral("\t"), QStringLiteral(";"), QStringLiteral(","),
                                  QStringLiteral(" ")};
}

QString DelimiterOfItem(int item, const QString& otherText) {
    if (item >= DelimTab && item < DelimOther)
        return ItemDelimiters[item];
    return otherText;
}

int ItemOfDelimiter(const QString& delimiter) {
    for (int item = DelimTab; item < DelimOther; ++item)
        if (delimiter == ItemDelimiters[item])
            return item;
    return DelimOther;
}

QString InterchangeSettingsKey(bool typesMode) {
    return typesMode ? QStringLiteral("TypesExportImport") : QStringLiteral("ExportImport");
}

QString FileDialogFilter(const QString& namesAndPatterns) {
    const QStringList pieces = namesAndPatterns.split(QLatin1Char('|'));
    QStringList filters;
    for (qsizetype index = 0; index + 1 < pieces.size(); index += 2)
        filters << QStringLiteral("%1 (%2)").arg(pieces[index], pieces[index + 1]);
    return filters.join(QStringLiteral(";;"));
}

} // namespace interchange
