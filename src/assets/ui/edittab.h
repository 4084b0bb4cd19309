#pragma once

#include "assets/ui/dbcontrols.h"

#include <QWidget>

#include <vector>

class QFormLayout;

namespace ui {

// A page of the record editor: a borderless form of controls bound to the editor's data
// source. The editor opens and closes its pages with its tables, clears the active one
// with "&Clear Data" and asks each, in page order, whether the record may be posted.
class TEditTab : public QWidget {
    Q_OBJECT
public:
    TEditTab(TDataSource* dataSource, QWidget* parent);

    virtual void OpenTab() {}
    virtual void CloseTab() {}
    // Sets the fields this page clears to NULL.
    virtual void ClearTab();
    // False, with the text to show, when the record may not be posted.
    virtual bool ValidateTab(QString& error);

protected:
    // A labelled edit bound to `field`, added to the page's form; it is cleared by ClearTab
    // unless `clears` is false.
    TDBEdit* addEdit(const char* name, const QString& caption, const QString& field,
                     bool clears = true);
    QFormLayout* formLayout() const { return m_form; }
    TDataSource* dataSource() const { return m_dataSource; }
    void clearFields(const QStringList& fields);

private:
    TDataSource* m_dataSource;
    QFormLayout* m_form;
    QStringList m_clearedFields;
};

} // namespace ui
