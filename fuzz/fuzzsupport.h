#pragma once

// Shared by the fuzz targets: a failed property prints what failed and aborts, so that
// libFuzzer keeps the input as a crash.

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#define FUZZ_CHECK(condition, detail)                                                              \
    do {                                                                                           \
        if (!(condition))                                                                          \
            fuzzsupport::fail(#condition, __FILE__, __LINE__, detail);                             \
    } while (false)

namespace fuzzsupport {

// The toolkit's warnings (such as "Broken filename passed to function" for a path that holds a
// NUL) would flood the output; failed properties report through fail().
inline const bool toolkitQuiet =
    (qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {}), true);

[[noreturn]] inline void fail(const char* condition, const char* file, int line,
                              const QString& detail) {
    std::fprintf(stderr, "%s:%d: property failed: %s\n  %s\n", file, line, condition,
                 detail.toUtf8().constData());
    std::abort();
}

// Bytes as the program gets them from files and the command line: UTF-8, invalid
// sequences and NUL bytes included.
inline QString text(const std::string& bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

inline QString takeText(FuzzedDataProvider& input, size_t maxBytes) {
    return text(input.ConsumeRandomLengthString(maxBytes));
}

// A shown text, for the messages of failed properties.
inline QString shown(const QString& text) {
    return QStringLiteral("\"") + text + QStringLiteral("\"");
}

} // namespace fuzzsupport
