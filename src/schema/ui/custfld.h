#pragma once

#include "db/dialect.h"
#include "schema/usercolumns.h"

#include <QDialog>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;

namespace ui {

// The add-column wizard: the new column's name, its type, width and default, and a summary
// with the statement that adds it in the connection's dialect. A page's tab shows once the
// page has been reached; Next and Previous turn the pages as the tabs do, and a page is
// left only when its answers pass their check. The answers stay for as long as the wizard
// lives, so a failed statement can send the user back to them.
class TCustFldForm : public QDialog {
    Q_OBJECT
public:
    static constexpr int HelpContext = 1100;

    explicit TCustFldForm(db::DatabaseDialect dialect, QWidget* parent = nullptr);

    // The statement to run: its lines joined with line breaks.
    QString StatementText() const;
    // What went wrong when Finish rebuilt the statement; empty when nothing did.
    const QString& FinishError() const { return m_finishError; }

    void PageFieldDefChange(int index);
    void BtnNextClick();
    void BtnPrevClick();
    void BtnEditSQLClick();
    void BtnOKClick();

protected:
    void showEvent(QShowEvent* event) override;

private:
    enum Page { NamePage = 0, TypePage = 1, ReviewPage = 2 };

    QWidget* createNamePage();
    QWidget* createTypePage();
    QWidget* createReviewPage();
    void createButtons();
    void TypeButtonClick();
    // The page-leaving checks: they set the column's answers or throw with the message.
    void checkPage(int page);
    void enterPage(int page);
    void buildStatement();
    void buildSummary();
    schema::ColumnTypeChoice typeChoice() const;

    db::DatabaseDialect m_dialect;
    schema::NewUserColumn m_column;
    QStringList m_statementLines;
    bool m_statementEdited = false;
    QString m_finishError;
    int m_page = NamePage;

    QTabWidget* PageFieldDef = nullptr;
    QWidget* tsFieldName = nullptr;
    QLabel* LabelPrefix = nullptr;
    QLineEdit* EditName = nullptr;
    QPlainTextEdit* MemoName = nullptr;
    QWidget* tsDataType = nullptr;
    QPlainTextEdit* MemoDataType = nullptr;
    QGroupBox* GroupDataTypes = nullptr;
    QRadioButton* RB_Text = nullptr;
    QRadioButton* RB_Date = nullptr;
    QRadioButton* RB_Number = nullptr;
    QRadioButton* RB_Currency = nullptr;
    QWidget* PanelText = nullptr;
    QRadioButton* RB_Char = nullptr;
    QRadioButton* RB_VarChar = nullptr;
    QLineEdit* EditLength = nullptr;
    QLabel* lbDateFormat = nullptr;
    QLineEdit* EditDefVal = nullptr;
    QWidget* tsReview = nullptr;
    QPlainTextEdit* MemoResult = nullptr;
    QPushButton* BtnEditSQL = nullptr;
    QPushButton* BtnPrev = nullptr;
    QPushButton* BtnNext = nullptr;
    QPushButton* BtnOK = nullptr;
    QPushButton* BtnCancel = nullptr;
};

} // namespace ui
