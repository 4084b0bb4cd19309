#include "schema/ui/custfld.h"

#include "core/dateformat.h"
#include "core/ui/messages.h"
#include "schema/ui/sqlformedit.h"
#include "translation/translate.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>

#include <exception>

namespace ui {

using translation::Translate;

namespace {

constexpr int MaxNameLength = 26;
constexpr int PageHelpContexts[] = {1100, 1120, 1140};

template <typename Widget, typename... Args> Widget* named(const char* name, Args&&... args) {
    auto* widget = new Widget(std::forward<Args>(args)...);
    widget->setObjectName(QLatin1String(name));
    return widget;
}

QPlainTextEdit* explanation(const char* name, const QString& englishText, QWidget* parent) {
    auto* memo = named<QPlainTextEdit>(name, Translate(englishText), parent);
    memo->setReadOnly(true);
    memo->setFrameShape(QFrame::NoFrame);
    memo->setMaximumHeight(90);
    return memo;
}

} // namespace

TCustFldForm::TCustFldForm(db::DatabaseDialect dialect, QWidget* parent)
    : QDialog(parent), m_dialect(dialect) {
    setObjectName(QStringLiteral("CustFldForm"));
    setWindowTitle(Translate(QStringLiteral("New Column")));
    setProperty("helpContext", HelpContext);
    resize(470, 330);

    PageFieldDef = named<QTabWidget>("PageFieldDef", this);
    PageFieldDef->addTab(createNamePage(), Translate(QStringLiteral("Column Name")));
    PageFieldDef->addTab(createTypePage(), Translate(QStringLiteral("Data type")));
    PageFieldDef->addTab(createReviewPage(), Translate(QStringLiteral("Summary")));
    PageFieldDef->setTabVisible(TypePage, false);
    PageFieldDef->setTabVisible(ReviewPage, false);
    connect(PageFieldDef, &QTabWidget::currentChanged, this, &TCustFldForm::PageFieldDefChange);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(PageFieldDef, 1);
    createButtons();
}

QWidget* TCustFldForm::createNamePage() {
    tsFieldName = named<QWidget>("tsFieldName");
    LabelPrefix = named<QLabel>("LabelPrefix", schema::UserColumnPrefix, tsFieldName);
    EditName = named<QLineEdit>("EditName", QStringLiteral("field_1"), tsFieldName);
    EditName->setMaxLength(MaxNameLength);
    MemoName = explanation(
        "MemoName",
        QStringLiteral("Select a name for the new column. The name can be up to 26 characters "
                       "long,\\nand can contain the alphanumeric, underscore (_), and "
                       "dollar($) characters.\\n\\n\\\"USR_\\\" is added to the start of the to "
                       "the column name.\\n"),
        tsFieldName);
    MemoName->setMaximumHeight(QWIDGETSIZE_MAX);
    auto* name = new QHBoxLayout;
    name->setSpacing(0);
    name->addWidget(LabelPrefix);
    name->addWidget(EditName, 1);
    auto* layout = new QVBoxLayout(tsFieldName);
    layout->addLayout(name);
    layout->addWidget(MemoName, 1);
    return tsFieldName;
}

QWidget* TCustFldForm::createTypePage() {
    tsDataType = named<QWidget>("tsDataType");
    MemoDataType = explanation(
        "MemoDataType", QStringLiteral("Select the data type and width for the new column.\\n"),
        tsDataType);
    MemoDataType->setMaximumHeight(40);
    GroupDataTypes =
        named<QGroupBox>("GroupDataTypes", Translate(QStringLiteral("Data types")), tsDataType);
    RB_Text = named<QRadioButton>("RB_Text", Translate(QStringLiteral("Text")), GroupDataTypes);
    RB_Text->setChecked(true);
    RB_Date =
        named<QRadioButton>("RB_Date", Translate(QStringLiteral("Date/Time")), GroupDataTypes);
    RB_Number = named<QRadioButton>("RB_Number", Translate(QStringLiteral("Number (integer)")),
                                    GroupDataTypes);
    RB_Currency = named<QRadioButton>("RB_Currency", Translate(QStringLiteral("Currency (float)")),
                                      GroupDataTypes);
    // Groups of their own: the width pair sits inside the type buttons' box, and buttons
    // grouped only by their parent would then uncheck one another.
    auto* typeButtons = new QButtonGroup(this);
    for (QRadioButton* type : {RB_Text, RB_Date, RB_Number, RB_Currency}) {
        typeButtons->addButton(type);
        connect(type, &QRadioButton::clicked, this, &TCustFldForm::TypeButtonClick);
    }

    PanelText = named<QWidget>("PanelText", GroupDataTypes);
    RB_Char = named<QRadioButton>("RB_Char", Translate(QStringLiteral("Char")), PanelText);
    RB_VarChar = named<QRadioButton>("RB_VarChar", Translate(QStringLiteral("VarChar")), PanelText);
    RB_VarChar->setChecked(true);
    auto* widthButtons = new QButtonGroup(this);
    widthButtons->addButton(RB_Char);
    widthButtons->addButton(RB_VarChar);
    EditLength = named<QLineEdit>("EditLength", QStringLiteral("50"), PanelText);
    EditLength->setMaximumWidth(50);
    auto* text = new QHBoxLayout(PanelText);
    text->setContentsMargins(0, 0, 0, 0);
    text->addWidget(RB_Char);
    text->addWidget(RB_VarChar);
    text->addSpacing(8);
    text->addWidget(named<QLabel>("LabelWidth", Translate(QStringLiteral("Width:")), PanelText));
    text->addWidget(EditLength);
    text->addWidget(named<QLabel>("LabelMax", Translate(QStringLiteral("(255 max)")), PanelText));
    text->addStretch();

    lbDateFormat =
        named<QLabel>("lbDateFormat", Translate(QStringLiteral("date format")), GroupDataTypes);
    auto* types = new QGridLayout(GroupDataTypes);
    types->addWidget(RB_Text, 0, 0);
    types->addWidget(PanelText, 0, 1);
    types->addWidget(RB_Date, 1, 0);
    types->addWidget(lbDateFormat, 1, 1);
    types->addWidget(RB_Number, 2, 0);
    types->addWidget(RB_Currency, 3, 0);
    types->setColumnStretch(1, 1);

    EditDefVal = named<QLineEdit>("EditDefVal", tsDataType);
    auto* defaultValue = new QHBoxLayout;
    defaultValue->addWidget(
        named<QLabel>("LabelDefVal", Translate(QStringLiteral("Default value:")), tsDataType));
    defaultValue->addWidget(EditDefVal, 1);
    auto* layout = new QVBoxLayout(tsDataType);
    layout->addWidget(MemoDataType);
    layout->addWidget(GroupDataTypes);
    layout->addLayout(defaultValue);
    layout->addStretch();
    return tsDataType;
}

QWidget* TCustFldForm::createReviewPage() {
    tsReview = named<QWidget>("tsReview");
    MemoResult = named<QPlainTextEdit>("MemoResult", tsReview);
    MemoResult->setReadOnly(true);
    MemoResult->setLineWrapMode(QPlainTextEdit::NoWrap);
    BtnEditSQL = named<QPushButton>("BtnEditSQL", Translate(QStringLiteral("Edit SQL")), tsReview);
    connect(BtnEditSQL, &QPushButton::clicked, this, &TCustFldForm::BtnEditSQLClick);
    auto* layout = new QVBoxLayout(tsReview);
    layout->addWidget(MemoResult, 1);
    layout->addWidget(BtnEditSQL, 0, Qt::AlignRight);
    return tsReview;
}

void TCustFldForm::createButtons() {
    BtnPrev = named<QPushButton>("BtnPrev", Translate(QStringLiteral("<< Previous")), this);
    BtnPrev->setEnabled(false);
    BtnNext = named<QPushButton>("BtnNext", Translate(QStringLiteral("Next >>")), this);
    BtnOK = named<QPushButton>("BtnOK", Translate(QStringLiteral("Finish")), this);
    BtnOK->setDefault(true);
    BtnOK->setEnabled(false);
    BtnCancel = named<QPushButton>("BtnCancel", Translate(QStringLiteral("Cancel")), this);
    connect(BtnPrev, &QPushButton::clicked, this, &TCustFldForm::BtnPrevClick);
    connect(BtnNext, &QPushButton::clicked, this, &TCustFldForm::BtnNextClick);
    connect(BtnOK, &QPushButton::clicked, this, &TCustFldForm::BtnOKClick);
    connect(BtnCancel, &QPushButton::clicked, this, &QDialog::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (QPushButton* button : {BtnPrev, BtnNext, BtnOK, BtnCancel})
        buttons->addWidget(button);
    static_cast<QVBoxLayout*>(layout())->addLayout(buttons);
}

void TCustFldForm::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (event->spontaneous())
        return;
    // So that the user knows how to type a date default.
    lbDateFormat->setText(core::ShortDateFormat());
    if (const QScreen* shownOn = screen())
        move(shownOn->availableGeometry().center() - rect().center());
}

void TCustFldForm::TypeButtonClick() {
    PanelText->setVisible(RB_Text->isChecked());
}

schema::ColumnTypeChoice TCustFldForm::typeChoice() const {
    schema::ColumnTypeChoice choice;
    choice.kind = RB_Text->isChecked()       ? schema::ColumnKind::Text
                  : RB_Date->isChecked()     ? schema::ColumnKind::Date
                  : RB_Number->isChecked()   ? schema::ColumnKind::Number
                  : RB_Currency->isChecked() ? schema::ColumnKind::Currency
                                             : schema::ColumnKind::None;
    choice.fixedWidth = RB_Char->isChecked();
    choice.length = EditLength->text();
    choice.defaultValue = EditDefVal->text();
    return choice;
}

void TCustFldForm::checkPage(int page) {
    if (page == NamePage)
        m_column.name = schema::UserColumnName(EditName->text());
    else if (page == TypePage)
        schema::ApplyColumnType(m_column, typeChoice(), m_dialect);
}

// Tab clicks, Next and Previous all come here: the page left must pass its check, or the
// wizard stays on it.
void TCustFldForm::PageFieldDefChange(int index) {
    if (index == m_page)
        return;
    try {
        checkPage(m_page);
    } catch (const std::exception& error) {
        const QSignalBlocker stay(PageFieldDef);
        PageFieldDef->setCurrentIndex(m_page);
        ShowMessage(this, QMessageBox::Critical, Translate(QStringLiteral("Validation Error")),
                    QString::fromUtf8(error.what()));
        return;
    }
    m_page = index;
    try {
        enterPage(index);
    } catch (const std::exception& error) {
        ShowError(this, Translate(QStringLiteral("Error")), QString::fromUtf8(error.what()));
    }
}

void TCustFldForm::enterPage(int page) {
    setProperty("helpContext", PageHelpContexts[page]);
    PageFieldDef->setTabVisible(page, true);
    BtnPrev->setEnabled(page != NamePage);
    BtnNext->setEnabled(page != ReviewPage);
    if (page == ReviewPage) {
        BtnOK->setEnabled(true);
        buildSummary();
    }
}

void TCustFldForm::BtnNextClick() {
    if (m_page < ReviewPage)
        PageFieldDef->setCurrentIndex(m_page + 1);
}

void TCustFldForm::BtnPrevClick() {
    if (m_page > NamePage)
        PageFieldDef->setCurrentIndex(m_page - 1);
}

// An edited statement is kept for one build only: the summary after the edit shows it.
void TCustFldForm::buildStatement() {
    if (m_statementEdited) {
        m_statementEdited = false;
        return;
    }
    checkPage(NamePage);
    checkPage(TypePage);
    m_statementLines = schema::AddUserColumnLines(m_column, m_dialect);
}

void TCustFldForm::buildSummary() {
    buildStatement();
    MemoResult->setPlainText(
        schema::AddUserColumnSummary(m_column, m_statementLines).join(QLatin1Char('\n')));
}

void TCustFldForm::BtnEditSQLClick() {
    TSQLForm editor(this);
    editor.SetStatementText(StatementText());
    if (editor.exec() != Accepted)
        return;
    m_statementLines = editor.StatementText().split(QLatin1Char('\n'));
    m_statementEdited = true;
    buildSummary();
}

// Finish builds the statement afresh from the answers: an edit made in the SQL dialog has
// already been consumed by the summary and does not reach the database.
void TCustFldForm::BtnOKClick() {
    m_finishError.clear();
    if (!m_statementEdited) {
        try {
            buildStatement();
        } catch (const std::exception& error) {
            m_finishError = QString::fromUtf8(error.what());
        }
    }
    accept();
}

QString TCustFldForm::StatementText() const {
    return m_statementLines.join(QLatin1Char('\n'));
}

} // namespace ui
