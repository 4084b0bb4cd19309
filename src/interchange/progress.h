#pragma once

#include <QString>

namespace interchange {

enum class MessageIcon { None, Error };

// What a long transfer tells its user while it runs, and the boxes it shows. The main
// window paints its status line and a status-bar progress bar; an unattended run turns the
// boxes into lines on stderr. The transfer itself writes the log.
class Progress {
public:
    virtual ~Progress() = default;
    // The status line.
    virtual void status(const QString& text) = 0;
    // A bar from 0 to maximum (0: the amount is unknown), then the amount done.
    virtual void setMaximum(qint64 maximum) = 0;
    virtual void setPosition(qint64 done) = 0;
    virtual void message(const QString& title, const QString& text, MessageIcon icon) = 0;
    virtual void beep() = 0;
};

} // namespace interchange
