#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/ObjectSet.h"

#include <QList>
#include <QString>

#include <unordered_map>

/// @file
/// Sets and dictionaries as objects (arrays: ValueObjects.h). All are immutable and compare by value. An object in a
/// set and a key of a dictionary must not change what it equals meanwhile.
///
/// Thread safety: any thread may read them at the same time, as far as the objects in them allow it.

namespace platform {

/// Objects without order, of several equal ones only the first. Equal to a set with equal objects.
class Set : public Object
{
    ZR_OBJECT(Set, platform::Object)
public:
    explicit Set(const QList<ObjectPointer> &objects);

    /// In the order in which they were given.
    const QList<ObjectPointer> &objects() const { return m_objects; }
    /// Whether an equal object is in the set. Constant time.
    bool contains(const ObjectPointer &object) const { return m_members.contains(object); }

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    QList<ObjectPointer> m_objects;
    ObjectSet m_members;
};

/// Objects in order, of several equal ones only the first. Equal to an ordered set with equal objects in the same
/// order.
class OrderedSet : public Object
{
    ZR_OBJECT(OrderedSet, platform::Object)
public:
    explicit OrderedSet(const QList<ObjectPointer> &objects)
        : m_set(objects)
    { }

    const QList<ObjectPointer> &objects() const { return m_set.objects(); }
    bool contains(const ObjectPointer &object) const { return m_set.contains(object); }

    bool isEqual(const Object &other) const override;
    size_t hash() const override { return m_set.hash(); }

private:
    Set m_set;
};

/// Objects under keys, which are objects as well (texts, mostly). Equal to a dictionary with equal objects under equal
/// keys, in any order.
class Dictionary : public Object
{
    ZR_OBJECT(Dictionary, platform::Object)
public:
    struct Entry {
        ObjectPointer key;
        ObjectPointer value;
    };

    /// Of several equal keys the first one stays, with the last value.
    explicit Dictionary(const QList<Entry> &entries);

    /// In the order in which the keys were first given.
    const QList<Entry> &entries() const { return m_entries; }
    qsizetype count() const { return m_entries.size(); }
    /// The object under the key; null where there is none. Constant time.
    ObjectPointer value(const ObjectPointer &key) const;
    ObjectPointer value(const QString &key) const;
    bool contains(const ObjectPointer &key) const { return m_places.contains(key); }

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    QList<Entry> m_entries;
    std::unordered_map<ObjectPointer, qsizetype, ObjectHash, ObjectEquality> m_places; // in m_entries
};

} // namespace platform
