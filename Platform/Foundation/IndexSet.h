#pragma once

#include <QList>

#include <cstddef>
#include <iterator>
#include <limits>

namespace platform {

/// `length` indexes from `location` on.
struct IndexRange {
    qint64 location = 0;
    qint64 length = 0;

    /// The index behind the last one.
    qint64 end() const { return location + length; }

    friend bool operator==(const IndexRange &, const IndexRange &) = default;
};

/// A set of indexes, such as the selected rows of a list. Kept as ranges, so that all of a million rows are one
/// entry, and so that a range may reach far beyond any content: 0x7fffffff indexes from 5 on is a set like any other.
///
/// Indexes run from 0 to `MaximumIndex`. An operation that adds others raises `platform::InternalInconsistency`;
/// one that asks for them or removes them finds none.
///
/// Cost: a copy shares its ranges until either is changed. `contains` is logarithmic in the number of ranges,
/// `isEmpty`, `firstIndex` and `lastIndex` are constant, adding an index behind all others is constant in the mean,
/// and all other operations are linear in the number of ranges, whatever their length.
///
/// Thread safety: that of a QList. Any thread may hold a copy; a set that is changed belongs to one thread.
class IndexSet
{
public:
    /// What is answered for an index that does not exist.
    static constexpr qint64 NotFound = 0x7fffffff;
    static constexpr qint64 MaximumIndex = std::numeric_limits<qint64>::max() - 1;

    class const_iterator;

    IndexSet() = default;
    explicit IndexSet(qint64 index) { addIndex(index); }
    explicit IndexSet(const IndexRange &range) { addRange(range); }

    bool isEmpty() const { return m_ranges.isEmpty(); }
    /// The number of indexes.
    qint64 count() const;
    /// The lowest index; `NotFound` when the set is empty.
    qint64 firstIndex() const { return isEmpty() ? NotFound : m_ranges.constFirst().location; }
    /// The highest index; `NotFound` when the set is empty.
    qint64 lastIndex() const { return isEmpty() ? NotFound : m_ranges.constLast().end() - 1; }
    bool contains(qint64 index) const;

    /// The ranges, ascending. None is empty, and no two of them overlap or touch.
    const QList<IndexRange> &ranges() const { return m_ranges; }
    /// All indexes, ascending. Mind that there may be very many.
    const_iterator begin() const;
    const_iterator end() const;

    void addIndex(qint64 index) { addRange({index, 1}); }
    /// Adds all indexes of the range. An empty range adds none.
    void addRange(const IndexRange &range);
    void removeIndex(qint64 index) { removeRange({index, 1}); }
    /// Removes all indexes of the range. An empty range removes none.
    void removeRange(const IndexRange &range);

    /// Adds the indexes of the other set.
    IndexSet &unite(const IndexSet &other);
    /// Removes the indexes of the other set.
    IndexSet &subtract(const IndexSet &other);
    /// Keeps the indexes that are in the other set as well.
    IndexSet &intersect(const IndexSet &other);

    /// Makes room for `count` rows that are inserted in front of the row `at`: the indexes from `at` on move up by
    /// `count`, and the new ones are not in the set. {3, 4, 5} with two rows inserted at 4 becomes {3, 6, 7}.
    /// What would pass `MaximumIndex` is dropped. Neither argument may be negative.
    void insertSpace(qint64 at, qint64 count);
    /// Closes up behind `count` rows that are removed from the row `at` on: their indexes leave the set, and those
    /// behind them move down by `count`. {3, 4, 6} with two rows removed at 4 becomes {3, 4}. Neither argument may be
    /// negative.
    void removeSpace(qint64 at, qint64 count);

    friend bool operator==(const IndexSet &, const IndexSet &) = default;

private:
    void replaceRanges(qsizetype first, qsizetype last, const QList<IndexRange> &replacement);

    QList<IndexRange> m_ranges;
};

/// Walks over the indexes of a set, which must neither change nor die meanwhile.
class IndexSet::const_iterator
{
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = qint64;
    using difference_type = std::ptrdiff_t;
    using pointer = const qint64 *;
    using reference = qint64;

    const_iterator() = default;

    qint64 operator*() const { return m_range->location + m_offset; }
    const_iterator &operator++()
    {
        if (++m_offset == m_range->length) {
            ++m_range;
            m_offset = 0;
        }
        return *this;
    }
    const_iterator operator++(int)
    {
        const const_iterator before = *this;
        ++*this;
        return before;
    }

    friend bool operator==(const const_iterator &, const const_iterator &) = default;

private:
    friend class IndexSet;
    explicit const_iterator(const IndexRange *range)
        : m_range(range)
    { }

    const IndexRange *m_range = nullptr;
    qint64 m_offset = 0;
};

inline IndexSet::const_iterator IndexSet::begin() const
{
    return const_iterator(m_ranges.constData());
}

inline IndexSet::const_iterator IndexSet::end() const
{
    return const_iterator(m_ranges.constData() + m_ranges.size());
}

} // namespace platform
