#pragma once

#include <QByteArrayView>

/// Finding bytes in bytes, for scanning large blocks of text.
namespace platform::SubstringSearch {

/// Bytes that must be readable behind the end of what is searched, whatever they hold.
constexpr qsizetype Padding = 64;

/// The first place in [begin, end) where the needle stands whole; `end` when there is none. The needle must
/// not be empty. Any thread.
///
/// On processors with AVX2 64 places are tried at a time by the needle's first two bytes and its last.
const char *find(const char *begin, const char *end, QByteArrayView needle);

} // namespace platform::SubstringSearch
