#include "Platform/Foundation/PropertyList/PropertyListIndex.h"
#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListTape_p.h"

#include <QHashFunctions>

#include <limits>

namespace platform {

using namespace PropertyListTape;

namespace {

// Spreads a number over 32 bits, so that numbers in a row do not crowd. Seeded, so that no document can be made to put
// all its keys into one place. The finalizer of Austin Appleby's MurmurHash3.
quint32 hashOf(quint32 number)
{
    static const auto seed = quint32(QHashSeed::globalSeed());
    number ^= seed;
    number = (number ^ number >> 16) * 0x85EBCA6BU;
    number = (number ^ number >> 13) * 0xC2B2AE35U;
    return number ^ number >> 16;
}

quint32 hashOf(const QByteArray &text)
{
    const quint64 hash = qHash(text, QHashSeed::globalSeed());
    return quint32(hash ^ hash >> 32);
}

// Spreads a hash evenly over any number of slots: Daniel Lemire, "Fast random integer generation in an interval", 2019.
template <class Slots>
size_t homeOf(quint32 hash, const Slots &slots)
{
    return size_t(quint64(hash) * slots.size() >> 32);
}

// The first slot from `home` on that is empty or the one that is looked for. Some slots are always empty.
template <class Slots, class IsWanted>
size_t probe(const Slots &slots, size_t home, const IsWanted &isWanted)
{
    size_t slot = home;
    while (slots[slot].valueRow != 0 && !isWanted(slots[slot]))
        slot = slot + 1 < slots.size() ? slot + 1 : 0;
    return slot;
}

size_t slotsFor(size_t entries)
{
    return entries + entries / 2 + 1;
}

} // namespace

size_t PropertyListIndex::slotOf(quint32 number) const
{
    return probe(m_numbers, homeOf(hashOf(number), m_numbers),
                 [&](const NumberSlot &slot) { return slot.number == number; });
}

size_t PropertyListIndex::slotOf(quint32 hash, const QByteArray &key) const
{
    return probe(m_texts, homeOf(hash, m_texts),
                 [&](const TextSlot &slot) { return slot.hash == hash && slot.key == key; });
}

PropertyListIndex::PropertyListIndex(const PropertyListView &dictionary)
    : PropertyListIndex(dictionary, nullptr)
{ }

PropertyListIndex::PropertyListIndex(const PropertyListView &dictionary,
                                     const std::function<bool(const PropertyListView &)> &accept)
    : m_document(dictionary.m_document)
{
    std::vector<NumberSlot> numbers;
    std::vector<TextSlot> texts;
    for (const auto &entry : dictionary.entries()) {
        const quint32 valueRow = accept && !accept(entry.value()) ? Rejected : entry.m_valueRow;
        const PropertyListRow row = m_document->rows[entry.m_row];
        if (kindOf(row) == NumberKey) {
            numbers.push_back({offsetOf(row), valueRow});
            continue;
        }
        const QByteArray key = entry.utf8Key();
        if (const auto number = PropertyListScalars::parseCanonicalNumber(key))
            numbers.push_back({*number, valueRow});
        else
            texts.push_back({hashOf(key), valueRow, key});
    }
    m_numbers.resize(slotsFor(numbers.size()));
    for (const NumberSlot &entry : numbers)
        m_numbers[slotOf(entry.number)] = entry; // the last of several
    m_texts.resize(slotsFor(texts.size()));
    for (TextSlot &entry : texts)
        m_texts[slotOf(entry.hash, entry.key)] = std::move(entry);
}

PropertyListView PropertyListIndex::valueAt(quint32 row) const
{
    return row == 0 || row == Rejected ? PropertyListView() : PropertyListView(m_document, row);
}

PropertyListView PropertyListIndex::value(QAnyStringView key) const
{
    if (!m_document)
        return {};
    const QByteArray text = PropertyListScalars::utf8Of(key);
    if (const auto number = PropertyListScalars::parseCanonicalNumber(text))
        return value(qint64(*number));
    return valueAt(m_texts[slotOf(hashOf(text), text)].valueRow);
}

PropertyListView PropertyListIndex::value(qint64 number) const
{
    if (!m_document)
        return {};
    if (number < 0 || number > std::numeric_limits<quint32>::max())
        return value(QLatin1StringView(QByteArray::number(number)));
    return valueAt(m_numbers[slotOf(quint32(number))].valueRow);
}

} // namespace platform
