#include "db/ui/statementrunner.h"

#include "db/odbc/odbc.h"
#include "translation/translate.h"

#include <QEventLoop>
#include <QLabel>
#include <QStatusBar>
#include <QToolButton>

#include <exception>
#include <stdexcept>
#include <thread>

namespace ui {

using translation::Translate;

TStatementRunner::TStatementRunner(QStatusBar* statusBar)
    : QObject(statusBar), m_statusBar(statusBar) {
    LabelStatement = new QLabel(statusBar);
    LabelStatement->setObjectName(QStringLiteral("LabelStatement"));
    BtnCancelStatement = new QToolButton(statusBar);
    BtnCancelStatement->setObjectName(QStringLiteral("BtnCancelStatement"));
    BtnCancelStatement->setText(Translate(QStringLiteral("&Cancel")));
    BtnCancelStatement->setShortcut(QKeySequence(Qt::Key_Escape));
    connect(BtnCancelStatement, &QToolButton::clicked, this, &TStatementRunner::cancel);
    statusBar->addPermanentWidget(LabelStatement);
    statusBar->addPermanentWidget(BtnCancelStatement);
    showRunning(false, false);
}

TStatementRunner::~TStatementRunner() = default;

void TStatementRunner::run(db::odbc::Statement& statement, const std::function<void()>& work) {
    m_statement = &statement;
    m_cancelled = false;
    showRunning(true, statement.canCancel());

    QEventLoop loop;
    std::exception_ptr failure;
    std::thread worker([&] {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    // User input other than the Cancel button is kept out by the caller, which disabled
    // the window's actions and panels.
    loop.exec();
    worker.join();

    m_statement = nullptr;
    showRunning(false, false);
    if (failure && m_cancelled)
        throw std::runtime_error(
            Translate(QStringLiteral("The statement was cancelled.")).toStdString());
    if (failure)
        std::rethrow_exception(failure);
}

void TStatementRunner::cancel() {
    if (!m_statement || !m_statement->canCancel())
        return;
    m_cancelled = true;
    LabelStatement->setText(Translate(QStringLiteral("Cancelling the statement...")));
    BtnCancelStatement->setEnabled(false);
    m_statement->cancel();
}

void TStatementRunner::showRunning(bool running, bool cancellable) {
    LabelStatement->setVisible(running);
    BtnCancelStatement->setVisible(running);
    BtnCancelStatement->setEnabled(cancellable);
    if (!running)
        return;
    LabelStatement->setText(
        cancellable ? Translate(QStringLiteral("Executing the statement..."))
                    : Translate(QStringLiteral("Executing the statement (this data source cannot "
                                               "cancel it)...")));
    BtnCancelStatement->setToolTip(
        cancellable ? Translate(QStringLiteral("Cancel the running statement"))
                    : Translate(QStringLiteral("The statement cannot be cancelled")));
}

} // namespace ui
