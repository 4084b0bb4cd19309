#include "assets/ui/dbcontrols.h"

#include "assets/typeflags.h"
#include "core/conversions.h"
#include "translation/translate.h"

#include <QHBoxLayout>
#include <QToolButton>

#include <algorithm>
#include <stdexcept>

namespace ui {

using assets::TableDataSet;
using translation::Translate;

// ---------------------------------------------------------------------------------
// TDataSource

TDataSource::TDataSource(TableDataSet& dataSet, QObject* parent)
    : QObject(parent), m_dataSet(dataSet) {}

void TDataSource::Register(TDBControl* control) {
    m_controls.push_back(control);
}

void TDataSource::Unregister(TDBControl* control) {
    m_controls.erase(std::remove(m_controls.begin(), m_controls.end(), control), m_controls.end());
}

void TDataSource::Edit() {
    if (m_dataSet.state() != TableDataSet::State::Browse)
        return;
    m_dataSet.edit();
    Q_EMIT stateChanged();
}

void TDataSource::Append() {
    m_dataSet.append();
    Q_EMIT stateChanged();
    DataChanged();
}

bool TDataSource::Modified() const {
    if (m_dataSet.modified())
        return true;
    for (const TDBControl* control : m_controls)
        if (control->Changed())
            return true;
    return false;
}

void TDataSource::ControlEdited() {
    if (m_autoEdit && m_dataSet.state() == TableDataSet::State::Browse && !m_dataSet.isEmpty())
        Edit();
}

void TDataSource::UpdateRecord() {
    for (TDBControl* control : m_controls)
        control->SaveValue();
}

void TDataSource::Post() {
    const TableDataSet::State state = m_dataSet.state();
    if (state != TableDataSet::State::Edit && state != TableDataSet::State::Insert)
        return;
    if (m_validate)
        m_validate();
    UpdateRecord();
    m_dataSet.post();
    Q_EMIT stateChanged();
    DataChanged();
}

void TDataSource::Cancel() {
    m_dataSet.cancel();
    Q_EMIT stateChanged();
    DataChanged();
}

void TDataSource::DataChanged() {
    for (TDBControl* control : m_controls)
        control->Reload();
    Q_EMIT dataChanged();
}

// ---------------------------------------------------------------------------------
// TDBControl

TDBControl::TDBControl(TDataSource* dataSource, const QString& fieldName)
    : m_dataSource(dataSource), m_fieldName(fieldName) {
    if (m_dataSource)
        m_dataSource->Register(this);
}

TDBControl::~TDBControl() {
    if (m_dataSource)
        m_dataSource->Unregister(this);
}

bool TDBControl::fieldAvailable() const {
    return m_dataSource && m_dataSource->DataSet().isOpen() &&
           m_dataSource->DataSet().hasField(m_fieldName);
}

void TDBControl::userEdited() {
    if (m_loading || !m_dataSource)
        return;
    m_dataSource->ControlEdited();
    m_changed = true;
}

void TDBControl::SaveValue() {
    if (!m_changed || !fieldAvailable())
        return;
    try {
        writeValue();
    } catch (const core::ConversionError& error) {
        throw core::ConversionError(m_fieldName + QStringLiteral(": ") + error.message());
    }
    m_changed = false;
}

// ---------------------------------------------------------------------------------
// Controls

namespace {

// Shows a value without it counting as the user's change.
class Loading {
public:
    explicit Loading(bool& flag) : m_flag(flag) { m_flag = true; }
    ~Loading() { m_flag = false; }
    Loading(const Loading&) = delete;
    Loading& operator=(const Loading&) = delete;

private:
    bool& m_flag;
};

} // namespace

TDBEdit::TDBEdit(TDataSource* dataSource, const QString& fieldName, QWidget* parent)
    : QLineEdit(parent), TDBControl(dataSource, fieldName) {
    connect(this, &QLineEdit::textEdited, this, [this] { userEdited(); });
    LoadValue();
}

void TDBEdit::LoadValue() {
    const Loading loading(m_loading);
    setText(fieldAvailable() ? DataSource()->DataSet().asText(FieldName()) : QString());
    setEnabled(fieldAvailable());
}

void TDBEdit::writeValue() {
    DataSource()->DataSet().setAsText(FieldName(), text());
}

TDBCheckBox::TDBCheckBox(TDataSource* dataSource, const QString& fieldName, const QString& caption,
                         QWidget* parent)
    : QCheckBox(caption, parent), TDBControl(dataSource, fieldName) {
    connect(this, &QCheckBox::toggled, this, [this] { userEdited(); });
    LoadValue();
}

void TDBCheckBox::LoadValue() {
    const Loading loading(m_loading);
    setChecked(fieldAvailable() &&
               assets::TypeFlagIsTrue(DataSource()->DataSet().asText(FieldName()), false));
}

void TDBCheckBox::writeValue() {
    DataSource()->DataSet().setAsText(FieldName(), isChecked() ? QStringLiteral("True")
                                                               : QStringLiteral("False"));
}

TDBText::TDBText(TDataSource* dataSource, const QString& fieldName, QWidget* parent)
    : QLabel(parent), TDBControl(dataSource, fieldName) {
    LoadValue();
}

void TDBText::LoadValue() {
    setText(fieldAvailable() ? DataSource()->DataSet().asText(FieldName()) : QString());
}

TDBLookupComboBox::TDBLookupComboBox(TDataSource* dataSource, const QString& fieldName,
                                     QWidget* parent)
    : QComboBox(parent), TDBControl(dataSource, fieldName) {
    connect(this, &QComboBox::activated, this, [this] { userEdited(); });
    LoadValue();
}

void TDBLookupComboBox::SetItems(const std::vector<std::pair<QString, QString>>& items) {
    const Loading loading(m_loading);
    clear();
    for (const auto& [text, key] : items)
        addItem(text, key);
    LoadValue();
}

void TDBLookupComboBox::LoadValue() {
    const Loading loading(m_loading);
    const QString value =
        fieldAvailable() ? DataSource()->DataSet().asText(FieldName()) : QString();
    setCurrentIndex(value.isEmpty() ? -1 : findText(value));
}

QString TDBLookupComboBox::ChosenKey() const {
    return currentIndex() < 0 ? QString() : currentData().toString();
}

void TDBLookupComboBox::writeValue() {
    DataSource()->DataSet().setAsText(FieldName(), currentIndex() < 0 ? QString() : currentText());
}

// ---------------------------------------------------------------------------------
// TDBNavigator

TDBNavigator::TDBNavigator(TDataSource* dataSource, QWidget* parent)
    : QWidget(parent), m_dataSource(dataSource) {
    setObjectName(QStringLiteral("DBNavigator1"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    const auto button = [this, layout](const char* name, const QString& caption,
                                       const QString& hint) {
        auto* result = new QToolButton(this);
        result->setObjectName(QLatin1String(name));
        result->setText(caption);
        result->setToolTip(hint);
        result->setAutoRaise(true);
        layout->addWidget(result);
        return result;
    };
    nbEdit = button("nbEdit", Translate(QStringLiteral("Edit")),
                    Translate(QStringLiteral("Edit record")));
    nbPost =
        button("nbPost", Translate(QStringLiteral("Post")), Translate(QStringLiteral("Post edit")));
    nbCancel = button("nbCancel", Translate(QStringLiteral("Cancel")),
                      Translate(QStringLiteral("Cancel edit")));
    nbRefresh = button("nbRefresh", Translate(QStringLiteral("Refresh")),
                       Translate(QStringLiteral("Refresh data")));
    layout->addStretch();

    const auto attempt = [this](auto action) {
        try {
            action();
        } catch (const std::exception& error) {
            Q_EMIT failed(QString::fromUtf8(error.what()));
        }
        updateButtons();
    };
    connect(nbEdit, &QToolButton::clicked, this,
            [this, attempt] { attempt([this] { m_dataSource->Edit(); }); });
    connect(nbPost, &QToolButton::clicked, this,
            [this, attempt] { attempt([this] { m_dataSource->Post(); }); });
    connect(nbCancel, &QToolButton::clicked, this,
            [this, attempt] { attempt([this] { m_dataSource->Cancel(); }); });
    connect(nbRefresh, &QToolButton::clicked, this, &TDBNavigator::refreshRequested);
    connect(m_dataSource, &TDataSource::stateChanged, this, &TDBNavigator::updateButtons);
    connect(m_dataSource, &TDataSource::dataChanged, this, &TDBNavigator::updateButtons);
    updateButtons();
}

void TDBNavigator::updateButtons() {
    const TableDataSet& dataSet = m_dataSource->DataSet();
    const bool editing = dataSet.state() == TableDataSet::State::Edit ||
                         dataSet.state() == TableDataSet::State::Insert;
    const bool browsing = dataSet.state() == TableDataSet::State::Browse && !dataSet.isEmpty();
    nbEdit->setEnabled(browsing);
    nbPost->setEnabled(editing);
    nbCancel->setEnabled(editing);
    nbRefresh->setEnabled(dataSet.isOpen() && !editing);
}

} // namespace ui
