#include "assets/removal.h"

#include "assets/resulttablemodel.h"
#include "translation/translate.h"

#include <QStringList>

namespace assets {

namespace {

[[noreturn]] void refuse(const QString& englishText) {
    throw RemovalError(translation::Translate(englishText).toStdString());
}

} // namespace

QString RemovalStatement(const ResultTableModel* result, bool removeAll,
                         const std::vector<int>& rows) {
    const int idField = result ? result->fieldIndex(QStringLiteral("ID")) : -1;
    if (idField < 0)
        refuse(QStringLiteral("ID field is not defined."));
    QString statement = QStringLiteral("delete from ASSETS");
    if (removeAll)
        return statement;
    if (rows.empty())
        refuse(QStringLiteral("No records have been selected"));
    return statement + QStringLiteral(" where ID in (") + BareIdList(*result, idField, rows) +
           QLatin1Char(')');
}

QString BareIdList(const ResultTableModel& result, int idField, const std::vector<int>& rows) {
    QStringList keys;
    for (const int row : rows)
        keys << QString::fromUtf8(result.value(row, idField));
    return keys.join(QStringLiteral(", "));
}

} // namespace assets
