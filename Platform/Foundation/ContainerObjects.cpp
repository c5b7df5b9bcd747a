#include "Platform/Foundation/ContainerObjects.h"

#include "Platform/Foundation/ValueObjects.h"

#include <QHash>

#include <algorithm>

namespace platform {

namespace {

size_t hashOf(const ObjectPointer &object)
{
    return object ? object->hash() : 0;
}

} // namespace

Set::Set(const QList<ObjectPointer> &objects)
{
    m_objects.reserve(objects.size());
    m_members.reserve(size_t(objects.size()));
    for (const ObjectPointer &object : objects) {
        if (m_members.insert(object).second)
            m_objects.append(object);
    }
}

bool Set::isEqual(const Object &other) const
{
    const auto *set = dynamic_cast<const Set *>(&other);
    return set && areEqual(m_members, set->m_members);
}

// A sum, since the order does not count.
size_t Set::hash() const
{
    size_t result = size_t(m_objects.size());
    for (const ObjectPointer &object : m_objects)
        result += qHash(hashOf(object));
    return result;
}

bool OrderedSet::isEqual(const Object &other) const
{
    const auto *set = dynamic_cast<const OrderedSet *>(&other);
    return set
        && std::equal(objects().cbegin(), objects().cend(), set->objects().cbegin(), set->objects().cend(),
                      ObjectEquality());
}

Dictionary::Dictionary(const QList<Entry> &entries)
{
    m_entries.reserve(entries.size());
    m_places.reserve(size_t(entries.size()));
    for (const Entry &entry : entries) {
        const auto [place, isNew] = m_places.try_emplace(entry.key, m_entries.size());
        if (isNew)
            m_entries.append(entry);
        else
            m_entries[place->second].value = entry.value;
    }
}

ObjectPointer Dictionary::value(const ObjectPointer &key) const
{
    const auto place = m_places.find(key);
    return place != m_places.cend() ? m_entries[place->second].value : nullptr;
}

ObjectPointer Dictionary::value(const QString &key) const
{
    return value(std::make_shared<String>(key));
}

bool Dictionary::isEqual(const Object &other) const
{
    const auto *dictionary = dynamic_cast<const Dictionary *>(&other);
    return dictionary && dictionary->count() == count()
        && std::all_of(m_entries.cbegin(), m_entries.cend(), [dictionary](const Entry &entry) {
               return dictionary->contains(entry.key)
                   && areEqual(dictionary->value(entry.key).get(), entry.value.get());
           });
}

size_t Dictionary::hash() const
{
    size_t result = size_t(count());
    for (const Entry &entry : m_entries)
        result += qHashMulti(0, hashOf(entry.key), hashOf(entry.value));
    return result;
}

} // namespace platform
