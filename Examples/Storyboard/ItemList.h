#pragma once

#include "Platform/Foundation/Object.h"

#include <QHash>
#include <QList>
#include <QSet>

#include <algorithm>
#include <memory>

/// The items of one kind in a document, in their order. The place of an item is found in constant time.
template <class Item>
class ItemList
{
public:
    using Pointer = std::shared_ptr<Item>;
    using Items = QList<Pointer>;

    ItemList() = default;
    ItemList(const Items &items)
        : m_items(items)
    {
        m_indexes.reserve(items.size());
        for (qsizetype i = 0; i < items.size(); ++i)
            m_indexes.insert(items[i].get(), i);
    }

    /// The items with another one like it in place of each that occurs again, as in a file that was made by hand.
    static Items distinct(const Items &items)
    {
        QSet<Pointer> known;
        Items result;
        for (const Pointer &item : items) {
            result.append(known.contains(item) ? item->duplicate() : item);
            known.insert(item);
        }
        return result;
    }

    const Items &items() const { return m_items; }
    qsizetype count() const { return m_items.size(); }
    /// -1 where it is not in the list.
    qsizetype indexOf(const platform::Object *item) const { return m_indexes.value(item, -1); }

    /// The list with others inserted at an index.
    Items inserting(const Items &items, qsizetype index) const
    {
        const qsizetype place = std::clamp<qsizetype>(index, 0, count());
        return m_items.mid(0, place) + items + m_items.mid(place);
    }
    Items removing(const Items &items) const
    {
        const QSet<Pointer> removed = setOf(items);
        Items others;
        others.reserve(count());
        std::copy_if(m_items.cbegin(), m_items.cend(), std::back_inserter(others),
                     [&](const Pointer &item) { return !removed.contains(item); });
        return others;
    }
    Items moving(const Items &items, qsizetype index) const
    {
        const QSet<Pointer> moved = setOf(items);
        const qsizetype place = std::clamp<qsizetype>(index, 0, count());
        Items before, between, behind;
        for (qsizetype i = 0; i < count(); ++i)
            (moved.contains(m_items[i]) ? between : i < place ? before : behind).append(m_items[i]);
        return before + between + behind;
    }

private:
    static QSet<Pointer> setOf(const Items &items) { return QSet<Pointer>(items.cbegin(), items.cend()); }

    Items m_items;
    QHash<const platform::Object *, qsizetype> m_indexes;
};
