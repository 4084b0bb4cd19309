#pragma once

#include <QMessageBox>

namespace ui {

// Every message box of the program goes through here. In an unattended run a box
// becomes one line "TITLE: TEXT" on stderr and is answered with its default button.
void SetUnattended(bool unattended);
bool IsUnattended();

// For tests of unattended runs: the next boxes are answered with these buttons, one each
// in order, instead of with their default buttons.
void QueueUnattendedAnswers(const QList<QMessageBox::StandardButton>& answers);

// True once an error box (a critical one) has been shown.
bool ErrorWasShown();

QMessageBox::StandardButton
ShowMessage(QWidget* parent, QMessageBox::Icon icon, const QString& title, const QString& text,
            QMessageBox::StandardButtons buttons = QMessageBox::Ok,
            QMessageBox::StandardButton defaultButton = QMessageBox::Ok);

// The box of a failed operation: OK only, the title already translated by the caller.
void ShowError(QWidget* parent, const QString& title, const QString& text);

} // namespace ui
