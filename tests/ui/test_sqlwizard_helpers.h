#pragma once

// Helpers of the wizard and details panel tests: reading what unattended message boxes
// print, and answering real message boxes.

#include "core/ui/messages.h"
#include "db/sqlwizard.h"

#include <QAbstractButton>
#include <QApplication>
#include <QByteArray>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <cstdio>
#include <unistd.h>

namespace testwizard {

// Every test starts with the test plugin in its default mode, found in its build folder,
// and message boxes printed instead of shown.
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

// Sends standard error to a temporary file until finish(), which returns what was
// written. In an unattended run each message box prints one "TITLE: TEXT" there.
class StderrCapture {
public:
    StderrCapture() {
        std::fflush(stderr);
        m_file = std::tmpfile();
        m_saved = ::dup(STDERR_FILENO);
        if (m_file && m_saved >= 0)
            ::dup2(::fileno(m_file), STDERR_FILENO);
    }
    ~StderrCapture() { finish(); }
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;

    QString finish() {
        if (!m_file)
            return m_text;
        std::fflush(stderr);
        if (m_saved >= 0) {
            ::dup2(m_saved, STDERR_FILENO);
            ::close(m_saved);
        }
        QByteArray bytes;
        std::rewind(m_file);
        char buffer[4096];
        std::size_t count = 0;
        while ((count = std::fread(buffer, 1, sizeof buffer, m_file)) > 0)
            bytes.append(buffer, static_cast<qsizetype>(count));
        std::fclose(m_file);
        m_file = nullptr;
        m_text = QString::fromLocal8Bit(bytes);
        return m_text;
    }

private:
    std::FILE* m_file = nullptr;
    int m_saved = -1;
    QString m_text;
};

// Watches for modal message boxes while it lives, notes their title and text and
// answers each with the button given.
class BoxAnswerer {
public:
    explicit BoxAnswerer(QMessageBox::StandardButton answer) : m_answer(answer) {
        m_timer.setInterval(5);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { answerBox(); });
        m_timer.start();
    }

    // "TITLE: TEXT" for each box answered, as the unattended boxes print them.
    const QStringList& boxes() const { return m_boxes; }
    // The default button of each.
    const QList<QMessageBox::StandardButton>& defaults() const { return m_defaults; }

private:
    void answerBox() {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || box == m_lastBox || !box->isVisible())
            return;
        m_lastBox = box;
        m_boxes.append(box->windowTitle() + QStringLiteral(": ") + box->text());
        m_defaults.append(box->standardButton(box->defaultButton()));
        if (QAbstractButton* button = box->button(m_answer))
            button->click();
        else
            box->reject();
    }

    QMessageBox::StandardButton m_answer;
    QTimer m_timer;
    QStringList m_boxes;
    QList<QMessageBox::StandardButton> m_defaults;
    QPointer<QMessageBox> m_lastBox;
};

// The box of a failed wizard call as an unattended run prints it.
inline QString HrcheckLine(const QString& description) {
    return QStringLiteral("HRCHECK: : ") + description +
           QStringLiteral("\nPress [Y]es to terminate, [N]o to continue and [C]ancel to Debug");
}

inline QString GetSqlCall() {
    return QStringLiteral("this->GetSQL(dsn, user, password, sql, nlq, nlqtext, (BSTR*)&sqltext)");
}

} // namespace testwizard
