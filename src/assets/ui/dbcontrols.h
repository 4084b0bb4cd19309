#pragma once

#include "assets/tabledataset.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QObject>
#include <QPointer>

#include <functional>
#include <vector>

class QToolButton;

namespace ui {

class TDBControl;

// Links a table data set to the controls bound to its fields. Controls show the current
// record and follow it; typing into one puts the record into edit state (automatic
// editing, unless switched off). Before a post every control that was changed writes its
// text into the record, so that a text that does not convert stops the post with the
// field's name and keeps the record as the user typed it.
class TDataSource : public QObject {
    Q_OBJECT
public:
    explicit TDataSource(assets::TableDataSet& dataSet, QObject* parent = nullptr);

    assets::TableDataSet& DataSet() const { return m_dataSet; }
    bool AutoEdit() const { return m_autoEdit; }
    void SetAutoEdit(bool autoEdit) { m_autoEdit = autoEdit; }

    // The record changes through these, so that the controls follow. Post first runs the
    // check set with SetValidation (which throws to refuse), then writes the changed
    // controls into the record, then posts it.
    void Edit();
    void Append();
    void Post();
    void Cancel();
    void SetValidation(std::function<void()> validate) { m_validate = std::move(validate); }
    // A control or the record holds a change that is not posted.
    bool Modified() const;
    // Writes the changed controls into the record; throws what the conversion throws.
    void UpdateRecord();
    // The data set opened, closed, moved or changed its values: the controls show it anew.
    void DataChanged();

    // Called by a control when the user changes it.
    void ControlEdited();
    void Register(TDBControl* control);
    void Unregister(TDBControl* control);

Q_SIGNALS:
    void dataChanged();
    void stateChanged();

private:
    assets::TableDataSet& m_dataSet;
    bool m_autoEdit = true;
    std::vector<TDBControl*> m_controls;
    std::function<void()> m_validate;
};

// What every data-bound control has: its field, its data source, whether the user changed
// it since it last showed the record, and the two directions of the value.
class TDBControl {
public:
    TDBControl(TDataSource* dataSource, const QString& fieldName);
    virtual ~TDBControl();
    TDBControl(const TDBControl&) = delete;
    TDBControl& operator=(const TDBControl&) = delete;

    const QString& FieldName() const { return m_fieldName; }
    TDataSource* DataSource() const { return m_dataSource.data(); }
    // Shows the field of the current record (empty when closed or without the field).
    virtual void LoadValue() = 0;
    // Shows the record again, forgetting the user's change.
    void Reload() {
        m_changed = false;
        LoadValue();
    }
    // Writes the control's value into the record when the user changed it.
    void SaveValue();
    bool Changed() const { return m_changed; }

protected:
    virtual void writeValue() = 0;
    bool fieldAvailable() const;
    void userEdited();
    bool m_loading = false;

private:
    // The source may go before its controls when their form is destroyed.
    QPointer<TDataSource> m_dataSource;
    QString m_fieldName;
    bool m_changed = false;
};

class TDBEdit : public QLineEdit, public TDBControl {
    Q_OBJECT
public:
    TDBEdit(TDataSource* dataSource, const QString& fieldName, QWidget* parent = nullptr);
    void LoadValue() override;

protected:
    void writeValue() override;
};

// Stores "True" when checked and "False" when not; shows checked for a value that reads
// as true.
class TDBCheckBox : public QCheckBox, public TDBControl {
    Q_OBJECT
public:
    TDBCheckBox(TDataSource* dataSource, const QString& fieldName, const QString& caption,
                QWidget* parent = nullptr);
    void LoadValue() override;

protected:
    void writeValue() override;
};

// A read-only text of the field.
class TDBText : public QLabel, public TDBControl {
    Q_OBJECT
public:
    TDBText(TDataSource* dataSource, const QString& fieldName, QWidget* parent = nullptr);
    void LoadValue() override;

protected:
    void writeValue() override {}
};

// A drop-down list of values (the list field of a lookup query); the chosen one is the
// field's value. Also reports the key of the chosen row (its second column).
class TDBLookupComboBox : public QComboBox, public TDBControl {
    Q_OBJECT
public:
    TDBLookupComboBox(TDataSource* dataSource, const QString& fieldName, QWidget* parent = nullptr);
    void LoadValue() override;
    // The list: each entry's text and its key.
    void SetItems(const std::vector<std::pair<QString, QString>>& items);
    // The key of the entry the list is on; empty when none is chosen.
    QString ChosenKey() const;

protected:
    void writeValue() override;
};

// Buttons for the data source's record: edit, post, cancel and refresh, with hints.
// Refresh asks its owner to read the record again (a signal).
class TDBNavigator : public QWidget {
    Q_OBJECT
public:
    TDBNavigator(TDataSource* dataSource, QWidget* parent = nullptr);

Q_SIGNALS:
    void refreshRequested();
    // A post or cancel failed; the text is the error's.
    void failed(const QString& message);

private:
    void updateButtons();

    TDataSource* m_dataSource;
    QToolButton* nbEdit;
    QToolButton* nbPost;
    QToolButton* nbCancel;
    QToolButton* nbRefresh;
};

} // namespace ui
