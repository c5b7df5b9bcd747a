#include "Platform/Foundation/PropertyList/Utf8Validator_p.h"

#include <cstring>

#if ZR_HAS_AVX2
#include <immintrin.h>
#endif

namespace platform {

namespace {

using Byte = unsigned char;

bool isContinuation(char byte)
{
    return (Byte(byte) & 0xC0) == 0x80;
}

// Length of the valid character at the front of the bytes, 0 if there is none. The ranges of the second byte
// are those of table 3-7 of the Unicode standard.
qsizetype characterLength(const char *text, qsizetype size)
{
    const Byte lead = Byte(text[0]);
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    const qsizetype length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (size < length)
        return 0;
    const Byte second = Byte(text[1]);
    const Byte lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const Byte highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (second < lowest || second > highest)
        return 0;
    for (qsizetype i = 2; i < length; ++i) {
        if (!isContinuation(text[i]))
            return 0;
    }
    return length;
}

qsizetype validLengthPlain(const char *text, qsizetype size)
{
    qsizetype position = 0;
    while (position < size) {
        quint64 eight;
        if (size - position >= 8) {
            std::memcpy(&eight, text + position, 8);
            if ((eight & 0x8080808080808080) == 0) {
                position += 8;
                continue;
            }
        }
        const qsizetype length = characterLength(text + position, size - position);
        if (length == 0)
            return position;
        position += length;
    }
    return size;
}

#if ZR_HAS_AVX2

// What can be wrong with two neighbouring bytes; a set bit in all three tables at once is an error.
constexpr char TooShort = 1 << 0; // lead byte, then no continuation
constexpr char TooLong = 1 << 1; // ASCII, then a continuation
constexpr char Overlong3 = 1 << 2; // E0, then below A0
constexpr char TooLarge = 1 << 3; // above U+10FFFF
constexpr char Surrogate = 1 << 4; // ED, then above 9F
constexpr char Overlong2 = 1 << 5; // C0 or C1
constexpr char TooLarge1000 = 1 << 6; // F5 and more, then 80 to 8F
constexpr char Overlong4 = 1 << 6; // F0, then 80 to 8F
constexpr char TwoContinuations = char(1 << 7);
constexpr char Carry = TooShort | TooLong | TwoContinuations;

ZR_AVX2 inline __m256i table(char a, char b, char c, char d, char e, char f, char g, char h, char i, char j, char k,
                             char l, char m, char n, char o, char p)
{
    return _mm256_setr_epi8(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, //
                            a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p);
}

ZR_AVX2 inline __m256i highNibbles(__m256i bytes)
{
    return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0x0F));
}

// The bytes moved N places on, with the last N of the block before in front.
template <int N>
ZR_AVX2 inline __m256i shiftedIn(__m256i bytes, __m256i before)
{
    return _mm256_alignr_epi8(bytes, _mm256_permute2x128_si256(before, bytes, 0x21), 16 - N);
}

ZR_AVX2 inline __m256i pairErrors(__m256i bytes, __m256i previous)
{
    const __m256i byPreviousHigh = _mm256_shuffle_epi8(
        table(TooLong, TooLong, TooLong, TooLong, TooLong, TooLong, TooLong, TooLong, TwoContinuations,
              TwoContinuations, TwoContinuations, TwoContinuations, TooShort | Overlong2, TooShort,
              TooShort | Overlong3 | Surrogate, TooShort | TooLarge | TooLarge1000 | Overlong4),
        highNibbles(previous));
    constexpr char Large = Carry | TooLarge | TooLarge1000;
    const __m256i byPreviousLow = _mm256_shuffle_epi8(
        table(Carry | Overlong3 | Overlong2 | Overlong4, Carry | Overlong2, Carry, Carry, Carry | TooLarge, Large,
              Large, Large, Large, Large, Large, Large, Large, Large | Surrogate, Large, Large),
        _mm256_and_si256(previous, _mm256_set1_epi8(0x0F)));
    constexpr char Continuation = TooLong | Overlong2 | TwoContinuations;
    const __m256i byHigh =
        _mm256_shuffle_epi8(table(TooShort, TooShort, TooShort, TooShort, TooShort, TooShort, TooShort, TooShort,
                                  Continuation | Overlong3 | TooLarge1000 | Overlong4,
                                  Continuation | Overlong3 | TooLarge, Continuation | Surrogate | TooLarge,
                                  Continuation | Surrogate | TooLarge, TooShort, TooShort, TooShort, TooShort),
                            highNibbles(bytes));
    return _mm256_and_si256(_mm256_and_si256(byPreviousHigh, byPreviousLow), byHigh);
}

ZR_AVX2 inline __m256i blockErrors(__m256i bytes, __m256i before)
{
    const __m256i errors = pairErrors(bytes, shiftedIn<1>(bytes, before));
    // Third and fourth bytes must be continuations behind continuations, and nothing else may be.
    const __m256i third = _mm256_subs_epu8(shiftedIn<2>(bytes, before), _mm256_set1_epi8(char(0xE0 - 0x80)));
    const __m256i fourth = _mm256_subs_epu8(shiftedIn<3>(bytes, before), _mm256_set1_epi8(char(0xF0 - 0x80)));
    const __m256i mustContinue = _mm256_and_si256(_mm256_or_si256(third, fourth), _mm256_set1_epi8(char(0x80)));
    return _mm256_xor_si256(mustContinue, errors);
}

// Not zero where the last three bytes begin a character that the next block must end.
ZR_AVX2 inline __m256i unfinished(__m256i bytes)
{
    alignas(32) static constexpr Byte Highest[32] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                                     0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                                     0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xEF, 0xDF, 0xBF};
    return _mm256_subs_epu8(bytes, _mm256_load_si256(reinterpret_cast<const __m256i *>(Highest)));
}

// Offset behind the 64-byte blocks at the front that hold no error, as far as whole characters go.
ZR_AVX2 qsizetype validBlocksAvx2(const char *text, qsizetype size)
{
    __m256i before = _mm256_setzero_si256();
    __m256i expecting = _mm256_setzero_si256();
    qsizetype position = 0;
    for (; size - position >= 64; position += 64) {
        const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(text + position));
        const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(text + position + 32));
        __m256i errors = expecting;
        if (_mm256_movemask_epi8(_mm256_or_si256(low, high)) != 0) {
            errors = _mm256_or_si256(blockErrors(low, before), blockErrors(high, low));
            expecting = unfinished(high);
        } else {
            expecting = _mm256_setzero_si256();
        }
        before = high;
        if (!_mm256_testz_si256(errors, errors))
            break;
    }
    // Back to the beginning of the last character, which may reach beyond; the rest is looked at one by one.
    for (qsizetype back = 1; back <= 3 && back <= position; ++back) {
        if (!isContinuation(text[position - back]))
            return Byte(text[position - back]) < 0x80 ? position : position - back;
    }
    return position;
}

#endif

} // namespace

qsizetype validUtf8Length(QByteArrayView text, InstructionSet instructions)
{
    qsizetype position = 0;
#if ZR_HAS_AVX2
    if (instructions == InstructionSet::Avx2)
        position = validBlocksAvx2(text.data(), text.size());
#else
    Q_UNUSED(instructions);
#endif
    return position + validLengthPlain(text.data() + position, text.size() - position);
}

} // namespace platform
