#include "core/ui/main.h"
#include "core/commandline.h"
#include "core/log.h"
#include "core/ui/about.h"
#include "core/ui/messages.h"
#include "translation/translate.h"

#include <QApplication>
#include <QFontDatabase>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

// An exception that escapes an event handler is shown, and the program ends with a
// failing status instead of crashing.
class QuilletApplication : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        try {
            return QApplication::notify(receiver, event);
        } catch (const std::exception& error) {
            showFatal(QString::fromUtf8(error.what()));
        } catch (...) {
            showFatal(QStringLiteral("Unknown error"));
        }
        std::exit(EXIT_FAILURE);
    }

    static void showFatal(const QString& message) {
        ui::ShowError(nullptr, translation::Translate(QStringLiteral("Error")), message);
    }
};

QStringList argumentList(int argc, char** argv) {
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    return arguments;
}

// In an unattended run stderr carries the message boxes; the toolkit's own chatter
// (such as notes about the session environment) stays out of it.
void keepOnlyCriticalMessages(QtMsgType type, const QMessageLogContext& context,
                              const QString& message) {
    if (type == QtCriticalMsg || type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
}

// An unattended run needs no display: it never shows a window.
void prepareUnattendedRun(const QString& rawCommandLine) {
    core::CommandLineValues values;
    core::ParseCommandLine(rawCommandLine, values);
    if (!values.noGui)
        return;
    ui::SetUnattended(true);
    if (qEnvironmentVariableIsEmpty("QUILLET_DEBUG"))
        qInstallMessageHandler(keepOnlyCriticalMessages);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

// A log entry that cannot be written is reported once, on stderr and in a box titled
// "Error"; in an unattended run the box is that stderr line.
void reportLogFailure(const QString& text) {
    if (!ui::IsUnattended())
        std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    ui::ShowError(nullptr, translation::Translate(QStringLiteral("Error")), text);
}

// The language's dialog font, where it is installed; otherwise the desktop's own.
void useDialogFont(QApplication& application) {
    const QString family =
        translation::FontFamilyToUse(translation::DialogFont(), QFontDatabase::families());
    if (family.isEmpty())
        return;
    QFont font = QApplication::font();
    font.setFamily(family);
    application.setFont(font);
}

} // namespace

int main(int argc, char** argv) {
    const QString rawCommandLine = core::RawCommandLine(argumentList(argc, argv));
    prepareUnattendedRun(rawCommandLine);
    QuilletApplication application(argc, argv);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Quillet"));
    useDialogFont(application);
    core::SetLogFailureHandler(reportLogFailure);
    try {
        int status = EXIT_SUCCESS;
        {
            ui::TfmMain fmMain(rawCommandLine);
            ui::TAboutForm aboutForm(&fmMain);
            fmMain.setAboutForm(&aboutForm);
            if (!fmMain.noGui())
                fmMain.show();
            status = application.exec();
        } // the end banner is logged here
        const bool failed = ui::ErrorWasShown() || core::LogEntriesLost();
        return ui::IsUnattended() && failed ? EXIT_FAILURE : status;
    } catch (const std::exception& error) {
        QuilletApplication::showFatal(QString::fromUtf8(error.what()));
    }
    return EXIT_FAILURE;
}
