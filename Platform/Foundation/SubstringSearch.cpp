#include "Platform/Foundation/SubstringSearch.h"
#include "Platform/Foundation/SubstringSearch_p.h"

#include <bit>
#include <cstring>
#include <string_view>

#if ZR_HAS_AVX2
#include <immintrin.h>
#endif

namespace platform {
namespace {

const char *findPlainly(const char *begin, const char *end, QByteArrayView needle)
{
    const std::string_view text(begin, size_t(end - begin));
    const size_t place = text.find(std::string_view(needle.data(), size_t(needle.size())));
    return place == std::string_view::npos ? end : begin + place;
}

#if ZR_HAS_AVX2

/// The needle's bytes that are compared at every place, each in all lanes.
struct Filter {
    __m256i first, second, last;
    qsizetype lastOffset;
};

ZR_AVX2 inline __m256i load(const char *text)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(text));
}

/// One bit for each of the 32 places from `text` on where all three bytes of the filter agree.
ZR_AVX2 inline quint32 candidates(const char *text, const Filter &filter)
{
    const __m256i first = _mm256_cmpeq_epi8(filter.first, load(text));
    const __m256i second = _mm256_cmpeq_epi8(filter.second, load(text + 1));
    const __m256i last = _mm256_cmpeq_epi8(filter.last, load(text + filter.lastOffset));
    return quint32(_mm256_movemask_epi8(_mm256_and_si256(_mm256_and_si256(first, second), last)));
}

/// Needs at least two bytes of needle.
ZR_AVX2 const char *findWithAvx2(const char *begin, const char *end, QByteArrayView needle)
{
    const qsizetype size = needle.size();
    const Filter filter{_mm256_set1_epi8(needle[0]), _mm256_set1_epi8(needle[1]), _mm256_set1_epi8(needle[size - 1]),
                        size - 1};
    // Places behind the last that the needle fits in are read, never taken.
    for (const char *text = begin; end - text >= size; text += 64) {
        quint64 places = candidates(text, filter) | quint64(candidates(text + 32, filter)) << 32;
        for (; places; places &= places - 1) {
            const char *place = text + std::countr_zero(places);
            if (end - place < size)
                return end;
            if (size <= 3 || std::memcmp(place + 2, needle.data() + 2, size_t(size - 3)) == 0)
                return place;
        }
    }
    return end;
}

#endif

} // namespace

const char *SubstringSearch::findUsing([[maybe_unused]] InstructionSet instructions, const char *begin, const char *end,
                                       QByteArrayView needle)
{
    if (needle.size() == 1) {
        const void *place = std::memchr(begin, needle[0], size_t(end - begin));
        return place ? static_cast<const char *>(place) : end;
    }
#if ZR_HAS_AVX2
    if (instructions == InstructionSet::Avx2)
        return findWithAvx2(begin, end, needle);
#endif
    return findPlainly(begin, end, needle);
}

const char *SubstringSearch::find(const char *begin, const char *end, QByteArrayView needle)
{
    return findUsing(bestInstructionSet(), begin, end, needle);
}

} // namespace platform
