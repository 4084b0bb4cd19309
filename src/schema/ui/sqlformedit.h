#pragma once

#include <QDialog>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace ui {

// Lets the user edit the add-column wizard's statement. OK closes only when the text still
// reads as an ALTER TABLE ... ADD statement; Cancel always closes.
class TSQLForm : public QDialog {
    Q_OBJECT
public:
    static constexpr int HelpContext = 1200;

    explicit TSQLForm(QWidget* parent = nullptr);

    void SetStatementText(const QString& text);
    QString StatementText() const;

    void done(int result) override;

private:
    QLabel* LabelTitle = nullptr;
    QPlainTextEdit* SQLMemo = nullptr;
    QPushButton* BtnOK = nullptr;
    QPushButton* BtnCancel = nullptr;
};

} // namespace ui
