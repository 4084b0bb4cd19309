#pragma once

#include "assets/ui/edittab.h"

class QLabel;

namespace ui {

// The Purchase page: date, purchaser, supplier, value, size and quantity. A purchase date
// that is not a date stops the post.
class TPurchaseTabForm : public TEditTab {
    Q_OBJECT
public:
    TPurchaseTabForm(TDataSource* dataSource, QWidget* parent);
    bool ValidateTab(QString& error) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    TDBEdit* DB_PurchaseDate;
    QLabel* LabelDateFormat;
};

} // namespace ui
