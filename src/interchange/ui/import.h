#pragma once

#include "interchange/importer.h"
#include "interchange/importsettings.h"

#include <QDialog>

#include <optional>

class QFileDialog;
class QMainWindow;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;
class QToolButton;

namespace db::odbc {
class Connection;
}

namespace interchange::ui {

class DelimiterChoice;

// The Import dialog, for asset files or, in types mode, asset-type files: the file with a
// preview of its start, the delimiter, the header's row, the default node for types that
// require one, and what to do when a row fails. Shows the settings last used for that
// kind of file and keeps them when closed with OK.
class TFormImport : public QDialog {
    Q_OBJECT
public:
    // The preview shows at most this many bytes of the file.
    static constexpr qint64 PreviewBytes = 8191;

    TFormImport(bool typesMode, QWidget* parent = nullptr);

    // Valid after OK.
    const ImportSettings& Settings() const { return m_settings; }

    void BtnBrowseClick();
    void StartRowUpDownClick();
    void done(int result) override;

    QLineEdit* EditFileName = nullptr;
    QToolButton* BtnBrowse = nullptr;
    DelimiterChoice* Delimiter = nullptr;
    QSpinBox* StartRowUpDown = nullptr;
    QLineEdit* RowEdit = nullptr;
    QLabel* Lable_Unspecified = nullptr;
    QLineEdit* EditUnspecified = nullptr;
    QRadioButton* RB_Ignore = nullptr;
    QRadioButton* RB_Stop = nullptr;
    QRadioButton* RB_Reject = nullptr;
    QPlainTextEdit* MemoFile = nullptr;
    QPushButton* BtnOK = nullptr;
    QPushButton* BtnCancel = nullptr;
    QFileDialog* OpenDialog = nullptr;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void FormShow();
    void readControls();
    bool FormCloseQuery();
    void showPreview();
    QWidget* createLayout();

    ImportSettings m_settings;
};

// Asks for the file in the Import dialog and imports it over the connection, under the
// hourglass, with progress on the window's status line and status-bar progress bar. The
// result is there when the import ran.
std::optional<ImportResult> ImportWithDialog(QMainWindow* window, QLabel* statusLine,
                                             db::odbc::Connection& connection, bool typesMode);

// Imports an asset-type file named on the command line: no dialog, no result box when the
// run is unattended.
ImportResult ImportAssetTypesFile(QMainWindow* window, QLabel* statusLine,
                                  db::odbc::Connection& connection, const ImportSettings& settings,
                                  bool unattended);

} // namespace interchange::ui
