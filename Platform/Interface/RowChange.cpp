#include "Platform/Interface/RowChange_p.h"

#include "Platform/Foundation/ObjectSet.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace platform {

namespace {

template <class Hash, class Equality>
ObjectMatches matchBy(const QList<ObjectPointer> &objects, const QList<ObjectPointer> &list)
{
    // Equal objects wait in a chain for the ones that will stand for them, the first in front.
    std::unordered_map<ObjectPointer, qint64, Hash, Equality> firstWaiting;
    std::vector<qint64> nextWaiting(size_t(objects.size()), -1);
    for (qint64 i = objects.size() - 1; i >= 0; --i) {
        if (!objects[i])
            continue;
        const auto [place, isFirst] = firstWaiting.try_emplace(objects[i], i);
        if (!isFirst)
            nextWaiting[size_t(i)] = std::exchange(place->second, i);
    }

    ObjectMatches matches{std::vector<qint64>(size_t(objects.size()), -1), {}};
    for (qint64 index = 0; index < list.size() && !firstWaiting.empty(); ++index) {
        const auto place = firstWaiting.find(list[index]);
        if (place == firstWaiting.end())
            continue;
        matches.indexes[size_t(place->second)] = index;
        matches.found.addIndex(index);
        place->second = nextWaiting[size_t(place->second)];
        if (place->second < 0)
            firstWaiting.erase(place);
    }
    return matches;
}

/// Where each object is among others: the very same one, or else an equal one that is not among the objects itself.
std::vector<qint64> placesOf(const QList<ObjectPointer> &objects, const QList<ObjectPointer> &others)
{
    ObjectMatches identical = matchObjects(objects, others, ObjectMatching::Identical);
    if (identical.found.count() == std::min(objects.size(), others.size()))
        return identical.indexes;
    QList<ObjectPointer> unplaced;
    for (qint64 i = 0; i < objects.size(); ++i)
        unplaced.append(identical.indexes[size_t(i)] < 0 ? objects[i] : nullptr);
    QList<ObjectPointer> untaken = others;
    for (const qint64 index : identical.found)
        untaken[index] = nullptr;

    const ObjectMatches equal = matchObjects(unplaced, untaken, ObjectMatching::Equal);
    for (size_t i = 0; i < identical.indexes.size(); ++i)
        identical.indexes[i] = std::max(identical.indexes[i], equal.indexes[i]);
    return identical.indexes;
}

} // namespace

ObjectMatches matchObjects(const QList<ObjectPointer> &objects, const QList<ObjectPointer> &list,
                           ObjectMatching matching)
{
    if (matching == ObjectMatching::Identical)
        return matchBy<std::hash<ObjectPointer>, std::equal_to<ObjectPointer>>(objects, list);
    return matchBy<ObjectHash, ObjectEquality>(objects, list);
}

RowChange::RowChange(const QList<ObjectPointer> &before, const QList<ObjectPointer> &after)
{
    const auto fronts = std::mismatch(before.cbegin(), before.cend(), after.cbegin(), after.cend());
    m_first = fronts.first - before.cbegin();
    const auto backs = std::mismatch(before.crbegin(), std::make_reverse_iterator(fronts.first), after.crbegin(),
                                     std::make_reverse_iterator(fronts.second));
    m_removed = backs.first.base() - fronts.first;
    m_inserted = backs.second.base() - fronts.second;
    if (m_removed == 0 || m_inserted == 0) {
        if (m_removed != m_inserted)
            m_kind = m_removed == 0 ? Kind::Insertion : Kind::Removal;
        m_placeOfRemoved.assign(size_t(m_removed), -1);
        return;
    }
    m_placeOfRemoved = placesOf(before.mid(m_first, m_removed), after.mid(m_first, m_inserted));
    const bool isComplete = m_removed == m_inserted
        && std::find(m_placeOfRemoved.cbegin(), m_placeOfRemoved.cend(), -1) == m_placeOfRemoved.cend();
    m_kind = isComplete ? Kind::Reorder : Kind::Replacement;
}

qint64 RowChange::last() const
{
    return m_first + std::max(m_removed, m_inserted) - 1;
}

qint64 RowChange::rowAfter(qint64 row) const
{
    if (row < m_first)
        return row;
    if (row >= m_first + m_removed)
        return row - m_removed + m_inserted;
    const qint64 place = m_placeOfRemoved[size_t(row - m_first)];
    return place < 0 ? -1 : m_first + place;
}

IndexSet RowChange::indexesAfter(const IndexSet &indexes) const
{
    std::vector<bool> isSelected(size_t(m_inserted), false);
    IndexSet changing = indexes;
    for (const qint64 row : changing.intersect(IndexSet(IndexRange{m_first, m_removed}))) {
        if (const qint64 place = m_placeOfRemoved[size_t(row - m_first)]; place >= 0)
            isSelected[size_t(place)] = true;
    }
    IndexSet among;
    for (qint64 place = 0; place < m_inserted; ++place) {
        if (isSelected[size_t(place)])
            among.addIndex(m_first + place);
    }
    IndexSet result = indexes;
    result.removeSpace(m_first, m_removed);
    result.insertSpace(m_first, m_inserted);
    return result.unite(among);
}

} // namespace platform
