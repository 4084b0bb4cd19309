#pragma once

#include <QDockWidget>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QToolButton;
class QAction;

namespace ui {

// The connection details panel, docked along the bottom of the main window: data
// source, user, password and SQL text, a button for the main window's execute action and
// one that opens the SQL wizard.
class TDetailsForm : public QDockWidget {
    Q_OBJECT
public:
    TDetailsForm(QAction* executeAction, QWidget* parent);

    // The four boxes, each without the blanks and control characters at either end.
    QString dataSourceName() const;
    QString userName() const;
    QString password() const;
    QString sqlText() const;

    // Writes the four boxes as given, without announcing a change.
    void setFields(const QString& dataSourceName, const QString& userName, const QString& sqlText,
                   const QString& password);

    // Replaces the SQL text with the text on the clipboard.
    void PasteSQL();

    // Trims blanks, control characters and other white space at both ends.
    static QString trimmedText(const QString& text);

Q_SIGNALS:
    // The data source or the SQL text was edited; the main window copies the panel and
    // enables its execute action when both are non-empty.
    void connectionEdited();

private:
    // Opens the SQL wizard with the boxes as typed; a query it builds replaces the SQL.
    void SpeedButton2Click();

    QLabel* LabelDSN;
    QLabel* LabelID;
    QLabel* LabelPass;
    QLabel* LabelSQL;
    QLineEdit* EditDSN;
    QLineEdit* EditID;
    QLineEdit* EditPass;
    QPlainTextEdit* MemoSQL;
    QToolButton* SpeedButton1;
    QToolButton* SpeedButton2;
};

} // namespace ui
