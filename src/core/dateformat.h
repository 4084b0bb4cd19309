#pragma once

#include <QChar>

namespace core {

// Process-wide date and time separators. They start as the system locale's and the
// date separator may be replaced by the preferences.
QChar DateSeparator();
void SetDateSeparator(QChar separator);
QChar TimeSeparator();

} // namespace core
