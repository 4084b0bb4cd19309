#pragma once

#include <QApplication>

namespace ui {

// Shows the hourglass cursor for a long operation and restores the previous one on every
// way out of it.
class HourglassCursor {
public:
    HourglassCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~HourglassCursor() { QApplication::restoreOverrideCursor(); }
    HourglassCursor(const HourglassCursor&) = delete;
    HourglassCursor& operator=(const HourglassCursor&) = delete;
};

} // namespace ui
