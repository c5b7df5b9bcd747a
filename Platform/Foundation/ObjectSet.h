#pragma once

#include "Platform/Foundation/Object.h"

#include <algorithm>
#include <unordered_set>

namespace platform {

/// Hashes and compares objects by what they stand for.
struct ObjectHash {
    size_t operator()(const ObjectPointer &object) const { return object ? object->hash() : 0; }
};
struct ObjectEquality {
    bool operator()(const ObjectPointer &a, const ObjectPointer &b) const { return areEqual(a.get(), b.get()); }
};

/// A set of objects in no order: of several equal objects it holds the one that was inserted first.
///
/// Thread safety: that of a standard container. A set that nobody changes may be read from any thread at the same time,
/// which calls `hash` and `isEqual` of its objects there; a set that is changed belongs to one thread at a time.
using ObjectSet = std::unordered_set<ObjectPointer, ObjectHash, ObjectEquality>;

/// Whether both hold equal objects. (`==` asks whether they hold the same ones.) Linear.
inline bool areEqual(const ObjectSet &a, const ObjectSet &b)
{
    const auto isInB = [&b](const ObjectPointer &object) { return b.contains(object); };
    return a.size() == b.size() && std::all_of(a.cbegin(), a.cend(), isInB);
}

} // namespace platform
