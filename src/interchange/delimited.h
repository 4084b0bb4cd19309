#pragma once

#include <QString>
#include <QStringList>

namespace interchange {

// Cuts text at every occurrence of the delimiter (a whole string, searched left to right)
// and appends each piece, then the remainder: no quoting, no trimming, empty pieces kept.
// Clears the list first; leaves it empty when the text or the delimiter is empty.
void SplitDelimited(const QString& text, const QString& delimiter, QStringList& list);

// The delimiter drop-down of the import and export dialogs: item 0 is the tab, 1 ";",
// 2 ",", 3 a blank, 4 "Other" (the text of the edit beside it).
enum DelimiterItem { DelimTab, DelimSemicolon, DelimComma, DelimSpace, DelimOther };
QString DelimiterOfItem(int item, const QString& otherText);
// The item that shows a stored delimiter: one of the four characters, else DelimOther.
int ItemOfDelimiter(const QString& delimiter);

// The settings key shared by the import and the export of one kind of file, so that each
// proposes the file and delimiter the other used last.
QString InterchangeSettingsKey(bool typesMode);

// A file chooser's filter written as "Text files|*.txt|All Files|*.*" (name and
// pattern in turn) in the form the file dialog takes: "Text files (*.txt);;All Files (*.*)".
QString FileDialogFilter(const QString& namesAndPatterns);

} // namespace interchange
