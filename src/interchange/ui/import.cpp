#include "interchange/ui/import.h"

#include "core/ui/dialogbuttons.h"
#include "core/ui/hourglass.h"
#include "core/ui/messages.h"
#include "interchange/ui/delimiterchoice.h"
#include "interchange/ui/statusprogress.h"
#include "translation/translate.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QShowEvent>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

namespace interchange::ui {

using translation::Translate;

namespace {

template <class Widget, class... Arguments>
Widget* named(const char* name, Arguments&&... arguments) {
    auto* widget = new Widget(std::forward<Arguments>(arguments)...);
    widget->setObjectName(QLatin1String(name));
    return widget;
}

// A file filter written "Text files|*.txt|All Files|*.*", as the dialog's own file
// chooser takes it.
QStringList chooserFilters(const QString& filter) {
    const QStringList parts = filter.split(u'|');
    QStringList filters;
    for (qsizetype part = 0; part + 1 < parts.size(); part += 2)
        filters << QStringLiteral("%1 (%2)").arg(parts[part], parts[part + 1]);
    return filters;
}

} // namespace

TFormImport::TFormImport(bool typesMode, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("FormImport"));
    setWindowTitle(QStringLiteral("Import Form"));
    m_settings.TypesMode = typesMode;

    EditFileName = named<QLineEdit>("EditFileName", this);
    BtnBrowse = named<QToolButton>("BtnBrowse", this);
    BtnBrowse->setText(QStringLiteral("[...]"));
    BtnBrowse->setAutoRaise(true);
    connect(BtnBrowse, &QToolButton::clicked, this, &TFormImport::BtnBrowseClick);
    Delimiter = new DelimiterChoice(this);
    StartRowUpDown = named<QSpinBox>("StartRowUpDown", this);
    StartRowUpDown->setRange(1, 1000000);
    RowEdit = StartRowUpDown->findChild<QLineEdit*>();
    RowEdit->setObjectName(QStringLiteral("RowEdit"));
    connect(StartRowUpDown, &QSpinBox::valueChanged, this, &TFormImport::StartRowUpDownClick);
    Lable_Unspecified = named<QLabel>(
        "Lable_Unspecified",
        Translate(QStringLiteral("Default Nodename if required for Asset Type:")), this);
    EditUnspecified = named<QLineEdit>("EditUnspecified", QStringLiteral("UNSPECIFIED"), this);
    Lable_Unspecified->setBuddy(EditUnspecified);
    RB_Ignore =
        named<QRadioButton>("RB_Ignore", Translate(QStringLiteral("&Continue import")), this);
    RB_Ignore->setChecked(true);
    RB_Stop = named<QRadioButton>("RB_Stop", Translate(QStringLiteral("&Stop")), this);
    RB_Reject = named<QRadioButton>(
        "RB_Reject", Translate(QStringLiteral("Stop and &reject all imports")), this);
    MemoFile = named<QPlainTextEdit>("MemoFile", this);
    MemoFile->setReadOnly(true);
    MemoFile->setLineWrapMode(QPlainTextEdit::NoWrap);
    MemoFile->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    OpenDialog = named<QFileDialog>("OpenDialog", this);
    OpenDialog->setAcceptMode(QFileDialog::AcceptOpen);
    OpenDialog->setFileMode(QFileDialog::ExistingFile);
    OpenDialog->setDefaultSuffix(QStringLiteral("txt"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(createLayout());
    const ::ui::DialogButtons buttons =
        ::ui::CreateDialogButtons(this, QStringLiteral("OK"), QStringLiteral("Cancel"));
    BtnOK = buttons.ok;
    BtnOK->setObjectName(QStringLiteral("BtnOK"));
    BtnCancel = buttons.cancel;
    connect(BtnOK, &QPushButton::clicked, this, &QDialog::accept);
    layout->addLayout(buttons.layout);
    resize(560, 480);
}

QWidget* TFormImport::createLayout() {
    auto* controls = new QWidget(this);
    auto* form = new QFormLayout(controls);
    auto* file = new QHBoxLayout;
    file->addWidget(EditFileName, 1);
    file->addWidget(BtnBrowse);
    auto* fileLabel = new QLabel(Translate(QStringLiteral("Filename:")), controls);
    fileLabel->setBuddy(EditFileName);
    form->addRow(fileLabel, file);
    auto* delimiter = new QHBoxLayout;
    delimiter->addWidget(Delimiter->DelimList);
    delimiter->addWidget(Delimiter->EditDelimiter);
    delimiter->addStretch(1);
    auto* delimiterLabel = new QLabel(Translate(QStringLiteral("Delimiter:")), controls);
    delimiterLabel->setBuddy(Delimiter->DelimList);
    form->addRow(delimiterLabel, delimiter);
    auto* rowLabel = new QLabel(Translate(QStringLiteral("Start import at row")), controls);
    rowLabel->setBuddy(StartRowUpDown);
    form->addRow(rowLabel, StartRowUpDown);
    form->addRow(Lable_Unspecified, EditUnspecified);
    auto* onError = new QVBoxLayout;
    for (QRadioButton* choice : {RB_Ignore, RB_Stop, RB_Reject})
        onError->addWidget(choice);
    form->addRow(new QLabel(Translate(QStringLiteral("On Error:")), controls), onError);
    auto* preview =
        named<QGroupBox>("GroupBoxPreview", Translate(QStringLiteral("File Preview")), controls);
    (new QVBoxLayout(preview))->addWidget(MemoFile);
    form->addRow(preview);
    return controls;
}

void TFormImport::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!event->spontaneous())
        FormShow();
}

void TFormImport::FormShow() {
    const bool types = m_settings.TypesMode;
    setWindowTitle(
        Translate(types ? QStringLiteral("Import Asset Types") : QStringLiteral("Import Assets")));
    OpenDialog->setNameFilters(
        chooserFilters(Translate(types ? QStringLiteral("Asset Type files|*.aty|All Files|*.*")
                                       : QStringLiteral("Text files|*.txt|All Files|*.*"))));
    Lable_Unspecified->setVisible(!types);
    EditUnspecified->setVisible(!types);
    ReadImportSettings(m_settings);
    showPreview();
    EditFileName->setText(m_settings.FileName);
    Delimiter->setDelimiter(m_settings.Delimiter);
    {
        const QSignalBlocker quiet(StartRowUpDown);
        StartRowUpDown->setValue(m_settings.StartRow);
    }
    (m_settings.OnError == OnErrorIgnore ? RB_Ignore
     : m_settings.OnError == OnErrorStop ? RB_Stop
                                         : RB_Reject)
        ->setChecked(true);
    if (!m_settings.InitialDir.isEmpty()) {
        OpenDialog->setDirectory(m_settings.InitialDir);
        QDir::setCurrent(m_settings.InitialDir);
    }
    EditUnspecified->setText(m_settings.Node.isEmpty() ? Translate(QStringLiteral("UNSPECIFIED"))
                                                       : m_settings.Node);
}

void TFormImport::readControls() {
    m_settings.FileName = EditFileName->text();
    m_settings.Delimiter = Delimiter->delimiter();
    m_settings.InitialDir = OpenDialog->directory().absolutePath();
    m_settings.Node = EditUnspecified->text();
    m_settings.IdMode = false;
    m_settings.OnError = RB_Ignore->isChecked() ? OnErrorIgnore
                         : RB_Stop->isChecked() ? OnErrorStop
                                                : OnErrorReject;
    m_settings.StartRow = qMax(1, RowEdit->text().toInt());
}

void TFormImport::BtnBrowseClick() {
    readControls();
    OpenDialog->setDirectory(m_settings.InitialDir);
    OpenDialog->selectFile(m_settings.FileName);
    if (OpenDialog->exec() != QDialog::Accepted || OpenDialog->selectedFiles().isEmpty())
        return;
    m_settings.FileName = OpenDialog->selectedFiles().constFirst();
    EditFileName->setText(m_settings.FileName);
    m_settings.InitialDir = OpenDialog->directory().absolutePath();
    showPreview();
}

void TFormImport::StartRowUpDownClick() {
    m_settings.StartRow = qMax(1, RowEdit->text().toInt());
    showPreview();
}

// The file's first bytes, less the lines before the start row. A file that cannot be
// read shows nothing.
void TFormImport::showPreview() {
    MemoFile->clear();
    QFile file(m_settings.FileName);
    if (m_settings.FileName.isEmpty() || !file.open(QIODevice::ReadOnly))
        return;
    const QByteArray start = file.read(PreviewBytes);
    QStringList lines =
        QString::fromUtf8(start).split(QRegularExpression(QStringLiteral("\r\n|\n|\r")));
    if (m_settings.StartRow > 1 && m_settings.StartRow < lines.size())
        lines.remove(0, m_settings.StartRow - 1);
    MemoFile->setPlainText(lines.join(u'\n'));
}

bool TFormImport::FormCloseQuery() {
    readControls();
    const char* problem = m_settings.FileName.isEmpty()    ? "File Name must be specified."
                          : m_settings.Delimiter.isEmpty() ? "Fields Delimiter must be specified."
                                                           : nullptr;
    if (problem) {
        ::ui::ShowError(this, Translate(QStringLiteral("Error")),
                        Translate(QString::fromLatin1(problem)));
        return false;
    }
    WriteImportSettings(m_settings);
    return true;
}

void TFormImport::done(int result) {
    if (result == Accepted && !FormCloseQuery())
        return;
    QDialog::done(result);
}

std::optional<ImportResult> ImportWithDialog(QMainWindow* window, QLabel* statusLine,
                                             db::odbc::Connection& connection, bool typesMode) {
    TFormImport dialog(typesMode, window);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    window->repaint();
    const ::ui::HourglassCursor hourglass;
    StatusProgress progress(window, statusLine);
    if (typesMode)
        return ImportAssetTypes(connection, dialog.Settings(), progress, true);
    return ImportAssets(connection, dialog.Settings(), progress);
}

ImportResult ImportAssetTypesFile(QMainWindow* window, QLabel* statusLine,
                                  db::odbc::Connection& connection, const ImportSettings& settings,
                                  bool unattended) {
    const ::ui::HourglassCursor hourglass;
    StatusProgress progress(window, statusLine);
    return ImportAssetTypes(connection, settings, progress, !unattended);
}

} // namespace interchange::ui
