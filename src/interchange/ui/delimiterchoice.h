#pragma once

#include <QObject>

class QComboBox;
class QLineEdit;
class QWidget;

namespace interchange::ui {

// The delimiter controls of the import and export dialogs: the drop-down DelimList and,
// visible only while "Other" is chosen, the edit EditDelimiter for up to three characters.
class DelimiterChoice : public QObject {
    Q_OBJECT
public:
    explicit DelimiterChoice(QWidget* parent);

    QComboBox* DelimList = nullptr;
    QLineEdit* EditDelimiter = nullptr;

    QString delimiter() const;
    void setDelimiter(const QString& delimiter);

private:
    void showOtherEdit();
};

} // namespace interchange::ui
