#include "core/ui/preferences.h"

#include "core/conversions.h"
#include "core/dateformat.h"
#include "core/ui/messages.h"
#include "translation/translate.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace ui {

using translation::Translate;

namespace {

template <typename Widget> Widget* named(Widget* widget, const char* name) {
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

QLabel* note(const QString& text) {
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    return label;
}

// A small picture of the main window: the grid, and the asset editor below or beside it.
QIcon layoutPicture(bool editorBelow) {
    QPixmap pixmap(48, 36);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setPen(Qt::black);
    painter.setBrush(Qt::white);
    painter.drawRect(0, 0, 47, 35);
    painter.setBrush(QColor(0x9d, 0xb8, 0xd9));
    if (editorBelow)
        painter.drawRect(3, 20, 41, 12);
    else
        painter.drawRect(28, 3, 16, 29);
    painter.setPen(Qt::gray);
    const int gridRight = editorBelow ? 44 : 25;
    const int gridBottom = editorBelow ? 17 : 32;
    for (int y = 6; y < gridBottom; y += 4)
        painter.drawLine(3, y, gridRight, y);
    return QIcon(pixmap);
}

QToolButton* pictureButton(const char* name, const QString& text, bool editorBelow) {
    auto* button = named(new QToolButton, name);
    button->setText(text);
    button->setIcon(layoutPicture(editorBelow));
    button->setIconSize(QSize(48, 36));
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    button->setCheckable(true);
    button->setAutoExclusive(true);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

// "Log Files|*.log|All Files|*.*" as the toolkit's "Log Files (*.log)" and "All Files (*)".
QStringList nameFilters(const QString& filter) {
    const QStringList parts = filter.split(QLatin1Char('|'));
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString patterns = parts.at(i + 1);
        patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
        if (patterns == QLatin1String("*.*"))
            patterns = QStringLiteral("*");
        filters << QStringLiteral("%1 (%2)").arg(parts.at(i), patterns);
    }
    return filters;
}

} // namespace

std::optional<QString> ChooseSaveFile(QWidget* parent, const SaveFileRequest& request) {
    QFileDialog dialog(parent);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilters(nameFilters(request.filter));
    dialog.setDefaultSuffix(request.defaultExtension);
    if (!request.fileName.isEmpty())
        dialog.selectFile(request.fileName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().constFirst();
}

TPreferences::TPreferences(QWidget* parent, const QLocale& locale)
    : QDialog(parent), m_locale(locale) {
    setObjectName(QStringLiteral("Preferences"));
    setWindowTitle(Translate(QStringLiteral("Preferences")));
    setProperty("helpContext", HelpContext);
    createControls();
    FormCreate();
}

TPreferences::~TPreferences() = default;

void TPreferences::createControls() {
    PageControl1 = named(new QTabWidget, "PageControl1");
    PageControl1->addTab(createLayoutPage(), Translate(QStringLiteral("&Main window layout")));
    PageControl1->addTab(createDateFormatPage(), Translate(QStringLiteral("Da&te display format")));
    PageControl1->addTab(createLogFilePage(), Translate(QStringLiteral("&Log file")));
    PageControl1->addTab(createIdColumnPage(), Translate(QStringLiteral("Assets &ID column")));
    PageControl1->addTab(createDefaultsPage(), Translate(QStringLiteral("De&faults")));

    BtnOk = named(new QPushButton(Translate(QStringLiteral("OK"))), "BtnOk");
    BtnOk->setDefault(true);
    BtnCancel = named(new QPushButton(Translate(QStringLiteral("Cancel"))), "BtnCancel");
    connect(BtnOk, &QPushButton::clicked, this, &TPreferences::BtnOkClick);
    connect(BtnCancel, &QPushButton::clicked, this, &TPreferences::reject);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(BtnOk);
    buttons->addWidget(BtnCancel);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(PageControl1);
    layout->addLayout(buttons);

    // Page by page, then the buttons.
    const QList<QWidget*> order = {
        PageControl1,    BtnBottom,     BtnRight,        RB_FormatDefault, RB_FormatCustom,
        EditFormat,      CB_KeepLog,    EditLogFile,     BtnBrowse,        CB_HideID,
        CB_AppendID,     CB_SetDefault, CB_DateDefaults, EditDateFields,   CB_MoneyFields,
        EditMoneyFields, BtnOk,         BtnCancel};
    for (qsizetype i = 0; i + 1 < order.size(); ++i)
        setTabOrder(order.at(i), order.at(i + 1));

    // Wide enough for every tab title, so that none hides behind scroll arrows.
    PageControl1->setUsesScrollButtons(false);
    setMinimumWidth(PageControl1->tabBar()->sizeHint().width() + layout->contentsMargins().left() +
                    layout->contentsMargins().right() + 8);
}

QWidget* TPreferences::createLayoutPage() {
    auto* page = new QWidget;
    auto* group = new QGroupBox(Translate(QStringLiteral("Extended Layout")));
    BtnBottom = pictureButton("BtnBottom", Translate(QStringLiteral("Bottom")), true);
    BtnRight = pictureButton("BtnRight", Translate(QStringLiteral("Right")), false);
    BtnBottom->setChecked(true);
    auto* buttons = new QHBoxLayout(group);
    buttons->addWidget(BtnBottom);
    buttons->addWidget(BtnRight);
    buttons->addStretch();

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(group);
    layout->addStretch();
    return page;
}

QWidget* TPreferences::createDateFormatPage() {
    auto* page = new QWidget;
    RB_FormatDefault =
        named(new QRadioButton(Translate(QStringLiteral("&Default format"))), "RB_FormatDefault");
    RB_FormatDefault->setChecked(true);
    DefaultDateFormat = named(new QLabel, "DefaultDateFormat");
    RB_FormatCustom =
        named(new QRadioButton(Translate(QStringLiteral("&Custom"))), "RB_FormatCustom");
    EditFormat = named(new QLineEdit(QStringLiteral("dd-mm-yyyy")), "EditFormat");

    auto* grid = new QGridLayout;
    grid->addWidget(RB_FormatDefault, 0, 0);
    grid->addWidget(DefaultDateFormat, 0, 1);
    grid->addWidget(RB_FormatCustom, 1, 0);
    grid->addWidget(EditFormat, 1, 1);
    grid->setColumnStretch(1, 1);

    auto* layout = new QVBoxLayout(page);
    layout->addLayout(grid);
    layout->addWidget(note(Translate(QStringLiteral(
        "The date format should only use the date separator character and the  m, mm, d, dd, "
        "yy, and yyyy format specifiers."))));
    layout->addWidget(
        note(Translate(QStringLiteral("Select Execute SQL from the Query Menu to display your "
                                      "changes"))));
    layout->addStretch();
    return page;
}

QWidget* TPreferences::createLogFilePage() {
    auto* page = new QWidget;
    CB_KeepLog =
        named(new QCheckBox(Translate(QStringLiteral("&Save error log as:"))), "CB_KeepLog");
    EditLogFile = named(new QLineEdit(QStringLiteral("quillet.log")), "EditLogFile");
    BtnBrowse = named(new QPushButton(QStringLiteral("[...]")), "BtnBrowse");
    BtnBrowse->setAutoDefault(false);
    connect(BtnBrowse, &QPushButton::clicked, this, &TPreferences::BtnBrowseClick);

    auto* file = new QHBoxLayout;
    file->addWidget(EditLogFile, 1);
    file->addWidget(BtnBrowse);

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(CB_KeepLog);
    layout->addLayout(file);
    layout->addStretch();
    return page;
}

QWidget* TPreferences::createIdColumnPage() {
    auto* page = new QWidget;
    CB_HideID =
        named(new QCheckBox(Translate(QStringLiteral("&Hide the ID column in the Main window"))),
              "CB_HideID");
    CB_HideID->setChecked(true);
    CB_AppendID =
        named(new QCheckBox(Translate(QStringLiteral("A&ppend the ID column to the SQL code"))),
              "CB_AppendID");
    CB_AppendID->setChecked(true);

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(CB_HideID);
    layout->addWidget(CB_AppendID);
    layout->addWidget(
        note(Translate(QStringLiteral("Select Execute SQL from the Query Menu to display your "
                                      "changes"))));
    layout->addStretch();
    return page;
}

QWidget* TPreferences::createDefaultsPage() {
    auto* page = new QWidget;
    CB_SetDefault =
        named(new QCheckBox(Translate(QStringLiteral("&Set default values:"))), "CB_SetDefault");
    CB_SetDefault->setChecked(true);
    CB_DateDefaults =
        named(new QCheckBox(Translate(QStringLiteral("&Date fields"))), "CB_DateDefaults");
    CB_DateDefaults->setChecked(true);
    EditDateFields =
        named(new QLineEdit(QString::fromLatin1(core::DefaultDateText)), "EditDateFields");
    CB_MoneyFields =
        named(new QCheckBox(Translate(QStringLiteral("&Currency fields"))), "CB_MoneyFields");
    CB_MoneyFields->setChecked(true);
    EditMoneyFields =
        named(new QLineEdit(QString::fromLatin1(core::DefaultMoneyText)), "EditMoneyFields");

    auto* fields = new QGridLayout;
    fields->setContentsMargins(20, 0, 0, 0);
    fields->addWidget(CB_DateDefaults, 0, 0);
    fields->addWidget(EditDateFields, 0, 1);
    fields->addWidget(CB_MoneyFields, 1, 0);
    fields->addWidget(EditMoneyFields, 1, 1);

    auto* layout = new QVBoxLayout(page);
    layout->addWidget(CB_SetDefault);
    layout->addLayout(fields);
    layout->addStretch();
    return page;
}

core::PreferenceValues TPreferences::values() const {
    core::PreferenceValues values;
    values.layoutBottom = BtnBottom->isChecked();
    values.defaultDateFormat = RB_FormatDefault->isChecked();
    values.dateFormatString = EditFormat->text();
    values.keepLog = CB_KeepLog->isChecked();
    values.logFile = EditLogFile->text();
    values.hideId = CB_HideID->isChecked();
    values.appendId = CB_AppendID->isChecked();
    values.setDefaults = CB_SetDefault->isChecked();
    values.dateDefaults = CB_DateDefaults->isChecked();
    values.moneyDefaults = CB_MoneyFields->isChecked();
    values.defaultDate = EditDateFields->text();
    values.defaultMoney = EditMoneyFields->text();
    return values;
}

void TPreferences::setValues(const core::PreferenceValues& values) {
    (values.layoutBottom ? BtnBottom : BtnRight)->setChecked(true);
    (values.defaultDateFormat ? RB_FormatDefault : RB_FormatCustom)->setChecked(true);
    EditFormat->setText(values.dateFormatString);
    CB_KeepLog->setChecked(values.keepLog);
    EditLogFile->setText(values.logFile);
    CB_HideID->setChecked(values.hideId);
    CB_AppendID->setChecked(values.appendId);
    CB_SetDefault->setChecked(values.setDefaults);
    CB_DateDefaults->setChecked(values.dateDefaults);
    CB_MoneyFields->setChecked(values.moneyDefaults);
    EditDateFields->setText(values.defaultDate);
    EditMoneyFields->setText(values.defaultMoney);
}

void TPreferences::FormCreate() {
    DefaultDateFormat->setText(core::LocaleShortDateFormat(m_locale));

    core::PreferenceValues stored = values();
    core::ReadPreferenceValues(stored);
    setValues(stored);

    PageControl1->setCurrentIndex(0);

    // Always 1 January 1990, whatever "Date" holds.
    EditDateFields->setText(core::DateToStr(QDate(1990, 1, 1)));
}

void TPreferences::BtnOkClick() {
    try {
        core::WritePreferenceValues(values(), m_locale);
    } catch (const core::ConversionError& error) {
        const QString text = error.message().contains(QLatin1String("date"))
                                 ? Translate(QStringLiteral("Default Date Error"))
                                 : error.message();
        ShowError(this, Translate(QStringLiteral("Error")), text);
    }
    accept();
}

void TPreferences::BtnBrowseClick() {
    SaveFileRequest request;
    request.filter = Translate(QStringLiteral("Log Files|*.log|All Files|*.*"));
    request.defaultExtension = QStringLiteral("log");
    request.fileName = EditLogFile->text();
    if (const std::optional<QString> path = ChooseSaveFile(this, request))
        EditLogFile->setText(*path);
}

} // namespace ui
