#include "Platform/Foundation/StableOrder.h"

#include <algorithm>
#include <array>
#include <cstring>

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

/// Eight bytes of the text as a number that compares as they do. Each byte counts one more than it is, so
/// that what is missing behind the end compares as less than any byte.
quint64 wordAt(QByteArrayView text, qsizetype offset)
{
    const qsizetype left = text.size() - offset;
    if (left <= 0)
        return 0;
    constexpr quint64 one = 0x0101'0101'0101'0101;
    if (left >= 8)
        return qFromBigEndian<quint64>(text.data() + offset) + one;
    std::array<char, 8> bytes{};
    std::memcpy(bytes.data(), text.data() + offset, size_t(left));
    return qFromBigEndian<quint64>(bytes.data()) + (one << 8 * (8 - left));
}

/// Items that agree up to an offset and are still to be ordered by what follows.
struct Run {
    size_t first, count;
    qsizetype offset;
};

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
    const quint64 flip = order == Qt::DescendingOrder ? ~quint64(0) : 0;
    std::vector<Item> items(texts.size()), spare(texts.size());
    for (size_t i = 0; i < items.size(); ++i)
        items[i].position = quint32(i);

    std::vector<Run> runs{{0, items.size(), 0}};
    while (!runs.empty()) {
        const Run run = runs.back();
        runs.pop_back();
        const Items part(items.data() + run.first, run.count);
        for (Item &item : part)
            item.key = wordAt(texts[item.position], run.offset) ^ flip;
        if (part.size() > 1)
            stableSort(part, Items(spare).first(part.size()));
        for (size_t first = 0; first < part.size();) {
            const quint64 key = part[first].key;
            size_t end = first + 1;
            while (end < part.size() && part[end].key == key)
                ++end;
            const bool textGoesOn = ((key ^ flip) & 0xFF) != 0;
            if (end - first > 1 && textGoesOn)
                runs.push_back({run.first + first, end - first, run.offset + 8});
            first = end;
        }
    }
    return positionsOf(items);
}

} // namespace platform
