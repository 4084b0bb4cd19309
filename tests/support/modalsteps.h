#pragma once

// Drives modal dialogs from a test: each time a modal dialog is up, the next step runs on
// it. A step is expected to close its dialog (or open a nested one). A dialog that comes
// up when no step is left is rejected, so that a test fails instead of hanging. Header
// only; for tests that link the widgets.

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <deque>
#include <functional>

namespace testsupport {

class ModalSteps {
public:
    using Step = std::function<void(QWidget& dialog)>;

    explicit ModalSteps(std::initializer_list<Step> steps) : m_steps(steps) {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { runNext(); });
        m_timer.start(5);
    }
    // True when every step has run and no dialog came up after the last one.
    bool done() const { return m_steps.empty() && m_unexpected == 0; }

private:
    void runNext() {
        QWidget* dialog = QApplication::activeModalWidget();
        if (!dialog || !dialog->isVisible())
            return;
        if (m_steps.empty()) {
            ++m_unexpected;
            dialog->close();
            return;
        }
        const Step step = m_steps.front();
        m_steps.pop_front();
        step(*dialog);
    }

    std::deque<Step> m_steps;
    QTimer m_timer;
    int m_unexpected = 0;
};

} // namespace testsupport
