#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <vector>

namespace translation {

// Language files (".LKP") are UTF-8 text made of tokens separated by white space:
//
//   # French texts of the main window
//   T "Error" "Erreur"
//   T "Line one\\nLine two" "Ligne un\\nLigne deux"
//
// Each entry is the marker token T followed by two string tokens, the English source
// text and its translation. A string is enclosed in double quotes; a backslash keeps
// the character after it inside the string, so \" does not end it. A "#" outside a
// string starts a comment that runs to the end of the line. Both strings are unescaped
// (see Unescape) once read.
//
// Reading never fails as a whole: it stops at the first fault (a cut-short string, a
// token where the marker belongs, a marker without its two strings, ...) and keeps the
// entries read before it.

struct LkpEntry {
    QString source;      // unescaped
    QString translation; // unescaped
};

struct LkpContents {
    std::vector<LkpEntry> entries; // in file order, up to the first fault
    bool complete = true;          // false when reading stopped before the end
    int errorLine = 0;             // 1-based line of the fault, 0 when complete
    QString error;                 // what the fault was, empty when complete
};

// Larger files are read up to this size only and reported incomplete.
inline constexpr qint64 MaxLkpFileSize = 64 * 1024 * 1024;

LkpContents ParseLkp(QByteArrayView content);
LkpContents ReadLkpFile(const QString& path, qint64 maxSize = MaxLkpFileSize);

// One entry as a line of a language file, written so that reading it back gives the
// same two texts. To translate a built-in text, pass it exactly as the program writes
// it: its written-out escapes then appear with doubled backslashes.
QByteArray FormatLkpEntry(const QString& source, const QString& translation);

} // namespace translation
