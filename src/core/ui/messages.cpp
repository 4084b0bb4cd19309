#include "core/ui/messages.h"

#include <QQueue>

#include <cstdio>

namespace ui {

namespace {
bool unattended = false;
bool errorShown = false;
QQueue<QMessageBox::StandardButton> queuedAnswers;
} // namespace

void SetUnattended(bool value) {
    unattended = value;
}

bool IsUnattended() {
    return unattended;
}

void QueueUnattendedAnswers(const QList<QMessageBox::StandardButton>& answers) {
    queuedAnswers.append(answers);
}

bool ErrorWasShown() {
    return errorShown;
}

QMessageBox::StandardButton ShowMessage(QWidget* parent, QMessageBox::Icon icon,
                                        const QString& title, const QString& text,
                                        QMessageBox::StandardButtons buttons,
                                        QMessageBox::StandardButton defaultButton) {
    if (icon == QMessageBox::Critical)
        errorShown = true;
    if (unattended) {
        const QByteArray line = (title + QStringLiteral(": ") + text).toLocal8Bit();
        std::fprintf(stderr, "%s\n", line.constData());
        std::fflush(stderr);
        return queuedAnswers.isEmpty() ? defaultButton : queuedAnswers.dequeue();
    }
    QMessageBox box(icon, title, text, buttons, parent);
    box.setDefaultButton(defaultButton);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

void ShowError(QWidget* parent, const QString& title, const QString& text) {
    ShowMessage(parent, QMessageBox::Critical, title, text);
}

} // namespace ui
