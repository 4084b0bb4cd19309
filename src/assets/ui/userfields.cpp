#include "assets/ui/userfields.h"

#include "core/ui/messages.h"
#include "translation/translate.h"

#include <QFormLayout>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

#include <exception>
#include <set>

namespace ui {

namespace {

constexpr auto UserPrefix = "USR_";
constexpr int FirstTop = 10;
constexpr int LabelGap = 5;
constexpr int RowGap = 10;
constexpr int MinimumEditWidth = 80;

using Kind = db::odbc::ColumnInfo::Kind;

// Numbers get a short edit, dates and times a shorter one; anything else stretches.
int fixedWidth(Kind kind) {
    switch (kind) {
    case Kind::Integer:
    case Kind::Float:
        return 100;
    case Kind::Date:
    case Kind::Time:
    case Kind::DateTime:
        return 90;
    default:
        return 0;
    }
}

} // namespace

TUserFieldsForm::TUserFieldsForm(TDataSource* dataSource, QWidget* parent)
    : TEditTab(dataSource, parent) {
    setObjectName(QStringLiteral("UserFieldsForm"));
    setProperty("helpContext", 800);
    ScrollBox1 = new QScrollArea(this);
    ScrollBox1->setObjectName(QStringLiteral("ScrollBox1"));
    ScrollBox1->setFrameShape(QFrame::NoFrame);
    ScrollBox1->setWidgetResizable(true);
    m_box = new QWidget;
    ScrollBox1->setWidget(m_box);
    formLayout()->addRow(ScrollBox1);
    formLayout()->setContentsMargins(0, 0, 0, 0);
}

QString TUserFieldsForm::ControlName(const QString& fieldName) {
    QString name = fieldName.left(49);
    for (QChar& c : name)
        if (c == u' ' || c == u'#' || c == u'$' || c == u'&' || c == u'@')
            c = u'_';
    return name;
}

int TUserFieldsForm::AlignedLeft(int left) {
    for (int k = 1; k <= 8; ++k)
        if (left > 16 * k && left <= 16 * (k + 1))
            return 16 * (k + 1);
    return left;
}

void TUserFieldsForm::OpenTab() {
    CloseTab();
    try {
        buildControls();
    } catch (const std::exception& error) {
        ShowMessage(this, QMessageBox::Warning, translation::Translate(QStringLiteral("Error")),
                    QString::fromUtf8(error.what()));
    }
    layOutControls();
}

void TUserFieldsForm::buildControls() {
    std::set<QString> names;
    for (const db::odbc::ColumnInfo& field : dataSource()->DataSet().fields()) {
        if (!field.name.startsWith(QLatin1String(UserPrefix), Qt::CaseSensitive))
            continue;
        // Two fields may map to one name: the later edits get a number, so that each
        // control can still be found by its name.
        QString name = ControlName(field.name);
        for (int n = 2; names.count(name); ++n)
            name = ControlName(field.name) + QStringLiteral("_%1").arg(n);
        names.insert(name);
        auto* label = new QLabel(field.name.mid(4) + QLatin1Char(':'), m_box);
        label->setObjectName(QStringLiteral("lbl") + name);
        auto* edit = new TDBEdit(dataSource(), field.name, m_box);
        edit->setObjectName(QStringLiteral("DB_") + name);
        edit->setProperty("fieldWidth", fixedWidth(field.kind()));
        label->setBuddy(edit);
        m_labels.push_back(label);
        m_edits.push_back(edit);
    }
}

void TUserFieldsForm::layOutControls() {
    int y = FirstTop;
    int bottom = 0;
    for (size_t i = 0; i < m_edits.size(); ++i) {
        QLabel* label = m_labels[i];
        TDBEdit* edit = m_edits[i];
        label->adjustSize();
        label->move(LabelGap, y + 3);
        label->show();
        const int left = AlignedLeft(label->x() + label->width() + LabelGap);
        const int fixed = edit->property("fieldWidth").toInt();
        const int width = fixed > 0 ? fixed : this->width() - left - LabelGap;
        edit->setGeometry(left, y, qMax(width, MinimumEditWidth), edit->sizeHint().height());
        edit->show();
        y = edit->y() + label->height() + RowGap;
        bottom = edit->geometry().bottom();
    }
    m_box->setMinimumHeight(bottom + RowGap);
}

// Text edits stretch with the page.
void TUserFieldsForm::resizeEvent(QResizeEvent* event) {
    TEditTab::resizeEvent(event);
    layOutControls();
}

void TUserFieldsForm::showEvent(QShowEvent* event) {
    TEditTab::showEvent(event);
    layOutControls();
}

void TUserFieldsForm::CloseTab() {
    for (QLabel* label : m_labels)
        delete label;
    for (TDBEdit* edit : m_edits)
        delete edit;
    m_labels.clear();
    m_edits.clear();
}

void TUserFieldsForm::ClearTab() {
    QStringList fields;
    for (const TDBEdit* edit : m_edits)
        fields << edit->FieldName();
    clearFields(fields);
}

} // namespace ui
