#include "core/ui/dialogbuttons.h"

#include "translation/translate.h"

#include <QBoxLayout>
#include <QDialog>
#include <QPushButton>

namespace ui {

DialogButtons CreateDialogButtons(QDialog* dialog, const QString& okCaption,
                                  const QString& cancelCaption, Qt::Orientation orientation) {
    using translation::Translate;
    auto* ok = new QPushButton(Translate(okCaption), dialog);
    ok->setObjectName(QStringLiteral("BtnOk"));
    ok->setDefault(true);
    auto* cancel = new QPushButton(Translate(cancelCaption), dialog);
    cancel->setObjectName(QStringLiteral("BtnCancel"));
    QObject::connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);
    const bool row = orientation == Qt::Horizontal;
    auto* layout = new QBoxLayout(row ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    if (row)
        layout->addStretch();
    layout->addWidget(ok);
    layout->addWidget(cancel);
    if (!row)
        layout->addStretch();
    return {ok, cancel, layout};
}

} // namespace ui
