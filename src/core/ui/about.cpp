#include "core/ui/about.h"

#include "db/odbc/odbc.h"
#include "translation/translate.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

namespace ui {

using translation::Translate;

TAboutForm::TAboutForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("AboutForm"));
    setWindowTitle(Translate(QStringLiteral("About")));
    auto* layout = new QVBoxLayout(this);
    auto* product = new QLabel(QStringLiteral("<b>Orvane Quillet</b>"));
    product->setObjectName(QStringLiteral("ProductName"));
    layout->addWidget(product);
    const QString version = QStringLiteral(QUILLET_VERSION);
    layout->addWidget(new QLabel(Translate(QStringLiteral("Version $VERSION$"), 0,
                                           {{QStringLiteral("$VERSION$"), version}})));
    layout->addWidget(
        new QLabel(Translate(QStringLiteral("Qt $VERSION$"), 0,
                             {{QStringLiteral("$VERSION$"), QLatin1String(qVersion())}})));
    layout->addWidget(
        new QLabel(Translate(QStringLiteral("ODBC driver manager $VERSION$"), 0,
                             {{QStringLiteral("$VERSION$"), db::odbc::DriverManagerVersion()}})));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    layout->addWidget(buttons);
}

} // namespace ui
