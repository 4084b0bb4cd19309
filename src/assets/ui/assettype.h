#pragma once

#include "assets/tabledataset.h"

#include <QDialog>

class QLabel;
class QPushButton;

namespace db::odbc {
class Connection;
}

namespace ui {

class TDataSource;
class TDBCheckBox;
class TDBEdit;

// Edits one asset type of ASSETTYPES, or a new one: its name and the five flags that
// decide what the record editor asks for, each stored "True" or "False". A new type
// starts with every flag true.
//
// The record is read when the form shows; OK saves it (a failure is shown and the form
// stays open), Cancel drops the changes.
class TAssetTypeForm : public QDialog {
    Q_OBJECT
public:
    static constexpr int HelpContext = 900;

    TAssetTypeForm(db::odbc::Connection& connection, QWidget* parent = nullptr);
    ~TAssetTypeForm() override;

    // The type to edit; empty (the default) for a new type. Set before showing.
    void SetAssetType(const QString& name) { m_assetType = name; }
    const QString& AssetType() const { return m_assetType; }

    void FormShow();
    void BtnOkClick();
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void createControls();
    void openRecord();
    void reportFailure(const std::exception& error);

    QString m_assetType;
    assets::TableDataSet TypesTable;
    TDataSource* TypesDS = nullptr;

    QLabel* Label1 = nullptr;
    TDBEdit* DB_Name = nullptr;
    TDBCheckBox* DB_Node = nullptr;
    TDBCheckBox* DB_GeneralTab = nullptr;
    TDBCheckBox* DB_Purchase = nullptr;
    TDBCheckBox* DB_Warranty = nullptr;
    TDBCheckBox* DB_User = nullptr;
    QLabel* Label2 = nullptr;
    QPushButton* BtnOk = nullptr;
    QPushButton* BtnCancel = nullptr;
};

} // namespace ui
