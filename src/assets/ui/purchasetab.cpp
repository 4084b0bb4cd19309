#include "assets/ui/purchasetab.h"

#include "core/conversions.h"
#include "core/dateformat.h"
#include "translation/translate.h"

#include <QFormLayout>
#include <QLabel>

namespace ui {

TPurchaseTabForm::TPurchaseTabForm(TDataSource* dataSource, QWidget* parent)
    : TEditTab(dataSource, parent) {
    setObjectName(QStringLiteral("PurchaseTabForm"));
    DB_PurchaseDate =
        addEdit("DB_PurchaseDate", QStringLiteral("Date:"), QStringLiteral("PURCHDATE"));
    addEdit("DB_Purchaser", QStringLiteral("Purchaser:"), QStringLiteral("PURCHASER"));
    addEdit("DB_Supplier", QStringLiteral("Supplier:"), QStringLiteral("SUPPLIER"));
    addEdit("DB_ItemValue", QStringLiteral("Item Value:"), QStringLiteral("ITEMVALUE"));
    addEdit("DB_Size", QStringLiteral("Size:"), QStringLiteral("ITEMSIZE"));
    addEdit("DB_QTY", QStringLiteral("Quantity:"), QStringLiteral("QTY"));
    LabelDateFormat = new QLabel(this);
    LabelDateFormat->setObjectName(QStringLiteral("LabelDateFormat"));
    formLayout()->addRow(QString(), LabelDateFormat);
}

bool TPurchaseTabForm::ValidateTab(QString& error) {
    const QString text = DB_PurchaseDate->text();
    if (text.isEmpty() ||
        core::TryStrToDate(text, core::CurrentDateSettings(), QDate::currentDate().year()))
        return true;
    error = translation::Translate(QStringLiteral("Invalid Purchase Date format."));
    return false;
}

void TPurchaseTabForm::showEvent(QShowEvent* event) {
    LabelDateFormat->setText(core::ShortDateFormat());
    TEditTab::showEvent(event);
}

} // namespace ui
