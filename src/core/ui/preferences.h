#pragma once

#include "core/preferences.h"

#include <QDialog>
#include <QLocale>

#include <optional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;
class QToolButton;

namespace ui {

// What the log file's browse button asks of a save-file dialog.
struct SaveFileRequest {
    QString filter;           // pairs of name and pattern, "Log Files|*.log|All Files|*.*"
    QString defaultExtension; // added to a name typed without one
    QString fileName;         // shown first
};

// The toolkit's save-file dialog: the chosen path, or nothing when the user cancels.
std::optional<QString> ChooseSaveFile(QWidget* parent, const SaveFileRequest& request);

// The preferences dialog. It opens with the stored preferences over its own defaults,
// the first page selected and 1 January 1990 as the default date. OK saves them in
// order and closes, even when the default date is not a date (which is reported and
// leaves "Date" and "Money" unsaved); Cancel closes without saving.
//
// After OK the caller loads the preferences into the main window (core::LoadPreferences).
class TPreferences : public QDialog {
    Q_OBJECT
public:
    static constexpr int HelpContext = 600;

    // `locale` is the user's locale: its short date format is shown as the default
    // format and applied when the default format is chosen.
    explicit TPreferences(QWidget* parent = nullptr, const QLocale& locale = QLocale::system());
    ~TPreferences() override;

    // The values the controls hold now.
    core::PreferenceValues values() const;

private:
    void createControls();
    QWidget* createLayoutPage();
    QWidget* createDateFormatPage();
    QWidget* createLogFilePage();
    QWidget* createIdColumnPage();
    QWidget* createDefaultsPage();
    void setValues(const core::PreferenceValues& values);

    void FormCreate();
    void BtnOkClick();
    void BtnBrowseClick();

    QLocale m_locale;

    QTabWidget* PageControl1 = nullptr;
    QToolButton* BtnBottom = nullptr;
    QToolButton* BtnRight = nullptr;
    QRadioButton* RB_FormatDefault = nullptr;
    QLabel* DefaultDateFormat = nullptr;
    QRadioButton* RB_FormatCustom = nullptr;
    QLineEdit* EditFormat = nullptr;
    QCheckBox* CB_KeepLog = nullptr;
    QLineEdit* EditLogFile = nullptr;
    QPushButton* BtnBrowse = nullptr;
    QCheckBox* CB_HideID = nullptr;
    QCheckBox* CB_AppendID = nullptr;
    QCheckBox* CB_SetDefault = nullptr;
    QCheckBox* CB_DateDefaults = nullptr;
    QLineEdit* EditDateFields = nullptr;
    QCheckBox* CB_MoneyFields = nullptr;
    QLineEdit* EditMoneyFields = nullptr;
    QPushButton* BtnOk = nullptr;
    QPushButton* BtnCancel = nullptr;
};

} // namespace ui
