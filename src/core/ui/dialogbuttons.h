#pragma once

#include <QString>
#include <Qt>

class QBoxLayout;
class QDialog;
class QPushButton;

namespace ui {

// A dialog's "BtnOk" (its default button) and "BtnCancel" (which rejects the dialog),
// captioned with the translated texts, side by side at the right or one above the other
// at the top. What OK does is the caller's.
struct DialogButtons {
    QPushButton* ok;
    QPushButton* cancel;
    QBoxLayout* layout;
};

DialogButtons CreateDialogButtons(QDialog* dialog, const QString& okCaption,
                                  const QString& cancelCaption,
                                  Qt::Orientation orientation = Qt::Horizontal);

} // namespace ui
