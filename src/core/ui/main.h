#pragma once

#include "db/assetsconnection.h"

#include <QMainWindow>

class QAction;
class QLabel;
class QTableView;

namespace assets {
class QueryResultModel;
}

namespace ui {

class TAboutForm;
class TDetailsForm;

// The main window. Its creation runs the whole start-up: preferences, command line,
// log banner, connection, schema creation, asset-type import and the first query.
class TfmMain : public QMainWindow {
    Q_OBJECT
public:
    explicit TfmMain(const QString& rawCommandLine, QWidget* parent = nullptr);
    ~TfmMain() override;

    bool noGui() const { return m_noGui; }
    QString statusText() const;
    void SetStatusText(const QString& text);

    // The about box is created after the main window and shown by the Help menu.
    void setAboutForm(TAboutForm* aboutForm);

    // (Re)connects when the connection inputs changed and shows the result of the SQL text.
    void RunQuery();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    struct StartupOptions;

    void FormCreate(const QString& rawCommandLine);
    void runStartupSteps(const QString& rawCommandLine);
    void applyCommandLine(const QString& rawCommandLine, StartupOptions& options);
    void createActions();
    void createGridPanel();
    void connectDatabase();
    void importAssetTypes(const StartupOptions& options);
    void openQuery();
    void showDetailsFromLastConnection();
    void copyDetailsIntoFields();
    void reportError(const QString& message);
    void updateActions();

    void ExitActionExecute();
    void ActionExecuteExecute();
    void ViewDetailsExecute();
    void ActionAboutExecute();

    QString m_dataSourceName;
    QString m_sqlText;
    QString m_userName;
    QString m_password;
    QString m_title;
    QString m_databaseType;
    bool m_noGui = false;

    db::AssetsConnection ASSETS;

    QWidget* Grid_Edit = nullptr;
    QWidget* pnGrid = nullptr;
    QTableView* m_resultView = nullptr;
    assets::QueryResultModel* m_resultModel = nullptr;
    TDetailsForm* m_details = nullptr;
    TAboutForm* m_aboutForm = nullptr;
    QLabel* StatusBar = nullptr;

    QAction* ExitAction = nullptr;
    QAction* ActionExecute = nullptr;
    QAction* ViewDetails = nullptr;
    QAction* ActionAbout = nullptr;
};

} // namespace ui
