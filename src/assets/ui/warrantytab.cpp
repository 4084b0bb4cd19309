#include "assets/ui/warrantytab.h"

#include "core/dateformat.h"

#include <QFormLayout>
#include <QLabel>

namespace ui {

TWarrantyTabForm::TWarrantyTabForm(TDataSource* dataSource, QWidget* parent)
    : TEditTab(dataSource, parent) {
    setObjectName(QStringLiteral("WarrantyTabForm"));
    addEdit("DB_PurchaseDate", QStringLiteral("Expiry Date:"), QStringLiteral("MAINTRENEW"));
    addEdit("DB_Support", QStringLiteral("Support Contact:"), QStringLiteral("SUPPORTCONTACT"));
    LabelDateFormat = new QLabel(this);
    LabelDateFormat->setObjectName(QStringLiteral("LabelDateFormat"));
    formLayout()->addRow(QString(), LabelDateFormat);
}

// The format the date is written in.
void TWarrantyTabForm::showEvent(QShowEvent* event) {
    LabelDateFormat->setText(core::ShortDateFormat());
    TEditTab::showEvent(event);
}

} // namespace ui
