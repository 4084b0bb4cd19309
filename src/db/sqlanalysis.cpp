#include "db/sqlanalysis.h"

#include <array>

namespace db {

namespace {

// Position of the first occurrence, counted from 1; 0 when absent. The from-part tests
// do arithmetic on this value, including on the 0.
qsizetype pos(QLatin1StringView needle, const QString& haystack) {
    return haystack.indexOf(needle, 0, Qt::CaseSensitive) + 1;
}

bool isTrimmed(QChar c) {
    return c == QLatin1Char(' ') || c.category() == QChar::Other_Control;
}

// The query keeps its text as lines; reading it back joins them with CR LF. A line ends
// at CR LF, at a lone CR or at a lone LF.
QString joinLinesWithCrLf(const QString& text) {
    QString joined;
    joined.reserve(text.size() + text.size() / 16);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('\r')) {
            joined += QLatin1String("\r\n");
            if (i + 1 < text.size() && text.at(i + 1) == QLatin1Char('\n'))
                ++i;
        } else if (c == QLatin1Char('\n')) {
            joined += QLatin1String("\r\n");
        } else {
            joined += c;
        }
    }
    return joined;
}

// The from-part is cut at the first keyword of this list that occurs at all, not at the
// keyword that comes first in the text. "HAVING" is tested twice; the second test can
// never change the result, and the order is kept as it is.
constexpr std::array<QLatin1StringView, 6> kClauseKeywords{
    QLatin1StringView("WHERE"),  QLatin1StringView("START"),  QLatin1StringView("GROUP"),
    QLatin1StringView("HAVING"), QLatin1StringView("HAVING"), QLatin1StringView("ORDER")};

QString cutAtClauseKeyword(const QString& fromPart) {
    for (const QLatin1StringView keyword : kClauseKeywords) {
        const qsizetype at = pos(keyword, fromPart);
        if (at > 0)
            return fromPart.left(at - 1);
    }
    return fromPart;
}

// The number of the first from-part test that holds, 0 when none does. Tests 4 and 5
// compare the first occurrence's end with the length of the from-part using the position
// as found, 0 included: a from-part of exactly six characters passes test 4 whatever it
// holds (" NODES" of SELECT * FROM NODES). That result is relied upon and kept.
int fromPartReadsAssets(const QString& f) {
    constexpr QLatin1StringView blankAssets(" ASSETS");
    constexpr QLatin1StringView dotAssets(".ASSETS");
    if (f.contains(QLatin1StringView(" ASSETS ")))
        return 1;
    if (f.contains(QLatin1StringView(".ASSETS ")))
        return 2;
    if (f.contains(QLatin1StringView("\"ASSETS\"")))
        return 3;
    if (pos(blankAssets, f) + blankAssets.size() - 1 == f.size())
        return 4;
    if (pos(dotAssets, f) + dotAssets.size() - 1 == f.size())
        return 5;
    return 0;
}

bool selectPartNamesId(const QString& selectPart) {
    static constexpr std::array<QLatin1StringView, 6> markers{
        QLatin1StringView("*"),    QLatin1StringView("\"ID\""), QLatin1StringView(" ID "),
        QLatin1StringView(" ID,"), QLatin1StringView(",ID "),   QLatin1StringView(",ID,")};
    for (const QLatin1StringView marker : markers) {
        if (selectPart.contains(marker))
            return true;
    }
    return false;
}

} // namespace

QString UpperCaseSql(const QString& text) {
    QString upper;
    upper.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            const char32_t mapped = QChar::toUpper(QChar::surrogateToUcs4(c, text.at(i + 1)));
            if (QChar::requiresSurrogates(mapped)) {
                upper += QChar(QChar::highSurrogate(mapped));
                upper += QChar(QChar::lowSurrogate(mapped));
            } else {
                // Never seen in practice; keep the original pair so the length stays.
                upper += c;
                upper += text.at(i + 1);
            }
            ++i;
        } else {
            upper += c.toUpper();
        }
    }
    return upper;
}

QString TrimBlanks(const QString& text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && isTrimmed(text.at(first)))
        ++first;
    while (last > first && isTrimmed(text.at(last - 1)))
        --last;
    return text.mid(first, last - first);
}

bool AppendIdColumn(QString& text) {
    const qsizetype at = pos(QLatin1StringView("FROM"), text);
    if (at == 0)
        return false;
    const QString head = TrimBlanks(text.left(at - 1));
    const QString tail = TrimBlanks(text.mid(at - 1));
    text = head + QLatin1StringView(",ID") + QLatin1Char(' ') + tail;
    return true;
}

AssetsQueryAnalysis AnalyseAssetsQuery(const QString& sqlText, bool appendId) {
    AssetsQueryAnalysis result;
    result.sqlText = sqlText;

    // Read once, with lines joined by CR LF, upper-cased and trimmed; the from-part, the
    // select part and the text to rewrite all come from this one text.
    const QString t = TrimBlanks(UpperCaseSql(joinLinesWithCrLf(sqlText)));
    const qsizetype fromAt = pos(QLatin1StringView("FROM"), t);
    if (fromAt == 0)
        return result;

    result.fromPart = cutAtClauseKeyword(t.mid(fromAt - 1 + 4));
    result.fromPartTest = fromPartReadsAssets(result.fromPart);
    result.readsAssets = result.fromPartTest != 0;
    if (!result.readsAssets)
        return result;

    // "ID" is looked for only before the first "FROM"; a statement without one would be
    // tested whole, but such a statement never gets this far.
    const QString selectPart = fromAt > 0 ? t.left(fromAt - 1) : t;
    result.idSelected = selectPartNamesId(selectPart);
    if (result.idSelected) {
        result.editableAssets = true;
        return result;
    }

    if (appendId) {
        // The whole statement is replaced by its upper-cased form, string literals and
        // parameter names included. That is intended, not a side effect to repair.
        QString rewritten = t;
        if (AppendIdColumn(rewritten)) {
            result.sqlText = rewritten;
            result.sqlRewritten = true;
            result.editableAssets = true;
        }
    }
    return result;
}

} // namespace db
