#pragma once

#include <QDialog>

class QPushButton;

namespace core {
class CommandTarget;
}
namespace db::odbc {
class Connection;
}

namespace ui {

class TEditForm;

// "Asset Details": a record editor in insert mode without its navigator. On show it
// starts a new record with the defaults and asks for its type (no type closes the dialog
// with Cancel); OK posts the record (a failure keeps the dialog open for a correction),
// Cancel drops it.
class TFormNewAsset : public QDialog {
    Q_OBJECT
public:
    TFormNewAsset(db::odbc::Connection& connection, core::CommandTarget& mainWindow,
                  QWidget* parent = nullptr);

    TEditForm* Editor() const { return m_editor; }
    // Starts the record; false when it could not be started (the dialog is then done).
    bool StartRecord();
    int exec() override;
    void done(int result) override;

private:
    TEditForm* m_editor;
    QWidget* pnEdit;
    QPushButton* BtnOk;
    QPushButton* BtnCancel;
    bool m_started = false;
};

} // namespace ui
