#include "interchange/linereader.h"

#include <cstring>
#include <stdexcept>

namespace interchange {

namespace {

constexpr qsizetype BlockSize = 1 << 20;
// A UTF-8 line of MaxLineLength characters takes at most three bytes for each.
constexpr qsizetype MaxLineBytes = 3 * LineReader::MaxLineLength;

const char* findLineEnd(const char* begin, const char* end) {
    for (const char* at = begin; at != end; ++at)
        if (*at == '\n' || *at == '\r')
            return at;
    return end;
}

} // namespace

bool LineReader::open(const QString& path) {
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::ReadOnly))
        return false;
    if (!fill() && m_file.error() != QFileDevice::NoError)
        return false;
    if (m_buffer.startsWith("\xEF\xBB\xBF"))
        m_offset = 3;
    return true;
}

bool LineReader::fill() {
    if (m_atEnd)
        return false;
    m_buffer.remove(0, m_offset);
    m_offset = 0;
    const qsizetype kept = m_buffer.size();
    m_buffer.resize(kept + BlockSize);
    const qint64 got = m_file.read(m_buffer.data() + kept, BlockSize);
    if (got < 0)
        throw std::runtime_error(m_file.errorString().toStdString());
    m_buffer.resize(kept + got);
    m_atEnd = got == 0;
    return got > 0;
}

bool LineReader::readLine(QString& line) {
    m_tooLong = false;
    qsizetype scanned = 0;
    for (;;) {
        if (m_afterCr && m_offset < m_buffer.size()) {
            m_afterCr = false;
            if (m_buffer[m_offset] == '\n')
                ++m_offset;
        }
        const char* begin = m_buffer.constData() + m_offset;
        const char* end = m_buffer.constData() + m_buffer.size();
        const char* lineEnd = findLineEnd(begin + scanned, end);
        if (lineEnd != end || (m_atEnd && begin != end)) {
            line = m_tooLong ? QString() : decode(begin, lineEnd - begin);
            m_afterCr = lineEnd != end && *lineEnd == '\r';
            const qsizetype taken = (lineEnd - begin) + (lineEnd != end ? 1 : 0);
            m_offset += taken;
            m_consumed += taken;
            ++m_lineNumber;
            return true;
        }
        if (end - begin > MaxLineBytes) {
            // Too long for a line of the format: dropped as it is read.
            m_tooLong = true;
            m_consumed += end - begin;
            m_offset = m_buffer.size();
            scanned = 0;
        } else {
            scanned = end - begin;
        }
        if (!fill() && m_offset == m_buffer.size()) {
            if (!m_tooLong)
                return false;
            line.clear();
            ++m_lineNumber;
            return true;
        }
    }
}

QString LineReader::decode(const char* data, qsizetype size) {
    QString text = m_utf8.decode(QByteArrayView(data, size));
    if (m_utf8.hasError()) {
        m_utf8.resetState();
        text = QString::fromLatin1(data, size);
    }
    if (text.size() > MaxLineLength) {
        m_tooLong = true;
        return QString();
    }
    return text;
}

} // namespace interchange
