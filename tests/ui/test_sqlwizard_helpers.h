#pragma once

// Helpers of the widget tests: what unattended message boxes print, answering real
// message boxes, and the wizard's failure report as it is shown.

#include "core/ui/messages.h"
#include "db/sqlwizard.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryFile>
#include <QTimer>

#include <cstdio>
#include <functional>
#include <unistd.h>

namespace testwizard {

// Every wizard test starts with the test plugin in its default mode and message boxes
// printed instead of shown.
inline void startWizardTest(const QString& pluginDirectory) {
    for (const char* name : {"QUILLET_TEST_SQLWIZARD_MODE", "QUILLET_TEST_SQLWIZARD_CODE",
                             "QUILLET_TEST_SQLWIZARD_SQL", "QUILLET_TEST_SQLWIZARD_RECORD"})
        qunsetenv(name);
    ui::SetUnattended(true);
    db::SetSqlWizardDirectories({pluginDirectory});
}

inline void endWizardTest() {
    ui::SetUnattended(false);
    db::SetSqlWizardDirectories({});
}

// What `action` writes to standard error: in an unattended run, one "TITLE: TEXT" line
// for each message box.
inline QString printedBy(const std::function<void()>& action) {
    QTemporaryFile file;
    if (!file.open())
        qFatal("no temporary file");
    std::fflush(stderr);
    const int saved = ::dup(STDERR_FILENO);
    ::dup2(file.handle(), STDERR_FILENO);
    action();
    std::fflush(stderr);
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    file.seek(0);
    return QString::fromLocal8Bit(file.readAll());
}

// While it lives, answers each modal message box with `answer` and notes its
// "TITLE: TEXT" and its default button.
class BoxAnswerer {
public:
    explicit BoxAnswerer(QMessageBox::StandardButton answer) {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this, answer] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || box == m_last || !box->isVisible())
                return;
            m_last = box;
            boxes << box->windowTitle() + QStringLiteral(": ") + box->text();
            defaults << box->standardButton(box->defaultButton());
            box->button(answer)->click();
        });
        m_timer.start(5);
    }

    QStringList boxes;
    QList<QMessageBox::StandardButton> defaults;

private:
    QTimer m_timer;
    QPointer<QMessageBox> m_last;
};

// The description of a failed call with the system's text, and with a bare code.
inline QString messageForm(const QString& message) {
    return QStringLiteral("'this->GetSQL(dsn, user, password, sql, nlq, nlqtext, "
                          "(BSTR*)&sqltext)': %1 @ sqlwizard_tlb/147")
        .arg(message);
}
inline QString codeForm(const QString& hex, const QString& decimal) {
    return QStringLiteral("(this->GetSQL(dsn, user, password, sql, nlq, nlqtext, "
                          "(BSTR*)&sqltext)) Error: %1 (%2) @ sqlwizard_tlb/147")
        .arg(hex, decimal);
}

// The box of a failed call as "TITLE: TEXT".
inline QString hrcheckBox(const QString& description) {
    return QStringLiteral("HRCHECK: : ") + description +
           QStringLiteral("\nPress [Y]es to terminate, [N]o to continue and [C]ancel to Debug");
}

} // namespace testwizard
