#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;
class QRadioButton;
class QToolButton;

namespace ui {
class TDBGridRange;
}

namespace interchange::ui {

// "Save as HTML...": asks for the page to write, which rows (all, or the selected ones)
// and optionally a template. Without a template the page is the grid's own; with one,
// the template's "$HEADER$" becomes the grid's title row and "$ROWS$" its body rows
// (letter case ignored), and the result is written to the page's file.
class THtmlReportForm : public QDialog {
    Q_OBJECT
public:
    static constexpr auto HeaderPlaceholder = "$HEADER$";
    static constexpr auto RowsPlaceholder = "$ROWS$";

    explicit THtmlReportForm(QWidget* parent = nullptr);

    QString FileName() const;
    QString TemplateFileName() const;
    bool SelectedOnly() const;
    void done(int result) override;

private:
    void browse(QLineEdit* edit, bool save);

    QLineEdit* EditFileName = nullptr;
    QToolButton* BtnBrowse = nullptr;
    QLineEdit* EditTemplate = nullptr;
    QToolButton* BtnBrowseTemplate = nullptr;
    QRadioButton* RB_all = nullptr;
    QRadioButton* RB_selected = nullptr;
    QPushButton* BtnOK = nullptr;
    QPushButton* BtnCancel = nullptr;
};

// Shows the dialog and writes the page; a failure is shown in a box "Error".
void SaveGridAsHtml(QWidget* parent, const ::ui::TDBGridRange& grid);

} // namespace interchange::ui
