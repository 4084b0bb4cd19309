#include "interchange/ui/delimiterchoice.h"

#include "interchange/delimited.h"
#include "translation/translate.h"

#include <QComboBox>
#include <QLineEdit>

namespace interchange::ui {

DelimiterChoice::DelimiterChoice(QWidget* parent) : QObject(parent) {
    DelimList = new QComboBox(parent);
    DelimList->setObjectName(QStringLiteral("DelimList"));
    for (const char* item : {"Tab", "Semicolon", "Comma", "Space", "Other"})
        DelimList->addItem(translation::Translate(QString::fromLatin1(item)));
    DelimList->setCurrentIndex(DelimSemicolon);
    EditDelimiter = new QLineEdit(QStringLiteral(";"), parent);
    EditDelimiter->setObjectName(QStringLiteral("EditDelimiter"));
    EditDelimiter->setMaxLength(3);
    EditDelimiter->setVisible(false);
    connect(DelimList, &QComboBox::currentIndexChanged, this, &DelimiterChoice::showOtherEdit);
}

QString DelimiterChoice::delimiter() const {
    return DelimiterOfItem(DelimList->currentIndex(), EditDelimiter->text());
}

void DelimiterChoice::setDelimiter(const QString& delimiter) {
    const int item = ItemOfDelimiter(delimiter);
    if (item == DelimOther)
        EditDelimiter->setText(delimiter);
    DelimList->setCurrentIndex(item);
    showOtherEdit();
}

void DelimiterChoice::showOtherEdit() {
    EditDelimiter->setVisible(DelimList->currentIndex() == DelimOther);
}

} // namespace interchange::ui
