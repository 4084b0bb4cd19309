#pragma once

#include <QDockWidget>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QToolButton;
class QAction;

namespace ui {

// The connection details panel, docked along the bottom of the main window: data
// source, user, password and SQL text, and a button for the execute action.
class TDetailsForm : public QDockWidget {
    Q_OBJECT
public:
    TDetailsForm(QAction* executeAction, QWidget* parent);

    QString dataSourceName() const;
    QString userName() const;
    QString password() const;
    QString sqlText() const;
    void setFields(const QString& dataSourceName, const QString& userName,
                   const QString& sqlText, const QString& password);

Q_SIGNALS:
    // The data source or the SQL text was edited; the main window copies the panel.
    void connectionEdited();

private:
    QLineEdit* EditDSN;
    QLineEdit* EditID;
    QLineEdit* EditPass;
    QPlainTextEdit* MemoSQL;
    QToolButton* SpeedButton1;
};

} // namespace ui
