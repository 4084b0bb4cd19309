#include "assets/sortkeys.h"

#include <QHash>
#include <QtEndian>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace assets {

SortKind SortKindOf(const db::odbc::ColumnInfo& column) {
    if (column.isNumeric())
        return SortKind::Number;
    if (column.isDateOrTime())
        return SortKind::DateTime;
    return SortKind::Text;
}

std::optional<SortRequest> ParseSortText(QStringView text) {
    text = text.trimmed();
    if (text.isEmpty())
        return SortRequest{};
    QStringView name;
    QStringView rest;
    if (text.startsWith(u'[')) {
        const qsizetype close = text.lastIndexOf(u']');
        if (close < 0)
            return std::nullopt;
        name = text.mid(1, close - 1);
        rest = text.mid(close + 1).trimmed();
    } else {
        qsizetype blank = 0;
        while (blank < text.size() && !text[blank].isSpace())
            ++blank;
        name = text.left(blank);
        rest = text.mid(blank).trimmed();
    }
    // One field only: "[A] ASC, [B] DESC" would otherwise read as a field "A] ASC, [B".
    if (name.trimmed().isEmpty() || name.contains(u'['))
        return std::nullopt;
    SortRequest request;
    request.field = name.toString();
    if (rest.isEmpty() || rest.compare(u"ASC", Qt::CaseInsensitive) == 0)
        request.descending = false;
    else if (rest.compare(u"DESC", Qt::CaseInsensitive) == 0)
        request.descending = true;
    else
        return std::nullopt;
    return request;
}

namespace {

constexpr quint64 SignBit = quint64(1) << 63;

// A double as an unsigned integer of the same order; NaN after +infinity.
quint64 orderedDouble(double value) {
    if (std::isnan(value))
        return std::numeric_limits<quint64>::max();
    if (value == 0)
        value = 0; // -0 and +0 are equal
    const quint64 bits = std::bit_cast<quint64>(value);
    return (bits & SignBit) ? ~bits : bits | SignBit;
}

quint64 orderedInteger(qint64 value) {
    return quint64(value) ^ SignBit;
}

QByteArrayView trimmedAscii(QByteArrayView text) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (begin < end && blank(text[begin]))
        ++begin;
    while (end > begin && blank(text[end - 1]))
        --end;
    return text.sliced(begin, end - begin);
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Reads exactly `count` digits at `at`.
bool readDigits(QByteArrayView text, qsizetype& at, int count, int& value) {
    if (at + count > text.size())
        return false;
    value = 0;
    for (int index = 0; index < count; ++index) {
        const char c = text[at + index];
        if (!isDigit(c))
            return false;
        value = value * 10 + (c - '0');
    }
    at += count;
    return true;
}

bool expect(QByteArrayView text, qsizetype& at, char c) {
    if (at < text.size() && text[at] == c) {
        ++at;
        return true;
    }
    return false;
}

// "HH:MM[:SS[.fraction]]" from `at`; seconds of the day and microseconds.
bool readTime(QByteArrayView text, qsizetype& at, quint64& micros) {
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (!readDigits(text, at, 2, hour) || !expect(text, at, ':') ||
        !readDigits(text, at, 2, minute))
        return false;
    quint64 fraction = 0;
    if (expect(text, at, ':')) {
        if (!readDigits(text, at, 2, second))
            return false;
        if (expect(text, at, '.')) {
            int digits = 0;
            while (at < text.size() && isDigit(text[at])) {
                if (digits < 6) {
                    fraction = fraction * 10 + quint64(text[at] - '0');
                    ++digits;
                }
                ++at;
            }
            if (digits == 0)
                return false;
            for (; digits < 6; ++digits)
                fraction *= 10;
        }
    }
    if (hour > 24 || minute > 59 || second > 60)
        return false;
    micros = quint64(hour * 3600 + minute * 60 + second) * 1000000u + fraction;
    return true;
}

// What may follow a time: nothing, or a zone ("Z", "+02", "-05:30"), as servers write it.
bool zoneOrEnd(QByteArrayView text, qsizetype at) {
    while (at < text.size() && text[at] == ' ')
        ++at;
    if (at == text.size())
        return true;
    if (text[at] == 'Z' || text[at] == 'z')
        return at + 1 == text.size();
    if (text[at] != '+' && text[at] != '-')
        return false;
    ++at;
    int value = 0;
    if (!readDigits(text, at, 2, value))
        return false;
    if (at < text.size() && text[at] == ':')
        ++at;
    if (at < text.size() && !readDigits(text, at, 2, value))
        return false;
    return at == text.size();
}

} // namespace

std::optional<OrderedKey> NumberKey(QByteArrayView text) {
    text = trimmedAscii(text);
    if (text.startsWith('+')) {
        text = text.sliced(1);
        if (text.startsWith('+') || text.startsWith('-'))
            return std::nullopt;
    }
    if (text.isEmpty())
        return std::nullopt;
    const char* begin = text.data();
    const char* end = begin + text.size();
    qint64 integer = 0;
    auto [integerEnd, integerError] = std::from_chars(begin, end, integer);
    if (integerError == std::errc() && integerEnd == end) {
        // Integers beyond 2^53 differ from their nearest double: the difference breaks ties.
        const double nearest = double(integer);
        const __int128 residual = __int128(integer) - __int128(nearest);
        return OrderedKey{orderedDouble(nearest), orderedInteger(qint64(residual))};
    }
    double real = 0;
    auto [realEnd, realError] = std::from_chars(begin, end, real);
    if (realEnd != end)
        return std::nullopt;
    if (realError == std::errc::result_out_of_range) {
        // Beyond the range of a double: as large as can be, with the sign it has.
        const bool negative = text.startsWith('-');
        const bool tiny = [&] {
            const qsizetype e = text.toByteArray().toLower().indexOf('e');
            return e >= 0 && e + 1 < text.size() && text[e + 1] == '-';
        }();
        real = tiny ? 0.0
                    : (negative ? -std::numeric_limits<double>::infinity()
                                : std::numeric_limits<double>::infinity());
    } else if (realError != std::errc()) {
        return std::nullopt;
    }
    return OrderedKey{orderedDouble(real), orderedInteger(0)};
}

std::optional<OrderedKey> DateTimeKey(QByteArrayView text) {
    text = trimmedAscii(text);
    qsizetype at = 0;
    quint64 date = 0;
    quint64 micros = 0;
    int year = 0;
    if (readDigits(text, at, 4, year)) {
        int month = 0;
        int day = 0;
        if (!expect(text, at, '-') || !readDigits(text, at, 2, month) || !expect(text, at, '-') ||
            !readDigits(text, at, 2, day) || month < 1 || month > 12 || day < 1 || day > 31)
            return std::nullopt;
        date = quint64(year) * 10000u + quint64(month) * 100u + quint64(day);
        if (at < text.size() && (text[at] == ' ' || text[at] == 'T' || text[at] == 't')) {
            qsizetype time = at + 1;
            while (time < text.size() && text[time] == ' ')
                ++time;
            if (time < text.size() && isDigit(text[time])) {
                if (!readTime(text, time, micros))
                    return std::nullopt;
                at = time;
            }
        }
    } else {
        at = 0;
        if (!readTime(text, at, micros))
            return std::nullopt;
    }
    if (!zoneOrEnd(text, at))
        return std::nullopt;
    // yyyymmdd, then the microseconds of the day (below 10^11): fits in 64 bits.
    return OrderedKey{date * 100000000000u + micros, 0};
}

namespace {

// ---------------------------------------------------------------------------------
// Text: most-significant-digit radix sort with eight-byte digits. Each pass orders a
// range by the next eight bytes (read once per value) and the row; only runs that
// still tie on longer values go one level deeper, so long equal values cost one read
// per eight bytes instead of a comparison of whole strings at every step of a sort.

struct TextKey {
    quint64 digit;
    const char* bytes;
    quint32 length;
    quint32 row;
};

quint64 digitAt(const char* bytes, quint32 length, quint32 depth) {
    unsigned char buffer[8] = {};
    const quint32 count = std::min<quint32>(8, length - depth);
    if (count == 0)
        return 0;
    std::memcpy(buffer, bytes + depth, count);
    return qFromBigEndian<quint64>(buffer);
}

// What is left of the value after `depth` bytes, capped at 9: "more than this digit".
quint32 restTag(const TextKey& key, quint32 depth) {
    return std::min<quint32>(key.length - depth, 9);
}

void sortTextKeys(std::vector<TextKey>& keys, bool descending) {
    struct Range {
        size_t begin;
        size_t end;
        quint32 depth;
    };
    std::vector<Range> pending{{0, keys.size(), 0}};
    while (!pending.empty()) {
        const Range range = pending.back();
        pending.pop_back();
        const quint32 depth = range.depth;
        auto begin = keys.begin() + ptrdiff_t(range.begin);
        auto end = keys.begin() + ptrdiff_t(range.end);
        if (depth > 0)
            for (auto key = begin; key != end; ++key)
                key->digit = digitAt(key->bytes, key->length, depth);
        if (descending)
            std::sort(begin, end, [depth](const TextKey& a, const TextKey& b) {
                if (a.digit != b.digit)
                    return a.digit > b.digit;
                const quint32 tagA = restTag(a, depth);
                const quint32 tagB = restTag(b, depth);
                if (tagA != tagB)
                    return tagA > tagB;
                return a.row < b.row;
            });
        else
            std::sort(begin, end, [depth](const TextKey& a, const TextKey& b) {
                if (a.digit != b.digit)
                    return a.digit < b.digit;
                const quint32 tagA = restTag(a, depth);
                const quint32 tagB = restTag(b, depth);
                if (tagA != tagB)
                    return tagA < tagB;
                return a.row < b.row;
            });
        for (size_t first = range.begin; first < range.end;) {
            size_t last = first + 1;
            if (restTag(keys[first], depth) > 8) {
                while (last < range.end && keys[last].digit == keys[first].digit &&
                       restTag(keys[last], depth) > 8)
                    ++last;
                if (last - first > 1)
                    pending.push_back({first, last, depth + 8});
            }
            first = last;
        }
    }
}

// Text with few distinct values (types, makers, places, departments): each distinct
// value is ranked once, and the rows are then placed by rank in one counting pass that
// keeps arrival order. Gives up (false, keys untouched) when the values are too varied,
// which a look at the first rows usually tells at once.
bool sortTextByRank(std::vector<TextKey>& keys, bool descending) {
    constexpr size_t MaxDistinct = size_t(1) << 16;
    constexpr size_t Sample = 4096;
    const size_t count = keys.size();
    if (count < 2 * Sample)
        return false; // the radix sort is quick enough on small inputs
    // Open addressing: slot holds the index of a distinct value plus one.
    std::vector<quint32> slots(MaxDistinct * 4, 0);
    const size_t mask = slots.size() - 1;
    std::vector<const TextKey*> distinct;
    std::vector<quint32> rankOf(count); // distinct index for now
    for (size_t index = 0; index < count; ++index) {
        const TextKey& key = keys[index];
        const QByteArrayView value(key.bytes, qsizetype(key.length));
        size_t slot = size_t(qHash(value)) & mask;
        for (;;) {
            const quint32 entry = slots[slot];
            if (entry == 0) {
                if (distinct.size() == MaxDistinct ||
                    (index < Sample && distinct.size() > Sample / 4))
                    return false;
                distinct.push_back(&key);
                slots[slot] = quint32(distinct.size());
                rankOf[index] = quint32(distinct.size() - 1);
                break;
            }
            const TextKey& other = *distinct[entry - 1];
            if (other.length == key.length &&
                (key.length == 0 || std::memcmp(other.bytes, key.bytes, key.length) == 0)) {
                rankOf[index] = entry - 1;
                break;
            }
            slot = (slot + 1) & mask;
        }
    }
    // Rank the distinct values.
    std::vector<quint32> byValue(distinct.size());
    for (size_t index = 0; index < byValue.size(); ++index)
        byValue[index] = quint32(index);
    std::sort(byValue.begin(), byValue.end(), [&](quint32 a, quint32 b) {
        const QByteArrayView x(distinct[a]->bytes, qsizetype(distinct[a]->length));
        const QByteArrayView y(distinct[b]->bytes, qsizetype(distinct[b]->length));
        return x.compare(y) < 0;
    });
    std::vector<quint32> rank(distinct.size());
    for (size_t position = 0; position < byValue.size(); ++position)
        rank[byValue[position]] = quint32(descending ? byValue.size() - 1 - position : position);
    // Counting sort by rank; the keys are in arrival order, and so stay the rows of a rank.
    std::vector<size_t> start(distinct.size() + 1, 0);
    for (size_t index = 0; index < count; ++index)
        ++start[rank[rankOf[index]] + 1];
    for (size_t value = 1; value < start.size(); ++value)
        start[value] += start[value - 1];
    std::vector<TextKey> sorted(count);
    for (size_t index = 0; index < count; ++index)
        sorted[start[rank[rankOf[index]]]++] = keys[index];
    keys.swap(sorted);
    return true;
}

struct ValueKey {
    OrderedKey key;
    quint32 row;
};

void sortValueKeys(std::vector<ValueKey>& keys, bool descending) {
    if (descending)
        std::sort(keys.begin(), keys.end(), [](const ValueKey& a, const ValueKey& b) {
            if (a.key != b.key)
                return a.key > b.key;
            return a.row < b.row;
        });
    else
        std::sort(keys.begin(), keys.end(), [](const ValueKey& a, const ValueKey& b) {
            if (a.key != b.key)
                return a.key < b.key;
            return a.row < b.row;
        });
}

bool isCancelled(const std::atomic<bool>* cancelled) {
    return cancelled && cancelled->load(std::memory_order_relaxed);
}

} // namespace

std::vector<quint32> SortedRows(const RowStore& rows, int column, SortKind kind, bool descending,
                                const std::atomic<bool>* cancelled) {
    const qsizetype count = rows.rowCount();
    if (column < 0 || column >= rows.columnCount() ||
        count > qsizetype(std::numeric_limits<quint32>::max()))
        return {};
    std::vector<quint32> nulls;
    std::vector<TextKey> texts;
    std::vector<ValueKey> values;
    if (kind == SortKind::Text)
        texts.reserve(size_t(count));
    else
        values.reserve(size_t(count));
    for (qsizetype index = 0; index < rows.blockCount(); ++index) {
        if (isCancelled(cancelled))
            return {};
        const RowBlock& block = rows.block(index);
        const quint32 start = quint32(rows.blockStart(index));
        for (qsizetype row = 0; row < block.rowCount(); ++row) {
            const quint32 arrival = start + quint32(row);
            if (block.isNull(row, column)) {
                nulls.push_back(arrival);
                continue;
            }
            const QByteArrayView value = block.value(row, column);
            if (kind != SortKind::Text) {
                const std::optional<OrderedKey> key =
                    kind == SortKind::Number ? NumberKey(value) : DateTimeKey(value);
                if (key) {
                    values.push_back({*key, arrival});
                    continue;
                }
            }
            texts.push_back({digitAt(value.data(), quint32(value.size()), 0), value.data(),
                             quint32(value.size()), arrival});
        }
    }
    if (isCancelled(cancelled))
        return {};
    sortValueKeys(values, descending);
    if (isCancelled(cancelled))
        return {};
    if (!sortTextByRank(texts, descending))
        sortTextKeys(texts, descending);
    if (isCancelled(cancelled))
        return {};

    std::vector<quint32> order;
    order.reserve(size_t(count));
    auto appendValues = [&] {
        for (const ValueKey& key : values)
            order.push_back(key.row);
    };
    auto appendTexts = [&] {
        for (const TextKey& key : texts)
            order.push_back(key.row);
    };
    if (descending) {
        appendTexts();
        appendValues();
        order.insert(order.end(), nulls.begin(), nulls.end());
    } else {
        order.insert(order.end(), nulls.begin(), nulls.end());
        appendValues();
        appendTexts();
    }
    return order;
}

} // namespace assets
