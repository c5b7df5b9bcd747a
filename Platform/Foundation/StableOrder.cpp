#include "Platform/Foundation/StableOrder_p.h"

#include "Platform/Foundation/Prefetch_p.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>
#include <utility>

#include <QHashSeed>
#include <QtEndian>

namespace platform {
namespace {

/// A position with the part of its key that is being looked at.
struct Item {
    quint64 key;
    quint32 position;
};

using Items = std::span<Item>;

/// From how many items on distributing them by bytes beats comparing them.
constexpr size_t radixThreshold = 1024;

/// Sorts by the key from its least significant byte up. Bytes that all keys share cost one look.
void radixSort(Items items, Items spare)
{
    std::array<std::array<quint32, 256>, 8> counts{};
    for (const Item &item : items) {
        for (size_t byte = 0; byte < 8; ++byte)
            ++counts[byte][item.key >> 8 * byte & 0xFF];
    }
    Items from = items, to = spare;
    for (size_t byte = 0; byte < 8; ++byte) {
        auto &places = counts[byte];
        if (places[from.front().key >> 8 * byte & 0xFF] == from.size())
            continue;
        quint32 next = 0;
        for (quint32 &place : places)
            next += std::exchange(place, next);
        for (const Item &item : from)
            to[places[item.key >> 8 * byte & 0xFF]++] = item;
        std::swap(from, to);
    }
    if (from.data() != items.data())
        std::copy(from.begin(), from.end(), items.begin());
}

/// Sorts by key; equal keys by position, in which they must stand already.
void stableSort(Items items, Items spare)
{
    if (items.size() >= radixThreshold) {
        radixSort(items, spare);
        return;
    }
    std::sort(items.begin(), items.end(),
              [](const Item &a, const Item &b) { return a.key != b.key ? a.key < b.key : a.position < b.position; });
}

std::vector<quint32> positionsOf(const std::vector<Item> &items)
{
    std::vector<quint32> positions;
    positions.reserve(items.size());
    for (const Item &item : items)
        positions.push_back(item.position);
    return positions;
}

/// Eight bytes of the text as a number that compares as they do. Each byte counts one more than it is, so that what
/// is missing behind the end compares as less than any byte.
quint64 wordAt(QByteArrayView text, qsizetype offset)
{
    constexpr quint64 one = 0x0101'0101'0101'0101;
    const qsizetype left = text.size() - offset;
    if (left >= 8)
        return qFromBigEndian<quint64>(text.data() + offset) + one;
    if (left <= 0)
        return 0;
    const int missing = int(8 * (8 - left));
    if (text.size() >= 8) // the end of the text, less what lies before the offset
        return (qFromBigEndian<quint64>(text.data() + text.size() - 8) + one) << missing;
    quint64 word = 0;
    for (qsizetype i = offset; i < text.size(); ++i)
        word = word << 8 | (quint8(text[i]) + 1U);
    return word << missing;
}

/// Items that agree up to an offset and are still to be ordered by what follows.
struct Run {
    size_t first, count;
    qsizetype offset;
};

/// Up to how many items of a run are ordered by comparing what is left of their texts.
constexpr size_t comparedRun = 16;

/// Orders the items of a short run, which stand by position, by all that follows the offset.
void sortShortRun(Items items, std::span<const QByteArrayView> texts, qsizetype offset)
{
    const auto rest = [&](const Item &item) {
        const QByteArrayView text = texts[item.position];
        return std::string_view(text.data() + offset, size_t(text.size() - offset));
    };
    for (size_t i = 1; i < items.size(); ++i) { // by insertion
        const Item item = items[i];
        const std::string_view text = rest(item);
        size_t place = i;
        for (; place > 0 && rest(items[place - 1]) > text; --place)
            items[place] = items[place - 1];
        items[place] = item;
    }
}

/// The different ones among some texts, in the order in which they first occur.
struct DifferentTexts {
    std::vector<QByteArrayView> texts;
    std::vector<quint32> numberOfText; ///< For each of the given texts, which of the different ones it is.
};

quint64 hashOf(QByteArrayView text, quint64 seed)
{
    constexpr quint64 odd = 0x9E37'79B9'7F4A'7C15; // 2^64 divided by the golden ratio
    const auto mixed = [](quint64 hash, quint64 word) {
        hash = (hash ^ word) * odd;
        return hash ^ hash >> 32;
    };
    quint64 hash = seed ^ quint64(text.size());
    if (text.size() < 8)
        return mixed(hash, wordAt(text, 0));
    for (qsizetype offset = 0; offset + 8 < text.size(); offset += 8)
        hash = mixed(hash, qFromUnaligned<quint64>(text.data() + offset));
    return mixed(hash, qFromUnaligned<quint64>(text.data() + text.size() - 8));
}

/// How many texts ahead a slot's memory is asked for.
constexpr size_t slotsAhead = 16;

/// Finds the different texts by a table with open addressing.
DifferentTexts differentTexts(std::span<const QByteArrayView> texts)
{
    struct Slot {
        const char *text; // null in an empty slot
        quint32 hash;
        quint32 number;
    };
    const size_t mask = std::bit_ceil(texts.size() + texts.size() / 3 + 1) - 1;
    const auto seed = quint64(QHashSeed::globalSeed()); // nobody can make a file of texts that all collide
    std::vector<quint64> hashes(texts.size());
    for (size_t i = 0; i < texts.size(); ++i)
        hashes[i] = hashOf(texts[i], seed);

    std::vector<Slot> slots(mask + 1);
    DifferentTexts different;
    different.numberOfText.reserve(texts.size());
    for (size_t i = 0; i < texts.size(); ++i) {
        // The table is larger than the processor's nearest memory.
        if (i + slotsAhead < texts.size())
            fetch(&slots[size_t(hashes[i + slotsAhead]) & mask]);
        const QByteArrayView text = texts[i].isNull() ? QByteArrayView("") : texts[i]; // null marks an empty slot
        const auto hash = quint32(hashes[i] >> 32);
        const auto isOther = [&](const Slot &slot) {
            // Texts of other lengths have other hashes, or are told apart here at last.
            return slot.text
                && (slot.hash != hash || different.texts[slot.number].size() != text.size()
                    || std::memcmp(slot.text, text.data(), size_t(text.size())) != 0);
        };
        size_t place = size_t(hashes[i]) & mask;
        while (isOther(slots[place]))
            place = (place + 1) & mask;
        if (!slots[place].text) {
            slots[place] = {text.data(), hash, quint32(different.texts.size())};
            different.texts.push_back(text);
        }
        different.numberOfText.push_back(slots[place].number);
    }
    return different;
}

/// Positions of texts that all differ, in order.
std::vector<quint32> orderOfDifferent(std::span<const QByteArrayView> texts)
{
    std::vector<Item> items(texts.size()), spare(texts.size());
    // The texts are visited in order once, for their first sixteen bytes, by which most of them differ. After the first
    // sort they are visited all over the place, which costs far more than the comparing.
    std::vector<quint64> secondWords(texts.size());
    for (size_t i = 0; i < items.size(); ++i) {
        items[i] = {wordAt(texts[i], 0), quint32(i)};
        secondWords[i] = wordAt(texts[i], 8);
    }

    std::vector<Run> runs{{0, items.size(), 0}};
    while (!runs.empty()) {
        const Run run = runs.back();
        runs.pop_back();
        const Items part(items.data() + run.first, run.count);
        if (run.offset == 8) {
            for (Item &item : part)
                item.key = secondWords[item.position];
        } else if (run.offset > 8) {
            for (Item &item : part)
                item.key = wordAt(texts[item.position], run.offset);
        }
        if (part.size() > 1)
            stableSort(part, Items(spare).first(part.size()));
        for (size_t first = 0; first < part.size();) {
            const quint64 key = part[first].key;
            size_t end = first + 1;
            while (end < part.size() && part[end].key == key)
                ++end;
            const bool textGoesOn = (key & 0xFF) != 0;
            if (textGoesOn && end - first > (run.offset == 0 ? 1 : comparedRun))
                runs.push_back({run.first + first, end - first, run.offset + 8});
            else if (textGoesOn && end - first > 1)
                sortShortRun(part.subspan(first, end - first), texts, run.offset + 8);
            first = end;
        }
    }
    return positionsOf(items);
}

} // namespace

std::vector<quint32> StableOrder::ofNumbers(std::span<const qint64> numbers, Qt::SortOrder order)
{
    const quint64 flip = order == Qt::DescendingOrder ? ~quint64(0) : 0;
    std::vector<Item> items(numbers.size()), spare(numbers.size());
    for (size_t i = 0; i < items.size(); ++i)
        items[i] = {(quint64(numbers[i]) ^ quint64(1) << 63) ^ flip, quint32(i)};
    if (!items.empty())
        stableSort(items, spare);
    return positionsOf(items);
}

std::vector<quint32> StableOrder::ofTexts(std::span<const QByteArrayView> texts, Qt::SortOrder order)
{
    return ofNumbers(ranksOfTexts(texts), order);
}

std::vector<qint64> StableOrder::ranksOfTexts(std::span<const QByteArrayView> texts)
{
    // Libraries repeat themselves: each text is ordered once.
    const DifferentTexts different = differentTexts(texts);
    std::vector<quint32> counts(different.texts.size());
    for (const quint32 number : different.numberOfText)
        ++counts[number];
    std::vector<qint64> rankOfNumber(different.texts.size());
    qint64 rank = 0;
    for (const quint32 number : orderOfDifferent(different.texts))
        rankOfNumber[number] = std::exchange(rank, rank + counts[number]);
    std::vector<qint64> ranks(texts.size());
    for (size_t i = 0; i < texts.size(); ++i)
        ranks[i] = rankOfNumber[different.numberOfText[i]];
    return ranks;
}

} // namespace platform
