#pragma once

#include <QFile>
#include <QStringDecoder>

namespace interchange {

// The lines of a delimited text file, read in large blocks. LF, CR LF and a lone CR end a
// line; a byte-order mark at the start is dropped; a line that is not UTF-8 is read as
// Latin-1, so that no byte is lost.
class LineReader {
public:
    // Longer lines are outside the file format.
    static constexpr qsizetype MaxLineLength = 65534;

    bool open(const QString& path);
    // The next line without its end; false at the end of the file. A line longer than
    // MaxLineLength comes back empty, with lineTooLong() true. A read error is thrown.
    bool readLine(QString& line);
    bool lineTooLong() const { return m_tooLong; }
    // Lines read so far, the current one included.
    qint64 lineNumber() const { return m_lineNumber; }
    qint64 bytesRead() const { return m_consumed; }
    qint64 size() const { return m_file.size(); }

private:
    bool fill();
    QString decode(const char* data, qsizetype size);

    QFile m_file;
    QByteArray m_buffer;
    qsizetype m_offset = 0;
    qint64 m_consumed = 0;
    qint64 m_lineNumber = 0;
    bool m_atEnd = false;
    bool m_afterCr = false;
    bool m_tooLong = false;
    QStringDecoder m_utf8{QStringDecoder::Utf8, QStringDecoder::Flag::Stateless};
};

} // namespace interchange
