#include "assets/rowstext.h"

#include "assets/resulttablemodel.h"

#include <QAbstractItemModel>

namespace assets {

namespace {

constexpr qsizetype ProgressRows = 4096;

void appendValue(QString& text, const QString& value) {
    const qsizetype start = text.size();
    text += value;
    for (qsizetype i = start; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r'))
            text[i] = QLatin1Char(' ');
    }
}

} // namespace

QString RowsAsText(const QAbstractItemModel& model, const std::vector<int>& rows,
                   const std::vector<int>& columns,
                   const std::function<bool(qsizetype rowsDone)>& progress) {
    // A query result gives its values without a QVariant for each.
    const auto* result = qobject_cast<const ResultTableModel*>(&model);
    const auto valueText = [&](int row, int column) {
        return result ? result->displayText(row, column)
                      : model.data(model.index(row, column), Qt::EditRole).toString();
    };
    QString text;
    for (size_t i = 0; i < columns.size(); ++i) {
        if (i > 0)
            text += QLatin1Char('\t');
        appendValue(text, model.headerData(columns[i], Qt::Horizontal).toString());
    }
    text += QLatin1Char('\n');
    qsizetype done = 0;
    for (const int row : rows) {
        for (size_t i = 0; i < columns.size(); ++i) {
            if (i > 0)
                text += QLatin1Char('\t');
            appendValue(text, valueText(row, columns[i]));
        }
        text += QLatin1Char('\n');
        if (++done % ProgressRows == 0 && progress && !progress(done))
            return QString();
    }
    return text;
}

} // namespace assets
