#pragma once

#include "assets/ui/edittab.h"

#include <vector>

class QLabel;
class QScrollArea;

namespace ui {

// The User-Extensions page: one labelled edit for each column of ASSETS whose name begins
// with "USR_", built each time the editor opens (so a column added meanwhile shows) and
// destroyed when it closes.
class TUserFieldsForm : public TEditTab {
    Q_OBJECT
public:
    TUserFieldsForm(TDataSource* dataSource, QWidget* parent);

    void OpenTab() override;
    void CloseTab() override;
    void ClearTab() override;

    const std::vector<TDBEdit*>& Edits() const { return m_edits; }

    // The part of a control name made from a field name: its first 49 characters with
    // blanks, "#", "$", "&" and "@" made "_".
    static QString ControlName(const QString& fieldName);
    // An edit's left edge after its label: between 32 and 144 it moves up to the next
    // multiple of 16.
    static int AlignedLeft(int left);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void buildControls();
    void layOutControls();

    QScrollArea* ScrollBox1;
    QWidget* m_box;
    std::vector<QLabel*> m_labels;
    std::vector<TDBEdit*> m_edits;
};

} // namespace ui
