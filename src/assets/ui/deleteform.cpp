#include "assets/ui/deleteform.h"

#include "core/ui/dialogbuttons.h"
#include "core/ui/messages.h"
#include "translation/translate.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QShowEvent>
#include <QVBoxLayout>

namespace ui {

using translation::Translate;

TDelForm::TDelForm(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint) {
    setObjectName(QStringLiteral("DelForm"));
    setWindowTitle(Translate(QStringLiteral("Remove Assets")));
    setProperty("helpContext", HelpContext);
    setFixedSize(292, 168);

    Label1 = new QLabel(Translate(QStringLiteral("Which rows do you want to remove?")), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    GroupBox1 = new QGroupBox(this);
    GroupBox1->setObjectName(QStringLiteral("GroupBox1"));
    RB_Sel = new QRadioButton(Translate(QStringLiteral("&Selected rows only")), GroupBox1);
    RB_Sel->setObjectName(QStringLiteral("RB_Sel"));
    RB_Sel->setChecked(true);
    RB_All = new QRadioButton(Translate(QStringLiteral("&All rows")), GroupBox1);
    RB_All->setObjectName(QStringLiteral("RB_All"));
    auto* choices = new QVBoxLayout(GroupBox1);
    choices->addWidget(RB_Sel);
    choices->addWidget(RB_All);

    const DialogButtons buttons =
        CreateDialogButtons(this, QStringLiteral("&Remove"), QStringLiteral("&Cancel"));
    BtnOk = buttons.ok;
    BtnCancel = buttons.cancel;
    connect(BtnOk, &QPushButton::clicked, this, &TDelForm::BtnOkClick);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Label1);
    layout->addWidget(GroupBox1);
    layout->addLayout(buttons.layout);
}

void TDelForm::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    // In the middle of the screen, wherever the main window is.
    if (const QScreen* shownOn = screen(); shownOn && !event->spontaneous())
        move(shownOn->availableGeometry().center() - rect().center());
}

void TDelForm::BtnOkClick() {
    const QMessageBox::StandardButton answer =
        ShowMessage(this, QMessageBox::Question, windowTitle(),
                    Translate(QStringLiteral("Are you sure you want to remove these Assets?")),
                    QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes);
    done(answer == QMessageBox::Yes ? Accepted : Rejected);
}

void TDelForm::done(int result) {
    m_removeAll = RB_All->isChecked();
    QDialog::done(result);
}

} // namespace ui
