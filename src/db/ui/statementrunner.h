#pragma once

#include <QObject>

#include <functional>

class QLabel;
class QStatusBar;
class QToolButton;

namespace db::odbc {
class Statement;
}

namespace ui {

// Runs a statement's execution off the interface thread, so that the window keeps
// repainting while a statement works for seconds before its first row (a sort on a large
// table, a slow server). The caller waits in a local event loop and stays synchronous; the
// status bar says that a statement runs and offers Cancel, which cancels the statement
// where the driver allows it. The caller keeps the rest of the window disabled meanwhile.
class TStatementRunner : public QObject {
    Q_OBJECT
public:
    explicit TStatementRunner(QStatusBar* statusBar);
    ~TStatementRunner() override;

    // Runs `work` (which executes `statement`) on a worker thread and returns when it has
    // ended; an exception it threw is thrown here. A cancelled statement throws the
    // translated "The statement was cancelled.".
    void run(db::odbc::Statement& statement, const std::function<void()>& work);

    bool isRunning() const { return m_statement != nullptr; }
    // Asks the driver to stop the running statement; nothing when none runs or the
    // driver cannot cancel from another thread.
    void cancel();

private:
    void showRunning(bool running, bool cancellable);

    QStatusBar* m_statusBar;
    QLabel* LabelStatement;
    QToolButton* BtnCancelStatement;
    db::odbc::Statement* m_statement = nullptr;
    bool m_cancelled = false;
};

} // namespace ui
