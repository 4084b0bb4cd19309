#include "interchange/ui/exportform.h"

#include "assets/resulttablemodel.h"
#include "assets/ui/dbgridrange.h"
#include "assets/ui/grid.h"
#include "core/ui/dialogbuttons.h"
#include "core/ui/messages.h"
#include "interchange/delimited.h"
#include "interchange/ui/delimiterchoice.h"
#include "interchange/ui/statusprogress.h"
#include "translation/translate.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShowEvent>
#include <QToolButton>
#include <QVBoxLayout>

namespace interchange::ui {

using translation::Translate;

namespace {

template <typename Widget> Widget* named(Widget* widget, const char* name) {
    widget->setObjectName(QLatin1String(name));
    return widget;
}

// Restores the normal cursor on every way out of the export.
class HourglassCursor {
public:
    HourglassCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~HourglassCursor() { QApplication::restoreOverrideCursor(); }
    HourglassCursor(const HourglassCursor&) = delete;
    HourglassCursor& operator=(const HourglassCursor&) = delete;
};

// Shows the dialog; on OK, the header lines to write (none unless asked for) and the
// settings.
std::optional<std::pair<ExportSettings, QStringList>> askExport(QMainWindow* window,
                                                                bool typesMode) {
    TFormExport dialog(typesMode, window);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    window->repaint();
    const ExportSettings& settings = dialog.Settings();
    return std::pair(settings, settings.AddHeader ? dialog.HeaderText() : QStringList());
}

} // namespace

void ExportAssetsWithDialog(QMainWindow* window, QLabel* statusLine,
                            db::odbc::Connection& connection, const ::ui::TGridForm& grid) {
    const auto chosen = askExport(window, false);
    if (!chosen)
        return;
    const auto& [settings, header] = *chosen;
    HourglassCursor hourglass;
    StatusProgress progress(window, statusLine);
    ExportAssets(connection, settings.FileName, settings.Delimiter,
                 settings.AddHeader ? &header : nullptr, settings.AllRecords,
                 dynamic_cast<const assets::ResultTableModel*>(grid.Grid()->model()),
                 grid.SelectedRowsInSelectionOrder(), progress);
}

void ExportAssetTypesWithDialog(QMainWindow* window, QLabel* statusLine,
                                db::odbc::Connection& connection) {
    const auto chosen = askExport(window, true);
    if (!chosen)
        return;
    const auto& [settings, header] = *chosen;
    HourglassCursor hourglass;
    StatusProgress progress(window, statusLine);
    ExportAssetTypes(connection, settings.FileName, settings.Delimiter,
                     settings.AddHeader ? &header : nullptr, progress);
}

TFormExport::TFormExport(bool typesMode, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("FormExport"));
    setWindowTitle(QStringLiteral("Export Form"));
    m_settings.TypesMode = typesMode;

    LabelFileName =
        named(new QLabel(Translate(QStringLiteral("Filename:")), this), "LabelFileName");
    EditFileName = named(new QLineEdit(this), "EditFileName");
    LabelFileName->setBuddy(EditFileName);
    BtnBrowse = named(new QToolButton(this), "BtnBrowse");
    BtnBrowse->setText(QStringLiteral("[...]"));
    BtnBrowse->setAutoRaise(true);
    connect(BtnBrowse, &QToolButton::clicked, this, &TFormExport::BtnBrowseClick);
    SaveDialog = named(new QFileDialog(this), "SaveDialog");
    SaveDialog->setAcceptMode(QFileDialog::AcceptSave);
    SaveDialog->setOption(QFileDialog::DontUseNativeDialog);
    SaveDialog->setDefaultSuffix(QStringLiteral("aty"));

    LabelDelimiter =
        named(new QLabel(Translate(QStringLiteral("Delimiter:")), this), "LabelDelimiter");
    m_delimiter = new DelimiterChoice(this);
    LabelDelimiter->setBuddy(m_delimiter->DelimList);

    LabelRows = named(new QLabel(Translate(QStringLiteral("Export Rows:")), this), "LabelRows");
    GroupBoxRows = named(new QGroupBox(this), "GroupBoxRows");
    RB_all = named(new QRadioButton(Translate(QStringLiteral("&All")), GroupBoxRows), "RB_all");
    RB_all->setChecked(true);
    RB_selected = named(new QRadioButton(Translate(QStringLiteral("&Selected only")), GroupBoxRows),
                        "RB_selected");
    auto* rows = new QHBoxLayout(GroupBoxRows);
    rows->addWidget(RB_all);
    rows->addWidget(RB_selected);

    CB_Header =
        named(new QCheckBox(Translate(QStringLiteral("Add &header text")), this), "CB_Header");
    MemoHeader = named(new QPlainTextEdit(this), "MemoHeader");
    MemoHeader->setLineWrapMode(QPlainTextEdit::NoWrap);
    // FormCreate: the default header text.
    MemoHeader->setPlainText(Translate(QStringLiteral("// Assets Export File")));

    const ::ui::DialogButtons buttons =
        ::ui::CreateDialogButtons(this, QStringLiteral("OK"), QStringLiteral("Cancel"));
    BtnOK = buttons.ok;
    BtnOK->setObjectName(QStringLiteral("BtnOK"));
    BtnCancel = buttons.cancel;
    connect(BtnOK, &QPushButton::clicked, this, &QDialog::accept);

    auto* grid = new QGridLayout;
    grid->addWidget(LabelFileName, 0, 0);
    auto* file = new QHBoxLayout;
    file->addWidget(EditFileName, 1);
    file->addWidget(BtnBrowse);
    grid->addLayout(file, 0, 1);
    grid->addWidget(LabelDelimiter, 1, 0);
    auto* delimiter = new QHBoxLayout;
    delimiter->addWidget(m_delimiter->DelimList);
    delimiter->addWidget(m_delimiter->EditDelimiter);
    delimiter->addStretch();
    grid->addLayout(delimiter, 1, 1);
    grid->addWidget(LabelRows, 2, 0);
    grid->addWidget(GroupBoxRows, 2, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(CB_Header);
    layout->addWidget(MemoHeader, 1);
    layout->addLayout(buttons.layout);
    resize(420, 330);
}

QStringList TFormExport::HeaderText() const {
    const QString text = MemoHeader->toPlainText();
    return text.isEmpty() ? QStringList() : text.split(QLatin1Char('\n'));
}

void TFormExport::showEvent(QShowEvent* event) {
    if (!event->spontaneous())
        FormShow();
    QDialog::showEvent(event);
}

void TFormExport::FormShow() {
    const bool types = m_settings.TypesMode;
    setWindowTitle(
        Translate(types ? QStringLiteral("Export Asset Types") : QStringLiteral("Export Assets")));
    SaveDialog->setNameFilter(
        FileDialogFilter(Translate(types ? QStringLiteral("Asset Type files|*.aty|All Files|*.*")
                                         : QStringLiteral("Text files|*.txt|All Files|*.*"))));
    LabelRows->setVisible(!types);
    GroupBoxRows->setVisible(!types);

    LoadExportSettings(m_settings);
    EditFileName->setText(m_settings.FileName);
    if (!m_settings.Delimiter.isEmpty())
        m_delimiter->setDelimiter(m_settings.Delimiter);
    if (!m_settings.InitialDir.isEmpty()) {
        SaveDialog->setDirectory(m_settings.InitialDir);
        QDir::setCurrent(m_settings.InitialDir);
    }
    if (m_settings.HeaderLines)
        MemoHeader->setPlainText(m_settings.HeaderLines->join(QLatin1Char('\n')));
    (m_settings.AllRecords ? RB_all : RB_selected)->setChecked(true);
    CB_Header->setChecked(m_settings.AddHeader);
}

void TFormExport::readControls() {
    m_settings.FileName = EditFileName->text();
    m_settings.Delimiter = m_delimiter->delimiter();
    m_settings.InitialDir = SaveDialog->directory().absolutePath();
    m_settings.AllRecords = RB_all->isChecked();
    m_settings.AddHeader = CB_Header->isChecked();
}

void TFormExport::BtnBrowseClick() {
    readControls();
    SaveDialog->setDirectory(m_settings.InitialDir);
    SaveDialog->selectFile(m_settings.FileName.isEmpty() ? QStringLiteral("assets_exp.txt")
                                                         : m_settings.FileName);
    if (SaveDialog->exec() != QDialog::Accepted || SaveDialog->selectedFiles().isEmpty())
        return;
    m_settings.FileName = SaveDialog->selectedFiles().constFirst();
    EditFileName->setText(m_settings.FileName);
    m_settings.InitialDir = SaveDialog->directory().absolutePath();
}

bool TFormExport::FormCloseQuery() {
    readControls();
    const char* missing = m_settings.FileName.isEmpty()    ? "File Name must be specified."
                          : m_settings.Delimiter.isEmpty() ? "Fields Delimiter must be specified."
                                                           : nullptr;
    if (missing) {
        ::ui::ShowError(this, Translate(QStringLiteral("Error")),
                        Translate(QLatin1String(missing)));
        return false;
    }
    SaveExportSettings(m_settings, HeaderText());
    return true;
}

void TFormExport::done(int result) {
    if (result == Accepted && !FormCloseQuery())
        return;
    QDialog::done(result);
}

} // namespace interchange::ui
