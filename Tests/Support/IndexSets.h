#pragma once

#include "Platform/Foundation/IndexSet.h"

#include <initializer_list>
#include <ostream>

// Sets of indexes as tests write them down, and as failed comparisons show them.

namespace platform {

inline void PrintTo(const IndexRange &range, std::ostream *stream)
{
    *stream << range.location << "+" << range.length;
}

inline void PrintTo(const IndexSet &set, std::ostream *stream)
{
    for (const IndexRange &range : set.ranges()) {
        *stream << "[";
        PrintTo(range, stream);
        *stream << "]";
    }
}

} // namespace platform

namespace testSupport {

inline platform::IndexSet indexes(std::initializer_list<qint64> values)
{
    platform::IndexSet result;
    for (const qint64 value : values)
        result.addIndex(value);
    return result;
}

/// 0, 2, 4 and so on below a number: as many ranges as there can be.
inline platform::IndexSet everySecondOf(qint64 count)
{
    platform::IndexSet result;
    for (qint64 i = 0; i < count; i += 2)
        result.addIndex(i);
    return result;
}

} // namespace testSupport
