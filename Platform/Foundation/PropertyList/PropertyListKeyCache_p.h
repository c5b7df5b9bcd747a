#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It belongs to the XML property-list reader, and may change
//  from version to version.
//

#include "Platform/Foundation/PropertyList/PropertyListTape_p.h"

#include <array>
#include <cstring>

namespace platform {

/// A small table before a `PropertyListKeyTable` for keys that come again and again: it compares the first
/// and last eight bytes and the length, which is all there is to a key of up to sixteen bytes.
///
/// Keys are read as they stand between "<key>" and "</key>", so that the eight bytes from their start, and
/// the eight bytes up to their end, can be read and depend on nothing but the key if it has three bytes or
/// more.
class PropertyListKeyCache
{
public:
    /// Number of a key that was entered before, `NoKey` otherwise.
    quint32 find(const char *key, qsizetype length) const
    {
        const quint64 front = load(key);
        const quint64 back = load(key + length - 8);
        size_t slot = slotOf(front, back);
        for (int probe = 0; probe < Probes; ++probe, slot = (slot + 1) % SlotCount) {
            const Slot &candidate = m_slots[slot];
            if (candidate.front == front && candidate.back == back && candidate.length == quint32(length)
                && (length <= 16 || std::memcmp(candidate.name + 8, key + 8, size_t(length) - 16) == 0))
                return candidate.number;
        }
        return PropertyListTape::NoKey;
    }

    /// Enters a key, if there is room. The name must stay where it is.
    void enter(const char *key, qsizetype length, quint32 number, const char *name)
    {
        if (length < MinimumLength)
            return;
        const quint64 front = load(key);
        const quint64 back = load(key + length - 8);
        size_t slot = slotOf(front, back);
        for (int probe = 0; probe < Probes; ++probe, slot = (slot + 1) % SlotCount) {
            if (m_slots[slot].length == 0) {
                m_slots[slot] = {front, back, name, quint32(length), number};
                return;
            }
        }
    }

private:
    static constexpr size_t SlotCount = 1024;
    static constexpr int Probes = 4;
    static constexpr qsizetype MinimumLength = 3;

    struct Slot {
        quint64 front = 0;
        quint64 back = 0;
        const char *name = nullptr;
        quint32 length = 0; // 0: empty
        quint32 number = 0;
    };

    static quint64 load(const char *bytes)
    {
        quint64 eight;
        std::memcpy(&eight, bytes, 8);
        return eight;
    }
    static size_t slotOf(quint64 front, quint64 back)
    {
        return size_t(((front ^ back * 0x9E3779B97F4A7C15) * 0xC2B2AE3D27D4EB4F) >> 54);
    }

    std::array<Slot, SlotCount> m_slots;
};

} // namespace platform
