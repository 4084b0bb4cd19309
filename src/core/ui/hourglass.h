#pragma once

#include <QApplication>

namespace ui {

// The hourglass cursor for a long operation, restored on every way out of it.
class HourglassCursor {
public:
    HourglassCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~HourglassCursor() { QApplication::restoreOverrideCursor(); }
    HourglassCursor(const HourglassCursor&) = delete;
    HourglassCursor& operator=(const HourglassCursor&) = delete;
};

} // namespace ui
