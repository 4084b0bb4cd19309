#pragma once

#include "db/dialect.h"

#include <QDialog>
#include <QStringList>

class QLabel;
class QListWidget;
class QPushButton;

namespace core {
class CommandTarget;
}

namespace db::odbc {
class Connection;
}

namespace ui {

// Asks which user column of ASSETS to drop (listed without their prefix) and, once the
// user confirms, builds the statement that drops it in the connection's dialect. The list
// is read when the dialog is created; the main window's status bar says how it went.
class TfmDeleteColumn : public QDialog {
    Q_OBJECT
public:
    static constexpr int HelpContext = 500;

    TfmDeleteColumn(db::odbc::Connection& connection, db::DatabaseDialect dialect,
                    core::CommandTarget& mainWindow, QWidget* parent = nullptr);

    // The statement's lines joined with line breaks; empty until a column is confirmed.
    QString StatementText() const { return m_statementLines.join(QLatin1Char('\n')); }
    // The chosen column's full name.
    const QString& ColumnName() const { return m_columnName; }

    // OK closes only with a column chosen and its deletion confirmed.
    void done(int result) override;

private:
    void fillFieldList(db::odbc::Connection& connection, core::CommandTarget& mainWindow);
    // The chosen column's full name; empty when the list is empty. Throws when no column
    // is chosen.
    QString readChoice() const;
    bool confirmChoice();

    db::DatabaseDialect m_dialect;
    QString m_columnName;
    QStringList m_statementLines;

    QLabel* LabelPrompt = nullptr;
    QListWidget* lbFields = nullptr;
    QPushButton* BtnOk = nullptr;
    QPushButton* BtnCancel = nullptr;
};

} // namespace ui
