#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QByteArrayView>

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define ZR_SUBSTRING_SEARCH_AVX2
#endif

namespace platform::SubstringSearch
{

/// What `find` stands on where the processor has nothing better.
const char *findPlainly(const char *begin, const char *end, QByteArrayView needle);

#ifdef ZR_SUBSTRING_SEARCH_AVX2
/// Needs at least two bytes of needle, and a processor with AVX2.
const char *findWithAvx2(const char *begin, const char *end, QByteArrayView needle);
bool hasAvx2();
#endif

} // namespace platform::SubstringSearch
