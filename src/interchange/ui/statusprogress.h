#pragma once

#include "interchange/progress.h"

class QLabel;
class QMainWindow;
class QProgressBar;

namespace interchange::ui {

// A progress bar at the right end of the window's status bar (200 wide, 220 from the
// right edge, 4 from the top), shown; none when the window has no status bar. The caller
// sets its maximum, steps it and frees it.
QProgressBar* CreateStatusProgressBar(QMainWindow* window);

// The main window's status line and status-bar progress bar, painted at once: a transfer
// runs on the interface thread without returning to the event loop. Paints only when the
// text or the bar's filled part changes, so that painting stays a small part of the work.
class StatusProgress : public Progress {
public:
    StatusProgress(QMainWindow* window, QLabel* statusLine);
    ~StatusProgress() override;

    void status(const QString& text) override;
    void setMaximum(qint64 maximum) override;
    void setPosition(qint64 done) override;
    void message(const QString& title, const QString& text, MessageIcon icon) override;
    void beep() override;

private:
    QMainWindow* m_window;
    QLabel* m_statusLine;
    QProgressBar* m_bar = nullptr;
    qint64 m_maximum = 0;
    int m_shownPermille = -1;
};

} // namespace interchange::ui
