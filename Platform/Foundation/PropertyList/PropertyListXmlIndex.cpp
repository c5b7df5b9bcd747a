#include "Platform/Foundation/PropertyList/PropertyListXmlIndex_p.h"

#include <bit>
#include <cstring>

#if ZR_HAS_AVX2
#include <immintrin.h>
#endif

namespace platform::PropertyListXmlIndex {

namespace {

// 0x80 in every byte that equals the character, 0 in the others.
constexpr quint64 bytesEqual(quint64 eight, char character)
{
    constexpr quint64 LowBits = 0x7F7F7F7F7F7F7F7F;
    const quint64 difference = eight ^ (0x0101010101010101 * quint8(character));
    return ~(((difference & LowBits) + LowBits) | difference | LowBits);
}

Found findPlain(const char *text, quint32 from, quint32 to, quint32 *offsets)
{
    Found found;
    quint32 position = from;
    // Which byte of a word comes first depends on the machine, so only little-endian ones go by words.
    for (; std::endian::native == std::endian::little && position + 8 <= to; position += 8) {
        quint64 eight;
        std::memcpy(&eight, text + position, 8);
        found.carriageReturn |= bytesEqual(eight, '\r') != 0;
        for (quint64 marks = bytesEqual(eight, '<') | bytesEqual(eight, '&'); marks != 0; marks &= marks - 1)
            *offsets++ = position + quint32(std::countr_zero(marks)) / 8;
    }
    for (; position < to; ++position) {
        found.carriageReturn |= text[position] == '\r';
        if (text[position] == '<' || text[position] == '&')
            *offsets++ = position;
    }
    found.end = offsets;
    return found;
}

#if ZR_HAS_AVX2

ZR_AVX2 Found findAvx2(const char *text, quint32 from, quint32 to, quint32 *offsets)
{
    const __m256i lessThan = _mm256_set1_epi8('<');
    const __m256i ampersand = _mm256_set1_epi8('&');
    const __m256i carriageReturn = _mm256_set1_epi8('\r');
    __m256i returns = _mm256_setzero_si256();
    for (quint32 position = from; position < to; position += 64) {
        const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(text + position));
        const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(text + position + 32));
        const __m256i lowMarks = _mm256_or_si256(_mm256_cmpeq_epi8(low, lessThan), _mm256_cmpeq_epi8(low, ampersand));
        const __m256i highMarks =
            _mm256_or_si256(_mm256_cmpeq_epi8(high, lessThan), _mm256_cmpeq_epi8(high, ampersand));
        quint64 marks =
            quint64(quint32(_mm256_movemask_epi8(lowMarks))) | quint64(quint32(_mm256_movemask_epi8(highMarks))) << 32;
        returns = _mm256_or_si256(
            returns, _mm256_or_si256(_mm256_cmpeq_epi8(low, carriageReturn), _mm256_cmpeq_epi8(high, carriageReturn)));
        if (to - position < 64)
            marks &= (quint64(1) << (to - position)) - 1;
        const int count = std::popcount(marks);
        // Most blocks hold fewer than eight; writing eight without asking costs less than a branch that is
        // often guessed wrong, and so would be std::countr_zero's question for zero. The surplus is overwritten by the
        // next block.
        for (int i = 0; i < 8; ++i, marks &= marks - 1)
            offsets[i] = position + quint32(_tzcnt_u64(marks));
        for (int i = 8; i < count; ++i, marks &= marks - 1)
            offsets[i] = position + quint32(_tzcnt_u64(marks));
        offsets += count;
    }
    return {offsets, _mm256_testz_si256(returns, returns) == 0};
}

#endif

} // namespace

Found find(const char *text, quint32 from, quint32 to, quint32 *offsets, InstructionSet instructions)
{
#if ZR_HAS_AVX2
    if (instructions == InstructionSet::Avx2)
        return findAvx2(text, from, to, offsets);
#else
    Q_UNUSED(instructions);
#endif
    return findPlain(text, from, to, offsets);
}

} // namespace platform::PropertyListXmlIndex
