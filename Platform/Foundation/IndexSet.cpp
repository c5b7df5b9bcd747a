#include "Platform/Foundation/IndexSet.h"

#include "Platform/Foundation/AssertionHandler.h"

#include <algorithm>
#include <utility>

namespace platform {

namespace {

/// The sum, or the end of the last possible range where it would be greater. Both are at least 0.
qint64 limitedSum(qint64 a, qint64 b)
{
    constexpr qint64 limit = IndexSet::MaximumIndex + 1;
    return a > limit - b ? limit : a + b;
}

/// The first range that ends behind the index: the one with the index in it, or else the next one.
qsizetype firstRangeEndingBehind(const QList<IndexRange> &ranges, qint64 index)
{
    const auto endsBehind = [](qint64 value, const IndexRange &range) { return value < range.end(); };
    return std::upper_bound(ranges.cbegin(), ranges.cend(), index, endsBehind) - ranges.cbegin();
}

/// The first range that begins at the index or behind it.
qsizetype firstRangeBeginningAt(const QList<IndexRange> &ranges, qint64 index)
{
    const auto beginsBefore = [](const IndexRange &range, qint64 value) { return range.location < value; };
    return std::lower_bound(ranges.cbegin(), ranges.cend(), index, beginsBefore) - ranges.cbegin();
}

/// Walks over the places where ranges begin and end, in ascending order.
class Boundaries
{
public:
    explicit Boundaries(const QList<IndexRange> &ranges)
        : m_ranges(ranges)
    { }

    /// Whether the places from the last boundary that was passed on are in a range.
    bool isInside() const { return m_passed % 2 != 0; }
    qint64 next() const
    {
        const qsizetype position = m_passed / 2;
        if (position == m_ranges.size())
            return std::numeric_limits<qint64>::max();
        return isInside() ? m_ranges[position].end() : m_ranges[position].location;
    }
    bool atEnd() const { return m_passed / 2 == m_ranges.size(); }
    void pass(qint64 boundary)
    {
        if (!atEnd() && next() == boundary)
            ++m_passed;
    }

private:
    const QList<IndexRange> &m_ranges;
    qsizetype m_passed = 0;
};

/// The indexes for which `keeps(in a, in b)` holds.
template <class Keeps>
QList<IndexRange> combined(const QList<IndexRange> &a, const QList<IndexRange> &b, Keeps keeps)
{
    QList<IndexRange> result;
    Boundaries boundariesOfA(a);
    Boundaries boundariesOfB(b);
    bool kept = false;
    while (!boundariesOfA.atEnd() || !boundariesOfB.atEnd()) {
        const qint64 boundary = std::min(boundariesOfA.next(), boundariesOfB.next());
        boundariesOfA.pass(boundary);
        boundariesOfB.pass(boundary);
        if (keeps(boundariesOfA.isInside(), boundariesOfB.isInside()) == kept)
            continue;
        if (kept)
            result.last().length = boundary - result.last().location;
        else
            result.append({boundary, 0});
        kept = !kept;
    }
    return result;
}

} // namespace

qint64 IndexSet::count() const
{
    qint64 result = 0;
    for (const IndexRange &range : m_ranges)
        result += range.length;
    return result;
}

bool IndexSet::contains(qint64 index) const
{
    const qsizetype position = firstRangeEndingBehind(m_ranges, index);
    return position < m_ranges.size() && m_ranges[position].location <= index;
}

void IndexSet::addRange(const IndexRange &range)
{
    ZR_ASSERT_PARAMETER(this, range.location >= 0);
    ZR_ASSERT_PARAMETER(this, range.length >= 0);
    ZR_ASSERT_PARAMETER(this, range.location <= MaximumIndex + 1 - range.length);
    if (range.length == 0)
        return;
    if (m_ranges.isEmpty() || m_ranges.constLast().end() < range.location) {
        m_ranges.append(range);
        return;
    }
    // Ranges that overlap the new one or touch it become one with it.
    const qsizetype first = firstRangeEndingBehind(m_ranges, range.location - 1);
    const qsizetype last = firstRangeBeginningAt(m_ranges, limitedSum(range.end(), 1));
    IndexRange whole = range;
    if (first < last) {
        whole.location = std::min(whole.location, m_ranges[first].location);
        whole.length = std::max(range.end(), m_ranges[last - 1].end()) - whole.location;
    }
    replaceRanges(first, last, {whole});
}

void IndexSet::removeRange(const IndexRange &range)
{
    if (range.length <= 0)
        return;
    const qint64 location = std::max(range.location, qint64(0));
    const qint64 end = range.location < 0 ? range.end() : limitedSum(range.location, range.length);
    const qsizetype first = firstRangeEndingBehind(m_ranges, location);
    const qsizetype last = firstRangeBeginningAt(m_ranges, end);
    if (first >= last)
        return;
    QList<IndexRange> left;
    if (const IndexRange &front = m_ranges[first]; front.location < location)
        left.append({front.location, location - front.location});
    if (const IndexRange &back = m_ranges[last - 1]; back.end() > end)
        left.append({end, back.end() - end});
    replaceRanges(first, last, left);
}

/// Puts others in the place of the ranges from `first` to the one before `last`.
void IndexSet::replaceRanges(qsizetype first, qsizetype last, const QList<IndexRange> &replacement)
{
    const qsizetype overwritten = std::min(last - first, replacement.size());
    std::copy_n(replacement.cbegin(), overwritten, m_ranges.begin() + first);
    m_ranges.remove(first + overwritten, last - first - overwritten);
    for (qsizetype i = overwritten; i < replacement.size(); ++i)
        m_ranges.insert(first + i, replacement[i]);
}

IndexSet &IndexSet::unite(const IndexSet &other)
{
    m_ranges = combined(m_ranges, other.m_ranges, [](bool here, bool there) { return here || there; });
    return *this;
}

IndexSet &IndexSet::subtract(const IndexSet &other)
{
    m_ranges = combined(m_ranges, other.m_ranges, [](bool here, bool there) { return here && !there; });
    return *this;
}

IndexSet &IndexSet::intersect(const IndexSet &other)
{
    m_ranges = combined(m_ranges, other.m_ranges, [](bool here, bool there) { return here && there; });
    return *this;
}

void IndexSet::insertSpace(qint64 at, qint64 count)
{
    ZR_ASSERT_PARAMETER(this, at >= 0);
    ZR_ASSERT_PARAMETER(this, count >= 0);
    if (count == 0 || isEmpty() || at > lastIndex())
        return;
    QList<IndexRange> moved;
    moved.reserve(m_ranges.size() + 1);
    for (const IndexRange &range : std::as_const(m_ranges)) {
        if (range.location < at)
            moved.append({range.location, std::min(range.end(), at) - range.location});
        const qint64 location = limitedSum(std::max(range.location, at), count);
        const qint64 end = limitedSum(range.end(), count);
        if (range.end() > at && location < end)
            moved.append({location, end - location});
    }
    m_ranges = moved;
}

void IndexSet::removeSpace(qint64 at, qint64 count)
{
    ZR_ASSERT_PARAMETER(this, at >= 0);
    ZR_ASSERT_PARAMETER(this, count >= 0);
    removeRange({at, count});
    const qsizetype first = firstRangeBeginningAt(m_ranges, at);
    if (count == 0 || first == m_ranges.size())
        return;
    for (qsizetype i = first; i < m_ranges.size(); ++i)
        m_ranges[i].location -= count;
    if (first > 0 && m_ranges[first - 1].end() == m_ranges[first].location) {
        m_ranges[first - 1].length += m_ranges[first].length;
        m_ranges.removeAt(first);
    }
}

} // namespace platform
