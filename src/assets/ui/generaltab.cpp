#include "assets/ui/generaltab.h"

namespace ui {

TGeneralTabForm::TGeneralTabForm(TDataSource* dataSource, QWidget* parent)
    : TEditTab(dataSource, parent) {
    setObjectName(QStringLiteral("GeneralTabForm"));
    addEdit("DB_Description", QStringLiteral("Description:"), QStringLiteral("INFO"));
    addEdit("DB_Tag", QStringLiteral("Asset Tag ID:"), QStringLiteral("ASSETID"));
    addEdit("DB_Manufacturer", QStringLiteral("Manufacturer name:"),
            QStringLiteral("MANUFACTURER"));
    addEdit("DB_Model", QStringLiteral("Model:"), QStringLiteral("MODEL"));
    addEdit("DB_SerNum", QStringLiteral("Serial Number:"), QStringLiteral("SERIALNUM"));
    addEdit("DB_Location", QStringLiteral("Location:"), QStringLiteral("ASLOCATION"));
    addEdit("DB_Dept", QStringLiteral("Department:"), QStringLiteral("DEPT"), false);
}

} // namespace ui
