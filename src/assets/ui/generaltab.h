#pragma once

#include "assets/ui/edittab.h"

namespace ui {

// The General page: description, tag, manufacturer, model, serial number, location and
// department. Clearing leaves the department as it is.
class TGeneralTabForm : public TEditTab {
    Q_OBJECT
public:
    TGeneralTabForm(TDataSource* dataSource, QWidget* parent);
};

} // namespace ui
