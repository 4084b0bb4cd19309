#pragma once

#include <QVariant>

namespace core {

// Child windows ask the main window for work with these numbered commands. The call is
// synchronous: the sender gets the main window's answer back.
enum Command : int {
    CMD_STATUS_TEXT = 10101, // argument: the text (QString) to show in the status bar
    CMD_REQUERY = 10102,     // argument: 1 reopen, 2 execute again, other values refresh
    CMD_SYNC_EDITOR = 10103, // the record editor follows the current row's ID
    CMD_OPEN_EDITOR = 10104, // opens the record editor on an asset query
    CMD_EXECUTE_SQL = 10105, // argument: a statement; answer: rows affected, negative on failure
};

class CommandTarget {
public:
    virtual ~CommandTarget() = default;
    virtual qint64 DispatchCommand(int command, const QVariant& argument) = 0;
    // The database's message for the last CMD_EXECUTE_SQL that failed.
    virtual QString LastCommandError() const { return {}; }
};

} // namespace core
