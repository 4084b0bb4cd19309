// Language files and the unescaping of their strings.
//
// Properties: ParseLkp takes any bytes without throwing and keeps only entries read before
// the first fault; Unescape agrees with a plain reading of its table; every entry read, and any
// two texts, written with FormatLkpEntry read back as the same two texts.

#include "fuzzsupport.h"
#include "translation/escapes.h"
#include "translation/lkpfile.h"

namespace {

QString unescapeReference(const QString& text) {
    static const char* const from = "\\abfnrtv?\"'";
    static const char16_t to[] = {u'\\', 7, 8, 12, 10, 13, 9, 11, u'?', u'"', u'\''};
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('\\') && i + 1 < text.size()) {
            const char16_t next = text[i + 1].unicode();
            const char* hit = next < 128 && next != 0 ? std::strchr(from, next) : nullptr;
            if (hit) {
                result += QChar(to[hit - from]);
                ++i;
                continue;
            }
        }
        result += text[i];
    }
    return result;
}

void checkReadsBack(const QString& source, const QString& translation) {
    const QByteArray line = translation::FormatLkpEntry(source, translation);
    const translation::LkpContents again = translation::ParseLkp(line);
    const QString detail = QString::fromUtf8(line);
    FUZZ_CHECK(again.complete && again.entries.size() == 1, detail);
    FUZZ_CHECK(again.entries[0].source == source, detail);
    FUZZ_CHECK(again.entries[0].translation == translation, detail);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    const translation::LkpContents contents = translation::ParseLkp(bytes);
    FUZZ_CHECK(contents.complete == contents.error.isEmpty(), contents.error);
    FUZZ_CHECK(contents.complete == (contents.errorLine == 0), contents.error);
    for (const translation::LkpEntry& entry : contents.entries)
        checkReadsBack(entry.source, entry.translation);

    FuzzedDataProvider input(data, size);
    const QString source = fuzzsupport::takeText(input, 256);
    const QString translation = fuzzsupport::text(input.ConsumeRemainingBytesAsString());
    FUZZ_CHECK(translation::Unescape(source) == unescapeReference(source),
               fuzzsupport::shown(source));
    checkReadsBack(source, translation);
    return 0;
}
