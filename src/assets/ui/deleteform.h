#pragma once

#include <QDialog>

class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;

namespace ui {

// Asks which rows of the results grid to remove: the selected ones (the default) or every
// row of the ASSETS table. Remove asks once more and closes with Accepted on Yes,
// Rejected on No.
//
// Bare letters and Shift+letter do not trigger the controls here (the toolkit reserves
// mnemonics for Alt+letter), so the dialog needs nothing to swallow those keys.
class TDelForm : public QDialog {
    Q_OBJECT
public:
    static constexpr int HelpContext = 1000;

    explicit TDelForm(QWidget* parent = nullptr);

    // Whether "All rows" was chosen when the dialog closed; false before that.
    bool RemoveAll() const { return m_removeAll; }

    void BtnOkClick();
    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    QLabel* Label1 = nullptr;
    QGroupBox* GroupBox1 = nullptr;
    QRadioButton* RB_Sel = nullptr;
    QRadioButton* RB_All = nullptr;
    QPushButton* BtnOk = nullptr;
    QPushButton* BtnCancel = nullptr;
    bool m_removeAll = false;
};

} // namespace ui
