#pragma once

#include <QString>

namespace db {

// What AnalyseAssetsQuery decided about one statement of the main query.
//
// The decision is deliberately textual (substring tests on the upper-cased text, no SQL
// parser): the record editor, removal and export all depend on these exact results.
struct AssetsQueryAnalysis {
    // The editable-assets flag: the statement reads ASSETS and selects ID, or ID was appended.
    bool editableAssets = false;
    // The from-part reads ASSETS (one of the five from-part tests held).
    bool readsAssets = false;
    // Which from-part test held first, 1 to 5; 0 when none held or there is no "FROM".
    int fromPartTest = 0;
    // The select part names ID ("*", "ID" in double quotes, " ID ", " ID,", ",ID " or ",ID,").
    // Only evaluated when the from-part reads ASSETS; false otherwise.
    bool idSelected = false;
    // The text was rewritten by AppendIdColumn.
    bool sqlRewritten = false;
    // The text to put into the query: the input unchanged, or, when rewritten, the whole
    // statement upper-cased (string literals included) with ",ID" added before its "FROM".
    QString sqlText;
    // The from-part that the tests looked at: the upper-cased text after the first "FROM",
    // cut before the first clause keyword found. Empty when there is no "FROM".
    QString fromPart;

    // When the flag is false the caller closes the asset editor and its windows.
    bool closeEditor() const { return !editableAssets; }
};

// Decides whether the statement reads the ASSETS table and selects its ID column. When
// it reads ASSETS without selecting ID and appendId (the "AppendID" preference) is on,
// the statement is rewritten to select ID too and the flag is set. Line breaks of any
// kind count as CR LF, as in the query's own text.
AssetsQueryAnalysis AnalyseAssetsQuery(const QString& sqlText, bool appendId);

// Rewrites an upper-cased statement to select ID as well: the trimmed text before the
// first "FROM", then ",ID", a blank and the trimmed text from "FROM" on. Returns false
// and leaves the text unchanged when it has no "FROM".
bool AppendIdColumn(QString& text);

// Upper case one character at a time, so that the length never changes ("ß" stays).
QString UpperCaseSql(const QString& text);

// Removes leading and trailing blanks and control characters; other white space such
// as the no-break space is kept.
QString TrimBlanks(const QString& text);

} // namespace db
