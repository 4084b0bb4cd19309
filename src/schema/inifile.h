#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <stdexcept>

namespace schema {

// Raised when a file that exists cannot be read (no rights, a directory, ...).
class IniFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A read-only INI file held in memory.
//
// Reading rules:
// - "[name]" starts a section; the name is the text up to the first "]" (or the end of the
//   line), trimmed. Lines whose first non-blank character is ";" are comments. Other lines
//   are "key=value", cut at the first "="; lines without "=" or with an empty key are ignored,
//   and so are keys before the first section header.
// - Section and key names are compared without regard to case; keys and values are trimmed.
// - A key given twice in a section keeps its first value. A section named twice is one
//   section: the later block adds its keys, the first value of each key still wins.
// - Lines end at LF, CR or a NUL byte, so no name or value ever holds one of them.
// - The bytes are read as 8-bit text of the local code page; a leading UTF-8 byte-order mark
//   is skipped. Lines of any length are read whole.
class IniFile {
public:
    IniFile() = default;

    // A file that does not exist reads as empty; one that exists but cannot be read, or holds
    // more than maxBytes (a device such as /dev/zero included), throws IniFileError.
    static IniFile fromFile(const QString& path, qint64 maxBytes);
    static IniFile fromBytes(const QByteArray& bytes);

    bool isEmpty() const { return m_sections.isEmpty(); }
    // The section headers and keys read (blank lines and comments do not count): no section
    // holds more keys than this, and no file more sections.
    qsizetype entryCount() const { return m_entryCount; }
    bool hasSection(const QString& section) const;

    // The trimmed value, or defaultValue when the section or key is missing.
    QString readString(const QString& section, const QString& key,
                       const QString& defaultValue = QString()) const;

    // The value as a decimal integer: an optional sign and ASCII digits only, within the range
    // of int. Anything else ("", "12abc", "0x10", "1e3", "99999999999") gives defaultValue, and
    // so does a missing key. Negative numbers are returned as they are; counts that are not
    // positive name no entries.
    int readInteger(const QString& section, const QString& key, int defaultValue = 0) const;

    // The values of the keys prefix + n ("Column1", "Column2", ...) for n from 1 to count, in
    // the order of n; keys the section lacks are left out. The same as readString for each n
    // in turn, but one pass over the section whatever the count.
    QStringList readNumbered(const QString& section, const QString& prefix, int count) const;

private:
    using Section = QHash<QString, QString>;
    QHash<QString, Section> m_sections;
    qsizetype m_entryCount = 0;
};

// The decimal reading rule of IniFile::readInteger, on its own.
bool ParseDecimalInteger(const QString& text, int& value);

} // namespace schema
