#include "schema/inifile.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace schema {

namespace {

QString foldName(const QString& name) {
    return name.toCaseFolded();
}

bool isLineEnd(QChar c) {
    return c == QLatin1Char('\n') || c == QLatin1Char('\r') || c == QChar(0);
}

} // namespace

bool ParseDecimalInteger(const QString& text, int& value) {
    const QString digits = text.trimmed();
    qsizetype pos = 0;
    bool negative = false;
    if (pos < digits.size() &&
        (digits[pos] == QLatin1Char('+') || digits[pos] == QLatin1Char('-'))) {
        negative = digits[pos] == QLatin1Char('-');
        ++pos;
    }
    if (pos == digits.size())
        return false;
    // Accumulate as a negative number so that the most negative int fits as well.
    constexpr qint64 lowest = std::numeric_limits<int>::min();
    constexpr qint64 highest = std::numeric_limits<int>::max();
    qint64 result = 0;
    for (; pos < digits.size(); ++pos) {
        const char16_t c = digits[pos].unicode();
        if (c < u'0' || c > u'9')
            return false;
        result = result * 10 - (c - u'0');
        if (result < lowest)
            return false;
    }
    if (!negative) {
        result = -result;
        if (result > highest)
            return false;
    }
    value = static_cast<int>(result);
    return true;
}

IniFile IniFile::fromFile(const QString& path, qint64 maxBytes) {
    if (!QFileInfo::exists(path))
        return IniFile();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw IniFileError(QStringLiteral("Cannot open file \"%1\". %2")
                               .arg(path, file.errorString())
                               .toStdString());
    // One byte more than allowed tells a file at the limit from a larger one; devices report
    // no size, so the size is learned by reading.
    const QByteArray bytes = file.read(maxBytes + 1);
    if (file.error() != QFileDevice::NoError)
        throw IniFileError(QStringLiteral("Cannot read file \"%1\". %2")
                               .arg(path, file.errorString())
                               .toStdString());
    if (bytes.size() > maxBytes)
        throw IniFileError(QStringLiteral("The file \"%1\" is larger than %2 bytes.")
                               .arg(path)
                               .arg(maxBytes)
                               .toStdString());
    return fromBytes(bytes);
}

IniFile IniFile::fromBytes(const QByteArray& bytes) {
    QByteArrayView data(bytes);
    if (data.startsWith("\xEF\xBB\xBF"))
        data = data.sliced(3);
    const QString text = QString::fromLocal8Bit(data);

    IniFile ini;
    // The folded name of the section being read; none before the first header.
    QString current;
    bool inSection = false;
    qsizetype start = 0;
    const qsizetype size = text.size();
    while (start < size) {
        qsizetype end = start;
        while (end < size && !isLineEnd(text[end]))
            ++end;
        const QString line = text.mid(start, end - start).trimmed();
        start = end + 1;

        if (line.isEmpty() || line.startsWith(QLatin1Char(';')))
            continue;
        if (line.startsWith(QLatin1Char('['))) {
            qsizetype close = line.indexOf(QLatin1Char(']'));
            if (close < 0)
                close = line.size();
            current = foldName(line.mid(1, close - 1).trimmed());
            inSection = true;
            ini.m_sections[current];
            ++ini.m_entryCount;
            continue;
        }
        if (!inSection)
            continue;
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals < 0)
            continue;
        const QString key = line.left(equals).trimmed();
        if (key.isEmpty())
            continue;
        ++ini.m_entryCount;
        Section& section = ini.m_sections[current];
        const QString folded = foldName(key);
        if (!section.contains(folded))
            section.insert(folded, line.mid(equals + 1).trimmed());
    }
    return ini;
}

bool IniFile::hasSection(const QString& section) const {
    return m_sections.contains(foldName(section));
}

QString IniFile::readString(const QString& section, const QString& key,
                            const QString& defaultValue) const {
    const auto sectionIt = m_sections.constFind(foldName(section));
    if (sectionIt == m_sections.constEnd())
        return defaultValue;
    const auto keyIt = sectionIt->constFind(foldName(key));
    if (keyIt == sectionIt->constEnd())
        return defaultValue;
    return *keyIt;
}

int IniFile::readInteger(const QString& section, const QString& key, int defaultValue) const {
    int value = 0;
    if (!ParseDecimalInteger(readString(section, key), value))
        return defaultValue;
    return value;
}

QStringList IniFile::readNumbered(const QString& section, const QString& prefix, int count) const {
    const auto sectionIt = m_sections.constFind(foldName(section));
    if (sectionIt == m_sections.constEnd() || count <= 0)
        return {};
    // Only the key "prefix" + QString::number(n) is read for n: digits without a leading zero.
    const QString foldedPrefix = foldName(prefix);
    std::vector<std::pair<int, QString>> found;
    for (auto it = sectionIt->constBegin(); it != sectionIt->constEnd(); ++it) {
        const QString& key = it.key();
        if (!key.startsWith(foldedPrefix) || key.size() == foldedPrefix.size())
            continue;
        const QString digits = key.sliced(foldedPrefix.size());
        int n = 0;
        if (!ParseDecimalInteger(digits, n) || n < 1 || n > count || QString::number(n) != digits)
            continue;
        found.emplace_back(n, it.value());
    }
    std::sort(found.begin(), found.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    QStringList values;
    for (auto& [n, value] : found)
        values << std::move(value);
    return values;
}

} // namespace schema
