#pragma once

#include "assets/ui/edittab.h"

class QLabel;

namespace ui {

// The Warranty/Maintenance page: expiry date and support contact.
class TWarrantyTabForm : public TEditTab {
    Q_OBJECT
public:
    TWarrantyTabForm(TDataSource* dataSource, QWidget* parent);

protected:
    void showEvent(QShowEvent* event) override;

private:
    QLabel* LabelDateFormat;
};

} // namespace ui
