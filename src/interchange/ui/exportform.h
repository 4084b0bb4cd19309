#pragma once

#include "interchange/export.h"

#include <QDialog>

class QCheckBox;
class QFileDialog;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMainWindow;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QToolButton;

namespace db::odbc {
class Connection;
}

namespace ui {
class TGridForm;
}

namespace interchange::ui {

class DelimiterChoice;

// The export dialog: file, delimiter, which rows (assets only) and an optional header
// text. Shown, it takes the settings last stored for its kind of file; closed with OK, it
// stores them. Settings() is the dialog's result.
class TFormExport : public QDialog {
    Q_OBJECT
public:
    explicit TFormExport(bool typesMode, QWidget* parent = nullptr);

    const ExportSettings& Settings() const { return m_settings; }
    QStringList HeaderText() const;

    void BtnBrowseClick();
    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void FormShow();
    // False, after the box "Error", while the file name or the delimiter is missing.
    bool FormCloseQuery();
    void readControls();

    ExportSettings m_settings;

    QLabel* LabelFileName = nullptr;
    QLineEdit* EditFileName = nullptr;
    QToolButton* BtnBrowse = nullptr;
    QFileDialog* SaveDialog = nullptr;
    QLabel* LabelDelimiter = nullptr;
    DelimiterChoice* m_delimiter = nullptr;
    QLabel* LabelRows = nullptr;
    QGroupBox* GroupBoxRows = nullptr;
    QRadioButton* RB_all = nullptr;
    QRadioButton* RB_selected = nullptr;
    QCheckBox* CB_Header = nullptr;
    QPlainTextEdit* MemoHeader = nullptr;
    QPushButton* BtnOK = nullptr;
    QPushButton* BtnCancel = nullptr;
};

// The main window's export commands: the dialog, then, on OK, the export of the assets
// (all, or the rows selected in `grid`) or of the asset types, under the hourglass cursor
// with the status-bar progress bar.
void ExportAssetsWithDialog(QMainWindow* window, QLabel* statusLine,
                            db::odbc::Connection& connection, const ::ui::TGridForm& grid);
void ExportAssetTypesWithDialog(QMainWindow* window, QLabel* statusLine,
                                db::odbc::Connection& connection);

} // namespace interchange::ui
