#include "Platform/Foundation/SubstringSearch_p.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

#if ZR_HAS_AVX2
#include <immintrin.h>
#endif

namespace platform {
namespace {

/// Takes the first match only.
class FirstMatch
{
public:
    explicit FirstMatch(const char *end)
        : m_place(end)
    { }

    const char *place() const { return m_place; }

    /// @return where to go on, or nullptr to stop.
    const char *take(const char *match)
    {
        m_place = match;
        return nullptr;
    }

private:
    const char *m_place;
};

/// Notes the record of each match and goes on behind it.
class MatchingRecords
{
public:
    MatchingRecords(const char *text, std::span<const size_t> starts)
        : m_text(text)
        , m_starts(starts)
    { }

    std::vector<quint32> takeRecords() { return std::move(m_records); }

    const char *take(const char *match)
    {
        m_record = recordAt(size_t(match - m_text), m_record);
        m_records.push_back(quint32(m_record));
        ++m_record;
        return m_text + m_starts[m_record];
    }

private:
    /// The record that holds the offset, which is `record` or a later one: of several that start at one place the last,
    /// the others being empty. Looks at the next one first, then twice as far each time, then halves the steps.
    size_t recordAt(size_t offset, size_t record) const
    {
        const size_t count = m_starts.size() - 1;
        const auto startsBefore = [&](size_t other) { return other < count && m_starts[other] <= offset; };
        size_t step = 1;
        for (; startsBefore(record + step); step *= 2)
            record += step;
        for (step /= 2; step > 0; step /= 2) {
            if (startsBefore(record + step))
                record += step;
        }
        return record;
    }

    const char *m_text;
    std::span<const size_t> m_starts;
    size_t m_record = 0;
    std::vector<quint32> m_records;
};

template <class Matches>
void scanPlainly(const char *begin, const char *end, QByteArrayView needle, Matches &matches)
{
    const std::string_view wanted(needle.data(), size_t(needle.size()));
    while (begin) {
        const std::string_view text(begin, size_t(end - begin));
        const size_t place = text.find(wanted);
        if (place == std::string_view::npos)
            return;
        begin = matches.take(begin + place);
    }
}

#if ZR_HAS_AVX2

ZR_AVX2 inline __m256i load(const char *text)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(text));
}

/// The needle's first, second and last byte, each in all lanes.
struct Filter {
    ZR_AVX2 explicit Filter(QByteArrayView needle)
        : secondOffset(needle.size() > 1 ? 1 : 0)
        , lastOffset(needle.size() - 1)
        , first(_mm256_set1_epi8(needle[0]))
        , second(_mm256_set1_epi8(needle[secondOffset]))
        , last(_mm256_set1_epi8(needle[lastOffset]))
    { }

    /// One bit for each of the 32 places from `text` on where all three bytes agree.
    ZR_AVX2 quint32 candidates(const char *text) const
    {
        const __m256i firsts = _mm256_cmpeq_epi8(first, load(text));
        const __m256i seconds = _mm256_cmpeq_epi8(second, load(text + secondOffset));
        const __m256i lasts = _mm256_cmpeq_epi8(last, load(text + lastOffset));
        return quint32(_mm256_movemask_epi8(_mm256_and_si256(_mm256_and_si256(firsts, seconds), lasts)));
    }

    qsizetype secondOffset, lastOffset;
    __m256i first, second, last;
};

template <class Matches>
ZR_AVX2 void scanWithAvx2(const char *begin, const char *end, QByteArrayView needle, Matches &matches)
{
    const Filter filter(needle);
    const qsizetype size = needle.size();
    // Places behind the last that the needle fits in are read, never taken.
    for (const char *text = begin; end - text >= size; text += 64) {
        quint64 places = filter.candidates(text) | quint64(filter.candidates(text + 32)) << 32;
        while (places) {
            const char *place = text + std::countr_zero(places);
            places &= places - 1;
            if (end - place < size)
                return;
            if (size > 3 && std::memcmp(place + 2, needle.data() + 2, size_t(size - 3)) != 0)
                continue;
            const char *next = matches.take(place);
            if (!next)
                return;
            if (next - text >= 64) {
                text = next - 64; // the loop adds them
                break;
            }
            places &= ~quint64(0) << (next - text);
        }
    }
}

#endif

template <class Matches>
void scan([[maybe_unused]] InstructionSet instructions, const char *begin, const char *end, QByteArrayView needle,
          Matches &matches)
{
#if ZR_HAS_AVX2
    if (instructions == InstructionSet::Avx2)
        return scanWithAvx2(begin, end, needle, matches);
#endif
    scanPlainly(begin, end, needle, matches);
}

} // namespace

const char *SubstringSearch::findUsing(InstructionSet instructions, const char *begin, const char *end,
                                       QByteArrayView needle)
{
    FirstMatch first(end);
    scan(instructions, begin, end, needle, first);
    return first.place();
}

const char *SubstringSearch::find(const char *begin, const char *end, QByteArrayView needle)
{
    return findUsing(bestInstructionSet(), begin, end, needle);
}

std::vector<quint32> SubstringSearch::recordsContainingUsing(InstructionSet instructions, const char *text,
                                                             std::span<const size_t> starts, QByteArrayView needle)
{
    MatchingRecords records(text, starts);
    scan(instructions, text + starts.front(), text + starts.back(), needle, records);
    return records.takeRecords();
}

std::vector<quint32> SubstringSearch::recordsContaining(const char *text, std::span<const size_t> starts,
                                                        QByteArrayView needle)
{
    return recordsContainingUsing(bestInstructionSet(), text, starts, needle);
}

} // namespace platform
