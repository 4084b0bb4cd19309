#include "translation/lkpfile.h"

#include "translation/escapes.h"

#include <QFile>
#include <QStringDecoder>

namespace translation {

namespace {

constexpr char Marker[] = "T";

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

enum class TokenKind { End, Word, String, Error };

struct Token {
    TokenKind kind = TokenKind::End;
    QByteArrayView text; // a word, or the inside of a string with its backslashes
    int line = 0;
    const char* error = nullptr;
};

class Tokenizer {
public:
    explicit Tokenizer(QByteArrayView data) : m_data(data) {
        if (m_data.startsWith("\xEF\xBB\xBF"))
            m_pos = 3; // byte-order mark written by some editors
    }

    Token next() {
        skipSpaceAndComments();
        Token token;
        token.line = m_line;
        if (m_pos >= m_data.size())
            return token;
        if (m_data[m_pos] == '"')
            return readString(token);

        const qsizetype start = m_pos;
        while (m_pos < m_data.size() && !isSpace(m_data[m_pos]) && m_data[m_pos] != '#')
            ++m_pos;
        token.kind = TokenKind::Word;
        token.text = m_data.sliced(start, m_pos - start);
        return token;
    }

private:
    void skipSpaceAndComments() {
        while (m_pos < m_data.size()) {
            const char c = m_data[m_pos];
            if (c == '#') {
                while (m_pos < m_data.size() && m_data[m_pos] != '\n')
                    ++m_pos;
            } else if (isSpace(c)) {
                if (c == '\n')
                    ++m_line;
                ++m_pos;
            } else {
                return;
            }
        }
    }

    Token& readString(Token& token) {
        ++m_pos; // opening quote
        const qsizetype start = m_pos;
        while (m_pos < m_data.size() && m_data[m_pos] != '"') {
            if (m_data[m_pos] == '\\' && m_pos + 1 < m_data.size())
                ++m_pos; // the escaped character stays in the string
            if (m_data[m_pos] == '\n')
                ++m_line;
            ++m_pos;
        }
        if (m_pos >= m_data.size()) {
            token.kind = TokenKind::Error;
            token.error = "string not closed before the end of the file";
            return token;
        }
        token.text = m_data.sliced(start, m_pos - start);
        ++m_pos; // closing quote
        if (m_pos < m_data.size() && !isSpace(m_data[m_pos]) && m_data[m_pos] != '#') {
            token.kind = TokenKind::Error;
            token.error = "string not followed by white space";
            return token;
        }
        token.kind = TokenKind::String;
        return token;
    }

    QByteArrayView m_data;
    qsizetype m_pos = 0;
    int m_line = 1;
};

// The text of a string token. QString::fromUtf8 drops a leading byte-order mark; inside a
// string it is a character of the text.
QString textOf(QByteArrayView bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    return decoder.decode(bytes);
}

LkpContents& stopAt(LkpContents& contents, int line, const QString& error) {
    contents.complete = false;
    contents.errorLine = line;
    contents.error = error;
    return contents;
}

// Reads the source or translation string of an entry; false (with the fault recorded)
// when the next token is anything else.
bool readEntryString(Tokenizer& tokenizer, const char* what, QString& text, LkpContents& contents) {
    const Token token = tokenizer.next();
    switch (token.kind) {
    case TokenKind::String:
        text = Unescape(textOf(token.text));
        return true;
    case TokenKind::Error:
        stopAt(contents, token.line, QString::fromLatin1(token.error));
        return false;
    case TokenKind::End:
        stopAt(contents, token.line,
               QStringLiteral("end of file where the %1 string belongs").arg(QLatin1String(what)));
        return false;
    case TokenKind::Word:
        break;
    }
    stopAt(contents, token.line,
           QStringLiteral("\"%1\" where the %2 string belongs")
               .arg(QString::fromUtf8(token.text.first(qMin<qsizetype>(token.text.size(), 40))),
                    QLatin1String(what)));
    return false;
}

} // namespace

LkpContents ParseLkp(QByteArrayView content) {
    LkpContents contents;
    Tokenizer tokenizer(content);
    for (;;) {
        const Token token = tokenizer.next();
        if (token.kind == TokenKind::End)
            return contents;
        if (token.kind == TokenKind::Error)
            return stopAt(contents, token.line, QString::fromLatin1(token.error));
        if (token.kind != TokenKind::Word || token.text != Marker)
            return stopAt(contents, token.line, QStringLiteral("entry does not start with T"));

        LkpEntry entry;
        if (!readEntryString(tokenizer, "source", entry.source, contents) ||
            !readEntryString(tokenizer, "translation", entry.translation, contents))
            return contents;
        contents.entries.push_back(std::move(entry));
    }
}

LkpContents ReadLkpFile(const QString& path, qint64 maxSize) {
    LkpContents contents;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return stopAt(contents, 0, file.errorString());

    // Sized from the file rather than from the limit, so that small files do not
    // reserve the whole limit.
    const qint64 size = file.size();
    const bool tooLarge = size > maxSize;
    const QByteArray data = file.read(qBound<qint64>(0, size, maxSize));
    contents = ParseLkp(data);
    if (tooLarge && contents.complete)
        stopAt(contents, 0, QStringLiteral("file larger than %1 bytes").arg(maxSize));
    return contents;
}

namespace {

// The reverse of Unescape for the characters that need it inside a quoted string.
QByteArray quoted(const QString& text) {
    QByteArray result;
    result.reserve(text.size() + 2);
    result += '"';
    for (const char c : text.toUtf8()) {
        switch (c) {
        case '\\':
            result += "\\\\";
            break;
        case '"':
            result += "\\\"";
            break;
        case '\a':
            result += "\\a";
            break;
        case '\b':
            result += "\\b";
            break;
        case '\f':
            result += "\\f";
            break;
        case '\n':
            result += "\\n";
            break;
        case '\r':
            result += "\\r";
            break;
        case '\t':
            result += "\\t";
            break;
        case '\v':
            result += "\\v";
            break;
        default:
            result += c;
            break;
        }
    }
    result += '"';
    return result;
}

} // namespace

QByteArray FormatLkpEntry(const QString& source, const QString& translation) {
    return QByteArray(Marker) + ' ' + quoted(source) + ' ' + quoted(translation) + '\n';
}

} // namespace translation
