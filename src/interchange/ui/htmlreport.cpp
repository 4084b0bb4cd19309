#include "interchange/ui/htmlreport.h"

#include "assets/ui/dbgridrange.h"
#include "core/ui/dialogbuttons.h"
#include "core/ui/messages.h"
#include "interchange/delimited.h"
#include "translation/translate.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <stdexcept>

namespace interchange::ui {

using translation::Translate;

namespace {

QHBoxLayout* fileRow(QLineEdit* edit, QToolButton* button) {
    auto* row = new QHBoxLayout;
    row->addWidget(edit, 1);
    row->addWidget(button);
    return row;
}

} // namespace

THtmlReportForm::THtmlReportForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("HtmlReportForm"));
    setWindowTitle(Translate(QStringLiteral("Save as HTML")));
    const auto makeFile = [this](QLineEdit*& edit, QToolButton*& button, const char* editName,
                                 const char* buttonName, bool save) {
        edit = new QLineEdit(this);
        edit->setObjectName(QLatin1String(editName));
        button = new QToolButton(this);
        button->setObjectName(QLatin1String(buttonName));
        button->setText(QStringLiteral("[...]"));
        button->setAutoRaise(true);
        QLineEdit* target = edit;
        connect(button, &QToolButton::clicked, this,
                [this, target, save] { browse(target, save); });
    };
    makeFile(EditFileName, BtnBrowse, "EditFileName", "BtnBrowse", true);
    makeFile(EditTemplate, BtnBrowseTemplate, "EditTemplate", "BtnBrowseTemplate", false);
    EditTemplate->setPlaceholderText(Translate(QStringLiteral("none: the grid as a page")));
    RB_all = new QRadioButton(Translate(QStringLiteral("&All rows")), this);
    RB_all->setObjectName(QStringLiteral("RB_all"));
    RB_selected = new QRadioButton(Translate(QStringLiteral("&Selected rows only")), this);
    RB_selected->setObjectName(QStringLiteral("RB_selected"));
    RB_all->setChecked(true);

    auto* form = new QFormLayout;
    form->addRow(Translate(QStringLiteral("Filename:")), fileRow(EditFileName, BtnBrowse));
    form->addRow(Translate(QStringLiteral("Template:")), fileRow(EditTemplate, BtnBrowseTemplate));
    auto* rows = new QHBoxLayout;
    rows->addWidget(RB_all);
    rows->addWidget(RB_selected);
    form->addRow(Translate(QStringLiteral("Rows:")), rows);
    const ::ui::DialogButtons buttons =
        ::ui::CreateDialogButtons(this, QStringLiteral("OK"), QStringLiteral("Cancel"));
    BtnOK = buttons.ok;
    BtnOK->setObjectName(QStringLiteral("BtnOK"));
    BtnCancel = buttons.cancel;
    connect(BtnOK, &QPushButton::clicked, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons.layout);
    resize(440, 150);
}

QString THtmlReportForm::FileName() const {
    return EditFileName->text();
}

QString THtmlReportForm::TemplateFileName() const {
    return EditTemplate->text();
}

bool THtmlReportForm::SelectedOnly() const {
    return RB_selected->isChecked();
}

void THtmlReportForm::browse(QLineEdit* edit, bool save) {
    const QString filter =
        FileDialogFilter(Translate(QStringLiteral("HTML files|*.html *.htm|All Files|*.*")));
    const QString chosen =
        save ? QFileDialog::getSaveFileName(this, windowTitle(), edit->text(), filter)
             : QFileDialog::getOpenFileName(this, windowTitle(), edit->text(), filter);
    if (!chosen.isEmpty())
        edit->setText(chosen);
}

void THtmlReportForm::done(int result) {
    if (result == Accepted) {
        const char* refusal = nullptr;
        if (FileName().isEmpty())
            refusal = "File Name must be specified.";
        else if (!TemplateFileName().isEmpty() && !QFile::exists(TemplateFileName()))
            refusal = "The template file does not exist.";
        if (refusal) {
            ::ui::ShowError(this, Translate(QStringLiteral("Error")),
                            Translate(QLatin1String(refusal)));
            return;
        }
    }
    QDialog::done(result);
}

void SaveGridAsHtml(QWidget* parent, const ::ui::TDBGridRange& grid) {
    THtmlReportForm dialog(parent);
    if (dialog.exec() != QDialog::Accepted)
        return;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    try {
        const QString page = dialog.FileName();
        if (dialog.TemplateFileName().isEmpty()) {
            grid.HTMLSaveToFile(page, dialog.SelectedOnly());
        } else {
            // The title row first, then the body rows into the page written so far.
            grid.HTMLProcessTemplate(dialog.TemplateFileName(), page,
                                     QLatin1String(THtmlReportForm::HeaderPlaceholder),
                                     grid.HTMLHeaderToString());
            grid.HTMLProcessTemplate(page, page, QLatin1String(THtmlReportForm::RowsPlaceholder),
                                     grid.HTMLBodyToString(dialog.SelectedOnly()));
        }
    } catch (const std::exception& error) {
        QApplication::restoreOverrideCursor();
        ::ui::ShowError(parent, Translate(QStringLiteral("Error")),
                        QString::fromUtf8(error.what()));
        return;
    }
    QApplication::restoreOverrideCursor();
}

} // namespace interchange::ui
