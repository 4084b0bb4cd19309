#include "interchange/ui/statusprogress.h"

#include "core/ui/messages.h"

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QProgressBar>
#include <QStatusBar>

namespace interchange::ui {

QProgressBar* CreateStatusProgressBar(QMainWindow* window) {
    QStatusBar* statusBar = window->findChild<QStatusBar*>();
    if (!statusBar)
        return nullptr;
    auto* bar = new QProgressBar(statusBar);
    bar->setObjectName(QStringLiteral("StatusProgressBar"));
    bar->setMinimum(0);
    bar->setTextVisible(false);
    bar->setGeometry(statusBar->width() - 220, 4, 200, statusBar->height() - 8);
    bar->show();
    return bar;
}

StatusProgress::StatusProgress(QMainWindow* window, QLabel* statusLine)
    : m_window(window), m_statusLine(statusLine) {}

StatusProgress::~StatusProgress() {
    delete m_bar;
}

void StatusProgress::status(const QString& text) {
    if (!m_statusLine || m_statusLine->text() == text)
        return;
    m_statusLine->setText(text);
    m_statusLine->repaint();
}

void StatusProgress::setMaximum(qint64 maximum) {
    if (!m_bar)
        m_bar = CreateStatusProgressBar(m_window);
    m_maximum = maximum;
    m_shownPermille = -1;
    if (m_bar)
        m_bar->setMaximum(maximum > 0 ? 1000 : 0);
    setPosition(0);
}

void StatusProgress::setPosition(qint64 done) {
    if (!m_bar)
        return;
    // The bar counts in thousandths: a million steps would otherwise mean a million paints.
    const int permille = m_maximum > 0 ? int(qMin<qint64>(done, m_maximum) * 1000 / m_maximum) : 0;
    if (permille == m_shownPermille)
        return;
    m_shownPermille = permille;
    m_bar->setValue(permille);
    m_bar->repaint();
}

void StatusProgress::message(const QString& title, const QString& text, MessageIcon icon) {
    ::ui::ShowMessage(m_window,
                      icon == MessageIcon::Error ? QMessageBox::Critical : QMessageBox::NoIcon,
                      title, text);
}

void StatusProgress::beep() {
    QApplication::beep();
}

} // namespace interchange::ui
