// The analysis of the main query's SQL and the scanning of its parameters.
//
// Properties: on ASCII text, AnalyseAssetsQuery agrees with a plain reading of its rules; on any
// text, upper-casing keeps the length, the rewritten text is the upper-cased statement with ",ID"
// before its first "FROM", and each parameter found is a colon and a name at its position, in
// order and apart; the driver's form has "?" in their places and the rest unchanged.

#include "db/sqlanalysis.h"
#include "db/parameters.h"
#include "fuzzsupport.h"

#include <string>

namespace {

std::string trimmedReference(const std::string& text) {
    auto trimmed = [](char c) {
        return c == ' ' || (static_cast<unsigned char>(c) < 32) || c == 127;
    };
    size_t first = 0;
    size_t last = text.size();
    while (first < last && trimmed(text[first]))
        ++first;
    while (last > first && trimmed(text[last - 1]))
        --last;
    return text.substr(first, last - first);
}

// Position counted from 1, 0 when absent.
long posReference(const std::string& needle, const std::string& haystack) {
    const size_t at = haystack.find(needle);
    return at == std::string::npos ? 0 : static_cast<long>(at) + 1;
}

struct Expected {
    bool editable = false;
    std::string text;
};

Expected analyseReference(const std::string& sql, bool appendId) {
    Expected expected{false, sql};
    std::string joined;
    for (size_t i = 0; i < sql.size(); ++i) {
        if (sql[i] == '\r' || sql[i] == '\n') {
            joined += "\r\n";
            if (sql[i] == '\r' && i + 1 < sql.size() && sql[i + 1] == '\n')
                ++i;
        } else {
            joined += static_cast<char>(std::toupper(static_cast<unsigned char>(sql[i])));
        }
    }
    const std::string t = trimmedReference(joined);
    const long from = posReference("FROM", t);
    if (from == 0)
        return expected;
    std::string f = t.substr(from - 1 + 4);
    for (const char* keyword : {"WHERE", "START", "GROUP", "HAVING", "HAVING", "ORDER"}) {
        if (const long at = posReference(keyword, f)) {
            f = f.substr(0, at - 1);
            break;
        }
    }
    const long size = static_cast<long>(f.size());
    const bool readsAssets =
        f.find(" ASSETS ") != std::string::npos || f.find(".ASSETS ") != std::string::npos ||
        f.find("\"ASSETS\"") != std::string::npos || posReference(" ASSETS", f) + 7 - 1 == size ||
        posReference(".ASSETS", f) + 7 - 1 == size;
    if (!readsAssets)
        return expected;
    const std::string s = t.substr(0, from - 1);
    for (const char* marker : {"*", "\"ID\"", " ID ", " ID,", ",ID ", ",ID,"}) {
        if (s.find(marker) != std::string::npos) {
            expected.editable = true;
            return expected;
        }
    }
    if (appendId) {
        expected.text =
            trimmedReference(t.substr(0, from - 1)) + ",ID " + trimmedReference(t.substr(from - 1));
        expected.editable = true;
    }
    return expected;
}

bool isNameCharacter(QChar c) {
    return c.isLetter() || c.isDigit() || c == QLatin1Char('_');
}

void checkParameters(const QString& sql) {
    const QList<db::SqlParameter> parameters = db::FindParameters(sql);
    const db::DriverStatement driver = db::ToDriverStatement(sql);
    const QString detail = fuzzsupport::shown(sql);
    FUZZ_CHECK(driver.parameterNames.size() == parameters.size(), detail);
    QString expectedText;
    qsizetype end = 0;
    for (qsizetype i = 0; i < parameters.size(); ++i) {
        const db::SqlParameter& p = parameters[i];
        FUZZ_CHECK(p.position >= end && p.length >= 2 && p.position + p.length <= sql.size(),
                   detail);
        FUZZ_CHECK(sql.mid(p.position, p.length) == QLatin1Char(':') + p.name, detail);
        FUZZ_CHECK(std::all_of(p.name.begin(), p.name.end(), isNameCharacter), detail);
        FUZZ_CHECK(p.position == 0 || sql[p.position - 1] != QLatin1Char(':'), detail);
        FUZZ_CHECK(p.position + p.length == sql.size() ||
                       !isNameCharacter(sql[p.position + p.length]),
                   detail);
        FUZZ_CHECK(driver.parameterNames[i] == p.name, detail);
        expectedText += sql.mid(end, p.position - end) + QLatin1Char('?');
        end = p.position + p.length;
    }
    expectedText += sql.mid(end);
    FUZZ_CHECK(driver.text == expectedText, detail);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const bool appendId = data[0] & 1;
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    const QString sql = fuzzsupport::text(bytes);
    const QString detail = fuzzsupport::shown(sql);

    FUZZ_CHECK(db::UpperCaseSql(sql).size() == sql.size(), detail);
    const db::AssetsQueryAnalysis analysis = db::AnalyseAssetsQuery(sql, appendId);
    FUZZ_CHECK(analysis.sqlRewritten == (analysis.sqlText != sql), detail);
    FUZZ_CHECK(!analysis.sqlRewritten || analysis.sqlText.contains(QLatin1String(",ID FROM")),
               detail);
    FUZZ_CHECK(analysis.editableAssets == (analysis.idSelected || analysis.sqlRewritten), detail);
    const bool ascii = std::all_of(bytes.begin(), bytes.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 128; });
    if (ascii) {
        const Expected expected = analyseReference(bytes, appendId);
        FUZZ_CHECK(analysis.editableAssets == expected.editable, detail);
        FUZZ_CHECK(analysis.sqlText == QString::fromStdString(expected.text), detail);
    }
    checkParameters(sql);
    return 0;
}
