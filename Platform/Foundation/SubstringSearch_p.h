#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/InstructionSet_p.h"

#include <QByteArrayView>

#include <span>
#include <vector>

/// Finding bytes in bytes, for scanning large blocks of text.
namespace platform::SubstringSearch {

/// Bytes that must be readable behind the end of what is searched, whatever they hold.
constexpr qsizetype Padding = 64;

/// The first place in [begin, end) where the needle stands whole; `end` when there is none. The needle must
/// not be empty. Any thread.
///
/// On processors with AVX2 64 places are tried at a time by the needle's first two bytes and its last.
const char *find(const char *begin, const char *end, QByteArrayView needle);

/// Numbers of the records in which the needle stands whole, ascending. Record n lies from `text + starts[n]` to
/// `text + starts[n + 1]`; there is one start more than there are records. The needle must not be empty, and no place
/// where it stands may reach from one record into the next.
std::vector<quint32> recordsContaining(const char *text, std::span<const size_t> starts, QByteArrayView needle);

// The same with the instructions named.
const char *findUsing(InstructionSet instructions, const char *begin, const char *end, QByteArrayView needle);
std::vector<quint32> recordsContainingUsing(InstructionSet instructions, const char *text,
                                            std::span<const size_t> starts, QByteArrayView needle);

} // namespace platform::SubstringSearch
