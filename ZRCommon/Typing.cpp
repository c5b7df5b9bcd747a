#include "ZRCommon/Typing.h"

#include <algorithm>
#include <iterator>

namespace Typing {

namespace {

auto isOfType(const platform::ObjectClass &type)
{
    return [&type](const platform::ObjectPointer &object) { return object && object->isKindOfClass(type); };
}

} // namespace

bool containsOnlyObjectsOfType(const platform::ObjectSet &set, const platform::ObjectClass &type)
{
    return !set.empty() && std::all_of(set.begin(), set.end(), isOfType(type));
}

bool containsAtLeastOneObjectOfType(const platform::ObjectSet &set, const platform::ObjectClass &type)
{
    return std::any_of(set.begin(), set.end(), isOfType(type));
}

platform::ObjectSet subsetWithObjectsOfType(const platform::ObjectSet &set, const platform::ObjectClass &type)
{
    platform::ObjectSet subset;
    std::copy_if(set.begin(), set.end(), std::inserter(subset, subset.end()), isOfType(type));
    return subset;
}

} // namespace Typing
