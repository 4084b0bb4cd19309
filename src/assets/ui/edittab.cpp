#include "assets/ui/edittab.h"

#include "translation/translate.h"

#include <QFormLayout>
#include <QLabel>

namespace ui {

TEditTab::TEditTab(TDataSource* dataSource, QWidget* parent)
    : QWidget(parent), m_dataSource(dataSource), m_form(new QFormLayout(this)) {
    m_form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
}

TDBEdit* TEditTab::addEdit(const char* name, const QString& caption, const QString& field,
                           bool clears) {
    auto* edit = new TDBEdit(m_dataSource, field, this);
    edit->setObjectName(QLatin1String(name));
    auto* label = new QLabel(translation::Translate(caption), this);
    label->setBuddy(edit);
    m_form->addRow(label, edit);
    if (clears)
        m_clearedFields << field;
    return edit;
}

void TEditTab::clearFields(const QStringList& fields) {
    assets::TableDataSet& dataSet = m_dataSource->DataSet();
    for (const QString& field : fields)
        if (dataSet.hasField(field))
            dataSet.setNull(field);
    m_dataSource->DataChanged();
}

void TEditTab::ClearTab() {
    clearFields(m_clearedFields);
}

bool TEditTab::ValidateTab(QString&) {
    return true;
}

} // namespace ui
