#include "Platform/Foundation/PropertyList.h"
#include "Platform/Foundation/PropertyListScalars_p.h"
#include "Platform/Foundation/PropertyListTape_p.h"

#include <QHashFunctions>

#include <limits>

namespace platform {

using namespace PropertyListTape;

namespace {

// Spreads a number over 32 bits; different numbers stay different. Seeded, so that no document can be made to
// put all its keys into one place. The finalizer of Austin Appleby's MurmurHash3.
quint32 hashOfNumber(quint32 number)
{
    static const auto seed = quint32(QHashSeed::globalSeed());
    number ^= seed;
    number = (number ^ number >> 16) * 0x85EBCA6BU;
    number = (number ^ number >> 13) * 0xC2B2AE35U;
    return number ^ number >> 16;
}

quint32 hashOfText(QByteArrayView text)
{
    const quint64 hash = qHash(text, QHashSeed::globalSeed());
    return quint32(hash ^ hash >> 32);
}

} // namespace

// A key that is the decimal text of a number is found by the number, however the document holds it.
PropertyListKey PropertyListIndex::keyOf(const QByteArray &text)
{
    PropertyListKey key;
    key.m_decimal = PropertyListScalars::parseCanonicalNumber(text);
    key.m_text = text;
    return key;
}

PropertyListKey PropertyListIndex::keyAt(quint32 row) const
{
    const PropertyListDocument *document = m_dictionary.m_document;
    if (kindOf(document->rows[row]) != NumberKey)
        return keyOf(PropertyListView::EntryIterator(document, row).utf8Key());
    PropertyListKey key;
    key.m_decimal = offsetOf(document->rows[row]);
    return key;
}

quint32 PropertyListIndex::hashOf(const PropertyListKey &key)
{
    return key.m_decimal ? hashOfNumber(*key.m_decimal) : hashOfText(key.m_text);
}

bool PropertyListIndex::holds(const Slot &slot, quint32 hash, const PropertyListKey &key) const
{
    if (slot.hash != hash)
        return false;
    const PropertyListKey other = keyAt(slot.row);
    return key.m_decimal ? key.m_decimal == other.m_decimal : !other.m_decimal && key.m_text == other.m_text;
}

// The slot that holds the key, or the empty one where it would be.
size_t PropertyListIndex::slotFor(quint32 hash, const PropertyListKey &key) const
{
    // Spreads the hash evenly over any number of slots: Daniel Lemire, "Fast random integer generation in an
    // interval", 2019.
    size_t slot = size_t(quint64(hash) * m_slots.size() >> 32);
    while (m_slots[slot].row != 0 && !holds(m_slots[slot], hash, key))
        slot = slot + 1 < m_slots.size() ? slot + 1 : 0;
    return slot;
}

PropertyListIndex::PropertyListIndex(const PropertyListView &dictionary)
    : m_dictionary(dictionary)
{
    std::vector<Slot> entries;
    for (const auto &entry : dictionary.entries())
        entries.push_back({hashOf(keyAt(entry.m_row)), entry.m_row});
    m_slots.resize(entries.size() + entries.size() / 2 + 1);
    for (const Slot &entry : entries)
        m_slots[slotFor(entry.hash, keyAt(entry.row))] = entry; // the last of several
}

PropertyListView PropertyListIndex::find(const PropertyListKey &key) const
{
    if (m_slots.empty())
        return {};
    const Slot &slot = m_slots[slotFor(hashOf(key), key)];
    if (slot.row == 0)
        return {};
    return PropertyListView::EntryIterator(m_dictionary.m_document, slot.row).value();
}

PropertyListView PropertyListIndex::value(QAnyStringView key) const
{
    return find(keyOf(PropertyListScalars::utf8Of(key)));
}

PropertyListView PropertyListIndex::value(qint64 number) const
{
    if (number < 0 || number > std::numeric_limits<quint32>::max())
        return find(keyOf(QByteArray::number(number)));
    PropertyListKey key;
    key.m_decimal = quint32(number);
    return find(key);
}

} // namespace platform
