#pragma once

#include <QDialog>

#include <optional>

class QGroupBox;
class QLabel;
class QListWidget;
class QPushButton;

namespace core {
class CommandTarget;
}

namespace db::odbc {
class Connection;
}

namespace ui {

// The asset types of ASSETTYPES by name, as the type picker of a new record or, in
// manager mode, to add, edit and delete types (a type goes with all assets of its type).
//
// Picker: OK takes the selected name (SelectedType) and refuses to close without one.
// Manager (SetManagerMode): no Cancel, OK reads "OK" and closes with Rejected when no
// type is selected. A double click on a name is OK.
//
// Deleting runs its statements through the main window (CMD_EXECUTE_SQL) in one
// transaction of `connection`, the main window's connection.
class TAssetTypeListForm : public QDialog {
    Q_OBJECT
public:
    static constexpr int HelpContext = 700;
    static constexpr const char* AssetTypeListQuery =
        "select ASSETTYPE from ASSETTYPES order by  ASSETTYPE";

    TAssetTypeListForm(db::odbc::Connection& connection, core::CommandTarget& mainWindow,
                       QWidget* parent = nullptr);

    void SetManagerMode();
    // The name chosen with OK; empty until then.
    const QString& SelectedType() const { return m_selectedType; }

    // Reads the names again; a failure is shown and leaves the list empty.
    void FillList();
    void BtnOkClick();
    void TypeListDblClick();
    void BtnAddAssetTypeClick();
    void BtnEditAssetTypeClick();
    void BtnDeleteAssetTypeClick();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void createControls();
    // The selected name; none when no name is selected.
    std::optional<QString> selectedName() const;
    bool editType(const QString& name);
    void deleteType(const QString& name);
    // The status text with both counts, and a warning when assets went.
    void reportDeleted(qint64 assets, qint64 types);
    // Runs a statement through the main window: rows affected, or -1 after showing the
    // main window's error under `errorTitle`.
    qint64 executeShowingError(const QString& sql, const QString& errorTitle);

    db::odbc::Connection& m_connection;
    core::CommandTarget& m_mainWindow;
    QString m_selectedType;

    QLabel* Label1 = nullptr;
    QListWidget* TypeList = nullptr;
    QPushButton* BtnOk = nullptr;
    QPushButton* BtnCancel = nullptr;
    QGroupBox* GroupBox1 = nullptr;
    QPushButton* BitBtn4 = nullptr;
    QPushButton* BitBtn5 = nullptr;
    QPushButton* BitBtn6 = nullptr;
};

} // namespace ui
